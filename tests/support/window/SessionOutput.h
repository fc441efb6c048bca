#pragma once

#include "WindowSession.h"

#include <QMap>
#include <QStringList>

/// What a session writes to its tabs and sends to the server after the object was created.
///
/// The constructor discards what was sent before. The session must outlive the object.
class SessionOutput final
{
    Q_DISABLE_COPY_MOVE(SessionOutput)

public:
    using Lines = QMap<QString, QStringList>;

    explicit SessionOutput(WindowSession &windowSession);

    /// Returns the new lines of each tab that has any. Tabs that were opened later are omitted.
    [[nodiscard]] Lines lines() const;
    /// Returns the lines sent since the last call or since construction.
    [[nodiscard]] QStringList sent() const;

private:
    WindowSession &session;
    QMap<QString, qsizetype> counts;
};
