#include "FocusFrame.h"

#include "ThemeManager.h"

#include <QAbstractScrollArea>
#include <QFocusEvent>
#include <QPainter>
#include <QPushButton>
#include <QTabBar>
#include <QToolButton>

namespace {

constexpr qreal LineWidth = 2;
constexpr qreal EdgeRadius = 8; // The corner radius of the scroll areas.
constexpr qreal InnerRadius = 4;
constexpr int InnerMargin = 4;

bool isByKey(Qt::FocusReason reason)
{
    return reason == Qt::TabFocusReason || reason == Qt::BacktabFocusReason
           || reason == Qt::ShortcutFocusReason;
}

// The focus returns from another window or from a popup; how the widget got it before still counts.
bool isReturn(Qt::FocusReason reason)
{
    return reason == Qt::ActiveWindowFocusReason || reason == Qt::PopupFocusReason;
}

} // namespace

void FocusFrame::addTo(QAbstractScrollArea &area)
{
    new FocusFrame(area, Position::WidgetEdge);
}

void FocusFrame::addTo(QToolButton &button)
{
    new FocusFrame(button, Position::WidgetEdge);
}

void FocusFrame::addTo(QPushButton &button)
{
    new FocusFrame(button, Position::InsideWidget);
}

void FocusFrame::addTo(QTabBar &bar)
{
    new FocusFrame(bar, Position::InsideCurrentTab);
}

FocusFrame::FocusFrame(QWidget &target, Position framePosition)
    : QWidget(&target)
    , position(framePosition)
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
    hide();
    target.installEventFilter(this);
}

bool FocusFrame::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::FocusIn) {
        const Qt::FocusReason reason = static_cast<QFocusEvent *>(event)->reason();
        if (!isReturn(reason))
            isReachedByKey = isByKey(reason);
        setGeometry(parentWidget()->rect());
        raise();
        setVisible(isReachedByKey);
    } else if (event->type() == QEvent::FocusOut) {
        hide();
    } else if (event->type() == QEvent::Resize) {
        setGeometry(parentWidget()->rect());
    }
    return QWidget::eventFilter(watched, event);
}

QRect FocusFrame::frameRect() const
{
    if (position == Position::WidgetEdge)
        return rect();
    const auto *bar = qobject_cast<QTabBar *>(parentWidget());
    const QRect outer = bar != nullptr ? bar->tabRect(bar->currentIndex()) : rect();
    return outer.adjusted(InnerMargin, InnerMargin, -InnerMargin, -InnerMargin);
}

void FocusFrame::paintEvent(QPaintEvent *)
{
    // Scroll areas have a light background; the current tab and the buttons have the accent colour.
    const bool isAtEdge = position == Position::WidgetEdge;
    const QColor color = isAtEdge ? QColor(ThemeColors::Accent) : QColor(Qt::white);
    const qreal radius = isAtEdge ? EdgeRadius : InnerRadius;
    const qreal half = LineWidth / 2;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(color, LineWidth));
    painter.drawRoundedRect(QRectF(frameRect()).adjusted(half, half, -half, -half), radius, radius);
}
