#pragma once

#include <QTreeWidgetItem>

/// A row of the channel list, which orders the users by number.
///
/// That number is the integer that the item's column of users holds under `Qt::UserRole`, whatever
/// the column's text is.
class NumericTreeWidgetItem final : public QTreeWidgetItem
{
public:
    /// The columns of the channel list.
    enum Column { ChannelColumn, UsersColumn, TopicColumn };

    using QTreeWidgetItem::QTreeWidgetItem;

    /// Compares in the sort column of the item's tree, or in column 0 if the item is in no tree:
    /// by number in the column of users if both items have one there, and otherwise by text without
    /// regard to case.
    bool operator<(const QTreeWidgetItem &other) const override;
};
