#pragma once

#include <QString>

#include <vector>

class ChatLayout;

/// The conversation of a `ChatLayout` as screen readers get it: one line per row, "[time] nick:
/// text".
///
/// The empty first row of the table is left out. Each line ends with a line feed. Each offset is
/// another position of the document, so that a caret can be at every offset.
class ChatText final
{
public:
    /// Offsets of the first character and of the one after the last.
    struct Range
    {
        int start = 0;
        int end = 0;
    };

    /// `shown` must outlive this object unless it is not used any more.
    explicit ChatText(const ChatLayout &shown);

    /// Number of UTF-16 code units.
    [[nodiscard]] int length() const;

    [[nodiscard]] int lineCount() const;

    /// Line that contains `offset`; `lineCount()` for the end of the text.
    [[nodiscard]] int lineAt(int offset) const;

    /// Range of `line` with its line feed; empty at the end of the text for `lineCount()`.
    [[nodiscard]] Range lineRange(int line) const;

    /// The text of `range`, as far as there is text.
    [[nodiscard]] QString text(Range range) const;

    /// Position in the document of the character at `offset`.
    [[nodiscard]] int positionAt(int offset) const;

    /// Offset of the character at a position of the document. For a position that is not read, such
    /// as a separator of cells, it is the offset of what follows.
    [[nodiscard]] int offsetAt(int position) const;

    /// Ranges of all links, in their order.
    [[nodiscard]] const std::vector<Range> &links() const;

private:
    // Reads the rows that were added since the last call.
    void readRows() const;

    const ChatLayout &layout;
    // Offset after each line.
    mutable std::vector<int> lineEnds;
    mutable std::vector<Range> linkRanges;
};
