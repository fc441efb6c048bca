#include "TableColumns.h"

#include <QTextTableFormat>

#include <algorithm>
#include <numeric>
#include <utility>

TableColumns::TableColumns(const QTextTableFormat &format)
    : constraints(format.columnWidthConstraints())
    , padding(static_cast<int>(format.cellPadding()))
    , widths(static_cast<std::size_t>(constraints.size()), 2 * padding)
    , minima(widths)
{
}

int TableColumns::start(int column) const
{
    return std::accumulate(widths.begin(), widths.begin() + column, 0);
}

int TableColumns::columnLeftOf(qreal x) const
{
    int column = last();
    while (column > 0 && start(column) >= x)
        --column;
    return column;
}

int TableColumns::textWidth(int column, int border) const
{
    return widths[static_cast<std::size_t>(column)] - 2 * padding - border;
}

bool TableColumns::require(int column, int needed, int border)
{
    int &minimum = minima[static_cast<std::size_t>(column)];
    minimum = std::max(minimum, needed + 2 * padding + border);
    return minimum > widths[static_cast<std::size_t>(column)];
}

bool TableColumns::fit(int available)
{
    if (minima.empty())
        return false;
    const std::vector<int> before = std::exchange(widths, minima);
    int rest = available;
    for (std::size_t column = 0; column + 1 < widths.size(); ++column) {
        const qreal fixed = constraints.at(static_cast<qsizetype>(column)).rawValue();
        widths[column] = std::max(widths[column], static_cast<int>(fixed));
        rest -= widths[column];
    }
    widths.back() = std::max(widths.back(), rest);
    return !std::equal(before.begin(), before.end() - 1, widths.begin());
}
