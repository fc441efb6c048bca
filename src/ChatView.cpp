#include "ChatView.h"

#include "ChatAccessibility.h"
#include "ChatLayout.h"

#include <QMimeData>
#include <QMouseEvent>
#include <QPainter>
#include <QPixmapCache>
#include <QScopedValueRollback>
#include <QScrollBar>
#include <QStyle>
#include <QStyleOptionFrame>
#include <QStyleOptionSlider>
#include <QTextBlock>
#include <QTimerEvent>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

// Duration of one slice of idle work, short enough not to delay keys and frames.
constexpr int SliceMilliseconds = 4;

// A scroll bar that repaints only when its handle has moved or changed by a pixel.
//
// Each new line changes the range and the value, but in a long conversation the handle stays where
// it is, and painting it would take longer than painting the line.
class ChatScrollBar final : public QScrollBar
{
public:
    using QScrollBar::QScrollBar;

protected:
    void paintEvent(QPaintEvent *event) override
    {
        paintedHandle = handle();
        QScrollBar::paintEvent(event);
    }

    void sliderChange(SliderChange change) override
    {
        const bool mayMoveHandle = change == SliderRangeChange || change == SliderValueChange;
        if (!mayMoveHandle || handle() != paintedHandle)
            QScrollBar::sliderChange(change);
    }

private:
    [[nodiscard]] QRect handle() const
    {
        QStyleOptionSlider option;
        initStyleOption(&option);
        return style()->subControlRect(QStyle::CC_ScrollBar, &option, QStyle::SC_ScrollBarSlider,
                                       this);
    }

    QRect paintedHandle;
};

bool isOpaque(const QImage &image)
{
    for (int y = 0; y < image.height(); ++y) {
        const QRgb *line = reinterpret_cast<const QRgb *>(image.constScanLine(y));
        if (!std::all_of(line, line + image.width(),
                         [](QRgb pixel) { return qAlpha(pixel) == 255; }))
            return false;
    }
    return !image.isNull();
}

bool isLink(const QTextCursor &cursor)
{
    if (!cursor.hasSelection())
        return false;
    QTextCursor first = cursor;
    first.setPosition(cursor.selectionStart() + 1);
    return first.charFormat().isAnchor();
}

// What a background depends on, except for the style.
struct BackgroundKey
{
    const QWidget *window = nullptr;
    QSize size;
    QRect viewport;
    qreal pixelRatio = 0;
    QString sheet;

    bool operator==(const BackgroundKey &) const = default;
};

// The last rendered background, shared by all views with the same key. Rendering it would take most
// of the time of a change of tabs.
struct BackgroundCache
{
    BackgroundKey key;
    QPixmapCache::Key pixmap;
};

BackgroundCache &backgroundCache()
{
    static BackgroundCache cache;
    return cache;
}

} // namespace

ChatView::ChatView(QWidget *parent)
    : QTextBrowser(parent)
    , layout(new ChatLayout(document()))
{
    // QTextEdit set the paint device on the default layout, which is replaced here.
    layout->setPaintDevice(viewport());
    document()->setDocumentLayout(layout);
    setVerticalScrollBar(new ChatScrollBar(Qt::Vertical, this));
    connect(verticalScrollBar(), &QAbstractSlider::actionTriggered, this,
            [this] { returnsToEnd = false; });
    connect(layout, &ChatLayout::documentSizeChanged, this, &ChatView::measureWhenIdle);
    accessibility = new ChatAccessibility(*this);
}

bool ChatView::focusNextPrevChild(bool next)
{
    const bool isInside = focusLink(next);
    // Qt emits no signal when a link gets the focus.
    accessibility->reportFocus();
    return isInside;
}

bool ChatView::isBeingRead() const
{
    return accessibility->isReading();
}

// The edge where the text must not move when heights change.
ChatView::Edge ChatView::fixedEdge() const
{
    const int bottom = verticalScrollBar()->value() + viewport()->height();
    return bottom >= layout->rowTop(layout->rowCount()) ? Edge::Bottom : Edge::Top;
}

ChatView::ScrollPosition ChatView::scrollPosition(Edge edge) const
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

int ChatView::scrollValue(const ScrollPosition &position) const
{
    if (layout->rowCount() == 0)
        return verticalScrollBar()->value();
    const int top = layout->rowTop(position.row);
    const int bottom = layout->rowTop(position.row + 1);
    const int offset = std::min(position.offset, bottom - top);
    return position.edge == Edge::Top ? top + offset : bottom - offset - viewport()->height();
}

// Calls `changeHeights` and leaves the text at `edge` where it is.
void ChatView::keepScrollPosition(Edge edge, const std::function<void()> &changeHeights)
{
    const ScrollPosition position = scrollPosition(edge);
    const QScopedValueRollback<bool> adjusting(isAdjusting, true);
    changeHeights();
    const int value = scrollValue(position);
    verticalScrollBar()->setValue(value);
    // The conversation has become too short to keep the position.
    if (verticalScrollBar()->value() != value)
        viewport()->update();
}

// Lays out the visible rows and keeps the scroll position. Returns true if anything moved.
bool ChatView::measureVisibleRows(Edge edge)
{
    if (isAdjusting || layout->rowCount() == 0)
        return false;
    const QScopedValueRollback<bool> adjusting(isAdjusting, true);
    const ScrollPosition position = scrollPosition(edge);
    const int before = verticalScrollBar()->value();
    bool isChanged = false;
    // Rows that turn out lower than estimated make further rows visible.
    for (;;) {
        const int top = verticalScrollBar()->value();
        const int height = viewport()->height();
        layout->setVisibleHeight(height);
        if (!layout->measure(top, top + height))
            break;
        isChanged = true;
        verticalScrollBar()->setValue(scrollValue(position));
    }
    if (!isVisible())
        layout->setVisibleHeight(0);
    return isChanged || verticalScrollBar()->value() != before;
}

void ChatView::measureWhenIdle()
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
    const Edge edge = fixedEdge();
    if (measureVisibleRows(edge))
        viewport()->update();
    keepScrollPosition(edge, [this, deadline] { layout->measureEstimatedRows(deadline); });
    if (!layout->hasEstimates())
        idleTimer.stop();
}

void ChatView::resizeEvent(QResizeEvent *event)
{
    const Edge edge = fixedEdge();
    keepScrollPosition(edge, [this, event] { QTextBrowser::resizeEvent(event); });
    updateBackground();
    if (isVisible())
        startMeasuring(edge);
    viewport()->update();
}

void ChatView::changeEvent(QEvent *event)
{
    const Edge edge = fixedEdge();
    keepScrollPosition(edge, [this, event] { QTextBrowser::changeEvent(event); });
    if (isVisible())
        QPixmapCache::remove(backgroundCache().pixmap);
    updateBackground();
    if (isVisible())
        startMeasuring(edge);
}

void ChatView::showEvent(QShowEvent *event)
{
    QTextBrowser::showEvent(event);
    updateBackground();
    startMeasuring(fixedEdge());
}

void ChatView::hideEvent(QHideEvent *event)
{
    QTextBrowser::hideEvent(event);
    idleTimer.stop();
    layout->setVisibleHeight(0);
    background = QPixmap();
}

void ChatView::startMeasuring(Edge edge)
{
    // Necessary even without rows, since the first ones may follow.
    layout->setVisibleHeight(viewport()->height());
    measureVisibleRows(edge);
    measureWhenIdle();
}

void ChatView::paintEvent(QPaintEvent *event)
{
    if (measureVisibleRows(fixedEdge()))
        viewport()->update();
    paintBackground(event->region());
    QTextBrowser::paintEvent(event);
}

QBrush ChatView::backgroundBrush() const
{
    return viewport()->palette().brush(viewport()->backgroundRole());
}

// Makes the viewport opaque where possible. Otherwise, with a style sheet, Qt repaints the whole
// view at each scroll. With a plain colour, which style sheets leave in the palette, Qt scrolls the
// pixels and repaints only the new line. An image is scaled once and not at each scroll. A
// translucent background is left to Qt.
void ChatView::updateBackground()
{
    background = isVisible() && !hasPlainBackground() ? cachedBackground() : QPixmap();
    viewport()->setAttribute(Qt::WA_OpaquePaintEvent, hasPlainBackground() || !background.isNull());
}

bool ChatView::hasPlainBackground() const
{
    const QBrush brush = backgroundBrush();
    return brush.style() == Qt::SolidPattern && brush.isOpaque();
}

QPixmap ChatView::cachedBackground() const
{
    const BackgroundKey key{.window = window(),
                            .size = size(),
                            .viewport = viewport()->geometry(),
                            .pixelRatio = devicePixelRatioF(),
                            .sheet = styleSheet()};
    BackgroundCache &cache = backgroundCache();
    QPixmap pixmap;
    if (key == cache.key && QPixmapCache::find(cache.pixmap, &pixmap))
        return pixmap;
    QPixmapCache::remove(cache.pixmap);
    pixmap = renderBackground();
    cache = {.key = key, .pixmap = QPixmapCache::insert(pixmap)};
    return pixmap;
}

// Returns a null pixmap if the background is not opaque.
QPixmap ChatView::renderBackground() const
{
    QImage image(viewport()->size() * devicePixelRatioF(), QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(devicePixelRatioF());
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.translate(-viewport()->pos());
    QStyleOptionFrame option;
    initStyleOption(&option);
    style()->drawPrimitive(QStyle::PE_Widget, &option, &painter, this);
    painter.end();
    // Pixels of an opaque format are copied and not blended.
    if (!isOpaque(image) || !image.reinterpretAsFormat(QImage::Format_RGB32))
        return {};
    return QPixmap::fromImage(std::move(image));
}

void ChatView::paintBackground(const QRegion &region)
{
    if (!viewport()->testAttribute(Qt::WA_OpaquePaintEvent))
        return;
    QPainter painter(viewport());
    painter.setClipRegion(region);
    if (background.isNull()) {
        for (const QRect &rect : region)
            painter.fillRect(rect, backgroundBrush());
    } else {
        painter.drawPixmap(0, 0, background);
    }
}

void ChatView::scrollContentsBy(int dx, int dy)
{
    if (isAdjusting)
        return;
    // Rows that become visible may have another height than estimated. The edge where they
    // appear keeps the requested position.
    if (isVisible() && measureVisibleRows(dy < 0 ? Edge::Bottom : Edge::Top))
        viewport()->update();
    else
        QTextBrowser::scrollContentsBy(dx, dy);
    // Qt has scrolled the image with the text.
    if (!background.isNull())
        viewport()->update();
}

void ChatView::keyPressEvent(QKeyEvent *event)
{
    // A read-only QTextEdit handles Home and End only without Ctrl.
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
    returnsToEnd = fixedEdge() == Edge::Bottom;
    // Qt looks for the next link after the selection.
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
    // Without a pressed button, QTextBrowser searches all blocks for a check box under the mouse.
    // That is skipped unless the mouse enters or leaves a link.
    if (event->buttons() == Qt::NoButton && anchor == anchorUnderMouse)
        return;
    anchorUnderMouse = anchor;
    QTextBrowser::mouseMoveEvent(event);
}

void RowQueue::add(QTextBrowser &view, QTextTable &table, const ChatRow &row)
{
    Rows &rows = queued[&view];
    rows.table = &table;
    rows.rows.append(row);
}

void RowQueue::flush()
{
    const auto conversations = std::exchange(queued, {});
    for (auto conversation = conversations.cbegin(); conversation != conversations.cend();
         ++conversation) {
        QTextBrowser *view = conversation.key();
        ChatTable::appendRows(*conversation->table, conversation->rows);
        const auto *chatView = qobject_cast<const ChatView *>(view);
        if (chatView && chatView->isBeingRead())
            continue;
        QTextCursor cursor = view->textCursor();
        cursor.movePosition(QTextCursor::End);
        view->setTextCursor(cursor);
        view->ensureCursorVisible();
    }
}
