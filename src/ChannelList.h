#pragma once

#include <QString>

class QLabel;
class QTreeWidget;
class QTreeWidgetItem;
class QWidget;

/// The page of the List tab: widgets and rows.
namespace ChannelList {

struct Page
{
    QWidget *page = nullptr;
    QLabel *infoLabel = nullptr; ///< Above the list.
    QTreeWidget *tree = nullptr; ///< Columns: channel, users and topic.
};

/// Creates a page with an empty list that has the custom context menu policy. The page has no
/// parent: the caller owns it until it is added to a tab widget.
[[nodiscard]] Page createPage(const QString &theme);

/// Returns the text of `Page::infoLabel` for a complete list.
[[nodiscard]] QString summary(const QString &serverName, int totalChannels, int totalUsers);

/// Appends a row without sorting. `userCount` is the server's text; if it is no number, it sorts as
/// 0.
void addRow(QTreeWidget &tree, const QString &channel, const QString &userCount,
            const QString &topic);

[[nodiscard]] QString channelOf(const QTreeWidgetItem &row);

/// Sorts by users in descending order, and lets the user sort by a click on the header.
void sortByUsers(QTreeWidget &tree);

/// Sorts added rows if the list is sorted by users, since QTreeWidget sorts slowly. Does nothing
/// otherwise: QTreeWidget sorts by other columns itself, and an incomplete first list is unsorted.
void sortNewRows(QTreeWidget &tree);

} // namespace ChannelList
