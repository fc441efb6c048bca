#include "QuitRequests.h"

#include <QGuiApplication>
#include <QSessionManager>

#ifdef Q_OS_UNIX
#include <QSocketNotifier>

#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

// The signal handler writes to the first socket; the event loop reads from the second.
std::array<int, 2> sockets{-1, -1};

// Async-signal-safe.
void wakeEventLoop(int /*signal*/)
{
    const int error = errno;
    const char byte = 0;
    [[maybe_unused]] const auto written = write(sockets[0], &byte, 1);
    errno = error;
}

void installHandler(int signal)
{
    struct sigaction action = {};
    if (sigaction(signal, nullptr, &action) != 0 || action.sa_handler == SIG_IGN)
        return;
    action = {};
    action.sa_handler = wakeEventLoop;
    action.sa_flags = SA_RESTART | int(SA_RESETHAND);
    sigaction(signal, &action, nullptr);
}

} // namespace
#endif

QuitRequests::QuitRequests()
{
#if QT_CONFIG(sessionmanager)
    // Queued, because the session manager waits until the signal returns.
    connect(qApp, &QGuiApplication::commitDataRequest, this, [] {
        QMetaObject::invokeMethod(
                qApp, [] { QCoreApplication::quit(); }, Qt::QueuedConnection);
    });
#endif
    watchSignals();
}

void QuitRequests::watchSignals()
{
#ifdef Q_OS_UNIX
    if (socketpair(AF_UNIX, SOCK_STREAM, 0, sockets.data()) != 0)
        return;
    for (const int socket : sockets)
        fcntl(socket, F_SETFD, FD_CLOEXEC);
    auto *notifier = new QSocketNotifier(sockets[1], QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, [notifier] {
        notifier->setEnabled(false);
        QCoreApplication::quit();
    });
    for (const int signal : {SIGTERM, SIGINT, SIGHUP})
        installHandler(signal);
#endif
}
