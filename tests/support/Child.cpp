#include "Child.h"

#include "Waiting.h"

#include <csignal>
#include <sys/prctl.h>

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
    return waitForStarted(Patience);
}

void Child::stop()
{
    if (state() == NotRunning)
        return;
    terminate();
    if (!waitForFinished(Patience)) {
        kill();
        waitForFinished(Patience);
    }
}
