#pragma once

#include <QObject>

/// Stops windows of fixed size from being maximised, as an event filter of the application.
///
/// QtWayland's own decoration offers it for every window. The window would keep its size, which
/// Weston answers with a protocol error that ends the program. QtWayland cannot withdraw the
/// request before the answer, so the window accepts any size until it is back to normal.
class FixedSizeWindows final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(FixedSizeWindows)

public:
    FixedSizeWindows() = default;

    bool eventFilter(QObject *watched, QEvent *event) override;
};
