#pragma once

class IRCConnection;
class QString;

/// Parses the messages that the window needs (RFC 2812, section 2.3.1), and tolerates malformed
/// ones.
///
/// Unknown numerics become text for the server's tab. Any other unknown command is dropped, as is a
/// message with too few parameters.
class IRCParser final
{
public:
    IRCParser() = delete;

    /// Parses one received line, without its CR LF, and emits signals of `connection` or calls its
    /// functions. Malformed input is dropped silently.
    ///
    /// The connected slots run before this returns, and may send.
    static void parseLine(const QString &line, IRCConnection *connection);
};
