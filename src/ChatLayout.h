#pragma once

#include "DeferredEditBlock.h"
#include "RowHeights.h"
#include "TableColumns.h"
#include "TextEstimator.h"

#include <QAbstractTextDocumentLayout>
#include <QBasicTimer>
#include <QCache>
#include <QDeadlineTimer>
#include <QPointer>
#include <QSet>
#include <QTextBlock>
#include <QTextOption>
#include <QTextTable>

#include <algorithm>
#include <memory>
#include <vector>

class CellSelections;

/// Layout of a document that holds one conversation, a table made by `ChatTable`.
///
/// The result is pixel-identical to Qt's own layout, which lays out the whole table again at each
/// change. Here the cost of a new row does not depend on the number of rows: only visible rows are
/// laid out, and the others have an estimated height until `measureEstimatedRows` reaches them.
///
/// The document holds the table between two empty blocks without a height, or only the empty block
/// of a new document. Each cell has one block. Rows are only added at the end.
class ChatLayout final : public QAbstractTextDocumentLayout
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ChatLayout)

public:
    explicit ChatLayout(QTextDocument *document);
    ~ChatLayout() override;

    void draw(QPainter *painter, const PaintContext &context) override;
    [[nodiscard]] int hitTest(const QPointF &point, Qt::HitTestAccuracy accuracy) const override;
    [[nodiscard]] int pageCount() const override { return 1; }
    [[nodiscard]] QSizeF documentSize() const override;
    [[nodiscard]] QRectF frameBoundingRect(QTextFrame *frame) const override;

    /// Returns the rectangle of `block`, and lays out `block.layout()`, as QTextCursor expects.
    ///
    /// Intended: the empty block above the table returns the whole document. Qt's search for the
    /// anchor at a point visits the blocks until one contains the point.
    [[nodiscard]] QRectF blockBoundingRect(const QTextBlock &block) const override;

    /// Must be called before rows are added, and `endRows` afterwards.
    ///
    /// Qt scans all fragments when an edit block ends. Long conversations therefore keep one edit
    /// block open for two seconds. `endRows` lays out the new rows and emits `rowsAdded` at once;
    /// only the document's own signals are deferred.
    void beginRows();
    void endRows();

    /// Sets the height of the viewport, or 0 while the document is not visible. New rows, and all
    /// rows after a change of the width, are laid out at once if they are within that height of the
    /// document's end; the others are only estimated.
    void setVisibleHeight(int height);

    /// Lays out the estimated rows between two y coordinates. Returns true if a height changed.
    bool measure(int top, int bottom);

    /// Lays out estimated rows, the newest first, until none is left or `deadline` has expired.
    void measureEstimatedRows(QDeadlineTimer deadline);

    /// Returns true if the height of any row is only estimated.
    [[nodiscard]] bool hasEstimates() const { return estimates > 0; }

    [[nodiscard]] int rowCount() const { return heights.count(); }

    /// Returns the row at `y`; the first or the last row if `y` is above or below all rows.
    [[nodiscard]] int rowAt(int y) const;

    /// Returns the y coordinate of the top of `row` or, for `rowCount()`, of the last row's bottom.
    [[nodiscard]] int rowTop(int row) const { return margin() + heights.top(row); }

    /// Returns 0 without a table.
    [[nodiscard]] int columnCount() const { return columns.count(); }

    [[nodiscard]] QTextBlock cellBlock(int row, int column) const;

signals:
    /// Emitted when `count` rows from `first` on have been added with their text, even while their
    /// edit block is still open.
    void rowsAdded(int first, int count);

protected:
    void documentChanged(int from, int charsRemoved, int charsAdded) override;
    void timerEvent(QTimerEvent *event) override;

private:
    struct Cell
    {
        QTextBlock block;
        std::unique_ptr<QTextLayout> layout;
        TextExtent extent;
        CellBorder border;
    };
    using Cells = std::vector<Cell>;

    // Only the width of the last cell, the text, depends on the view's width.
    struct Row
    {
        TextExtent text;
        // Height of the other cells: time and nick.
        int sideHeight = 0;
        bool isSideReliable = false;

        bool isExact = false;
    };

    [[nodiscard]] int margin() const { return static_cast<int>(document()->documentMargin()); }

    [[nodiscard]] int contentWidth() const { return std::max(pageWidth - 2 * margin(), 0); }
    [[nodiscard]] Row &rowData(int row) { return rows[static_cast<std::size_t>(row)]; }
    [[nodiscard]] int rowOf(const QTextBlock &block) const;
    // Document coordinates of the start of a cell's text.
    [[nodiscard]] QPointF textOrigin(int row, int column) const;

    void reset();
    void updateSettings();
    void reflow();
    [[nodiscard]] int rowsInDocument() const;
    void addRows(int count);
    void layOutVisibleEnd(int first);
    void invalidateRows(QTextBlock block, int end);
    void estimate(int row);
    [[nodiscard]] int estimatedHeight(const Row &row) const;
    [[nodiscard]] bool fits(const Row &row) const;
    void setHeight(int row, int height, bool isExact);

    [[nodiscard]] Cells layOut(int row, int firstColumn) const;
    void storeMeasures(int row, const Cells &cells);
    const Cells &cellsOf(int row);
    bool measureRows(qreal top, qreal bottom);
    void emitSizeChange();

    void drawFirstBlock(QPainter &painter, const PaintContext &context,
                        const CellSelections &selections) const;
    void drawRow(QPainter &painter, const PaintContext &context, const CellSelections &selections,
                 int row);
    [[nodiscard]] int hitTable(const QPointF &point, Qt::HitTestAccuracy accuracy) const;
    const QTextLayout &ownLayout(const QTextBlock &block, int width) const;
    void clearOwnLayouts();

    QPointer<QTextTable> table;
    TableColumns columns;
    // A character needs a wider column.
    bool areColumnsStale = false;
    RowHeights heights;
    std::vector<Row> rows;
    int estimates = 0;
    // No later row is estimated.
    int lastEstimate = -1;
    int visibleHeight = 0;
    QCache<int, Cells> cache;
    TextEstimator estimator;
    // Numbers of the blocks whose own layouts have lines.
    mutable QSet<int> ownLayouts;

    DeferredEditBlock editBlock;

    // The document's settings for which the rows are laid out.
    int pageWidth = 0;
    QFont font;
    QTextOption option;
    QSizeF emittedSize;
    // Started by a paint that changed heights or columns.
    QBasicTimer repairTimer;
};
