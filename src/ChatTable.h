#pragma once

#include <QColor>
#include <QList>
#include <QString>

class QTextCursor;
class QTextEdit;
class QTextTable;

/// One line of a conversation, ready to be shown.
struct ChatRow
{
    /// The formatted time.
    QString time;
    /// The sender in full, or empty for a line of the system.
    QString nick;
    /// The text as it is shown, with the leading blank that most rows have.
    QString text;
    /// Grey text, for what happens around the conversation.
    bool dimmed = false;
    /// The sender is the user, who is away: the nick is shown pale and italic.
    bool ownAway = false;
    /// The row shows its nick, in a cell with a rule at its right. Without one the text is in the
    /// second column, whatever columns the table has.
    bool hasNickCell = true;
};

/// The table that holds a conversation: one row per line, growing at its end only.
///
/// The columns are time, nick and text, or time and text where no nicks are shown. Each cell has
/// exactly one block, so that the table's rows are the conversation's lines; characters of a cell
/// that would start a new block are replaced by ones that don't.
namespace ChatTable {

/// They separate a nick from the rule on its right.
inline constexpr int SpacesAfterNick = 2;

/// Inserts an empty conversation at the end of `view`'s document and leaves the view read-only.
///
/// `columns` is 2 or 3. The table has one row that stays empty: it makes the small gap above the
/// first line. The table belongs to the document; null is returned if there is none.
[[nodiscard]] QTextTable *create(QTextEdit &view, int columns);

/// Appends `rows` below the last one, in their order and as one change of the document.
///
/// Each change costs time that grows with the table, so lines that come together are appended
/// together. The document is the same as after as many single calls.
void appendRows(QTextTable &table, const QList<ChatRow> &rows);

/// Returns what `cursor` selects as plain text, one line per row: "time nick text" with a space
/// between them, without the cells that are not selected or empty.
///
/// A selection within one cell gives its text alone. There are no empty lines at either end.
[[nodiscard]] QString selectedText(const QTextCursor &cursor);

/// `nick` as it is shown: the first 15 code units and an ellipsis if it has more than 16.
[[nodiscard]] QString elidedNick(const QString &nick);

/// Colour of a nick as it is shown. Nicks that elide alike share a colour.
[[nodiscard]] QColor nickColor(const QString &displayNick);

} // namespace ChatTable
