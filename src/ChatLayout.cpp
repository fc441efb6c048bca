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

// Number of rows whose shaped text is cached, enough for several screens.
constexpr int CachedRows = 300;

// From this many rows on, the end of an edit block costs more than everything else for a new line.
constexpr int RowsOfLongConversation = 1000;

// Avoids `int` overflow for long texts in narrow windows.
constexpr qint64 HighestEstimate = 1'000'000;

bool isSameOption(const QTextOption &one, const QTextOption &other)
{
    return one.alignment() == other.alignment() && one.flags() == other.flags()
           && one.textDirection() == other.textDirection() && one.wrapMode() == other.wrapMode();
}

// Truncates to the precision of positions in a QTextLayout, 1/64 pixel.
qreal truncated(qreal value)
{
    return std::trunc(value * 64) / 64;
}

} // namespace

ChatLayout::ChatLayout(QTextDocument *document)
    : QAbstractTextDocumentLayout(document)
    , cache(CachedRows)
    , editBlock(*document)
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
        const QRectF line = ownLayout(document()->firstBlock(), 0).boundingRect();
        return {qreal(pageWidth), line.height() + 2 * margin()};
    }
    return {qreal(std::max(pageWidth, columns.width() + 2 * margin())),
            qreal(heights.total() + 2 * margin())};
}

QRectF ChatLayout::frameBoundingRect(QTextFrame *frame) const
{
    if (frame != table)
        return {QPointF(), documentSize()};
    // Like in Qt's layout, the frame starts after the first cell's padding.
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
        const int width = columns.textWidth(column, CellText::rightBorder(block).width);
        QRectF rect = ownLayout(block, width).boundingRect();
        rect.moveTopLeft(textOrigin(rowOf(block), column));
        return rect;
    }
    QRectF rect = ownLayout(block, contentWidth()).boundingRect();
    if (number == 0)
        return {QPointF(margin(), margin()), documentSize() - QSizeF(margin(), margin())};
    rect.moveTopLeft(QPointF(margin() + columns.width(), rowTop(rowCount()) - rect.height()));
    return rect;
}

// Returns the layout that `block` owns and that Qt's cursors use. Lays it out if it has no lines.
const QTextLayout &ChatLayout::ownLayout(const QTextBlock &block, int width) const
{
    QTextLayout &layout = *block.layout();
    if (layout.lineCount() == 0) {
        CellText::layOut(layout, block, width);
        ownLayouts.insert(block.blockNumber());
    }
    return layout;
}

void ChatLayout::setVisibleHeight(int height)
{
    visibleHeight = height;
    if (height == 0)
        cache.clear();
}

void ChatLayout::beginRows()
{
    if (rowCount() < RowsOfLongConversation || editBlock.isOpen())
        return;
    editBlock.begin(table->lastPosition());
}

void ChatLayout::endRows()
{
    // Without an open edit block, documentChanged() has already added the rows.
    if (!editBlock.isOpen())
        return;
    addRows(rowsInDocument() - rowCount());
    emitSizeChange();
}

int ChatLayout::rowsInDocument() const
{
    return table ? (document()->blockCount() - 2) / columns.count() : 0;
}

void ChatLayout::documentChanged(int from, int charsRemoved, int charsAdded)
{
    // The deferred edit block has ended. endRows() has already added its rows.
    if (editBlock.covers(from))
        return;
    if (!table)
        reset();
    // Qt reports a new page size, font or text option as an insertion of the whole document.
    const bool isWhole =
            from == 0 && charsRemoved == 0 && charsAdded == document()->characterCount();
    if (isWhole)
        updateSettings();
    const int count = rowsInDocument();
    if (count < rowCount())
        reset();
    if (!isWhole && table) {
        // A block separator added at the end of a block starts the next one.
        const QTextBlock first = document()->findBlock(from);
        const bool isInNext = count > rowCount() && from == first.position() + first.length() - 1;
        invalidateRows(isInNext ? first.next() : first, from + charsAdded);
    }
    addRows(count - rowCount());
    emitSizeChange();
}

// Called when the table was created or removed, and when rows were removed.
void ChatLayout::reset()
{
    clearOwnLayouts();
    cache.clear();
    rows.clear();
    heights.assign({});
    estimates = 0;
    lastEstimate = -1;
    table = nullptr;
    for (QTextFrame *frame : document()->rootFrame()->childFrames())
        table = qobject_cast<QTextTable *>(frame);
    if (!table)
        return;
    columns = TableColumns(table->format());
    columns.fit(contentWidth());
}

void ChatLayout::updateSettings()
{
    const int width = std::max(static_cast<int>(document()->pageSize().width()), 0);
    const bool isWidthNew = width != pageWidth;
    const bool isTextNew = font != document()->defaultFont()
                           || !isSameOption(option, document()->defaultTextOption());
    // A view often sets its font again without a change.
    if (!isWidthNew && !isTextNew)
        return;
    pageWidth = width;
    font = document()->defaultFont();
    option = document()->defaultTextOption();
    if (isTextNew) {

        estimator.clear();
        for (Row &row : rows)
            row.isSideReliable = row.text.isReliable = false;
    }
    reflow();
}

void ChatLayout::reflow()
{
    clearOwnLayouts();
    cache.clear();
    areColumnsStale = false;
    if (table && columns.fit(contentWidth())) {
        for (Row &row : rows)
            row.isSideReliable = false;
    }
    std::vector<int> newHeights;
    newHeights.reserve(rows.size());
    estimates = 0;
    for (Row &row : rows) {
        row.isExact = fits(row);
        estimates += row.isExact ? 0 : 1;
        newHeights.push_back(estimatedHeight(row));
    }
    lastEstimate = static_cast<int>(rows.size()) - 1;
    heights.assign(std::move(newHeights));
    layOutVisibleEnd(0);
    emitSizeChange();
    emit update();
}

// Lays out the last rows, but none before `first`, that fit into the visible height. If they were
// only estimated, the scroll bar could appear and disappear endlessly: it changes the width, and
// the width changes the estimates.
void ChatLayout::layOutVisibleEnd(int first)
{
    const int end = rowCount();
    for (int row = end - 1; row >= first && heights.top(end) - heights.top(row + 1) < visibleHeight;
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
    layOutVisibleEnd(first);
    if (count > 0) {
        emit update(QRectF(0, rowTop(first), documentSize().width(),
                           rowTop(rowCount()) - rowTop(first)));
        emit rowsAdded(first, count);
    }
}

void ChatLayout::invalidateRows(QTextBlock block, int end)
{
    bool isAnyInvalid = false;
    for (; block.isValid() && block.position() <= end; block = block.next()) {
        const int row = rowOf(block);
        if (block.blockNumber() == 0)
            continue;
        if (row >= rowCount())
            break;
        block.clearLayout();
        cache.remove(row);
        estimate(row);
        isAnyInvalid = true;
    }
    if (isAnyInvalid)
        emit update();
}

void ChatLayout::estimate(int row)
{
    Row &data = rowData(row);
    data.sideHeight = 0;
    data.isSideReliable = true;
    QTextBlock block = cellBlock(row, 0);
    for (int column = 0; column + 1 < columns.count(); ++column, block = block.next()) {
        const TextExtent side = estimator.estimate(block, paintDevice());
        data.sideHeight = std::max(data.sideHeight, side.height);
        if (!side.isReliable
            || side.width > columns.textWidth(column, CellText::rightBorder(block).width))
            data.isSideReliable = false;
    }
    data.text = estimator.estimate(block, paintDevice());
    setHeight(row, estimatedHeight(data), fits(data));
}

bool ChatLayout::fits(const Row &row) const
{
    return row.isSideReliable && row.text.isReliable
           && row.text.width <= columns.textWidth(columns.last());
}

int ChatLayout::estimatedHeight(const Row &row) const
{
    // Before the view is first shown, the width is unknown and nothing wraps.
    const int width =
            pageWidth > 0 ? std::max(columns.textWidth(columns.last()), 1) : row.text.width;
    const int lines = row.text.width > width ? (row.text.width - 1) / width + 1 : 1;
    const qint64 height = std::min(qint64(row.text.height) * lines, HighestEstimate);
    return std::max(static_cast<int>(height), row.sideHeight) + 2 * columns.cellPadding();
}

void ChatLayout::setHeight(int row, int height, bool isExact)
{
    bool &wasExact = rowData(row).isExact;
    estimates += (wasExact ? 1 : 0) - (isExact ? 1 : 0);
    wasExact = isExact;
    if (!isExact)
        lastEstimate = std::max(lastEstimate, row);
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
        // Otherwise the text would be shaped at each paint.
        cell.layout->setCacheEnabled(true);
        cell.extent =
                CellText::layOut(*cell.layout, block, columns.textWidth(column, border.width));
        cells.push_back(std::move(cell));
    }
    return cells;
}

// Updates the row's measures by `cells`, which may lack the first ones.
void ChatLayout::storeMeasures(int row, const Cells &cells)
{
    Row &data = rowData(row);
    int column = columns.count() - static_cast<int>(cells.size());
    if (column == 0) {
        data.sideHeight = 0;
        data.isSideReliable = true;
    }
    for (const Cell &cell : cells) {
        if (column < columns.last())
            data.sideHeight = std::max(data.sideHeight, cell.extent.height);
        if (cell.layout->minimumWidth() > columns.textWidth(column, cell.border.width)
            && columns.require(column, CellText::widestCharacter(cell.block), cell.border.width))
            areColumnsStale = true;
        ++column;
    }
    const Cell &text = cells.back();
    if (text.extent.isReliable)
        data.text = text.extent;
    else if (!data.text.isReliable)
        data.text = {.width = text.extent.width,
                     .height = CellText::heightOf(text.layout->lineAt(0))};
    setHeight(row, std::max(data.sideHeight, text.extent.height) + 2 * columns.cellPadding(), true);
}

const ChatLayout::Cells &ChatLayout::cellsOf(int row)
{
    if (const Cells *known = cache.object(row))
        return *known;
    auto cells = std::make_unique<Cells>(layOut(row, 0));
    storeMeasures(row, *cells);
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
    emitSizeChange();
    return isChanged;
}

void ChatLayout::measureEstimatedRows(QDeadlineTimer deadline)
{
    for (; estimates > 0 && lastEstimate >= 0 && !deadline.hasExpired(); --lastEstimate) {
        const int row = lastEstimate;
        if (rowData(row).isExact)
            continue;
        // Often exact after a change of the font, and much cheaper than a layout.
        estimate(row);
        if (!rowData(row).isExact)
            storeMeasures(row, layOut(row, rowData(row).isSideReliable ? columns.last() : 0));
    }
    if (areColumnsStale)
        reflow();
    emitSizeChange();
}

void ChatLayout::emitSizeChange()
{
    const QSizeF size = documentSize();
    if (size == emittedSize)
        return;
    emittedSize = size;
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
    emitSizeChange();
    emit update();
}

void ChatLayout::clearOwnLayouts()
{
    for (const int number : std::as_const(ownLayouts))
        document()->findBlockByNumber(number).clearLayout();
    ownLayouts.clear();
    // Its number changes as the table grows.
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
    // Scroll bars must not change during a paint.
    if (areColumnsStale || documentSize() != emittedSize)
        repairTimer.start(0, this);
}

// A selection of the empty block above the table is visible although the block has no height.
void ChatLayout::drawFirstBlock(QPainter &painter, const PaintContext &context,
                                const CellSelections &selections) const
{
    const QTextBlock block = document()->firstBlock();
    const QList<QTextLayout::FormatRange> ranges = selections.ranges(block);
    if (ranges.isEmpty())
        return;
    const QTextLayout &layout = ownLayout(block, contentWidth());
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
            // At a fractional scale the border's edges are between pixels.
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
    // The right and bottom edges belong to the table as well.
    if (inTable.x() >= 0 && inTable.y() >= 0 && inTable.x() <= bounds.right()
        && inTable.y() <= bounds.bottom())
        return hitTable(hit, accuracy);
    if (accuracy == Qt::ExactHit)
        return -1;
    // The block below the table is placed beside its last line, across the whole document.
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
