#include "ChatLayout.h"

#include "CellSelections.h"

#include <QPainter>
#include <QTextDocument>
#include <QTextFrame>
#include <QTimerEvent>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

// Rows whose shaped text is kept: some screens full.
constexpr int CachedRows = 300;

// From here on, ending a change takes longer than anything else that a new line needs.
constexpr int RowsOfLongConversation = 1000;

// In a window without room for a letter a long text would need more pixels than there are numbers.
constexpr qint64 HighestEstimate = 1'000'000;

bool isSameOption(const QTextOption &one, const QTextOption &other)
{
    return one.alignment() == other.alignment() && one.flags() == other.flags()
           && one.textDirection() == other.textDirection() && one.wrapMode() == other.wrapMode();
}

// Positions within layouts are whole 64ths of a pixel.
qreal truncated(qreal value)
{
    return std::trunc(value * 64) / 64;
}

} // namespace

ChatLayout::ChatLayout(QTextDocument *document)
    : QAbstractTextDocumentLayout(document)
    , cache(CachedRows)
    , openChange(*document)
{
}

ChatLayout::~ChatLayout() = default;

QTextBlock ChatLayout::cellBlock(int row, int column) const
{
    return document()->findBlockByNumber(1 + row * columns.count() + column);
}

int ChatLayout::rowOf(const QTextBlock &block) const
{
    return (block.blockNumber() - 1) / columns.count();
}

QPointF ChatLayout::textOrigin(int row, int column) const
{
    return {qreal(margin() + columns.start(column) + columns.cellPadding()),
            qreal(rowTop(row) + columns.cellPadding())};
}

int ChatLayout::rowAt(int y) const
{
    return heights.rowAbove(y - margin() + 1);
}

QSizeF ChatLayout::documentSize() const
{
    if (!table) {
        const QRectF line = lentLayout(document()->firstBlock(), 0).boundingRect();
        return {qreal(pageWidth), line.height() + 2 * margin()};
    }
    return {qreal(std::max(pageWidth, columns.width() + 2 * margin())),
            qreal(heights.total() + 2 * margin())};
}

QRectF ChatLayout::frameBoundingRect(QTextFrame *frame) const
{
    if (frame != table)
        return {QPointF(), documentSize()};
    // Qt's layout counts the first cell's padding in.
    return QRectF(margin() + columns.cellPadding(), margin() + columns.cellPadding(),
                  columns.width(), heights.total());
}

QRectF ChatLayout::blockBoundingRect(const QTextBlock &block) const
{
    if (!block.isValid())
        return {};
    const int number = block.blockNumber();
    if (table && number > 0 && rowOf(block) < rowCount()) {
        const int column = (number - 1) % columns.count();
        const int room = columns.room(column, CellText::rightBorder(block).width);
        QRectF rect = lentLayout(block, room).boundingRect();
        rect.moveTopLeft(textOrigin(rowOf(block), column));
        return rect;
    }
    QRectF rect = lentLayout(block, contentWidth()).boundingRect();
    if (number == 0)
        return {QPointF(margin(), margin()), documentSize() - QSizeF(margin(), margin())};
    rect.moveTopLeft(QPointF(margin() + columns.width(), rowTop(rowCount()) - rect.height()));
    return rect;
}

const QTextLayout &ChatLayout::lentLayout(const QTextBlock &block, int room) const
{
    QTextLayout &layout = *block.layout();
    if (layout.lineCount() == 0) {
        CellText::layOut(layout, block, room);
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

void ChatLayout::beginRows()
{
    if (rowCount() < RowsOfLongConversation || openChange.isOpen())
        return;
    openChange.begin(table->lastPosition());
}

void ChatLayout::endRows()
{
    // Otherwise Qt has told of them.
    if (!openChange.isOpen())
        return;
    addRows(rowsInDocument() - rowCount());
    announceSize();
}

int ChatLayout::rowsInDocument() const
{
    return table ? (document()->blockCount() - 2) / columns.count() : 0;
}

void ChatLayout::documentChanged(int from, int charsRemoved, int charsAdded)
{
    // The end of a change whose rows are known already.
    if (openChange.covers(from))
        return;
    if (!table)
        startOver();
    // Qt reports a change of the page, the font or the options as the whole document's insertion.
    const bool isWhole =
            from == 0 && charsRemoved == 0 && charsAdded == document()->characterCount();
    if (isWhole)
        takeSettings();
    const int count = rowsInDocument();
    if (count < rowCount())
        startOver();
    if (!isWhole && table) {
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
    columns = TableColumns(table->format());
    columns.fit(contentWidth());
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
    areColumnsStale = false;
    if (table && columns.fit(contentWidth())) {
        for (Row &row : rows)
            row.isSideSure = false;
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
    measureEnd(0);
    announceSize();
    emit update();
}

// Lays out the end of the conversation as far as it is on show, but no row above `first`. Only then
// is it sure whether the whole of it fits the view: with estimates in place of these rows the
// scroll bar could come, change the width and thereby the estimates, go, and so on without an end.
void ChatLayout::measureEnd(int first)
{
    const int end = rowCount();
    for (int row = end - 1; row >= first && heights.top(end) - heights.top(row + 1) < shownHeight;
         --row)
        cellsOf(row);
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
    measureEnd(first);
    if (count > 0) {
        emit update(QRectF(0, rowTop(first), documentSize().width(),
                           rowTop(rowCount()) - rowTop(first)));
        emit rowsAdded(first, count);
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
    QTextBlock block = cellBlock(row, 0);
    for (int column = 0; column + 1 < columns.count(); ++column, block = block.next()) {
        const TextExtent side = estimator.estimate(block, paintDevice());
        data.sideHeight = std::max(data.sideHeight, side.height);
        if (!side.isSure || side.width > columns.room(column, CellText::rightBorder(block).width))
            data.isSideSure = false;
    }
    data.text = estimator.estimate(block, paintDevice());
    setHeight(row, estimatedHeight(data), fits(data));
}

bool ChatLayout::fits(const Row &row) const
{
    return row.isSideSure && row.text.isSure && row.text.width <= columns.room(columns.last());
}

int ChatLayout::estimatedHeight(const Row &row) const
{
    // Before the first show there is no width at which anything would wrap.
    const int room = pageWidth > 0 ? std::max(columns.room(columns.last()), 1) : row.text.width;
    const int lines = row.text.width > room ? (row.text.width - 1) / room + 1 : 1;
    const qint64 height = std::min(qint64(row.text.height) * lines, HighestEstimate);
    return std::max(static_cast<int>(height), row.sideHeight) + 2 * columns.cellPadding();
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

ChatLayout::Cells ChatLayout::layOut(int row, int firstColumn) const
{
    Cells cells;
    QTextBlock block = cellBlock(row, firstColumn);
    for (int column = firstColumn; column < columns.count(); ++column, block = block.next()) {
        const CellBorder border = CellText::rightBorder(block);
        Cell cell{.block = block,
                  .layout = std::make_unique<QTextLayout>(block),
                  .extent = {},
                  .border = border};
        // Otherwise the text would be shaped anew at each painting.
        cell.layout->setCacheEnabled(true);
        cell.extent = CellText::layOut(*cell.layout, block, columns.room(column, border.width));
        cells.push_back(std::move(cell));
    }
    return cells;
}

void ChatLayout::take(int row, const Cells &cells)
{
    Row &data = rowData(row);
    int column = columns.count() - static_cast<int>(cells.size());
    if (column == 0) {
        data.sideHeight = 0;
        data.isSideSure = true;
    }
    for (const Cell &cell : cells) {
        if (column < columns.last())
            data.sideHeight = std::max(data.sideHeight, cell.extent.height);
        if (cell.layout->minimumWidth() > columns.room(column, cell.border.width)
            && columns.require(column, CellText::widestCharacter(cell.block), cell.border.width))
            areColumnsStale = true;
        ++column;
    }
    const Cell &text = cells.back();
    if (text.extent.isSure)
        data.text = text.extent;
    else if (!data.text.isSure)
        data.text = {.width = text.extent.width,
                     .height = CellText::heightOf(text.layout->lineAt(0))};
    setHeight(row, std::max(data.sideHeight, text.extent.height) + 2 * columns.cellPadding(), true);
}

const ChatLayout::Cells &ChatLayout::cellsOf(int row)
{
    if (const Cells *known = cache.object(row))
        return *known;
    auto cells = std::make_unique<Cells>(layOut(row, 0));
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
            take(row, layOut(row, rowData(row).isSideSure ? columns.last() : 0));
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
    const CellSelections selections(context.selections, table);

    const QPen pen = painter->pen();
    drawFirstBlock(*painter, clipped, selections);
    const int first = rowAt(static_cast<int>(clipped.clip.top()));
    for (int row = first; row < rowCount() && rowTop(row) < clipped.clip.bottom(); ++row)
        drawRow(*painter, clipped, selections, row);
    painter->setPen(pen);
    // Scroll bars must not move while something is painted.
    if (areColumnsStale || documentSize() != announcedSize)
        repairTimer.start(0, this);
}

// The empty block above the table takes no room, yet a selection of it shows.
void ChatLayout::drawFirstBlock(QPainter &painter, const PaintContext &context,
                                const CellSelections &selections) const
{
    const QTextBlock block = document()->firstBlock();
    const QList<QTextLayout::FormatRange> ranges = selections.ranges(block);
    if (ranges.isEmpty())
        return;
    const QTextLayout &layout = lentLayout(block, contentWidth());
    painter.setPen(context.palette.color(QPalette::Text));
    layout.draw(&painter, QPointF(margin(), margin()), ranges, context.clip);
}

void ChatLayout::drawRow(QPainter &painter, const PaintContext &context,
                         const CellSelections &selections, int row)
{
    const Cells &cells = cellsOf(row);
    const int top = rowTop(row);
    for (int column = 0; column < columns.count(); ++column) {
        const Cell &cell = cells[static_cast<std::size_t>(column)];
        if (cell.border.width > 0) {
            painter.save();
            painter.setPen(Qt::NoPen);
            painter.setBrush(cell.border.brush);
            // At a scale that is no whole number the rule's edges fall between pixels.
            painter.setRenderHint(QPainter::Antialiasing);
            painter.drawRect(QRectF(margin() + columns.start(column + 1) - cell.border.width, top,
                                    cell.border.width, heights.height(row)));
            painter.restore();
        }
        painter.setPen(context.palette.color(QPalette::Text));
        cell.layout->draw(&painter, textOrigin(row, column),
                          selections.ranges(cell.block, QPoint(column, row)), context.clip);
    }
}

int ChatLayout::hitTest(const QPointF &point, Qt::HitTestAccuracy accuracy) const
{
    if (!table)
        return accuracy == Qt::ExactHit ? -1 : 0;
    const QPointF hit(truncated(point.x()), truncated(point.y()));
    const QPointF inTable = hit - QPointF(margin(), margin());
    const QRectF bounds(0, 0, columns.width(), heights.total());
    // The far edges belong to the table as well.
    if (inTable.x() >= 0 && inTable.y() >= 0 && inTable.x() <= bounds.right()
        && inTable.y() <= bounds.bottom())
        return hitTable(hit, accuracy);
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
    const int row = heights.rowAbove(point.y() - margin());
    const int column = columns.columnLeftOf(point.x() - margin());
    Cells fresh;
    const Cells *cells = cache.object(row);
    if (!cells) {
        fresh = layOut(row, 0);
        cells = &fresh;
    }
    const Cell &cell = (*cells)[static_cast<std::size_t>(column)];
    const int offset = CellText::hitTest(*cell.layout, point - textOrigin(row, column), accuracy);
    return offset < 0 ? -1 : cell.block.position() + std::min(offset, cell.block.length() - 1);
}
