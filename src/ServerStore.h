#pragma once

#include "ServerConfig.h"

#include <QSet>
#include <QString>
#include <QStringList>
#include <QStringView>

#include <optional>

class QSettings;

/// Server ids and addresses, and the servers in the settings store.
///
/// Host and port alone identify a server, in two forms: the id "host_port" names its group in the
/// store, and the address "host:port" is what users see. Each form is split at its single
/// separator, so a host that contains "_" or ":" does not convert cleanly.
///
/// A function without a `QSettings` argument creates a default-constructed one for the call.
/// Passwords are stored in plain text. Errors of the store are ignored; an unreadable value counts
/// as missing.
namespace ServerStore {

/// Port of IRC without TLS.
inline constexpr quint16 DefaultPort = 6667;

// Keys of sets of server ids.
inline constexpr QStringView FavoritesKey = u"servers/favorites";
inline constexpr QStringView DeletedDefaultsKey = u"servers/deletedDefaultServers";

struct HostPort
{
    QString host;
    int port = 0; ///< 0 if the text was no number.
};

/// The address that `saveConfig` stores if the id does not convert into one.
enum class AddressFallback {
    UseId,      ///< The id itself, so that the server has a row in the list.
    KeepStored, ///< None; a stored address stays.
};

/// Returns `host`, "_" and `port` in decimal.
[[nodiscard]] QString serverId(const QString &host, int port);

/// Returns the name of the store's group for the server `id`.
[[nodiscard]] QString groupName(const QString &id);

/// Splits "host:port"; returns nothing unless there is exactly one ":".
[[nodiscard]] std::optional<HostPort> splitAddress(const QString &address);

/// Returns the id of the server at `address`; nothing unless there is exactly one ":".
[[nodiscard]] std::optional<QString> idOfAddress(const QString &address);

/// Returns the address of the server `id`; nothing unless there is exactly one "_".
[[nodiscard]] std::optional<QString> addressOfId(const QString &id);

/// Returns whether the server `id` is in ServerCatalogue.
[[nodiscard]] bool isDefaultServer(const QString &id);

/// Returns the stored record of the server `id`, with missing values from `defaults`.
[[nodiscard]] ServerConfig loadConfig(const QString &id, const ServerConfig &defaults = {});

/// Overload for loading many records: constructing a `QSettings` looks up all files of the store.
[[nodiscard]] ServerConfig loadConfig(QSettings &settings, const QString &id,
                                      const ServerConfig &defaults = {});

/// Returns the stored channels to join of the server `id`; empty if there are none.
[[nodiscard]] QStringList loadAutojoin(const QString &id);

/// Stores the record of the server `id` and its address.
void saveConfig(const QString &id, const ServerConfig &config, AddressFallback fallback);

/// Removes the record and the address of the server `id`.
void removeGroup(const QString &id);

/// Returns the set of server ids stored under `key`.
[[nodiscard]] QSet<QString> loadIds(QStringView key);
void saveIds(QStringView key, const QSet<QString> &ids);

/// Stores `address` for the server `id`, unless an address is stored already.
void seedAddress(QSettings &settings, const QString &id, const QString &address);

/// Returns the stored address of the server `id`. Without one, returns the id with every "_"
/// replaced by ":", which is no valid address if the host contains "_".
[[nodiscard]] QString storedAddress(const QSettings &settings, const QString &id);

/// Returns the ids of all listed servers: those at `defaultAddresses` except `deletedDefaults`, and
/// the stored custom servers. Seeds the address of each.
[[nodiscard]] QSet<QString> seedAndListServers(const QStringList &defaultAddresses,
                                               const QSet<QString> &deletedDefaults);

/// Stores the ids of the custom servers among `addresses`, the addresses of all rows, and seeds the
/// address of each server. Ignores addresses without an id.
void saveListedServers(const QStringList &addresses);

/// Returns the addresses connected to, without duplicates, latest last.
[[nodiscard]] QStringList loadHistory();

/// Moves or appends `address` to the end of the history, which keeps ten addresses.
void addToHistory(const QString &address);

} // namespace ServerStore
