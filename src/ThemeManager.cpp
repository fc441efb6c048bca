#include "ThemeManager.h"

using namespace Qt::StringLiterals;

namespace {

/// Returns the background of tool bars, and of the preferences' font button under the pointer.
QString barBackground(const QString &theme)
{
    return ThemeManager::isDark(theme) ? u"#3E3E3E"_s : u"#F0F0F0"_s;
}

QString darkGlobalSheet(const ThemePalette &colors)
{
    return uR"(
QMainWindow { background: %1; color: %3; }
QTextBrowser { background: %2; color: %3; border: none; }
QListWidget { background: %2; color: %3; }
QLineEdit { background: %4; color: %3; border: 1px solid %5; }
QMenuBar { background: %1; color: %3; }
QMenuBar::item:selected { background: %6; }
QMenu { background: %1; color: %3; border: 1px solid %5; }
QMenu::item:selected { background: %6; }
QHeaderView::section { background: %4; color: %3; padding: 4px; border: 1px solid %5; }
QTreeWidget { background: %2; color: %3; alternate-background-color: %7; }
QTreeWidget::item:hover { background: %8; }
QTreeWidget::item:selected { background: %6; }
QStatusBar { background: %1; color: %3; }
QLabel#topicLabel { color: %3; }
)"_s.arg(colors.windowBackground, colors.panelBackground, colors.textColor, colors.inputBackground,
         colors.borderColor, ThemeColors::DarkSelectedRow, ThemeColors::DarkAlternateRow,
         ThemeColors::DarkHoveredRow);
}

QString lightGlobalSheet(const ThemePalette &colors)
{
    return uR"(
QMainWindow { background: %1; color: %2; }
QTextBrowser { color: %2; border: none; border-radius: 8px; padding: 4px; }
QListWidget {
    background: #FFFFFF; color: %2; border: none; border-radius: 8px; padding: 4px;
}
QLineEdit {
    background: #FFFFFF; color: %2; border: 1px solid #C6C6C8; border-radius: 8px;
    padding: 6px 12px; font-size: 13px;
}
QLineEdit:focus { border: 2px solid %3; padding: 5px 11px; }
QMenuBar { background: %1; color: %2; border-bottom: 1px solid %4; }
QMenuBar::item:selected { background: rgba(0,0,0,0.08); border-radius: 6px; }
QMenu {
    background: #FFFFFF; color: %2; border: 1px solid %4; border-radius: 8px; padding: 4px;
}
QMenu::item:selected { background: %3; color: #FFFFFF; border-radius: 4px; }
QHeaderView::section { background: %1; color: %2; padding: 4px; border: 1px solid %4; }
QTreeWidget {
    background: #FFFFFF; color: %2; alternate-background-color: #F9F9FB; border-radius: 8px;
}
QTreeWidget::item:hover { background: #E8F0FE; }
QTreeWidget::item:selected { background: %3; color: #FFFFFF; }
QStatusBar { background: %1; color: %2; border-top: 1px solid %4; }
QLabel#topicLabel { color: %2; background: transparent; }
)"_s.arg(colors.windowBackground, colors.textColor, colors.accentColor, colors.borderColor);
}

/// The differences between the tabs of two sheets.
struct TabColors
{
    QString background;
    /// A whole declaration; empty if the tabs inherit the widget's text colour.
    QString colorRule;
    QString borderColor;
    QString hoverBackground;
    QString hoverColor;
    /// Whether the tabs also have a bottom border.
    bool hasBottomBorder = false;
};

TabColors lightTabs()
{
    return {.background = u"#F0F0F0"_s,
            .colorRule = {},
            .borderColor = u"#D1D1D6"_s,
            .hoverBackground = u"#E0E0E0"_s,
            .hoverColor = u"#333333"_s};
}

TabColors darkTabs()
{
    return {.background = u"#3A3A3A"_s,
            .colorRule = {},
            .borderColor = u"#555555"_s,
            .hoverBackground = u"#4A4A4A"_s,
            .hoverColor = u"#EEEEEE"_s};
}

QString tabRules(const TabColors &tabs)
{
    const QString bottom = tabs.hasBottomBorder ? u"1px solid "_s + tabs.borderColor : u"none"_s;
    const QString selectedBottom =
            tabs.hasBottomBorder ? u"1px solid "_s + ThemeColors::Accent : u"none"_s;
    return uR"(
QTabBar::tab {
    background: %1; %2 border: 1px solid %3; border-bottom: %4; padding: 6px 8px 6px 4px;
    margin-right: 2px; border-top-left-radius: 6px; border-top-right-radius: 6px;
    min-width: 80px; max-width: none; font-size: 12px;
}
QTabBar::tab:selected {
    background: %8; color: #FFFFFF; font-weight: 600; border: 1px solid %8;
    border-bottom: %5; border-top-left-radius: 6px; border-top-right-radius: 6px;
}
QTabBar::tab:hover:!selected { background: %6; color: %7; }
QTabBar::tab:selected:hover { background: %8; color: #FFFFFF; }
)"_s.arg(tabs.background, tabs.colorRule, tabs.borderColor, bottom, selectedBottom,
         tabs.hoverBackground, tabs.hoverColor, ThemeColors::Accent);
}

/// Returns the rules for the labels, fields and font button of the preferences dialog.
QString preferencesFormRules(const QString &theme)
{
    const ThemePalette colors = ThemeManager::palette(theme);
    return uR"(
QDialog { background: #FFFFFF; }
QLabel { color: #333333; font-size: 13px; }
QLineEdit {
    border: 1px solid %1; border-radius: 6px; padding: 6px 12px; font-size: 13px;
    background: %2; color: #333333; selection-background-color: %3; min-width: 200px;
}
QLineEdit:focus { border: 2px solid %3; padding: 5px 11px; }
QLineEdit#prefsSmallEdit { min-width: 60px; max-width: 60px; }
QComboBox { min-height: 28px; max-height: 28px; }
QComboBox#prefsWideCombo { min-width: 200px; }
QComboBox#prefsSmallCombo { min-width: 60px; max-width: 60px; }
QSpinBox { min-height: 28px; max-height: 28px; }
QSpinBox#prefsWideSpin { min-width: 200px; max-width: 200px; }
QPushButton#prefsFontButton {
    border: 1px solid %1; border-radius: 6px; padding: 6px 12px; font-size: 13px;
    background: %2; color: #333333; text-align: left; min-width: 200px;
}
QPushButton#prefsFontButton:hover { background: %4; }
)"_s.arg(colors.borderColor, colors.inputBackground, colors.accentColor, barBackground(theme));
}

/// Returns the rules for the buttons that choose and delete the chat background.
QString preferencesBackgroundRules(const QString &theme)
{
    return uR"(
QPushButton#prefsBgButton {
    background: transparent; color: %3; border: 1px solid %3; border-radius: 6px;
    padding: 6px 12px; font-size: 12px; font-weight: 500;
}
QPushButton#prefsBgButton:hover { background: %1; }
QPushButton#prefsDeleteButton {
    background: transparent; color: %4; border: 1px solid %4; border-radius: 6px;
    padding: 6px 12px; font-size: 12px; font-weight: 500;
}
QPushButton#prefsDeleteButton:hover { background: %2; }
)"_s.arg(ThemeColors::accentTint(theme), ThemeColors::destructiveTint(theme), ThemeColors::Accent,
         ThemeColors::Destructive);
}

QString darkPageTabRules(const ThemePalette &colors)
{
    return uR"(
QTabWidget::pane { background: %1; border: 1px solid #444; border-radius: 8px; padding: 8px; }
QTabBar::tab {
    background: %2; color: #CCCCCC; padding: 6px 8px 6px 4px; border: 1px solid %3;
    border-bottom: none; border-top-left-radius: 4px; border-top-right-radius: 4px;
    min-width: 80px; max-width: none;
}
QTabBar::tab:selected { background: %4; color: #FFFFFF; font-weight: bold; }
QTabBar::tab:hover { background: #4A4A4A; }
)"_s.arg(colors.windowBackground, colors.inputBackground, colors.borderColor,
         ThemeColors::DarkSelectedRow);
}

QString lightPageTabRules(const ThemePalette &colors)
{
    // Intended: the pane's border has the window's background colour. It is faint on the white
    // dialog, so that the frames of the tabs stand out.
    const QString pane = uR"(
QTabWidget::pane { background: #FFFFFF; border: 1px solid %1; border-radius: 8px; padding: 8px; }
)"_s.arg(colors.windowBackground);
    const QString closeButton = uR"(
QTabBar::close-button {
    subcontrol-position: right; margin-right: 6px; background: transparent; border-radius: 2px;
    padding: 2px; width: 12px; height: 12px;
}
QTabBar::close-button:hover { background: rgba(0,0,0,0.1); }
QTabBar::close-button:selected:hover { background: rgba(255,255,255,0.25); }
)"_s;
    TabColors tabs = lightTabs();
    tabs.colorRule = u"color: #333333;"_s;
    tabs.hasBottomBorder = true;
    return pane + tabRules(tabs) + closeButton;
}

} // namespace

QString ThemeColors::accentTint(const QString &theme)
{
    return ThemeManager::isDark(theme) ? u"#1E3A5F"_s : u"#E5F0FF"_s;
}

QString ThemeColors::destructiveTint(const QString &theme)
{
    return ThemeManager::isDark(theme) ? u"#5F1E1E"_s : u"#FFE5E5"_s;
}

bool ThemeManager::isDark(const QString &theme)
{
    return theme == "dark"_L1;
}

ThemePalette ThemeManager::palette(const QString &theme)
{
    if (isDark(theme)) {
        return {.windowBackground = u"#2E2E2E"_s,
                .panelBackground = u"#1E1E1E"_s,
                .textColor = u"#DDDDDD"_s,
                .accentColor = ThemeColors::Accent.toString(),
                .accentHoverColor = ThemeColors::AccentHover.toString(),
                .inputBackground = u"#3E3E3E"_s,
                .borderColor = u"#555555"_s,
                .destructiveColor = ThemeColors::Destructive.toString()};
    }
    return {.windowBackground = u"#F5F5F7"_s,
            .panelBackground = u"#F0F0F0"_s,
            .textColor = u"#333333"_s,
            .accentColor = ThemeColors::Accent.toString(),
            .accentHoverColor = ThemeColors::AccentHover.toString(),
            .inputBackground = u"#FFFFFF"_s,
            .borderColor = u"#D1D1D6"_s,
            .destructiveColor = ThemeColors::Destructive.toString()};
}

QString ThemeManager::globalStyleSheet(const QString &theme)
{
    return isDark(theme) ? darkGlobalSheet(palette(theme)) : lightGlobalSheet(palette(theme));
}

QString ThemeManager::dialogStyleSheet(const QString &theme)
{
    const ThemePalette colors = palette(theme);
    const QString textRules = uR"(
QDialog { background: %1; }
QLabel { color: %2; font-size: 13px; }
)"_s.arg(colors.windowBackground, colors.textColor);
    const QString barRule = uR"(
QToolBar { background: %1; border: none; }
)"_s.arg(barBackground(theme));
    return textRules + lineEditStyleSheet(theme) + buttonStyleSheet(theme) + barRule;
}

QString ThemeManager::lineEditStyleSheet(const QString &theme)
{
    const ThemePalette colors = palette(theme);
    return u"QLineEdit { border: 1px solid %1; border-radius: 6px; padding: 8px 12px; "
           "font-size: 14px; background: %2; color: %3; selection-background-color: %4; }"
           "QLineEdit:focus { border: 2px solid %4; padding: 7px 11px; }"_s.arg(
                   colors.borderColor, colors.inputBackground, colors.textColor,
                   colors.accentColor);
}

QString ThemeManager::buttonStyleSheet(const QString &theme)
{
    // Only the background of "cancelButton" under the pointer depends on the theme.
    return uR"(
QPushButton#connectButton {
    background: %2; color: white; border: none; padding: 10px 24px; border-radius: 6px;
    font-size: 14px; font-weight: 500;
}
QPushButton#connectButton:hover { background: %3; }
QPushButton#cancelButton {
    background: transparent; color: %4; border: 1px solid %4; padding: 10px 24px;
    border-radius: 6px; font-size: 14px; font-weight: 500;
}
QPushButton#cancelButton:hover { background: %1; }
)"_s.arg(ThemeColors::destructiveTint(theme), ThemeColors::Accent, ThemeColors::AccentHover,
         ThemeColors::Destructive);
}

QString ThemeManager::preferencesDialogStyleSheet(const QString &theme)
{
    const ThemePalette colors = palette(theme);
    return preferencesFormRules(theme) + buttonStyleSheet(theme) + preferencesBackgroundRules(theme)
           + (isDark(theme) ? darkPageTabRules(colors) : lightPageTabRules(colors));
}

QString ThemeManager::tabWidgetStyleSheet(const QString &theme)
{
    // Intended: not isDark(), since "glass" has dark tabs.
    const bool isLight = theme == "light"_L1;
    return u"QTabWidget::pane { border: none; padding: 0; }"_s
           + tabRules(isLight ? lightTabs() : darkTabs());
}
