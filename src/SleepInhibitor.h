#pragma once

#include <QString>

/// Keeps an idle machine awake; each platform has a source of its own.
namespace SleepInhibitor {

/// Stops the machine from idling to sleep, and gives the number by which to let it sleep again.
///
/// `reason` is a short text that the system may show to the user. Nothing waits for the system:
/// where its answer takes time, the number is given at once and stands for the asking. 0 means that
/// nothing is held, since there is no service to ask. No failure is ever reported.
[[nodiscard]] quint32 acquire(const QString &reason);

/// Lets the machine sleep again, as far as the taking that gave `assertion` stood against it.
/// A number that is not held does nothing.
void release(quint32 assertion);

} // namespace SleepInhibitor
