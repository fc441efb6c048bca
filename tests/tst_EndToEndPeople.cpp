// The built program in a real window, on a real server that tells who comes and goes: what is done
// there with channels and people by mouse.

#include "InspIrcd.h"
#include "Scenario.h"
#include "VirtualScreen.h"

#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

constexpr int OneTry = 5000; // In ms, of several.

// The text of lists and menus. The edges of letters are mixed with the ground, and the frames
// around are much paler.
constexpr QRgb TextColour = qRgb(0x33, 0x33, 0x33);
constexpr int TextDistance = 60;
constexpr int TwoRows = 20; // The text of two rows is higher than this, that of one is not.

constexpr QRgb BlinkColour = qRgb(0xff, 0xb8, 0x00);
constexpr int BlinkDistance = 30;

// From the upper left of a first row, the lower left of a last one, and the upper left of a tab.
constexpr QPoint IntoFirstRow{6, 5};
constexpr QPoint IntoLastRow{6, -4};
constexpr QPoint ToCloseButton{13, 17};

// From where the right button was pressed to the menu's second entry, which lies beside the names,
// and to where there is nothing but the menu.
constexpr QPoint ToWhois{40, 27};
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
    void asksAboutSomebodyFromTheUserList();
    void chatsInPrivateFromTheUserList_data();
    void chatsInPrivateFromTheUserList();
    void tellsWhenThePartnerComesAndGoes();
    void blinksForAMentionUntilTheVisit();

private:
    QRect shownText(const QRect &area) const;
    /// The same, once two rows or more are there and nothing changes any more.
    QRect shownRows(const QRect &area) const;
    /// A place on the first entry of the user list: bob's, who is the operator.
    QPoint placeOfBob() const;
    /// Double clicks until the program sends this line: a busy machine may take the clicks for two
    /// single ones. For what may be done twice.
    bool doubleClickFor(const QString &line, QPoint place) const;
    /// Opens a private conversation with bob by a double click on his name.
    bool openChat();
    /// Where tabs are in the blink colour now.
    QRect blinkingText() const;
    /// Where tabs blink, watched until all of it has come and gone twice. Nothing if it does not.
    QRect watchBlinking() const;

    VirtualScreen screen;
    std::unique_ptr<Scenario> scenario;
};

void TestEndToEndPeople::initTestCase()
{
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

QPoint TestEndToEndPeople::placeOfBob() const
{
    return shownRows(scenario->program.userNames()).topLeft() + IntoFirstRow;
}

bool TestEndToEndPeople::doubleClickFor(const QString &line, QPoint place) const
{
    return screen.waitFor([&] {
        return screen.doubleClick(place)
               && QTest::qWaitFor([&] { return scenario->proxy->countFromProgram(line) > 0; },
                                  OneTry);
    });
}

bool TestEndToEndPeople::openChat()
{
    return doubleClickFor(u"WATCH +bob"_s, placeOfBob())
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
        const auto hasTurned = [&] {
            const QRect now = blinkingText();
            found |= now;
            return now.isEmpty() != isOn;
        };
        if (!screen.waitFor(hasTurned))
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
    // The line below the list has the keyboard, and only what it finds stays.
    QVERIFY(screen.type(u"hall"_s));
    QVERIFY(screen.waitFor([&] { return shownText(names).height() < TwoRows; }));
    QVERIFY(screen.press(u"ctrl+a"_s));
    QVERIFY(screen.press(u"Delete"_s));
    const QRect rows = shownRows(names);
    QVERIFY(!rows.isEmpty());

    // The channel with fewer people is the lower one.
    QVERIFY(doubleClickFor(u"JOIN #hall"_s, rows.bottomLeft() + IntoLastRow));
    QVERIFY(scenario->bob.waitFor(u" JOIN :#hall"_s));
    QVERIFY(scenario->program.typeLine(u"here I am"_s));
    QVERIFY(scenario->bob.waitFor(u"PRIVMSG #hall :here I am"_s));
}

void TestEndToEndPeople::asksAboutSomebodyFromTheUserList()
{
    QVERIFY(scenario->start());
    const QPoint bob = placeOfBob();
    const QRect menu = MenuBelowNames.translated(bob);
    QVERIFY(shownText(menu).isEmpty());
    QVERIFY(screen.click(bob, 3));
    QVERIFY(screen.waitFor([&] { return !shownText(menu).isEmpty(); }));

    QVERIFY(screen.click(bob + ToWhois));
    QVERIFY(scenario->proxy->waitForProgram(u"WHOIS bob"_s));
    QVERIFY(scenario->proxy->waitForServer(u" 318 wanda bob "_s));
    // Behind our own join: who it is, by which server, idle for how long, and in which channels.
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
    QVERIFY(isClosedByMouse ? screen.click(chat.topLeft() + ToCloseButton)
                            : screen.press(u"ctrl+w"_s));
    QVERIFY(scenario->proxy->waitForProgram(u"WATCH -bob"_s));
    QVERIFY(scenario->proxy->waitForServer(u" 602 wanda bob "_s));
    QVERIFY(screen.waitFor([&] { return currentTab() == room; }));
    QCOMPARE(scenario->proxy->countFromProgram(u"WATCH +bob"_s), 1);
}

void TestEndToEndPeople::tellsWhenThePartnerComesAndGoes()
{
    QVERIFY(scenario->start());
    QVERIFY(openChat());
    QVERIFY(scenario->program.typeLine(u"are you there?"_s));
    QVERIFY(scenario->bob.waitFor(u"PRIVMSG bob :are you there?"_s));
    // That he is there, which the server tells at once, and the question.
    QVERIFY(scenario->program.waitForLines(2));

    scenario->bob.send(u"QUIT :off"_s);
    QVERIFY(scenario->proxy->waitForServer(u" 601 wanda bob "_s));
    // The server tells it twice: to the channel's people and to those who watch.
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
    // While the channel that was left blinks, the visited one is seen to be still.
    scenario->bob.send(u"PRIVMSG #room :and back, wanda"_s);
    const QRect room = watchBlinking();
    QVERIFY(!room.isEmpty());
    QVERIFY(room.right() < hall.left());
}

QTEST_GUILESS_MAIN(TestEndToEndPeople)

#include "tst_EndToEndPeople.moc"
