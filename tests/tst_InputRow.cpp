#include "InputRow.h"

#include <QLineEdit>
#include <QPushButton>
#include <QStackedWidget>
#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;

class TestInputRow final : public QObject
{
    Q_OBJECT

private slots:
    void makesTheRow();
    void showsWhatBelongsToATab_data();
    void showsWhatBelongsToATab();
};

void TestInputRow::makesTheRow()
{
    const InputRow row = InputRow::create();
    const std::unique_ptr<QStackedWidget> stack(row.stack);
    QCOMPARE(stack->parentWidget(), nullptr);
    QCOMPARE(stack->maximumHeight(), 40);
    QCOMPARE(stack->count(), 2);
    QVERIFY(stack->widget(0)->isAncestorOf(row.line));
    QVERIFY(stack->widget(0)->isAncestorOf(row.emojiButton));
    QVERIFY(row.emojiButton->isHidden());
    QCOMPARE(stack->widget(1), row.listSearch);
    QCOMPARE(stack->currentIndex(), 0);
    QCOMPARE(row.line->placeholderText(), u"Type a message..."_s);
    QCOMPARE(row.listSearch->placeholderText(), u"Search channels..."_s);
}

void TestInputRow::showsWhatBelongsToATab_data()
{
    QTest::addColumn<QString>("tab");
    QTest::addColumn<int>("page");
    QTest::addColumn<QString>("placeholder");

    const auto message = u"Type a message..."_s;
    QTest::newRow("server") << u"Server"_s << 0 << u"Type a command..."_s;
    QTest::newRow("list") << u"List"_s << 1 << message;
    QTest::newRow("channel") << u"#a"_s << 0 << message;
    QTest::newRow("conversation") << u"bob"_s << 0 << message;
    QTest::newRow("server in another case") << u"SERVER"_s << 0 << message;
}

void TestInputRow::showsWhatBelongsToATab()
{
    QFETCH(const QString, tab);
    const std::unique_ptr<QStackedWidget> stack(InputRow::create().stack);
    for (const int before : {0, 1}) {
        stack->setCurrentIndex(before);
        InputRow::showFor(tab, *stack);
        QTEST(stack->currentIndex(), "page");
    }
    QTEST(InputRow::placeholderFor(tab), "placeholder");
}

QTEST_MAIN(TestInputRow)
#include "tst_InputRow.moc"
