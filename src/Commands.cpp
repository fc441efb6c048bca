#include "Commands.h"

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace Commands {

namespace {

struct Entry
{
    QLatin1StringView name;
    QLatin1StringView alias; ///< The name itself for none.
    Action action = Action::Unknown;
    qsizetype words = 1; ///< Fewest words, the command included.
};

constexpr std::array Table{
        Entry{"join"_L1, "j"_L1, Action::Join, 2},
        Entry{"part"_L1, "p"_L1, Action::Part},
        Entry{"nick"_L1, "n"_L1, Action::Nick, 2},
        Entry{"msg"_L1, "m"_L1, Action::Msg, 3},
        Entry{"raw"_L1, "raw"_L1, Action::Raw, 2},
        Entry{"list"_L1, "l"_L1, Action::List},
        Entry{"away"_L1, "a"_L1, Action::Away},
        Entry{"back"_L1, "b"_L1, Action::Back},
        Entry{"whois"_L1, "w"_L1, Action::Whois, 2},
        Entry{"whois"_L1, "wc"_L1, Action::Whois, 2},
        Entry{"autojoin"_L1, "autojoin"_L1, Action::Autojoin, 2},
};

} // namespace

QString Command::section(int first) const
{
    return line.section(u' ', first);
}

Command parse(const QString &line)
{
    const QStringList words = line.mid(1).split(u' ', Qt::SkipEmptyParts);
    const QString name = words.value(0).toLower();
    const auto *const entry = std::find_if(Table.cbegin(), Table.cend(), [&](const Entry &known) {
        return name == known.name || name == known.alias;
    });
    if (entry == Table.cend())
        return {Action::Unknown, name, words, line};
    const Action action = words.size() < entry->words ? Action::Unknown : entry->action;
    return {action, QString(entry->name), words, line};
}

} // namespace Commands
