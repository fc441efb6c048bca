#include "TabNames.h"

#include "ChannelNames.h"

namespace TabNames {

bool isPrivate(const QString &name)
{
    return !ChannelNames::isChannel(name) && name != Server && name != List;
}

} // namespace TabNames
