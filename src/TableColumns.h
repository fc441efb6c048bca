#pragma once

#include <QList>
#include <QTextLength>

#include <vector>

class QTextTableFormat;

/// Columns of a conversation's table, in whole pixels from the table's left edge.
///
/// All columns but the last have a fixed width and the last one takes the rest, but none is
/// narrower than the widest character in it.
class TableColumns final
{
public:
    TableColumns() = default;
    explicit TableColumns(const QTextTableFormat &format);

    [[nodiscard]] int count() const { return static_cast<int>(widths.size()); }
    [[nodiscard]] int last() const { return count() - 1; }

    /// Left and upper padding of a cell.
    [[nodiscard]] int cellPadding() const { return padding; }

    /// Where `column` starts or, for `count()`, the table ends.
    [[nodiscard]] int start(int column) const;

    [[nodiscard]] int width() const { return start(count()); }

    /// The last column that starts left of `x`, so that its very first pixel still belongs to the
    /// column before it; 0 if there is none.
    [[nodiscard]] int columnLeftOf(qreal x) const;

    /// Width for the text of a cell that has a border of `border` pixels.
    [[nodiscard]] int room(int column, int border = 0) const;

    /// Takes note that a cell needs at least `needed` pixels for its text. Returns true if `column`
    /// is narrower than that until the next `fit`.
    [[nodiscard]] bool require(int column, int needed, int border);

    /// Fits the columns into `available` pixels. Returns true if a column other than the last one
    /// has changed.
    bool fit(int available);

private:
    QList<QTextLength> constraints;
    int padding = 0;
    std::vector<int> widths;
    std::vector<int> minima;
};
