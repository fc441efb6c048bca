#pragma once

#include <QtGlobal>

/// A second hold on a TCP socket that another process has open, to ask the system about it.
///
/// The link does not end before the object goes, whatever the process does, so don't keep it long.
/// We need the right to trace the process: it is our child and of our user, or we are root.
class DuplicatedSocket final
{
    Q_DISABLE_COPY_MOVE(DuplicatedSocket)

public:
    /// Takes hold of the process's link to this port of the loopback, over IPv4.
    DuplicatedSocket(qint64 processId, quint16 peerPort);
    ~DuplicatedSocket();

    /// False if the process has no such link, or the system keeps us from looking.
    [[nodiscard]] bool isValid() const;

    /// What getsockopt(2) tells for an option that is an int; -1 if it tells nothing.
    [[nodiscard]] int option(int level, int name) const;

private:
    int descriptor = -1;
};
