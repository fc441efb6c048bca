// The ways to end the program while a menu, a box, a prompt, a form or a choice waits for its user.

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

// With this argument and the name of a loop the program is one that quits inside the loop.
constexpr QLatin1StringView QuitInside = "--quit-inside"_L1;

using Ending = void (*)(NestedLoopFixture &fixture);

// The tray's menu does the same.
void quitByMenu(NestedLoopFixture &fixture)
{
    std::puts("Inside");
    std::fflush(stdout);
    fixture.session.choose(u"&Quit"_s);
}

void closeWindow(NestedLoopFixture &fixture)
{
    fixture.session.window.close();
    // That the last window has gone is a word to quit, which is posted.
    QCoreApplication::sendPostedEvents();
}

// As when a desktop's session ends: first the windows are closed, so that each may refuse, and then
// the program is told to go.
void endSession(NestedLoopFixture &)
{
    QApplication::closeAllWindows();
    QEvent event(QEvent::Quit);
    QCoreApplication::sendEvent(qApp, &event);
}

// Runs the event loop as the program's start does, and the ending inside the nested loop; -1 if
// nothing ends it.
int run(NestedLoopFixture &fixture, const NestedLoop &loop, Ending ending)
{
    bool isOver = false;
    fixture.inside = [&](QWidget *) { ending(fixture); };
    QTimer::singleShot(0, &fixture.session.window, [&] {
        loop.open(fixture);
        isOver = true;
    });
    QTimer patience;
    patience.callOnTimeout([] { QCoreApplication::exit(-1); });
    patience.start(WaitTimeout);
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
        QTest::addRow("%s, window", loop.name) << loop << Ending(closeWindow);
        QTest::addRow("%s, session", loop.name) << loop << Ending(endSession);
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
