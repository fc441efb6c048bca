#pragma once

#include <QString>

/// Keeps an idle machine awake. Each platform has its own source file.
namespace SleepInhibitor {

/// Prevents sleep on idle and returns an identifier for `release`, or 0 if the platform has no
/// service for it.
///
/// `reason` is a short text that the system may show. Never blocks: the request may be pending when
/// this returns. Errors are not reported.
[[nodiscard]] quint32 acquire(const QString &reason);

/// Releases the inhibition that `assertion` identifies. Does nothing for any other number.
void release(quint32 assertion);

} // namespace SleepInhibitor
