#pragma once

#include <QMap>
#include <QString>
#include <QStringList>

/// A style sheet taken apart, so that tests look at its values and not at its spelling.
///
/// Reads plain rules ("selector, selector { property: value; … }") and comments. White space in
/// selectors and values is brought down to single blanks. A declaration of a later rule replaces an
/// earlier one of the same selector, as it does in Qt.
class StyleSheetReader final
{
public:
    using Declarations = QMap<QString, QString>;

    explicit StyleSheetReader(const QString &sheet);

    /// All declarations of `selector`; empty if the sheet has none.
    [[nodiscard]] Declarations rule(const QString &selector) const;

    /// The value of `property` in the rule of `selector`; a null string if there is none.
    [[nodiscard]] QString value(const QString &selector, const QString &property) const;

    /// Each selector that has a rule, sorted.
    [[nodiscard]] QStringList selectors() const;

private:
    QMap<QString, Declarations> rules;
};
