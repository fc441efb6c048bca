#pragma once

#include <QString>

/// Decides which lines of other users need attention, and formats their notifications.
namespace Attention {

/// Returns true if `text` contains `nick` as a whole word, in any case; false for an empty nick.
///
/// Words end at "\b" of a regular expression. If `nick` begins or ends with another character, such
/// as a bracket, it only matches next to a word character.
[[nodiscard]] bool mentions(const QString &text, const QString &nick);

/// Returns `text`, or its first 252 code units and "..." if it has more than 255.
[[nodiscard]] QString shortened(const QString &text);

/// Returns true if another user's line in the tab `tabName` needs attention: in a channel if it
/// mentions `ownNick`, in a private conversation always, in other tabs never.
[[nodiscard]] bool isNeeded(const QString &tabName, const QString &text, const QString &ownNick);

struct Notification
{
    QString title;
    QString message;
};

/// Returns a notification with the sender, the shortened text and, if there is one, the channel.
[[nodiscard]] Notification notificationFor(const QString &tabName, const QString &text,
                                           const QString &sender);

} // namespace Attention
