// Ends the program while a menu or a dialog runs a nested event loop.

#include "Child.h"
#include "NestedLoops.h"
#include "TemporaryStore.h"
#include "Waiting.h"

#include <QApplication>
#include <QTest>
#include <QTimer>

#include <algorithm>
#include <cstdio>

using namespace Qt::StringLiterals;

namespace {

// With this argument and the name of a loop, this program quits inside the loop.
constexpr QLatin1StringView QuitInside = "--quit-inside"_L1;

using Ending = void (*)(NestedLoopFixture &fixture);

// The entry of the tray menu does the same.
void quitByMenu(NestedLoopFixture &fixture)
{
    std::puts("Inside");
    std::fflush(stdout);
    fixture.session.choose(u"&Quit"_s);
}

void closeWindow(NestedLoopFixture &fixture)
{
    fixture.session.window.close();
    // The end of the last window posts a quit event.
    QCoreApplication::sendPostedEvents();
}

// Like the end of a desktop session: the windows are closed, which each may refuse, and then the
// program quits.
void endSession(NestedLoopFixture &)
{
    QApplication::closeAllWindows();
    QEvent event(QEvent::Quit);
    QCoreApplication::sendEvent(qApp, &event);
}

// Opens the nested loop from the main event loop and calls `ending` in it. Returns the exit code,
// or -1 if the loops do not end.
int run(NestedLoopFixture &fixture, const NestedLoop &loop, Ending ending)
{
    bool isOver = false;
    fixture.inside = [&](QWidget *) { ending(fixture); };
    QTimer::singleShot(0, &fixture.session.window, [&] {
        loop.open(fixture);
        isOver = true;
    });
    QTimer timeout;
    timeout.callOnTimeout([] { QCoreApplication::exit(-1); });
    timeout.start(WaitTimeout);
    const int status = QApplication::exec();
    return isOver ? status : -1;
}

int quitInside(int argc, char **argv)
{
    const QApplication application(argc, argv);
    const auto &loops = NestedLoop::all();
    const auto loop =
            std::find_if(loops.cbegin(), loops.cend(), [argv](const NestedLoop &candidate) {
                return QLatin1StringView(candidate.name) == QLatin1StringView(argv[2]);
            });
    const TemporaryStore store;
    NestedLoopFixture fixture;
    if (loop == loops.cend() || !fixture.joinChannels())
        return EXIT_FAILURE;
    const int status = run(fixture, *loop, quitByMenu);
    return fixture.answers.problems().isEmpty() ? status : EXIT_FAILURE;
}

} // namespace

Q_DECLARE_METATYPE(Ending)
Q_DECLARE_METATYPE(NestedLoop)

class TestQuittingInLoops final : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void endsTheProcess_data();
    void endsTheProcess();
    void endsTheLoops_data();
    void endsTheLoops();

private:
    TemporaryStore store;
};

void TestQuittingInLoops::init()
{
    store.clear();
}

void TestQuittingInLoops::endsTheProcess_data()
{
    QTest::addColumn<QString>("loop");
    for (const NestedLoop &loop : NestedLoop::all())
        QTest::newRow(loop.name) << QString::fromLatin1(loop.name);
}

void TestQuittingInLoops::endsTheProcess()
{
    QFETCH(const QString, loop);
    Child program;
    QVERIFY(program.launch(QCoreApplication::applicationFilePath(), {QuitInside, loop}));
    QTRY_VERIFY_WITH_TIMEOUT(program.state() == QProcess::NotRunning, WaitTimeout);
    QCOMPARE(program.readAllStandardOutput(), "Inside\n"_ba);
    QCOMPARE(program.exitStatus(), QProcess::NormalExit);
    QVERIFY2(program.exitCode() == 0, program.readAllStandardError().constData());
}

void TestQuittingInLoops::endsTheLoops_data()
{
    QTest::addColumn<NestedLoop>("loop");
    QTest::addColumn<Ending>("ending");
    for (const NestedLoop &loop : NestedLoop::all()) {
        QTest::addRow("%s, window closed", loop.name) << loop << Ending(closeWindow);
        QTest::addRow("%s, desktop session ended", loop.name) << loop << Ending(endSession);
    }
}

void TestQuittingInLoops::endsTheLoops()
{
    QFETCH(const NestedLoop, loop);
    QFETCH(const Ending, ending);
    NestedLoopFixture fixture;
    QVERIFY(fixture.joinChannels());
    QCOMPARE(run(fixture, loop, ending), 0);
    QCOMPARE(fixture.answers.problems(), QStringList());
    fixture.session.destroyWindow();
    QCOMPARE(QApplication::topLevelWidgets(), QWidgetList());
}

int main(int argc, char **argv)
{
    if (argc > 2 && QLatin1StringView(argv[1]) == QuitInside)
        return quitInside(argc, argv);
    QApplication application(argc, argv);
    TestQuittingInLoops test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_QuittingInLoops.moc"
