#include "IRCConnection.h"
#include "InspIrcd.h"
#include "Interruptions.h"
#include "Ngircd.h"
#include "PlainClient.h"
#include "RecordedLines.h"
#include "RequiredTools.h"
#include "TemporaryStore.h"
#include "Waiting.h"
#include "WindowSession.h"

#include <QRegularExpression>
#include <QTest>

#include <utility>

using namespace Qt::StringLiterals;

namespace {

using WhoInfo = MainWindow::WhoInfo;

constexpr int Long = 10'000;

// A numeric as a server sends it.
QString numeric(const QString &number, const QString &rest)
{
    return u":irc.test %1 me %2"_s.arg(number, rest);
}

const auto User = numeric(u"311"_s, u"bob ident host.test * :Bob Real"_s);
// Real servers omit the hop count, as in the next line, which is ignored.
const auto ServerWithHops = numeric(u"312"_s, u"bob irc.far.test 2 :Far away"_s);
const auto Server = numeric(u"312"_s, u"bob irc.far.test :Far away"_s);
const auto Operator = numeric(u"313"_s, u"bob :is an IRC operator"_s);
const auto Idle = numeric(u"317"_s, u"bob 12 1795296169 :seconds idle, signon time"_s);
const auto Channels = numeric(u"319"_s, u"bob :@#a +#b #c"_s);
const auto Away = numeric(u"301"_s, u"bob :Gone fishing"_s);
const auto End = numeric(u"318"_s, u"bob :End of WHOIS list"_s);

// The lines of the tab that print a reply, without their empty sender.
QStringList printed(const WindowSession &session, const QString &tab = u"Server"_s)
{
    static const QRegularExpression reply(u"^\\|?\\*\\*\\* (WHOIS |(?!Connected |You ))"_s);
    QStringList lines = session.probe.lines(tab).filter(reply);
    if (tab != u"Server"_s)
        lines.replaceInStrings(QRegularExpression(u"^\\|"_s), QString());
    return lines;
}

// The fields of a record that differ from their defaults, in the record's order.
QStringList describe(const WhoInfo &record)
{
    const QString idle = record.idleSeconds == -1 ? QString() : QString::number(record.idleSeconds);
    const QList<std::pair<QString, QString>> all{
            {u"username"_s, record.username},
            {u"hostname"_s, record.hostname},
            {u"realName"_s, record.realName},
            {u"server"_s, record.server},
            {u"serverInfo"_s, record.serverInfo},
            {u"channels"_s, record.channels},
            {u"awayMessage"_s, record.awayMessage},
            {u"isOperator"_s, record.isOperator ? u"true"_s : QString()},
            {u"idleSeconds"_s, idle},
            {u"signonTime"_s, record.signonTime}};
    QStringList result;
    for (const auto &[name, value] : all) {
        if (!value.isEmpty())
            result.append(name + u'=' + value);
    }
    return result;
}

} // namespace

class TestWhois final : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void startsARecordWithItsDefaults();
    void collectsARecord_data();
    void collectsARecord();
    void keepsRecordsByExactNick();
    void restartsTheRecordWithTheUsersNumeric();
    void keepsItsRecordsWhenTheSessionEnds();

    void printsARecord_data();
    void printsARecord();
    void printsWithoutSenderAndInTheDefaultColour();
    void ignoresTheTabThatTheEndNames();

    void printsOnTheTabThatAsked();
    void printsTwiceOnTheSameTab();
    void printsAnUnrequestedReplyOnServer();
    void reopensTheTabThatAsked();
    void keepsAnAwayMessageUntilTheNextReply();
    void announcesAwayOnlyInConversations();

    void survivesOddNumerics_data();
    void survivesOddNumerics();
    void showsRepliesVerbatim_data();
    void showsRepliesVerbatim();

    void readsARecordedReply_data();
    void readsARecordedReply();
    void asksNgircd();
    void asksInspIrcd();

private:
    TemporaryStore store;
};

void TestWhois::init()
{
    store.clear();
}

void TestWhois::startsARecordWithItsDefaults()
{
    QCOMPARE(describe(WhoInfo()), QStringList());
    WhoInfo copy;
    copy = WhoInfo{u"u"_s, u"h"_s, u"r"_s, u"s"_s, u"i"_s, u"c"_s, u"a"_s, true, 5, u"t"_s};
    const WhoInfo moved = std::move(copy);
    QCOMPARE(describe(moved),
             (QStringList{u"username=u"_s, u"hostname=h"_s, u"realName=r"_s, u"server=s"_s,
                          u"serverInfo=i"_s, u"channels=c"_s, u"awayMessage=a"_s,
                          u"isOperator=true"_s, u"idleSeconds=5"_s, u"signonTime=t"_s}));
}

void TestWhois::collectsARecord_data()
{
    QTest::addColumn<QStringList>("lines");
    QTest::addColumn<QStringList>("record");

    const QStringList user{u"username=ident"_s, u"hostname=host.test"_s, u"realName=Bob Real"_s};
    const QStringList server{u"server=irc.far.test"_s, u"serverInfo=Far away"_s};
    const QStringList channels{u"channels=@#a +#b #c"_s};
    const QStringList away{u"awayMessage=Gone fishing"_s};
    const QStringList oper{u"isOperator=true"_s};
    const QStringList idle{u"idleSeconds=12"_s, u"signonTime=seconds idle, signon time"_s};

    QTest::newRow("user") << QStringList{User} << user;
    QTest::newRow("server") << QStringList{ServerWithHops} << server;
    QTest::newRow("operator") << QStringList{Operator} << oper;
    QTest::newRow("idle") << QStringList{Idle} << idle;
    QTest::newRow("channels") << QStringList{Channels} << channels;
    QTest::newRow("more channels") << QStringList{Channels, numeric(u"319"_s, u"bob :#d"_s)}
                                   << QStringList{u"channels=#d"_s};
    QTest::newRow("away") << QStringList{Away} << away;
    QTest::newRow("everything") << QStringList{User, ServerWithHops, Operator, Idle, Channels, Away}
                                << user + server + channels + away + oper + idle;
}

void TestWhois::collectsARecord()
{
    QFETCH(const QStringList, lines);
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.receiveAll(lines));
    QCOMPARE(session.probe.whoisResults().keys(), QStringList{u"bob"_s});
    QTEST(describe(session.probe.whoisResults().value(u"bob"_s)), "record");
    QCOMPARE(printed(session), QStringList());
}

void TestWhois::keepsRecordsByExactNick()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.receiveAll({User, numeric(u"313"_s, u"Bob :is an IRC operator"_s)}));
    QCOMPARE(session.probe.whoisResults().keys(), (QStringList{u"Bob"_s, u"bob"_s}));

    QVERIFY(session.receive(numeric(u"318"_s, u"Bob :End"_s)));
    QCOMPARE(printed(session),
             (QStringList{u"*** WHOIS Bob: @ ()"_s, u"*** Bob is an IRC operator"_s,
                          u"*** Bob is using  ()"_s}));
    QCOMPARE(session.probe.whoisResults().keys(), QStringList{u"bob"_s});
}

void TestWhois::restartsTheRecordWithTheUsersNumeric()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.receiveAll({ServerWithHops, Operator, Idle, Channels, Away, User, End}));
    QCOMPARE(printed(session), (QStringList{u"*** WHOIS bob: ident@host.test (Bob Real)"_s,
                                            u"*** bob is using  ()"_s}));
}

void TestWhois::keepsItsRecordsWhenTheSessionEnds()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.receiveAll({User, Operator}));
    QVERIFY(Interruptions::dropLink(session));
    QVERIFY(session.registerAs());
    QVERIFY(session.probe.whoisResults().value(u"bob"_s).isOperator);
    QVERIFY(session.receive(numeric(u"311"_s, u"bob other host * :Other"_s)));
    QVERIFY(!session.probe.whoisResults().value(u"bob"_s).isOperator);
    QCOMPARE(session.probe.whoisResults().value(u"bob"_s).username, u"other"_s);
}

void TestWhois::printsARecord_data()
{
    QTest::addColumn<QStringList>("lines"); // Without the end, which the test adds.
    QTest::addColumn<QStringList>("shown");

    const QString user = u"*** WHOIS bob: ident@host.test (Bob Real)"_s;
    const QString noUser = u"*** WHOIS bob: @ ()"_s;
    const QString server = u"*** bob is using irc.far.test (Far away)"_s;
    const QString noServer = u"*** bob is using  ()"_s;
    const QString idle = u"*** bob idle 12s, signed on seconds idle, signon time"_s;
    const QString channels = u"*** bob on channels: @#a +#b #c"_s;
    const QString away = u"*** bob is away: Gone fishing"_s;
    const QString oper = u"*** bob is an IRC operator"_s;

    QTest::newRow("nothing") << QStringList{} << QStringList{noUser, noServer};
    QTest::newRow("user") << QStringList{User} << QStringList{user, noServer};
    QTest::newRow("user and idle time")
            << QStringList{User, Idle} << QStringList{user, noServer, idle};
    QTest::newRow("everything, in any order")
            << QStringList{User, Away, Channels, Idle, ServerWithHops, Operator}
            << QStringList{user, oper, server, idle, channels, away};
    QTest::newRow("an ordinary server") << QStringList{User, Server} << QStringList{user, noServer};
    QTest::newRow("server alone") << QStringList{ServerWithHops} << QStringList{noUser, server};
    QTest::newRow("operator") << QStringList{Operator} << QStringList{noUser, oper, noServer};
    QTest::newRow("channels") << QStringList{Channels} << QStringList{noUser, noServer, channels};
    QTest::newRow("away") << QStringList{Away} << QStringList{noUser, noServer, away};
    QTest::newRow("idle for no time")
            << QStringList{numeric(u"317"_s, u"bob 0 1 :ago"_s)}
            << QStringList{noUser, noServer, u"*** bob idle 0s, signed on ago"_s};
    QTest::newRow("idle without text")
            << QStringList{numeric(u"317"_s, u"bob 7 1"_s)}
            << QStringList{noUser, noServer, u"*** bob idle 7s, signed on "_s};
    QTest::newRow("channels twice") << QStringList{Channels, numeric(u"319"_s, u"bob :#d"_s)}
                                    << QStringList{noUser, noServer, u"*** bob on channels: #d"_s};
    QTest::newRow("channels and then none") << QStringList{Channels, numeric(u"319"_s, u"bob :"_s)}
                                            << QStringList{noUser, noServer};
    QTest::newRow("no away text") << QStringList{numeric(u"301"_s, u"bob :"_s)}
                                  << QStringList{noUser, noServer};
}

void TestWhois::printsARecord()
{
    QFETCH(const QStringList, lines);
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.receiveAll(lines + QStringList{End}));
    QTEST(printed(session), "shown");
    QVERIFY(session.probe.whoisResults().isEmpty());
}

void TestWhois::printsWithoutSenderAndInTheDefaultColour()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, u"me bob"_s));
    session.probe.typeLine(u"/whois bob"_s);
    QVERIFY(session.receive(End));
    QCOMPARE(session.probe.lines(u"#a"_s).last(2),
             (QStringList{u"|*** WHOIS bob: @ ()"_s, u"|*** bob is using  ()"_s}));
    QVERIFY(!session.probe.lastTextColor(u"#a"_s).isValid());
}

void TestWhois::ignoresTheTabThatTheEndNames()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, u"me bob"_s));
    const QStringList before = session.probe.lines(u"#a"_s);
    emit session.probe.connection().whoisEndReceived(u"#a"_s, u"bob"_s);
    QCOMPARE(session.probe.lines(u"#a"_s), before);
    QCOMPARE(printed(session).size(), 2);
}

void TestWhois::printsOnTheTabThatAsked()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, u"me bob"_s));
    QVERIFY(session.join(u"#b"_s, u"me bob"_s));
    session.probe.showTab(u"#a"_s);
    session.discardSent();
    session.probe.typeLine(u"/whois bob"_s);
    QCOMPARE(session.readSent(), QStringList{u"WHOIS bob"_s});

    session.probe.showTab(u"#b"_s);
    QVERIFY(session.receiveAll({User, Idle, Channels, End}));
    QCOMPARE(printed(session, u"#a"_s),
             (QStringList{u"*** WHOIS bob: ident@host.test (Bob Real)"_s, u"*** bob is using  ()"_s,
                          u"*** bob idle 12s, signed on seconds idle, signon time"_s,
                          u"*** bob on channels: @#a +#b #c"_s}));
    QCOMPARE(printed(session, u"#b"_s), QStringList());
    QCOMPARE(printed(session), QStringList());
}

void TestWhois::printsTwiceOnTheSameTab()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, u"me bob"_s));
    session.probe.typeLine(u"/whois bob"_s);
    session.probe.showTab(u"Server"_s);
    QVERIFY(session.receiveAll({User, End, numeric(u"318"_s, u"carol :End"_s)}));
    QCOMPARE(printed(session, u"#a"_s),
             (QStringList{u"*** WHOIS bob: ident@host.test (Bob Real)"_s, u"*** bob is using  ()"_s,
                          u"*** WHOIS carol: @ ()"_s, u"*** carol is using  ()"_s}));
    QCOMPARE(printed(session), QStringList());
    QCOMPARE(session.probe.whoisTab(), u"#a"_s);
}

void TestWhois::printsAnUnrequestedReplyOnServer()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, u"me bob"_s));
    QVERIFY(session.receiveAll({User, End}));
    QCOMPARE(printed(session).size(), 2);
    QCOMPARE(printed(session, u"#a"_s), QStringList());
}

void TestWhois::reopensTheTabThatAsked()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, u"me bob"_s));
    session.probe.typeLine(u"/whois bob"_s);
    session.probe.closeTab(1);
    QCOMPARE(session.probe.tabTexts(), QStringList{u"Server"_s});
    QVERIFY(session.receiveAll({User, End}));
    QCOMPARE(session.probe.tabTexts(), (QStringList{u"Server"_s, u"#a"_s}));
    QCOMPARE(printed(session, u"#a"_s).size(), 2);
}

// Servers also send 301 after a message to a user who is away.
void TestWhois::keepsAnAwayMessageUntilTheNextReply()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    const QStringList before = session.probe.lines(u"Server"_s);
    QVERIFY(session.receive(Away));
    QCOMPARE(session.probe.lines(u"Server"_s), before);
    QCOMPARE(session.probe.tabTexts(), QStringList{u"Server"_s});
    QCOMPARE(session.probe.whoisResults().value(u"bob"_s).awayMessage, u"Gone fishing"_s);

    QVERIFY(session.receiveAll({User, End}));
    QCOMPARE(printed(session), (QStringList{u"*** WHOIS bob: ident@host.test (Bob Real)"_s,
                                            u"*** bob is using  ()"_s}));
}

void TestWhois::announcesAwayOnlyInConversations()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    session.probe.typeLine(u"/away lunch"_s);
    QVERIFY(session.settle());
    QCOMPARE(session.probe.tabTexts(), QStringList{u"Server"_s});
    QCOMPARE(session.probe.lines(u"Server"_s).filter(u"is away"_s), QStringList());
    QCOMPARE(session.probe.lastLine(u"Server"_s), u"*** You are marked as away (lunch)"_s);
}

void TestWhois::survivesOddNumerics_data()
{
    QTest::addColumn<QStringList>("lines");
    QTest::addColumn<QStringList>("shown");

    const auto row = [](const char *name, const QStringList &lines, const QStringList &shown) {
        QTest::newRow(name) << lines << shown;
    };
    const QStringList empty{u"*** WHOIS bob: @ ()"_s, u"*** bob is using  ()"_s};
    const auto idle = [&empty](const QString &seconds) {
        return empty + QStringList{u"*** bob idle %1s, signed on ago"_s.arg(seconds)};
    };
    row("an end of nobody", {u":irc.test 318 me"_s},
        {u"*** WHOIS : @ ()"_s, u"***  is using  ()"_s});
    row("an end with a trailing nick", {u":irc.test 318 me :bob"_s},
        {u"*** WHOIS : @ ()"_s, u"***  is using  ()"_s});
    row("no end", {User, Idle}, {});
    row("user too short", {numeric(u"311"_s, u"bob ident host :Bob Real"_s), End}, empty);
    row("idle too short", {numeric(u"317"_s, u"bob 12 :ago"_s), End}, empty);
    row("operator without nick", {u":irc.test 313 me :is an IRC operator"_s, End}, empty);
    row("channels without nick", {u":irc.test 319 me :#a"_s, End}, empty);
    row("away without nick", {u":irc.test 301 me :Gone"_s, End}, empty);
    row("idle below zero", {numeric(u"317"_s, u"bob -5 1 :ago"_s), End}, empty);
    row("idle at its greatest", {numeric(u"317"_s, u"bob 2147483647 1 :ago"_s), End},
        idle(u"2147483647"_s));
    row("idle beyond it", {numeric(u"317"_s, u"bob 2147483648 1 :ago"_s), End}, idle(u"0"_s));
    row("idle far beyond", {numeric(u"317"_s, u"bob 99999999999999999999 1 :ago"_s), End},
        idle(u"0"_s));
    row("idle without a number", {numeric(u"317"_s, u"bob soon 1 :ago"_s), End}, idle(u"0"_s));
    row("idle with a fraction", {numeric(u"317"_s, u"bob 1.5 1 :ago"_s), End}, idle(u"0"_s));
    row("idle in hexadecimals", {numeric(u"317"_s, u"bob 0x10 1 :ago"_s), End}, idle(u"0"_s));
    row("ends twice", {End, End}, empty + empty);
}

void TestWhois::survivesOddNumerics()
{
    QFETCH(const QStringList, lines);
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.receiveAll(lines));
    QTEST(printed(session), "shown");
}

void TestWhois::showsRepliesVerbatim_data()
{
    QTest::addColumn<QString>("nick");
    QTest::addColumn<QString>("text");

    QTest::newRow("long") << QString(Long, u'n') << QString(Long, u'x');
    QTest::newRow("markup") << u"<b>bob</b>"_s << u"<img src=\"x\"> <b>&amp;</b> <script>"_s;
    QTest::newRow("placeholders") << u"%2%1"_s << u"%1 %2 %3 %4 %99 %L1"_s;
    QTest::newRow("control characters")
            << u"b\u0002o\u000304b"_s << u"\u0001ACTION \u0002bold\u000f \u001b[31m \u0007\u0001"_s;
    QTest::newRow("right to left") << u"\u202Ebob\u202C"_s << u"\u05D0\u05D1 \u202Egnp.exe\u2066"_s;
    QTest::newRow("outside the BMP") << u"\U0001F642"_s << u"\U0001F469\u200D\U0001F4BB"_s;
}

void TestWhois::showsRepliesVerbatim()
{
    QFETCH(const QString, nick);
    QFETCH(const QString, text);

    WindowSession session;
    QVERIFY(session.registerAs());
    const QString thrice = nick + u' ' + nick + u' ' + nick;
    QVERIFY(session.receiveAll({numeric(u"311"_s, QString(thrice + u" * :"_s + text)),
                                numeric(u"319"_s, QString(nick + u" :"_s + text)),
                                numeric(u"301"_s, QString(nick + u" :"_s + text)),
                                numeric(u"317"_s, QString(nick + u" 1 1 :"_s + text)),
                                numeric(u"318"_s, nick)}));
    QCOMPARE(printed(session), (QStringList{u"*** WHOIS "_s + nick + u": "_s + nick + u'@' + nick
                                                    + u" ("_s + text + u')',
                                            u"*** "_s + nick + u" is using  ()"_s,
                                            u"*** "_s + nick + u" idle 1s, signed on "_s + text,
                                            u"*** "_s + nick + u" on channels: "_s + text,
                                            u"*** "_s + nick + u" is away: "_s + text}));
}

void TestWhois::readsARecordedReply_data()
{
    QTest::addColumn<QStringList>("shown");

    QTest::newRow("ngircd-whois.txt")
            << QStringList{u"*** WHOIS bob: ~bob@127.0.0.1 (Bob Real)"_s, u"*** bob is using  ()"_s,
                           u"*** bob idle 0s, signed on seconds idle, signon time"_s,
                           u"*** bob on channels: @#velmora"_s};
    QTest::newRow("ngircd-whois-away.txt")
            << QStringList{u"*** WHOIS bob: ~bob@127.0.0.1 (Bob Real)"_s, u"*** bob is using  ()"_s,
                           u"*** bob idle 0s, signed on seconds idle, signon time"_s,
                           u"*** bob on channels: @#velmora"_s, u"*** bob is away: Gone fishing"_s};
    QTest::newRow("inspircd-whois.txt")
            << QStringList{u"*** WHOIS bob: bob@127.0.0.1 (Bob Real)"_s,
                           u"*** bob is an IRC operator"_s,
                           u"*** bob is using  ()"_s,
                           u"*** bob idle 7s, signed on seconds idle, signon time"_s,
                           u"*** bob on channels: @#velmora"_s,
                           u"*** bob is away: Gone fishing"_s};
    QTest::newRow("inspircd-whois-nobody.txt")
            << QStringList{u"*** WHOIS ghost: @ ()"_s, u"*** ghost is using  ()"_s};
}

void TestWhois::readsARecordedReply()
{
    const QStringList lines = recordedLines(QString::fromUtf8(QTest::currentDataTag()));
    QVERIFY(!lines.isEmpty());
    WindowSession session;
    QVERIFY(session.registerAs(u"alice"_s));
    QVERIFY(session.receiveAll(lines));
    QTEST(printed(session), "shown");
    // Unhandled numerics are shown raw.
    const QStringList raw = session.probe.lines(u"Server"_s).filter(u":irc.velmora.test"_s);
    QCOMPARE(raw, lines.filter(u" 401 "_s));
}

void TestWhois::asksNgircd()
{
    REQUIRE_TOOLS(u"ngircd"_s);
    Ngircd server;
    QVERIFY(server.start());
    PlainClient bob;
    QVERIFY(bob.registerAt(server.port(), u"bob"_s));
    bob.send(u"JOIN #room"_s);
    bob.send(u"AWAY :Gone fishing"_s);
    QVERIFY(bob.waitFor(u" 306 bob "_s));

    WindowSession session;
    QVERIFY(session.registerAt(server.port(), u"alice"_s));
    session.probe.openTabs({u"#here"_s});
    session.probe.typeLine(u"/whois bob"_s);
    QTRY_COMPARE_WITH_TIMEOUT(printed(session, u"#here"_s).size(), 5, WaitTimeout);
    QStringList lines = printed(session, u"#here"_s);
    QVERIFY(QRegularExpression(u"^\\*\\*\\* bob idle \\d+s, signed on seconds idle, signon time$"_s)
                    .match(lines.takeAt(2))
                    .hasMatch());
    QCOMPARE(lines, (QStringList{u"*** WHOIS bob: ~bob@127.0.0.1 (A plain client)"_s,
                                 u"*** bob is using  ()"_s, u"*** bob on channels: @#room"_s,
                                 u"*** bob is away: Gone fishing"_s}));

    session.probe.typeLine(u"/whois nosuch"_s);
    QTRY_COMPARE_WITH_TIMEOUT(printed(session, u"#here"_s).size(), 7, WaitTimeout);
    QCOMPARE(printed(session, u"#here"_s).last(2),
             (QStringList{u"*** WHOIS nosuch: @ ()"_s, u"*** nosuch is using  ()"_s}));
    QVERIFY(session.probe.lastLine(u"Server"_s).contains(u" 401 alice nosuch :"_s));
}

void TestWhois::asksInspIrcd()
{
    REQUIRE_TOOLS(u"inspircd"_s);
    InspIrcd server;
    QVERIFY(server.start());
    PlainClient bob;
    QVERIFY(bob.registerAt(server.port(), u"bob"_s));
    bob.send(u"OPER boss sesame"_s);
    QVERIFY(bob.waitFor(u" 381 bob "_s));

    WindowSession session;
    QVERIFY(session.registerAt(server.port(), u"alice"_s));
    session.probe.openTabs({u"#here"_s});
    session.probe.typeLine(u"/whois bob"_s);
    QTRY_COMPARE_WITH_TIMEOUT(printed(session, u"#here"_s).size(), 4, WaitTimeout);
    QCOMPARE(printed(session, u"#here"_s).first(3),
             (QStringList{u"*** WHOIS bob: bob@127.0.0.1 (A plain client)"_s,
                          u"*** bob is an IRC operator"_s, u"*** bob is using  ()"_s}));
}

QTEST_MAIN(TestWhois)
#include "tst_Whois.moc"
