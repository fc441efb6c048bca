#include "FocusMark.h"

#include "ThemeManager.h"

#include <QAbstractScrollArea>
#include <QFocusEvent>
#include <QPainter>
#include <QPushButton>
#include <QTabBar>
#include <QToolButton>

namespace {

constexpr qreal LineWidth = 2;
constexpr qreal AreaRadius = 8; // As the corners of the areas themselves.
constexpr qreal InnerRadius = 4;
constexpr int Inset = 4;

bool isByKey(Qt::FocusReason reason)
{
    return reason == Qt::TabFocusReason || reason == Qt::BacktabFocusReason
           || reason == Qt::ShortcutFocusReason;
}

// The window, or a menu, has taken the keyboard for a while: whatever brought it here before.
bool isReturn(Qt::FocusReason reason)
{
    return reason == Qt::ActiveWindowFocusReason || reason == Qt::PopupFocusReason;
}

} // namespace

FocusMark::FocusMark(QAbstractScrollArea &area)
    : FocusMark(area, Place::AroundAll)
{
}

FocusMark::FocusMark(QToolButton &button)
    : FocusMark(button, Place::AroundAll)
{
}

FocusMark::FocusMark(QPushButton &button)
    : FocusMark(button, Place::WithinAll)
{
}

FocusMark::FocusMark(QTabBar &bar)
    : FocusMark(bar, Place::WithinTab)
{
}

FocusMark::FocusMark(QWidget &target, Place where)
    : QWidget(&target)
    , place(where)
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
    hide();
    target.installEventFilter(this);
}

bool FocusMark::eventFilter(QObject *watched, QEvent *event)
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

QRect FocusMark::framed() const
{
    if (place == Place::AroundAll)
        return rect();
    const auto *bar = qobject_cast<QTabBar *>(parentWidget());
    const QRect all = bar != nullptr ? bar->tabRect(bar->currentIndex()) : rect();
    return all.adjusted(Inset, Inset, -Inset, -Inset);
}

void FocusMark::paintEvent(QPaintEvent *)
{
    // The ground of an area is white or nearly so; a current tab and a button have the accent's
    // colour, and white text on it.
    const bool isAround = place == Place::AroundAll;
    const QColor color =
            isAround ? QColor(ThemeManager::palette({}).accentColor) : QColor(Qt::white);
    const qreal radius = isAround ? AreaRadius : InnerRadius;
    const qreal half = LineWidth / 2;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(color, LineWidth));
    painter.drawRoundedRect(QRectF(framed()).adjusted(half, half, -half, -half), radius, radius);
}
