#include "ServerCatalogue.h"

#include <QMap>
#include <QRegularExpression>
#include <QSet>
#include <QTest>

using namespace Qt::StringLiterals;

class TestServerCatalogue final : public QObject
{
    Q_OBJECT

private slots:
    void hasSeventyTwoServers();
    void listsNoHostTwice();
    void prefersOneOfItsServers();
};

void TestServerCatalogue::hasSeventyTwoServers()
{
    static const QRegularExpression address(
            u"^([a-z0-9]([a-z0-9-]*[a-z0-9])?\\.)+[a-z]+:[0-9]{4}$"_s);
    const QStringList addresses = ServerCatalogue::addresses();
    QCOMPARE(addresses.size(), 72);
    QMap<QString, int> ports;
    for (const QString &row : addresses) {
        QVERIFY2(address.match(row).hasMatch(), qPrintable(row));
        ++ports[row.section(u':', 1)];
    }
    QCOMPARE(ports, (QMap<QString, int>{{u"6660"_s, 1}, {u"6667"_s, 70}, {u"7000"_s, 1}}));
}

void TestServerCatalogue::listsNoHostTwice()
{
    QSet<QString> hosts;
    const QStringList addresses = ServerCatalogue::addresses();
    for (const QString &row : addresses)
        hosts.insert(row.section(u':', 0, 0));
    QCOMPARE(hosts.size(), 72);
}

void TestServerCatalogue::prefersOneOfItsServers()
{
    QCOMPARE(ServerCatalogue::preferredAddress(), u"irc.libera.chat:6667"_s);
    QVERIFY(ServerCatalogue::addresses().contains(u"irc.libera.chat:6667"_s));
}

QTEST_GUILESS_MAIN(TestServerCatalogue)
#include "tst_ServerCatalogue.moc"
