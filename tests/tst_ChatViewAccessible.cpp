#include "ChatTable.h"
#include "ChatView.h"
#include "ChatViewAccessible.h"
#include "Waiting.h"

#include <QAccessible>
#include <QDesktopServices>
#include <QLineEdit>
#include <QScrollBar>
#include <QTest>
#include <QTextTable>
#include <QVBoxLayout>

#include <functional>

using namespace Qt::StringLiterals;

namespace {

/// A visible conversation of three rows, in a window with another widget.
class Conversation final
{
public:
    Conversation()
    {
        auto *layout = new QVBoxLayout(&window);
        layout->addWidget(view);
        layout->addWidget(other);
        window.resize(600, 400);
        table = ChatTable::create(*view, 3);
        append({{u"[1]"_s, u"alice"_s, u" first message"_s},
                {u"[2]"_s, u"bob"_s, u" see http://a.org/b now"_s},
                {u"[3]"_s, u"carol"_s, u" third one"_s}});
        window.show();
    }

    void append(const QList<ChatRow> &rows)
    {
        RowQueue queue;
        for (const ChatRow &row : rows)
            queue.add(*view, *table, row);
        queue.flush();
    }

    [[nodiscard]] bool focus()
    {
        window.activateWindow();
        view->setFocus();
        return QTest::qWaitForWindowActive(&window, WaitTimeout) && view->hasFocus();
    }

    [[nodiscard]] ChatViewAccessible &accessible() const { return *ChatViewAccessible::of(*view); }

    [[nodiscard]] QString caretLine() const
    {
        int start = 0;
        int end = 0;
        return accessible().textAtOffset(accessible().cursorPosition(), QAccessible::LineBoundary,
                                         &start, &end);
    }

    QWidget window;
    ChatView *view = new ChatView;
    QLineEdit *other = new QLineEdit;
    QTextTable *table = nullptr;
};

/// Makes Qt report an active screen reader.
class ScreenReader final
{
    Q_DISABLE_COPY_MOVE(ScreenReader)

public:
    ScreenReader() { QAccessible::setActive(true); }
    ~ScreenReader() { QAccessible::setActive(false); }
};

/// Records links instead of opening them.
class LinkHandler final : public QObject
{
    Q_OBJECT

public:
    LinkHandler() { QDesktopServices::setUrlHandler(u"http"_s, this, "open"); }
    ~LinkHandler() override { QDesktopServices::unsetUrlHandler(u"http"_s); }

    QStringList opened;

public slots:
    void open(const QUrl &url) { opened.append(url.toString()); }
};

} // namespace

class TestChatViewAccessible final : public QObject
{
    Q_OBJECT

private slots:
    void isADocument();
    void readsUnitsOfText_data();
    void readsUnitsOfText();
    void hasLinksAsChildren();
    void opensLinks();
    void reportsTheFocusedLink();
    void selectsText();
    void placesCharactersInTheirRows();
    void findsCharactersAtPoints();
    void scrollsToText();
    void movesTheCaret_data();
    void movesTheCaret();
    void selectsByKey();
    void ignoresCaretKeysWithoutAScreenReader();
    void keepsTheCaretWhileReading();
};

void TestChatViewAccessible::isADocument()
{
    const Conversation conversation;
    conversation.view->setAccessibleName(u"Conversation"_s);
    QAccessibleInterface *accessible = QAccessible::queryAccessibleInterface(conversation.view);
    QCOMPARE(accessible, &conversation.accessible());
    QCOMPARE(accessible->role(), QAccessible::Document);
    QCOMPARE(accessible->text(QAccessible::Name), u"Conversation"_s);
    QVERIFY(accessible->state().readOnly);
    QVERIFY(accessible->state().multiLine);
    QVERIFY(accessible->state().focusable);
    QVERIFY(!accessible->state().editable);
    QVERIFY(accessible->textInterface());
    QVERIFY(accessible->actionInterface());
    QCOMPARE(accessible->textInterface()->text(0, 26), u"[1] alice: first message\n["_s);
}

void TestChatViewAccessible::readsUnitsOfText_data()
{
    QTest::addColumn<QAccessible::TextBoundaryType>("boundary");
    QTest::addColumn<int>("offset");
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("at");
    QTest::addColumn<QString>("after");

    const auto first = u"[1] alice: first message\n"_s;
    const auto second = u"[2] bob: see http://a.org/b now\n"_s;
    const auto third = u"[3] carol: third one\n"_s;
    QTest::newRow("character") << QAccessible::CharBoundary << 4 << u" "_s << u"a"_s << u"l"_s;
    QTest::newRow("first character")
            << QAccessible::CharBoundary << 0 << QString() << u"["_s << u"1"_s;
    QTest::newRow("character across lines")
            << QAccessible::CharBoundary << 24 << u"e"_s << u"\n"_s << u"["_s;
    QTest::newRow("word") << QAccessible::WordBoundary << 6 << u" "_s << u"alice"_s << u":"_s;
    QTest::newRow("line") << QAccessible::LineBoundary << 30 << first << second << third;
    QTest::newRow("first line") << QAccessible::LineBoundary << 0 << QString() << first << second;
    QTest::newRow("last line") << QAccessible::LineBoundary << 60 << second << third << QString();
    QTest::newRow("end") << QAccessible::LineBoundary << 78 << third << QString() << QString();
    QTest::newRow("paragraph") << QAccessible::ParagraphBoundary << 24 << QString() << first
                               << second;
    QTest::newRow("all") << QAccessible::NoBoundary << 5 << QString()
                         << QString(first + second + third) << QString();
}

void TestChatViewAccessible::readsUnitsOfText()
{
    QFETCH(const QAccessible::TextBoundaryType, boundary);
    QFETCH(const int, offset);
    QFETCH(const QString, before);
    QFETCH(const QString, at);
    QFETCH(const QString, after);
    const Conversation conversation;
    const ChatViewAccessible &accessible = conversation.accessible();
    QCOMPARE(accessible.characterCount(), 78);
    int start = -1;
    int end = -1;
    QCOMPARE(accessible.textAtOffset(offset, boundary, &start, &end), at);
    QCOMPARE(end - start, at.size());
    QCOMPARE(accessible.text(start, end), at);
    if (boundary == QAccessible::NoBoundary)
        return;
    QCOMPARE(accessible.textBeforeOffset(offset, boundary, &start, &end), before);
    QCOMPARE(accessible.textAfterOffset(offset, boundary, &start, &end), after);
}

void TestChatViewAccessible::hasLinksAsChildren()
{
    Conversation conversation;
    ChatViewAccessible &accessible = conversation.accessible();
    QCOMPARE(accessible.childCount(), 1);
    QAccessibleInterface *link = accessible.child(0);
    QCOMPARE(accessible.child(0), link);
    QVERIFY(!accessible.child(1));
    QCOMPARE(link->role(), QAccessible::Link);
    QCOMPARE(link->text(QAccessible::Name), u"http://a.org/b"_s);
    QCOMPARE(link->parent(), &accessible);
    QCOMPARE(accessible.indexOfChild(link), 0);
    QVERIFY(link->state().linked);
    QVERIFY(!link->state().offscreen);
    QVERIFY(accessible.rect().contains(link->rect()));
    const QPoint middle = link->rect().center();
    QCOMPARE(accessible.childAt(middle.x(), middle.y()), link);
    QVERIFY(!accessible.childAt(middle.x(), link->rect().top() - link->rect().height()));

    conversation.append({{u"[4]"_s, u"al"_s, u" x@y.org"_s}});
    QCOMPARE(accessible.childCount(), 2);
    QCOMPARE(accessible.child(1)->text(QAccessible::Name), u"x@y.org"_s);
}

void TestChatViewAccessible::opensLinks()
{
    const Conversation conversation;
    conversation.view->setOpenExternalLinks(true);
    const LinkHandler handler;
    QAccessibleActionInterface *action = conversation.accessible().child(0)->actionInterface();
    QCOMPARE(action->actionNames(), QStringList{QAccessibleActionInterface::pressAction()});
    action->doAction(QAccessibleActionInterface::pressAction());
    QCOMPARE(handler.opened, QStringList{u"http://a.org/b"_s});
}

void TestChatViewAccessible::reportsTheFocusedLink()
{
    Conversation conversation;
    QVERIFY(conversation.focus());
    const ChatViewAccessible &accessible = conversation.accessible();
    QVERIFY(!accessible.child(0)->state().focused);
    conversation.view->moveCursor(QTextCursor::Start);
    QTest::keyClick(conversation.view, Qt::Key_Tab);
    QCOMPARE(conversation.view->textCursor().selectedText(), u"http://a.org/b"_s);
    QVERIFY(accessible.child(0)->state().focused);
    QCOMPARE(accessible.focusChild(), accessible.child(0));
}

void TestChatViewAccessible::selectsText()
{
    const Conversation conversation;
    ChatViewAccessible &accessible = conversation.accessible();
    accessible.setCursorPosition(30);
    QCOMPARE(accessible.cursorPosition(), 30);
    QCOMPARE(accessible.selectionCount(), 0);
    accessible.setSelection(0, 11, 16);
    QCOMPARE(conversation.view->textCursor().selectedText(), u"first"_s);
    int start = 0;
    int end = 0;
    accessible.selection(0, &start, &end);
    QCOMPARE(start, 11);
    QCOMPARE(end, 16);
    accessible.removeSelection(0);
    QCOMPARE(accessible.selectionCount(), 0);
    QCOMPARE(accessible.cursorPosition(), 16);
}

void TestChatViewAccessible::placesCharactersInTheirRows()
{
    const Conversation conversation;
    const ChatViewAccessible &accessible = conversation.accessible();
    const QWidget &viewport = *conversation.view->viewport();
    const QRect shown(viewport.mapToGlobal(QPoint()), viewport.size());
    int previousBottom = shown.top();
    for (int line = 0; line < 3; ++line) {
        const ChatText::Range range = accessible.chatText().lineRange(line);
        const QRect first = accessible.characterRect(range.start);
        QVERIFY(first.top() >= previousBottom);
        int left = shown.left();
        for (int offset = range.start; offset < range.end; ++offset) {
            const QRect rect = accessible.characterRect(offset);
            QVERIFY(shown.contains(rect));
            // Nicks are bold, and may be taller.
            QVERIFY(rect.top() >= first.top() && rect.bottom() <= first.bottom() + 2);
            QVERIFY(rect.left() >= left);
            left = rect.left();
        }
        previousBottom = first.bottom();
    }
    QCOMPARE(accessible.characterRect(-1), QRect());
    QCOMPARE(accessible.characterRect(accessible.characterCount()), QRect());
}

void TestChatViewAccessible::findsCharactersAtPoints()
{
    const Conversation conversation;
    const ChatViewAccessible &accessible = conversation.accessible();
    for (const int offset : {0, 4, 11, 40, 60}) {
        const QRect rect = accessible.characterRect(offset);
        QCOMPARE(accessible.offsetAtPoint(QPoint(rect.left() + 1, rect.center().y())), offset);
    }
    QCOMPARE(accessible.offsetAtPoint(conversation.view->mapToGlobal(QPoint(-5, 5))), -1);
}

void TestChatViewAccessible::scrollsToText()
{
    Conversation conversation;
    for (int i = 0; i < 100; ++i)
        conversation.append({{u"[4]"_s, u"al"_s, u" more"_s}});
    QTRY_VERIFY_WITH_TIMEOUT(conversation.view->verticalScrollBar()->value() > 0, WaitTimeout);
    ChatViewAccessible &accessible = conversation.accessible();
    const auto isShown = [&](int offset) {
        return accessible.rect().contains(accessible.characterRect(offset));
    };
    QVERIFY(!isShown(30));
    QVERIFY(accessible.child(0)->state().offscreen);
    accessible.scrollToSubstring(30, 31);
    QVERIFY(isShown(30));
    const int last = accessible.characterCount() - 2;
    QVERIFY(!isShown(last));
    accessible.scrollToSubstring(last, last + 1);
    QVERIFY(isShown(last));
}

void TestChatViewAccessible::movesTheCaret_data()
{
    QTest::addColumn<int>("from");
    QTest::addColumn<QKeyCombination>("key");
    QTest::addColumn<int>("to");

    const auto ctrl = [](Qt::Key key) { return QKeyCombination(Qt::ControlModifier, key); };
    const auto plain = [](Qt::Key key) { return QKeyCombination(key); };
    QTest::newRow("right") << 3 << plain(Qt::Key_Right) << 4;
    QTest::newRow("right into the next line") << 24 << plain(Qt::Key_Right) << 25;
    QTest::newRow("right at the end") << 78 << plain(Qt::Key_Right) << 78;
    QTest::newRow("left") << 4 << plain(Qt::Key_Left) << 3;
    QTest::newRow("left into the previous line") << 25 << plain(Qt::Key_Left) << 24;
    QTest::newRow("left at the start") << 0 << plain(Qt::Key_Left) << 0;
    QTest::newRow("next word") << 11 << ctrl(Qt::Key_Right) << 17;
    QTest::newRow("next word in the next line") << 17 << ctrl(Qt::Key_Right) << 25;
    QTest::newRow("previous word") << 20 << ctrl(Qt::Key_Left) << 17;
    QTest::newRow("down") << 5 << plain(Qt::Key_Down) << 30;
    QTest::newRow("down into a shorter line") << 54 << plain(Qt::Key_Down) << 77;
    QTest::newRow("down from the last line") << 60 << plain(Qt::Key_Down) << 78;
    QTest::newRow("up") << 30 << plain(Qt::Key_Up) << 5;
    QTest::newRow("up from the end") << 78 << plain(Qt::Key_Up) << 57;
    QTest::newRow("up from the first line") << 5 << plain(Qt::Key_Up) << 5;
    QTest::newRow("start of the line") << 30 << plain(Qt::Key_Home) << 25;
    QTest::newRow("end of the line") << 30 << plain(Qt::Key_End) << 56;
    QTest::newRow("start") << 30 << ctrl(Qt::Key_Home) << 0;
    QTest::newRow("end") << 30 << ctrl(Qt::Key_End) << 78;
}

void TestChatViewAccessible::movesTheCaret()
{
    QFETCH(const int, from);
    QFETCH(const QKeyCombination, key);
    QFETCH(const int, to);
    const Conversation conversation;
    const ScreenReader reader;
    ChatViewAccessible &accessible = conversation.accessible();
    accessible.setCursorPosition(from);
    QTest::keyClick(conversation.view, key.key(), key.keyboardModifiers());
    QCOMPARE(accessible.cursorPosition(), to);
}

void TestChatViewAccessible::selectsByKey()
{
    const Conversation conversation;
    const ScreenReader reader;
    conversation.accessible().setCursorPosition(11);
    for (int i = 0; i < 5; ++i)
        QTest::keyClick(conversation.view, Qt::Key_Right, Qt::ShiftModifier);
    QCOMPARE(conversation.view->textCursor().selectedText(), u"first"_s);
}

void TestChatViewAccessible::ignoresCaretKeysWithoutAScreenReader()
{
    const Conversation conversation;
    for (const Qt::Key key : {Qt::Key_Up, Qt::Key_Left, Qt::Key_Home, Qt::Key_PageUp}) {
        QTest::keyClick(conversation.view, key);
        QVERIFY(conversation.view->textCursor().atEnd());
    }
}

void TestChatViewAccessible::keepsTheCaretWhileReading()
{
    Conversation conversation;
    const ScreenReader reader;
    QVERIFY(conversation.focus());
    QTest::keyClick(conversation.view, Qt::Key_Up);
    QTest::keyClick(conversation.view, Qt::Key_Up);
    const QString line = u"[2] bob: see http://a.org/b now\n"_s;
    QCOMPARE(conversation.caretLine(), line);
    conversation.append({{u"[4]"_s, u"al"_s, u" hi"_s}});
    QCOMPARE(conversation.caretLine(), line);

    // A caret at the end stays at the end.
    QTest::keyClick(conversation.view, Qt::Key_End, Qt::ControlModifier);
    conversation.append({{u"[5]"_s, u"al"_s, u" hi"_s}});
    QVERIFY(conversation.view->textCursor().atEnd());

    QTest::keyClick(conversation.view, Qt::Key_Up);
    conversation.other->setFocus();
    conversation.append({{u"[6]"_s, u"al"_s, u" hi"_s}});
    QVERIFY(conversation.view->textCursor().atEnd());
}

QTEST_MAIN(TestChatViewAccessible)
#include "tst_ChatViewAccessible.moc"
