#include "ChannelSearch.h"

#include <QTest>
#include <QTreeWidget>

#include <memory>

using namespace Qt::StringLiterals;

class TestChannelSearch final : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void belongsToItsTree();
    void searchesNamesAndTopics_data();
    void searchesNamesAndTopics();
    void foldsCaseLikeQString();
    void showsAllRowsForAnEmptyText();
    void followsRowChanges();
    void followsSorting();
    void correctsRowsHiddenByOtherCode();

private:
    void addRow(const QString &name, const QString &topic);
    QStringList shown() const;

    std::unique_ptr<QTreeWidget> tree;
};

void TestChannelSearch::init()
{
    tree = std::make_unique<QTreeWidget>();
    tree->setColumnCount(3);
}

void TestChannelSearch::addRow(const QString &name, const QString &topic)
{
    auto *item = new QTreeWidgetItem({name, u"7"_s, topic});
    tree->addTopLevelItem(item);
    ChannelSearch::forTree(*tree).add(*item);
}

// Returns the names of the visible rows, from top to bottom.
QStringList TestChannelSearch::shown() const
{
    QStringList names;
    for (int row = 0; row < tree->topLevelItemCount(); ++row) {
        if (!tree->topLevelItem(row)->isHidden())
            names.append(tree->topLevelItem(row)->text(0));
    }
    return names;
}

void TestChannelSearch::belongsToItsTree()
{
    ChannelSearch &search = ChannelSearch::forTree(*tree);
    QCOMPARE(search.parent(), tree.get());
    QCOMPARE(&ChannelSearch::forTree(*tree), &search);
}

void TestChannelSearch::searchesNamesAndTopics_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("names");

    QTest::newRow("name") << u"linux"_s << QStringList{u"#linux"_s, u"#Linux-help"_s};
    QTest::newRow("in upper case") << u"LINUX"_s << QStringList{u"#linux"_s, u"#Linux-help"_s};
    QTest::newRow("topic") << u"kernel"_s << QStringList{u"#linux"_s, u"#dev"_s};
    QTest::newRow("all") << u"#"_s << QStringList{u"#linux"_s, u"#Linux-help"_s, u"#dev"_s};
    QTest::newRow("end of a name") << u"help"_s << QStringList{u"#Linux-help"_s};
    QTest::newRow("no wildcard") << u"l*x"_s << QStringList{};
    QTest::newRow("users") << u"7"_s << QStringList{};
    QTest::newRow("across name and topic") << u"linuxThe"_s << QStringList{};
    QTest::newRow("across rows") << u"helpers#dev"_s << QStringList{};
    QTest::newRow("too long") << u"#Linux-helpers"_s << QStringList{};
    QTest::newRow("space") << u" "_s << QStringList{u"#linux"_s, u"#dev"_s};
}

void TestChannelSearch::searchesNamesAndTopics()
{
    QFETCH(const QString, text);
    addRow(u"#linux"_s, u"The Kernel"_s);
    addRow(u"#Linux-help"_s, u"Helpers"_s);
    addRow(u"#dev"_s, u"KERNEL hackers"_s);
    ChannelSearch::forTree(*tree).showMatches(text);
    QTEST(shown(), "names");
}

void TestChannelSearch::foldsCaseLikeQString()
{
    addRow(QString(), QString());
    QTreeWidgetItem *item = tree->topLevelItem(0);
    const auto check = [&](const QString &name, const QString &text) {
        item->setText(0, name);
        ChannelSearch::forTree(*tree).showMatches(text);
        return item->isHidden() != name.contains(text, Qt::CaseInsensitive);
    };
    for (char32_t letter = 1; letter < 0x1F000; ++letter) {
        if (QChar::isSurrogate(letter))
            continue;
        const QString name = u'x' + QString::fromUcs4(&letter, 1) + u'y';
        for (const char32_t other : {letter, QChar::toUpper(letter), QChar::toLower(letter),
                                     QChar::toCaseFolded(letter)}) {
            const QString text = QString::fromUcs4(&other, 1);
            QVERIFY2(check(name, text), qPrintable(QString::number(letter, 16)));
        }
    }
    for (const QString &text : {u"ss"_s, u"SS"_s, u"ß"_s, u"STRASSE"_s, u"STRAßE"_s})
        QVERIFY2(check(u"#straße"_s, text), qPrintable(text));
}

void TestChannelSearch::showsAllRowsForAnEmptyText()
{
    addRow(u"#a"_s, {});
    addRow(u"#b"_s, {});
    ChannelSearch::forTree(*tree).showMatches(u"b"_s);
    QCOMPARE(shown(), QStringList{u"#b"_s});
    ChannelSearch::forTree(*tree).showMatches(QString());
    QCOMPARE(shown(), (QStringList{u"#a"_s, u"#b"_s}));
}

void TestChannelSearch::followsRowChanges()
{
    addRow(u"#a"_s, u"one"_s);
    addRow(u"#b"_s, u"two"_s);
    ChannelSearch &search = ChannelSearch::forTree(*tree);
    tree->topLevelItem(0)->setText(2, u"two"_s);
    search.showMatches(u"two"_s);
    QCOMPARE(shown(), (QStringList{u"#a"_s, u"#b"_s}));

    delete tree->topLevelItem(0);
    addRow(u"#c"_s, u"one"_s);
    search.showMatches(u"two"_s);
    QCOMPARE(shown(), QStringList{u"#b"_s});

    // A row without a call of ChannelSearch::add().
    tree->addTopLevelItem(new QTreeWidgetItem({u"#two"_s}));
    search.showMatches(u"two"_s);
    QCOMPARE(shown(), (QStringList{u"#b"_s, u"#two"_s}));

    tree->clear();
    search.showMatches(u"two"_s);
    addRow(u"#d"_s, u"one"_s);
    addRow(u"#e"_s, u"two"_s);
    search.showMatches(u"two"_s);
    QCOMPARE(shown(), QStringList{u"#e"_s});
}

void TestChannelSearch::followsSorting()
{
    for (const QString &name : {u"#c"_s, u"#a"_s, u"#b"_s})
        addRow(name, name == "#b"_L1 ? QString() : u"seen"_s);
    tree->setSortingEnabled(true);
    tree->sortItems(0, Qt::AscendingOrder);
    ChannelSearch::forTree(*tree).showMatches(u"seen"_s);
    QCOMPARE(shown(), (QStringList{u"#a"_s, u"#c"_s}));
    tree->sortItems(0, Qt::DescendingOrder);
    QCOMPARE(shown(), (QStringList{u"#c"_s, u"#a"_s}));
    ChannelSearch::forTree(*tree).showMatches(u"#b"_s);
    QCOMPARE(shown(), QStringList{u"#b"_s});
}

void TestChannelSearch::correctsRowsHiddenByOtherCode()
{
    addRow(u"#a"_s, {});
    addRow(u"#b"_s, {});
    ChannelSearch::forTree(*tree).showMatches(u"a"_s);
    tree->topLevelItem(0)->setHidden(true);
    tree->topLevelItem(1)->setHidden(false);
    ChannelSearch::forTree(*tree).showMatches(u"a"_s);
    QCOMPARE(shown(), QStringList{u"#a"_s});
}

QTEST_MAIN(TestChannelSearch)
#include "tst_ChannelSearch.moc"
