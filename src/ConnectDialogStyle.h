#pragma once

#include <QString>

class QDialog;

/// The looks of the connect dialog, which has colours of its own, and of the form that it opens.
namespace ConnectDialogStyle {

/// Style sheet of the dialog. Every name of a theme but "dark" gives the light colours.
[[nodiscard]] QString dialogSheet(const QString &theme);

/// Makes the window of `dialog` translucent for the theme "glass", and opaque for every other.
void setBackground(QDialog *dialog, const QString &theme);

} // namespace ConnectDialogStyle
