#pragma once

#include "ServerConfig.h"

#include <QSet>
#include <QString>
#include <QStringList>
#include <QStringView>

#include <optional>

class QSettings;

/// How servers are named, and how one server's record lies in the settings store.
///
/// A server is known by its host and port alone, in two forms: the id "host_port" names its group
/// in the store, the address "host:port" is what users see. Each form is made and taken apart by
/// its one separating character, so a host that holds "_" or ":" itself does not convert cleanly;
/// every function says what it does then.
///
/// The functions use the application's `QSettings`, made anew at each call that is not given one.
/// Passwords are stored in plain text. Errors of the store are not looked at: what cannot be read
/// is taken as missing.
namespace ServerStore {

/// Stands in front of a favourite's address in a list: a star and a blank.
inline constexpr QStringView FavoriteMark = u"\u2605 ";

/// The port of IRC without TLS, where no other is known.
inline constexpr quint16 DefaultPort = 6667;

// Keys of sets of server ids.
inline constexpr QStringView FavoritesKey = u"servers/favorites";
inline constexpr QStringView DeletedDefaultsKey = u"servers/deletedDefaultServers";

/// A host and the port behind it; the port is 0 if it was no number.
struct HostPort
{
    QString host;
    int port = 0;
};

/// What `saveConfig` writes as the address of a server whose id does not convert into one.
enum class OddIdAddress {
    SameAsId, ///< The id as it is, so that the server keeps a row in the list.
    Keep,     ///< Nothing: what is stored, if anything, stays.
};

/// `host`, "_" and `port` in decimal.
[[nodiscard]] QString serverId(const QString &host, int port);

/// Name of the group in which the store keeps the server `id`.
[[nodiscard]] QString groupName(const QString &id);

/// `text` without its favourite mark, if it starts with one.
[[nodiscard]] QString cleanAddress(const QString &text);

/// The two parts of "host:port"; nothing unless there is exactly one ":".
[[nodiscard]] std::optional<HostPort> splitAddress(const QString &address);

/// The id of the server at `address`; nothing unless there is exactly one ":".
[[nodiscard]] std::optional<QString> idOfAddress(const QString &address);

/// The address of the server `id`; nothing unless there is exactly one "_".
[[nodiscard]] std::optional<QString> addressOfId(const QString &id);

/// True if the server `id` is one of ServerCatalogue.
[[nodiscard]] bool isDefaultServer(const QString &id);

/// The stored record of the server `id`. What the store does not hold is taken from `defaults`.
[[nodiscard]] ServerConfig loadConfig(const QString &id, const ServerConfig &defaults = {});

/// The same from `settings`, for many records in a row: each `QSettings` that is made asks the
/// system about all files that might belong to the store.
[[nodiscard]] ServerConfig loadConfig(QSettings &settings, const QString &id,
                                      const ServerConfig &defaults = {});

/// The stored channels to join of the server `id`; empty if there are none.
[[nodiscard]] QStringList loadAutojoin(const QString &id);

/// Stores the record of the server `id` and its address.
void saveConfig(const QString &id, const ServerConfig &config, OddIdAddress oddIdAddress);

/// Forgets the record and the address of the server `id`.
void removeGroup(const QString &id);

/// The set of server ids that is stored under `key`.
[[nodiscard]] QSet<QString> loadIds(QStringView key);
void saveIds(QStringView key, const QSet<QString> &ids);

/// Stores `address` as that of the server `id`, unless one is stored already.
void seedAddress(QSettings &settings, const QString &id, const QString &address);

/// The stored address of the server `id`. Without one it is guessed from the id, by turning every
/// "_" into ":"; the guess is no address for a host that holds a "_" itself.
[[nodiscard]] QString storedAddress(const QSettings &settings, const QString &id);

/// The ids of all listed servers: those at `defaultAddresses`, without the ones in
/// `deletedDefaults`, and those that the user added. Each has an address in the store afterwards.
[[nodiscard]] QSet<QString> seedAndListServers(const QStringList &defaultAddresses,
                                               const QSet<QString> &deletedDefaults);

/// Stores which of the servers at `addresses`, all that are listed, are the user's own. Each that
/// has an id has an address in the store afterwards; the others are not stored anywhere.
void saveListedServers(const QStringList &addresses);

/// The addresses that were connected to, the last one at the end, none of them twice.
[[nodiscard]] QStringList loadHistory();

/// Puts `address` at the end of the history, which keeps ten addresses.
void addToHistory(const QString &address);

} // namespace ServerStore
