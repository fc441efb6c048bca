#include "Child.h"

#include <csignal>
#include <sys/prctl.h>

namespace {

constexpr int StartPatience = 10000; // In ms.
constexpr int StopPatience = 5000;   // In ms.

} // namespace

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
    return waitForStarted(StartPatience);
}

void Child::stop()
{
    if (state() == NotRunning)
        return;
    terminate();
    if (!waitForFinished(StopPatience)) {
        kill();
        waitForFinished(StopPatience);
    }
}
