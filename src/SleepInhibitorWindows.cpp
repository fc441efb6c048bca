#include "SleepInhibitor.h"

#include <windows.h>

namespace SleepInhibitor {

// The state is per thread and has no reference count; only one session uses it at a time.
quint32 acquire(const QString & /*reason*/)
{
    return SetThreadExecutionState(ES_CONTINUOUS | ES_SYSTEM_REQUIRED) != 0 ? 1 : 0;
}

void release(quint32 /*assertion*/)
{
    SetThreadExecutionState(ES_CONTINUOUS);
}

} // namespace SleepInhibitor
