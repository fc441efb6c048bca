#pragma once

#include <QRect>

class QWidget;

/// The area in which popups must fit.
namespace PopupArea {

/// Returns false on Wayland, where a program cannot learn where its windows are on the screen and
/// QWidget::mapToGlobal() returns coordinates relative to the window.
[[nodiscard]] bool hasGlobalPositions();

/// Returns the area for popups of `window` in the coordinates of QWidget::mapToGlobal(): what is
/// available of the primary screen or, without global positions, the window itself.
[[nodiscard]] QRect of(const QWidget &window);

} // namespace PopupArea
