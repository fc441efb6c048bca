#include "ConnectDialog.h"
#include "HighlightTabBar.h"
#include "IRCConnection.h"
#include "ModalAnswers.h"
#include "MyTabWidget.h"
#include "TemporaryStore.h"
#include "Waiting.h"
#include "WindowSession.h"

#include <QCompleter>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QMenuBar>
#include <QMetaMethod>
#include <QPushButton>
#include <QSettings>
#include <QShortcut>
#include <QSplitter>
#include <QStackedWidget>
#include <QStatusBar>
#include <QTest>
#include <QTextBrowser>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {

QString signatureOf(const QMetaMethod &method)
{
    QStringList arguments;
    const QList<QByteArray> types = method.parameterTypes();
    const QList<QByteArray> names = method.parameterNames();
    for (qsizetype i = 0; i < types.size(); ++i)
        arguments.append(QString::fromLatin1(types.at(i) + ' ' + names.at(i)));
    return QString::fromLatin1(method.name()) + u'(' + arguments.join(u", "_s) + u')';
}

// Returns the texts of a menu's entries; "-" is a separator.
QAction *entry(const MainWindow &window, const QString &text)
{
    const QList<QAction *> actions = window.findChildren<QAction *>();
    for (QAction *action : actions) {
        if (action->text() == text)
            return action;
    }
    return nullptr;
}

} // namespace

class TestMainWindow final : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void startsWithDefaultPreferences();
    void startsWithoutConversationState();
    void startsWithTheServerTab();
    void startsDisconnected();
    void hasItsInitialSizeAndTitle();
    void storesTheLightTheme();
    void opensTheConnectDialogFromTheEventLoop();
    void ownsItsConnection();
    void laysOutTabsAndUserList();
    void installsItsTabBar();
    void configuresTheUserList();
    void stacksInputRowAndSearch();
    void laysOutTheInputRow();
    void completesNicksInAPopup();
    void hasTheStandardCloseShortcut();
    void showsItsMenus_data();
    void showsItsMenus();
    void setsMenuRoles_data();
    void setsMenuRoles();
    void hasTheStandardQuitShortcut();
    void enablesAllMenuEntries();
    void storesTheActionsOfTheUserMenu();
    void declaresItsSlotsInOrder();
    void connectsItsWidgets();

private:
    TemporaryStore store;
};

void TestMainWindow::init()
{
    store.clear();
}

void TestMainWindow::startsWithDefaultPreferences()
{
    MainWindow window;
    const QVariantMap preferences = MainWindowProbe(window).preferences();
    QCOMPARE(preferences.value(u"chatBgImage"_s).toString(), QString());
    QVERIFY(!preferences.value(u"chatBgColor"_s).value<QColor>().isValid());
    QCOMPARE(preferences.value(u"timestampFormat"_s).toString(), u"[HH:mm:ss]"_s);
    const auto font = preferences.value(u"chatFont"_s).value<QFont>();
    QCOMPARE(font.family(), u"Monaco"_s);
    QCOMPARE(font.pointSize(), 12);
    QCOMPARE(font.weight(), QFont::Normal);
    QVERIFY(!font.italic());
    QCOMPARE(preferences.value(u"emojiSize"_s).toInt(), 20);
    QCOMPARE(preferences.value(u"autoReconnect"_s).toBool(), true);
    QCOMPARE(preferences.value(u"reconnectDelay"_s).toInt(), 10);
    QCOMPARE(preferences.value(u"reconnectAttempts"_s).toInt(), 0);
    QCOMPARE(preferences.value(u"pingInterval"_s).toInt(), 60);
    QCOMPARE(preferences.value(u"pingTimeout"_s).toInt(), 45);
    QCOMPARE(preferences.value(u"acceptInvalidSsl"_s).toBool(), false);
    QCOMPARE(preferences.value(u"logPath"_s).toString(), QString());
    QCOMPARE(preferences.value(u"logEnabled"_s).toBool(), false);
}

void TestMainWindow::startsWithoutConversationState()
{
    MainWindow window;
    const MainWindowProbe probe(window);
    QVERIFY(probe.channelUsers().isEmpty());
    QVERIFY(probe.autojoinChannels().isEmpty());
    QVERIFY(probe.pendingNames().isEmpty());
    QVERIFY(probe.channelTopics().isEmpty());
    QVERIFY(probe.watchedNicks().isEmpty());
    QVERIFY(probe.inputDrafts().isEmpty());
    QVERIFY(probe.whoisResults().isEmpty());
    QCOMPARE(probe.whoisTab(), u"Server"_s);
    QCOMPARE(probe.listTree(), nullptr);
    QCOMPARE(probe.listInfoLabel(), nullptr);
    QCOMPARE(probe.isAway(), false);
    QCOMPARE(probe.awayMessage(), QString());
    QCOMPARE(probe.pendingNick(), QString());
    QCOMPARE(probe.listReceiving(), false);
    QCOMPARE(probe.currentServerId(), QString());
    QCOMPARE(probe.userListShown(), false);
    QCOMPARE(probe.splitterReady(), true);
    QCOMPARE(probe.currentTheme(), u"light"_s);
}

void TestMainWindow::startsWithTheServerTab()
{
    const WindowSession session;
    const MainWindowProbe &probe = session.probe;
    QCOMPARE(probe.tabTexts(), QStringList{u"Server"_s});
    QCOMPARE(probe.tabs().keys(), QStringList{u"Server"_s});
    QCOMPARE(probe.currentTabName(), u"Server"_s);
    QCOMPARE(probe.tabWidget().tabToolTip(0), u"Server"_s);

    const MainWindow::TabInfo tab = probe.tabs().value(u"Server"_s);
    QCOMPARE(tab.page, probe.tabWidget().widget(0));
    QCOMPARE(tab.chatView, tab.page->findChild<QTextBrowser *>());
    QVERIFY(tab.chatView != nullptr);
    QCOMPARE(tab.table, nullptr);
    QCOMPARE(tab.peerNick, QString());
    QCOMPARE(tab.topicBar, nullptr);
    QCOMPARE(tab.topicLabel, nullptr);
    QCOMPARE(tab.editTopicBtn, nullptr);
    QCOMPARE(tab.highlighted, false);

    QCOMPARE(probe.inputLine().placeholderText(), u"Type a command..."_s);
    QVERIFY(!probe.userList().isVisible());
    QVERIFY(!probe.emojiButton().isVisible());
    QCOMPARE(probe.splitter().sizes().at(1), 0);
    QVERIFY(probe.closeButton(0) != nullptr);
}

void TestMainWindow::startsDisconnected()
{
    MainWindow window;
    QCOMPARE(window.statusBar()->currentMessage(), u"Disconnected"_s);
    QCOMPARE(window.statusBar()->styleSheet(), u"QStatusBar { background-color: #f8d7da; }"_s);
    QVERIFY(!MainWindowProbe(window).connection().isConnected());
}

void TestMainWindow::hasItsInitialSizeAndTitle()
{
    MainWindow window;
    QCOMPARE(window.size(), QSize(1280, 720));
    QCOMPARE(window.windowTitle(), u"Velmora"_s);
}

void TestMainWindow::storesTheLightTheme()
{
    QSettings().setValue(u"theme"_s, u"dark"_s);
    MainWindow window;
    QCOMPARE(QSettings().value(u"theme"_s).toString(), u"light"_s);
    QCOMPARE(MainWindowProbe(window).currentTheme(), u"light"_s);
}

void TestMainWindow::opensTheConnectDialogFromTheEventLoop()
{
    MainWindow window;
    window.show();
    QCOMPARE(window.findChild<ConnectDialog *>(), nullptr);
    QTRY_VERIFY_WITH_TIMEOUT(window.findChild<ConnectDialog *>() != nullptr, WaitTimeout);
    const auto *dialog = window.findChild<ConnectDialog *>();
    QVERIFY(dialog->isVisible());
    QVERIFY(!dialog->isModal());
    QVERIFY(window.isVisible());
}

void TestMainWindow::ownsItsConnection()
{
    MainWindow window;
    const QList<IRCConnection *> connections = window.findChildren<IRCConnection *>();
    QCOMPARE(connections, QList<IRCConnection *>{&MainWindowProbe(window).connection()});
    QCOMPARE(connections.first()->parent(), &window);
}

void TestMainWindow::laysOutTabsAndUserList()
{
    MainWindow window;
    const MainWindowProbe probe(window);
    const QWidget *central = window.centralWidget();
    QVERIFY(central != nullptr);
    const auto *layout = qobject_cast<QVBoxLayout *>(central->layout());
    QVERIFY(layout != nullptr);
    QCOMPARE(layout->contentsMargins(), QVBoxLayout(new QWidget(&window)).contentsMargins());
    QCOMPARE(layout->count(), 2);
    QCOMPARE(layout->itemAt(0)->widget(), &probe.splitter());
    QCOMPARE(layout->itemAt(1)->widget(), &probe.mainStack());

    QCOMPARE(probe.splitter().orientation(), Qt::Horizontal);
    QCOMPARE(probe.splitter().handleWidth(), 8);
    QCOMPARE(probe.splitter().count(), 2);
    QCOMPARE(probe.splitter().widget(0), &probe.tabWidget());
    QCOMPARE(probe.splitter().widget(1), &probe.userList());
}

void TestMainWindow::installsItsTabBar()
{
    MainWindow window;
    const MainWindowProbe probe(window);
    QCOMPARE(probe.tabWidget().tabBar(), &probe.tabBar());
    QVERIFY(probe.tabBar().expanding());
    QVERIFY(!probe.tabWidget().tabsClosable());
    QCOMPARE(probe.tabBar().contextMenuPolicy(), Qt::CustomContextMenu);
}

void TestMainWindow::configuresTheUserList()
{
    MainWindow window;
    const MainWindowProbe probe(window);
    QCOMPARE(probe.userList().minimumWidth(), 100);
    QCOMPARE(probe.userList().contextMenuPolicy(), Qt::CustomContextMenu);
    QVERIFY(!probe.userList().isSortingEnabled());
}

void TestMainWindow::stacksInputRowAndSearch()
{
    MainWindow window;
    const MainWindowProbe probe(window);
    QCOMPARE(probe.mainStack().maximumHeight(), 40);
    QCOMPARE(probe.mainStack().count(), 2);
    QCOMPARE(probe.mainStack().currentIndex(), 0);
    QCOMPARE(probe.mainStack().widget(1), &probe.listSearchEdit());
    QCOMPARE(probe.listSearchEdit().placeholderText(), u"Search channels..."_s);
    QCOMPARE(probe.listSearchEdit().maximumHeight(), 28);
}

void TestMainWindow::laysOutTheInputRow()
{
    MainWindow window;
    const MainWindowProbe probe(window);
    const auto *layout = qobject_cast<QHBoxLayout *>(probe.mainStack().widget(0)->layout());
    QVERIFY(layout != nullptr);
    QCOMPARE(layout->contentsMargins(), QMargins());
    QCOMPARE(layout->spacing(), 2);
    QCOMPARE(layout->count(), 2);

    const QLineEdit &input = probe.inputLine();
    QCOMPARE(layout->itemAt(0)->widget(), &input);
    QCOMPARE(input.minimumHeight(), 30);
    QCOMPARE(input.maximumHeight(), 36);
    QCOMPARE(input.styleSheet(), u"QLineEdit { padding: 4px 8px; }"_s);

    const QPushButton &emoji = probe.emojiButton();
    QCOMPARE(layout->itemAt(1)->widget(), &emoji);
    QCOMPARE(emoji.text(), u"\U0001F60A"_s);
    QCOMPARE(emoji.minimumSize(), QSize(36, 30));
    QCOMPARE(emoji.maximumSize(), QSize(36, 30));
    QCOMPARE(emoji.toolTip(), u"Insert emoji"_s);
    QVERIFY(emoji.isHidden());
    QCOMPARE(emoji.cursor().shape(), Qt::PointingHandCursor);
    QCOMPARE(emoji.styleSheet(),
             u"QPushButton { background: transparent; border: none; font-size: 18px; padding: 0px; "
             "margin: 0px; }QPushButton:hover { background: rgba(128,128,128,0.2); "
             "border-radius: 4px; }"_s);
}

void TestMainWindow::completesNicksInAPopup()
{
    MainWindow window;
    const MainWindowProbe probe(window);
    const QCompleter &completer = probe.nickCompleter();
    QCOMPARE(probe.inputLine().completer(), &completer);
    QCOMPARE(completer.parent(), &window);
    QCOMPARE(completer.caseSensitivity(), Qt::CaseInsensitive);
    QCOMPARE(completer.completionMode(), QCompleter::PopupCompletion);
}

void TestMainWindow::hasTheStandardCloseShortcut()
{
    MainWindow window;
    const auto *shortcut = window.findChild<QShortcut *>();
    QVERIFY(shortcut != nullptr);
    QCOMPARE(shortcut->keys(), QKeySequence::keyBindings(QKeySequence::Close));
    QCOMPARE(shortcut->context(), Qt::WindowShortcut);
}

void TestMainWindow::showsItsMenus_data()
{
    QTest::addColumn<int>("position");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QStringList>("entries");

    QTest::newRow("server") << 0 << u"&Server"_s
                            << QStringList{u"&Connect..."_s, u"&Disconnect"_s, u"-"_s,
                                           u"&Reconnect"_s,  u"-"_s,           u"&Quit"_s};
    QTest::newRow("user") << 1 << u"&User"_s
                          << QStringList{u"Marked Away..."_s, u"Change Nick..."_s};
    QTest::newRow("channel") << 2 << u"&Channel"_s
                             << QStringList{u"&Join channel..."_s, u"Channel &List"_s};
    QTest::newRow("settings") << 3 << u"&Settings"_s << QStringList{u"&Preferences..."_s};
    QTest::newRow("about") << 4 << u"About"_s << QStringList{u"About Velmora"_s, u"Help"_s};
}

void TestMainWindow::showsItsMenus()
{
    QFETCH(const int, position);
    MainWindow window;
    const QList<QAction *> menus = window.menuBar()->actions();
    QCOMPARE(menus.size(), 5);
    QTEST(menus.at(position)->text(), "title");
    QTEST(ModalAnswers::entriesOf(*menus.at(position)->menu()), "entries");
}

void TestMainWindow::setsMenuRoles_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("hasNoRole");

    QTest::newRow("connect") << u"&Connect..."_s << false;
    QTest::newRow("disconnect") << u"&Disconnect"_s << false;
    QTest::newRow("reconnect") << u"&Reconnect"_s << false;
    QTest::newRow("quit") << u"&Quit"_s << true;
    QTest::newRow("away") << u"Marked Away..."_s << false;
    QTest::newRow("nick") << u"Change Nick..."_s << false;
    QTest::newRow("join") << u"&Join channel..."_s << false;
    QTest::newRow("list") << u"Channel &List"_s << false;
    QTest::newRow("preferences") << u"&Preferences..."_s << true;
    QTest::newRow("about") << u"About Velmora"_s << true;
    QTest::newRow("help") << u"Help"_s << true;
}

void TestMainWindow::setsMenuRoles()
{
    QFETCH(const QString, text);
    QFETCH(const bool, hasNoRole);
    MainWindow window;
    const QAction *action = entry(window, text);
    QVERIFY(action != nullptr);
    QCOMPARE(action->menuRole(), hasNoRole ? QAction::NoRole : QAction::TextHeuristicRole);
}

void TestMainWindow::hasTheStandardQuitShortcut()
{
    MainWindow window;
    QCOMPARE(entry(window, u"&Quit"_s)->shortcut(), QKeySequence(QKeySequence::Quit));
}

void TestMainWindow::enablesAllMenuEntries()
{
    MainWindow window;
    const QList<QAction *> menus = window.menuBar()->actions();
    for (const QAction *menu : menus) {
        const QList<QAction *> entries = menu->menu()->actions();
        for (const QAction *action : entries)
            QVERIFY2(action->isEnabled(), qPrintable(action->text()));
    }
}

void TestMainWindow::storesTheActionsOfTheUserMenu()
{
    MainWindow window;
    const MainWindowProbe probe(window);
    QCOMPARE(&probe.awayAction(), entry(window, u"Marked Away..."_s));
    QCOMPARE(&probe.changeNickAction(), entry(window, u"Change Nick..."_s));
}

void TestMainWindow::declaresItsSlotsInOrder()
{
    const QMetaObject &meta = MainWindow::staticMetaObject;
    QStringList slotNames;
    for (int index = meta.methodOffset(); index < meta.methodCount(); ++index) {
        const QMetaMethod method = meta.method(index);
        QCOMPARE(method.methodType(), QMetaMethod::Slot);
        QCOMPARE(method.access(), QMetaMethod::Private);
        slotNames.append(signatureOf(method));
    }
    const QStringList expected{
            u"onConnectTriggered()"_s,
            u"onDisconnectTriggered()"_s,
            u"onJoinChannel()"_s,
            u"onSendInput()"_s,
            u"onConnected()"_s,
            u"onRegistered()"_s,
            u"onDisconnected()"_s,
            u"onError(QString error)"_s,
            u"onRawMessage(QString msg)"_s,
            u"onServerMessage(QString msg)"_s,
            u"onPrivmsg(QString from, QString target, QString text)"_s,
            u"onJoin(QString nick, QString channel)"_s,
            u"onPart(QString nick, QString channel, QString reason)"_s,
            u"onNick(QString oldNick, QString newNick)"_s,
            u"onNames(QString channel, QStringList names)"_s,
            u"onNamesFinished(QString channel)"_s,
            u"onTopic(QString channel, QString topic)"_s,
            u"onQuit(QString nick, QString reason)"_s,
            u"onKick(QString channel, QString kickedNick, QString kickerNick, QString reason)"_s,
            u"onListStart()"_s,
            u"onListChannel(QString channel, QString userCount, QString topic)"_s,
            u"onListEnd()"_s,
            u"onListInfo(QString serverName, int totalChannels, int totalUsers)"_s,
            u"onTabChanged(int index)"_s,
            u"closeTab(int index)"_s,
            u"onChannelListDoubleClicked(QTreeWidgetItem* item, int column)"_s,
            u"filterChannelList(QString text)"_s,
            u"onSplitterMoved(int pos, int index)"_s,
            u"onUserDoubleClicked(QListWidgetItem* item)"_s,
            u"completeNick()"_s,
            u"showUserContextMenu(QPoint pos)"_s,
            u"showChannelListContextMenu(QPoint pos)"_s,
            u"toggleEmojiPicker()"_s,
            u"onTabContextMenu(QPoint pos)"_s,
            u"onWhoisUser(QString nick, QString user, QString host, QString real)"_s,
            u"onWhoisServer(QString nick, QString server, QString info)"_s,
            u"onWhoisOperator(QString nick)"_s,
            u"onWhoisIdle(QString nick, int idle, QString signon)"_s,
            u"onWhoisChannels(QString nick, QString channels)"_s,
            u"onWhoisEnd(QString targetTab, QString nick)"_s,
            u"onWhoisAway(QString nick, QString msg)"_s,
            u"onReconnectTriggered()"_s,
            u"onToggleTheme()"_s,
            u"openPreferencesWindow()"_s,
            u"onWatchStatus(QString nick, bool online)"_s,
            u"editTopic(QString channel)"_s,
            u"onSetAway()"_s,
            u"onChangeNick()"_s,
    };
    QCOMPARE(slotNames, expected);
}

void TestMainWindow::connectsItsWidgets()
{
    // disconnect() returns true only if there was a connection.
    MainWindow window;
    const MainWindowProbe probe(window);
    QVERIFY(disconnect(&probe.tabBar(), &QTabBar::tabBarDoubleClicked, &window, nullptr));
    QVERIFY(disconnect(&probe.tabWidget(), &QTabWidget::tabCloseRequested, &window, nullptr));
    QVERIFY(disconnect(&probe.tabWidget(), &QTabWidget::currentChanged, &window, nullptr));
    QVERIFY(disconnect(&probe.tabBar(), &QWidget::customContextMenuRequested, &window, nullptr));
    QListWidget &users = probe.userList();
    QVERIFY(disconnect(&users, &QWidget::customContextMenuRequested, &window, nullptr));
    QVERIFY(disconnect(&users, &QListWidget::itemDoubleClicked, &window, nullptr));
    QVERIFY(disconnect(&probe.splitter(), &QSplitter::splitterMoved, &window, nullptr));
    QVERIFY(disconnect(&probe.inputLine(), &QLineEdit::returnPressed, &window, nullptr));
    QVERIFY(disconnect(&probe.emojiButton(), &QPushButton::clicked, &window, nullptr));
    QVERIFY(disconnect(&probe.listSearchEdit(), &QLineEdit::textChanged, &window, nullptr));
    QVERIFY(disconnect(window.findChild<QShortcut *>(), &QShortcut::activated, &window, nullptr));
}

QTEST_MAIN(TestMainWindow)
#include "tst_MainWindow.moc"
