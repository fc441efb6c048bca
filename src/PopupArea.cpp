#include "PopupArea.h"

#include <QGuiApplication>
#include <QScreen>
#include <QWidget>

using namespace Qt::StringLiterals;

namespace PopupArea {

bool hasGlobalPositions()
{
    return !QGuiApplication::platformName().startsWith("wayland"_L1);
}

QRect of(const QWidget &window)
{
    return hasGlobalPositions() ? QGuiApplication::primaryScreen()->availableGeometry()
                                : QRect(window.mapToGlobal(QPoint()), window.size());
}

} // namespace PopupArea
