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

/// What a window has to show and its client to say, worked out from the rules alone.
///
/// It hears the signals of the session for itself, and must be made after the window has connected
/// to them. What the user does is told to it with the operations below, right after the window has
/// done it and before any event. It never looks at the window.
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
        bool hasView = true; ///< The channel list has none.
        int closeIndex = -1; ///< What its close button closes, if it has one yet.
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

    /// Begins with a window that shows nothing but its "Server" tab.
    explicit SessionModel(const IRCConnection &heard);

    // What the user does to tabs
    void showTab(int index);
    void closeTab(int index);
    void clickCloseButton(int index);
    void doubleClickTab(int index);
    void pressCloseShortcut();
    void toggleAutojoin(const QString &channel);
    void setAutojoin(const QString &channel, bool enable);
    void applyPreferences();

    // At the input line
    /// The text stands in the line now.
    void enterText(const QString &text);
    /// Return was pressed with this text in the line.
    void typeLine(const QString &text);

    // In dialogs and menus: what was chosen or typed there in the end
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

    // In the channel list
    void requestChannelList();
    void filterChannelList(const QString &text);
    void doubleClickListRow(const QString &channel);

    /// What the client has to have sent since the last call, or since the link came up.
    [[nodiscard]] QStringList readExpected();
    [[nodiscard]] bool isOwnNick(const QString &nick) const;

    // What the window has to show and to hold
    QList<std::shared_ptr<Page>> pages;
    int shownIndex = 0;
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
    int disconnects = 0; ///< How often a link has gone.

private:
    struct Whois
    {
        bool isOperator = false;
        int idle = -1;
        bool hasChannels = false;
        bool isAway = false;
    };

    [[nodiscard]] static bool isSame(const QString &left, const QString &right);

    void hear();
    void hearPeople();
    void hearList();
    void hearWhois();

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
    [[nodiscard]] bool dropUser(const QString &channel, const QString &nick, QString *entry);
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
    QString lastCommand; // The command word of the line that is being heard.
    QStringList expected;
    bool hasList = false;
    bool listIsComing = false;
};
