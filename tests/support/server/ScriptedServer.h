#pragma once

#include <QByteArray>
#include <QHostAddress>
#include <QObject>
#include <QSslConfiguration>
#include <QString>
#include <QStringList>

#include <memory>
#include <vector>

class QTcpServer;
class QTcpSocket;

/// A server on the loopback, on a free port unless told otherwise, that does nothing by itself.
///
/// It keeps what each client says and sends what it is told to. A client is known by its number,
/// from 0 in the order of arrival; a number stays with its client after the link is gone. Where an
/// operation takes a client, `Latest` stands for the one that came last. Sending to a client that
/// is gone does nothing.
///
/// A test waits with `waitForClient`, `waitForLine` and `waitForEnd`; a server with a mind of its
/// own listens to the signals.
class ScriptedServer : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ScriptedServer)

public:
    static constexpr int Latest = -1;

    /// Listens at once.
    explicit ScriptedServer(QObject *parent = nullptr);

    /// Speaks TLS, with the certificate and the key that `tls` holds.
    explicit ScriptedServer(const QSslConfiguration &tls, QObject *parent = nullptr);

    /// Listens on an address and a port of the caller's choice.
    ScriptedServer(const QHostAddress &address, quint16 port, QObject *parent = nullptr);

    ~ScriptedServer() override;

    /// 0 if the server could not listen.
    [[nodiscard]] quint16 port() const;

    /// Stops listening; clients that are there stay. `listenAgain` takes the same port back.
    void stopListening();
    [[nodiscard]] bool listenAgain();

    /// How many clients have ever come.
    [[nodiscard]] int clientCount() const;
    [[nodiscard]] bool isConnected(int client = Latest) const;

    /// Everything that the client has sent, byte by byte.
    [[nodiscard]] QByteArray received(int client = Latest) const;
    /// The same, cut at each CR LF; what has no line end yet is not among them.
    [[nodiscard]] QStringList lines(int client = Latest) const;

    /// Sends `line` with CR LF behind it.
    void send(const QString &line, int client = Latest);
    /// Sends `bytes` as they are and hands them to the system at once.
    void sendBytes(const QByteArray &bytes, int client = Latest);
    /// Closes the link when all is sent.
    void close(int client = Latest);
    /// Drops the link at once, so that the client sees a reset.
    void abort(int client = Latest);

    /// Waits until `count` clients have come in all.
    [[nodiscard]] bool waitForClient(int count = 1) const;
    /// Waits until the client has sent exactly this line at least `times` times.
    [[nodiscard]] bool waitForLine(const QString &line, int client = Latest, int times = 1) const;
    /// Waits until the client's link is gone.
    [[nodiscard]] bool waitForEnd(int client = Latest) const;

signals:
    void clientArrived(int client);
    void lineReceived(int client, const QString &line);
    void clientLeft(int client);

private:
    struct Client
    {
        QTcpSocket *socket = nullptr; // Null once the link is gone; owned by the server.
        QByteArray received;
        qsizetype lineStart = 0; // Of what is no whole line yet.
        QStringList lines;
    };

    void listen(const QHostAddress &address = QHostAddress::LocalHost, quint16 port = 0);
    void admit(QTcpSocket *socket);
    void read(int number);
    [[nodiscard]] const Client *find(int number) const;
    [[nodiscard]] QTcpSocket *socketOf(int number) const;

    std::unique_ptr<QTcpServer> server;
    std::vector<Client> clients;
    QHostAddress usedAddress;
    quint16 usedPort = 0;
};
