#include "ConnectDialog.h"
#include "Files.h"
#include "IRCConnection.h"
#include "Interruptions.h"
#include "TemporaryStore.h"
#include "WindowSession.h"

#include <QSettings>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

ServerConfig sampleConfig()
{
    ServerConfig config;
    config.nickname = u"nick"_s;
    config.altNickname = u"other"_s;
    config.realName = u"Real Name"_s;
    config.authMethod = u"SASL PLAIN"_s;
    config.password = u"p4ss;word=%1 \"x\""_s;
    config.autojoin = QStringList{u"#b"_s, u"#a"_s};
    config.encoding = u"KOI8-R"_s;
    config.useSsl = true;
    return config;
}

// All keys and values that are stored for a server.
QMap<QString, QVariant> storedGroup(const QString &id)
{
    QMap<QString, QVariant> values;
    QSettings settings;
    settings.beginGroup(u"servers/"_s + id);
    const QStringList keys = settings.allKeys();
    for (const QString &key : keys)
        values.insert(key, settings.value(key));
    settings.endGroup();
    return values;
}

QMap<QString, QVariant> sampleGroup()
{
    return {{u"nickname"_s, u"nick"_s},
            {u"altnick"_s, u"other"_s},
            {u"realname"_s, u"Real Name"_s},
            {u"authmethod"_s, u"SASL PLAIN"_s},
            {u"password"_s, u"p4ss;word=%1 \"x\""_s},
            {u"autojoin"_s, QStringList{u"#b"_s, u"#a"_s}},
            {u"encoding"_s, u"KOI8-R"_s},
            {u"ssl"_s, true}};
}

QStringList storedAutojoin(const QString &id)
{
    return QSettings().value(u"servers/"_s + id + u"/autojoin"_s).toStringList();
}

} // namespace

class TestSessionConfig final : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void savesTheRecord();
    void savesNothingWithoutAServer();
    void savesTheAddressOfUnambiguousIdsOnly_data();
    void savesTheAddressOfUnambiguousIdsOnly();
    void writesAReadableFile();

    void loadsTheRecord();
    void keepsValuesThatAreNotStored();
    void loadsNothingWithoutAServer();

    void savesAnAcceptedDialog();
    void savesWhenTheDialogOpens();
    void savesNothingWhenTheDialogOpens_data();
    void savesNothingWhenTheDialogOpens();
    void savesTheRecordOnDisconnect_data();
    void savesTheRecordOnDisconnect();
    void savesNothingAtExit();

    void togglesAChannel_data();
    void togglesAChannel();
    void removesEveryOccurrence();
    void togglesWithoutAServer();

private:
    TemporaryStore store;
};

void TestSessionConfig::init()
{
    store.clear();
}

void TestSessionConfig::savesTheRecord()
{
    const WindowSession session;
    session.probe.connection().setServerConfig(sampleConfig());
    session.probe.currentServerId() = u"irc.test_6697"_s;
    session.probe.saveCurrentServerConfig();
    QMap<QString, QVariant> expected = sampleGroup();
    expected.insert(u"address"_s, u"irc.test:6697"_s);
    QCOMPARE(storedGroup(u"irc.test_6697"_s), expected);
}

void TestSessionConfig::savesNothingWithoutAServer()
{
    const WindowSession session;
    session.probe.connection().setServerConfig(sampleConfig());
    const QStringList keys = QSettings().allKeys();
    QTest::ignoreMessage(QtWarningMsg, "saveCurrentServerConfig: currentServerId is empty");
    session.probe.saveCurrentServerConfig();
    QCOMPARE(QSettings().allKeys(), keys);
}

void TestSessionConfig::savesTheAddressOfUnambiguousIdsOnly_data()
{
    QTest::addColumn<QString>("id");
    QTest::addColumn<QString>("before");
    QTest::addColumn<QVariant>("after");

    QTest::newRow("host and port") << u"host_1"_s << u""_s << QVariant(u"host:1"_s);
    QTest::newRow("host and port, with another stored")
            << u"host_1"_s << u"old:1"_s << QVariant(u"host:1"_s);
    QTest::newRow("an underscore in the host") << u"my_host_1"_s << u""_s << QVariant();
    QTest::newRow("the same, with one stored")
            << u"my_host_1"_s << u"my_host:1"_s << QVariant(u"my_host:1"_s);
    QTest::newRow("an empty host") << u"_1"_s << u""_s << QVariant(u":1"_s);
    QTest::newRow("no underscore") << u"host"_s << u""_s << QVariant();
    QTest::newRow("two underscores side by side") << u"host__1"_s << u""_s << QVariant();
}

void TestSessionConfig::savesTheAddressOfUnambiguousIdsOnly()
{
    QFETCH(const QString, id);
    QFETCH(const QString, before);
    QFETCH(const QVariant, after);

    const WindowSession session;
    session.probe.connection().setServerConfig(sampleConfig());
    session.probe.currentServerId() = id;
    if (!before.isEmpty())
        QSettings().setValue(u"servers/"_s + id + u"/address"_s, before);
    session.probe.saveCurrentServerConfig();
    QMap<QString, QVariant> expected = sampleGroup();
    if (after.isValid())
        expected.insert(u"address"_s, after);
    QCOMPARE(storedGroup(id), expected);
}

void TestSessionConfig::writesAReadableFile()
{
    const WindowSession session;
    ServerConfig config = sampleConfig();
    config.password = u"Secret-Word_99"_s;
    session.probe.connection().setServerConfig(config);
    session.probe.currentServerId() = u"irc.test_6697"_s;
    session.probe.saveCurrentServerConfig();
    const QByteArray content = readFile(store.fileName());
    const QList<QByteArray> lines = content.split('\n');
    for (const QByteArray &line :
         {"[servers]"_ba, "irc.test_6697\\nickname=nick"_ba, "irc.test_6697\\altnick=other"_ba,
          "irc.test_6697\\realname=Real Name"_ba, "irc.test_6697\\authmethod=SASL PLAIN"_ba,
          "irc.test_6697\\password=Secret-Word_99"_ba, "irc.test_6697\\autojoin=#b, #a"_ba,
          "irc.test_6697\\encoding=KOI8-R"_ba, "irc.test_6697\\ssl=true"_ba,
          "irc.test_6697\\address=irc.test:6697"_ba})
        QVERIFY2(lines.contains(line), content.constData());
    QVERIFY(!content.contains("spare"));
}

void TestSessionConfig::loadsTheRecord()
{
    const WindowSession session;
    QSettings settings;
    const auto stored = sampleGroup();
    for (auto value = stored.cbegin(); value != stored.cend(); ++value)
        settings.setValue(u"servers/irc.test_6697/"_s + value.key(), value.value());
    session.probe.currentServerId() = u"irc.test_6697"_s;
    session.probe.loadCurrentServerConfig();

    const ServerConfig config = session.probe.connection().serverConfig();
    QCOMPARE(config.nickname, u"nick"_s);
    QCOMPARE(config.altNickname, u"other"_s);
    QCOMPARE(config.realName, u"Real Name"_s);
    QCOMPARE(config.authMethod, u"SASL PLAIN"_s);
    QCOMPARE(config.password, u"p4ss;word=%1 \"x\""_s);
    QCOMPARE(config.autojoin, (QStringList{u"#b"_s, u"#a"_s}));
    QCOMPARE(config.encoding, u"KOI8-R"_s);
    QVERIFY(config.useSsl);
    QCOMPARE(session.probe.autojoinChannels(), (QStringList{u"#b"_s, u"#a"_s}));
}

void TestSessionConfig::keepsValuesThatAreNotStored()
{
    const WindowSession session;
    session.probe.connection().setServerConfig(sampleConfig());
    session.probe.autojoinChannels() = QStringList{u"#gone"_s};
    QSettings().setValue(u"servers/irc.test_6697/nickname"_s, u"stored"_s);
    session.probe.currentServerId() = u"irc.test_6697"_s;
    session.probe.loadCurrentServerConfig();

    const ServerConfig config = session.probe.connection().serverConfig();
    QCOMPARE(config.nickname, u"stored"_s);
    QCOMPARE(config.altNickname, u"other"_s);
    QCOMPARE(config.realName, u"Real Name"_s);
    QCOMPARE(config.authMethod, u"SASL PLAIN"_s);
    QCOMPARE(config.password, u"p4ss;word=%1 \"x\""_s);
    QCOMPARE(config.encoding, u"KOI8-R"_s);
    QVERIFY(config.useSsl);
    QCOMPARE(session.probe.autojoinChannels(), (QStringList{u"#b"_s, u"#a"_s}));
}

void TestSessionConfig::loadsNothingWithoutAServer()
{
    const WindowSession session;
    session.probe.connection().setServerConfig(sampleConfig());
    session.probe.autojoinChannels() = QStringList{u"#kept"_s};
    QSettings().setValue(u"servers/nickname"_s, u"decoy"_s);
    session.probe.loadCurrentServerConfig();
    QCOMPARE(session.probe.connection().serverConfig().nickname, u"nick"_s);
    QCOMPARE(session.probe.autojoinChannels(), QStringList{u"#kept"_s});
}

void TestSessionConfig::savesAnAcceptedDialog()
{
    WindowSession session;
    QVERIFY(session.acceptDialog(u"me"_s, u"#b a"_s));
    const QString port = QString::number(session.server.port());
    QCOMPARE(session.probe.currentServerId(), QString(u"127.0.0.1_"_s + port));
    QCOMPARE(session.probe.autojoinChannels(), (QStringList{u"#b"_s, u"#a"_s}));
    QCOMPARE(session.probe.connection().serverConfig().autojoin, (QStringList{u"#b"_s, u"#a"_s}));
    const auto group = storedGroup(u"127.0.0.1_"_s + port);
    QCOMPARE(group.keys(),
             (QStringList{u"address"_s, u"altnick"_s, u"authmethod"_s, u"autojoin"_s, u"encoding"_s,
                          u"nickname"_s, u"password"_s, u"realname"_s, u"ssl"_s}));
    QCOMPARE(group.value(u"nickname"_s).toString(), u"me"_s);
    QCOMPARE(group.value(u"autojoin"_s).toStringList(), (QStringList{u"#b"_s, u"#a"_s}));
    QCOMPARE(group.value(u"address"_s).toString(), QString(u"127.0.0.1:"_s + port));
}

void TestSessionConfig::savesWhenTheDialogOpens()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    session.probe.autojoinChannels() = QStringList{u"#now"_s};
    const QString id = session.probe.currentServerId();
    session.choose(u"&Connect..."_s);
    QCOMPARE(session.probe.connection().serverConfig().autojoin, QStringList{u"#now"_s});
    QCOMPARE(storedAutojoin(id), QStringList{u"#now"_s});
}

void TestSessionConfig::savesNothingWhenTheDialogOpens_data()
{
    QTest::addColumn<bool>("connected");

    QTest::newRow("not connected") << false;
    QTest::newRow("no server") << true;
}

void TestSessionConfig::savesNothingWhenTheDialogOpens()
{
    QFETCH(const bool, connected);

    WindowSession session;
    QVERIFY(session.registerAs());
    const QString id = session.probe.currentServerId();
    if (connected) {
        session.probe.currentServerId().clear();
    } else {
        QVERIFY(Interruptions::dropLink(session));
    }
    session.probe.autojoinChannels() = QStringList{u"#now"_s};
    session.choose(u"&Connect..."_s);
    QCOMPARE(session.probe.connection().serverConfig().autojoin, QStringList());
    QCOMPARE(storedAutojoin(id), QStringList());
}

void TestSessionConfig::savesTheRecordOnDisconnect_data()
{
    QTest::addColumn<QString>("entry");
    QTest::addColumn<bool>("connected");

    QTest::newRow("disconnect") << u"&Disconnect"_s << true;
    QTest::newRow("reconnect") << u"&Reconnect"_s << true;
    QTest::newRow("disconnect while disconnected") << u"&Disconnect"_s << false;
    QTest::newRow("reconnect while disconnected") << u"&Reconnect"_s << false;
}

void TestSessionConfig::savesTheRecordOnDisconnect()
{
    QFETCH(const QString, entry);
    QFETCH(const bool, connected);

    WindowSession session;
    QVERIFY(session.registerAs());
    const QString id = session.probe.currentServerId();
    if (!connected) {
        QVERIFY(Interruptions::dropLink(session));
    }
    session.probe.connection().setServerConfig(sampleConfig());
    session.probe.autojoinChannels() = QStringList{u"#not in the record"_s};
    session.choose(entry);
    QCOMPARE(storedGroup(id).value(u"nickname"_s).toString(), connected ? u"nick"_s : u"me"_s);
    QCOMPARE(storedAutojoin(id), connected ? (QStringList{u"#b"_s, u"#a"_s}) : QStringList());
}

void TestSessionConfig::savesNothingAtExit()
{
    QString id;
    {
        WindowSession session;
        QVERIFY(session.registerAs());
        id = session.probe.currentServerId();
        session.probe.connection().setServerConfig(sampleConfig());
        session.probe.autojoinChannels() = QStringList{u"#a"_s};
    }
    QCOMPARE(storedGroup(id).value(u"nickname"_s).toString(), u"me"_s);
    QCOMPARE(storedAutojoin(id), QStringList());
}

void TestSessionConfig::togglesAChannel_data()
{
    QTest::addColumn<QString>("channel");
    QTest::addColumn<bool>("enable");
    QTest::addColumn<QStringList>("list");
    QTest::addColumn<QString>("line");

    const auto add = [](const char *name, const QString &channel, bool enable,
                        const QStringList &list, const QString &line) {
        QTest::newRow(name) << channel << enable << list << line;
    };
    add("on", u"#c"_s, true, {u"#b"_s, u"#a"_s, u"#c"_s}, u"*** Added #c to autojoin list"_s);
    add("on, without a prefix", u"c"_s, true, {u"#b"_s, u"#a"_s, u"#c"_s},
        u"*** Added #c to autojoin list"_s);
    add("on, with another prefix", u"&c"_s, true, {u"#b"_s, u"#a"_s, u"#&c"_s},
        u"*** Added #&c to autojoin list"_s);
    add("on again", u"#a"_s, true, {u"#b"_s, u"#a"_s}, u"*** Added #a to autojoin list"_s);
    add("on in another case", u"#A"_s, true, {u"#b"_s, u"#a"_s, u"#A"_s},
        u"*** Added #A to autojoin list"_s);
    add("off", u"#b"_s, false, {u"#a"_s}, u"*** Removed #b from autojoin list"_s);
    add("off, without a prefix", u"b"_s, false, {u"#a"_s}, u"*** Removed #b from autojoin list"_s);
    add("off in another case", u"#B"_s, false, {u"#b"_s, u"#a"_s},
        u"*** Removed #B from autojoin list"_s);
    add("placeholders", u"%1"_s, true, {u"#b"_s, u"#a"_s, u"#%1"_s},
        u"*** Added #%1 to autojoin list"_s);
}

void TestSessionConfig::togglesAChannel()
{
    QFETCH(const QString, channel);
    QFETCH(const bool, enable);
    QFETCH(const QStringList, list);
    QFETCH(const QString, line);

    const WindowSession session;
    session.probe.connection().setServerConfig(sampleConfig());
    session.probe.currentServerId() = u"irc.test_6697"_s;
    session.probe.autojoinChannels() = QStringList{u"#b"_s, u"#a"_s};
    session.probe.setChannelAutojoin(channel, enable);
    QCOMPARE(session.probe.autojoinChannels(), list);
    QCOMPARE(session.probe.connection().serverConfig().autojoin, list);
    QCOMPARE(session.probe.connection().serverConfig().nickname, u"nick"_s);
    QCOMPARE(storedAutojoin(u"irc.test_6697"_s), list);
    QCOMPARE(session.probe.lines(u"Server"_s), QStringList{line});
}

void TestSessionConfig::removesEveryOccurrence()
{
    const WindowSession session;
    session.probe.currentServerId() = u"irc.test_6697"_s;
    session.probe.autojoinChannels() = QStringList{u"#a"_s, u"#b"_s, u"#a"_s};
    session.probe.setChannelAutojoin(u"#a"_s, false);
    QCOMPARE(session.probe.autojoinChannels(), QStringList{u"#b"_s});
}

void TestSessionConfig::togglesWithoutAServer()
{
    const WindowSession session;
    QTest::ignoreMessage(QtWarningMsg, "saveCurrentServerConfig: currentServerId is empty");
    session.probe.setChannelAutojoin(u"#a"_s, true);
    QCOMPARE(session.probe.autojoinChannels(), QStringList{u"#a"_s});
    QCOMPARE(session.probe.connection().serverConfig().autojoin, QStringList{u"#a"_s});
    QCOMPARE(session.probe.lines(u"Server"_s), QStringList{u"*** Added #a to autojoin list"_s});
}

QTEST_MAIN(TestSessionConfig)
#include "tst_SessionConfig.moc"
