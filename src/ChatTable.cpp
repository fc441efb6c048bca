#include "ChatTable.h"

#include "ChatLayout.h"
#include "IrcText.h"
#include "LineBreaks.h"

#include <QDateTime>
#include <QHash>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextEdit>
#include <QTextTable>

#include <algorithm>
#include <array>
#include <limits>
#include <optional>

using namespace Qt::StringLiterals;

namespace {

constexpr int TimeWidth = 85;
constexpr int NickWidth = 120;
// Appending n rows at once takes quadratic time, since Qt moves all new cells for each further one.
// Each call also takes time for the rows already there, since Qt counts all cells first.
constexpr qsizetype BatchSize = 5000;
constexpr QRgb Grey = qRgb(136, 136, 136);
constexpr QRgb PaleGrey = qRgb(170, 170, 170);

constexpr std::array<QRgb, 16> NickColors{
        qRgb(0x9e, 0x9e, 0x9e), qRgb(0x42, 0x42, 0x42), qRgb(0x15, 0x65, 0xc0),
        qRgb(0x2e, 0x7d, 0x32), qRgb(0xc6, 0x28, 0x28), qRgb(0xad, 0x14, 0x57),
        qRgb(0x6a, 0x1b, 0x9a), qRgb(0xe6, 0x51, 0x00), qRgb(0xf9, 0xa8, 0x25),
        qRgb(0x55, 0x8b, 0x2f), qRgb(0x00, 0x89, 0x7b), qRgb(0x00, 0xb0, 0xff),
        qRgb(0x29, 0x79, 0xff), qRgb(0xd5, 0x00, 0xf9), qRgb(0x78, 0x90, 0x9c),
        qRgb(0xbc, 0xaa, 0xa4)};

// Returns true for characters where QTextCursor::insertText() starts a new block. A server can
// send all of them except CR LF.
bool startsBlock(QChar character)
{
    switch (character.unicode()) {
    case '\n':
    case '\r':
    case QChar::ParagraphSeparator:
    case 0xfdd0:
    case 0xfdd1:
        return true;
    default:
        return false;
    }
}

// Returns a character that does not start a block: a line separator, which looks the same, for line
// breaks, and U+FFFD for the two noncharacters that mark frames in a QTextDocument.
QChar inOneBlock(QChar character)
{
    if (!startsBlock(character))
        return character;
    const bool isFrameMark = character.unicode() == 0xfdd0 || character.unicode() == 0xfdd1;
    return isFrameMark ? QChar::ReplacementCharacter : QChar::LineSeparator;
}

QString withCrLfAsLf(QString text)
{
    return text.replace(u"\r\n"_s, u"\n"_s);
}

QString inOneBlock(const QString &text)
{
    QString result = withCrLfAsLf(text);
    for (QChar &character : result)
        character = inOneBlock(character);
    return result;
}

// Formats are cached, since a document must hash a new one to find it.
const QTextCharFormat &greyFormat()
{
    static const QTextCharFormat grey = [] {
        QTextCharFormat format;
        format.setForeground(QColor(Grey));
        return format;
    }();
    return grey;
}

// The line between nicks and texts is the nick cell's right border.
QTextTableCellFormat nickCellFormat()
{
    QTextTableCellFormat format;
    format.setRightBorder(1.0);
    format.setRightBorderStyle(QTextFrameFormat::BorderStyle_Solid);
    format.setRightBorderBrush(QColor(Grey));
    return format;
}

QTextCharFormat makeNickFormat(std::optional<QRgb> color)
{
    QTextCharFormat format;
    format.setFontWeight(QFont::Bold);
    if (color)
        format.setForeground(QColor(*color));
    if (color == PaleGrey)
        format.setFontItalic(true);
    return format;
}

QTextCharFormat nickFormat(const QString &displayNick, bool ownAway)
{
    static const QTextCharFormat withoutNick = makeNickFormat({});
    static QHash<QRgb, QTextCharFormat> byColor;
    if (displayNick.isEmpty())
        return withoutNick;
    const QRgb color = ownAway ? PaleGrey : ChatTable::nickColor(displayNick).rgb();
    if (!byColor.contains(color))
        byColor.insert(color, makeNickFormat(color));
    return byColor.value(color);
}

QTextBlockFormat alignedFormat(Qt::Alignment alignment)
{
    QTextBlockFormat format;
    format.setAlignment(alignment);
    return format;
}

void alignLeft(QTextCursor &cursor)
{
    static const QTextBlockFormat left = alignedFormat(Qt::AlignLeft);
    cursor.setBlockFormat(left);
}

void alignRight(QTextCursor &cursor)
{
    static const QTextBlockFormat right = alignedFormat(Qt::AlignRight);
    cursor.setBlockFormat(right);
}

// Links are found before block-starting characters are replaced: some of these end a link, and
// others belong to its target.
void insertAsOneBlock(QTextCursor &cursor, const QString &text, const QTextCharFormat &base)
{
    const QString raw = withCrLfAsLf(text);
    QTextDocument scratch;
    QTextCursor writer(&scratch);
    IrcText::insertWithLinks(writer, raw, base);
    for (QTextBlock block = scratch.begin(); block.isValid(); block = block.next()) {
        if (block.position() > 0)
            cursor.insertText(inOneBlock(raw.at(block.position() - 1)), base);
        for (auto run = block.begin(); !run.atEnd(); ++run)
            cursor.insertText(run.fragment().text(), run.fragment().charFormat());
    }
}

void fillTime(QTextCursor &cursor, const ChatRow &row)
{
    alignLeft(cursor);
    cursor.insertText(inOneBlock(row.time), greyFormat());
}

void fillNick(QTextCursor &cursor, const ChatRow &row)
{
    static const QTextTableCellFormat cellFormat = nickCellFormat();
    cursor.setBlockCharFormat(cellFormat);
    alignRight(cursor);
    const QString displayNick = ChatTable::elidedNick(row.nick);
    cursor.insertText(inOneBlock(displayNick) + QString(ChatTable::SpacesAfterNick, u' '),
                      nickFormat(displayNick, row.ownAway));
}

void fillText(QTextCursor &cursor, const ChatRow &row)
{
    alignLeft(cursor);
    const QTextCharFormat base = row.dimmed ? greyFormat() : QTextCharFormat();
    if (std::none_of(row.text.cbegin(), row.text.cend(), startsBlock))
        IrcText::insertWithLinks(cursor, row.text, base);
    else
        insertAsOneBlock(cursor, row.text, base);
}

// Fills the cells of a row whose first cell is at the position `first`. The last cell is filled
// first, so that the positions of the others stay valid.
void fillRow(QTextCursor &cursor, const ChatRow &row, int first, int columns)
{
    // A conversation whose tab was called "Server" at its first line has no third column. Nick and
    // text then share the second.
    const int textColumn = std::min(row.hasNickCell ? 2 : 1, columns - 1);
    cursor.setPosition(first + textColumn);
    fillText(cursor, row);
    if (row.hasNickCell) {
        cursor.setPosition(first + 1);
        fillNick(cursor, row);
    }
    cursor.setPosition(first);
    fillTime(cursor, row);
}

void appendBatch(QTextTable &table, QTextCursor &cursor, const QList<ChatRow> &rows)
{
    table.appendRows(static_cast<int>(rows.size()));
    // An empty cell has one position, so the new cells are the last positions of the table.
    // QTextTable::cellAt() would count all cells.
    const int columns = table.format().columns();
    int first = table.lastPosition() + 1;
    for (auto row = rows.rbegin(); row != rows.rend(); ++row) {
        first -= columns;
        fillRow(cursor, *row, first, columns);
    }
}

// The selected cells and, within a single cell, the selected document positions.
struct Selection
{
    int firstRow = 0;
    int rows = 0;
    int firstColumn = 0;
    int columns = 0;
    int start = 0;
    int end = std::numeric_limits<int>::max();
};

Selection selectionOf(const QTextCursor &cursor, const QTextTable &table)
{
    Selection selection;
    if (cursor.hasComplexSelection()) {
        cursor.selectedTableCells(&selection.firstRow, &selection.rows, &selection.firstColumn,
                                  &selection.columns);
    } else if (cursor.hasSelection() && cursor.currentTable()) {
        const QTextTableCell cell = table.cellAt(cursor);
        selection = {cell.row(),           1, cell.column(), 1, cursor.selectionStart(),
                     cursor.selectionEnd()};
    } else if (cursor.hasSelection()) {
        // A selection that starts or ends outside the table covers all of it.
        selection.rows = table.rows();
        selection.columns = table.columns();
    }
    return selection;
}

// Returns the selected text of a cell, without the spaces that separate it from the next cell.
QString selectedText(const QTextBlock &cell, int column, const QTextTable &table,
                     const Selection &selection)
{
    const QString text = cell.text();
    const bool hasNicks = table.columns() == 3;
    const int leading = hasNicks && column == 2 && text.startsWith(u' ') ? 1 : 0;
    const QString padding(ChatTable::SpacesAfterNick, u' ');
    const int trailing =
            hasNicks && column == 1 && text.endsWith(padding) ? int(padding.size()) : 0;
    const int start = std::max(selection.start - cell.position(), leading);
    const int end = std::min(selection.end - cell.position(), int(text.size()) - trailing);
    return LineBreaks::toSpaces(text.mid(start, std::max(end - start, 0)));
}

} // namespace

QTextTable *ChatTable::create(QTextEdit &view, int columns)
{
    view.setReadOnly(false);
    QTextCursor cursor = view.textCursor();
    cursor.movePosition(QTextCursor::End);

    QTextTableFormat format;
    format.setBorder(0);
    format.setCellPadding(2);
    format.setCellSpacing(0);
    format.setWidth(QTextLength(QTextLength::PercentageLength, 100));
    QList<QTextLength> widths{QTextLength(QTextLength::FixedLength, TimeWidth)};
    if (columns == 3)
        widths << QTextLength(QTextLength::FixedLength, NickWidth);
    widths << QTextLength(QTextLength::VariableLength, 0);
    format.setColumnWidthConstraints(widths);

    QTextTable *table = cursor.insertTable(1, columns, format);
    view.setReadOnly(true);
    return table;
}

QString ChatTable::currentTime(const QString &format)
{
    static qint64 knownTime = 0;
    static QString knownFormat;
    static QString known;
    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    if (now != knownTime || format != knownFormat) {
        knownTime = now;
        knownFormat = format;
        known = QDateTime::fromMSecsSinceEpoch(now).toString(format);
    }
    return known;
}

void ChatTable::appendRows(QTextTable &table, const QList<ChatRow> &rows)
{
    if (rows.isEmpty())
        return;
    auto *layout = qobject_cast<ChatLayout *>(table.document()->documentLayout());
    if (layout)
        layout->beginRows();
    QTextCursor cursor(table.document());
    cursor.beginEditBlock();
    for (qsizetype first = 0; first < rows.size(); first += BatchSize)
        appendBatch(table, cursor, rows.sliced(first, std::min(BatchSize, rows.size() - first)));
    cursor.endEditBlock();
    if (layout)
        layout->endRows();
}

QString ChatTable::selectedText(const QTextCursor &cursor)
{
    const QList<QTextFrame *> frames = cursor.document()->rootFrame()->childFrames();
    const auto *table = frames.isEmpty() ? nullptr : qobject_cast<QTextTable *>(frames.first());
    if (!table)
        return {};
    const Selection selection = selectionOf(cursor, *table);
    QStringList lines;
    QTextBlock cell = table->cellAt(selection.firstRow, 0).firstCursorPosition().block();
    for (int row = 0; row < selection.rows; ++row) {
        QStringList parts;
        for (int column = 0; column < table->columns(); ++column, cell = cell.next()) {
            const int selected = column - selection.firstColumn;
            if (selected >= 0 && selected < selection.columns)
                parts << ::selectedText(cell, column, *table, selection);
        }
        parts.removeAll(QString());
        lines << parts.join(u' ');
    }
    while (!lines.isEmpty() && lines.first().isEmpty())
        lines.removeFirst();
    while (!lines.isEmpty() && lines.last().isEmpty())
        lines.removeLast();
    return lines.join(u'\n');
}

QString ChatTable::elidedNick(const QString &nick)
{
    return nick.size() > 16 ? QString(nick.left(15) + u'…') : nick;
}

QColor ChatTable::nickColor(const QString &displayNick)
{
    if (displayNick.isEmpty())
        return QColor(102, 102, 102);
    quint32 hash = 0;
    for (const QChar unit : displayNick)
        hash = hash * 31 + unit.unicode();
    return QColor(NickColors.at(hash % NickColors.size()));
}
