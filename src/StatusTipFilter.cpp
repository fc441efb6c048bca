#include "StatusTipFilter.h"

#include <QEvent>
#include <QMainWindow>

StatusTipFilter::StatusTipFilter(QMainWindow &window)
    : QObject(&window)
{
    window.installEventFilter(this);
}

bool StatusTipFilter::eventFilter(QObject *watched, QEvent *event)
{
    return event->type() == QEvent::StatusTip || QObject::eventFilter(watched, event);
}
