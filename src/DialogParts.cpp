#include "DialogParts.h"

#include "ComboBoxKeys.h"
#include "FocusMark.h"

#include <QAbstractItemView>
#include <QAccessible>
#include <QComboBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QPushButton>

using namespace Qt::StringLiterals;

namespace DialogParts {

QPushButton *makeButton(const QString &text, const QString &name)
{
    auto *button = new QPushButton(text);
    button->setObjectName(name);
    return button;
}

QComboBox *makeCombo(const QStringList &texts, const QString &name)
{
    auto *combo = new QComboBox;
    combo->setObjectName(name);
    combo->addItems(texts);
    combo->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    new ComboBoxKeys(*combo);
    return combo;
}

QDialogButtonBox *makeSaveAndCancel(QDialog &dialog)
{
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Save | QDialogButtonBox::Cancel);
    QPushButton *save = buttons->button(QDialogButtonBox::Save);
    save->setObjectName(u"connectButton"_s);
    new FocusMark(*save);
    buttons->button(QDialogButtonBox::Cancel)->setObjectName(u"cancelButton"_s);
    QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
    QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    return buttons;
}

void namePopups(const QDialog &dialog)
{
    const auto boxes = dialog.findChildren<QComboBox *>();
    for (QComboBox *box : boxes) {
        const QAccessibleInterface *accessible = QAccessible::queryAccessibleInterface(box);
        box->view()->setAccessibleName(accessible->text(QAccessible::Name));
    }
}

void letGoOfWindows(QWidget &parent)
{
    const auto children = parent.findChildren<QWidget *>(Qt::FindDirectChildrenOnly);
    for (QWidget *child : children) {
        if (child->isWindow()) {
            child->hide(); // Which ends the event loop of a dialog and of a menu alike.
            child->setParent(nullptr);
        }
    }
}

} // namespace DialogParts
