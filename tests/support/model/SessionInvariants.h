#pragma once

#include <QString>

class MainWindowProbe;
class SessionModel;

/// What must hold of a window at any time when no event is under way.
namespace SessionInvariants {

/// The first thing in which the window and its own books do not fit together, whatever happened
/// before; empty if there is none.
[[nodiscard]] QString findViolation(const MainWindowProbe &probe);

/// The first thing in which the window is not what the rules make of all that happened to it; empty
/// if there is none.
[[nodiscard]] QString findDifference(const MainWindowProbe &probe, const SessionModel &model);

} // namespace SessionInvariants
