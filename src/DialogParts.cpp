#include "DialogParts.h"

#include "FocusFrame.h"

#include <QAbstractItemView>
#include <QAccessible>
#include <QComboBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QKeyEvent>
#include <QPushButton>
#include <QScreen>
#include <QWindow>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

/// Stops the key that closes a combo box's list from also reaching the dialog.
///
/// Qt closes the list at the key's ShortcutOverride. Under Wayland the key press then goes to the
/// combo box, since the dialog's window has the keyboard, and the box passes Escape and Return on.
class ClosingKeyFilter final : public QObject
{
public:
    using QObject::QObject;

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::ShortcutOverride) {
            const int key = static_cast<QKeyEvent *>(event)->key();
            closingKey = watched == parent() ? 0 : key;
        } else if (event->type() == QEvent::KeyPress && watched == parent()
                   && static_cast<QKeyEvent *>(event)->key() == closingKey) {
            closingKey = 0;
            return true;
        }
        return QObject::eventFilter(watched, event);
    }

private:
    int closingKey = 0; ///< 0 if none.
};

} // namespace

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
    auto *filter = new ClosingKeyFilter(&combo);
    combo.installEventFilter(filter);
    combo.view()->installEventFilter(filter);
}

QDialogButtonBox *makeSaveAndCancel(QDialog &dialog)
{
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Save | QDialogButtonBox::Cancel);
    QPushButton *save = buttons->button(QDialogButtonBox::Save);
    save->setObjectName(u"connectButton"_s);
    FocusFrame::addTo(*save);
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
        // Uses the frame of `window`, since the dialog has none yet.
        QRect target(QPoint(), dialog.size() + framed.size() - window.size());
        target.moveCenter(framed.center());
        const QRect screen = window.screen()->availableGeometry();
        target.moveBottomRight({std::min(target.right(), screen.right()),
                                std::min(target.bottom(), screen.bottom())});
        target.moveTopLeft(
                {std::max(target.left(), screen.left()), std::max(target.top(), screen.top())});
        const QPoint frameOffset = window.geometry().topLeft() - framed.topLeft();
        dialog.setGeometry(QRect(target.topLeft() + frameOffset, dialog.size()));
    };
    QObject::connect(handle, &QWindow::xChanged, &dialog, center);
    QObject::connect(handle, &QWindow::yChanged, &dialog, center);
}

void detachNestedWindows(QWidget &parent)
{
    const auto children = parent.findChildren<QWidget *>(Qt::FindDirectChildrenOnly);
    for (QWidget *child : children) {
        if (child->isWindow()) {
            child->hide(); // Ends the event loop of a dialog or menu.
            child->setParent(nullptr);
        }
    }
}

} // namespace DialogParts
