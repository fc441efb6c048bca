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

constexpr int DemoPatience = 5 * WaitTimeout; // In ms; the demo gives itself a little less.

constexpr QRgb MaraColour = qRgb(0x2e, 0x7d, 0x32); // Of one who talks in the demo.
constexpr int NickPoints = 20; // A short nick has more points of its colour than this.

// Whether nothing runs any more of what we started, or what that started in its turn.
bool nothingIsLeft()
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

    void waitsForThePersonOnADisplay();
    void showsTheConversationAndEndsByItself();
    void leavesNothingBehindWhenStopped_data();
    void leavesNothingBehindWhenStopped();

private:
    void start(const QStringList &arguments);

    QTemporaryDir folder;
    QProcess demo;
};

void TestDemo::initTestCase()
{
    // Whose parent ends becomes our child, so that we notice what stays behind.
    QCOMPARE(prctl(PR_SET_CHILD_SUBREAPER, 1), 0);
}

void TestDemo::start(const QStringList &arguments)
{
    demo.setProcessChannelMode(QProcess::MergedChannels);
    demo.start(QStringLiteral(VELMORA_DEMO), arguments);
    QVERIFY(demo.waitForStarted(WaitTimeout));
}

void TestDemo::waitsForThePersonOnADisplay()
{
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
    QVERIFY(screen.waitFor([&] { return screen.countPixels(MaraColour) > NickPoints; }));
    QVERIFY(screen.press(u"alt+F4"_s));

    QVERIFY(demo.waitForFinished(DemoPatience));
    const QString told = QString::fromLocal8Bit(demo.readAll());
    QVERIFY2(demo.exitStatus() == QProcess::NormalExit && demo.exitCode() == 0, qPrintable(told));
    QVERIFY2(told.contains("Press Connect"_L1), qPrintable(told));
}

void TestDemo::showsTheConversationAndEndsByItself()
{
    start({u"--screenshots"_s, folder.path()});
    QVERIFY(demo.waitForFinished(DemoPatience));
    const QString told = QString::fromLocal8Bit(demo.readAll());
    QVERIFY2(demo.exitStatus() == QProcess::NormalExit && demo.exitCode() == 0, qPrintable(told));
    QVERIFY(told.endsWith("The conversation was seen on the wire and on the screen.\n"_L1));
    for (const auto &name :
         {u"connect-dialog"_s, u"main-window"_s, u"channel-list"_s, u"preferences"_s}) {
        const QString file = folder.filePath(name + u".png");
        QVERIFY2(told.contains(u"Screenshot: %1\n"_s.arg(file)), qPrintable(told));
        QVERIFY2(!QImage(file).isNull(), qPrintable(file));
    }
    QTRY_VERIFY_WITH_TIMEOUT(nothingIsLeft(), WaitTimeout);
}

void TestDemo::leavesNothingBehindWhenStopped_data()
{
    QTest::addColumn<int>("signal");
    QTest::newRow("interrupted") << SIGINT;
    QTest::newRow("terminated") << SIGTERM;
    QTest::newRow("killed") << SIGKILL;
}

void TestDemo::leavesNothingBehindWhenStopped()
{
    QFETCH(const int, signal);
    start({u"--screenshots"_s, folder.path()});
    QByteArray told;
    QTRY_VERIFY_WITH_TIMEOUT((told += demo.readAll()).contains("Watching")
                                     || demo.state() == QProcess::NotRunning,
                             DemoPatience);
    QVERIFY2(demo.state() == QProcess::Running, told.constData());
    QCOMPARE(::kill(pid_t(demo.processId()), signal), 0);
    QVERIFY(demo.waitForFinished(DemoPatience));
    QVERIFY(demo.exitStatus() == QProcess::CrashExit || demo.exitCode() != 0);
    QTRY_VERIFY_WITH_TIMEOUT(nothingIsLeft(), WaitTimeout);
}

QTEST_GUILESS_MAIN(TestDemo)

#include "tst_Demo.moc"
