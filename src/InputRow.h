#pragma once

#include <QString>

class QLineEdit;
class QPushButton;
class QStackedWidget;

/// The widgets below the conversations: the input line and the emoji button or, while the List tab
/// is current, the search box.
///
/// `stack` owns the other widgets.
struct InputRow
{
    QStackedWidget *stack = nullptr;
    QLineEdit *line = nullptr;
    QPushButton *emojiButton = nullptr; ///< Hidden at first.
    QLineEdit *listSearch = nullptr;

    /// Creates the widgets, with the input line visible. `stack` has no parent: the caller owns it
    /// until it is added to a layout.
    [[nodiscard]] static InputRow create();

    /// Shows the page of `stack` for the tab `tabName`.
    static void showPageFor(const QString &tabName, QStackedWidget &stack);

    /// Returns the input line's placeholder text in the tab `tabName`.
    [[nodiscard]] static QString placeholderFor(const QString &tabName);
};
