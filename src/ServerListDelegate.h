#pragma once

#include <QStyledItemDelegate>

/// Paints the rows of the server list, with the star of a favourite in gold.
///
/// A row is filled with a plain colour of the palette, so a view's alternating row colours do not
/// show. Texts are clipped at the row's edge, not elided.
class ServerListDelegate final : public QStyledItemDelegate
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ServerListDelegate)

public:
    explicit ServerListDelegate(QObject *parent);

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override;
};
