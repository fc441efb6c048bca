#include "HighlightTabBar.h"
#include "IRCConnection.h"
#include "Interruptions.h"
#include "ModalAnswers.h"
#include "TemporaryStore.h"
#include "WindowSession.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QMenu>
#include <QSettings>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

const auto Server = u"Server"_s;

void requestContextMenu(const MainWindowProbe &probe, int index)
{
    const QPoint pos = index < 0 ? QPoint(-10, -10) : probe.tabBar().tabRect(index).center();
    emit probe.tabBar().customContextMenuRequested(pos);
}

} // namespace

class TestTabMenu final : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void showsNoTabMenu_data();
    void showsNoTabMenu();
    void showsTheTabMenu_data();
    void showsTheTabMenu();
    void opensTheTabMenuAtThePointer();
    void opensTheCurrentTabsMenuByKey_data();
    void opensTheCurrentTabsMenuByKey();
    void closesFromTheTabMenu();
    void doesNothingIfTheTabMenuIsDismissed();
    void togglesAutojoinFromTheTabMenu();
    void offersAutojoinOnPrivateTabs();
    void survivesATabThatClosesDuringItsMenu();
    void survivesADisconnectDuringTheMenu();
    void survivesANickChangeDuringTheMenu();

private:
    TemporaryStore store;
};

void TestTabMenu::init()
{
    store.clear();
}

void TestTabMenu::showsNoTabMenu_data()
{
    QTest::addColumn<int>("index");

    QTest::newRow("beside the tabs") << -1;
    QTest::newRow("server") << 0;
    QTest::newRow("list") << 1;
}

void TestTabMenu::showsNoTabMenu()
{
    QFETCH(const int, index);
    WindowSession session;
    session.probe.addListTab();
    const ModalAnswers answers;
    requestContextMenu(session.probe, index);
    QCoreApplication::processEvents();
    QCOMPARE(answers.problems(), QStringList());
    QCOMPARE(session.probe.tabTexts(), (QStringList{Server, u"List"_s}));
}

void TestTabMenu::showsTheTabMenu_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("isChecked");

    QTest::newRow("channel") << u"#c"_s << false;
    QTest::newRow("autojoined channel") << u"#auto"_s << true;
    QTest::newRow("in another case") << u"#Auto"_s << false;
    QTest::newRow("private") << u"bob"_s << false;
    QTest::newRow("private in the autojoin list") << u"carol"_s << true;
}

void TestTabMenu::showsTheTabMenu()
{
    QFETCH(const QString, name);
    WindowSession session;
    session.probe.openTabs({name});
    session.probe.autojoinChannels() = QStringList{u"#auto"_s, u"carol"_s};
    ModalAnswers answers;
    QStringList texts;
    bool isCheckable = false;
    bool closeIsCheckable = true;
    bool isChecked = false;
    answers.queueForMenu([&](QMenu *menu) {
        const QList<QAction *> actions = menu->actions();
        texts = ModalAnswers::entriesOf(*menu);
        closeIsCheckable = actions.first()->isCheckable();
        isCheckable = actions.last()->isCheckable();
        isChecked = actions.last()->isChecked();
        menu->close();
    });
    requestContextMenu(session.probe, 1);
    QCOMPARE(answers.problems(), QStringList());
    QCOMPARE(texts, (QStringList{u"Close"_s, u"Autojoin on connect"_s}));
    QVERIFY(!closeIsCheckable);
    QVERIFY(isCheckable);
    QTEST(isChecked, "isChecked");
}

void TestTabMenu::opensTheTabMenuAtThePointer()
{
    WindowSession session;
    session.probe.openTabs({u"#c"_s});
    ModalAnswers answers;
    QPoint pos;
    answers.queueForMenu([&pos](QMenu *menu) {
        pos = menu->pos();
        menu->close();
    });
    requestContextMenu(session.probe, 1);
    QCOMPARE(pos, session.probe.tabBar().mapToGlobal(session.probe.tabBar().tabRect(1).center()));
}

void TestTabMenu::opensTheCurrentTabsMenuByKey_data()
{
    QTest::addColumn<QString>("current");

    QTest::newRow("first") << u"#a"_s;
    QTest::newRow("in the middle") << u"bob"_s;
    QTest::newRow("last") << u"#c"_s;
}

void TestTabMenu::opensTheCurrentTabsMenuByKey()
{
    QFETCH(const QString, current);
    WindowSession session;
    session.probe.openTabs({u"#a"_s, u"bob"_s, u"#c"_s});
    session.probe.showTab(current);
    HighlightTabBar &bar = session.probe.tabBar();
    const QRect tab = bar.tabRect(bar.currentIndex());

    ModalAnswers answers;
    QPoint pos;
    answers.queueForMenu([&](QMenu *menu) {
        pos = bar.mapFromGlobal(menu->pos());
        ModalAnswers::choosing(u"Close"_s)(menu);
    });
    // Qt sends the event at the middle of the bar.
    QContextMenuEvent event(QContextMenuEvent::Keyboard, bar.rect().center(),
                            bar.mapToGlobal(bar.rect().center()));
    QApplication::sendEvent(&bar, &event);
    QCOMPARE(answers.problems(), QStringList());
    QVERIFY(tab.contains(pos));
    QVERIFY(!session.probe.tabTexts().contains(current));
    QCOMPARE(session.probe.tabTexts().size(), 3);
}

void TestTabMenu::closesFromTheTabMenu()
{
    WindowSession session;
    session.probe.openTabs({u"#c"_s, u"#d"_s});
    ModalAnswers answers;
    answers.queueForMenu(ModalAnswers::choosing(u"Close"_s));
    requestContextMenu(session.probe, 2);
    QCOMPARE(answers.problems(), QStringList());
    QCOMPARE(session.probe.tabTexts(), (QStringList{Server, u"#c"_s}));
}

void TestTabMenu::doesNothingIfTheTabMenuIsDismissed()
{
    WindowSession session;
    session.probe.openTabs({u"#c"_s});
    session.probe.currentServerId() = u"irc.test_6667"_s;
    ModalAnswers answers;
    answers.queueForMenu([](QMenu *menu) { QTest::keyClick(menu, Qt::Key_Escape); });
    requestContextMenu(session.probe, 1);
    QCOMPARE(answers.problems(), QStringList());
    QCOMPARE(session.probe.tabTexts(), (QStringList{Server, u"#c"_s}));
    QVERIFY(session.probe.autojoinChannels().isEmpty());
    QVERIFY(session.probe.lines(Server).isEmpty());
}

void TestTabMenu::togglesAutojoinFromTheTabMenu()
{
    WindowSession session;
    session.probe.openTabs({u"#c"_s});
    session.probe.currentServerId() = u"irc.test_6667"_s;
    ModalAnswers answers;
    answers.queueForMenu(ModalAnswers::choosing(u"Autojoin on connect"_s));
    requestContextMenu(session.probe, 1);
    QCOMPARE(session.probe.autojoinChannels(), QStringList{u"#c"_s});
    QCOMPARE(QSettings().value(u"servers/irc.test_6667/autojoin"_s).toStringList(),
             QStringList{u"#c"_s});
    answers.queueForMenu(ModalAnswers::choosing(u"Autojoin on connect"_s));
    requestContextMenu(session.probe, 1);
    QVERIFY(session.probe.autojoinChannels().isEmpty());
    QCOMPARE(answers.problems(), QStringList());
    QCOMPARE(session.probe.lines(Server), (QStringList{u"*** Added #c to autojoin list"_s,
                                                       u"*** Removed #c from autojoin list"_s}));
    QCOMPARE(session.probe.tabTexts(), (QStringList{Server, u"#c"_s}));
}

void TestTabMenu::offersAutojoinOnPrivateTabs()
{
    WindowSession session;
    session.probe.openTabs({u"bob"_s});
    session.probe.currentServerId() = u"irc.test_6667"_s;
    ModalAnswers answers;
    answers.queueForMenu(ModalAnswers::choosing(u"Autojoin on connect"_s));
    requestContextMenu(session.probe, 1);
    QCOMPARE(answers.problems(), QStringList());
    QCOMPARE(session.probe.lines(Server), QStringList{u"*** Added #bob to autojoin list"_s});
}

void TestTabMenu::survivesATabThatClosesDuringItsMenu()
{
    WindowSession session;
    session.probe.openTabs({u"#c"_s, u"#d"_s});
    ModalAnswers answers;
    answers.queueForMenu([&session](QMenu *menu) {
        session.probe.closeTab(2);
        ModalAnswers::choosing(u"Close"_s)(menu);
    });
    requestContextMenu(session.probe, 2);
    QCOMPARE(answers.problems(), QStringList());
    // The entry closes by index, which no tab has any more.
    QCOMPARE(session.probe.tabTexts(), (QStringList{Server, u"#c"_s}));
}

void TestTabMenu::survivesADisconnectDuringTheMenu()
{
    WindowSession session;
    QVERIFY(session.registerAs(u"me"_s));
    QVERIFY(session.receive(u":me!u@h JOIN #c"_s));
    ModalAnswers answers;
    bool dropped = false;
    answers.queueForMenu([&](QMenu *menu) {
        session.server.sendBytes(":a!u@h PRIVMSG #c :last words\r\n"_ba);
        dropped = Interruptions::dropLink(session);
        ModalAnswers::choosing(u"Close"_s)(menu);
    });
    requestContextMenu(session.probe, 1);
    QCOMPARE(answers.problems(), QStringList());
    QVERIFY(dropped);
    QCOMPARE(session.probe.tabTexts(), QStringList{Server});
    QVERIFY(session.probe.lines(Server).contains(u"*** Disconnected."_s));
    QVERIFY(!session.probe.lines(Server).contains(u"*** You left #c"_s));
}

void TestTabMenu::survivesANickChangeDuringTheMenu()
{
    WindowSession session;
    QVERIFY(session.registerAs(u"me"_s));
    QVERIFY(session.receive(u":bob!u@h PRIVMSG me :hello"_s));
    ModalAnswers answers;
    bool received = false;
    answers.queueForMenu([&](QMenu *menu) {
        received = session.receive(u":bob!u@h NICK rob"_s);
        ModalAnswers::choosing(u"Close"_s)(menu);
    });
    requestContextMenu(session.probe, 1);
    QCOMPARE(answers.problems(), QStringList());
    QVERIFY(received);
    QCOMPARE(session.probe.tabTexts(), QStringList{Server});
    QCOMPARE(session.probe.tabs().keys(), QStringList{Server});
    // The old nick stays watched, though no tab has it any more.
    QCOMPARE(session.probe.watchedNicks(), QSet<QString>{u"bob"_s});
}

QTEST_MAIN(TestTabMenu)
#include "tst_TabMenu.moc"
