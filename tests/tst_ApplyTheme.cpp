#include "HighlightTabBar.h"
#include "IRCConnection.h"
#include "MyTabWidget.h"
#include "StyleSheetReader.h"
#include "TemporaryStore.h"
#include "Waiting.h"
#include "WindowSession.h"

#include <QListWidget>
#include <QPushButton>
#include <QSettings>
#include <QSplitter>
#include <QStatusBar>
#include <QTest>
#include <QTreeWidget>

#include <array>

using namespace Qt::StringLiterals;

namespace {

void addThemes(const QList<std::array<QString, 2>> &rows)
{
    QTest::addColumn<QString>("theme");
    QTest::addColumn<QString>("value");
    for (const auto &[theme, value] : rows)
        QTest::newRow(qUtf8Printable(theme)) << theme << value;
}

// Counts the events of one type that an object receives.
class EventCounter final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(EventCounter)

public:
    EventCounter(QObject *watched, QEvent::Type counted)
        : type(counted)
    {
        watched->installEventFilter(this);
    }

    bool eventFilter(QObject *, QEvent *event) override
    {
        count += event->type() == type ? 1 : 0;
        return false;
    }

    int count = 0;

private:
    QEvent::Type type;
};

} // namespace

class TestApplyTheme final : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void clearsListTreeSheet();
    void replacesEarlierSheets();
    void enablesAutoFill();
    void appliesGlobalSheet_data();
    void appliesGlobalSheet();
    void storesThemeName_data();
    void storesThemeName();
    void passesThemeToTabBar_data();
    void passesThemeToTabBar();
    void stylesUserList_data();
    void stylesUserList();
    void stylesTabs_data();
    void stylesTabs();
    void stylesPane_data();
    void stylesPane();
    void updatesCloseButtons();
    void hidesSplitterHandle();
    void keepsUserListVisibility_data();
    void keepsUserListVisibility();
    void updatesStatusBar();
    void repaintsWindowImmediately();
    void longTabNamesFit();
    void toggleThemeDoesNothing();
    void nextStartIgnoresStoredTheme();

private:
    TemporaryStore store;
};

void TestApplyTheme::init()
{
    store.clear();
}

void TestApplyTheme::clearsListTreeSheet()
{
    WindowSession session;
    QTreeWidget tree;
    tree.setStyleSheet(u"QTreeWidget { color: red; }"_s);
    session.probe.listTree() = &tree;
    session.probe.applyTheme(u"light"_s);
    session.probe.listTree() = nullptr;
    QCOMPARE(tree.styleSheet(), QString());
}

void TestApplyTheme::replacesEarlierSheets()
{
    WindowSession session;
    session.window.setStyleSheet(u"QMainWindow { color: red; }"_s);
    session.window.centralWidget()->setStyleSheet(u"QWidget { color: red; }"_s);
    session.probe.applyTheme(u"light"_s);
    QCOMPARE(StyleSheetReader(session.window.styleSheet()).value(u"QMainWindow"_s, u"color"_s),
             u"#333333"_s);
    QCOMPARE(session.window.centralWidget()->styleSheet(), QString());
}

void TestApplyTheme::enablesAutoFill()
{
    WindowSession session;
    QWidget *central = session.window.centralWidget();
    for (QWidget *widget : {static_cast<QWidget *>(&session.window), central}) {
        widget->setAttribute(Qt::WA_TranslucentBackground, true);
        widget->setAutoFillBackground(false);
    }
    session.probe.applyTheme(u"light"_s);
    QVERIFY(!session.window.testAttribute(Qt::WA_TranslucentBackground));
    QVERIFY(!central->testAttribute(Qt::WA_TranslucentBackground));
    // Qt disables the window's auto fill, since the sheet sets a background.
    QVERIFY(central->autoFillBackground());
}

void TestApplyTheme::appliesGlobalSheet_data()
{
    addThemes({{u"light"_s, u"#F5F5F7"_s},
               {u"dark"_s, u"#2E2E2E"_s},
               {u"glass"_s, u"#F5F5F7"_s},
               {u"Dark"_s, u"#F5F5F7"_s},
               {u""_s, u"#F5F5F7"_s}});
}

void TestApplyTheme::appliesGlobalSheet()
{
    QFETCH(const QString, theme);
    WindowSession session;
    session.probe.applyTheme(theme);
    const StyleSheetReader sheet(session.window.styleSheet());
    QTEST(sheet.value(u"QMainWindow"_s, u"background"_s), "value");
    // A rule that the dark sheet does not have.
    QCOMPARE(sheet.selectors().contains(u"QLineEdit:focus"_s), theme != "dark"_L1);
}

void TestApplyTheme::storesThemeName_data()
{
    addThemes({{u"light"_s, u"light"_s}, {u"dark"_s, u"dark"_s}, {u"glass"_s, u"glass"_s}});
}

void TestApplyTheme::storesThemeName()
{
    QFETCH(const QString, theme);
    WindowSession session;
    session.probe.applyTheme(theme);
    QTEST(session.probe.currentTheme(), "value");
    QTEST(QSettings().value(u"theme"_s).toString(), "value");
}

void TestApplyTheme::passesThemeToTabBar_data()
{
    addThemes({{u"light"_s, u"#FFB800"_s}, {u"dark"_s, u"#FFD700"_s}, {u"glass"_s, u"#FFB800"_s}});
}

void TestApplyTheme::passesThemeToTabBar()
{
    QFETCH(const QString, theme);
    QFETCH(const QString, value);
    WindowSession session;
    session.probe.appendMessageToTab(u"MMMMMM"_s, u"x"_s);
    session.probe.showTab(u"Server"_s);
    session.probe.applyTheme(theme);
    session.probe.tabBar().highlightTab(1);
    const QImage image = session.probe.tabBar().grab().toImage();
    const auto count = [&image](const QColor &color) {
        int pixels = 0;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x)
                pixels += image.pixelColor(x, y) == color ? 1 : 0;
        }
        return pixels;
    };
    const QString other = value == "#FFB800"_L1 ? u"#FFD700"_s : u"#FFB800"_s;
    QVERIFY(count(QColor(value)) > 0);
    QCOMPARE(count(QColor(other)), 0);
}

void TestApplyTheme::stylesUserList_data()
{
    addThemes({{u"light"_s, u"QListWidget { border: 1px solid #ccc; }"_s},
               {u"dark"_s, u"QListWidget { border: 1px solid #555; }"_s},
               {u"glass"_s, u"QListWidget { border: 1px solid #ccc; }"_s}});
}

void TestApplyTheme::stylesUserList()
{
    QFETCH(const QString, theme);
    WindowSession session;
    session.probe.applyTheme(theme);
    QTEST(session.probe.userList().styleSheet(), "value");
}

void TestApplyTheme::stylesTabs_data()
{
    QTest::addColumn<QString>("theme");
    QTest::addColumn<QString>("background");
    QTest::addColumn<QString>("border");
    QTest::addColumn<QString>("hoverBackground");
    QTest::addColumn<QString>("hoverColor");

    const auto dark = [](const char *theme) {
        QTest::newRow(theme) << QString::fromLatin1(theme) << u"#3A3A3A"_s << u"1px solid #555555"_s
                             << u"#4A4A4A"_s << u"#EEEEEE"_s;
    };
    QTest::newRow("light") << u"light"_s << u"#F0F0F0"_s << u"1px solid #D1D1D6"_s << u"#E0E0E0"_s
                           << u"#333333"_s;
    dark("dark");
    dark("glass");
    dark("Light");
}

void TestApplyTheme::stylesTabs()
{
    QFETCH(const QString, theme);
    WindowSession session;
    session.probe.applyTheme(theme);
    const StyleSheetReader sheet(session.probe.tabWidget().styleSheet());
    const QString tab = u"QTabBar::tab"_s;
    QTEST(sheet.value(tab, u"background"_s), "background");
    QTEST(sheet.value(tab, u"border"_s), "border");
    const StyleSheetReader::Declarations common{{u"border-bottom"_s, u"none"_s},
                                                {u"padding"_s, u"6px 8px 6px 4px"_s},
                                                {u"margin-right"_s, u"2px"_s},
                                                {u"border-top-left-radius"_s, u"6px"_s},
                                                {u"border-top-right-radius"_s, u"6px"_s},
                                                {u"min-width"_s, u"80px"_s},
                                                {u"max-width"_s, u"none"_s},
                                                {u"font-size"_s, u"12px"_s}};
    StyleSheetReader::Declarations rest = sheet.rule(tab);
    rest.remove(u"background"_s);
    rest.remove(u"border"_s);
    QCOMPARE(rest, common);

    const StyleSheetReader::Declarations selected{{u"background"_s, u"#007AFF"_s},
                                                  {u"color"_s, u"#FFFFFF"_s},
                                                  {u"font-weight"_s, u"600"_s},
                                                  {u"border"_s, u"1px solid #007AFF"_s},
                                                  {u"border-bottom"_s, u"none"_s},
                                                  {u"border-top-left-radius"_s, u"6px"_s},
                                                  {u"border-top-right-radius"_s, u"6px"_s}};
    QCOMPARE(sheet.rule(u"QTabBar::tab:selected"_s), selected);
    QTEST(sheet.value(u"QTabBar::tab:hover:!selected"_s, u"background"_s), "hoverBackground");
    QTEST(sheet.value(u"QTabBar::tab:hover:!selected"_s, u"color"_s), "hoverColor");
    QCOMPARE(sheet.rule(u"QTabBar::tab:selected:hover"_s),
             (StyleSheetReader::Declarations{{u"background"_s, u"#007AFF"_s},
                                             {u"color"_s, u"#FFFFFF"_s}}));
}

void TestApplyTheme::stylesPane_data()
{
    addThemes({{u"light"_s, u"none"_s}, {u"dark"_s, u"none"_s}});
}

void TestApplyTheme::stylesPane()
{
    QFETCH(const QString, theme);
    WindowSession session;
    session.probe.applyTheme(theme);
    const StyleSheetReader sheet(session.probe.tabWidget().styleSheet());
    QTEST(sheet.value(u"QTabWidget::pane"_s, u"border"_s), "value");
    QCOMPARE(sheet.value(u"QTabWidget::pane"_s, u"padding"_s), u"0"_s);
}

void TestApplyTheme::updatesCloseButtons()
{
    WindowSession session;
    session.probe.openTabs({u"#a"_s, u"#b"_s, u"#c"_s});
    session.probe.closeTab(2);
    session.probe.applyTheme(u"light"_s);
    // Otherwise the button of #c would still close the tab to its right.
    session.probe.closeButton(2)->click();
    QCOMPARE(session.probe.tabTexts(), (QStringList{u"Server"_s, u"#a"_s}));
}

void TestApplyTheme::hidesSplitterHandle()
{
    WindowSession session;
    session.probe.splitter().setStyleSheet(QString());
    session.probe.applyTheme(u"light"_s);
    QCOMPARE(session.probe.splitter().styleSheet(),
             u"QSplitter::handle { background: transparent; }"_s);
}

void TestApplyTheme::keepsUserListVisibility_data()
{
    QTest::addColumn<QString>("tab");
    QTest::addColumn<bool>("visible");

    QTest::newRow("server") << u"Server"_s << false;
    QTest::newRow("private") << u"bob"_s << false;
    QTest::newRow("channel") << u"#c"_s << true;
}

void TestApplyTheme::keepsUserListVisibility()
{
    QFETCH(const QString, tab);
    QFETCH(const bool, visible);
    WindowSession session;
    session.probe.appendMessageToTab(u"bob"_s, u"x"_s);
    session.probe.appendMessageToTab(u"#c"_s, u"x"_s);
    session.probe.showTab(tab);
    // applyTheme() restores the visibility that the tab decided.
    session.probe.userList().setVisible(!visible);
    for (const QString &theme : {u"light"_s, u"dark"_s}) {
        session.probe.applyTheme(theme);
        QCOMPARE(session.probe.userList().isVisible(), visible);
    }
}

void TestApplyTheme::updatesStatusBar()
{
    WindowSession session;
    session.window.statusBar()->setStyleSheet(u"QStatusBar { color: red; }"_s);
    session.window.statusBar()->clearMessage();
    session.probe.applyTheme(u"dark"_s);
    QCOMPARE(session.window.statusBar()->styleSheet(),
             u"QStatusBar { background-color: #f8d7da; }"_s);
    QCOMPARE(session.window.statusBar()->currentMessage(), u"Disconnected"_s);

    QVERIFY(session.registerAs(u"me"_s));
    session.window.statusBar()->clearMessage();
    session.probe.applyTheme(u"light"_s);
    QCOMPARE(session.window.statusBar()->styleSheet(),
             u"QStatusBar { background-color: #d4edda; }"_s);
    QCOMPARE(session.window.statusBar()->currentMessage(), u"Connected to 127.0.0.1 as me"_s);
}

void TestApplyTheme::repaintsWindowImmediately()
{
    WindowSession session;
    QVERIFY(QTest::qWaitForWindowExposed(&session.window, WaitTimeout));
    QCoreApplication::processEvents();
    const EventCounter paints(&session.window, QEvent::Paint);
    session.probe.applyTheme(u"dark"_s);
    QVERIFY(paints.count > 0);
}

void TestApplyTheme::longTabNamesFit()
{
    WindowSession session;
    const QString name = u"#a-channel-with-quite-a-long-name"_s;
    session.probe.appendMessageToTab(name, u"x"_s);
    for (const QString &theme : {u"light"_s, u"dark"_s}) {
        session.probe.applyTheme(theme);
        QFont font = session.probe.tabBar().font();
        font.setPixelSize(12);
        QVERIFY(session.probe.tabBar().tabRect(1).width()
                > QFontMetrics(font).horizontalAdvance(name));
    }
}

void TestApplyTheme::toggleThemeDoesNothing()
{
    WindowSession session;
    const QString sheet = session.window.styleSheet();
    QVERIFY(QMetaObject::invokeMethod(&session.window, "onToggleTheme"));
    QCOMPARE(session.probe.currentTheme(), u"light"_s);
    QCOMPARE(session.window.styleSheet(), sheet);
}

void TestApplyTheme::nextStartIgnoresStoredTheme()
{
    {
        WindowSession session;
        session.probe.applyTheme(u"dark"_s);
    }
    QCOMPARE(QSettings().value(u"theme"_s).toString(), u"dark"_s);
    const WindowSession session;
    QCOMPARE(session.probe.currentTheme(), u"light"_s);
    QCOMPARE(QSettings().value(u"theme"_s).toString(), u"light"_s);
    QCOMPARE(StyleSheetReader(session.window.styleSheet()).value(u"QMainWindow"_s, u"background"_s),
             u"#F5F5F7"_s);
}

QTEST_MAIN(TestApplyTheme)
#include "tst_ApplyTheme.moc"
