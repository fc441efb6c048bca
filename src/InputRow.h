#pragma once

#include <QString>

class QLineEdit;
class QPushButton;
class QStackedWidget;

/// The row below the conversations: the line that the user types in and the button for emoji or,
/// while the channel list is on show, the box that searches it.
///
/// A record of the widgets, which it does not own: they belong to `stack`.
struct InputRow
{
    QStackedWidget *stack = nullptr;
    QLineEdit *line = nullptr;
    QPushButton *emojiButton = nullptr; ///< Hidden until somebody shows it.
    QLineEdit *listSearch = nullptr;

    /// Makes the row with the input line on show. `stack` has no parent: the caller owns it until a
    /// layout takes it.
    [[nodiscard]] static InputRow create();

    /// Shows in `stack`, which `create` has made, what belongs to the tab `tabName`.
    static void showPageFor(const QString &tabName, QStackedWidget &stack);

    /// What an empty input line says in the tab `tabName`.
    [[nodiscard]] static QString placeholderFor(const QString &tabName);
};
