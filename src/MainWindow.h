#pragma once

#include "ChatView.h"
#include "NickCompletion.h"
#include "Preferences.h"
#include "WhoInfo.h"

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

/// The program's main window and the controller of the whole program.
///
/// It owns the session (`IRCConnection`), handles all of its signals, keeps the conversations'
/// state as plain members, and displays it. Each conversation is a tab. The tab's text is also its
/// key in `tabs`, and determines its kind: "Server" and "List" are reserved, a name that starts
/// with "#" is a channel, and any other name is a private conversation.
///
/// Everything runs on the GUI thread. The destructor stores nothing: each change is stored at once.
class MainWindow final : public QMainWindow, private Preferences
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(MainWindow)

public:
    /// Widgets and state of one tab. Owns nothing: the widgets and the table belong to the page.
    struct TabInfo
    {
        QWidget *page = nullptr;
        QTextBrowser *chatView = nullptr; ///< Null on "List".
        QTextTable *table = nullptr;      ///< Created with the tab's first line.
        QString peerNick;                 ///< The other user of a private conversation, else empty.
        QWidget *topicBar = nullptr;      ///< For channels only, like the two widgets in it.
        QLabel *topicLabel = nullptr;
        QPushButton *editTopicBtn = nullptr;
        bool highlighted = false; ///< Highlighted since it was last made current.
    };

    using WhoInfo = ::WhoInfo;

    explicit MainWindow(QWidget *parent = nullptr);

    /// Closes the tab at `index` like its close button. Does nothing for "Server" and for an index
    /// without a tab.
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
    /// Intended: empty. A dragged width lasts until the next adjustSplitterToRatio().
    void onSplitterMoved(int pos, int index);
    void onUserDoubleClicked(QListWidgetItem *item);
    /// Completes the word at the cursor. Not bound to a key yet; users complete with the popup of
    /// `nickCompleter`.
    void completeNick();
    void showUserContextMenu(const QPoint &pos);
    void showChannelListContextMenu(const QPoint &pos);
    /// Opens a new picker. A click outside has closed any earlier one.
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
    /// Empty and not connected: themes cannot be chosen yet.
    void onToggleTheme();
    /// Opens a non-modal preferences dialog, even if another one is open.
    void openPreferencesWindow();
    void onWatchStatus(const QString &nick, bool online);
    /// Asks an operator for a new topic in a nested event loop, and sends it.
    void editTopic(const QString &channel);
    /// Asks for an away message, or leaves the away state without asking.
    void onSetAway();
    void onChangeNick();

private:
    friend class MainWindowProbe;
    friend class PreferencesDialog; // Reads and writes the preferences.

    // Construction
    void setupUI();
    void connectWidgets();
    void setupMenuBar();
    void createServerTab();
    void connectSession();
    void initSystemTray();

    // Preferences
    void loadPreferences();
    /// Intended: applies the user list's font, not `chatFont`.
    void applyChatFont();
    /// Empty and not called: each new row reads the format.
    void applyTimestampFormat();
    void applyChatBackground();

    // Appearance
    void applyTheme(const QString &theme);
    void updateStatusBar();
    void updateUserListVisibility(bool visible);
    /// Sets the user list's width to a fifth of the splitter's, or to 0 while it is hidden.
    void adjustSplitterToRatio();

    // Session
    /// Opens a non-modal connect dialog.
    void showConnectDialog();
    void acceptConnectDialog(const ConnectDialog &dialog);
    void saveCurrentServerConfig();
    /// Not called yet; the counterpart of saveCurrentServerConfig().
    void loadCurrentServerConfig();
    /// Copies the autojoin list to the session's `ServerConfig` without storing it.
    void copyAutojoinToSession();
    /// Adds `channel` to the autojoin list or removes it, and stores the list.
    void setChannelAutojoin(const QString &channel, bool enable);

    // Tabs
    /// Returns a page without a parent.
    QWidget *createChannelTab(const QString &name, bool isChannel);
    /// Adds the tab `name` with its record. The reference is valid until the tab is closed or
    /// renamed.
    TabInfo &addTab(const QString &name, QWidget *page);
    /// Adds the tab `name` for its first line, and makes it current if "Server" is current.
    TabInfo &openTab(const QString &name);
    /// Returns the key of the private tab of `nick`, in any case, or an empty string.
    QString findPrivateChatTab(const QString &nick) const;
    /// Adds missing close buttons and updates the indexes of all.
    void addCloseButtonToAllTabs();
    void addAutojoinEntry(QMenu &menu, const QString &channel);
    void updateTopicLabel(const QString &channel);
    /// Shows the button that edits the topic if the user is an operator.
    void updateTopicEditButton(const QString &channel);

    // Lines
    /// Appends every line that is shown: adds a row to the tab `tabName`, opening the tab if
    /// needed, and scrolls it to the bottom. Rows from one read of the socket are added when the
    /// read ends. Tabs without a view, like "List", drop the line with a warning.
    ///
    /// `text` is plain text. `sender` is the nick, empty for system lines. `isStatus` marks
    /// membership and presence lines, which are grey.
    void appendMessageToTab(const QString &tabName, const QString &text, const QString &sender,
                            bool isStatus);
    ChatRow makeRow(const QString &tabName, const QString &text, const QString &sender,
                    bool isStatus) const;
    bool isOwnNick(const QString &nick) const;
    void appendToServerTab(const QString &text);

    // Attention
    /// Handles another user's line: highlights the tab and notifies the user if needed.
    void highlightAndNotify(const QString &tabName, const QString &text, const QString &sender);
    void highlightTab(const QString &tabName);
    /// A click on the notification shows the tab `tabName`, if it exists.
    void showNotification(const QString &title, const QString &message,
                          const QString &tabName = {});

    // Membership
    QString stripModePrefix(const QString &entry) const;
    void addUserToList(const QString &channel, const QString &entry);
    void removeUserFromList(const QString &channel, const QString &entry);
    /// Clears the visible list if `channel` is current. Not called by any event.
    void clearUserList(const QString &channel);
    /// Removes the first entry of `nick` from the model and from the visible list.
    void removeUser(const QString &channel, const QString &nick);
    /// Updates what is visible after `entry` was removed from the model.
    void hideRemovedUser(const QString &channel, const QString &entry);
    void renameUser(const QString &channel, const QString &oldNick, const QString &newNick);
    void renamePrivateTab(const QString &oldNick, const QString &newNick);
    void updateOwnUserAppearance();

    // User list
    void openPrivateChat(const QString &nick);
    void fillUserMenu(QMenu &menu, const QString &nick);
    /// Returns true if the user is a half-operator or higher in `channel`.
    bool isUserOperator(const QString &channel) const;

    // Presence
    /// Sends WHOIS. The current tab will show the reply.
    void requestWhois(const QString &nick);
    /// Sends WATCH for `nick` unless it is already watched.
    void watchNick(const QString &nick);

    // Completion
    void updateNickCompletionModel();
    /// Applies an update that was deferred to the end of a read.
    void flushPendingCompletion();
    [[nodiscard]] NickCompletion::Source completionSource() const;

    // Channel list
    /// Opens the "List" tab if needed, clears it, and sends LIST.
    void requestChannelList();
    void createListTab();

    // Input
    /// Sends `text` and shows it in the tab `target`.
    void sendMessage(const QString &target, const QString &text);
    void runCommand(const Commands::Command &command);
    void changeNick(const QString &nick);

    // Away
    void goAway(const QString &message);
    /// Leaves the away state and announces it in the conversations.
    void returnFromAway();
    void leaveAway();
    void clearAwayState();
    /// Adds a status line to each conversation in the next event-loop iteration.
    void announceInConversations(const std::function<QString()> &text);

    QMap<QString, QStringList> channelUsers; ///< Entries of each channel's users.
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
    QString pendingNick; ///< Requested by the user and not yet confirmed by the server.
    QMap<QString, TabInfo> tabs;
    QMap<QString, QStringList> pendingNames; ///< Entries received in 353 until the next 366.
    QString currentTabName;
    QString currentTheme;
    QMap<QString, QString> channelTopics;
    bool splitterReady = true; ///< Always true.
    bool listReceiving = false;
    QSet<QString> watchedNicks; ///< In lower case.
    QString currentServerId;    ///< Empty until the first connect.
    bool userListShown = false;
    QMap<QString, QString> inputDrafts;
    Notifications *notifications = nullptr;
    RowQueue pendingRows; ///< Rows of the current read, written when it ends.
    /// The current read's last completion update, applied when it ends.
    std::optional<NickCompletion::Source> pendingCompletion;
    bool hasUnsortedListRows = false; ///< The current read has added rows to `listTree`.
};
