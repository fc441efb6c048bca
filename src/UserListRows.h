#pragma once

#include <QString>

class QListWidget;
class QListWidgetItem;

/// Rows of the user list widget, each with one entry of `NickList`.
namespace UserListRows {

[[nodiscard]] QString nickOf(const QListWidgetItem &row);

/// Deletes the first row with the text `entry`, if any.
void removeFirst(QListWidget &list, const QString &entry);

/// Shows in the first row of `nick`, case-insensitively, whether that user is away.
void setAway(QListWidget &list, const QString &nick, bool isAway);

} // namespace UserListRows
