#include "NickList.h"

#include <QTest>

using namespace Qt::StringLiterals;

class TestNickList final : public QObject
{
    Q_OBJECT

private slots:
    void stripsOnePrefixAndRanks_data();
    void stripsOnePrefixAndRanks();
    void findsANickAfterItsPrefix();
    void removesTheFirstEntry_data();
    void removesTheFirstEntry();
    void renames_data();
    void renames();
    void sortsByRankThenByNick();
    void sortsByWholeEntry();
    void insertsSorted_data();
    void insertsSorted();
};

void TestNickList::stripsOnePrefixAndRanks_data()
{
    QTest::addColumn<QString>("entry");
    QTest::addColumn<QString>("nick");
    QTest::addColumn<int>("rank");

    QTest::newRow("owner") << u"~alice"_s << u"alice"_s << 1;
    QTest::newRow("admin") << u"&alice"_s << u"alice"_s << 2;
    QTest::newRow("operator") << u"@alice"_s << u"alice"_s << 3;
    QTest::newRow("half-operator") << u"%alice"_s << u"alice"_s << 4;
    QTest::newRow("voice") << u"+alice"_s << u"alice"_s << 5;
    QTest::newRow("plain") << u"alice"_s << u"alice"_s << 6;
    QTest::newRow("empty") << u""_s << u""_s << 6;
    QTest::newRow("prefix alone") << u"@"_s << u""_s << 3;
    QTest::newRow("two prefixes") << u"+@alice"_s << u"@alice"_s << 5;
    QTest::newRow("other character") << u"!alice"_s << u"!alice"_s << 6;
    QTest::newRow("prefix inside") << u"al@ice"_s << u"al@ice"_s << 6;
}

void TestNickList::stripsOnePrefixAndRanks()
{
    QFETCH(const QString, entry);
    QTEST(NickList::stripPrefix(entry), "nick");
    QTEST(NickList::prefixRank(entry), "rank");
    QFETCH(const int, rank);
    QCOMPARE(NickList::isOperator(entry), rank <= 4);
}

void TestNickList::findsANickAfterItsPrefix()
{
    const QStringList entries{u"@alice"_s, u"bob"_s, u"+bob"_s};
    QCOMPARE(NickList::indexOfNick(entries, u"alice"_s), 0);
    QCOMPARE(NickList::indexOfNick(entries, u"bob"_s), 1);
    QCOMPARE(NickList::indexOfNick(entries, u"Alice"_s), -1);
    QCOMPARE(NickList::indexOfNick(entries, u"@alice"_s), -1);
    QCOMPARE(NickList::indexOfNick({}, u"alice"_s), -1);
}

void TestNickList::removesTheFirstEntry_data()
{
    QTest::addColumn<QString>("nick");
    QTest::addColumn<std::optional<QString>>("removed");
    QTest::addColumn<QStringList>("left");

    const auto add = [](const char *name, const QString &nick,
                        const std::optional<QString> &removed, const QStringList &left) {
        QTest::newRow(name) << nick << removed << left;
    };
    add("plain", u"bob"_s, u"bob"_s, {u"@alice"_s, u"+bob"_s});
    add("after its prefix", u"alice"_s, u"@alice"_s, {u"bob"_s, u"+bob"_s});
    add("with its prefix", u"@alice"_s, std::nullopt, {u"@alice"_s, u"bob"_s, u"+bob"_s});
    add("another case", u"BOB"_s, std::nullopt, {u"@alice"_s, u"bob"_s, u"+bob"_s});
}

void TestNickList::removesTheFirstEntry()
{
    QFETCH(const QString, nick);
    QStringList entries{u"@alice"_s, u"bob"_s, u"+bob"_s};
    QTEST(NickList::remove(entries, nick), "removed");
    QTEST(entries, "left");
}

void TestNickList::renames_data()
{
    QTest::addColumn<QString>("oldNick");
    QTest::addColumn<QString>("oldEntry");
    QTest::addColumn<QStringList>("entries");

    const auto add = [](const char *name, const QString &oldNick, const QString &oldEntry,
                        const QStringList &entries) {
        QTest::newRow(name) << oldNick << oldEntry << entries;
    };
    add("plain", u"carol"_s, u"carol"_s, {u"@alice"_s, u"+bob"_s, u"bob"_s, u"new"_s});
    add("after its prefix", u"alice"_s, u"@alice"_s, {u"@new"_s, u"+bob"_s, u"bob"_s, u"carol"_s});
    add("whole entry has precedence", u"bob"_s, u"bob"_s,
        {u"@alice"_s, u"+bob"_s, u"new"_s, u"carol"_s});
    add("old nick equals an entry", u"@alice"_s, u"@alice"_s,
        {u"new"_s, u"+bob"_s, u"bob"_s, u"carol"_s});
    add("another case", u"Carol"_s, QString(), {u"@alice"_s, u"+bob"_s, u"bob"_s, u"carol"_s});
}

void TestNickList::renames()
{
    QFETCH(const QString, oldNick);
    QFETCH(const QString, oldEntry);
    QStringList entries{u"@alice"_s, u"+bob"_s, u"bob"_s, u"carol"_s};
    const auto renamed = NickList::rename(entries, oldNick, u"new"_s);
    QTEST(entries, "entries");
    QCOMPARE(renamed.has_value(), !oldEntry.isEmpty());
    if (!renamed)
        return;
    QCOMPARE(renamed->oldEntry, oldEntry);
    QVERIFY(entries.contains(renamed->newEntry));
    QVERIFY(renamed->newEntry.endsWith(u"new"_s));
}

void TestNickList::sortsByRankThenByNick()
{
    QStringList entries{u"bob"_s,    u"+dora"_s, u"@zoe"_s,  u"~owner"_s,
                        u"&admin"_s, u"%half"_s, u"@Anna"_s, u"Carl"_s};
    NickList::sortByRank(entries);
    QCOMPARE(entries, (QStringList{u"~owner"_s, u"&admin"_s, u"@Anna"_s, u"@zoe"_s, u"%half"_s,
                                   u"+dora"_s, u"bob"_s, u"Carl"_s}));
}

void TestNickList::sortsByWholeEntry()
{
    QStringList entries{u"~owner"_s, u"bob"_s,  u"@op"_s,  u"+voice"_s,
                        u"%half"_s,  u"&adm"_s, u"Alice"_s};
    NickList::sortByText(entries);
    QCOMPARE(entries, (QStringList{u"%half"_s, u"&adm"_s, u"+voice"_s, u"@op"_s, u"Alice"_s,
                                   u"bob"_s, u"~owner"_s}));
}

void TestNickList::insertsSorted_data()
{
    QTest::addColumn<QStringList>("entries");
    QTest::addColumn<QString>("entry");

    const QStringList ranked{u"~owner"_s, u"@op"_s, u"+voice"_s, u"Alice"_s, u"bob"_s};
    const QStringList plain{u"+voice"_s, u"@op"_s, u"Alice"_s, u"bob"_s, u"~owner"_s};
    QTest::newRow("into an empty list") << QStringList() << u"carol"_s;
    QTest::newRow("first") << plain << u"%half"_s;
    QTest::newRow("in the middle") << plain << u"amy"_s;
    QTest::newRow("case-insensitively") << plain << u"BEN"_s;
    QTest::newRow("last") << plain << u"~zoe"_s;
    QTest::newRow("after a list by rank") << ranked << u"amy"_s;
    QTest::newRow("after a rename") << QStringList{u"+voice"_s, u"zoe"_s, u"bob"_s} << u"amy"_s;
}

void TestNickList::insertsSorted()
{
    QFETCH(QStringList, entries);
    QFETCH(const QString, entry);
    QStringList sorted = entries;
    sorted.append(entry);
    NickList::sortByText(sorted);
    NickList::insertSorted(entries, entry);
    QCOMPARE(entries, sorted);
}

QTEST_GUILESS_MAIN(TestNickList)
#include "tst_NickList.moc"
