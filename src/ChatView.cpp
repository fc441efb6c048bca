#include "ChatView.h"

#include "ChatAccessibility.h"
#include "ChatLayout.h"
#include "ChatScrollBar.h"
#include "ChatTable.h"

#include <QMimeData>
#include <QMouseEvent>
#include <QPainter>
#include <QPixmapCache>
#include <QScopedValueRollback>
#include <QStyle>
#include <QStyleOptionFrame>
#include <QTextBlock>
#include <QTimerEvent>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

// One slice of idle work: short enough that no key press or frame waits for it.
constexpr int SliceMilliseconds = 4;

bool isOpaque(const QImage &picture)
{
    for (int y = 0; y < picture.height(); ++y) {
        const QRgb *line = reinterpret_cast<const QRgb *>(picture.constScanLine(y));
        if (!std::all_of(line, line + picture.width(),
                         [](QRgb pixel) { return qAlpha(pixel) == 255; }))
            return false;
    }
    return !picture.isNull();
}

bool isLink(const QTextCursor &cursor)
{
    if (!cursor.hasSelection())
        return false;
    QTextCursor first = cursor;
    first.setPosition(cursor.selectionStart() + 1);
    return first.charFormat().isAnchor();
}

// What decides how a view's background looks, but for changes of styles.
struct Look
{
    const QWidget *window = nullptr;
    QSize size;
    QRect viewport;
    qreal pixelRatio = 0;
    QString sheet;

    bool operator==(const Look &) const = default;
};

// The background painted last, which the next view of the same look shares: to paint it at each
// change of tabs would take longer than the rest.
struct SharedGround
{
    Look look;
    QPixmapCache::Key pixmap;
};

SharedGround &sharedGround()
{
    static SharedGround shared;
    return shared;
}

} // namespace

ChatView::ChatView(QWidget *parent)
    : QTextBrowser(parent)
    , layout(new ChatLayout(document()))
{
    // The view has set its paint device on the layout that is replaced here.
    layout->setPaintDevice(viewport());
    document()->setDocumentLayout(layout);
    setVerticalScrollBar(new ChatScrollBar(Qt::Vertical, this));
    connect(verticalScrollBar(), &QAbstractSlider::actionTriggered, this,
            [this] { returnsToEnd = false; });
    connect(layout, &ChatLayout::documentSizeChanged, this, &ChatView::measureLater);
    accessibility = new ChatAccessibility(*this);
}

bool ChatView::focusNextPrevChild(bool next)
{
    const bool isInside = focusLink(next);
    // Qt emits no signal when the focus moves to a link.
    accessibility->reportFocus();
    return isInside;
}

bool ChatView::isBeingRead() const
{
    return accessibility->isReading();
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

// Does `work`, which changes heights, and leaves the text at `edge` where it is.
void ChatView::keepPlace(Edge edge, const std::function<void()> &work)
{
    const Place steady = place(edge);
    const QScopedValueRollback<bool> adjusting(isAdjusting, true);
    work();
    const int value = scrollValue(steady);
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
        const int height = viewport()->height();
        layout->setShownHeight(height);
        if (!layout->measure(top, top + height))
            break;
        isChanged = true;
        verticalScrollBar()->setValue(scrollValue(steady));
    }
    if (!isVisible())
        layout->setShownHeight(0);
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
    keepPlace(edge, [this, deadline] { layout->measureSome(deadline); });
    if (!layout->hasEstimates())
        idleTimer.stop();
}

void ChatView::resizeEvent(QResizeEvent *event)
{
    const Edge edge = steadyEdge();
    keepPlace(edge, [this, event] { QTextBrowser::resizeEvent(event); });
    coverGround();
    if (isVisible())
        startMeasuring(edge);
    viewport()->update();
}

void ChatView::changeEvent(QEvent *event)
{
    const Edge edge = steadyEdge();
    keepPlace(edge, [this, event] { QTextBrowser::changeEvent(event); });
    if (isVisible())
        QPixmapCache::remove(sharedGround().pixmap);
    coverGround();
    if (isVisible())
        startMeasuring(edge);
}

void ChatView::showEvent(QShowEvent *event)
{
    QTextBrowser::showEvent(event);
    coverGround();
    startMeasuring(steadyEdge());
}

void ChatView::hideEvent(QHideEvent *event)
{
    QTextBrowser::hideEvent(event);
    idleTimer.stop();
    layout->setShownHeight(0);
    ground = QPixmap();
}

void ChatView::startMeasuring(Edge edge)
{
    // Also for a view without a row, whose first ones may come soon.
    layout->setShownHeight(viewport()->height());
    settle(edge);
    measureLater();
}

void ChatView::paintEvent(QPaintEvent *event)
{
    if (settle(steadyEdge()))
        viewport()->update();
    paintGround(event->region());
    QTextBrowser::paintEvent(event);
}

QBrush ChatView::backgroundBrush() const
{
    return viewport()->palette().brush(viewport()->backgroundRole());
}

// A view with a style sheet would let Qt paint what lies behind it, and so paint everything at each
// scroll. This view paints it by itself. If one colour is all there is, and style sheets leave it
// in the palette, then Qt moves what is on the screen and asks for the new line only. A picture
// stays where it is, and is stretched to its size once and not at each scroll. Only where something
// behind the view shines through is it left to Qt.
void ChatView::coverGround()
{
    ground = isVisible() && !hasPlainGround() ? foundOrPaintedGround() : QPixmap();
    viewport()->setAttribute(Qt::WA_OpaquePaintEvent, hasPlainGround() || !ground.isNull());
}

bool ChatView::hasPlainGround() const
{
    const QBrush brush = backgroundBrush();
    return brush.style() == Qt::SolidPattern && brush.isOpaque();
}

QPixmap ChatView::foundOrPaintedGround() const
{
    const Look look{.window = window(),
                    .size = size(),
                    .viewport = viewport()->geometry(),
                    .pixelRatio = devicePixelRatioF(),
                    .sheet = styleSheet()};
    SharedGround &shared = sharedGround();
    QPixmap pixmap;
    if (look == shared.look && QPixmapCache::find(shared.pixmap, &pixmap))
        return pixmap;
    QPixmapCache::remove(shared.pixmap);
    pixmap = paintedGround();
    shared = {.look = look, .pixmap = QPixmapCache::insert(pixmap)};
    return pixmap;
}

QPixmap ChatView::paintedGround() const
{
    QImage picture(viewport()->size() * devicePixelRatioF(), QImage::Format_ARGB32_Premultiplied);
    picture.setDevicePixelRatio(devicePixelRatioF());
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.translate(-viewport()->pos());
    QStyleOptionFrame option;
    initStyleOption(&option);
    style()->drawPrimitive(QStyle::PE_Widget, &option, &painter, this);
    painter.end();
    // Pixels of an opaque format are copied and not blended.
    if (!isOpaque(picture) || !picture.reinterpretAsFormat(QImage::Format_RGB32))
        return {};
    return QPixmap::fromImage(std::move(picture));
}

void ChatView::paintGround(const QRegion &region)
{
    if (!viewport()->testAttribute(Qt::WA_OpaquePaintEvent))
        return;
    QPainter painter(viewport());
    painter.setClipRegion(region);
    if (ground.isNull()) {
        for (const QRect &rect : region)
            painter.fillRect(rect, backgroundBrush());
    } else {
        painter.drawPixmap(0, 0, ground);
    }
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
    // A picture behind the text has been moved with it.
    if (!ground.isNull())
        viewport()->update();
}

void ChatView::keyPressEvent(QKeyEvent *event)
{
    // A read-only QTextEdit knows Home and End without Ctrl only.
    if (event->matches(QKeySequence::MoveToStartOfDocument))
        verticalScrollBar()->triggerAction(QAbstractSlider::SliderToMinimum);
    else if (event->matches(QKeySequence::MoveToEndOfDocument))
        verticalScrollBar()->triggerAction(QAbstractSlider::SliderToMaximum);
    else
        QTextBrowser::keyPressEvent(event);
}

bool ChatView::focusLink(bool next)
{
    if (isLink(textCursor()))
        return QTextBrowser::focusNextPrevChild(next);
    const int link = lastVisibleLink();
    if (link < 0)
        return QTextEdit::focusNextPrevChild(next);
    returnsToEnd = steadyEdge() == Edge::Bottom;
    // Qt goes on from the end of the selection.
    QTextCursor before = textCursor();
    before.setPosition(link - 1);
    before.setPosition(link, QTextCursor::KeepAnchor);
    setTextCursor(before);
    return QTextBrowser::focusNextPrevChild(true);
}

int ChatView::lastVisibleLink() const
{
    if (layout->rowCount() == 0)
        return -1;
    const int top = verticalScrollBar()->value();
    const int firstRow = layout->rowAt(top);
    int link = -1;
    for (int row = layout->rowAt(top + viewport()->height()); link < 0 && row >= firstRow; --row) {
        const QTextBlock text = layout->cellBlock(row, layout->columnCount() - 1);
        for (auto run = text.begin(); !run.atEnd(); ++run) {
            if (run.fragment().charFormat().isAnchor())
                link = run.fragment().position();
        }
    }
    return link;
}

void ChatView::focusOutEvent(QFocusEvent *event)
{
    QTextBrowser::focusOutEvent(event);
    if (event->reason() == Qt::ActiveWindowFocusReason || event->reason() == Qt::PopupFocusReason)
        return;
    if (std::exchange(returnsToEnd, false))
        verticalScrollBar()->setValue(layout->rowTop(layout->rowCount()) - viewport()->height());
}

QMimeData *ChatView::createMimeDataFromSelection() const
{
    const QString text = ChatTable::selectedText(textCursor());
    auto *selection = new QMimeData;
    selection->setText(text);
    selection->setHtml(u"<meta charset=\"utf-8\">"_s
                       + Qt::convertFromPlainText(text, Qt::WhiteSpaceNormal));
    return selection;
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
