#include "DialogParts.h"

#include "ComboBoxKeys.h"
#include "FocusMark.h"

#include <QAbstractItemView>
#include <QAccessible>
#include <QComboBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QPushButton>
#include <QScreen>
#include <QWindow>

#include <algorithm>

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
    setUpCombo(*combo, texts, name);
    return combo;
}

void setUpCombo(QComboBox &combo, const QStringList &texts, const QString &name)
{
    combo.setObjectName(name);
    combo.addItems(texts);
    combo.setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    new ComboBoxKeys(combo);
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

void keepCentered(QDialog &dialog, const QWidget &window)
{
    const QWindow *handle = window.windowHandle();
    if (handle == nullptr)
        return;
    const auto center = [&dialog, &window] {
        if (dialog.windowHandle()->isExposed())
            return;
        const QRect framed = window.frameGeometry();
        // The frame of the dialog is not there yet.
        QRect place(QPoint(), dialog.size() + framed.size() - window.size());
        place.moveCenter(framed.center());
        const QRect screen = window.screen()->availableGeometry();
        place.moveBottomRight({std::min(place.right(), screen.right()),
                               std::min(place.bottom(), screen.bottom())});
        place.moveTopLeft(
                {std::max(place.left(), screen.left()), std::max(place.top(), screen.top())});
        const QPoint inside = window.geometry().topLeft() - framed.topLeft();
        dialog.setGeometry(QRect(place.topLeft() + inside, dialog.size()));
    };
    QObject::connect(handle, &QWindow::xChanged, &dialog, center);
    QObject::connect(handle, &QWindow::yChanged, &dialog, center);
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
