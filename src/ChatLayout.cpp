#include "ChatLayout.h"

#include <QPainter>
#include <QTextDocument>
#include <QTextFrame>
#include <QTimerEvent>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

namespace {

// Rows whose shaped text is kept: some screens full.
constexpr int CachedRows = 300;

using Selection = QAbstractTextDocumentLayout::Selection;

// Cells that a selection covers as a rectangle; null if it is one within a single cell or reaches
// beyond the table, and so goes by positions.
QRect selectedCells(const Selection &selection)
{
    int row = -1;
    int rowCount = -1;
    int column = -1;
    int columnCount = -1;
    selection.cursor.selectedTableCells(&row, &rowCount, &column, &columnCount);
    return row < 0 ? QRect() : QRect(column, row, columnCount, rowCount);
}

// The part of `block` that `selection` covers, as the text layout wants it.
QTextLayout::FormatRange selectedRange(const Selection &selection, const QRect &area,
                                       const QTextBlock &block, QPoint cell)
{
    QTextLayout::FormatRange range{.start = 0, .length = 0, .format = selection.format};
    // It would paint from the text to the end of the cell.
    range.format.clearProperty(QTextFormat::FullWidthSelection);
    if (!area.isNull()) {
        if (area.contains(cell))
            range.length = std::max(block.length() - 1, 1);
        return range;
    }
    const int start = selection.cursor.selectionStart() - block.position();
    const int end = selection.cursor.selectionEnd() - block.position();
    if (start < block.length() && end > 0 && end > start) {
        range.start = start;
        range.length = end - start;
    }
    return range;
}

struct Border
{
    int width = 0;
    QBrush brush;
};

Border rightBorder(const QTextBlock &block)
{
    const QTextTableCellFormat format = block.charFormat().toTableCellFormat();
    if (format.rightBorderStyle() == QTextFrameFormat::BorderStyle_None)
        return {};
    return {static_cast<int>(format.rightBorder()), format.rightBorderBrush()};
}

bool isSameOption(const QTextOption &one, const QTextOption &other)
{
    return one.alignment() == other.alignment() && one.flags() == other.flags()
           && one.textDirection() == other.textDirection() && one.wrapMode() == other.wrapMode();
}

// Width of the widest single character. A layout in less room than that claims more.
int minimumWidth(const QTextBlock &block)
{
    constexpr qreal Unlimited = 1e6;
    QTextLayout layout(block);
    layOutCell(layout, block, Unlimited);
    return static_cast<int>(std::ceil(layout.minimumWidth()));
}

// Positions within layouts are whole 64ths of a pixel.
qreal truncated(qreal value)
{
    return std::trunc(value * 64) / 64;
}

// Offset of the character at `point`, or -1 if `accuracy` asks for more than is there.
int hitText(const QTextLayout &layout, const QPointF &point, Qt::HitTestAccuracy accuracy)
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

} // namespace

ChatLayout::ChatLayout(QTextDocument *document)
    : QAbstractTextDocumentLayout(document)
    , cache(CachedRows)
{
}

ChatLayout::~ChatLayout() = default;

int ChatLayout::margin() const
{
    return static_cast<int>(document()->documentMargin());
}

int ChatLayout::columnStart(int column) const
{
    return std::accumulate(columnWidths.begin(), columnWidths.begin() + column, margin());
}

int ChatLayout::roomFor(int column, int border) const
{
    return columnWidths[static_cast<std::size_t>(column)] - 2 * padding - border;
}

int ChatLayout::tableWidth() const
{
    return columnStart(columnCount()) - margin();
}

QTextBlock ChatLayout::blockAt(int row, int column) const
{
    return document()->findBlockByNumber(1 + row * columnCount() + column);
}

int ChatLayout::rowOf(const QTextBlock &block) const
{
    return (block.blockNumber() - 1) / columnCount();
}

int ChatLayout::rowAt(int y) const
{
    return heights.rowAbove(y - margin() + 1);
}

int ChatLayout::rowTop(int row) const
{
    return margin() + heights.top(row);
}

int ChatLayout::pageCount() const
{
    return 1;
}

QSizeF ChatLayout::documentSize() const
{
    if (!table) {
        const QRectF line = lentLayout(document()->firstBlock(), 0).boundingRect();
        return {qreal(pageWidth), line.height() + 2 * margin()};
    }
    return {qreal(std::max(pageWidth, tableWidth() + 2 * margin())),
            qreal(heights.total() + 2 * margin())};
}

QRectF ChatLayout::frameBoundingRect(QTextFrame *frame) const
{
    if (frame != table)
        return {QPointF(), documentSize()};
    // Qt's layout counts the first cell's padding in.
    return QRectF(margin() + padding, margin() + padding, tableWidth(), heights.total());
}

QRectF ChatLayout::blockBoundingRect(const QTextBlock &block) const
{
    if (!block.isValid())
        return {};
    const int number = block.blockNumber();
    if (table && number > 0 && rowOf(block) < rowCount()) {
        const int column = (number - 1) % columnCount();
        const int room = roomFor(column, rightBorder(block).width);
        QRectF rect = lentLayout(block, room).boundingRect();
        rect.moveTopLeft(QPointF(columnStart(column) + padding, rowTop(rowOf(block)) + padding));
        return rect;
    }
    QRectF rect = lentLayout(block, std::max(pageWidth - 2 * margin(), 0)).boundingRect();
    if (number == 0)
        return {QPointF(margin(), margin()), documentSize() - QSizeF(margin(), margin())};
    rect.moveTopLeft(QPointF(columnStart(columnCount()), rowTop(rowCount()) - rect.height()));
    return rect;
}

const QTextLayout &ChatLayout::lentLayout(const QTextBlock &block, int room) const
{
    QTextLayout &layout = *block.layout();
    if (layout.lineCount() == 0) {
        layOutCell(layout, block, room);
        lentLayouts.insert(block.blockNumber());
    }
    return layout;
}

void ChatLayout::setShownHeight(int height)
{
    shownHeight = height;
    if (height == 0)
        cache.clear();
}

void ChatLayout::documentChanged(int from, int charsRemoved, int charsAdded)
{
    if (!table)
        startOver();
    // Qt reports a change of the page, the font or the options as the whole document's insertion.
    const bool isWhole =
            from == 0 && charsRemoved == 0 && charsAdded == document()->characterCount();
    if (isWhole)
        takeSettings();
    const int count = table ? (document()->blockCount() - 2) / columnCount() : 0;
    if (count < rowCount())
        startOver();
    if (!isWhole) {
        // A separator that was added at the end of a block starts the next one.
        const QTextBlock first = document()->findBlock(from);
        const bool isInNext = count > rowCount() && from == first.position() + first.length() - 1;
        forget(isInNext ? first.next() : first, from + charsAdded);
    }
    addRows(count - rowCount());
    announceSize();
}

// Called for a document whose table was made or is gone, and for one that has lost rows.
void ChatLayout::startOver()
{
    clearLentLayouts();
    cache.clear();
    rows.clear();
    heights.assign({});
    estimates = 0;
    newestEstimate = -1;
    table = nullptr;
    for (QTextFrame *frame : document()->rootFrame()->childFrames())
        table = qobject_cast<QTextTable *>(frame);
    if (!table)
        return;
    const QTextTableFormat format = table->format();
    padding = static_cast<int>(format.cellPadding());
    columnMinima.assign(static_cast<std::size_t>(format.columnWidthConstraints().size()),
                        2 * padding);
    updateColumns();
}

void ChatLayout::updateColumns()
{
    areColumnsStale = false;
    columnWidths = columnMinima;
    const QList<QTextLength> constraints = table->format().columnWidthConstraints();
    int rest = pageWidth - 2 * margin();
    for (std::size_t column = 0; column + 1 < columnWidths.size(); ++column) {
        const QTextLength &constraint = constraints.at(static_cast<qsizetype>(column));
        columnWidths[column] =
                std::max(columnWidths[column], static_cast<int>(constraint.rawValue()));
        rest -= columnWidths[column];
    }
    columnWidths.back() = std::max(columnWidths.back(), rest);
}

void ChatLayout::takeSettings()
{
    const int width = std::max(static_cast<int>(document()->pageSize().width()), 0);
    const bool isWidthNew = width != pageWidth;
    const bool isTextNew = font != document()->defaultFont()
                           || !isSameOption(option, document()->defaultTextOption());
    // A view tells its font anew on many occasions, also when it stays the same.
    if (!isWidthNew && !isTextNew)
        return;
    pageWidth = width;
    font = document()->defaultFont();
    option = document()->defaultTextOption();
    if (isTextNew) {
        // Heights stay as they are until the rows are looked at again.
        estimator.clear();
        for (Row &row : rows)
            row.isSideSure = row.text.isSure = false;
    }
    reflow();
}

void ChatLayout::reflow()
{
    clearLentLayouts();
    cache.clear();
    if (table) {
        const std::vector<int> before = columnWidths;
        updateColumns();
        if (!std::equal(before.begin(), before.end() - 1, columnWidths.begin())) {
            for (Row &row : rows)
                row.isSideSure = false;
        }
    }
    std::vector<int> newHeights;
    newHeights.reserve(rows.size());
    estimates = 0;
    for (Row &row : rows) {
        row.isExact = fits(row);
        estimates += row.isExact ? 0 : 1;
        newHeights.push_back(estimatedHeight(row));
    }
    newestEstimate = static_cast<int>(rows.size()) - 1;
    heights.assign(std::move(newHeights));
    announceSize();
    emit update();
}

void ChatLayout::addRows(int count)
{
    const int first = rowCount();
    for (int row = first; row < first + count; ++row) {
        rows.emplace_back();
        heights.append(0);
        ++estimates;
        estimate(row);
    }
    const int end = rowCount();
    for (int row = end - 1; row >= first && heights.top(end) - heights.top(row + 1) < shownHeight;
         --row)
        cellsOf(row);
    if (count > 0) {
        emit update(QRectF(0, rowTop(first), documentSize().width(),
                           heights.top(end) - heights.top(first)));
    }
}

void ChatLayout::forget(QTextBlock block, int end)
{
    bool isRowForgotten = false;
    for (; block.isValid() && block.position() <= end; block = block.next()) {
        const int row = rowOf(block);
        if (block.blockNumber() == 0)
            continue;
        if (row >= rowCount())
            break;
        block.clearLayout();
        cache.remove(row);
        estimate(row);
        isRowForgotten = true;
    }
    if (isRowForgotten)
        emit update();
}

void ChatLayout::estimate(int row)
{
    Row &data = rowData(row);
    data.sideHeight = 0;
    data.isSideSure = true;
    QTextBlock block = blockAt(row, 0);
    for (int column = 0; column + 1 < columnCount(); ++column, block = block.next()) {
        const TextExtent side = estimator.estimate(block, paintDevice());
        data.sideHeight = std::max(data.sideHeight, side.height);
        if (!side.isSure || side.width > roomFor(column, rightBorder(block).width))
            data.isSideSure = false;
    }
    data.text = estimator.estimate(block, paintDevice());
    setHeight(row, estimatedHeight(data), fits(data));
}

bool ChatLayout::fits(const Row &row) const
{
    return row.isSideSure && row.text.isSure && row.text.width <= roomFor(columnCount() - 1, 0);
}

int ChatLayout::estimatedHeight(const Row &row) const
{
    const int room = std::max(roomFor(columnCount() - 1, 0), 1);
    const int lines = std::max((row.text.width + room - 1) / room, 1);
    return std::max(row.text.height * lines, row.sideHeight) + 2 * padding;
}

void ChatLayout::setHeight(int row, int height, bool isExact)
{
    bool &wasExact = rowData(row).isExact;
    estimates += (wasExact ? 1 : 0) - (isExact ? 1 : 0);
    wasExact = isExact;
    if (!isExact)
        newestEstimate = std::max(newestEstimate, row);
    if (height != heights.height(row))
        heights.set(row, height);
}

ChatLayout::Cells ChatLayout::layOut(int row) const
{
    Cells cells;
    QTextBlock block = blockAt(row, 0);
    for (int column = 0; column < columnCount(); ++column, block = block.next()) {
        const Border border = rightBorder(block);
        Cell cell{.block = block,
                  .layout = std::make_unique<QTextLayout>(block),
                  .extent = {},
                  .border = border.width,
                  .borderBrush = border.brush};
        // Otherwise the text would be shaped anew at each painting.
        cell.layout->setCacheEnabled(true);
        cell.extent = layOutCell(*cell.layout, block, roomFor(column, border.width));
        cells.push_back(std::move(cell));
    }
    return cells;
}

void ChatLayout::take(int row, const Cells &cells)
{
    Row &data = rowData(row);
    data.sideHeight = 0;
    data.isSideSure = true;
    for (std::size_t column = 0; column < cells.size(); ++column) {
        const Cell &cell = cells[column];
        if (column + 1 < cells.size())
            data.sideHeight = std::max(data.sideHeight, cell.extent.height);
        if (cell.layout->minimumWidth() > roomFor(static_cast<int>(column), cell.border)) {
            columnMinima[column] = std::max(columnMinima[column],
                                            minimumWidth(cell.block) + 2 * padding + cell.border);
            areColumnsStale = areColumnsStale || columnMinima[column] > columnWidths[column];
        }
    }
    const Cell &text = cells.back();
    if (text.extent.isSure)
        data.text = text.extent;
    else if (!data.text.isSure)
        data.text = {.width = text.extent.width, .height = heightOf(text.layout->lineAt(0))};
    setHeight(row, std::max(data.sideHeight, text.extent.height) + 2 * padding, true);
}

const ChatLayout::Cells &ChatLayout::cellsOf(int row)
{
    if (const Cells *known = cache.object(row))
        return *known;
    auto cells = std::make_unique<Cells>(layOut(row));
    take(row, *cells);
    const Cells &result = *cells;
    cache.insert(row, cells.release());
    return result;
}

bool ChatLayout::measureRows(qreal top, qreal bottom)
{
    bool isChanged = false;
    for (int row = rowAt(static_cast<int>(top)); row < rowCount() && rowTop(row) < bottom; ++row) {
        if (rowData(row).isExact)
            continue;
        const int before = heights.height(row);
        cellsOf(row);
        isChanged = isChanged || heights.height(row) != before;
    }
    return isChanged;
}

bool ChatLayout::measure(int top, int bottom)
{
    const bool isChanged = measureRows(top, bottom);
    if (areColumnsStale) {
        reflow();
        return true;
    }
    announceSize();
    return isChanged;
}

void ChatLayout::measureSome(QDeadlineTimer deadline)
{
    for (; estimates > 0 && newestEstimate >= 0 && !deadline.hasExpired(); --newestEstimate) {
        const int row = newestEstimate;
        if (rowData(row).isExact)
            continue;
        // Much cheaper, and enough where it is only the font that has changed.
        estimate(row);
        if (!rowData(row).isExact)
            take(row, layOut(row));
    }
    if (areColumnsStale)
        reflow();
    announceSize();
}

void ChatLayout::announceSize()
{
    const QSizeF size = documentSize();
    if (size == announcedSize)
        return;
    announcedSize = size;
    emit documentSizeChanged(size);
}

void ChatLayout::timerEvent(QTimerEvent *event)
{
    if (event->timerId() != repairTimer.timerId()) {
        QAbstractTextDocumentLayout::timerEvent(event);
        return;
    }
    repairTimer.stop();
    if (areColumnsStale)
        reflow();
    announceSize();
    emit update();
}

void ChatLayout::clearLentLayouts()
{
    for (const int number : std::as_const(lentLayouts))
        document()->findBlockByNumber(number).clearLayout();
    lentLayouts.clear();
    // Its number grows with the table.
    document()->lastBlock().clearLayout();
}

void ChatLayout::draw(QPainter *painter, const PaintContext &context)
{
    if (!table)
        return;
    if (context.clip.isValid())
        measureRows(context.clip.top(), context.clip.bottom());
    else
        measureRows(0, std::numeric_limits<qreal>::max());
    const QSizeF size = documentSize();
    const QRectF bounds(margin(), 0, size.width() - 2 * margin(), size.height());
    PaintContext clipped = context;
    clipped.clip = context.clip.isValid() ? context.clip & bounds : bounds;
    QList<QRect> areas;
    for (const Selection &selection : context.selections)
        areas << (selection.cursor.currentTable() == table ? selectedCells(selection) : QRect());

    const QPen pen = painter->pen();
    drawFirstBlock(*painter, clipped);
    const int first = rowAt(static_cast<int>(clipped.clip.top()));
    for (int row = first; row < rowCount() && rowTop(row) < clipped.clip.bottom(); ++row)
        drawRow(*painter, clipped, row, areas);
    painter->setPen(pen);
    // Scroll bars must not move while something is painted.
    if (areColumnsStale || documentSize() != announcedSize)
        repairTimer.start(0, this);
}

// The empty block above the table takes no room, yet a selection of it shows.
void ChatLayout::drawFirstBlock(QPainter &painter, const PaintContext &context) const
{
    const QTextBlock block = document()->firstBlock();
    QList<QTextLayout::FormatRange> ranges;
    for (const Selection &selection : context.selections) {
        const QTextLayout::FormatRange range = selectedRange(selection, QRect(), block, QPoint());
        if (range.length > 0)
            ranges << range;
    }
    if (ranges.isEmpty())
        return;
    const QTextLayout &layout = lentLayout(block, std::max(pageWidth - 2 * margin(), 0));
    painter.setPen(context.palette.color(QPalette::Text));
    layout.draw(&painter, QPointF(margin(), margin()), ranges, context.clip);
}

void ChatLayout::drawRow(QPainter &painter, const PaintContext &context, int row,
                         const QList<QRect> &areas)
{
    const Cells &cells = cellsOf(row);
    const int top = rowTop(row);
    for (int column = 0; column < columnCount(); ++column) {
        const Cell &cell = cells[static_cast<std::size_t>(column)];
        if (cell.border > 0) {
            painter.save();
            painter.setPen(Qt::NoPen);
            painter.setBrush(cell.borderBrush);
            // At a scale that is no whole number the rule's edges fall between pixels.
            painter.setRenderHint(QPainter::Antialiasing);
            painter.drawRect(QRectF(columnStart(column + 1) - cell.border, top, cell.border,
                                    heights.height(row)));
            painter.restore();
        }
        QList<QTextLayout::FormatRange> ranges;
        for (qsizetype i = 0; i < areas.size(); ++i) {
            const QTextLayout::FormatRange range = selectedRange(
                    context.selections.at(i), areas.at(i), cell.block, QPoint(column, row));
            if (range.length > 0)
                ranges << range;
        }
        painter.setPen(context.palette.color(QPalette::Text));
        cell.layout->draw(&painter, QPointF(columnStart(column) + padding, top + padding), ranges,
                          context.clip);
    }
}

int ChatLayout::hitTest(const QPointF &point, Qt::HitTestAccuracy accuracy) const
{
    if (!table)
        return accuracy == Qt::ExactHit ? -1 : 0;
    const QPointF inTable(truncated(point.x()) - margin(), truncated(point.y()) - margin());
    const QRectF bounds(0, 0, tableWidth(), heights.total());
    // The far edges belong to the table as well.
    if (inTable.x() >= 0 && inTable.y() >= 0 && inTable.x() <= bounds.right()
        && inTable.y() <= bounds.bottom())
        return hitTable(inTable, accuracy);
    if (accuracy == Qt::ExactHit)
        return -1;
    // The block below the table hides beside its last line, all across the document.
    const QTextBlock last = document()->lastBlock();
    const bool isBeforeTable = inTable.x() < 0 || inTable.y() < 0;
    return isBeforeTable && inTable.y() < blockBoundingRect(last).top() - margin()
                   ? 0
                   : last.position();
}

int ChatLayout::hitTable(const QPointF &point, Qt::HitTestAccuracy accuracy) const
{
    const int row = heights.rowAbove(point.y());
    int column = columnCount() - 1;
    while (column > 0 && columnStart(column) - margin() >= point.x())
        --column;
    Cells fresh;
    const Cells *cells = cache.object(row);
    if (!cells) {
        fresh = layOut(row);
        cells = &fresh;
    }
    const Cell &cell = (*cells)[static_cast<std::size_t>(column)];
    const QPointF inCell(point.x() - columnStart(column) + margin() - padding,
                         point.y() - heights.top(row) - padding);
    const int offset = hitText(*cell.layout, inCell, accuracy);
    return offset < 0 ? -1 : cell.block.position() + std::min(offset, cell.block.length() - 1);
}
