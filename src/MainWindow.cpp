#include "MainWindow.h"

#include "Attention.h"
#include "ChannelList.h"
#include "ChannelNames.h"
#include "ChannelSearch.h"
#include "ChatBackground.h"
#include "Commands.h"
#include "ConnectDialog.h"
#include "ConversationPage.h"
#include "DialogParts.h"
#include "EditTopicDialog.h"
#include "EmojiPicker.h"
#include "HighlightTabBar.h"
#include "IRCConnection.h"
#include "InfoDialogs.h"
#include "InputForwarder.h"
#include "InputRow.h"
#include "IrcText.h"
#include "LineBreaks.h"
#include "LinkOpener.h"
#include "MyTabWidget.h"
#include "NickList.h"
#include "Notifications.h"
#include "PlainTabs.h"
#include "PlainTextMenu.h"
#include "PopupArea.h"
#include "PreferencesDialog.h"
#include "Prompts.h"
#include "RawLines.h"
#include "ServerStore.h"
#include "StatusTipStopper.h"
#include "SystemTray.h"
#include "TabNames.h"
#include "TabStrip.h"
#include "ThemeManager.h"
#include "UserListRows.h"

#include <QClipboard>
#include <QCompleter>
#include <QCoreApplication>
#include <QDateTime>
#include <QGuiApplication>
#include <QInputDialog>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QPushButton>
#include <QSettings>
#include <QShortcut>
#include <QSplitter>
#include <QStackedWidget>
#include <QStatusBar>
#include <QSystemTrayIcon>
#include <QTextBrowser>
#include <QTimer>
#include <QTreeWidget>
#include <QUrl>
#include <QVBoxLayout>
#include <QWindow>

#include <array>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr int ReconnectDelayMs = 1000;

constexpr int NotificationMs = 5000;

bool equalsIgnoringCase(const QString &left, const QString &right)
{
    return left.compare(right, Qt::CaseInsensitive) == 0;
}

// The local time. Lines of the same millisecond share it, since Qt asks the system for the time
// zone at each conversion.
QString currentTime(const QString &format)
{
    static qint64 knownTime = 0;
    static QString knownFormat;
    static QString known;
    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    if (now != knownTime || format != knownFormat) {
        knownTime = now;
        knownFormat = format;
        known = QDateTime::fromMSecsSinceEpoch(now).toString(format);
    }
    return known;
}

void addAutojoinEntry(QMenu &menu, bool isAutojoined)
{
    QAction *entry = menu.addAction(MainWindow::tr("Autojoin on connect"));
    entry->setCheckable(true);
    entry->setChecked(isAutojoined);
}

// A Wayland compositor shows a popup without a transient parent as a window of its own, and these
// menus have no parent. Qt guesses one only if the window had the last input event.
QAction *execMenu(QMenu &menu, const QWidget &widget, const QPoint &pos)
{
    menu.winId(); // Creates the menu's window.
    menu.windowHandle()->setTransientParent(widget.window()->windowHandle());
    return menu.exec(widget.mapToGlobal(pos));
}

} // namespace

MainWindow::MainWindow(QWidget *parent)
    : QMainWindow(parent)
    , connection(new IRCConnection(this))
{
    setupUI();
    currentTheme = u"light"_s;
    applyTheme(currentTheme);
    setupMenuBar();
    createServerTab();
    whoisTab = TabNames::Server;
    loadPreferences();
    connectSession();
    resize(1280, 720);
    setWindowTitle(u"Velmora"_s);
    // The dialog opens over a window that is already on the screen.
    QTimer::singleShot(0, this, [this] { showConnectDialog(); });
    updateStatusBar();
    initSystemTray();
}

void MainWindow::requestCloseTab(int index)
{
    closeTab(index);
}

void MainWindow::resizeEvent(QResizeEvent *event)
{
    QMainWindow::resizeEvent(event);
    adjustSplitterToRatio();
}

// ---------------------------------------------------------------------------------------------
// Construction

void MainWindow::setupUI()
{
    auto *central = new QWidget(this);
    auto *layout = new QVBoxLayout(central);

    splitter = new QSplitter(Qt::Horizontal);
    splitter->setHandleWidth(8);
    layout->addWidget(splitter);

    tabWidget = new MyTabWidget;
    tabBar = TabStrip::create(*tabWidget);
    tabBar->setTheme(currentTheme);
    splitter->addWidget(tabWidget);

    userList = new QListWidget;
    userList->setMinimumWidth(100);
    userList->setAccessibleName(tr("Users"));
    userList->setContextMenuPolicy(Qt::CustomContextMenu);
    splitter->addWidget(userList);
    adjustSplitterToRatio();

    setupInputRow();
    layout->addWidget(mainStack);

    nickCompleter = NickCompletion::create(this);
    inputLine->setCompleter(nickCompleter);
    nickCompleter->popup()->setAccessibleName(tr("Completions"));

    connectWidgets();
    setCentralWidget(central);
    inputLine->setFocus();
}

void MainWindow::connectWidgets()
{
    auto *closeShortcut = new QShortcut(QKeySequence::Close, this);
    connect(closeShortcut, &QShortcut::activated, this, [this] {
        if (currentTabName != TabNames::Server && tabWidget->currentIndex() >= 0)
            closeTab(tabWidget->currentIndex());
    });
    TabStrip::addSwitchShortcuts(*tabWidget, *this);
    connect(tabBar, &QTabBar::tabBarDoubleClicked, this, [this](int index) {
        if (tabWidget->tabText(index) != TabNames::Server)
            closeTab(index);
    });
    connect(tabWidget, &QTabWidget::tabCloseRequested, this, &MainWindow::closeTab);
    connect(tabWidget, &QTabWidget::currentChanged, this, &MainWindow::onTabChanged);
    connect(tabBar, &QWidget::customContextMenuRequested, this, &MainWindow::onTabContextMenu);
    connect(userList, &QWidget::customContextMenuRequested, this, &MainWindow::showUserContextMenu);
    connect(userList, &QListWidget::itemDoubleClicked, this, &MainWindow::onUserDoubleClicked);
    connect(splitter, &QSplitter::splitterMoved, this, &MainWindow::onSplitterMoved);
    connect(inputLine, &QLineEdit::returnPressed, this, &MainWindow::onSendInput);
    connect(emojiButton, &QPushButton::clicked, this, &MainWindow::toggleEmojiPicker);
    connect(listSearchEdit, &QLineEdit::textChanged, this, &MainWindow::filterChannelList);
    connect(statusBar(), &QStatusBar::messageChanged, this, [this](const QString &message) {
        // A message for some seconds has gone.
        if (message.isEmpty())
            updateStatusBar();
    });
    connect(new LinkOpener(this), &LinkOpener::failed, this, [this](const QUrl &url) {
        const QString address = url.toString(QUrl::FullyEncoded);
        statusBar()->showMessage(tr("No program opens %1").arg(Attention::shortened(address)),
                                 NotificationMs);
    });
}

void MainWindow::setupInputRow()
{
    const InputRow row = InputRow::create();
    mainStack = row.stack;
    inputLine = row.line;
    emojiButton = row.emojiButton;
    listSearchEdit = row.listSearch;
}

void MainWindow::setupMenuBar()
{
    new StatusTipStopper(*this);
    // Without a role an entry stays in its menu on macOS.
    const auto addWithoutRole = [](QAction *action) { action->setMenuRole(QAction::NoRole); };

    QMenu *server = menuBar()->addMenu(tr("&Server"));
    server->addAction(tr("&Connect..."), this, &MainWindow::onConnectTriggered);
    server->addAction(tr("&Disconnect"), this, &MainWindow::onDisconnectTriggered);
    server->addSeparator();
    server->addAction(tr("&Reconnect"), this, &MainWindow::onReconnectTriggered);
    server->addSeparator();
    QAction *quit = server->addAction(tr("&Quit"), qApp, &QCoreApplication::quit);
    quit->setShortcut(QKeySequence::Quit);
    if (quit->shortcut().isEmpty()) // Some platform themes set none.
        new QShortcut(Qt::CTRL | Qt::Key_Q, this, qApp, &QCoreApplication::quit);
    addWithoutRole(quit);

    QMenu *user = menuBar()->addMenu(tr("&User"));
    awayAction = user->addAction(tr("Marked Away..."), this, &MainWindow::onSetAway);
    changeNickAction = user->addAction(tr("Change Nick..."), this, &MainWindow::onChangeNick);

    QMenu *channel = menuBar()->addMenu(tr("&Channel"));
    channel->addAction(tr("&Join channel..."), this, &MainWindow::onJoinChannel);
    channel->addAction(tr("Channel &List"), this, [this] {
        if (connection->isRegistered())
            requestChannelList();
    });

    QMenu *settings = menuBar()->addMenu(tr("&Settings"));
    addWithoutRole(
            settings->addAction(tr("&Preferences..."), this, &MainWindow::openPreferencesWindow));

    QMenu *about = menuBar()->addMenu(tr("About"));
    addWithoutRole(
            about->addAction(tr("About Velmora"), this, [this] { InfoDialogs::showAbout(this); }));
    addWithoutRole(about->addAction(tr("Help"), this,
                                    [this] { InfoDialogs::showHelp(this, currentTheme); }));
}

void MainWindow::createServerTab()
{
    const TabInfo info = createTabInfo(TabNames::Server, false);
    insertTab(TabNames::Server, info);
    currentTabName = TabNames::Server;
    inputLine->setPlaceholderText(InputRow::placeholderFor(TabNames::Server));
    userList->hide();
    emojiButton->hide();
    userListShown = false;
    adjustSplitterToRatio();
    updateNickCompletionModel();
    addCloseButtonToAllTabs();
    applyChatBackground();
}

void MainWindow::connectSession()
{
    connect(connection, &IRCConnection::connected, this, &MainWindow::onConnected);
    connect(connection, &IRCConnection::registered, this, &MainWindow::onRegistered);
    connect(connection, &IRCConnection::disconnected, this, &MainWindow::onDisconnected);
    connect(connection, &IRCConnection::errorOccurred, this, &MainWindow::onError);
    connect(connection, &IRCConnection::rawMessageReceived, this, &MainWindow::onRawMessage);
    connect(connection, &IRCConnection::serverMessage, this, &MainWindow::onServerMessage);
    connect(connection, &IRCConnection::privmsgReceived, this, &MainWindow::onPrivmsg);
    connect(connection, &IRCConnection::joinReceived, this, &MainWindow::onJoin);
    connect(connection, &IRCConnection::partReceived, this, &MainWindow::onPart);
    connect(connection, &IRCConnection::nickChanged, this, &MainWindow::onNick);
    connect(connection, &IRCConnection::namesList, this, &MainWindow::onNames);
    connect(connection, &IRCConnection::namesListFinished, this, &MainWindow::onNamesFinished);
    connect(connection, &IRCConnection::topicReceived, this, &MainWindow::onTopic);
    connect(connection, &IRCConnection::quitReceived, this, &MainWindow::onQuit);
    connect(connection, &IRCConnection::kickReceived, this, &MainWindow::onKick);
    connect(connection, &IRCConnection::listStartReceived, this, &MainWindow::onListStart);
    connect(connection, &IRCConnection::listChannelReceived, this, &MainWindow::onListChannel);
    connect(connection, &IRCConnection::listEndReceived, this, &MainWindow::onListEnd);
    connect(connection, &IRCConnection::listInfoReceived, this, &MainWindow::onListInfo);
    connectPresence();
    connect(connection, &IRCConnection::ownNickChanged, this, [this] {
        updateStatusBar();
        updateOwnUserAppearance();
        pendingNick.clear();
    });
    connection->setReadFinishedHandler([this] {
        pendingRows.flush();
        refreshPendingCompletion();
        if (listTree && std::exchange(hasNewListRows, false))
            ChannelList::sortNewRows(*listTree);
    });
}

void MainWindow::connectPresence()
{
    connect(connection, &IRCConnection::whoisUserReceived, this, &MainWindow::onWhoisUser);
    connect(connection, &IRCConnection::whoisServerReceived, this, &MainWindow::onWhoisServer);
    connect(connection, &IRCConnection::whoisOperatorReceived, this, &MainWindow::onWhoisOperator);
    connect(connection, &IRCConnection::whoisIdleReceived, this, &MainWindow::onWhoisIdle);
    connect(connection, &IRCConnection::whoisChannelsReceived, this, &MainWindow::onWhoisChannels);
    connect(connection, &IRCConnection::whoisEndReceived, this, &MainWindow::onWhoisEnd);
    connect(connection, &IRCConnection::whoisAwayReceived, this, &MainWindow::onWhoisAway);
    connect(connection, &IRCConnection::watchStatus, this, &MainWindow::onWatchStatus);
}

void MainWindow::initSystemTray()
{
    trayIcon = SystemTray::create(*this);
    notifications = new Notifications(this);
    connect(notifications, &Notifications::clicked, this, &MainWindow::showPage);
}

// ---------------------------------------------------------------------------------------------
// Preferences

void MainWindow::loadPreferences()
{
    QSettings settings;
    const QString font = settings.value(u"chatFont"_s, QString()).toString();
    if (!font.isEmpty())
        chatFont.fromString(font);
    timestampFormat = settings.value(u"timestampFormat"_s, u"[HH:mm:ss]"_s).toString();
    emojiSize = settings.value(u"emojiSize"_s, 20).toInt();
    logEnabled = settings.value(u"logEnabled"_s, false).toBool();
    logPath = settings.value(u"logPath"_s, QString()).toString();
    chatBgImage = settings.value(u"chatBgImage"_s, QString()).toString();
    const QString storedColor = settings.value(u"chatBgColor"_s, QString()).toString();
    chatBgColor = ChatBackground::colorFromStore(storedColor);
    // A colour that is refused is also removed from the store.
    if (!storedColor.isEmpty() && !chatBgColor.isValid())
        settings.setValue(u"chatBgColor"_s, QString());
    autoReconnect = settings.value(u"autoReconnect"_s, true).toBool();
    reconnectDelay = settings.value(u"reconnectDelay"_s, 10).toInt();
    reconnectAttempts = settings.value(u"reconnectAttempts"_s, 0).toInt();
    pingInterval = settings.value(u"pingInterval"_s, 60).toInt();
    pingTimeout = settings.value(u"pingTimeout"_s, 45).toInt();
    acceptInvalidSsl = settings.value(u"acceptInvalidSsl"_s, false).toBool();

    applyChatFont();
    applyChatBackground();
}

void MainWindow::openPreferencesWindow()
{
    auto *dialog = new PreferencesDialog(this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->show();
}

void MainWindow::applyChatFont()
{
    const QFont font = userList->font();
    inputLine->setFont(font);
    for (const TabInfo &tab : std::as_const(tabs)) {
        if (tab.chatView)
            tab.chatView->setFont(font);
    }
}

void MainWindow::applyTimestampFormat() {}

void MainWindow::applyChatBackground()
{
    const ChatBackground background(currentTheme, chatBgImage, chatBgColor);
    for (const TabInfo &tab : std::as_const(tabs)) {
        if (tab.chatView)
            background.applyTo(*tab.chatView);
    }
}

// ---------------------------------------------------------------------------------------------
// Appearance

void MainWindow::applyTheme(const QString &theme)
{
    setStyleSheet(QString());
    statusBar()->setStyleSheet(QString());
    if (listTree)
        listTree->setStyleSheet(QString());
    setAttribute(Qt::WA_TranslucentBackground, false);
    setAutoFillBackground(true);
    if (QWidget *central = centralWidget()) {
        central->setAttribute(Qt::WA_TranslucentBackground, false);
        central->setAutoFillBackground(true);
        central->setStyleSheet(QString());
    }
    setStyleSheet(ThemeManager::globalStyleSheet(theme));
    currentTheme = theme;
    QSettings().setValue(u"theme"_s, theme);
    tabBar->setTheme(theme);
    userList->setStyleSheet(u"QListWidget { border: 1px solid %1; }"_s.arg(
            ThemeManager::isDark(theme) ? "#555"_L1 : "#ccc"_L1));
    tabWidget->setStyleSheet(ThemeManager::tabWidgetStyleSheet(theme));
    addCloseButtonToAllTabs();
    splitter->setStyleSheet(u"QSplitter::handle { background: transparent; }"_s);
    applyChatBackground();
    tabBar->updateGeometry();
    userList->setVisible(userListShown);
    updateStatusBar();
    repaint();
}

void MainWindow::onToggleTheme() {}

void MainWindow::updateStatusBar()
{
    if (connection->isConnected()) {
        statusBar()->setStyleSheet(u"QStatusBar { background-color: #d4edda; }"_s);
        statusBar()->showMessage(
                tr("Connected to %1 as %2").arg(connection->getHost(), connection->currentNick()));
    } else {
        statusBar()->setStyleSheet(u"QStatusBar { background-color: #f8d7da; }"_s);
        statusBar()->showMessage(tr("Disconnected"));
    }
}

void MainWindow::updateUserListVisibility(bool visible)
{
    userListShown = visible;
    userList->setVisible(visible);
    adjustSplitterToRatio();
}

void MainWindow::adjustSplitterToRatio()
{
    if (!splitter || !splitterReady || splitter->width() <= 0)
        return;
    const int width = splitter->width();
    const int listWidth = userListShown ? width / 5 : 0;
    splitter->setSizes({width - listWidth, listWidth});
}

void MainWindow::onSplitterMoved(int, int) {}

// ---------------------------------------------------------------------------------------------
// Session

void MainWindow::showConnectDialog()
{
    // The channels of the running session are safe before another server is picked.
    if (connection->isConnected() && !currentServerId.isEmpty()) {
        recordAutojoin();
        saveCurrentServerConfig();
    }
    auto *dialog = new ConnectDialog(this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setCurrentTheme(currentTheme);
    connect(dialog, &QDialog::accepted, this, [this, dialog] { acceptConnectDialog(*dialog); });
    dialog->show();
    DialogParts::keepCentered(*dialog, *this);
}

void MainWindow::acceptConnectDialog(const ConnectDialog &dialog)
{
    const ServerConfig config = dialog.activeServerConfig();
    autojoinChannels = config.autojoin;
    // The connection takes the alternative nick from the record, so that comes first.
    connection->setServerConfig(config);
    connection->connectToServer(dialog.server(), static_cast<quint16>(dialog.port()),
                                config.nickname, config.realName, config.useSsl);
    currentServerId = ServerStore::serverId(dialog.server(), dialog.port());
    saveCurrentServerConfig();
}

void MainWindow::onConnectTriggered()
{
    showConnectDialog();
}

void MainWindow::onDisconnectTriggered()
{
    if (connection->isConnected())
        saveCurrentServerConfig();
    connection->disconnectFromServer();
}

void MainWindow::onReconnectTriggered()
{
    if (!connection->isConnected())
        return;
    saveCurrentServerConfig();
    connection->disconnectFromServer();
    QTimer::singleShot(ReconnectDelayMs, this, [this] {
        const ServerConfig config = connection->serverConfig();
        // The session has no getter for its port.
        connection->connectToServer(connection->getHost(), ServerStore::DefaultPort,
                                    config.nickname, config.realName, config.useSsl);
    });
}

void MainWindow::onConnected()
{
    appendToServerTab(u"*** Connected to server."_s);
    updateStatusBar();
}

void MainWindow::onRegistered()
{
    if (!currentServerId.isEmpty()) {
        const QStringList stored = ServerStore::loadAutojoin(currentServerId);
        if (!stored.isEmpty()) {
            autojoinChannels = stored;
            recordAutojoin();
        }
    }
    for (const QString &channel : std::as_const(autojoinChannels)) {
        if (!ChannelNames::isChannel(channel))
            continue;
        connection->joinChannel(channel);
        appendToServerTab(u"*** Autojoining %1"_s.arg(channel));
    }
}

void MainWindow::onDisconnected()
{
    appendToServerTab(u"*** Disconnected."_s);
    updateStatusBar();
    userList->clear();
    clearAwayState();
    pendingNick.clear();
    watchedNicks.clear();
}

void MainWindow::onError(const QString &error)
{
    appendToServerTab(u"*** Error: "_s + error);
}

void MainWindow::onRawMessage(const QString &msg)
{
    if (!listReceiving && RawLines::isShown(msg))
        appendToServerTab(u"<< "_s + msg);
}

void MainWindow::onServerMessage(const QString &msg)
{
    if (!listReceiving)
        appendToServerTab(msg);
}

void MainWindow::saveCurrentServerConfig()
{
    if (currentServerId.isEmpty()) {
        qWarning("saveCurrentServerConfig: currentServerId is empty");
        return;
    }
    ServerStore::saveConfig(currentServerId, connection->serverConfig(),
                            ServerStore::AddressFallback::KeepStored);
}

void MainWindow::loadCurrentServerConfig()
{
    if (currentServerId.isEmpty())
        return;
    const ServerConfig config =
            ServerStore::loadConfig(currentServerId, connection->serverConfig());
    connection->setServerConfig(config);
    autojoinChannels = config.autojoin;
}

void MainWindow::recordAutojoin()
{
    ServerConfig config = connection->serverConfig();
    config.autojoin = autojoinChannels;
    connection->setServerConfig(config);
}

void MainWindow::setChannelAutojoin(const QString &channel, bool enable)
{
    const QString name = ChannelNames::withPrefix(channel);
    if (!enable)
        autojoinChannels.removeAll(name);
    else if (!autojoinChannels.contains(name))
        autojoinChannels.append(name);

    recordAutojoin();
    saveCurrentServerConfig();
    appendToServerTab(
            (enable ? u"*** Added %1 to autojoin list"_s : u"*** Removed %1 from autojoin list"_s)
                    .arg(name));
}

// ---------------------------------------------------------------------------------------------
// Tabs

QWidget *MainWindow::createChannelTab(const QString &, bool isChannel)
{
    return ConversationPage::create(isChannel);
}

MainWindow::TabInfo MainWindow::createTabInfo(const QString &name, bool isChannel)
{
    TabInfo info;
    info.page = createChannelTab(name, isChannel);
    info.chatView = info.page->findChild<QTextBrowser *>();
    new InputForwarder(*info.chatView, *inputLine);
    return info;
}

void MainWindow::insertTab(const QString &name, const TabInfo &info)
{
    tabs.insert(name, info);
    const int index = PlainTabs::add(*tabWidget, info.page, name);
    tabWidget->setTabToolTip(index, name);
    ConversationPage::setName(*info.page, name);
    TabStrip::setTabOrderAfter(*tabBar, *info.page);
}

void MainWindow::openTab(const QString &name)
{
    const bool isChannel = ChannelNames::isChannel(name);
    TabInfo info = createTabInfo(name, isChannel);
    if (isChannel) {
        info.topicBar = info.page->findChild<QWidget *>(u"topicBar"_s);
        info.topicLabel = info.page->findChild<QLabel *>(u"topicLabel"_s);
        info.editTopicBtn = info.page->findChild<QPushButton *>(u"editTopicBtn"_s);
        if (info.editTopicBtn)
            connect(info.editTopicBtn, &QPushButton::clicked, this,
                    [this, name] { editTopic(name); });
        updateTopicLabel(name);
        updateTopicEditButton(name);
    } else if (TabNames::isPrivate(name)) {
        info.peerNick = name;
        watch(name);
    }
    insertTab(name, info);
    if (currentTabName == TabNames::Server)
        tabWidget->setCurrentWidget(info.page);
    applyChatBackground();
    addCloseButtonToAllTabs();
}

QString MainWindow::findPrivateChatTab(const QString &nick) const
{
    for (auto tab = tabs.cbegin(); tab != tabs.cend(); ++tab) {
        if (!TabNames::isPrivate(tab.key()))
            continue;
        const QString &candidate = tab->peerNick.isEmpty() ? tab.key() : tab->peerNick;
        if (equalsIgnoringCase(candidate, nick))
            return tab.key();
    }
    return {};
}

void MainWindow::addCloseButtonToAllTabs()
{
    TabStrip::updateCloseButtons(*tabBar, *this, [this](int index) { closeTab(index); });
}

void MainWindow::onTabChanged(int index)
{
    if (index < 0)
        return;
    if (!currentTabName.isEmpty())
        inputDrafts.insert(currentTabName, inputLine->text());
    const QString name = tabWidget->tabText(index);
    currentTabName = name;
    const auto tab = tabs.find(name);
    if (tab != tabs.end() && tab->highlighted) {
        tab->highlighted = false;
        tabBar->unhighlightTab(tabWidget->currentIndex());
        PlainTabs::setMarked(*tabWidget, index, false);
    }

    const bool isChannel = ChannelNames::isChannel(name);
    updateUserListVisibility(isChannel);
    emojiButton->setVisible(isChannel || TabNames::isPrivate(name));
    InputRow::showPageFor(name, *mainStack);
    inputLine->setPlaceholderText(InputRow::placeholderFor(name));
    userList->clear();
    if (isChannel) {
        const QStringList entries = channelUsers.value(name);
        for (const QString &entry : entries)
            userList->addItem(entry);
        if (tab != tabs.end() && tab->topicBar) {
            tab->topicBar->show();
            updateTopicLabel(name);
            updateTopicEditButton(name);
        }
    }
    updateNickCompletionModel();
    updateOwnUserAppearance();
    inputLine->setText(inputDrafts.value(currentTabName));
    addCloseButtonToAllTabs();
    // The ratio holds only once the layout has settled.
    QTimer::singleShot(0, this, [this] { adjustSplitterToRatio(); });
}

void MainWindow::closeTab(int index)
{
    // A close button can carry an index that no tab holds any more.
    if (index < 0 || index >= tabWidget->count())
        return;
    const QString name = tabWidget->tabText(index);
    if (name == TabNames::Server)
        return;
    if (TabNames::isPrivate(name) && watchedNicks.contains(name.toLower())) {
        connection->sendWatch(name, false);
        watchedNicks.remove(name.toLower());
    }
    if (ChannelNames::isChannel(name) && connection->isConnected()) {
        connection->partChannel(name);
        appendToServerTab(u"*** You left %1"_s.arg(name));
    }
    if (name == TabNames::List) {
        listTree = nullptr;
        listInfoLabel = nullptr;
    }
    // The page stays alive, unseen, until the window goes. Another tab may come to the front
    // within this call, which stores a draft under the closing name.
    tabWidget->removeTab(index);
    tabs.remove(name);
    inputDrafts.remove(name);
    channelTopics.remove(name);
    if (currentTabName == name) {
        currentTabName = TabNames::Server;
        updateUserListVisibility(false);
        emojiButton->hide();
        updateNickCompletionModel();
    }
}

void MainWindow::onTabContextMenu(const QPoint &pos)
{
    const int index = tabBar->tabAt(pos);
    if (index < 0)
        return;
    const QString name = tabWidget->tabText(index);
    if (name == TabNames::Server || name == TabNames::List)
        return;

    QMenu menu;
    const QAction *close = menu.addAction(tr("Close"));
    addAutojoinEntry(menu, autojoinChannels.contains(name));
    const QAction *chosen = execMenu(menu, *tabBar, pos);
    if (!chosen)
        return;
    if (chosen == close)
        closeTab(index);
    else
        setChannelAutojoin(name, !autojoinChannels.contains(name));
}

void MainWindow::updateTopicLabel(const QString &channel)
{
    const TabInfo tab = tabs.value(channel);
    if (!tab.topicLabel || !tab.topicBar)
        return;
    const QString topic = channelTopics.value(channel);
    // Otherwise a screen reader says the label's text.
    tab.topicLabel->setAccessibleName(topic.isEmpty() ? tr("No topic") : QString());
    if (topic.isEmpty())
        tab.topicLabel->clear();
    else
        tab.topicLabel->setText(IrcText::toHtml(topic));
}

void MainWindow::updateTopicEditButton(const QString &channel)
{
    if (QPushButton *button = tabs.value(channel).editTopicBtn)
        button->setVisible(isUserOperator(channel));
}

void MainWindow::editTopic(const QString &channel)
{
    if (!connection->isConnected())
        return;
    // The button stays in sight until something else happens after the status was lost.
    if (!isUserOperator(channel)) {
        QMessageBox::warning(this, tr("Permission denied"),
                             tr("You must be an operator to change the topic."), QMessageBox::Ok);
        return;
    }
    // Operators can set topics with U+2028, which the editor gives back as a line break: what
    // follows it would be sent as a command.
    EditTopicDialog dialog(channel, LineBreaks::toSpaces(channelTopics.value(channel)),
                           currentTheme, this);
    if (dialog.exec() != QDialog::Accepted)
        return;
    // Shown at once. Whatever became of the link, the tab or the operator status meanwhile, the
    // text is what the user wants; a server that refuses it says so, and its next word on the topic
    // puts the label right.
    const QString topic = dialog.newTopic();
    connection->sendRaw(u"TOPIC %1 :%2"_s.arg(channel, topic));
    channelTopics.insert(channel, topic);
    updateTopicLabel(channel);
}

// ---------------------------------------------------------------------------------------------
// Lines

void MainWindow::appendMessageToTab(const QString &tabName, const QString &text,
                                    const QString &sender, bool isStatus)
{
    const QString time = currentTime(timestampFormat);
    if (!tabs.contains(tabName))
        openTab(tabName);
    if (!ensureTable(tabName))
        return;
    ChatRow row = makeRow(tabName, text, sender, isStatus);
    row.time = time;
    const TabInfo tab = tabs.value(tabName);
    pendingRows.add(*tab.chatView, *tab.table, row);
    // While a read is being cut into lines nobody but our own slots can look at a conversation,
    // so its rows are written together when it ends: one change of the document instead of many.
    if (!connection->isReading())
        pendingRows.flush();
    if (!isOwnNick(sender))
        drawAttention(tabName, text, sender);
}

bool MainWindow::ensureTable(const QString &tabName)
{
    TabInfo &tab = tabs[tabName];
    if (!tab.chatView) {
        qWarning("appendMessageToTab: chatView is null for tab %s", qUtf8Printable(tabName));
        return false;
    }
    if (!tab.table)
        tab.table = ChatTable::create(*tab.chatView, tabName == TabNames::Server ? 2 : 3);
    if (!tab.table) {
        qWarning("appendMessageToTab: could not create table for tab %s", qUtf8Printable(tabName));
        return false;
    }
    return true;
}

ChatRow MainWindow::makeRow(const QString &tabName, const QString &text, const QString &sender,
                            bool isStatus) const
{
    const bool isOwnAway = isAway && isOwnNick(sender);
    ChatRow row;
    row.nick = sender;
    row.hasNickCell = tabName != TabNames::Server;
    row.ownAway = isOwnAway;
    row.dimmed = isStatus || isOwnAway;
    if (isOwnAway && !isStatus)
        row.text = u"[Away: %1] %2"_s.arg(awayMessage, text);
    else
        row.text = tabName == TabNames::Server ? text : QString(u' ' + text);
    return row;
}

bool MainWindow::isOwnNick(const QString &nick) const
{
    return equalsIgnoringCase(nick, connection->currentNick())
           || (!pendingNick.isEmpty() && equalsIgnoringCase(nick, pendingNick));
}

void MainWindow::appendToServerTab(const QString &text)
{
    appendMessageToTab(TabNames::Server, text, QString(), false);
}

// ---------------------------------------------------------------------------------------------
// Attention

void MainWindow::drawAttention(const QString &tabName, const QString &text, const QString &sender)
{
    if (!Attention::isDeserved(tabName, text, connection->currentNick()))
        return;
    highlightTab(tabName);
    if (tabName == currentTabName)
        return;
    const Attention::Notice notice = Attention::noticeOf(tabName, text, sender);
    showNotification(notice.title, notice.message, tabName);
}

void MainWindow::highlightTab(const QString &tabName)
{
    const auto tab = tabs.find(tabName);
    if (tab == tabs.end() || tab->highlighted)
        return;
    // Set for the tab on show as well, which is not marked: it is then not marked either once the
    // user has left it, until it has been visited again.
    tab->highlighted = true;
    const int index = tabWidget->indexOf(tab->page);
    if (index >= 0 && tabName != currentTabName) {
        tabBar->highlightTab(index);
        PlainTabs::setMarked(*tabWidget, index, true);
    }
}

void MainWindow::showNotification(const QString &title, const QString &message,
                                  const QString &tabName)
{
    if (trayIcon && QSystemTrayIcon::supportsMessages())
        notifications->show(*trayIcon, title, message, tabs.value(tabName).page);
    else if (!isActiveWindow())
        statusBar()->showMessage(title + u": "_s + message, NotificationMs);
}

// The page of a tab that has been closed is in no tab.
void MainWindow::showPage(QWidget *page)
{
    SystemTray::bringToFront(*this);
    if (tabWidget->indexOf(page) >= 0)
        tabWidget->setCurrentWidget(page);
}

// ---------------------------------------------------------------------------------------------
// Membership

QString MainWindow::stripModePrefix(const QString &entry) const
{
    return NickList::stripPrefix(entry);
}

void MainWindow::addUserToList(const QString &channel, const QString &entry)
{
    if (channel == currentTabName)
        userList->addItem(entry);
}

void MainWindow::removeUserFromList(const QString &channel, const QString &entry)
{
    if (channel == currentTabName)
        UserListRows::removeFirst(*userList, entry);
}

void MainWindow::clearUserList(const QString &channel)
{
    if (channel == currentTabName)
        userList->clear();
}

std::optional<QString> MainWindow::takeUser(const QString &channel, const QString &nick)
{
    const auto users = channelUsers.find(channel);
    return users == channelUsers.end() ? std::nullopt : NickList::remove(*users, nick);
}

void MainWindow::dropUser(const QString &channel, const QString &nick)
{
    if (const auto entry = takeUser(channel, nick))
        showUserGone(channel, *entry);
}

void MainWindow::showUserGone(const QString &channel, const QString &entry)
{
    if (channel != currentTabName)
        return;
    removeUserFromList(channel, entry);
    updateNickCompletionModel();
    updateTopicEditButton(channel);
}

void MainWindow::onPrivmsg(const QString &from, const QString &target, const QString &text)
{
    appendMessageToTab(target == connection->currentNick() ? from : target, text, from, false);
}

void MainWindow::onJoin(const QString &nick, const QString &channel)
{
    // This line opens the tab of our own first join; should it ever not, the channel still gets it.
    appendMessageToTab(channel, u"joined %1"_s.arg(channel), nick, true);
    if (nick == connection->currentNick()) {
        if (!tabs.contains(channel)) {
            const TabInfo info = createTabInfo(channel, true);
            insertTab(channel, info);
            tabWidget->setCurrentWidget(info.page);
            applyChatBackground();
        }
        updateTopicEditButton(channel);
        return;
    }
    if (tabs.contains(channel)) {
        QStringList &users = channelUsers[channel];
        // Compared with the whole entry: a known "@alice" is no match for a joining "alice".
        if (!users.contains(nick, Qt::CaseInsensitive)) {
            NickList::insertSorted(users, nick);
            addUserToList(channel, nick);
            if (channel == currentTabName)
                updateNickCompletionModel();
        }
    }
    const QString privateTab = findPrivateChatTab(nick);
    if (!privateTab.isEmpty())
        appendMessageToTab(privateTab, u"is back online"_s, privateTab, true);
}

void MainWindow::onPart(const QString &nick, const QString &channel, const QString &reason)
{
    // The server's echo must not bring back a tab that the user has closed.
    if (nick == connection->currentNick() && !tabs.contains(channel))
        return;
    appendMessageToTab(channel, u"left %1 (%2)"_s.arg(channel, reason), nick, true);
    dropUser(channel, nick);
}

void MainWindow::onQuit(const QString &nick, const QString &reason)
{
    const QString text = u"quit (%1)"_s.arg(reason);
    // A closed channel keeps its entries, and a quit from it brings its tab back.
    const QStringList channels = channelUsers.keys();
    for (const QString &channel : channels) {
        const auto entry = takeUser(channel, nick);
        if (!entry)
            continue;
        appendMessageToTab(channel, text, nick, true);
        showUserGone(channel, *entry);
    }
    const QString privateTab = findPrivateChatTab(nick);
    if (!privateTab.isEmpty())
        appendMessageToTab(privateTab, text, privateTab, true);
}

void MainWindow::onKick(const QString &channel, const QString &kickedNick,
                        const QString &kickerNick, const QString &reason)
{
    appendMessageToTab(channel, u"was kicked by %1 (%2)"_s.arg(kickerNick, reason), kickedNick,
                       true);
    dropUser(channel, kickedNick);
    if (kickedNick == connection->currentNick()) {
        if (channel == currentTabName)
            userList->clear();
        channelUsers.remove(channel);
    }
}

void MainWindow::onNick(const QString &oldNick, const QString &newNick)
{
    const QStringList channels = channelUsers.keys();
    for (const QString &channel : channels)
        renameUser(channel, oldNick, newNick);
    renamePrivateTab(oldNick, newNick);
}

void MainWindow::renameUser(const QString &channel, const QString &oldNick, const QString &newNick)
{
    const auto renamed = NickList::rename(channelUsers[channel], oldNick, newNick);
    if (!renamed)
        return;
    appendMessageToTab(channel, u"is now known as %1"_s.arg(newNick), oldNick, true);
    if (channel != currentTabName)
        return;
    // In the visible list the user drops to the bottom until the list is next rebuilt.
    removeUserFromList(channel, renamed->oldEntry);
    addUserToList(channel, renamed->newEntry);
    updateNickCompletionModel();
    if (oldNick == connection->currentNick() || newNick == connection->currentNick())
        updateTopicEditButton(channel);
}

void MainWindow::renamePrivateTab(const QString &oldNick, const QString &newNick)
{
    const auto isOfPeer = [&oldNick](const QString &key, const TabInfo &info) {
        return !ChannelNames::isChannel(key) && !info.peerNick.isEmpty()
               && equalsIgnoringCase(info.peerNick, oldNick);
    };
    auto tab = tabs.cbegin();
    while (tab != tabs.cend() && !isOfPeer(tab.key(), *tab))
        ++tab;
    if (tab == tabs.cend())
        return;
    const bool isOnShow = equalsIgnoringCase(currentTabName, tab.key());
    TabInfo info = *tab;
    const int index = tabWidget->indexOf(info.page);
    tabs.erase(tab);
    info.peerNick = newNick;
    // A conversation that is open under the new name loses its record; its page stays.
    tabs.insert(newNick, info);
    if (index >= 0)
        PlainTabs::rename(*tabWidget, index, newNick);
    ConversationPage::setName(*info.page, newNick);
    if (isOnShow)
        currentTabName = newNick;
    appendMessageToTab(newNick, u"is now known as %1"_s.arg(newNick), oldNick, true);
}

void MainWindow::onNames(const QString &channel, const QList<QString> &names)
{
    pendingNames[channel].append(names);
}

void MainWindow::onNamesFinished(const QString &channel)
{
    QStringList entries = pendingNames.take(channel);
    NickList::sortByRank(entries);
    channelUsers.insert(channel, entries);
    if (channel == currentTabName) {
        userList->clear();
        userList->addItems(entries);
        updateNickCompletionModel();
        updateOwnUserAppearance();
    }
    updateTopicEditButton(channel);
}

void MainWindow::onTopic(const QString &channel, const QString &topic)
{
    channelTopics.insert(channel, topic);
    updateTopicLabel(channel);
}

void MainWindow::updateOwnUserAppearance()
{
    if (userListShown)
        UserListRows::setAway(*userList, connection->currentNick(), isAway);
}

// ---------------------------------------------------------------------------------------------
// User list

void MainWindow::onUserDoubleClicked(QListWidgetItem *item)
{
    if (item)
        openPrivateChat(UserListRows::nickOf(*item));
}

void MainWindow::openPrivateChat(const QString &nick)
{
    if (!connection->isConnected() || nick.isEmpty() || isOwnNick(nick))
        return;
    if (!tabs.contains(nick)) {
        TabInfo info = createTabInfo(nick, false);
        info.peerNick = nick;
        insertTab(nick, info);
        watch(nick);
        applyChatBackground();
    }
    tabWidget->setCurrentWidget(tabs.value(nick).page);
}

void MainWindow::showUserContextMenu(const QPoint &pos)
{
    const QListWidgetItem *item = userList->itemAt(pos);
    const QString nick = item ? UserListRows::nickOf(*item) : QString();
    if (nick.isEmpty())
        return;
    // What is chosen acts on the nick and the channel of this moment: while the menu is open the
    // user may go, and the item with them.
    QMenu menu;
    if (isOwnNick(nick))
        fillOwnMenu(menu);
    else
        fillUserMenu(menu, nick);
    execMenu(menu, *userList, pos);
}

void MainWindow::fillOwnMenu(QMenu &menu)
{
    menu.addAction(isAway ? tr("Unmark Away") : tr("Marked Away..."), this, &MainWindow::onSetAway);
    menu.addAction(tr("Change Nick..."), this, &MainWindow::onChangeNick);
}

void MainWindow::fillUserMenu(QMenu &menu, const QString &nick)
{
    menu.addAction(tr("Open Private Chat"), this, [this, nick] { openPrivateChat(nick); });
    menu.addAction(tr("Whois"), this, [this, nick] { askWhois(nick); });
    menu.addSeparator();
    if (!ChannelNames::isChannel(currentTabName)) {
        menu.addAction(tr("Copy Nickname"), this,
                       [nick] { QGuiApplication::clipboard()->setText(nick); });
        return;
    }
    // Offered to everyone: a server refuses those who have no right to them.
    const QString kick = u"KICK %1 %2 :"_s.arg(currentTabName, nick);
    const QString ban = u"MODE %1 +b %2!*@*"_s.arg(currentTabName, nick);
    menu.addAction(tr("Kick"), this, [this, kick] { connection->sendRaw(kick + u"Requested"_s); });
    menu.addAction(tr("Ban"), this, [this, ban] { connection->sendRaw(ban); });
    menu.addAction(tr("Kick/Ban"), this, [this, kick, ban] {
        connection->sendRaw(ban);
        connection->sendRaw(kick + u"Banned"_s);
    });
    menu.addSeparator();
}

bool MainWindow::isUserOperator(const QString &channel) const
{
    if (!connection->isConnected())
        return false;
    const QStringList users = channelUsers.value(channel);
    const qsizetype index = NickList::indexOfNick(users, connection->currentNick());
    return index >= 0 && NickList::isOperator(users.at(index));
}

// ---------------------------------------------------------------------------------------------
// Presence

void MainWindow::askWhois(const QString &nick)
{
    whoisTab = currentTabName;
    connection->sendWhois(nick);
}

void MainWindow::onWhoisUser(const QString &nick, const QString &user, const QString &host,
                             const QString &real)
{
    WhoInfo info;
    info.username = user;
    info.hostname = host;
    info.realName = real;
    whoisResults.insert(nick, info);
}

void MainWindow::onWhoisServer(const QString &nick, const QString &server, const QString &info)
{
    whoisResults[nick].server = server;
    whoisResults[nick].serverInfo = info;
}

void MainWindow::onWhoisOperator(const QString &nick)
{
    whoisResults[nick].isOperator = true;
}

void MainWindow::onWhoisIdle(const QString &nick, int idle, const QString &signon)
{
    whoisResults[nick].idleSeconds = idle;
    whoisResults[nick].signonTime = signon;
}

void MainWindow::onWhoisChannels(const QString &nick, const QString &channels)
{
    whoisResults[nick].channels = channels;
}

void MainWindow::onWhoisAway(const QString &nick, const QString &msg)
{
    // A message to somebody who is away is answered by the same numeric. The record that this
    // starts shows nothing, and the next WHOIS of the nick replaces it.
    whoisResults[nick].awayMessage = msg;
}

void MainWindow::onWhoisEnd(const QString &, const QString &nick)
{
    const QStringList lines = whoisResults.take(nick).lines(nick);
    for (const QString &line : lines)
        appendMessageToTab(whoisTab, line, QString(), false);
}

void MainWindow::watch(const QString &nick)
{
    if (watchedNicks.contains(nick.toLower()))
        return;
    connection->sendWatch(nick, true);
    watchedNicks.insert(nick.toLower());
}

void MainWindow::onWatchStatus(const QString &nick, bool online)
{
    const QString key = findPrivateChatTab(nick);
    if (!key.isEmpty())
        appendMessageToTab(key, online ? u"is back online"_s : u"quit (WATCH)"_s, key, true);
}

// ---------------------------------------------------------------------------------------------
// Completion

void MainWindow::updateNickCompletionModel()
{
    pendingCompletion = completionSource();
    // Nobody can type within a read, which may bring the joins and quits of a whole net split.
    if (!connection->isReading())
        refreshPendingCompletion();
}

void MainWindow::refreshPendingCompletion()
{
    if (!pendingCompletion)
        return;
    for (QString &entry : pendingCompletion->entries)
        entry = stripModePrefix(entry);
    NickCompletion::setCandidates(*nickCompleter, NickCompletion::candidates(*pendingCompletion));
    pendingCompletion.reset();
}

NickCompletion::Source MainWindow::completionSource() const
{
    return {currentTabName, channelUsers.value(currentTabName), connection->currentNick()};
}

void MainWindow::completeNick()
{
    const QString text = inputLine->text();
    if (!nickCompleter || text.isEmpty() || text.startsWith(u'/'))
        return;
    const QString word = NickCompletion::wordBeforeCursor(text, inputLine->cursorPosition());
    if (word.isEmpty())
        return;
    // The entries keep their ranks here: an operator's is completed after the "@" only.
    const QStringList candidates = NickCompletion::candidates(completionSource());
    NickCompletion::setCandidates(*nickCompleter, candidates);
    if (const auto rest = NickCompletion::completionSuffix(word, candidates))
        inputLine->insert(*rest);
}

// ---------------------------------------------------------------------------------------------
// Prompts

void MainWindow::onSetAway()
{
    if (!connection->isConnected())
        return;
    if (isAway) {
        returnFromAway();
        return;
    }
    if (const auto message = Prompts::askAwayMessage(this, currentTheme))
        goAway(message->isEmpty() ? u"Away"_s : *message);
}

void MainWindow::onChangeNick()
{
    if (!connection->isConnected())
        return;
    const auto nick = Prompts::askNickname(this, currentTheme, connection->currentNick());
    if (nick && !nick->isEmpty() && *nick != connection->currentNick())
        changeNick(*nick);
}

void MainWindow::onJoinChannel()
{
    if (!connection->isConnected()) {
        QMessageBox::warning(this, tr("Error"), tr("Not connected."), QMessageBox::Ok);
        return;
    }
    bool isAccepted = false;
    const QString channel =
            QInputDialog::getText(this, tr("Join Channel"), tr("Channel name (e.g. #linux):"),
                                  QLineEdit::Normal, QString(), &isAccepted);
    if (isAccepted && !channel.isEmpty())
        connection->joinChannel(ChannelNames::withPrefix(channel));
}

// ---------------------------------------------------------------------------------------------
// Channel list

void MainWindow::requestChannelList()
{
    createListTab();
    if (listTree)
        listTree->clear();
    if (listInfoLabel)
        listInfoLabel->setText(tr("Server: loading..."));
    // A nick can be called like the tab, and then the page is that conversation's.
    if (const auto tab = tabs.constFind(TabNames::List); tab != tabs.cend())
        tabWidget->setCurrentWidget(tab->page);
    connection->sendRaw(u"LIST"_s);
}

void MainWindow::createListTab()
{
    if (tabs.contains(TabNames::List))
        return;
    const ChannelList::Page list = ChannelList::createPage(currentTheme);
    listInfoLabel = list.infoLabel;
    listTree = list.tree;
    connect(listTree, &QWidget::customContextMenuRequested, this,
            &MainWindow::showChannelListContextMenu);
    connect(listTree, &QTreeWidget::itemDoubleClicked, this,
            &MainWindow::onChannelListDoubleClicked);

    TabInfo info;
    info.page = list.page;
    insertTab(TabNames::List, info);
}

void MainWindow::onListStart()
{
    listReceiving = true;
    appendToServerTab(u"*** Receiving channel list..."_s);
    if (listTree)
        listTree->setUpdatesEnabled(false);
}

void MainWindow::onListChannel(const QString &channel, const QString &userCount,
                               const QString &topic)
{
    if (!listTree)
        return;
    ChannelList::addRow(*listTree, channel, userCount, topic);
    hasNewListRows = true;
}

void MainWindow::onListEnd()
{
    if (listTree) {
        listTree->setUpdatesEnabled(true);
        ChannelList::sortByUsers(*listTree);
        hasNewListRows = false;
    }
    listReceiving = false;
    appendToServerTab(u"*** Channel list complete."_s);
}

void MainWindow::onListInfo(const QString &serverName, int totalChannels, int totalUsers)
{
    if (listInfoLabel)
        listInfoLabel->setText(ChannelList::summary(serverName, totalChannels, totalUsers));
}

void MainWindow::filterChannelList(const QString &text)
{
    if (listTree)
        ChannelSearch::forTree(*listTree).showMatches(text);
}

void MainWindow::showChannelListContextMenu(const QPoint &pos)
{
    const QTreeWidgetItem *item = listTree ? listTree->itemAt(pos) : nullptr;
    if (!item)
        return;
    // The row, and the tree itself, may be gone by the time that an entry is chosen.
    const QString channel = ChannelList::channelOf(*item);
    const bool isAutojoined = autojoinChannels.contains(channel);

    PlainTextMenu menu;
    const QAction *join = menu.addAction(tr("Join %1").arg(channel));
    addAutojoinEntry(menu, isAutojoined);
    const QAction *chosen = execMenu(menu, *listTree, pos);
    if (!chosen)
        return;
    if (chosen == join)
        connection->joinChannel(channel);
    else
        setChannelAutojoin(channel, !isAutojoined);
}

void MainWindow::onChannelListDoubleClicked(QTreeWidgetItem *item, int)
{
    if (!item || !connection->isConnected())
        return;
    const QString channel = ChannelList::channelOf(*item);
    if (!channel.isEmpty() && !tabs.contains(channel)) {
        // Without the widgets of its topic, which thus stays empty in this tab.
        insertTab(channel, createTabInfo(channel, true));
        applyChatBackground();
    }
    if (const auto tab = tabs.constFind(channel); tab != tabs.cend())
        tabWidget->setCurrentWidget(tab->page);
    inputLine->setFocus();
    connection->joinChannel(channel);
}

// ---------------------------------------------------------------------------------------------
// Input

void MainWindow::toggleEmojiPicker()
{
    auto *picker = new EmojiPicker(this, currentTheme);
    picker->adjustSize();
    picker->move(
            EmojiPicker::placeAt(QRect(emojiButton->mapToGlobal(QPoint()), emojiButton->size()),
                                 picker->sizeHint(), PopupArea::of(*this)));
    connect(picker, &EmojiPicker::emojiSelected, inputLine, [this](const QString &emoji) {
        inputLine->insert(emoji);
        inputLine->setFocus();
    });
    picker->setAttribute(Qt::WA_DeleteOnClose);
    picker->show();
}

void MainWindow::onSendInput()
{
    // Return accepts the nick chosen in the popup and sends nothing.
    if (NickCompletion::hasChosenNick(*nickCompleter, *inputLine))
        return;
    const QString text = inputLine->text().trimmed();
    inputLine->clear();
    inputDrafts.insert(currentTabName, QString());
    if (text.isEmpty() || !connection->isConnected())
        return;
    if (text.startsWith(u'/'))
        runCommand(Commands::parse(text));
    else
        sendPlainText(text);
}

void MainWindow::sendPlainText(const QString &text)
{
    if (currentTabName == TabNames::Server) {
        appendToServerTab(u"Cannot send messages to Server tab."_s);
        return;
    }
    connection->sendPrivmsg(currentTabName, text);
    appendMessageToTab(currentTabName, text, connection->currentNick(), false);
}

void MainWindow::runCommand(const Commands::Command &command)
{
    struct Entry
    {
        QLatin1StringView name;
        qsizetype words = 0; ///< Fewer words, the command's own among them, make it unknown.
        CommandHandler handler = nullptr;
    };
    static constexpr std::array Table{
            Entry{"join"_L1, 2, &MainWindow::commandJoin},
            Entry{"part"_L1, 0, &MainWindow::commandPart},
            Entry{"nick"_L1, 2, &MainWindow::commandNick},
            Entry{"msg"_L1, 3, &MainWindow::commandMsg},
            Entry{"raw"_L1, 2, &MainWindow::commandRaw},
            Entry{"list"_L1, 0, &MainWindow::commandList},
            Entry{"away"_L1, 0, &MainWindow::commandAway},
            Entry{"back"_L1, 0, &MainWindow::commandBack},
            Entry{"whois"_L1, 2, &MainWindow::commandWhois},
            Entry{"autojoin"_L1, 2, &MainWindow::commandAutojoin},
    };
    for (const Entry &entry : Table) {
        if (command.name == entry.name && command.words.size() >= entry.words) {
            (this->*entry.handler)(command);
            return;
        }
    }
    appendMessageToTab(currentTabName, u"Unknown command: "_s + command.name, QString(), false);
}

void MainWindow::commandJoin(const Commands::Command &command)
{
    connection->joinChannel(ChannelNames::withPrefix(command.words.at(1)));
}

void MainWindow::commandPart(const Commands::Command &)
{
    // Always the tab on show, whatever follows the command and whatever the tab is.
    connection->partChannel(currentTabName);
}

void MainWindow::commandNick(const Commands::Command &command)
{
    changeNick(command.words.at(1));
}

void MainWindow::changeNick(const QString &nick)
{
    if (isAway) {
        // Unlike "/back", this leaves the conversations without a line.
        leaveAway();
        updateOwnUserAppearance();
        updateStatusBar();
    }
    pendingNick = nick;
    connection->changeNick(nick);
}

void MainWindow::commandMsg(const Commands::Command &command)
{
    const QString &target = command.words.at(1);
    const QString text = command.section(2);
    connection->sendPrivmsg(target, text);
    appendMessageToTab(target, text, connection->currentNick(), false);
}

void MainWindow::commandRaw(const Commands::Command &command)
{
    connection->sendRaw(command.section(1));
}

void MainWindow::commandList(const Commands::Command &)
{
    if (!connection->isRegistered()) {
        appendToServerTab(u"*** Please wait for registration to complete before using /list."_s);
        return;
    }
    requestChannelList();
}

void MainWindow::commandAway(const Commands::Command &command)
{
    const QString message = command.section(1).trimmed();
    goAway(message.isEmpty() ? u"Away"_s : message);
}

void MainWindow::commandBack(const Commands::Command &)
{
    returnFromAway();
}

void MainWindow::commandWhois(const Commands::Command &command)
{
    askWhois(command.words.at(1));
}

void MainWindow::commandAutojoin(const Commands::Command &command)
{
    const QString channel = ChannelNames::withPrefix(command.words.at(1));
    setChannelAutojoin(channel, !autojoinChannels.contains(channel));
}

void MainWindow::goAway(const QString &message)
{
    isAway = true;
    awayMessage = message;
    connection->sendRaw(u"AWAY :"_s + message);
    awayAction->setText(tr("Unmark Away"));
    appendToServerTab(u"*** You are marked as away ("_s + message + u")"_s);
    announceInConversations([this] { return u"is away (%1)"_s.arg(awayMessage); });
    updateStatusBar();
    updateOwnUserAppearance();
}

void MainWindow::returnFromAway()
{
    leaveAway();
    announceInConversations([] { return u"is back"_s; });
    updateStatusBar();
    updateOwnUserAppearance();
}

void MainWindow::leaveAway()
{
    connection->sendRaw(u"AWAY"_s);
    clearAwayState();
    appendToServerTab(u"*** You are back"_s);
}

void MainWindow::clearAwayState()
{
    isAway = false;
    awayMessage.clear();
    awayAction->setText(tr("Marked Away..."));
}

void MainWindow::announceInConversations(const std::function<QString()> &text)
{
    for (auto tab = tabs.cbegin(); tab != tabs.cend(); ++tab) {
        if (tab.key() == TabNames::Server || tab.key() == TabNames::List)
            continue;
        // Posted, so that the lines follow those of the command itself and are not written while
        // `tabs` is walked. Text and nick are those of that moment.
        QTimer::singleShot(0, this, [this, key = tab.key(), text] {
            appendMessageToTab(key, text(), connection->currentNick(), true);
        });
    }
}
