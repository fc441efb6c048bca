#pragma once

#include <QString>

/// The demo in its two forms: a server with people who talk, and the program connected to it.
/// What is started here ends here, also when the demo itself is told to end.
///
/// Each function takes as long as the demo does and gives back the exit status of the process.
namespace Demo {

/// Lets SIGINT, SIGTERM and SIGHUP end a running demo in an orderly way.
void endOnSignals();

/// Shows the program on the display of the person who started it, until they close it.
[[nodiscard]] int runAttended();

/// Drives the program on a screen in memory until the conversation was seen on the wire and on
/// the screen, and leaves pictures in `folder`, which is made if it is not there: of the connect
/// dialog, the main window, the channel list and the preferences, or of a failure.
[[nodiscard]] int runUnattended(const QString &folder);

} // namespace Demo
