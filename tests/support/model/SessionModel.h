#pragma once

#include <QList>
#include <QMap>
#include <QObject>
#include <QSet>
#include <QString>
#include <QStringList>

#include <memory>

class IRCConnection;

namespace Commands {
struct Command;
}

/// A model of what a window must show and send, without widgets.
///
/// It receives the session's signals and must be created after the window, so that it receives them
/// after the window. Call the operations below for the user's actions, directly after the window
/// has handled them and before any other event. It never reads the window.
class SessionModel final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SessionModel)

public:
    /// A page of the tab widget.
    struct Page
    {
        QString text;
        qsizetype rows = 0;  ///< Lines of the conversation.
        bool hasView = true; ///< False for the channel list.
        int closeIndex = -1; ///< The tab that its close button closes; -1 if it has no button yet.
    };
    /// A record of `tabs`.
    struct Record
    {
        std::shared_ptr<Page> page;
        QString peerNick;
    };
    struct ListRow
    {
        QString channel;
        QString topic;
        bool isShown = true;
    };

    /// The window must have no tab except "Server".
    explicit SessionModel(const IRCConnection &modelled);

    // Tabs
    void showTab(int index);
    void closeTab(int index);
    void clickCloseButton(int index);
    void doubleClickTab(int index);
    void pressCloseShortcut();
    void toggleAutojoin(const QString &channel);
    void setAutojoin(const QString &channel, bool enable);
    void applyPreferences();

    // Input line
    /// Sets the text of the line.
    void enterText(const QString &text);
    /// Enters the text and presses Return.
    void typeLine(const QString &text);

    // Dialogs and menus, with what was chosen or typed in them
    void connectByDialog();
    void disconnectByMenu();
    void goAway(const QString &message);
    void returnFromAway();
    void changeNick(const QString &nick);
    void joinChannel(const QString &channel);
    void setTopic(const QString &channel, const QString &topic);
    void openPrivateChat(const QString &nick);
    void whois(const QString &nick);
    void sendRaw(const QString &line);

    // Channel list
    void requestChannelList();
    void filterChannelList(const QString &text);
    void doubleClickListRow(const QString &channel);

    /// Returns the lines that the client must have sent since the last call or the last connect.
    [[nodiscard]] QStringList readExpected();
    [[nodiscard]] bool isOwnNick(const QString &nick) const;

    // The expected state of the window
    QList<std::shared_ptr<Page>> pages;
    int currentIndex = 0;
    QMap<QString, Record> records;
    QString current = QStringLiteral("Server");
    QMap<QString, QStringList> channelUsers;
    QMap<QString, QString> topics;
    QSet<QString> watched;
    QStringList autojoin;
    QStringList shownUsers;
    QList<ListRow> listRows;
    QString input;
    QString pendingNick;
    bool userListIsShown = false;
    bool searchIsShown = false;
    bool isAway = false;
    int disconnects = 0; ///< The number of connections that ended.

private:
    struct Whois
    {
        bool isOperator = false;
        int idle = -1;
        bool hasChannels = false;
        bool isAway = false;
    };

    [[nodiscard]] static bool isSame(const QString &left, const QString &right);

    void connectSession();
    void connectPeople();
    void connectList();
    void connectWhois();

    void onRawLine(const QString &line);
    void onConnected();
    void onRegistered();
    void onDisconnected();
    void onJoin(const QString &nick, const QString &channel);
    void onPart(const QString &nick, const QString &channel);
    void onQuit(const QString &nick);
    void onKick(const QString &channel, const QString &kicked);
    void onNick(const QString &oldNick, const QString &newNick);
    void onNamesFinished(const QString &channel);
    void onWhoisEnd(const QString &nick);

    void append(const QString &tab);
    void appendToServer();
    void openTab(const QString &name);
    std::shared_ptr<Page> addPage(const QString &name);
    void tabChanged();
    void showPage(const std::shared_ptr<Page> &page);
    void numberCloseButtons();
    void watch(const QString &nick);
    [[nodiscard]] QString privateTabOf(const QString &nick) const;
    [[nodiscard]] bool removeUser(const QString &channel, const QString &nick, QString *entry);
    void hideUser(const QString &channel, const QString &entry);
    void renameUser(const QString &channel, const QString &oldNick, const QString &newNick);
    void renamePrivateTab(const QString &oldNick, const QString &newNick);
    void runCommand(const Commands::Command &command);
    void announceInConversations();
    void leaveAway();

    const IRCConnection &session;
    QMap<QString, QStringList> pendingNames;
    QMap<QString, QString> drafts;
    QMap<QString, Whois> whoisRecords;
    QString whoisTab = QStringLiteral("Server");
    QString lastCommand; // The command of the line that is being handled.
    QStringList expected;
    bool hasList = false;
    bool listIsComing = false;
};
