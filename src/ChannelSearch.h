#pragma once

#include <QHash>
#include <QObject>
#include <QString>

#include <functional>
#include <string>
#include <vector>

class QTreeWidget;
class QTreeWidgetItem;

/// Searches a channel list, fast enough for typing in a list of any length.
///
/// Reading the texts of a tree row by row is slow, since they are scattered in memory. This class
/// therefore keeps a copy of them in one string, in UTF-8, plus some dozens of bytes a row. It
/// follows changes of the tree by itself.
class ChannelSearch final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ChannelSearch)

public:
    /// Returns the search of `tree`, which owns it. The first call creates it.
    [[nodiscard]] static ChannelSearch &forTree(QTreeWidget &tree);

    /// Adds the texts of `row`, which has just been added to the tree. If this is not called for
    /// every added row, the next search reads the whole tree.
    void add(const QTreeWidgetItem &row);

    /// Calls `reorder`, which removes rows and adds the same rows again, without clearing the copy.
    void keepIndexDuring(const std::function<void()> &reorder);

    /// Shows the rows whose channel or topic contains `text`, case-insensitively, and hides the
    /// others. An empty text shows all rows.
    void showMatches(const QString &text);

private:
    explicit ChannelSearch(QTreeWidget &searched);

    void clear();
    [[nodiscard]] std::vector<bool> find(const QString &text) const;
    [[nodiscard]] std::size_t numberOf(int row);

    struct CachedRow
    {
        const QTreeWidgetItem *item = nullptr;
        std::size_t number = 0;
    };

    QTreeWidget &tree;
    bool isReordering = false;                           // During keepIndexDuring().
    QHash<const QTreeWidgetItem *, std::size_t> numbers; // Rows in the order of add().
    std::vector<CachedRow> rowCache;   // Item and number of each row at the last search.
    std::string texts;                 // UTF-8, case-folded, each followed by EndOfText.
    std::vector<std::size_t> textEnds; // End in `texts` of each row, by its number.
};
