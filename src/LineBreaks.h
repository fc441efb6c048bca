#pragma once

#include <QString>

/// Line breaks in text that must stay one line.
namespace LineBreaks {

/// Returns `text` with a space instead of each line break. CR LF is one line break.
///
/// The other line breaks are CR, LF, VT, FF, NEL, U+2028, U+2029, and U+FDD0 and U+FDD1, which
/// become line breaks in a `QTextDocument`.
[[nodiscard]] QString toSpaces(QString text);

} // namespace LineBreaks
