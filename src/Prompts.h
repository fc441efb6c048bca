#pragma once

#include <QString>

#include <optional>

class QWidget;

/// Modal dialogs that ask for one line of text.
///
/// Each blocks in a nested event loop and returns the trimmed text, which may be empty, or
/// `std::nullopt` if the user cancelled.
namespace Prompts {

/// Asks for an away message.
[[nodiscard]] std::optional<QString> askAwayMessage(QWidget *parent, const QString &theme);

/// Asks for a new nick, starting from `current`.
[[nodiscard]] std::optional<QString> askNickname(QWidget *parent, const QString &theme,
                                                 const QString &current);

} // namespace Prompts
