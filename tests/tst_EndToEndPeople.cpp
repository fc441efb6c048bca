// End-to-end tests of channels and users by mouse, with a real window and a real server that
// supports WATCH.

#include "InspIrcd.h"
#include "RequiredTools.h"
#include "Scenario.h"
#include "VirtualScreen.h"

#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

constexpr int AttemptTimeout = 5000; // In ms, for one of several attempts.

// Text of lists and menus. The distance includes anti-aliased edges of letters, but not the much
// paler frames.
constexpr QRgb TextColour = qRgb(0x33, 0x33, 0x33);
constexpr int TextDistance = 60;
constexpr int TwoRows = 20; // Two rows of text are higher than this; one is not.

constexpr QRgb BlinkColour = qRgb(0xff, 0xb8, 0x00);
constexpr int BlinkDistance = 30;

constexpr QPoint InFirstRow{6, 5};    // Relative to the upper left corner of the first row.
constexpr QPoint InLastRow{6, -4};    // Relative to the lower left corner of the last row.
constexpr QPoint CloseButton{13, 17}; // Relative to the upper left corner of a tab.

// Relative to the position of the right click: the menu's second entry, and an area that only the
// menu covers.
constexpr QPoint WhoisEntry{40, 27};
constexpr QRect MenuBelowNames{20, 40, 120, 60};

} // namespace

class TestEndToEndPeople final : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void joinsFromTheChannelList();
    void requestsWhoisFromTheUserList();
    void chatsInPrivateFromTheUserList_data();
    void chatsInPrivateFromTheUserList();
    void reportsWhenThePartnerComesAndGoes();
    void blinksForAMentionUntilTheVisit();

private:
    QRect shownText(const QRect &area) const;
    // Waits until the area shows at least two rows and does not change any more.
    QRect shownRows(const QRect &area) const;
    // Returns a point in the first entry of the user list, which is bob, the operator.
    QPoint positionOfBob() const;
    // Repeats a double-click until the program sends this line, since a busy machine may handle the
    // clicks as two single ones. Use it for actions that may happen twice.
    bool doubleClickFor(const QString &line, QPoint position) const;
    // Opens a private conversation with bob by a double-click on his nick.
    bool openChat();
    // Returns the bounding rectangle of tab text that is in the blink colour now.
    QRect blinkingText() const;
    // Waits until tabs have blinked twice and returns their bounding rectangle; empty at the
    // timeout.
    QRect watchBlinking() const;

    VirtualScreen screen;
    std::unique_ptr<Scenario> scenario;
};

void TestEndToEndPeople::initTestCase()
{
    SKIP_IF_MISSING(VirtualScreen::missingParts());
    REQUIRE_TOOLS(u"inspircd"_s);
    QVERIFY2(screen.start(), qPrintable(screen.failure()));
}

void TestEndToEndPeople::init()
{
    scenario = std::make_unique<Scenario>(screen, std::make_unique<InspIrcd>());
}

void TestEndToEndPeople::cleanup()
{
    if (QTest::currentTestFailed())
        scenario->report(QString::fromLatin1(QTest::currentTestFunction()));
    QVERIFY(scenario->end());
    QCOMPARE(scenario->program.errorOutput(), QString());
    scenario.reset();
}

QRect TestEndToEndPeople::shownText(const QRect &area) const
{
    return screen.findPixels(area, TextColour, TextDistance);
}

QRect TestEndToEndPeople::shownRows(const QRect &area) const
{
    return screen.waitUntilStable([&] {
        const QRect text = shownText(area);
        return text.height() > TwoRows ? text : QRect();
    });
}

QPoint TestEndToEndPeople::positionOfBob() const
{
    return shownRows(scenario->program.userNames()).topLeft() + InFirstRow;
}

bool TestEndToEndPeople::doubleClickFor(const QString &line, QPoint position) const
{
    return screen.waitFor([&] {
        return screen.doubleClick(position)
               && QTest::qWaitFor([&] { return scenario->proxy->countFromProgram(line) > 0; },
                                  AttemptTimeout);
    });
}

bool TestEndToEndPeople::openChat()
{
    return doubleClickFor(u"WATCH +bob"_s, positionOfBob())
           && scenario->proxy->waitForServer(u" 604 wanda bob "_s);
}

QRect TestEndToEndPeople::blinkingText() const
{
    return screen.findPixels(scenario->program.tabBar(), BlinkColour, BlinkDistance);
}

QRect TestEndToEndPeople::watchBlinking() const
{
    QRect found;
    for (const bool isOn : {true, false, true, false}) {
        const auto hasChanged = [&] {
            const QRect now = blinkingText();
            found |= now;
            return now.isEmpty() != isOn;
        };
        if (!screen.waitFor(hasChanged))
            return {};
    }
    return found;
}

void TestEndToEndPeople::joinsFromTheChannelList()
{
    QVERIFY(scenario->start());
    scenario->bob.send(u"JOIN #hall"_s);
    QVERIFY(scenario->bob.waitFor(u" 366 bob #hall "_s));

    QVERIFY(scenario->program.typeLine(u"/list"_s));
    QVERIFY(scenario->proxy->waitForProgram(u"LIST"_s));
    QVERIFY(scenario->proxy->waitForServer(u" 323 wanda "_s));
    const QRect names = scenario->program.channelNames();
    QVERIFY(!shownRows(names).isEmpty());
    // The search line has the focus and filters the list.
    QVERIFY(screen.type(u"hall"_s));
    QVERIFY(screen.waitFor([&] { return shownText(names).height() < TwoRows; }));
    QVERIFY(screen.press(u"ctrl+a"_s));
    QVERIFY(screen.press(u"Delete"_s));
    const QRect rows = shownRows(names);
    QVERIFY(!rows.isEmpty());

    // The channel with fewer users is the lower one.
    QVERIFY(doubleClickFor(u"JOIN #hall"_s, rows.bottomLeft() + InLastRow));
    QVERIFY(scenario->bob.waitFor(u" JOIN :#hall"_s));
    QVERIFY(scenario->program.typeLine(u"here I am"_s));
    QVERIFY(scenario->bob.waitFor(u"PRIVMSG #hall :here I am"_s));
}

void TestEndToEndPeople::requestsWhoisFromTheUserList()
{
    QVERIFY(scenario->start());
    const QPoint bob = positionOfBob();
    const QRect menu = MenuBelowNames.translated(bob);
    QVERIFY(shownText(menu).isEmpty());
    QVERIFY(screen.click(bob, 3));
    QVERIFY(screen.waitFor([&] { return !shownText(menu).isEmpty(); }));

    QVERIFY(screen.click(bob + WhoisEntry));
    QVERIFY(scenario->proxy->waitForProgram(u"WHOIS bob"_s));
    QVERIFY(scenario->proxy->waitForServer(u" 318 wanda bob "_s));
    // The user's own join, then user, server, idle time and channels.
    QVERIFY(scenario->program.waitForLines(1 + 4));
}

void TestEndToEndPeople::chatsInPrivateFromTheUserList_data()
{
    QTest::addColumn<bool>("isClosedByMouse");
    QTest::newRow("closed by Ctrl+W") << false;
    QTest::newRow("closed by its button") << true;
}

void TestEndToEndPeople::chatsInPrivateFromTheUserList()
{
    QFETCH(const bool, isClosedByMouse);
    QVERIFY(scenario->start());
    const auto currentTab = [this] { return scenario->program.currentTab(); };
    const QRect room = screen.waitUntilStable(currentTab);
    QVERIFY(openChat());
    QVERIFY(screen.waitFor([&] { return currentTab().left() > room.right(); }));
    QVERIFY(scenario->program.typeLine(u"psst"_s));
    QVERIFY(scenario->bob.waitFor(u"PRIVMSG bob :psst"_s));

    QCOMPARE(scenario->proxy->countFromProgram(u"WATCH -bob"_s), 0);
    const QRect chat = screen.waitUntilStable(currentTab);
    QVERIFY(isClosedByMouse ? screen.click(chat.topLeft() + CloseButton)
                            : screen.press(u"ctrl+w"_s));
    QVERIFY(scenario->proxy->waitForProgram(u"WATCH -bob"_s));
    QVERIFY(scenario->proxy->waitForServer(u" 602 wanda bob "_s));
    QVERIFY(screen.waitFor([&] { return currentTab() == room; }));
    QCOMPARE(scenario->proxy->countFromProgram(u"WATCH +bob"_s), 1);
}

void TestEndToEndPeople::reportsWhenThePartnerComesAndGoes()
{
    QVERIFY(scenario->start());
    QVERIFY(openChat());
    QVERIFY(scenario->program.typeLine(u"are you there?"_s));
    QVERIFY(scenario->bob.waitFor(u"PRIVMSG bob :are you there?"_s));
    // That bob is online, which the server reports at once, and the question.
    QVERIFY(scenario->program.waitForLines(2));

    scenario->bob.send(u"QUIT :off"_s);
    QVERIFY(scenario->proxy->waitForServer(u" 601 wanda bob "_s));
    // The server reports it to the channel's users and to those who watch bob.
    QVERIFY(scenario->program.waitForLines(4));

    PlainClient again;
    QVERIFY(again.registerAt(scenario->server->port(), u"bob"_s));
    QVERIFY(scenario->proxy->waitForServer(u" 600 wanda bob "_s));
    QVERIFY(scenario->program.waitForLines(5));
}

void TestEndToEndPeople::blinksForAMentionUntilTheVisit()
{
    QVERIFY(scenario->start({u"#room"_s, u"#hall"_s}));
    QVERIFY(blinkingText().isEmpty());
    scenario->bob.send(u"PRIVMSG #hall :wanda: over here"_s);
    const QRect hall = watchBlinking();
    QVERIFY(!hall.isEmpty());
    QVERIFY(hall.left() > scenario->program.currentTab().right());

    QVERIFY(screen.click(hall.center()));
    QVERIFY(screen.waitFor([&] { return scenario->program.currentTab().contains(hall.center()); }));
    // The other channel blinks now; the visited one does not.
    scenario->bob.send(u"PRIVMSG #room :and back, wanda"_s);
    const QRect room = watchBlinking();
    QVERIFY(!room.isEmpty());
    QVERIFY(room.right() < hall.left());
}

QTEST_GUILESS_MAIN(TestEndToEndPeople)

#include "tst_EndToEndPeople.moc"
