#include "IRCConnection.h"

#include "IRCParser.h"
#include "SleepInhibitor.h"

#include <QDateTime>
#include <QScopedValueRollback>
#include <QSslSocket>
#include <QTcpSocket>
#include <QTimer>

#include <limits>
#include <utility>

#ifdef Q_OS_WIN
#include <winsock2.h>
#include <ws2tcpip.h>
#else
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#endif

using namespace Qt::StringLiterals;

namespace {

constexpr int KeepAliveInterval = 10000; // Milliseconds, as are the next two.
constexpr qint64 SilenceBeforePing = 60000;
constexpr qint64 PongTimeout = 45000;

constexpr qsizetype MaxAlternativeLength = 30;

#if defined(Q_OS_WIN)
// Windows has these since 2017, but the MinGW headers do not define them.
constexpr int IdleTimeOption = 3;
constexpr int IntervalOption = 17;
constexpr int ProbesOption = 16;
#else
#if defined(TCP_KEEPIDLE)
constexpr int IdleTimeOption = TCP_KEEPIDLE;
#else
constexpr int IdleTimeOption = TCP_KEEPALIVE; // On macOS.
#endif
constexpr int IntervalOption = TCP_KEEPINTVL;
constexpr int ProbesOption = TCP_KEEPCNT;
#endif

void setOption(qintptr descriptor, int level, int option, int value)
{
#ifdef Q_OS_WIN
    const auto handle = static_cast<SOCKET>(descriptor);
#else
    const auto handle = static_cast<int>(descriptor);
#endif
    // The cast is for Windows, which declares the parameter as const char *. Errors are ignored:
    // the options are optional.
    setsockopt(handle, level, option, reinterpret_cast<const char *>(&value), sizeof value);
}

} // namespace

IRCConnection::IRCConnection(QObject *parent)
    : QObject(parent)
    , keepAliveTimer(new QTimer(this))
{
    connect(keepAliveTimer, &QTimer::timeout, this, &IRCConnection::checkKeepAlive);
    // Connected first, so that currentNick() is up to date in all other slots of nickChanged.
    connect(this, &IRCConnection::nickChanged, this, &IRCConnection::updateOwnNick);
}

IRCConnection::~IRCConnection()
{
    // The receivers may already be partly destroyed.
    blockSignals(true);
    readFinishedHandler = nullptr;
    disconnectFromServer();
}

void IRCConnection::connectToServer(const QString &newHost, quint16 newPort, const QString &newNick,
                                    const QString &newRealName, bool withSsl)
{
    host = newHost;
    port = newPort;
    realName = newRealName;
    useSsl = withSsl;
    spareFlag = false;
    registrationDone = false;

    generateNickAlternatives(newNick, config.altNickname);
    nick = nickAlternatives.first();

    // Left connected, so that its `disconnected` still arrives.
    if (socket != nullptr)
        socket->deleteLater();

    if (useSsl) {
        auto *secure = new QSslSocket(this);
        socket = secure;
        secure->connectToHostEncrypted(host, port, QIODevice::ReadWrite,
                                       QAbstractSocket::AnyIPProtocol);
    } else {
        socket = new QTcpSocket(this);
        socket->connectToHost(host, port, QIODevice::ReadWrite, QAbstractSocket::AnyIPProtocol);
    }
    socket->setSocketOption(QAbstractSocket::KeepAliveOption, 1);
    socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);

    connect(socket, &QAbstractSocket::connected, this, &IRCConnection::onConnected);
    connect(socket, &QAbstractSocket::disconnected, this, &IRCConnection::onDisconnected);
    connect(socket, &QAbstractSocket::readyRead, this, &IRCConnection::onReadyRead);
    connect(socket, &QAbstractSocket::errorOccurred, this, &IRCConnection::onError);
}

void IRCConnection::disconnectFromServer()
{
    if (isConnected()) {
        socket->write("QUIT :Velmora leaving\r\n"_ba);
        socket->flush();
        closeSocket();
    }
    keepAliveTimer->stop();
    enableSleep();
}

bool IRCConnection::isConnected() const
{
    return socket != nullptr && socket->state() == QAbstractSocket::ConnectedState;
}

bool IRCConnection::isRegistered() const
{
    return registrationDone;
}

void IRCConnection::setRegistered(bool isDone)
{
    registrationDone = isDone;
}

QString IRCConnection::currentNick() const
{
    return nick;
}

QString IRCConnection::getHost() const
{
    return host;
}

ServerConfig IRCConnection::serverConfig() const
{
    return config;
}

void IRCConnection::setServerConfig(const ServerConfig &newConfig)
{
    config = newConfig;
}

void IRCConnection::sendRaw(const QString &line)
{
    if (!isConnected()) {
        emit errorOccurred(u"Socket is not connected"_s);
        return;
    }
    if (socket->write(line.toUtf8() + "\r\n"_ba) == -1)
        emit errorOccurred(socket->errorString());
    else
        lastActivity.start();
}

void IRCConnection::joinChannel(const QString &channel)
{
    sendRaw(u"JOIN "_s + channel);
}

void IRCConnection::partChannel(const QString &channel)
{
    sendRaw(u"PART "_s + channel + u" :Leaving"_s);
}

void IRCConnection::sendPrivmsg(const QString &target, const QString &text)
{
    sendRaw(u"PRIVMSG "_s + target + u" :"_s + text);
}

void IRCConnection::changeNick(const QString &newNick)
{
    sendRaw(u"NICK "_s + newNick);
}

void IRCConnection::sendWhois(const QString &target)
{
    sendRaw(u"WHOIS "_s + target);
}

void IRCConnection::sendWatch(const QString &target, bool add)
{
    if (isConnected())
        sendRaw(u"WATCH %1%2"_s.arg(add ? u"+"_s : u"-"_s, target));
}

void IRCConnection::resetListCounters()
{
    totalListChannels = 0;
    totalListUsers = 0;
    listServerName.clear();
}

void IRCConnection::addListChannel(int userCount)
{
    ++totalListChannels;
    // Clamped to avoid overflow: the server may send any number.
    const qint64 sum = qint64(totalListUsers) + userCount;
    totalListUsers = static_cast<int>(qBound(qint64(std::numeric_limits<int>::min()), sum,
                                             qint64(std::numeric_limits<int>::max())));
}

void IRCConnection::setListServerName(const QString &name)
{
    listServerName = name;
}

QString IRCConnection::getListServerName() const
{
    return listServerName;
}

int IRCConnection::getTotalListChannels() const
{
    return totalListChannels;
}

int IRCConnection::getTotalListUsers() const
{
    return totalListUsers;
}

bool IRCConnection::isReading() const
{
    return reading;
}

void IRCConnection::setReadFinishedHandler(std::function<void()> handler)
{
    readFinishedHandler = std::move(handler);
}

void IRCConnection::onConnected()
{
    configureSocketKeepAlive();
    lastActivity.start();
    awaitingPong = false;
    keepAliveTimer->start(KeepAliveInterval);
    disableSleep();
    sendRaw(u"NICK "_s + nick);
    sendRaw(u"USER "_s + nick + u" 0 * :"_s + realName);
    emit connected();
}

void IRCConnection::onDisconnected()
{
    // Intended: also when a replaced socket ends and its successor is already connected.
    keepAliveTimer->stop();
    enableSleep();
    emit disconnected();
}

void IRCConnection::onReadyRead()
{
    lastActivity.start();
    awaitingPong = false;
    // readyRead of a replaced socket may arrive while the new one is closed. Qt warns about reading
    // a closed device.
    if (socket->isOpen())
        buffer += QString::fromUtf8(socket->readAll());
    if (processLines() && readFinishedHandler)
        readFinishedHandler();
    // readyRead is not emitted recursively; read what arrived in a nested event loop.
    if (socket->isOpen() && socket->bytesAvailable() > 0)
        QMetaObject::invokeMethod(this, &IRCConnection::onReadyRead, Qt::QueuedConnection);
}

// Returns true if it found a line end. A slot may run a nested event loop that calls this again, so
// the state of the search is in members.
bool IRCConnection::processLines()
{
    const QScopedValueRollback guard(reading, true);
    bool found = false;
    for (;;) {
        const qsizetype lineEnd = buffer.indexOf("\r\n"_L1, searchStart);
        if (lineEnd < 0)
            break;
        found = true;
        const QString line = buffer.first(lineEnd);
        // Cheap: QString only moves its start.
        buffer.remove(0, lineEnd + 2);
        searchStart = 0;
        if (line.isEmpty())
            continue;
        emit rawMessageReceived(line);
        IRCParser::parseLine(line, this);
    }
    // Frees the memory of long lines.
    if (found)
        buffer.squeeze();
    // A trailing CR may be the first half of a line end.
    searchStart = qMax(buffer.size() - 1, qsizetype(0));
    return found;
}

void IRCConnection::onError(QAbstractSocket::SocketError /*error*/)
{
    emit errorOccurred(socket->errorString());
}

void IRCConnection::updateOwnNick(const QString &oldNick, const QString &newNick)
{
    if (oldNick != nick)
        return;
    nick = newNick;
    emit ownNickChanged(newNick);
}

void IRCConnection::checkKeepAlive()
{
    if (!isConnected())
        return;
    if (awaitingPong && pingSentAt.elapsed() > PongTimeout) {
        emit errorOccurred(u"Ping timeout: no response to PING for 45s"_s);
        closeSocket();
        return;
    }
    if (!awaitingPong && lastActivity.elapsed() > SilenceBeforePing) {
        sendRaw(u"PING :"_s + QDateTime::currentDateTime().toString(Qt::ISODate));
        pingSentAt.start();
        awaitingPong = true;
    }
}

void IRCConnection::tryNextNick()
{
    ++nickIndex;
    if (nickIndex >= nickAlternatives.size()) {
        emit errorOccurred(u"All nicknames are in use. Please choose a different nick."_s);
        return;
    }
    const QString oldNick = nick;
    const QString entry = nickAlternatives.at(nickIndex);
    // Set before nickChanged, so that updateOwnNick() does not emit ownNickChanged: the server has
    // not confirmed the nick.
    nick = entry;
    sendRaw(u"NICK "_s + entry);
    emit nickChanged(oldNick, entry);
}

void IRCConnection::generateNickAlternatives(const QString &wanted, const QString &altNickname)
{
    nickAlternatives.clear();
    nickIndex = 0;
    nickAlternatives.append(wanted);
    if (!altNickname.isEmpty() && altNickname != wanted)
        nickAlternatives.append(altNickname);
    for (int i = 0; i < 100; ++i) {
        QString suffix = i < 10 ? u"_"_s : u"__"_s;
        if (i > 0)
            suffix += QString::number(i);
        const QString candidate = wanted.left(MaxAlternativeLength - suffix.size()) + suffix;
        if (!nickAlternatives.contains(candidate))
            nickAlternatives.append(candidate);
    }
}

void IRCConnection::configureSocketKeepAlive()
{
    if (socket == nullptr)
        return;
    const qintptr descriptor = socket->socketDescriptor();
    if (descriptor < 0)
        return;
    // Seconds until the first probe, seconds between probes, and number of probes.
    setOption(descriptor, SOL_SOCKET, SO_KEEPALIVE, 1);
    setOption(descriptor, IPPROTO_TCP, IdleTimeOption, 60);
    setOption(descriptor, IPPROTO_TCP, IntervalOption, 10);
    setOption(descriptor, IPPROTO_TCP, ProbesOption, 5);
}

// Works around QSslSocket::disconnectFromHost(), which never finishes during the handshake.
void IRCConnection::closeSocket()
{
    const auto *secure = qobject_cast<QSslSocket *>(socket);
    if (secure != nullptr && !secure->isEncrypted())
        socket->abort();
    else
        socket->disconnectFromHost();
}

void IRCConnection::disableSleep()
{
    if (sleepAssertion == 0)
        sleepAssertion = SleepInhibitor::acquire(u"Maintaining IRC connection"_s);
}

void IRCConnection::enableSleep()
{
    if (sleepAssertion == 0)
        return;
    SleepInhibitor::release(sleepAssertion);
    sleepAssertion = 0;
}
