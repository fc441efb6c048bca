#pragma once

#include <QAbstractTextDocumentLayout>
#include <QList>
#include <QPoint>
#include <QRect>
#include <QTextLayout>

class QTextTable;

/// The parts of each cell that are selected during one paint.
class CellSelections final
{
public:
    CellSelections(const QList<QAbstractTextDocumentLayout::Selection> &selections,
                   const QTextTable *table);

    /// Returns the selected parts of `block`, the text of `cell` (column and row).
    [[nodiscard]] QList<QTextLayout::FormatRange> ranges(const QTextBlock &block,
                                                         QPoint cell) const;

    /// Returns the selected parts of a block outside the table.
    [[nodiscard]] QList<QTextLayout::FormatRange> ranges(const QTextBlock &block) const;

private:
    struct Entry
    {
        // Document positions.
        int start = 0;
        int end = 0;
        // Columns and rows of a selection that spans several cells; else null.
        QRect cells;
        QTextCharFormat format;
    };

    QList<Entry> entries;
};
