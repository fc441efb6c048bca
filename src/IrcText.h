#pragma once

#include <QColor>
#include <QString>

#include <array>

class QTextCharFormat;
class QTextCursor;

/// Converts IRC text to rich text.
///
/// Intended: in rows of a conversation, control codes stay characters and only links are formatted.
/// Topics become HTML with formatting codes and links.
namespace IrcText {

/// Returns the IRC colours, indexed by the number in a colour code.
[[nodiscard]] const std::array<QColor, 16> &colors();

/// Returns the colour `number`, which must be below 16.
const QColor &color(int number);

/// Returns the number of black or white, whichever is legible on this background colour.
[[nodiscard]] int legibleOn(const QColor &color);

/// Inserts `text` at `cursor`, with URLs and mail addresses as anchors.
///
/// Text outside links has the format `base`. Links are also blue and underlined. The target of a
/// mail address starts with "mailto:". A mail address that overlaps a URL is not a link. No
/// character is changed or left out, and the cursor is after the text afterwards.
void insertWithLinks(QTextCursor &cursor, const QString &text, const QTextCharFormat &base);

/// Returns `topic`, as received from the server, as HTML for a rich-text label.
///
/// Bold (U+0002), italic (U+001D), underline (U+001F) and colour (U+0003) become tags where the
/// codes are, even if the tags are not nested. Other control characters are kept. A colour number
/// above 15 counts as 15. Tags that are open at the end are closed. Then URLs and mail addresses
/// become anchors whose target is the matched text itself, without "mailto:".
///
/// Intended: anchors are found in the finished HTML, with two effects. The tag of a code directly
/// after a URL is part of the URL's target and text. A mail address inside a URL becomes a second
/// anchor, and the rest of the topic is written before and after it. Once the HTML has a million
/// characters, such an address stays text.
[[nodiscard]] QString toHtml(const QString &topic);

} // namespace IrcText
