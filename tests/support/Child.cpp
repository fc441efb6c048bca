#include "Child.h"

#include "Waiting.h"

#include <csignal>
#include <sys/prctl.h>

using namespace Qt::StringLiterals;

Child::Child(QObject *parent)
    : QProcess(parent)
{
    setStandardInputFile(nullDevice());
    setChildProcessModifier([] { prctl(PR_SET_PDEATHSIG, SIGTERM); });
}

Child::~Child()
{
    stop();
}

bool Child::launch(const QString &program, const QStringList &arguments)
{
    start(program, arguments);
    return waitForStarted(WaitTimeout);
}

QProcessEnvironment Child::privateEnvironment(const QString &home)
{
    QProcessEnvironment result = QProcessEnvironment::systemEnvironment();
    result.insert(u"HOME"_s, home);
    result.insert(u"XDG_CONFIG_HOME"_s, home + u"/config"_s);
    result.insert(u"XDG_CACHE_HOME"_s, home + u"/cache"_s);
    result.insert(u"XDG_RUNTIME_DIR"_s, home);
    result.insert(u"LC_ALL"_s, u"C.UTF-8"_s);
    // Without an address, programs would start a bus that never ends.
    result.insert(u"DBUS_SESSION_BUS_ADDRESS"_s, u"unix:path=/dev/null"_s);
    for (const char *name :
         {"DISPLAY", "WAYLAND_DISPLAY", "XAUTHORITY", "SESSION_MANAGER", "XDG_CURRENT_DESKTOP",
          "DESKTOP_SESSION", "KDE_FULL_SESSION", "GNOME_DESKTOP_SESSION_ID", "QT_QPA_PLATFORMTHEME",
          "QT_STYLE_OVERRIDE"}) {
        result.remove(QString::fromLatin1(name));
    }
    return result;
}

void Child::stop()
{
    if (state() == NotRunning)
        return;
    terminate();
    if (!waitForFinished(WaitTimeout)) {
        kill();
        waitForFinished(WaitTimeout);
    }
}
