#pragma once

#include <QColor>
#include <QList>
#include <QString>

class QTextCursor;
class QTextEdit;
class QTextTable;

/// One line of a conversation.
struct ChatRow
{
    /// The formatted time.
    QString time;
    /// The sender, not elided; empty for system lines.
    QString nick;
    /// The text with the leading space that most rows have.
    QString text;
    /// The text is grey, as in status lines.
    bool dimmed = false;
    /// The sender is the user, who is away: the nick is pale grey and italic.
    bool ownAway = false;
    /// The nick is shown in a cell with a right border. Otherwise the text is in the second column,
    /// even if the table has three.
    bool hasNickCell = true;
};

/// The table that holds a conversation, one row per line. Rows are only added at its end.
///
/// The columns are time, nick and text, or time and text. Each cell has one block: characters that
/// would start another one are replaced.
namespace ChatTable {

/// Number of spaces between a nick and the border at its right.
inline constexpr int SpacesAfterNick = 2;

/// Inserts a table with 2 or 3 `columns` at the end of `view`'s document, which owns it, and makes
/// the view read-only. Returns null if the table could not be inserted.
///
/// Intended: the table has one row that stays empty, as a small gap above the first line.
[[nodiscard]] QTextTable *create(QTextEdit &view, int columns);

/// Returns the local time in `format`, for the first column. The local time zone is looked up once
/// per millisecond only, since that is slow.
[[nodiscard]] QString currentTime(const QString &format);

/// Appends `rows` in one edit block. The result is the same as for one call per row, but each edit
/// block takes time that grows with the table.
void appendRows(QTextTable &table, const QList<ChatRow> &rows);

/// Returns the selection of `cursor` as plain text, one line per row: "time nick text", without
/// cells that are empty or not selected.
///
/// A selection within one cell returns only the selected text. Empty lines at both ends are
/// removed.
[[nodiscard]] QString selectedText(const QTextCursor &cursor);

/// Returns `nick` as displayed: if it has more than 16 code units, the first 15 and an ellipsis.
[[nodiscard]] QString elidedNick(const QString &nick);

/// Returns the colour of an elided nick. Nicks with the same elided form share a colour.
[[nodiscard]] QColor nickColor(const QString &displayNick);

} // namespace ChatTable
