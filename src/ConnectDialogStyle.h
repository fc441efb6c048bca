#pragma once

#include <QString>

/// The looks of the connect dialog, which has colours of its own.
namespace ConnectDialogStyle {

/// Style sheet of the dialog. Every name of a theme but "dark" gives the light colours.
[[nodiscard]] QString dialogSheet(const QString &theme);

} // namespace ConnectDialogStyle
