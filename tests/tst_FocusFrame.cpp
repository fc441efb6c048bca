#include "FocusFrame.h"
#include "ThemeManager.h"
#include "Waiting.h"

#include <QApplication>
#include <QFocusEvent>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTabBar>
#include <QTest>
#include <QToolButton>
#include <QVBoxLayout>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

const QColor Accent(ThemeManager::palette(u"light"_s).accentColor);
constexpr int MinimumFramePixels = 40;

using Make = QWidget *(*) ();

QWidget *makeArea()
{
    auto *area = new QPlainTextEdit;
    FocusFrame::addTo(*area);
    return area;
}

QWidget *makeToolButton()
{
    auto *button = new QToolButton;
    button->setFixedSize(60, 40);
    button->setFocusPolicy(Qt::StrongFocus);
    FocusFrame::addTo(*button);
    return button;
}

QWidget *makePushButton()
{
    auto *button = new QPushButton;
    button->setFixedHeight(40);
    button->setStyleSheet(u"background-color: %1; border: none;"_s.arg(Accent.name()));
    FocusFrame::addTo(*button);
    return button;
}

QTabBar *makeTabBar()
{
    auto *bar = new QTabBar;
    bar->setStyleSheet(u"QTabBar::tab { background-color: %1; color: %1; width: 80px; "
                       "height: 40px; }"_s.arg(Accent.name()));
    bar->addTab(u"one"_s);
    bar->addTab(u"two"_s);
    FocusFrame::addTo(*bar);
    return bar;
}

int countPixels(QWidget &widget, const QColor &colour, const QRect &area)
{
    const QImage image = widget.grab(area).toImage();
    int count = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            count += image.pixelColor(x, y) == colour ? 1 : 0;
    }
    return count;
}

int countPixels(QWidget &widget, const QColor &colour)
{
    return countPixels(widget, colour, widget.rect());
}

// A window with a line edit above the tested widget.
struct Window
{
    explicit Window(QWidget *widgetUnderTest)
        : target(widgetUnderTest)
    {
        auto *layout = new QVBoxLayout(&widget);
        layout->addWidget(edit);
        layout->addWidget(target);
    }

    [[nodiscard]] bool open()
    {
        widget.resize(300, 200);
        widget.show();
        widget.activateWindow();
        edit->setFocus();
        return QTest::qWaitForWindowActive(&widget, WaitTimeout) && edit->hasFocus();
    }

    [[nodiscard]] QWidget *frame() const { return target->findChild<FocusFrame *>(); }

    QWidget widget;
    QLineEdit *edit = new QLineEdit;
    QWidget *target;
};

} // namespace

class TestFocusFrame final : public QObject
{
    Q_OBJECT

private slots:
    void isShownAfterKeyboardFocus_data();
    void isShownAfterKeyboardFocus();
    void isHiddenAfterMouseFocus();
    void returnsWithTheWindow();
    void followsCurrentTab();
    void followsSize();
    void ignoresTheMouse();
};

void TestFocusFrame::isShownAfterKeyboardFocus_data()
{
    QTest::addColumn<Make>("make");
    QTest::addColumn<QColor>("colour");

    QTest::newRow("area") << Make(makeArea) << Accent;
    QTest::newRow("tool button") << Make(makeToolButton) << Accent;
    QTest::newRow("button") << Make(makePushButton) << QColor(Qt::white);
    QTest::newRow("tabs") << Make([]() -> QWidget * { return makeTabBar(); }) << QColor(Qt::white);
}

void TestFocusFrame::isShownAfterKeyboardFocus()
{
    QFETCH(const Make, make);
    QFETCH(const QColor, colour);
    Window window(make());
    QVERIFY(window.open());
    const int before = countPixels(*window.target, colour);

    QTest::keyClick(window.edit, Qt::Key_Tab);
    QVERIFY(window.target->hasFocus());
    QVERIFY(countPixels(*window.target, colour) > before + MinimumFramePixels);

    window.edit->setFocus();
    QCOMPARE(countPixels(*window.target, colour), before);
}

void TestFocusFrame::isHiddenAfterMouseFocus()
{
    Window window(makePushButton());
    QVERIFY(window.open());
    QTest::keyClick(window.edit, Qt::Key_Tab);
    QVERIFY(window.frame()->isVisible());
    window.edit->setFocus();
    QTest::mouseClick(window.target, Qt::LeftButton);
    QVERIFY(window.target->hasFocus());
    QVERIFY(!window.frame()->isVisible());
}

void TestFocusFrame::returnsWithTheWindow()
{
    Window window(makeArea());
    QVERIFY(window.open());
    QTest::keyClick(window.edit, Qt::Key_Tab);
    for (const Qt::FocusReason reason : {Qt::ActiveWindowFocusReason, Qt::PopupFocusReason}) {
        QFocusEvent out(QEvent::FocusOut, reason);
        QApplication::sendEvent(window.target, &out);
        QVERIFY(!window.frame()->isVisible());
        QFocusEvent in(QEvent::FocusIn, reason);
        QApplication::sendEvent(window.target, &in);
        QVERIFY(window.frame()->isVisible());
    }
}

void TestFocusFrame::followsCurrentTab()
{
    QTabBar *bar = makeTabBar();
    Window window(bar);
    QVERIFY(window.open());
    const auto count = [bar](int tab) { return countPixels(*bar, Qt::white, bar->tabRect(tab)); };
    bar->setCurrentIndex(1);
    const int first = count(0);
    bar->setCurrentIndex(0);
    const int second = count(1);
    QTest::keyClick(window.edit, Qt::Key_Tab);
    QVERIFY(count(0) > first + MinimumFramePixels);
    QCOMPARE(count(1), second);
    bar->setCurrentIndex(1);
    QCOMPARE(count(0), first);
    QVERIFY(count(1) > second + MinimumFramePixels);
}

void TestFocusFrame::followsSize()
{
    Window window(makeArea());
    QVERIFY(window.open());
    QTest::keyClick(window.edit, Qt::Key_Tab);
    window.widget.resize(500, 400);
    QTRY_VERIFY_WITH_TIMEOUT(window.target->width() > 400, WaitTimeout);
    QCOMPARE(window.frame()->geometry(), window.target->rect());
}

void TestFocusFrame::ignoresTheMouse()
{
    auto *area = new QPlainTextEdit;
    FocusFrame::addTo(*area);
    area->setPlainText(u"one\ntwo"_s);
    Window window(area);
    QVERIFY(window.open());
    QTest::keyClick(window.edit, Qt::Key_Tab);
    const QPoint secondLine =
            area->viewport()->mapTo(&window.widget, QPoint(area->viewport()->width() - 20,
                                                           area->cursorRect().center().y() + 20));
    QTest::mouseClick(window.widget.windowHandle(), Qt::LeftButton, {}, secondLine);
    QCOMPARE(area->textCursor().blockNumber(), 1);
}

QTEST_MAIN(TestFocusFrame)
#include "tst_FocusFrame.moc"
