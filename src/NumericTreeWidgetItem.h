#pragma once

#include <QTreeWidgetItem>

/// A row of the channel list, which sorts by the number of users.
///
/// That number is the integer data of `UsersColumn` for `Qt::UserRole`; the column's text is not
/// used.
class NumericTreeWidgetItem final : public QTreeWidgetItem
{
public:
    /// The columns of the channel list.
    enum Column { ChannelColumn, UsersColumn, TopicColumn };

    using QTreeWidgetItem::QTreeWidgetItem;

    /// Compares the sort column of the item's tree, or column 0 without a tree: `UsersColumn` by
    /// number if both items have one, and otherwise by text, case-insensitively.
    bool operator<(const QTreeWidgetItem &other) const override;
};
