#include "ChatViewAccessible.h"

#include "ChatLayout.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextBoundaryFinder>
#include <QTextBrowser>
#include <QTextLayout>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

/// A link of a conversation.
class ChatLink final : public QAccessibleInterface, public QAccessibleActionInterface
{
    Q_DISABLE_COPY_MOVE(ChatLink)

public:
    ChatLink(ChatViewAccessible &parentInterface, int linkIndex)
        : conversation(parentInterface)
        , index(linkIndex)
    {
    }

    [[nodiscard]] int linkIndex() const { return index; }

    [[nodiscard]] bool isValid() const override { return conversation.isValid(); }
    [[nodiscard]] QObject *object() const override { return nullptr; }
    [[nodiscard]] QWindow *window() const override { return conversation.window(); }
    [[nodiscard]] QAccessibleInterface *parent() const override { return &conversation; }
    [[nodiscard]] QAccessibleInterface *child(int) const override { return nullptr; }
    [[nodiscard]] QAccessibleInterface *childAt(int, int) const override { return nullptr; }
    [[nodiscard]] int childCount() const override { return 0; }
    [[nodiscard]] int indexOfChild(const QAccessibleInterface *) const override { return -1; }

    [[nodiscard]] QString text(QAccessible::Text type) const override
    {
        return type == QAccessible::Name ? conversation.chatText().text(range()) : QString();
    }
    void setText(QAccessible::Text, const QString &) override {}
    [[nodiscard]] QRect rect() const override { return conversation.rangeRect(range()); }
    [[nodiscard]] QAccessible::Role role() const override { return QAccessible::Link; }
    [[nodiscard]] QAccessible::State state() const override
    {
        QAccessible::State state = conversation.state();
        state.linked = true;
        state.focused = conversation.focusedLink() == index;
        state.multiLine = state.selectableText = false;
        state.offscreen = state.offscreen || !rect().intersects(conversation.rect());
        return state;
    }

    void *interface_cast(QAccessible::InterfaceType type) override
    {
        return type == QAccessible::ActionInterface
                       ? static_cast<QAccessibleActionInterface *>(this)
                       : nullptr;
    }
    [[nodiscard]] QStringList actionNames() const override { return {pressAction()}; }
    void doAction(const QString &name) override
    {
        if (name == pressAction())
            conversation.openLink(index);
    }
    [[nodiscard]] QStringList keyBindingsForAction(const QString &) const override { return {}; }

private:
    [[nodiscard]] ChatText::Range range() const
    {
        return conversation.chatText().links().at(static_cast<std::size_t>(index));
    }

    ChatViewAccessible &conversation;
    const int index;
};

ChatLayout *layoutOf(const QTextBrowser &view)
{
    return qobject_cast<ChatLayout *>(view.document()->documentLayout());
}

QAccessibleInterface *create(const QString &, QObject *object)
{
    auto *view = qobject_cast<QTextBrowser *>(object);
    return view && layoutOf(*view) ? new ChatViewAccessible(*view) : nullptr;
}

QTextBoundaryFinder::BoundaryType finderType(QAccessible::TextBoundaryType boundary)
{
    switch (boundary) {
    case QAccessible::WordBoundary:
        return QTextBoundaryFinder::Word;
    case QAccessible::SentenceBoundary:
        return QTextBoundaryFinder::Sentence;
    default:
        return QTextBoundaryFinder::Grapheme;
    }
}

void setOffsets(ChatText::Range range, int *start, int *end)
{
    *start = range.start;
    *end = range.end;
}

} // namespace

ChatViewAccessible::ChatViewAccessible(QTextBrowser &chatView)
    : QAccessibleWidget(&chatView, QAccessible::Document)
    , conversation(*layoutOf(chatView))
{
}

ChatViewAccessible::~ChatViewAccessible()
{
    for (const QAccessible::Id link : std::as_const(links))
        QAccessible::deleteAccessibleInterface(link);
}

void ChatViewAccessible::install()
{
    QAccessible::installFactory(create);
}

ChatViewAccessible *ChatViewAccessible::of(QTextBrowser &view)
{
    return dynamic_cast<ChatViewAccessible *>(QAccessible::queryAccessibleInterface(&view));
}

QTextBrowser &ChatViewAccessible::view() const
{
    return *static_cast<QTextBrowser *>(widget());
}

ChatLayout &ChatViewAccessible::layout() const
{
    return *layoutOf(view());
}

void *ChatViewAccessible::interface_cast(QAccessible::InterfaceType type)
{
    return type == QAccessible::TextInterface ? static_cast<QAccessibleTextInterface *>(this)
                                              : QAccessibleWidget::interface_cast(type);
}

QAccessible::State ChatViewAccessible::state() const
{
    QAccessible::State state = QAccessibleWidget::state();
    state.readOnly = true;
    state.multiLine = true;
    state.selectableText = true;
    return state;
}

// ---------------------------------------------------------------------------------------------
// Links

int ChatViewAccessible::childCount() const
{
    return static_cast<int>(conversation.links().size());
}

QAccessibleInterface *ChatViewAccessible::child(int index) const
{
    if (index < 0 || index >= childCount())
        return nullptr;
    QAccessible::Id &id = links[index];
    if (id == 0) {
        auto *self = const_cast<ChatViewAccessible *>(this);
        id = QAccessible::registerAccessibleInterface(new ChatLink(*self, index));
    }
    return QAccessible::accessibleInterface(id);
}

QAccessibleInterface *ChatViewAccessible::childAt(int x, int y) const
{
    const int offset = offsetAtPoint({x, y});
    const auto &ranges = conversation.links();
    const auto link = std::find_if(ranges.cbegin(), ranges.cend(), [offset](const auto &range) {
        return range.start <= offset && offset < range.end;
    });
    return link != ranges.cend() ? child(static_cast<int>(link - ranges.cbegin())) : nullptr;
}

int ChatViewAccessible::indexOfChild(const QAccessibleInterface *child) const
{
    const auto *link = dynamic_cast<const ChatLink *>(child);
    return link && link->parent() == this ? link->linkIndex() : -1;
}

QAccessibleInterface *ChatViewAccessible::focusChild() const
{
    QAccessibleInterface *link = view().hasFocus() ? child(focusedLink()) : nullptr;
    return link ? link : QAccessibleWidget::focusChild();
}

int ChatViewAccessible::focusedLink() const
{
    const QTextCursor cursor = view().textCursor();
    if (!cursor.hasSelection() || cursor.charFormat().anchorHref().isEmpty())
        return -1;
    const int start = conversation.offsetAt(cursor.selectionStart());
    const int end = conversation.offsetAt(cursor.selectionEnd());
    const auto &ranges = conversation.links();
    const auto link =
            std::partition_point(ranges.cbegin(), ranges.cend(),
                                 [start](const auto &range) { return range.start < start; });
    const bool isFound = link != ranges.cend() && link->start == start && link->end == end;
    return isFound ? static_cast<int>(link - ranges.cbegin()) : -1;
}

void ChatViewAccessible::openLink(int index)
{
    view().setFocus();
    select(conversation.links().at(static_cast<std::size_t>(index)));
    QKeyEvent press(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier);
    QCoreApplication::sendEvent(&view(), &press);
}

// ---------------------------------------------------------------------------------------------
// Text

QString ChatViewAccessible::text(int startOffset, int endOffset) const
{
    return conversation.text({.start = startOffset, .end = endOffset});
}

int ChatViewAccessible::characterCount() const
{
    return conversation.length();
}

// Returns the character, word, line etc. at `offset`; an empty range outside the text.
ChatText::Range ChatViewAccessible::unitAt(int offset, QAccessible::TextBoundaryType boundary) const
{
    const int length = conversation.length();
    if (boundary == QAccessible::NoBoundary)
        return {.start = 0, .end = length};
    if (offset < 0)
        return {};
    if (offset >= length)
        return {.start = length, .end = length};
    const ChatText::Range line = conversation.lineRange(conversation.lineAt(offset));
    if (boundary == QAccessible::LineBoundary || boundary == QAccessible::ParagraphBoundary)
        return line;
    const QString lineText = conversation.text(line);
    QTextBoundaryFinder finder(finderType(boundary), lineText);
    finder.setPosition(offset - line.start);
    if (!finder.isAtBoundary())
        finder.toPreviousBoundary();
    const int start = line.start + static_cast<int>(finder.position());
    finder.toNextBoundary();
    return {.start = start, .end = line.start + static_cast<int>(finder.position())};
}

QString ChatViewAccessible::textAtOffset(int offset, QAccessible::TextBoundaryType boundary,
                                         int *startOffset, int *endOffset) const
{
    const ChatText::Range unit = unitAt(offset, boundary);
    setOffsets(unit, startOffset, endOffset);
    return conversation.text(unit);
}

QString ChatViewAccessible::textBeforeOffset(int offset, QAccessible::TextBoundaryType boundary,
                                             int *startOffset, int *endOffset) const
{
    return textAtOffset(unitAt(offset, boundary).start - 1, boundary, startOffset, endOffset);
}

QString ChatViewAccessible::textAfterOffset(int offset, QAccessible::TextBoundaryType boundary,
                                            int *startOffset, int *endOffset) const
{
    return textAtOffset(unitAt(offset, boundary).end, boundary, startOffset, endOffset);
}

QString ChatViewAccessible::attributes(int offset, int *startOffset, int *endOffset) const
{
    setOffsets(unitAt(offset, QAccessible::LineBoundary), startOffset, endOffset);
    return {};
}

// ---------------------------------------------------------------------------------------------
// Caret and selection

int ChatViewAccessible::cursorPosition() const
{
    return conversation.offsetAt(view().textCursor().position());
}

void ChatViewAccessible::setCursorPosition(int position)
{
    select({.start = position, .end = position});
}

void ChatViewAccessible::selection(int selectionIndex, int *startOffset, int *endOffset) const
{
    if (selectionIndex != 0 || selectionCount() == 0) {
        setOffsets({}, startOffset, endOffset);
        return;
    }
    const QTextCursor cursor = view().textCursor();
    setOffsets({.start = conversation.offsetAt(cursor.selectionStart()),
                .end = conversation.offsetAt(cursor.selectionEnd())},
               startOffset, endOffset);
}

int ChatViewAccessible::selectionCount() const
{
    return view().textCursor().hasSelection() ? 1 : 0;
}

void ChatViewAccessible::addSelection(int startOffset, int endOffset)
{
    setSelection(0, startOffset, endOffset);
}

void ChatViewAccessible::removeSelection(int selectionIndex)
{
    if (selectionIndex == 0)
        setCursorPosition(cursorPosition());
}

void ChatViewAccessible::setSelection(int selectionIndex, int startOffset, int endOffset)
{
    if (selectionIndex == 0)
        select({.start = startOffset, .end = endOffset});
}

void ChatViewAccessible::select(ChatText::Range range)
{
    QTextCursor cursor = view().textCursor();
    cursor.setPosition(conversation.positionAt(std::max(range.start, 0)));
    if (range.end > range.start)
        cursor.setPosition(conversation.positionAt(range.end), QTextCursor::KeepAnchor);
    view().setTextCursor(cursor);
}

// ---------------------------------------------------------------------------------------------
// Geometry

QPoint ChatViewAccessible::documentOrigin() const
{
    const QPoint scrolled(view().horizontalScrollBar()->value(),
                          view().verticalScrollBar()->value());
    return view().viewport()->mapToGlobal(QPoint()) - scrolled;
}

QRect ChatViewAccessible::characterRect(int offset) const
{
    if (offset < 0 || offset >= conversation.length())
        return {};
    const int position = conversation.positionAt(offset);
    const QTextBlock block = layout().document()->findBlock(position);
    // Also lays out block.layout().
    const QPointF origin = layout().blockBoundingRect(block).topLeft();
    const int inBlock = position - block.position();
    const QTextLine line = block.layout()->lineForTextPosition(inBlock);
    if (!line.isValid())
        return {};
    const qreal left = line.cursorToX(inBlock);
    const qreal right = line.cursorToX(inBlock, QTextLine::Trailing);
    // Separators have no width. In right-to-left text the trailing edge is the left one.
    const QRectF rect(std::min(left, right), line.y(), std::max(std::abs(right - left), 1.0),
                      line.height());
    return rect.translated(origin + documentOrigin()).toRect();
}

QRect ChatViewAccessible::rangeRect(ChatText::Range range) const
{
    if (range.start >= range.end)
        return {};
    const QRect first = characterRect(range.start);
    const QRect last = characterRect(range.end - 1);
    // The lines between may be wider than the first and the last.
    return first.top() == last.top() ? first | last
                                     : QRect(QPoint(rect().left(), first.top()),
                                             QPoint(rect().right(), last.bottom()));
}

int ChatViewAccessible::offsetAtPoint(const QPoint &point) const
{
    if (!rect().contains(point))
        return -1;
    const int position = layout().hitTest(point - documentOrigin(), Qt::FuzzyHit);
    return std::min(conversation.offsetAt(position), conversation.length() - 1);
}

void ChatViewAccessible::scrollToSubstring(int startIndex, int endIndex)
{
    QScrollBar *bar = view().verticalScrollBar();
    const QRect shown =
            view().viewport()->rect().translated(view().viewport()->mapToGlobal(QPoint()));
    const QRect range = rangeRect({.start = startIndex, .end = std::max(endIndex, startIndex + 1)});
    if (range.isEmpty())
        return;
    if (range.bottom() > shown.bottom())
        bar->setValue(bar->value() + range.bottom() - shown.bottom());
    else if (range.top() < shown.top())
        bar->setValue(bar->value() + range.top() - shown.top());
}
