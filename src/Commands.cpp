#include "Commands.h"

#include <QMap>

using namespace Qt::StringLiterals;

namespace {

QString canonicalName(const QString &name)
{
    static const QMap<QString, QString> aliases{
            {u"j"_s, u"join"_s},  {u"m"_s, u"msg"_s},  {u"l"_s, u"list"_s}, {u"a"_s, u"away"_s},
            {u"w"_s, u"whois"_s}, {u"b"_s, u"back"_s}, {u"n"_s, u"nick"_s}, {u"wc"_s, u"whois"_s},
            {u"p"_s, u"part"_s},  {u"raw"_s, u"raw"_s}};
    return aliases.value(name, name);
}

} // namespace

namespace Commands {

QString Command::section(int first) const
{
    return line.section(u' ', first);
}

Command parse(const QString &line)
{
    const QStringList words = line.mid(1).split(u' ', Qt::SkipEmptyParts);
    return {canonicalName(words.value(0).toLower()), words, line};
}

} // namespace Commands
