#pragma once

#include <QString>
#include <QStringList>

#include <optional>

class QCompleter;
class QLineEdit;
class QObject;

/// What can be completed in the input line, and the word at its cursor.
namespace NickCompletion {

/// What there is to complete in a tab.
struct Source
{
    QString tabName;
    QStringList entries; ///< The channel's, with or without ranks; not looked at elsewhere.
    QString ownNick;
};

/// Makes a completer with a popup and no candidates, which `parent` owns.
QCompleter *create(QObject *parent);

/// A channel's entries as they stand, the partner in a conversation, and the user, in this order;
/// none of them twice.
[[nodiscard]] QStringList candidates(const Source &source);

/// Lets `completer` offer `candidates`, in a string list model of its own. A nick that is
/// highlighted in the popup stays highlighted as long as it is among them.
void setCandidates(QCompleter &completer, const QStringList &candidates);

/// True while the popup of `completer` is open and `line` reads a nick highlighted there, even if
/// the nick has left the list since.
[[nodiscard]] bool hasChosenNick(QCompleter &completer, const QLineEdit &line);

/// What of the word at `cursor` stands before it: the word to complete. Words end at blanks. With
/// the cursor at the start it is the last word of a text that has a blank.
[[nodiscard]] QString wordBeforeCursor(const QString &text, int cursor);

/// What the first candidate that begins with `word` has behind it, if there is such a candidate;
/// an empty text if `word` is all of it. The word's case does not count.
[[nodiscard]] std::optional<QString> completionSuffix(const QString &word,
                                                      const QStringList &candidates);

} // namespace NickCompletion
