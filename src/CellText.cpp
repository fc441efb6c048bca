#include "CellText.h"

#include <QStyle>
#include <QTextBlock>
#include <QTextBoundaryFinder>
#include <QTextDocument>
#include <QTextLayout>
#include <QTextTableCellFormat>

#include <algorithm>
#include <cmath>

namespace {

// In characters, far more than fit into a line of a cell.
constexpr qsizetype LongWordLength = 2000;

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

// Handles a single character that is wider than the cell. Like Qt's own layout, gives it a line of
// its own and breaks the rest of the block only between words.
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

// Returns true if the text from `start` on has no line break opportunity within LongWordLength.
bool startsLongWord(const QString &text, qsizetype start)
{
    if (text.size() - start <= LongWordLength)
        return false;
    QTextBoundaryFinder finder(QTextBoundaryFinder::Line, text.constData() + start, LongWordLength);
    return finder.toNextBoundary() == LongWordLength;
}

// Avoids quadratic time for a long word: Qt examines the rest of a word for each line break within
// it. WrapAnywhere breaks such a line at the same place without that.
void setLineWidth(QTextLayout &layout, QTextLine &line, QTextOption &option, const QString &text,
                  qreal width)
{
    const bool breaksAnywhere = option.wrapMode() == QTextOption::WrapAtWordBoundaryOrAnywhere
                                && startsLongWord(text, line.textStart());
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
        setLineWidth(layout, line, option, text, width);
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
    extent.width = static_cast<int>(std::min(std::ceil(widest), MaximumWidth));
    extent.isReliable = !extent.isWrapped;
    return extent;
}

int CellText::widestCharacter(const QTextBlock &block)
{
    // After a narrow layout QTextLayout::minimumWidth() can be larger.
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
        // A link is hit on all of a character, while a cursor goes to its nearer side.
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
