#include "ChatCorpus.h"
#include "ChatLayout.h"
#include "ChatView.h"
#include "ViewPair.h"
#include "Waiting.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>
#include <QMouseEvent>
#include <QScrollBar>
#include <QSignalSpy>
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

// What a user does with a conversation; how it is measured and painted is looked at elsewhere.
class TestChatViewUse final : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void selectsByDragging_data();
    void selectsByDragging();
    void copiesWhatQtsViewCopies();
    void followsLinksByMouse();
    void followsLinksByKeyboard();
    void hoversLinks();
    void findsText();
    void scrollsByKeys();

private:
    std::unique_ptr<ChatView> makeView(int rows, QSize size = QSize(500, 300));

    QTextTable *table = nullptr;
};

void TestChatViewUse::init()
{
    QGuiApplication::clipboard()->clear();
}

std::unique_ptr<ChatView> TestChatViewUse::makeView(int rows, QSize size)
{
    auto view = std::make_unique<ChatView>();
    view->resize(size);
    view->show();
    table = ChatTable::create(*view, 3);
    ChatTable::appendRows(*table, ChatCorpus::plainRows(rows));
    scrollToEnd(*view);
    return view;
}

void TestChatViewUse::selectsByDragging_data()
{
    QTest::addColumn<QPoint>("from");
    QTest::addColumn<QPoint>("to");
    QTest::newRow("along a line") << QPoint(230, 80) << QPoint(330, 80);
    QTest::newRow("down the texts") << QPoint(230, 60) << QPoint(330, 200);
    QTest::newRow("up the nicks") << QPoint(150, 250) << QPoint(150, 50);
    QTest::newRow("across columns") << QPoint(20, 100) << QPoint(300, 200);
    QTest::newRow("into the margin") << QPoint(250, 100) << QPoint(1, 150);
}

void TestChatViewUse::selectsByDragging()
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

void TestChatViewUse::copiesWhatQtsViewCopies()
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

void TestChatViewUse::followsLinksByMouse()
{
    const auto view = makeView(30);
    ChatTable::appendRows(*table, {{.time = u"t"_s,
                                    .nick = u"bob"_s,
                                    .text = u" see https://example.org/x and me@example.org ."_s}});
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

void TestChatViewUse::followsLinksByKeyboard()
{
    const auto visit = [](QTextBrowser &view) {
        QTextTable *conversation = ChatTable::create(view, 3);
        ChatTable::appendRows(*conversation, ChatCorpus::plainRows(20));
        for (const QString &text :
             {u" https://example.org/1"_s, u" so"_s, u" two@example.org yes"_s})
            ChatTable::appendRows(*conversation,
                                  {{.time = u"t"_s, .nick = u"bob"_s, .text = text}});
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

void TestChatViewUse::hoversLinks()
{
    const auto view = makeView(3);
    for (const QString &text : {u" https://example.org/1"_s, u" so https://example.org/2"_s})
        ChatTable::appendRows(*table, {{.time = u"t"_s, .nick = u"bob"_s, .text = text}});
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

void TestChatViewUse::findsText()
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
    QTRY_VERIFY_WITH_TIMEOUT(!layoutOf(*view).hasEstimates(), Patience);
    QVERIFY(view->viewport()->rect().contains(view->cursorRect()));
}

void TestChatViewUse::scrollsByKeys()
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

QTEST_MAIN(TestChatViewUse)
#include "tst_ChatViewUse.moc"
