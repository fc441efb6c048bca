#include "ChatCorpus.h"
#include "ChatDocument.h"
#include "ChatLayout.h"
#include "ChatView.h"
#include "ViewPair.h"
#include "Waiting.h"

#include <QClipboard>
#include <QFocusEvent>
#include <QGuiApplication>
#include <QLineEdit>
#include <QMimeData>
#include <QMouseEvent>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>
#include <QTextBlock>
#include <QTextTable>
#include <QVBoxLayout>

#include <memory>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

using Key = std::pair<Qt::Key, Qt::KeyboardModifiers>;

// Returns the first point of the viewport with the link `anchor`.
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

/// A window with a conversation above a line edit. At the end of the conversation, two of its three
/// links are visible.
struct LinkedWindow
{
    LinkedWindow()
    {
        auto *layout = new QVBoxLayout(&window);
        layout->addWidget(view);
        layout->addWidget(line);
        view->setOpenLinks(false);
        ChatTable::appendRows(*table, ChatCorpus::plainRows(20));
        add(u" one@example.org"_s);
        ChatTable::appendRows(*table, ChatCorpus::plainRows(40));
        add(u" see https://example.org/2"_s);
        add(u" and https://example.org/3 too"_s);
        ChatTable::appendRows(*table, ChatCorpus::plainRows(2));
    }

    void add(const QString &text) const
    {
        ChatTable::appendRows(*table, {{.time = u"t"_s, .nick = u"bob"_s, .text = text}});
    }

    /// Shows the end of the conversation and focuses it. Returns false if the window does not
    /// become active.
    [[nodiscard]] bool show()
    {
        window.resize(450, 350);
        window.show();
        window.activateWindow();
        ChatDocument::scrollToEnd(*view);
        view->setFocus();
        return QTest::qWaitForWindowActive(&window, WaitTimeout);
    }

    [[nodiscard]] int scroll() const { return view->verticalScrollBar()->value(); }

    QWidget window;
    ChatView *view = new ChatView;
    QLineEdit *line = new QLineEdit;
    QTextTable *table = ChatTable::create(*view, 3);
};

} // namespace

// User interaction with a conversation. TestChatView covers measuring and painting.
class TestChatViewUse final : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void selectsByDragging_data();
    void selectsByDragging();
    void copiesPlainLines_data();
    void copiesPlainLines();
    void followsLinksByMouse();
    void followsLinksByKeyboard();
    void startsAtTheLastVisibleLink_data();
    void startsAtTheLastVisibleLink();
    void skipsLinksThatAreNotVisible();
    void returnsToTheEndAfterTheLinks();
    void keepsTheUsersScrollPosition();
    void hoversLinks();
    void findsText();
    void scrollsByKeys();
    void scrollsToBothEnds();

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
    ChatDocument::scrollToEnd(*view);
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
    pair.applyToBoth([&](QTextBrowser &view) {
        QTest::mousePress(view.viewport(), Qt::LeftButton, {}, from);
        for (int step = 1; step <= 4; ++step)
            move(view, from + (to - from) * step / 4, Qt::LeftButton);
        QTest::mouseRelease(view.viewport(), Qt::LeftButton, {}, to);
    });
    QVERIFY(pair.own.textCursor().hasSelection());
    QCOMPARE(pair.own.textCursor().selectedText(), pair.stock.textCursor().selectedText());
    QCOMPARE(pair.difference(), QString());
}

void TestChatViewUse::copiesPlainLines_data()
{
    QTest::addColumn<Key>("key");
    QTest::newRow("Ctrl+C") << Key(Qt::Key_C, Qt::ControlModifier);
    QTest::newRow("Ctrl+Insert") << Key(Qt::Key_Insert, Qt::ControlModifier);
}

void TestChatViewUse::copiesPlainLines()
{
    QFETCH(const Key, key);
    const auto view = makeView(0);
    ChatTable::appendRows(*table, {{.time = u"[10:00]"_s,
                                    .nick = u"bob"_s,
                                    .text = u" <b>é</b> &amp; http://x.org/?a&b"_s},
                                   {.time = u"[10:01]"_s, .nick = {}, .text = u" hm"_s}});
    view->selectAll();
    QTest::keyClick(view.get(), key.first, key.second);
    const QMimeData *data = QGuiApplication::clipboard()->mimeData();
    QCOMPARE(data->text(), u"[10:00] bob <b>é</b> &amp; http://x.org/?a&b\n[10:01] hm"_s);
    QCOMPARE(data->html(), u"<meta charset=\"utf-8\"><p>[10:00] bob &lt;b&gt;é&lt;/b&gt; &amp;amp; "
                           "http://x.org/?a&amp;b<br>\n[10:01] hm</p>"_s);
}

void TestChatViewUse::followsLinksByMouse()
{
    const auto view = makeView(30);
    ChatTable::appendRows(*table, {{.time = u"t"_s,
                                    .nick = u"bob"_s,
                                    .text = u" see https://example.org/x and me@example.org ."_s}});
    ChatDocument::scrollToEnd(*view);
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
    LinkedWindow window;
    QVERIFY(window.show());
    const QSignalSpy clicks(window.view, &QTextBrowser::anchorClicked);
    for (const Qt::Key key : {Qt::Key_Tab, Qt::Key_Backtab, Qt::Key_Backtab, Qt::Key_Tab}) {
        QTest::keyClick(window.view, key);
        QTest::keyClick(window.view, Qt::Key_Return);
        QVERIFY(window.view->viewport()->rect().contains(window.view->cursorRect()));
    }
    QStringList urls;
    for (const QList<QVariant> &click : clicks)
        urls << click.at(0).toUrl().toString();
    QCOMPARE(urls, (QStringList{u"https://example.org/3"_s, u"https://example.org/2"_s,
                                u"mailto:one@example.org"_s, u"https://example.org/2"_s}));
}

void TestChatViewUse::startsAtTheLastVisibleLink_data()
{
    QTest::addColumn<Qt::Key>("key");
    QTest::newRow("Tab") << Qt::Key_Tab;
    QTest::newRow("Shift+Tab") << Qt::Key_Backtab;
}

void TestChatViewUse::startsAtTheLastVisibleLink()
{
    QFETCH(const Qt::Key, key);
    LinkedWindow window;
    QVERIFY(window.show());
    const int end = window.scroll();
    QTest::keyClick(window.view, key);
    QCOMPARE(window.view->textCursor().selectedText(), u"https://example.org/3"_s);
    QCOMPARE(window.scroll(), end);
    QVERIFY(window.view->hasFocus());

    // A new line moves the focus away from the link.
    ChatTable::appendRows(*window.table, ChatCorpus::plainRows(1));
    ChatDocument::scrollToEnd(*window.view);
    QTest::keyClick(window.view, key);
    QCOMPARE(window.view->textCursor().selectedText(), u"https://example.org/3"_s);
}

void TestChatViewUse::skipsLinksThatAreNotVisible()
{
    LinkedWindow window;
    ChatTable::appendRows(*window.table, ChatCorpus::plainRows(30));
    QVERIFY(window.show());
    const int end = window.scroll();
    QTest::keyClick(window.view, Qt::Key_Tab);
    QVERIFY(window.line->hasFocus());
    QCOMPARE(window.scroll(), end);
}

void TestChatViewUse::returnsToTheEndAfterTheLinks()
{
    LinkedWindow window;
    QVERIFY(window.show());
    const int end = window.scroll();
    for (int i = 0; i < 3; ++i)
        QTest::keyClick(window.view, Qt::Key_Backtab);
    QVERIFY(window.scroll() < end);
    QFocusEvent away(QEvent::FocusOut, Qt::ActiveWindowFocusReason);
    QCoreApplication::sendEvent(window.view, &away);
    QVERIFY(window.scroll() < end);
    for (int i = 0; i < 3; ++i)
        QTest::keyClick(window.view, Qt::Key_Tab);
    QVERIFY(window.line->hasFocus());
    QCOMPARE(window.scroll(), end);
}

void TestChatViewUse::keepsTheUsersScrollPosition()
{
    LinkedWindow window;
    QVERIFY(window.show());
    QTest::keyClick(window.view, Qt::Key_Tab);
    QTest::keyClick(window.view, Qt::Key_PageUp);
    const int position = window.scroll();
    window.line->setFocus();
    QCOMPARE(window.scroll(), position);
    // The view did not show the end when it got the focus again.
    window.view->setFocus();
    QTest::keyClick(window.view, Qt::Key_Tab);
    window.line->setFocus();
    QCOMPARE(window.scroll(), position);
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
    pair.applyToBoth([](QTextBrowser &view) { view.moveCursor(QTextCursor::Start); });
    for (int i = 0; i < 8; ++i) {
        pair.applyToBoth([](QTextBrowser &view) { QVERIFY(view.find(u"combining"_s)); });
        QCOMPARE(pair.own.textCursor().position(), pair.stock.textCursor().position());
        QCOMPARE(pair.own.verticalScrollBar()->value(), pair.stock.verticalScrollBar()->value());
        QCOMPARE(pair.difference(), QString());
    }
    // Also among estimated rows.
    const auto view = makeView(3000);
    QVERIFY(view->find(u"line 1234 "_s, QTextDocument::FindBackward));
    const QRect found = view->cursorRect();
    QVERIFY(view->viewport()->rect().contains(found));
    QTRY_VERIFY_WITH_TIMEOUT(!ChatDocument::layoutOf(*view).hasEstimates(), WaitTimeout);
    QVERIFY(view->viewport()->rect().contains(view->cursorRect()));
}

void TestChatViewUse::scrollsToBothEnds()
{
    const auto view = makeView(100);
    const QScrollBar *bar = view->verticalScrollBar();
    QTest::keyClick(view.get(), Qt::Key_Home, Qt::ControlModifier);
    QCOMPARE(bar->value(), bar->minimum());
    QTest::keyClick(view.get(), Qt::Key_End, Qt::ControlModifier);
    QCOMPARE(bar->value(), bar->maximum());
}

void TestChatViewUse::scrollsByKeys()
{
    ViewPair pair(QSize(450, 300));
    pair.append(ChatCorpus::rows());
    QVERIFY(pair.measure());
    pair.scrollTo(0);
    for (const Qt::Key key : {Qt::Key_End, Qt::Key_PageUp, Qt::Key_PageUp, Qt::Key_Up, Qt::Key_Down,
                              Qt::Key_PageDown, Qt::Key_Home, Qt::Key_Space}) {
        pair.applyToBoth([key](QTextBrowser &view) { QTest::keyClick(&view, key); });
        QCOMPARE(pair.own.verticalScrollBar()->value(), pair.stock.verticalScrollBar()->value());
        QCOMPARE(pair.difference(), QString());
    }
}

QTEST_MAIN(TestChatViewUse)
#include "tst_ChatViewUse.moc"
