#include "FormFields.h"

#include <QComboBox>
#include <QFormLayout>
#include <QLabel>

namespace FormFields {

QFormLayout *formOf(const QWidget *window)
{
    return window->findChild<QFormLayout *>();
}

QStringList labels(const QWidget *window)
{
    QStringList texts;
    const QFormLayout *form = formOf(window);
    for (int row = 0; form != nullptr && row < form->rowCount(); ++row) {
        const QLayoutItem *item = form->itemAt(row, QFormLayout::LabelRole);
        const auto *label = item != nullptr ? qobject_cast<QLabel *>(item->widget()) : nullptr;
        texts.append(label != nullptr ? label->text() : QString());
    }
    return texts;
}

QWidget *fieldOf(const QWidget *window, const QString &label)
{
    const int row = static_cast<int>(labels(window).indexOf(label));
    if (row < 0)
        return nullptr;
    QLayoutItem *item = formOf(window)->itemAt(row, QFormLayout::FieldRole);
    return item->layout() != nullptr ? item->layout()->itemAt(0)->widget() : item->widget();
}

QStringList itemsOf(const QComboBox *combo)
{
    QStringList items;
    for (int index = 0; index < combo->count(); ++index)
        items.append(combo->itemText(index));
    return items;
}

} // namespace FormFields
