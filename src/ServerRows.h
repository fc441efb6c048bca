#pragma once

#include <QString>
#include <QStringList>
#include <QStringView>

#include <optional>

class QListWidget;
class QListWidgetItem;

/// Rows of the connect dialog's server list.
///
/// A row's text is the server's address, after FavoriteMark if the server is a favourite. The text
/// alone identifies the server.
namespace ServerRows {

/// Prefix of a favourite's row: a star and a space.
inline constexpr QStringView FavoriteMark = u"\u2605 ";

/// Returns `text` without a leading FavoriteMark.
[[nodiscard]] QString cleanAddress(const QString &text);

/// Returns the text of `row` without its favourite mark.
[[nodiscard]] QString addressOf(const QListWidgetItem *row);

/// Returns the id of the row's server; nothing unless the address contains exactly one ":".
[[nodiscard]] std::optional<QString> idOf(const QListWidgetItem *row);

/// Returns the addresses of all rows of `list`, from the top.
[[nodiscard]] QStringList addresses(const QListWidget *list);

/// Returns the first row of `list` with exactly this address, or null.
[[nodiscard]] QListWidgetItem *findAddress(const QListWidget *list, const QString &address);

/// Returns the first row of `list` whose server has this id, or null.
[[nodiscard]] QListWidgetItem *findId(const QListWidget *list, const QString &id);

/// Sorts the rows: favourites first, both groups by address, case-insensitively.
///
/// Makes the same server's row current again, if that server has an id. The current row changes in
/// between, and the list emits its signals for these changes.
void sort(QListWidget *list);

} // namespace ServerRows
