#pragma once

#include <QRect>

class QWidget;

/// The area where popups must fit.
namespace PopupArea {

/// Returns false on Wayland, which does not report where windows are on the screen:
/// QWidget::mapToGlobal() returns coordinates relative to the window.
[[nodiscard]] bool hasGlobalPositions();

/// Returns the area for popups of `window` in the coordinates of QWidget::mapToGlobal(): the
/// available area of the primary screen or, without global positions, the window itself.
[[nodiscard]] QRect of(const QWidget &window);

} // namespace PopupArea
