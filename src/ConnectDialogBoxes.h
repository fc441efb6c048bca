#pragma once

#include <QString>

class QWidget;

/// The message boxes of the connect dialog.
///
/// Each stands over `parent` and returns once the user has answered, out of an event loop of its
/// own; `parent` may be gone by then.
namespace ConnectDialogBoxes {

/// Says why the fields can't be connected to.
void showError(QWidget *parent, const QString &text);

/// Says that an address is not of the form "host:port".
void warnOfFormat(QWidget *parent);

/// Says that the server to be added is there already.
void tellOfDuplicate(QWidget *parent);

/// Says that an operation named by `title` needs a selected server.
void tellOfNoSelection(QWidget *parent, const QString &title);

/// Asks whether the server at `address` may go; false unless the user says yes. `theme` names the
/// box's colours, which are light for every name but "dark".
[[nodiscard]] bool confirmDeletion(QWidget *parent, const QString &address, const QString &theme);

} // namespace ConnectDialogBoxes
