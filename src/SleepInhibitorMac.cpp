#include "SleepInhibitor.h"

#include <IOKit/pwr_mgt/IOPMLib.h>

namespace SleepInhibitor {

quint32 acquire(const QString &reason)
{
    IOPMAssertionID assertion = 0;
    CFStringRef name = reason.toCFString();
    IOPMAssertionCreateWithName(kIOPMAssertionTypePreventUserIdleSystemSleep, kIOPMAssertionLevelOn,
                                name, &assertion);
    CFRelease(name);
    return assertion;
}

void release(quint32 assertion)
{
    IOPMAssertionRelease(assertion);
}

} // namespace SleepInhibitor
