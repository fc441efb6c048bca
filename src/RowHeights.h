#pragma once

#include <cstdint>
#include <vector>

/// Heights of the rows of a growing table, in whole pixels.
///
/// A Fenwick tree finds the top of a row and the row at a position in logarithmic time. A `row`
/// must be at least 0 and below `count()`, which is not checked.
class RowHeights final
{
public:
    [[nodiscard]] int count() const { return static_cast<int>(heights.size()); }

    [[nodiscard]] int total() const { return top(count()); }

    [[nodiscard]] int height(int row) const { return heights[static_cast<std::size_t>(row)]; }

    /// Returns the height of all rows above `row`, which may be `count()`. At most half of the
    /// largest `int`.
    [[nodiscard]] int top(int row) const;

    /// Returns the last row whose top is above `y`, or 0 if there is none. A row's first pixel thus
    /// belongs to the row before it, like in Qt's layout.
    [[nodiscard]] int rowAbove(double y) const;

    /// Appends a row, in logarithmic time.
    void append(int height);

    /// Changes the height of one row, in logarithmic time.
    void set(int row, int height);

    /// Replaces all rows, in linear time.
    void assign(std::vector<int> newHeights);

private:
    std::vector<int> heights;
    // The Fenwick tree: sums[i] is the height of the rows from i + 1 - (lowest set bit of i + 1) to
    // i.
    std::vector<std::int64_t> sums;
};
