#pragma once

#include "IRCConnection.h"

#include <QObject>
#include <QStringList>

/// Records every signal of a session, in order, as a call with its arguments:
/// `privmsgReceived("alice", "#x", "hi")`.
///
/// The constructor connects it, so slots connected later are called after it.
class SessionLog final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SessionLog)

public:
    explicit SessionLog(const IRCConnection &session);

    [[nodiscard]] const QStringList &entries() const;

    /// Returns all signals so far except `rawMessageReceived`.
    [[nodiscard]] QStringList parsed() const;

    /// Returns the received lines.
    [[nodiscard]] QStringList raw() const;

    /// Waits until an entry has been recorded at least `times` times.
    [[nodiscard]] bool waitFor(const QString &entry, int times = 1) const;

    void clear();

private:
    template <typename... Arguments>
    void record(const IRCConnection &session, void (IRCConnection::*signal)(Arguments...),
                const QString &name);

    QStringList calls;
    QStringList rawLines;
};
