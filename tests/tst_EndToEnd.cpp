// End-to-end tests of the built program in a real window, with a real server and another user. They
// check the lines sent and received, and the screen for what the lines do not show.

#include "Ngircd.h"
#include "RequiredTools.h"
#include "Scenario.h"
#include "ScriptedServer.h"
#include "TlsAuthority.h"
#include "VirtualScreen.h"
#include "Waiting.h"

#include <QFile>
#include <QProcess>
#include <QSignalSpy>
#include <QSslServer>
#include <QTemporaryDir>
#include <QTest>

#include <memory>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

constexpr QRgb BobColour = qRgb(0xad, 0x14, 0x57);
constexpr int NickPixels = 20; // A short nick has more pixels of its colour than this.

// Returns a command prefix that replaces the system's trusted certificates with those in `folder`.
// Programs read only the system's certificate folders, so it mounts the folder over them, in a
// mount namespace of its own.
QStringList withSystemCertificates(const QString &folder)
{
    QStringList command{u"unshare"_s, u"--mount"_s};
    if (geteuid() != 0)
        command.append(u"--map-root-user"_s);
    else if (QProcess::execute(u"unshare"_s, {u"--mount"_s, u"true"_s}) != 0)
        command.append({u"--propagation"_s, u"unchanged"_s}); // Needed in a chroot.
    return command
           + QStringList{u"sh"_s, u"-c"_s, u"mount --bind \"$0\" /etc/ssl/certs && exec \"$@\""_s,
                         folder};
}

// Installs the authority's certificate in the folder, with the hashed name that OpenSSL looks for.
bool install(const TlsAuthority &authority, const QString &folder)
{
    return QFile::copy(authority.certificateFile(), folder + u"/authority.pem"_s)
           && QProcess::execute(u"openssl"_s, {u"rehash"_s, folder}) == 0;
}

} // namespace

class TestEndToEnd final : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void connectsFromTheDialogByKeyboard();
    void talksBothWays();
    void runsItsCommands();
    void refusesAnUnknownCommand();
    void receivesAPrivateMessage();
    void requestsWhois();
    void usesAnotherNickWhenItsOwnIsInUse();
    void survivesTheServerAndReconnects();
    void sendsQuitWhenTheWindowCloses();
    void handlesAJoinWithATrailingChannel();
    void trustsAnAuthorityOfTheSystem();
    void refusesASelfSignedCertificate();

private:
    // Stores a TLS server on this port for the connect dialog.
    bool prepareTls(quint16 port);

    VirtualScreen screen;
    std::unique_ptr<Scenario> scenario;
};

void TestEndToEnd::initTestCase()
{
    SKIP_IF_MISSING(VirtualScreen::missingParts());
    REQUIRE_TOOLS(u"ngircd"_s);
    QVERIFY2(screen.start(), qPrintable(screen.failure()));
}

void TestEndToEnd::init()
{
    scenario = std::make_unique<Scenario>(screen, std::make_unique<Ngircd>());
}

void TestEndToEnd::cleanup()
{
    if (QTest::currentTestFailed())
        scenario->report(QString::fromLatin1(QTest::currentTestFunction()));
    QVERIFY(scenario->end());
    QCOMPARE(scenario->program.errorOutput(), QString());
    scenario.reset();
}

bool TestEndToEnd::prepareTls(quint16 port)
{
    scenario->store.addServer({.host = u"localhost"_s,
                               .port = port,
                               .nickname = u"wanda"_s,
                               .realName = u"Wanda Walker"_s,
                               .channels = {u"#room"_s},
                               .tls = true});
    return port != 0;
}

void TestEndToEnd::connectsFromTheDialogByKeyboard()
{
    QVERIFY(scenario->start());
    QVERIFY(scenario->bob.waitFor(u" JOIN :#room"_s));
    QCOMPARE(scenario->proxy->bytesFromProgram(), "NICK wanda\r\nUSER wanda 0 * :Wanda Walker\r\n"
                                                  "JOIN #room\r\nNAMES #room\r\n"_ba);
    const QString port = QString::number(scenario->proxy->port());
    const auto stored = [&](const QString &key) {
        return scenario->store.value(key).toStringList();
    };
    QCOMPARE(stored(u"connection/history"_s), QStringList{u"127.0.0.1:"_s + port});
    QCOMPARE(stored(u"servers/127.0.0.1_%1/nickname"_s.arg(port)), QStringList{u"wanda"_s});
    QCOMPARE(stored(u"servers/127.0.0.1_%1/autojoin"_s.arg(port)), QStringList{u"#room"_s});
}

void TestEndToEnd::talksBothWays()
{
    QVERIFY(scenario->start());
    QVERIFY(scenario->program.typeLine(u"Good evening, everybody"_s));
    QVERIFY(scenario->bob.waitFor(u"PRIVMSG #room :Good evening, everybody"_s));
    QVERIFY(scenario->program.waitForLines(2));

    const int bobBefore = screen.countPixels(BobColour);
    scenario->bob.send(u"PRIVMSG #room :Good evening, Wanda"_s);
    QVERIFY(scenario->program.waitForLines(3));
    QVERIFY(screen.waitFor([&] { return screen.countPixels(BobColour) > bobBefore + NickPixels; }));
}

void TestEndToEnd::runsItsCommands()
{
    QVERIFY(scenario->start());
    ProgramOnScreen &program = scenario->program;
    const LoggingProxy &wire = *scenario->proxy;
    const PlainClient &bob = scenario->bob;

    QVERIFY(program.typeLine(u"/join other"_s));
    QVERIFY(wire.waitForProgram(u"JOIN #other"_s));
    QVERIFY(wire.waitForProgram(u"NAMES #other"_s));

    QVERIFY(program.typeLine(u"/msg bob between the two of us"_s));
    QVERIFY(bob.waitFor(u"PRIVMSG bob :between the two of us"_s));
    QVERIFY(wire.waitForProgram(u"WATCH +bob"_s));

    QVERIFY(program.typeLine(u"/away gone fishing"_s));
    QVERIFY(wire.waitForProgram(u"AWAY :gone fishing"_s));
    QVERIFY(wire.waitForServer(u" 306 wanda "_s));
    scenario->bob.send(u"PRIVMSG wanda :are you there?"_s);
    QVERIFY(bob.waitFor(u" 301 bob wanda :gone fishing"_s));

    QVERIFY(program.typeLine(u"/back"_s));
    QVERIFY(wire.waitForProgram(u"AWAY"_s));
    QVERIFY(wire.waitForServer(u" 305 wanda "_s));

    QVERIFY(program.typeLine(u"/nick wendy"_s));
    QVERIFY(wire.waitForProgram(u"NICK wendy"_s));
    QVERIFY(bob.waitFor(u" NICK :wendy"_s));

    QVERIFY(program.typeLine(u"/raw NOTICE bob :just so"_s));
    QVERIFY(bob.waitFor(u":wendy!"_s));
    QVERIFY(bob.waitFor(u" NOTICE bob :just so"_s));

    QVERIFY(program.typeLine(u"/part"_s));
    QVERIFY(wire.waitForProgram(u"PART #room :Leaving"_s));
    QVERIFY(bob.waitFor(u" PART #room :Leaving"_s));
}

void TestEndToEnd::refusesAnUnknownCommand()
{
    QVERIFY(scenario->start());
    QVERIFY(scenario->program.typeLine(u"/frobnicate the server"_s));
    QVERIFY(scenario->program.waitForLines(2));
    QVERIFY(scenario->program.typeLine(u"still here"_s));
    QVERIFY(scenario->bob.waitFor(u"PRIVMSG #room :still here"_s));
    QCOMPARE(scenario->sentByProgram().filter(u"frobnicate"_s, Qt::CaseInsensitive), QStringList());
}

void TestEndToEnd::receivesAPrivateMessage()
{
    QVERIFY(scenario->start());
    const QRect before = screen.waitUntilStable([this] { return scenario->program.tabs(); });
    QVERIFY(!before.isEmpty());
    scenario->bob.send(u"PRIVMSG wanda :psst"_s);
    // The conversation opens and its partner is watched.
    QVERIFY(scenario->proxy->waitForProgram(u"WATCH +bob"_s));
    QVERIFY(screen.waitFor([&] { return scenario->program.tabs().right() > before.right(); }));
}

void TestEndToEnd::requestsWhois()
{
    QVERIFY(scenario->start());
    QVERIFY(scenario->program.typeLine(u"/whois bob"_s));
    QVERIFY(scenario->proxy->waitForProgram(u"WHOIS bob"_s));
    QVERIFY(scenario->proxy->waitForServer(u" 318 wanda bob "_s));
    // User, server, idle time and channels.
    QVERIFY(scenario->program.waitForLines(1 + 4));

    // For an unknown nick, only the lines that are always printed.
    QVERIFY(scenario->program.typeLine(u"/whois nosuch"_s));
    QVERIFY(scenario->proxy->waitForServer(u" 318 wanda nosuch "_s));
    QVERIFY(scenario->program.waitForLines(1 + 6));
}

void TestEndToEnd::usesAnotherNickWhenItsOwnIsInUse()
{
    QVERIFY(scenario->prepare(LoggingProxy::Joins::Rewritten, u"bob"_s, {u"#room"_s}));
    QVERIFY(scenario->program.start());
    QVERIFY(scenario->program.pressConnect());
    QVERIFY(scenario->proxy->waitForServer(u" 433 "_s));
    QVERIFY(scenario->proxy->waitForProgram(u"NICK bob_"_s));
    QVERIFY(scenario->proxy->waitForServer(u" 001 bob_ "_s));
    QVERIFY(scenario->proxy->waitForProgram(u"NAMES #room"_s));
    QVERIFY(scenario->bob.waitFor(u":bob_!"_s));
}

void TestEndToEnd::survivesTheServerAndReconnects()
{
    QVERIFY(scenario->start());
    scenario->server->kill();
    QVERIFY(scenario->waitForStatus(Scenario::Red));
    QVERIFY(scenario->program.isRunning());

    Ngircd next;
    QVERIFY(next.start());
    scenario->proxy->redirectTo(next.port());
    QVERIFY(scenario->program.openConnectDialog());
    QVERIFY(scenario->program.pressConnect());
    QVERIFY(scenario->proxy->waitForProgram(u"JOIN #room"_s, 2));
    QVERIFY(scenario->waitForStatus(Scenario::Green));
}

void TestEndToEnd::sendsQuitWhenTheWindowCloses()
{
    QVERIFY(scenario->start());
    QVERIFY(scenario->program.close());
    QCOMPARE(scenario->program.exitStatus(), 0);
    QVERIFY(scenario->proxy->waitForProgram(u"QUIT :Velmora leaving"_s));
    QVERIFY(scenario->proxy->waitForEnd());
    QCOMPARE(scenario->sentByProgram().last(), u">> QUIT :Velmora leaving"_s);
    QVERIFY(scenario->bob.waitFor(u":wanda!"_s));
    QVERIFY(scenario->bob.waitFor(u" QUIT "_s));
}

void TestEndToEnd::handlesAJoinWithATrailingChannel()
{
    QVERIFY(scenario->prepare(LoggingProxy::Joins::Unchanged, u"wanda"_s, {u"#room"_s}));
    QVERIFY(scenario->program.start());
    QVERIFY(scenario->program.pressConnect());
    QVERIFY(scenario->proxy->waitForServer(u" JOIN :#room"_s));
    // Intended: a trailing channel is ignored, so NAMES has no channel.
    QVERIFY(scenario->proxy->waitForProgram(u"NAMES "_s));

    // The first message to the channel, or the user's own, opens its tab.
    const QRect before = screen.waitUntilStable([this] { return scenario->program.tabs(); });
    QVERIFY(!before.isEmpty());
    scenario->bob.send(u"PRIVMSG #room :anybody here?"_s);
    QVERIFY(screen.waitFor([&] { return scenario->program.tabs().right() > before.right(); }));
    QVERIFY(scenario->program.typeLine(u"/msg #room here I am"_s));
    QVERIFY(scenario->bob.waitFor(u"PRIVMSG #room :here I am"_s));
}

void TestEndToEnd::trustsAnAuthorityOfTheSystem()
{
    REQUIRE_TOOLS(u"openssl"_s, u"unshare"_s);
    const TlsAuthority authority;
    ScriptedServer server(authority.issue(u"localhost"_s));
    QVERIFY(prepareTls(server.port()));

    const QTemporaryDir certificates;
    QVERIFY(install(authority, certificates.path()));
    QVERIFY(scenario->program.start(withSystemCertificates(certificates.path())));
    QVERIFY(scenario->program.pressConnect());
    QVERIFY(server.waitForClient());
    QVERIFY(server.waitForLine(u"NICK wanda"_s));
    QVERIFY(server.waitForLine(u"USER wanda 0 * :Wanda Walker"_s));
    server.send(u":irc.test 001 wanda :Welcome"_s);
    QVERIFY(server.waitForLine(u"JOIN #room"_s));
    QVERIFY(scenario->waitForStatus(Scenario::Green));
}

void TestEndToEnd::refusesASelfSignedCertificate()
{
    REQUIRE_TOOLS(u"openssl"_s, u"unshare"_s);
    const TlsAuthority authority;
    QSslServer server;
    server.setSslConfiguration(authority.selfSigned(u"localhost"_s));
    QSignalSpy refusal(&server, &QSslServer::errorOccurred);
    QVERIFY(server.listen(QHostAddress::LocalHost));
    QVERIFY(prepareTls(server.serverPort()));

    QVERIFY(scenario->program.start());
    QVERIFY(scenario->program.pressConnect());
    QTRY_VERIFY_WITH_TIMEOUT(!refusal.isEmpty(), WaitTimeout);
    // Connected, the error, disconnected.
    QVERIFY(scenario->program.waitForLines(3));
    QVERIFY(scenario->waitForStatus(Scenario::Red));
    QVERIFY(scenario->program.isRunning());
}

QTEST_GUILESS_MAIN(TestEndToEnd)

#include "tst_EndToEnd.moc"
