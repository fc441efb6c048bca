#pragma once

#include <QString>

/// Line breaks in text that must stay one line.
namespace LineBreaks {

/// Returns `text` with a space in place of each line break. CR LF is one break.
///
/// Besides CR and LF, line breaks are VT, FF, NEL, U+2028 and U+2029, and the two noncharacters
/// that become line breaks in a `QTextDocument`.
[[nodiscard]] QString toSpaces(QString text);

} // namespace LineBreaks
