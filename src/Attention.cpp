#include "Attention.h"

#include "ChannelNames.h"
#include "TabNames.h"

#include <QRegularExpression>

using namespace Qt::StringLiterals;

namespace Attention {

bool mentions(const QString &text, const QString &nick)
{
    // The plain search spares nearly every line the expression, which costs ten times as much.
    if (nick.isEmpty() || !text.contains(nick, Qt::CaseInsensitive))
        return false;
    const QRegularExpression word(u"\\b"_s + QRegularExpression::escape(nick) + u"\\b"_s,
                                  QRegularExpression::CaseInsensitiveOption);
    return word.match(text).hasMatch();
}

QString shortened(const QString &text)
{
    constexpr qsizetype Longest = 255;
    const QString ellipsis = u"..."_s;
    if (text.size() <= Longest)
        return text;
    return text.first(Longest - ellipsis.size()) + ellipsis;
}

bool isDeserved(const QString &tabName, const QString &text, const QString &ownNick)
{
    return ChannelNames::isChannel(tabName) ? mentions(text, ownNick)
                                            : TabNames::isPrivate(tabName);
}

Notice noticeOf(const QString &tabName, const QString &text, const QString &sender)
{
    const QString message = shortened(text);
    if (ChannelNames::isChannel(tabName))
        return {tabName, u"%1: %2"_s.arg(sender, message)};
    return {sender, message};
}

} // namespace Attention
