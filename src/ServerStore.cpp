#include "ServerStore.h"

#include "ServerCatalogue.h"

#include <QSettings>

using namespace Qt::StringLiterals;

namespace {

const QString CustomListKey = u"servers/customList"_s;
const QString HistoryKey = u"connection/history"_s;

constexpr qsizetype MaxHistory = 10;

QString addressKey(const QString &id)
{
    return ServerStore::groupName(id) + u"/address"_s;
}

QString guessAddress(QString id)
{
    return id.replace(u'_', u':');
}

} // namespace

namespace ServerStore {

QString serverId(const QString &host, int port)
{
    return host + u'_' + QString::number(port);
}

QString groupName(const QString &id)
{
    return u"servers/"_s + id;
}

std::optional<HostPort> splitAddress(const QString &address)
{
    const QStringList parts = address.split(u':');
    if (parts.size() != 2)
        return std::nullopt;
    return HostPort{parts.at(0), parts.at(1).toInt()};
}

std::optional<QString> idOfAddress(const QString &address)
{
    const std::optional<HostPort> parts = splitAddress(address);
    if (!parts)
        return std::nullopt;
    return serverId(parts->host, parts->port);
}

std::optional<QString> addressOfId(const QString &id)
{
    const QStringList parts = id.split(u'_');
    if (parts.size() != 2)
        return std::nullopt;
    return QString(parts.at(0) + u':' + parts.at(1));
}

bool isDefaultServer(const QString &id)
{
    static const QSet<QString> defaultIds = []() {
        QSet<QString> ids;
        for (const QString &address : ServerCatalogue::addresses()) {
            if (const std::optional<QString> defaultId = idOfAddress(address))
                ids.insert(*defaultId);
        }
        return ids;
    }();
    return defaultIds.contains(id);
}

ServerConfig loadConfig(const QString &id, const ServerConfig &defaults)
{
    QSettings settings;
    return loadConfig(settings, id, defaults);
}

ServerConfig loadConfig(QSettings &settings, const QString &id, const ServerConfig &defaults)
{
    settings.beginGroup(groupName(id));
    ServerConfig config = defaults;
    config.nickname = settings.value(u"nickname"_s, defaults.nickname).toString();
    config.altNickname = settings.value(u"altnick"_s, defaults.altNickname).toString();
    config.realName = settings.value(u"realname"_s, defaults.realName).toString();
    config.authMethod = settings.value(u"authmethod"_s, defaults.authMethod).toString();
    config.password = settings.value(u"password"_s, defaults.password).toString();
    config.autojoin = settings.value(u"autojoin"_s, defaults.autojoin).toStringList();
    config.encoding = settings.value(u"encoding"_s, defaults.encoding).toString();
    config.useSsl = settings.value(u"ssl"_s, defaults.useSsl).toBool();
    settings.endGroup();
    return config;
}

QStringList loadAutojoin(const QString &id)
{
    QSettings settings;
    settings.beginGroup(groupName(id));
    QStringList autojoin = settings.value(u"autojoin"_s).toStringList();
    settings.endGroup();
    return autojoin;
}

void saveConfig(const QString &id, const ServerConfig &config, AddressFallback fallback)
{
    QSettings settings;
    settings.beginGroup(groupName(id));
    settings.setValue(u"nickname"_s, config.nickname);
    settings.setValue(u"altnick"_s, config.altNickname);
    settings.setValue(u"realname"_s, config.realName);
    settings.setValue(u"authmethod"_s, config.authMethod);
    settings.setValue(u"password"_s, config.password);
    settings.setValue(u"autojoin"_s, config.autojoin);
    settings.setValue(u"encoding"_s, config.encoding);
    settings.setValue(u"ssl"_s, config.useSsl);
    if (const std::optional<QString> address = addressOfId(id))
        settings.setValue(u"address"_s, *address);
    else if (fallback == AddressFallback::UseId)
        settings.setValue(u"address"_s, id);
    settings.endGroup();
}

void removeGroup(const QString &id)
{
    QSettings().remove(groupName(id));
}

QSet<QString> loadIds(QStringView key)
{
    const QStringList ids = QSettings().value(key.toString()).toStringList();
    return {ids.cbegin(), ids.cend()};
}

void saveIds(QStringView key, const QSet<QString> &ids)
{
    QSettings().setValue(key.toString(), QStringList(ids.cbegin(), ids.cend()));
}

void seedAddress(QSettings &settings, const QString &id, const QString &address)
{
    if (!settings.contains(addressKey(id)))
        settings.setValue(addressKey(id), address);
}

QString storedAddress(const QSettings &settings, const QString &id)
{
    const QString address = settings.value(addressKey(id)).toString();
    return address.isEmpty() ? guessAddress(id) : address;
}

QSet<QString> seedAndListServers(const QStringList &defaultAddresses,
                                 const QSet<QString> &deletedDefaults)
{
    QSettings settings;
    QSet<QString> ids;
    for (const QString &address : defaultAddresses) {
        const std::optional<QString> id = idOfAddress(address);
        if (!id || deletedDefaults.contains(*id))
            continue;
        ids.insert(*id);
        seedAddress(settings, *id, address);
    }
    const QStringList customIds = settings.value(CustomListKey).toStringList();
    for (const QString &id : customIds) {
        ids.insert(id);
        seedAddress(settings, id, guessAddress(id));
    }
    return ids;
}

void saveListedServers(const QStringList &addresses)
{
    QSettings settings;
    QStringList customIds;
    for (const QString &address : addresses) {
        const std::optional<QString> id = idOfAddress(address);
        if (!id)
            continue;
        seedAddress(settings, *id, address);
        if (!isDefaultServer(*id))
            customIds.append(*id);
    }
    settings.setValue(CustomListKey, customIds);
}

QStringList loadHistory()
{
    return QSettings().value(HistoryKey).toStringList();
}

void addToHistory(const QString &address)
{
    QStringList history = loadHistory();
    history.removeAll(address);
    history.append(address);
    while (history.size() > MaxHistory)
        history.removeFirst();
    QSettings().setValue(HistoryKey, history);
}

} // namespace ServerStore
