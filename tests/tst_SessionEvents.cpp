#include "ConnectDialog.h"
#include "IRCConnection.h"
#include "TemporaryStore.h"
#include "WindowSession.h"

#include <QAbstractEventDispatcher>
#include <QAction>
#include <QListWidget>
#include <QPointer>
#include <QSettings>
#include <QStatusBar>
#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

const QString Green = u"QStatusBar { background-color: #d4edda; }"_s;
const QString Red = u"QStatusBar { background-color: #f8d7da; }"_s;

QString groupOf(const WindowSession &session)
{
    return u"servers/127.0.0.1_%1/"_s.arg(session.server.port());
}

// Whether somebody waits for a single shot of one second: Qt keeps those with its event loop.
bool waitsForASecond()
{
    QAbstractEventDispatcher *dispatcher = QAbstractEventDispatcher::instance();
    const QObjectList shots = dispatcher->children();
    for (QObject *shot : shots) {
        const auto timers = dispatcher->registeredTimers(shot);
        for (const auto &timer : timers) {
            if (timer.interval == 1000)
                return true;
        }
    }
    return false;
}

// A server on the port that a reconnect dials, on one of the loopback's addresses where that port
// is free.
std::unique_ptr<ScriptedServer> listenOnStandardPort(QHostAddress &address)
{
    const quint32 first = QHostAddress(QHostAddress::LocalHost).toIPv4Address();
    for (quint32 offset = 1; offset < 100; ++offset) {
        address = QHostAddress(first + offset);
        auto server = std::make_unique<ScriptedServer>(address, quint16(6667));
        if (server->port() != 0)
            return server;
    }
    return nullptr;
}

} // namespace

class TestSessionEvents final : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();

    void offersTheDialogAtTheStartAndFromTheMenu();
    void acceptsInSilence();
    void tellsOfAConnection();
    void showsTheSessionInTheStatusBar();
    void keepsPlaceholdersInTheStatusBar();

    void joinsTheDialogsChannelsIfNoneAreStored();
    void joinsTheStoredChannelsInstead();
    void skipsEntriesThatAreNoChannels();
    void readsNoStoreWithoutAServer();

    void tellsOfErrors_data();
    void tellsOfErrors();
    void tellsOfAnAttemptThatFails();
    void staysDownWhenTheServerGoes_data();
    void staysDownWhenTheServerGoes();
    void tellsOfAPingTimeout();

    void forgetsTheSessionWhenItEnds();
    void keepsTheConversationsWhenTheSessionEnds();
    void leavesFromTheMenu();
    void leavesInSilenceWithoutASession();

    void sortsRawLines_data();
    void sortsRawLines();
    void isMuteDuringAListing();
    void staysMuteAfterAListingThatBroke();

    void replacesALiveSession();
    void hearsOfItsOwnNickFirst();

    void doesNotReconnectALostSession();
    void reconnectsToTheStandardPort();
    void reconnectsWithTheRecordsTls();
    void goesInSilenceWithALiveSession();
    void mayGoBeforeItReconnects();

private:
    std::unique_ptr<TemporaryStore> store;
};

void TestSessionEvents::initTestCase()
{
    store = std::make_unique<TemporaryStore>();
}

void TestSessionEvents::init()
{
    store->clear();
}

void TestSessionEvents::offersTheDialogAtTheStartAndFromTheMenu()
{
    MainWindow window;
    window.show();
    QVERIFY(window.findChild<ConnectDialog *>() == nullptr);
    QTRY_VERIFY(window.findChild<ConnectDialog *>() != nullptr);
    const QPointer<ConnectDialog> dialog = window.findChild<ConnectDialog *>();
    QVERIFY(dialog->isVisible());
    QVERIFY(!dialog->isModal());
    dialog->close();
    QTRY_VERIFY(dialog.isNull());

    MainWindowProbe(window).currentTheme() = u"dark"_s;
    const QList<QAction *> actions = window.findChildren<QAction *>();
    for (QAction *action : actions) {
        if (action->text() == "&Connect..."_L1)
            action->trigger();
    }
    auto *second = window.findChild<ConnectDialog *>();
    QVERIFY(second != nullptr);
    QVERIFY(second->isVisible());
    QVERIFY(!second->isModal());
    ConnectDialog dark(&window);
    dark.setCurrentTheme(u"dark"_s);
    QCOMPARE(second->styleSheet(), dark.styleSheet());
}

void TestSessionEvents::acceptsInSilence()
{
    WindowSession session;
    QVERIFY(session.clickConnect(u"me"_s));
    QCOMPARE(session.probe.lines(u"Server"_s), QStringList());
    QCOMPARE(session.window.statusBar()->styleSheet(), Red);
    QCOMPARE(session.window.statusBar()->currentMessage(), u"Disconnected"_s);
    QCOMPARE(session.probe.currentServerId(), u"127.0.0.1_%1"_s.arg(session.server.port()));
}

void TestSessionEvents::tellsOfAConnection()
{
    WindowSession session;
    QVERIFY(session.acceptDialog(u"me"_s, u"#b, #a"_s));
    QTRY_COMPARE(session.probe.lines(u"Server"_s), QStringList{u"*** Connected to server."_s});
    QCOMPARE(session.window.statusBar()->currentMessage(), u"Connected to 127.0.0.1 as me"_s);

    QVERIFY(session.say(u":irc.test 001 me :Welcome"_s));
    QCOMPARE(session.probe.lines(u"Server"_s),
             (QStringList{u"*** Connected to server."_s, u"Connected and registered."_s,
                          u"*** Autojoining #b"_s, u"*** Autojoining #a"_s}));
    QCOMPARE(session.takeSent().mid(2), (QStringList{u"JOIN #b"_s, u"JOIN #a"_s}));
    QCOMPARE(session.window.statusBar()->currentMessage(), u"Connected to 127.0.0.1 as me"_s);
}

void TestSessionEvents::showsTheSessionInTheStatusBar()
{
    WindowSession session;
    const QStatusBar *bar = session.window.statusBar();
    QCOMPARE(bar->styleSheet(), Red);
    QCOMPARE(bar->currentMessage(), u"Disconnected"_s);

    QVERIFY(session.acceptDialog(u"me"_s));
    QTRY_COMPARE(bar->styleSheet(), Green);
    QCOMPARE(bar->currentMessage(), u"Connected to 127.0.0.1 as me"_s);

    QVERIFY(session.say(u":irc.test 001 me :Welcome"_s));
    QVERIFY(session.say(u":me!u@h NICK Other"_s));
    QCOMPARE(bar->styleSheet(), Green);
    QCOMPARE(bar->currentMessage(), u"Connected to 127.0.0.1 as Other"_s);

    session.choose(u"&Disconnect"_s);
    QTRY_COMPARE(bar->styleSheet(), Red);
    QCOMPARE(bar->currentMessage(), u"Disconnected"_s);
}

void TestSessionEvents::keepsPlaceholdersInTheStatusBar()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.say(u":me!u@h NICK %1%2"_s));
    QCOMPARE(session.window.statusBar()->currentMessage(), u"Connected to 127.0.0.1 as %1%2"_s);
}

void TestSessionEvents::joinsTheDialogsChannelsIfNoneAreStored()
{
    WindowSession session;
    QVERIFY(session.acceptDialog(u"me"_s, u"#typed"_s));
    QSettings().setValue(groupOf(session) + u"autojoin"_s, QStringList());
    QVERIFY(session.say(u":irc.test 001 me :Welcome"_s));
    QCOMPARE(session.takeSent().mid(2), QStringList{u"JOIN #typed"_s});
    QCOMPARE(session.probe.autojoinChannels(), QStringList{u"#typed"_s});
    QCOMPARE(session.probe.connection().serverConfig().autojoin, QStringList{u"#typed"_s});
}

void TestSessionEvents::joinsTheStoredChannelsInstead()
{
    const QStringList stored{u"#two"_s, u"#one"_s, u"#%1"_s};
    WindowSession session;
    QVERIFY(session.acceptDialog(u"me"_s, u"#typed"_s));
    QSettings().setValue(groupOf(session) + u"autojoin"_s, stored);
    QVERIFY(session.say(u":irc.test 001 me :Welcome"_s));
    QCOMPARE(session.takeSent().mid(2),
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
    QVERIFY(session.say(u":irc.test 001 me :Welcome"_s));
    QCOMPARE(session.takeSent().mid(2), (QStringList{u"JOIN #a"_s, u"JOIN #b"_s}));
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
    QVERIFY(session.say(u":irc.test 001 me :Welcome"_s));
    QCOMPARE(session.takeSent().mid(2), QStringList{u"JOIN #typed"_s});
}

void TestSessionEvents::tellsOfErrors_data()
{
    QTest::addColumn<bool>("listing");
    QTest::addColumn<QString>("error");

    QTest::newRow("plain") << false << u"It broke"_s;
    QTest::newRow("empty") << false << u""_s;
    QTest::newRow("placeholders") << false << u"%1 of %2"_s;
    QTest::newRow("during a listing") << true << u"It broke"_s;
}

void TestSessionEvents::tellsOfErrors()
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

void TestSessionEvents::tellsOfAnAttemptThatFails()
{
    WindowSession session;
    session.server.stopListening();
    QVERIFY(session.clickConnect(u"me"_s));
    QTRY_COMPARE(session.probe.lines(u"Server"_s), QStringList{u"*** Error: Connection refused"_s});
    QCOMPARE(session.window.statusBar()->styleSheet(), Red);
    QCOMPARE(session.probe.tabTexts(), QStringList{u"Server"_s});
}

void TestSessionEvents::staysDownWhenTheServerGoes_data()
{
    QTest::addColumn<bool>("cut");

    QTest::newRow("closes the link") << false;
    QTest::newRow("resets the link") << true;
}

void TestSessionEvents::staysDownWhenTheServerGoes()
{
    QFETCH(const bool, cut);

    WindowSession session;
    QVERIFY(session.registerAs());
    const qsizetype before = session.probe.lines(u"Server"_s).size();
    if (cut)
        session.server.cut();
    else
        session.server.close();
    QTRY_COMPARE(session.window.statusBar()->styleSheet(), Red);
    const QStringList lines = session.probe.lines(u"Server"_s).mid(before);
    QCOMPARE(lines.size(), 2);
    QVERIFY2(lines.at(0).startsWith(u"*** Error: "_s), qUtf8Printable(lines.at(0)));
    QCOMPARE(lines.at(1), u"*** Disconnected."_s);
    QCOMPARE(session.window.statusBar()->currentMessage(), u"Disconnected"_s);
    QVERIFY(!waitsForASecond());
    QCOMPARE(session.server.clientCount(), 1);
}

// The timeout itself takes the session a minute and a half; here is what the window makes of it.
void TestSessionEvents::tellsOfAPingTimeout()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    const qsizetype before = session.probe.lines(u"Server"_s).size();
    emit session.probe.connection().errorOccurred(u"Ping timeout: no response to PING for 45s"_s);
    QCOMPARE(session.window.statusBar()->styleSheet(), Green);
    session.probe.connection().disconnectFromServer();
    QTRY_COMPARE(session.window.statusBar()->styleSheet(), Red);
    QCOMPARE(session.probe.lines(u"Server"_s).mid(before),
             (QStringList{u"*** Error: Ping timeout: no response to PING for 45s"_s,
                          u"*** Disconnected."_s}));
}

void TestSessionEvents::forgetsTheSessionWhenItEnds()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, u"me alice"_s));
    QVERIFY(session.say(u":bob!u@h PRIVMSG me :hi"_s));
    session.probe.typeLine(u"/away lunch"_s);
    session.probe.pendingNick() = u"wanted"_s;
    QVERIFY(session.probe.isAway());
    QCOMPARE(session.probe.awayAction().text(), u"Unmark Away"_s);
    QVERIFY(session.probe.watchedNicks().contains(u"bob"_s));
    QCOMPARE(session.probe.users(), (QStringList{u"alice"_s, u"me"_s}));

    session.choose(u"&Disconnect"_s);
    QTRY_COMPARE(session.window.statusBar()->styleSheet(), Red);
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
    QVERIFY(session.say(u":alice!u@h PRIVMSG #a :hi"_s));
    session.probe.inputDrafts().insert(u"Server"_s, u"half a line"_s);
    const QStringList lines = session.probe.lines(u"#a"_s);
    const QString id = session.probe.currentServerId();

    session.server.close();
    QTRY_COMPARE(session.window.statusBar()->styleSheet(), Red);
    QCOMPARE(session.probe.tabTexts(), (QStringList{u"Server"_s, u"#a"_s}));
    QCOMPARE(session.probe.lines(u"#a"_s), lines);
    QCOMPARE(session.probe.channelUsers().value(u"#a"_s), (QStringList{u"alice"_s, u"me"_s}));
    QCOMPARE(session.probe.inputDrafts().value(u"Server"_s), u"half a line"_s);
    QCOMPARE(session.probe.currentServerId(), id);

    session.probe.showTab(u"Server"_s);
    session.probe.showTab(u"#a"_s);
    QCOMPARE(session.probe.users(), (QStringList{u"alice"_s, u"me"_s}));
}

void TestSessionEvents::leavesFromTheMenu()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    const qsizetype before = session.probe.lines(u"Server"_s).size();
    session.choose(u"&Disconnect"_s);
    QTRY_COMPARE(session.probe.lines(u"Server"_s).mid(before), QStringList{u"*** Disconnected."_s});
    QVERIFY(session.server.waitForEnd());
    QCOMPARE(session.server.lines().last(), u"QUIT :Velmora leaving"_s);
}

void TestSessionEvents::leavesInSilenceWithoutASession()
{
    WindowSession session;
    session.probe.pendingNick() = u"wanted"_s;
    session.choose(u"&Disconnect"_s);
    QVERIFY(session.registerAs());
    const QStringList first{u"*** Connected to server."_s, u"Connected and registered."_s};
    QCOMPARE(session.probe.lines(u"Server"_s), first);
    QCOMPARE(session.probe.pendingNick(), u"wanted"_s);
}

void TestSessionEvents::sortsRawLines_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QStringList>("shown");

    const auto add = [](const char *name, const QString &line, const QStringList &shown) {
        QTest::newRow(name) << line << shown;
    };
    add("a server's notice", u":server NOTICE * :hello"_s, {u"<< :server NOTICE * :hello"_s});
    add("a user's notice", u":a!b@c NOTICE me :hello"_s, {});
    add("a user's mode", u":a!b@c MODE #x +o me"_s, {});
    add("a user's topic", u":a!b@c TOPIC #x :new"_s, {});
    add("a user's invitation", u":a!b@c INVITE me #x"_s, {});
    add("a server's notice that exclaims", u":server NOTICE * :hello!"_s, {});
    add("an exclamation without a prefix", u"NOTICE * :hello!"_s, {u"<< NOTICE * :hello!"_s});
    add("a ping", u"PING :token"_s, {u"<< PING :token"_s});
    add("an error", u"ERROR :Closing link"_s, {u"<< ERROR :Closing link"_s});
    add("a server's mode", u":server MODE me +i"_s, {u"<< :server MODE me +i"_s});
    add("placeholders", u":server NOTICE * :%1 %2"_s, {u"<< :server NOTICE * :%1 %2"_s});
    add("a numeric that nobody handles", u":s 372 me :- hi"_s, {u":s 372 me :- hi"_s});
    add("a numeric that is handled", u":s 332 me #x :Topic"_s, {});
    add("a numeric without a prefix", u"372 me :hi"_s, {u"<< 372 me :hi"_s, u"372 me :hi"_s});
    add("four characters", u":a 1"_s, {u"<< :a 1"_s, u":a 1"_s});
    add("a numeric at the line's end", u":s 372"_s, {u"<< :s 372"_s, u":s 372"_s});
    add("a numeric and a blank", u":s 372 "_s, {u":s 372"_s});
    add("a prefix that is a blank", u": 372 me"_s, {u"<< : 372 me"_s, u": 372 me"_s});
    add("a prefix alone", u":server"_s, {u"<< :server"_s});
    add("digits and a letter", u":s 37x me"_s, {u"<< :s 37x me"_s, u":s 37x me"_s});
    add("a base of sixteen", u":s 0x1 me"_s, {u"<< :s 0x1 me"_s, u":s 0x1 me"_s});
    add("a sign and two digits", u":s +12 me"_s, {});
    add("two blanks and two digits", u":s  12 me"_s, {});
    add("four digits", u":s 3723 me"_s, {u":s 3723 me"_s});
    add("a word of three letters", u":s FOO me"_s, {u"<< :s FOO me"_s});
}

void TestSessionEvents::sortsRawLines()
{
    QFETCH(const QString, line);
    QFETCH(const QStringList, shown);

    WindowSession session;
    QVERIFY(session.registerAs());
    const qsizetype before = session.probe.lines(u"Server"_s).size();
    QVERIFY(session.say(line));
    QCOMPARE(session.probe.lines(u"Server"_s).mid(before), shown);
    QCOMPARE(session.probe.tabTexts(), QStringList{u"Server"_s});
}

void TestSessionEvents::isMuteDuringAListing()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    const qsizetype before = session.probe.lines(u"Server"_s).size();
    session.probe.listReceiving() = true;
    QVERIFY(session.sayAll({u":server NOTICE * :hello"_s, u":s 372 me :- hi"_s}));
    QCOMPARE(session.probe.lines(u"Server"_s).mid(before), QStringList());
    emit session.probe.connection().errorOccurred(u"It broke"_s);
    QCOMPARE(session.probe.lines(u"Server"_s).mid(before), QStringList{u"*** Error: It broke"_s});

    session.probe.listReceiving() = false;
    QVERIFY(session.sayAll({u":server NOTICE * :hello"_s, u":s 372 me :- hi"_s}));
    QCOMPARE(session.probe.lines(u"Server"_s).mid(before + 1),
             (QStringList{u"<< :server NOTICE * :hello"_s, u":s 372 me :- hi"_s}));
}

void TestSessionEvents::staysMuteAfterAListingThatBroke()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    session.probe.listReceiving() = true;
    session.server.close();
    QTRY_COMPARE(session.window.statusBar()->styleSheet(), Red);
    QVERIFY(session.probe.listReceiving());

    const qsizetype before = session.probe.lines(u"Server"_s).size();
    QVERIFY(session.registerAs());
    QVERIFY(session.say(u":server NOTICE * :hello"_s));
    QCOMPARE(session.probe.lines(u"Server"_s).mid(before),
             QStringList{u"*** Connected to server."_s});
}

void TestSessionEvents::replacesALiveSession()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, u"me alice"_s));
    const qsizetype before = session.probe.lines(u"Server"_s).size();

    QVERIFY(session.acceptDialog(u"again"_s));
    QVERIFY(session.server.waitForEnd(0));
    QVERIFY(!session.server.received(0).contains("QUIT"));
    QVERIFY(session.say(u":irc.test 001 again :Welcome"_s));
    QCOMPARE(session.probe.lines(u"Server"_s).mid(before),
             (QStringList{u"*** Disconnected."_s, u"*** Connected to server."_s,
                          u"Connected and registered."_s}));
    QCOMPARE(session.window.statusBar()->styleSheet(), Green);
    QCOMPARE(session.window.statusBar()->currentMessage(), u"Connected to 127.0.0.1 as again"_s);
    QCOMPARE(session.probe.tabTexts(), (QStringList{u"Server"_s, u"#a"_s}));

    static_cast<void>(session.takeSent());
    QVERIFY(session.join(u"#a"_s, u"again"_s));
    session.probe.typeLine(u"still here"_s);
    QCOMPARE(session.takeSent(), (QStringList{u"NAMES #a"_s, u"PRIVMSG #a :still here"_s}));
    QVERIFY(session.server.isThere());
}

void TestSessionEvents::hearsOfItsOwnNickFirst()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, u"@me"_s));
    session.probe.pendingNick() = u"new"_s;
    QStringList atOwn;
    QStringList atAll;
    IRCConnection &connection = session.probe.connection();
    connect(&connection, &IRCConnection::ownNickChanged, this, [&](const QString &newNick) {
        atOwn << newNick << connection.currentNick() << session.window.statusBar()->currentMessage()
              << session.probe.pendingNick() << session.probe.channelUsers().value(u"#a"_s);
    });
    connect(&connection, &IRCConnection::nickChanged, this,
            [&] { atAll << session.probe.channelUsers().value(u"#a"_s); });
    QVERIFY(session.say(u":me!u@h NICK new"_s));
    QCOMPARE(atOwn, (QStringList{u"new"_s, u"new"_s, u"Connected to 127.0.0.1 as new"_s, u""_s,
                                 u"@me"_s}));
    QCOMPARE(atAll, QStringList{u"@new"_s});
}

void TestSessionEvents::doesNotReconnectALostSession()
{
    WindowSession session;
    session.choose(u"&Reconnect"_s);
    QVERIFY(!waitsForASecond());

    QVERIFY(session.registerAs());
    session.server.close();
    QTRY_COMPARE(session.window.statusBar()->styleSheet(), Red);
    const QStringList lines = session.probe.lines(u"Server"_s);
    session.choose(u"&Reconnect"_s);
    QVERIFY(!waitsForASecond());
    QCOMPARE(session.probe.lines(u"Server"_s), lines);
}

void TestSessionEvents::reconnectsToTheStandardPort()
{
    QHostAddress address;
    const auto standard = listenOnStandardPort(address);
    QVERIFY(standard != nullptr);
    ScriptedServer first(address, 0);
    WindowSession session;
    IRCConnection &connection = session.probe.connection();
    ServerConfig config;
    config.nickname = u"me"_s;
    config.realName = u"My Self"_s;
    connection.setServerConfig(config);
    session.probe.currentServerId() = u"some.host_7000"_s;
    session.probe.autojoinChannels() = QStringList{u"#a"_s};
    connection.connectToServer(address.toString(), first.port(), u"me"_s, u"My Self"_s, false);
    QVERIFY(first.waitForLine(u"USER me 0 * :My Self"_s));

    session.choose(u"&Reconnect"_s);
    QVERIFY(waitsForASecond());
    QVERIFY(first.waitForLine(u"QUIT :Velmora leaving"_s));
    QVERIFY(standard->waitForLine(u"USER me 0 * :My Self"_s));
    QCOMPARE(standard->lines().first(), u"NICK me"_s);
    QTRY_COMPARE(session.probe.lines(u"Server"_s),
                 (QStringList{u"*** Connected to server."_s, u"*** Disconnected."_s,
                              u"*** Connected to server."_s}));
    QCOMPARE(session.probe.currentServerId(), u"some.host_7000"_s);

    standard->send(u":irc.test 001 me :Welcome"_s);
    QVERIFY(standard->waitForLine(u"JOIN #a"_s));
}

void TestSessionEvents::reconnectsWithTheRecordsTls()
{
    QHostAddress address;
    const auto standard = listenOnStandardPort(address);
    QVERIFY(standard != nullptr);
    ScriptedServer first(address, 0);
    WindowSession session;
    ServerConfig config;
    config.nickname = u"me"_s;
    config.useSsl = true;
    session.probe.connection().setServerConfig(config);
    session.probe.currentServerId() = u"some.host_7000"_s;
    session.probe.connection().connectToServer(address.toString(), first.port(), u"me"_s, QString(),
                                               false);
    QVERIFY(first.waitForLine(u"NICK me"_s));

    session.choose(u"&Reconnect"_s);
    QVERIFY(standard->waitForClient());
    // The first byte of a TLS handshake.
    QTRY_VERIFY(standard->received().startsWith('\x16'));
}

void TestSessionEvents::goesInSilenceWithALiveSession()
{
    ScriptedServer server;
    int told = 0;
    {
        MainWindow window;
        window.show();
        const MainWindowProbe probe(window);
        IRCConnection &connection = probe.connection();
        connection.connectToServer(u"127.0.0.1"_s, server.port(), u"me"_s, QString(), false);
        QVERIFY(server.waitForLine(u"NICK me"_s));
        server.send(u":irc.test 001 me :Welcome"_s);
        server.send(u":me!u@h JOIN #a"_s);
        server.send(u":alice!u@h PRIVMSG me :hi"_s);
        QVERIFY(server.waitForLine(u"NAMES #a"_s));
        QTRY_COMPARE(probe.tabTexts(), (QStringList{u"Server"_s, u"#a"_s, u"alice"_s}));
        connect(&connection, &IRCConnection::disconnected, this, [&] { ++told; });
        connect(&connection, &IRCConnection::errorOccurred, this, [&] { ++told; });
        connect(&connection, &IRCConnection::rawMessageReceived, this, [&] { ++told; });
        // On its way when the window goes.
        server.send(u":alice!u@h PRIVMSG me :too late"_s);
    }
    QVERIFY(server.waitForEnd());
    QCOMPARE(server.lines().last(), u"QUIT :Velmora leaving"_s);
    QCOMPARE(told, 0);
}

void TestSessionEvents::mayGoBeforeItReconnects()
{
    ScriptedServer server;
    {
        MainWindow window;
        const MainWindowProbe probe(window);
        probe.currentServerId() = u"some.host_7000"_s;
        probe.connection().connectToServer(u"127.0.0.1"_s, server.port(), u"me"_s, QString(),
                                           false);
        QVERIFY(server.waitForLine(u"NICK me"_s));
        const QList<QAction *> actions = window.findChildren<QAction *>();
        for (QAction *action : actions) {
            if (action->text() == "&Reconnect"_L1)
                action->trigger();
        }
        QVERIFY(waitsForASecond());
    }
    QTRY_VERIFY(!waitsForASecond());
    QVERIFY(server.waitForEnd());
}

QTEST_MAIN(TestSessionEvents)
#include "tst_SessionEvents.moc"
