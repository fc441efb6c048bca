#pragma once

class IRCConnection;
class QString;

/// Understands the lines that the window needs (RFC 2812, section 2.3.1, read tolerantly).
///
/// One flat chain of comparisons on the command word. A numeric that the chain does not know goes
/// on as text for the server's tab; any other word that it does not know is dropped, and so is
/// every line that is too short for what it claims to be.
class IRCParser final
{
public:
    IRCParser() = delete;

    /// Turns one received line, without its CR LF, into signals of or calls on `connection`.
    ///
    /// Slots connected to those signals run before this returns, and may send. Nothing in `line`
    /// can make it fail: malformed input is dropped silently.
    static void parseLine(const QString &line, IRCConnection *connection);
};
