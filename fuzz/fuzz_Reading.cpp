// How a session makes lines of what it reads: the same text gives the same lines and signals in the
// same order, wherever the reads end.
//
// The input is what the server sends, on a real link. The byte 0xFF, which no text holds, marks the
// end of a read.

#include "Fuzzing.h"
#include "IRCConnection.h"
#include "ScriptedServer.h"
#include "SessionLog.h"
#include "Waiting.h"

#include <QCoreApplication>
#include <QTcpSocket>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

class Session final
{
public:
    Session();

    /// What the session tells of these reads and a line end, all from the same state.
    QStringList tell(const QByteArrayList &reads);
    [[nodiscard]] QStringList lines() const { return log.raw(); }

    /// False once the session is in another state than after registration, for good.
    [[nodiscard]] bool isFresh() const;

private:
    void feed(const QByteArray &bytes);

    ScriptedServer server;
    IRCConnection connection;
    SessionLog log{connection};
    QTcpSocket *socket = nullptr;
    bool hasTriedNicks = false;
};

Session::Session()
{
    connection.connectToServer(u"127.0.0.1"_s, server.port(), u"me"_s, u"Real Name"_s, false);
    socket = connection.findChild<QTcpSocket *>();
    Fuzzing::demand(server.waitForLine(u"USER me 0 * :Real Name"_s), "the session connects");
}

bool Session::isFresh() const
{
    return connection.currentNick() == "me"_L1 && !hasTriedNicks;
}

void Session::feed(const QByteArray &bytes)
{
    if (bytes.isEmpty())
        return;
    hasTriedNicks = hasTriedNicks || bytes.contains("433");
    server.sendBytes(bytes);
    Fuzzing::demand(socket->waitForReadyRead(WaitTimeout), "each read arrives");
}

QStringList Session::tell(const QByteArrayList &reads)
{
    log.clear();
    connection.setRegistered(false);
    connection.resetListCounters();
    for (const QByteArray &bytes : reads)
        feed(bytes);
    feed("\r\n");
    return log.entries();
}

/// A session as it is after registration. A link costs much, so each one serves for long.
Session &freshSession()
{
    constexpr int MaxUses = 2000;
    static std::unique_ptr<Session> session;
    static int uses = 0;
    if (!session || !session->isFresh() || ++uses > MaxUses) {
        session = std::make_unique<Session>();
        uses = 0;
    }
    return *session;
}

} // namespace

int LLVMFuzzerInitialize(int * /*argc*/, char *** /*argv*/)
{
    Fuzzing::start();
    return 0;
}

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArrayList reads = Fuzzing::bytesOf(data, size).split('\xFF');
    QString text;
    for (const QByteArray &bytes : reads)
        text += QString::fromUtf8(bytes);

    Session &inPieces = freshSession();
    const QStringList told = inPieces.tell(reads);
    QStringList lines = QString(text + u"\r\n"_s).split(u"\r\n"_s);
    lines.removeAll(QString());
    Fuzzing::demand(inPieces.lines() == lines, "each CR LF ends a line, and nothing else does");

    // Each read loses a byte order mark at its start, so one is there to be lost.
    Session &inOne = freshSession();
    Fuzzing::demand(inOne.tell({"\xEF\xBB\xBF" + text.toUtf8()}) == told,
                    "the same text tells the same in one read");
    QCoreApplication::processEvents();
    return 0;
}
