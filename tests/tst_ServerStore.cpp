#include "ServerCatalogue.h"
#include "ServerStore.h"
#include "TemporaryStore.h"

#include <QFile>
#include <QSettings>
#include <QTest>

#include <utility>

using namespace Qt::StringLiterals;

class TestServerStore final : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void formsIdsFromHostAndPort();
    void splitsAddresses_data();
    void splitsAddresses();
    void convertsIdsToAddresses_data();
    void convertsIdsToAddresses();
    void hasDefaultRecordValues();
    void declaresRecordFieldsInOrder();
    void movesARecord();
    void copiesTheSpareFlagWithTheRecord();
    void loadsTheDefaultRecordForAnUnknownServer();
    void usesTheGivenRecordForMissingKeys();
    void writesEachFieldUnderItsKey();
    void readsBackTheSavedRecord();
    void storesThePasswordAsPlainText();
    void storesAnUnconvertibleIdAsAddress_data();
    void storesAnUnconvertibleIdAsAddress();
    void keepsTheAddressOfAnUnconvertibleId();
    void convertsHandWrittenValues();
    void loadsTheAutojoinChannels();
    void removesOneGroupOnly();
    void storesSetsOfIds();
    void seedsOnlyMissingAddresses();
    void derivesAMissingAddressFromTheId();
    void listsDefaultAndCustomServers();
    void recognizesDefaultServers();
    void storesTheIdsOfCustomServers();
    void keepsTheLastTenAddresses();

private:
    TemporaryStore store;
};

void TestServerStore::init()
{
    store.clear();
}

void TestServerStore::formsIdsFromHostAndPort()
{
    QCOMPARE(ServerStore::serverId(u"irc.example.org"_s, 6667), u"irc.example.org_6667"_s);
    QCOMPARE(ServerStore::serverId(QString(), 0), u"_0"_s);
    QCOMPARE(ServerStore::groupName(u"irc.example.org_6667"_s), u"servers/irc.example.org_6667"_s);
}

void TestServerStore::splitsAddresses_data()
{
    QTest::addColumn<QString>("address");
    QTest::addColumn<bool>("valid");
    QTest::addColumn<QString>("host");
    QTest::addColumn<int>("port");
    QTest::addColumn<QString>("id");

    QTest::newRow("plain") << u"a.org:6697"_s << true << u"a.org"_s << 6697 << u"a.org_6697"_s;
    QTest::newRow("no host") << u":6667"_s << true << u""_s << 6667 << u"_6667"_s;
    QTest::newRow("no port") << u"a.org:"_s << true << u"a.org"_s << 0 << u"a.org_0"_s;
    QTest::newRow("port of letters") << u"a.org:irc"_s << true << u"a.org"_s << 0 << u"a.org_0"_s;
    QTest::newRow("zeros") << u"a.org:0667"_s << true << u"a.org"_s << 667 << u"a.org_667"_s;
    QTest::newRow("no colon") << u"a.org"_s << false << QString() << 0 << QString();
    QTest::newRow("empty") << QString() << false << QString() << 0 << QString();
    QTest::newRow("IPv6") << u"::1:6667"_s << false << QString() << 0 << QString();
}

void TestServerStore::splitsAddresses()
{
    QFETCH(const QString, address);
    QFETCH(const bool, valid);
    const std::optional<ServerStore::HostPort> parts = ServerStore::splitAddress(address);
    const std::optional<QString> id = ServerStore::idOfAddress(address);
    QCOMPARE(parts.has_value(), valid);
    QCOMPARE(id.has_value(), valid);
    if (!valid)
        return;
    QTEST(parts->host, "host");
    QTEST(parts->port, "port");
    QTEST(*id, "id");
}

void TestServerStore::convertsIdsToAddresses_data()
{
    QTest::addColumn<QString>("id");
    QTest::addColumn<QString>("address"); // Null for none.

    QTest::newRow("plain") << u"a.org_6667"_s << u"a.org:6667"_s;
    QTest::newRow("no host") << u"_6667"_s << u":6667"_s;
    QTest::newRow("host with underscore") << u"my_host_6667"_s << QString();
    QTest::newRow("no underscore") << u"a.org"_s << QString();
    QTest::newRow("IPv6") << u"::1_6667"_s << u"::1:6667"_s;
}

void TestServerStore::convertsIdsToAddresses()
{
    QFETCH(const QString, id);
    QTEST(ServerStore::addressOfId(id).value_or(QString()), "address");
}

void TestServerStore::hasDefaultRecordValues()
{
    const ServerConfig config;
    QCOMPARE(config.nickname, QString());
    QCOMPARE(config.altNickname, QString());
    QCOMPARE(config.realName, QString());
    QCOMPARE(config.authMethod, u"NickServ (/nickserv IDENTIFY)"_s);
    QCOMPARE(config.password, QString());
    QCOMPARE(config.autojoin, QStringList());
    QCOMPARE(config.encoding, u"UTF-8 (Unicode)"_s);
    QCOMPARE(config.useSsl, false);
    QCOMPARE(config.spareFlag, false);
}

void TestServerStore::declaresRecordFieldsInOrder()
{
    const ServerConfig config{u"nick"_s, u"alt"_s,    u"Real"_s, u"None"_s, u"secret"_s,
                              {u"#a"_s}, u"KOI8-R"_s, true,      false};
    QCOMPARE(config.nickname, u"nick"_s);
    QCOMPARE(config.altNickname, u"alt"_s);
    QCOMPARE(config.realName, u"Real"_s);
    QCOMPARE(config.authMethod, u"None"_s);
    QCOMPARE(config.password, u"secret"_s);
    QCOMPARE(config.autojoin, QStringList{u"#a"_s});
    QCOMPARE(config.encoding, u"KOI8-R"_s);
    QCOMPARE(config.useSsl, true);
    QCOMPARE(config.spareFlag, false);
}

void TestServerStore::movesARecord()
{
    ServerConfig config;
    config.nickname = QString::number(17); // A literal is never detached.
    config.spareFlag = true;
    ServerConfig moved = std::move(config);
    QCOMPARE(moved.nickname, u"17"_s);
    QVERIFY(moved.spareFlag);
    QVERIFY(moved.nickname.isDetached()); // A copy would share the data.
    ServerConfig assigned;
    assigned = std::move(moved);
    QCOMPARE(assigned.nickname, u"17"_s);
    QVERIFY(assigned.spareFlag);
    QVERIFY(assigned.nickname.isDetached());
}

void TestServerStore::copiesTheSpareFlagWithTheRecord()
{
    ServerConfig config;
    config.spareFlag = true;
    const ServerConfig copy = config;
    QVERIFY(copy.spareFlag);
    ServerConfig assigned;
    assigned = copy;
    QVERIFY(assigned.spareFlag);

    ServerStore::saveConfig(u"a.org_6667"_s, config, ServerStore::AddressFallback::UseId);
    QCOMPARE(QSettings().allKeys().filter(u"spare"_s, Qt::CaseInsensitive), QStringList());
    QVERIFY(!ServerStore::loadConfig(u"a.org_6667"_s).spareFlag);
}

void TestServerStore::loadsTheDefaultRecordForAnUnknownServer()
{
    const ServerConfig config = ServerStore::loadConfig(u"nowhere.org_6667"_s);
    QCOMPARE(config.nickname, QString());
    QCOMPARE(config.altNickname, QString());
    QCOMPARE(config.realName, QString());
    QCOMPARE(config.authMethod, u"NickServ (/nickserv IDENTIFY)"_s);
    QCOMPARE(config.password, QString());
    QCOMPARE(config.autojoin, QStringList());
    QCOMPARE(config.encoding, u"UTF-8 (Unicode)"_s);
    QCOMPARE(config.useSsl, false);
    QCOMPARE(QSettings().allKeys(), QStringList());
}

void TestServerStore::usesTheGivenRecordForMissingKeys()
{
    QSettings().setValue(u"servers/a.org_6667/nickname"_s, u"stored"_s);
    QSettings().setValue(u"servers/a.org_6667/ssl"_s, false);
    ServerConfig defaults;
    defaults.nickname = u"given"_s;
    defaults.altNickname = u"alt"_s;
    defaults.realName = u"Real"_s;
    defaults.authMethod = u"None"_s;
    defaults.password = u"secret"_s;
    defaults.autojoin = {u"#a"_s};
    defaults.encoding = u"KOI8-R"_s;
    defaults.useSsl = true;
    const ServerConfig config = ServerStore::loadConfig(u"a.org_6667"_s, defaults);
    QCOMPARE(config.nickname, u"stored"_s);
    QCOMPARE(config.altNickname, u"alt"_s);
    QCOMPARE(config.realName, u"Real"_s);
    QCOMPARE(config.authMethod, u"None"_s);
    QCOMPARE(config.password, u"secret"_s);
    QCOMPARE(config.autojoin, QStringList{u"#a"_s});
    QCOMPARE(config.encoding, u"KOI8-R"_s);
    QCOMPARE(config.useSsl, false);
}

void TestServerStore::writesEachFieldUnderItsKey()
{
    ServerConfig config;
    config.nickname = u"nick"_s;
    config.altNickname = u"alt"_s;
    config.realName = u"Real Name"_s;
    config.authMethod = u"SASL PLAIN"_s;
    config.password = u"secret"_s;
    config.autojoin = {u"#a"_s, u"#b"_s};
    config.encoding = u"GBK (Chinese)"_s;
    config.useSsl = true;
    ServerStore::saveConfig(u"a.org_6667"_s, config, ServerStore::AddressFallback::UseId);

    QSettings settings;
    settings.beginGroup(u"servers/a.org_6667"_s);
    QCOMPARE(settings.allKeys(),
             (QStringList{u"address"_s, u"altnick"_s, u"authmethod"_s, u"autojoin"_s, u"encoding"_s,
                          u"nickname"_s, u"password"_s, u"realname"_s, u"ssl"_s}));
    QCOMPARE(settings.value(u"nickname"_s), QVariant(u"nick"_s));
    QCOMPARE(settings.value(u"altnick"_s), QVariant(u"alt"_s));
    QCOMPARE(settings.value(u"realname"_s), QVariant(u"Real Name"_s));
    QCOMPARE(settings.value(u"authmethod"_s), QVariant(u"SASL PLAIN"_s));
    QCOMPARE(settings.value(u"password"_s), QVariant(u"secret"_s));
    QCOMPARE(settings.value(u"autojoin"_s), QVariant(QStringList{u"#a"_s, u"#b"_s}));
    QCOMPARE(settings.value(u"encoding"_s), QVariant(u"GBK (Chinese)"_s));
    QCOMPARE(settings.value(u"ssl"_s).toBool(), true);
    QCOMPARE(settings.value(u"address"_s), QVariant(u"a.org:6667"_s));
}

void TestServerStore::readsBackTheSavedRecord()
{
    ServerConfig config;
    config.nickname = u"[n]ick|^"_s;
    config.altNickname = u"alt\\nick"_s;
    config.realName = u"Größe, \"quoted\"; = %1 @Invalid()"_s;
    config.authMethod = u"SASL EXTERNAL"_s;
    config.password = u"  a; b=\"c\", \\d %20 é "_s;
    config.autojoin = {u"#a"_s, u"##b,c"_s, u"#ünï"_s};
    config.encoding = u"KOI8-U"_s;
    config.useSsl = true;
    ServerStore::saveConfig(u"a.org_6667"_s, config, ServerStore::AddressFallback::UseId);
    const ServerConfig read = ServerStore::loadConfig(u"a.org_6667"_s);
    QCOMPARE(read.nickname, config.nickname);
    QCOMPARE(read.altNickname, config.altNickname);
    QCOMPARE(read.realName, config.realName);
    QCOMPARE(read.authMethod, config.authMethod);
    QCOMPARE(read.password, config.password);
    QCOMPARE(read.autojoin, config.autojoin);
    QCOMPARE(read.encoding, config.encoding);
    QCOMPARE(read.useSsl, config.useSsl);

    ServerStore::saveConfig(u"a.org_6667"_s, ServerConfig(), ServerStore::AddressFallback::UseId);
    QCOMPARE(ServerStore::loadConfig(u"a.org_6667"_s).autojoin, QStringList());
}

void TestServerStore::storesThePasswordAsPlainText()
{
    ServerConfig config;
    config.password = u"Open sesame 7"_s;
    ServerStore::saveConfig(u"a.org_6667"_s, config, ServerStore::AddressFallback::UseId);
    QCOMPARE(ServerStore::loadConfig(u"a.org_6667"_s).password, u"Open sesame 7"_s);

    QFile file(store.fileName());
    QVERIFY(file.open(QIODevice::ReadOnly));
    QVERIFY(file.readAll().contains("password=Open sesame 7\n"));
}

void TestServerStore::storesAnUnconvertibleIdAsAddress_data()
{
    QTest::addColumn<QString>("id");
    QTest::newRow("host with underscore") << u"my_host.org_6667"_s;
    QTest::newRow("no underscore") << u"myhost"_s;
}

void TestServerStore::storesAnUnconvertibleIdAsAddress()
{
    QFETCH(const QString, id);
    ServerStore::saveConfig(id, ServerConfig(), ServerStore::AddressFallback::UseId);
    QCOMPARE(QSettings().value(u"servers/%1/address"_s.arg(id)), QVariant(id));
}

void TestServerStore::keepsTheAddressOfAnUnconvertibleId()
{
    const QString key = u"servers/my_host.org_6667/address"_s;
    ServerStore::saveConfig(u"my_host.org_6667"_s, ServerConfig(),
                            ServerStore::AddressFallback::KeepStored);
    QVERIFY(!QSettings().contains(key));
    QVERIFY(QSettings().contains(u"servers/my_host.org_6667/nickname"_s));

    QSettings().setValue(key, u"kept"_s);
    ServerStore::saveConfig(u"my_host.org_6667"_s, ServerConfig(),
                            ServerStore::AddressFallback::KeepStored);
    QCOMPARE(QSettings().value(key), QVariant(u"kept"_s));

    ServerStore::saveConfig(u"a.org_6667"_s, ServerConfig(),
                            ServerStore::AddressFallback::KeepStored);
    QCOMPARE(QSettings().value(u"servers/a.org_6667/address"_s), QVariant(u"a.org:6667"_s));
}

void TestServerStore::convertsHandWrittenValues()
{
    QSettings settings;
    settings.beginGroup(u"servers/a.org_6667"_s);
    settings.setValue(u"nickname"_s, 17);
    settings.setValue(u"realname"_s, QStringList{u"a"_s, u"b"_s});
    settings.setValue(u"authmethod"_s, u"Carrier pigeon"_s);
    settings.setValue(u"autojoin"_s, u"#only"_s);
    settings.setValue(u"encoding"_s, QVariant());
    settings.setValue(u"ssl"_s, u"perhaps"_s);
    settings.endGroup();
    const ServerConfig config = ServerStore::loadConfig(u"a.org_6667"_s);
    QCOMPARE(config.nickname, u"17"_s);
    QCOMPARE(config.realName, QString());
    QCOMPARE(config.authMethod, u"Carrier pigeon"_s);
    QCOMPARE(config.autojoin, QStringList{u"#only"_s});
    QCOMPARE(config.encoding, QString());
    QCOMPARE(config.useSsl, true);
}

void TestServerStore::loadsTheAutojoinChannels()
{
    QCOMPARE(ServerStore::loadAutojoin(u"a.org_6667"_s), QStringList());
    QSettings().setValue(u"servers/a.org_6667/autojoin"_s, QStringList{u"#a"_s, u"b"_s});
    QCOMPARE(ServerStore::loadAutojoin(u"a.org_6667"_s), (QStringList{u"#a"_s, u"b"_s}));
    QCOMPARE(ServerStore::loadAutojoin(u"a.org_6668"_s), QStringList());
}

void TestServerStore::removesOneGroupOnly()
{
    for (const QString &id : {u"a.org_666"_s, u"a.org_6667"_s, u"a.org_66"_s})
        ServerStore::saveConfig(id, ServerConfig(), ServerStore::AddressFallback::UseId);
    QSettings().setValue(u"servers/favorites"_s, QStringList{u"a.org_666"_s});
    ServerStore::removeGroup(u"a.org_666"_s);
    QSettings settings;
    settings.beginGroup(u"servers"_s);
    QCOMPARE(settings.childGroups(), (QStringList{u"a.org_66"_s, u"a.org_6667"_s}));
    QCOMPARE(settings.childKeys(), QStringList{u"favorites"_s});
}

void TestServerStore::storesSetsOfIds()
{
    QCOMPARE(ServerStore::loadIds(u"servers/favorites"_s), QSet<QString>());
    const QSet<QString> ids{u"a_1"_s, u"b_2"_s};
    ServerStore::saveIds(u"servers/favorites"_s, ids);
    QCOMPARE(ServerStore::loadIds(u"servers/favorites"_s), ids);
    ServerStore::saveIds(u"servers/favorites"_s, {});
    QCOMPARE(ServerStore::loadIds(u"servers/favorites"_s), QSet<QString>());
}

void TestServerStore::seedsOnlyMissingAddresses()
{
    QSettings settings;
    ServerStore::seedAddress(settings, u"a.org_6667"_s, u"a.org:6667"_s);
    ServerStore::seedAddress(settings, u"a.org_6667"_s, u"other:1"_s);
    QCOMPARE(settings.value(u"servers/a.org_6667/address"_s), QVariant(u"a.org:6667"_s));
}

void TestServerStore::derivesAMissingAddressFromTheId()
{
    QSettings settings;
    QCOMPARE(ServerStore::storedAddress(settings, u"my_host_6667"_s), u"my:host:6667"_s);
    settings.setValue(u"servers/my_host_6667/address"_s, u""_s);
    QCOMPARE(ServerStore::storedAddress(settings, u"my_host_6667"_s), u"my:host:6667"_s);
    settings.setValue(u"servers/my_host_6667/address"_s, u"my_host:6667"_s);
    QCOMPARE(ServerStore::storedAddress(settings, u"my_host_6667"_s), u"my_host:6667"_s);
}

void TestServerStore::listsDefaultAndCustomServers()
{
    QSettings().setValue(u"servers/customList"_s,
                         QStringList{u"own.org_1"_s, u"b.org_6667"_s, u"my_own_2"_s, u"c_3"_s});
    QSettings().setValue(u"servers/c_3/address"_s, u"kept"_s);
    const QStringList defaults{u"a.org:6667"_s, u"b.org:6667"_s, u"gone.org:6667"_s, u"odd"_s};
    QCOMPARE(ServerStore::seedAndListServers(defaults, {u"gone.org_6667"_s}),
             (QSet<QString>{u"a.org_6667"_s, u"b.org_6667"_s, u"own.org_1"_s, u"my_own_2"_s,
                            u"c_3"_s}));
    QSettings settings;
    settings.beginGroup(u"servers"_s);
    QCOMPARE(settings.childGroups(), (QStringList{u"a.org_6667"_s, u"b.org_6667"_s, u"c_3"_s,
                                                  u"my_own_2"_s, u"own.org_1"_s}));
    QCOMPARE(settings.value(u"a.org_6667/address"_s), QVariant(u"a.org:6667"_s));
    QCOMPARE(settings.value(u"own.org_1/address"_s), QVariant(u"own.org:1"_s));
    QCOMPARE(settings.value(u"my_own_2/address"_s), QVariant(u"my:own:2"_s));
    QCOMPARE(settings.value(u"c_3/address"_s), QVariant(u"kept"_s));
}

void TestServerStore::recognizesDefaultServers()
{
    const QStringList addresses = ServerCatalogue::addresses();
    for (const QString &address : addresses)
        QVERIFY2(ServerStore::isDefaultServer(*ServerStore::idOfAddress(address)),
                 qPrintable(address));
    QVERIFY(!ServerStore::isDefaultServer(u"irc.oftc.net_6697"_s));
    QVERIFY(!ServerStore::isDefaultServer(u"IRC.oftc.net_6667"_s));
    QVERIFY(!ServerStore::isDefaultServer(QString()));
}

void TestServerStore::storesTheIdsOfCustomServers()
{
    QSettings().setValue(u"servers/customList"_s, QStringList{u"gone.org_1"_s});
    QSettings().setValue(u"servers/own.org_2/address"_s, u"kept"_s);
    ServerStore::saveListedServers(
            {u"own.org:2"_s, u"irc.oftc.net:6667"_s, u"::1:6667"_s, u"odd"_s, u"a_b:3"_s});
    QSettings settings;
    QCOMPARE(settings.value(u"servers/customList"_s),
             QVariant(QStringList{u"own.org_2"_s, u"a_b_3"_s}));
    settings.beginGroup(u"servers"_s);
    QCOMPARE(settings.childGroups(),
             (QStringList{u"a_b_3"_s, u"irc.oftc.net_6667"_s, u"own.org_2"_s}));
    QCOMPARE(settings.value(u"own.org_2/address"_s), QVariant(u"kept"_s));
    QCOMPARE(settings.value(u"irc.oftc.net_6667/address"_s), QVariant(u"irc.oftc.net:6667"_s));
}

void TestServerStore::keepsTheLastTenAddresses()
{
    QCOMPARE(ServerStore::loadHistory(), QStringList());
    QStringList used;
    for (int port = 1; port <= 11; ++port) {
        used.append(u"a.org:%1"_s.arg(port));
        ServerStore::addToHistory(used.constLast());
    }
    QCOMPARE(ServerStore::loadHistory(), used.mid(1));
    ServerStore::addToHistory(used.at(5));
    used.move(5, used.size() - 1);
    QCOMPARE(ServerStore::loadHistory(), used.mid(1));
    QCOMPARE(QSettings().allKeys(), QStringList{u"connection/history"_s});
}

QTEST_GUILESS_MAIN(TestServerStore)
#include "tst_ServerStore.moc"
