#pragma once

#include "Announcer.h"

#include <QAccessible>
#include <QObject>

class ChatView;
class QKeyEvent;

/// Serves screen readers in a `ChatView`: reports new rows and the focused link, and lets the
/// keyboard move the caret.
///
/// Without an active screen reader nothing is reported, and keys are the view's.
class ChatAccessibility final : public QObject, private QAccessible::ActivationObserver
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ChatAccessibility)

public:
    /// Becomes a child of `chatView`, which has its `ChatLayout` already.
    explicit ChatAccessibility(ChatView &chatView);
    ~ChatAccessibility() override;

    /// True while a user of a screen reader has the caret at a row of the focused view.
    [[nodiscard]] bool isReading() const;

    /// Reports the focus of the link that is selected, or of the view if none is any more.
    void reportFocus();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void accessibilityActiveChanged(bool active) override;
    void reportRows(int first, int count);
    bool moveCaret(const QKeyEvent &key);

    ChatView &view;
    Announcer announcer;
    bool isActive = QAccessible::isActive();
    // Index of the link that was last reported as focused; -1 if the view itself was.
    int reportedLink = -1;
};
