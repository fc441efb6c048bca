#pragma once

#include <QObject>

class QMainWindow;

/// Ignores the menus' empty status tips, which would clear the status bar of a main window.
///
/// A menu sends the window a status tip for each entry under the pointer, and one more when it
/// closes. Our entries have no tips.
class StatusTipFilter final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(StatusTipFilter)

public:
    /// Becomes a child of `window`.
    explicit StatusTipFilter(QMainWindow &window);

    bool eventFilter(QObject *watched, QEvent *event) override;
};
