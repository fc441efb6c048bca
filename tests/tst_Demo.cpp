#include "RequiredTools.h"
#include "VirtualScreen.h"
#include "Waiting.h"

#include <QImage>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <cerrno>
#include <csignal>
#include <sys/prctl.h>
#include <sys/wait.h>

using namespace Qt::StringLiterals;

namespace {

constexpr int DemoTimeout = 5 * WaitTimeout; // In ms; the demo's own timeout is shorter.

constexpr QRgb MaraColour = qRgb(0x2e, 0x7d, 0x32); // The colour of a nick in the demo.
constexpr int NickPixels = 20; // A short nick has more pixels of its colour than this.

// Whether all child processes and their descendants have ended.
bool hasNoChildren()
{
    while (waitpid(-1, nullptr, WNOHANG) > 0) {
    }
    return waitpid(-1, nullptr, WNOHANG) == -1 && errno == ECHILD;
}

} // namespace

class TestDemo final : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();

    void runsUntilTheUserClosesTheWindow();
    void showsTheConversationAndEndsByItself();
    void endsItsChildrenWhenStopped_data();
    void endsItsChildrenWhenStopped();

private:
    void start(const QStringList &arguments);

    QTemporaryDir folder;
    QProcess demo;
};

void TestDemo::initTestCase()
{
    // Orphaned descendants become children of this process, so that hasNoChildren() finds them.
    QCOMPARE(prctl(PR_SET_CHILD_SUBREAPER, 1), 0);
}

void TestDemo::start(const QStringList &arguments)
{
    demo.setProcessChannelMode(QProcess::MergedChannels);
    demo.start(QStringLiteral(VELMORA_DEMO), arguments);
    QVERIFY(demo.waitForStarted(WaitTimeout));
}

void TestDemo::runsUntilTheUserClosesTheWindow()
{
    SKIP_IF_MISSING(VirtualScreen::missingParts());
    VirtualScreen screen;
    QVERIFY2(screen.start(), qPrintable(screen.failure()));
    demo.setProcessEnvironment(screen.environment());
    start({});
    const auto waitForWindow = [&](const QString &title) {
        return screen.waitFor([&] { return screen.activeTitle() == title; });
    };
    QVERIFY(waitForWindow(u"Connect to IRC Server"_s));
    QVERIFY(screen.press(u"Return"_s));
    QVERIFY(waitForWindow(u"Velmora"_s));
    QVERIFY(screen.waitFor([&] { return screen.countPixels(MaraColour) > NickPixels; }));
    QVERIFY(screen.press(u"alt+F4"_s));

    QVERIFY(demo.waitForFinished(DemoTimeout));
    const QString output = QString::fromLocal8Bit(demo.readAll());
    QVERIFY2(demo.exitStatus() == QProcess::NormalExit && demo.exitCode() == 0, qPrintable(output));
    QVERIFY2(output.contains("Press Connect"_L1), qPrintable(output));
}

void TestDemo::showsTheConversationAndEndsByItself()
{
    start({u"--screenshots"_s, folder.path()});
    QVERIFY(demo.waitForFinished(DemoTimeout));
    const QString output = QString::fromLocal8Bit(demo.readAll());
    QVERIFY2(demo.exitStatus() == QProcess::NormalExit && demo.exitCode() == 0, qPrintable(output));
    QVERIFY(output.endsWith("The server and the screen show the whole conversation.\n"_L1));
    for (const auto &name :
         {u"connect-dialog"_s, u"main-window"_s, u"channel-list"_s, u"preferences"_s}) {
        const QString file = folder.filePath(name + u".png");
        QVERIFY2(output.contains(u"Screenshot: %1\n"_s.arg(file)), qPrintable(output));
        QVERIFY2(!QImage(file).isNull(), qPrintable(file));
    }
    QTRY_VERIFY_WITH_TIMEOUT(hasNoChildren(), WaitTimeout);
}

void TestDemo::endsItsChildrenWhenStopped_data()
{
    QTest::addColumn<int>("signal");
    QTest::newRow("interrupted") << SIGINT;
    QTest::newRow("terminated") << SIGTERM;
    QTest::newRow("killed") << SIGKILL;
}

void TestDemo::endsItsChildrenWhenStopped()
{
    QFETCH(const int, signal);
    start({u"--screenshots"_s, folder.path()});
    QByteArray output;
    QTRY_VERIFY_WITH_TIMEOUT((output += demo.readAll()).contains("Watching")
                                     || demo.state() == QProcess::NotRunning,
                             DemoTimeout);
    QVERIFY2(demo.state() == QProcess::Running, output.constData());
    QCOMPARE(::kill(pid_t(demo.processId()), signal), 0);
    QVERIFY(demo.waitForFinished(DemoTimeout));
    QVERIFY(demo.exitStatus() == QProcess::CrashExit || demo.exitCode() != 0);
    QTRY_VERIFY_WITH_TIMEOUT(hasNoChildren(), WaitTimeout);
}

QTEST_GUILESS_MAIN(TestDemo)

#include "tst_Demo.moc"
