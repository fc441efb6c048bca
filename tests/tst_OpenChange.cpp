#include "OpenChange.h"
#include "Waiting.h"

#include <QAbstractEventDispatcher>
#include <QSignalSpy>
#include <QTest>
#include <QTextCursor>
#include <QTextDocument>

#include <memory>

using namespace Qt::StringLiterals;

class TestOpenChange final : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void coversNothingBeforeItBegins();
    void coversWhatItAdds();
    void endsByItself();
    void coversItsOwnEnd();
    void beginsAgain();

private:
    void append(const QString &text);

    std::unique_ptr<QTextDocument> document;
};

void TestOpenChange::init()
{
    document = std::make_unique<QTextDocument>(u"some text"_s);
    // A document without a layout tells of no change.
    QVERIFY(document->documentLayout());
}

void TestOpenChange::append(const QString &text)
{
    QTextCursor cursor(document.get());
    cursor.movePosition(QTextCursor::End);
    cursor.insertText(text);
}

void TestOpenChange::coversNothingBeforeItBegins()
{
    const OpenChange change(*document);
    QVERIFY(!change.isOpen());
    QVERIFY(!change.covers(0));
    QVERIFY(!change.covers(9));
}

void TestOpenChange::coversWhatItAdds()
{
    OpenChange change(*document);
    change.begin(9);
    QVERIFY(change.isOpen());
    QVERIFY(!change.covers(0));
    QVERIFY(!change.covers(8));
    QVERIFY(change.covers(9));
    QVERIFY(change.covers(10));
}

void TestOpenChange::endsByItself()
{
    OpenChange change(*document);
    const QSignalSpy changes(document.get(), &QTextDocument::contentsChange);
    change.begin(9);
    append(u" and"_s);
    append(u" more"_s);
    QCoreApplication::processEvents();
    QVERIFY(change.isOpen());
    QCOMPARE(changes.count(), 0);
    const auto timers = QAbstractEventDispatcher::instance()->registeredTimers(&change);
    QCOMPARE(timers.size(), 1);
    QCOMPARE(timers.constFirst().interval, 2000);
    QTRY_COMPARE_WITH_TIMEOUT(changes.count(), 1, Patience);
    const QVariantList all{9, 0, 9};
    QCOMPARE(changes.constFirst(), all);
    QVERIFY(!change.isOpen());
    QVERIFY(!change.covers(9));
    append(u"!"_s);
    QCOMPARE(changes.count(), 2);
}

void TestOpenChange::coversItsOwnEnd()
{
    OpenChange change(*document);
    bool wasCovered = false;
    connect(document.get(), &QTextDocument::contentsChange, &change,
            [&change, &wasCovered](int from) { wasCovered = change.covers(from); });
    change.begin(9);
    append(u"!"_s);
    QTRY_VERIFY_WITH_TIMEOUT(wasCovered, Patience);
}

void TestOpenChange::beginsAgain()
{
    OpenChange change(*document);
    change.begin(9);
    QTRY_VERIFY_WITH_TIMEOUT(!change.isOpen(), Patience);
    change.begin(5);
    QVERIFY(change.isOpen());
    QVERIFY(change.covers(5));
}

QTEST_MAIN(TestOpenChange)
#include "tst_OpenChange.moc"
