#pragma once

#include <QMap>
#include <QString>
#include <QStringList>

/// Parses a style sheet, so that tests check its values and not its formatting.
///
/// Supports plain rules ("selector, selector { property: value; … }") and comments. Whitespace in
/// selectors and values is reduced to single spaces. A declaration in a later rule replaces an
/// earlier one of the same selector, as in Qt.
class StyleSheetReader final
{
public:
    using Declarations = QMap<QString, QString>;

    explicit StyleSheetReader(const QString &sheet);

    [[nodiscard]] Declarations rule(const QString &selector) const;

    /// Returns the value of `property` for `selector`; a null string if there is none.
    [[nodiscard]] QString value(const QString &selector, const QString &property) const;

    /// Returns all selectors, sorted.
    [[nodiscard]] QStringList selectors() const;

private:
    QMap<QString, Declarations> rules;
};
