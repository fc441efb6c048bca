#pragma once

#include <QString>
#include <QStringList>

#include <optional>

/// Entries of a channel's user list.
///
/// An entry is one name of a RPL_NAMREPLY as the server sent it: a nick, with or without one of the
/// prefixes "~&@%+", which denotes the user's rank.
namespace NickList {

[[nodiscard]] bool isPrefix(QChar character);

/// Returns `entry` without its prefix. Removes only one: "+@nick" becomes "@nick".
[[nodiscard]] QString stripPrefix(const QString &entry);

/// Returns the rank of `entry`, from 1 for "~" to 5 for "+", and 6 if it has no prefix.
[[nodiscard]] int prefixRank(const QString &entry);

/// Returns true if `entry` has one of the prefixes "~&@%".
[[nodiscard]] bool isOperator(const QString &entry);

/// Returns the index of the first entry with the nick `nick`, or -1. Case-sensitive.
[[nodiscard]] qsizetype indexOfNick(const QStringList &entries, const QString &nick);

/// Removes the first entry with the nick `nick` from `entries` and returns it. Case-sensitive.
std::optional<QString> remove(QStringList &entries, const QString &nick);

struct Renamed
{
    QString oldEntry;
    QString newEntry;
};

/// Renames the user `oldNick` in place and keeps the prefix. Prefers an entry that equals `oldNick`
/// to one with a prefix.
std::optional<Renamed> rename(QStringList &entries, const QString &oldNick, const QString &newNick);

/// Sorts by rank, then by nick, case-insensitively. Not stable.
void sortByRank(QStringList &entries);

/// Sorts by the whole entry, prefix included, case-insensitively. Not stable.
///
/// Intended: ranks do not count, so "%", "&", "+" and "@" sort before letters and "~" after them. A
/// channel's list has this order from a JOIN until the next name list.
void sortByText(QStringList &entries);

/// Adds `entry` and sorts like `sortByText`, in linear time if `entries` are already sorted.
void insertSorted(QStringList &entries, const QString &entry);

} // namespace NickList
