#pragma once

#include <QFont>

namespace EmojiFont {

/// Returns `font` with the family of an installed colour emoji font, or unchanged if there is none.
///
/// For texts that consist of an emoji. Qt may otherwise choose a font such as DejaVu Sans, which
/// draws many emojis as outlines.
[[nodiscard]] QFont colored(QFont font);

} // namespace EmojiFont
