#pragma once

#include "ScriptedServer.h"

#include <QHash>
#include <QTimer>

/// A small IRC server on the loopback for the demo. A few scripted users talk to each other in
/// #velmora and answer messages. Its channel list contains more channels.
class DemoServer final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(DemoServer)

public:
    explicit DemoServer(QObject *parent = nullptr);

    /// Returns the port; 0 if the server could not listen.
    [[nodiscard]] quint16 port() const;

    /// Returns whether the scripted users have sent all lines of their conversation, which starts
    /// when a client joins #velmora.
    [[nodiscard]] bool isConversationOver() const;
    /// Returns whether a client has sent exactly this line.
    [[nodiscard]] bool hasReceived(const QString &line) const;
    /// Returns how many answers the scripted users have sent.
    [[nodiscard]] int answerCount() const;

private:
    struct Guest
    {
        QString nick;
        bool isRegistered = false;
        bool isInChannel = false;
    };

    void onLine(int client, const QString &line);
    void sendNextLine();
    void answer(int client, const QString &target);

    void onNick(int client, const QString &nick);
    void onUser(int client);
    void onJoin(int client, const QString &channel);
    void onPart(int client, const QString &channel);
    void onPrivmsg(int client, const QString &target);
    void onAway(int client, bool away);
    void onList(int client);
    void onWhois(int client, const QString &nick);
    void sendNames(int client, const QString &channel);

    /// Sends a numeric to the client, with the client's nick as its first parameter.
    void reply(int client, QLatin1StringView numeric, const QString &rest);
    /// Sends a line with the client itself as its source.
    void echo(int client, const QString &line);

    ScriptedServer server;
    QHash<int, Guest> guests;
    QTimer conversationTimer;
    int sentLines = 0;
    int answers = 0;
};
