#include "Child.h"
#include "ConnectDialog.h"
#include "HighlightTabBar.h"
#include "IRCConnection.h"
#include "Preloading.h"
#include "PreparedStore.h"
#include "ProgramOnScreen.h"
#include "QuitRequests.h"
#include "RequiredTools.h"
#include "ScriptedServer.h"
#include "TemporaryStore.h"
#include "VirtualScreen.h"
#include "Waiting.h"
#include "WindowSession.h"

#include <QApplication>
#include <QFile>
#include <QLineEdit>
#include <QSessionManager>
#include <QSettings>
#include <QTest>
#include <QTimer>

#include <array>
#include <csignal>
#include <cstddef>

using namespace Qt::StringLiterals;

namespace {

constexpr QFile::Permissions OwnFile =
        QFile::ReadOwner | QFile::ReadUser | QFile::WriteOwner | QFile::WriteUser;

QAction *entry(const MainWindow &window, const QString &text)
{
    const QList<QAction *> actions = window.findChildren<QAction *>();
    for (QAction *action : actions) {
        if (action->text() == text)
            return action;
    }
    return nullptr;
}

// Runs the event loop; returns -1 after a timeout.
int runEventLoop()
{
    QTimer timeout;
    timeout.callOnTimeout([] { QCoreApplication::exit(-1); });
    timeout.start(WaitTimeout);
    return QApplication::exec();
}

// Starts the built program without a display, with `store`.
bool launch(Child &program, const PreparedStore &store)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"XDG_CONFIG_HOME"_s, store.configHome());
    environment.insert(u"QT_QPA_PLATFORM"_s, u"offscreen"_s);
    program.setProcessEnvironment(environment);
    return program.launch(ProgramOnScreen::path(), {u"--no-such-option"_s, u"argument"_s});
}

} // namespace

class TestMainWindowEnd final : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void endsTheEventLoopWhenClosed();
    void endsTheEventLoopByTheQuitEntry();
    void quitsByShortcut_data();
    void quitsByShortcut();
    void quitsOnSignals_data();
    void quitsOnSignals();
    void quitsWithTheDesktopSession();
    void quitsDuringAHostLookup();
    void sendsQuitWhenDestroyed();
    void storesNothingWhenDestroyed();
    void canBeDestroyedWithTabsAndASession();
    void canBeDestroyedWithAConnectDialog();
    void canBeDestroyedWithUnreadInput();
    void canBeClosedDuringARead();
    void startsTheProgram_data();
    void startsTheProgram();
    void removesPermissionsOfOtherUsers_data();
    void removesPermissionsOfOtherUsers();

private:
    TemporaryStore store;
};

void TestMainWindowEnd::init()
{
    store.clear();
}

void TestMainWindowEnd::endsTheEventLoopWhenClosed()
{
    WindowSession session;
    QTimer::singleShot(0, &session.window, [&session] { session.window.close(); });
    QCOMPARE(runEventLoop(), 0);
    QVERIFY(!session.window.isVisible());
}

void TestMainWindowEnd::endsTheEventLoopByTheQuitEntry()
{
    WindowSession session;
    QTimer::singleShot(0, entry(session.window, u"&Quit"_s), &QAction::trigger);
    QCOMPARE(runEventLoop(), 0);
}

void TestMainWindowEnd::quitsByShortcut_data()
{
    QTest::addColumn<QString>("theme");

    QTest::newRow("platform's shortcut") << QString();
    QTest::newRow("theme without a shortcut") << u"qt6ct"_s;
}

void TestMainWindowEnd::quitsByShortcut()
{
    QFETCH(const QString, theme);
    SKIP_IF_MISSING(VirtualScreen::missingParts());
    VirtualScreen screen;
    QVERIFY2(screen.start(), qUtf8Printable(screen.failure()));
    const PreparedStore programStore;
    ProgramOnScreen program(screen, programStore);
    QVERIFY2(program.start({u"env"_s, u"QT_QPA_PLATFORMTHEME="_s + theme}),
             qUtf8Printable(program.errorOutput()));
    QVERIFY(screen.press(u"Escape"_s));
    QVERIFY(screen.waitFor([&] { return screen.activeTitle() == "Velmora"_L1; }));
    QVERIFY(screen.press(u"ctrl+q"_s));
    QTRY_VERIFY_WITH_TIMEOUT(!program.isRunning(), WaitTimeout);
    QCOMPARE(program.exitStatus(), 0);
    QCOMPARE(program.errorOutput(), QString());
}

void TestMainWindowEnd::quitsOnSignals_data()
{
    QTest::addColumn<int>("signal");

    QTest::newRow("SIGTERM") << SIGTERM;
    QTest::newRow("SIGINT") << SIGINT;
    QTest::newRow("SIGHUP") << SIGHUP;
}

void TestMainWindowEnd::quitsOnSignals()
{
    QFETCH(const int, signal);
    SKIP_IF_MISSING(VirtualScreen::missingParts());
    VirtualScreen screen;
    QVERIFY2(screen.start(), qUtf8Printable(screen.failure()));
    ScriptedServer server;
    PreparedStore programStore;
    programStore.addServer({.host = u"127.0.0.1"_s,
                            .port = server.port(),
                            .nickname = u"wanda"_s,
                            .realName = u"Wanda"_s,
                            .channels = {}});
    ProgramOnScreen program(screen, programStore);
    // The parent process of the test may ignore some signals.
    QVERIFY(program.start({u"env"_s, u"--default-signal"_s}));
    QVERIFY(program.pressConnect());
    QVERIFY(server.waitForLine(u"NICK wanda"_s));
    QCOMPARE(kill(static_cast<pid_t>(program.processId()), signal), 0);
    QVERIFY(server.waitForLine(u"QUIT :Velmora leaving"_s));
    QTRY_VERIFY_WITH_TIMEOUT(!program.isRunning(), WaitTimeout);
    QCOMPARE(program.exitStatus(), 0);
}

void TestMainWindowEnd::quitsWithTheDesktopSession()
{
    const QuitRequests requests;
    WindowSession session;
    // Only Qt can create a session manager. This one is never read.
    alignas(QSessionManager) std::array<std::byte, sizeof(QSessionManager)> manager{};
    QTimer::singleShot(0, &session.window, [&manager] {
        emit qApp->commitDataRequest(*reinterpret_cast<QSessionManager *>(manager.data()));
    });
    QCOMPARE(runEventLoop(), 0);
    QVERIFY(!session.window.isVisible());
}

void TestMainWindowEnd::quitsDuringAHostLookup()
{
    SKIP_IF_MISSING(VirtualScreen::missingParts());
    VirtualScreen screen;
    QVERIFY2(screen.start(), qUtf8Printable(screen.failure()));
    PreparedStore programStore;
    programStore.addServer({.host = u"irc.example.org"_s,
                            .port = 6667,
                            .nickname = u"wanda"_s,
                            .realName = u"Wanda"_s,
                            .channels = {}});
    ProgramOnScreen program(screen, programStore);
    QVERIFY(program.start(preloadCommand(QStringLiteral(VELMORA_SILENT_NAMES))));
    QVERIFY(program.pressConnect());
    QTRY_COMPARE_WITH_TIMEOUT(program.errorOutput(), u"Looking for irc.example.org\n"_s,
                              WaitTimeout);
    QVERIFY(screen.press(u"ctrl+q"_s));
    QTRY_VERIFY_WITH_TIMEOUT(!program.isRunning(), WaitTimeout);
    QCOMPARE(program.exitStatus(), 0);
}

void TestMainWindowEnd::sendsQuitWhenDestroyed()
{
    WindowSession session;
    QVERIFY(session.registerAs(u"me"_s));
    QTimer::singleShot(0, &session.window, [&session] { session.window.close(); });
    QCOMPARE(runEventLoop(), 0);
    // Closing only hides the window; its destructor ends the session.
    QVERIFY(session.probe.connection().isConnected());
    QVERIFY(!session.readSent().contains(u"QUIT :Velmora leaving"_s));
    session.destroyWindow();
    QVERIFY(session.server.waitForLine(u"QUIT :Velmora leaving"_s));
    QVERIFY(session.server.waitForEnd());
    QCOMPARE(session.server.lines().count(u"QUIT :Velmora leaving"_s), 1);
}

void TestMainWindowEnd::storesNothingWhenDestroyed()
{
    WindowSession session;
    QVERIFY(session.registerAs(u"me"_s));
    session.probe.appendMessageToTab(u"#c"_s, u"x"_s);
    session.probe.autojoinChannels() = QStringList{u"#unsaved"_s};
    session.window.resize(900, 500);
    store.clear();
    session.window.close();
    session.destroyWindow();
    QCOMPARE(QSettings().allKeys(), QStringList());
}

void TestMainWindowEnd::canBeDestroyedWithTabsAndASession()
{
    WindowSession session;
    QVERIFY(session.registerAs(u"me"_s));
    QVERIFY(session.join(u"#c"_s, u"@me alice"_s));
    QVERIFY(session.receive(u":bob!u@h PRIVMSG me :hello"_s));
    QVERIFY(session.receive(u":me!u@h JOIN :#trailing"_s));
    session.probe.tabBar().highlightTab(2);
    session.probe.closeTab(1); // Its page is not deleted.
    session.probe.inputLine().setText(u"half a line"_s);
    session.probe.showTab(u"bob"_s);
    QCOMPARE(session.probe.tabTexts(), (QStringList{u"Server"_s, u"bob"_s, QString()}));
    session.destroyWindow();
    QVERIFY(session.server.waitForLine(u"QUIT :Velmora leaving"_s));
}

void TestMainWindowEnd::canBeDestroyedWithAConnectDialog()
{
    WindowSession session;
    QVERIFY(session.registerAs(u"me"_s));
    session.choose(u"&Connect..."_s);
    QVERIFY(session.window.findChild<ConnectDialog *>() != nullptr);
    session.destroyWindow();
    QVERIFY(session.server.waitForLine(u"QUIT :Velmora leaving"_s));
}

void TestMainWindowEnd::canBeDestroyedWithUnreadInput()
{
    WindowSession session;
    QVERIFY(session.registerAs(u"me"_s));
    // Input that is unread when the window is destroyed stays unread.
    session.server.sendBytes(":a!u@h PRIVMSG #c :one\r\n:a!u@h PRIVMSG #d :two\r\n:a!u@h PRI"_ba);
    session.destroyWindow();
    session.server.send(u"VMSG #c :three"_s);
    QVERIFY(session.server.waitForEnd());
}

void TestMainWindowEnd::canBeClosedDuringARead()
{
    WindowSession session;
    QVERIFY(session.registerAs(u"me"_s));
    connect(&session.probe.connection(), &IRCConnection::rawMessageReceived, &session.window,
            [&session](const QString &line) {
                if (line.endsWith(u"two"_s))
                    session.window.close();
            });
    session.server.sendBytes(":a!u@h PRIVMSG #c :one\r\n:a!u@h PRIVMSG #d :two\r\n"_ba);
    QTRY_VERIFY_WITH_TIMEOUT(!session.window.isVisible(), WaitTimeout);
    QTRY_COMPARE_WITH_TIMEOUT(session.probe.lines(u"#d"_s), QStringList{u"a|two"_s}, WaitTimeout);
    QCOMPARE(session.probe.lines(u"#c"_s), QStringList{u"a|one"_s});
    session.destroyWindow();
    QVERIFY(session.server.waitForLine(u"QUIT :Velmora leaving"_s));
}

void TestMainWindowEnd::startsTheProgram_data()
{
    QTest::addColumn<QString>("storedTheme");

    QTest::newRow("first start") << QString();
    QTest::newRow("dark stored") << u"dark"_s;
}

void TestMainWindowEnd::startsTheProgram()
{
    QFETCH(const QString, storedTheme);
    PreparedStore programStore;
    if (!storedTheme.isEmpty())
        programStore.setValue(u"theme"_s, storedTheme);
    Child program;
    QVERIFY(launch(program, programStore));
    // The names of application and organisation determine the store's path.
    QTRY_COMPARE_WITH_TIMEOUT(programStore.value(u"theme"_s).toString(), u"light"_s, WaitTimeout);
    QCOMPARE(program.state(), QProcess::Running);
    program.stop();
}

void TestMainWindowEnd::removesPermissionsOfOtherUsers_data()
{
    QTest::addColumn<QFile::Permissions>("before");

    QTest::newRow("first start") << QFile::Permissions();
    QTest::newRow("readable by others before") << (OwnFile | QFile::ReadGroup | QFile::ReadOther);
    QTest::newRow("private before") << OwnFile;
}

void TestMainWindowEnd::removesPermissionsOfOtherUsers()
{
    QFETCH(const QFile::Permissions, before);

    PreparedStore programStore;
    const QString folder = programStore.configHome() + u"/Velmora"_s;
    const QString file = folder + u"/Velmora.conf"_s;
    if (before != QFile::Permissions()) {
        programStore.setValue(u"theme"_s, u"light"_s);
        QVERIFY(QFile::setPermissions(file, before));
    }
    Child program;
    QVERIFY(launch(program, programStore));
    QTRY_COMPARE_WITH_TIMEOUT(QFile::permissions(file), OwnFile, WaitTimeout);
    QTRY_COMPARE_WITH_TIMEOUT(QFile::permissions(folder),
                              OwnFile | QFile::ExeOwner | QFile::ExeUser, WaitTimeout);
    program.stop();
}

QTEST_MAIN(TestMainWindowEnd)
#include "tst_MainWindowEnd.moc"
