#pragma once

#include <QString>
#include <QStringList>

#include <optional>

/// Entries of a channel's user list.
///
/// An entry is one token of a name list as the server sent it: at most one recognised prefix
/// character that tells the user's rank, and the nick.
namespace NickList {

/// True if `character` is one of the prefixes "~&@%+".
[[nodiscard]] bool isPrefix(QChar character);

/// `entry` without its first character if that is a prefix; otherwise `entry` unchanged.
/// Only one prefix is ever taken off: "+@nick" gives "@nick".
[[nodiscard]] QString stripPrefix(const QString &entry);

/// Rank of an entry, 1 for "~" to 5 for "+", and 6 for an empty or unprefixed one.
[[nodiscard]] int prefixRank(const QString &entry);

/// True for an entry with one of the prefixes "~&@%".
[[nodiscard]] bool isOperator(const QString &entry);

/// Index of the first entry whose nick equals `nick` exactly, or -1.
[[nodiscard]] qsizetype indexOfNick(const QStringList &entries, const QString &nick);

/// Takes the first entry whose nick equals `nick` exactly out of `entries` and returns it.
std::optional<QString> remove(QStringList &entries, const QString &nick);

struct Renamed
{
    QString oldEntry;
    QString newEntry;
};

/// Gives the user `oldNick` another nick, and keeps their place and their rank. The user is looked
/// for by the whole entry first, and only then behind a prefix.
std::optional<Renamed> rename(QStringList &entries, const QString &oldNick, const QString &newNick);

/// Orders by rank and, within one rank, by nick without regard to case. Not stable.
void sortByRank(QStringList &entries);

/// Orders by the whole entry, prefix included, without regard to case. Not stable.
///
/// It knows no rank: "%", "&", "+" and "@" come before letters and "~" after them. The list of a
/// channel takes this order whenever somebody joins, until the next name list.
void sortByText(QStringList &entries);

/// Adds `entry` and brings all of `entries` into the order of `sortByText`; in linear time if they
/// are in that order already.
void insertSorted(QStringList &entries, const QString &entry);

} // namespace NickList
