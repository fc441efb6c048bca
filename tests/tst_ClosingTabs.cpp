#include "HighlightTabBar.h"
#include "MyTabWidget.h"
#include "TemporaryStore.h"
#include "Waiting.h"
#include "WindowSession.h"

#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPointer>
#include <QPushButton>
#include <QTest>
#include <QTextBrowser>
#include <QTreeWidget>

using namespace Qt::StringLiterals;

namespace {

const auto Server = u"Server"_s;

} // namespace

class TestClosingTabs final : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void hasACloseButtonOnEveryTab();
    void coloursTheCurrentTabsButton();
    void keepsOneButtonPerTab();
    void closesATabByItsButton();
    void keepsTheServerTabWhenItsButtonIsClicked();
    void closesTheCurrentTabByItsButton();
    void closesTheTabToTheRightByAStaleButton();
    void renumbersItsButtonsWhenTheTabChanges();
    void closesNothingByAStaleButtonOfTheLastTab();
    void ignoresInvalidIndexes_data();
    void ignoresInvalidIndexes();
    void closesByRequestCloseTab();
    void partsAClosedChannel();
    void closesOnTabCloseRequested();
    void closesAChannelSilentlyWhileDisconnected();
    void unwatchesThePeerOfAClosedTab();
    void forgetsAWatchWhileDisconnected();
    void leavesOtherWatchesAlone();
    void clearsTheListWidgetPointers();
    void forgetsTheDraftAndTopicOfAClosedTab();
    void keepsThePageOfAClosedTab();
    void reopensWithAnEmptyHistory();
    void showsTheNextTabWhenTheCurrentOneCloses();
    void fallsBackToServerIfTheCurrentNameIsGone();
    void closesAllTabsByTheirButtons();
    void closesATabWithoutAName();

private:
    TemporaryStore store;
};

void TestClosingTabs::init()
{
    store.clear();
}

void TestClosingTabs::hasACloseButtonOnEveryTab()
{
    WindowSession session;
    session.probe.openTabs({u"#c"_s, u"bob"_s});
    for (int index = 0; index < 3; ++index) {
        const QPushButton *button = session.probe.closeButton(index);
        QVERIFY(button != nullptr);
        QCOMPARE(button->text(), u"\u00D7"_s);
        QCOMPARE(button->minimumSize(), QSize(20, 20));
        QCOMPARE(button->maximumSize(), QSize(20, 20));
        QVERIFY(button->isFlat());
        QCOMPARE(button->cursor().shape(), Qt::ArrowCursor);
        QVERIFY(button->isVisible());
    }
}

void TestClosingTabs::coloursTheCurrentTabsButton()
{
    const QString sheet =
            u"QPushButton {  background: transparent;  border: none;  font-size: 16px;  "
            "font-weight: bold;  color: %1;  padding: 0px;}QPushButton:hover {  background: "
            "rgba(0,0,0,0.1);  border-radius: 4px;}"_s;
    WindowSession session;
    session.probe.openTabs({u"#c"_s, u"bob"_s});
    for (const int current : {1, 2, 0}) {
        session.probe.clickTab(current);
        for (int index = 0; index < 3; ++index) {
            QCOMPARE(session.probe.closeButton(index)->styleSheet(),
                     sheet.arg(index == current ? u"#FFFFFF"_s : u"#999999"_s));
        }
    }
}

void TestClosingTabs::keepsOneButtonPerTab()
{
    WindowSession session;
    session.probe.openTabs({u"#c"_s});
    session.probe.openTabs({u"#d"_s}); // In the background.
    session.probe.clickTab(2);
    session.probe.clickTab(0);
    QTRY_COMPARE_WITH_TIMEOUT(session.probe.tabBar().findChildren<QPushButton *>().size(), 3,
                              WaitTimeout);
    session.probe.closeTab(1);
    QTRY_COMPARE_WITH_TIMEOUT(session.probe.tabBar().findChildren<QPushButton *>().size(), 2,
                              WaitTimeout);
}

void TestClosingTabs::closesATabByItsButton()
{
    WindowSession session;
    session.probe.openTabs({u"#c"_s, u"#d"_s});
    session.probe.closeButton(2)->click();
    QCOMPARE(session.probe.tabTexts(), (QStringList{Server, u"#c"_s}));
    QVERIFY(!session.probe.tabs().contains(u"#d"_s));
}

void TestClosingTabs::keepsTheServerTabWhenItsButtonIsClicked()
{
    WindowSession session;
    session.probe.openTabs({u"#c"_s});
    session.probe.closeButton(0)->click();
    QCOMPARE(session.probe.tabTexts(), (QStringList{Server, u"#c"_s}));
    session.probe.clickTab(0);
    session.probe.closeButton(0)->click();
    QCOMPARE(session.probe.tabTexts(), (QStringList{Server, u"#c"_s}));
}

void TestClosingTabs::closesTheCurrentTabByItsButton()
{
    WindowSession session;
    session.probe.openTabs({u"#c"_s, u"#d"_s});
    QCOMPARE(session.probe.tabWidget().currentIndex(), 1);
    QPushButton *button = session.probe.closeButton(1);
    QTest::mouseClick(button, Qt::LeftButton);
    QCOMPARE(session.probe.tabTexts(), (QStringList{Server, u"#d"_s}));
    QTRY_COMPARE_WITH_TIMEOUT(session.probe.tabBar().findChildren<QPushButton *>().size(), 2,
                              WaitTimeout);
}

void TestClosingTabs::closesTheTabToTheRightByAStaleButton()
{
    WindowSession session;
    session.probe.openTabs({u"#a"_s, u"#b"_s, u"#c"_s, u"#d"_s});
    QCOMPARE(session.probe.currentTabName(), u"#a"_s);
    const QPushButton *ofC = session.probe.closeButton(3);
    session.probe.closeTab(2);
    QCOMPARE(session.probe.tabTexts(), (QStringList{Server, u"#a"_s, u"#c"_s, u"#d"_s}));
    QCOMPARE(session.probe.closeButton(2), ofC);
    // Intended: its index is still 3, which is that of #d now.
    session.probe.closeButton(2)->click();
    QCOMPARE(session.probe.tabTexts(), (QStringList{Server, u"#a"_s, u"#c"_s}));
}

void TestClosingTabs::renumbersItsButtonsWhenTheTabChanges()
{
    WindowSession session;
    session.probe.openTabs({u"#a"_s, u"#b"_s, u"#c"_s});
    session.probe.closeTab(2);
    session.probe.clickTab(0);
    session.probe.closeButton(2)->click();
    QCOMPARE(session.probe.tabTexts(), (QStringList{Server, u"#a"_s}));
}

void TestClosingTabs::closesNothingByAStaleButtonOfTheLastTab()
{
    WindowSession session;
    session.probe.openTabs({u"#a"_s, u"#b"_s, u"#c"_s});
    session.probe.closeTab(2);
    session.probe.closeButton(2)->click();
    QCOMPARE(session.probe.tabTexts(), (QStringList{Server, u"#a"_s, u"#c"_s}));
    QVERIFY(session.probe.tabs().contains(u"#c"_s));
    QCOMPARE(session.probe.currentTabName(), u"#a"_s);
}

void TestClosingTabs::ignoresInvalidIndexes_data()
{
    QTest::addColumn<int>("index");

    QTest::newRow("negative") << -1;
    QTest::newRow("server") << 0;
    QTest::newRow("after the last") << 3;
    QTest::newRow("far after the last") << 1000;
}

void TestClosingTabs::ignoresInvalidIndexes()
{
    QFETCH(const int, index);
    WindowSession session;
    QVERIFY(session.registerAs(u"me"_s));
    session.probe.openTabs({u"#a"_s, QString()}); // Empty, like tabText() of an invalid index.
    session.discardSent();
    session.probe.showTab(QString());
    session.probe.closeTab(index);
    QCOMPARE(session.probe.tabTexts(), (QStringList{Server, u"#a"_s, QString()}));
    QCOMPARE(session.probe.tabs().size(), 3);
    QCOMPARE(session.probe.currentTabName(), QString());
    QVERIFY(!session.readSent().contains(u"WATCH -"_s));
}

void TestClosingTabs::closesByRequestCloseTab()
{
    WindowSession session;
    session.probe.openTabs({u"#a"_s, u"#b"_s});
    session.window.requestCloseTab(0);
    session.window.requestCloseTab(2);
    session.window.requestCloseTab(-1);
    QCOMPARE(session.probe.tabTexts(), (QStringList{Server, u"#a"_s}));
}

void TestClosingTabs::closesOnTabCloseRequested()
{
    WindowSession session;
    session.probe.openTabs({u"#a"_s, u"#b"_s});
    emit session.probe.tabWidget().tabCloseRequested(1);
    QCOMPARE(session.probe.tabTexts(), (QStringList{Server, u"#b"_s}));
}

void TestClosingTabs::partsAClosedChannel()
{
    WindowSession session;
    QVERIFY(session.registerAs(u"me"_s));
    QVERIFY(session.receive(u":me!u@h JOIN #c"_s));
    QVERIFY(session.server.waitForLine(u"NAMES #c"_s));
    session.discardSent();

    session.probe.closeTab(1);
    QVERIFY(session.server.waitForLine(u"PART #c :Leaving"_s));
    QCOMPARE(session.probe.lines(Server).count(u"*** You left #c"_s), 1);

    // The server's echo does not reopen the tab.
    QVERIFY(session.receive(u":me!u@h PART #c :Leaving"_s));
    QCOMPARE(session.probe.tabTexts(), QStringList{Server});
    QCOMPARE(session.readSent(), QStringList{u"PART #c :Leaving"_s});
}

void TestClosingTabs::closesAChannelSilentlyWhileDisconnected()
{
    WindowSession session;
    session.probe.openTabs({u"#c"_s});
    const QStringList before = session.probe.lines(Server);
    session.probe.closeTab(1);
    QCOMPARE(session.probe.tabTexts(), QStringList{Server});
    QCOMPARE(session.probe.lines(Server), before);
}

void TestClosingTabs::unwatchesThePeerOfAClosedTab()
{
    WindowSession session;
    QVERIFY(session.registerAs(u"me"_s));
    session.probe.openTabs({u"Bob"_s});
    QVERIFY(session.server.waitForLine(u"WATCH +Bob"_s));
    session.discardSent();
    QCOMPARE(session.probe.watchedNicks(), QSet<QString>{u"bob"_s});
    const QStringList before = session.probe.lines(Server);

    session.probe.closeTab(1);
    QCOMPARE(session.readSent(), QStringList{u"WATCH -Bob"_s});
    QVERIFY(session.probe.watchedNicks().isEmpty());
    QCOMPARE(session.probe.lines(Server), before);
}

void TestClosingTabs::forgetsAWatchWhileDisconnected()
{
    WindowSession session;
    session.probe.openTabs({u"Bob"_s});
    QCOMPARE(session.probe.watchedNicks(), QSet<QString>{u"bob"_s});
    const QStringList before = session.probe.lines(Server);
    session.probe.closeTab(1);
    QVERIFY(session.probe.watchedNicks().isEmpty());
    QCOMPARE(session.probe.lines(Server), before);

    QVERIFY(session.registerAs(u"me"_s));
    QCOMPARE(session.readSent(), QStringList());
    session.probe.openTabs({u"Bob"_s});
    QCOMPARE(session.readSent(), QStringList{u"WATCH +Bob"_s});
}

void TestClosingTabs::leavesOtherWatchesAlone()
{
    WindowSession session;
    QVERIFY(session.registerAs(u"me"_s));
    session.probe.openTabs({u"bob"_s, u"#c"_s});
    QVERIFY(session.server.waitForLine(u"WATCH +bob"_s));
    session.discardSent();
    session.probe.watchedNicks() = QSet<QString>{u"carol"_s, u"#c"_s};
    session.probe.closeTab(2);
    session.probe.closeTab(1);
    QCOMPARE(session.readSent(), QStringList{u"PART #c :Leaving"_s});
    QCOMPARE(session.probe.watchedNicks(), (QSet<QString>{u"carol"_s, u"#c"_s}));
}

void TestClosingTabs::clearsTheListWidgetPointers()
{
    WindowSession session;
    QTreeWidget tree;
    QLabel label;
    session.probe.openTabs({u"#c"_s});
    session.probe.addListTab();
    session.probe.listTree() = &tree;
    session.probe.listInfoLabel() = &label;
    session.probe.closeTab(1);
    QCOMPARE(session.probe.listTree(), &tree);
    session.probe.closeTab(1);
    QCOMPARE(session.probe.tabTexts(), QStringList{Server});
    QCOMPARE(session.probe.listTree(), nullptr);
    QCOMPARE(session.probe.listInfoLabel(), nullptr);
}

void TestClosingTabs::forgetsTheDraftAndTopicOfAClosedTab()
{
    WindowSession session;
    const MainWindowProbe &probe = session.probe;
    probe.openTabs({u"#c"_s, u"#d"_s});
    for (const QString &name : {u"#c"_s, u"#d"_s}) {
        probe.inputDrafts().insert(name, u"draft"_s);
        probe.channelTopics().insert(name, u"topic"_s);
        probe.channelUsers().insert(name, {u"alice"_s});
        probe.pendingNames().insert(name, {u"bob"_s});
    }
    probe.closeTab(2);
    QVERIFY(!probe.tabs().contains(u"#d"_s));
    QVERIFY(!probe.inputDrafts().contains(u"#d"_s));
    QVERIFY(!probe.channelTopics().contains(u"#d"_s));
    QCOMPARE(probe.channelUsers().value(u"#d"_s), QStringList{u"alice"_s});
    QCOMPARE(probe.pendingNames().value(u"#d"_s), QStringList{u"bob"_s});
    QVERIFY(probe.tabs().contains(u"#c"_s));
    QCOMPARE(probe.inputDrafts().value(u"#c"_s), u"draft"_s);
    QCOMPARE(probe.channelTopics().value(u"#c"_s), u"topic"_s);
}

void TestClosingTabs::keepsThePageOfAClosedTab()
{
    WindowSession session;
    session.probe.openTabs({u"#c"_s});
    const QPointer<QWidget> page = session.probe.tabs().value(u"#c"_s).page;
    const QPointer<QTextBrowser> view = session.probe.tabs().value(u"#c"_s).chatView;
    session.probe.closeTab(1);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(!page.isNull());
    QVERIFY(!page->isVisible());
    QVERIFY(view->toPlainText().contains(u"a line"_s));
    QVERIFY(session.window.isAncestorOf(page));
    session.destroyWindow();
    QVERIFY(page.isNull());
}

void TestClosingTabs::reopensWithAnEmptyHistory()
{
    WindowSession session;
    session.probe.appendMessageToTab(u"#c"_s, u"old"_s);
    const QWidget *page = session.probe.tabs().value(u"#c"_s).page;
    session.probe.closeTab(1);
    session.probe.appendMessageToTab(u"#c"_s, u"new"_s);
    QVERIFY(session.probe.tabs().value(u"#c"_s).page != page);
    QCOMPARE(session.probe.lines(u"#c"_s), QStringList{u"|new"_s});
}

void TestClosingTabs::showsTheNextTabWhenTheCurrentOneCloses()
{
    WindowSession session;
    session.probe.openTabs({u"#c"_s, u"#d"_s});
    session.probe.channelUsers().insert(u"#d"_s, {u"alice"_s});
    session.probe.inputDrafts().insert(u"#d"_s, u"draft of d"_s);
    session.probe.closeTab(1);
    const QString current =
            session.probe.tabWidget().tabText(session.probe.tabWidget().currentIndex());
    QCOMPARE(session.probe.currentTabName(), current);
    QCOMPARE(current, u"#d"_s);
    QVERIFY(session.probe.userListShown());
    QCOMPARE(session.probe.users(), QStringList{u"alice"_s});
    QCOMPARE(session.probe.inputLine().text(), u"draft of d"_s);
}

void TestClosingTabs::fallsBackToServerIfTheCurrentNameIsGone()
{
    // Two tabs have one name after a nick change to the nick of another open conversation.
    WindowSession session;
    QVERIFY(session.registerAs(u"me"_s));
    session.probe.openTabs({u"alice"_s, u"bob"_s, u"#c"_s});
    session.probe.showTab(u"alice"_s);
    QVERIFY(session.receive(u":bob!u@h NICK alice"_s));
    QCOMPARE(session.probe.tabTexts(), (QStringList{Server, u"alice"_s, u"alice"_s, u"#c"_s}));
    QCOMPARE(session.probe.currentTabName(), u"alice"_s);
    QVERIFY(session.probe.emojiButton().isVisible());

    session.probe.closeTab(2);
    QCOMPARE(session.probe.tabWidget().currentIndex(), 1);
    QCOMPARE(session.probe.currentTabName(), Server);
    QVERIFY(!session.probe.userListShown());
    QVERIFY(!session.probe.userList().isVisible());
    QVERIFY(!session.probe.emojiButton().isVisible());
}

void TestClosingTabs::closesAllTabsByTheirButtons()
{
    WindowSession session;
    QVERIFY(session.registerAs(u"me"_s));
    session.probe.openTabs({u"#a"_s, u"bob"_s, u"#b"_s, QString(), u"#c"_s});
    while (session.probe.tabWidget().count() > 1) {
        const int last = session.probe.tabWidget().count() - 1;
        session.probe.clickTab(last);
        QTest::mouseClick(session.probe.closeButton(last), Qt::LeftButton);
        QCOMPARE(session.probe.tabWidget().count(), last);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    QCOMPARE(session.probe.tabs().keys(), QStringList{Server});
    QCOMPARE(session.probe.currentTabName(), Server);
    QVERIFY(session.server.waitForLine(u"PART #a :Leaving"_s));
}

void TestClosingTabs::closesATabWithoutAName()
{
    WindowSession session;
    QVERIFY(session.registerAs(u"me"_s));
    QVERIFY(session.receive(u":me!u@h JOIN :#x"_s));
    session.probe.inputLine().setText(u"half"_s);
    session.probe.closeButton(1)->click();
    QCOMPARE(session.probe.tabTexts(), QStringList{Server});
    QCOMPARE(session.probe.currentTabName(), Server);
    QCOMPARE(session.probe.tabs().keys(), QStringList{Server});
    QCOMPARE(session.probe.inputLine().text(), QString());
}

QTEST_MAIN(TestClosingTabs)
#include "tst_ClosingTabs.moc"
