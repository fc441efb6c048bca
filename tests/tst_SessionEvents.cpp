#include "ConnectDialog.h"
#include "IRCConnection.h"
#include "TemporaryStore.h"
#include "Waiting.h"
#include "WindowSession.h"

#include <QAction>
#include <QListWidget>
#include <QPointer>
#include <QSettings>
#include <QStatusBar>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

constexpr auto ConnectedSheet = MainWindowProbe::ConnectedSheet;
constexpr auto DisconnectedSheet = MainWindowProbe::DisconnectedSheet;

QString groupOf(const WindowSession &session)
{
    return u"servers/127.0.0.1_%1/"_s.arg(session.server.port());
}

} // namespace

class TestSessionEvents final : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void opensTheDialogAtTheStart();
    void opensTheDialogFromTheMenu();
    void writesNothingOnAccept();
    void reportsAConnection();
    void showsTheSessionInTheStatusBar();
    void keepsPlaceholdersInTheStatusBar();

    void triesTheStoredAlternativeNick();
    void joinsTheDialogsChannelsIfNoneAreStored();
    void joinsTheStoredChannelsInstead();
    void skipsEntriesThatAreNoChannels();
    void readsNoStoreWithoutAServer();

    void reportsErrors_data();
    void reportsErrors();
    void reportsAFailedAttempt();
    void reportsAPingTimeout();

    void forgetsTheSessionWhenItEnds();
    void keepsTheConversationsWhenTheSessionEnds();
    void disconnectsFromTheMenu();
    void ignoresDisconnectWhileDisconnected();

    void handlesTheOwnNickChangeFirst();

private:
    TemporaryStore store;
};

void TestSessionEvents::init()
{
    store.clear();
}

void TestSessionEvents::opensTheDialogAtTheStart()
{
    MainWindow window;
    window.show();
    QVERIFY(window.findChild<ConnectDialog *>() == nullptr);
    QTRY_VERIFY_WITH_TIMEOUT(window.findChild<ConnectDialog *>() != nullptr, WaitTimeout);
    const QPointer<ConnectDialog> dialog = window.findChild<ConnectDialog *>();
    QVERIFY(dialog->isVisible());
    QVERIFY(!dialog->isModal());
    dialog->close();
    QTRY_VERIFY_WITH_TIMEOUT(dialog.isNull(), WaitTimeout);
}

void TestSessionEvents::opensTheDialogFromTheMenu()
{
    WindowSession session;
    session.probe.currentTheme() = u"dark"_s;
    session.choose(u"&Connect..."_s);
    const auto *dialog = session.window.findChild<ConnectDialog *>();
    QVERIFY(dialog != nullptr);
    QVERIFY(dialog->isVisible());
    QVERIFY(!dialog->isModal());
    ConnectDialog dark(&session.window);
    dark.setCurrentTheme(u"dark"_s);
    QCOMPARE(dialog->styleSheet(), dark.styleSheet());
}

void TestSessionEvents::writesNothingOnAccept()
{
    WindowSession session;
    QVERIFY(session.clickConnect(u"me"_s));
    QCOMPARE(session.probe.lines(u"Server"_s), QStringList());
    QCOMPARE(session.window.statusBar()->styleSheet(), DisconnectedSheet);
    QCOMPARE(session.window.statusBar()->currentMessage(), u"Disconnected"_s);
    QCOMPARE(session.probe.currentServerId(), u"127.0.0.1_%1"_s.arg(session.server.port()));
}

void TestSessionEvents::reportsAConnection()
{
    WindowSession session;
    QVERIFY(session.acceptDialog(u"me"_s, u"#b, #a"_s));
    QTRY_COMPARE_WITH_TIMEOUT(session.probe.lines(u"Server"_s),
                              QStringList{u"*** Connected to server."_s}, WaitTimeout);
    QCOMPARE(session.window.statusBar()->currentMessage(), u"Connected to 127.0.0.1 as me"_s);

    QVERIFY(session.receive(u":irc.test 001 me :Welcome"_s));
    QCOMPARE(session.probe.lines(u"Server"_s),
             (QStringList{u"*** Connected to server."_s, u"Connected and registered."_s,
                          u"*** Autojoining #b"_s, u"*** Autojoining #a"_s}));
    QCOMPARE(session.readSent().mid(2), (QStringList{u"JOIN #b"_s, u"JOIN #a"_s}));
    QCOMPARE(session.window.statusBar()->currentMessage(), u"Connected to 127.0.0.1 as me"_s);
}

void TestSessionEvents::showsTheSessionInTheStatusBar()
{
    WindowSession session;
    const QStatusBar *bar = session.window.statusBar();
    QCOMPARE(bar->styleSheet(), DisconnectedSheet);
    QCOMPARE(bar->currentMessage(), u"Disconnected"_s);

    QVERIFY(session.acceptDialog(u"me"_s));
    QTRY_COMPARE_WITH_TIMEOUT(bar->styleSheet(), ConnectedSheet, WaitTimeout);
    QCOMPARE(bar->currentMessage(), u"Connected to 127.0.0.1 as me"_s);

    QVERIFY(session.receive(u":irc.test 001 me :Welcome"_s));
    QVERIFY(session.receive(u":me!u@h NICK Other"_s));
    QCOMPARE(bar->styleSheet(), ConnectedSheet);
    QCOMPARE(bar->currentMessage(), u"Connected to 127.0.0.1 as Other"_s);

    session.choose(u"&Disconnect"_s);
    QTRY_COMPARE_WITH_TIMEOUT(bar->styleSheet(), DisconnectedSheet, WaitTimeout);
    QCOMPARE(bar->currentMessage(), u"Disconnected"_s);
}

void TestSessionEvents::keepsPlaceholdersInTheStatusBar()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.receive(u":me!u@h NICK %1%2"_s));
    QCOMPARE(session.window.statusBar()->currentMessage(), u"Connected to 127.0.0.1 as %1%2"_s);
}

// IRCConnection reads the alternative nick when it connects, so the record must be loaded before.
void TestSessionEvents::triesTheStoredAlternativeNick()
{
    WindowSession session;
    QSettings settings;
    const QString address = u"127.0.0.1:%1"_s.arg(session.server.port());
    settings.setValue(u"connection/history"_s, QStringList{address});
    settings.setValue(groupOf(session) + u"address"_s, address);
    settings.setValue(groupOf(session) + u"altnick"_s, u"Spare"_s);
    settings.setValue(u"servers/customList"_s,
                      QStringList{u"127.0.0.1_%1"_s.arg(session.server.port())});
    QVERIFY(session.acceptDialog(u"me"_s));
    QVERIFY(session.receive(u":irc.test 433 * me :Nickname is already in use"_s));
    QCOMPARE(session.readSent().last(), u"NICK Spare"_s);
}

void TestSessionEvents::joinsTheDialogsChannelsIfNoneAreStored()
{
    WindowSession session;
    QVERIFY(session.acceptDialog(u"me"_s, u"#typed"_s));
    QSettings().setValue(groupOf(session) + u"autojoin"_s, QStringList());
    QVERIFY(session.receive(u":irc.test 001 me :Welcome"_s));
    QCOMPARE(session.readSent().mid(2), QStringList{u"JOIN #typed"_s});
    QCOMPARE(session.probe.autojoinChannels(), QStringList{u"#typed"_s});
    QCOMPARE(session.probe.connection().serverConfig().autojoin, QStringList{u"#typed"_s});
}

void TestSessionEvents::joinsTheStoredChannelsInstead()
{
    const QStringList stored{u"#two"_s, u"#one"_s, u"#%1"_s};
    WindowSession session;
    QVERIFY(session.acceptDialog(u"me"_s, u"#typed"_s));
    QSettings().setValue(groupOf(session) + u"autojoin"_s, stored);
    QVERIFY(session.receive(u":irc.test 001 me :Welcome"_s));
    QCOMPARE(session.readSent().mid(2),
             (QStringList{u"JOIN #two"_s, u"JOIN #one"_s, u"JOIN #%1"_s}));
    QCOMPARE(session.probe.lines(u"Server"_s).mid(2),
             (QStringList{u"*** Autojoining #two"_s, u"*** Autojoining #one"_s,
                          u"*** Autojoining #%1"_s}));
    QCOMPARE(session.probe.autojoinChannels(), stored);
    QCOMPARE(session.probe.connection().serverConfig().autojoin, stored);
    QCOMPARE(session.probe.connection().serverConfig().nickname, u"me"_s);
}

void TestSessionEvents::skipsEntriesThatAreNoChannels()
{
    const QStringList stored{u""_s, u"plain"_s, u"#a"_s, u"&local"_s, u" #blank"_s, u"#b"_s};
    WindowSession session;
    QVERIFY(session.acceptDialog(u"me"_s));
    QSettings().setValue(groupOf(session) + u"autojoin"_s, stored);
    QVERIFY(session.receive(u":irc.test 001 me :Welcome"_s));
    QCOMPARE(session.readSent().mid(2), (QStringList{u"JOIN #a"_s, u"JOIN #b"_s}));
    QCOMPARE(session.probe.lines(u"Server"_s).mid(2),
             (QStringList{u"*** Autojoining #a"_s, u"*** Autojoining #b"_s}));
    QCOMPARE(session.probe.autojoinChannels(), stored);
}

void TestSessionEvents::readsNoStoreWithoutAServer()
{
    WindowSession session;
    QVERIFY(session.acceptDialog(u"me"_s, u"#typed"_s));
    session.probe.currentServerId().clear();
    QSettings().setValue(u"servers/autojoin"_s, QStringList{u"#decoy"_s});
    QVERIFY(session.receive(u":irc.test 001 me :Welcome"_s));
    QCOMPARE(session.readSent().mid(2), QStringList{u"JOIN #typed"_s});
}

void TestSessionEvents::reportsErrors_data()
{
    QTest::addColumn<bool>("listing");
    QTest::addColumn<QString>("error");

    QTest::newRow("plain") << false << u"It broke"_s;
    QTest::newRow("empty") << false << u""_s;
    QTest::newRow("placeholders") << false << u"%1 of %2"_s;
    QTest::newRow("during a listing") << true << u"It broke"_s;
}

void TestSessionEvents::reportsErrors()
{
    QFETCH(const bool, listing);
    QFETCH(const QString, error);

    WindowSession session;
    session.probe.listReceiving() = listing;
    const QString message = session.window.statusBar()->currentMessage();
    emit session.probe.connection().errorOccurred(error);
    QCOMPARE(session.probe.lines(u"Server"_s), QStringList{u"*** Error: "_s + error});
    QCOMPARE(session.window.statusBar()->currentMessage(), message);
}

void TestSessionEvents::reportsAFailedAttempt()
{
    WindowSession session;
    session.server.stopListening();
    QVERIFY(session.clickConnect(u"me"_s));
    QTRY_COMPARE_WITH_TIMEOUT(session.probe.lines(u"Server"_s),
                              QStringList{u"*** Error: Connection refused"_s}, WaitTimeout);
    QCOMPARE(session.window.statusBar()->styleSheet(), DisconnectedSheet);
    QCOMPARE(session.probe.tabTexts(), QStringList{u"Server"_s});
}

// A real ping timeout takes 90 s, so the test emits the signal.
void TestSessionEvents::reportsAPingTimeout()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    const qsizetype before = session.probe.lines(u"Server"_s).size();
    emit session.probe.connection().errorOccurred(u"Ping timeout: no response to PING for 45s"_s);
    QCOMPARE(session.window.statusBar()->styleSheet(), ConnectedSheet);
    session.probe.connection().disconnectFromServer();
    QTRY_COMPARE_WITH_TIMEOUT(session.window.statusBar()->styleSheet(), DisconnectedSheet,
                              WaitTimeout);
    QCOMPARE(session.probe.lines(u"Server"_s).mid(before),
             (QStringList{u"*** Error: Ping timeout: no response to PING for 45s"_s,
                          u"*** Disconnected."_s}));
}

void TestSessionEvents::forgetsTheSessionWhenItEnds()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, u"me alice"_s));
    QVERIFY(session.receive(u":bob!u@h PRIVMSG me :hi"_s));
    session.probe.typeLine(u"/away lunch"_s);
    session.probe.pendingNick() = u"wanted"_s;
    QVERIFY(session.probe.isAway());
    QCOMPARE(session.probe.awayAction().text(), u"Unmark Away"_s);
    QVERIFY(session.probe.watchedNicks().contains(u"bob"_s));
    QCOMPARE(session.probe.users(), (QStringList{u"alice"_s, u"me"_s}));

    session.choose(u"&Disconnect"_s);
    QTRY_COMPARE_WITH_TIMEOUT(session.window.statusBar()->styleSheet(), DisconnectedSheet,
                              WaitTimeout);
    QCOMPARE(session.probe.users(), QStringList());
    QVERIFY(!session.probe.isAway());
    QCOMPARE(session.probe.awayMessage(), QString());
    QCOMPARE(session.probe.awayAction().text(), u"Marked Away..."_s);
    QCOMPARE(session.probe.pendingNick(), QString());
    QVERIFY(session.probe.watchedNicks().isEmpty());
}

void TestSessionEvents::keepsTheConversationsWhenTheSessionEnds()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, u"me alice"_s));
    QVERIFY(session.receive(u":alice!u@h PRIVMSG #a :hi"_s));
    session.probe.inputDrafts().insert(u"Server"_s, u"half a line"_s);
    const QStringList lines = session.probe.lines(u"#a"_s);
    const QString id = session.probe.currentServerId();

    session.server.close();
    QTRY_COMPARE_WITH_TIMEOUT(session.window.statusBar()->styleSheet(), DisconnectedSheet,
                              WaitTimeout);
    QCOMPARE(session.probe.tabTexts(), (QStringList{u"Server"_s, u"#a"_s}));
    QCOMPARE(session.probe.lines(u"#a"_s), lines);
    QCOMPARE(session.probe.channelUsers().value(u"#a"_s), (QStringList{u"alice"_s, u"me"_s}));
    QCOMPARE(session.probe.inputDrafts().value(u"Server"_s), u"half a line"_s);
    QCOMPARE(session.probe.currentServerId(), id);

    session.probe.showTab(u"Server"_s);
    session.probe.showTab(u"#a"_s);
    QCOMPARE(session.probe.users(), (QStringList{u"alice"_s, u"me"_s}));
}

void TestSessionEvents::disconnectsFromTheMenu()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    const qsizetype before = session.probe.lines(u"Server"_s).size();
    session.choose(u"&Disconnect"_s);
    QTRY_COMPARE_WITH_TIMEOUT(session.probe.lines(u"Server"_s).mid(before),
                              QStringList{u"*** Disconnected."_s}, WaitTimeout);
    QVERIFY(session.server.waitForEnd());
    QCOMPARE(session.server.lines().last(), u"QUIT :Velmora leaving"_s);
}

void TestSessionEvents::ignoresDisconnectWhileDisconnected()
{
    WindowSession session;
    session.probe.pendingNick() = u"wanted"_s;
    session.choose(u"&Disconnect"_s);
    QVERIFY(session.registerAs());
    const QStringList first{u"*** Connected to server."_s, u"Connected and registered."_s};
    QCOMPARE(session.probe.lines(u"Server"_s), first);
    QCOMPARE(session.probe.pendingNick(), u"wanted"_s);
}

void TestSessionEvents::handlesTheOwnNickChangeFirst()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, u"@me"_s));
    session.probe.pendingNick() = u"new"_s;
    QStringList seenOnOwnChange;
    QStringList seenOnChange;
    IRCConnection &connection = session.probe.connection();
    connect(&connection, &IRCConnection::ownNickChanged, this, [&](const QString &newNick) {
        seenOnOwnChange << newNick << connection.currentNick()
                        << session.window.statusBar()->currentMessage()
                        << session.probe.pendingNick()
                        << session.probe.channelUsers().value(u"#a"_s);
    });
    connect(&connection, &IRCConnection::nickChanged, this,
            [&] { seenOnChange << session.probe.channelUsers().value(u"#a"_s); });
    QVERIFY(session.receive(u":me!u@h NICK new"_s));
    QCOMPARE(seenOnOwnChange, (QStringList{u"new"_s, u"new"_s, u"Connected to 127.0.0.1 as new"_s,
                                           u""_s, u"@me"_s}));
    QCOMPARE(seenOnChange, QStringList{u"@new"_s});
}

QTEST_MAIN(TestSessionEvents)
#include "tst_SessionEvents.moc"
