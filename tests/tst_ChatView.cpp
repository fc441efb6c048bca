#include "ChatCorpus.h"
#include "ChatDocument.h"
#include "ChatLayout.h"
#include "ChatView.h"
#include "ViewPair.h"
#include "Waiting.h"

#include <QApplication>
#include <QPainter>
#include <QScreen>
#include <QScrollBar>
#include <QStackedWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QTextTable>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

// Returns the y coordinate of the last row's bottom in the viewport.
int endOfText(const ChatView &view)
{
    const ChatLayout &layout = ChatDocument::layoutOf(view);
    return layout.rowTop(layout.rowCount()) - view.verticalScrollBar()->value();
}

// Returns what the screen shows of a window's child after all pending paints.
QImage onScreen(const QWidget &widget)
{
    QCoreApplication::processEvents();
    const QWidget *window = widget.window();
    const QRect area(widget.mapTo(window, QPoint()), widget.size());
    return window->screen()
            ->grabWindow(window->winId())
            .toImage()
            .copy(area)
            .convertToFormat(QImage::Format_RGB32);
}

QImage painted(QWidget &widget)
{
    return widget.grab().toImage().convertToFormat(QImage::Format_RGB32);
}

} // namespace

class TestChatView final : public QObject
{
    Q_OBJECT

private slots:
    void staysAtTheEndWhileLinesArrive();
    void showsTheEndOfManyLinesAtOnce();
    void measuresNothingWhileHidden();
    void showsTheEndWhenATabIsShownAgain();
    void looksLikeQtsViewAfterHiddenLines();
    void paintsTheFinalRowsAtOnceAfterResizing();
    void staysAtTheEndWhenSizeOrFontChanges();
    void keepsTheScrollPosition();
    void keepsTheScrollPositionWhileMeasuring();
    void scrollsToEstimatedRows();
    void laysOutAWordWiderThanItsColumn();
    void keepsTheScreenUpToDate();
    void paintsStyleSheetBackgrounds_data();
    void paintsStyleSheetBackgrounds();
    void canBeDestroyedWithEstimatedRows();

private:
    std::unique_ptr<ChatView> makeView(int rows, QSize size = QSize(500, 300));

    QTextTable *table = nullptr;
};

std::unique_ptr<ChatView> TestChatView::makeView(int rows, QSize size)
{
    auto view = std::make_unique<ChatView>();
    view->resize(size);
    view->show();
    table = ChatTable::create(*view, 3);
    ChatTable::appendRows(*table, ChatCorpus::plainRows(rows));
    ChatDocument::scrollToEnd(*view);
    return view;
}

void TestChatView::staysAtTheEndWhileLinesArrive()
{
    const auto view = makeView(0);
    for (int i = 0; i < 60; ++i) {
        ChatTable::appendRows(*table, ChatCorpus::plainRows(1, i));
        ChatDocument::scrollToEnd(*view);
        const QScrollBar &bar = *view->verticalScrollBar();
        QVERIFY(bar.value() >= bar.maximum() - 4);
        QVERIFY(endOfText(*view) <= view->viewport()->height());
        QVERIFY(!ChatDocument::layoutOf(*view).hasEstimates());
    }
}

void TestChatView::showsTheEndOfManyLinesAtOnce()
{
    const auto view = makeView(3000);
    QVERIFY(ChatDocument::layoutOf(*view).hasEstimates());
    QCOMPARE(endOfText(*view), view->viewport()->height());
    const QImage before = painted(*view->viewport());
    QTRY_VERIFY_WITH_TIMEOUT(!ChatDocument::layoutOf(*view).hasEstimates(), WaitTimeout);
    QCOMPARE(endOfText(*view), view->viewport()->height());
    QCOMPARE(painted(*view->viewport()), before);
}

void TestChatView::measuresNothingWhileHidden()
{
    QStackedWidget stack;
    stack.addWidget(new QWidget);
    auto *view = new ChatView;
    stack.addWidget(view);
    stack.show();
    ChatTable::appendRows(*ChatTable::create(*view, 3), ChatCorpus::rows());
    ChatDocument::scrollToEnd(*view);
    QCoreApplication::processEvents();
    QVERIFY(ChatDocument::layoutOf(*view).hasEstimates());
    stack.setCurrentIndex(1);
    QTRY_VERIFY_WITH_TIMEOUT(!ChatDocument::layoutOf(*view).hasEstimates(), WaitTimeout);
}

void TestChatView::showsTheEndWhenATabIsShownAgain()
{
    QStackedWidget stack;
    stack.resize(333, 300);
    stack.addWidget(new QWidget);
    auto *view = new ChatView;
    stack.addWidget(view);
    stack.show();
    QTextTable *hidden = ChatTable::create(*view, 3);
    for (int i = 0; i < 20; ++i) {
        ChatTable::appendRows(*hidden, ChatCorpus::plainRows(10, 10 * i));
        ChatDocument::scrollToEnd(*view);
    }
    stack.setCurrentIndex(1);
    QVERIFY(endOfText(*view) <= view->viewport()->height());
    QVERIFY(endOfText(*view) >= view->viewport()->height() - 4);
    stack.setCurrentIndex(0);
    ChatTable::appendRows(*hidden, ChatCorpus::rows());
    ChatDocument::scrollToEnd(*view);
    stack.setCurrentIndex(1);
    QCOMPARE(endOfText(*view), view->viewport()->height());
    QTRY_VERIFY_WITH_TIMEOUT(!ChatDocument::layoutOf(*view).hasEstimates(), WaitTimeout);
    QCOMPARE(endOfText(*view), view->viewport()->height());
}

void TestChatView::looksLikeQtsViewAfterHiddenLines()
{
    ViewPair pair(QSize(450, 700));
    pair.window.hide();
    pair.append(ChatCorpus::rows());
    pair.window.show();
    QVERIFY(pair.measure());
    QCOMPARE(pair.own.document()->size(), pair.stock.document()->size());
    QCOMPARE(pair.differenceAnywhere(), QString());
}

void TestChatView::paintsTheFinalRowsAtOnceAfterResizing()
{
    const auto view = makeView(2000);
    QTRY_VERIFY_WITH_TIMEOUT(!ChatDocument::layoutOf(*view).hasEstimates(), WaitTimeout);
    for (const QSize size : {QSize(400, 300), QSize(700, 350), QSize(350, 250)}) {
        view->resize(size);
        QVERIFY(ChatDocument::layoutOf(*view).hasEstimates());
        const QImage first = painted(*view->viewport());
        QTRY_VERIFY_WITH_TIMEOUT(!ChatDocument::layoutOf(*view).hasEstimates(), WaitTimeout);
        QCOMPARE(painted(*view->viewport()), first);
        QCOMPARE(onScreen(*view->viewport()), first);
    }
}

void TestChatView::staysAtTheEndWhenSizeOrFontChanges()
{
    const auto view = makeView(500);
    const auto isAtEnd = [&view] {
        return endOfText(*view) <= view->viewport()->height()
               && endOfText(*view) >= view->viewport()->height() - 4;
    };
    QVERIFY(isAtEnd());
    for (const QSize size : {QSize(400, 300), QSize(700, 200), QSize(500, 400)}) {
        view->resize(size);
        QVERIFY(isAtEnd());
        QTRY_VERIFY_WITH_TIMEOUT(!ChatDocument::layoutOf(*view).hasEstimates(), WaitTimeout);
        QVERIFY(isAtEnd());
    }
    view->setFont(QFont(u"DejaVu Serif"_s, 17));
    QVERIFY(isAtEnd());
    QTRY_VERIFY_WITH_TIMEOUT(!ChatDocument::layoutOf(*view).hasEstimates(), WaitTimeout);
    QVERIFY(isAtEnd());
}

void TestChatView::keepsTheScrollPosition()
{
    const auto view = makeView(500);
    QTRY_VERIFY_WITH_TIMEOUT(!ChatDocument::layoutOf(*view).hasEstimates(), WaitTimeout);
    const ChatLayout &layout = ChatDocument::layoutOf(*view);
    view->verticalScrollBar()->setValue(layout.rowTop(200));
    const auto rowOnTop = [&] { return layout.rowAt(view->verticalScrollBar()->value()); };
    QCOMPARE(rowOnTop(), 200);
    view->resize(380, 300);
    QCOMPARE(rowOnTop(), 200);
    QTRY_VERIFY_WITH_TIMEOUT(!layout.hasEstimates(), WaitTimeout);
    QCOMPARE(rowOnTop(), 200);
    view->setFont(QFont(u"DejaVu Serif"_s, 17));
    QTRY_VERIFY_WITH_TIMEOUT(!layout.hasEstimates(), WaitTimeout);
    QCOMPARE(rowOnTop(), 200);
    ChatTable::appendRows(*table, ChatCorpus::plainRows(300));
    QTRY_VERIFY_WITH_TIMEOUT(!layout.hasEstimates(), WaitTimeout);
    QCOMPARE(rowOnTop(), 200);
}

void TestChatView::keepsTheScrollPositionWhileMeasuring()
{
    const auto view = makeView(3000);
    const ChatLayout &layout = ChatDocument::layoutOf(*view);
    QVERIFY(layout.hasEstimates());
    view->verticalScrollBar()->setValue(view->verticalScrollBar()->maximum() / 2);
    const QImage before = painted(*view->viewport());
    const int row = layout.rowAt(view->verticalScrollBar()->value());
    const int top = layout.rowTop(row) - view->verticalScrollBar()->value();
    QVERIFY(layout.hasEstimates());
    QTRY_VERIFY_WITH_TIMEOUT(!layout.hasEstimates(), WaitTimeout);
    QCOMPARE(layout.rowTop(row) - view->verticalScrollBar()->value(), top);
    QCOMPARE(painted(*view->viewport()), before);
    QCOMPARE(onScreen(*view->viewport()), before);
}

void TestChatView::scrollsToEstimatedRows()
{
    const auto view = makeView(3000);
    const ChatLayout &layout = ChatDocument::layoutOf(*view);
    QScrollBar &bar = *view->verticalScrollBar();
    while (bar.value() > 0) {
        const int row = layout.rowAt(bar.value());
        const int top = layout.rowTop(row) - bar.value();
        bar.setValue(bar.value() - 200);
        // The row has moved down by 200 pixels, or more if rows above it were higher than
        // estimated.
        if (bar.value() > 0)
            QVERIFY(layout.rowTop(row) - bar.value() >= top);
        QCOMPARE(onScreen(*view->viewport()), painted(*view->viewport()));
    }
    QCOMPARE(layout.rowAt(bar.value()), 0);
}

// The estimated height of such a row is too large. If that makes the scroll bar appear, the row
// gets narrower. The layout must not alternate between the two states.
void TestChatView::laysOutAWordWiderThanItsColumn()
{
    QList<ChatRow> rows;
    for (const int length : {3, 6, 9})
        rows.append({.time = u"[12:00]"_s, .nick = u"ann"_s, .text = u" andanoth"_s.left(length)});
    for (int height = 120; height < 180; ++height) {
        ViewPair pair(QSize(230, height));
        pair.append(rows);
        pair.resize(QSize(237, height));
        QVERIFY(pair.measure());
        QCOMPARE(pair.difference(), QString());
    }
}

void TestChatView::keepsTheScreenUpToDate()
{
    const auto view = makeView(0);
    const auto isPainted = [&view] { return onScreen(*view) == painted(*view); };
    const QStringList sheets{
            {}, u"QTextBrowser { background: #eeeeff; color: #222222; border: none; }"_s, {}};
    for (const QString &sheet : sheets) {
        view->setStyleSheet(sheet);
        QTRY_VERIFY_WITH_TIMEOUT(isPainted(), WaitTimeout);
        for (int i = 0; i < 40; ++i) {
            ChatTable::appendRows(*table, ChatCorpus::plainRows(1 + i % 3, i));
            ChatDocument::scrollToEnd(*view);
            QTRY_VERIFY_WITH_TIMEOUT(isPainted(), WaitTimeout);
        }
        view->verticalScrollBar()->setValue(view->verticalScrollBar()->value() - 37);
        QTRY_VERIFY_WITH_TIMEOUT(isPainted(), WaitTimeout);
        view->resize(view->width() + 7, view->height() - 11);
        QTRY_VERIFY_WITH_TIMEOUT(isPainted(), WaitTimeout);
        view->setFont(QFont(u"DejaVu Sans"_s, view->font().pointSize() + 1));
        QTRY_VERIFY_WITH_TIMEOUT(isPainted(), WaitTimeout);
        ChatTable::appendRows(*table, ChatCorpus::rows());
        QTRY_VERIFY_WITH_TIMEOUT(isPainted(), WaitTimeout);
        ChatDocument::scrollToEnd(*view);
        QTRY_VERIFY_WITH_TIMEOUT(isPainted(), WaitTimeout);
        view->selectAll();
        QTRY_VERIFY_WITH_TIMEOUT(isPainted(), WaitTimeout);
    }
}

void TestChatView::paintsStyleSheetBackgrounds_data()
{
    QTest::addColumn<QString>("sheet");
    QTest::newRow("colour") << u"QTextBrowser { border: 1px solid #cccccc; "
                               "background-color: #ffffee; border-image: none; }"_s;
    QTest::newRow("translucent colour") << u"QTextBrowser { background-color: #80ff0000; }"_s;
    QTest::newRow("round corners") << u"QTextBrowser { color: #eeeeee; background: #222222; "
                                      "border: none; border-radius: 8px; padding: 4px; }"_s;
    QTest::newRow("image") << u"QTextBrowser { border: 1px solid #cccccc; background-color: white; "
                              "border-image: url(\"%1\") 0 0 0 0 stretch stretch; }"_s;
}

void TestChatView::paintsStyleSheetBackgrounds()
{
    QFETCH(const QString, sheet);
    const QTemporaryDir folder;
    const QString file = folder.filePath(u"image.png"_s);
    QImage image(60, 40, QImage::Format_RGB32);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            image.setPixel(x, y, qRgb(4 * x, 6 * y, 128));
    }
    QVERIFY(image.save(file));
    ViewPair pair(QSize(450, 300));
    pair.applyToBoth([](QTextBrowser &view) {
        QPalette palette = view.palette();
        palette.setColor(QPalette::Base, Qt::white);
        palette.setColor(QPalette::Window, Qt::white);
        view.setPalette(palette);
        view.setAutoFillBackground(true);
    });
    pair.append(ChatCorpus::rows().first(60));
    pair.applyToBoth([&](QTextBrowser &view) {
        view.setStyleSheet(sheet.contains(u"%1"_s) ? sheet.arg(file) : sheet);
    });
    QVERIFY(pair.measure());
    QCOMPARE(pair.differenceAnywhere(), QString());
    // The background must not scroll.
    pair.scrollTo(100);
    pair.scrollTo(130);
    QCOMPARE(onScreen(*pair.own.viewport()), onScreen(*pair.stock.viewport()));
    pair.resize(QSize(500, 250));
    QVERIFY(pair.measure());
    QCOMPARE(pair.differenceAnywhere(), QString());
}

void TestChatView::canBeDestroyedWithEstimatedRows()
{
    auto view = makeView(5000);
    QCoreApplication::processEvents();
    QVERIFY(ChatDocument::layoutOf(*view).hasEstimates());
    view.reset();
    QCoreApplication::processEvents();

    // After this paint, the layout's signal for the new size is still pending.
    QTextBrowser source;
    ChatTable::appendRows(*ChatTable::create(source, 3), ChatCorpus::rows());
    std::unique_ptr<QTextDocument> document(source.document()->clone());
    document->setDocumentLayout(new ChatLayout(document.get()));
    QImage image(300, 300, QImage::Format_RGB32);
    QPainter painter(&image);
    document->drawContents(&painter);
    painter.end();
    document.reset();
    QCoreApplication::processEvents();
}

QTEST_MAIN(TestChatView)
#include "tst_ChatView.moc"
