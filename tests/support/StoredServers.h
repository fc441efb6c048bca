#pragma once

#include <QMap>
#include <QString>
#include <QStringList>
#include <QVariant>

/// Reads and writes the servers in the settings store, without the program's own classes.
namespace StoredServers {

// The lists of server ids, sorted.
[[nodiscard]] QStringList customIds();
[[nodiscard]] QStringList deletedDefaultIds();
[[nodiscard]] QStringList favoriteIds();

/// Returns the last used addresses, oldest first.
[[nodiscard]] QStringList history();

/// Returns the ids of all servers that have a group.
[[nodiscard]] QStringList groups();

/// Returns a value from the group of `id`; invalid if it is missing.
[[nodiscard]] QVariant value(const QString &id, const QString &key);
void setValue(const QString &id, const QString &key, const QVariant &value);

/// Stores a custom server, as adding it in the dialog does. Its nick is "nick-of-<host>".
void addCustom(const QString &host, int port);

[[nodiscard]] QMap<QString, QVariant> everything();

} // namespace StoredServers
