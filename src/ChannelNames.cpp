#include "ChannelNames.h"

#include <QRegularExpression>

using namespace Qt::StringLiterals;

namespace ChannelNames {

bool isChannel(const QString &name)
{
    return name.startsWith(u'#');
}

QString withPrefix(const QString &word)
{
    return isChannel(word) ? word : QString(u'#' + word);
}

QStringList parseChannels(const QString &text)
{
    static const QRegularExpression separators(u"[,\\s]+"_s);
    QStringList channels = text.trimmed().split(separators, Qt::SkipEmptyParts);
    for (QString &channel : channels)
        channel = withPrefix(channel);
    return channels;
}

} // namespace ChannelNames
