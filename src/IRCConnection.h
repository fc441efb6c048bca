#pragma once

#include "ServerConfig.h"

#include <QAbstractSocket>
#include <QElapsedTimer>
#include <QObject>
#include <QString>
#include <QStringList>

#include <functional>

class QTcpSocket;
class QTimer;

/// The session with one IRC server: socket, registration, framing and keep-alive.
///
/// One object serves for a program's whole life; `connectToServer` replaces its socket. It is made
/// for the GUI thread, and everything that it tells leaves it as a signal. The signals that stem
/// from a received line are emitted while that line is handled, so a slot may send, disconnect or
/// connect again from within.
///
/// Failures never throw and are never retried: each one is an `errorOccurred` with text for the
/// user. Text is UTF-8 in both directions.
///
/// A line ends at CR LF only, and nothing limits its length. A read takes what has come, up to
/// 512 KiB, and is decoded by itself, so a character cut by its end comes out as replacement
/// characters. After 60 seconds without traffic the server is asked for a sign of life, and left
/// after another 45 without an answer; both are looked for every 10 seconds.
class IRCConnection final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(IRCConnection)

public:
    explicit IRCConnection(QObject *parent = nullptr);

    /// Says QUIT to a server that is still there. No signal leaves the object from here on.
    ~IRCConnection() override;

    /// Starts a session; its outcome comes as `connected` or `errorOccurred`.
    ///
    /// The record given to `setServerConfig` must be in place before, since the second nick to try
    /// comes from it. A session that is running is dropped without a QUIT, and its `disconnected`
    /// still arrives. A line that the last session left unfinished goes on with the first text of
    /// this one. With `useSsl`, a certificate that the system does not trust ends the attempt.
    void connectToServer(const QString &host, quint16 port, const QString &nick,
                         const QString &realName, bool useSsl);

    /// Says QUIT and closes the link. An attempt that is still connecting is left to go on; a TLS
    /// handshake is broken off, and QUIT is not said then.
    void disconnectFromServer();

    [[nodiscard]] bool isConnected() const;

    /// True from the server's welcome until the next `connectToServer`, so also after a disconnect.
    [[nodiscard]] bool isRegistered() const;
    /// For the parser, which sees the welcome.
    void setRegistered(bool isDone);

    /// The nick that the session believes it has, or asked for last after a refusal, whenever that
    /// came: until the server's NICK line it may know the user by another one.
    [[nodiscard]] QString currentNick() const;

    /// The host given to the last `connectToServer`.
    [[nodiscard]] QString getHost() const;

    /// The active server's record, parked here for the window. It is a copy.
    [[nodiscard]] ServerConfig serverConfig() const;
    void setServerConfig(const ServerConfig &newConfig);

    /// Sends `line` as it stands, with CR LF behind it. Its length is not looked at, and a CR or LF
    /// inside is not taken out. Without a connection the text is lost and `errorOccurred` says so.
    void sendRaw(const QString &line);
    /// Each of these sends one line with `sendRaw`, whose failures are theirs.
    void joinChannel(const QString &channel);
    /// With the reason "Leaving".
    void partChannel(const QString &channel);
    void sendPrivmsg(const QString &target, const QString &text);

    /// Asks for another nick; `currentNick` follows when the server agrees.
    void changeNick(const QString &nick);
    void sendWhois(const QString &nick);

    /// Adds `nick` to the server's WATCH list or takes it off. Does nothing without a connection.
    void sendWatch(const QString &nick, bool add);

    /// Totals of the running channel listing, kept by the parser. A server may tell any count of
    /// users, negative ones included; their sum stops at the ends of `int`.
    void resetListCounters();
    void addListChannel(int userCount);
    void setListServerName(const QString &name);
    [[nodiscard]] QString getListServerName() const;
    [[nodiscard]] int getTotalListChannels() const;
    [[nodiscard]] int getTotalListUsers() const;

    /// Asks for the next nick of the list, since the server refused the one asked for last. At the
    /// list's end it reports an error and leaves the connection as it is.
    void tryNextNick();

    /// True while lines of one read are being cut and handled: more may follow at once.
    [[nodiscard]] bool isReading() const;

    /// Sets a function that is called at the end of each read that completed at least one line,
    /// after the last of them was handled; `isReading` is false by then.
    ///
    /// It is there for work that is cheaper for many lines together than for each one. In a read
    /// that is nested in another one, through an event loop that a slot runs, `isReading` stays
    /// true for the outer read. An empty function sets none.
    void setReadFinishedHandler(std::function<void()> handler);

signals:
    /// The link is up and the registration lines are queued.
    void connected();
    /// The server has welcomed the user (numeric 001).
    void registered();
    /// The socket has gone to the unconnected state.
    void disconnected();
    /// Any failure, as text for the user.
    void errorOccurred(const QString &error);
    /// One received line, before anything else is made of it.
    void rawMessageReceived(const QString &message);
    /// Text for the server's tab.
    void serverMessage(const QString &message);
    /// A message. To a channel, `target` is that channel; for a private one it equals `from`.
    void privmsgReceived(const QString &from, const QString &target, const QString &text);
    /// Somebody joined, the user included.
    void joinReceived(const QString &nick, const QString &channel);
    void partReceived(const QString &nick, const QString &channel, const QString &reason);
    /// A nick in sight changed, the user's included, or a refused one gave way to the next.
    void nickChanged(const QString &oldNick, const QString &newNick);
    /// One line of a name list; the names keep their mode prefixes.
    void namesList(const QString &channel, const QList<QString> &names);
    void namesListFinished(const QString &channel);
    void topicReceived(const QString &channel, const QString &topic);
    void quitReceived(const QString &nick, const QString &reason);
    void kickReceived(const QString &channel, const QString &kickedNick, const QString &kickerNick,
                      const QString &reason);
    void listStartReceived();
    /// One row of the channel listing. `userCount` is the server's text.
    void listChannelReceived(const QString &channel, const QString &userCount,
                             const QString &topic);
    void listEndReceived();
    /// Totals of the channel listing, just before `listEndReceived`.
    void listInfoReceived(const QString &serverName, int totalChannels, int totalUsers);
    void whoisUserReceived(const QString &nick, const QString &user, const QString &host,
                           const QString &real);
    void whoisServerReceived(const QString &nick, const QString &server, const QString &serverInfo);
    void whoisOperatorReceived(const QString &nick);
    /// `idle` is in seconds; `signon` is the server's descriptive text, not a time.
    void whoisIdleReceived(const QString &nick, int idle, const QString &signon);
    void whoisChannelsReceived(const QString &nick, const QString &channels);
    /// `targetTab` is the nick, or "Server" for a line too short to carry one.
    void whoisEndReceived(const QString &targetTab, const QString &nick);
    /// Somebody is away: part of a WHOIS, or the answer to a message to them.
    void whoisAwayReceived(const QString &nick, const QString &msg);
    void watchStatus(const QString &nick, bool online);
    /// The user's own nick changed. It comes before the `nickChanged` that caused it is seen by
    /// anybody else, and not for a nick that is only tried after a refusal.
    void ownNickChanged(const QString &newNick);

private slots:
    void onConnected();
    void onDisconnected();
    void onReadyRead();
    void onError(QAbstractSocket::SocketError error);
    void checkKeepAlive();

private:
    void followOwnNick(const QString &oldNick, const QString &newNick);
    void generateNickAlternatives(const QString &nick, const QString &altNickname);
    void configureSocketKeepAlive();
    void closeSocket();
    bool cutLines();

    // The names read from the machine's point of view.
    void disableSleep();
    void enableSleep();

    QTcpSocket *socket = nullptr;
    QTimer *keepAliveTimer = nullptr;
    QElapsedTimer lastActivity; // Both directions.
    QElapsedTimer pingSentAt;
    QString host;
    quint16 port = 0;
    QString nick;
    QString realName;
    bool useSsl = false;
    QString buffer; // Decoded text that is no whole line yet.
    bool registrationDone = false;
    bool spareFlag = false;
    bool awaitingPong = false;
    int totalListChannels = 0;
    int totalListUsers = 0;
    QString listServerName;
    QStringList nickAlternatives;
    int nickIndex = 0;
    quint32 sleepAssertion = 0; // 0 for none.
    ServerConfig config;

    // Framing's own memory, so that neither many lines in one read nor one line in many reads cost
    // more than their length: where the text begins that is not handed on yet, and where the
    // search for the next line end goes on.
    qsizetype lineStart = 0;
    qsizetype searchStart = 0;
    bool reading = false;
    std::function<void()> readFinishedHandler;
};
