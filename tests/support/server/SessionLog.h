#pragma once

#include "IRCConnection.h"

#include <QObject>
#include <QStringList>

/// Writes down every signal of one session, in order, as a call with its arguments:
/// `privmsgReceived("alice", "#x", "hi")`.
///
/// It is connected when it is made, so receivers connected later are called after it.
class SessionLog final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SessionLog)

public:
    explicit SessionLog(const IRCConnection &session);

    /// Everything so far.
    [[nodiscard]] const QStringList &entries() const;

    /// Everything so far, but for the received lines as such.
    [[nodiscard]] QStringList parsed() const;

    /// What the received lines were.
    [[nodiscard]] QStringList raw() const;

    /// Waits until an entry is there at least `times` times.
    [[nodiscard]] bool waitFor(const QString &entry, int times = 1) const;

    void clear();

private:
    template <typename... Arguments>
    void watch(const IRCConnection &session, void (IRCConnection::*signal)(Arguments...),
               const QString &name);

    QStringList calls;
    QStringList rawLines;
};
