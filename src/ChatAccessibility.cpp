#include "ChatAccessibility.h"

#include "ChatLayout.h"
#include "ChatViewAccessible.h"

#include <QKeyEvent>
#include <QTextBoundaryFinder>
#include <QTextBrowser>
#include <QTextCursor>

#include <algorithm>
#include <array>

namespace {

// At most this many rows of one read get an event each; the rows before them share one event. An
// event costs as much as several rows, and no user listens to thousands.
constexpr int MaximumSingleEvents = 50;

int nextBoundary(const ChatText &text, int offset, QTextBoundaryFinder::BoundaryType type)
{
    const ChatText::Range line = text.lineRange(text.lineAt(offset));
    const QString lineText = text.text(line);
    QTextBoundaryFinder finder(type, lineText);
    finder.setPosition(offset - line.start);
    const bool needsStart = type == QTextBoundaryFinder::Word;
    while (finder.toNextBoundary() >= 0) {
        if (!needsStart || (finder.boundaryReasons() & QTextBoundaryFinder::StartOfItem) != 0)
            return line.start + static_cast<int>(finder.position());
    }
    return line.end;
}

int previousBoundary(const ChatText &text, int offset, QTextBoundaryFinder::BoundaryType type)
{
    const ChatText::Range line = text.lineRange(text.lineAt(offset - 1));
    const QString lineText = text.text(line);
    QTextBoundaryFinder finder(type, lineText);
    finder.setPosition(offset - line.start);
    const bool needsStart = type == QTextBoundaryFinder::Word;
    while (finder.toPreviousBoundary() >= 0) {
        if (!needsStart || (finder.boundaryReasons() & QTextBoundaryFinder::StartOfItem) != 0)
            return line.start + static_cast<int>(finder.position());
    }
    return line.start;
}

int nextCharacter(const ChatText &text, int offset)
{
    return nextBoundary(text, offset, QTextBoundaryFinder::Grapheme);
}

int previousCharacter(const ChatText &text, int offset)
{
    return previousBoundary(text, offset, QTextBoundaryFinder::Grapheme);
}

int nextWord(const ChatText &text, int offset)
{
    return nextBoundary(text, offset, QTextBoundaryFinder::Word);
}

int previousWord(const ChatText &text, int offset)
{
    return previousBoundary(text, offset, QTextBoundaryFinder::Word);
}

int moveByLines(const ChatText &text, int offset, int step)
{
    const int from = text.lineAt(offset);
    const ChatText::Range line = text.lineRange(std::clamp(from + step, 0, text.lineCount()));
    const int column = offset - text.lineRange(from).start;
    return std::clamp(line.start + column, line.start, std::max(line.end - 1, line.start));
}

int nextLine(const ChatText &text, int offset)
{
    return moveByLines(text, offset, 1);
}

int previousLine(const ChatText &text, int offset)
{
    return moveByLines(text, offset, -1);
}

int startOfLine(const ChatText &text, int offset)
{
    return text.lineRange(text.lineAt(offset)).start;
}

int endOfLine(const ChatText &text, int offset)
{
    const ChatText::Range line = text.lineRange(text.lineAt(offset));
    return std::max(line.end - 1, line.start);
}

int startOfText(const ChatText &, int)
{
    return 0;
}

int endOfText(const ChatText &text, int)
{
    return text.length();
}

struct CaretMove
{
    QKeySequence::StandardKey move;
    QKeySequence::StandardKey select;
    int (*target)(const ChatText &text, int offset);
};

constexpr std::array CaretMoves{
        CaretMove{QKeySequence::MoveToNextChar, QKeySequence::SelectNextChar, nextCharacter},
        CaretMove{QKeySequence::MoveToPreviousChar, QKeySequence::SelectPreviousChar,
                  previousCharacter},
        CaretMove{QKeySequence::MoveToNextWord, QKeySequence::SelectNextWord, nextWord},
        CaretMove{QKeySequence::MoveToPreviousWord, QKeySequence::SelectPreviousWord, previousWord},
        CaretMove{QKeySequence::MoveToNextLine, QKeySequence::SelectNextLine, nextLine},
        CaretMove{QKeySequence::MoveToPreviousLine, QKeySequence::SelectPreviousLine, previousLine},
        CaretMove{QKeySequence::MoveToStartOfLine, QKeySequence::SelectStartOfLine, startOfLine},
        CaretMove{QKeySequence::MoveToEndOfLine, QKeySequence::SelectEndOfLine, endOfLine},
        CaretMove{QKeySequence::MoveToStartOfDocument, QKeySequence::SelectStartOfDocument,
                  startOfText},
        CaretMove{QKeySequence::MoveToEndOfDocument, QKeySequence::SelectEndOfDocument, endOfText},
};

} // namespace

ChatAccessibility::ChatAccessibility(QTextBrowser &chatView)
    : QObject(&chatView)
    , view(chatView)
    , announcer(chatView)
{
    ChatViewAccessible::install();
    QAccessible::installActivationObserver(this);
    // QTextEdit's text control sends an event with the whole conversation at each change, since its
    // cursor selects the whole table. The control is one of the children.
    const QObjectList &children = view.children();
    for (const QObject *child : children)
        disconnect(view.document(), &QTextDocument::contentsChange, child, nullptr);
    const auto *layout = qobject_cast<ChatLayout *>(view.document()->documentLayout());
    connect(layout, &ChatLayout::rowsAdded, this, &ChatAccessibility::reportRows);
    connect(&view, &QTextEdit::selectionChanged, this, &ChatAccessibility::reportFocus);
    view.installEventFilter(this);
}

ChatAccessibility::~ChatAccessibility()
{
    QAccessible::removeActivationObserver(this);
}

void ChatAccessibility::accessibilityActiveChanged(bool active)
{
    isActive = active;
}

bool ChatAccessibility::isReading() const
{
    return isActive && view.hasFocus() && !view.textCursor().atEnd();
}

void ChatAccessibility::reportRows(int first, int count)
{
    // Screen readers read the whole text of a hidden view when it is shown.
    ChatViewAccessible *accessible =
            isActive && view.isVisible() ? ChatViewAccessible::of(view) : nullptr;
    if (!accessible)
        return;
    const ChatText &text = accessible->chatText();
    const auto report = [&](ChatText::Range range) {
        QAccessibleTextInsertEvent event(&view, range.start, text.text(range));
        QAccessible::updateAccessibility(&event);
    };
    // The empty first row is not a line.
    const int firstLine = std::max(first - 1, 0);
    const int endLine = first + count - 1;
    const int firstSingle = std::max(firstLine, endLine - MaximumSingleEvents);
    if (firstSingle > firstLine)
        report({.start = text.lineRange(firstLine).start,
                .end = text.lineRange(firstSingle).start});
    for (int line = firstSingle; line < endLine; ++line) {
        report(text.lineRange(line));
        if (view.isActiveWindow())
            announcer.announce(text.text(text.lineRange(line)).chopped(1));
    }
}

void ChatAccessibility::reportFocus()
{
    ChatViewAccessible *accessible =
            isActive && view.hasFocus() ? ChatViewAccessible::of(view) : nullptr;
    if (!accessible || accessible->focusedLink() == reportedLink)
        return;
    reportedLink = accessible->focusedLink();
    QAccessibleInterface *focused = accessible->child(reportedLink);
    QAccessibleEvent event(focused ? focused : accessible, QAccessible::Focus);
    QAccessible::updateAccessibility(&event);
}

bool ChatAccessibility::eventFilter(QObject *, QEvent *event)
{
    return isActive && event->type() == QEvent::KeyPress
           && moveCaret(*static_cast<QKeyEvent *>(event));
}

bool ChatAccessibility::moveCaret(const QKeyEvent &key)
{
    const auto *move =
            std::find_if(CaretMoves.begin(), CaretMoves.end(), [&key](const CaretMove &known) {
                return key.matches(known.move) || key.matches(known.select);
            });
    const ChatViewAccessible *accessible =
            move != CaretMoves.end() ? ChatViewAccessible::of(view) : nullptr;
    if (!accessible)
        return false;
    const ChatText &text = accessible->chatText();
    QTextCursor cursor = view.textCursor();
    const int target = move->target(text, text.offsetAt(cursor.position()));
    cursor.setPosition(text.positionAt(target), key.matches(move->select)
                                                        ? QTextCursor::KeepAnchor
                                                        : QTextCursor::MoveAnchor);
    view.setTextCursor(cursor);
    view.ensureCursorVisible();
    return true;
}
