#include "UserListRows.h"

#include "NickList.h"

#include <QListWidget>

using namespace Qt::StringLiterals;

namespace UserListRows {

QString nickOf(const QListWidgetItem &row)
{
    // A leading black circle and space would be a presence mark; nothing sets one.
    const QString text = row.text();
    return NickList::stripPrefix(text.startsWith(u"\u25CF "_s) ? text.sliced(2) : text);
}

void removeFirst(QListWidget &list, const QString &entry)
{
    // QListWidget::findItems() is slow in a long list.
    for (int row = 0; row < list.count(); ++row) {
        if (list.item(row)->text() == entry) {
            delete list.item(row);
            return;
        }
    }
}

void setAway(QListWidget &list, const QString &nick, bool isAway)
{
    for (int row = 0; row < list.count(); ++row) {
        QListWidgetItem *item = list.item(row);
        if (NickList::stripPrefix(item->text()).compare(nick, Qt::CaseInsensitive) != 0)
            continue;
        QFont font = item->font();
        font.setItalic(isAway);
        item->setFont(font);
        // Intended: a user who is back gets a solid brush with a default-constructed colour.
        item->setForeground(QBrush(isAway ? QColor(0xAA, 0xAA, 0xAA) : QColor(), Qt::SolidPattern));
        return;
    }
}

} // namespace UserListRows
