#pragma once

#include <QFont>

namespace EmojiFont {

/// Returns `font` with the family of a colour emoji font, or as it is where none is installed.
///
/// For texts that are an emoji. Left to itself Qt may choose another font with the same characters:
/// DejaVu Sans draws many of them as lines.
[[nodiscard]] QFont colored(QFont font);

} // namespace EmojiFont
