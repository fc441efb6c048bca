#include "RowHeights.h"

#include <algorithm>
#include <bit>
#include <limits>
#include <utility>

namespace {

// The range of a scroll bar, with space for the margins.
constexpr std::int64_t Highest = std::numeric_limits<int>::max() / 2;

// Number of rows in the sum at the 1-based `index`.
std::size_t span(std::size_t index)
{
    return std::size_t{1} << std::countr_zero(index);
}

} // namespace

int RowHeights::top(int row) const
{
    std::int64_t result = 0;
    for (auto index = static_cast<std::size_t>(row); index > 0; index -= span(index))
        result += sums[index - 1];
    return static_cast<int>(std::min(result, Highest));
}

int RowHeights::rowAbove(double y) const
{
    if (heights.empty())
        return 0;
    std::size_t row = 0;
    double rest = y;
    for (std::size_t step = std::bit_floor(heights.size()); step > 0; step /= 2) {
        if (row + step <= sums.size() && static_cast<double>(sums[row + step - 1]) < rest) {
            row += step;
            rest -= static_cast<double>(sums[row - 1]);
        }
    }

    return static_cast<int>(row < heights.size() ? row : heights.size() - 1);
}

void RowHeights::append(int height)
{
    heights.push_back(height);
    const std::size_t index = heights.size();
    std::int64_t sum = height;
    for (std::size_t part = 1; part < span(index); part *= 2)
        sum += sums[index - part - 1];
    sums.push_back(sum);
}

void RowHeights::set(int row, int height)
{
    int &known = heights[static_cast<std::size_t>(row)];
    const int change = height - known;
    known = height;
    for (auto index = static_cast<std::size_t>(row) + 1; index <= sums.size(); index += span(index))
        sums[index - 1] += change;
}

void RowHeights::assign(std::vector<int> newHeights)
{
    heights = std::move(newHeights);
    sums.assign(heights.cbegin(), heights.cend());
    for (std::size_t index = 1; index <= sums.size(); ++index) {
        const std::size_t next = index + span(index);
        if (next <= sums.size())
            sums[next - 1] += sums[index - 1];
    }
}
