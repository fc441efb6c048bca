#include "ChatView.h"

#include "ChatLayout.h"
#include "ChatScrollBar.h"

#include <QMouseEvent>
#include <QPainter>
#include <QScopedValueRollback>
#include <QTimerEvent>

#include <algorithm>

namespace {

// One slice of idle work: short enough that no key press or frame waits for it.
constexpr int SliceMilliseconds = 4;

} // namespace

ChatView::ChatView(QWidget *parent)
    : QTextBrowser(parent)
    , layout(new ChatLayout(document()))
{
    // The view has set its paint device on the layout that is replaced here.
    layout->setPaintDevice(viewport());
    document()->setDocumentLayout(layout);
    setVerticalScrollBar(new ChatScrollBar(Qt::Vertical, this));
    connect(layout, &ChatLayout::documentSizeChanged, this, &ChatView::measureLater);
}

ChatView::Edge ChatView::steadyEdge() const
{
    const int bottom = verticalScrollBar()->value() + viewport()->height();
    return bottom >= layout->rowTop(layout->rowCount()) ? Edge::Bottom : Edge::Top;
}

ChatView::Place ChatView::place(Edge edge) const
{
    const int top = verticalScrollBar()->value();
    if (layout->rowCount() == 0)
        return {};
    if (edge == Edge::Top) {
        const int row = layout->rowAt(top);
        return {.edge = edge, .row = row, .offset = top - layout->rowTop(row)};
    }
    const int bottom = top + viewport()->height();
    const int row = layout->rowAt(bottom);
    return {.edge = edge, .row = row, .offset = layout->rowTop(row + 1) - bottom};
}

int ChatView::scrollValue(const Place &place) const
{
    if (layout->rowCount() == 0)
        return verticalScrollBar()->value();
    const int height = layout->rowTop(place.row + 1) - layout->rowTop(place.row);
    const int offset = std::min(place.offset, height);
    return place.edge == Edge::Top ? layout->rowTop(place.row) + offset
                                   : layout->rowTop(place.row + 1) - offset - viewport()->height();
}

void ChatView::restore(const Place &place)
{
    const QScopedValueRollback<bool> adjusting(isAdjusting, true);
    const int value = scrollValue(place);
    verticalScrollBar()->setValue(value);
    // The conversation has become too short for it.
    if (verticalScrollBar()->value() != value)
        viewport()->update();
}

bool ChatView::settle(Edge edge)
{
    if (isAdjusting || layout->rowCount() == 0)
        return false;
    const QScopedValueRollback<bool> adjusting(isAdjusting, true);
    const Place steady = place(edge);
    const int before = verticalScrollBar()->value();
    bool isChanged = false;
    // Rows that turn out smaller let further ones into sight.
    for (;;) {
        const int top = verticalScrollBar()->value();
        if (!layout->measure(top, top + viewport()->height()))
            break;
        isChanged = true;
        verticalScrollBar()->setValue(scrollValue(steady));
    }
    return isChanged || verticalScrollBar()->value() != before;
}

void ChatView::measureLater()
{
    if (isVisible() && layout->hasEstimates() && !idleTimer.isActive())
        idleTimer.start(0, this);
}

void ChatView::timerEvent(QTimerEvent *event)
{
    if (event->timerId() != idleTimer.timerId()) {
        QTextBrowser::timerEvent(event);
        return;
    }
    const QDeadlineTimer deadline(SliceMilliseconds);
    const Edge edge = steadyEdge();
    if (settle(edge))
        viewport()->update();
    const Place steady = place(edge);
    {
        const QScopedValueRollback<bool> adjusting(isAdjusting, true);
        layout->measureSome(deadline);
    }
    restore(steady);
    if (!layout->hasEstimates())
        idleTimer.stop();
}

void ChatView::resizeEvent(QResizeEvent *event)
{
    const Place steady = place(steadyEdge());
    {
        const QScopedValueRollback<bool> adjusting(isAdjusting, true);
        QTextBrowser::resizeEvent(event);
    }
    restore(steady);
    if (isVisible())
        startMeasuring(steady.edge);
    viewport()->update();
}

void ChatView::changeEvent(QEvent *event)
{
    const Place steady = place(steadyEdge());
    {
        const QScopedValueRollback<bool> adjusting(isAdjusting, true);
        QTextBrowser::changeEvent(event);
    }
    restore(steady);
    updateOpacity();
    if (isVisible())
        startMeasuring(steady.edge);
}

void ChatView::showEvent(QShowEvent *event)
{
    QTextBrowser::showEvent(event);
    updateOpacity();
    startMeasuring(steadyEdge());
}

void ChatView::hideEvent(QHideEvent *event)
{
    QTextBrowser::hideEvent(event);
    idleTimer.stop();
    layout->setShownHeight(0);
}

void ChatView::startMeasuring(Edge edge)
{
    layout->setShownHeight(viewport()->height());
    settle(edge);
    measureLater();
}

void ChatView::paintEvent(QPaintEvent *event)
{
    if (settle(steadyEdge()))
        viewport()->update();
    if (viewport()->testAttribute(Qt::WA_OpaquePaintEvent)) {
        QPainter painter(viewport());
        for (const QRect &rect : event->region())
            painter.fillRect(rect, backgroundBrush());
    }
    QTextBrowser::paintEvent(event);
}

QBrush ChatView::backgroundBrush() const
{
    return viewport()->palette().brush(viewport()->backgroundRole());
}

// A view with a style sheet lets Qt paint what lies behind it, which may be a picture that stays
// where it is, and so each scroll paints everything. If one colour is all there is, and style
// sheets leave it in the palette, this view paints it by itself; then Qt moves what is on the
// screen and asks for the new line only.
void ChatView::updateOpacity()
{
    const QBrush brush = backgroundBrush();
    viewport()->setAttribute(Qt::WA_OpaquePaintEvent,
                             brush.style() == Qt::SolidPattern && brush.isOpaque());
}

void ChatView::scrollContentsBy(int dx, int dy)
{
    if (isAdjusting)
        return;
    // What comes into sight at an edge may have another height than estimated; it is the edge where
    // it comes in that has to show what was asked for.
    if (isVisible() && settle(dy < 0 ? Edge::Bottom : Edge::Top))
        viewport()->update();
    else
        QTextBrowser::scrollContentsBy(dx, dy);
}

void ChatView::mouseMoveEvent(QMouseEvent *event)
{
    const QString anchor = anchorAt(event->position().toPoint());
    // Without a button down, the view would look through all blocks for a check box to hover; that
    // is worth its time only when there is a link to enter or leave.
    if (event->buttons() == Qt::NoButton && anchor == anchorUnderMouse)
        return;
    anchorUnderMouse = anchor;
    QTextBrowser::mouseMoveEvent(event);
}
