#pragma once

#include <QObject>

/// An event filter of the application that restores maximised windows of fixed size.
///
/// QtWayland's window decoration lets users maximise any window. If the window keeps its size,
/// Weston sends a protocol error that ends the program. QtWayland cannot withdraw the request
/// before Weston answers, so the window accepts any size until it has its normal state again.
class FixedSizeWindows final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(FixedSizeWindows)

public:
    FixedSizeWindows() = default;

    bool eventFilter(QObject *watched, QEvent *event) override;
};
