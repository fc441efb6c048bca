#include "NickList.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr QStringView Prefixes = u"~&@%+";

bool isBefore(const QString &left, const QString &right)
{
    return QString::compare(left, right, Qt::CaseInsensitive) < 0;
}

// Does not copy: searching and sorting call this for thousands of entries.
QStringView nickOf(QStringView entry)
{
    const bool hasPrefix = !entry.isEmpty() && NickList::isPrefix(entry.front());
    return entry.sliced(hasPrefix ? 1 : 0);
}

} // namespace

namespace NickList {

bool isPrefix(QChar character)
{
    return Prefixes.contains(character);
}

QString stripPrefix(const QString &entry)
{
    return nickOf(entry).toString();
}

int prefixRank(const QString &entry)
{
    const qsizetype index = entry.isEmpty() ? -1 : Prefixes.indexOf(entry.front());
    return index < 0 ? static_cast<int>(Prefixes.size()) + 1 : static_cast<int>(index) + 1;
}

bool isOperator(const QString &entry)
{
    return prefixRank(entry) < prefixRank(u"+"_s);
}

qsizetype indexOfNick(const QStringList &entries, const QString &nick)
{
    const auto found =
            std::find_if(entries.cbegin(), entries.cend(),
                         [&nick](const QString &entry) { return nickOf(entry) == nick; });
    return found == entries.cend() ? -1 : found - entries.cbegin();
}

std::optional<QString> remove(QStringList &entries, const QString &nick)
{
    const qsizetype index = indexOfNick(entries, nick);
    if (index < 0)
        return std::nullopt;
    return entries.takeAt(index);
}

std::optional<Renamed> rename(QStringList &entries, const QString &oldNick, const QString &newNick)
{
    qsizetype index = entries.indexOf(oldNick);
    if (index < 0)
        index = indexOfNick(entries, oldNick);
    if (index < 0)
        return std::nullopt;
    const QString oldEntry = entries.at(index);
    const bool hasPrefix = !oldEntry.isEmpty() && oldEntry != oldNick;
    const QString newEntry = hasPrefix ? QString(oldEntry.front() + newNick) : newNick;
    entries[index] = newEntry;
    return Renamed{oldEntry, newEntry};
}

void sortByRank(QStringList &entries)
{
    std::sort(entries.begin(), entries.end(), [](const QString &left, const QString &right) {
        const int leftRank = prefixRank(left);
        const int rightRank = prefixRank(right);
        if (leftRank != rightRank)
            return leftRank < rightRank;
        return nickOf(left).compare(nickOf(right), Qt::CaseInsensitive) < 0;
    });
}

void sortByText(QStringList &entries)
{
    std::sort(entries.begin(), entries.end(), isBefore);
}

void insertSorted(QStringList &entries, const QString &entry)
{
    if (!std::is_sorted(entries.cbegin(), entries.cend(), isBefore)) {
        entries.append(entry);
        sortByText(entries);
        return;
    }
    // Usual case: only the first JOIN after a name list finds the entries unsorted. The end of a
    // net split brings many JOINs.
    entries.insert(std::upper_bound(entries.cbegin(), entries.cend(), entry, isBefore), entry);
}

} // namespace NickList
