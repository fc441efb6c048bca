#include "FixedSizeWindows.h"
#include "LightPalette.h"
#include "MainWindow.h"
#include "QuitRequests.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QSettings>
#include <QStyleFactory>

#ifdef Q_OS_UNIX
#include <csignal>
#include <sys/time.h>
#include <unistd.h>
#endif

using namespace Qt::StringLiterals;

namespace {

void removeOthersPermissions(const QString &path)
{
    constexpr QFile::Permissions Others = QFile::ReadGroup | QFile::WriteGroup | QFile::ExeGroup
                                          | QFile::ReadOther | QFile::WriteOther | QFile::ExeOther;
    QFile::setPermissions(path, QFile::permissions(path) & ~Others);
}

// Qt creates the settings file world-readable, and it may hold passwords. The folder protects files
// that replace it later, but on some systems it is shared with other programs.
void protectStore(const QString &fileName)
{
    const QDir folder = QFileInfo(fileName).dir();
    if (folder.dirName() == QApplication::organizationName())
        removeOthersPermissions(folder.path());
    removeOthersPermissions(fileName);
}

// Window and session are destroyed before this returns.
int showWindow()
{
    FixedSizeWindows fixedSizeWindows;
    qApp->installEventFilter(&fixedSizeWindows);
    MainWindow window;
    window.show();
    return QApplication::exec();
}

#ifdef Q_OS_UNIX
volatile std::sig_atomic_t exitStatus = 0;
#endif

// Ends the process in 0.7 s. Qt waits for host lookups at exit, which can take 15 s and more if no
// name server answers. The window and the session are already destroyed, and everything is stored.
void forceExitSoon([[maybe_unused]] int status)
{
#ifdef Q_OS_UNIX
    constexpr itimerval Timeout{.it_interval = {}, .it_value = {.tv_sec = 0, .tv_usec = 700'000}};
    exitStatus = status;
    std::signal(SIGALRM, [](int) { _exit(exitStatus); });
    setitimer(ITIMER_REAL, &Timeout, nullptr);
#endif
}

} // namespace

int main(int argc, char *argv[])
{
    const QApplication application(argc, argv);
    // QSettings derives the store's path from this name and the organisation's.
    QApplication::setApplicationName(u"Velmora"_s);
    QApplication::setApplicationVersion(QStringLiteral(VELMORA_VERSION));
    QApplication::setOrganizationName(u"Velmora"_s);
    // Desktops find the name and icon of the window and its notifications by this name.
    QGuiApplication::setDesktopFileName(QStringLiteral(VELMORA_ID));
    QApplication::setStyle(QStyleFactory::create(u"Fusion"_s));
    const LightPalette palette;
    const QuitRequests quitRequests;

    // Kept until the end: Qt caches the file while a QSettings exists. Without it, each of the
    // program's short-lived ones would read the file again.
    QSettings settings;
    if (!settings.contains(u"theme"_s))
        settings.setValue(u"theme"_s, u"light"_s);
    settings.sync();
    protectStore(settings.fileName());

    const int status = showWindow();
    forceExitSoon(status);
    return status;
}
