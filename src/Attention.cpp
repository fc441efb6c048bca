#include "Attention.h"

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

} // namespace Attention
