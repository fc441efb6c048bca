#include "CellSelections.h"

#include <QTextBlock>
#include <QTextTable>

#include <algorithm>

namespace {

QRect selectedCells(const QTextCursor &cursor)
{
    int row = -1;
    int rowCount = -1;
    int column = -1;
    int columnCount = -1;
    cursor.selectedTableCells(&row, &rowCount, &column, &columnCount);
    return row < 0 ? QRect() : QRect(column, row, columnCount, rowCount);
}

} // namespace

CellSelections::CellSelections(const QList<QAbstractTextDocumentLayout::Selection> &selections,
                               const QTextTable *table)
{
    for (const QAbstractTextDocumentLayout::Selection &selection : selections) {
        const QTextCursor &cursor = selection.cursor;
        Entry entry{.start = cursor.selectionStart(),
                    .end = cursor.selectionEnd(),
                    .cells = cursor.currentTable() == table ? selectedCells(cursor) : QRect(),
                    .format = selection.format};
        // It would also paint the rest of the line after the text.
        entry.format.clearProperty(QTextFormat::FullWidthSelection);
        entries << entry;
    }
}

QList<QTextLayout::FormatRange> CellSelections::ranges(const QTextBlock &block, QPoint cell) const
{
    QList<QTextLayout::FormatRange> result;
    for (const Entry &entry : entries) {
        const bool isWhole = entry.cells.contains(cell);
        const int start = isWhole ? 0 : entry.start - block.position();
        // An empty cell is painted as selected, too.
        const int end = isWhole ? std::max(block.length() - 1, 1) : entry.end - block.position();
        const bool isOverlapping = start < block.length() && end > 0 && end > start;
        if (isWhole || (entry.cells.isNull() && isOverlapping))
            result << QTextLayout::FormatRange{start, end - start, entry.format};
    }
    return result;
}

QList<QTextLayout::FormatRange> CellSelections::ranges(const QTextBlock &block) const
{
    return ranges(block, QPoint(-1, -1));
}
