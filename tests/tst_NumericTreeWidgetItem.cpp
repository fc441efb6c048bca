#include "NumericTreeWidgetItem.h"

#include <QTest>
#include <QTreeWidget>

using namespace Qt::StringLiterals;

namespace {

// Adds a row like those of the channel list.
NumericTreeWidgetItem *addRow(QTreeWidget &tree, const QString &name, const QString &users,
                              const QString &topic = {})
{
    auto *item = new NumericTreeWidgetItem;
    item->setText(0, name);
    item->setText(1, users);
    item->setText(2, topic);
    item->setData(1, Qt::UserRole, users.toInt());
    tree.addTopLevelItem(item);
    return item;
}

QStringList column(const QTreeWidget &tree, int number)
{
    QStringList texts;
    for (int row = 0; row < tree.topLevelItemCount(); ++row)
        texts.append(tree.topLevelItem(row)->text(number));
    return texts;
}

} // namespace

class TestNumericTreeWidgetItem final : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void sortsUsersByNumber();
    void treatsOtherTextAsZero();
    void comparesTheNumberAndNotTheText();
    void comparesTextWithoutANumber();
    void comparesTextCaseInsensitively_data();
    void comparesTextCaseInsensitively();
    void equalRowsAreNotLess();
    void comparesNamesOutsideATree();

private:
    std::unique_ptr<QTreeWidget> tree;
};

void TestNumericTreeWidgetItem::init()
{
    tree = std::make_unique<QTreeWidget>();
    tree->setColumnCount(3);
    tree->setSortingEnabled(true);
}

void TestNumericTreeWidgetItem::sortsUsersByNumber()
{
    for (const QString &users : {u"10"_s, u"9"_s, u"-1"_s, u"100"_s})
        addRow(*tree, u"#c"_s, users);
    tree->sortItems(1, Qt::AscendingOrder);
    QCOMPARE(column(*tree, 1), (QStringList{u"-1"_s, u"9"_s, u"10"_s, u"100"_s}));
    tree->sortItems(1, Qt::DescendingOrder);
    QCOMPARE(column(*tree, 1), (QStringList{u"100"_s, u"10"_s, u"9"_s, u"-1"_s}));
}

void TestNumericTreeWidgetItem::treatsOtherTextAsZero()
{
    for (const QString &users : {u"many"_s, u"-1"_s, u"1"_s})
        addRow(*tree, u"#c"_s, users);
    tree->sortItems(1, Qt::AscendingOrder);
    QCOMPARE(column(*tree, 1), (QStringList{u"-1"_s, u"many"_s, u"1"_s}));
}

void TestNumericTreeWidgetItem::comparesTheNumberAndNotTheText()
{
    NumericTreeWidgetItem *small = addRow(*tree, u"#s"_s, u"1"_s);
    NumericTreeWidgetItem *large = addRow(*tree, u"#l"_s, u"2"_s);
    small->setText(1, u"3"_s);
    tree->sortItems(1, Qt::AscendingOrder);
    QVERIFY(*small < *large);
    QVERIFY(!(*large < *small));
}

void TestNumericTreeWidgetItem::comparesTextWithoutANumber()
{
    NumericTreeWidgetItem *nine = addRow(*tree, u"#n"_s, u"9"_s);
    NumericTreeWidgetItem *ten = addRow(*tree, u"#t"_s, u"10"_s);
    tree->sortItems(1, Qt::AscendingOrder);
    QVERIFY(*nine < *ten);
    nine->setData(1, Qt::UserRole, QVariant());
    QVERIFY(*ten < *nine);
    nine->setData(1, Qt::UserRole, 9);
    ten->setData(1, Qt::UserRole, u"no number"_s);
    QVERIFY(*ten < *nine);
    QVERIFY(!(*nine < *ten));
}

void TestNumericTreeWidgetItem::comparesTextCaseInsensitively_data()
{
    QTest::addColumn<int>("sortColumn");

    QTest::newRow("channel") << 0;
    QTest::newRow("topic") << 2;
}

void TestNumericTreeWidgetItem::comparesTextCaseInsensitively()
{
    QFETCH(const int, sortColumn);
    for (const QString &text : {u"b"_s, u"C"_s, u"a"_s, u"10"_s, u"9"_s, u"É"_s, u"D"_s})
        addRow(*tree, text, u"1"_s, text);
    tree->sortItems(sortColumn, Qt::AscendingOrder);
    QCOMPARE(column(*tree, sortColumn),
             (QStringList{u"10"_s, u"9"_s, u"a"_s, u"b"_s, u"C"_s, u"D"_s, u"É"_s}));
}

void TestNumericTreeWidgetItem::equalRowsAreNotLess()
{
    const NumericTreeWidgetItem *lower = addRow(*tree, u"#same"_s, u"5"_s, u"Topic"_s);
    const NumericTreeWidgetItem *upper = addRow(*tree, u"#SAME"_s, u"05"_s, u"TOPIC"_s);
    for (int sortColumn = 0; sortColumn < 3; ++sortColumn) {
        tree->sortItems(sortColumn, Qt::AscendingOrder);
        QVERIFY(!(*lower < *upper));
        QVERIFY(!(*upper < *lower));
    }
}

void TestNumericTreeWidgetItem::comparesNamesOutsideATree()
{
    NumericTreeWidgetItem first;
    first.setText(0, u"#A"_s);
    first.setData(1, Qt::UserRole, 2);
    NumericTreeWidgetItem second;
    second.setText(0, u"#b"_s);
    second.setData(1, Qt::UserRole, 1);
    QVERIFY(first < second);
    QVERIFY(!(second < first));
}

QTEST_MAIN(TestNumericTreeWidgetItem)
#include "tst_NumericTreeWidgetItem.moc"
