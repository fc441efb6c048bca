#pragma once

#include "CellText.h"

#include <QFont>
#include <QHash>

#include <array>
#include <memory>
#include <vector>

class QPaintDevice;
class QTextFragment;

/// Estimates a cell's measures without shaping its text, at a fraction of the cost.
///
/// The width is the sum of the advances of single characters plus a margin. For plain Latin text it
/// is an upper bound. For other text it is only a guess, and `TextExtent::isReliable` is false.
class TextEstimator final
{
public:
    /// Returns the measures of the text of `block` on `device`; on the screen if that is null.
    [[nodiscard]] TextExtent estimate(const QTextBlock &block, QPaintDevice *device);

    /// Forgets all fonts. Must be called when the document's default font changes.
    void clear();

private:
    static constexpr std::size_t LatinCount = 256;

    struct FontMeasures
    {
        QFont font;
        // Advances of the Latin-1 characters in pixels; -1 for those without a reliable one.
        std::array<qreal, LatinCount> advances{};
        // Guess for the advance of all other characters.
        qreal otherAdvance = 0;
        int lineHeight = 0;
    };

    [[nodiscard]] const FontMeasures &measuresOf(const QFont &font, QPaintDevice *device);
    [[nodiscard]] const FontMeasures &measuresOf(const QTextFragment &fragment,
                                                 QPaintDevice *device);

    std::vector<std::unique_ptr<FontMeasures>> fonts;
    // By the index of the format in the document.
    QHash<int, const FontMeasures *> byFormat;
};
