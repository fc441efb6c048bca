#include "SleepInhibitor.h"

namespace SleepInhibitor {

quint32 acquire(const QString & /*reason*/)
{
    return 0;
}

void release(quint32 /*assertion*/) {}

} // namespace SleepInhibitor
