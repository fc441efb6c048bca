#pragma once

#include <QBrush>
#include <QPointF>

class QTextBlock;
class QTextLayout;
class QTextLine;

/// Border along an edge of a cell. The cell's text is narrower by its width.
struct CellBorder
{
    /// In pixels; 0 without a border.
    int width = 0;
    QBrush brush;
};

/// Measures of a cell's text.
struct TextExtent
{
    /// Width in pixels that the text needs without wrapping.
    int width = 0;
    /// Height in pixels of the text as laid out or, if only estimated, without wrapping.
    int height = 0;
    /// The text is wrapped.
    bool isWrapped = false;
    /// `height` is exact wherever the text gets at least `width` pixels, and so is not wrapped.
    bool isReliable = false;
};

/// Lays out the text of one cell.
namespace CellText {

/// Limit of text widths in pixels, to avoid `int` overflow.
inline constexpr qreal MaximumWidth = 1e9;

/// Returns the right border of the cell that holds `block`.
[[nodiscard]] CellBorder rightBorder(const QTextBlock &block);

/// Breaks the text of `block` into lines of `width` pixels, like Qt's own document layout. `layout`
/// is `block`'s own or was created for it.
TextExtent layOut(QTextLayout &layout, const QTextBlock &block, qreal width);

/// Returns the height of `line` in a cell, in whole pixels.
[[nodiscard]] int heightOf(const QTextLine &line);

/// Returns the width in pixels of the widest single character in the text of `block`.
[[nodiscard]] int widestCharacter(const QTextBlock &block);

/// Returns the offset of the character at `point`, which is relative to the start of the text.
///
/// Without text at `point` the result is -1 for Qt::ExactHit, and the nearest cursor position
/// otherwise.
[[nodiscard]] int hitTest(const QTextLayout &layout, const QPointF &point,
                          Qt::HitTestAccuracy accuracy);

} // namespace CellText
