#pragma once

#include <QString>
#include <QStringList>

/// Parses input lines that begin with a slash.
namespace Commands {

/// The commands that the program knows.
enum class Action { Unknown, Join, Part, Nick, Msg, Raw, List, Away, Back, Whois, Autojoin };

/// A parsed input line. `words` and `section` count differently.
struct Command
{
    /// `Unknown` also for a known name with too few words.
    Action action = Action::Unknown;

    /// Word 0 in lower case; an alias is replaced by its command's name. Empty if the line is
    /// only the slash.
    QString name;

    /// The words after the slash, the command included, split at runs of spaces.
    QStringList words;

    /// The whole line, slash included.
    QString line;

    /// Returns the line from field `first` to its end; empty if it has fewer fields.
    ///
    /// Fields are numbered like the words, the command being 0, but end at every single space, so
    /// that a message keeps its spaces. With two spaces after the command, field 1 is therefore
    /// empty, and field 2 is word 1.
    [[nodiscard]] QString section(int first) const;
};

/// Parses `line`, which must be trimmed and begin with a slash.
///
/// A leading slash cannot be escaped: "//me" is the command "/me".
[[nodiscard]] Command parse(const QString &line);

} // namespace Commands
