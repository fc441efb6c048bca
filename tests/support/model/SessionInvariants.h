#pragma once

#include <QString>

class MainWindowProbe;
class SessionModel;

/// Conditions that hold in a window whenever no event is being handled.
namespace SessionInvariants {

/// Returns the first contradiction between the window's widgets and its members; empty if there is
/// none.
[[nodiscard]] QString findViolation(const MainWindowProbe &probe);

/// Returns the first difference between the window and the model; empty if there is none.
[[nodiscard]] QString findDifference(const MainWindowProbe &probe, const SessionModel &model);

} // namespace SessionInvariants
