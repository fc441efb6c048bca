#pragma once

#include <QString>
#include <QStringList>
#include <QWidget>

class QFormLayout;

/// Finds the fields of a form as a user does: by the label in front of them.
namespace FormFields {

/// The form layout of `window`, or null if it has none.
[[nodiscard]] QFormLayout *formOf(const QWidget *window);

/// The labels of the form of `window` from the top; an empty text where a row has no text label
/// in front.
[[nodiscard]] QStringList labels(const QWidget *window);

/// The field behind `label`, the first one if there are several; null if there is no such label.
[[nodiscard]] QWidget *fieldOf(const QWidget *window, const QString &label);

/// The field behind `label` as a widget of the class wanted; null if it is none.
template <typename Wanted>
[[nodiscard]] Wanted *field(const QWidget *window, const QString &label)
{
    return qobject_cast<Wanted *>(fieldOf(window, label));
}

} // namespace FormFields
