#pragma once

#include <QHash>
#include <QObject>
#include <QString>

#include <functional>
#include <string>
#include <vector>

class QTreeWidget;
class QTreeWidgetItem;

/// The search through a channel list, which is to keep up with typing in a list of any length.
///
/// Going through the texts of a tree row by row is slow, since each lies somewhere else. So a copy
/// of them is kept in one piece; it costs as many bytes as the texts have in UTF-8, and some dozens
/// a row. It follows the tree by itself when rows change, move or go.
class ChannelSearch final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ChannelSearch)

public:
    /// The search of `tree`, which owns it. It is made by the first call.
    [[nodiscard]] static ChannelSearch &forTree(QTreeWidget &tree);

    /// Takes a row in right away that is being added to the tree. One that nobody hands over costs
    /// the next search the time to go through the whole tree.
    void add(const QTreeWidgetItem &row);

    /// Calls `reorder`, which removes rows and adds the same ones again, and keeps their texts.
    void keepIndexDuring(const std::function<void()> &reorder);

    /// Shows the rows whose channel or topic contains `text` without regard to case, and hides the
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
    bool isReordering = false;                           // True while rows are only reordered.
    QHash<const QTreeWidgetItem *, std::size_t> numbers; // Rows in the order of their arrival.
    std::vector<CachedRow> rowCache;   // What each row of the tree was found to be.
    std::string texts;                 // In UTF-8 and with case folded, each with a mark behind it.
    std::vector<std::size_t> textEnds; // Where in them the texts of each row end, by its number.
};
