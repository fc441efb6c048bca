#pragma once

#include <QGuiApplication>
#include <QPixmap>

/// Pixmaps for icons drawn at run time.
namespace IconPixmap {

/// Returns a transparent square with sides of `extent` device-independent pixels, in the highest
/// device pixel ratio of all screens.
[[nodiscard]] inline QPixmap make(int extent)
{
    const qreal ratio = qGuiApp->devicePixelRatio();
    QPixmap pixmap(QSize(extent, extent) * ratio);
    pixmap.setDevicePixelRatio(ratio);
    pixmap.fill(Qt::transparent);
    return pixmap;
}

} // namespace IconPixmap
