#include "SleepInhibitor.h"

#include <windows.h>

namespace SleepInhibitor {

// The state belongs to the calling thread and is not counted; one session holds it at a time.
quint32 acquire(const QString & /*reason*/)
{
    return SetThreadExecutionState(ES_CONTINUOUS | ES_SYSTEM_REQUIRED) != 0 ? 1 : 0;
}

void release(quint32 /*assertion*/)
{
    SetThreadExecutionState(ES_CONTINUOUS);
}

} // namespace SleepInhibitor
