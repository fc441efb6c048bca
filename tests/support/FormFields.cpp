#include "FormFields.h"

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
        const auto *label =
                qobject_cast<QLabel *>(form->itemAt(row, QFormLayout::LabelRole)->widget());
        texts.append(label != nullptr ? label->text() : QString());
    }
    return texts;
}

QWidget *fieldOf(const QWidget *window, const QString &label)
{
    const int row = static_cast<int>(labels(window).indexOf(label));
    return row < 0 ? nullptr : formOf(window)->itemAt(row, QFormLayout::FieldRole)->widget();
}

} // namespace FormFields
