#include "ChatDocument.h"

#include "ChatLayout.h"

#include <QTextBrowser>
#include <QTextTable>

namespace ChatDocument {

QString cellText(const QTextTable &table, int row, int column)
{
    const QTextTableCell cell = table.cellAt(row, column);
    QTextCursor cursor = cell.firstCursorPosition();
    cursor.setPosition(cell.lastPosition(), QTextCursor::KeepAnchor);
    return cursor.selectedText();
}

ChatLayout &layoutOf(const QTextBrowser &view)
{
    return *qobject_cast<ChatLayout *>(view.document()->documentLayout());
}

void scrollToEnd(QTextBrowser &view)
{
    QTextCursor cursor = view.textCursor();
    cursor.movePosition(QTextCursor::End);
    view.setTextCursor(cursor);
    view.ensureCursorVisible();
}

} // namespace ChatDocument
