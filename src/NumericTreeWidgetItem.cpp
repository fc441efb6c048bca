#include "NumericTreeWidgetItem.h"

#include <QTreeWidget>

bool NumericTreeWidgetItem::operator<(const QTreeWidgetItem &other) const
{
    const QTreeWidget *tree = treeWidget();
    const int column = tree ? tree->sortColumn() : 0;
    if (column == UsersColumn) {
        bool isNumber = false;
        bool isOtherNumber = false;
        const int number = data(UsersColumn, Qt::UserRole).toInt(&isNumber);
        const int otherNumber = other.data(UsersColumn, Qt::UserRole).toInt(&isOtherNumber);
        if (isNumber && isOtherNumber)
            return number < otherNumber;
    }
    return QString::compare(text(column), other.text(column), Qt::CaseInsensitive) < 0;
}
