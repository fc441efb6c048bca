#pragma once

#include "ChatTable.h"

#include <QHash>
#include <QList>

class QTextBrowser;
class QTextTable;

/// Rows that wait to be written to their conversations.
///
/// Rows of one conversation are written together and in their order, since each change of a
/// document has its price; conversations follow each other in no order. The queue owns nothing:
/// views and tables must outlive what waits for them.
class RowQueue final
{
public:
    /// Lets `row` wait for a place at the end of `table`, which `view` shows.
    void add(QTextBrowser &view, QTextTable &table, const ChatRow &row);

    /// Writes what waits, and brings each view that gets a row to its bottom: also that of a reader
    /// who has scrolled back, but not one that a screen reader is reading.
    void flush();

private:
    struct Rows
    {
        QTextTable *table = nullptr;
        QList<ChatRow> rows;
    };
    QHash<QTextBrowser *, Rows> waiting;
};
