#include "TabNames.h"

namespace TabNames {

bool isChannel(const QString &name)
{
    return name.startsWith(u'#');
}

bool isPrivate(const QString &name)
{
    return !isChannel(name) && name != Server && name != List;
}

QString asChannel(const QString &word)
{
    return isChannel(word) ? word : QString(u'#' + word);
}

} // namespace TabNames
