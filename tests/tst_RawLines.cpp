#include "IRCConnection.h"
#include "TemporaryStore.h"
#include "Waiting.h"
#include "WindowSession.h"

#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;

class TestRawLines final : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();

    void selectsRawLines_data();
    void selectsRawLines();
    void hidesRawLinesDuringAListing();
    void hidesRawLinesAfterAnInterruptedListing();

private:
    std::unique_ptr<TemporaryStore> store;
};

void TestRawLines::initTestCase()
{
    store = std::make_unique<TemporaryStore>();
}

void TestRawLines::init()
{
    store->clear();
}

void TestRawLines::selectsRawLines_data()
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
    add("a server's notice with an exclamation mark", u":server NOTICE * :hello!"_s, {});
    add("an exclamation mark without a prefix", u"NOTICE * :hello!"_s, {u"<< NOTICE * :hello!"_s});
    add("a ping", u"PING :token"_s, {u"<< PING :token"_s});
    add("an error", u"ERROR :Closing link"_s, {u"<< ERROR :Closing link"_s});
    add("a server's mode", u":server MODE me +i"_s, {u"<< :server MODE me +i"_s});
    add("placeholders", u":server NOTICE * :%1 %2"_s, {u"<< :server NOTICE * :%1 %2"_s});
    add("an unhandled numeric", u":s 372 me :- hi"_s, {u":s 372 me :- hi"_s});
    add("a handled numeric", u":s 332 me #x :Topic"_s, {});
    add("a numeric without a prefix", u"372 me :hi"_s, {u"<< 372 me :hi"_s, u"372 me :hi"_s});
    add("four characters", u":a 1"_s, {u"<< :a 1"_s, u":a 1"_s});
    add("a numeric at the line's end", u":s 372"_s, {u"<< :s 372"_s, u":s 372"_s});
    add("a numeric and a space", u":s 372 "_s, {u":s 372"_s});
    add("an empty prefix", u": 372 me"_s, {u"<< : 372 me"_s, u": 372 me"_s});
    add("a prefix alone", u":server"_s, {u"<< :server"_s});
    add("digits and a letter", u":s 37x me"_s, {u"<< :s 37x me"_s, u":s 37x me"_s});
    add("a hexadecimal number", u":s 0x1 me"_s, {u"<< :s 0x1 me"_s, u":s 0x1 me"_s});
    add("a sign and two digits", u":s +12 me"_s, {});
    add("two spaces and two digits", u":s  12 me"_s, {});
    add("four digits", u":s 3723 me"_s, {u":s 3723 me"_s});
    add("a word of three letters", u":s FOO me"_s, {u"<< :s FOO me"_s});
}

void TestRawLines::selectsRawLines()
{
    QFETCH(const QString, line);
    QFETCH(const QStringList, shown);

    WindowSession session;
    QVERIFY(session.registerAs());
    const qsizetype before = session.probe.lines(u"Server"_s).size();
    QVERIFY(session.receive(line));
    QCOMPARE(session.probe.lines(u"Server"_s).mid(before), shown);
    QCOMPARE(session.probe.tabTexts(), QStringList{u"Server"_s});
}

void TestRawLines::hidesRawLinesDuringAListing()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    const qsizetype before = session.probe.lines(u"Server"_s).size();
    session.probe.listReceiving() = true;
    QVERIFY(session.receiveAll({u":server NOTICE * :hello"_s, u":s 372 me :- hi"_s}));
    QCOMPARE(session.probe.lines(u"Server"_s).mid(before), QStringList());
    emit session.probe.connection().errorOccurred(u"It broke"_s);
    QCOMPARE(session.probe.lines(u"Server"_s).mid(before), QStringList{u"*** Error: It broke"_s});

    session.probe.listReceiving() = false;
    QVERIFY(session.receiveAll({u":server NOTICE * :hello"_s, u":s 372 me :- hi"_s}));
    QCOMPARE(session.probe.lines(u"Server"_s).mid(before + 1),
             (QStringList{u"<< :server NOTICE * :hello"_s, u":s 372 me :- hi"_s}));
}

void TestRawLines::hidesRawLinesAfterAnInterruptedListing()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    session.probe.listReceiving() = true;
    session.server.close();
    QTRY_COMPARE_WITH_TIMEOUT(session.probe.lastLine(u"Server"_s), u"*** Disconnected."_s,
                              WaitTimeout);
    QVERIFY(session.probe.listReceiving());

    const qsizetype before = session.probe.lines(u"Server"_s).size();
    QVERIFY(session.registerAs());
    QVERIFY(session.receive(u":server NOTICE * :hello"_s));
    QCOMPARE(session.probe.lines(u"Server"_s).mid(before),
             QStringList{u"*** Connected to server."_s});
}

QTEST_MAIN(TestRawLines)
#include "tst_RawLines.moc"
