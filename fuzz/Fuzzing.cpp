#include "Fuzzing.h"

#include "TemporaryStore.h"

#include <QApplication>
#include <QHashSeed>

#include <cstdio>
#include <cstdlib>

namespace {

void discardMessage(QtMsgType /*type*/, const QMessageLogContext & /*context*/,
                    const QString & /*text*/)
{
}

} // namespace

// Fontconfig never frees its caches.
extern "C" const char *__lsan_default_suppressions();
extern "C" const char *__lsan_default_suppressions()
{
    return "leak:libfontconfig\n";
}

namespace Fuzzing {

void start()
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("LC_ALL", "C.UTF-8");
    qputenv("DBUS_SESSION_BUS_ADDRESS", "disabled:");
    qputenv("DBUS_SYSTEM_BUS_ADDRESS", "disabled:");
    qInstallMessageHandler(discardMessage);
    // Makes failures reproducible.
    QHashSeed::setDeterministicGlobalSeed();

    static int argc = 1;
    static char name[] = "fuzzer";
    static char *argv[] = {name, nullptr};
    // Never deleted: libFuzzer exits without unwinding the stack.
    static const auto *const application = new QApplication(argc, argv);
    static_cast<void>(application);
    static const TemporaryStore store;
}

void require(bool condition, const char *rule)
{
    if (condition)
        return;
    std::fprintf(stderr, "Check failed: %s\n", rule);
    std::abort();
}

QByteArray bytesOf(const std::uint8_t *data, std::size_t size)
{
    return QByteArray(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
}

} // namespace Fuzzing
