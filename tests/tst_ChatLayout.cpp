#include "ChatCorpus.h"
#include "ChatLayout.h"
#include "ViewPair.h"
#include "Waiting.h"

#include <QPainter>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>
#include <QTextBlock>
#include <QTextTable>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

// Returns the first position of a cell.
int cellPosition(const QTextBrowser &view, int row, int column)
{
    return view.document()->findBlockByNumber(1 + 3 * row + column).position();
}

void select(QTextBrowser &view, int anchor, int position)
{
    QTextCursor cursor = view.textCursor();
    cursor.setPosition(anchor);
    cursor.setPosition(position, QTextCursor::KeepAnchor);
    view.setTextCursor(cursor);
}

} // namespace

class TestChatLayout final : public QObject
{
    Q_OBJECT

private slots:
    void looksLikeQtsLayout_data();
    void looksLikeQtsLayout();
    void looksTheSameWithoutNicks_data();
    void looksTheSameWithoutNicks();
    void looksTheSameWithLongWords();
    void looksTheSameEmptyAndWithOneLine();
    void looksTheSameLineByLine();
    void looksTheSameAfterResizing();
    void looksTheSameInOtherFonts();
    void looksTheSameInOtherColors();
    void looksTheSameFromRightToLeft();
    void looksTheSameWithASelection_data();
    void looksTheSameWithASelection();
    void widensAColumnForOneCharacter();
    void laysOutChangedRows();
    void measuresLikeQtsLayout();
    void placesBlocksAndFrames();
    void findsPositionsLikeQtsLayout_data();
    void findsPositionsLikeQtsLayout();
    void findsAnchorsLikeQtsLayout();
    void paintsWithoutAView();
    void wrapsNothingBeforeTheFirstShow();
    void laysOutANewTable();
    void laysOutAfterRowsAreRemoved();
    void keepsAnEditBlockOpenInALongConversation();
    void looksTheSameDuringAnOpenEditBlock();
};

void TestChatLayout::looksLikeQtsLayout_data()
{
    QTest::addColumn<int>("width");
    QTest::addColumn<qreal>("ratio");
    // At the smallest width, a single character can be wider than the text column.
    for (const int width : {150, 330, 500, 1000}) {
        for (const qreal ratio : {1.0, 1.5, 2.0})
            QTest::addRow("%d at %g", width, ratio) << width << ratio;
    }
}

void TestChatLayout::looksLikeQtsLayout()
{
    QFETCH(const int, width);
    QFETCH(const qreal, ratio);
    ViewPair pair(QSize(width, 900));
    pair.append(ChatCorpus::rows());
    QVERIFY(pair.measure());
    QCOMPARE(pair.own.document()->size(), pair.stock.document()->size());
    QCOMPARE(pair.own.verticalScrollBar()->maximum(), pair.stock.verticalScrollBar()->maximum());
    QCOMPARE(pair.own.horizontalScrollBar()->maximum(),
             pair.stock.horizontalScrollBar()->maximum());
    QCOMPARE(pair.differenceAnywhere(ratio), QString());
}

void TestChatLayout::looksTheSameWithoutNicks_data()
{
    QTest::addColumn<int>("columns");
    QTest::addColumn<QList<ChatRow>>("rows");

    QTest::newRow("two columns") << 2 << ChatCorpus::rowsWithoutNicks();
    QTest::newRow("three columns") << 3 << ChatCorpus::rowsWithoutNicks();
    QTest::newRow("nick and text in one cell") << 2 << ChatCorpus::rows();
}

void TestChatLayout::looksTheSameWithoutNicks()
{
    QFETCH(const int, columns);
    QFETCH(const QList<ChatRow>, rows);
    ViewPair pair(QSize(450, 700), columns);
    pair.append(rows);
    QVERIFY(pair.measure());
    QCOMPARE(pair.differenceAnywhere(), QString());
}

// Long words are broken into lines in another way than the text around them.
void TestChatLayout::looksTheSameWithLongWords()
{
    ViewPair pair(QSize(450, 700));
    const QString wide(3000, u'W');
    const QString narrow(6000, u'i');
    const QString mixed = u"Tj/ä1"_s.repeated(1000);
    QList<ChatRow> rows;
    for (const QString &text : {QString(u' ' + wide), QString(u" a word and "_s + narrow),
                                QString(u" x "_s + mixed + u" and two words"_s)})
        rows.append({.time = u" [12:00:00]"_s, .nick = u"alice"_s, .text = text});
    pair.append(rows);
    QVERIFY(pair.measure());
    QCOMPARE(pair.differenceAnywhere(), QString());
}

void TestChatLayout::looksTheSameEmptyAndWithOneLine()
{
    ViewPair pair(QSize(450, 300));
    QCOMPARE(pair.own.document()->size(), pair.stock.document()->size());
    QCOMPARE(pair.difference(), QString());
    pair.append(ChatCorpus::rows().first(1));
    QCOMPARE(pair.own.document()->size(), pair.stock.document()->size());
    QCOMPARE(pair.difference(), QString());

    QTextBrowser stock;
    ChatView own;
    QCOMPARE(own.document()->size().height(), stock.document()->size().height());
    // Text that is not a conversation is not laid out, but does no harm.
    own.setPlainText(u"one\ntwo"_s);
    own.show();
    QCOMPARE(own.toPlainText(), u"one\ntwo"_s);
    QCOMPARE(own.anchorAt(QPoint(10, 10)), QString());
    QCOMPARE(own.cursorForPosition(QPoint(10, 10)).position(), 0);
}

void TestChatLayout::looksTheSameLineByLine()
{
    ViewPair pair(QSize(450, 300));
    const QList<ChatRow> rows = ChatCorpus::rows().first(40);
    for (const ChatRow &row : rows) {
        pair.append({row});
        pair.applyToBoth([](QTextBrowser &view) {
            QTextCursor cursor = view.textCursor();
            cursor.movePosition(QTextCursor::End);
            view.setTextCursor(cursor);
            view.ensureCursorVisible();
        });
        QCOMPARE(pair.own.verticalScrollBar()->value(), pair.stock.verticalScrollBar()->value());
        QCOMPARE(pair.difference(), QString());
    }
}

void TestChatLayout::looksTheSameAfterResizing()
{
    ViewPair pair(QSize(450, 700));
    pair.append(ChatCorpus::rows());
    QVERIFY(pair.measure());
    for (const QSize size : {QSize(620, 500), QSize(380, 700), QSize(900, 300), QSize(450, 700)}) {
        pair.resize(size);
        QVERIFY(pair.measure());
        QCOMPARE(pair.own.document()->size(), pair.stock.document()->size());
        QCOMPARE(pair.differenceAnywhere(), QString());
    }
}

void TestChatLayout::looksTheSameInOtherFonts()
{
    ViewPair pair(QSize(550, 700));
    pair.append(ChatCorpus::rows());
    for (const QFont &font : {QFont(u"DejaVu Serif"_s, 15), QFont(u"DejaVu Sans Mono"_s, 8)}) {
        pair.applyToBoth([&font](QTextBrowser &view) { view.setFont(font); });
        QVERIFY(pair.measure());
        QCOMPARE(pair.own.document()->size(), pair.stock.document()->size());
        QCOMPARE(pair.differenceAnywhere(), QString());
    }
}

void TestChatLayout::looksTheSameInOtherColors()
{
    ViewPair pair(QSize(550, 700));
    pair.append(ChatCorpus::rows());
    pair.applyToBoth([](QTextBrowser &view) {
        QPalette palette = view.palette();
        palette.setColor(QPalette::Base, Qt::black);
        palette.setColor(QPalette::Text, Qt::yellow);
        view.setPalette(palette);
    });
    QVERIFY(pair.measure());
    QCOMPARE(pair.differenceAnywhere(), QString());
    pair.applyToBoth([](QTextBrowser &view) { view.setEnabled(false); });
    QCOMPARE(pair.difference(), QString());
}

void TestChatLayout::looksTheSameFromRightToLeft()
{
    ViewPair pair(QSize(550, 700));
    pair.append(ChatCorpus::rows());
    pair.applyToBoth([](QTextBrowser &view) {
        QTextOption option = view.document()->defaultTextOption();
        option.setTextDirection(Qt::RightToLeft);
        view.document()->setDefaultTextOption(option);
    });
    QVERIFY(pair.measure());
    QCOMPARE(pair.differenceAnywhere(), QString());
}

void TestChatLayout::looksTheSameWithASelection_data()
{
    QTest::addColumn<QPoint>("from"); // Row and column; row -1 is outside the table.
    QTest::addColumn<int>("fromOffset");
    QTest::addColumn<QPoint>("to");
    QTest::addColumn<int>("toOffset");

    QTest::newRow("within a cell") << QPoint(3, 2) << 10 << QPoint(3, 2) << 100;
    QTest::newRow("backwards") << QPoint(3, 2) << 100 << QPoint(3, 2) << 10;
    QTest::newRow("two cells of a row") << QPoint(3, 1) << 1 << QPoint(3, 2) << 5;
    QTest::newRow("a column") << QPoint(2, 2) << 3 << QPoint(14, 2) << 0;
    QTest::newRow("a rectangle") << QPoint(2, 0) << 3 << QPoint(9, 1) << 0;
    QTest::newRow("with an empty cell") << QPoint(4, 2) << 3 << QPoint(6, 2) << 0;
    QTest::newRow("from above the table") << QPoint(-1, 0) << 0 << QPoint(4, 2) << 1;
    QTest::newRow("from a cell to the end") << QPoint(4, 2) << 1 << QPoint(-1, 1) << 0;
    QTest::newRow("everything") << QPoint(-1, 0) << 0 << QPoint(-1, 1) << 0;
}

void TestChatLayout::looksTheSameWithASelection()
{
    QFETCH(const QPoint, from);
    QFETCH(const int, fromOffset);
    QFETCH(const QPoint, to);
    QFETCH(const int, toOffset);
    ViewPair pair(QSize(550, 700));
    pair.append(ChatCorpus::rows().first(40));
    QVERIFY(pair.measure());
    pair.applyToBoth([&](QTextBrowser &view) {
        const auto position = [&view](QPoint cell, int offset) {
            const int end = view.document()->characterCount() - 1;
            return cell.x() < 0 ? cell.y() * end : cellPosition(view, cell.x(), cell.y()) + offset;
        };
        select(view, position(from, fromOffset), position(to, toOffset));
    });
    QCOMPARE(pair.own.textCursor().selectedText(), pair.stock.textCursor().selectedText());
    QCOMPARE(pair.differenceAnywhere(), QString());
    QCOMPARE(pair.differenceAnywhere(1.5), QString());
}

void TestChatLayout::widensAColumnForOneCharacter()
{
    ViewPair pair(QSize(240, 300));
    pair.append(ChatCorpus::plainRows(3));
    QVERIFY(pair.measure());
    QCOMPARE(pair.difference(), QString());
    pair.append({{.time = u"t"_s, .nick = u"bob"_s, .text = u"\ufdfd"_s}});
    pair.append(ChatCorpus::plainRows(3));
    QVERIFY(pair.measure());
    QCOMPARE(pair.own.document()->size(), pair.stock.document()->size());
    QVERIFY(pair.own.horizontalScrollBar()->maximum() > 0);
    QCOMPARE(pair.differenceAnywhere(), QString());
}

void TestChatLayout::laysOutChangedRows()
{
    ViewPair pair(QSize(450, 700));
    pair.append(ChatCorpus::plainRows(30));
    QVERIFY(pair.measure());
    pair.applyToBoth([](QTextBrowser &view) {
        QTextCursor cursor(view.document());
        cursor.setPosition(cellPosition(view, 5, 2) + 3);
        cursor.insertText(u"more and more and more "_s.repeated(10));
        cursor.setPosition(cellPosition(view, 8, 2));
        cursor.movePosition(QTextCursor::EndOfBlock, QTextCursor::KeepAnchor);
        cursor.removeSelectedText();
        cursor.setPosition(cellPosition(view, 9, 2));
        cursor.movePosition(QTextCursor::EndOfBlock, QTextCursor::KeepAnchor);
        QTextCharFormat large;
        large.setFontPointSize(20);
        cursor.mergeCharFormat(large);
    });
    QVERIFY(pair.measure());
    QCOMPARE(pair.own.document()->size(), pair.stock.document()->size());
    QCOMPARE(pair.differenceAnywhere(), QString());
}

void TestChatLayout::measuresLikeQtsLayout()
{
    ViewPair pair(QSize(450, 700));
    pair.append(ChatCorpus::rows());
    QVERIFY(pair.measure());
    const ChatLayout &layout = pair.layout();
    QCOMPARE(layout.rowCount(), 221);
    QCOMPARE(layout.pageCount(), 1);
    QCOMPARE(layout.rowTop(0), 4);
    QCOMPARE(layout.rowAt(-5), 0);
    QCOMPARE(layout.rowAt(1000000), 220);
    for (int row = 0; row < layout.rowCount(); ++row) {
        QCOMPARE(layout.rowAt(layout.rowTop(row)), row);
        QCOMPARE(layout.rowAt(layout.rowTop(row + 1) - 1), row);
    }
    QCOMPARE(qreal(layout.rowTop(221) + 4), pair.stock.document()->size().height());
}

void TestChatLayout::placesBlocksAndFrames()
{
    ViewPair pair(QSize(450, 700));
    pair.append(ChatCorpus::rows());
    QVERIFY(pair.measure());
    const QAbstractTextDocumentLayout &stock = *pair.stock.document()->documentLayout();
    QTextBlock expected = pair.stock.document()->firstBlock().next();
    // Intended: the block above the table returns the whole document.
    QTextBlock block = pair.own.document()->firstBlock();
    QCOMPARE(pair.layout().blockBoundingRect(block).topLeft(), QPointF(4, 4));
    for (block = block.next(); block.isValid(); block = block.next(), expected = expected.next()) {
        QCOMPARE(pair.layout().blockBoundingRect(block), stock.blockBoundingRect(expected));
        QCOMPARE(block.layout()->lineCount(), expected.layout()->lineCount());
    }
    QVERIFY(pair.layout().blockBoundingRect(QTextBlock()).isNull());

    const auto frames = [](const QTextBrowser &view) {
        QTextFrame *root = view.document()->rootFrame();
        return QList<QTextFrame *>{root, root->childFrames().constFirst()};
    };
    for (int i = 0; i < 2; ++i) {
        QCOMPARE(pair.layout().frameBoundingRect(frames(pair.own).at(i)),
                 stock.frameBoundingRect(frames(pair.stock).at(i)));
    }
}

void TestChatLayout::findsPositionsLikeQtsLayout_data()
{
    QTest::addColumn<Qt::HitTestAccuracy>("accuracy");
    QTest::newRow("exact") << Qt::ExactHit;
    QTest::newRow("fuzzy") << Qt::FuzzyHit;
}

void TestChatLayout::findsPositionsLikeQtsLayout()
{
    QFETCH(const Qt::HitTestAccuracy, accuracy);
    ViewPair pair(QSize(450, 700));
    pair.append(ChatCorpus::rows().first(60));
    QVERIFY(pair.measure());
    const QAbstractTextDocumentLayout &stock = *pair.stock.document()->documentLayout();
    const auto isSame = [&](qreal x, qreal y) {
        const int position = pair.layout().hitTest(QPointF(x, y), accuracy);
        const int expected = stock.hitTest(QPointF(x, y), accuracy);
        if (position != expected)
            qInfo() << x << y << "gives" << position << "instead of" << expected;
        return position == expected;
    };
    const int height = int(stock.documentSize().height());
    for (int y = -10; y < height + 10; y += 3) {
        for (const qreal x : {-5.0, 0.0, 3.9, 4.0, 6.0, 30.5, 88.9, 89.0, 89.1, 150.0, 208.0, 209.0,
                              210.5, 300.25, 420.0, 425.0, 440.0, 1000.0})
            QVERIFY(isSame(x, y));
    }
    for (int row = 0; row <= pair.layout().rowCount(); ++row) {
        for (const qreal offset : {-1.0, -0.01, 0.0, 0.01, 1.0, 2.0})
            QVERIFY(isSame(250, pair.layout().rowTop(row) + offset));
    }
}

void TestChatLayout::findsAnchorsLikeQtsLayout()
{
    ViewPair pair(QSize(450, 700));
    pair.append(ChatCorpus::rows().first(40));
    QVERIFY(pair.measure());
    const QAbstractTextDocumentLayout &stock = *pair.stock.document()->documentLayout();
    QSet<QString> anchors;
    for (int y = 0; y < int(stock.documentSize().height()); y += 5) {
        for (int x = 0; x < 450; x += 9) {
            const QString anchor = pair.layout().anchorAt(QPointF(x, y));
            QCOMPARE(anchor, stock.anchorAt(QPointF(x, y)));
            QCOMPARE(pair.layout().formatAt(QPointF(x, y)), stock.formatAt(QPointF(x, y)));
            anchors.insert(anchor);
        }
    }
    QVERIFY(anchors.contains(u"mailto:me@example.org"_s));
    QVERIFY(anchors.contains(u"https://example.org/a/path?with=arguments"_s));
}

void TestChatLayout::paintsWithoutAView()
{
    QTextBrowser view;
    ChatTable::appendRows(*ChatTable::create(view, 3), ChatCorpus::rows());
    const std::unique_ptr<QTextDocument> stock(view.document()->clone());
    const std::unique_ptr<QTextDocument> own(view.document()->clone());
    own->setDocumentLayout(new ChatLayout(own.get()));
    stock->setTextWidth(500);
    own->setTextWidth(500);
    const auto paint = [](QTextDocument &document, const QRectF &clip) {
        QImage image(500, 3000, QImage::Format_RGB32);
        image.fill(Qt::white);
        QPainter painter(&image);
        document.drawContents(&painter, clip);
        return image;
    };
    QCOMPARE(paint(*own, QRectF(0, 0, 500, 3000)), paint(*stock, QRectF(0, 0, 500, 3000)));
    QCOMPARE(paint(*own, QRectF()), paint(*stock, QRectF()));
    // A size found during a paint is emitted afterwards.
    const QSignalSpy sizes(own->documentLayout(),
                           &QAbstractTextDocumentLayout::documentSizeChanged);
    QTRY_COMPARE_WITH_TIMEOUT(sizes.count(), 1, WaitTimeout);
    QCOMPARE(own->size(), stock->size());
}

void TestChatLayout::wrapsNothingBeforeTheFirstShow()
{
    ChatView view;
    const ChatRow row{.time = u"12:34"_s, .nick = u"alice"_s, .text = u"word "_s.repeated(10000)};
    ChatTable::appendRows(*ChatTable::create(view, 3), {row, row, row});
    QVERIFY2(view.document()->size().height() < 200,
             qPrintable(QString::number(view.document()->size().height())));
}

void TestChatLayout::laysOutANewTable()
{
    ViewPair pair(QSize(450, 400));
    pair.append(ChatCorpus::rows());
    pair.applyToBoth([](QTextBrowser &view) { view.clear(); });
    QCOMPARE(pair.own.document()->size(), pair.stock.document()->size());
    QCOMPARE(pair.difference(), QString());
    pair.applyToBoth([](QTextBrowser &view) {
        ChatTable::appendRows(*ChatTable::create(view, 2),
                              ChatCorpus::rowsWithoutNicks().first(50));
    });
    QVERIFY(pair.measure());
    // Works around Qt's view, which missed a part of its last change of height.
    pair.resize(QSize(460, 400));
    QVERIFY(pair.measure());
    QCOMPARE(pair.differenceAnywhere(), QString());
}

void TestChatLayout::laysOutAfterRowsAreRemoved()
{
    ViewPair pair(QSize(450, 400));
    pair.append(ChatCorpus::rows().first(50));
    pair.applyToBoth([](QTextBrowser &view) {
        const QList<QTextFrame *> frames = view.document()->rootFrame()->childFrames();
        qobject_cast<QTextTable *>(frames.constFirst())->removeRows(10, 20);
    });
    QVERIFY(pair.measure());
    QCOMPARE(pair.own.document()->size(), pair.stock.document()->size());
    QCOMPARE(pair.differenceAnywhere(), QString());
}

void TestChatLayout::keepsAnEditBlockOpenInALongConversation()
{
    ChatView view;
    view.show();
    QTextTable *table = ChatTable::create(view, 3);
    const QSignalSpy changes(view.document(), &QTextDocument::contentsChange);
    ChatTable::appendRows(*table, ChatCorpus::plainRows(998));
    QCOMPARE(changes.count(), 1);
    ChatTable::appendRows(*table, ChatCorpus::plainRows(1));
    QCOMPARE(changes.count(), 2);

    const auto &layout = *qobject_cast<ChatLayout *>(view.document()->documentLayout());
    for (int rows = 1001; rows < 1020; ++rows) {
        ChatTable::appendRows(*table, ChatCorpus::plainRows(1, rows));
        QCOMPARE(table->rows(), rows);
        QCOMPARE(layout.rowCount(), rows);
        QCOMPARE(qreal(layout.rowTop(rows) + 4), view.document()->size().height());
    }
    QCOMPARE(changes.count(), 2);
    // The end of the edit block changes nothing.
    const QSignalSpy updates(&layout, &QAbstractTextDocumentLayout::update);
    QTRY_COMPARE_WITH_TIMEOUT(changes.count(), 3, WaitTimeout);
    QCOMPARE(updates.count(), 0);
    ChatTable::appendRows(*table, ChatCorpus::plainRows(1));
    QTRY_COMPARE_WITH_TIMEOUT(changes.count(), 4, WaitTimeout);
    QCOMPARE(layout.rowCount(), 1020);
}

void TestChatLayout::looksTheSameDuringAnOpenEditBlock()
{
    ViewPair pair(QSize(450, 300));
    pair.append(ChatCorpus::plainRows(1000));
    QVERIFY(pair.measure());
    const QSignalSpy changes(pair.own.document(), &QTextDocument::contentsChange);
    const auto scrollToEnd = [](QTextBrowser &view) {
        QTextCursor cursor = view.textCursor();
        cursor.movePosition(QTextCursor::End);
        view.setTextCursor(cursor);
        view.ensureCursorVisible();
    };
    for (const ChatRow &row : ChatCorpus::rows().first(8)) {
        pair.append({row});
        pair.applyToBoth(scrollToEnd);
        QCOMPARE(pair.own.verticalScrollBar()->value(), pair.stock.verticalScrollBar()->value());
        QCOMPARE(pair.difference(), QString());
    }
    QTRY_VERIFY_WITH_TIMEOUT(changes.count() > 0, WaitTimeout);
    QCOMPARE(pair.difference(), QString());

    pair.append(ChatCorpus::rows().first(1));
    pair.resize(QSize(380, 320));
    QVERIFY(pair.measure());
    QCOMPARE(pair.differenceAnywhere(), QString());

    // A change of other rows takes effect when the edit block ends.
    pair.append(ChatCorpus::rows().first(1));
    pair.applyToBoth([](QTextBrowser &view) {
        QTextCursor cursor(view.document());
        cursor.setPosition(cellPosition(view, 5, 2));
        cursor.insertText(u"more and more and more "_s.repeated(10));
    });
    QTRY_COMPARE_WITH_TIMEOUT(pair.own.document()->size(), pair.stock.document()->size(),
                              WaitTimeout);
    QVERIFY(pair.measure());
    pair.scrollTo(0);
    QCOMPARE(pair.difference(), QString());
}

QTEST_MAIN(TestChatLayout)
#include "tst_ChatLayout.moc"
