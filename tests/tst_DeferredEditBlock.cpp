#include "DeferredEditBlock.h"
#include "Waiting.h"

#include <QAbstractEventDispatcher>
#include <QSignalSpy>
#include <QTest>
#include <QTextCursor>
#include <QTextDocument>

#include <memory>

using namespace Qt::StringLiterals;

class TestDeferredEditBlock final : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void coversNothingBeforeBegin();
    void coversTextAtOrAfterItsPosition();
    void endsByItself();
    void coversItsEnd();
    void beginsAgain();

private:
    void append(const QString &text);

    std::unique_ptr<QTextDocument> document;
};

void TestDeferredEditBlock::init()
{
    document = std::make_unique<QTextDocument>(u"some text"_s);
    // A document without a layout does not emit its signals.
    QVERIFY(document->documentLayout());
}

void TestDeferredEditBlock::append(const QString &text)
{
    QTextCursor cursor(document.get());
    cursor.movePosition(QTextCursor::End);
    cursor.insertText(text);
}

void TestDeferredEditBlock::coversNothingBeforeBegin()
{
    const DeferredEditBlock block(*document);
    QVERIFY(!block.isOpen());
    QVERIFY(!block.covers(0));
    QVERIFY(!block.covers(9));
}

void TestDeferredEditBlock::coversTextAtOrAfterItsPosition()
{
    DeferredEditBlock block(*document);
    block.begin(9);
    QVERIFY(block.isOpen());
    QVERIFY(!block.covers(0));
    QVERIFY(!block.covers(8));
    QVERIFY(block.covers(9));
    QVERIFY(block.covers(10));
}

void TestDeferredEditBlock::endsByItself()
{
    DeferredEditBlock block(*document);
    const QSignalSpy changes(document.get(), &QTextDocument::contentsChange);
    block.begin(9);
    append(u" and"_s);
    append(u" more"_s);
    QCoreApplication::processEvents();
    QVERIFY(block.isOpen());
    QCOMPARE(changes.count(), 0);
    const auto timers = QAbstractEventDispatcher::instance()->registeredTimers(&block);
    QCOMPARE(timers.size(), 1);
    QCOMPARE(timers.constFirst().interval, 2000);
    QTRY_COMPARE_WITH_TIMEOUT(changes.count(), 1, WaitTimeout);
    const QVariantList all{9, 0, 9};
    QCOMPARE(changes.constFirst(), all);
    QVERIFY(!block.isOpen());
    QVERIFY(!block.covers(9));
    append(u"!"_s);
    QCOMPARE(changes.count(), 2);
}

void TestDeferredEditBlock::coversItsEnd()
{
    DeferredEditBlock block(*document);
    bool wasCovered = false;
    connect(document.get(), &QTextDocument::contentsChange, &block,
            [&block, &wasCovered](int from) { wasCovered = block.covers(from); });
    block.begin(9);
    append(u"!"_s);
    QTRY_VERIFY_WITH_TIMEOUT(wasCovered, WaitTimeout);
}

void TestDeferredEditBlock::beginsAgain()
{
    DeferredEditBlock block(*document);
    block.begin(9);
    QTRY_VERIFY_WITH_TIMEOUT(!block.isOpen(), WaitTimeout);
    block.begin(5);
    QVERIFY(block.isOpen());
    QVERIFY(block.covers(5));
}

QTEST_MAIN(TestDeferredEditBlock)
#include "tst_DeferredEditBlock.moc"
