#include "StatusTipStopper.h"

#include <QEvent>
#include <QMainWindow>

StatusTipStopper::StatusTipStopper(QMainWindow &window)
    : QObject(&window)
{
    window.installEventFilter(this);
}

bool StatusTipStopper::eventFilter(QObject *watched, QEvent *event)
{
    return event->type() == QEvent::StatusTip || QObject::eventFilter(watched, event);
}
