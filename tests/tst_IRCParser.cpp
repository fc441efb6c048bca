#include "IRCConnection.h"
#include "IRCParser.h"
#include "TestSession.h"

#include <QRandomGenerator>
#include <QRegularExpression>
#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;

class TestIRCParser final : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void parsesOneLine_data();
    void parsesOneLine();
    void sendsLines_data();
    void sendsLines();
    void reportsAnAnswerWithoutAConnection();

    void isRegisteredBeforeTheSignal();
    void countsTheChannelList();
    void resetsTheTotalsForEachChannelList();
    void clampsTotals();
    void requestsTheNextNickAfterEachRefusal();
    void updatesTheOwnNick();
    void sendsNamesAfterANickChange();
    void sendsNamesAfterTheJoinSignal();

    void acceptsRandomLines();

private:
    void parse(const QString &line);

    std::unique_ptr<TestSession> session;
};

void TestIRCParser::init()
{
    QTest::failOnWarning(QRegularExpression(u"."_s));
    session = std::make_unique<TestSession>();
}

void TestIRCParser::parse(const QString &line)
{
    IRCParser::parseLine(line, &session->connection);
}

void TestIRCParser::parsesOneLine_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QStringList>("calls");

    const QStringList nothing;
    const auto row = [](const char *name, const QString &line, const QStringList &calls) {
        QTest::newRow(name) << line << calls;
    };

    row("message to a channel", u":a!b@c PRIVMSG #x :hi there"_s,
        {uR"(privmsgReceived("a", "#x", "hi there"))"_s});
    row("message to the user", u":a!b@c PRIVMSG me :hi"_s,
        {uR"(privmsgReceived("a", "a", "hi"))"_s});
    row("message to a local channel is private", u":a!b@c PRIVMSG &x :hi"_s,
        {uR"(privmsgReceived("a", "a", "hi"))"_s});
    row("message to a channel status is private", u":a!b@c PRIVMSG @#x :hi"_s,
        {uR"(privmsgReceived("a", "a", "hi"))"_s});
    row("user's own message", u":me!b@c PRIVMSG #x :hi"_s,
        {uR"(privmsgReceived("me", "#x", "hi"))"_s});
    row("message with an empty text", u":a!b@c PRIVMSG #x :"_s, nothing);
    row("message without a text", u":a!b@c PRIVMSG #x"_s, nothing);
    row("message text as a middle parameter", u":a!b@c PRIVMSG #x hi"_s, nothing);
    row("message without a target", u":a!b@c PRIVMSG :hi"_s, nothing);
    row("message without parameters", u":a!b@c PRIVMSG"_s, nothing);
    row("message without a prefix", u"PRIVMSG #x :hi"_s, {uR"(privmsgReceived("", "#x", "hi"))"_s});
    row("message from a server", u":irc.test PRIVMSG me :hi"_s,
        {uR"(privmsgReceived("irc.test", "irc.test", "hi"))"_s});
    row("message loses trailing spaces", u":a!b@c PRIVMSG #x :hi "_s,
        {uR"(privmsgReceived("a", "#x", "hi"))"_s});
    row("message keeps inner spaces and colons", u":a!b@c PRIVMSG #x : a  :b: c"_s,
        {uR"(privmsgReceived("a", "#x", " a  :b: c"))"_s});
    row("message keeps CTCP marks", u":a!b@c PRIVMSG #x :\u0001ACTION waves\u0001"_s,
        {u"privmsgReceived(\"a\", \"#x\", \"\u0001ACTION waves\u0001\")"_s});
    row("message command in lower case", u":a!b@c privmsg #x :hi"_s,
        {uR"(privmsgReceived("a", "#x", "hi"))"_s});
    row("message with more middle parameters", u":a!b@c PRIVMSG #x y :hi"_s,
        {uR"(privmsgReceived("a", "#x", "hi"))"_s});
    row("message with two exclamation marks in the prefix", u":a!b!d@c PRIVMSG #x :hi"_s,
        {uR"(privmsgReceived("a", "#x", "hi"))"_s});
    row("message with a tab instead of a space", u":a!b@c\tPRIVMSG #x :hi"_s, nothing);

    row("join", u":a!b@c JOIN #x"_s, {uR"(joinReceived("a", "#x"))"_s});
    row("join in the trailing parameter", u":a!b@c JOIN :#x"_s, {uR"(joinReceived("a", ""))"_s});
    row("join without parameters", u":a!b@c JOIN"_s, {uR"(joinReceived("a", "JOIN"))"_s});
    row("join with account and name", u":a!b@c JOIN #x acc :Real"_s,
        {uR"(joinReceived("a", "#x"))"_s});

    row("part with a reason", u":a!b@c PART #x :so long"_s,
        {uR"(partReceived("a", "#x", "so long"))"_s});
    row("part without a reason", u":a!b@c PART #x"_s, {uR"(partReceived("a", "#x", ""))"_s});
    row("part in the trailing parameter", u":a!b@c PART :#x"_s,
        {uR"(partReceived("a", "", "#x"))"_s});
    row("part without parameters", u":a!b@c PART"_s, {uR"(partReceived("a", "PART", ""))"_s});

    row("quit with a reason", u":a!b@c QUIT :so long"_s, {uR"(quitReceived("a", "so long"))"_s});
    row("quit without parameters", u":a!b@c QUIT"_s, {uR"(quitReceived("a", ""))"_s});
    row("quit with a middle parameter", u":a!b@c QUIT bye"_s, {uR"(quitReceived("a", ""))"_s});

    row("kick", u":a!b@c KICK #x bob :out"_s, {uR"(kickReceived("#x", "bob", "a", "out"))"_s});
    row("kick without a reason", u":a!b@c KICK #x bob"_s,
        {uR"(kickReceived("#x", "bob", "a", ""))"_s});
    row("kick without a nick", u":a!b@c KICK #x"_s, {uR"(kickReceived("#x", "", "a", ""))"_s});
    row("kick by a server", u":irc.test KICK #x bob :out"_s,
        {uR"(kickReceived("#x", "bob", "irc.test", "out"))"_s});
    row("kick without parameters", u":a!b@c KICK"_s, {uR"(kickReceived("KICK", "", "a", ""))"_s});

    row("nick as a middle parameter", u":a!b@c NICK newnick"_s,
        {uR"(nickChanged("a", "newnick"))"_s});
    row("nick in the trailing parameter", u":a!b@c NICK :newnick"_s,
        {uR"(nickChanged("a", "newnick"))"_s});
    row("nick without parameters", u":a!b@c NICK"_s, {uR"(nickChanged("a", "NICK"))"_s});
    row("nick between spaces", u":a!b@c NICK :  foo  "_s, {uR"(nickChanged("a", "foo"))"_s});
    row("nick with two colons", u":a!b@c NICK ::foo"_s, {uR"(nickChanged("a", "foo"))"_s});
    row("nick with three colons", u":a!b@c NICK :::foo"_s, {uR"(nickChanged("a", ":foo"))"_s});
    row("empty nick", u":a!b@c NICK :"_s, {uR"(nickChanged("a", ""))"_s});
    row("trailing nick has precedence", u":a!b@c NICK foo :bar"_s,
        {uR"(nickChanged("a", "bar"))"_s});

    row("name list", u":s 353 me = #c :@x +y z"_s, {uR"(namesList("#c", [@x +y z]))"_s});
    row("name list with many spaces", u"  :a 353 me = #c :x y  z  "_s,
        {uR"(namesList("#c", [x y z]))"_s});
    row("empty name list", u":s 353 me = #c"_s, {uR"(namesList("#c", []))"_s});
    row("name list too short", u":s 353 me #c :x y"_s, nothing);
    row("names as middle parameters", u":s 353 me = #c x y"_s, {uR"(namesList("#c", []))"_s});
    row("end of names", u":s 366 me #c :End"_s, {uR"(namesListFinished("#c"))"_s});
    row("end of names without a channel", u":s 366 me"_s, {uR"(namesListFinished(""))"_s});

    row("list start", u":s 321 me Channel :Users  Name"_s, {u"listStartReceived()"_s});
    row("list row", u":s 322 me #c 17 :All about it"_s,
        {uR"(listChannelReceived("#c", "17", "All about it"))"_s});
    row("list row without a topic", u":s 322 me #c 17"_s,
        {uR"(listChannelReceived("#c", "17", ""))"_s});
    row("list row without a number", u":s 322 me #c notanumber :t"_s,
        {uR"(listChannelReceived("#c", "notanumber", "t"))"_s});
    row("list row too short", u":s 322 me #c :t"_s, nothing);
    row("list end", u":s 323 me :End"_s,
        {uR"(listInfoReceived("", 0, 0))"_s, u"listEndReceived()"_s});

    row("topic", u":s 332 me #c :All about it"_s, {uR"(topicReceived("#c", "All about it"))"_s});
    row("topic without parameters", u":s 332 me"_s, {uR"(topicReceived("", ""))"_s});
    row("topic as a middle parameter", u":s 332 me #c word"_s, {uR"(topicReceived("#c", ""))"_s});

    row("welcome", u":server 001 me :Welcome"_s,
        {uR"(serverMessage("Connected and registered."))"_s, u"registered()"_s});
    row("welcome without parameters", u"001"_s,
        {uR"(serverMessage("Connected and registered."))"_s, u"registered()"_s});

    row("whois user", u":s 311 me bob ident host * :Bob Real"_s,
        {uR"(whoisUserReceived("bob", "ident", "host", "Bob Real"))"_s});
    row("whois user too short", u":s 311 me bob ident host :Bob Real"_s, nothing);
    row("whois server with four parameters", u":s 312 me bob irc.test 2 :A server"_s,
        {uR"(whoisServerReceived("bob", "irc.test", "A server"))"_s});
    row("whois server as servers send it", u":s 312 me bob irc.test :A server"_s, nothing);
    row("whois operator", u":s 313 me bob :is an operator"_s,
        {uR"(whoisOperatorReceived("bob"))"_s});
    row("whois operator too short", u":s 313 me :is an operator"_s, nothing);
    row("whois idle", u":s 317 me bob 42 1700000000 :seconds idle, signon time"_s,
        {uR"(whoisIdleReceived("bob", 42, "seconds idle, signon time"))"_s});
    row("whois idle without a number", u":s 317 me bob long 1700000000 :since"_s,
        {uR"(whoisIdleReceived("bob", 0, "since"))"_s});
    row("whois idle overflow", u":s 317 me bob 99999999999 1 :since"_s,
        {uR"(whoisIdleReceived("bob", 0, "since"))"_s});
    row("whois idle too short", u":s 317 me bob 42 :seconds idle"_s, nothing);
    row("whois channels", u":s 319 me bob :@#a +#b #c"_s,
        {uR"(whoisChannelsReceived("bob", "@#a +#b #c"))"_s});
    row("whois channels too short", u":s 319 me :#a"_s, nothing);
    row("whois end", u":s 318 me bob :End"_s, {uR"(whoisEndReceived("bob", "bob"))"_s});
    row("whois end without a nick", u":s 318 me"_s, {uR"(whoisEndReceived("Server", ""))"_s});
    row("whois end without parameters", u":s 318"_s, {uR"(whoisEndReceived("Server", ""))"_s});
    row("away", u":s 301 me bob :gone fishing"_s,
        {uR"(whoisAwayReceived("bob", "gone fishing"))"_s});
    row("away too short", u":s 301 me :gone fishing"_s, nothing);

    for (const char *numeric : {"600", "601", "602", "604", "605", "606"}) {
        const QString word = QString::fromLatin1(numeric);
        QTest::addRow("watch %s online", numeric)
                << QString(u":s "_s + word + u" me bob ident host 1 :text"_s)
                << QStringList{uR"(watchStatus("bob", true))"_s};
        QTest::addRow("watch %s with a time", numeric)
                << QString(u":s "_s + word + u" me bob ident host 1700000000 :logged on"_s)
                << QStringList{uR"(watchStatus("bob", false))"_s};
        QTest::addRow("watch %s with 01", numeric)
                << QString(u":s "_s + word + u" me bob ident host 01 :text"_s)
                << QStringList{uR"(watchStatus("bob", false))"_s};
        QTest::addRow("watch %s too short", numeric)
                << QString(u":s "_s + word + u" me bob ident host :1"_s) << nothing;
    }
    row("numeric between the watch numerics", u":s 603 me bob ident host 1 :text"_s,
        {uR"(serverMessage(":s 603 me bob ident host 1 :text"))"_s});

    for (const char *numeric : {"002", "003", "004", "005", "333", "372", "375", "432", "599"}) {
        const QString line = u":s "_s + QString::fromLatin1(numeric) + u" me x :y"_s;
        QTest::addRow("numeric %s", numeric)
                << line << QStringList{QString(u"serverMessage(\""_s + line + u"\")"_s)};
    }
    row("numeric is passed on trimmed", u"  :s 372 me :- hi  "_s,
        {uR"(serverMessage(":s 372 me :- hi"))"_s});
    row("numeric without a prefix", u"372 me :- hi"_s, {uR"(serverMessage("372 me :- hi"))"_s});
    row("command that begins with a digit", u":s 3com x"_s, {uR"(serverMessage(":s 3com x"))"_s});
    row("numeric with four digits", u":s 0010 me"_s, {uR"(serverMessage(":s 0010 me"))"_s});

    row("notice", u":a!b@c NOTICE me :hello"_s, nothing);
    row("topic change", u":a!b@c TOPIC #x :new"_s, nothing);
    row("mode", u":a!b@c MODE #x +o bob"_s, nothing);
    row("invite", u":a!b@c INVITE me :#x"_s, nothing);
    row("error", u"ERROR :Closing link"_s, nothing);
    row("unknown command", u":a!b@c FROB x"_s, nothing);
    row("ping with a prefix", u":server PING :abc"_s, nothing);
    row("ping in lower case", u"ping :abc"_s, nothing);
    row("pong", u"PONG irc.test :abc"_s, nothing);
    row("command that begins with PONG", u"PONGNICK foo"_s, nothing);
    row("pong with a prefix", u":irc.test PONG irc.test :abc"_s, nothing);

    row("empty line", u""_s, nothing);
    row("white space", u"  \t "_s, nothing);
    row("colon alone", u":"_s, nothing);
    row("prefix alone", u":a!b@c"_s, nothing);
    row("prefix and spaces", u":a!b@c   "_s, nothing);
    row("empty prefix", u": QUIT :bye"_s, {uR"(quitReceived("", "bye"))"_s});
    row("two spaces before the command", u":a!b@c  QUIT :bye"_s, nothing);
    row("an empty parameter counts", u":s 353 me  #c :x"_s, {uR"(namesList("#c", [x]))"_s});
    row("a colon inside a parameter", u":s 332 me #a:b :t"_s, {uR"(topicReceived("#a:b", "t"))"_s});
}

void TestIRCParser::parsesOneLine()
{
    QFETCH(const QString, line);
    parse(line);
    QTEST(session->log.entries(), "calls");
}

void TestIRCParser::sendsLines_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QStringList>("answers");
    QTest::addColumn<QStringList>("calls");

    const QStringList nothing;
    QTest::newRow("ping") << u"PING :abc"_s << QStringList{u"PONG :abc"_s} << nothing;
    QTest::newRow("ping without a colon")
            << u"PING abc"_s << QStringList{u"PONG :abc"_s} << nothing;
    QTest::newRow("ping without parameters") << u"PING"_s << QStringList{u"PONG :"_s} << nothing;
    QTest::newRow("ping with spaces")
            << u"  PING   :a b  "_s << QStringList{u"PONG :a b"_s} << nothing;
    QTest::newRow("ping of two words")
            << u"PING one two"_s << QStringList{u"PONG :one two"_s} << nothing;
    QTest::newRow("ping with two colons")
            << u"PING ::abc"_s << QStringList{u"PONG ::abc"_s} << nothing;
    QTest::newRow("command that begins with PING")
            << u"PINGABLE x"_s << QStringList{u"PONG :BLE x"_s} << nothing;
    QTest::newRow("ping in lower case") << u"ping :abc"_s << nothing << nothing;
    QTest::newRow("ping with a prefix") << u":server PING :abc"_s << nothing << nothing;
    QTest::newRow("pong") << u"PONG :abc"_s << nothing << nothing;
    QTest::newRow("own join") << u":me!b@c JOIN #x"_s << QStringList{u"NAMES #x"_s}
                              << QStringList{uR"(joinReceived("me", "#x"))"_s};
    QTest::newRow("own join in the trailing parameter")
            << u":me!b@c JOIN :#x"_s << QStringList{u"NAMES "_s}
            << QStringList{uR"(joinReceived("me", ""))"_s};
    QTest::newRow("join of the same nick in another case")
            << u":Me!b@c JOIN #x"_s << nothing << QStringList{uR"(joinReceived("Me", "#x"))"_s};
    QTest::newRow("another user's join")
            << u":a!b@c JOIN #x"_s << nothing << QStringList{uR"(joinReceived("a", "#x"))"_s};
    QTest::newRow("nick without a prefix")
            << u"NICK foo"_s << nothing << QStringList{uR"(nickChanged("", "foo"))"_s};
    QTest::newRow("refused nick") << u":s 433 * me :in use"_s << QStringList{u"NICK me_"_s}
                                  << QStringList{uR"(nickChanged("me", "me_"))"_s};
}

void TestIRCParser::sendsLines()
{
    QFETCH(const QString, line);
    QVERIFY(session->open(u"me"_s));
    parse(line);
    QTEST(session->log.entries(), "calls");
    QTEST(session->sent(), "answers");
}

void TestIRCParser::reportsAnAnswerWithoutAConnection()
{
    parse(u"PING :abc"_s);
    QCOMPARE(session->log.entries(), QStringList{uR"(errorOccurred("Socket is not connected"))"_s});
}

void TestIRCParser::isRegisteredBeforeTheSignal()
{
    QList<bool> states;
    connect(&session->connection, &IRCConnection::serverMessage, this,
            [&] { states.append(session->connection.isRegistered()); });
    connect(&session->connection, &IRCConnection::registered, this,
            [&] { states.append(session->connection.isRegistered()); });
    parse(u":server 001 me :Welcome"_s);
    QCOMPARE(states, (QList<bool>{false, true}));
}

void TestIRCParser::countsTheChannelList()
{
    const QStringList lines{u":irc.test 321 me Channel :Users  Name"_s,
                            u":irc.test 322 me #a 7 :x"_s,
                            u":irc.test 322 me #b notanumber :y"_s,
                            u":irc.test 322 me #c 5"_s,
                            u":irc.test 322 me #short :z"_s,
                            u":irc.test 323 me :End"_s};
    for (const QString &line : lines)
        parse(line);
    QCOMPARE(session->log.entries().mid(4),
             (QStringList{uR"(listInfoReceived("irc.test", 3, 12))"_s, u"listEndReceived()"_s}));
    QCOMPARE(session->connection.getTotalListChannels(), 3);
    QCOMPARE(session->connection.getTotalListUsers(), 12);
    QCOMPARE(session->connection.getListServerName(), u"irc.test"_s);
}

void TestIRCParser::resetsTheTotalsForEachChannelList()
{
    parse(u":irc.test 321 me"_s);
    parse(u":irc.test 322 me #a 7 :x"_s);

    QList<int> totals;
    connect(&session->connection, &IRCConnection::listStartReceived, this, [&] {
        totals = {session->connection.getTotalListChannels(),
                  session->connection.getTotalListUsers()};
    });
    parse(u"321 me"_s);
    QCOMPARE(totals, (QList<int>{0, 0}));
    QCOMPARE(session->connection.getListServerName(), QString());

    // A row is counted before its signal.
    connect(&session->connection, &IRCConnection::listChannelReceived, this, [&] {
        totals = {session->connection.getTotalListChannels(),
                  session->connection.getTotalListUsers()};
    });
    parse(u":irc.test 322 me #a 7 :x"_s);
    QCOMPARE(totals, (QList<int>{1, 7}));
}

void TestIRCParser::clampsTotals()
{
    for (int i = 0; i < 3; ++i)
        parse(u":s 322 me #a 2147483647 :x"_s);
    QCOMPARE(session->connection.getTotalListChannels(), 3);
    QCOMPARE(session->connection.getTotalListUsers(), 2147483647);
}

void TestIRCParser::requestsTheNextNickAfterEachRefusal()
{
    QVERIFY(session->open(u"me"_s));
    parse(u":s 433 * me :in use"_s);
    parse(u":s 001 me_ :Welcome"_s);
    // The same after registration.
    parse(u":s 433 me_ bob :in use"_s);
    QCOMPARE(session->sent(), (QStringList{u"NICK me_"_s, u"NICK me_1"_s}));
    QCOMPARE(session->connection.currentNick(), u"me_1"_s);
}

void TestIRCParser::updatesTheOwnNick()
{
    QVERIFY(session->open(u"me"_s));
    parse(u":Me!b@c NICK other"_s);
    QCOMPARE(session->connection.currentNick(), u"me"_s);
    session->log.clear();
    parse(u":me!b@c NICK :you"_s);
    QCOMPARE(session->connection.currentNick(), u"you"_s);
    QCOMPARE(session->log.entries(),
             (QStringList{uR"(ownNickChanged("you"))"_s, uR"(nickChanged("me", "you"))"_s}));
}

void TestIRCParser::sendsNamesAfterTheJoinSignal()
{
    QVERIFY(session->open(u"me"_s));
    connect(&session->connection, &IRCConnection::joinReceived, this,
            [this] { session->connection.sendRaw(u"JOINED"_s); });
    parse(u":me!b@c JOIN #a"_s);
    QCOMPARE(session->sent(), (QStringList{u"JOINED"_s, u"NAMES #a"_s}));
}

void TestIRCParser::sendsNamesAfterANickChange()
{
    QVERIFY(session->open(u"me"_s));
    parse(u":me!b@c NICK you"_s);
    parse(u":me!b@c JOIN #old"_s);
    parse(u":you!b@c JOIN #new"_s);
    QCOMPARE(session->sent(), QStringList{u"NAMES #new"_s});
}

// Random lines of commands and parameters that the parser handles.
void TestIRCParser::acceptsRandomLines()
{
    const QStringList pieces{u" "_s,
                             u"  "_s,
                             u":"_s,
                             u"!"_s,
                             u"@"_s,
                             u"#x"_s,
                             u"JOIN"_s,
                             u"PART"_s,
                             u"NICK"_s,
                             u"001"_s,
                             u"353"_s,
                             u"322"_s,
                             u"433"_s,
                             u"317"_s,
                             u"318"_s,
                             u"600"_s,
                             u"KICK"_s,
                             u"\t"_s,
                             u"PING"_s,
                             u"PRIVMSG"_s,
                             u"\u0001"_s,
                             u"1"_s,
                             u"\uFFFD"_s,
                             u"\r"_s,
                             u"\n"_s,
                             u"ß"_s,
                             u"٣"_s,
                             u"-99"_s,
                             QString(1, QChar())};
    QRandomGenerator random(20240607);
    for (int i = 0; i < 20000; ++i) {
        QString line;
        const int length = random.bounded(12);
        for (int piece = 0; piece < length; ++piece)
            line += pieces.at(random.bounded(static_cast<int>(pieces.size())));
        parse(line);
    }
    session->log.clear();
    parse(u":a!b@c PRIVMSG #x :still here"_s);
    QCOMPARE(session->log.entries(), QStringList{uR"(privmsgReceived("a", "#x", "still here"))"_s});
}

QTEST_GUILESS_MAIN(TestIRCParser)
#include "tst_IRCParser.moc"
