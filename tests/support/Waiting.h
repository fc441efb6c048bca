#pragma once

#include <functional>

/// The timeout in ms of every wait for something that must happen.
///
/// It is long enough for builds with sanitizers on a busy machine. A wait that succeeds ends at
/// once, so this costs nothing. Never use it to show that something does not happen.
constexpr int WaitTimeout = 60'000;

/// Runs the event loop until `condition` returns true. Returns false after `timeout` ms.
///
/// `QTest::qWaitFor` sleeps 10 ms between two checks; this checks after each event. The condition
/// must therefore change by events of this process.
[[nodiscard]] bool waitUntil(const std::function<bool()> &condition, int timeout = WaitTimeout);

/// Runs the event loop until `condition`, checked every 100 ms, returns true. Returns false after
/// `WaitTimeout`.
///
/// It is for conditions outside of this process that are expensive to check.
[[nodiscard]] bool pollUntil(const std::function<bool()> &condition);
