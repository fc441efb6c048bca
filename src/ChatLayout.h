#pragma once

#include "CellText.h"
#include "OpenChange.h"
#include "RowHeights.h"
#include "TableColumns.h"

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
/// It looks in every pixel like Qt's own document layout, which lays out the whole table anew at
/// each change, but the cost of a new row doesn't depend on the number of rows: only rows in sight
/// are laid out. Others have an estimated height until their turn comes; the view that shows the
/// document drives that and keeps its scroll position in place, see `ChatView`.
///
/// The document holds an empty block, the table with one block per cell, and another empty block,
/// which take no room, or the single empty block of a new document. Rows are added at the end only.
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

    /// Where `block` is. The block's own layout has lines afterwards, as the code of cursors
    /// expects.
    ///
    /// The empty block above the table claims the whole document, since Qt's search for the anchor
    /// at a point walks the blocks until one contains the point.
    [[nodiscard]] QRectF blockBoundingRect(const QTextBlock &block) const override;

    /// To be called before rows are added, and `endRows` after that.
    ///
    /// Each time a change of a document ends, Qt looks through all pieces of the document. In a
    /// long conversation the change is therefore kept open for two seconds, and the rows of that
    /// time become part of it. They are laid out and announced by `endRows` at once; it is only the
    /// document's own signals that wait for the end of the change.
    void beginRows();
    void endRows();

    /// Lays out new rows, and those that a new width changes, at once as far as they fill `height`
    /// pixels at the end of the document. With 0, as for a document that nobody sees, they are
    /// estimated only.
    void setShownHeight(int height);

    /// Lays out the rows between two heights of the document. Returns true if a row's height
    /// changed.
    bool measure(int top, int bottom);

    /// Lays out estimated rows, the newest first, until none is left or `deadline` has expired.
    void measureSome(QDeadlineTimer deadline);

    /// True as long as some row's height is only estimated.
    [[nodiscard]] bool hasEstimates() const { return estimates > 0; }

    [[nodiscard]] int rowCount() const { return heights.count(); }

    /// The row at a height of the document; the first or the last one if `y` is outside of all.
    [[nodiscard]] int rowAt(int y) const;

    /// Height of the document at which `row` starts or, for `rowCount()`, the last row ends.
    [[nodiscard]] int rowTop(int row) const { return margin() + heights.top(row); }

    /// 0 without a table.
    [[nodiscard]] int columnCount() const { return columns.count(); }

    /// The block of a cell.
    [[nodiscard]] QTextBlock cellBlock(int row, int column) const;

signals:
    /// Emitted when `count` rows from `first` on have been added with their text, even if the edit
    /// block of their change is still open.
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

    // What is known of a row apart from its height. The last cell holds the text and is the only
    // one whose width depends on the view's.
    struct Row
    {
        TextExtent text;
        int sideHeight = 0;
        bool isSideSure = false;
        bool isExact = false;
    };

    [[nodiscard]] int margin() const { return static_cast<int>(document()->documentMargin()); }
    // Width between the document's margins.
    [[nodiscard]] int contentWidth() const { return std::max(pageWidth - 2 * margin(), 0); }
    [[nodiscard]] Row &rowData(int row) { return rows[static_cast<std::size_t>(row)]; }
    [[nodiscard]] int rowOf(const QTextBlock &block) const;
    // Where the text of a cell starts within the document.
    [[nodiscard]] QPointF textOrigin(int row, int column) const;

    void startOver();
    void takeSettings();
    void reflow();
    [[nodiscard]] int rowsInDocument() const;
    void addRows(int count);
    void measureEnd(int first);
    void forget(QTextBlock block, int end);
    void estimate(int row);
    [[nodiscard]] int estimatedHeight(const Row &row) const;
    [[nodiscard]] bool fits(const Row &row) const;
    void setHeight(int row, int height, bool isExact);

    // The cells from `firstColumn` on. `take` keeps what is known of the cells that are not there.
    [[nodiscard]] Cells layOut(int row, int firstColumn) const;
    void take(int row, const Cells &cells);
    const Cells &cellsOf(int row);
    bool measureRows(qreal top, qreal bottom);
    void announceSize();

    void drawFirstBlock(QPainter &painter, const PaintContext &context,
                        const CellSelections &selections) const;
    void drawRow(QPainter &painter, const PaintContext &context, const CellSelections &selections,
                 int row);
    [[nodiscard]] int hitTable(const QPointF &point, Qt::HitTestAccuracy accuracy) const;
    const QTextLayout &lentLayout(const QTextBlock &block, int room) const;
    void clearLentLayouts();

    QPointer<QTextTable> table;
    TableColumns columns;
    // A character was found that needs a wider column.
    bool areColumnsStale = false;
    RowHeights heights;
    std::vector<Row> rows;
    int estimates = 0;
    // No row above this one is known to be estimated.
    int newestEstimate = -1;
    int shownHeight = 0;
    QCache<int, Cells> cache;
    TextEstimator estimator;
    // Numbers of the blocks whose own layouts were given lines.
    mutable QSet<int> lentLayouts;

    // Starts where its first row does.
    OpenChange openChange;

    // What the current layout was made for.
    int pageWidth = 0;
    QFont font;
    QTextOption option;
    QSizeF announcedSize;
    // Runs after a paint that found something else than was known.
    QBasicTimer repairTimer;
};
