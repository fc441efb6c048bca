#include "NumericTreeWidgetItem.h"

#include <QTreeWidget>

namespace {

constexpr int NumericColumn = 1;

} // namespace

bool NumericTreeWidgetItem::operator<(const QTreeWidgetItem &other) const
{
    const QTreeWidget *tree = treeWidget();
    const int column = tree ? tree->sortColumn() : 0;
    if (column == NumericColumn) {
        bool isNumber = false;
        bool isOtherNumber = false;
        const int number = data(NumericColumn, Qt::UserRole).toInt(&isNumber);
        const int otherNumber = other.data(NumericColumn, Qt::UserRole).toInt(&isOtherNumber);
        if (isNumber && isOtherNumber)
            return number < otherNumber;
    }
    return QString::compare(text(column), other.text(column), Qt::CaseInsensitive) < 0;
}
