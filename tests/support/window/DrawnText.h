#pragma once

#include <QStringList>

class QWidget;

/// What a widget writes on the screen, as its painter is told: after markup was read, mnemonics
/// were taken out and texts were elided. How it looks is not looked at.
namespace DrawnText {

/// The texts that `widget` and what lies in it draw, in the order of drawing; each run of one font
/// and one direction is a text of its own.
[[nodiscard]] QStringList of(QWidget &widget);

/// The same in one piece.
[[nodiscard]] QString joined(QWidget &widget);

} // namespace DrawnText
