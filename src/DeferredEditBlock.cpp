#include "DeferredEditBlock.h"

#include <QTextCursor>
#include <QTextDocument>
#include <QTimerEvent>

namespace {

constexpr int DurationMilliseconds = 2000;

} // namespace

DeferredEditBlock::DeferredEditBlock(QTextDocument &editedDocument)
    : document(editedDocument)
{
}

void DeferredEditBlock::begin(int position)
{
    QTextCursor(&document).beginEditBlock();
    start = position;
    timer.start(DurationMilliseconds, this);
}

void DeferredEditBlock::timerEvent(QTimerEvent *event)
{
    if (event->timerId() != timer.timerId()) {
        QObject::timerEvent(event);
        return;
    }
    timer.stop();
    QTextCursor(&document).endEditBlock();
    start = 0;
}
