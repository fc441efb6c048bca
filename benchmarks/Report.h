#pragma once

#include <QString>

#include <functional>
#include <optional>

/// Figures of the benchmarks: how they are taken and how they are printed.
namespace Report {

/// Processor time that this process has used so far, in milliseconds.
double processorTime();

/// Median processor time of `count` calls, in milliseconds.
double median(int count, const std::function<void()> &work);

/// Lets the event loop run until it has nothing left to do. Returns the longest time, in
/// milliseconds, that a single pass took.
double settle();

/// Resident memory of a process in kilobytes; 0 stands for this one.
double residentMemory(qint64 process = 0);

/// One figure of the table.
struct Figure
{
    QString work;
    QString unit;
    double value = 0;
    /// What the value must stay below, if anything.
    std::optional<double> limit;
    /// The same work done with Qt's own document layout or widget, if that was measured.
    std::optional<double> stock;
};

/// Prints one line of the table.
void print(const Figure &figure);

} // namespace Report
