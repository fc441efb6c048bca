#pragma once

#include <QString>
#include <QStringList>

/// Channel names. "#" is the only channel prefix that the client knows.
namespace ChannelNames {

/// Returns true if `name` begins with "#", also for "#" alone. Any other channel prefix of RFC
/// 2812, such as "&", makes no channel.
[[nodiscard]] bool isChannel(const QString &name);

/// Returns `word` with a leading "#" if it has none.
[[nodiscard]] QString withPrefix(const QString &word);

/// Returns the channels that a user typed, separated by any mix of commas and white space.
///
/// Each gets a leading "#" if it has none, so "&local" becomes "#&local".
[[nodiscard]] QStringList parseChannels(const QString &text);

} // namespace ChannelNames
