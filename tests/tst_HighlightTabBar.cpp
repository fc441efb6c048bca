#include "HighlightTabBar.h"
#include "Waiting.h"

#include <QElapsedTimer>
#include <QPainter>
#include <QProxyStyle>
#include <QSignalSpy>
#include <QStyleOptionTab>
#include <QTest>
#include <QTimer>

#include <chrono>
#include <memory>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr int PaintInterval = 20; // In ms; Qt holds a repaint back for less.

const QColor LightBlink(0xFF, 0xB8, 0x00);
const QColor DarkBlink(0xFF, 0xD7, 0x00);

/// Keeps what the bar asked its style for.
class RecordingStyle final : public QProxyStyle
{
    Q_OBJECT

public:
    RecordingStyle()
        : QProxyStyle(u"Fusion"_s)
    {
    }

    void drawControl(ControlElement element, const QStyleOption *option, QPainter *painter,
                     const QWidget *widget) const override
    {
        if (element == CE_TabBarTab)
            drawn.append(*qstyleoption_cast<const QStyleOptionTab *>(option));
        QProxyStyle::drawControl(element, option, painter, widget);
    }

    QRect subElementRect(SubElement element, const QStyleOption *option,
                         const QWidget *widget) const override
    {
        const QRect rect = QProxyStyle::subElementRect(element, option, widget);
        if (element == SE_TabBarTabText)
            lastTextRect = rect;
        return rect;
    }

    /// Each tab that was drawn, in order.
    mutable QList<QStyleOptionTab> drawn;
    /// The last rectangle that the style gave to a tab's text.
    mutable QRect lastTextRect;
};

/// Keeps the regions of the paint events that reach a widget.
class PaintWatcher final : public QObject
{
    Q_OBJECT

public:
    explicit PaintWatcher(QWidget *widget) { widget->installEventFilter(this); }

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::Paint) {
            regions.append(static_cast<QPaintEvent *>(event)->region());
            sinceLast.start();
        }
        return QObject::eventFilter(watched, event);
    }

    /// Waits for an event that no other follows.
    [[nodiscard]] bool waitUntilPainted() const
    {
        const auto isDone = [this] {
            return !regions.isEmpty() && sinceLast.hasExpired(PaintInterval);
        };
        return QTest::qWaitFor(isDone, WaitTimeout);
    }

    QList<QRegion> regions;

private:
    QElapsedTimer sinceLast;
};

/// A bar with the tabs "Alpha", "Bravo" and "Charlie", the first of them current, in letters large
/// enough to hold pixels of the pure text colour.
class Fixture final
{
public:
    Fixture()
    {
        QFont font = bar.font();
        font.setPixelSize(40);
        bar.setFont(font);
        bar.setStyle(&style);
        bar.addTab(u"Alpha"_s);
        bar.addTab(u"Bravo"_s);
        bar.addTab(u"Charlie"_s);
        bar.resize(bar.sizeHint());
        bar.grab(); // lays the tabs out for good
    }

    /// Shows the bar and waits until nothing is left to be painted.
    [[nodiscard]] bool show()
    {
        const PaintWatcher watcher(&bar);
        bar.show();
        return QTest::qWaitForWindowExposed(&bar, WaitTimeout) && watcher.waitUntilPainted();
    }

    /// The blink timers that run.
    [[nodiscard]] QList<QTimer *> runningTimers() const
    {
        QList<QTimer *> running;
        const QList<QTimer *> timers = bar.findChildren<QTimer *>();
        for (QTimer *timer : timers) {
            if (timer->isActive())
                running.append(timer);
        }
        return running;
    }

    /// Keeps the running timers from timing out by themselves while the event loop runs.
    void holdTimers() const
    {
        const QList<QTimer *> timers = runningTimers();
        for (QTimer *timer : timers)
            timer->setInterval(std::chrono::hours(1));
    }

    /// Lets the only running timer time out without waiting for it.
    void blinkOnce() const
    {
        QTimer *timer = runningTimers().constFirst();
        QTimerEvent event(timer->timerId());
        QCoreApplication::sendEvent(timer, &event);
    }

    /// How many pixels of exactly this colour the bar shows within the tab.
    [[nodiscard]] int pixelsOf(const QColor &color, int index)
    {
        return countPixels(bar.grab(bar.tabRect(index)).toImage(), color);
    }

    static int countPixels(const QImage &image, const QColor &color)
    {
        int count = 0;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x)
                count += image.pixelColor(x, y) == color ? 1 : 0;
        }
        return count;
    }

    /// The option with which the tab at `index` was drawn last.
    [[nodiscard]] QStyleOptionTab drawnOption(int index)
    {
        style.drawn.clear();
        bar.grab(bar.tabRect(index));
        return style.drawn.value(0);
    }

    RecordingStyle style;
    HighlightTabBar bar{nullptr};
};

} // namespace

class TestHighlightTabBar final : public QObject
{
    Q_OBJECT

private slots:
    void infoStartsUnmarked();
    void barStartsUnmarked();
    void marksAndUnmarksATab();
    void ignoresIndexesWithoutATab_data();
    void ignoresIndexesWithoutATab();
    void unmarkingAnUnmarkedTabDoesNothing();
    void markingTwiceIsMarkingOnce();
    void eachTabHasATimerOfItsOwn();
    void timerRunsEveryHalfSecond();
    void blinksByItself();
    void flipsBetweenBlinkColourAndPlain();
    void timeoutWithoutMarkChangesNothing();
    void startingTwiceKeepsOneTimer();
    void stoppingKeepsTheMark();
    void timerMayEndItself();
    void timersGoWithTheBar();
    void markingAgainStartsInTheBlinkColour();
    void blinkRepaintsItsTabOnly();
    void markingAndUnmarkingRepaint();

    void paintsTabsInTheirOrder();
    void paintsOnlyTabsInTheRegion();
    void stylePaintsAnUnmarkedTab();
    void paintsAmpersands();
    void stylePaintsAMarkedTabWithoutItsText_data();
    void stylePaintsAMarkedTabWithoutItsText();
    void markedTextIsBoldAndCentred();
    void plainPhaseIsBlack();
    void markHasTheThemesColour_data();
    void markHasTheThemesColour();
    void themeChangeRepaintsAndKeepsTheTimers();

    void markStaysWhenATabOnTheLeftGoes();
    void markStaysWhenItsTabGoes();
    void markStaysWhenATabComesOnTheLeft();
    void markStaysWhenItsTabMoves();
    void markWithoutATabShowsNothing();
};

void TestHighlightTabBar::infoStartsUnmarked()
{
    const HighlightTabBar::HighlightInfo info;
    QVERIFY(!info.highlighted);
    QVERIFY(!info.blinkOn);
    QVERIFY(info.timer == nullptr);
}

void TestHighlightTabBar::barStartsUnmarked()
{
    const Fixture fixture;
    QVERIFY(!fixture.bar.isHighlighted(0));
    QVERIFY(!fixture.bar.isHighlighted(-1));
    QVERIFY(!fixture.bar.isHighlighted(3));
    QVERIFY(fixture.runningTimers().isEmpty());
}

void TestHighlightTabBar::marksAndUnmarksATab()
{
    Fixture fixture;
    fixture.bar.highlightTab(1);
    QVERIFY(fixture.bar.isHighlighted(1));
    QVERIFY(!fixture.bar.isHighlighted(0));
    QVERIFY(!fixture.bar.isHighlighted(2));

    fixture.bar.unhighlightTab(1);
    QVERIFY(!fixture.bar.isHighlighted(1));
    QVERIFY(fixture.runningTimers().isEmpty());
    QCOMPARE(fixture.pixelsOf(LightBlink, 1), 0);
    QTRY_VERIFY_WITH_TIMEOUT(fixture.bar.findChildren<QTimer *>().isEmpty(), WaitTimeout);
}

void TestHighlightTabBar::ignoresIndexesWithoutATab_data()
{
    QTest::addColumn<int>("index");
    QTest::newRow("-1") << -1;
    QTest::newRow("count") << 3;
    QTest::newRow("far behind") << 1000;
}

void TestHighlightTabBar::ignoresIndexesWithoutATab()
{
    QFETCH(const int, index);
    Fixture fixture;
    fixture.bar.highlightTab(index);
    QVERIFY(!fixture.bar.isHighlighted(index));
    QVERIFY(fixture.bar.findChildren<QTimer *>().isEmpty());

    fixture.bar.unhighlightTab(index);
    QVERIFY(!fixture.bar.isHighlighted(index));
}

void TestHighlightTabBar::unmarkingAnUnmarkedTabDoesNothing()
{
    Fixture fixture;
    QVERIFY(fixture.show());
    const PaintWatcher watcher(&fixture.bar);

    fixture.bar.unhighlightTab(1);
    QVERIFY(!fixture.bar.isHighlighted(1));
    fixture.bar.highlightTab(2);
    fixture.bar.unhighlightTab(2);
    QVERIFY(watcher.waitUntilPainted());
    const qsizetype paintedBefore = watcher.regions.size();

    fixture.bar.unhighlightTab(2);
    QCoreApplication::processEvents();
    QCOMPARE(watcher.regions.size(), paintedBefore);
    QVERIFY(fixture.runningTimers().isEmpty());
}

void TestHighlightTabBar::markingTwiceIsMarkingOnce()
{
    Fixture fixture;
    fixture.bar.highlightTab(1);
    const QList<QTimer *> timers = fixture.runningTimers();
    QCOMPARE(timers.size(), 1);
    fixture.blinkOnce();

    fixture.bar.highlightTab(1);
    QCOMPARE(fixture.runningTimers(), timers);
    QCOMPARE(fixture.pixelsOf(LightBlink, 1), 0);
    fixture.blinkOnce();
    QVERIFY(fixture.pixelsOf(LightBlink, 1) > 0);
}

void TestHighlightTabBar::eachTabHasATimerOfItsOwn()
{
    Fixture fixture;
    fixture.bar.highlightTab(0);
    fixture.blinkOnce();
    fixture.bar.highlightTab(2);
    QCOMPARE(fixture.runningTimers().size(), 2);
    QCOMPARE(fixture.pixelsOf(LightBlink, 0), 0);
    QVERIFY(fixture.pixelsOf(LightBlink, 2) > 0);

    fixture.bar.unhighlightTab(2);
    QCOMPARE(fixture.runningTimers().size(), 1);
    QVERIFY(fixture.bar.isHighlighted(0));
}

void TestHighlightTabBar::timerRunsEveryHalfSecond()
{
    Fixture fixture;
    fixture.bar.highlightTab(1);
    const QList<QTimer *> timers = fixture.runningTimers();
    QCOMPARE(timers.size(), 1);
    QCOMPARE(timers.constFirst()->interval(), 500);
    QVERIFY(!timers.constFirst()->isSingleShot());
    QCOMPARE(timers.constFirst()->parent(), &fixture.bar);
}

void TestHighlightTabBar::blinksByItself()
{
    Fixture fixture;
    fixture.bar.highlightTab(1);
    QSignalSpy timeouts(fixture.runningTimers().constFirst(), &QTimer::timeout);
    QVERIFY(timeouts.wait(WaitTimeout));
    QCOMPARE(fixture.pixelsOf(LightBlink, 1) > 0, timeouts.size() % 2 == 0);
}

void TestHighlightTabBar::flipsBetweenBlinkColourAndPlain()
{
    Fixture fixture;
    fixture.bar.highlightTab(1);
    QVERIFY(fixture.pixelsOf(LightBlink, 1) > 0);
    fixture.blinkOnce();
    QCOMPARE(fixture.pixelsOf(LightBlink, 1), 0);
    fixture.blinkOnce();
    QVERIFY(fixture.pixelsOf(LightBlink, 1) > 0);
    QCOMPARE(fixture.pixelsOf(LightBlink, 0), 0);
    QCOMPARE(fixture.pixelsOf(LightBlink, 2), 0);
}

void TestHighlightTabBar::timeoutWithoutMarkChangesNothing()
{
    Fixture fixture;
    QVERIFY(fixture.show());
    const PaintWatcher watcher(&fixture.bar);
    fixture.bar.startBlinking(1);
    fixture.holdTimers();
    fixture.blinkOnce();
    QCoreApplication::processEvents();
    QVERIFY(watcher.regions.isEmpty());
    QVERIFY(!fixture.bar.isHighlighted(1));
    QCOMPARE(fixture.pixelsOf(LightBlink, 1), 0);
}

void TestHighlightTabBar::startingTwiceKeepsOneTimer()
{
    Fixture fixture;
    fixture.bar.highlightTab(1);
    const QList<QTimer *> before = fixture.runningTimers();
    fixture.bar.startBlinking(1);
    const QList<QTimer *> after = fixture.runningTimers();
    QCOMPARE(after.size(), 1);
    QVERIFY(after != before);
}

void TestHighlightTabBar::stoppingKeepsTheMark()
{
    Fixture fixture;
    fixture.bar.highlightTab(1);
    fixture.bar.stopBlinking(1);
    fixture.bar.stopBlinking(1);
    fixture.bar.stopBlinking(2);
    QVERIFY(fixture.runningTimers().isEmpty());
    QVERIFY(fixture.bar.isHighlighted(1));
    QVERIFY(fixture.pixelsOf(LightBlink, 1) > 0);
}

void TestHighlightTabBar::timerMayEndItself()
{
    Fixture fixture;
    fixture.bar.highlightTab(1);
    QTimer *timer = fixture.runningTimers().constFirst();
    connect(timer, &QTimer::timeout, &fixture.bar, [&fixture] { fixture.bar.unhighlightTab(1); });
    fixture.blinkOnce();
    QVERIFY(!fixture.bar.isHighlighted(1));
    QTRY_VERIFY_WITH_TIMEOUT(fixture.bar.findChildren<QTimer *>().isEmpty(), WaitTimeout);
}

void TestHighlightTabBar::timersGoWithTheBar()
{
    auto bar = std::make_unique<HighlightTabBar>(nullptr);
    bar->addTab(u"Alpha"_s);
    bar->highlightTab(0);
    const QPointer<QTimer> timer = bar->findChild<QTimer *>();
    QVERIFY(!timer.isNull());
    bar.reset();
    QVERIFY(timer.isNull());
}

void TestHighlightTabBar::markingAgainStartsInTheBlinkColour()
{
    Fixture fixture;
    fixture.bar.highlightTab(1);
    fixture.blinkOnce();
    fixture.bar.unhighlightTab(1);
    fixture.bar.highlightTab(1);
    QCOMPARE(fixture.runningTimers().size(), 1);
    QVERIFY(fixture.pixelsOf(LightBlink, 1) > 0);
}

void TestHighlightTabBar::blinkRepaintsItsTabOnly()
{
    Fixture fixture;
    QVERIFY(fixture.show());
    PaintWatcher watcher(&fixture.bar);
    fixture.bar.highlightTab(1);
    fixture.holdTimers();
    QVERIFY(watcher.waitUntilPainted());

    watcher.regions.clear();
    fixture.blinkOnce();
    QVERIFY(watcher.waitUntilPainted());
    QCOMPARE(watcher.regions, QList<QRegion>{fixture.bar.tabRect(1)});
}

void TestHighlightTabBar::markingAndUnmarkingRepaint()
{
    Fixture fixture;
    QVERIFY(fixture.show());
    PaintWatcher watcher(&fixture.bar);
    // A blink repaints its tab alone.
    const QList<QRegion> wholeBar{fixture.bar.rect()};
    fixture.bar.highlightTab(1);
    fixture.holdTimers();
    QVERIFY(watcher.waitUntilPainted());
    QCOMPARE(watcher.regions, wholeBar);
    watcher.regions.clear();
    fixture.bar.unhighlightTab(1);
    QVERIFY(watcher.waitUntilPainted());
    QCOMPARE(watcher.regions, wholeBar);
}

void TestHighlightTabBar::paintsTabsInTheirOrder()
{
    Fixture fixture;
    fixture.bar.setCurrentIndex(1);
    fixture.style.drawn.clear();
    fixture.bar.grab();

    QStringList texts;
    for (const QStyleOptionTab &option : std::as_const(fixture.style.drawn))
        texts.append(option.text);
    QCOMPARE(texts, (QStringList{u"Alpha"_s, u"Bravo"_s, u"Charlie"_s}));
}

void TestHighlightTabBar::paintsOnlyTabsInTheRegion()
{
    Fixture fixture;
    fixture.style.drawn.clear();
    fixture.bar.grab(fixture.bar.tabRect(1));
    QCOMPARE(fixture.style.drawn.size(), 1);
    QCOMPARE(fixture.style.drawn.constFirst().text, u"Bravo"_s);
}

void TestHighlightTabBar::stylePaintsAnUnmarkedTab()
{
    Fixture fixture;
    fixture.bar.highlightTab(2);
    const QStyleOptionTab option = fixture.drawnOption(1);
    QCOMPARE(option.text, u"Bravo"_s);
    QCOMPARE(option.rect, fixture.bar.tabRect(1));
    QCOMPARE(option.palette.color(QPalette::WindowText),
             fixture.bar.palette().color(QPalette::WindowText));
}

void TestHighlightTabBar::paintsAmpersands()
{
    Fixture fixture;
    fixture.bar.setTabText(1, u"#a&b&&c"_s);
    // To a style a pair of them is one that is shown.
    QCOMPARE(fixture.drawnOption(1).text, u"#a&&b&&&&c"_s);
    QCOMPARE(fixture.bar.tabText(1), u"#a&b&&c"_s);
}

void TestHighlightTabBar::stylePaintsAMarkedTabWithoutItsText_data()
{
    QTest::addColumn<int>("blinks");
    QTest::addColumn<QColor>("windowText");
    QTest::newRow("blink colour") << 0 << LightBlink;
    QTest::newRow("plain") << 1 << QColor();
}

void TestHighlightTabBar::stylePaintsAMarkedTabWithoutItsText()
{
    QFETCH(const int, blinks);
    Fixture fixture;
    fixture.bar.highlightTab(1);
    for (int blink = 0; blink < blinks; ++blink)
        fixture.blinkOnce();

    const QStyleOptionTab option = fixture.drawnOption(1);
    QCOMPARE(option.text, QString());
    QCOMPARE(option.rect, fixture.bar.tabRect(1));
    QTEST(option.palette.color(QPalette::WindowText), "windowText");
}

void TestHighlightTabBar::markedTextIsBoldAndCentred()
{
    Fixture fixture;
    fixture.bar.highlightTab(1);
    const QImage tab = fixture.bar.grab(fixture.bar.tabRect(1)).toImage();
    const QRect textRect = fixture.style.lastTextRect.translated(-fixture.bar.tabRect(1).topLeft());

    const auto drawText = [&](bool bold) {
        QImage image(tab.size(), QImage::Format_RGB32);
        image.fill(Qt::white);
        QPainter painter(&image);
        QFont font = fixture.bar.font();
        font.setBold(bold);
        painter.setFont(font);
        painter.setPen(LightBlink);
        painter.drawText(textRect, Qt::AlignCenter | Qt::TextSingleLine, u"Bravo"_s);
        return image;
    };
    const QImage bold = drawText(true);
    QVERIFY(Fixture::countPixels(bold, LightBlink) > 0);
    for (int y = 0; y < tab.height(); ++y) {
        for (int x = 0; x < tab.width(); ++x) {
            if (bold.pixelColor(x, y) == LightBlink)
                QCOMPARE(tab.pixelColor(x, y), LightBlink);
        }
    }
    QVERIFY(Fixture::countPixels(tab, LightBlink)
            > Fixture::countPixels(drawText(false), LightBlink));
}

void TestHighlightTabBar::plainPhaseIsBlack()
{
    Fixture fixture;
    QPalette palette = fixture.bar.palette();
    palette.setColor(QPalette::WindowText, Qt::red);
    fixture.bar.setPalette(palette);
    fixture.bar.highlightTab(1);
    const int blackBefore = fixture.pixelsOf(Qt::black, 1);
    fixture.blinkOnce();
    QVERIFY(fixture.pixelsOf(Qt::black, 1) > blackBefore);
    QCOMPARE(fixture.pixelsOf(Qt::red, 1), 0);
}

void TestHighlightTabBar::markHasTheThemesColour_data()
{
    QTest::addColumn<QString>("theme");
    QTest::addColumn<bool>("setsTheme");
    QTest::addColumn<QColor>("colour");
    QTest::newRow("no theme set") << QString() << false << LightBlink;
    QTest::newRow("light") << u"light"_s << true << LightBlink;
    QTest::newRow("dark") << u"dark"_s << true << DarkBlink;
    QTest::newRow("glass") << u"glass"_s << true << LightBlink;
    QTest::newRow("empty") << QString() << true << LightBlink;
}

void TestHighlightTabBar::markHasTheThemesColour()
{
    QFETCH(const QString, theme);
    QFETCH(const bool, setsTheme);
    QFETCH(const QColor, colour);
    Fixture fixture;
    if (setsTheme)
        fixture.bar.setTheme(theme);
    fixture.bar.highlightTab(1);
    QVERIFY(fixture.pixelsOf(colour, 1) > 0);
    QCOMPARE(fixture.drawnOption(1).palette.color(QPalette::WindowText), colour);
}

void TestHighlightTabBar::themeChangeRepaintsAndKeepsTheTimers()
{
    Fixture fixture;
    QVERIFY(fixture.show());
    PaintWatcher watcher(&fixture.bar);
    fixture.bar.highlightTab(1);
    fixture.holdTimers();
    QVERIFY(watcher.waitUntilPainted());
    const QList<QTimer *> timers = fixture.runningTimers();

    watcher.regions.clear();
    fixture.bar.setTheme(u"dark"_s);
    QVERIFY(watcher.waitUntilPainted());
    QCOMPARE(watcher.regions.size(), 1);
    QCOMPARE(fixture.runningTimers(), timers);
    QVERIFY(fixture.pixelsOf(DarkBlink, 1) > 0);
    QCOMPARE(fixture.pixelsOf(LightBlink, 1), 0);
}

void TestHighlightTabBar::markStaysWhenATabOnTheLeftGoes()
{
    Fixture fixture;
    fixture.bar.highlightTab(1);
    const QList<QTimer *> timers = fixture.runningTimers();
    fixture.bar.removeTab(0);

    QCOMPARE(fixture.bar.tabText(1), u"Charlie"_s);
    QVERIFY(fixture.bar.isHighlighted(1));
    QVERIFY(!fixture.bar.isHighlighted(0));
    QVERIFY(fixture.pixelsOf(LightBlink, 1) > 0);
    QCOMPARE(fixture.pixelsOf(LightBlink, 0), 0);
    QCOMPARE(fixture.runningTimers(), timers);
}

void TestHighlightTabBar::markStaysWhenItsTabGoes()
{
    Fixture fixture;
    fixture.bar.highlightTab(1);
    fixture.bar.removeTab(1);
    QCOMPARE(fixture.bar.tabText(1), u"Charlie"_s);
    QVERIFY(fixture.bar.isHighlighted(1));
    QVERIFY(fixture.pixelsOf(LightBlink, 1) > 0);
    QCOMPARE(fixture.runningTimers().size(), 1);
}

void TestHighlightTabBar::markStaysWhenATabComesOnTheLeft()
{
    Fixture fixture;
    fixture.bar.highlightTab(1);
    fixture.bar.insertTab(0, u"Zero"_s);
    fixture.bar.resize(fixture.bar.sizeHint());
    QCOMPARE(fixture.bar.tabText(1), u"Alpha"_s);
    QVERIFY(fixture.pixelsOf(LightBlink, 1) > 0);
    QCOMPARE(fixture.pixelsOf(LightBlink, 2), 0);
}

void TestHighlightTabBar::markStaysWhenItsTabMoves()
{
    Fixture fixture;
    fixture.bar.highlightTab(1);
    fixture.bar.moveTab(1, 2);
    QCOMPARE(fixture.bar.tabText(1), u"Charlie"_s);
    QVERIFY(fixture.pixelsOf(LightBlink, 1) > 0);
    QCOMPARE(fixture.pixelsOf(LightBlink, 2), 0);
}

void TestHighlightTabBar::markWithoutATabShowsNothing()
{
    Fixture fixture;
    fixture.bar.highlightTab(2);
    fixture.holdTimers();
    fixture.bar.removeTab(2);
    QVERIFY(fixture.bar.tabRect(2).isEmpty());
    QVERIFY(fixture.bar.isHighlighted(2));
    QCOMPARE(fixture.runningTimers().size(), 1);
    QCOMPARE(Fixture::countPixels(fixture.bar.grab().toImage(), LightBlink), 0);

    QVERIFY(fixture.show());
    const PaintWatcher watcher(&fixture.bar);
    fixture.blinkOnce();
    QCoreApplication::processEvents();
    QVERIFY(watcher.regions.isEmpty());

    // No tab lies there, so the mark cannot be taken off; the next tab at the index inherits it.
    fixture.bar.unhighlightTab(2);
    QVERIFY(fixture.bar.isHighlighted(2));
    fixture.blinkOnce();
    fixture.bar.addTab(u"Delta"_s);
    fixture.bar.resize(fixture.bar.sizeHint());
    QVERIFY(fixture.pixelsOf(LightBlink, 2) > 0);
}

QTEST_MAIN(TestHighlightTabBar)
#include "tst_HighlightTabBar.moc"
