#pragma once

#include "ChatText.h"

#include <QAccessibleWidget>
#include <QHash>

class ChatLayout;
class QTextBrowser;

/// The accessible interface of a view with a `ChatLayout`: a document with the text of `ChatText`,
/// whose children are the links. Offsets are those of `ChatText`.
///
/// Qt's interface of a `QTextBrowser` has the role of a label, returns the text without line
/// breaks, and reads the geometry from `QTextBlock::layout()`, which `ChatLayout` does not keep.
class ChatViewAccessible final : public QAccessibleWidget, public QAccessibleTextInterface
{
    Q_DISABLE_COPY_MOVE(ChatViewAccessible)

public:
    explicit ChatViewAccessible(QTextBrowser &view);
    ~ChatViewAccessible() override;

    /// Makes Qt use this interface. Further calls have no effect.
    static void install();

    /// Returns the interface of `view`; null if another factory has replaced this one.
    [[nodiscard]] static ChatViewAccessible *of(QTextBrowser &view);

    [[nodiscard]] const ChatText &chatText() const { return conversation; }

    /// Returns the index of the link that is selected, for example by Tab; -1 if none is.
    [[nodiscard]] int focusedLink() const;

    /// Opens the link, like Return does.
    void openLink(int index);

    /// Returns the rectangle on the screen; empty for an empty range.
    [[nodiscard]] QRect rangeRect(ChatText::Range range) const;

    void *interface_cast(QAccessible::InterfaceType type) override;
    [[nodiscard]] QAccessible::State state() const override;

    [[nodiscard]] int childCount() const override;
    [[nodiscard]] QAccessibleInterface *child(int index) const override;
    [[nodiscard]] QAccessibleInterface *childAt(int x, int y) const override;
    [[nodiscard]] int indexOfChild(const QAccessibleInterface *child) const override;
    [[nodiscard]] QAccessibleInterface *focusChild() const override;

    using QAccessibleWidget::text;
    [[nodiscard]] QString text(int startOffset, int endOffset) const override;
    [[nodiscard]] int characterCount() const override;
    QString textAtOffset(int offset, QAccessible::TextBoundaryType boundary, int *startOffset,
                         int *endOffset) const override;
    QString textBeforeOffset(int offset, QAccessible::TextBoundaryType boundary, int *startOffset,
                             int *endOffset) const override;
    QString textAfterOffset(int offset, QAccessible::TextBoundaryType boundary, int *startOffset,
                            int *endOffset) const override;
    QString attributes(int offset, int *startOffset, int *endOffset) const override;

    [[nodiscard]] int cursorPosition() const override;
    void setCursorPosition(int position) override;
    void selection(int selectionIndex, int *startOffset, int *endOffset) const override;
    [[nodiscard]] int selectionCount() const override;
    void addSelection(int startOffset, int endOffset) override;
    void removeSelection(int selectionIndex) override;
    void setSelection(int selectionIndex, int startOffset, int endOffset) override;

    [[nodiscard]] QRect characterRect(int offset) const override;
    [[nodiscard]] int offsetAtPoint(const QPoint &point) const override;
    void scrollToSubstring(int startIndex, int endIndex) override;

private:
    [[nodiscard]] QTextBrowser &view() const;
    [[nodiscard]] ChatLayout &layout() const;
    // Screen coordinates of the document's origin.
    [[nodiscard]] QPoint documentOrigin() const;
    [[nodiscard]] ChatText::Range unitAt(int offset, QAccessible::TextBoundaryType boundary) const;
    void select(ChatText::Range range);

    const ChatText conversation;
    // By the link's index. A link is registered with Qt when it is first requested.
    mutable QHash<int, QAccessible::Id> links;
};
