#include "Report.h"

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QTextStream>

#include <algorithm>
#include <ctime>
#include <unistd.h>
#include <vector>

using namespace Qt::StringLiterals;

double Report::processorTime()
{
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return double(time.tv_sec) * 1e3 + double(time.tv_nsec) / 1e6;
}

double Report::median(int count, const std::function<void()> &work)
{
    std::vector<double> times;
    for (int i = 0; i < count; ++i) {
        const double start = processorTime();
        work();
        times.push_back(processorTime() - start);
    }
    std::sort(times.begin(), times.end());
    return times[times.size() / 2];
}

double Report::settle()
{
    double longest = 0;
    QElapsedTimer iteration;
    // Work done in idle time restarts a timer without delay. A few empty iterations in a row mean
    // that it is finished.
    for (int empty = 0; empty < 5;) {
        iteration.start();
        const bool isBusy =
                QCoreApplication::eventDispatcher()->processEvents(QEventLoop::AllEvents);
        longest = std::max(longest, double(iteration.nsecsElapsed()) / 1e6);
        empty = isBusy ? 0 : empty + 1;
    }
    return longest;
}

double Report::residentMemory(qint64 process)
{
    QFile file(process == 0 ? u"/proc/self/statm"_s : u"/proc/%1/statm"_s.arg(process));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    const double pages = file.readAll().split(' ').value(1).toDouble();
    return pages * double(sysconf(_SC_PAGESIZE)) / 1024;
}

void Report::print(const Figure &figure)
{
    const auto number = [](std::optional<double> value) {
        return value ? QString::number(*value, 'f',
                                       *value < 10    ? 2
                                       : *value < 100 ? 1
                                                      : 0)
                     : u"-"_s;
    };
    QString verdict;
    if (figure.limit)
        verdict = figure.value < *figure.limit ? u"yes"_s : u"NO"_s;
    QString ratio;
    if (figure.stock)
        ratio = u"%1x"_s.arg(number(*figure.stock / std::max(figure.value, 1e-9)));
    QTextStream(stdout) << figure.work.leftJustified(58) << number(figure.value).rightJustified(9)
                        << ' ' << figure.unit.leftJustified(4)
                        << number(figure.limit).rightJustified(8) << verdict.rightJustified(5)
                        << number(figure.stock).rightJustified(10) << ratio.rightJustified(10)
                        << Qt::endl;
}
