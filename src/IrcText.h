#pragma once

#include <QColor>
#include <QString>

#include <array>

class QTextCharFormat;
class QTextCursor;

/// IRC text on its way to the screen.
///
/// There are two ways, and they treat the same text differently. A chat row knows links only: its
/// control codes stay characters. A topic knows formatting codes and links, and becomes HTML.
namespace IrcText {

/// The sixteen IRC colours, by the number that a colour code carries.
[[nodiscard]] const std::array<QColor, 16> &colors();

/// The one with this number, which must be below sixteen.
const QColor &color(int number);

/// Number of black or of white, whichever can be read on a ground of this colour.
[[nodiscard]] int legibleOn(const QColor &color);

/// Writes `text` at `cursor`, with web and mail addresses as anchors.
///
/// What lies outside a link carries `base`; a link carries `base` as an underlined anchor in a blue
/// of its own, with "mailto:" in front of the target of a mail address. An address that overlaps
/// a URL belongs to that URL. The cursor ends behind the text, of which no character is changed or
/// left out.
void insertWithLinks(QTextCursor &cursor, const QString &text, const QTextCharFormat &base);

/// `topic`, raw as the server sent it, as HTML for a label with rich text.
///
/// Bold (U+0002), italic (U+001D), underline (U+001F) and colour (U+0003) become tags, each where
/// its code stands, without regard to nesting; other control characters pass through. Then web and
/// mail addresses become anchors whose target is the matched text itself, without "mailto:".
/// Whatever is open at the end is closed; a colour number above 15 counts as 15.
///
/// The anchors are laid over the finished HTML, and two things follow which readers of topics have
/// come to know. A code right behind a URL stands as a tag in the URL's target and text. A mail
/// address inside a URL becomes a second anchor, and the rest of the topic is repeated before it,
/// until there are a million characters of HTML: from then on such an address stays text.
[[nodiscard]] QString toHtml(const QString &topic);

} // namespace IrcText
