#pragma once

#include <QString>
#include <QStringList>

#include <optional>

class QListWidget;
class QListWidgetItem;

/// The rows of the server list.
///
/// A row's text is its server's address, behind ServerStore::FavoriteMark if the server is a
/// favourite. It is all that links the row to its server.
namespace ServerRows {

/// The text of `row` without its favourite mark.
[[nodiscard]] QString addressOf(const QListWidgetItem *row);

/// The id of the row's server; nothing if the row holds no "host:port", as with an IPv6 host.
[[nodiscard]] std::optional<QString> idOf(const QListWidgetItem *row);

/// The addresses of all rows of `list` from the top.
[[nodiscard]] QStringList addresses(const QListWidget *list);

/// The first row of `list` with exactly this address, or null.
[[nodiscard]] QListWidgetItem *findAddress(const QListWidget *list, const QString &address);

/// The first row of `list` whose server has this id, or null.
[[nodiscard]] QListWidgetItem *findId(const QListWidget *list, const QString &id);

/// Favourites before the others, each in the order of their addresses without regard to case. The
/// row that is current stays so, if its server has an id; it moves meanwhile, which the list
/// signals.
void sort(QListWidget *list);

} // namespace ServerRows
