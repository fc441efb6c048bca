#include "IRCConnection.h"
#include "MyTabWidget.h"
#include "TemporaryStore.h"
#include "WindowSession.h"

#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QScrollBar>
#include <QTest>
#include <QTreeWidget>

using namespace Qt::StringLiterals;

namespace {

const auto Server = u"Server"_s;

const auto Start = u":irc.test 321 me Channel :Users  Name"_s;
const auto End = u":irc.test 323 me :End of /LIST"_s;

QString row(const QString &channel, const QString &users, const QString &topic = {})
{
    return u":irc.test 322 me %1 %2 :%3"_s.arg(channel, users, topic);
}

// Connects and requests the channel list.
bool begin(WindowSession &session)
{
    if (!session.registerAs())
        return false;
    session.choose(u"Channel &List"_s);
    return session.probe.listTree() != nullptr;
}

bool list(WindowSession &session, const QStringList &rows)
{
    return session.receiveAll(QStringList{Start} + rows + QStringList{End});
}

} // namespace

class TestChannelListRows final : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void showsRowsVerbatim();
    void paintsNothingUntilTheListIsComplete();
    void reportsTheListOnTheServerTab();
    void showsTotals_data();
    void showsTotals();
    void addsToTheTotalsWithoutAStart();
    void sortsByUsersInDescendingOrder();
    void sortsOtherTextAsZero();
    void clickOnAHeaderSorts();
    void sortsStably();
    void sortingKeepsSelectionAndScrollPosition();
    void sortsASecondListing_data();
    void sortsASecondListing();
    void filtersByNameAndTopic();
    void showsNewRowsDuringASearch();
    void showsAllRowsAgain();
    void acceptsMalformedRows_data();
    void acceptsMalformedRows();
    void acceptsLongTexts();
    void acceptsManyRowsAtOnce();

private:
    TemporaryStore store;
};

void TestChannelListRows::init()
{
    store.clear();
}

void TestChannelListRows::showsRowsVerbatim()
{
    WindowSession session;
    QVERIFY(begin(session));
    QVERIFY(session.receiveAll(
            {Start, row(u"#a"_s, u"007"_s, u"\u0002Bold\u000F \u00034,1red"_s)}));
    const QTreeWidgetItem *item = session.probe.listTree()->topLevelItem(0);
    QVERIFY(item != nullptr);
    QCOMPARE(item->text(0), u"#a"_s);
    QCOMPARE(item->text(1), u"007"_s);
    QCOMPARE(item->text(2), u"\u0002Bold\u000F \u00034,1red"_s);
    QCOMPARE(item->data(1, Qt::UserRole), QVariant(7));
    QCOMPARE(item->data(0, Qt::UserRole), QVariant());
    QCOMPARE(item->data(2, Qt::UserRole), QVariant());
    QVERIFY(!item->isHidden());
    QVERIFY(item->toolTip(2).isEmpty());
}

void TestChannelListRows::paintsNothingUntilTheListIsComplete()
{
    WindowSession session;
    QVERIFY(begin(session));
    const QTreeWidget &tree = *session.probe.listTree();
    QVERIFY(tree.updatesEnabled());
    QVERIFY(session.receiveAll({Start, row(u"#b"_s, u"1"_s), row(u"#a"_s, u"2"_s)}));
    QVERIFY(!tree.updatesEnabled());
    QVERIFY(!tree.isSortingEnabled());
    // Unsorted until then.
    QCOMPARE(session.probe.listColumn(0), (QStringList{u"#b"_s, u"#a"_s}));
    QVERIFY(session.receive(End));
    QVERIFY(tree.updatesEnabled());
    QVERIFY(tree.isSortingEnabled());
}

void TestChannelListRows::reportsTheListOnTheServerTab()
{
    WindowSession session;
    QVERIFY(begin(session));
    const qsizetype before = session.probe.lines(Server).size();
    QVERIFY(session.receiveAll(
            {Start, row(u"#a"_s, u"1"_s), u":irc.test NOTICE me :muted"_s, u"PING :irc.test"_s}));
    QVERIFY(session.probe.listReceiving());
    QCOMPARE(session.probe.lines(Server).mid(before),
             QStringList{u"*** Receiving channel list..."_s});
    QVERIFY(session.receive(End));
    QVERIFY(!session.probe.listReceiving());
    QCOMPARE(session.probe.lines(Server).mid(before),
             (QStringList{u"*** Receiving channel list..."_s, u"*** Channel list complete."_s}));
}

void TestChannelListRows::showsTotals_data()
{
    QTest::addColumn<QStringList>("lines");
    QTest::addColumn<QString>("label");

    QTest::newRow("rows") << QStringList{Start, row(u"#a"_s, u"2"_s), row(u"#b"_s, u"40"_s)}
                          << u"irc.test: 2 channels, 42 users"_s;
    QTest::newRow("none") << QStringList{Start} << u"irc.test: 0 channels, 0 users"_s;
    QTest::newRow("no number") << QStringList{Start, row(u"#a"_s, u"many"_s)}
                               << u"irc.test: 1 channels, 0 users"_s;
    QTest::newRow("no prefix") << QStringList{u"321 me Channel :Users"_s, row(u"#a"_s, u"2"_s)}
                               << u": 1 channels, 2 users"_s;
    QTest::newRow("large") << QStringList{Start, row(u"#a"_s, u"1234567"_s)}
                           << u"irc.test: 1 channels, 1234567 users"_s;
    QTest::newRow("markup") << QStringList{u":<b>%2</b>&amp; 321 me :"_s, row(u"#a"_s, u"2"_s)}
                            << u"<b>%2</b>&amp;: 1 channels, 2 users"_s;
}

void TestChannelListRows::showsTotals()
{
    QFETCH(const QStringList, lines);
    WindowSession session;
    QVERIFY(begin(session));
    session.probe.listSearchEdit().setText(u"nothing"_s);
    QVERIFY(session.receiveAll(lines + QStringList{End}));
    QTEST(session.probe.listInfoLabel()->text(), "label");
}

void TestChannelListRows::addsToTheTotalsWithoutAStart()
{
    WindowSession session;
    QVERIFY(begin(session));
    QVERIFY(list(session, {row(u"#a"_s, u"2"_s)}));
    session.choose(u"Channel &List"_s);
    QVERIFY(session.receiveAll({row(u"#a"_s, u"3"_s), End}));
    QCOMPARE(session.probe.listInfoLabel()->text(), u"irc.test: 2 channels, 5 users"_s);
    QCOMPARE(session.probe.listTree()->topLevelItemCount(), 1);
}

void TestChannelListRows::sortsByUsersInDescendingOrder()
{
    WindowSession session;
    QVERIFY(begin(session));
    QVERIFY(list(session, {row(u"#nine"_s, u"9"_s), row(u"#ten"_s, u"10"_s),
                           row(u"#hundred"_s, u"100"_s), row(u"#none"_s, u"0"_s)}));
    QCOMPARE(session.probe.listColumn(1), (QStringList{u"100"_s, u"10"_s, u"9"_s, u"0"_s}));
    const QHeaderView &header = *session.probe.listTree()->header();
    QVERIFY(header.isSortIndicatorShown());
    QCOMPARE(header.sortIndicatorSection(), 1);
    QCOMPARE(header.sortIndicatorOrder(), Qt::DescendingOrder);
}

void TestChannelListRows::sortsOtherTextAsZero()
{
    WindowSession session;
    QVERIFY(begin(session));
    QVERIFY(list(session, {row(u"#many"_s, u"many"_s), row(u"#less"_s, u"-1"_s),
                           row(u"#one"_s, u"1"_s), row(u"#huge"_s, u"99999999999"_s)}));
    QCOMPARE(session.probe.listColumn(0).first(), u"#one"_s);
    QCOMPARE(session.probe.listColumn(0).last(), u"#less"_s);
    QCOMPARE(session.probe.listInfoLabel()->text(), u"irc.test: 4 channels, 0 users"_s);
}

void TestChannelListRows::clickOnAHeaderSorts()
{
    WindowSession session;
    QVERIFY(begin(session));
    QVERIFY(list(session, {row(u"#b"_s, u"1"_s, u"z"_s), row(u"#C"_s, u"2"_s, u"Y"_s),
                           row(u"#a"_s, u"3"_s, u"x"_s)}));
    QHeaderView &header = *session.probe.listTree()->header();
    const auto click = [&header](int section) {
        QTest::mouseClick(header.viewport(), Qt::LeftButton, {},
                          QPoint(header.sectionViewportPosition(section) + 40, 15));
    };
    click(0);
    QCOMPARE(session.probe.listColumn(0), (QStringList{u"#a"_s, u"#b"_s, u"#C"_s}));
    click(0);
    QCOMPARE(session.probe.listColumn(0), (QStringList{u"#C"_s, u"#b"_s, u"#a"_s}));
    click(2);
    QCOMPARE(session.probe.listColumn(2), (QStringList{u"x"_s, u"Y"_s, u"z"_s}));
    click(1);
    QCOMPARE(session.probe.listColumn(1), (QStringList{u"1"_s, u"2"_s, u"3"_s}));
}

void TestChannelListRows::sortsStably()
{
    WindowSession session;
    QVERIFY(begin(session));
    QStringList rows;
    QStringList few;
    QStringList many;
    for (int i = 0; i < 100; ++i) {
        const QString channel = u"#c%1"_s.arg(i);
        rows.append(row(channel, i % 2 == 0 ? u"9"_s : u"10"_s));
        (i % 2 == 0 ? few : many).append(channel);
    }
    QVERIFY(list(session, rows));
    QCOMPARE(session.probe.listColumn(0), many + few);
}

void TestChannelListRows::sortingKeepsSelectionAndScrollPosition()
{
    WindowSession session;
    QVERIFY(begin(session));
    QTreeWidget &tree = *session.probe.listTree();
    QStringList rows{Start};
    for (int i = 0; i < 500; ++i)
        rows.append(row(u"#c%1"_s.arg(i), QString::number(i)));
    QVERIFY(session.receiveAll(rows));
    session.probe.listSearchEdit().setText(u"7"_s);
    const QStringList found = session.probe.listColumn(0);
    tree.setCurrentItem(tree.topLevelItem(17));
    tree.verticalScrollBar()->setValue(3);
    QVERIFY(session.receive(End));
    QCOMPARE(session.probe.listColumn(0), QStringList(found.crbegin(), found.crend()));
    QVERIFY(tree.currentItem());
    QCOMPARE(tree.currentItem()->text(0), u"#c17"_s);
    QCOMPARE(tree.selectedItems(), QList{tree.currentItem()});
    QCOMPARE(tree.verticalScrollBar()->value(), 3);
    session.probe.listSearchEdit().setText(u"#c17"_s);
    QCOMPARE(session.probe.listColumn(0).first(), u"#c179"_s);
}

void TestChannelListRows::sortsASecondListing_data()
{
    QTest::addColumn<int>("column");
    QTest::addColumn<Qt::SortOrder>("order");
    QTest::addColumn<QStringList>("channels");

    QTest::newRow("by channel") << 0 << Qt::AscendingOrder << QStringList{u"#a"_s, u"#b"_s};
    QTest::newRow("by users, descending")
            << 1 << Qt::DescendingOrder << QStringList{u"#b"_s, u"#a"_s};
    QTest::newRow("by users, ascending")
            << 1 << Qt::AscendingOrder << QStringList{u"#a"_s, u"#b"_s};
}

void TestChannelListRows::sortsASecondListing()
{
    QFETCH(const int, column);
    QFETCH(const Qt::SortOrder, order);
    QFETCH(const QStringList, channels);
    WindowSession session;
    QVERIFY(begin(session));
    QVERIFY(list(session, {row(u"#a"_s, u"1"_s)}));
    QTreeWidget &tree = *session.probe.listTree();
    tree.sortItems(column, order);
    session.choose(u"Channel &List"_s);
    QVERIFY(session.receiveAll({Start, row(u"#b"_s, u"3"_s), row(u"#a"_s, u"1"_s)}));
    QVERIFY(!tree.updatesEnabled());
    QVERIFY(tree.isSortingEnabled());
    QCOMPARE(tree.header()->sortIndicatorSection(), column);
    QCOMPARE(tree.header()->sortIndicatorOrder(), order);
    QCOMPARE(session.probe.listColumn(0), channels);
    QVERIFY(session.receiveAll({row(u"#c"_s, u"2"_s), End}));
    QCOMPARE(session.probe.listColumn(0), (QStringList{u"#b"_s, u"#c"_s, u"#a"_s}));
    QVERIFY(tree.updatesEnabled());
}

void TestChannelListRows::filtersByNameAndTopic()
{
    WindowSession session;
    QVERIFY(begin(session));
    QVERIFY(list(session, {row(u"#linux"_s, u"3"_s, u"Kernel talk"_s),
                           row(u"#music"_s, u"2"_s, u"on LINUX too"_s),
                           row(u"#chess"_s, u"1"_s, u"3 linus"_s)}));
    QTest::keyClicks(&session.probe.listSearchEdit(), u"Linux"_s);
    QCOMPARE(session.probe.listColumn(0), (QStringList{u"#linux"_s, u"#music"_s}));
    QTest::keyClick(&session.probe.listSearchEdit(), Qt::Key_Backspace);
    QTest::keyClick(&session.probe.listSearchEdit(), Qt::Key_Backspace);
    QCOMPARE(session.probe.listColumn(0), (QStringList{u"#linux"_s, u"#music"_s, u"#chess"_s}));
    session.probe.listSearchEdit().setText(u"3"_s);
    QCOMPARE(session.probe.listColumn(0), QStringList{u"#chess"_s});
    session.probe.listSearchEdit().setText(u"#*"_s);
    QCOMPARE(session.probe.listColumn(0), QStringList());
}

void TestChannelListRows::showsNewRowsDuringASearch()
{
    WindowSession session;
    QVERIFY(begin(session));
    QVERIFY(session.receiveAll({Start, row(u"#a"_s, u"3"_s), row(u"#b"_s, u"2"_s)}));
    session.probe.listSearchEdit().setText(u"#a"_s);
    QVERIFY(session.receiveAll({row(u"#c"_s, u"1"_s), End}));
    QCOMPARE(session.probe.listColumn(0), (QStringList{u"#a"_s, u"#c"_s}));
    session.probe.listSearchEdit().setText(u"#"_s);
    session.probe.listSearchEdit().setText(u"#a"_s);
    QCOMPARE(session.probe.listColumn(0), QStringList{u"#a"_s});
}

void TestChannelListRows::showsAllRowsAgain()
{
    WindowSession session;
    QVERIFY(begin(session));
    QVERIFY(list(session, {row(u"#a"_s, u"3"_s), row(u"#b"_s, u"2"_s)}));
    session.probe.listSearchEdit().setText(u"#b"_s);
    QCOMPARE(session.probe.listColumn(0), QStringList{u"#b"_s});
    session.probe.listSearchEdit().clear();
    QCOMPARE(session.probe.listColumn(0), (QStringList{u"#a"_s, u"#b"_s}));
}

void TestChannelListRows::acceptsMalformedRows_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QStringList>("texts");

    const auto add = [](const char *name, const QString &line, const QStringList &texts) {
        QTest::newRow(name) << line << texts;
    };
    add("no parameters", u":irc.test 322"_s, {});
    add("only the nick", u":irc.test 322 me"_s, {});
    add("no users", u":irc.test 322 me #a"_s, {});
    add("topic without users", u":irc.test 322 me #a :topic"_s, {});
    add("no topic", u":irc.test 322 me #a 5"_s, {u"#a"_s, u"5"_s, QString()});
    add("no prefix", u"322 me #a 5 :x"_s, {u"#a"_s, u"5"_s, u"x"_s});
    add("too many parameters", u":irc.test 322 me #a 5 6 7 :x"_s, {u"#a"_s, u"5"_s, u"x"_s});
    add("name without a channel prefix", row(u"alice"_s, u"5"_s, u"x"_s),
        {u"alice"_s, u"5"_s, u"x"_s});
    add("the tab's own name", row(u"List"_s, u"5"_s, u"x"_s), {u"List"_s, u"5"_s, u"x"_s});
    add("markup", row(u"#<b>x</b>&amp;"_s, u"<i>5</i>"_s, u"<img src=x>&lt;"_s),
        {u"#<b>x</b>&amp;"_s, u"<i>5</i>"_s, u"<img src=x>&lt;"_s});
    add("control characters",
        row(u"#\u0001\u0007\u001B[0m"_s, u"\u00025"_s, u"\u0003\n\t\r\u007F"_s),
        {u"#\u0001\u0007\u001B[0m"_s, u"\u00025"_s, u"\u0003\n\t\r\u007F"_s});
    add("right to left", row(u"#\u202Eشبكة"_s, u"\u0665"_s, u"\u05D0\u202E\u05D1\u2067x"_s),
        {u"#\u202Eشبكة"_s, u"\u0665"_s, u"\u05D0\u202E\u05D1\u2067x"_s});
    add("combining", row(u"#Z\u0300\u0301\u0302\u0303"_s, u"5"_s, QString(2000, u'\u0335')),
        {u"#Z\u0300\u0301\u0302\u0303"_s, u"5"_s, QString(2000, u'\u0335')});
}

void TestChannelListRows::acceptsMalformedRows()
{
    QFETCH(const QString, line);
    QFETCH(const QStringList, texts);
    WindowSession session;
    QVERIFY(begin(session));
    QVERIFY(list(session, {line}));
    QStringList shown;
    for (int column = 0; column < 3 && session.probe.listTree()->topLevelItemCount() > 0; ++column)
        shown += session.probe.listColumn(column);
    QCOMPARE(shown, texts);
    QVERIFY(session.probe.listInfoLabel()->text().startsWith(
            u"irc.test: %1 channels"_s.arg(texts.isEmpty() ? 0 : 1)));
    session.probe.listSearchEdit().setText(texts.value(0).right(2));
    session.probe.listSearchEdit().setText(u"not there"_s);
    QCOMPARE(session.probe.listColumn(0), QStringList());
    session.window.grab();
}

void TestChannelListRows::acceptsLongTexts()
{
    WindowSession session;
    QVERIFY(begin(session));
    const QString name = u'#' + QString(10000, u'x');
    const QString topic(10000, u'\u05D0');
    const QString users(10000, u'9');
    const int width = session.window.width();
    QVERIFY(session.receiveAll({u':' + QString(10000, u's') + u" 321 me :"_s,
                                row(name, users, topic), row(u"#b"_s, u"1"_s), End}));
    session.window.grab();
    QCOMPARE(session.probe.listColumn(0).last(), name);
    QCOMPARE(session.probe.listColumn(1).last(), users);
    QCOMPARE(session.probe.listColumn(2).last(), topic);
    QVERIFY(session.probe.listInfoLabel()->text().endsWith(u"s: 2 channels, 1 users"_s));
    QCOMPARE(session.window.width(), width);
    QCOMPARE(session.probe.listTree()->header()->sectionSize(0), 200);
    session.probe.listSearchEdit().setText(topic);
    QCOMPARE(session.probe.listColumn(0), QStringList{name});
}

void TestChannelListRows::acceptsManyRowsAtOnce()
{
    WindowSession session;
    QVERIFY(begin(session));
    QStringList rows;
    for (int number = 0; number < 3000; ++number)
        rows.append(row(u"#c%1"_s.arg(number), QString::number(number * 7 % 3000), u"Ünïcode"_s));
    QVERIFY(list(session, rows));
    const QStringList users = session.probe.listColumn(1);
    QCOMPARE(users.size(), 3000);
    for (int place = 0; place < 3000; ++place)
        QCOMPARE(users.at(place).toInt(), 2999 - place);
    session.probe.listSearchEdit().setText(u"#c299"_s);
    QCOMPARE(session.probe.listColumn(0).size(), 11);
}

QTEST_MAIN(TestChannelListRows)
#include "tst_ChannelListRows.moc"
