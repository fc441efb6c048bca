#include "RowQueue.h"

#include "ChatView.h"

#include <QTextBrowser>

#include <utility>

void RowQueue::add(QTextBrowser &view, QTextTable &table, const ChatRow &row)
{
    Rows &rows = waiting[&view];
    rows.table = &table;
    rows.rows.append(row);
}

void RowQueue::flush()
{
    const auto conversations = std::exchange(waiting, {});
    for (auto conversation = conversations.cbegin(); conversation != conversations.cend();
         ++conversation) {
        QTextBrowser *view = conversation.key();
        ChatTable::appendRows(*conversation->table, conversation->rows);
        const auto *chatView = qobject_cast<const ChatView *>(view);
        if (chatView && chatView->isBeingRead())
            continue;
        QTextCursor cursor = view->textCursor();
        cursor.movePosition(QTextCursor::End);
        view->setTextCursor(cursor);
        view->ensureCursorVisible();
    }
}
