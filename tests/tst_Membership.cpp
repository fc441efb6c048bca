#include "IRCConnection.h"
#include "MyTabWidget.h"
#include "TemporaryStore.h"
#include "WindowSession.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace {

const QColor Grey(136, 136, 136);

} // namespace

class TestMembership final : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void showsMessagesInTheirTab_data();
    void showsMessagesInTheirTab();
    void comparesTheTargetExactly();
    void showsEvents_data();
    void showsEvents();

    void opensATabOnTheFirstJoin();
    void reusesTheTabOnAnotherJoin();
    void addsAJoiningUser_data();
    void addsAJoiningUser();
    void addsAJoiningUserToABackgroundChannel();
    void opensATabOnAnotherUsersJoin();
    void listsJoinsInOrderOfArrival();
    void sortsByTextOnAJoin();
    void handlesANetSplit();
    void showsAReturnInThePrivateTab();
    void showsNoReturnOfTheOwnNick();

    void removesAPartingUser_data();
    void removesAPartingUser();
    void ignoresTheOwnPartOfAClosedTab();
    void keepsTheTabOnTheOwnPart();
    void opensATabOnAnUnknownUsersPart();

    void removesAQuittingUserEverywhere();
    void reopensAClosedTabOnAQuit();

    void removesAKickedUser();
    void forgetsTheChannelWhenKicked();
    void keepsTheVisibleListWhenKickedFromAnotherChannel();
    void fillsTheChannelAgainAfterAKick();

private:
    TemporaryStore store;
};

void TestMembership::init()
{
    store.clear();
}

void TestMembership::showsMessagesInTheirTab_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("tab");
    QTest::addColumn<QString>("shown");

    const auto add = [](const char *name, const QString &line, const QString &tab,
                        const QString &shown) { QTest::newRow(name) << line << tab << shown; };
    add("to a channel", u":bob!u@h PRIVMSG #a :hi"_s, u"#a"_s, u"bob|hi"_s);
    add("to the user", u":bob!u@h PRIVMSG me :hi"_s, u"bob"_s, u"bob|hi"_s);
    add("to an unknown channel", u":bob!u@h PRIVMSG #new :hi"_s, u"#new"_s, u"bob|hi"_s);
    add("to a channel in another case", u":bob!u@h PRIVMSG #A :hi"_s, u"#A"_s, u"bob|hi"_s);
    add("by the user", u":me!u@h PRIVMSG me :hi"_s, u"me"_s, u"me|hi"_s);
    add("placeholders", u":%2!u@h PRIVMSG #a :%1 %2"_s, u"#a"_s, u"%2|%1 %2"_s);
}

void TestMembership::showsMessagesInTheirTab()
{
    QFETCH(const QString, line);
    QFETCH(const QString, tab);
    QFETCH(const QString, shown);

    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, u"me bob"_s));
    QVERIFY(session.receive(line));
    QCOMPARE(session.probe.lastLine(tab), shown);
    QVERIFY(!session.probe.lastTextColor(tab).isValid());
    QCOMPARE(session.probe.users(), (QStringList{u"bob"_s, u"me"_s}));
}

// IRCConnection reports a private message with its sender as the target, so the test emits the
// signal.
void TestMembership::comparesTheTargetExactly()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    emit session.probe.connection().privmsgReceived(u"bob"_s, u"me"_s, u"one"_s);
    emit session.probe.connection().privmsgReceived(u"bob"_s, u"ME"_s, u"two"_s);
    QCOMPARE(session.probe.tabTexts(), (QStringList{u"Server"_s, u"bob"_s, u"ME"_s}));
    QCOMPARE(session.probe.lines(u"bob"_s), QStringList{u"bob|one"_s});
    QCOMPARE(session.probe.lines(u"ME"_s), QStringList{u"bob|two"_s});
}

void TestMembership::showsEvents_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("inChannel");
    QTest::addColumn<QString>("inPrivate");

    const auto add = [](const char *name, const QString &line, const QString &inChannel,
                        const QString &inPrivate) {
        QTest::newRow(name) << line << inChannel << inPrivate;
    };
    add("join", u":Bob!u@h JOIN #a"_s, u"Bob|joined #a"_s, u"bob|is back online"_s);
    add("part", u":bob!u@h PART #a :bye now"_s, u"bob|left #a (bye now)"_s, {});
    add("part without reason", u":bob!u@h PART #a"_s, u"bob|left #a ()"_s, {});
    add("part with placeholders", u":bob!u@h PART #a :%1 %2"_s, u"bob|left #a (%1 %2)"_s, {});
    add("quit", u":bob!u@h QUIT :gone"_s, u"bob|quit (gone)"_s, u"bob|quit (gone)"_s);
    add("quit without reason", u":bob!u@h QUIT"_s, u"bob|quit ()"_s, u"bob|quit ()"_s);
    add("quit with placeholders", u":bob!u@h QUIT :%1"_s, u"bob|quit (%1)"_s, u"bob|quit (%1)"_s);
    add("kick", u":alice!u@h KICK #a bob :be good"_s, u"bob|was kicked by alice (be good)"_s, {});
    add("kick without reason", u":alice!u@h KICK #a bob"_s, u"bob|was kicked by alice ()"_s, {});
    add("kick with placeholders", u":%2!u@h KICK #a bob :%1"_s, u"bob|was kicked by %2 (%1)"_s, {});
    add("kick of an unknown nick", u":alice!u@h KICK #a eve :x"_s, u"eve|was kicked by alice (x)"_s,
        {});
    add("nick", u":bob!u@h NICK rob"_s, u"bob|is now known as rob"_s, u"bob|is now known as rob"_s);
    add("nick with placeholders", u":bob!u@h NICK %1"_s, u"bob|is now known as %1"_s,
        u"bob|is now known as %1"_s);
}

void TestMembership::showsEvents()
{
    QFETCH(const QString, line);
    QFETCH(const QString, inChannel);
    QFETCH(const QString, inPrivate);

    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, u"me bob"_s));
    QVERIFY(session.receive(u":bob!u@h PRIVMSG me :hi"_s));
    const QStringList channelLines = session.probe.lines(u"#a"_s);
    const QStringList serverLines = session.probe.lines(u"Server"_s);
    QVERIFY(session.receive(line));

    QCOMPARE(session.probe.lines(u"#a"_s), channelLines + QStringList{inChannel});
    QCOMPARE(session.probe.lastTextColor(u"#a"_s), Grey);
    const QString privateTab = session.probe.tabTexts().at(2);
    QStringList privateLines{u"bob|hi"_s};
    if (!inPrivate.isEmpty())
        privateLines.append(inPrivate);
    QCOMPARE(session.probe.lines(privateTab), privateLines);
    QCOMPARE(session.probe.lastTextColor(privateTab), inPrivate.isEmpty() ? QColor() : Grey);
    QCOMPARE(session.probe.lines(u"Server"_s), serverLines);
    QCOMPARE(session.probe.tabTexts().size(), 3);
}

void TestMembership::opensATabOnTheFirstJoin()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.receive(u":me!u@h JOIN #a"_s));
    QCOMPARE(session.probe.tabTexts(), (QStringList{u"Server"_s, u"#a"_s}));
    QCOMPARE(session.probe.currentTabName(), u"#a"_s);
    QCOMPARE(session.probe.lines(u"#a"_s), QStringList{u"me|joined #a"_s});
    QCOMPARE(session.readSent(), QStringList{u"NAMES #a"_s});
    QVERIFY(!session.probe.channelUsers().contains(u"#a"_s));
    QCOMPARE(session.probe.users(), QStringList());
}

void TestMembership::reusesTheTabOnAnotherJoin()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, u"me alice"_s));
    session.probe.showTab(u"Server"_s);
    QVERIFY(session.receive(u":me!u@h JOIN #a"_s));
    QCOMPARE(session.probe.tabTexts(), (QStringList{u"Server"_s, u"#a"_s}));
    QCOMPARE(session.probe.currentTabName(), u"Server"_s);
    QCOMPARE(session.probe.lines(u"#a"_s), (QStringList{u"me|joined #a"_s, u"me|joined #a"_s}));
    QCOMPARE(session.probe.channelUsers().value(u"#a"_s), (QStringList{u"alice"_s, u"me"_s}));
}

void TestMembership::addsAJoiningUser_data()
{
    QTest::addColumn<QString>("names");
    QTest::addColumn<QString>("nick");
    QTest::addColumn<QStringList>("model");
    QTest::addColumn<QStringList>("visible");

    const auto add = [](const char *name, const QString &names, const QString &nick,
                        const QStringList &model, const QStringList &visible) {
        QTest::newRow(name) << names << nick << model << visible;
    };
    add("new", u"me zoe"_s, u"Bob"_s, {u"Bob"_s, u"me"_s, u"zoe"_s}, {u"me"_s, u"zoe"_s, u"Bob"_s});
    add("known", u"me bob"_s, u"bob"_s, {u"bob"_s, u"me"_s}, {u"bob"_s, u"me"_s});
    add("known in another case", u"me BOB"_s, u"bob"_s, {u"BOB"_s, u"me"_s}, {u"BOB"_s, u"me"_s});
    add("known with a rank", u"me @bob"_s, u"bob"_s, {u"@bob"_s, u"bob"_s, u"me"_s},
        {u"@bob"_s, u"me"_s, u"bob"_s});
    add("a longer nick in another case", u"me"_s, u"ME2"_s, {u"me"_s, u"ME2"_s},
        {u"me"_s, u"ME2"_s});
    add("every rank", u"~e &d @c %b +a zz"_s, u"mm"_s,
        {u"%b"_s, u"&d"_s, u"+a"_s, u"@c"_s, u"mm"_s, u"zz"_s, u"~e"_s},
        {u"~e"_s, u"&d"_s, u"@c"_s, u"%b"_s, u"+a"_s, u"zz"_s, u"mm"_s});
}

void TestMembership::addsAJoiningUser()
{
    QFETCH(const QString, names);
    QFETCH(const QString, nick);
    QFETCH(const QStringList, model);
    QFETCH(const QStringList, visible);

    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, names));
    QVERIFY(session.receive(u":%1!u@h JOIN #a"_s.arg(nick)));
    QCOMPARE(session.probe.channelUsers().value(u"#a"_s), model);
    QCOMPARE(session.probe.users(), visible);
    QCOMPARE(session.probe.lastLine(u"#a"_s), QString(nick + u"|joined #a"_s));
}

void TestMembership::addsAJoiningUserToABackgroundChannel()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, u"me alice"_s));
    QVERIFY(session.join(u"#b"_s, u"me zoe"_s));
    QCOMPARE(session.probe.currentTabName(), u"#a"_s);
    QVERIFY(session.receive(u":bob!u@h JOIN #b"_s));
    QCOMPARE(session.probe.users(), (QStringList{u"alice"_s, u"me"_s}));
    QCOMPARE(session.probe.channelUsers().value(u"#b"_s),
             (QStringList{u"bob"_s, u"me"_s, u"zoe"_s}));
    // The own nick is compared case-sensitively.
    QVERIFY(session.receive(u":ME!u@h JOIN #c"_s));
    QCOMPARE(session.probe.channelUsers().value(u"#c"_s), QStringList{u"ME"_s});
}

void TestMembership::opensATabOnAnotherUsersJoin()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.receive(u":bob!u@h JOIN #new"_s));
    QCOMPARE(session.probe.tabTexts(), (QStringList{u"Server"_s, u"#new"_s}));
    QCOMPARE(session.probe.channelUsers().value(u"#new"_s), QStringList{u"bob"_s});
    QCOMPARE(session.probe.users(), QStringList{u"bob"_s});
    QCOMPARE(session.readSent(), QStringList());
}

void TestMembership::listsJoinsInOrderOfArrival()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, u"@op me"_s));
    QVERIFY(session.receiveAll({u":zoe!u@h JOIN #a"_s, u":adam!u@h JOIN #a"_s}));
    QCOMPARE(session.probe.users(), (QStringList{u"@op"_s, u"me"_s, u"zoe"_s, u"adam"_s}));
    session.probe.showTab(u"Server"_s);
    QCOMPARE(session.probe.users(), QStringList());
    session.probe.showTab(u"#a"_s);
    QCOMPARE(session.probe.users(), (QStringList{u"@op"_s, u"adam"_s, u"me"_s, u"zoe"_s}));
}

void TestMembership::sortsByTextOnAJoin()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, u"me @op ~owner"_s));
    QCOMPARE(session.probe.channelUsers().value(u"#a"_s),
             (QStringList{u"~owner"_s, u"@op"_s, u"me"_s}));
    QVERIFY(session.receive(u":zoe!u@h JOIN #a"_s));
    QCOMPARE(session.probe.channelUsers().value(u"#a"_s),
             (QStringList{u"@op"_s, u"me"_s, u"zoe"_s, u"~owner"_s}));
}

void TestMembership::handlesANetSplit()
{
    constexpr int Users = 5000;
    const auto nick = [](int number) { return u"u%1"_s.arg(number, 4, 10, QChar(u'0')); };
    const auto isSplit = [](int number) { return number % 5 == 0; };
    QStringList operators;
    QStringList others{u"me"_s};
    QStringList names = others;
    for (int number = 0; number < Users; ++number) {
        const QString entry = number % 3 == 0 ? QString(u'@' + nick(number)) : nick(number);
        names.append(entry);
        if (!isSplit(number))
            (number % 3 == 0 ? operators : others).append(entry);
    }
    QStringList quits;
    QStringList joins;
    QStringList returning;
    for (int number = Users - 1; number >= 0; --number) {
        if (!isSplit(number))
            continue;
        quits.append(u":%1!u@h QUIT :*.net *.split"_s.arg(nick(number)));
        joins.append(u":%1!u@h JOIN #a"_s.arg(nick(number)));
        returning.append(nick(number));
    }
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, names.join(u' ')));

    QVERIFY(session.receiveAll(quits));
    QCOMPARE(session.probe.channelUsers().value(u"#a"_s), operators + others);
    QCOMPARE(session.probe.users(), operators + others);
    // They return without ranks: at the end of the visible list, sorted by nick in the channel's.
    QVERIFY(session.receiveAll(joins));
    QCOMPARE(session.probe.users(), operators + others + returning);
    QStringList everybody = others + returning;
    everybody.sort(Qt::CaseInsensitive);
    QCOMPARE(session.probe.channelUsers().value(u"#a"_s), operators + everybody);
}

void TestMembership::showsAReturnInThePrivateTab()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, u"me @bob"_s));
    QVERIFY(session.receive(u":Bob!u@h PRIVMSG me :hi"_s));
    // On each join, whether the nick was listed or not, and in any case.
    QVERIFY(session.receiveAll({u":BOB!u@h JOIN #a"_s, u":BOB!u@h JOIN #a"_s}));
    QCOMPARE(session.probe.lines(u"Bob"_s),
             (QStringList{u"Bob|hi"_s, u"Bob|is back online"_s, u"Bob|is back online"_s}));
    QCOMPARE(session.probe.lastTextColor(u"Bob"_s), Grey);
    QCOMPARE(session.probe.tabTexts(), (QStringList{u"Server"_s, u"#a"_s, u"Bob"_s}));
}

void TestMembership::showsNoReturnOfTheOwnNick()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.receive(u":me!u@h PRIVMSG me :hi"_s));
    QVERIFY(session.receive(u":me!u@h JOIN #a"_s));
    QCOMPARE(session.probe.lines(u"me"_s), QStringList{u"me|hi"_s});
}

void TestMembership::removesAPartingUser_data()
{
    QTest::addColumn<QString>("nick");
    QTest::addColumn<QStringList>("model");

    QTest::newRow("without a rank") << u"zoe"_s << QStringList{u"@bob"_s, u"+@c"_s, u"bob"_s};
    QTest::newRow("the first of two") << u"bob"_s << QStringList{u"+@c"_s, u"bob"_s, u"zoe"_s};
    QTest::newRow("with two ranks") << u"@c"_s << QStringList{u"@bob"_s, u"bob"_s, u"zoe"_s};
    QTest::newRow("in another case")
            << u"ZOE"_s << QStringList{u"@bob"_s, u"+@c"_s, u"bob"_s, u"zoe"_s};
    QTest::newRow("an unknown nick")
            << u"eve"_s << QStringList{u"@bob"_s, u"+@c"_s, u"bob"_s, u"zoe"_s};
}

void TestMembership::removesAPartingUser()
{
    QFETCH(const QString, nick);
    QFETCH(const QStringList, model);

    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, u"zoe bob @bob +@c"_s));
    QCOMPARE(session.probe.users(), (QStringList{u"@bob"_s, u"+@c"_s, u"bob"_s, u"zoe"_s}));
    QVERIFY(session.receive(u":%1!u@h PART #a"_s.arg(nick)));
    QCOMPARE(session.probe.channelUsers().value(u"#a"_s), model);
    QCOMPARE(session.probe.users(), model);
    QCOMPARE(session.probe.lastLine(u"#a"_s), QString(nick + u"|left #a ()"_s));
}

void TestMembership::ignoresTheOwnPartOfAClosedTab()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, u"me alice"_s));
    session.probe.closeTab(1);
    QVERIFY(session.receive(u":me!u@h PART #a :Leaving"_s));
    QCOMPARE(session.probe.tabTexts(), QStringList{u"Server"_s});
    QCOMPARE(session.probe.channelUsers().value(u"#a"_s), (QStringList{u"alice"_s, u"me"_s}));
    QCOMPARE(session.probe.lastLine(u"Server"_s), u"*** You left #a"_s);
    // Another spelling of the nick is another user.
    QVERIFY(session.receive(u":ME!u@h PART #a"_s));
    QCOMPARE(session.probe.tabTexts(), (QStringList{u"Server"_s, u"#a"_s}));
}

void TestMembership::keepsTheTabOnTheOwnPart()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, u"@me alice"_s));
    QVERIFY(session.receive(u":me!u@h PART #a :Leaving"_s));
    QCOMPARE(session.probe.tabTexts(), (QStringList{u"Server"_s, u"#a"_s}));
    QCOMPARE(session.probe.lastLine(u"#a"_s), u"me|left #a (Leaving)"_s);
    QCOMPARE(session.probe.users(), QStringList{u"alice"_s});
    QCOMPARE(session.probe.channelUsers().value(u"#a"_s), QStringList{u"alice"_s});
}

void TestMembership::opensATabOnAnUnknownUsersPart()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.receive(u":bob!u@h PART #new :bye"_s));
    QCOMPARE(session.probe.lines(u"#new"_s), QStringList{u"bob|left #new (bye)"_s});
    QVERIFY(!session.probe.channelUsers().contains(u"#new"_s));
}

void TestMembership::removesAQuittingUserEverywhere()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#b"_s, u"me @bob zoe"_s));
    QVERIFY(session.join(u"#a"_s, u"me bob"_s));
    QVERIFY(session.join(u"#c"_s, u"me BOB"_s));
    QVERIFY(session.receive(u":Bob!u@h PRIVMSG me :hi"_s));
    QVERIFY(session.receive(u":bob!u@h QUIT :gone"_s));
    QCOMPARE(session.probe.lastLine(u"#a"_s), u"bob|quit (gone)"_s);
    QCOMPARE(session.probe.lastLine(u"#b"_s), u"bob|quit (gone)"_s);
    QCOMPARE(session.probe.lines(u"#c"_s), QStringList{u"me|joined #c"_s});
    QCOMPARE(session.probe.lastLine(u"Bob"_s), u"Bob|quit (gone)"_s);
    QCOMPARE(session.probe.channelUsers(),
             (QMap<QString, QStringList>{{u"#a"_s, {u"me"_s}},
                                         {u"#b"_s, {u"me"_s, u"zoe"_s}},
                                         {u"#c"_s, {u"BOB"_s, u"me"_s}}}));
    QCOMPARE(session.probe.users(), (QStringList{u"me"_s, u"zoe"_s}));
    QVERIFY(session.probe.tabs().contains(u"Bob"_s));

    const auto tabs = session.probe.tabTexts();
    QVERIFY(session.receive(u":stranger!u@h QUIT :x"_s));
    QCOMPARE(session.probe.tabTexts(), tabs);
    QCOMPARE(session.probe.lastLine(u"#a"_s), u"bob|quit (gone)"_s);
}

void TestMembership::reopensAClosedTabOnAQuit()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, u"me bob"_s));
    QVERIFY(session.join(u"#b"_s, u"me bob"_s));
    session.probe.closeTab(1);
    session.probe.closeTab(1);
    QCOMPARE(session.probe.tabTexts(), QStringList{u"Server"_s});
    QVERIFY(session.receive(u":bob!u@h QUIT :gone"_s));
    // In name order; the first one becomes current.
    QCOMPARE(session.probe.tabTexts(), (QStringList{u"Server"_s, u"#a"_s, u"#b"_s}));
    QCOMPARE(session.probe.lines(u"#a"_s), QStringList{u"bob|quit (gone)"_s});
    QCOMPARE(session.probe.lines(u"#b"_s), QStringList{u"bob|quit (gone)"_s});
    QCOMPARE(session.probe.users(), QStringList{u"me"_s});
}

void TestMembership::removesAKickedUser()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, u"me @bob bob Zoe"_s));
    QVERIFY(session.receive(u":alice!u@h KICK #a bob :x"_s));
    QCOMPARE(session.probe.users(), (QStringList{u"bob"_s, u"me"_s, u"Zoe"_s}));
    QCOMPARE(session.probe.channelUsers().value(u"#a"_s),
             (QStringList{u"bob"_s, u"me"_s, u"Zoe"_s}));
    QVERIFY(session.receive(u":alice!u@h KICK #a zoe :x"_s));
    QCOMPARE(session.probe.users(), (QStringList{u"bob"_s, u"me"_s, u"Zoe"_s}));
    QVERIFY(session.receive(u":alice!u@h KICK #new bob :x"_s));
    QVERIFY(!session.probe.channelUsers().contains(u"#new"_s));
    QCOMPARE(session.probe.lines(u"#new"_s), QStringList{u"bob|was kicked by alice (x)"_s});
}

void TestMembership::forgetsTheChannelWhenKicked()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, u"@me alice"_s));
    session.discardSent();
    // The own nick is compared case-sensitively.
    QVERIFY(session.receive(u":alice!u@h KICK #a ME :x"_s));
    QVERIFY(session.probe.channelUsers().contains(u"#a"_s));
    QVERIFY(session.receive(u":alice!u@h KICK #a me :out"_s));
    QCOMPARE(session.probe.users(), QStringList());
    QVERIFY(!session.probe.channelUsers().contains(u"#a"_s));
    QCOMPARE(session.probe.tabTexts(), (QStringList{u"Server"_s, u"#a"_s}));
    QCOMPARE(session.probe.lastLine(u"#a"_s), u"me|was kicked by alice (out)"_s);
    session.probe.typeLine(u"hello?"_s);
    QCOMPARE(session.readSent(), QStringList{u"PRIVMSG #a :hello?"_s});
}

void TestMembership::keepsTheVisibleListWhenKickedFromAnotherChannel()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, u"me alice"_s));
    QVERIFY(session.join(u"#b"_s, u"me"_s));
    QVERIFY(session.receive(u":alice!u@h KICK #b me :out"_s));
    QCOMPARE(session.probe.users(), (QStringList{u"alice"_s, u"me"_s}));
    QCOMPARE(session.probe.channelUsers().keys(), QStringList{u"#a"_s});
}

void TestMembership::fillsTheChannelAgainAfterAKick()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, u"me alice"_s));
    QVERIFY(session.receive(u":alice!u@h KICK #a me :out"_s));
    QVERIFY(session.join(u"#a"_s, u"me bob"_s));
    QCOMPARE(session.probe.users(), (QStringList{u"bob"_s, u"me"_s}));
    QCOMPARE(session.probe.tabTexts(), (QStringList{u"Server"_s, u"#a"_s}));
}

QTEST_MAIN(TestMembership)
#include "tst_Membership.moc"
