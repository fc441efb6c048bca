#include "HighlightTabBar.h"
#include "IRCConnection.h"
#include "TemporaryStore.h"
#include "Waiting.h"
#include "WindowSession.h"

#include <QApplication>
#include <QListWidget>
#include <QMenu>
#include <QMenuBar>
#include <QShortcut>
#include <QSignalSpy>
#include <QSplitter>
#include <QStatusBar>
#include <QTest>

#include <functional>

using namespace Qt::StringLiterals;

namespace {

// Shortcuts need an active window. Without a window manager, none becomes active when the connect
// dialog closes.
bool activate(MainWindow &window)
{
    window.activateWindow();
    return QTest::qWaitForWindowActive(&window, WaitTimeout);
}

// Emits a signal of the session.
using Event = std::function<void(IRCConnection &)>;

} // namespace

Q_DECLARE_METATYPE(Event)

class TestMainWindowInUse final : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void handlesSessionEvents_data();
    void handlesSessionEvents();
    void storesTopics();
    void updatesOnOwnNickChange();
    void keepsTheStatusMessageDuringMenus();
    void keepsTheRatioWhenResized();
    void resetsADraggedRatioWhenResized();
    void resetsADraggedRatioWhenTheTabChanges();
    void keepsTheServerTabOnTheShortcut();
    void closesTheCurrentTabByShortcut();
    void checksTheCurrentTabsNameInTheShortcut();
    void closesATabByDoubleClick();
    void keepsTheServerTabOnDoubleClick();

private:
    TemporaryStore store;
};

void TestMainWindowInUse::init()
{
    store.clear();
}

void TestMainWindowInUse::handlesSessionEvents_data()
{
    QTest::addColumn<Event>("event");
    QTest::addColumn<QString>("tab");
    QTest::addColumn<QString>("line");

    const auto row = [](const char *name, const Event &event, const QString &tab,
                        const QString &line) { QTest::newRow(name) << event << tab << line; };
    row(
            "connected", [](IRCConnection &connection) { emit connection.connected(); },
            u"Server"_s, u"*** Connected to server."_s);
    row(
            "registered", [](IRCConnection &connection) { emit connection.registered(); },
            u"Server"_s, u"*** Autojoining #auto"_s);
    row(
            "disconnected", [](IRCConnection &connection) { emit connection.disconnected(); },
            u"Server"_s, u"*** Disconnected."_s);
    row(
            "errorOccurred",
            [](IRCConnection &connection) { emit connection.errorOccurred(u"e"_s); }, u"Server"_s,
            u"*** Error: e"_s);
    row(
            "rawMessageReceived",
            [](IRCConnection &connection) { emit connection.rawMessageReceived(u"PING :x"_s); },
            u"Server"_s, u"<< PING :x"_s);
    row(
            "serverMessage",
            [](IRCConnection &connection) { emit connection.serverMessage(u"m"_s); }, u"Server"_s,
            u"m"_s);
    row(
            "privmsgReceived",
            [](IRCConnection &connection) {
                emit connection.privmsgReceived(u"a"_s, u"#c"_s, u"t"_s);
            },
            u"#c"_s, u"a|t"_s);
    row(
            "joinReceived",
            [](IRCConnection &connection) { emit connection.joinReceived(u"a"_s, u"#c"_s); },
            u"#c"_s, u"a|joined #c"_s);
    row(
            "partReceived",
            [](IRCConnection &connection) {
                emit connection.partReceived(u"a"_s, u"#c"_s, u"r"_s);
            },
            u"#c"_s, u"a|left #c (r)"_s);
    row(
            "nickChanged",
            [](IRCConnection &connection) { emit connection.nickChanged(u"old"_s, u"new"_s); },
            u"#known"_s, u"old|is now known as new"_s);
    row(
            "namesList and namesListFinished",
            [](IRCConnection &connection) {
                emit connection.namesList(u"#c"_s, {u"a"_s});
                emit connection.namesListFinished(u"#c"_s);
                emit connection.quitReceived(u"a"_s, u"r"_s);
            },
            u"#c"_s, u"a|quit (r)"_s);
    row(
            "quitReceived",
            [](IRCConnection &connection) { emit connection.quitReceived(u"old"_s, u"r"_s); },
            u"#known"_s, u"old|quit (r)"_s);
    row(
            "kickReceived",
            [](IRCConnection &connection) {
                emit connection.kickReceived(u"#c"_s, u"a"_s, u"b"_s, u"r"_s);
            },
            u"#c"_s, u"a|was kicked by b (r)"_s);
}

void TestMainWindowInUse::handlesSessionEvents()
{
    QFETCH(const Event, event);
    QFETCH(const QString, tab);
    WindowSession session;
    session.probe.autojoinChannels() = QStringList{u"#auto"_s};
    session.probe.channelUsers().insert(u"#known"_s, {u"old"_s});
    event(session.probe.connection());
    const QStringList lines = session.probe.lines(tab);
    QFETCH(const QString, line);
    QCOMPARE(lines.count(line), 1);
}

void TestMainWindowInUse::storesTopics()
{
    MainWindow window;
    const MainWindowProbe probe(window);
    emit probe.connection().topicReceived(u"#c"_s, u"a topic"_s);
    QCOMPARE(probe.channelTopics(), (QMap<QString, QString>{{u"#c"_s, u"a topic"_s}}));
}

void TestMainWindowInUse::updatesOnOwnNickChange()
{
    WindowSession session;
    QVERIFY(session.registerAs(u"me"_s));
    QVERIFY(session.join(u"#c"_s, u"@me alice"_s));
    const MainWindowProbe &probe = session.probe;
    QVERIFY(!probe.userList().item(0)->font().italic());

    probe.isAway() = true;
    probe.pendingNick() = u"later"_s;
    session.window.statusBar()->clearMessage();
    emit probe.connection().ownNickChanged(u"me"_s);
    QCOMPARE(session.window.statusBar()->currentMessage(), u"Connected to 127.0.0.1 as me"_s);
    QVERIFY(probe.userList().item(0)->font().italic());
    QVERIFY(!probe.userList().item(1)->font().italic());
    QCOMPARE(probe.pendingNick(), QString());
}

void TestMainWindowInUse::keepsTheStatusMessageDuringMenus()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    const QStatusBar &bar = *session.window.statusBar();
    QCOMPARE(bar.currentMessage(), u"Connected to 127.0.0.1 as me"_s);
    QMenuBar &menus = *session.window.menuBar();
    const QList<QAction *> actions = menus.actions();
    for (QAction *action : actions) {
        QTest::mouseClick(&menus, Qt::LeftButton, {}, menus.actionGeometry(action).center());
        QTRY_COMPARE_WITH_TIMEOUT(QApplication::activePopupWidget(), action->menu(), WaitTimeout);
        QTest::keyClick(action->menu(), Qt::Key_Down);
        QTest::keyClick(action->menu(), Qt::Key_Escape);
        QCOMPARE(bar.currentMessage(), u"Connected to 127.0.0.1 as me"_s);
    }
}

void TestMainWindowInUse::keepsTheRatioWhenResized()
{
    WindowSession session;
    session.probe.appendMessageToTab(u"#c"_s, u"x"_s);
    for (const int width : {1280, 900, 1500}) {
        session.window.resize(width, 720);
        QTRY_COMPARE_WITH_TIMEOUT(session.window.width(), width, WaitTimeout);
        QTRY_COMPARE_WITH_TIMEOUT(session.probe.shareOfUserList(), 20, WaitTimeout);
    }
    session.probe.showTab(u"Server"_s);
    session.window.resize(1000, 720);
    QTRY_COMPARE_WITH_TIMEOUT(session.probe.splitter().sizes().at(1), 0, WaitTimeout);
}

void TestMainWindowInUse::resetsADraggedRatioWhenResized()
{
    WindowSession session;
    session.probe.appendMessageToTab(u"#c"_s, u"x"_s);
    QVERIFY(session.settleRatio());

    QSplitterHandle *handle = session.probe.splitter().handle(1);
    QSignalSpy moved(&session.probe.splitter(), &QSplitter::splitterMoved);
    const QPoint middle = handle->rect().center();
    QTest::mousePress(handle, Qt::LeftButton, {}, middle);
    QTest::mouseMove(handle, middle - QPoint(300, 0));
    QTest::mouseRelease(handle, Qt::LeftButton, {}, middle);
    QVERIFY(!moved.isEmpty());
    QVERIFY(session.probe.shareOfUserList() > 35);

    session.window.resize(session.window.width() + 1, session.window.height());
    QTRY_COMPARE_WITH_TIMEOUT(session.probe.shareOfUserList(), 20, WaitTimeout);
}

void TestMainWindowInUse::resetsADraggedRatioWhenTheTabChanges()
{
    WindowSession session;
    session.probe.appendMessageToTab(u"#c"_s, u"x"_s);
    session.probe.appendMessageToTab(u"#d"_s, u"x"_s);
    QVERIFY(session.settleRatio());
    session.probe.splitter().setSizes({500, 500});
    QVERIFY(session.probe.shareOfUserList() > 45);
    session.probe.showTab(u"#d"_s);
    QTRY_COMPARE_WITH_TIMEOUT(session.probe.shareOfUserList(), 20, WaitTimeout);
}

void TestMainWindowInUse::keepsTheServerTabOnTheShortcut()
{
    WindowSession session;
    session.probe.appendMessageToTab(u"#c"_s, u"x"_s);
    session.probe.showTab(u"Server"_s);
    QVERIFY(activate(session.window));
    QTest::keySequence(&session.window, QKeySequence::Close);
    QCOMPARE(session.probe.tabTexts(), (QStringList{u"Server"_s, u"#c"_s}));
    QVERIFY(session.window.isVisible());
}

void TestMainWindowInUse::closesTheCurrentTabByShortcut()
{
    WindowSession session;
    session.probe.appendMessageToTab(u"#c"_s, u"x"_s);
    session.probe.appendMessageToTab(u"bob"_s, u"x"_s);
    session.probe.showTab(u"bob"_s);
    QVERIFY(activate(session.window));
    QTest::keySequence(&session.window, QKeySequence::Close);
    QTRY_COMPARE_WITH_TIMEOUT(session.probe.tabTexts(), (QStringList{u"Server"_s, u"#c"_s}),
                              WaitTimeout);
    QVERIFY(session.window.isVisible());
}

void TestMainWindowInUse::checksTheCurrentTabsNameInTheShortcut()
{
    WindowSession session;
    session.probe.appendMessageToTab(u"#c"_s, u"x"_s);
    session.probe.currentTabName() = u"Server"_s;
    emit session.window.findChild<QShortcut *>()->activated();
    QCOMPARE(session.probe.tabTexts(), (QStringList{u"Server"_s, u"#c"_s}));
    session.probe.currentTabName() = u"#c"_s;
    emit session.window.findChild<QShortcut *>()->activated();
    QCOMPARE(session.probe.tabTexts(), QStringList{u"Server"_s});
}

void TestMainWindowInUse::closesATabByDoubleClick()
{
    WindowSession session;
    session.probe.appendMessageToTab(u"#c"_s, u"x"_s);
    session.probe.appendMessageToTab(u"#d"_s, u"x"_s);
    QTest::mouseDClick(&session.probe.tabBar(), Qt::LeftButton, {},
                       session.probe.tabBar().tabRect(2).center());
    QCOMPARE(session.probe.tabTexts(), (QStringList{u"Server"_s, u"#c"_s}));
}

void TestMainWindowInUse::keepsTheServerTabOnDoubleClick()
{
    WindowSession session;
    QTest::mouseDClick(&session.probe.tabBar(), Qt::LeftButton, {},
                       session.probe.tabBar().tabRect(0).center());
    emit session.probe.tabBar().tabBarDoubleClicked(-1); // Outside of all tabs.
    QCOMPARE(session.probe.tabTexts(), QStringList{u"Server"_s});
}

QTEST_MAIN(TestMainWindowInUse)
#include "tst_MainWindowInUse.moc"
