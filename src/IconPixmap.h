#pragma once

#include <QGuiApplication>
#include <QPixmap>

/// Pixmaps for icons that are drawn at run time.
namespace IconPixmap {

/// A transparent square of `extent` by `extent`, in the coordinates of windows, with as many points
/// as the sharpest screen shows of it.
[[nodiscard]] inline QPixmap make(int extent)
{
    const qreal ratio = qGuiApp->devicePixelRatio();
    QPixmap pixmap(QSize(extent, extent) * ratio);
    pixmap.setDevicePixelRatio(ratio);
    pixmap.fill(Qt::transparent);
    return pixmap;
}

} // namespace IconPixmap
