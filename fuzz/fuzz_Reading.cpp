// Checks how a session splits what it reads into lines: the same text gives the same lines and
// signals in the same order, wherever the reads end.
//
// The input is what the server sends through a real socket. The byte 0xFF, which UTF-8 does not
// contain, marks the end of a read.

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

    /// Returns the signals that the session emits for these reads and a line end. Resets its state
    /// before.
    QStringList signalsOf(const QByteArrayList &reads);
    [[nodiscard]] QStringList lines() const { return log.raw(); }

    /// Returns whether the session is in the state after registration, which a reset restores.
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
    Fuzzing::require(server.waitForLine(u"USER me 0 * :Real Name"_s), "the session connects");
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
    Fuzzing::require(socket->waitForReadyRead(WaitTimeout), "each read arrives");
}

QStringList Session::signalsOf(const QByteArrayList &reads)
{
    log.clear();
    connection.setRegistered(false);
    connection.resetListCounters();
    for (const QByteArray &bytes : reads)
        feed(bytes);
    feed("\r\n");
    return log.entries();
}

/// Returns a session in the state after registration. Reuses it, since connecting is slow.
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
    const QStringList expected = inPieces.signalsOf(reads);
    QStringList lines = QString(text + u"\r\n"_s).split(u"\r\n"_s);
    lines.removeAll(QString());
    Fuzzing::require(inPieces.lines() == lines, "only CR LF ends a line");

    // Decoding drops a byte order mark at the start of each read, so this read starts with one.
    Session &inOne = freshSession();
    Fuzzing::require(inOne.signalsOf({"\xEF\xBB\xBF" + text.toUtf8()}) == expected,
                     "one read of the same text gives the same signals");
    QCoreApplication::processEvents();
    return 0;
}
