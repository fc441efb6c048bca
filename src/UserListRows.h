#pragma once

#include <QString>

class QListWidget;
class QListWidgetItem;

/// The rows of the visible user list, one entry of `NickList` each.
namespace UserListRows {

/// The nick that `row` shows.
[[nodiscard]] QString nickOf(const QListWidgetItem &row);

/// Deletes the first row that shows `entry`, if there is one.
void removeFirst(QListWidget &list, const QString &entry);

/// Shows in the first row of `nick`, whose case does not count, whether that user is away.
void setAway(QListWidget &list, const QString &nick, bool isAway);

} // namespace UserListRows
