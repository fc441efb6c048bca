#pragma once

#include "MainWindow.h"

#include <QStringList>
#include <QVariant>

/// The one door to what a `MainWindow` keeps to itself, for tests.
///
/// What a user can see is looked at through the widgets; this is for what only a member tells, and
/// for calling what later parts of the program, or nobody yet, calls. It holds no state; the window
/// must outlive it.
class MainWindowProbe final
{
public:
    // Style sheets of the status bar.
    static constexpr QLatin1StringView ConnectedSheet{"QStatusBar { background-color: #d4edda; }"};
    static constexpr QLatin1StringView DisconnectedSheet{
            "QStatusBar { background-color: #f8d7da; }"};

    explicit MainWindowProbe(MainWindow &probed)
        : window(probed)
    {
    }

    // Members
    [[nodiscard]] IRCConnection &connection() const { return *window.connection; }
    [[nodiscard]] MyTabWidget &tabWidget() const { return *window.tabWidget; }
    [[nodiscard]] HighlightTabBar &tabBar() const { return *window.tabBar; }
    [[nodiscard]] QSplitter &splitter() const { return *window.splitter; }
    [[nodiscard]] QListWidget &userList() const { return *window.userList; }
    [[nodiscard]] QLineEdit &inputLine() const { return *window.inputLine; }
    [[nodiscard]] QLineEdit &listSearchEdit() const { return *window.listSearchEdit; }
    [[nodiscard]] QStackedWidget &mainStack() const { return *window.mainStack; }
    [[nodiscard]] QPushButton &emojiButton() const { return *window.emojiButton; }
    [[nodiscard]] QCompleter &nickCompleter() const { return *window.nickCompleter; }
    [[nodiscard]] QAction &awayAction() const { return *window.awayAction; }
    [[nodiscard]] QAction &changeNickAction() const { return *window.changeNickAction; }
    [[nodiscard]] QTreeWidget *&listTree() const { return window.listTree; }
    [[nodiscard]] QLabel *&listInfoLabel() const { return window.listInfoLabel; }
    [[nodiscard]] QSystemTrayIcon *&trayIcon() const { return window.trayIcon; }
    [[nodiscard]] QMap<QString, MainWindow::WhoInfo> &whoisResults() const
    {
        return window.whoisResults;
    }
    [[nodiscard]] QMap<QString, MainWindow::TabInfo> &tabs() const { return window.tabs; }
    [[nodiscard]] QMap<QString, QStringList> &channelUsers() const { return window.channelUsers; }
    [[nodiscard]] QMap<QString, QStringList> &pendingNames() const { return window.pendingNames; }
    [[nodiscard]] QMap<QString, QString> &channelTopics() const { return window.channelTopics; }
    [[nodiscard]] QMap<QString, QString> &inputDrafts() const { return window.inputDrafts; }
    [[nodiscard]] QStringList &autojoinChannels() const { return window.autojoinChannels; }
    [[nodiscard]] QSet<QString> &watchedNicks() const { return window.watchedNicks; }
    [[nodiscard]] QString &currentTabName() const { return window.currentTabName; }
    [[nodiscard]] QString &currentServerId() const { return window.currentServerId; }
    [[nodiscard]] QString &currentTheme() const { return window.currentTheme; }
    [[nodiscard]] QString &timestampFormat() const { return window.timestampFormat; }
    [[nodiscard]] QString &pendingNick() const { return window.pendingNick; }
    [[nodiscard]] QString &awayMessage() const { return window.awayMessage; }
    [[nodiscard]] QString &whoisTab() const { return window.whoisTab; }
    [[nodiscard]] bool &isAway() const { return window.isAway; }
    [[nodiscard]] bool &listReceiving() const { return window.listReceiving; }
    [[nodiscard]] bool &userListShown() const { return window.userListShown; }
    [[nodiscard]] bool &splitterReady() const { return window.splitterReady; }
    /// The members that preferences are kept in, by their names.
    [[nodiscard]] QVariantMap preferences() const;
    /// The same in the form in which they are stored, and the theme with them.
    [[nodiscard]] QMap<QString, QString> storedPreferences() const;
    [[nodiscard]] QString &chatBgImage() const { return window.chatBgImage; }
    [[nodiscard]] QColor &chatBgColor() const { return window.chatBgColor; }
    [[nodiscard]] QFont &chatFont() const { return window.chatFont; }
    [[nodiscard]] MainWindow &probedWindow() const { return window; }

    // Operations
    void appendMessageToTab(const QString &tabName, const QString &text, const QString &sender = {},
                            bool isStatus = false) const
    {
        window.appendMessageToTab(tabName, text, sender, isStatus);
    }
    void applyTheme(const QString &theme) const { window.applyTheme(theme); }
    void applyChatBackground() const { window.applyChatBackground(); }
    void applyChatFont() const { window.applyChatFont(); }
    void applyTimestampFormat() const { window.applyTimestampFormat(); }
    void loadPreferences() const { window.loadPreferences(); }
    void closeTab(int index) const { window.closeTab(index); }
    void clearUserList(const QString &channel) const { window.clearUserList(channel); }
    void saveCurrentServerConfig() const { window.saveCurrentServerConfig(); }
    void loadCurrentServerConfig() const { window.loadCurrentServerConfig(); }
    void setChannelAutojoin(const QString &channel, bool enable) const
    {
        window.setChannelAutojoin(channel, enable);
    }
    void adjustSplitterToRatio() const { window.adjustSplitterToRatio(); }
    void highlightTab(const QString &tabName) const { window.highlightTab(tabName); }
    void showNotification(const QString &title, const QString &message) const
    {
        window.showNotification(title, message);
    }
    void updateStatusBar() const { window.updateStatusBar(); }
    void updateOwnUserAppearance() const { window.updateOwnUserAppearance(); }
    void completeNick() const { window.completeNick(); }
    void onUserDoubleClicked(QListWidgetItem *item) const { window.onUserDoubleClicked(item); }
    [[nodiscard]] bool isUserOperator(const QString &channel) const
    {
        return window.isUserOperator(channel);
    }
    [[nodiscard]] QString findPrivateChatTab(const QString &nick) const
    {
        return window.findPrivateChatTab(nick);
    }

    /// Opens these tabs in their order, as a line in each of them does.
    void openTabs(const QStringList &names) const;
    /// Adds an empty "List" tab, which no line can open.
    void addListTab() const { window.createListTab(); }
    /// The texts of one column of the channel list from top to bottom, of those rows that are not
    /// hidden.
    [[nodiscard]] QStringList listColumn(int column) const;

    // What a user sees
    /// The tabs' texts from left to right.
    [[nodiscard]] QStringList tabTexts() const;
    /// The tab's lines, without their times: "nick|text" where there is a nick column, else "text".
    /// The blank in front of a text and those behind a nick are left off; the empty first row is
    /// not among them.
    [[nodiscard]] QStringList lines(const QString &tabName) const;
    /// The last of them, or an empty text if there is none.
    [[nodiscard]] QString lastLine(const QString &tabName) const;
    /// Colour of the text in the tab's last line; invalid if it has the default one.
    [[nodiscard]] QColor lastTextColor(const QString &tabName) const;
    /// The texts of the visible user list from top to bottom.
    [[nodiscard]] QStringList users() const;
    /// Where the entry with this text stands in the visible user list, at its middle.
    [[nodiscard]] QPoint positionOfUser(const QString &entry) const;
    /// What the completion popup can offer, in its order.
    [[nodiscard]] QStringList completions() const;
    /// The user list's share of the splitter's width, in per cent.
    [[nodiscard]] int shareOfUserList() const;
    void showTab(const QString &tabName) const;
    void clickTab(int index) const;
    /// The button in the tab at `index` that closes a tab; null if there is none.
    [[nodiscard]] QPushButton *closeButton(int index) const;
    /// Types `text` into the input line and presses Return.
    void typeLine(const QString &text) const;

private:
    MainWindow &window;
};
