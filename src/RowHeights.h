#pragma once

#include <cstdint>
#include <vector>

/// Heights of the rows of a growing table, in whole pixels, kept so that the height above a row and
/// the row at a height are found in logarithmic time (a Fenwick tree).
///
/// A `row` is at least 0 and below `count()`, which is not checked.
class RowHeights final
{
public:
    [[nodiscard]] int count() const { return static_cast<int>(heights.size()); }

    /// Height of all rows together.
    [[nodiscard]] int total() const { return top(count()); }

    [[nodiscard]] int height(int row) const { return heights[static_cast<std::size_t>(row)]; }

    /// Height of all rows above `row`, which may be `count()`; half of the largest `int` if they
    /// are higher than that.
    [[nodiscard]] int top(int row) const;

    /// The last row whose top lies above `y`, so that a row's very first pixel still belongs to the
    /// row before it; 0 if there is none.
    [[nodiscard]] int rowAbove(double y) const;

    /// Adds a row below the last one, in logarithmic time.
    void append(int height);

    /// Changes the height of one row, in logarithmic time.
    void set(int row, int height);

    /// Takes `newHeights` for all rows at once, in linear time.
    void assign(std::vector<int> newHeights);

private:
    std::vector<int> heights;
    // sums[i] is the height of the rows from i + 1 - (the lowest set bit of i + 1) to i.
    std::vector<std::int64_t> sums;
};
