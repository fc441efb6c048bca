#include "Waiting.h"

#include <QProcess>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

// What a line of bash prints that has the functions of the scripts at hand.
QString runBash(const QString &command, const QByteArray &input = {})
{
    QProcess bash;
    bash.setWorkingDirectory(QStringLiteral(VELMORA_SOURCE));
    bash.start(u"bash"_s,
               {u"-euo"_s, u"pipefail"_s, u"-c"_s, u"source scripts/lib.sh; %1"_s.arg(command)});
    bash.write(input);
    bash.closeWriteChannel();
    if (!bash.waitForFinished(Patience) || bash.exitCode() != 0)
        return u"failed: "_s + QString::fromLocal8Bit(bash.readAllStandardError());
    return QString::fromLocal8Bit(bash.readAllStandardOutput());
}

// One program in a log of CTest.
QByteArray program(const QByteArray &output, const QByteArray &verdict)
{
    return "1/2 Testing: tst_Some\n1/2 Test: tst_Some\nCommand: \"tst_Some\"\nOutput:\n" + output
           + "<end of output>\nTest time =   0.01 sec\n" + verdict + "\n";
}

} // namespace

class TestScripts final : public QObject
{
    Q_OBJECT

private slots:
    void countsTheTestsOfALog_data();
    void countsTheTestsOfALog();
    void listsTheSlowestPrograms();
    void namesThePackagesThatAreMissing();
    void goesOnWithoutAptWhereTheToolsAre();
    void stopsWithoutAptWhereAToolLacks();
    void knowsWhetherThereIsADisplay_data();
    void knowsWhetherThereIsADisplay();
    void refusesUnknownArguments_data();
    void refusesUnknownArguments();
};

void TestScripts::countsTheTestsOfALog_data()
{
    QTest::addColumn<QByteArray>("log");
    QTest::addColumn<QString>("count");

    const QByteArray good =
            program("Totals: 5 passed, 0 failed, 1 skipped, 0 blacklisted, 3ms\n", "Test Passed.");
    const QByteArray bad =
            program("Totals: 3 passed, 2 failed, 0 skipped, 0 blacklisted, 3ms\n", "Test Failed.");
    const QByteArray crashed = program("PASS   : TestSome::initTestCase()\n", "Test Failed.");
    const QByteArray leaky = program("Totals: 4 passed, 0 failed, 0 skipped, 0 blacklisted, 3ms\n"
                                     "==1==ERROR: LeakSanitizer: detected memory leaks\n",
                                     "Test Failed.");
    const QByteArray silent = program("", "Test Passed.");
    const QByteArray unstartable = program("", "Unable to start child process");

    QTest::newRow("nothing ran") << QByteArray() << u"0 passed, 0 failed\n"_s;
    QTest::newRow("one sound program") << good << u"5 passed, 0 failed\n"_s;
    QTest::newRow("sums over programs") << good + good + bad << u"13 passed, 2 failed\n"_s;
    QTest::newRow("two classes in a program")
            << program("Totals: 2 passed, 0 failed\nTotals: 3 passed, 0 failed\n", "Test Passed.")
            << u"5 passed, 0 failed\n"_s;
    QTest::newRow("a crash counts as one") << crashed + good << u"5 passed, 1 failed\n"_s;
    QTest::newRow("a failure after the count") << good + leaky << u"9 passed, 1 failed\n"_s;
    QTest::newRow("no count at all") << silent << u"0 passed, 1 failed\n"_s;
    QTest::newRow("skipped functions") << program(
            "Totals: 5 passed, 0 failed, 2 skipped, 0 blacklisted, 3ms\n", "Test Passed.")
                                       << u"5 passed, 0 failed, 2 skipped\n"_s;
    QTest::newRow("did not start") << unstartable << u"0 passed, 1 failed\n"_s;
}

void TestScripts::countsTheTestsOfALog()
{
    QFETCH(const QByteArray, log);
    QTEST(runBash(u"count_tests /dev/stdin"_s, log), "count");
}

void TestScripts::listsTheSlowestPrograms()
{
    QByteArray log;
    for (int i = 1; i <= 12; ++i) {
        log += "1/12 Testing: tst_No" + QByteArray::number(i)
               + "\nTest time = " + QByteArray::number(i) + ".50 sec\nTest Passed.\n";
    }
    const QStringList lines = runBash(u"slowest_tests /dev/stdin"_s, log).split(u'\n');
    QCOMPARE(lines.size(), 11); // The last one is empty.
    QCOMPARE(lines.first(), u"   12.5 s  tst_No12"_s);
    QCOMPARE(lines.at(9), u"    3.5 s  tst_No3"_s);
}

void TestScripts::namesThePackagesThatAreMissing()
{
    const QString command = u"dpkg-query() { [[ ${!#} == here ]] && echo installed; }; "
                            "missing_packages here there here elsewhere"_s;
    QCOMPARE(runBash(command), u"there\nelsewhere\n"_s);
}

void TestScripts::goesOnWithoutAptWhereTheToolsAre()
{
    const QString command = u"command() { [[ $2 != apt-get ]]; }; ensure_packages one two; "
                            "echo went on"_s;
    QCOMPARE(runBash(command), u"==> This system has no apt-get, so nothing is installed. Under "
                               "Debian the packages are: one two\nwent on\n"_s);
}

void TestScripts::stopsWithoutAptWhereAToolLacks()
{
    const QString command = u"command() { [[ $2 != apt-get && $2 != ninja ]]; }; "
                            "ensure_packages one two"_s;
    const QString told = runBash(command);
    QVERIFY2(told.startsWith("failed: error: not found: ninja."_L1), qPrintable(told));
}

void TestScripts::knowsWhetherThereIsADisplay_data()
{
    QTest::addColumn<QString>("variables");
    QTest::addColumn<QString>("answer");
    QTest::newRow("none") << QString() << u"no\n"_s;
    QTest::newRow("empty") << u"DISPLAY="_s << u"no\n"_s;
    QTest::newRow("left over") << u"DISPLAY=:47110"_s << u"no\n"_s;
    QTest::newRow("left over, with screen") << u"DISPLAY=:47110.0"_s << u"no\n"_s;
    QTest::newRow("of another machine") << u"DISPLAY=desk:0"_s << u"yes\n"_s;
    QTest::newRow("Wayland") << u"WAYLAND_DISPLAY=wayland-0"_s << u"yes\n"_s;
}

void TestScripts::knowsWhetherThereIsADisplay()
{
    QFETCH(const QString, variables);
    QTEST(runBash(u"unset DISPLAY WAYLAND_DISPLAY; %1; "
                  "if has_display; then echo yes; else echo no; fi"_s.arg(
                          variables.isEmpty() ? u"true"_s : variables)),
          "answer");
}

void TestScripts::refusesUnknownArguments_data()
{
    QTest::addColumn<QString>("command");
    QTest::newRow("coverage") << u"scripts/coverage --sing"_s;
    QTest::newRow("fuzz") << u"scripts/fuzz --sing"_s;
    QTest::newRow("fuzz for no time") << u"scripts/fuzz 0"_s;
    QTest::newRow("lint") << u"scripts/lint --sing"_s;
    QTest::newRow("run") << u"scripts/run --sing"_s;
    QTest::newRow("screenshots") << u"scripts/screenshots --sing"_s;
    QTest::newRow("test") << u"scripts/test --sing"_s;
    QTest::newRow("package") << u"scripts/package --sing"_s;
    QTest::newRow("icons") << u"scripts/icons --sing"_s;
    QTest::newRow("a preset without a name") << u"scripts/test --preset"_s;
}

void TestScripts::refusesUnknownArguments()
{
    QFETCH(const QString, command);
    QCOMPARE(runBash(command + u" >/dev/null 2>&1 || echo refused"_s), u"refused\n"_s);
}

QTEST_GUILESS_MAIN(TestScripts)

#include "tst_Scripts.moc"
