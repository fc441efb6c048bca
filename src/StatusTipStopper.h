#pragma once

#include <QObject>

class QMainWindow;

/// Keeps what the status bar of a main window says while menus are used.
///
/// A menu sends the window a status tip for each entry under the pointer, and one more when it
/// closes. Ours have no tips, so these are empty, and the window would show them.
class StatusTipStopper final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(StatusTipStopper)

public:
    /// Belongs to `window`, whose status bar it guards from now on.
    explicit StatusTipStopper(QMainWindow &window);

    bool eventFilter(QObject *watched, QEvent *event) override;
};
