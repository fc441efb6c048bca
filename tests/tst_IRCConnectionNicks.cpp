#include "TestSession.h"

#include <QRegularExpression>
#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

const QString Refusal = u":irc.test 433 * nick :Nickname is already in use"_s;
const QString Exhausted =
        uR"(errorOccurred("All nicknames are in use. Please choose a different nick."))"_s;

} // namespace

// The alternative nicks that a session requests.
class TestIRCConnectionNicks final : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void requestsEachAlternative_data();
    void requestsEachAlternative();
    void reportsAnErrorAfterTheLastNick();
    void emitsNickChangedForEachAlternative();
    void restartsWithEachConnection();
    void requestsAlternativesAfterRegistration();
    void acceptsANickFromTheServer();
    void reportsAnAlternativeWithoutAConnection();

private:
    [[nodiscard]] QStringList refuse(int times);

    std::unique_ptr<TestSession> session;
};

void TestIRCConnectionNicks::init()
{
    QTest::failOnWarning(QRegularExpression(u"."_s));
    session = std::make_unique<TestSession>();
}

// Refuses the nick `times` times and returns the nicks requested instead.
QStringList TestIRCConnectionNicks::refuse(int times)
{
    const QStringList before = session->sent();
    for (int i = 0; i < times; ++i)
        session->server.send(Refusal);
    return session->settle() ? session->sent().mid(before.size()) : QStringList{u"<lost>"_s};
}

void TestIRCConnectionNicks::requestsEachAlternative_data()
{
    QTest::addColumn<QString>("nick");
    QTest::addColumn<QString>("other");
    QTest::addColumn<int>("count"); // Number of alternatives.
    QTest::addColumn<QMap<int, QString>>("expected");

    const auto row = [](const char *name, const QString &nick, const QString &other, int count,
                        const QMap<int, QString> &expected) {
        QTest::newRow(name) << nick << other << count << expected;
    };
    const QString abc = u"abcdefghijklmnopqrstuvwxyz"_s;

    row("nick and alternative", u"alice"_s, u"bob"_s, 101,
        {{1, u"bob"_s},
         {2, u"alice_"_s},
         {3, u"alice_1"_s},
         {4, u"alice_2"_s},
         {11, u"alice_9"_s},
         {12, u"alice__10"_s},
         {13, u"alice__11"_s},
         {101, u"alice__99"_s}});
    row("no alternative", u"alice"_s, QString(), 100,
        {{1, u"alice_"_s}, {2, u"alice_1"_s}, {10, u"alice_9"_s}, {100, u"alice__99"_s}});
    row("alternative equals the nick", u"alice"_s, u"alice"_s, 100,
        {{1, u"alice_"_s}, {2, u"alice_1"_s}, {100, u"alice__99"_s}});
    row("alternative is the nick in upper case", u"alice"_s, u"ALICE"_s, 101,
        {{1, u"ALICE"_s}, {2, u"alice_"_s}, {101, u"alice__99"_s}});
    row("alternative is the first candidate", u"alice"_s, u"alice_"_s, 100,
        {{1, u"alice_"_s}, {2, u"alice_1"_s}, {100, u"alice__99"_s}});
    row("alternative is a later candidate", u"alice"_s, u"alice_1"_s, 100,
        {{1, u"alice_1"_s}, {2, u"alice_"_s}, {3, u"alice_2"_s}, {100, u"alice__99"_s}});
    row("alternative is a candidate in another case", u"alice"_s, u"Alice_"_s, 101,
        {{1, u"Alice_"_s}, {2, u"alice_"_s}});
    row("30 characters", abc + u"1234"_s, QString(), 100,
        {{1, abc + u"123_"_s},
         {2, abc + u"12_1"_s},
         {10, abc + u"12_9"_s},
         {11, u"abcdefghijklmnopqrstuvwxyz__10"_s},
         {100, u"abcdefghijklmnopqrstuvwxyz__99"_s}});
    row("29 characters", abc + u"123"_s, QString(), 100,
        {{1, abc + u"123_"_s}, {2, abc + u"12_1"_s}, {11, abc + u"__10"_s}});
    row("nick of 40 characters is not truncated", abc + u"12345678901234"_s,
        abc + u"5678901234567890"_s, 101,
        {{1, abc + u"5678901234567890"_s}, {2, abc + u"123_"_s}, {3, abc + u"12_1"_s}});
    row("empty nick", QString(), QString(), 100, {{1, u"_"_s}, {2, u"_1"_s}, {100, u"__99"_s}});
    row("first candidate is the nick", abc + u"____"_s, QString(), 99,
        {{1, abc + u"___1"_s}, {9, abc + u"___9"_s}, {10, abc + u"__10"_s}});
}

void TestIRCConnectionNicks::requestsEachAlternative()
{
    QFETCH(const QString, nick);
    QFETCH(const QString, other);
    QFETCH(const int, count);
    using Nicks = QMap<int, QString>;
    QFETCH(const Nicks, expected);

    ServerConfig config;
    config.altNickname = other;
    session->connection.setServerConfig(config);
    QVERIFY(session->open(nick));
    QCOMPARE(session->server.lines().constFirst(), QString(u"NICK "_s + nick));

    const QStringList requested = refuse(count);
    QCOMPARE(requested.size(), count);
    for (auto step = expected.cbegin(); step != expected.cend(); ++step)
        QCOMPARE(requested.at(step.key() - 1), QString(u"NICK "_s + step.value()));
    QCOMPARE(QSet<QString>(requested.cbegin(), requested.cend()).size(), count);
    for (const QString &line : requested.mid(1))
        QVERIFY2(line.size() <= 5 + 30, qPrintable(line));
    QVERIFY(!session->log.parsed().contains(Exhausted));
}

void TestIRCConnectionNicks::reportsAnErrorAfterTheLastNick()
{
    ServerConfig config;
    config.altNickname = u"bob"_s;
    session->connection.setServerConfig(config);
    QVERIFY(session->open(u"alice"_s));
    QCOMPARE(refuse(101).size(), 101);
    QVERIFY(!session->log.parsed().contains(Exhausted));

    session->log.clear();
    QVERIFY(refuse(1).isEmpty());
    QCOMPARE(session->log.parsed(), QStringList{Exhausted});
    QVERIFY(refuse(2).isEmpty());
    QCOMPARE(session->log.parsed(), (QStringList{Exhausted, Exhausted, Exhausted}));
    QVERIFY(session->connection.isConnected());
    QCOMPARE(session->connection.currentNick(), u"alice__99"_s);

    // The user can still change the nick.
    session->connection.changeNick(u"carol"_s);
    QCOMPARE(session->sent().constLast(), u"NICK carol"_s);
}

void TestIRCConnectionNicks::emitsNickChangedForEachAlternative()
{
    QVERIFY(session->open(u"alice"_s));
    QStringList seen;
    connect(&session->connection, &IRCConnection::nickChanged, this,
            [&] { seen.append(session->connection.currentNick()); });
    QCOMPARE(refuse(2), (QStringList{u"NICK alice_"_s, u"NICK alice_1"_s}));
    QCOMPARE(session->log.parsed(), (QStringList{uR"(nickChanged("alice", "alice_"))"_s,
                                                 uR"(nickChanged("alice_", "alice_1"))"_s}));
    QCOMPARE(seen, (QStringList{u"alice_"_s, u"alice_1"_s}));
}

void TestIRCConnectionNicks::restartsWithEachConnection()
{
    QVERIFY(session->open(u"alice"_s));
    QCOMPARE(refuse(2), (QStringList{u"NICK alice_"_s, u"NICK alice_1"_s}));
    session->server.close();
    QVERIFY(session->log.waitFor(u"disconnected()"_s));

    QVERIFY(session->open(u"carol"_s));
    QCOMPARE(session->connection.currentNick(), u"carol"_s);
    QCOMPARE(refuse(1), QStringList{u"NICK carol_"_s});
}

void TestIRCConnectionNicks::requestsAlternativesAfterRegistration()
{
    QVERIFY(session->open(u"alice"_s));
    session->server.send(u":s 001 alice :Welcome"_s);
    QVERIFY(session->settle());
    session->connection.changeNick(u"bob"_s);
    QCOMPARE(session->sent(), QStringList{u"NICK bob"_s});
    QCOMPARE(refuse(1), QStringList{u"NICK alice_"_s});
    // The nick last requested, although the server still has alice.
    QCOMPARE(session->connection.currentNick(), u"alice_"_s);
}

void TestIRCConnectionNicks::acceptsANickFromTheServer()
{
    QVERIFY(session->open(u"alice"_s));
    QCOMPARE(refuse(1), QStringList{u"NICK alice_"_s});
    session->server.send(u":alice_!b@c NICK carol"_s);
    QVERIFY(session->settle());
    QCOMPARE(session->connection.currentNick(), u"carol"_s);
    session->log.clear();
    QCOMPARE(refuse(1), QStringList{u"NICK alice_1"_s});
    QCOMPARE(session->log.parsed(), QStringList{uR"(nickChanged("carol", "alice_1"))"_s});
}

void TestIRCConnectionNicks::reportsAnAlternativeWithoutAConnection()
{
    QVERIFY(session->open(u"alice"_s));
    session->server.abort();
    QVERIFY(session->log.waitFor(u"disconnected()"_s));
    session->log.clear();
    session->connection.tryNextNick();
    QCOMPARE(session->log.entries(), (QStringList{uR"(errorOccurred("Socket is not connected"))"_s,
                                                  uR"(nickChanged("alice", "alice_"))"_s}));
}

QTEST_GUILESS_MAIN(TestIRCConnectionNicks)
#include "tst_IRCConnectionNicks.moc"
