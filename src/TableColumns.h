#pragma once

#include <QList>
#include <QTextLength>

#include <vector>

class QTextTableFormat;

/// Columns of a conversation's table, in whole pixels from the table's left edge.
///
/// The last column gets the width that the fixed widths of the others leave. No column is narrower
/// than the widest character in it.
class TableColumns final
{
public:
    TableColumns() = default;
    explicit TableColumns(const QTextTableFormat &format);

    [[nodiscard]] int count() const { return static_cast<int>(widths.size()); }
    [[nodiscard]] int last() const { return count() - 1; }

    /// Padding at each side of a cell.
    [[nodiscard]] int cellPadding() const { return padding; }

    /// Returns the left edge of `column` or, for `count()`, the right edge of the table.
    [[nodiscard]] int start(int column) const;

    [[nodiscard]] int width() const { return start(count()); }

    /// Returns the last column that starts left of `x`, or 0 if there is none. A column's first
    /// pixel thus belongs to the column before it, like in Qt's layout.
    [[nodiscard]] int columnLeftOf(qreal x) const;

    /// Returns the width for text in a cell with a border of `border` pixels.
    [[nodiscard]] int textWidth(int column, int border = 0) const;

    /// Raises the minimum text width of `column` to `needed` pixels, from the next `fit` on.
    /// Returns true if the column is narrower now.
    [[nodiscard]] bool require(int column, int needed, int border);

    /// Fits the columns into `available` pixels. Returns true if any column except the last
    /// changed.
    bool fit(int available);

private:
    QList<QTextLength> constraints;
    int padding = 0;
    std::vector<int> widths;
    std::vector<int> minima;
};
