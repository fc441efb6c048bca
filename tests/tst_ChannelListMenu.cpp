#include "IRCConnection.h"
#include "ModalAnswers.h"
#include "MyTabWidget.h"
#include "TemporaryStore.h"
#include "Waiting.h"
#include "WindowSession.h"

#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QSettings>
#include <QTest>
#include <QTextBrowser>
#include <QTreeWidget>

using namespace Qt::StringLiterals;

namespace {

const auto Server = u"Server"_s;
const auto List = u"List"_s;
const auto Autojoin = u"Autojoin on connect"_s;

// Connects and shows a complete list with `channels`, in this order.
bool begin(WindowSession &session, const QStringList &channels)
{
    if (!session.registerAs())
        return false;
    session.choose(u"Channel &List"_s);
    QStringList lines{u":irc.test 321 me :Channels"_s};
    for (qsizetype i = 0; i < channels.size(); ++i) {
        lines.append(u":irc.test 322 me %1 %2 :Topic"_s.arg(channels.at(i),
                                                            QString::number(channels.size() - i)));
    }
    lines.append(u":irc.test 323 me :End"_s);
    if (!session.receiveAll(lines))
        return false;
    session.discardSent();
    return session.probe.listColumn(0) == channels;
}

QPoint positionOf(const WindowSession &session, int row)
{
    const QTreeWidget &tree = *session.probe.listTree();
    return tree.visualItemRect(tree.topLevelItem(row)).center();
}

void requestMenu(const WindowSession &session, int row)
{
    QTreeWidget &tree = *session.probe.listTree();
    const QPoint place =
            row < 0 ? QPoint(5, tree.viewport()->height() - 5) : positionOf(session, row);
    emit tree.customContextMenuRequested(place);
}

void doubleClick(const WindowSession &session, int row)
{
    QTreeWidget &tree = *session.probe.listTree();
    const QPoint place = positionOf(session, row);
    QTest::mouseClick(tree.viewport(), Qt::LeftButton, {}, place);
    QTest::mouseDClick(tree.viewport(), Qt::LeftButton, {}, place);
}

} // namespace

class TestChannelListMenu final : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void showsNoMenuOutsideTheRows();
    void showsTheMenu_data();
    void showsTheMenu();
    void showsTheMenuAtTheRequestedPosition();
    void joinsFromTheMenu();
    void doesNothingIfTheMenuIsDismissed();
    void togglesAutojoin();
    void handlesEventsWhileTheMenuIsOpen_data();
    void handlesEventsWhileTheMenuIsOpen();
    void togglesTheShownAutojoinState();

    void doubleClickOpensAChannel();
    void doubleClickSwitchesToAnOpenChannel();
    void doubleClickSetsUpTheTab();
    void doubleClickDoesNothingWhileDisconnected();
    void doubleClickOutsideTheRowsDoesNothing();
    void doubleClickOnAnEmptyNameOpensNoTab();
    void doubleClickLeavesTheTopicEmpty();
    void doubleClickOpensUnusualNames_data();
    void doubleClickOpensUnusualNames();

private:
    TemporaryStore store;
};

void TestChannelListMenu::init()
{
    store.clear();
}

void TestChannelListMenu::showsNoMenuOutsideTheRows()
{
    WindowSession session;
    QVERIFY(begin(session, {u"#a"_s}));
    const ModalAnswers answers;
    requestMenu(session, -1);
    QCoreApplication::processEvents();
    QCOMPARE(answers.problems(), QStringList());
}

void TestChannelListMenu::showsTheMenu_data()
{
    QTest::addColumn<QString>("channel");
    QTest::addColumn<bool>("isAutojoined");

    QTest::newRow("channel") << u"#a"_s << false;
    QTest::newRow("autojoined") << u"#auto"_s << true;
    QTest::newRow("in another case") << u"#Auto"_s << false;
    QTest::newRow("ampersand") << u"#a&b"_s << false;
    QTest::newRow("markup") << u"#<b>%1</b>"_s << false;
    QTest::newRow("huge") << QString(u'#' + QString(10000, u'x')) << false;
}

void TestChannelListMenu::showsTheMenu()
{
    QFETCH(const QString, channel);
    QFETCH(const bool, isAutojoined);
    WindowSession session;
    QVERIFY(begin(session, {channel}));
    session.probe.autojoinChannels() = QStringList{u"#auto"_s};
    ModalAnswers answers;
    answers.queueForMenu([&](QMenu *menu) {
        const QList<QAction *> entries = menu->actions();
        QCOMPARE(entries.size(), 2);
        QCOMPARE(entries.at(0)->text(), u"Join "_s + channel);
        QVERIFY(!entries.at(0)->isCheckable());
        QCOMPARE(entries.at(1)->text(), Autojoin);
        QVERIFY(entries.at(1)->isCheckable());
        QCOMPARE(entries.at(1)->isChecked(), isAutojoined);
        QCOMPARE(menu->parent(), nullptr);
        menu->close();
    });
    requestMenu(session, 0);
    QCOMPARE(answers.problems(), QStringList());
}

// The position is relative to the viewport; relative to the tree, it would be off by the header.
void TestChannelListMenu::showsTheMenuAtTheRequestedPosition()
{
    WindowSession session;
    QVERIFY(begin(session, {u"#a"_s, u"#b"_s}));
    QTreeWidget &tree = *session.probe.listTree();
    // Far from the screen's edges, where Qt moves the menu.
    const QPoint place(20, positionOf(session, 1).y());
    ModalAnswers answers;
    answers.queueForMenu([&](QMenu *menu) {
        QCOMPARE(menu->pos(), tree.mapToGlobal(place));
        menu->close();
    });
    emit tree.customContextMenuRequested(place);
    QCOMPARE(answers.problems(), QStringList());
}

void TestChannelListMenu::joinsFromTheMenu()
{
    WindowSession session;
    QVERIFY(begin(session, {u"#a"_s, u"#b&c"_s}));
    ModalAnswers answers;
    answers.queueForMenu(ModalAnswers::choosing(u"Join #b&c"_s));
    requestMenu(session, 1);
    QCOMPARE(answers.problems(), QStringList());
    QCOMPARE(session.readSent(), QStringList{u"JOIN #b&c"_s});
    // The tab is opened by the server's JOIN.
    QCOMPARE(session.probe.tabTexts(), (QStringList{Server, List}));
}

void TestChannelListMenu::doesNothingIfTheMenuIsDismissed()
{
    WindowSession session;
    QVERIFY(begin(session, {u"#a"_s}));
    const QStringList before = session.probe.lines(Server);
    ModalAnswers answers;
    answers.queueForMenu([](QMenu *menu) { QTest::keyClick(menu, Qt::Key_Escape); });
    requestMenu(session, 0);
    QCOMPARE(answers.problems(), QStringList());
    QCOMPARE(session.readSent(), QStringList());
    QCOMPARE(session.probe.lines(Server), before);
    QVERIFY(session.probe.autojoinChannels().isEmpty());
}

void TestChannelListMenu::togglesAutojoin()
{
    WindowSession session;
    QVERIFY(begin(session, {u"#a"_s}));
    const QString key = u"servers/%1/autojoin"_s.arg(session.probe.currentServerId());
    const qsizetype before = session.probe.lines(Server).size();
    ModalAnswers answers;
    answers.queueForMenu(ModalAnswers::choosing(Autojoin));
    requestMenu(session, 0);
    QCOMPARE(session.probe.autojoinChannels(), QStringList{u"#a"_s});
    QCOMPARE(session.probe.connection().serverConfig().autojoin, QStringList{u"#a"_s});
    QCOMPARE(QSettings().value(key).toStringList(), QStringList{u"#a"_s});
    answers.queueForMenu(ModalAnswers::choosing(Autojoin));
    requestMenu(session, 0);
    QVERIFY(session.probe.autojoinChannels().isEmpty());
    QVERIFY(session.probe.connection().serverConfig().autojoin.isEmpty());
    QVERIFY(QSettings().value(key).toStringList().isEmpty());
    QCOMPARE(answers.problems(), QStringList());
    QCOMPARE(session.probe.lines(Server).mid(before),
             (QStringList{u"*** Added #a to autojoin list"_s,
                          u"*** Removed #a from autojoin list"_s}));
    QCOMPARE(session.readSent(), QStringList());
}

void TestChannelListMenu::handlesEventsWhileTheMenuIsOpen_data()
{
    QTest::addColumn<QString>("event");
    QTest::addColumn<QString>("entry");

    for (const QString &event : {u"empty"_s, u"fill"_s, u"close"_s, u"delete"_s, u"drop"_s}) {
        for (const QString &entry : {u"Join #a"_s, Autojoin})
            QTest::addRow("%s, then %s", qPrintable(event), qPrintable(entry)) << event << entry;
    }
}

void TestChannelListMenu::handlesEventsWhileTheMenuIsOpen()
{
    QFETCH(const QString, event);
    QFETCH(const QString, entry);
    WindowSession session;
    QVERIFY(begin(session, {u"#a"_s, u"#b"_s}));
    const auto happen = [&] {
        if (event == "empty"_L1) {
            session.choose(u"Channel &List"_s);
        } else if (event == "fill"_L1) {
            session.probe.listTree()->clear();
            return session.receiveAll({u":irc.test 322 me #c 9 :x"_s, u":irc.test 323 me :"_s});
        } else if (event == "drop"_L1) {
            session.server.close();
            return QTest::qWaitFor([&] { return !session.probe.connection().isConnected(); },
                                   WaitTimeout);
        } else {
            const QTreeWidget *tree = session.probe.listTree();
            session.probe.closeTab(1);
            if (event == "delete"_L1)
                delete tree;
        }
        return true;
    };
    ModalAnswers answers;
    bool happened = false;
    answers.queueForMenu([&](QMenu *menu) {
        happened = happen();
        ModalAnswers::choosing(entry)(menu);
    });
    requestMenu(session, 0);
    QCOMPARE(answers.problems(), QStringList());
    QVERIFY(happened);
    if (entry == Autojoin)
        QCOMPARE(session.probe.autojoinChannels(), QStringList{u"#a"_s});
    else if (event == "drop"_L1)
        QCOMPARE(session.probe.lastLine(Server), u"*** Error: Socket is not connected"_s);
    else
        QVERIFY(session.readSent().contains(u"JOIN #a"_s));
}

void TestChannelListMenu::togglesTheShownAutojoinState()
{
    WindowSession session;
    QVERIFY(begin(session, {u"#a"_s}));
    ModalAnswers answers;
    answers.queueForMenu([&](QMenu *menu) {
        session.probe.setChannelAutojoin(u"#a"_s, true);
        ModalAnswers::choosing(Autojoin)(menu);
    });
    requestMenu(session, 0);
    QCOMPARE(answers.problems(), QStringList());
    QCOMPARE(session.probe.autojoinChannels(), QStringList{u"#a"_s});
}

void TestChannelListMenu::doubleClickOpensAChannel()
{
    WindowSession session;
    QVERIFY(begin(session, {u"#a"_s, u"#b"_s}));
    doubleClick(session, 1);
    QCOMPARE(session.readSent(), QStringList{u"JOIN #b"_s});
    QCOMPARE(session.probe.tabTexts(), (QStringList{Server, List, u"#b"_s}));
    QCOMPARE(session.probe.currentTabName(), u"#b"_s);
    QCOMPARE(session.window.focusWidget(), &session.probe.inputLine());
    QCOMPARE(session.probe.tabWidget().tabToolTip(2), u"#b"_s);
    const MainWindow::TabInfo tab = session.probe.tabs().value(u"#b"_s);
    QCOMPARE(tab.page, session.probe.tabWidget().widget(2));
    QCOMPARE(tab.chatView, tab.page->findChild<QTextBrowser *>());
    QVERIFY(tab.chatView != nullptr);
    QCOMPARE(tab.table, nullptr);
    QCOMPARE(tab.peerNick, QString());
    QCOMPARE(tab.topicBar, nullptr);
    QCOMPARE(tab.topicLabel, nullptr);
    QCOMPARE(tab.editTopicBtn, nullptr);
}

void TestChannelListMenu::doubleClickSwitchesToAnOpenChannel()
{
    WindowSession session;
    QVERIFY(begin(session, {u"#a"_s}));
    QVERIFY(session.join(u"#a"_s, u"me"_s));
    session.discardSent();
    session.probe.showTab(List);
    doubleClick(session, 0);
    QCOMPARE(session.probe.currentTabName(), u"#a"_s);
    QCOMPARE(session.window.focusWidget(), &session.probe.inputLine());
    QCOMPARE(session.probe.tabTexts(), (QStringList{Server, List, u"#a"_s}));
    QCOMPARE(session.readSent(), QStringList{u"JOIN #a"_s});
}

void TestChannelListMenu::doubleClickSetsUpTheTab()
{
    QSettings().setValue(u"chatBgColor"_s, u"#cfe8cf"_s);
    WindowSession session;
    QVERIFY(begin(session, {u"#a"_s}));
    doubleClick(session, 0);
    const QTextBrowser *view = session.probe.tabs().value(u"#a"_s).chatView;
    QCOMPARE(view->styleSheet(), session.probe.tabs().value(Server).chatView->styleSheet());
    QCOMPARE(view->palette().color(QPalette::Base), QColor(u"#cfe8cf"_s));
}

void TestChannelListMenu::doubleClickOutsideTheRowsDoesNothing()
{
    WindowSession session;
    QVERIFY(begin(session, {u"#a"_s}));
    emit session.probe.listTree()->itemDoubleClicked(nullptr, 0);
    QCOMPARE(session.readSent(), QStringList());
    QCOMPARE(session.probe.tabTexts(), (QStringList{Server, List}));
}

void TestChannelListMenu::doubleClickOnAnEmptyNameOpensNoTab()
{
    WindowSession session;
    QVERIFY(begin(session, {QString()}));
    doubleClick(session, 0);
    QCOMPARE(session.readSent(), QStringList{u"JOIN "_s});
    QCOMPARE(session.probe.tabTexts(), (QStringList{Server, List}));
    QCOMPARE(session.probe.currentTabName(), List);
}

void TestChannelListMenu::doubleClickDoesNothingWhileDisconnected()
{
    WindowSession session;
    QVERIFY(begin(session, {u"#a"_s}));
    session.server.close();
    QTRY_VERIFY_WITH_TIMEOUT(!session.probe.connection().isConnected(), WaitTimeout);
    const QStringList before = session.probe.lines(Server);
    doubleClick(session, 0);
    QCOMPARE(session.probe.tabTexts(), (QStringList{Server, List}));
    QCOMPARE(session.probe.lines(Server), before);
}

void TestChannelListMenu::doubleClickLeavesTheTopicEmpty()
{
    WindowSession session;
    QVERIFY(begin(session, {u"#a"_s, u"#b"_s}));
    doubleClick(session, 0);
    for (const QString &channel : {u"#a"_s, u"#b"_s}) {
        QVERIFY(session.join(channel, u"@me"_s));
        QVERIFY(session.receive(u":irc.test 332 me %1 :The topic"_s.arg(channel)));
        session.probe.showTab(List);
        session.probe.showTab(channel);
    }
    const QWidget *opened = session.probe.tabs().value(u"#a"_s).page;
    QCOMPARE(opened->findChild<QLabel *>(u"topicLabel"_s)->text(), QString());
    QVERIFY(opened->findChild<QPushButton *>(u"editTopicBtn"_s)->isHidden());
    const MainWindow::TabInfo joined = session.probe.tabs().value(u"#b"_s);
    QCOMPARE(joined.topicLabel->text(), u"The topic"_s);
    QCOMPARE(session.probe.lines(u"#a"_s), QStringList{u"me|joined #a"_s});
}

void TestChannelListMenu::doubleClickOpensUnusualNames_data()
{
    QTest::addColumn<QString>("channel");
    QTest::addColumn<QStringList>("tabs");

    QTest::newRow("another prefix") << u"&local"_s << QStringList{Server, List, u"&local"_s};
    QTest::newRow("the server tab's") << Server << QStringList{Server, List};
    QTest::newRow("the list's own") << List << QStringList{Server, List};
    QTest::newRow("markup") << u"#<b>x</b>"_s << QStringList{Server, List, u"#<b>x</b>"_s};
    QTest::newRow("another case") << u"#A"_s << QStringList{Server, List, u"#A"_s};
    const QString huge = u'#' + QString(10000, u'x');
    QTest::newRow("huge") << huge << QStringList{Server, List, huge};
}

void TestChannelListMenu::doubleClickOpensUnusualNames()
{
    QFETCH(const QString, channel);
    WindowSession session;
    QVERIFY(begin(session, {channel}));
    const int width = session.window.width();
    doubleClick(session, 0);
    QTEST(session.probe.tabTexts(), "tabs");
    QCOMPARE(session.probe.currentTabName(), channel);
    QCOMPARE(session.readSent(), QStringList{u"JOIN "_s + channel});
    QCOMPARE(session.window.width(), width);
}

QTEST_MAIN(TestChannelListMenu)
#include "tst_ChannelListMenu.moc"
