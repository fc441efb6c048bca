#include "Waiting.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEvent>
#include <QTest>
#include <QTimer>

bool waitUntil(const std::function<bool()> &condition, int timeout)
{
    bool isOver = false;
    QTimer timer;
    timer.setSingleShot(true);
    QObject::connect(&timer, &QTimer::timeout, &timer, [&isOver] { isOver = true; });
    timer.start(timeout);
    while (!condition()) {
        if (isOver)
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
        // processEvents() does not delete objects on which deleteLater() was called.
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    return true;
}

bool pollUntil(const std::function<bool()> &condition)
{
    constexpr int Interval = 100; // In ms.
    QDeadlineTimer nextCheck(0);
    const auto isMet = [&] {
        if (!nextCheck.hasExpired())
            return false;
        const bool holds = condition();
        nextCheck.setRemainingTime(Interval);
        return holds;
    };
    return QTest::qWaitFor(isMet, WaitTimeout);
}
