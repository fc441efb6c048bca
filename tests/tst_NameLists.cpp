#include "TemporaryStore.h"
#include "Waiting.h"
#include "WindowSession.h"

#include <QLabel>
#include <QListWidget>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

const QColor AwayGrey(0xAA, 0xAA, 0xAA);

const QListWidgetItem *itemOf(const WindowSession &session, const QString &text)
{
    return session.probe.userList().findItems(text, Qt::MatchExactly).value(0);
}

bool looksAway(const QListWidgetItem *item)
{
    return item != nullptr && item->font().italic()
           && item->foreground() == QBrush(AwayGrey, Qt::SolidPattern);
}

bool looksPresent(const QListWidgetItem *item)
{
    return item != nullptr && !item->font().italic()
           && item->foreground() == QBrush(QColor(), Qt::SolidPattern);
}

bool looksPlain(const QListWidgetItem *item)
{
    return item != nullptr && !item->font().italic() && item->foreground().style() == Qt::NoBrush;
}

} // namespace

class TestNameLists final : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void collectsNamesUntilTheirEnd();
    void ordersNamesByRank_data();
    void ordersNamesByRank();
    void replacesTheOldList();
    void emptiesTheListWithoutNames();
    void keepsIncompleteNamesThroughADisconnect();
    void storesNamesOfAChannelWithoutATab();
    void keepsTheStaleListAfterAReconnect();

    void showsTheTopic();
    void keepsATopicUntilTheTabOpens();
    void ignoresTopicAndModeMessages();

    void stylesTheOwnEntry_data();
    void stylesTheOwnEntry();
    void stylesTheOwnEntryAgain();
    void leavesJoiningEntriesPlain();
    void stylesNothingInAHiddenList();
    void clearsOnlyTheCurrentChannelsList();

private:
    TemporaryStore store;
};

void TestNameLists::init()
{
    store.clear();
}

void TestNameLists::collectsNamesUntilTheirEnd()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, u"me"_s));
    QVERIFY(session.receiveAll({u":irc.test 353 me = #a :zoe bob"_s,
                                u":irc.test 353 me = #b :eve"_s,
                                u":irc.test 353 me = #a :@op me"_s}));
    QCOMPARE(session.probe.users(), QStringList{u"me"_s});
    QCOMPARE(session.probe.channelUsers().value(u"#a"_s), QStringList{u"me"_s});
    QCOMPARE(session.probe.pendingNames().value(u"#a"_s),
             (QStringList{u"zoe"_s, u"bob"_s, u"@op"_s, u"me"_s}));

    QVERIFY(session.receive(u":irc.test 366 me #a :End"_s));
    QCOMPARE(session.probe.users(), (QStringList{u"@op"_s, u"bob"_s, u"me"_s, u"zoe"_s}));
    QCOMPARE(session.probe.pendingNames().keys(), QStringList{u"#b"_s});
    QCOMPARE(session.probe.lines(u"#a"_s), QStringList{u"me|joined #a"_s});
}

void TestNameLists::ordersNamesByRank_data()
{
    QTest::addColumn<QString>("names");
    QTest::addColumn<QStringList>("order");

    QTest::newRow("all ranks") << u"f +e %d @c &b ~a"_s
                               << QStringList{u"~a"_s, u"&b"_s, u"@c"_s, u"%d"_s, u"+e"_s, u"f"_s};
    QTest::newRow("mixed case") << u"@Zoe @adam Bob alice Carl"_s
                                << QStringList{u"@adam"_s, u"@Zoe"_s, u"alice"_s, u"Bob"_s,
                                               u"Carl"_s};
    QTest::newRow("two ranks") << u"bob +@nick @op"_s
                               << QStringList{u"@op"_s, u"+@nick"_s, u"bob"_s};
    QTest::newRow("other prefixes")
            << u"bob !odd *star"_s << QStringList{u"!odd"_s, u"*star"_s, u"bob"_s};
}

void TestNameLists::ordersNamesByRank()
{
    QFETCH(const QString, names);
    QFETCH(const QStringList, order);

    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, names));
    QCOMPARE(session.probe.users(), order);
    QCOMPARE(session.probe.channelUsers().value(u"#a"_s), order);
}

void TestNameLists::replacesTheOldList()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, u"me bob"_s));
    QVERIFY(session.receiveAll({u":zoe!u@h JOIN #a"_s, u":bob!u@h NICK rob"_s}));
    QVERIFY(session.receiveAll(
            {u":irc.test 353 me = #a :me bob"_s, u":irc.test 366 me #a :End"_s}));
    QCOMPARE(session.probe.users(), (QStringList{u"bob"_s, u"me"_s}));
    QCOMPARE(session.probe.channelUsers().value(u"#a"_s), (QStringList{u"bob"_s, u"me"_s}));
}

void TestNameLists::emptiesTheListWithoutNames()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, u"me bob"_s));
    QVERIFY(session.receive(u":irc.test 366 me #a :End"_s));
    QCOMPARE(session.probe.users(), QStringList());
    QVERIFY(session.probe.channelUsers().contains(u"#a"_s));
    QCOMPARE(session.probe.channelUsers().value(u"#a"_s), QStringList());
}

void TestNameLists::keepsIncompleteNamesThroughADisconnect()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, u"me"_s));
    QVERIFY(session.receive(u":irc.test 353 me = #a :old"_s));
    session.server.close();
    QTRY_COMPARE_WITH_TIMEOUT(session.probe.lastLine(u"Server"_s), u"*** Disconnected."_s,
                              WaitTimeout);
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, u"me new"_s));
    QCOMPARE(session.probe.users(), (QStringList{u"me"_s, u"new"_s, u"old"_s}));
}

void TestNameLists::storesNamesOfAChannelWithoutATab()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, u"me alice"_s));
    QVERIFY(session.receiveAll(
            {u":irc.test 353 me = #b :zoe @bob"_s, u":irc.test 366 me #b :End"_s}));
    QCOMPARE(session.probe.users(), (QStringList{u"alice"_s, u"me"_s}));
    QCOMPARE(session.probe.channelUsers().value(u"#b"_s), (QStringList{u"@bob"_s, u"zoe"_s}));
    QCOMPARE(session.probe.tabTexts(), (QStringList{u"Server"_s, u"#a"_s}));
}

void TestNameLists::keepsTheStaleListAfterAReconnect()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, u"me alice"_s));
    session.server.close();
    QTRY_COMPARE_WITH_TIMEOUT(session.probe.users(), QStringList(), WaitTimeout);
    QVERIFY(session.registerAs());
    QVERIFY(session.receive(u":alice!u@h QUIT :x"_s));
    QCOMPARE(session.probe.lastLine(u"#a"_s), u"alice|quit (x)"_s);
    QVERIFY(session.join(u"#a"_s, u"me"_s));
    QCOMPARE(session.probe.users(), QStringList{u"me"_s});
}

void TestNameLists::showsTheTopic()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, u"me"_s));
    const QLabel *label = session.probe.tabs().value(u"#a"_s).topicLabel;
    QVERIFY(label != nullptr);
    QVERIFY(label->text().isEmpty());
    QVERIFY(session.receive(u":irc.test 332 me #a :Welcome all"_s));
    QVERIFY2(label->text().contains(u"Welcome all"_s), qUtf8Printable(label->text()));
    QCOMPARE(session.probe.channelTopics().value(u"#a"_s), u"Welcome all"_s);
    QVERIFY(session.receive(u":irc.test 332 me #a :"_s));
    QVERIFY(label->text().isEmpty());
    QCOMPARE(session.probe.lines(u"#a"_s), QStringList{u"me|joined #a"_s});
}

void TestNameLists::keepsATopicUntilTheTabOpens()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.receive(u":irc.test 332 me #a :Early"_s));
    QCOMPARE(session.probe.tabTexts(), QStringList{u"Server"_s});
    QVERIFY(session.receive(u":me!u@h JOIN #a"_s));
    const QString shown = session.probe.tabs().value(u"#a"_s).topicLabel->text();
    QVERIFY2(shown.contains(u"Early"_s), qUtf8Printable(shown));
}

void TestNameLists::ignoresTopicAndModeMessages()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, u"me bob"_s));
    QVERIFY(session.receive(u":irc.test 332 me #a :Old"_s));
    const QStringList serverLines = session.probe.lines(u"Server"_s);
    QVERIFY(session.receiveAll({u":bob!u@h TOPIC #a :New"_s, u":bob!u@h MODE #a +o me"_s}));
    QCOMPARE(session.probe.channelTopics().value(u"#a"_s), u"Old"_s);
    QCOMPARE(session.probe.users(), (QStringList{u"bob"_s, u"me"_s}));
    QCOMPARE(session.probe.lines(u"#a"_s), QStringList{u"me|joined #a"_s});
    QCOMPARE(session.probe.lines(u"Server"_s), serverLines);
}

void TestNameLists::stylesTheOwnEntry_data()
{
    QTest::addColumn<QString>("names");
    QTest::addColumn<QString>("own");
    QTest::addColumn<QString>("other");

    QTest::newRow("plain") << u"me alice"_s << u"me"_s << u"alice"_s;
    QTest::newRow("with a rank") << u"@me alice"_s << u"@me"_s << u"alice"_s;
    QTest::newRow("in another case") << u"ME alice"_s << u"ME"_s << u"alice"_s;
    QTest::newRow("the first of two") << u"me @me"_s << u"@me"_s << u"me"_s;
}

void TestNameLists::stylesTheOwnEntry()
{
    QFETCH(const QString, names);
    QFETCH(const QString, own);
    QFETCH(const QString, other);

    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, names));
    QVERIFY(looksPresent(itemOf(session, own)));
    QVERIFY(looksPlain(itemOf(session, other)));
    session.probe.typeLine(u"/away lunch"_s);
    QVERIFY(looksAway(itemOf(session, own)));
    QVERIFY(looksPlain(itemOf(session, other)));
    session.probe.typeLine(u"/back"_s);
    QVERIFY(looksPresent(itemOf(session, own)));
    QVERIFY(looksPlain(itemOf(session, other)));
}

void TestNameLists::stylesTheOwnEntryAgain()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, u"@me alice"_s));
    session.probe.typeLine(u"/away lunch"_s);

    session.probe.showTab(u"Server"_s);
    session.probe.showTab(u"#a"_s);
    QVERIFY(looksAway(itemOf(session, u"@me"_s)));

    QVERIFY(session.join(u"#a"_s, u"me alice"_s));
    QVERIFY(looksAway(itemOf(session, u"me"_s)));

    // The nick change styles the list first, and then replaces the entry.
    QVERIFY(session.receive(u":me!u@h NICK new"_s));
    QVERIFY(looksPlain(itemOf(session, u"new"_s)));
    session.probe.showTab(u"Server"_s);
    session.probe.showTab(u"#a"_s);
    QVERIFY(looksAway(itemOf(session, u"new"_s)));

    session.probe.typeLine(u"/nick third"_s);
    QVERIFY(looksPresent(itemOf(session, u"new"_s)));
}

void TestNameLists::leavesJoiningEntriesPlain()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, u"alice"_s));
    session.probe.typeLine(u"/away lunch"_s);
    QVERIFY(session.receive(u":Me!u@h JOIN #a"_s));
    QVERIFY(looksPlain(itemOf(session, u"Me"_s)));
    // The nick change styles the entry that the join added.
    QVERIFY(session.receive(u":me!u@h NICK ME"_s));
    QVERIFY(looksAway(itemOf(session, u"Me"_s)));
}

void TestNameLists::stylesNothingInAHiddenList()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    session.probe.userList().addItem(u"me"_s);
    session.probe.isAway() = true;
    session.probe.updateOwnUserAppearance();
    QVERIFY(looksPlain(itemOf(session, u"me"_s)));
    session.probe.userListShown() = true;
    session.probe.updateOwnUserAppearance();
    QVERIFY(looksAway(itemOf(session, u"me"_s)));
}

void TestNameLists::clearsOnlyTheCurrentChannelsList()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, u"me alice"_s));
    session.probe.clearUserList(u"#A"_s);
    QCOMPARE(session.probe.users(), (QStringList{u"alice"_s, u"me"_s}));
    session.probe.clearUserList(u"#a"_s);
    QCOMPARE(session.probe.users(), QStringList());
    QCOMPARE(session.probe.channelUsers().value(u"#a"_s), (QStringList{u"alice"_s, u"me"_s}));
}

QTEST_MAIN(TestNameLists)
#include "tst_NameLists.moc"
