#pragma once

#include <QFont>
#include <QHash>

#include <array>
#include <memory>
#include <vector>

class QPaintDevice;
class QTextBlock;
class QTextFragment;
class QTextLayout;
class QTextLine;

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

/// Breaks the text of `block` into the lines of `layout` for a cell of `width` pixels.
///
/// The lines are those of Qt's own document layout. `layout` is the block's own or was made for it.
TextExtent layOutCell(QTextLayout &layout, const QTextBlock &block, qreal width);

/// Height that `line` takes in a cell.
int heightOf(const QTextLine &line);

/// Tells a cell's measures without shaping its text, at a fraction of the cost.
///
/// It adds up the advances of single characters and takes some more, which is an upper bound for
/// plain Latin text. For other text it is a guess only, and `TextExtent::isSure` is false.
class TextEstimator final
{
public:
    /// Measures of the text of `block`, painted on `device`.
    TextExtent estimate(const QTextBlock &block, QPaintDevice *device);

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

    const FontMeasures &measuresOf(const QFont &font, QPaintDevice *device);
    const FontMeasures &measuresOf(const QTextFragment &fragment, QPaintDevice *device);

    std::vector<std::unique_ptr<FontMeasures>> fonts;
    // By the format's index within the document.
    QHash<int, const FontMeasures *> byFormat;
};
