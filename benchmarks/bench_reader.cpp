// Measures the cost of a screen reader: rows into the current tab without accessibility, with it,
// and with a client that listens on the accessibility bus. Runs `bench_chat` in a new process for
// each figure and needs a screen.

#include "AccessibilityBus.h"
#include "Report.h"

#include <QDir>
#include <QGuiApplication>
#include <QProcess>

#include <algorithm>
#include <array>
#include <cstdlib>

using namespace Qt::StringLiterals;

namespace {

constexpr int Rounds = 3;

// As multiples of the processor time without accessibility.
constexpr double ReadLimit = 1.2;
constexpr double LineLimit = 1.5;

// Returns the figure that `bench_chat` prints for `part`; negative if it fails.
double measure(const QStringList &wrapper, const QStringList &part)
{
    const QString program = QDir(QCoreApplication::applicationDirPath()).filePath(u"bench_chat"_s);
    const QStringList command = wrapper + QStringList{program} + part;
    QProcess process;
    process.start(command.first(), command.mid(1));
    // An event loop, so that the listener receives events meanwhile.
    QEventLoop loop;
    QObject::connect(&process, &QProcess::finished, &loop, &QEventLoop::quit);
    loop.exec();
    bool isNumber = false;
    const double value = process.readAllStandardOutput().trimmed().toDouble(&isNumber);
    return isNumber ? value : -1;
}

// Returns the medians. Alternates between the wrappers, so that other load affects all alike.
std::array<double, 3> measureAlternately(const std::array<QStringList, 3> &wrappers,
                                         const QStringList &part)
{
    std::array<QList<double>, 3> values;
    for (int round = 0; round < Rounds; ++round) {
        for (std::size_t i = 0; i < wrappers.size(); ++i)
            values[i].append(measure(wrappers[i], part));
    }
    std::array<double, 3> medians{};
    for (std::size_t i = 0; i < medians.size(); ++i) {
        std::sort(values[i].begin(), values[i].end());
        medians[i] = values[i].at(Rounds / 2);
    }
    return medians;
}

void print(const QString &work, double limit, const std::array<double, 3> &values)
{
    Report::print({.work = work + u", no screen reader"_s,
                   .unit = u"ms"_s,
                   .value = values[0],
                   .limit = {},
                   .stock = {}});
    const std::array names{u"accessibility on"_s, u"with a listener"_s};
    for (std::size_t i = 0; i < names.size(); ++i) {
        Report::print({.work = work + u", "_s + names[i],
                       .unit = u"x"_s,
                       .value = values[i + 1] / values[0],
                       .limit = limit,
                       .stock = {}});
    }
}

} // namespace

int main(int argc, char *argv[])
{
    qputenv("QT_LOGGING_RULES", "qt.qpa.*=false");
    const QByteArray platform = qgetenv("QT_QPA_PLATFORM");
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication application(argc, argv);
    qputenv("QT_QPA_PLATFORM", platform);
    AccessibilityBus withoutListener;
    AccessibilityBus withListener;
    if (!withoutListener.start() || !withListener.start() || !withListener.listen())
        return EXIT_FAILURE;
    const std::array<QStringList, 3> wrappers{
            QStringList{u"env"_s, u"DBUS_SESSION_BUS_ADDRESS=unix:path=/nonexistent"_s},
            withoutListener.wrapper(), withListener.wrapper()};
    for (const int rows : {1000, 5000, 10000, 20000, 50000}) {
        print(u"one line, %1 rows"_s.arg(rows), LineLimit,
              measureAlternately(wrappers, {u"line"_s, QString::number(rows)}));
        // Without events, nothing was measured.
        if (withListener.events().isEmpty())
            return EXIT_FAILURE;
        withListener.clearEvents();
    }
    print(u"10000 lines in one read"_s, ReadLimit, measureAlternately(wrappers, {u"read"_s}));
    return EXIT_SUCCESS;
}
