#include "StyleSheetReader.h"
#include "ThemeManager.h"

#include <QRegularExpression>
#include <QTest>
#include <QWidget>

using namespace Qt::StringLiterals;

class TestThemeManager final : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void onlyDarkIsDark();
    void paletteByName_data();
    void paletteByName();

    void globalSheet_data();
    void globalSheet();
    void dialogSheet_data();
    void dialogSheet();
    void lineEditSheet_data();
    void lineEditSheet();
    void buttonSheet_data();
    void buttonSheet();
    void preferencesSheet_data();
    void preferencesSheet();
    void tabWidgetSheet_data();
    void tabWidgetSheet();

    void preferencesFrameHasTheWindowsColour();
    void qtParsesEachSheet_data();
    void qtParsesEachSheet();
    void qtWarnsOfBrokenSheet();
};

namespace {

const QStringList LightNames{u"light"_s, u"glass"_s, u"Dark"_s, u"sepia"_s, u""_s};

/// Describes how the rules of two sheets differ; empty if they are equal.
QString difference(const QString &actual, const QString &expected)
{
    const StyleSheetReader actualSheet(actual);
    const StyleSheetReader expectedSheet(expected);
    QStringList lines;
    const QStringList selectors = actualSheet.selectors() + expectedSheet.selectors();
    for (const QString &selector : selectors) {
        if (actualSheet.rule(selector) == expectedSheet.rule(selector))
            continue;
        const QStringList properties =
                actualSheet.rule(selector).keys() + expectedSheet.rule(selector).keys();
        for (const QString &property : properties) {
            const QString value = actualSheet.value(selector, property);
            const QString expectedValue = expectedSheet.value(selector, property);
            if (value != expectedValue) {
                lines.append(u"%1 { %2 } is \"%3\", not \"%4\""_s.arg(selector, property, value,
                                                                      expectedValue));
            }
        }
    }
    lines.removeDuplicates();
    return lines.join(u'\n');
}

/// Adds one row for "dark" and one for each name that selects the light theme.
void addRows(const QString &dark, const QString &light)
{
    QTest::addColumn<QString>("theme");
    QTest::addColumn<QString>("expected");
    QTest::newRow("dark") << u"dark"_s << dark;
    for (const QString &name : LightNames)
        QTest::addRow("\"%s\"", qPrintable(name)) << name << light;
}

const QString DarkLineEdit = uR"(
    QLineEdit { border: 1px solid #555555; border-radius: 6px; padding: 8px 12px;
        font-size: 14px; background: #3E3E3E; color: #DDDDDD;
        selection-background-color: #007AFF; }
    QLineEdit:focus { border: 2px solid #007AFF; padding: 7px 11px; }
)"_s;

const QString LightLineEdit = uR"(
    QLineEdit { border: 1px solid #D1D1D6; border-radius: 6px; padding: 8px 12px;
        font-size: 14px; background: #FFFFFF; color: #333333;
        selection-background-color: #007AFF; }
    QLineEdit:focus { border: 2px solid #007AFF; padding: 7px 11px; }
)"_s;

const QString Buttons = uR"(
    QPushButton#connectButton { background: #007AFF; color: white; border: none;
        padding: 10px 24px; border-radius: 6px; font-size: 14px; font-weight: 500; }
    QPushButton#connectButton:hover { background: #0062CC; }
    QPushButton#cancelButton { background: transparent; color: #FF3B30;
        border: 1px solid #FF3B30; padding: 10px 24px; border-radius: 6px; font-size: 14px;
        font-weight: 500; }
)"_s;

const QString DarkCancelHover = u"QPushButton#cancelButton:hover { background: #5F1E1E; }"_s;
const QString LightCancelHover = u"QPushButton#cancelButton:hover { background: #FFE5E5; }"_s;

/// The rules of the main window's tabs that both themes share.
const QString MainTabs = uR"(
    QTabWidget::pane { border: none; padding: 0; }
    QTabBar::tab { border-bottom: none; padding: 6px 8px 6px 4px; margin-right: 2px;
        border-top-left-radius: 6px; border-top-right-radius: 6px; min-width: 80px;
        max-width: none; font-size: 12px; }
    QTabBar::tab:selected { background: #007AFF; color: #FFFFFF; font-weight: 600;
        border: 1px solid #007AFF; border-bottom: none; border-top-left-radius: 6px;
        border-top-right-radius: 6px; }
    QTabBar::tab:selected:hover { background: #007AFF; color: #FFFFFF; }
)"_s;

/// The rules of the preferences dialog that both themes share.
const QString Preferences = uR"(
    QDialog { background: #FFFFFF; }
    QLabel { color: #333333; font-size: 13px; }
    QLineEdit { border-radius: 6px; padding: 6px 12px; font-size: 13px; color: #333333;
        selection-background-color: #007AFF; min-width: 200px; }
    QLineEdit:focus { border: 2px solid #007AFF; padding: 5px 11px; }
    QLineEdit#prefsSmallEdit { min-width: 60px; max-width: 60px; }
    QComboBox { min-height: 28px; max-height: 28px; }
    QComboBox#prefsWideCombo { min-width: 200px; }
    QComboBox#prefsSmallCombo { min-width: 60px; max-width: 60px; }
    QSpinBox { min-height: 28px; max-height: 28px; }
    QSpinBox#prefsWideSpin { min-width: 200px; max-width: 200px; }
    QPushButton#prefsFontButton { border-radius: 6px; padding: 6px 12px; font-size: 13px;
        color: #333333; text-align: left; min-width: 200px; }
    QPushButton#prefsBgButton { background: transparent; color: #007AFF;
        border: 1px solid #007AFF; border-radius: 6px; padding: 6px 12px; font-size: 12px;
        font-weight: 500; }
    QPushButton#prefsDeleteButton { background: transparent; color: #FF3B30;
        border: 1px solid #FF3B30; border-radius: 6px; padding: 6px 12px; font-size: 12px;
        font-weight: 500; }
)"_s;

} // namespace

void TestThemeManager::init()
{
    // Qt only warns of a sheet that it cannot parse and of an argument without a placeholder.
    QTest::failOnWarning(QRegularExpression(u"."_s));
}

void TestThemeManager::onlyDarkIsDark()
{
    QVERIFY(ThemeManager::isDark(u"dark"_s));
    for (const QString &name : LightNames)
        QVERIFY2(!ThemeManager::isDark(name), qPrintable(name));
}

void TestThemeManager::paletteByName_data()
{
    QTest::addColumn<QString>("theme");
    QTest::addColumn<QStringList>("colours");

    QTest::newRow("dark") << u"dark"_s
                          << QStringList{u"#2E2E2E"_s, u"#1E1E1E"_s, u"#DDDDDD"_s, u"#007AFF"_s,
                                         u"#0062CC"_s, u"#3E3E3E"_s, u"#555555"_s, u"#FF3B30"_s};
    for (const QString &name : LightNames) {
        QTest::addRow("\"%s\"", qPrintable(name))
                << name << QStringList{u"#F5F5F7"_s, u"#F0F0F0"_s, u"#333333"_s, u"#007AFF"_s,
                                       u"#0062CC"_s, u"#FFFFFF"_s, u"#D1D1D6"_s, u"#FF3B30"_s};
    }
}

void TestThemeManager::paletteByName()
{
    QFETCH(const QString, theme);
    // In the order of declaration.
    const auto [windowBackground, panelBackground, textColor, accentColor, accentHoverColor,
                inputBackground, borderColor, destructiveColor, paletteFlag] =
            ThemeManager::palette(theme);
    QTEST((QStringList{windowBackground, panelBackground, textColor, accentColor, accentHoverColor,
                       inputBackground, borderColor, destructiveColor}),
          "colours");
    QVERIFY(!paletteFlag);
}

void TestThemeManager::globalSheet_data()
{
    addRows(uR"(
        QMainWindow { background: #2E2E2E; color: #DDDDDD; }
        QTextBrowser { background: #1E1E1E; color: #DDDDDD; border: none; }
        QListWidget { background: #1E1E1E; color: #DDDDDD; }
        QLineEdit { background: #3E3E3E; color: #DDDDDD; border: 1px solid #555555; }
        QMenuBar { background: #2E2E2E; color: #DDDDDD; }
        QMenuBar::item:selected { background: #505050; }
        QMenu { background: #2E2E2E; color: #DDDDDD; border: 1px solid #555555; }
        QMenu::item:selected { background: #505050; }
        QHeaderView::section { background: #3E3E3E; color: #DDDDDD; padding: 4px;
            border: 1px solid #555555; }
        QTreeWidget { background: #1E1E1E; color: #DDDDDD; alternate-background-color: #252525; }
        QTreeWidget::item:hover { background: #3A3A3A; }
        QTreeWidget::item:selected { background: #505050; }
        QStatusBar { background: #2E2E2E; color: #DDDDDD; }
        QLabel#topicLabel { color: #DDDDDD; })"_s,
            uR"(
        QMainWindow { background: #F5F5F7; color: #333333; }
        QTextBrowser { color: #333333; border: none; border-radius: 8px; padding: 4px; }
        QListWidget { background: #FFFFFF; color: #333333; border: none; border-radius: 8px;
            padding: 4px; }
        QLineEdit { background: #FFFFFF; color: #333333; border: 1px solid #C6C6C8;
            border-radius: 8px; padding: 6px 12px; font-size: 13px; }
        QLineEdit:focus { border: 2px solid #007AFF; padding: 5px 11px; }
        QMenuBar { background: #F5F5F7; color: #333333; border-bottom: 1px solid #D1D1D6; }
        QMenuBar::item:selected { background: rgba(0,0,0,0.08); border-radius: 6px; }
        QMenu { background: #FFFFFF; color: #333333; border: 1px solid #D1D1D6;
            border-radius: 8px; padding: 4px; }
        QMenu::item:selected { background: #007AFF; color: #FFFFFF; border-radius: 4px; }
        QHeaderView::section { background: #F5F5F7; color: #333333; padding: 4px;
            border: 1px solid #D1D1D6; }
        QTreeWidget { background: #FFFFFF; color: #333333; alternate-background-color: #F9F9FB;
            border-radius: 8px; }
        QTreeWidget::item:hover { background: #E8F0FE; }
        QTreeWidget::item:selected { background: #007AFF; color: #FFFFFF; }
        QStatusBar { background: #F5F5F7; color: #333333; border-top: 1px solid #D1D1D6; }
        QLabel#topicLabel { color: #333333; background: transparent; })"_s);
}

void TestThemeManager::globalSheet()
{
    QFETCH(const QString, theme);
    QFETCH(const QString, expected);
    QCOMPARE(difference(ThemeManager::globalStyleSheet(theme), expected), QString());
}

void TestThemeManager::dialogSheet_data()
{
    addRows(DarkLineEdit + Buttons + DarkCancelHover + uR"(
                QDialog { background: #2E2E2E; }
                QLabel { color: #DDDDDD; font-size: 13px; }
                QToolBar { background: #3E3E3E; border: none; })"_s,
            LightLineEdit + Buttons + LightCancelHover + uR"(
                QDialog { background: #F5F5F7; }
                QLabel { color: #333333; font-size: 13px; }
                QToolBar { background: #F0F0F0; border: none; })"_s);
}

void TestThemeManager::dialogSheet()
{
    QFETCH(const QString, theme);
    QFETCH(const QString, expected);
    QCOMPARE(difference(ThemeManager::dialogStyleSheet(theme), expected), QString());
}

void TestThemeManager::lineEditSheet_data()
{
    addRows(DarkLineEdit, LightLineEdit);
}

void TestThemeManager::lineEditSheet()
{
    QFETCH(const QString, theme);
    QFETCH(const QString, expected);
    QCOMPARE(difference(ThemeManager::lineEditStyleSheet(theme), expected), QString());
}

void TestThemeManager::buttonSheet_data()
{
    addRows(Buttons + DarkCancelHover, Buttons + LightCancelHover);
}

void TestThemeManager::buttonSheet()
{
    QFETCH(const QString, theme);
    QFETCH(const QString, expected);
    QCOMPARE(difference(ThemeManager::buttonStyleSheet(theme), expected), QString());
}

void TestThemeManager::preferencesSheet_data()
{
    addRows(Preferences + Buttons + DarkCancelHover + uR"(
        QLineEdit { border: 1px solid #555555; background: #3E3E3E; }
        QPushButton#prefsFontButton { border: 1px solid #555555; background: #3E3E3E; }
        QPushButton#prefsFontButton:hover { background: #3E3E3E; }
        QPushButton#prefsBgButton:hover { background: #1E3A5F; }
        QPushButton#prefsDeleteButton:hover { background: #5F1E1E; }
        QTabWidget::pane { background: #2E2E2E; border: 1px solid #444; border-radius: 8px;
            padding: 8px; }
        QTabBar::tab { background: #3E3E3E; color: #CCCCCC; padding: 6px 8px 6px 4px;
            border: 1px solid #555555; border-bottom: none; border-top-left-radius: 4px;
            border-top-right-radius: 4px; min-width: 80px; max-width: none; }
        QTabBar::tab:selected { background: #505050; color: #FFFFFF; font-weight: bold; }
        QTabBar::tab:hover { background: #4A4A4A; })"_s,
            Preferences + Buttons + LightCancelHover + uR"(
        QLineEdit { border: 1px solid #D1D1D6; background: #FFFFFF; }
        QPushButton#prefsFontButton { border: 1px solid #D1D1D6; background: #FFFFFF; }
        QPushButton#prefsFontButton:hover { background: #F0F0F0; }
        QPushButton#prefsBgButton:hover { background: #E5F0FF; }
        QPushButton#prefsDeleteButton:hover { background: #FFE5E5; }
        QTabWidget::pane { background: #FFFFFF; border: 1px solid #F5F5F7; border-radius: 8px;
            padding: 8px; }
        QTabBar::tab { background: #F0F0F0; color: #333333; padding: 6px 8px 6px 4px;
            border: 1px solid #D1D1D6; border-bottom: 1px solid #D1D1D6; margin-right: 2px;
            border-top-left-radius: 6px; border-top-right-radius: 6px; min-width: 80px;
            max-width: none; font-size: 12px; }
        QTabBar::tab:selected { background: #007AFF; color: #FFFFFF; font-weight: 600;
            border: 1px solid #007AFF; border-bottom: 1px solid #007AFF;
            border-top-left-radius: 6px; border-top-right-radius: 6px; }
        QTabBar::tab:hover:!selected { background: #E0E0E0; color: #333333; }
        QTabBar::tab:selected:hover { background: #007AFF; color: #FFFFFF; }
        QTabBar::close-button { subcontrol-position: right; margin-right: 6px;
            background: transparent; border-radius: 2px; padding: 2px; width: 12px;
            height: 12px; }
        QTabBar::close-button:hover { background: rgba(0,0,0,0.1); }
        QTabBar::close-button:selected:hover { background: rgba(255,255,255,0.25); })"_s);
}

void TestThemeManager::preferencesSheet()
{
    QFETCH(const QString, theme);
    QFETCH(const QString, expected);
    QCOMPARE(difference(ThemeManager::preferencesDialogStyleSheet(theme), expected), QString());
}

void TestThemeManager::tabWidgetSheet_data()
{
    const QString light = MainTabs + uR"(
        QTabBar::tab { background: #F0F0F0; border: 1px solid #D1D1D6; }
        QTabBar::tab:hover:!selected { background: #E0E0E0; color: #333333; })"_s;
    const QString dark = MainTabs + uR"(
        QTabBar::tab { background: #3A3A3A; border: 1px solid #555555; }
        QTabBar::tab:hover:!selected { background: #4A4A4A; color: #EEEEEE; })"_s;

    QTest::addColumn<QString>("theme");
    QTest::addColumn<QString>("expected");
    QTest::newRow("light") << u"light"_s << light;
    QTest::newRow("dark") << u"dark"_s << dark;
    QTest::newRow("glass") << u"glass"_s << dark;
    QTest::newRow("unknown") << u"Light"_s << dark;
    QTest::newRow("empty") << u""_s << dark;
}

void TestThemeManager::tabWidgetSheet()
{
    QFETCH(const QString, theme);
    QFETCH(const QString, expected);
    QCOMPARE(difference(ThemeManager::tabWidgetStyleSheet(theme), expected), QString());
}

void TestThemeManager::preferencesFrameHasTheWindowsColour()
{
    const StyleSheetReader sheet(ThemeManager::preferencesDialogStyleSheet(u"light"_s));
    QCOMPARE(sheet.value(u"QTabWidget::pane"_s, u"border"_s), u"1px solid #F5F5F7"_s);
    QVERIFY(sheet.value(u"QTabWidget::pane"_s, u"border"_s)
            != sheet.value(u"QTabBar::tab"_s, u"border"_s));
}

void TestThemeManager::qtParsesEachSheet_data()
{
    QTest::addColumn<QString>("sheet");
    for (const char *name : {"light", "dark", "glass"}) {
        const QString theme = QString::fromLatin1(name);
        QTest::addRow("global, %s", name) << ThemeManager::globalStyleSheet(theme);
        QTest::addRow("dialog, %s", name) << ThemeManager::dialogStyleSheet(theme);
        QTest::addRow("line edit, %s", name) << ThemeManager::lineEditStyleSheet(theme);
        QTest::addRow("button, %s", name) << ThemeManager::buttonStyleSheet(theme);
        QTest::addRow("preferences, %s", name) << ThemeManager::preferencesDialogStyleSheet(theme);
        QTest::addRow("tab widget, %s", name) << ThemeManager::tabWidgetStyleSheet(theme);
    }
}

void TestThemeManager::qtParsesEachSheet()
{
    QFETCH(const QString, sheet);
    QVERIFY(!sheet.contains(u'%'));
    QWidget widget;
    widget.setStyleSheet(sheet);
    widget.ensurePolished();
}

void TestThemeManager::qtWarnsOfBrokenSheet()
{
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"^Could not parse stylesheet"_s));
    QWidget widget;
    widget.setStyleSheet(u"QLabel { color: "_s);
    widget.ensurePolished();
}

QTEST_MAIN(TestThemeManager)
#include "tst_ThemeManager.moc"
