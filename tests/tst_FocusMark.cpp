#include "FocusMark.h"
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
constexpr int FramePoints = 40; // A frame has more points of its colour than this.

using Make = QWidget *(*) ();

QWidget *makeArea()
{
    auto *area = new QPlainTextEdit;
    new FocusMark(*area);
    return area;
}

QWidget *makeToolButton()
{
    auto *button = new QToolButton;
    button->setFixedSize(60, 40);
    button->setFocusPolicy(Qt::StrongFocus);
    new FocusMark(*button);
    return button;
}

QWidget *makePushButton()
{
    auto *button = new QPushButton;
    button->setFixedHeight(40);
    button->setStyleSheet(u"background-color: %1; border: none;"_s.arg(Accent.name()));
    new FocusMark(*button);
    return button;
}

QTabBar *makeTabBar()
{
    auto *bar = new QTabBar;
    bar->setStyleSheet(u"QTabBar::tab { background-color: %1; color: %1; width: 80px; "
                       "height: 40px; }"_s.arg(Accent.name()));
    bar->addTab(u"one"_s);
    bar->addTab(u"two"_s);
    new FocusMark(*bar);
    return bar;
}

int countPoints(QWidget &widget, const QColor &colour, const QRect &area)
{
    const QImage picture = widget.grab(area).toImage();
    int count = 0;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x)
            count += picture.pixelColor(x, y) == colour ? 1 : 0;
    }
    return count;
}

int countPoints(QWidget &widget, const QColor &colour)
{
    return countPoints(widget, colour, widget.rect());
}

// A window with a line edit and below it the widget in question.
struct Window
{
    explicit Window(QWidget *shown)
        : target(shown)
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

    [[nodiscard]] QWidget *mark() const { return target->findChild<FocusMark *>(); }

    QWidget widget;
    QLineEdit *edit = new QLineEdit;
    QWidget *target;
};

} // namespace

class TestFocusMark final : public QObject
{
    Q_OBJECT

private slots:
    void framesWhatAKeyHasReached_data();
    void framesWhatAKeyHasReached();
    void isNotSeenForTheMouse();
    void isThereAgainWhenTheWindowIs();
    void followsTheCurrentTab();
    void followsTheSize();
    void letsTheMouseThrough();
};

void TestFocusMark::framesWhatAKeyHasReached_data()
{
    QTest::addColumn<Make>("make");
    QTest::addColumn<QColor>("colour");

    QTest::newRow("area") << Make(makeArea) << Accent;
    QTest::newRow("tool button") << Make(makeToolButton) << Accent;
    QTest::newRow("button") << Make(makePushButton) << QColor(Qt::white);
    QTest::newRow("tabs") << Make([]() -> QWidget * { return makeTabBar(); }) << QColor(Qt::white);
}

void TestFocusMark::framesWhatAKeyHasReached()
{
    QFETCH(const Make, make);
    QFETCH(const QColor, colour);
    Window window(make());
    QVERIFY(window.open());
    const int before = countPoints(*window.target, colour);

    QTest::keyClick(window.edit, Qt::Key_Tab);
    QVERIFY(window.target->hasFocus());
    QVERIFY(countPoints(*window.target, colour) > before + FramePoints);

    window.edit->setFocus();
    QCOMPARE(countPoints(*window.target, colour), before);
}

void TestFocusMark::isNotSeenForTheMouse()
{
    Window window(makePushButton());
    QVERIFY(window.open());
    QTest::keyClick(window.edit, Qt::Key_Tab);
    QVERIFY(window.mark()->isVisible());
    window.edit->setFocus();
    QTest::mouseClick(window.target, Qt::LeftButton);
    QVERIFY(window.target->hasFocus());
    QVERIFY(!window.mark()->isVisible());
}

void TestFocusMark::isThereAgainWhenTheWindowIs()
{
    Window window(makeArea());
    QVERIFY(window.open());
    QTest::keyClick(window.edit, Qt::Key_Tab);
    for (const Qt::FocusReason reason : {Qt::ActiveWindowFocusReason, Qt::PopupFocusReason}) {
        QFocusEvent out(QEvent::FocusOut, reason);
        QApplication::sendEvent(window.target, &out);
        QVERIFY(!window.mark()->isVisible());
        QFocusEvent in(QEvent::FocusIn, reason);
        QApplication::sendEvent(window.target, &in);
        QVERIFY(window.mark()->isVisible());
    }
}

void TestFocusMark::followsTheCurrentTab()
{
    QTabBar *bar = makeTabBar();
    Window window(bar);
    QVERIFY(window.open());
    const auto count = [bar](int tab) { return countPoints(*bar, Qt::white, bar->tabRect(tab)); };
    bar->setCurrentIndex(1);
    const int first = count(0);
    bar->setCurrentIndex(0);
    const int second = count(1);
    QTest::keyClick(window.edit, Qt::Key_Tab);
    QVERIFY(count(0) > first + FramePoints);
    QCOMPARE(count(1), second);
    bar->setCurrentIndex(1);
    QCOMPARE(count(0), first);
    QVERIFY(count(1) > second + FramePoints);
}

void TestFocusMark::followsTheSize()
{
    Window window(makeArea());
    QVERIFY(window.open());
    QTest::keyClick(window.edit, Qt::Key_Tab);
    window.widget.resize(500, 400);
    QTRY_VERIFY_WITH_TIMEOUT(window.target->width() > 400, WaitTimeout);
    QCOMPARE(window.mark()->geometry(), window.target->rect());
}

void TestFocusMark::letsTheMouseThrough()
{
    auto *area = new QPlainTextEdit;
    new FocusMark(*area);
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

QTEST_MAIN(TestFocusMark)
#include "tst_FocusMark.moc"
