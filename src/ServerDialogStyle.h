#pragma once

#include <QString>

class QDialog;

/// Style sheets of the connect dialog, its message boxes and the server edit dialog.
///
/// Every theme but "dark" gets the light colours.
namespace ServerDialogStyle {

/// Returns the style sheet of the connect dialog, which does not use the colours of ThemeManager.
[[nodiscard]] QString connectDialogSheet(const QString &theme);

/// Returns the style sheet of the OK button in the connect dialog's error box.
[[nodiscard]] QString errorButtonSheet();

/// Returns the style sheet of the message box that confirms a server's deletion.
///
/// Intended: its blue button confirms, and its red one declines.
[[nodiscard]] QString deletionBoxSheet(const QString &theme);

/// Returns the style sheet of the server edit dialog's combo boxes.
[[nodiscard]] QString comboBoxSheet(const QString &theme);

/// Returns the resource path of the combo boxes' arrow, an SVG image.
[[nodiscard]] QString comboArrowFile(const QString &theme);

/// Makes the window of `dialog` translucent for the theme "glass", and opaque for any other.
void setBackground(QDialog *dialog, const QString &theme);

} // namespace ServerDialogStyle
