#pragma once

#include "Announcer.h"

#include <QAccessible>
#include <QObject>

class QKeyEvent;
class QTextBrowser;

/// While a screen reader is active, notifies it about new rows and the focused link of a
/// conversation, and lets the keyboard move the caret.
class ChatAccessibility final : public QObject, private QAccessible::ActivationObserver
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ChatAccessibility)

public:
    /// `chatView` becomes the parent. Its document must have a `ChatLayout`.
    explicit ChatAccessibility(QTextBrowser &chatView);
    ~ChatAccessibility() override;

    /// Returns true while a screen reader is active and the focused view's caret is in a row.
    [[nodiscard]] bool isReading() const;

    /// Notifies about the focus of the selected link, or of the view when no link is selected.
    void reportFocus();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void accessibilityActiveChanged(bool active) override;
    void reportRows(int first, int count);
    bool moveCaret(const QKeyEvent &key);

    QTextBrowser &view;
    Announcer announcer;
    bool isActive = QAccessible::isActive();
    // Index of the link last reported as focused; -1 for the view itself.
    int reportedLink = -1;
};
