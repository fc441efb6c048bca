#include "Waiting.h"

#include <QCoreApplication>
#include <QEvent>
#include <QTimer>

bool waitUntil(const std::function<bool()> &holds, int patience)
{
    bool isOver = false;
    QTimer bell;
    bell.setSingleShot(true);
    QObject::connect(&bell, &QTimer::timeout, &bell, [&isOver] { isOver = true; });
    bell.start(patience);
    while (!holds()) {
        if (isOver)
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
        // Only a return to the outermost loop would do this.
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    return true;
}
