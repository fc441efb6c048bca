#include "RowHeights.h"

#include <QTest>

#include <limits>
#include <numeric>
#include <random>

class TestRowHeights final : public QObject
{
    Q_OBJECT

private slots:
    void startsEmpty();
    void findsTopsAndRows();
    void assignsAFirstPixelToThePreviousRow();
    void agreesWithPlainSums();
    void limitsTheTotalHeight();
};

void TestRowHeights::startsEmpty()
{
    const RowHeights heights;
    QCOMPARE(heights.count(), 0);
    QCOMPARE(heights.total(), 0);
    QCOMPARE(heights.rowAbove(0), 0);
    QCOMPARE(heights.rowAbove(100), 0);
}

void TestRowHeights::findsTopsAndRows()
{
    RowHeights heights;
    for (const int height : {10, 20, 30, 40, 50})
        heights.append(height);
    QCOMPARE(heights.total(), 150);
    QCOMPARE(heights.height(2), 30);
    QCOMPARE(heights.top(0), 0);
    QCOMPARE(heights.top(3), 60);
    QCOMPARE(heights.rowAbove(5), 0);
    QCOMPARE(heights.rowAbove(61), 3);
    QCOMPARE(heights.rowAbove(149), 4);
    QCOMPARE(heights.rowAbove(1000), 4);
    heights.set(1, 5);
    QCOMPARE(heights.total(), 135);
    QCOMPARE(heights.top(2), 15);
    QCOMPARE(heights.rowAbove(61), 3);
    heights.assign({1, 2, 3});
    QCOMPARE(heights.count(), 3);
    QCOMPARE(heights.total(), 6);
}

void TestRowHeights::assignsAFirstPixelToThePreviousRow()
{
    RowHeights heights;
    heights.assign({10, 20, 30});
    QCOMPARE(heights.rowAbove(-3), 0);
    QCOMPARE(heights.rowAbove(0), 0);
    QCOMPARE(heights.rowAbove(10), 0);
    QCOMPARE(heights.rowAbove(10.25), 1);
    QCOMPARE(heights.rowAbove(30), 1);
    QCOMPARE(heights.rowAbove(31), 2);
}

void TestRowHeights::agreesWithPlainSums()
{
    std::mt19937 random(7);
    const auto below = [&random](std::size_t limit) { return static_cast<int>(random() % limit); };
    RowHeights heights;
    std::vector<int> plain;
    for (int round = 0; round < 1000; ++round) {
        plain.push_back(1 + below(60));
        heights.append(plain.back());
        const int changed = below(plain.size());
        plain[static_cast<std::size_t>(changed)] = 1 + below(60);
        heights.set(changed, plain[static_cast<std::size_t>(changed)]);
        const int row = below(plain.size());
        const int top = std::accumulate(plain.begin(), plain.begin() + row, 0);
        QCOMPARE(heights.top(row), top);
        QCOMPARE(heights.rowAbove(top + 1), row);
        QCOMPARE(heights.total(), std::accumulate(plain.begin(), plain.end(), 0));
    }
    RowHeights assigned;
    assigned.assign(plain);
    for (int row = 0; row <= heights.count(); ++row)
        QCOMPARE(assigned.top(row), heights.top(row));
}

void TestRowHeights::limitsTheTotalHeight()
{
    RowHeights heights;
    for (int row = 0; row < 4; ++row)
        heights.append(std::numeric_limits<int>::max());
    QCOMPARE(heights.total(), std::numeric_limits<int>::max() / 2);
    heights.set(3, 1);
    heights.assign({std::numeric_limits<int>::max(), std::numeric_limits<int>::max(), 1});
    QCOMPARE(heights.top(3), std::numeric_limits<int>::max() / 2);
    QCOMPARE(heights.rowAbove(2.0 * std::numeric_limits<int>::max()), 1);
    QCOMPARE(heights.rowAbove(3.0 * std::numeric_limits<int>::max()), 2);
}

QTEST_GUILESS_MAIN(TestRowHeights)
#include "tst_RowHeights.moc"
