#include "ServerListDelegate.h"

#include "ServerRows.h"

#include <QColor>
#include <QFontMetrics>
#include <QModelIndex>
#include <QPainter>
#include <QPalette>
#include <QStyle>

namespace {

constexpr QRgb Gold = 0xffffd700;
constexpr int SideMargin = 4;

struct RowColors
{
    QColor text;
    QColor background;
};

RowColors colorsOf(const QStyleOptionViewItem &option)
{
    const QPalette &palette = option.palette;
    const auto group =
            option.state.testFlag(QStyle::State_Enabled) ? QPalette::Active : QPalette::Disabled;
    if (option.state.testFlag(QStyle::State_Selected)) {
        return {palette.color(group, QPalette::HighlightedText),
                palette.color(group, QPalette::Highlight)};
    }
    const auto background = option.state.testFlag(QStyle::State_MouseOver) ? QPalette::AlternateBase
                                                                           : QPalette::Base;
    return {palette.color(group, QPalette::Text), palette.color(group, background)};
}

} // namespace

ServerListDelegate::ServerListDelegate(QObject *parent)
    : QStyledItemDelegate(parent)
{
}

void ServerListDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option,
                               const QModelIndex &index) const
{
    painter->save();
    const RowColors colors = colorsOf(option);
    painter->fillRect(option.rect, colors.background);
    painter->setFont(option.font);
    // In right-to-left layouts the mark is at the right edge and the address left of it.
    painter->setLayoutDirection(option.direction);
    const auto draw = [&](const QRect &rect, const QString &part) {
        painter->drawText(QStyle::visualRect(option.direction, option.rect, rect),
                          Qt::AlignLeft | Qt::AlignVCenter, part);
    };

    QString text = index.data(Qt::DisplayRole).toString();
    QRect textRect = option.rect.adjusted(SideMargin, 0, -SideMargin, 0);
    if (text.startsWith(ServerRows::FavoriteMark)) {
        const QString mark = ServerRows::FavoriteMark.toString();
        painter->setPen(QColor::fromRgb(Gold));
        draw(textRect, mark);
        textRect.setLeft(textRect.left() + QFontMetrics(option.font).horizontalAdvance(mark));
        text.remove(0, mark.size());
    }
    painter->setPen(colors.text);
    draw(textRect, text);
    painter->restore();
}
