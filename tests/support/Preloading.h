#pragma once

#include <QStringList>

/// How many times as fast as ours the clock of `fastClockCommand` is.
constexpr int ClockSpeed = 20;

/// A command that runs another, with our environment and `library` in front of its own ones.
///
/// It also lets the library stand before the sanitizers' own, which else refuse to start, and keeps
/// them from looking for leaks, which is not theirs to do then.
[[nodiscard]] QStringList preloadCommand(const QString &library);

/// A command that runs another whose clocks and timers are `ClockSpeed` times as fast as ours.
///
/// We put the clock in place ourselves: the tool that comes with it stays between us and the
/// program.
[[nodiscard]] QStringList fastClockCommand();

/// Whether the machine has what `fastClockCommand` needs.
[[nodiscard]] bool hasFastClock();
