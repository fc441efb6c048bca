#pragma once

#include "MainWindow.h"

#include <QStringList>
#include <QVariant>

/// The only access of the tests to private members of `MainWindow`.
///
/// Tests check what a user sees through the widgets; use the members only for state that no widget
/// shows. The object has no state; the window must outlive it.
class MainWindowProbe final
{
public:
    // Style sheets of the status bar.
    static constexpr QLatin1StringView ConnectedSheet{"QStatusBar { background-color: #d4edda; }"};
    static constexpr QLatin1StringView DisconnectedSheet{
            "QStatusBar { background-color: #f8d7da; }"};

    explicit MainWindowProbe(MainWindow &mainWindow)
        : window(mainWindow)
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
    /// Returns the members that contain preferences, by name.
    [[nodiscard]] QVariantMap preferences() const;
    /// Returns the preferences and the theme in their stored form.
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

    /// Opens these tabs by appending a line to each.
    void openTabs(const QStringList &names) const;
    /// Adds an empty "List" tab, which a line cannot open.
    void addListTab() const { window.createListTab(); }
    /// Returns the texts of a column of the channel list, in the visible rows.
    [[nodiscard]] QStringList listColumn(int column) const;

    // What a user sees
    [[nodiscard]] QStringList tabTexts() const;
    /// Returns the lines of a tab: "nick|text" if it has a nick column, otherwise "text". Times,
    /// the leading space of a text, the trailing spaces of a nick and the empty first row are
    /// omitted.
    [[nodiscard]] QStringList lines(const QString &tabName) const;
    /// Returns the last of these lines; empty if there is none.
    [[nodiscard]] QString lastLine(const QString &tabName) const;
    /// Returns the text colour of the tab's last line; invalid if it has the default colour.
    [[nodiscard]] QColor lastTextColor(const QString &tabName) const;
    [[nodiscard]] QStringList users() const;
    /// Returns the centre of the user list entry with this text, in viewport coordinates.
    [[nodiscard]] QPoint positionOfUser(const QString &entry) const;
    [[nodiscard]] QStringList completions() const;
    /// Returns the user list's share of the splitter's width, in per cent.
    [[nodiscard]] int shareOfUserList() const;
    void showTab(const QString &tabName) const;
    void clickTab(int index) const;
    /// Returns the close button in the tab at `index`; null if there is none.
    [[nodiscard]] QPushButton *closeButton(int index) const;
    /// Types `text` into the input line and presses Return.
    void typeLine(const QString &text) const;

private:
    MainWindow &window;
};
