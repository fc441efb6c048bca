#pragma once

#include "WindowSession.h"

#include <QMap>
#include <QStringList>

/// What a session does from the object's making on: the lines that it writes and those that go out.
/// The session must outlive it.
class SessionOutput final
{
    Q_DISABLE_COPY_MOVE(SessionOutput)

public:
    using Lines = QMap<QString, QStringList>;

    explicit SessionOutput(WindowSession &watched);

    /// The new lines of each tab that has any, by tab. Tabs that came later are not among them.
    [[nodiscard]] Lines lines() const;
    /// What has gone out since the last call, or since the start.
    [[nodiscard]] QStringList sent() const;

private:
    WindowSession &session;
    QMap<QString, qsizetype> counts;
};
