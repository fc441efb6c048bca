#include "ComboBoxKeys.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QKeyEvent>

ComboBoxKeys::ComboBoxKeys(QComboBox &box)
    : QObject(&box)
{
    box.installEventFilter(this);
    box.view()->installEventFilter(this);
}

bool ComboBoxKeys::eventFilter(QObject *watched, QEvent *event)
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
