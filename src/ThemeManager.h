#pragma once

#include <QString>

/// The colours of a theme, as style sheets write them.
struct ThemePalette
{
    /// Behind windows and dialogs.
    QString windowBackground;
    /// Behind panels: text views and lists.
    QString panelBackground;
    /// Ordinary text.
    QString textColor;
    /// Selections and primary buttons.
    QString accentColor;
    /// A primary button under the pointer.
    QString accentHoverColor;
    /// Behind line edits and the sections of a header.
    QString inputBackground;
    /// Frames.
    QString borderColor;
    /// Buttons that cancel or delete.
    QString destructiveColor;
    /// Always false; nothing reads it.
    bool paletteFlag = false;
};

/// The source of all colours and style sheets.
///
/// Every function takes the name of a theme: "light", "dark" or "glass". An unknown name is no
/// error. Here "glass" and unknown names are the same as "light", but for `tabWidgetStyleSheet`.
class ThemeManager final
{
public:
    ThemeManager() = delete;

    /// True for "dark" alone.
    static bool isDark(const QString &theme);

    static ThemePalette palette(const QString &theme);

    /// For the main window and all that it holds.
    static QString globalStyleSheet(const QString &theme);

    /// For a dialog with its labels, line edits, tool bar and the buttons "connectButton" and
    /// "cancelButton".
    static QString dialogStyleSheet(const QString &theme);

    /// For a single line edit.
    static QString lineEditStyleSheet(const QString &theme);

    /// For the buttons "connectButton" and "cancelButton" of a box.
    static QString buttonStyleSheet(const QString &theme);

    /// For the preferences dialog, which is white in every theme.
    static QString preferencesDialogStyleSheet(const QString &theme);

    /// For the main window's tab widget: light for "light" alone, dark for every other name.
    static QString tabWidgetStyleSheet(const QString &theme);
};
