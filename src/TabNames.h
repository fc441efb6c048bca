#pragma once

#include <QString>

/// The names of tabs, each of which tells by itself what its tab is.
///
/// A name that begins with "#" is a channel, and any other but the two below a private
/// conversation; letters' case counts. A nick can be called like one of the two: a conversation
/// with such a person then shares the tab of that name.
namespace TabNames {

inline const QString Server = QStringLiteral("Server"); ///< What the server says.
inline const QString List = QStringLiteral("List");     ///< The server's channels.

/// True for "#" alone, too, and false for any other sign that a server may have for channels.
[[nodiscard]] bool isChannel(const QString &name);

[[nodiscard]] bool isPrivate(const QString &name);

/// `word` with a "#" in front if it has none.
[[nodiscard]] QString asChannel(const QString &word);

} // namespace TabNames
