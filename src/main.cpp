#include "MainWindow.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QSettings>
#include <QStyleFactory>

using namespace Qt::StringLiterals;

namespace {

void closeToOthers(const QString &path)
{
    constexpr QFile::Permissions Others = QFile::ReadGroup | QFile::WriteGroup | QFile::ExeGroup
                                          | QFile::ReadOther | QFile::WriteOther | QFile::ExeOther;
    QFile::setPermissions(path, QFile::permissions(path) & ~Others);
}

// Passwords may lie in the store, which Qt makes for everybody to read. The folder counts for a
// file that takes the place of this one; on some systems it is not the program's own.
void closeStoreToOthers(const QString &fileName)
{
    const QDir folder = QFileInfo(fileName).dir();
    if (folder.dirName() == QApplication::organizationName())
        closeToOthers(folder.path());
    closeToOthers(fileName);
}

} // namespace

int main(int argc, char *argv[])
{
    const QApplication application(argc, argv);
    // These two names decide where every QSettings of the program lies.
    QApplication::setApplicationName(u"Velmora"_s);
    QApplication::setApplicationVersion(u"2.0"_s);
    QApplication::setOrganizationName(u"Velmora"_s);
    // Desktops find name and icon of the window and of its notifications by that of the entry.
    QGuiApplication::setDesktopFileName(QStringLiteral(VELMORA_ID));
    QApplication::setStyle(QStyleFactory::create(u"Fusion"_s));

    QSettings settings;
    if (!settings.contains(u"theme"_s))
        settings.setValue(u"theme"_s, u"light"_s);
    settings.sync();
    closeStoreToOthers(settings.fileName());

    MainWindow window;
    window.show();
    return QApplication::exec();
}
