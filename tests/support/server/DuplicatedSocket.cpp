#include "DuplicatedSocket.h"

#include <QDir>

#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

bool isConnectedTo(quint16 port, int descriptor)
{
    sockaddr_in peer{};
    socklen_t size = sizeof peer;
    return getpeername(descriptor, reinterpret_cast<sockaddr *>(&peer), &size) == 0
           && peer.sin_family == AF_INET && ntohs(peer.sin_port) == port;
}

} // namespace

DuplicatedSocket::DuplicatedSocket(qint64 processId, quint16 peerPort)
{
    // By number, since older C libraries have no functions for these two system calls.
    const auto process = static_cast<int>(syscall(SYS_pidfd_open, processId, 0));
    if (process < 0)
        return;
    // QDir lists dangling links as system entries.
    const QStringList numbers =
            QDir(u"/proc/%1/fd"_s.arg(processId))
                    .entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot);
    for (const QString &number : numbers) {
        const auto copy = static_cast<int>(syscall(SYS_pidfd_getfd, process, number.toInt(), 0));
        if (copy >= 0 && isConnectedTo(peerPort, copy)) {
            descriptor = copy;
            break;
        }
        if (copy >= 0)
            ::close(copy);
    }
    ::close(process);
}

DuplicatedSocket::~DuplicatedSocket()
{
    if (isValid())
        ::close(descriptor);
}

bool DuplicatedSocket::isValid() const
{
    return descriptor >= 0;
}

int DuplicatedSocket::option(int level, int name) const
{
    int value = -1;
    socklen_t size = sizeof value;
    return getsockopt(descriptor, level, name, &value, &size) == 0 ? value : -1;
}
