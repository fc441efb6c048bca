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
/// A line ends at CR LF only, and nothing limits its length. A read returns all that has arrived
/// and is decoded by itself, so a character that it splits becomes replacement characters. After 60
/// seconds without traffic the server is asked for a sign of life, and left after another 45
/// without an answer; both are looked for every 10 seconds.
class IRCConnection final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(IRCConnection)
    friend class TestIRCConnectionReading; // Reads `buffer`.

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
    ///
    /// `joinChannel`, `partChannel`, `sendPrivmsg`, `changeNick`, `sendWhois` and `sendWatch` send
    /// one line each by this function, with arguments that are looked at no more than that.
    void sendRaw(const QString &line);
    /// Asks to join `channel`. An empty one is sent like any other, as "JOIN ".
    void joinChannel(const QString &channel);
    /// Leaves `channel` with the reason "Leaving".
    void partChannel(const QString &channel);
    /// Sends `text` to a channel or a nick.
    void sendPrivmsg(const QString &target, const QString &text);

    /// Asks for another nick; `currentNick` follows when the server agrees.
    void changeNick(const QString &nick);

    /// Asks who `nick` is; the answer comes as the signals `whoisUserReceived` to
    /// `whoisAwayReceived`, as far as the server knows it.
    void sendWhois(const QString &nick);

    /// Adds `nick` to the server's WATCH list or takes it off. Does nothing without a connection.
    void sendWatch(const QString &nick, bool add);

    /// Starts the totals of a channel listing at 0, with no server's name. Like `addListChannel`
    /// and `setListServerName` it is for the parser, which sees the listing.
    void resetListCounters();
    /// Counts one channel. A server may tell any count of users, negative ones included; their sum
    /// stops at the ends of `int`.
    void addListChannel(int userCount);
    void setListServerName(const QString &name);
    /// The server that began the last listing; empty if it didn't say its name.
    [[nodiscard]] QString getListServerName() const;
    /// Channels since the last `resetListCounters`.
    [[nodiscard]] int getTotalListChannels() const;
    /// Users of these channels, each counted once per channel.
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
    // The numerics are those of RFC 2812. What a line lacks is empty in its signal, unless stated
    // otherwise; a nick is the part of the line's prefix before its first "!".

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
    /// Somebody left `channel` (PART), the user included. `reason` is empty if none was given.
    void partReceived(const QString &nick, const QString &channel, const QString &reason);
    /// A nick in sight changed, the user's included, or a refused one gave way to the next.
    void nickChanged(const QString &oldNick, const QString &newNick);
    /// One line of a name list (numeric 353); the names keep their mode prefixes.
    void namesList(const QString &channel, const QList<QString> &names);
    /// The end of the name list of `channel` (numeric 366).
    void namesListFinished(const QString &channel);
    /// The topic of `channel`, as the answer to a JOIN or to the question for it (numeric 332). It
    /// is raw, with its formatting codes. A topic that somebody sets comes as no signal.
    void topicReceived(const QString &channel, const QString &topic);
    /// Somebody left the network (QUIT). `reason` is empty if none was given.
    void quitReceived(const QString &nick, const QString &reason);
    /// `kickerNick` removed `kickedNick`, who may be the user, from `channel` (KICK). `reason` is
    /// empty if none was given.
    void kickReceived(const QString &channel, const QString &kickedNick, const QString &kickerNick,
                      const QString &reason);
    /// The channel listing begins (numeric 321, which not every server sends).
    void listStartReceived();
    /// One row of the channel listing (numeric 322). `userCount` is the server's text, and `topic`
    /// is raw, with its formatting codes.
    void listChannelReceived(const QString &channel, const QString &userCount,
                             const QString &topic);
    /// The channel listing is complete (numeric 323).
    void listEndReceived();
    /// Totals of the channel listing, just before `listEndReceived`. `serverName` is empty if the
    /// listing's start didn't carry it.
    void listInfoReceived(const QString &serverName, int totalChannels, int totalUsers);
    /// Who `nick` is: user name, host and real name (numeric 311).
    void whoisUserReceived(const QString &nick, const QString &user, const QString &host,
                           const QString &real);
    /// The server that `nick` uses, and what it says of itself (numeric 312). Only a line with one
    /// parameter more than RFC 2812 has brings this signal; the ordinary one is dropped.
    void whoisServerReceived(const QString &nick, const QString &server, const QString &serverInfo);
    /// `nick` is an operator of the network (numeric 313).
    void whoisOperatorReceived(const QString &nick);
    /// How long `nick` has been silent (numeric 317), from a server that tells the time of the
    /// sign-on too, as RFC 2812 does not ask for. `idle` is in seconds, and 0 if the server's text
    /// is no number; `signon` is the server's descriptive text, not that time.
    void whoisIdleReceived(const QString &nick, int idle, const QString &signon);
    /// The channels that `nick` is in (numeric 319), split by blanks and with their mode prefixes.
    /// A user of many channels brings several lines.
    void whoisChannelsReceived(const QString &nick, const QString &channels);
    /// The end of the answer about `nick` (numeric 318). `targetTab` is the nick, or "Server" for a
    /// line too short to carry one.
    void whoisEndReceived(const QString &targetTab, const QString &nick);
    /// Somebody is away (numeric 301): part of a WHOIS, or the answer to a message to them.
    void whoisAwayReceived(const QString &nick, const QString &msg);
    /// A watched nick came, went, or is there or not (numerics 600, 601, 602, 604, 605 and 606,
    /// which servers with WATCH send and no RFC describes). `online` is true if the fifth
    /// parameter, where many servers send a time, is "1".
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
    void updateOwnNick(const QString &oldNick, const QString &newNick);
    void generateNickAlternatives(const QString &nick, const QString &altNickname);
    void configureSocketKeepAlive();
    void closeSocket();
    bool processLines();

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
    bool spareFlag = false; // Cleared by each new session; nothing sets it or looks at it.
    bool awaitingPong = false;
    int totalListChannels = 0;
    int totalListUsers = 0;
    QString listServerName;
    QStringList nickAlternatives;
    int nickIndex = 0;
    quint32 sleepAssertion = 0; // 0 for none.
    ServerConfig config;

    // Where in `buffer` the search for the next line end continues, so that one line in many reads
    // costs no more than its length.
    qsizetype searchStart = 0;
    bool reading = false;
    std::function<void()> readFinishedHandler;
};
