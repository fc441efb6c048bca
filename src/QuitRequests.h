#pragma once

#include <QObject>

/// Ends the program as its window's closing does when the system asks for it: by SIGTERM, SIGINT or
/// SIGHUP, where there are signals, or by the session manager at the end of a desktop's session.
///
/// A signal that the program was started to ignore stays ignored. The second of a kind ends the
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
