#pragma once

#include <QObject>

/// Quits the application on SIGTERM, SIGINT and SIGHUP, and at the session manager's request.
///
/// A signal that is ignored at start stays ignored. A second signal of the same kind ends the
/// process at once. Create one object, after the application.
class QuitRequests final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(QuitRequests)

public:
    QuitRequests();

private:
    void watchSignals();
};
