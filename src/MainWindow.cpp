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
#include "LineBreaks.h"
#include "LinkOpener.h"
#include "LiteralText.h"
#include "MyTabWidget.h"
#include "NickList.h"
#include "Notifications.h"
#include "PreferencesDialog.h"
#include "Prompts.h"
#include "ServerStore.h"
#include "StatusTipFilter.h"
#include "SystemTray.h"
#include "TabNames.h"
#include "TabStrip.h"
#include "ThemeManager.h"
#include "UserListRows.h"

#include <QClipboard>
#include <QCompleter>
#include <QCoreApplication>
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

#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr int ReconnectDelayMs = 1000;

constexpr int NotificationMs = 5000;

bool equalsIgnoringCase(const QString &left, const QString &right)
{
    return left.compare(right, Qt::CaseInsensitive) == 0;
}

// Shows `menu` at `pos` of `widget`. Wayland compositors show a popup without a transient parent as
// a separate window, and Qt guesses one only if the window had the last input event.
void execMenu(QMenu &menu, const QWidget &widget, const QPoint &pos)
{
    menu.winId(); // Creates the menu's window.
    menu.windowHandle()->setTransientParent(widget.window()->windowHandle());
    menu.exec(widget.mapToGlobal(pos));
}

// Returns true for what the Server tab shows as received: lines without a prefix, and those of a
// server that are not numerics. Intended: a "!" anywhere after a prefix makes the line a user's.
bool isShownRaw(const QString &line)
{
    if (!line.startsWith(u':'))
        return true;
    if (line.contains(u'!'))
        return false;
    const qsizetype space = line.indexOf(u' ');
    if (line.size() <= 4 || space == 1 || space < 0 || space + 4 >= line.size())
        return true;
    bool isNumeric = false;
    static_cast<void>(QStringView(line).sliced(space + 1, 3).toInt(&isNumeric, 10));
    return !isNumeric;
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
    // Posted, so that the dialog opens over the visible window.
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

    const InputRow row = InputRow::create();
    mainStack = row.stack;
    inputLine = row.line;
    emojiButton = row.emojiButton;
    listSearchEdit = row.listSearch;
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
        // A temporary message has timed out.
        if (message.isEmpty())
            updateStatusBar();
    });
    connect(new LinkOpener(this), &LinkOpener::failed, this, [this](const QUrl &url) {
        const QString address = url.toString(QUrl::FullyEncoded);
        statusBar()->showMessage(tr("No program opens %1").arg(Attention::shortened(address)),
                                 NotificationMs);
    });
}

void MainWindow::setupMenuBar()
{
    new StatusTipFilter(*this);
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
    addTab(TabNames::Server, createChannelTab(TabNames::Server, false));
    currentTabName = TabNames::Server;
    inputLine->setPlaceholderText(InputRow::placeholderFor(TabNames::Server));
    updateUserListVisibility(false);
    emojiButton->hide();
    updateNickCompletionModel();
    addCloseButtonToAllTabs();
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
    connect(connection, &IRCConnection::whoisUserReceived, this, &MainWindow::onWhoisUser);
    connect(connection, &IRCConnection::whoisServerReceived, this, &MainWindow::onWhoisServer);
    connect(connection, &IRCConnection::whoisOperatorReceived, this, &MainWindow::onWhoisOperator);
    connect(connection, &IRCConnection::whoisIdleReceived, this, &MainWindow::onWhoisIdle);
    connect(connection, &IRCConnection::whoisChannelsReceived, this, &MainWindow::onWhoisChannels);
    connect(connection, &IRCConnection::whoisEndReceived, this, &MainWindow::onWhoisEnd);
    connect(connection, &IRCConnection::whoisAwayReceived, this, &MainWindow::onWhoisAway);
    connect(connection, &IRCConnection::watchStatus, this, &MainWindow::onWatchStatus);
    connect(connection, &IRCConnection::ownNickChanged, this, [this] {
        updateStatusBar();
        updateOwnUserAppearance();
        pendingNick.clear();
    });
    connection->setReadFinishedHandler([this] {
        pendingRows.flush();
        flushPendingCompletion();
        if (listTree && std::exchange(hasUnsortedListRows, false))
            ChannelList::sortNewRows(*listTree);
    });
}

void MainWindow::initSystemTray()
{
    trayIcon = SystemTray::create(*this);
    notifications = new Notifications(this);
    connect(notifications, &Notifications::clicked, this, [this](QWidget *page) {
        SystemTray::bringToFront(*this);
        if (tabWidget->indexOf(page) >= 0) // Otherwise the tab has been closed.
            tabWidget->setCurrentWidget(page);
    });
}

// ---------------------------------------------------------------------------------------------
// Preferences

void MainWindow::loadPreferences()
{
    QSettings settings;
    Preferences::loadFrom(settings);
    applyChatFont();
    applyChatBackground();
}

void MainWindow::openPreferencesWindow()
{
    (new PreferencesDialog(this))->show();
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
    const bool isConnected = connection->isConnected();
    statusBar()->setStyleSheet(u"QStatusBar { background-color: %1; }"_s.arg(
            isConnected ? "#d4edda"_L1 : "#f8d7da"_L1));
    statusBar()->showMessage(
            isConnected ? tr("Connected to %1 as %2")
                                  .arg(connection->getHost(), connection->currentNick())
                        : tr("Disconnected"));
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
    // Stored before the user picks another server.
    if (connection->isConnected() && !currentServerId.isEmpty()) {
        copyAutojoinToSession();
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
    // First, since connectToServer() reads the alternative nick from it.
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
        // Intended: the default port, since the session has no getter for its own.
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
            copyAutojoinToSession();
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
    if (!listReceiving && isShownRaw(msg))
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

void MainWindow::copyAutojoinToSession()
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

    copyAutojoinToSession();
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

MainWindow::TabInfo &MainWindow::addTab(const QString &name, QWidget *page)
{
    TabInfo &tab = *tabs.insert(name, TabInfo());
    tab.page = page;
    tab.chatView = page->findChild<QTextBrowser *>();
    const int index = LiteralText::addTab(*tabWidget, page, name);
    tabWidget->setTabToolTip(index, name);
    TabStrip::setTabOrderAfter(*tabBar, *page);
    if (tab.chatView) {
        ConversationPage::setName(*page, name);
        new InputForwarder(*tab.chatView, *inputLine);
        applyChatBackground();
    }
    return tab;
}

MainWindow::TabInfo &MainWindow::openTab(const QString &name)
{
    const bool isChannel = ChannelNames::isChannel(name);
    TabInfo &tab = addTab(name, createChannelTab(name, isChannel));
    if (isChannel) {
        tab.topicBar = tab.page->findChild<QWidget *>(u"topicBar"_s);
        tab.topicLabel = tab.page->findChild<QLabel *>(u"topicLabel"_s);
        tab.editTopicBtn = tab.page->findChild<QPushButton *>(u"editTopicBtn"_s);
        connect(tab.editTopicBtn, &QPushButton::clicked, this, [this, name] { editTopic(name); });
    } else if (TabNames::isPrivate(name)) {
        tab.peerNick = name;
        watchNick(name);
    }
    if (currentTabName == TabNames::Server)
        tabWidget->setCurrentWidget(tab.page);
    addCloseButtonToAllTabs();
    return tab;
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
        LiteralText::setTabMarked(*tabWidget, index, false);
    }

    const bool isChannel = ChannelNames::isChannel(name);
    updateUserListVisibility(isChannel);
    emojiButton->setVisible(isChannel || TabNames::isPrivate(name));
    InputRow::showPageFor(name, *mainStack);
    inputLine->setPlaceholderText(InputRow::placeholderFor(name));
    userList->clear();
    if (isChannel) {
        userList->addItems(channelUsers.value(name));
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
    // Again in the next event-loop iteration, when the layout is final.
    QTimer::singleShot(0, this, [this] { adjustSplitterToRatio(); });
}

void MainWindow::closeTab(int index)
{
    // A close button can have an index that is too high; see updateCloseButtons().
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
    // The page is not deleted before the window. If another tab becomes current in this call,
    // onTabChanged() stores a draft under the closed name.
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
    menu.addAction(tr("Close"), this, [this, index] { closeTab(index); });
    addAutojoinEntry(menu, name);
    execMenu(menu, *tabBar, pos);
}

void MainWindow::addAutojoinEntry(QMenu &menu, const QString &channel)
{
    const bool isAutojoined = autojoinChannels.contains(channel);
    QAction *entry = menu.addAction(tr("Autojoin on connect"), this, [this, channel, isAutojoined] {
        setChannelAutojoin(channel, !isAutojoined);
    });
    entry->setCheckable(true);
    entry->setChecked(isAutojoined);
}

void MainWindow::updateTopicLabel(const QString &channel)
{
    const TabInfo tab = tabs.value(channel);
    if (tab.topicLabel && tab.topicBar)
        ConversationPage::setTopic(*tab.topicLabel, channelTopics.value(channel));
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
    // The button stays visible after the status is lost until its next update.
    if (!isUserOperator(channel)) {
        QMessageBox::warning(this, tr("Permission denied"),
                             tr("You must be an operator to change the topic."), QMessageBox::Ok);
        return;
    }
    // The editor returns U+2028, which a topic can contain, as a line break. The text after it
    // would be sent as a command.
    EditTopicDialog dialog(channel, LineBreaks::toSpaces(channelTopics.value(channel)),
                           currentTheme, this);
    if (dialog.exec() != QDialog::Accepted)
        return;
    // Shown before the server has confirmed it, even if the connection, the tab or the operator
    // status was lost meanwhile. The server's next topic message corrects the label.
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
    const QString time = ChatTable::currentTime(timestampFormat);
    const auto found = tabs.find(tabName);
    TabInfo &tab = found == tabs.end() ? openTab(tabName) : *found;
    if (!tab.chatView) {
        qWarning("appendMessageToTab: chatView is null for tab %s", qUtf8Printable(tabName));
        return;
    }
    if (!tab.table)
        tab.table = ChatTable::create(*tab.chatView, tabName == TabNames::Server ? 2 : 3);
    if (!tab.table) {
        qWarning("appendMessageToTab: could not create table for tab %s", qUtf8Printable(tabName));
        return;
    }
    ChatRow row = makeRow(tabName, text, sender, isStatus);
    row.time = time;
    pendingRows.add(*tab.chatView, *tab.table, row);
    // The rows of one read are written together, as one edit block instead of many. Only our own
    // slots run before the read ends, and none looks at a conversation.
    if (!connection->isReading())
        pendingRows.flush();
    if (!isOwnNick(sender))
        highlightAndNotify(tabName, text, sender);
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

void MainWindow::highlightAndNotify(const QString &tabName, const QString &text,
                                    const QString &sender)
{
    if (!Attention::isNeeded(tabName, text, connection->currentNick()))
        return;
    highlightTab(tabName);
    if (tabName == currentTabName)
        return;
    const Attention::Notification notification = Attention::notificationFor(tabName, text, sender);
    showNotification(notification.title, notification.message, tabName);
}

void MainWindow::highlightTab(const QString &tabName)
{
    const auto tab = tabs.find(tabName);
    if (tab == tabs.end() || tab->highlighted)
        return;
    // Intended: also set for the current tab, which is not marked. After the user has left it, it
    // cannot be marked until its next visit.
    tab->highlighted = true;
    const int index = tabWidget->indexOf(tab->page);
    if (index >= 0 && tabName != currentTabName) {
        tabBar->highlightTab(index);
        LiteralText::setTabMarked(*tabWidget, index, true);
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

void MainWindow::removeUser(const QString &channel, const QString &nick)
{
    const auto users = channelUsers.find(channel);
    if (users == channelUsers.end())
        return;
    if (const auto entry = NickList::remove(*users, nick))
        hideRemovedUser(channel, *entry);
}

void MainWindow::hideRemovedUser(const QString &channel, const QString &entry)
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
    // Opens the tab for the user's own join.
    appendMessageToTab(channel, u"joined %1"_s.arg(channel), nick, true);
    if (nick == connection->currentNick()) {
        if (!tabs.contains(channel))
            tabWidget->setCurrentWidget(addTab(channel, createChannelTab(channel, true)).page);
        updateTopicEditButton(channel);
        return;
    }
    if (tabs.contains(channel)) {
        QStringList &users = channelUsers[channel];
        // Intended: compares whole entries, so "@alice" does not match a joining "alice".
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
    // The server's echo must not reopen a tab that the user has closed.
    if (nick == connection->currentNick() && !tabs.contains(channel))
        return;
    appendMessageToTab(channel, u"left %1 (%2)"_s.arg(channel, reason), nick, true);
    removeUser(channel, nick);
}

void MainWindow::onQuit(const QString &nick, const QString &reason)
{
    const QString text = u"quit (%1)"_s.arg(reason);
    // Intended: a closed channel keeps its entries, and a quit from it reopens its tab.
    const QStringList channels = channelUsers.keys();
    for (const QString &channel : channels) {
        const auto entry = NickList::remove(channelUsers[channel], nick);
        if (!entry)
            continue;
        appendMessageToTab(channel, text, nick, true);
        hideRemovedUser(channel, *entry);
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
    removeUser(channel, kickedNick);
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
    // Intended: in the visible list the user moves to the bottom until the next rebuild.
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
    const bool isCurrent = equalsIgnoringCase(currentTabName, tab.key());
    TabInfo info = *tab;
    const int index = tabWidget->indexOf(info.page);
    tabs.erase(tab);
    info.peerNick = newNick;
    // Intended: replaces the record of an open conversation with the new name. Its page stays.
    tabs.insert(newNick, info);
    if (index >= 0)
        LiteralText::renameTab(*tabWidget, index, newNick);
    ConversationPage::setName(*info.page, newNick);
    if (isCurrent)
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
        addTab(nick, createChannelTab(nick, false)).peerNick = nick;
        watchNick(nick);
    }
    tabWidget->setCurrentWidget(tabs.value(nick).page);
}

void MainWindow::showUserContextMenu(const QPoint &pos)
{
    const QListWidgetItem *item = userList->itemAt(pos);
    const QString nick = item ? UserListRows::nickOf(*item) : QString();
    if (nick.isEmpty())
        return;
    // The entries keep nick and channel. The item can be deleted while the menu is open.
    QMenu menu;
    if (isOwnNick(nick)) {
        menu.addAction(isAway ? tr("Unmark Away") : tr("Marked Away..."), this,
                       &MainWindow::onSetAway);
        menu.addAction(tr("Change Nick..."), this, &MainWindow::onChangeNick);
    } else {
        fillUserMenu(menu, nick);
    }
    execMenu(menu, *userList, pos);
}

void MainWindow::fillUserMenu(QMenu &menu, const QString &nick)
{
    menu.addAction(tr("Open Private Chat"), this, [this, nick] { openPrivateChat(nick); });
    menu.addAction(tr("Whois"), this, [this, nick] { requestWhois(nick); });
    menu.addSeparator();
    if (!ChannelNames::isChannel(currentTabName)) {
        menu.addAction(tr("Copy Nickname"), this,
                       [nick] { QGuiApplication::clipboard()->setText(nick); });
        return;
    }
    // Intended: also offered without operator status. The server refuses what is not allowed.
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

void MainWindow::requestWhois(const QString &nick)
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
    // Also the reply to a message to an away user. Such a record is never shown, and the nick's
    // next WHOIS replaces it.
    whoisResults[nick].awayMessage = msg;
}

void MainWindow::onWhoisEnd(const QString &, const QString &nick)
{
    const QStringList lines = whoisResults.take(nick).lines(nick);
    for (const QString &line : lines)
        appendMessageToTab(whoisTab, line, QString(), false);
}

void MainWindow::watchNick(const QString &nick)
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
    // One read can contain hundreds of quits. The user cannot type until it ends.
    if (!connection->isReading())
        flushPendingCompletion();
}

void MainWindow::flushPendingCompletion()
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
    // Intended: entries keep their prefixes here. An operator's is completed after a typed "@".
    const QStringList candidates = NickCompletion::candidates(completionSource());
    NickCompletion::setCandidates(*nickCompleter, candidates);
    if (const auto rest = NickCompletion::completionSuffix(word, candidates))
        inputLine->insert(*rest);
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
    // The page is that of a conversation if another user has the nick "List".
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
    addTab(TabNames::List, list.page);
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
    hasUnsortedListRows = true;
}

void MainWindow::onListEnd()
{
    if (listTree) {
        listTree->setUpdatesEnabled(true);
        ChannelList::sortByUsers(*listTree);
        hasUnsortedListRows = false;
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
    // The entries keep the name. The row and the tree can be deleted while the menu is open.
    const QString channel = ChannelList::channelOf(*item);
    LiteralText::Menu menu;
    menu.addAction(tr("Join %1").arg(channel), this,
                   [this, channel] { connection->joinChannel(channel); });
    addAutojoinEntry(menu, channel);
    execMenu(menu, *listTree, pos);
}

void MainWindow::onChannelListDoubleClicked(QTreeWidgetItem *item, int)
{
    if (!item || !connection->isConnected())
        return;
    const QString channel = ChannelList::channelOf(*item);
    // Intended: the record has no topic widgets, so the topic bar of this tab stays empty.
    if (!channel.isEmpty() && !tabs.contains(channel))
        addTab(channel, createChannelTab(channel, true));
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
    connect(picker, &EmojiPicker::emojiSelected, inputLine, [this](const QString &emoji) {
        inputLine->insert(emoji);
        inputLine->setFocus();
    });
    picker->setAttribute(Qt::WA_DeleteOnClose);
    picker->showBeside(*emojiButton);
}

void MainWindow::onSendInput()
{
    // Return accepts the nick highlighted in the popup and sends nothing.
    if (NickCompletion::hasChosenNick(*nickCompleter, *inputLine))
        return;
    const QString text = inputLine->text().trimmed();
    inputLine->clear();
    inputDrafts.insert(currentTabName, QString());
    if (text.isEmpty() || !connection->isConnected())
        return;
    if (text.startsWith(u'/'))
        runCommand(Commands::parse(text));
    else if (currentTabName == TabNames::Server)
        appendToServerTab(u"Cannot send messages to Server tab."_s);
    else
        sendMessage(currentTabName, text);
}

void MainWindow::sendMessage(const QString &target, const QString &text)
{
    connection->sendPrivmsg(target, text);
    appendMessageToTab(target, text, connection->currentNick(), false);
}

void MainWindow::runCommand(const Commands::Command &command)
{
    using Commands::Action;
    const QString word = command.words.value(1);
    switch (command.action) {
    case Action::Join:
        connection->joinChannel(ChannelNames::withPrefix(word));
        return;
    case Action::Part: // Intended: always the current tab, whatever it is and whatever follows.
        connection->partChannel(currentTabName);
        return;
    case Action::Nick:
        changeNick(word);
        return;
    case Action::Msg:
        sendMessage(word, command.section(2));
        return;
    case Action::Raw:
        connection->sendRaw(command.section(1));
        return;
    case Action::List:
        if (connection->isRegistered())
            requestChannelList();
        else
            appendToServerTab(
                    u"*** Please wait for registration to complete before using /list."_s);
        return;
    case Action::Away:
        goAway(command.section(1).trimmed());
        return;
    case Action::Back:
        returnFromAway();
        return;
    case Action::Whois:
        requestWhois(word);
        return;
    case Action::Autojoin:
        setChannelAutojoin(word, !autojoinChannels.contains(ChannelNames::withPrefix(word)));
        return;
    case Action::Unknown:
        appendMessageToTab(currentTabName, u"Unknown command: "_s + command.name, QString(), false);
        return;
    }
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

void MainWindow::changeNick(const QString &nick)
{
    // Intended: unlike "/back", writes no line to the conversations.
    if (isAway)
        leaveAway();
    pendingNick = nick;
    connection->changeNick(nick);
}

// ---------------------------------------------------------------------------------------------
// Away

void MainWindow::onSetAway()
{
    if (!connection->isConnected())
        return;
    if (isAway)
        returnFromAway();
    else if (const auto message = Prompts::askAwayMessage(this, currentTheme))
        goAway(*message);
}

void MainWindow::goAway(const QString &message)
{
    isAway = true;
    awayMessage = message.isEmpty() ? u"Away"_s : message;
    connection->sendRaw(u"AWAY :"_s + awayMessage);
    awayAction->setText(tr("Unmark Away"));
    appendToServerTab(u"*** You are marked as away ("_s + awayMessage + u")"_s);
    announceInConversations([this] { return u"is away (%1)"_s.arg(awayMessage); });
    updateStatusBar();
    updateOwnUserAppearance();
}

void MainWindow::returnFromAway()
{
    leaveAway();
    announceInConversations([] { return u"is back"_s; });
}

void MainWindow::leaveAway()
{
    connection->sendRaw(u"AWAY"_s);
    clearAwayState();
    appendToServerTab(u"*** You are back"_s);
    updateOwnUserAppearance();
    updateStatusBar();
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
        // Posted, because the lines must follow the command's own, and `tabs` must not change in
        // this loop. `text` and nick are evaluated then.
        QTimer::singleShot(0, this, [this, key = tab.key(), text] {
            appendMessageToTab(key, text(), connection->currentNick(), true);
        });
    }
}
