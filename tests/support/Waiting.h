#pragma once

#include <functional>

/// Runs the event loop until `holds` does, for `patience` ms at most; false if it never did.
///
/// `QTest::qWaitFor` sleeps for 10 ms between two looks, this wakes with the next event. What
/// `holds` looks at must therefore change by events of this process.
[[nodiscard]] bool waitUntil(const std::function<bool()> &holds, int patience);
