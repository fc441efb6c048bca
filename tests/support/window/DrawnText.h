#pragma once

#include <QStringList>

class QWidget;

/// The text that a widget paints: after markup, mnemonics and eliding, without its appearance.
namespace DrawnText {

/// Returns the texts that `widget` and its children paint, in painting order. Each run with one
/// font and one direction is a separate text.
[[nodiscard]] QStringList of(QWidget &widget);

/// Returns the same texts joined.
[[nodiscard]] QString joined(QWidget &widget);

} // namespace DrawnText
