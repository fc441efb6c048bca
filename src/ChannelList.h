#pragma once

#include <QString>

class QLabel;
class QTreeWidget;
class QTreeWidgetItem;

/// The widgets that show a server's channels, and the rows in them.
namespace ChannelList {

/// Makes the line above the list. It has no parent: the caller owns it until a layout takes it.
QLabel *createInfoLabel();

/// Makes an empty list with the columns channel, users and topic, which has a custom context menu.
/// It has no parent: the caller owns it until a layout takes it.
QTreeWidget *createTree(const QString &theme);

/// Adds a row at the end; the list's order is not looked at. `userCount` is the server's text, and
/// counts as 0 in the order by users unless it is a number.
void addRow(QTreeWidget &tree, const QString &channel, const QString &userCount,
            const QString &topic);

/// The name of the channel that `row` shows.
[[nodiscard]] QString channelOf(const QTreeWidgetItem &row);

/// Orders the rows by users, the fullest channel first, and lets a click on a header change that.
void sortByUsers(QTreeWidget &tree);

} // namespace ChannelList
