#include "PreparedStore.h"
#include "ProgramOnScreen.h"
#include "RequiredTools.h"
#include "VirtualScreen.h"

#include <QTest>

using namespace Qt::StringLiterals;

/// The positions at which the window manager places the program's first windows.
class TestMainWindowStart final : public QObject
{
    Q_OBJECT

private slots:
    void centresTheFirstDialog();
};

void TestMainWindowStart::centresTheFirstDialog()
{
    SKIP_IF_MISSING(VirtualScreen::missingParts());
    VirtualScreen screen;
    QVERIFY2(screen.start(), qUtf8Printable(screen.failure()));
    const PreparedStore store;
    ProgramOnScreen program(screen, store);
    QVERIFY2(program.start(), qUtf8Printable(program.errorOutput()));
    const QRect dialog = screen.waitUntilStable([&] { return screen.activeWindow(); });
    QVERIFY(screen.press(u"Escape"_s));
    QVERIFY(screen.waitFor([&] { return screen.activeTitle() == "Velmora"_L1; }));
    const QRect window = screen.waitUntilStable([&] { return screen.activeWindow(); });
    // The window manager has moved the window.
    QVERIFY(window.topLeft() != QPoint(0, 0));
    const QPoint distance = dialog.center() - window.center();
    QVERIFY2(distance.manhattanLength() <= 2,
             qPrintable(u"%1, %2"_s.arg(distance.x()).arg(distance.y())));
}

QTEST_MAIN(TestMainWindowStart)
#include "tst_MainWindowStart.moc"
