#include "TabNames.h"

#include <QTest>

using namespace Qt::StringLiterals;

class TestTabNames final : public QObject
{
    Q_OBJECT

private slots:
    void recognisesPrivateConversations_data();
    void recognisesPrivateConversations();
};

void TestTabNames::recognisesPrivateConversations_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("isPrivate");

    QTest::newRow("channel") << u"#a"_s << false;
    QTest::newRow("channel prefix alone") << u"#"_s << false;
    QTest::newRow("two channel prefixes") << u"##a"_s << false;
    QTest::newRow("local channel") << u"&a"_s << true;
    QTest::newRow("nick") << u"bob"_s << true;
    QTest::newRow("channel prefix inside") << u"b#b"_s << true;
    QTest::newRow("server") << u"Server"_s << false;
    QTest::newRow("list") << u"List"_s << false;
    QTest::newRow("server in lower case") << u"server"_s << true;
    QTest::newRow("list in upper case") << u"LIST"_s << true;
    QTest::newRow("empty") << QString() << true;
}

void TestTabNames::recognisesPrivateConversations()
{
    QFETCH(const QString, name);
    QTEST(TabNames::isPrivate(name), "isPrivate");
}

QTEST_GUILESS_MAIN(TestTabNames)
#include "tst_TabNames.moc"
