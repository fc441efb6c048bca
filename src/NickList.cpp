#include "NickList.h"

#include <algorithm>

namespace {

constexpr QStringView Prefixes = u"~&@%+";

} // namespace

namespace NickList {

bool isPrefix(QChar character)
{
    return Prefixes.contains(character);
}

QString stripPrefix(const QString &entry)
{
    return !entry.isEmpty() && isPrefix(entry.front()) ? entry.mid(1) : entry;
}

int rank(const QString &entry)
{
    const qsizetype index = entry.isEmpty() ? -1 : Prefixes.indexOf(entry.front());
    return index < 0 ? static_cast<int>(Prefixes.size()) + 1 : static_cast<int>(index) + 1;
}

qsizetype indexOfNick(const QStringList &entries, const QString &nick)
{
    const auto found =
            std::find_if(entries.cbegin(), entries.cend(),
                         [&nick](const QString &entry) { return stripPrefix(entry) == nick; });
    return found == entries.cend() ? -1 : found - entries.cbegin();
}

void sortByRank(QStringList &entries)
{
    std::sort(entries.begin(), entries.end(), [](const QString &left, const QString &right) {
        const int leftRank = rank(left);
        const int rightRank = rank(right);
        if (leftRank != rightRank)
            return leftRank < rightRank;
        return QString::compare(stripPrefix(left), stripPrefix(right), Qt::CaseInsensitive) < 0;
    });
}

void sortPlain(QStringList &entries)
{
    std::sort(entries.begin(), entries.end(), [](const QString &left, const QString &right) {
        return QString::compare(left, right, Qt::CaseInsensitive) < 0;
    });
}

} // namespace NickList
