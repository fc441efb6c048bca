#include "TextEstimator.h"

#include <QFontMetricsF>
#include <QTextBlock>
#include <QTextLayout>

#include <algorithm>
#include <cmath>

namespace {

// Kerning can widen a pair of letters, and in some fonts the last glyph of a line overhangs.
constexpr qreal KerningFactor = 1.02;
constexpr qreal Overhang = 2;

// Each new link target adds a format. Beyond this many, the cache is cleared.
constexpr int MaximumFormats = 2000;

} // namespace

TextExtent TextEstimator::estimate(const QTextBlock &block, QPaintDevice *device)
{
    TextExtent extent{.isReliable = true};
    qreal width = 0;
    for (auto run = block.begin(); !run.atEnd(); ++run) {
        const QTextFragment fragment = run.fragment();
        const FontMeasures &measures = measuresOf(fragment, device);
        const QString text = fragment.text();
        for (const QChar character : text) {
            const std::size_t code = character.unicode();
            const qreal advance = code < LatinCount ? measures.advances[code] : -1;
            extent.isReliable = extent.isReliable && advance >= 0;
            width += advance >= 0 ? advance : measures.otherAdvance;
        }
        if (extent.height > 0 && extent.height != measures.lineHeight)
            extent.isReliable = false;
        extent.height = std::max(extent.height, measures.lineHeight);
    }
    if (extent.height == 0)
        extent.height = measuresOf(block.charFormat().font(), device).lineHeight;
    if (width > 0)
        extent.width = static_cast<int>(
                std::min(std::ceil(width * KerningFactor + Overhang), CellText::MaximumWidth));
    return extent;
}

void TextEstimator::clear()
{
    byFormat.clear();
    fonts.clear();
}

const TextEstimator::FontMeasures &TextEstimator::measuresOf(const QTextFragment &fragment,
                                                             QPaintDevice *device)
{
    const int format = fragment.charFormatIndex();
    const auto known = byFormat.constFind(format);
    if (known != byFormat.constEnd())
        return *known.value();
    QFont font = fragment.charFormat().font();
    // Underlines do not change the measures.
    font.setUnderline(false);
    const FontMeasures &measures = measuresOf(font, device);
    if (byFormat.size() >= MaximumFormats)
        byFormat.clear();
    byFormat.insert(format, &measures);
    return measures;
}

const TextEstimator::FontMeasures &TextEstimator::measuresOf(const QFont &font,
                                                             QPaintDevice *device)
{
    const auto known = std::find_if(fonts.cbegin(), fonts.cend(), [&font](const auto &measures) {
        return measures->font == font;
    });
    if (known != fonts.cend())
        return **known;

    auto measures = std::make_unique<FontMeasures>();
    measures->font = font;
    const QFontMetricsF metrics = device ? QFontMetricsF(font, device) : QFontMetricsF(font);
    measures->advances.fill(-1);
    for (char16_t code = 0x20; code < LatinCount; ++code) {
        // Control characters may have no glyph, and a soft hyphen has a width only at a line's end.
        const QChar character(code);
        if (character.isPrint() && metrics.inFont(character))
            measures->advances[code] = metrics.horizontalAdvance(character);
    }
    measures->otherAdvance = metrics.horizontalAdvance(u'W');

    QTextLayout sample(QStringLiteral("x"), font, device);
    sample.beginLayout();
    QTextLine line = sample.createLine();
    line.setLeadingIncluded(true);
    line.setLineWidth(1000);
    sample.endLayout();
    measures->lineHeight = CellText::heightOf(line);
    fonts.push_back(std::move(measures));
    return *fonts.back();
}
