#pragma once

#include <QTreeWidgetItem>

/// A row of the channel list, which orders its second column by number.
///
/// That number is the integer that the item's column 1 holds under `Qt::UserRole`, whatever the
/// column's text is.
class NumericTreeWidgetItem final : public QTreeWidgetItem
{
public:
    using QTreeWidgetItem::QTreeWidgetItem;

    /// Compares in the sort column of the item's tree, or in column 0 if the item is in no tree:
    /// by number in column 1 if both items have one there, and otherwise by text without regard to
    /// case.
    bool operator<(const QTreeWidgetItem &other) const override;
};
