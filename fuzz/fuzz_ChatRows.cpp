// Checks hostile lines in a conversation: each is one row and one block with the line's text, and
// the target of each anchor is its text.
//
// The input is rows separated by 0xFF. A row is a nick and a text separated by 0xFE. UTF-8 contains
// neither byte. Some of the conversations are also painted.

#include "ChatTable.h"
#include "ChatView.h"
#include "Fuzzing.h"
#include "IrcText.h"

#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextTable>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

QList<ChatRow> rowsOf(const QByteArray &input, bool haveNickCells)
{
    QList<ChatRow> rows;
    for (const QByteArray &line : input.split('\xFF')) {
        ChatRow row;
        const QByteArrayList parts = line.split('\xFE');
        row.time = u"[12:34:56]"_s;
        row.nick = parts.size() > 1 ? QString::fromUtf8(parts.first()) : QString();
        row.text = QString::fromUtf8(parts.last());
        row.dimmed = line.size() % 4 == 1;
        row.ownAway = line.size() % 4 == 2;
        row.hasNickCell = haveNickCells;
        rows.append(row);
    }
    return rows;
}

bool startsBlock(QChar unit)
{
    return u"\n\r\x2029\xfdd0\xfdd1"_s.contains(unit);
}

void checkAnchors(const QTextBlock &block)
{
    for (auto run = block.begin(); !run.atEnd(); ++run) {
        const QTextCharFormat format = run.fragment().charFormat();
        const QString text = run.fragment().text();
        if (format.isAnchor())
            Fuzzing::require(format.anchorHref() == text
                                     || format.anchorHref() == QString(u"mailto:"_s + text),
                             "an anchor's target is its text");
    }
}

void checkLinks(const QString &text)
{
    QTextDocument document;
    QTextCursor cursor(&document);
    IrcText::insertWithLinks(cursor, text, QTextCharFormat());
    if (std::none_of(text.cbegin(), text.cend(), startsBlock)) {
        Fuzzing::require(document.firstBlock().text() == text, "the text is inserted unchanged");
        checkAnchors(document.firstBlock());
    }
    Fuzzing::require(cursor.atEnd(), "the cursor is after the text");
}

// Returns `text` with the replacements for the characters that would start another block.
QString asOneBlock(const QString &text)
{
    QString shown = text;
    shown.replace(u"\r\n"_s, u"\n"_s);
    for (QChar &unit : shown) {
        if (unit == QChar(0xfdd0) || unit == QChar(0xfdd1))
            unit = QChar::ReplacementCharacter;
        else if (startsBlock(unit))
            unit = QChar::LineSeparator;
    }
    return shown;
}

void checkCell(const QTextTable &table, int row, int column, const QString &text)
{
    const QTextTableCell cell = table.cellAt(row, column);
    const QTextBlock block = cell.firstCursorPosition().block();
    Fuzzing::require(block == cell.lastCursorPosition().block(), "a cell is one block");
    Fuzzing::require(block.text() == text, "a cell shows the text");
}

void paint(ChatView &view)
{
    view.resize(300, 200);
    view.show();
    view.grab();
    view.resize(180, 120);
    view.grab();
}

} // namespace

int LLVMFuzzerInitialize(int * /*argc*/, char *** /*argv*/)
{
    Fuzzing::start();
    return 0;
}

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const int columns = size % 2 == 0 ? 3 : 2;
    const QList<ChatRow> rows = rowsOf(Fuzzing::bytesOf(data, size), columns == 3);
    for (const ChatRow &row : rows)
        checkLinks(row.text);

    ChatView view;
    QTextTable *table = ChatTable::create(view, columns);
    ChatTable::appendRows(*table, rows);
    Fuzzing::require(table->rows() == rows.size() + 1, "each line is a row");
    for (int index = 0; index < rows.size(); ++index) {
        const ChatRow &row = rows.at(index);
        checkCell(*table, index + 1, columns - 1, asOneBlock(row.text));
        const QString nick = ChatTable::elidedNick(row.nick);
        if (columns == 3)
            checkCell(*table, index + 1, 1, asOneBlock(nick) + u"  "_s);
    }
    if (size % 8 < 2)
        paint(view);
    return 0;
}
