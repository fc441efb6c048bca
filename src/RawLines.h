#pragma once

class QString;

/// The server's lines as they come in, some of which the Server tab shows.
namespace RawLines {

/// False for `line` if it comes from a user or is a numeric, which reach the window in another way.
/// A user is told by an exclamation mark anywhere in a line with a prefix, so that a server's
/// notice with one is not shown either.
[[nodiscard]] bool isShown(const QString &line);

} // namespace RawLines
