#pragma once

#include <QStringList>

/// How many times faster than real time the clock of `fastClockCommand` runs.
constexpr int ClockSpeed = 20;

/// Returns a command prefix that preloads `library` into the program that follows it.
///
/// AddressSanitizer refuses to start when another library is loaded before it, so its link order
/// check is turned off. So is its leak check, whose results are unreliable then.
[[nodiscard]] QStringList preloadCommand(const QString &library);

/// Returns a command prefix that makes the clocks and timers of the program that follows it run
/// `ClockSpeed` times faster than real time.
///
/// Preloads libfaketime directly: its tool `faketime` would stay the parent of the program.
[[nodiscard]] QStringList fastClockCommand();
