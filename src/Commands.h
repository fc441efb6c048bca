#pragma once

#include <QString>
#include <QStringList>

/// The understanding of an input line that begins with a slash.
namespace Commands {

/// An input line taken apart. The words and the sections count differently; see `section`.
struct Command
{
    /// What to do: word 0 in lower case, an alias replaced by the name it stands for. Empty if the
    /// line holds nothing but the slash.
    QString name;

    /// The words behind the slash, the command as typed among them, split at blanks; several
    /// blanks in a row count as one.
    QStringList words;

    /// The whole line, slash included.
    QString line;

    /// The line from field `first` to its end; empty if it has fewer fields.
    ///
    /// Fields are numbered like the words, the command being 0, but end at every single blank, so
    /// that the blanks of a message stay in it. With two blanks behind the command, field 1 is
    /// therefore empty, and field 2 is what `words` holds as word 1.
    [[nodiscard]] QString section(int first) const;
};

/// Takes `line` apart: an input line that is trimmed and begins with a slash.
///
/// A leading slash cannot be escaped: "//me" is the command "/me".
[[nodiscard]] Command parse(const QString &line);

} // namespace Commands
