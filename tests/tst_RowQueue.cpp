#include "ChatView.h"

#include <QScrollBar>
#include <QTest>
#include <QTextBrowser>
#include <QTextTable>

using namespace Qt::StringLiterals;

namespace {

/// A view with an empty conversation.
struct Conversation
{
    QTextBrowser view;
    QTextTable *table = ChatTable::create(view, 2);

    [[nodiscard]] QStringList texts() const
    {
        QStringList texts;
        for (int row = 1; row < table->rows(); ++row)
            texts.append(table->cellAt(row, 1).firstCursorPosition().block().text());
        return texts;
    }
};

ChatRow rowOf(const QString &text)
{
    ChatRow row;
    row.text = text;
    row.hasNickCell = false;
    return row;
}

} // namespace

class TestRowQueue final : public QObject
{
    Q_OBJECT

private slots:
    void keepsRowsUntilItIsFlushed();
    void writesEachRowOnce();
    void scrollsToTheEnd();
};

void TestRowQueue::keepsRowsUntilItIsFlushed()
{
    Conversation first;
    Conversation second;
    RowQueue queue;
    queue.add(first.view, *first.table, rowOf(u"a"_s));
    queue.add(second.view, *second.table, rowOf(u"x"_s));
    queue.add(first.view, *first.table, rowOf(u"b"_s));
    QCOMPARE(first.texts(), QStringList());
    queue.flush();
    QCOMPARE(first.texts(), (QStringList{u"a"_s, u"b"_s}));
    QCOMPARE(second.texts(), QStringList{u"x"_s});
}

void TestRowQueue::writesEachRowOnce()
{
    Conversation conversation;
    RowQueue queue;
    queue.flush();
    for (const QString &text : {u"a"_s, u"b"_s}) {
        queue.add(conversation.view, *conversation.table, rowOf(text));
        queue.flush();
        queue.flush();
    }
    QCOMPARE(conversation.texts(), (QStringList{u"a"_s, u"b"_s}));
}

void TestRowQueue::scrollsToTheEnd()
{
    Conversation updated;
    Conversation other;
    RowQueue queue;
    for (Conversation *conversation : {&updated, &other}) {
        conversation->view.resize(300, 100);
        conversation->view.show();
        for (int line = 0; line < 100; ++line)
            queue.add(conversation->view, *conversation->table, rowOf(u"a line"_s));
    }
    queue.flush();
    updated.view.verticalScrollBar()->setValue(0);
    other.view.verticalScrollBar()->setValue(0);
    queue.add(updated.view, *updated.table, rowOf(u"the last"_s));
    queue.flush();
    QVERIFY(updated.view.verticalScrollBar()->value() > 0);
    QVERIFY(updated.view.textCursor().atEnd());
    QVERIFY(updated.view.viewport()->rect().contains(updated.view.cursorRect()));
    QCOMPARE(other.view.verticalScrollBar()->value(), 0);
}

QTEST_MAIN(TestRowQueue)
#include "tst_RowQueue.moc"
