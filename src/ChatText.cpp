#include "ChatText.h"

#include "CellText.h"
#include "ChatLayout.h"
#include "ChatTable.h"

#include <QLatin1StringView>
#include <QTextBlock>
#include <QTextDocument>
#include <QVarLengthArray>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

// The text of one cell. The separator stands for as many document positions after the cell's text:
// the two spaces after a nick, or the block separator after a time or a text.
struct Piece
{
    QTextBlock block;
    // Offset in the block.
    int first = 0;
    int length = 0;
    QLatin1StringView separator;

    [[nodiscard]] int size() const { return length + static_cast<int>(separator.size()); }
    [[nodiscard]] int position() const { return block.position() + first; }
};

using Pieces = QVarLengthArray<Piece, 3>;

int textLength(const QTextBlock &block)
{
    return block.length() - 1;
}

Pieces piecesOf(const ChatLayout &layout, int line)
{
    Pieces pieces;
    QTextBlock block = layout.cellBlock(line + 1, 0);
    if (textLength(block) > 0)
        pieces.append({block, 0, textLength(block), " "_L1});
    block = block.next();
    // Only nick cells have a border. A table with three columns can also have rows without a nick.
    const bool hasNick = layout.columnCount() == 3 && CellText::rightBorder(block).width > 0;
    if (hasNick) {
        const int nickLength = textLength(block) - ChatTable::SpacesAfterNick;
        if (nickLength > 0)
            pieces.append({block, 0, nickLength, ": "_L1});
        block = block.next();
    }
    const bool isIndented = hasNick && block.text().startsWith(u' ');
    const int first = isIndented ? 1 : 0;
    pieces.append({block, first, textLength(block) - first, "\n"_L1});
    return pieces;
}

QString textOf(const Piece &piece)
{
    QString text = piece.block.text().sliced(piece.first, piece.length);
    // A row must be one line, and screen readers take U+FFFC for a child object.
    text.replace(QChar::LineSeparator, u' ');
    text.replace(QChar::ObjectReplacementCharacter, QChar::ReplacementCharacter);
    return text + piece.separator;
}

void collectLinks(const Piece &piece, int offset, std::vector<ChatText::Range> &links)
{
    QString previousTarget;
    for (auto run = piece.block.begin(); !run.atEnd(); ++run) {
        const QTextFragment fragment = run.fragment();
        const QTextCharFormat format = fragment.charFormat();
        const QString target = format.isAnchor() ? format.anchorHref() : QString();
        if (!target.isEmpty()) {
            const int start = offset + fragment.position() - piece.position();
            const int end = start + fragment.length();
            if (target == previousTarget && links.back().end == start)
                links.back().end = end;
            else
                links.push_back({.start = start, .end = end});
        }
        previousTarget = target;
    }
}

} // namespace

ChatText::ChatText(const ChatLayout &chatLayout)
    : layout(chatLayout)
{
}

void ChatText::readRows() const
{
    const int count = std::max(layout.rowCount() - 1, 0);
    if (count < static_cast<int>(lineEnds.size())) {
        lineEnds.clear();
        linkRanges.clear();
    }
    for (int line = static_cast<int>(lineEnds.size()); line < count; ++line) {
        int offset = lineEnds.empty() ? 0 : lineEnds.back();
        const Pieces pieces = piecesOf(layout, line);
        for (const Piece &piece : pieces) {
            collectLinks(piece, offset, linkRanges);
            offset += piece.size();
        }
        lineEnds.push_back(offset);
    }
}

int ChatText::length() const
{
    readRows();
    return lineEnds.empty() ? 0 : lineEnds.back();
}

int ChatText::lineCount() const
{
    readRows();
    return static_cast<int>(lineEnds.size());
}

int ChatText::lineAt(int offset) const
{
    readRows();
    const auto line = std::upper_bound(lineEnds.cbegin(), lineEnds.cend(), offset);
    return static_cast<int>(line - lineEnds.cbegin());
}

ChatText::Range ChatText::lineRange(int line) const
{
    readRows();
    const auto index = static_cast<std::size_t>(line);
    const int start = line > 0 ? lineEnds[index - 1] : 0;
    return {.start = start, .end = index < lineEnds.size() ? lineEnds[index] : start};
}

QString ChatText::text(Range range) const
{
    const int start = std::max(range.start, 0);
    const int end = std::min(range.end, length());
    if (start >= end)
        return {};
    const int firstLine = lineAt(start);
    const int lastLine = lineAt(end - 1);
    QString text;
    for (int line = firstLine; line <= lastLine; ++line) {
        const Pieces pieces = piecesOf(layout, line);
        for (const Piece &piece : pieces)
            text += textOf(piece);
    }
    return text.mid(start - lineRange(firstLine).start, end - start);
}

int ChatText::positionAt(int offset) const
{
    const int line = lineAt(offset);
    if (line == lineCount())
        return layout.document()->characterCount() - 1;
    int start = lineRange(line).start;
    const Pieces pieces = piecesOf(layout, line);
    for (const Piece &piece : pieces) {
        if (offset < start + piece.size())
            return piece.position() + offset - start;
        start += piece.size();
    }
    return pieces.back().position();
}

int ChatText::offsetAt(int position) const
{
    const QTextBlock block = layout.document()->findBlock(position);
    const int cell = block.blockNumber() - 1;
    const int columns = layout.columnCount();
    if (cell < columns)
        return 0;
    const int line = cell / columns - 1;
    if (line >= lineCount())
        return length();
    int offset = lineRange(line).start;
    const Pieces pieces = piecesOf(layout, line);
    for (const Piece &piece : pieces) {
        if (position < piece.position() + piece.size())
            return offset + std::max(position - piece.position(), 0);
        offset += piece.size();
    }
    return offset;
}

const std::vector<ChatText::Range> &ChatText::links() const
{
    readRows();
    return linkRanges;
}
