#pragma once

#include <QString>

/// What a screen reader says for an emoji.
namespace EmojiNames {

/// The name of one of the emojis that the picker offers, with its variation selector if it has one;
/// empty for any other text.
[[nodiscard]] QString nameOf(const QString &emoji);

} // namespace EmojiNames
