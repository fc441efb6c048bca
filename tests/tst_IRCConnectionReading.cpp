#include "TestSession.h"
#include "Waiting.h"

#include <QDeadlineTimer>
#include <QEventLoop>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>
#include <QTimer>

#include <linux/sockios.h>
#include <memory>
#include <sys/ioctl.h>

using namespace Qt::StringLiterals;

namespace {

// Returns the value that ioctl(2) gives, or -1 on an error.
int ioctlValue(const QTcpSocket &socket, unsigned long request)
{
    int answer = -1;
    return ioctl(static_cast<int>(socket.socketDescriptor()), request, &answer) == 0 ? answer : -1;
}

// Writes to the socket's peer. Returns true if the peer's system has received everything.
bool sendAll(QTcpSocket &socket)
{
    socket.flush();
    if (socket.bytesToWrite() > 0 || ioctlValue(socket, SIOCOUTQNSD) != 0)
        return false;
    // The last acknowledgement may be delayed.
    const QDeadlineTimer deadline(WaitTimeout);
    while (ioctlValue(socket, SIOCOUTQ) != 0) {
        if (deadline.hasExpired())
            return false;
    }
    return true;
}

} // namespace

// How a session splits what it reads into lines.
class TestIRCConnectionReading final : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void splitsLines_data();
    void splitsLines();
    void handlesEachLineBeforeTheNext();
    void removesEachLineBeforeItIsHandled();
    void keepsAnIncompleteLineForTheNextSession();
    void readsManyLinesAtOnce();
    void readsOneLineInManyPieces();
    void readsBinaryData();
    void readsAllThatArrivedBeforeAReset();

    void readsNothingFromAClosedSocket();

    void slotCanSend();
    void slotCanDisconnect();
    void slotCanReconnect();
    void slotCanRunAnEventLoop();
    void slotCanReconnectAndRunAnEventLoop();

    void callsTheHandlerAfterEachRead();
    void callsNoHandlerWithoutACompleteLine();

private:
    [[nodiscard]] bool sendAsOneRead(const QByteArray &bytes);

    std::unique_ptr<TestSession> session;
};

void TestIRCConnectionReading::init()
{
    QTest::failOnWarning(QRegularExpression(u"."_s));
    session = std::make_unique<TestSession>();
    QVERIFY(session->open());
}

// Sends bytes and waits until the session has read them, so that each call makes one read.
bool TestIRCConnectionReading::sendAsOneRead(const QByteArray &bytes)
{
    QSignalSpy reads(session->connection.findChild<QTcpSocket *>(), &QTcpSocket::readyRead);
    session->server.sendBytes(bytes);
    return !reads.isEmpty() || reads.wait(WaitTimeout);
}

void TestIRCConnectionReading::splitsLines_data()
{
    QTest::addColumn<QByteArrayList>("reads");
    QTest::addColumn<QStringList>("lines");

    const auto row = [](const char *name, const QByteArrayList &reads, const QStringList &lines) {
        QTest::newRow(name) << reads << lines;
    };
    const QString lost(QChar::ReplacementCharacter);

    row("two lines in one read", {"one\r\ntwo\r\n"}, {u"one"_s, u"two"_s});
    row("half a line", {"one\r\ntw"}, {u"one"_s});
    row("split lines", {"on", "e\r\nt", "wo\r\n"}, {u"one"_s, u"two"_s});
    row("split line ends", {"one\r", "\ntwo\r", "\n"}, {u"one"_s, u"two"_s});
    row("a line end alone", {"one", "\r\n"}, {u"one"_s});
    row("byte by byte", {"a", "\r", "\n", "\r", "\n", "b", "\r", "\n"}, {u"a"_s, u"b"_s});
    row("empty lines", {"\r\n\r\none\r\n\r\n\r\ntwo\r\n"}, {u"one"_s, u"two"_s});
    row("only empty lines", {"\r\n\r\n", "\r", "\n"}, {});
    row("a space is a line", {" \r\n"}, {u" "_s});
    row("LF alone ends no line", {"one\ntwo", "\nthree\r\n"}, {u"one\ntwo\nthree"_s});
    row("only LF", {"\n\n\n"}, {});
    row("CR alone ends no line", {"one\rtwo\r", "three\r\n"}, {u"one\rtwo\rthree"_s});
    row("only CR", {"\r\r", "\r"}, {});
    row("two CRs before LF", {"one\r\r\ntwo\r", "\r\n"}, {u"one\r"_s, u"two\r"_s});
    row("LF before CR", {"one\n\rtwo\r\n"}, {u"one\n\rtwo"_s});
    row("LF first", {"\none\r\n"}, {u"\none"_s});
    row("UTF-8 characters in one read", {"gr\xC3\xBC\xC3\x9F \xF0\x9F\x99\x82\r\n"},
        {u"grüß 🙂"_s});
    row("a UTF-8 character split between two reads", {"gr\xC3", "\xBC\xC3\x9F\r\n"},
        {u"gr"_s + lost + lost + u"ß"_s});
    row("invalid UTF-8", {"a\xFF\xFE z\r\n"}, {u"a"_s + lost + lost + u" z"_s});
    row("a UTF-8 character truncated by the line end", {"gr\xC3\r\nx\r\n"},
        {u"gr"_s + lost, u"x"_s});
    row("null characters", {QByteArray("a\0b\r\n\0\r\n", 8)},
        {QString(u"a"_s + QChar() + u"b"_s), QString(1, QChar())});
    row("a byte order mark", {"\xEF\xBB\xBFone\r\n"}, {u"one"_s});
}

void TestIRCConnectionReading::splitsLines()
{
    QFETCH(const QByteArrayList, reads);
    for (const QByteArray &bytes : reads)
        QVERIFY(sendAsOneRead(bytes));
    QTEST(session->log.raw(), "lines");
}

void TestIRCConnectionReading::handlesEachLineBeforeTheNext()
{
    QVERIFY(sendAsOneRead(
            ":a!b@c PRIVMSG #x :one\r\n\r\n:s 372 me :- two\r\nPING :t\r\n:a!b@c QUIT\r\n"));
    QCOMPARE(session->log.entries(),
             (QStringList{uR"(rawMessageReceived(":a!b@c PRIVMSG #x :one"))"_s,
                          uR"(privmsgReceived("a", "#x", "one"))"_s,
                          uR"(rawMessageReceived(":s 372 me :- two"))"_s,
                          uR"(serverMessage(":s 372 me :- two"))"_s,
                          uR"(rawMessageReceived("PING :t"))"_s,
                          uR"(rawMessageReceived(":a!b@c QUIT"))"_s,
                          uR"(quitReceived("a", ""))"_s}));
    QCOMPARE(session->sent(), QStringList{u"PONG :t"_s});
}

void TestIRCConnectionReading::removesEachLineBeforeItIsHandled()
{
    QStringList buffers;
    connect(&session->connection, &IRCConnection::rawMessageReceived, this,
            [&] { buffers.append(session->connection.buffer); });
    QVERIFY(sendAsOneRead("PONG x\r\nPONG y\r\nrest"));
    QCOMPARE(buffers, (QStringList{u"PONG y\r\nrest"_s, u"rest"_s}));
}

void TestIRCConnectionReading::keepsAnIncompleteLineForTheNextSession()
{
    QVERIFY(sendAsOneRead(":a!b@c PRIVMSG #x :from the \r"));
    session->server.close();
    QVERIFY(session->log.waitFor(u"disconnected()"_s));
    QVERIFY(session->open());
    QVERIFY(sendAsOneRead("\n:s 001 me :Wel"));
    QVERIFY(session->log.waitFor(uR"(privmsgReceived("a", "#x", "from the"))"_s));

    session->startConnecting();
    QVERIFY(session->server.waitForClient(3));
    session->server.send(u"come"_s);
    QVERIFY(session->log.waitFor(uR"(rawMessageReceived(":s 001 me :Welcome"))"_s));
}

// Ten megabytes at once. A search through the rest of the buffer for each line would time out.
void TestIRCConnectionReading::readsManyLinesAtOnce()
{
    constexpr int Count = 300000;
    int messages = 0;
    disconnect(&session->connection, nullptr, &session->log, nullptr);
    connect(&session->connection, &IRCConnection::privmsgReceived, this,
            [&messages](const QString &, const QString &, const QString &text) {
                if (text == QString::number(messages))
                    ++messages;
            });
    QByteArray bytes;
    for (int i = 0; i < Count; ++i)
        bytes += ":alice!~alice@host PRIVMSG #x :" + QByteArray::number(i) + "\r\n";
    QVERIFY(bytes.size() > 10'000'000);
    session->server.sendBytes(bytes);
    QTRY_COMPARE_WITH_TIMEOUT(messages, Count, WaitTimeout);
}

void TestIRCConnectionReading::readsOneLineInManyPieces()
{
    constexpr int Length = 20'000'000;
    qsizetype length = 0;
    disconnect(&session->connection, nullptr, &session->log, nullptr);
    connect(&session->connection, &IRCConnection::privmsgReceived, this,
            [&length](const QString &, const QString &, const QString &text) {
                length = text.size();
            });
    session->server.sendBytes(":a!b@c PRIVMSG #x :");
    const QByteArray piece(10000, 'x');
    for (int i = 0; i < Length / 10000; ++i)
        session->server.sendBytes(piece);
    session->server.sendBytes("\r\n");
    QTRY_COMPARE_WITH_TIMEOUT(length, Length, WaitTimeout);
}

void TestIRCConnectionReading::readsBinaryData()
{
    QRandomGenerator random(7);
    QByteArray bytes(200000, '\0');
    for (char &byte : bytes)
        byte = static_cast<char>(random.bounded(256));
    QVERIFY(sendAsOneRead(bytes));
    session->server.sendBytes("\r\n");
    session->server.send(u":a!b@c PRIVMSG #x :still here"_s);
    QVERIFY(session->log.waitFor(uR"(privmsgReceived("a", "#x", "still here"))"_s));
    QVERIFY(session->connection.isConnected());
}

// Qt closes a socket when a write fails, and discards unread data.
void TestIRCConnectionReading::readsAllThatArrivedBeforeAReset()
{
    constexpr int Count = 60000;
    int messages = 0;
    int reads = 0;
    int readAfterReset = 0;
    QTcpSocket *peer = nullptr;
    QTcpServer server;
    QVERIFY(server.listen(QHostAddress::LocalHost));
    IRCConnection connection;
    connection.setReadFinishedHandler([&reads] { ++reads; });
    connect(&connection, &IRCConnection::privmsgReceived, this, [&] {
        ++messages;
        if (readAfterReset == 0 && sendAll(*peer)) {
            peer->abort();
            readAfterReset = reads + 1;
        } else if (reads == readAfterReset) {
            connection.sendRaw(u"PONG"_s);
        }
    });
    connection.connectToServer(u"127.0.0.1"_s, server.serverPort(), u"me"_s, u"Me"_s, false);
    QVERIFY(waitUntil([&] { return server.hasPendingConnections() && connection.isConnected(); }));

    peer = server.nextPendingConnection();
    // Closing a socket with unread data sends a reset.
    peer->setReadBufferSize(1);
    QVERIFY(peer->isReadable());
    const QByteArray line = ":a!b@c PRIVMSG #x :" + QByteArray(180, 'x') + "\r\n";
    peer->write(line.repeated(Count));
    QTRY_VERIFY_WITH_TIMEOUT(!connection.isConnected(), WaitTimeout);
    QCOMPARE(messages, Count);
}

// Qt closes a socket at once when a write fails; a queued onReadyRead() may follow.
void TestIRCConnectionReading::readsNothingFromAClosedSocket()
{
    session->connection.findChild<QTcpSocket *>()->abort();
    session->log.clear();
    QVERIFY(QMetaObject::invokeMethod(&session->connection, "onReadyRead"));
    QVERIFY(session->log.entries().isEmpty());
}

void TestIRCConnectionReading::slotCanSend()
{
    connect(&session->connection, &IRCConnection::privmsgReceived, this,
            [this](const QString &, const QString &, const QString &text) {
                session->connection.sendRaw(u"ECHO "_s + text);
            });
    QVERIFY(sendAsOneRead(":a!b@c PRIVMSG #x :1\r\nPING :2\r\n:a!b@c PRIVMSG #x :3\r\n"));
    QCOMPARE(session->sent(), (QStringList{u"ECHO 1"_s, u"PONG :2"_s, u"ECHO 3"_s}));
}

void TestIRCConnectionReading::slotCanDisconnect()
{
    connect(&session->connection, &IRCConnection::privmsgReceived, this,
            [this] { session->connection.disconnectFromServer(); });
    QVERIFY(sendAsOneRead(":a!b@c PRIVMSG #x :1\r\nPING :2\r\n:a!b@c PRIVMSG #x :3\r\nhal"));
    QVERIFY(session->server.waitForEnd());
    QCOMPARE(session->log.raw(),
             (QStringList{u":a!b@c PRIVMSG #x :1"_s, u"PING :2"_s, u":a!b@c PRIVMSG #x :3"_s}));
    QCOMPARE(session->log.entries().count(u"disconnected()"_s), 1);
    // The answer to the PING was sent while disconnected.
    QCOMPARE(session->log.entries().count(uR"(errorOccurred("Socket is not connected"))"_s), 1);
    QCOMPARE(session->server.lines().mid(2), QStringList{u"QUIT :Velmora leaving"_s});
}

void TestIRCConnectionReading::slotCanReconnect()
{
    connect(&session->connection, &IRCConnection::quitReceived, this,
            [this] { session->startConnecting(); });
    QVERIFY(sendAsOneRead(":a!b@c QUIT\r\n:a!b@c PRIVMSG #x :rest\r\nPRIVM"));
    QVERIFY(session->server.waitForClient(2));
    QVERIFY(session->log.waitFor(u"connected()"_s));
    session->server.send(u"SG #x :of the line"_s);
    QVERIFY(session->log.waitFor(uR"(privmsgReceived("", "#x", "of the line"))"_s));
    QCOMPARE(session->log.raw(), (QStringList{u":a!b@c QUIT"_s, u":a!b@c PRIVMSG #x :rest"_s,
                                              u"PRIVMSG #x :of the line"_s}));
}

void TestIRCConnectionReading::slotCanRunAnEventLoop()
{
    const auto *socket = session->connection.findChild<QTcpSocket *>();
    bool hasArrived = false;
    connect(&session->connection, &IRCConnection::quitReceived, this, [&] {
        session->server.send(u":a!b@c PRIVMSG #x :3"_s);
        hasArrived = QTest::qWaitFor([&] { return socket->bytesAvailable() > 0; }, WaitTimeout);
    });
    session->server.sendBytes(":a!b@c PRIVMSG #x :1\r\n:a!b@c QUIT\r\n:a!b@c PRIVMSG #x :2\r\n");
    QVERIFY(session->log.waitFor(uR"(privmsgReceived("a", "#x", "3"))"_s));
    QVERIFY(hasArrived);
    QCOMPARE(session->log.raw(),
             (QStringList{u":a!b@c PRIVMSG #x :1"_s, u":a!b@c QUIT"_s, u":a!b@c PRIVMSG #x :2"_s,
                          u":a!b@c PRIVMSG #x :3"_s}));
}

// The new connection reads while lines of the old one are still handled.
void TestIRCConnectionReading::slotCanReconnectAndRunAnEventLoop()
{
    QEventLoop loop;
    connect(&session->connection, &IRCConnection::quitReceived, this, [&] {
        session->startConnecting();
        connect(&session->connection, &IRCConnection::connected, this,
                [&] { session->server.send(u":a!b@c PRIVMSG #x :new"_s); });
        connect(&session->connection, &IRCConnection::topicReceived, &loop, &QEventLoop::quit);
        connect(&session->server, &ScriptedServer::clientArrived, this,
                [&](int client) { session->server.send(u":s 332 me #x :inner"_s, client); });
        QTimer::singleShot(WaitTimeout, &loop, &QEventLoop::quit);
        loop.exec();
    });
    session->server.sendBytes(":a!b@c QUIT\r\n:a!b@c PRIVMSG #x :1\r\n:a!b@c PRIVMSG #x :2\r\n");
    QVERIFY(session->log.waitFor(uR"(topicReceived("#x", "inner"))"_s));
    session->server.send(u":s 332 me #x :outer"_s);
    QVERIFY(session->log.waitFor(uR"(topicReceived("#x", "outer"))"_s));
    QStringList lines = session->log.raw();
    lines.removeAll(u":a!b@c PRIVMSG #x :new"_s);
    QCOMPARE(lines,
             (QStringList{u":a!b@c QUIT"_s, u":a!b@c PRIVMSG #x :1"_s, u":a!b@c PRIVMSG #x :2"_s,
                          u":s 332 me #x :inner"_s, u":s 332 me #x :outer"_s}));
}

void TestIRCConnectionReading::callsTheHandlerAfterEachRead()
{
    QStringList events;
    connect(&session->connection, &IRCConnection::privmsgReceived, this,
            [&](const QString &, const QString &, const QString &text) {
                events.append(session->connection.isReading() ? text : u"not reading"_s);
            });
    session->connection.setReadFinishedHandler([&] {
        events.append(session->connection.isReading() ? u"still reading"_s : u"end"_s);
    });
    QVERIFY(sendAsOneRead(":a!b@c PRIVMSG #x :1\r\n:a!b@c PRIVMSG #x :2\r\n:a!b@c PRIV"));
    QVERIFY(sendAsOneRead("MSG #x :3\r\n"));
    QCOMPARE(events, (QStringList{u"1"_s, u"2"_s, u"end"_s, u"3"_s, u"end"_s}));

    session->connection.setReadFinishedHandler({});
    QVERIFY(sendAsOneRead(":a!b@c PRIVMSG #x :4\r\n"));
    QCOMPARE(events.constLast(), u"4"_s);
}

void TestIRCConnectionReading::callsNoHandlerWithoutACompleteLine()
{
    int ends = 0;
    session->connection.setReadFinishedHandler([&ends] { ++ends; });
    QVERIFY(sendAsOneRead("half a line"));
    QCOMPARE(ends, 0);
    QVERIFY(sendAsOneRead(" and its end\r\n"));
    QCOMPARE(ends, 1);
}

QTEST_GUILESS_MAIN(TestIRCConnectionReading)
#include "tst_IRCConnectionReading.moc"
