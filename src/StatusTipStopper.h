#pragma once

#include <QEvent>
#include <QObject>

/// Installed on a main window, keeps what its status bar says while menus are used.
///
/// A menu sends the window a status tip for each entry under the pointer, and one more when it
/// closes. Ours have no tips, so these are empty, and the window would show them.
class StatusTipStopper final : public QObject
{
public:
    using QObject::QObject;

    bool eventFilter(QObject *, QEvent *event) override
    {
        return event->type() == QEvent::StatusTip;
    }
};
