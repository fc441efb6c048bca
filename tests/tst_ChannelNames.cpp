#include "ChannelNames.h"

#include <QTest>

using namespace Qt::StringLiterals;

class TestChannelNames final : public QObject
{
    Q_OBJECT

private slots:
    void recognisesChannels_data();
    void recognisesChannels();
    void addsThePrefix_data();
    void addsThePrefix();
    void parsesChannels_data();
    void parsesChannels();
};

void TestChannelNames::recognisesChannels_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("isChannel");

    QTest::newRow("channel") << u"#a"_s << true;
    QTest::newRow("prefix alone") << u"#"_s << true;
    QTest::newRow("two prefixes") << u"##a"_s << true;
    QTest::newRow("local channel") << u"&a"_s << false;
    QTest::newRow("nick") << u"bob"_s << false;
    QTest::newRow("prefix inside") << u"b#b"_s << false;
    QTest::newRow("empty") << QString() << false;
}

void TestChannelNames::recognisesChannels()
{
    QFETCH(const QString, name);
    QTEST(ChannelNames::isChannel(name), "isChannel");
}

void TestChannelNames::addsThePrefix_data()
{
    QTest::addColumn<QString>("word");
    QTest::addColumn<QString>("name");

    QTest::newRow("channel") << u"#a"_s << u"#a"_s;
    QTest::newRow("without a prefix") << u"a"_s << u"#a"_s;
    QTest::newRow("other prefix") << u"&a"_s << u"#&a"_s;
    QTest::newRow("leading space") << u" #a"_s << u"# #a"_s;
    QTest::newRow("empty") << QString() << u"#"_s;
}

void TestChannelNames::addsThePrefix()
{
    QFETCH(const QString, word);
    QTEST(ChannelNames::withPrefix(word), "name");
}

void TestChannelNames::parsesChannels_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("channels");

    QTest::newRow("empty") << QString() << QStringList{};
    QTest::newRow("white space") << u"  \t "_s << QStringList{};
    QTest::newRow("only separators") << u" , ,, "_s << QStringList{};
    QTest::newRow("one") << u"#linux"_s << QStringList{u"#linux"_s};
    QTest::newRow("without a prefix") << u"linux"_s << QStringList{u"#linux"_s};
    QTest::newRow("mixed separators")
            << u" #a,b ,, c\t#d\n e,"_s << QStringList{u"#a"_s, u"#b"_s, u"#c"_s, u"#d"_s, u"#e"_s};
    QTest::newRow("duplicate") << u"a #a"_s << QStringList{u"#a"_s, u"#a"_s};
    QTest::newRow("two prefixes") << u"##c++"_s << QStringList{u"##c++"_s};
    QTest::newRow("other prefix") << u"&local"_s << QStringList{u"#&local"_s};
}

void TestChannelNames::parsesChannels()
{
    QFETCH(const QString, text);
    QTEST(ChannelNames::parseChannels(text), "channels");
}

QTEST_GUILESS_MAIN(TestChannelNames)
#include "tst_ChannelNames.moc"
