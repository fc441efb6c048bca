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

constexpr int PaintInterval = 20; // Milliseconds; Qt delays a repaint by less.

const QColor LightBlink(0xFF, 0xB8, 0x00);
const QColor DarkBlink(0xFF, 0xD7, 0x00);

/// Records what the bar requests from its style.
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

    /// The drawn tabs, in order.
    mutable QList<QStyleOptionTab> drawn;
    /// The rectangle of the last tab's text.
    mutable QRect lastTextRect;
};

/// Records the regions of a widget's paint events.
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

    /// Waits until no more paint events follow.
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

/// A bar with the tabs "Alpha", "Bravo" and "Charlie", the first of them current. The font is large
/// enough for pixels of the pure text colour.
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
        bar.grab(); // Lays out the tabs.
    }

    /// Shows the bar and waits until it is painted.
    [[nodiscard]] bool show()
    {
        const PaintWatcher watcher(&bar);
        bar.show();
        return QTest::qWaitForWindowExposed(&bar, WaitTimeout) && watcher.waitUntilPainted();
    }

    /// Returns the active blink timers.
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

    /// Delays the active timers, so that they do not time out during the test.
    void delayTimers() const
    {
        const QList<QTimer *> timers = runningTimers();
        for (QTimer *timer : timers)
            timer->setInterval(std::chrono::hours(1));
    }

    /// Makes the only active timer time out at once.
    void blinkOnce() const
    {
        QTimer *timer = runningTimers().constFirst();
        QTimerEvent event(timer->timerId());
        QCoreApplication::sendEvent(timer, &event);
    }

    /// Returns the number of pixels of exactly this colour in the tab at `index`.
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

    /// Draws the tab at `index` and returns its option.
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
    void infoIsNotHighlightedAtFirst();
    void barIsNotHighlightedAtFirst();
    void highlightsAndUnhighlightsATab();
    void ignoresIndexesOutOfRange_data();
    void ignoresIndexesOutOfRange();
    void unhighlightingWithoutAHighlightDoesNothing();
    void highlightingTwiceDoesNothing();
    void eachTabHasItsOwnTimer();
    void timerIntervalIsHalfASecond();
    void blinksByItself();
    void alternatesBetweenBlinkColourAndPlain();
    void timeoutWithoutHighlightChangesNothing();
    void startingTwiceKeepsOneTimer();
    void stoppingKeepsTheHighlight();
    void timerCanBeStoppedInItsSlot();
    void barDeletesItsTimers();
    void highlightingAgainStartsInTheBlinkColour();
    void blinkRepaintsOnlyItsTab();
    void highlightingAndUnhighlightingRepaint();

    void paintsTabsInOrder();
    void paintsOnlyTabsInTheRegion();
    void stylePaintsATabWithoutHighlight();
    void paintsAmpersands();
    void stylePaintsAHighlightedTabWithoutText_data();
    void stylePaintsAHighlightedTabWithoutText();
    void highlightedTextIsBoldAndCentred();
    void plainPhaseIsBlack();
    void highlightHasTheThemesColour_data();
    void highlightHasTheThemesColour();
    void themeChangeRepaintsAndKeepsTheTimers();

    void highlightStaysWhenATabOnTheLeftIsRemoved();
    void highlightStaysWhenItsTabIsRemoved();
    void highlightStaysWhenATabOnTheLeftIsInserted();
    void highlightStaysWhenItsTabMoves();
    void highlightWithoutATabShowsNothing();
};

void TestHighlightTabBar::infoIsNotHighlightedAtFirst()
{
    const HighlightTabBar::HighlightInfo info;
    QVERIFY(!info.highlighted);
    QVERIFY(!info.blinkOn);
    QVERIFY(info.timer == nullptr);
}

void TestHighlightTabBar::barIsNotHighlightedAtFirst()
{
    const Fixture fixture;
    QVERIFY(!fixture.bar.isHighlighted(0));
    QVERIFY(!fixture.bar.isHighlighted(-1));
    QVERIFY(!fixture.bar.isHighlighted(3));
    QVERIFY(fixture.runningTimers().isEmpty());
}

void TestHighlightTabBar::highlightsAndUnhighlightsATab()
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

void TestHighlightTabBar::ignoresIndexesOutOfRange_data()
{
    QTest::addColumn<int>("index");
    QTest::newRow("-1") << -1;
    QTest::newRow("count") << 3;
    QTest::newRow("far out of range") << 1000;
}

void TestHighlightTabBar::ignoresIndexesOutOfRange()
{
    QFETCH(const int, index);
    Fixture fixture;
    fixture.bar.highlightTab(index);
    QVERIFY(!fixture.bar.isHighlighted(index));
    QVERIFY(fixture.bar.findChildren<QTimer *>().isEmpty());

    fixture.bar.unhighlightTab(index);
    QVERIFY(!fixture.bar.isHighlighted(index));
}

void TestHighlightTabBar::unhighlightingWithoutAHighlightDoesNothing()
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

void TestHighlightTabBar::highlightingTwiceDoesNothing()
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

void TestHighlightTabBar::eachTabHasItsOwnTimer()
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

void TestHighlightTabBar::timerIntervalIsHalfASecond()
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

void TestHighlightTabBar::alternatesBetweenBlinkColourAndPlain()
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

void TestHighlightTabBar::timeoutWithoutHighlightChangesNothing()
{
    Fixture fixture;
    QVERIFY(fixture.show());
    const PaintWatcher watcher(&fixture.bar);
    fixture.bar.startBlinking(1);
    fixture.delayTimers();
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

void TestHighlightTabBar::stoppingKeepsTheHighlight()
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

void TestHighlightTabBar::timerCanBeStoppedInItsSlot()
{
    Fixture fixture;
    fixture.bar.highlightTab(1);
    QTimer *timer = fixture.runningTimers().constFirst();
    connect(timer, &QTimer::timeout, &fixture.bar, [&fixture] { fixture.bar.unhighlightTab(1); });
    fixture.blinkOnce();
    QVERIFY(!fixture.bar.isHighlighted(1));
    QTRY_VERIFY_WITH_TIMEOUT(fixture.bar.findChildren<QTimer *>().isEmpty(), WaitTimeout);
}

void TestHighlightTabBar::barDeletesItsTimers()
{
    auto bar = std::make_unique<HighlightTabBar>(nullptr);
    bar->addTab(u"Alpha"_s);
    bar->highlightTab(0);
    const QPointer<QTimer> timer = bar->findChild<QTimer *>();
    QVERIFY(!timer.isNull());
    bar.reset();
    QVERIFY(timer.isNull());
}

void TestHighlightTabBar::highlightingAgainStartsInTheBlinkColour()
{
    Fixture fixture;
    fixture.bar.highlightTab(1);
    fixture.blinkOnce();
    fixture.bar.unhighlightTab(1);
    fixture.bar.highlightTab(1);
    QCOMPARE(fixture.runningTimers().size(), 1);
    QVERIFY(fixture.pixelsOf(LightBlink, 1) > 0);
}

void TestHighlightTabBar::blinkRepaintsOnlyItsTab()
{
    Fixture fixture;
    QVERIFY(fixture.show());
    PaintWatcher watcher(&fixture.bar);
    fixture.bar.highlightTab(1);
    fixture.delayTimers();
    QVERIFY(watcher.waitUntilPainted());

    watcher.regions.clear();
    fixture.blinkOnce();
    QVERIFY(watcher.waitUntilPainted());
    QCOMPARE(watcher.regions, QList<QRegion>{fixture.bar.tabRect(1)});
}

void TestHighlightTabBar::highlightingAndUnhighlightingRepaint()
{
    Fixture fixture;
    QVERIFY(fixture.show());
    PaintWatcher watcher(&fixture.bar);
    // A blink would repaint only its tab.
    const QList<QRegion> wholeBar{fixture.bar.rect()};
    fixture.bar.highlightTab(1);
    fixture.delayTimers();
    QVERIFY(watcher.waitUntilPainted());
    QCOMPARE(watcher.regions, wholeBar);
    watcher.regions.clear();
    fixture.bar.unhighlightTab(1);
    QVERIFY(watcher.waitUntilPainted());
    QCOMPARE(watcher.regions, wholeBar);
}

void TestHighlightTabBar::paintsTabsInOrder()
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

void TestHighlightTabBar::stylePaintsATabWithoutHighlight()
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
    // Styles draw "&&" as one ampersand.
    QCOMPARE(fixture.drawnOption(1).text, u"#a&&b&&&&c"_s);
    QCOMPARE(fixture.bar.tabText(1), u"#a&b&&c"_s);
}

void TestHighlightTabBar::stylePaintsAHighlightedTabWithoutText_data()
{
    QTest::addColumn<int>("blinks");
    QTest::addColumn<QColor>("windowText");
    QTest::newRow("blink colour") << 0 << LightBlink;
    QTest::newRow("plain") << 1 << QColor();
}

void TestHighlightTabBar::stylePaintsAHighlightedTabWithoutText()
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

void TestHighlightTabBar::highlightedTextIsBoldAndCentred()
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

void TestHighlightTabBar::highlightHasTheThemesColour_data()
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

void TestHighlightTabBar::highlightHasTheThemesColour()
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
    fixture.delayTimers();
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

void TestHighlightTabBar::highlightStaysWhenATabOnTheLeftIsRemoved()
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

void TestHighlightTabBar::highlightStaysWhenItsTabIsRemoved()
{
    Fixture fixture;
    fixture.bar.highlightTab(1);
    fixture.bar.removeTab(1);
    QCOMPARE(fixture.bar.tabText(1), u"Charlie"_s);
    QVERIFY(fixture.bar.isHighlighted(1));
    QVERIFY(fixture.pixelsOf(LightBlink, 1) > 0);
    QCOMPARE(fixture.runningTimers().size(), 1);
}

void TestHighlightTabBar::highlightStaysWhenATabOnTheLeftIsInserted()
{
    Fixture fixture;
    fixture.bar.highlightTab(1);
    fixture.bar.insertTab(0, u"Zero"_s);
    fixture.bar.resize(fixture.bar.sizeHint());
    QCOMPARE(fixture.bar.tabText(1), u"Alpha"_s);
    QVERIFY(fixture.pixelsOf(LightBlink, 1) > 0);
    QCOMPARE(fixture.pixelsOf(LightBlink, 2), 0);
}

void TestHighlightTabBar::highlightStaysWhenItsTabMoves()
{
    Fixture fixture;
    fixture.bar.highlightTab(1);
    fixture.bar.moveTab(1, 2);
    QCOMPARE(fixture.bar.tabText(1), u"Charlie"_s);
    QVERIFY(fixture.pixelsOf(LightBlink, 1) > 0);
    QCOMPARE(fixture.pixelsOf(LightBlink, 2), 0);
}

void TestHighlightTabBar::highlightWithoutATabShowsNothing()
{
    Fixture fixture;
    fixture.bar.highlightTab(2);
    fixture.delayTimers();
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

    // The index has no tab, so the highlight cannot be removed. The next tab there gets it.
    fixture.bar.unhighlightTab(2);
    QVERIFY(fixture.bar.isHighlighted(2));
    fixture.blinkOnce();
    fixture.bar.addTab(u"Delta"_s);
    fixture.bar.resize(fixture.bar.sizeHint());
    QVERIFY(fixture.pixelsOf(LightBlink, 2) > 0);
}

QTEST_MAIN(TestHighlightTabBar)
#include "tst_HighlightTabBar.moc"
