#pragma once

#include <QAbstractTextDocumentLayout>
#include <QList>
#include <QPoint>
#include <QRect>
#include <QTextLayout>

class QTextTable;

/// What the selections of one painting cover of each cell.
class CellSelections final
{
public:
    CellSelections(const QList<QAbstractTextDocumentLayout::Selection> &shown,
                   const QTextTable *table);

    /// The selected parts of the text of a cell, given as the point of column and row.
    [[nodiscard]] QList<QTextLayout::FormatRange> ranges(const QTextBlock &block,
                                                         QPoint cell) const;

    /// The selected parts of a block outside of the table.
    [[nodiscard]] QList<QTextLayout::FormatRange> ranges(const QTextBlock &block) const;

private:
    struct Entry
    {
        // By positions in the document.
        int start = 0;
        int end = 0;
        // Columns and rows, if whole cells are selected, as by a selection from one cell to
        // another.
        QRect cells;
        QTextCharFormat format;
    };

    QList<Entry> entries;
};
