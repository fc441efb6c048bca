#pragma once

#include <QtGlobal>

/// A duplicate of another process's TCP socket descriptor, to query socket options.
///
/// The connection stays open until the object is destroyed, so don't keep it long. This needs the
/// right to trace the process: it is a child of the same user, or the test runs as root.
class DuplicatedSocket final
{
    Q_DISABLE_COPY_MOVE(DuplicatedSocket)

public:
    /// Duplicates the descriptor of the process's IPv4 connection to this port of the loopback.
    DuplicatedSocket(qint64 processId, quint16 peerPort);
    ~DuplicatedSocket();

    /// Returns false if the process has no such connection or the kernel denies access.
    [[nodiscard]] bool isValid() const;

    /// Returns the value of an int option of getsockopt(2); -1 if that fails.
    [[nodiscard]] int option(int level, int name) const;

private:
    int descriptor = -1;
};
