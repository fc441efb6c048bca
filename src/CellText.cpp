#include "CellText.h"

#include <QFontMetricsF>
#include <QStyle>
#include <QTextBlock>
#include <QTextBoundaryFinder>
#include <QTextDocument>
#include <QTextLayout>
#include <QTextTableCellFormat>

#include <algorithm>
#include <cmath>

namespace {

// Kerning may widen a pair of letters, and some fonts overhang at the end of a line.
constexpr qreal KerningShare = 1.02;
constexpr qreal Overhang = 2;

// Within what a whole number holds, or a text of some hundred million letters would be narrower
// than none.
constexpr qreal Widest = 1e9;

// Formats come and go with each new link; beyond this many the collection starts anew.
constexpr int MaximumFormats = 2000;

// In characters, far more than a line of a cell has room for.
constexpr qsizetype EndlessWord = 2000;

QTextOption optionFor(const QTextBlock &block)
{
    const QTextBlockFormat format = block.blockFormat();
    QTextOption option = block.document()->defaultTextOption();
    const Qt::LayoutDirection direction = block.textDirection();
    const Qt::Alignment alignment = format.hasProperty(QTextFormat::BlockAlignment)
                                            ? format.alignment()
                                            : option.alignment();
    option.setTextDirection(direction);
    option.setAlignment(QStyle::visualAlignment(direction, alignment));
    return option;
}

// A single character may be wider than the cell. The document's own layout then lets it have a line
// to itself, and breaks the rest of the block at words only.
void widenForOneCharacter(QTextLayout &layout, QTextLine &line, QTextOption &option, qreal width)
{
    const bool mayBreakAnywhere = option.wrapMode() == QTextOption::WrapAtWordBoundaryOrAnywhere;
    if (mayBreakAnywhere) {
        option.setWrapMode(QTextOption::WrapAnywhere);
        layout.setTextOption(option);
    }
    line.setLineWidth(std::max(line.naturalTextWidth(), width));
    if (mayBreakAnywhere) {
        option.setWrapMode(QTextOption::WordWrap);
        layout.setTextOption(option);
    }
}

// Whether no line of a sensible length that starts here can end before the next blank.
bool startsEndlessWord(const QString &text, qsizetype start)
{
    if (text.size() - start <= EndlessWord)
        return false;
    QTextBoundaryFinder finder(QTextBoundaryFinder::Line, text.constData() + start, EndlessWord);
    return finder.toNextBoundary() == EndlessWord;
}

// Qt looks at the rest of a word before it breaks a line within that word, so that the time for a
// word grows with the square of its length. To let it break anywhere gives the same line at once.
void setWidth(QTextLayout &layout, QTextLine &line, QTextOption &option, const QString &text,
              qreal width)
{
    const bool breaksAnywhere = option.wrapMode() == QTextOption::WrapAtWordBoundaryOrAnywhere
                                && startsEndlessWord(text, line.textStart());
    if (!breaksAnywhere) {
        line.setLineWidth(width);
        return;
    }
    option.setWrapMode(QTextOption::WrapAnywhere);
    layout.setTextOption(option);
    line.setLineWidth(width);
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    layout.setTextOption(option);
}

} // namespace

int CellText::heightOf(const QTextLine &line)
{
    return static_cast<int>(std::ceil(line.ascent() + line.descent() + line.leading()));
}

TextExtent CellText::layOut(QTextLayout &layout, const QTextBlock &block, qreal width)
{
    QTextOption option = optionFor(block);
    layout.setTextOption(option);
    TextExtent extent;
    qreal paragraphWidth = 0;
    qreal widest = 0;
    const QString text = block.text();
    layout.beginLayout();
    for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
        line.setLeadingIncluded(true);
        setWidth(layout, line, option, text, width);
        if (line.naturalTextWidth() > width)
            widenForOneCharacter(layout, line, option, width);
        line.setPosition(QPointF(0, extent.height));
        extent.height += heightOf(line);

        paragraphWidth += line.naturalTextWidth();
        widest = std::max(widest, paragraphWidth);
        const qsizetype end = line.textStart() + line.textLength();
        if (end > 0 && end <= text.size() && text.at(end - 1) == QChar::LineSeparator)
            paragraphWidth = 0;
        else if (end < text.size())
            extent.isWrapped = true;
    }
    layout.endLayout();
    extent.width = static_cast<int>(std::min(std::ceil(widest), Widest));
    extent.isSure = !extent.isWrapped;
    return extent;
}

int CellText::widestCharacter(const QTextBlock &block)
{
    // A layout in less room than that would claim more.
    constexpr qreal Unlimited = 1e6;
    QTextLayout layout(block);
    layOut(layout, block, Unlimited);
    return static_cast<int>(std::ceil(layout.minimumWidth()));
}

int CellText::hitTest(const QTextLayout &layout, const QPointF &point, Qt::HitTestAccuracy accuracy)
{
    const bool isExact = accuracy == Qt::ExactHit;
    int offset = 0;
    for (int i = 0; i < layout.lineCount() && point.y() >= 0; ++i) {
        const QTextLine line = layout.lineAt(i);
        const QRectF area = line.naturalTextRect();
        if (area.bottom() <= point.y()) {
            offset = line.textStart() + line.textLength();
            continue;
        }
        if (area.top() > point.y())
            break;
        if (isExact && (point.x() < area.left() || point.x() > area.right()))
            return -1;
        // A link is hit on the whole of a letter, while a cursor goes to its nearer side.
        return line.xToCursor(point.x(), isExact ? QTextLine::CursorOnCharacter
                                                 : QTextLine::CursorBetweenCharacters);
    }
    return isExact ? -1 : offset;
}

CellBorder CellText::rightBorder(const QTextBlock &block)
{
    const QTextTableCellFormat format = block.charFormat().toTableCellFormat();
    if (format.rightBorderStyle() == QTextFrameFormat::BorderStyle_None)
        return {};
    return {static_cast<int>(format.rightBorder()), format.rightBorderBrush()};
}

TextExtent TextEstimator::estimate(const QTextBlock &block, QPaintDevice *device)
{
    TextExtent extent{.isSure = true};
    qreal width = 0;
    for (auto run = block.begin(); !run.atEnd(); ++run) {
        const QTextFragment fragment = run.fragment();
        const FontMeasures &measures = measuresOf(fragment, device);
        const QString text = fragment.text();
        for (const QChar character : text) {
            const std::size_t code = character.unicode();
            const qreal advance = code < LatinCount ? measures.advances[code] : -1;
            extent.isSure = extent.isSure && advance >= 0;
            width += advance >= 0 ? advance : measures.otherAdvance;
        }
        if (extent.height > 0 && extent.height != measures.lineHeight)
            extent.isSure = false;
        extent.height = std::max(extent.height, measures.lineHeight);
    }
    if (extent.height == 0)
        extent.height = measuresOf(block.charFormat().font(), device).lineHeight;
    if (width > 0)
        extent.width =
                static_cast<int>(std::min(std::ceil(width * KerningShare + Overhang), Widest));
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
    // Lines under a text change nothing about its measures.
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
        // Control characters may have no glyph, and a soft hyphen shows at the end of a line only.
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
