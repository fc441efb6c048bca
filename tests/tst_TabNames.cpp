#include "TabNames.h"

#include <QTest>

using namespace Qt::StringLiterals;

class TestTabNames final : public QObject
{
    Q_OBJECT

private slots:
    void tellsWhatATabIs_data();
    void tellsWhatATabIs();
    void makesNamesOfChannels_data();
    void makesNamesOfChannels();
};

void TestTabNames::tellsWhatATabIs_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("channel");
    QTest::addColumn<bool>("conversation");

    QTest::newRow("channel") << u"#a"_s << true << false;
    QTest::newRow("a channel's sign alone") << u"#"_s << true << false;
    QTest::newRow("two signs") << u"##a"_s << true << false;
    QTest::newRow("local channel") << u"&a"_s << false << true;
    QTest::newRow("nick") << u"bob"_s << false << true;
    QTest::newRow("sign later on") << u"b#b"_s << false << true;
    QTest::newRow("server") << u"Server"_s << false << false;
    QTest::newRow("list") << u"List"_s << false << false;
    QTest::newRow("server in another case") << u"server"_s << false << true;
    QTest::newRow("list in another case") << u"LIST"_s << false << true;
    QTest::newRow("nothing") << QString() << false << true;
}

void TestTabNames::tellsWhatATabIs()
{
    QFETCH(const QString, name);
    QTEST(TabNames::isChannel(name), "channel");
    QTEST(TabNames::isPrivate(name), "conversation");
}

void TestTabNames::makesNamesOfChannels_data()
{
    QTest::addColumn<QString>("word");
    QTest::addColumn<QString>("name");

    QTest::newRow("name") << u"#a"_s << u"#a"_s;
    QTest::newRow("word") << u"a"_s << u"#a"_s;
    QTest::newRow("another sign") << u"&a"_s << u"#&a"_s;
    QTest::newRow("blank") << u" #a"_s << u"# #a"_s;
    QTest::newRow("nothing") << QString() << u"#"_s;
}

void TestTabNames::makesNamesOfChannels()
{
    QFETCH(const QString, word);
    QTEST(TabNames::asChannel(word), "name");
}

QTEST_GUILESS_MAIN(TestTabNames)
#include "tst_TabNames.moc"
