#pragma once

#include <QString>

class QLabel;
class QTreeWidget;
class QTreeWidgetItem;
class QWidget;

/// The widgets that show a server's channels, and the rows in them.
namespace ChannelList {

/// The page of the List tab, and what is in it.
struct Page
{
    QWidget *page = nullptr;
    QLabel *infoLabel = nullptr; ///< The line above the list.
    QTreeWidget *tree = nullptr; ///< Has the columns channel, users and topic.
};

/// Makes a page with an empty list, which has a custom context menu. The page has no parent: the
/// caller owns it until it is put into a tab widget.
[[nodiscard]] Page createPage(const QString &theme);

/// The text of the line above a list that has come in whole.
[[nodiscard]] QString summary(const QString &serverName, int totalChannels, int totalUsers);

/// Adds a row at the end; the list's order is not looked at. `userCount` is the server's text, and
/// counts as 0 in the order by users unless it is a number.
void addRow(QTreeWidget &tree, const QString &channel, const QString &userCount,
            const QString &topic);

/// The name of the channel that `row` shows.
[[nodiscard]] QString channelOf(const QTreeWidgetItem &row);

/// Orders the rows by users, the fullest channel first, and lets a click on a header change that.
void sortByUsers(QTreeWidget &tree);

/// Moves rows that were added to a list sorted by users to their places, so that QTreeWidget does
/// not have to do it, which is slow. In any other list it does nothing: QTreeWidget sorts by
/// another column itself, and before the first list has ended there is no order.
void sortNewRows(QTreeWidget &tree);

} // namespace ChannelList
