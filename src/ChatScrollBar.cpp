#include "ChatScrollBar.h"

#include <QStyle>
#include <QStyleOptionSlider>

void ChatScrollBar::paintEvent(QPaintEvent *event)
{
    paintedHandle = handle();
    QScrollBar::paintEvent(event);
}

void ChatScrollBar::sliderChange(SliderChange change)
{
    const bool mayMoveHandle = change == SliderRangeChange || change == SliderValueChange;
    if (mayMoveHandle && handle() == paintedHandle)
        return;
    QScrollBar::sliderChange(change);
}

QRect ChatScrollBar::handle() const
{
    QStyleOptionSlider option;
    initStyleOption(&option);
    return style()->subControlRect(QStyle::CC_ScrollBar, &option, QStyle::SC_ScrollBarSlider, this);
}
