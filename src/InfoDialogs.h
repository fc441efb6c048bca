#pragma once

#include <QString>

class QWidget;

/// The two informative windows behind the menu "About". Each blocks in an event loop of its own
/// until it is closed.
namespace InfoDialogs {

/// What the program is, its version and its home. White in every theme.
void showAbout(QWidget *parent);

/// The basic commands of IRC, in the look of `theme`.
///
/// Some of them are not commands of the input line, and it has others; the table is meant as an
/// introduction to what IRC servers and their users talk about.
void showHelp(QWidget *parent, const QString &theme);

} // namespace InfoDialogs
