#include "RawLines.h"

#include <QString>

bool RawLines::isShown(const QString &line)
{
    if (!line.startsWith(u':'))
        return true;
    if (line.contains(u'!'))
        return false;
    // A numeric is not shown raw: the parser hands on what it does not handle itself.
    if (line.size() <= 4 || line.at(1) == u' ')
        return true;
    const qsizetype space = line.indexOf(u' ');
    if (space < 0 || space + 4 >= line.size())
        return true;
    bool isNumeric = false;
    static_cast<void>(QStringView(line).sliced(space + 1, 3).toInt(&isNumeric, 10));
    return !isNumeric;
}
