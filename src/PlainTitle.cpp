#include "PlainTitle.h"

#include <QEvent>
#include <QWidget>
#include <QWindow>

PlainTitle::PlainTitle(QWidget &window)
    : QObject(&window)
{
    window.installEventFilter(this);
}

bool PlainTitle::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Show) {
        const auto *window = static_cast<QWidget *>(watched);
        window->windowHandle()->setTitle(window->windowTitle());
    }
    return QObject::eventFilter(watched, event);
}
