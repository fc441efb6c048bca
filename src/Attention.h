#pragma once

#include <QString>

/// What a line from somebody else has to say to deserve attention, and how it is told.
namespace Attention {

/// True if `text` has `nick` in it as a whole word, in any case. An empty nick is never mentioned.
///
/// A word's ends are a regular expression's "\b". A nick that begins or ends in a character outside
/// the word class, such as a bracket, is thus mentioned only where a word character stands beside
/// it.
[[nodiscard]] bool mentions(const QString &text, const QString &nick);

/// `text`, or its first 252 code units and "..." if it has more than 255.
[[nodiscard]] QString shortened(const QString &text);

/// True if `text` from somebody else in the tab `tabName` deserves attention: in a channel what
/// mentions `ownNick`, in a private conversation everything, elsewhere nothing.
[[nodiscard]] bool isDeserved(const QString &tabName, const QString &text, const QString &ownNick);

/// What a notification says.
struct Notice
{
    QString title;
    QString message;
};

/// Names the channel, where there is one, and the sender; the text is shortened.
[[nodiscard]] Notice noticeOf(const QString &tabName, const QString &text, const QString &sender);

} // namespace Attention
