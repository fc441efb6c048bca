#pragma once

#include <QStyledItemDelegate>

/// Paints the rows of the server list, with a favourite's star in gold.
///
/// Fills each row with one colour of the palette, which hides the view's alternating row colours.
/// Clips long texts instead of eliding them.
class ServerListDelegate final : public QStyledItemDelegate
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ServerListDelegate)

public:
    explicit ServerListDelegate(QObject *parent);

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override;
};
