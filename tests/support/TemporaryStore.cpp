#include "TemporaryStore.h"

#include <QCoreApplication>
#include <QSettings>

using namespace Qt::StringLiterals;

TemporaryStore::TemporaryStore()
{
    QCoreApplication::setOrganizationName(u"Velmora"_s);
    QCoreApplication::setApplicationName(u"Velmora"_s);
    // QStandardPaths' test mode does not redirect QSettings.
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, folder.path());
    QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, folder.path());
}

void TemporaryStore::clear()
{
    QSettings().clear();
}

QString TemporaryStore::fileName() const
{
    QSettings settings;
    settings.sync();
    return settings.fileName();
}
