#include "Waiting.h"

#include <QDir>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

// Runs `command` in bash with the functions of scripts/lib.sh and returns its output; after a
// failure, "failed: " and its error output.
QString runBash(const QString &command, const QByteArray &input = {})
{
    QProcess bash;
    bash.setWorkingDirectory(QStringLiteral(VELMORA_SOURCE));
    bash.start(u"bash"_s,
               {u"-euo"_s, u"pipefail"_s, u"-c"_s, u"source scripts/lib.sh; %1"_s.arg(command)});
    bash.write(input);
    bash.closeWriteChannel();
    if (!bash.waitForFinished(WaitTimeout) || bash.exitCode() != 0)
        return u"failed: "_s + QString::fromLocal8Bit(bash.readAllStandardError());
    return QString::fromLocal8Bit(bash.readAllStandardOutput());
}

// The part of a CTest log about one program.
QByteArray program(const QByteArray &output, const QByteArray &verdict)
{
    return "1/2 Testing: tst_Some\n1/2 Test: tst_Some\nCommand: \"tst_Some\"\nOutput:\n" + output
           + "<end of output>\nTest time =   0.01 sec\n" + verdict + "\n";
}

bool write(const QString &path, const QByteArray &content)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size();
}

} // namespace

class TestScripts final : public QObject
{
    Q_OBJECT

private slots:
    void countsTestsInLog_data();
    void countsTestsInLog();
    void listsSlowestPrograms();
    void listsMissingPackages();
    void continuesWithoutAptIfToolsExist();
    void stopsWithoutAptIfToolIsMissing();
    void detectsDisplay_data();
    void detectsDisplay();
    void refusesUnknownArguments_data();
    void refusesUnknownArguments();
    void drawsAllIncludes();
    void reportsIncludes_data();
    void reportsIncludes();
};

void TestScripts::countsTestsInLog_data()
{
    QTest::addColumn<QByteArray>("log");
    QTest::addColumn<QString>("count");

    const QByteArray good =
            program("Totals: 5 passed, 0 failed, 0 skipped, 0 blacklisted, 3ms\n", "Test Passed.");
    const QByteArray bad =
            program("Totals: 3 passed, 2 failed, 0 skipped, 0 blacklisted, 3ms\n", "Test Failed.");
    const QByteArray crashed = program("PASS   : TestSome::initTestCase()\n", "Test Failed.");
    const QByteArray leaky = program("Totals: 4 passed, 0 failed, 0 skipped, 0 blacklisted, 3ms\n"
                                     "==1==ERROR: LeakSanitizer: detected memory leaks\n",
                                     "Test Failed.");
    const QByteArray silent = program("", "Test Passed.");
    const QByteArray unstartable = program("", "Unable to start child process");

    QTest::newRow("nothing ran") << QByteArray() << u"0 passed, 0 failed\n"_s;
    QTest::newRow("one passing program") << good << u"5 passed, 0 failed\n"_s;
    QTest::newRow("several programs") << good + good + bad << u"13 passed, 2 failed\n"_s;
    QTest::newRow("two test classes in one program")
            << program("Totals: 2 passed, 0 failed\nTotals: 3 passed, 0 failed\n", "Test Passed.")
            << u"5 passed, 0 failed\n"_s;
    QTest::newRow("a crash counts as one failure") << crashed + good << u"5 passed, 1 failed\n"_s;
    QTest::newRow("a failure after the totals") << good + leaky << u"9 passed, 1 failed\n"_s;
    QTest::newRow("no totals") << silent << u"0 passed, 1 failed\n"_s;
    QTest::newRow("skipped functions") << program(
            "Totals: 5 passed, 0 failed, 2 skipped, 0 blacklisted, 3ms\n", "Test Passed.")
                                       << u"5 passed, 0 failed, 2 skipped\n"_s;
    QTest::newRow("program did not start") << unstartable << u"0 passed, 1 failed\n"_s;
}

void TestScripts::countsTestsInLog()
{
    QFETCH(const QByteArray, log);
    QTEST(runBash(u"count_tests /dev/stdin"_s, log), "count");
}

void TestScripts::listsSlowestPrograms()
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

void TestScripts::listsMissingPackages()
{
    const QString command = u"dpkg-query() { [[ ${!#} == here ]] && echo installed; }; "
                            "missing_packages here there here elsewhere"_s;
    QCOMPARE(runBash(command), u"there\nelsewhere\n"_s);
}

void TestScripts::continuesWithoutAptIfToolsExist()
{
    const QString command = u"command() { [[ $2 != apt-get ]]; }; ensure_packages one two; "
                            "echo went on"_s;
    QCOMPARE(runBash(command), u"==> This system has no apt-get, so nothing is installed. Under "
                               "Debian the packages are: one two\nwent on\n"_s);
}

void TestScripts::stopsWithoutAptIfToolIsMissing()
{
    const QString command = u"command() { [[ $2 != apt-get && $2 != ninja ]]; }; "
                            "ensure_packages one two"_s;
    const QString output = runBash(command);
    QVERIFY2(output.startsWith("failed: error: not found: ninja."_L1), qPrintable(output));
}

void TestScripts::detectsDisplay_data()
{
    QTest::addColumn<QString>("variables");
    QTest::addColumn<QString>("answer");
    QTest::newRow("none") << QString() << u"no\n"_s;
    QTest::newRow("empty") << u"DISPLAY="_s << u"no\n"_s;
    QTest::newRow("stale") << u"DISPLAY=:47110"_s << u"no\n"_s;
    QTest::newRow("stale, with screen number") << u"DISPLAY=:47110.0"_s << u"no\n"_s;
    QTest::newRow("on another machine") << u"DISPLAY=desk:0"_s << u"yes\n"_s;
    QTest::newRow("Wayland") << u"WAYLAND_DISPLAY=wayland-0"_s << u"yes\n"_s;
}

void TestScripts::detectsDisplay()
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
    QTest::newRow("fuzz for 0 seconds") << u"scripts/fuzz 0"_s;
    QTest::newRow("includes") << u"scripts/includes --sing"_s;
    QTest::newRow("lint") << u"scripts/lint --sing"_s;
    QTest::newRow("mutate") << u"scripts/mutate --sing"_s;
    QTest::newRow("mutate without a seed") << u"scripts/mutate --seed"_s;
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

void TestScripts::drawsAllIncludes()
{
    const QString output = runBash(u"scripts/includes || true"_s);
    QVERIFY2(output.contains(" 0 problems"_L1), qPrintable(output));
}

void TestScripts::reportsIncludes_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("output");
    QTest::newRow("all drawn") << u"Button.h"_s << QByteArray("#include <QString>\n")
                               << u"6 files, 6 includes of each other, 3 modules, 3 arrows, "
                                  "1 pairs, 0 problems\n"_s;
    QTest::newRow("upwards") << u"Text.cpp"_s << QByteArray("\n#include \"Bar.h\"\n")
                             << u"src/Text.cpp:2: Bar.h: no arrow from Bottom to Middle\n"_s;
    QTest::newRow("no module") << u"New.h"_s << QByteArray()
                               << u"src/New.h: belongs to no module\n"_s;
    QTest::newRow("cycle") << u"Button.h"_s << QByteArray("#include \"Bar.h\"\n")
                           << u"include cycle: Bar -> Button -> Bar\n"_s;
    QTest::newRow("arrow upwards")
            << u"../docs/architecture.md"_s
            << QByteArray("## Modules\n```\nLow ──► High\n```\n| High | | |\n| Low | | |\n")
            << u"the arrow from Low to High points upwards\n"_s;
    QTest::newRow("arrow without an include")
            << u"Bar.h"_s << QByteArray() << u"from Middle to Bottom is not needed\n"_s;
    QTest::newRow("pair without an include")
            << u"Menu.h"_s << QByteArray() << u"Window and Menu do not include each other\n"_s;
    QTest::newRow("unknown file") << QString() << QByteArray()
                                  << u"docs/architecture.md: Text is no file of src\n"_s;
}

// A project of three modules. One of its files is replaced.
void TestScripts::reportsIncludes()
{
    QFETCH(const QString, file);
    QFETCH(const QByteArray, content);
    QFETCH(const QString, output);

    QTemporaryDir folder;
    const QString sources = folder.filePath(u"src/"_s);
    QVERIFY(QDir(folder.path()).mkdir(u"src"_s) && QDir(folder.path()).mkdir(u"docs"_s));
    QVERIFY(write(folder.filePath(u"docs/architecture.md"_s), R"(## Modules
```
Top ─┬─► Middle ──► Bottom
     └─► Bottom

Window ◄──► Menu
```
| Module | Purpose | Files |
|---|---|---|
| Top | | `Menu`, `Window` |
| Middle | | `Bar`, `Button` |
| Bottom | | `Text` |
)"));
    QVERIFY(write(sources + u"Window.h"_s,
                  "#include \"Bar.h\"\n#include \"Menu.h\"\n#include \"Text.h\"\n"));
    QVERIFY(write(sources + u"Menu.h"_s, "#include \"Window.h\"\n"));
    QVERIFY(write(sources + u"Bar.h"_s, "#include \"Button.h\"\n#include \"Text.h\"\n"));
    QVERIFY(write(sources + u"Button.h"_s, {}));
    QVERIFY(write(sources + u"Text.h"_s, {}));
    QVERIFY(write(sources + u"Text.cpp"_s, "#include \"Text.h\"\n"));
    if (file.isEmpty())
        QVERIFY(QFile::remove(sources + u"Text.h"_s) && QFile::remove(sources + u"Text.cpp"_s));
    else
        QVERIFY(write(sources + file, content));
    const QString printed = runBash(u"scripts/includes %1 || true"_s.arg(folder.path()));
    QVERIFY2(printed.contains(output), qPrintable(printed));
}

QTEST_GUILESS_MAIN(TestScripts)

#include "tst_Scripts.moc"
