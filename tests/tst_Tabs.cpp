#include "ChannelPage.h"
#include "HighlightTabBar.h"
#include "IRCConnection.h"
#include "ModalAnswers.h"
#include "MyTabWidget.h"
#include "TemporaryStore.h"
#include "WindowSession.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QPointer>
#include <QPushButton>
#include <QSettings>
#include <QSignalSpy>
#include <QSplitter>
#include <QStackedWidget>
#include <QTest>
#include <QTextBrowser>
#include <QTreeWidget>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

const auto Server = u"Server"_s;

// Opens tabs in this order behind whatever is on show, as a line for each of them does.
void openTabs(const MainWindowProbe &probe, const QStringList &names)
{
    for (const QString &name : names)
        probe.appendMessageToTab(name, u"a line"_s);
}

// Adds a tab that no line can open, as the channel listing does.
void addListTab(const MainWindowProbe &probe)
{
    auto *page = new QWidget;
    MainWindow::TabInfo info;
    info.page = page;
    probe.tabs().insert(u"List"_s, info);
    probe.tabWidget().addTab(page, u"List"_s);
}

void clickTab(const MainWindowProbe &probe, int index)
{
    QTest::mouseClick(&probe.tabBar(), Qt::LeftButton, {}, probe.tabBar().tabRect(index).center());
}

void requestContextMenu(const MainWindowProbe &probe, int index)
{
    const QPoint place = index < 0 ? QPoint(-10, -10) : probe.tabBar().tabRect(index).center();
    emit probe.tabBar().customContextMenuRequested(place);
}

// Chooses the entry with this text.
std::function<void(QMenu *)> choose(const QString &text)
{
    return [text](QMenu *menu) {
        const QList<QAction *> actions = menu->actions();
        for (QAction *action : actions) {
            if (action->text() == text) {
                menu->setActiveAction(action);
                QTest::keyClick(menu, Qt::Key_Return);
            }
        }
    };
}

} // namespace

class TestTabs final : public QObject
{
    Q_OBJECT

private slots:
    void init();

    // Pages
    void buildsAPageWithoutABar();
    void buildsAPageWithATopicBar();
    void buildsTheTopicLabel();
    void buildsTheEditButton();
    void drawsAPencil();
    void buildsTheConversationView();
    void showsNoMenuOnAConversation();

    // Kinds
    void tellsTheKindByTheName_data();
    void tellsTheKindByTheName();
    void keepsNamesThatDifferInCaseApart();
    void namesTabsByTheirKeys();
    void findsPrivateTabs_data();
    void findsPrivateTabs();
    void findsTheFirstPrivateTabInKeyOrder();

    // The shown tab
    void ignoresANegativeIndex();
    void keepsAHalfTypedLineWithItsTab();
    void losesAHalfTypedLineWithItsTab();
    void keepsNoDraftWithoutAShownTab();
    void takesTheHighlightOffTheShownTab();
    void showsTheUsersInTheStoredOrder();
    void clearsTheUserListOnOtherTabs();
    void showsTheTopicOfTheShownChannel();
    void bringsTheTopicBarBack();
    void marksTheOwnUserOnTheShownChannel();
    void showsTheSearchFieldOnTheListTab();
    void setsTheRatioOnceTheLayoutHasSettled();
    void fillsTheUserListAgainAfterADisconnect();

    // Close buttons
    void drawsACloseButtonOnEveryTab();
    void coloursTheShownTabsButton();
    void replacesItsButtonsAtEachChange();
    void closesByTheTabsButton();
    void leavesTheServerTabToItsButton();
    void closesTheShownTabByItsOwnButton();
    void keepsStaleIndexesAfterAClose();
    void closesTheTabToTheRightByAStaleButton();
    void closesNothingByTheLastStaleButton();

    // Closing
    void ignoresIndexesThatNoTabHolds_data();
    void ignoresIndexesThatNoTabHolds();
    void closesFromOutside();
    void partsAChannelThatIsClosed();
    void closesAChannelSilentlyWhileDisconnected();
    void unwatchesAPrivateTabThatIsClosed();
    void unwatchesNobodyElse();
    void forgetsTheListsWidgets();
    void forgetsWhatBelongsToTheTab();
    void keepsThePageOfAClosedTab();
    void reopensWithAnEmptyHistory();
    void movesOnWhenTheShownTabIsClosed();
    void fallsBackToServerIfTheShownNameIsGone();
    void removesNoTabOnADisconnect();
    void closesAllTabsFromWithinTheirButtons();

    // The context menu
    void showsNoTabMenu_data();
    void showsNoTabMenu();
    void showsTheTabMenu_data();
    void showsTheTabMenu();
    void placesTheTabMenuAtThePointer();
    void closesFromTheTabMenu();
    void doesNothingIfTheTabMenuIsDismissed();
    void togglesAutojoinFromTheTabMenu();
    void offersAutojoinOnPrivateTabs();
    void survivesATabThatVanishesUnderItsMenu();
    void survivesALinkThatDropsUnderTheMenu();
    void survivesARenameUnderTheMenu();

    // A channel without a name
    void opensATabWithoutAName();
    void closesATabWithoutAName();

private:
    TemporaryStore store;
};

void TestTabs::init()
{
    store.clear();
}

// ---------------------------------------------------------------------------------------------
// Pages

void TestTabs::buildsAPageWithoutABar()
{
    const std::unique_ptr<QWidget> page(ChannelPage::create(false));
    QCOMPARE(page->parentWidget(), nullptr);
    const auto *layout = qobject_cast<QVBoxLayout *>(page->layout());
    QVERIFY(layout != nullptr);
    QCOMPARE(layout->contentsMargins(), QMargins());
    QCOMPARE(layout->spacing(), 0);
    QCOMPARE(layout->count(), 1);
    QCOMPARE(layout->itemAt(0)->widget(), page->findChild<QTextBrowser *>());
    QCOMPARE(layout->stretch(0), 1);
    QCOMPARE(page->findChild<QWidget *>(u"topicBar"_s), nullptr);
}

void TestTabs::buildsAPageWithATopicBar()
{
    const std::unique_ptr<QWidget> page(ChannelPage::create(true));
    QCOMPARE(page->parentWidget(), nullptr);
    const auto *layout = qobject_cast<QVBoxLayout *>(page->layout());
    QVERIFY(layout != nullptr);
    QCOMPARE(layout->count(), 2);
    QWidget *bar = layout->itemAt(0)->widget();
    QCOMPARE(bar->objectName(), u"topicBar"_s);
    QCOMPARE(layout->stretch(0), 0);
    QCOMPARE(layout->itemAt(1)->widget(), page->findChild<QTextBrowser *>());
    QCOMPARE(layout->stretch(1), 1);

    QVERIFY(!bar->isHidden());
    QCOMPARE(bar->sizePolicy().horizontalPolicy(), QSizePolicy::Expanding);
    QCOMPARE(bar->sizePolicy().verticalPolicy(), QSizePolicy::Preferred);
    const auto *barLayout = qobject_cast<QHBoxLayout *>(bar->layout());
    QVERIFY(barLayout != nullptr);
    QCOMPARE(barLayout->contentsMargins(), QMargins(4, 2, 4, 2));
    QCOMPARE(barLayout->spacing(), 4);
    QCOMPARE(barLayout->count(), 2);
    QCOMPARE(barLayout->itemAt(0)->widget()->objectName(), u"topicLabel"_s);
    QCOMPARE(barLayout->stretch(0), 1);
    QCOMPARE(barLayout->itemAt(1)->widget()->objectName(), u"editTopicBtn"_s);
    QCOMPARE(barLayout->stretch(1), 0);
}

void TestTabs::buildsTheTopicLabel()
{
    const std::unique_ptr<QWidget> page(ChannelPage::create(true));
    const auto *label = page->findChild<QLabel *>(u"topicLabel"_s);
    QVERIFY(label != nullptr);
    QCOMPARE(label->text(), QString());
    QCOMPARE(label->textFormat(), Qt::RichText);
    QCOMPARE(label->textInteractionFlags(), Qt::TextSelectableByMouse | Qt::LinksAccessibleByMouse);
    QVERIFY(label->wordWrap());
    QVERIFY(label->openExternalLinks());
    QCOMPARE(label->sizePolicy().horizontalPolicy(), QSizePolicy::Expanding);
    QCOMPARE(label->sizePolicy().verticalPolicy(), QSizePolicy::Preferred);
}

void TestTabs::buildsTheEditButton()
{
    const std::unique_ptr<QWidget> page(ChannelPage::create(true));
    const auto *button = page->findChild<QPushButton *>(u"editTopicBtn"_s);
    QVERIFY(button != nullptr);
    QCOMPARE(button->minimumSize(), QSize(24, 24));
    QCOMPARE(button->maximumSize(), QSize(24, 24));
    QCOMPARE(button->toolTip(), u"Edit topic"_s);
    QVERIFY(button->isHidden());
    QCOMPARE(button->styleSheet(), u"QPushButton { border: none; }QPushButton:hover { background: "
                                   "rgba(128,128,128,0.2); border-radius: 4px; }"_s);
    QCOMPARE(button->iconSize(), QSize(24, 24));
}

void TestTabs::drawsAPencil()
{
    const std::unique_ptr<QWidget> page(ChannelPage::create(true));
    const auto *button = page->findChild<QPushButton *>(u"editTopicBtn"_s);
    QCOMPARE(button->icon().availableSizes(), QList<QSize>{QSize(24, 24)});
    const QImage image = button->icon().pixmap(24, 24).toImage();
    QCOMPARE(image.size(), QSize(24, 24));
    int drawn = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            drawn += qAlpha(image.pixel(x, y)) > 128 ? 1 : 0;
    }
    // Some of it is pencil, and most of it is what lies behind.
    QVERIFY(drawn > 24);
    QVERIFY(drawn < 24 * 24 / 2);
    QCOMPARE(qAlpha(image.pixel(0, 0)), 0);
}

void TestTabs::buildsTheConversationView()
{
    const std::unique_ptr<QWidget> page(ChannelPage::create(false));
    const auto *view = page->findChild<QTextBrowser *>();
    QVERIFY(view != nullptr);
    QCOMPARE(view->palette().color(QPalette::Base), QColor(Qt::white));
    QCOMPARE(view->palette().color(QPalette::Window), QColor(Qt::white));
    QVERIFY(view->autoFillBackground());
    QVERIFY(view->isReadOnly());
    QVERIFY(view->openExternalLinks());
    QCOMPARE(view->contextMenuPolicy(), Qt::CustomContextMenu);
}

void TestTabs::showsNoMenuOnAConversation()
{
    WindowSession session;
    openTabs(session.probe, {u"#c"_s});
    const ModalAnswers answers;
    QTextBrowser *view = session.probe.tabs().value(u"#c"_s).chatView;
    QSignalSpy asked(view, &QWidget::customContextMenuRequested);
    for (QWidget *target : {static_cast<QWidget *>(view), view->viewport()}) {
        const QPoint middle = target->rect().center();
        QContextMenuEvent event(QContextMenuEvent::Mouse, middle, target->mapToGlobal(middle));
        QApplication::sendEvent(target, &event);
    }
    QCoreApplication::processEvents();
    QVERIFY(!asked.isEmpty());
    QCOMPARE(QApplication::activePopupWidget(), nullptr);
    QCOMPARE(answers.problems(), QStringList());
}

// ---------------------------------------------------------------------------------------------
// Kinds

void TestTabs::tellsTheKindByTheName_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("peerNick");
    QTest::addColumn<bool>("isChannel");
    QTest::addColumn<bool>("hasEmoji");
    QTest::addColumn<QString>("placeholder");

    const QString message = u"Type a message..."_s;
    QTest::newRow("server") << Server << QString() << false << false << u"Type a command..."_s;
    QTest::newRow("list") << u"List"_s << QString() << false << false << message;
    QTest::newRow("channel") << u"#c"_s << QString() << true << true << message;
    QTest::newRow("mark alone") << u"#"_s << QString() << true << true << message;
    QTest::newRow("two marks") << u"##c"_s << QString() << true << true << message;
    QTest::newRow("private") << u"bob"_s << u"bob"_s << false << true << message;
    QTest::newRow("mark later on") << u"a#c"_s << u"a#c"_s << false << true << message;
    QTest::newRow("local channel") << u"&c"_s << u"&c"_s << false << true << message;
    QTest::newRow("server in lower case") << u"server"_s << u"server"_s << false << true << message;
    QTest::newRow("list in upper case") << u"LIST"_s << u"LIST"_s << false << true << message;
}

void TestTabs::tellsTheKindByTheName()
{
    QFETCH(const QString, name);
    QFETCH(const bool, isChannel);
    WindowSession session;
    const MainWindowProbe &probe = session.probe;
    if (name == "List"_L1)
        addListTab(probe);
    else
        openTabs(probe, {name});
    openTabs(probe, {u"zoe"_s});
    probe.showTab(u"zoe"_s);
    probe.showTab(name);

    QCOMPARE(probe.currentTabName(), name);
    const MainWindow::TabInfo tab = probe.tabs().value(name);
    QTEST(tab.peerNick, "peerNick");
    QCOMPARE(probe.userList().isVisible(), isChannel);
    QCOMPARE(probe.userListShown(), isChannel);
    QCOMPARE(tab.topicBar != nullptr, isChannel);
    QCOMPARE(tab.topicLabel != nullptr, isChannel);
    QCOMPARE(tab.editTopicBtn != nullptr, isChannel);
    QTEST(probe.emojiButton().isVisibleTo(&session.window), "hasEmoji");
    QTEST(probe.inputLine().placeholderText(), "placeholder");

    const int index = probe.tabWidget().currentIndex();
    probe.closeTab(index);
    QCOMPARE(probe.tabTexts().contains(name), name == Server);
    QCOMPARE(probe.tabs().contains(name), name == Server);
}

void TestTabs::keepsNamesThatDifferInCaseApart()
{
    WindowSession session;
    session.probe.appendMessageToTab(u"#x"_s, u"small"_s);
    session.probe.appendMessageToTab(u"#X"_s, u"large"_s);
    QCOMPARE(session.probe.tabTexts(), (QStringList{Server, u"#x"_s, u"#X"_s}));
    QCOMPARE(session.probe.lines(u"#x"_s), QStringList{u"|small"_s});
    QCOMPARE(session.probe.lines(u"#X"_s), QStringList{u"|large"_s});
}

void TestTabs::namesTabsByTheirKeys()
{
    WindowSession session;
    const QStringList names{u"#b"_s, u"bob"_s, u"#a"_s};
    openTabs(session.probe, names);
    for (qsizetype i = 0; i < names.size(); ++i) {
        const int index = static_cast<int>(i) + 1;
        QCOMPARE(session.probe.tabWidget().tabText(index), names.at(i));
        QCOMPARE(session.probe.tabWidget().tabToolTip(index), names.at(i));
        QCOMPARE(session.probe.tabs().value(names.at(i)).page,
                 session.probe.tabWidget().widget(index));
    }
    QCOMPARE(session.probe.tabs().keys(), (QStringList{u"#a"_s, u"#b"_s, Server, u"bob"_s}));
}

void TestTabs::findsPrivateTabs_data()
{
    QTest::addColumn<QString>("nick");
    QTest::addColumn<QString>("key");

    QTest::newRow("as it stands") << u"bob"_s << u"bob"_s;
    QTest::newRow("in another case") << u"BOB"_s << u"bob"_s;
    QTest::newRow("stranger") << u"carol"_s << QString();
    QTest::newRow("part of a name") << u"bo"_s << QString();
    QTest::newRow("channel") << u"#c"_s << QString();
    QTest::newRow("server") << u"Server"_s << QString();
    QTest::newRow("server in lower case") << u"server"_s << QString();
    QTest::newRow("list") << u"list"_s << QString();
    QTest::newRow("by its peer") << u"Peer"_s << u"key"_s;
    QTest::newRow("not by the key of a tab with a peer") << u"key"_s << QString();
    QTest::newRow("by the key of a tab without a peer") << u"NOPEER"_s << u"nopeer"_s;
}

void TestTabs::findsPrivateTabs()
{
    QFETCH(const QString, nick);
    WindowSession session;
    addListTab(session.probe);
    openTabs(session.probe, {u"#c"_s, u"bob"_s, u"key"_s, u"nopeer"_s});
    session.probe.tabs()[u"key"_s].peerNick = u"peer"_s;
    session.probe.tabs()[u"nopeer"_s].peerNick.clear();
    QTEST(session.probe.findPrivateChatTab(nick), "key");
}

void TestTabs::findsTheFirstPrivateTabInKeyOrder()
{
    WindowSession session;
    openTabs(session.probe, {u"bob"_s, u"BOB"_s});
    QCOMPARE(session.probe.findPrivateChatTab(u"bob"_s), u"BOB"_s);
}

// ---------------------------------------------------------------------------------------------
// The shown tab

void TestTabs::ignoresANegativeIndex()
{
    WindowSession session;
    openTabs(session.probe, {u"#c"_s});
    session.probe.inputLine().setText(u"half"_s);
    QVERIFY(QMetaObject::invokeMethod(&session.window, "onTabChanged", Q_ARG(int, -1)));
    QCOMPARE(session.probe.currentTabName(), u"#c"_s);
    QCOMPARE(session.probe.inputLine().text(), u"half"_s);
    QVERIFY(!session.probe.inputDrafts().contains(u"#c"_s));
}

void TestTabs::keepsAHalfTypedLineWithItsTab()
{
    WindowSession session;
    openTabs(session.probe, {u"#c"_s, u"bob"_s});
    session.probe.inputLine().setText(u"to the channel"_s);
    clickTab(session.probe, 2);
    QCOMPARE(session.probe.inputLine().text(), QString());
    session.probe.inputLine().setText(u"to bob"_s);
    clickTab(session.probe, 1);
    QCOMPARE(session.probe.inputLine().text(), u"to the channel"_s);
    clickTab(session.probe, 0);
    QCOMPARE(session.probe.inputLine().text(), QString());
    clickTab(session.probe, 2);
    QCOMPARE(session.probe.inputLine().text(), u"to bob"_s);
}

void TestTabs::losesAHalfTypedLineWithItsTab()
{
    WindowSession session;
    openTabs(session.probe, {u"#c"_s});
    session.probe.inputLine().setText(u"half"_s);
    session.probe.closeTab(1);
    QCOMPARE(session.probe.currentTabName(), Server);
    QCOMPARE(session.probe.inputLine().text(), QString());
    QVERIFY(!session.probe.inputDrafts().contains(u"#c"_s));
    openTabs(session.probe, {u"#c"_s});
    session.probe.showTab(u"#c"_s);
    QCOMPARE(session.probe.inputLine().text(), QString());
}

void TestTabs::keepsNoDraftWithoutAShownTab()
{
    WindowSession session;
    openTabs(session.probe, {u"#c"_s});
    session.probe.inputDrafts().clear();
    session.probe.currentTabName().clear();
    session.probe.inputLine().setText(u"half"_s);
    session.probe.showTab(Server);
    QCOMPARE(session.probe.inputDrafts(), (QMap<QString, QString>()));
}

void TestTabs::takesTheHighlightOffTheShownTab()
{
    WindowSession session;
    const MainWindowProbe &probe = session.probe;
    openTabs(probe, {u"#c"_s, u"#d"_s, u"#e"_s});
    for (const int index : {2, 3})
        probe.tabBar().highlightTab(index);
    probe.tabs()[u"#d"_s].highlighted = true;
    probe.tabs()[u"#e"_s].highlighted = true;
    clickTab(probe, 2);
    QVERIFY(!probe.tabs().value(u"#d"_s).highlighted);
    QVERIFY(!probe.tabBar().isHighlighted(2));
    QVERIFY(probe.tabs().value(u"#e"_s).highlighted);
    QVERIFY(probe.tabBar().isHighlighted(3));

    // The mark of the bar goes with the mark of the record only.
    probe.tabs()[u"#e"_s].highlighted = false;
    clickTab(probe, 3);
    QVERIFY(probe.tabBar().isHighlighted(3));
}

void TestTabs::showsTheUsersInTheStoredOrder()
{
    WindowSession session;
    openTabs(session.probe, {u"#c"_s, u"#d"_s});
    const QStringList users{u"zoe"_s, u"@alice"_s, u"+bob"_s, u"~owner"_s};
    session.probe.channelUsers().insert(u"#d"_s, users);
    clickTab(session.probe, 2);
    QCOMPARE(session.probe.users(), users);
}

void TestTabs::clearsTheUserListOnOtherTabs()
{
    WindowSession session;
    openTabs(session.probe, {u"#c"_s, u"#d"_s, u"bob"_s});
    session.probe.channelUsers().insert(u"#c"_s, {u"alice"_s});
    session.probe.channelUsers().insert(u"bob"_s, {u"nobody"_s});
    clickTab(session.probe, 0);
    for (const int other : {2, 3, 0}) {
        clickTab(session.probe, 1);
        QCOMPARE(session.probe.users(), QStringList{u"alice"_s});
        clickTab(session.probe, other);
        QCOMPARE(session.probe.users(), QStringList());
    }
    // Looking at a channel that nobody is known in makes no entry for it.
    QVERIFY(!session.probe.channelUsers().contains(u"#d"_s));
}

void TestTabs::showsTheTopicOfTheShownChannel()
{
    WindowSession session;
    openTabs(session.probe, {u"#c"_s, u"#d"_s});
    const QLabel *label = session.probe.tabs().value(u"#d"_s).topicLabel;
    session.probe.channelTopics().insert(u"#d"_s, u"all about d"_s);
    QCOMPARE(label->text(), QString());
    clickTab(session.probe, 2);
    QCOMPARE(label->text(), u"all about d"_s);
    session.probe.channelTopics().remove(u"#d"_s);
    clickTab(session.probe, 1);
    clickTab(session.probe, 2);
    QCOMPARE(label->text(), QString());
}

void TestTabs::bringsTheTopicBarBack()
{
    WindowSession session;
    openTabs(session.probe, {u"#c"_s, u"#d"_s});
    QWidget *bar = session.probe.tabs().value(u"#d"_s).topicBar;
    bar->hide();
    clickTab(session.probe, 2);
    QVERIFY(bar->isVisible());
}

void TestTabs::marksTheOwnUserOnTheShownChannel()
{
    WindowSession session;
    QVERIFY(session.registerAs(u"me"_s));
    openTabs(session.probe, {u"#c"_s, u"#d"_s});
    session.probe.channelUsers().insert(u"#d"_s, {u"alice"_s, u"@Me"_s});
    session.probe.isAway() = true;
    clickTab(session.probe, 2);
    QVERIFY(!session.probe.userList().item(0)->font().italic());
    QVERIFY(session.probe.userList().item(1)->font().italic());
}

void TestTabs::showsTheSearchFieldOnTheListTab()
{
    WindowSession session;
    addListTab(session.probe);
    openTabs(session.probe, {u"#c"_s});
    session.probe.showTab(u"List"_s);
    QCOMPARE(session.probe.mainStack().currentWidget(), &session.probe.listSearchEdit());
    QVERIFY(session.probe.listSearchEdit().isVisible());
    session.probe.showTab(u"#c"_s);
    QCOMPARE(session.probe.mainStack().currentIndex(), 0);
    QVERIFY(session.probe.inputLine().isVisible());
}

void TestTabs::setsTheRatioOnceTheLayoutHasSettled()
{
    WindowSession session;
    openTabs(session.probe, {u"#c"_s, u"#d"_s});
    QCoreApplication::processEvents();
    session.probe.showTab(u"#d"_s);
    // Whatever the layout makes of the change, the ratio is imposed behind it.
    session.probe.splitter().setSizes({500, 500});
    QTRY_COMPARE(qRound(100.0 * session.probe.splitter().sizes().at(1)
                        / (session.probe.splitter().sizes().at(0)
                           + session.probe.splitter().sizes().at(1))),
                 20);
}

void TestTabs::fillsTheUserListAgainAfterADisconnect()
{
    WindowSession session;
    QVERIFY(session.registerAs(u"me"_s));
    QVERIFY(session.say(u":me!u@h JOIN #c"_s));
    QVERIFY(session.say(u":irc.test 353 me = #c :@me alice"_s));
    QVERIFY(session.say(u":irc.test 366 me #c :End"_s));
    QCOMPARE(session.probe.users(), (QStringList{u"@me"_s, u"alice"_s}));
    session.server.close();
    QTRY_VERIFY(session.probe.users().isEmpty());
    clickTab(session.probe, 0);
    clickTab(session.probe, 1);
    QCOMPARE(session.probe.users(), (QStringList{u"@me"_s, u"alice"_s}));
}

// ---------------------------------------------------------------------------------------------
// Close buttons

void TestTabs::drawsACloseButtonOnEveryTab()
{
    WindowSession session;
    openTabs(session.probe, {u"#c"_s, u"bob"_s});
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

void TestTabs::coloursTheShownTabsButton()
{
    const QString sheet =
            u"QPushButton {  background: transparent;  border: none;  font-size: 16px;  "
            "font-weight: bold;  color: %1;  padding: 0px;}QPushButton:hover {  background: "
            "rgba(0,0,0,0.1);  border-radius: 4px;}"_s;
    WindowSession session;
    openTabs(session.probe, {u"#c"_s, u"bob"_s});
    for (const int shown : {1, 2, 0}) {
        clickTab(session.probe, shown);
        for (int index = 0; index < 3; ++index) {
            QCOMPARE(session.probe.closeButton(index)->styleSheet(),
                     sheet.arg(index == shown ? u"#FFFFFF"_s : u"#999999"_s));
        }
    }
}

void TestTabs::replacesItsButtonsAtEachChange()
{
    WindowSession session;
    const QPointer<QPushButton> first = session.probe.closeButton(0);
    openTabs(session.probe, {u"#c"_s});
    const QPointer<QPushButton> second = session.probe.closeButton(0);
    QVERIFY(second != first);
    openTabs(session.probe, {u"#d"_s}); // Behind the one on show.
    const QPointer<QPushButton> third = session.probe.closeButton(0);
    QVERIFY(third != second);
    clickTab(session.probe, 2);
    const QPointer<QPushButton> fourth = session.probe.closeButton(0);
    QVERIFY(fourth != third);
    // Those that were replaced go with the next turn of the loop.
    QTRY_VERIFY(first.isNull() && second.isNull() && third.isNull());
    QVERIFY(!fourth.isNull());
    const auto buttons = session.probe.tabBar().findChildren<QPushButton *>();
    QCOMPARE(buttons.size(), 3);
}

void TestTabs::closesByTheTabsButton()
{
    WindowSession session;
    openTabs(session.probe, {u"#c"_s, u"#d"_s});
    session.probe.closeButton(2)->click();
    QCOMPARE(session.probe.tabTexts(), (QStringList{Server, u"#c"_s}));
    QVERIFY(!session.probe.tabs().contains(u"#d"_s));
}

void TestTabs::leavesTheServerTabToItsButton()
{
    WindowSession session;
    openTabs(session.probe, {u"#c"_s});
    session.probe.closeButton(0)->click();
    QCOMPARE(session.probe.tabTexts(), (QStringList{Server, u"#c"_s}));
    clickTab(session.probe, 0);
    session.probe.closeButton(0)->click();
    QCOMPARE(session.probe.tabTexts(), (QStringList{Server, u"#c"_s}));
}

void TestTabs::closesTheShownTabByItsOwnButton()
{
    WindowSession session;
    openTabs(session.probe, {u"#c"_s, u"#d"_s});
    QCOMPARE(session.probe.tabWidget().currentIndex(), 1);
    QPushButton *button = session.probe.closeButton(1);
    QTest::mouseClick(button, Qt::LeftButton);
    QCOMPARE(session.probe.tabTexts(), (QStringList{Server, u"#d"_s}));
    QTRY_COMPARE(session.probe.tabBar().findChildren<QPushButton *>().size(), 2);
}

void TestTabs::keepsStaleIndexesAfterAClose()
{
    WindowSession session;
    openTabs(session.probe, {u"#a"_s, u"#b"_s, u"#c"_s, u"#d"_s});
    QCOMPARE(session.probe.currentTabName(), u"#a"_s);
    const QPushButton *ofC = session.probe.closeButton(3);
    session.probe.closeTab(2);
    QCOMPARE(session.probe.tabTexts(), (QStringList{Server, u"#a"_s, u"#c"_s, u"#d"_s}));
    QCOMPARE(session.probe.closeButton(2), ofC);
    // It carries index 3 still, where #d has come to lie.
    session.probe.closeButton(2)->click();
    QCOMPARE(session.probe.tabTexts(), (QStringList{Server, u"#a"_s, u"#c"_s}));
}

void TestTabs::closesTheTabToTheRightByAStaleButton()
{
    WindowSession session;
    openTabs(session.probe, {u"#a"_s, u"#b"_s, u"#c"_s});
    session.probe.closeTab(2);
    // A rebuild mends what the close has left behind.
    clickTab(session.probe, 0);
    session.probe.closeButton(2)->click();
    QCOMPARE(session.probe.tabTexts(), (QStringList{Server, u"#a"_s}));
}

void TestTabs::closesNothingByTheLastStaleButton()
{
    WindowSession session;
    openTabs(session.probe, {u"#a"_s, u"#b"_s, u"#c"_s});
    session.probe.closeTab(2);
    session.probe.closeButton(2)->click();
    QCOMPARE(session.probe.tabTexts(), (QStringList{Server, u"#a"_s, u"#c"_s}));
    QVERIFY(session.probe.tabs().contains(u"#c"_s));
    QCOMPARE(session.probe.currentTabName(), u"#a"_s);
}

// ---------------------------------------------------------------------------------------------
// Closing

void TestTabs::ignoresIndexesThatNoTabHolds_data()
{
    QTest::addColumn<int>("index");

    QTest::newRow("negative") << -1;
    QTest::newRow("server") << 0;
    QTest::newRow("behind the last") << 3;
    QTest::newRow("far behind") << 1000;
}

void TestTabs::ignoresIndexesThatNoTabHolds()
{
    QFETCH(const int, index);
    WindowSession session;
    QVERIFY(session.registerAs(u"me"_s));
    openTabs(session.probe, {u"#a"_s, QString()}); // A tab without a name, as tabText has none.
    static_cast<void>(session.takeSent());
    session.probe.showTab(QString());
    session.probe.closeTab(index);
    QCOMPARE(session.probe.tabTexts(), (QStringList{Server, u"#a"_s, QString()}));
    QCOMPARE(session.probe.tabs().size(), 3);
    QCOMPARE(session.probe.currentTabName(), QString());
    QVERIFY(session.say(u"PING :x"_s));
    QVERIFY(session.server.waitForLine(u"PONG :x"_s));
    QVERIFY(!session.takeSent().contains(u"WATCH -"_s));
}

void TestTabs::closesFromOutside()
{
    WindowSession session;
    openTabs(session.probe, {u"#a"_s, u"#b"_s});
    session.window.requestCloseTab(0);
    session.window.requestCloseTab(2);
    session.window.requestCloseTab(-1);
    QCOMPARE(session.probe.tabTexts(), (QStringList{Server, u"#a"_s}));
}

void TestTabs::partsAChannelThatIsClosed()
{
    WindowSession session;
    QVERIFY(session.registerAs(u"me"_s));
    QVERIFY(session.say(u":me!u@h JOIN #c"_s));
    QVERIFY(session.server.waitForLine(u"NAMES #c"_s));
    static_cast<void>(session.takeSent());

    session.probe.closeTab(1);
    QVERIFY(session.server.waitForLine(u"PART #c :Leaving"_s));
    QCOMPARE(session.probe.lines(Server).count(u"*** You left #c"_s), 1);

    // The server's echo does not bring the tab back.
    QVERIFY(session.say(u":me!u@h PART #c :Leaving"_s));
    QCOMPARE(session.probe.tabTexts(), QStringList{Server});
    QVERIFY(session.say(u"PING :x"_s));
    QVERIFY(session.server.waitForLine(u"PONG :x"_s));
    QCOMPARE(session.takeSent(), (QStringList{u"PART #c :Leaving"_s, u"PONG :x"_s}));
}

void TestTabs::closesAChannelSilentlyWhileDisconnected()
{
    WindowSession session;
    openTabs(session.probe, {u"#c"_s});
    const QStringList before = session.probe.lines(Server);
    session.probe.closeTab(1);
    QCOMPARE(session.probe.tabTexts(), QStringList{Server});
    QCOMPARE(session.probe.lines(Server), before);
}

void TestTabs::unwatchesAPrivateTabThatIsClosed()
{
    WindowSession session;
    QVERIFY(session.registerAs(u"me"_s));
    openTabs(session.probe, {u"Bob"_s});
    QVERIFY(session.server.waitForLine(u"WATCH +Bob"_s));
    static_cast<void>(session.takeSent());
    QCOMPARE(session.probe.watchedNicks(), QSet<QString>{u"bob"_s});
    const QStringList before = session.probe.lines(Server);

    session.probe.closeTab(1);
    QVERIFY(session.say(u"PING :x"_s));
    QVERIFY(session.server.waitForLine(u"PONG :x"_s));
    QCOMPARE(session.takeSent(), (QStringList{u"WATCH -Bob"_s, u"PONG :x"_s}));
    QVERIFY(session.probe.watchedNicks().isEmpty());
    QCOMPARE(session.probe.lines(Server), before + QStringList{u"<< PING :x"_s});
}

void TestTabs::unwatchesNobodyElse()
{
    WindowSession session;
    QVERIFY(session.registerAs(u"me"_s));
    openTabs(session.probe, {u"bob"_s, u"#c"_s});
    QVERIFY(session.server.waitForLine(u"WATCH +bob"_s));
    static_cast<void>(session.takeSent());
    session.probe.watchedNicks() = QSet<QString>{u"carol"_s, u"#c"_s};
    session.probe.closeTab(2);
    session.probe.closeTab(1);
    QVERIFY(session.say(u"PING :x"_s));
    QVERIFY(session.server.waitForLine(u"PONG :x"_s));
    QCOMPARE(session.takeSent(), (QStringList{u"PART #c :Leaving"_s, u"PONG :x"_s}));
    QCOMPARE(session.probe.watchedNicks(), (QSet<QString>{u"carol"_s, u"#c"_s}));
}

void TestTabs::forgetsTheListsWidgets()
{
    WindowSession session;
    QTreeWidget tree;
    QLabel label;
    openTabs(session.probe, {u"#c"_s});
    addListTab(session.probe);
    session.probe.listTree() = &tree;
    session.probe.listInfoLabel() = &label;
    session.probe.closeTab(1);
    QCOMPARE(session.probe.listTree(), &tree);
    session.probe.closeTab(1);
    QCOMPARE(session.probe.tabTexts(), QStringList{Server});
    QCOMPARE(session.probe.listTree(), nullptr);
    QCOMPARE(session.probe.listInfoLabel(), nullptr);
}

void TestTabs::forgetsWhatBelongsToTheTab()
{
    WindowSession session;
    const MainWindowProbe &probe = session.probe;
    openTabs(probe, {u"#c"_s, u"#d"_s});
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

void TestTabs::keepsThePageOfAClosedTab()
{
    WindowSession session;
    openTabs(session.probe, {u"#c"_s});
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

void TestTabs::reopensWithAnEmptyHistory()
{
    WindowSession session;
    session.probe.appendMessageToTab(u"#c"_s, u"old"_s);
    const QWidget *page = session.probe.tabs().value(u"#c"_s).page;
    session.probe.closeTab(1);
    session.probe.appendMessageToTab(u"#c"_s, u"new"_s);
    QVERIFY(session.probe.tabs().value(u"#c"_s).page != page);
    QCOMPARE(session.probe.lines(u"#c"_s), QStringList{u"|new"_s});
}

void TestTabs::movesOnWhenTheShownTabIsClosed()
{
    WindowSession session;
    openTabs(session.probe, {u"#c"_s, u"#d"_s});
    session.probe.channelUsers().insert(u"#d"_s, {u"alice"_s});
    session.probe.inputDrafts().insert(u"#d"_s, u"draft of d"_s);
    session.probe.closeTab(1);
    const QString shown =
            session.probe.tabWidget().tabText(session.probe.tabWidget().currentIndex());
    QCOMPARE(session.probe.currentTabName(), shown);
    QCOMPARE(shown, u"#d"_s);
    QVERIFY(session.probe.userListShown());
    QCOMPARE(session.probe.users(), QStringList{u"alice"_s});
    QCOMPARE(session.probe.inputLine().text(), u"draft of d"_s);
}

void TestTabs::fallsBackToServerIfTheShownNameIsGone()
{
    // Two tabs come to bear one name when a nick changes to that of another open conversation.
    WindowSession session;
    QVERIFY(session.registerAs(u"me"_s));
    openTabs(session.probe, {u"alice"_s, u"bob"_s, u"#c"_s});
    session.probe.showTab(u"alice"_s);
    QVERIFY(session.say(u":bob!u@h NICK alice"_s));
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

void TestTabs::removesNoTabOnADisconnect()
{
    WindowSession session;
    QVERIFY(session.registerAs(u"me"_s));
    QVERIFY(session.say(u":me!u@h JOIN #c"_s));
    QVERIFY(session.say(u":bob!u@h PRIVMSG me :hello"_s));
    const QStringList names{Server, u"#c"_s, u"bob"_s};
    session.server.close();
    QTRY_VERIFY(!session.probe.connection().isConnected());
    QCOMPARE(session.probe.tabTexts(), names);
    QCOMPARE(session.probe.tabs().size(), 3);

    // The channel that is joined again goes on in its old tab.
    QVERIFY(session.registerAs(u"me"_s));
    QCOMPARE(session.probe.tabTexts(), names);
    QVERIFY(session.say(u":me!u@h JOIN #c"_s));
    QCOMPARE(session.probe.tabTexts(), names);
    QCOMPARE(session.probe.lines(u"#c"_s), (QStringList{u"me|joined #c"_s, u"me|joined #c"_s}));
}

void TestTabs::closesAllTabsFromWithinTheirButtons()
{
    WindowSession session;
    QVERIFY(session.registerAs(u"me"_s));
    openTabs(session.probe, {u"#a"_s, u"bob"_s, u"#b"_s, QString(), u"#c"_s});
    while (session.probe.tabWidget().count() > 1) {
        const int last = session.probe.tabWidget().count() - 1;
        clickTab(session.probe, last);
        QTest::mouseClick(session.probe.closeButton(last), Qt::LeftButton);
        QCOMPARE(session.probe.tabWidget().count(), last);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    QCOMPARE(session.probe.tabs().keys(), QStringList{Server});
    QCOMPARE(session.probe.currentTabName(), Server);
    QVERIFY(session.server.waitForLine(u"PART #a :Leaving"_s));
}

// ---------------------------------------------------------------------------------------------
// The context menu

void TestTabs::showsNoTabMenu_data()
{
    QTest::addColumn<int>("index");

    QTest::newRow("beside the tabs") << -1;
    QTest::newRow("server") << 0;
    QTest::newRow("list") << 1;
}

void TestTabs::showsNoTabMenu()
{
    QFETCH(const int, index);
    WindowSession session;
    addListTab(session.probe);
    const ModalAnswers answers;
    requestContextMenu(session.probe, index);
    QCoreApplication::processEvents();
    QCOMPARE(answers.problems(), QStringList());
    QCOMPARE(session.probe.tabTexts(), (QStringList{Server, u"List"_s}));
}

void TestTabs::showsTheTabMenu_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("isChecked");

    QTest::newRow("channel") << u"#c"_s << false;
    QTest::newRow("autojoined channel") << u"#auto"_s << true;
    QTest::newRow("in another case") << u"#Auto"_s << false;
    QTest::newRow("private") << u"bob"_s << false;
    QTest::newRow("private on the list") << u"carol"_s << true;
}

void TestTabs::showsTheTabMenu()
{
    QFETCH(const QString, name);
    WindowSession session;
    openTabs(session.probe, {name});
    session.probe.autojoinChannels() = QStringList{u"#auto"_s, u"carol"_s};
    ModalAnswers answers;
    QStringList texts;
    bool isCheckable = false;
    bool closeIsCheckable = true;
    bool isChecked = false;
    answers.queueForMenu([&](QMenu *menu) {
        const QList<QAction *> actions = menu->actions();
        for (const QAction *action : actions)
            texts.append(action->text());
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

void TestTabs::placesTheTabMenuAtThePointer()
{
    WindowSession session;
    openTabs(session.probe, {u"#c"_s});
    ModalAnswers answers;
    QPoint place;
    answers.queueForMenu([&place](QMenu *menu) {
        place = menu->pos();
        menu->close();
    });
    requestContextMenu(session.probe, 1);
    QCOMPARE(place, session.probe.tabBar().mapToGlobal(session.probe.tabBar().tabRect(1).center()));
}

void TestTabs::closesFromTheTabMenu()
{
    WindowSession session;
    openTabs(session.probe, {u"#c"_s, u"#d"_s});
    ModalAnswers answers;
    answers.queueForMenu(choose(u"Close"_s));
    requestContextMenu(session.probe, 2);
    QCOMPARE(answers.problems(), QStringList());
    QCOMPARE(session.probe.tabTexts(), (QStringList{Server, u"#c"_s}));
}

void TestTabs::doesNothingIfTheTabMenuIsDismissed()
{
    WindowSession session;
    openTabs(session.probe, {u"#c"_s});
    session.probe.currentServerId() = u"irc.test_6667"_s;
    ModalAnswers answers;
    answers.queueForMenu([](QMenu *menu) { QTest::keyClick(menu, Qt::Key_Escape); });
    requestContextMenu(session.probe, 1);
    QCOMPARE(answers.problems(), QStringList());
    QCOMPARE(session.probe.tabTexts(), (QStringList{Server, u"#c"_s}));
    QVERIFY(session.probe.autojoinChannels().isEmpty());
    QVERIFY(session.probe.lines(Server).isEmpty());
}

void TestTabs::togglesAutojoinFromTheTabMenu()
{
    WindowSession session;
    openTabs(session.probe, {u"#c"_s});
    session.probe.currentServerId() = u"irc.test_6667"_s;
    ModalAnswers answers;
    answers.queueForMenu(choose(u"Autojoin on connect"_s));
    requestContextMenu(session.probe, 1);
    QCOMPARE(session.probe.autojoinChannels(), QStringList{u"#c"_s});
    QCOMPARE(QSettings().value(u"servers/irc.test_6667/autojoin"_s).toStringList(),
             QStringList{u"#c"_s});
    answers.queueForMenu(choose(u"Autojoin on connect"_s));
    requestContextMenu(session.probe, 1);
    QVERIFY(session.probe.autojoinChannels().isEmpty());
    QCOMPARE(answers.problems(), QStringList());
    QCOMPARE(session.probe.lines(Server), (QStringList{u"*** Added #c to autojoin list"_s,
                                                       u"*** Removed #c from autojoin list"_s}));
    QCOMPARE(session.probe.tabTexts(), (QStringList{Server, u"#c"_s}));
}

void TestTabs::offersAutojoinOnPrivateTabs()
{
    WindowSession session;
    openTabs(session.probe, {u"bob"_s});
    session.probe.currentServerId() = u"irc.test_6667"_s;
    ModalAnswers answers;
    answers.queueForMenu(choose(u"Autojoin on connect"_s));
    requestContextMenu(session.probe, 1);
    QCOMPARE(answers.problems(), QStringList());
    QCOMPARE(session.probe.lines(Server), QStringList{u"*** Added #bob to autojoin list"_s});
}

void TestTabs::survivesATabThatVanishesUnderItsMenu()
{
    WindowSession session;
    openTabs(session.probe, {u"#c"_s, u"#d"_s});
    ModalAnswers answers;
    answers.queueForMenu([&session](QMenu *menu) {
        session.probe.closeTab(2);
        choose(u"Close"_s)(menu);
    });
    requestContextMenu(session.probe, 2);
    QCOMPARE(answers.problems(), QStringList());
    // The entry stands for the place, at which there is no tab any more.
    QCOMPARE(session.probe.tabTexts(), (QStringList{Server, u"#c"_s}));
}

void TestTabs::survivesALinkThatDropsUnderTheMenu()
{
    WindowSession session;
    QVERIFY(session.registerAs(u"me"_s));
    QVERIFY(session.say(u":me!u@h JOIN #c"_s));
    ModalAnswers answers;
    bool dropped = false;
    answers.queueForMenu([&](QMenu *menu) {
        session.server.sendBytes(":a!u@h PRIVMSG #c :last words\r\n"_ba);
        session.server.close();
        dropped = QTest::qWaitFor([&] { return !session.probe.connection().isConnected(); });
        choose(u"Close"_s)(menu);
    });
    requestContextMenu(session.probe, 1);
    QCOMPARE(answers.problems(), QStringList());
    QVERIFY(dropped);
    QCOMPARE(session.probe.tabTexts(), QStringList{Server});
    QVERIFY(session.probe.lines(Server).contains(u"*** Disconnected."_s));
    QVERIFY(!session.probe.lines(Server).contains(u"*** You left #c"_s));
}

void TestTabs::survivesARenameUnderTheMenu()
{
    WindowSession session;
    QVERIFY(session.registerAs(u"me"_s));
    QVERIFY(session.say(u":bob!u@h PRIVMSG me :hello"_s));
    ModalAnswers answers;
    bool heard = false;
    answers.queueForMenu([&](QMenu *menu) {
        heard = session.say(u":bob!u@h NICK rob"_s);
        choose(u"Close"_s)(menu);
    });
    requestContextMenu(session.probe, 1);
    QCOMPARE(answers.problems(), QStringList());
    QVERIFY(heard);
    QCOMPARE(session.probe.tabTexts(), QStringList{Server});
    QCOMPARE(session.probe.tabs().keys(), QStringList{Server});
    // The watch stays with the old nick, which is no longer the tab's.
    QCOMPARE(session.probe.watchedNicks(), QSet<QString>{u"bob"_s});
}

// ---------------------------------------------------------------------------------------------
// A channel without a name

void TestTabs::opensATabWithoutAName()
{
    // What comes of a server that writes the channel of a JOIN as a trailing parameter.
    WindowSession session;
    QVERIFY(session.registerAs(u"me"_s));
    QVERIFY(session.say(u":me!u@h JOIN :#x"_s));
    QCOMPARE(session.probe.tabTexts(), (QStringList{Server, QString()}));
    QCOMPARE(session.probe.currentTabName(), QString());
    QCOMPARE(session.probe.lines(QString()), QStringList{u"me|joined "_s});
    QVERIFY(!session.probe.userListShown());
    QVERIFY(session.probe.emojiButton().isVisible());
    QVERIFY(session.server.waitForLine(u"NAMES "_s));

    // The channel's own tab opens with the first line spoken in it.
    QVERIFY(session.say(u":bob!u@h PRIVMSG #x :hello"_s));
    QCOMPARE(session.probe.tabTexts(), (QStringList{Server, QString(), u"#x"_s}));
    clickTab(session.probe, 2);
    clickTab(session.probe, 1);
    QVERIFY(session.say(u":me!u@h JOIN :#y"_s));
    QCOMPARE(session.probe.tabTexts(), (QStringList{Server, QString(), u"#x"_s}));
    QCOMPARE(session.probe.lines(QString()), (QStringList{u"me|joined "_s, u"me|joined "_s}));
}

void TestTabs::closesATabWithoutAName()
{
    WindowSession session;
    QVERIFY(session.registerAs(u"me"_s));
    QVERIFY(session.say(u":me!u@h JOIN :#x"_s));
    session.probe.inputLine().setText(u"half"_s);
    session.probe.closeButton(1)->click();
    QCOMPARE(session.probe.tabTexts(), QStringList{Server});
    QCOMPARE(session.probe.currentTabName(), Server);
    QCOMPARE(session.probe.tabs().keys(), QStringList{Server});
    QCOMPARE(session.probe.inputLine().text(), QString());
}

QTEST_MAIN(TestTabs)
#include "tst_Tabs.moc"
