#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <QWidget>

#include <algorithm>

class QComboBox;
class QFormLayout;

/// Finds the fields of a form by their labels.
namespace FormFields {

/// Returns the form layout of `window`; null if it has none.
[[nodiscard]] QFormLayout *formOf(const QWidget *window);

/// Returns the label of each row; an empty text if the row has none.
[[nodiscard]] QStringList labels(const QWidget *window);

/// Returns the first field in the row with this label; null if there is no such row.
[[nodiscard]] QWidget *fieldOf(const QWidget *window, const QString &label);

/// Returns that field if it is of this class, otherwise null.
template <typename Wanted>
[[nodiscard]] Wanted *field(const QWidget *window, const QString &label)
{
    return qobject_cast<Wanted *>(fieldOf(window, label));
}

[[nodiscard]] QStringList itemsOf(const QComboBox *combo);

/// Returns the first descendant of this class with this text; null if there is none.
template <typename Wanted>
[[nodiscard]] Wanted *childWithText(const QObject *parent, const QString &text)
{
    const QList<Wanted *> children = parent->findChildren<Wanted *>();
    const auto found = std::find_if(children.cbegin(), children.cend(),
                                    [&text](const Wanted *child) { return child->text() == text; });
    return found == children.cend() ? nullptr : *found;
}

} // namespace FormFields
