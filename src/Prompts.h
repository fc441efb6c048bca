#pragma once

#include <QString>

#include <optional>

class QWidget;

/// Small modal dialogs that ask for one line of text, in the look of the theme.
///
/// Each blocks in an event loop of its own until the user has answered. The answer is trimmed and
/// may be empty; there is none if the user cancelled.
namespace Prompts {

/// Asks why the user is away.
[[nodiscard]] std::optional<QString> askAwayMessage(QWidget *parent, const QString &theme);

/// Asks for a new nick, starting from `current`.
[[nodiscard]] std::optional<QString> askNickname(QWidget *parent, const QString &theme,
                                                 const QString &current);

} // namespace Prompts
