#include "StoredServers.h"

#include <QSettings>

using namespace Qt::StringLiterals;

namespace {

QStringList sortedList(const QString &key)
{
    QStringList ids = QSettings().value(key).toStringList();
    ids.sort();
    return ids;
}

} // namespace

namespace StoredServers {

QStringList customIds()
{
    return sortedList(u"servers/customList"_s);
}

QStringList deletedDefaultIds()
{
    return sortedList(u"servers/deletedDefaultServers"_s);
}

QStringList favoriteIds()
{
    return sortedList(u"servers/favorites"_s);
}

QStringList history()
{
    return QSettings().value(u"connection/history"_s).toStringList();
}

QStringList groups()
{
    QSettings settings;
    settings.beginGroup(u"servers"_s);
    return settings.childGroups();
}

QVariant value(const QString &id, const QString &key)
{
    return QSettings().value(u"servers/%1/%2"_s.arg(id, key));
}

void setValue(const QString &id, const QString &key, const QVariant &value)
{
    QSettings().setValue(u"servers/%1/%2"_s.arg(id, key), value);
}

void addCustom(const QString &host, int port)
{
    const QString id = u"%1_%2"_s.arg(host, QString::number(port));
    QSettings().setValue(u"servers/customList"_s, customIds() << id);
    setValue(id, u"address"_s, u"%1:%2"_s.arg(host, QString::number(port)));
    setValue(id, u"nickname"_s, u"nick-of-%1"_s.arg(host));
}

QMap<QString, QVariant> everything()
{
    const QSettings settings;
    QMap<QString, QVariant> contents;
    const QStringList keys = settings.allKeys();
    for (const QString &key : keys)
        contents.insert(key, settings.value(key));
    return contents;
}

} // namespace StoredServers
