#include "Preloading.h"

using namespace Qt::StringLiterals;

QStringList preloadCommand(const QString &library)
{
    return {u"env"_s, u"LD_PRELOAD="_s + library,
            u"ASAN_OPTIONS=%1:verify_asan_link_order=0:detect_leaks=0"_s.arg(
                    qEnvironmentVariable("ASAN_OPTIONS"))};
}

QStringList fastClockCommand()
{
    return preloadCommand(u"/usr/$LIB/faketime/libfaketimeMT.so.1"_s)
           + QStringList{u"FAKETIME=+0 x%1"_s.arg(ClockSpeed), u"NO_FAKE_STAT=1"_s};
}
