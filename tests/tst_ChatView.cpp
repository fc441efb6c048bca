#include "ChatCorpus.h"
#include "ChatLayout.h"
#include "ChatView.h"
#include "ViewPair.h"

#include <QApplication>
#include <QClipboard>
#include <QMimeData>
#include <QMouseEvent>
#include <QPainter>
#include <QScreen>
#include <QScrollBar>
#include <QSignalSpy>
#include <QStackedWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QTextBlock>
#include <QTextTable>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

ChatLayout &layoutOf(const ChatView &view)
{
    return *qobject_cast<ChatLayout *>(view.document()->documentLayout());
}

void scrollToEnd(QTextBrowser &view)
{
    QTextCursor cursor = view.textCursor();
    cursor.movePosition(QTextCursor::End);
    view.setTextCursor(cursor);
    view.ensureCursorVisible();
}

// Height within the viewport at which the last row ends.
int endOfText(const ChatView &view)
{
    const ChatLayout &layout = layoutOf(view);
    return layout.rowTop(layout.rowCount()) - view.verticalScrollBar()->value();
}

// What the screen shows of a window's child, after everything that was asked for has been painted.
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

// The first point of the viewport at which there is `anchor`.
QPoint pointOf(const QTextBrowser &view, const QString &anchor)
{
    for (int y = 0; y < view.viewport()->height(); y += 4) {
        for (int x = 0; x < view.viewport()->width(); x += 4) {
            if (view.anchorAt(QPoint(x, y)) == anchor)
                return {x, y};
        }
    }
    return {};
}

void move(QTextBrowser &view, QPoint point, Qt::MouseButtons buttons = Qt::NoButton)
{
    QMouseEvent event(QEvent::MouseMove, point, view.viewport()->mapToGlobal(point), Qt::NoButton,
                      buttons, Qt::NoModifier);
    QCoreApplication::sendEvent(view.viewport(), &event);
}

} // namespace

class TestChatView final : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void holdsTheEndWhileLinesArrive();
    void showsTheEndOfManyLinesAtOnce();
    void measuresNothingUnseen();
    void showsTheEndOfAHiddenTab();
    void looksLikeQtsViewAfterHiddenLines();
    void showsAfterResizingAtOnceWhatStays();
    void holdsTheEndThroughResizingAndOtherFonts();
    void holdsThePlaceOfAReader();
    void holdsThePlaceWhileRowsAreMeasured();
    void scrollsIntoRowsNotYetMeasured();
    void putsOnTheScreenWhatIsThere();
    void paintsThroughStyleSheets_data();
    void paintsThroughStyleSheets();
    void selectsByDragging_data();
    void selectsByDragging();
    void copiesWhatQtsViewCopies();
    void followsLinksByMouse();
    void followsLinksByKeyboard();
    void hoversLinks();
    void findsText();
    void scrollsByKeys();
    void goesWhileRowsAreUnmeasured();

private:
    std::unique_ptr<ChatView> makeView(int rows, QSize size = QSize(500, 300));

    QTextTable *table = nullptr;
};

void TestChatView::init()
{
    QGuiApplication::clipboard()->clear();
}

std::unique_ptr<ChatView> TestChatView::makeView(int rows, QSize size)
{
    auto view = std::make_unique<ChatView>();
    view->resize(size);
    view->show();
    table = ChatTable::create(*view, 3);
    ChatTable::appendRows(*table, ChatCorpus::plainRows(rows));
    scrollToEnd(*view);
    return view;
}

void TestChatView::holdsTheEndWhileLinesArrive()
{
    const auto view = makeView(0);
    for (int i = 0; i < 60; ++i) {
        ChatTable::appendRows(*table, ChatCorpus::plainRows(1, i));
        scrollToEnd(*view);
        const QScrollBar &bar = *view->verticalScrollBar();
        QVERIFY(bar.value() >= bar.maximum() - 4);
        QVERIFY(endOfText(*view) <= view->viewport()->height());
        QVERIFY(!layoutOf(*view).hasEstimates());
    }
}

void TestChatView::showsTheEndOfManyLinesAtOnce()
{
    const auto view = makeView(3000);
    QVERIFY(layoutOf(*view).hasEstimates());
    QCOMPARE(endOfText(*view), view->viewport()->height());
    const QImage before = painted(*view->viewport());
    QTRY_VERIFY(!layoutOf(*view).hasEstimates());
    QCOMPARE(endOfText(*view), view->viewport()->height());
    QCOMPARE(painted(*view->viewport()), before);
}

void TestChatView::measuresNothingUnseen()
{
    QStackedWidget stack;
    stack.addWidget(new QWidget);
    auto *view = new ChatView;
    stack.addWidget(view);
    stack.show();
    ChatTable::appendRows(*ChatTable::create(*view, 3), ChatCorpus::rows());
    scrollToEnd(*view);
    QCoreApplication::processEvents();
    QVERIFY(layoutOf(*view).hasEstimates());
    stack.setCurrentIndex(1);
    QTRY_VERIFY(!layoutOf(*view).hasEstimates());
}

void TestChatView::showsTheEndOfAHiddenTab()
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
        scrollToEnd(*view);
    }
    stack.setCurrentIndex(1);
    QVERIFY(endOfText(*view) <= view->viewport()->height());
    QVERIFY(endOfText(*view) >= view->viewport()->height() - 4);
    stack.setCurrentIndex(0);
    ChatTable::appendRows(*hidden, ChatCorpus::rows());
    scrollToEnd(*view);
    stack.setCurrentIndex(1);
    QCOMPARE(endOfText(*view), view->viewport()->height());
    QTRY_VERIFY(!layoutOf(*view).hasEstimates());
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

void TestChatView::showsAfterResizingAtOnceWhatStays()
{
    const auto view = makeView(2000);
    QTRY_VERIFY(!layoutOf(*view).hasEstimates());
    for (const QSize size : {QSize(400, 300), QSize(700, 350), QSize(350, 250)}) {
        view->resize(size);
        QVERIFY(layoutOf(*view).hasEstimates());
        const QImage first = painted(*view->viewport());
        QTRY_VERIFY(!layoutOf(*view).hasEstimates());
        QCOMPARE(painted(*view->viewport()), first);
        QCOMPARE(onScreen(*view->viewport()), first);
    }
}

void TestChatView::holdsTheEndThroughResizingAndOtherFonts()
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
        QTRY_VERIFY(!layoutOf(*view).hasEstimates());
        QVERIFY(isAtEnd());
    }
    view->setFont(QFont(u"DejaVu Serif"_s, 17));
    QVERIFY(isAtEnd());
    QTRY_VERIFY(!layoutOf(*view).hasEstimates());
    QVERIFY(isAtEnd());
}

void TestChatView::holdsThePlaceOfAReader()
{
    const auto view = makeView(500);
    QTRY_VERIFY(!layoutOf(*view).hasEstimates());
    const ChatLayout &layout = layoutOf(*view);
    view->verticalScrollBar()->setValue(layout.rowTop(200));
    const auto rowOnTop = [&] { return layout.rowAt(view->verticalScrollBar()->value()); };
    QCOMPARE(rowOnTop(), 200);
    view->resize(380, 300);
    QCOMPARE(rowOnTop(), 200);
    QTRY_VERIFY(!layout.hasEstimates());
    QCOMPARE(rowOnTop(), 200);
    view->setFont(QFont(u"DejaVu Serif"_s, 17));
    QTRY_VERIFY(!layout.hasEstimates());
    QCOMPARE(rowOnTop(), 200);
    ChatTable::appendRows(*table, ChatCorpus::plainRows(300));
    QTRY_VERIFY(!layout.hasEstimates());
    QCOMPARE(rowOnTop(), 200);
}

void TestChatView::holdsThePlaceWhileRowsAreMeasured()
{
    const auto view = makeView(3000);
    const ChatLayout &layout = layoutOf(*view);
    QVERIFY(layout.hasEstimates());
    view->verticalScrollBar()->setValue(view->verticalScrollBar()->maximum() / 2);
    const QImage before = painted(*view->viewport());
    const int row = layout.rowAt(view->verticalScrollBar()->value());
    const int top = layout.rowTop(row) - view->verticalScrollBar()->value();
    QVERIFY(layout.hasEstimates());
    QTRY_VERIFY(!layout.hasEstimates());
    QCOMPARE(layout.rowTop(row) - view->verticalScrollBar()->value(), top);
    QCOMPARE(painted(*view->viewport()), before);
    QCOMPARE(onScreen(*view->viewport()), before);
}

void TestChatView::scrollsIntoRowsNotYetMeasured()
{
    const auto view = makeView(3000);
    const ChatLayout &layout = layoutOf(*view);
    QScrollBar &bar = *view->verticalScrollBar();
    while (bar.value() > 0) {
        const int row = layout.rowAt(bar.value());
        const int top = layout.rowTop(row) - bar.value();
        bar.setValue(bar.value() - 200);
        // What was on top has moved down by as much, or more if the rows above were higher.
        if (bar.value() > 0)
            QVERIFY(layout.rowTop(row) - bar.value() >= top);
        QCOMPARE(onScreen(*view->viewport()), painted(*view->viewport()));
    }
    QCOMPARE(layout.rowAt(bar.value()), 0);
}

void TestChatView::putsOnTheScreenWhatIsThere()
{
    const auto view = makeView(0);
    const auto isPainted = [&view] { return onScreen(*view) == painted(*view); };
    const QStringList sheets{
            {}, u"QTextBrowser { background: #eeeeff; color: #222222; border: none; }"_s, {}};
    for (const QString &sheet : sheets) {
        view->setStyleSheet(sheet);
        QVERIFY(isPainted());
        for (int i = 0; i < 40; ++i) {
            ChatTable::appendRows(*table, ChatCorpus::plainRows(1 + i % 3, i));
            scrollToEnd(*view);
            QVERIFY(isPainted());
        }
        view->verticalScrollBar()->setValue(view->verticalScrollBar()->value() - 37);
        QVERIFY(isPainted());
        view->resize(view->width() + 7, view->height() - 11);
        QVERIFY(isPainted());
        view->setFont(QFont(u"DejaVu Sans"_s, view->font().pointSize() + 1));
        QVERIFY(isPainted());
        ChatTable::appendRows(*table, ChatCorpus::rows());
        QVERIFY(isPainted());
        scrollToEnd(*view);
        QVERIFY(isPainted());
        view->selectAll();
        QVERIFY(isPainted());
    }
}

void TestChatView::paintsThroughStyleSheets_data()
{
    QTest::addColumn<QString>("sheet");
    QTest::newRow("colour") << u"QTextBrowser { border: 1px solid #cccccc; "
                               "background-color: #ffffee; border-image: none; }"_s;
    QTest::newRow("translucent colour") << u"QTextBrowser { background-color: #80ff0000; }"_s;
    QTest::newRow("round corners") << u"QTextBrowser { color: #eeeeee; background: #222222; "
                                      "border: none; border-radius: 8px; padding: 4px; }"_s;
    QTest::newRow("picture")
            << u"QTextBrowser { border: 1px solid #cccccc; background-color: white; "
               "border-image: url(\"%1\") 0 0 0 0 stretch stretch; }"_s;
}

void TestChatView::paintsThroughStyleSheets()
{
    QFETCH(const QString, sheet);
    const QTemporaryDir folder;
    const QString file = folder.filePath(u"picture.png"_s);
    QImage image(60, 40, QImage::Format_RGB32);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            image.setPixel(x, y, qRgb(4 * x, 6 * y, 128));
    }
    QVERIFY(image.save(file));
    ViewPair pair(QSize(450, 300));
    pair.both([](QTextBrowser &view) {
        QPalette palette = view.palette();
        palette.setColor(QPalette::Base, Qt::white);
        palette.setColor(QPalette::Window, Qt::white);
        view.setPalette(palette);
        view.setAutoFillBackground(true);
    });
    pair.append(ChatCorpus::rows().first(60));
    pair.both([&](QTextBrowser &view) {
        view.setStyleSheet(sheet.contains(u"%1"_s) ? sheet.arg(file) : sheet);
    });
    QVERIFY(pair.measure());
    QCOMPARE(pair.differenceAnywhere(), QString());
    // What scrolls must not take the background along.
    pair.scrollTo(100);
    pair.scrollTo(130);
    QCOMPARE(onScreen(*pair.own.viewport()), onScreen(*pair.stock.viewport()));
    pair.resize(QSize(500, 250));
    QVERIFY(pair.measure());
    QCOMPARE(pair.differenceAnywhere(), QString());
}

void TestChatView::selectsByDragging_data()
{
    QTest::addColumn<QPoint>("from");
    QTest::addColumn<QPoint>("to");
    QTest::newRow("along a line") << QPoint(230, 80) << QPoint(330, 80);
    QTest::newRow("down the texts") << QPoint(230, 60) << QPoint(330, 200);
    QTest::newRow("up the nicks") << QPoint(150, 250) << QPoint(150, 50);
    QTest::newRow("across columns") << QPoint(20, 100) << QPoint(300, 200);
    QTest::newRow("into the margin") << QPoint(250, 100) << QPoint(1, 150);
}

void TestChatView::selectsByDragging()
{
    QFETCH(const QPoint, from);
    QFETCH(const QPoint, to);
    ViewPair pair(QSize(450, 300));
    pair.append(ChatCorpus::rows().first(60));
    QVERIFY(pair.measure());
    pair.scrollTo(300);
    pair.both([&](QTextBrowser &view) {
        QTest::mousePress(view.viewport(), Qt::LeftButton, {}, from);
        for (int step = 1; step <= 4; ++step)
            move(view, from + (to - from) * step / 4, Qt::LeftButton);
        QTest::mouseRelease(view.viewport(), Qt::LeftButton, {}, to);
    });
    QVERIFY(pair.own.textCursor().hasSelection());
    QCOMPARE(pair.own.textCursor().selectedText(), pair.stock.textCursor().selectedText());
    QCOMPARE(pair.difference(), QString());
}

void TestChatView::copiesWhatQtsViewCopies()
{
    ViewPair pair(QSize(450, 300));
    pair.append(ChatCorpus::rows().first(40));
    QCOMPARE(pair.own.toPlainText(), pair.stock.toPlainText());
    QCOMPARE(pair.own.toHtml(), pair.stock.toHtml());
    const auto copied = [](QTextBrowser &view) {
        view.copy();
        const QMimeData *data = QGuiApplication::clipboard()->mimeData();
        return QStringList{data->text(), data->html()};
    };
    pair.both([](QTextBrowser &view) { view.selectAll(); });
    QCOMPARE(copied(pair.own), copied(pair.stock));
    pair.both([](QTextBrowser &view) {
        QTextCursor cursor(view.document()->findBlockByNumber(1 + 3 * 4 + 1));
        cursor.setPosition(view.document()->findBlockByNumber(1 + 3 * 9 + 2).position() + 2,
                           QTextCursor::KeepAnchor);
        view.setTextCursor(cursor);
    });
    QCOMPARE(copied(pair.own), copied(pair.stock));
}

void TestChatView::followsLinksByMouse()
{
    const auto view = makeView(30);
    ChatTable::appendRow(*table, {.time = u"t"_s,
                                  .nick = u"bob"_s,
                                  .text = u" see https://example.org/x and me@example.org ."_s});
    scrollToEnd(*view);
    view->setOpenLinks(false);
    const QSignalSpy clicks(view.get(), &QTextBrowser::anchorClicked);
    for (const QString &link : {u"https://example.org/x"_s, u"mailto:me@example.org"_s}) {
        const QPoint point = pointOf(*view, link);
        QVERIFY(!point.isNull());
        QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, point + QPoint(3, 3));
    }
    QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, QPoint(30, 30));
    QCOMPARE(clicks.count(), 2);
    QCOMPARE(clicks.at(0).at(0).toUrl(), QUrl(u"https://example.org/x"_s));
    QCOMPARE(clicks.at(1).at(0).toUrl(), QUrl(u"mailto:me@example.org"_s));
}

void TestChatView::followsLinksByKeyboard()
{
    const auto visit = [](QTextBrowser &view) {
        QTextTable *conversation = ChatTable::create(view, 3);
        ChatTable::appendRows(*conversation, ChatCorpus::plainRows(20));
        for (const QString &text :
             {u" https://example.org/1"_s, u" so"_s, u" two@example.org yes"_s})
            ChatTable::appendRow(*conversation, {.time = u"t"_s, .nick = u"bob"_s, .text = text});
        ChatTable::appendRows(*conversation, ChatCorpus::plainRows(40));
        view.setOpenLinks(false);
        view.resize(450, 300);
        view.show();
        view.activateWindow();
        view.setFocus();
        const QSignalSpy clicks(&view, &QTextBrowser::anchorClicked);
        QList<QVariant> result;
        for (const Qt::Key key : {Qt::Key_Tab, Qt::Key_Return, Qt::Key_Tab, Qt::Key_Return,
                                  Qt::Key_Backtab, Qt::Key_Return}) {
            QTest::keyClick(&view, key);
            result << view.verticalScrollBar()->value() << view.textCursor().selectedText()
                   << painted(*view.viewport());
        }
        for (const QList<QVariant> &click : clicks)
            result << click;
        return result;
    };
    QTextBrowser stock;
    const QList<QVariant> expected = visit(stock);
    stock.hide();
    ChatView own;
    const QList<QVariant> result = visit(own);
    QCOMPARE(result.size(), 6 * 3 + 3);
    QCOMPARE(result.at(18).toUrl(), QUrl(u"https://example.org/1"_s));
    QCOMPARE(result.at(20).toUrl(), QUrl(u"mailto:two@example.org"_s));
    QCOMPARE(result, expected);
}

void TestChatView::hoversLinks()
{
    const auto view = makeView(3);
    for (const QString &text : {u" https://example.org/1"_s, u" so https://example.org/2"_s})
        ChatTable::appendRow(*table, {.time = u"t"_s, .nick = u"bob"_s, .text = text});
    const QSignalSpy hovered(view.get(), qOverload<const QUrl &>(&QTextBrowser::highlighted));
    const QPoint first = pointOf(*view, u"https://example.org/1"_s);
    const QPoint second = pointOf(*view, u"https://example.org/2"_s);
    for (const QPoint point : {QPoint(20, 20), first, first + QPoint(2, 2), second, QPoint(20, 20),
                               QPoint(30, 30), second})
        move(*view, point);
    QStringList urls;
    for (const QList<QVariant> &signal : hovered)
        urls << signal.at(0).toUrl().toString();
    QCOMPARE(urls, (QStringList{u"https://example.org/1"_s, u"https://example.org/2"_s, u""_s,
                                u"https://example.org/2"_s}));
    QCOMPARE(view->viewport()->cursor().shape(), Qt::PointingHandCursor);
}

void TestChatView::findsText()
{
    ViewPair pair(QSize(450, 300));
    pair.append(ChatCorpus::rows());
    QVERIFY(pair.measure());
    pair.both([](QTextBrowser &view) { view.moveCursor(QTextCursor::Start); });
    for (int i = 0; i < 8; ++i) {
        pair.both([](QTextBrowser &view) { QVERIFY(view.find(u"combining"_s)); });
        QCOMPARE(pair.own.textCursor().position(), pair.stock.textCursor().position());
        QCOMPARE(pair.own.verticalScrollBar()->value(), pair.stock.verticalScrollBar()->value());
        QCOMPARE(pair.difference(), QString());
    }
    // Also where nothing has been measured yet.
    const auto view = makeView(3000);
    QVERIFY(view->find(u"line 1234 "_s, QTextDocument::FindBackward));
    const QRect found = view->cursorRect();
    QVERIFY(view->viewport()->rect().contains(found));
    QTRY_VERIFY(!layoutOf(*view).hasEstimates());
    QVERIFY(view->viewport()->rect().contains(view->cursorRect()));
}

void TestChatView::scrollsByKeys()
{
    ViewPair pair(QSize(450, 300));
    pair.append(ChatCorpus::rows());
    QVERIFY(pair.measure());
    pair.scrollTo(0);
    for (const Qt::Key key : {Qt::Key_End, Qt::Key_PageUp, Qt::Key_PageUp, Qt::Key_Up, Qt::Key_Down,
                              Qt::Key_PageDown, Qt::Key_Home, Qt::Key_Space}) {
        pair.both([key](QTextBrowser &view) { QTest::keyClick(&view, key); });
        QCOMPARE(pair.own.verticalScrollBar()->value(), pair.stock.verticalScrollBar()->value());
        QCOMPARE(pair.difference(), QString());
    }
}

void TestChatView::goesWhileRowsAreUnmeasured()
{
    auto view = makeView(5000);
    QCoreApplication::processEvents();
    QVERIFY(layoutOf(*view).hasEstimates());
    view.reset();
    QCoreApplication::processEvents();

    // Painted once by itself, the layout has yet to tell its new size.
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
