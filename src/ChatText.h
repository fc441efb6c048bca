#pragma once

#include <QString>

#include <vector>

class ChatLayout;

/// The conversation of a `ChatLayout` as text for screen readers: one line per row, "[time] nick:
/// text", which ends with a line feed.
///
/// The empty first row of the table is left out. Each offset in the text has a document position of
/// its own, so that a caret can be at every offset.
class ChatText final
{
public:
    /// Offsets of the first character and of the one after the last.
    struct Range
    {
        int start = 0;
        int end = 0;
    };

    /// `chatLayout` must outlive the last call of a function.
    explicit ChatText(const ChatLayout &chatLayout);

    /// Returns the number of UTF-16 code units.
    [[nodiscard]] int length() const;

    [[nodiscard]] int lineCount() const;

    /// Returns the line that contains `offset`; `lineCount()` for the end of the text.
    [[nodiscard]] int lineAt(int offset) const;

    /// Returns the range of `line` with its line feed; for `lineCount()`, an empty one at the end.
    [[nodiscard]] Range lineRange(int line) const;

    /// Returns the text of `range`, which may exceed the text.
    [[nodiscard]] QString text(Range range) const;

    /// Returns the document position of the character at `offset`.
    [[nodiscard]] int positionAt(int offset) const;

    /// Returns the offset of the character at a document position. If the text does not contain
    /// that, as for an empty cell, returns the offset of the next character.
    [[nodiscard]] int offsetAt(int position) const;

    [[nodiscard]] const std::vector<Range> &links() const;

private:
    // Reads the rows that were added since the last call.
    void readRows() const;

    const ChatLayout &layout;
    // Offset of each line's end.
    mutable std::vector<int> lineEnds;
    mutable std::vector<Range> linkRanges;
};
