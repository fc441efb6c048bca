#include "TabMenuKey.h"

#include <QContextMenuEvent>
#include <QTabBar>

TabMenuKey::TabMenuKey(QTabBar &bar)
    : QObject(&bar)
    , tabBar(bar)
{
    bar.installEventFilter(this);
}

bool TabMenuKey::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() != QEvent::ContextMenu
        || static_cast<QContextMenuEvent *>(event)->reason() != QContextMenuEvent::Keyboard)
        return QObject::eventFilter(watched, event);
    emit tabBar.customContextMenuRequested(tabBar.tabRect(tabBar.currentIndex()).center());
    return true;
}
