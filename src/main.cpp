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

// The window has gone, and its session with it, when this returns.
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

// Qt does not let a process end while a host name is being looked up, and the system gives name
// servers that do not answer a quarter of a minute and more. The window and the session are gone
// when this is called, and what is to be stored is stored, so nobody is to wait for that.
void limitFarewell([[maybe_unused]] int status)
{
#ifdef Q_OS_UNIX
    constexpr itimerval LongestFarewell{.it_interval = {},
                                        .it_value = {.tv_sec = 0, .tv_usec = 700'000}};
    exitStatus = status;
    std::signal(SIGALRM, [](int) { _exit(exitStatus); });
    setitimer(ITIMER_REAL, &LongestFarewell, nullptr);
#endif
}

} // namespace

int main(int argc, char *argv[])
{
    const QApplication application(argc, argv);
    // These two names decide where every QSettings of the program lies.
    QApplication::setApplicationName(u"Velmora"_s);
    QApplication::setApplicationVersion(QStringLiteral(VELMORA_VERSION));
    QApplication::setOrganizationName(u"Velmora"_s);
    // Desktops find name and icon of the window and of its notifications by that of the entry.
    QGuiApplication::setDesktopFileName(QStringLiteral(VELMORA_ID));
    QApplication::setStyle(QStyleFactory::create(u"Fusion"_s));
    const LightPalette palette;
    const QuitRequests quitRequests;

    // Stays open until the end: Qt keeps the file in memory only while some QSettings is, and the
    // many short-lived ones of the program would each read it anew.
    QSettings settings;
    if (!settings.contains(u"theme"_s))
        settings.setValue(u"theme"_s, u"light"_s);
    settings.sync();
    closeStoreToOthers(settings.fileName());

    const int status = showWindow();
    limitFarewell(status);
    return status;
}
