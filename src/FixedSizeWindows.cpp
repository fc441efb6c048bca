#include "FixedSizeWindows.h"

#include <QEvent>
#include <QTimer>
#include <QWidget>
#include <QWindow>

namespace {

// Property of a window of fixed size that accepts any size for now.
constexpr char AcceptsAnySize[] = "acceptsAnySize";

bool isEnlarged(const QWindow &window)
{
    return (window.windowStates() & (Qt::WindowMaximized | Qt::WindowFullScreen)) != 0;
}

// Must run before the compositor answers.
void acceptAnySize(QWindow &window)
{
    if (!isEnlarged(window) || window.minimumSize() != window.maximumSize())
        return;
    window.setProperty(AcceptsAnySize, true);
    window.setMaximumSize(QSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX));
}

void restoreSize(QWindow &window)
{
    if (!window.property(AcceptsAnySize).toBool())
        return;
    if (isEnlarged(window)) {
        // Later, since Weston ignores the request until the window is painted in its new size.
        QTimer::singleShot(0, &window, [&window] { window.setWindowStates(Qt::WindowNoState); });
    } else {
        window.setProperty(AcceptsAnySize, false);
        window.setMaximumSize(window.minimumSize());
    }
}

} // namespace

bool FixedSizeWindows::eventFilter(QObject *watched, QEvent *event)
{
    if (watched->isWindowType()) {
        auto *window = static_cast<QWindow *>(watched);
        if (event->type() == QEvent::Show) {
            disconnect(window, &QWindow::windowStateChanged, this, nullptr);
            connect(window, &QWindow::windowStateChanged, this,
                    [window] { acceptAnySize(*window); });
        } else if (event->type() == QEvent::WindowStateChange) {
            restoreSize(*window);
        }
    }
    return QObject::eventFilter(watched, event);
}
