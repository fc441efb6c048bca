#pragma once

#include <QString>

/// Line breaks in text that must stay one line.
namespace LineBreaks {

/// Returns `text` with a space instead of each CR LF, CR, LF, VT, FF, NEL, U+2028 and U+2029, and
/// of each U+FDD0 and U+FDD1, which become line breaks in a `QTextDocument`.
[[nodiscard]] QString toSpaces(QString text);

} // namespace LineBreaks
