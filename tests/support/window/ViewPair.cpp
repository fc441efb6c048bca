#include "ViewPair.h"

#include "ChatDocument.h"
#include "ChatLayout.h"
#include "Waiting.h"

#include <QDir>
#include <QPainter>
#include <QScrollBar>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

// Hides the scroll bar, since Qt's view sometimes misses the last change of the document's height.
QImage paint(QTextBrowser &view, qreal ratio)
{
    QImage image(view.size() * ratio, QImage::Format_RGB32);
    image.setDevicePixelRatio(ratio);
    image.fill(Qt::magenta);
    view.render(&image);
    const QScrollBar *bar = view.verticalScrollBar();
    QPainter(&image).fillRect(QRect(bar->mapTo(&view, QPoint()), bar->size()), Qt::magenta);
    return image;
}

QString compare(const QImage &stock, const QImage &own)
{
    if (stock == own)
        return {};
    const QString folder = qEnvironmentVariable("SAVE_DIFFERENCES");
    if (!folder.isEmpty()) {
        stock.save(QDir(folder).filePath(u"stock.png"_s));
        own.save(QDir(folder).filePath(u"own.png"_s));
    }
    for (int y = 0; y < stock.height(); ++y) {
        for (int x = 0; x < stock.width(); ++x) {
            if (stock.pixel(x, y) != own.pixel(x, y))
                return u"first at %1, %2"_s.arg(QString::number(x), QString::number(y));
        }
    }
    return u"in size"_s;
}

} // namespace

ViewPair::ViewPair(QSize size, int columns)
    : stock(&window)
    , own(&window)
{
    applyToBoth([](QTextBrowser &view) { view.setFocusPolicy(Qt::NoFocus); });
    resize(size);
    stockTable = ChatTable::create(stock, columns);
    ownTable = ChatTable::create(own, columns);
    window.show();
}

void ViewPair::append(const QList<ChatRow> &rows)
{
    ChatTable::appendRows(*stockTable, rows);
    ChatTable::appendRows(*ownTable, rows);
}

void ViewPair::applyToBoth(const std::function<void(QTextBrowser &)> &work)
{
    work(stock);
    work(own);
}

void ViewPair::resize(QSize size)
{
    window.resize(2 * size.width(), size.height());
    stock.setGeometry(QRect(QPoint(), size));
    own.setGeometry(QRect(QPoint(size.width(), 0), size));
}

bool ViewPair::measure() const
{
    return QTest::qWaitFor([this] { return !layout().hasEstimates(); }, WaitTimeout);
}

void ViewPair::scrollTo(int value)
{
    applyToBoth([value](QTextBrowser &view) {
        view.verticalScrollBar()->setValue(value);
        view.horizontalScrollBar()->setValue(0);
    });
}

QString ViewPair::difference(qreal ratio)
{
    const QString position = compare(paint(stock, ratio), paint(own, ratio));
    return position.isEmpty() ? position
                              : u"at height %1, ratio %2: %3"_s.arg(
                                      QString::number(own.verticalScrollBar()->value()),
                                      QString::number(ratio), position);
}

QString ViewPair::differenceAnywhere(qreal ratio)
{
    const int step = own.viewport()->height();
    const int end = own.verticalScrollBar()->maximum();
    if (own.verticalScrollBar()->isVisible() && end + step != int(own.document()->size().height()))
        return u"range of the scroll bar"_s;
    stock.verticalScrollBar()->setMaximum(end);
    for (int value = 0; value < end + step; value += step) {
        scrollTo(std::min(value, end));
        QString result = difference(ratio);
        if (!result.isEmpty())
            return result;
    }
    return {};
}

ChatLayout &ViewPair::layout() const
{
    return ChatDocument::layoutOf(own);
}
