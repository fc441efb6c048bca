#include "TabMenuKey.h"

#include <QContextMenuEvent>
#include <QTabBar>

TabMenuKey::TabMenuKey(QTabBar &bar)
    : QObject(&bar)
{
    bar.installEventFilter(this);
}

bool TabMenuKey::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() != QEvent::ContextMenu
        || static_cast<QContextMenuEvent *>(event)->reason() != QContextMenuEvent::Keyboard)
        return QObject::eventFilter(watched, event);
    auto *bar = static_cast<QTabBar *>(watched);
    emit bar->customContextMenuRequested(bar->tabRect(bar->currentIndex()).center());
    return true;
}
