#pragma once

#include <QBrush>
#include <QFont>
#include <QHash>
#include <QPointF>

#include <array>
#include <memory>
#include <vector>

class QPaintDevice;
class QTextBlock;
class QTextFragment;
class QTextLayout;
class QTextLine;

/// Border along an edge of a cell, which takes its width from the text's room.
struct CellBorder
{
    /// In pixels; 0 if there is none.
    int width = 0;
    QBrush brush;
};

/// Measures of a cell's text.
struct TextExtent
{
    /// Width in pixels that the text would take without any wrapping.
    int width = 0;
    /// Height in pixels of the text as laid out or, if only estimated, without any wrapping.
    int height = 0;
    /// The text had to be wrapped.
    bool isWrapped = false;
    /// `height` is right wherever the text has `width` pixels, and so it is not wrapped.
    bool isSure = false;
};

/// The text of one cell: its lines and what lies where in them.
namespace CellText {

/// The border along the right edge of the cell that holds `block`.
[[nodiscard]] CellBorder rightBorder(const QTextBlock &block);

/// Breaks the text of `block` into the lines of `layout`. `width` is the room that its cell has for
/// text, in pixels.
///
/// The lines are those of Qt's own document layout. `layout` is the block's own or was made for it.
TextExtent layOut(QTextLayout &layout, const QTextBlock &block, qreal width);

/// Height that `line` takes in a cell.
[[nodiscard]] int heightOf(const QTextLine &line);

/// Width in pixels of the widest single character in the text of `block`.
[[nodiscard]] int widestCharacter(const QTextBlock &block);

/// Offset of the character at `point`, which counts from the start of the laid out text.
///
/// An exact hit is -1 where there is no text; otherwise it is the nearest place for a cursor.
[[nodiscard]] int hitTest(const QTextLayout &layout, const QPointF &point,
                          Qt::HitTestAccuracy accuracy);

} // namespace CellText

/// Tells a cell's measures without shaping its text, at a fraction of the cost.
///
/// It adds up the advances of single characters and takes some more, which is an upper bound for
/// plain Latin text. For other text it is a guess only, and `TextExtent::isSure` is false.
class TextEstimator final
{
public:
    /// Measures of the text of `block`, painted on `device`; on the screen, if that is null.
    [[nodiscard]] TextExtent estimate(const QTextBlock &block, QPaintDevice *device);

    /// Forgets all fonts: the document has another default font.
    void clear();

private:
    static constexpr std::size_t LatinCount = 256;

    struct FontMeasures
    {
        QFont font;
        /// Advances of the Latin-1 characters in pixels, negative for those that may surprise.
        std::array<qreal, LatinCount> advances{};
        /// Guess for the advance of all others.
        qreal otherAdvance = 0;
        int lineHeight = 0;
    };

    [[nodiscard]] const FontMeasures &measuresOf(const QFont &font, QPaintDevice *device);
    [[nodiscard]] const FontMeasures &measuresOf(const QTextFragment &fragment,
                                                 QPaintDevice *device);

    std::vector<std::unique_ptr<FontMeasures>> fonts;
    // By the format's index within the document.
    QHash<int, const FontMeasures *> byFormat;
};
