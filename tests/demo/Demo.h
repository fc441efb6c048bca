#pragma once

#include <QString>

/// The demo: a server with users who talk, and the program connected to it, attended or unattended.
/// All child processes end with the demo, also when a signal ends it.
///
/// The functions block until the demo has ended and return the exit status for the process.
namespace Demo {

/// Makes SIGINT, SIGTERM and SIGHUP end a running demo and its child processes.
void endOnSignals();

/// Shows the program on the user's display until the user closes it.
[[nodiscard]] int runAttended();

/// Runs the program on a virtual screen and checks the conversation on the server and on the
/// screen. Saves screenshots of the connect dialog, the main window, the channel list and the
/// preferences, or of a failure, in `folder`, which is created if necessary.
[[nodiscard]] int runUnattended(const QString &folder);

} // namespace Demo
