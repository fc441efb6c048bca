#pragma once

#include <QString>

#include <functional>
#include <optional>

/// Measures and prints the figures of the benchmarks.
namespace Report {

/// Returns the processor time that this process has used so far, in milliseconds.
double processorTime();

/// Returns the median processor time of `count` calls of `work`, in milliseconds.
double median(int count, const std::function<void()> &work);

/// Runs the event loop until it has nothing left to do. Returns the duration of its longest
/// iteration, in milliseconds.
double settle();

/// Returns the resident memory of a process in kilobytes; 0 is this process.
double residentMemory(qint64 process = 0);

struct Figure
{
    QString work;
    QString unit;
    double value = 0;
    /// The value must stay below this limit, if there is one.
    std::optional<double> limit;
    /// Value of the same work with Qt's own document layout or widget, if it was measured.
    std::optional<double> stock;
};

/// Prints one line of the table.
void print(const Figure &figure);

} // namespace Report
