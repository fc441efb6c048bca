#pragma once

#include "ChatView.h"
#include "NickCompletion.h"
#include "WhoisReply.h"

#include <QColor>
#include <QFont>
#include <QMainWindow>
#include <QMap>
#include <QSet>
#include <QStringList>

#include <functional>
#include <optional>

class ConnectDialog;
class HighlightTabBar;
class IRCConnection;
class MyTabWidget;
class Notifications;
class QAction;
class QCompleter;
class QLabel;
class QLineEdit;
class QListWidget;
class QListWidgetItem;
class QMenu;
class QPushButton;
class QSplitter;
class QStackedWidget;
class QSystemTrayIcon;
class QTextBrowser;
class QTextTable;
class QTreeWidget;
class QTreeWidgetItem;

namespace Commands {
struct Command;
}

/// The program's one top-level window and the controller of the whole system.
///
/// It owns the session (`IRCConnection`), receives all of its signals, keeps the conversation state
/// as plain members, and renders everything. A conversation is a tab; the tab's text and its key in
/// `tabs` are the same string, and the name alone tells its kind: "Server" and "List" are reserved,
/// a name that starts with "#" is a channel, and any other name is a private conversation.
///
/// All of it runs on the GUI thread. Nothing is saved when the window goes; the settings store is
/// written at the moment of each change.
class MainWindow final : public QMainWindow
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(MainWindow)

public:
    /// Widgets and state of one tab. It owns nothing: what it points to belongs to the page.
    struct TabInfo
    {
        QWidget *page = nullptr;
        QTextBrowser *chatView = nullptr; ///< Null on "List".
        QTextTable *table = nullptr;      ///< Made with the tab's first line.
        QString peerNick;                 ///< Partner of a private conversation, else empty.
        QWidget *topicBar = nullptr;      ///< On channels only, as the two widgets inside it.
        QLabel *topicLabel = nullptr;
        QPushButton *editTopicBtn = nullptr;
        bool highlighted = false; ///< A highlight was taken since the tab was last shown.
    };

    using WhoInfo = WhoisReply;

    explicit MainWindow(QWidget *parent = nullptr);

    /// Closes the tab at `index` as its close button does. "Server" and indexes that no tab holds
    /// are left alone.
    void requestCloseTab(int index);

protected:
    void resizeEvent(QResizeEvent *event) override;

private slots:
    void onConnectTriggered();
    void onDisconnectTriggered();
    void onJoinChannel();
    void onSendInput();
    void onConnected();
    void onRegistered();
    void onDisconnected();
    void onError(const QString &error);
    void onRawMessage(const QString &msg);
    void onServerMessage(const QString &msg);
    void onPrivmsg(const QString &from, const QString &target, const QString &text);
    void onJoin(const QString &nick, const QString &channel);
    void onPart(const QString &nick, const QString &channel, const QString &reason);
    void onNick(const QString &oldNick, const QString &newNick);
    void onNames(const QString &channel, const QList<QString> &names);
    void onNamesFinished(const QString &channel);
    void onTopic(const QString &channel, const QString &topic);
    void onQuit(const QString &nick, const QString &reason);
    void onKick(const QString &channel, const QString &kickedNick, const QString &kickerNick,
                const QString &reason);
    void onListStart();
    void onListChannel(const QString &channel, const QString &userCount, const QString &topic);
    void onListEnd();
    void onListInfo(const QString &serverName, int totalChannels, int totalUsers);
    void onTabChanged(int index);
    void closeTab(int index);
    void onChannelListDoubleClicked(QTreeWidgetItem *item, int column);
    void filterChannelList(const QString &text);
    /// Empty: a width set by dragging holds only until the ratio is next imposed.
    void onSplitterMoved(int pos, int index);
    void onUserDoubleClicked(QListWidgetItem *item);
    /// Completes the word at the cursor in place. No key is bound to it yet; the popup of
    /// `nickCompleter` is what users meet.
    void completeNick();
    void showUserContextMenu(const QPoint &pos);
    void showChannelListContextMenu(const QPoint &pos);
    /// Opens a new picker each time: a click outside has closed an earlier one.
    void toggleEmojiPicker();
    void onTabContextMenu(const QPoint &pos);
    void onWhoisUser(const QString &nick, const QString &user, const QString &host,
                     const QString &real);
    void onWhoisServer(const QString &nick, const QString &server, const QString &info);
    void onWhoisOperator(const QString &nick);
    void onWhoisIdle(const QString &nick, int idle, const QString &signon);
    void onWhoisChannels(const QString &nick, const QString &channels);
    void onWhoisEnd(const QString &targetTab, const QString &nick);
    void onWhoisAway(const QString &nick, const QString &msg);
    void onReconnectTriggered();
    /// Empty, and connected to nothing: there is no way to choose a theme yet.
    void onToggleTheme();
    /// Opens a preferences dialog that is not modal, beside any that is open, and returns at once.
    void openPreferencesWindow();
    void onWatchStatus(const QString &nick, bool online);
    /// Lets an operator write a new topic, in an event loop of its own, and sends it.
    void editTopic(const QString &channel);
    /// Asks for an away message, or leaves the away state at once.
    void onSetAway();
    void onChangeNick();

private:
    friend class MainWindowProbe;
    friend class PreferencesDialog; // Shows and changes the preferences.

    // Construction
    void setupUI();
    void connectWidgets();
    void setupInputRow();
    void setupMenuBar();
    void createServerTab();
    void connectSession();
    void connectPresence();
    void initSystemTray();

    // Preferences
    void loadPreferences();
    /// Gives the input line and the conversations the user list's font. `chatFont` plays no part.
    void applyChatFont();
    /// Empty, and called by nothing: each new row reads the format for itself.
    void applyTimestampFormat();
    void applyChatBackground();

    // Appearance
    void applyTheme(const QString &theme);
    void updateStatusBar();
    void updateUserListVisibility(bool visible);
    /// Gives the user list a fifth of the splitter's width, or nothing while it is hidden.
    void adjustSplitterToRatio();

    // Session
    /// Opens a connect dialog that is not modal, and returns at once.
    void showConnectDialog();
    void acceptConnectDialog(const ConnectDialog &dialog);
    /// Writes the session's record to its group of the store.
    void saveCurrentServerConfig();
    /// Refreshes the session's record from the store. Nothing calls it; it completes the pair.
    void loadCurrentServerConfig();
    /// Takes the autojoin list over into the session's record, but not into the store.
    void recordAutojoin();
    /// Puts `channel` on the session's autojoin list, or takes it off, and stores the list at once.
    void setChannelAutojoin(const QString &channel, bool enable);

    // Tabs
    /// A page without a parent, added to nothing; the caller owns it until it is in `tabWidget`.
    QWidget *createChannelTab(const QString &name, bool isChannel);
    TabInfo createTabInfo(const QString &name, bool isChannel);
    void insertTab(const QString &name, const TabInfo &info);
    void openTab(const QString &name);
    /// Key of the private tab of `nick`, compared without regard to case, or an empty string.
    QString findPrivateChatTab(const QString &nick) const;
    /// Gives each tab its close button, or puts it right, with the index at which the tab is now.
    void addCloseButtonToAllTabs();
    void updateTopicLabel(const QString &channel);
    /// Shows the button that edits the topic to operators only.
    void updateTopicEditButton(const QString &channel);

    // Lines
    /// The one door through which a line reaches the screen: writes a row to the tab `tabName`,
    /// which is opened if there is none, and scrolls it to the bottom. While lines of a read are
    /// handled the row waits for the read's end. A tab without a view, which "List" is, drops the
    /// line with a warning in the log.
    ///
    /// `text` is plain, `sender` the nick of the nick column, empty for system lines. `isStatus`
    /// marks membership and presence lines, which are grey.
    void appendMessageToTab(const QString &tabName, const QString &text, const QString &sender,
                            bool isStatus);
    bool ensureTable(const QString &tabName);
    ChatRow makeRow(const QString &tabName, const QString &text, const QString &sender,
                    bool isStatus) const;
    bool isOwnNick(const QString &nick) const;
    void appendToServerTab(const QString &text);

    // Attention
    /// Marks the tab of a line from somebody else, and notifies, where the line deserves it.
    void drawAttention(const QString &tabName, const QString &text, const QString &sender);
    void highlightTab(const QString &tabName);
    /// A click on the notification shows the tab `tabName`, if there is one.
    void showNotification(const QString &title, const QString &message,
                          const QString &tabName = {});
    void showPage(QWidget *page);

    // Membership
    QString stripModePrefix(const QString &entry) const;
    void addUserToList(const QString &channel, const QString &entry);
    void removeUserFromList(const QString &channel, const QString &entry);
    /// Empties the visible list if `channel` is on show. No event calls it.
    void clearUserList(const QString &channel);
    /// Takes the first entry of `nick` out of the model and returns it, if there is one.
    std::optional<QString> takeUser(const QString &channel, const QString &nick);
    void dropUser(const QString &channel, const QString &nick);
    /// Follows in the visible list that `entry` has left the model.
    void showUserGone(const QString &channel, const QString &entry);
    void renameUser(const QString &channel, const QString &oldNick, const QString &newNick);
    void renamePrivateTab(const QString &oldNick, const QString &newNick);
    void updateOwnUserAppearance();

    // User list
    void openPrivateChat(const QString &nick);
    void fillOwnMenu(QMenu &menu);
    void fillUserMenu(QMenu &menu, const QString &nick);
    /// True if the user's own entry in `channel` carries at least a half-operator's prefix.
    bool isUserOperator(const QString &channel) const;

    // Presence
    /// Asks the server who `nick` is; the tab on show gets the answer.
    void askWhois(const QString &nick);
    /// Asks the server to tell when `nick` comes and goes, unless it has been asked.
    void watch(const QString &nick);

    // Completion
    void updateNickCompletionModel();
    /// Does what an update has left to the end of the read in progress, if there is something.
    void refreshPendingCompletion();
    /// What there is to complete now, in the tab on show.
    [[nodiscard]] NickCompletion::Source completionSource() const;

    // Channel list
    /// Opens the "List" tab if it isn't open, empties it, and asks the server for its channels.
    void requestChannelList();
    void createListTab();

    // Input
    using CommandHandler = void (MainWindow::*)(const Commands::Command &);
    void sendPlainText(const QString &text);
    void runCommand(const Commands::Command &command);
    void commandJoin(const Commands::Command &command);
    void commandPart(const Commands::Command &command);
    void commandNick(const Commands::Command &command);
    void commandMsg(const Commands::Command &command);
    void commandRaw(const Commands::Command &command);
    void commandList(const Commands::Command &command);
    void commandAway(const Commands::Command &command);
    void commandBack(const Commands::Command &command);
    void commandWhois(const Commands::Command &command);
    void commandAutojoin(const Commands::Command &command);
    void changeNick(const QString &nick);
    void goAway(const QString &message);
    void returnFromAway();
    void leaveAway();
    void clearAwayState();
    void announceInConversations(const std::function<QString()> &text);

    // The preferences: thirteen members, kept for the user through a whole cycle of store and
    // dialog. Three have an effect: `timestampFormat` formats the time of each new row, and the
    // background's image and colour are what `applyChatBackground` shows.
    QString chatBgImage;
    QColor chatBgColor;
    QString timestampFormat = QStringLiteral("[HH:mm:ss]");
    QFont chatFont{QStringLiteral("Monaco"), 12};
    int emojiSize = 20;
    bool autoReconnect = true;
    int reconnectDelay = 10; ///< Seconds.
    int reconnectAttempts = 0;
    int pingInterval = 60; ///< Seconds.
    int pingTimeout = 45;  ///< Seconds.
    bool acceptInvalidSsl = false;
    QString logPath;
    bool logEnabled = false;
    QMap<QString, QStringList> channelUsers; ///< Per channel, its entries in the model's order.
    QStringList autojoinChannels;
    MyTabWidget *tabWidget = nullptr;
    QLineEdit *inputLine = nullptr;
    QLineEdit *listSearchEdit = nullptr;
    QStackedWidget *mainStack = nullptr;
    QListWidget *userList = nullptr;
    IRCConnection *connection = nullptr; ///< Lives as long as the window.
    QTreeWidget *listTree = nullptr;     ///< Null unless the List tab is open.
    QLabel *listInfoLabel = nullptr;     ///< Null unless the List tab is open.
    QSplitter *splitter = nullptr;
    HighlightTabBar *tabBar = nullptr;
    QCompleter *nickCompleter = nullptr;
    QPushButton *emojiButton = nullptr;
    QSystemTrayIcon *trayIcon = nullptr; ///< Null where there is no tray.
    QMap<QString, WhoInfo> whoisResults;
    QString whoisTab = QStringLiteral("Server");
    QAction *awayAction = nullptr;
    QAction *changeNickAction = nullptr;
    bool isAway = false;
    QString awayMessage;
    QString pendingNick; ///< Asked for by the user and not yet confirmed by the server.
    QMap<QString, TabInfo> tabs;
    QMap<QString, QStringList> pendingNames; ///< Names between the first 353 and its 366.
    QString currentTabName;
    QString currentTheme;
    QMap<QString, QString> channelTopics;
    bool splitterReady = true; ///< Nothing clears it.
    bool listReceiving = false;
    QSet<QString> watchedNicks; ///< In lower case.
    QString currentServerId;    ///< Empty until the first connect.
    bool userListShown = false;
    QMap<QString, QString> inputDrafts;
    Notifications *notifications = nullptr;
    RowQueue pendingRows; ///< Of the read in progress: written together when it ends.
    /// What the read in progress has updated the completion with last, if it has.
    std::optional<NickCompletion::Source> pendingCompletion;
    bool hasNewListRows = false; ///< Whether the read in progress has added rows to `listTree`.
};
