#pragma once

#include <QString>
#include <QStringList>

#include <optional>

class QCompleter;
class QLineEdit;
class QObject;

/// Nick completion in the input line.
namespace NickCompletion {

/// The nicks that a tab offers for completion.
struct Source
{
    QString tabName;
    QStringList entries; ///< Of `NickList`; used only for a channel.
    QString ownNick;
};

/// Creates a completer with a popup and no candidates, owned by `parent`.
QCompleter *create(QObject *parent);

/// Returns a channel's entries, prefixes included, or a private conversation's partner, followed by
/// the user's own nick. Without duplicates.
[[nodiscard]] QStringList candidates(const Source &source);

/// Sets the candidates of `completer`. Keeps the highlighted row of the popup if its nick is among
/// them.
void setCandidates(QCompleter &completer, const QStringList &candidates);

/// Returns true while the popup of `completer` is open and `line` contains the nick highlighted in
/// it, also if that nick has been removed from the candidates since.
[[nodiscard]] bool hasChosenNick(QCompleter &completer, const QLineEdit &line);

/// Returns the part before `cursor` of the word at `cursor`. Spaces separate words. Intended: with
/// the cursor at the start, returns the last word of a text with spaces.
[[nodiscard]] QString wordBeforeCursor(const QString &text, int cursor);

/// Returns what follows `word` in the first candidate that starts with it, case-insensitively.
[[nodiscard]] std::optional<QString> completionSuffix(const QString &word,
                                                      const QStringList &candidates);

} // namespace NickCompletion
