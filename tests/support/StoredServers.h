#pragma once

#include <QMap>
#include <QString>
#include <QStringList>
#include <QVariant>

/// What the settings store holds about servers, read and written as by hand.
namespace StoredServers {

/// The three lists of server ids, sorted.
[[nodiscard]] QStringList customIds();
[[nodiscard]] QStringList deletedDefaultIds();
[[nodiscard]] QStringList favoriteIds();

/// The last used addresses, oldest first.
[[nodiscard]] QStringList history();

/// The ids of all servers that have a group.
[[nodiscard]] QStringList groups();

/// One value of the group of `id`; invalid if there is none.
[[nodiscard]] QVariant value(const QString &id, const QString &key);
void setValue(const QString &id, const QString &key, const QVariant &value);

/// Stores a server of the user's own as adding it does, with the nick "nick-of-" and its host.
void addCustom(const QString &host, int port);

/// All that is stored, by key.
[[nodiscard]] QMap<QString, QVariant> everything();

} // namespace StoredServers
