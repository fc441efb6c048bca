#pragma once

#include "ScriptedServer.h"

#include <QHash>
#include <QTimer>

/// A small IRC server on the loopback where a few people talk to each other in #velmora and
/// answer whoever speaks to them. Its list has more channels. For the demo and its tests.
class DemoServer final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(DemoServer)

public:
    explicit DemoServer(QObject *parent = nullptr);

    /// 0 if the server could not listen.
    [[nodiscard]] quint16 port() const;

    /// Whether somebody has joined #velmora and heard all that they have to say by themselves.
    [[nodiscard]] bool conversationIsOver() const;
    /// Whether somebody has sent exactly this line.
    [[nodiscard]] bool hasHeard(const QString &line) const;
    /// How many answers they have given.
    [[nodiscard]] int answerCount() const;

private:
    struct Guest
    {
        QString nick;
        bool welcomed = false;
        bool inChannel = false;
    };

    void onLine(int client, const QString &line);
    void sayNextLine();
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
    /// Sends a line that comes from the client itself, as a server's echo does.
    void echo(int client, const QString &line);

    ScriptedServer server;
    QHash<int, Guest> guests;
    QTimer talk;
    int saidLines = 0;
    int answers = 0;
};
