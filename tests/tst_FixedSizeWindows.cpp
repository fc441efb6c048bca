#include "FixedSizeWindows.h"
#include "Waiting.h"

#include <QDialog>
#include <QTest>
#include <QWindow>

namespace {

constexpr QSize Fixed(300, 200);

} // namespace

class TestFixedSizeWindows final : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();

    void restoresFixedSizeWindow_data();
    void restoresFixedSizeWindow();
    void ignoresOtherWindows();

private:
    FixedSizeWindows filter;
};

void TestFixedSizeWindows::initTestCase()
{
    qApp->installEventFilter(&filter);
}

void TestFixedSizeWindows::restoresFixedSizeWindow_data()
{
    QTest::addColumn<Qt::WindowStates>("state");

    QTest::newRow("maximised") << Qt::WindowStates(Qt::WindowMaximized);
    QTest::newRow("full screen") << Qt::WindowStates(Qt::WindowFullScreen);
}

// The window must accept the platform's size first, or Weston ends the program.
void TestFixedSizeWindows::restoresFixedSizeWindow()
{
    QFETCH(const Qt::WindowStates, state);
    QDialog dialog;
    dialog.setFixedSize(Fixed);
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog, WaitTimeout));
    QWindow *window = dialog.windowHandle();
    for (int count = 0; count < 2; ++count) {
        window->setWindowStates(state);
        QVERIFY(window->maximumSize().width() > Fixed.width());
        QTRY_COMPARE_WITH_TIMEOUT(window->maximumSize(), Fixed, WaitTimeout);
        QCOMPARE(window->windowStates(), Qt::WindowNoState);
        QCOMPARE(dialog.size(), Fixed);
    }
}

void TestFixedSizeWindows::ignoresOtherWindows()
{
    QDialog dialog;
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog, WaitTimeout));
    dialog.windowHandle()->setWindowStates(Qt::WindowMaximized);
    QTRY_VERIFY_WITH_TIMEOUT(dialog.isMaximized(), WaitTimeout);
    QCOMPARE(dialog.windowHandle()->windowStates(), Qt::WindowMaximized);
}

QTEST_MAIN(TestFixedSizeWindows)
#include "tst_FixedSizeWindows.moc"
