#include "OpenChange.h"

#include <QTextCursor>
#include <QTextDocument>
#include <QTimerEvent>

namespace {

constexpr int OpenMilliseconds = 2000;

} // namespace

OpenChange::OpenChange(QTextDocument &changed)
    : document(changed)
{
}

void OpenChange::begin(int position)
{
    QTextCursor(&document).beginEditBlock();
    start = position;
    timer.start(OpenMilliseconds, this);
}

void OpenChange::timerEvent(QTimerEvent *event)
{
    if (event->timerId() != timer.timerId()) {
        QObject::timerEvent(event);
        return;
    }
    timer.stop();
    QTextCursor(&document).endEditBlock();
    start = 0;
}
