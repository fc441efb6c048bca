#pragma once

#include <QString>

class QWidget;

/// The dialogs of the menu "About". Each blocks in a nested event loop until it is closed.
namespace InfoDialogs {

/// Shows what the program is, its version and its web site. White in every theme.
void showAbout(QWidget *parent);

/// Shows the basic IRC commands.
///
/// Intended: the table differs from the commands of the input line, since it introduces IRC as
/// such.
void showHelp(QWidget *parent, const QString &theme);

} // namespace InfoDialogs
