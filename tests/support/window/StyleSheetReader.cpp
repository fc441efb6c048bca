#include "StyleSheetReader.h"

#include <QRegularExpression>
#include <QStringList>

using namespace Qt::StringLiterals;

namespace {

// A ";" or ":" in brackets or quotes belongs to the value, as in url(data:image/png;base64,…).
StyleSheetReader::Declarations parseDeclarations(const QString &body)
{
    static const QRegularExpression declaration(
            uR"(([\w-]+)\s*:\s*((?:\([^)]*\)|"[^"]*"|[^;("])+))"_s);
    StyleSheetReader::Declarations declarations;
    auto found = declaration.globalMatch(body);
    while (found.hasNext()) {
        const QRegularExpressionMatch match = found.next();
        declarations.insert(match.captured(1), match.captured(2).simplified());
    }
    return declarations;
}

} // namespace

StyleSheetReader::StyleSheetReader(const QString &sheet)
{
    static const QRegularExpression comment(uR"(/\*.*?\*/)"_s,
                                            QRegularExpression::DotMatchesEverythingOption);
    static const QRegularExpression ruleOfSheet(uR"(([^{}]+)\{([^{}]*)\})"_s);
    const QString text = QString(sheet).remove(comment);
    auto found = ruleOfSheet.globalMatch(text);
    while (found.hasNext()) {
        const QRegularExpressionMatch match = found.next();
        const Declarations declarations = parseDeclarations(match.captured(2));
        const QStringList ruleSelectors = match.captured(1).split(u',');
        for (const QString &selector : ruleSelectors)
            rules[selector.simplified()].insert(declarations);
    }
}

StyleSheetReader::Declarations StyleSheetReader::rule(const QString &selector) const
{
    return rules.value(selector);
}

QString StyleSheetReader::value(const QString &selector, const QString &property) const
{
    return rules.value(selector).value(property);
}

QStringList StyleSheetReader::selectors() const
{
    return rules.keys();
}
