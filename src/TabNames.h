#pragma once

#include <QString>

/// Tab names. A tab's name alone determines its kind.
///
/// Channels are recognised by `ChannelNames::isChannel`. Any other name except the two below is a
/// private conversation. Names are case-sensitive. A user's nick can be "Server" or "List": the
/// conversation with that user then shares the tab of that name.
namespace TabNames {

inline const QString Server = QStringLiteral("Server"); ///< Messages from the server.
inline const QString List = QStringLiteral("List");     ///< The server's channel list.

[[nodiscard]] bool isPrivate(const QString &name);

} // namespace TabNames
