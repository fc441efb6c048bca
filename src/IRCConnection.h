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
/// One object lives as long as the program; `connectToServer` replaces its socket. For the GUI
/// thread only. Signals for a received line are emitted while that line is handled, so a slot may
/// send, disconnect or connect again.
///
/// Failures never throw and are never retried: `errorOccurred` reports each with text for the user.
/// Text is UTF-8 in both directions.
///
/// Only CR LF ends a line, and its length is unlimited. Each read is decoded separately, so a
/// character split between two reads becomes replacement characters. After 60 seconds without
/// traffic the server gets a PING; after 45 more seconds without data the connection is closed.
/// Both are checked every 10 seconds.
class IRCConnection final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(IRCConnection)
    friend class TestIRCConnectionReading; // Reads `buffer`.

public:
    explicit IRCConnection(QObject *parent = nullptr);

    /// Sends QUIT if connected. Emits no signals.
    ~IRCConnection() override;

    /// Starts a session; `connected` or `errorOccurred` reports the result.
    ///
    /// Call `setServerConfig` first: the second nick to try is in that record. A current session
    /// ends without a QUIT, and its `disconnected` is still emitted. Intended: an incomplete line
    /// of the last session is continued by the first text of this one. With `useSsl`, the attempt
    /// fails if the system does not trust the certificate.
    void connectToServer(const QString &host, quint16 port, const QString &nick,
                         const QString &realName, bool useSsl);

    /// Sends QUIT and closes the connection. During the TLS handshake, aborts it; QUIT is not sent
    /// then. Intended: does not stop an attempt that is still connecting.
    void disconnectFromServer();

    [[nodiscard]] bool isConnected() const;

    /// Returns true from the server's welcome until the next `connectToServer`, so also after a
    /// disconnect.
    [[nodiscard]] bool isRegistered() const;
    /// For the parser, on the welcome.
    void setRegistered(bool isDone);

    /// Returns the nick in use. After a refusal, this is the alternative last requested, even if
    /// the server has not confirmed it.
    [[nodiscard]] QString currentNick() const;

    [[nodiscard]] QString getHost() const;

    /// Returns a copy of the active server's record. Of it, the connection reads only
    /// `altNickname`.
    [[nodiscard]] ServerConfig serverConfig() const;
    void setServerConfig(const ServerConfig &newConfig);

    /// Sends `line` verbatim, followed by CR LF. Neither limits its length nor removes CR or LF
    /// from it. Emits `errorOccurred` and drops the line if not connected.
    ///
    /// The functions from `joinChannel` to `sendWatch` send one line each with this function and do
    /// not check their arguments either.
    void sendRaw(const QString &line);
    void joinChannel(const QString &channel);
    /// Leaves `channel` with the message "Leaving".
    void partChannel(const QString &channel);
    /// Sends `text` to a channel or a nick.
    void sendPrivmsg(const QString &target, const QString &text);
    /// Requests another nick; `currentNick` changes when the server confirms it.
    void changeNick(const QString &nick);
    /// Requests the signals from `whoisUserReceived` to `whoisAwayReceived` for `nick`.
    void sendWhois(const QString &nick);
    /// Adds `nick` to the server's WATCH list or removes it. Does nothing if not connected.
    void sendWatch(const QString &nick, bool add);

    /// Resets the totals and the server name of the channel list. Like `addListChannel` and
    /// `setListServerName`, for the parser.
    void resetListCounters();
    /// Adds one channel to the totals. `userCount` may be any number that a server sends, also
    /// negative; the sum is clamped to `int`.
    void addListChannel(int userCount);
    void setListServerName(const QString &name);
    /// Returns the server that sent the last channel list; empty if its first line had no prefix.
    [[nodiscard]] QString getListServerName() const;
    [[nodiscard]] int getTotalListChannels() const;
    [[nodiscard]] int getTotalListUsers() const;

    /// Requests the next alternative nick after the server refused the last one. Emits
    /// `errorOccurred` if none is left; the connection stays open.
    void tryNextNick();

    /// Returns true while the lines of one read are handled, so more may follow at once.
    [[nodiscard]] bool isReading() const;

    /// Sets a function that is called after the lines of each read that completed at least one, for
    /// work that is cheaper once per read than once per line. An empty function removes it.
    ///
    /// `isReading` is false during the call, unless the read is nested in another one by an event
    /// loop that a slot runs.
    void setReadFinishedHandler(std::function<void()> handler);

signals:
    // Numerics are those of RFC 2812. Arguments that a line lacks are empty unless stated
    // otherwise. A nick is the line's prefix up to its first "!".

    /// Emitted when the socket has connected and the registration lines are queued.
    void connected();
    /// Emitted when the server has welcomed the user (numeric 001).
    void registered();
    /// Emitted when the socket has entered the unconnected state.
    void disconnected();
    /// Emitted on any failure, with text for the user.
    void errorOccurred(const QString &error);
    /// Emitted for each received line, before it is parsed.
    void rawMessageReceived(const QString &message);
    /// Emitted with text for the server's tab.
    void serverMessage(const QString &message);
    /// Emitted on PRIVMSG. `target` is the channel; for a private message it equals `from`.
    void privmsgReceived(const QString &from, const QString &target, const QString &text);
    /// Emitted when another user or the user joined (JOIN).
    void joinReceived(const QString &nick, const QString &channel);
    /// Emitted when another user or the user left `channel` (PART).
    void partReceived(const QString &nick, const QString &channel, const QString &reason);
    /// Emitted when the nick of another user or of the user changed (NICK), and when a refused nick
    /// is replaced by the next alternative.
    void nickChanged(const QString &oldNick, const QString &newNick);
    /// Emitted for one line of a name list (numeric 353); names keep their mode prefixes.
    void namesList(const QString &channel, const QList<QString> &names);
    /// Emitted at the end of the name list of `channel` (numeric 366).
    void namesListFinished(const QString &channel);
    /// Emitted with the topic of `channel`, formatting codes included, after JOIN or a TOPIC query
    /// (numeric 332). Intended: not emitted when a user sets a topic.
    void topicReceived(const QString &channel, const QString &topic);
    /// Emitted when another user left the network (QUIT).
    void quitReceived(const QString &nick, const QString &reason);
    /// Emitted when `kickerNick` removed `kickedNick`, who may be the user, from `channel` (KICK).
    void kickReceived(const QString &channel, const QString &kickedNick, const QString &kickerNick,
                      const QString &reason);
    /// Emitted at the start of the channel list (numeric 321, which not every server sends).
    void listStartReceived();
    /// Emitted for one row of the channel list (numeric 322). `userCount` is the server's text;
    /// `topic` includes formatting codes.
    void listChannelReceived(const QString &channel, const QString &userCount,
                             const QString &topic);
    /// Emitted at the end of the channel list (numeric 323).
    void listEndReceived();
    /// Emitted with the totals of the channel list, just before `listEndReceived`. `serverName` is
    /// empty if the first line had no prefix.
    void listInfoReceived(const QString &serverName, int totalChannels, int totalUsers);
    /// Emitted with the user name, host and real name of `nick` (numeric 311).
    void whoisUserReceived(const QString &nick, const QString &user, const QString &host,
                           const QString &real);
    /// Emitted with the server that `nick` uses and its description (numeric 312). Intended: not
    /// emitted for the usual line, only for one with a parameter more than RFC 2812 has.
    void whoisServerReceived(const QString &nick, const QString &server, const QString &serverInfo);
    /// Emitted if `nick` is an IRC operator (numeric 313).
    void whoisOperatorReceived(const QString &nick);
    /// Emitted with the idle time of `nick` (numeric 317) if the line also has a sign-on time,
    /// which RFC 2812 does not require. `idle` is in seconds, 0 if the server's text is no number.
    /// Intended: `signon` is the server's descriptive text, not that time.
    void whoisIdleReceived(const QString &nick, int idle, const QString &signon);
    /// Emitted with channels of `nick` (numeric 319), separated by spaces and with their mode
    /// prefixes; several times for a user in many channels.
    void whoisChannelsReceived(const QString &nick, const QString &channels);
    /// Emitted at the end of the WHOIS reply (numeric 318). `targetTab` is `nick`, or "Server" if
    /// the line is too short to have one.
    void whoisEndReceived(const QString &targetTab, const QString &nick);
    /// Emitted when `nick` is away (numeric 301), in a WHOIS reply or after a message to that user.
    void whoisAwayReceived(const QString &nick, const QString &msg);
    /// Emitted for a watched nick (numerics 600, 601, 602, 604, 605 and 606, which are in no RFC).
    /// Intended: `online` is true only if the fifth parameter, where many servers send a time, is
    /// "1".
    void watchStatus(const QString &nick, bool online);
    /// Emitted when the user's own nick changed, before other receivers of the same `nickChanged`.
    /// Not emitted for an alternative nick requested after a refusal.
    void ownNickChanged(const QString &newNick);

private slots:
    void onConnected();
    void onDisconnected();
    void onReadyRead();
    void onError(QAbstractSocket::SocketError error);
    void checkKeepAlive();

private:
    void updateOwnNick(const QString &oldNick, const QString &newNick);
    void generateNickAlternatives(const QString &nick, const QString &altNickname);
    void configureSocketKeepAlive();
    void closeSocket();
    bool processLines();

    void disableSleep(); // Keeps the machine awake.
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
    QString buffer; // Decoded text of an incomplete line.
    bool registrationDone = false;
    bool spareFlag = false; // Cleared by each new session; never set or read.
    bool awaitingPong = false;
    int totalListChannels = 0;
    int totalListUsers = 0;
    QString listServerName;
    QStringList nickAlternatives;
    int nickIndex = 0;
    quint32 sleepAssertion = 0; // 0 for none.
    ServerConfig config;

    // Index in `buffer` at which the search for a line end continues, so that the cost of a line in
    // many reads stays linear.
    qsizetype searchStart = 0;
    bool reading = false;
    std::function<void()> readFinishedHandler;
};
