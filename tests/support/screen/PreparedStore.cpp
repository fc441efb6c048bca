#include "PreparedStore.h"

#include <QSettings>

using namespace Qt::StringLiterals;

void PreparedStore::addServer(const Server &server)
{
    QSettings settings(fileName(), QSettings::IniFormat);
    const QString address = u"%1:%2"_s.arg(server.host, QString::number(server.port));
    const QString id = u"%1_%2"_s.arg(server.host, QString::number(server.port));

    settings.setValue(u"connection/history"_s,
                      settings.value(u"connection/history"_s).toStringList()
                              + QStringList{address});
    settings.setValue(u"servers/customList"_s,
                      settings.value(u"servers/customList"_s).toStringList() + QStringList{id});

    settings.beginGroup(u"servers/"_s + id);
    settings.setValue(u"nickname"_s, server.nickname);
    settings.setValue(u"realname"_s, server.realName);
    settings.setValue(u"autojoin"_s, server.channels);
    settings.setValue(u"ssl"_s, server.tls);
    settings.setValue(u"address"_s, address);
}

void PreparedStore::setValue(const QString &key, const QVariant &value)
{
    QSettings(fileName(), QSettings::IniFormat).setValue(key, value);
}

QString PreparedStore::configHome() const
{
    return folder.path();
}

QVariant PreparedStore::value(const QString &key) const
{
    return QSettings(fileName(), QSettings::IniFormat).value(key);
}

QString PreparedStore::fileName() const
{
    return folder.filePath(u"Velmora/Velmora.conf"_s);
}
