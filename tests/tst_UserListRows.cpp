#include "UserListRows.h"

#include <QListWidget>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

QStringList entries(const QListWidget &list)
{
    QStringList texts;
    for (int row = 0; row < list.count(); ++row)
        texts.append(list.item(row)->text());
    return texts;
}

} // namespace

class TestUserListRows final : public QObject
{
    Q_OBJECT

private slots:
    void returnsTheNick_data();
    void returnsTheNick();
    void removesTheFirst_data();
    void removesTheFirst();
    void showsAwayUsers_data();
    void showsAwayUsers();
};

void TestUserListRows::returnsTheNick_data()
{
    QTest::addColumn<QString>("entry");
    QTest::addColumn<QString>("nick");

    QTest::newRow("nick") << u"bob"_s << u"bob"_s;
    QTest::newRow("prefix") << u"@bob"_s << u"bob"_s;
    QTest::newRow("two prefixes") << u"@+bob"_s << u"+bob"_s;
    QTest::newRow("presence mark") << u"\u25CF bob"_s << u"bob"_s;
    QTest::newRow("presence mark and prefix") << u"\u25CF @bob"_s << u"bob"_s;
    QTest::newRow("prefix and presence mark") << u"@\u25CF bob"_s << u"\u25CF bob"_s;
    QTest::newRow("presence mark without a space") << u"\u25CFbob"_s << u"\u25CFbob"_s;
    QTest::newRow("empty") << QString() << QString();
}

void TestUserListRows::returnsTheNick()
{
    QFETCH(const QString, entry);
    QTEST(UserListRows::nickOf(QListWidgetItem(entry)), "nick");
}

void TestUserListRows::removesTheFirst_data()
{
    QTest::addColumn<QString>("entry");
    QTest::addColumn<QStringList>("left");

    QTest::newRow("one") << u"@a"_s << QStringList{u"b"_s, u"c"_s, u"b"_s};
    QTest::newRow("the first of two") << u"b"_s << QStringList{u"@a"_s, u"c"_s, u"b"_s};
    QTest::newRow("without its prefix") << u"a"_s << QStringList{u"@a"_s, u"b"_s, u"c"_s, u"b"_s};
    QTest::newRow("another case") << u"C"_s << QStringList{u"@a"_s, u"b"_s, u"c"_s, u"b"_s};
}

void TestUserListRows::removesTheFirst()
{
    QFETCH(const QString, entry);
    QListWidget list;
    list.addItems({u"@a"_s, u"b"_s, u"c"_s, u"b"_s});
    UserListRows::removeFirst(list, entry);
    QTEST(entries(list), "left");
}

void TestUserListRows::showsAwayUsers_data()
{
    QTest::addColumn<QString>("nick");
    QTest::addColumn<int>("row");

    QTest::newRow("nick") << u"b"_s << 1;
    QTest::newRow("prefix") << u"a"_s << 0;
    QTest::newRow("another case") << u"A"_s << 0;
    QTest::newRow("the first of two") << u"c"_s << 2;
    QTest::newRow("unknown nick") << u"x"_s << -1;
}

void TestUserListRows::showsAwayUsers()
{
    QFETCH(const QString, nick);
    QFETCH(const int, row);
    QListWidget list;
    list.addItems({u"@a"_s, u"b"_s, u"+c"_s, u"c"_s});
    for (const bool isAway : {true, false}) {
        UserListRows::setAway(list, nick, isAway);
        for (int index = 0; index < list.count(); ++index) {
            QCOMPARE(list.item(index)->font().italic(), isAway && index == row);
            const QBrush brush = list.item(index)->foreground();
            QCOMPARE(brush.style(), index == row ? Qt::SolidPattern : Qt::NoBrush);
            if (index == row)
                QCOMPARE(brush.color(), isAway ? QColor(0xAA, 0xAA, 0xAA) : QColor());
        }
    }
}

QTEST_MAIN(TestUserListRows)
#include "tst_UserListRows.moc"
