#pragma once

#include <functional>

/// In ms, for each thing that is awaited because it will come: a process, an answer, a picture, the
/// end of a long computation.
///
/// A wait that succeeds is over when the thing is there, so this costs nothing. It is long enough
/// for builds with sanitizers on a machine that is busy with other things. Never for what is not to
/// come.
constexpr int WaitTimeout = 60'000;

/// Runs the event loop until `holds` does, for `patience` ms at most; false if it never did.
///
/// `QTest::qWaitFor` sleeps for 10 ms between two looks, this wakes with the next event. What
/// `holds` looks at must therefore change by events of this process.
[[nodiscard]] bool waitUntil(const std::function<bool()> &holds, int patience = WaitTimeout);
