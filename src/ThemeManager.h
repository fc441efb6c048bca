#pragma once

#include <QString>
#include <QStringView>

/// Colours that several style sheets share, as style sheets write them. `ThemePalette` has those
/// that depend on the theme alone; a colour of one style sheet stays in that sheet.
namespace ThemeColors {

/// Selections, links and primary buttons.
inline constexpr QStringView Accent(u"#007AFF");
/// A primary button under the pointer.
inline constexpr QStringView AccentHover(u"#0062CC");
/// A primary button while it is pressed.
inline constexpr QStringView AccentPressed(u"#0051AA");
/// Buttons that cancel or delete.
inline constexpr QStringView Destructive(u"#FF3B30");
/// Titles on a white background.
inline constexpr QStringView Title(u"#1d1d1f");

/// Rows of lists in the dark theme.
inline constexpr QStringView DarkAlternateRow(u"#252525");
inline constexpr QStringView DarkHoveredRow(u"#3A3A3A");
inline constexpr QStringView DarkSelectedRow(u"#505050");

/// Returns the background of an outlined accent button under the pointer.
[[nodiscard]] QString accentTint(const QString &theme);

/// Returns the background of a cancel or delete button under the pointer.
[[nodiscard]] QString destructiveTint(const QString &theme);

} // namespace ThemeColors

/// The colours of a theme, as style sheets write them.
struct ThemePalette
{
    /// Background of windows and dialogs.
    QString windowBackground;
    /// Background of panels: text views and lists.
    QString panelBackground;
    /// Ordinary text.
    QString textColor;
    /// Selections and primary buttons.
    QString accentColor;
    /// A primary button under the pointer.
    QString accentHoverColor;
    /// Background of line edits and header sections.
    QString inputBackground;
    /// Frames.
    QString borderColor;
    /// Buttons that cancel or delete.
    QString destructiveColor;
    /// Always false; nothing reads it.
    bool paletteFlag = false;
};

/// Returns the palettes of the themes and the style sheets that several windows share.
///
/// A style sheet for one widget or dialog is in that class.
///
/// Every function takes the name of a theme: "light", "dark" or "glass". "glass" and unknown names
/// return the same as "light", except in `tabWidgetStyleSheet`.
class ThemeManager final
{
public:
    ThemeManager() = delete;

    /// Returns true for "dark" only.
    static bool isDark(const QString &theme);

    static ThemePalette palette(const QString &theme);

    /// Returns the sheet of the main window and everything in it.
    static QString globalStyleSheet(const QString &theme);

    /// Returns the sheet of a dialog: labels, line edits, tool bar, and the buttons "connectButton"
    /// and "cancelButton".
    static QString dialogStyleSheet(const QString &theme);

    /// Returns the sheet of a single line edit.
    static QString lineEditStyleSheet(const QString &theme);

    /// Returns the sheet of a box with the buttons "connectButton" and "cancelButton".
    static QString buttonStyleSheet(const QString &theme);

    /// Returns the sheet of the preferences dialog, which is white in every theme.
    static QString preferencesDialogStyleSheet(const QString &theme);

    /// Returns the sheet of the main window's tab widget: light for "light" only, otherwise dark.
    static QString tabWidgetStyleSheet(const QString &theme);
};
