// End-to-end tests of the keyboard focus, and of copy and paste, with a real window and server.

#include "InspIrcd.h"
#include "RequiredTools.h"
#include "Scenario.h"
#include "VirtualScreen.h"

#include <QRegularExpression>
#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

// Relative to the upper left corner of the main window.
constexpr QPoint InConversation{600, 400};
constexpr int MiddleButton = 2;
constexpr int MenuPixels = 1000;     // Opening a menu changes more pixels than this.
constexpr int AttemptTimeout = 5000; // In ms, for one of several attempts.

} // namespace

class TestEndToEndKeyboard final : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void typesIntoTheInputLineFromAConversation();
    void copiesRowsAsOneLineOfInput_data();
    void copiesRowsAsOneLineOfInput();
    void switchesTabs();
    void choosesAnEmoji_data();
    void choosesAnEmoji();
    void reachesBothMenusWithOneMnemonic();

private:
    [[nodiscard]] bool clickConversation() const;
    [[nodiscard]] bool typeLine(const QString &text) const;

    VirtualScreen screen;
    std::unique_ptr<Scenario> scenario;
};

void TestEndToEndKeyboard::initTestCase()
{
    SKIP_IF_MISSING(VirtualScreen::missingParts());
    REQUIRE_TOOLS(u"inspircd"_s);
    QVERIFY2(screen.start(), qPrintable(screen.failure()));
}

void TestEndToEndKeyboard::init()
{
    scenario = std::make_unique<Scenario>(screen, std::make_unique<InspIrcd>());
}

void TestEndToEndKeyboard::cleanup()
{
    if (QTest::currentTestFailed())
        scenario->report(QString::fromLatin1(QTest::currentTestFunction()));
    QVERIFY(scenario->end());
    QCOMPARE(scenario->program.errorOutput(), QString());
    scenario.reset();
}

bool TestEndToEndKeyboard::clickConversation() const
{
    return screen.click(screen.activeWindow().topLeft() + InConversation);
}

bool TestEndToEndKeyboard::typeLine(const QString &text) const
{
    return screen.type(text) && screen.press(u"Return"_s);
}

void TestEndToEndKeyboard::typesIntoTheInputLineFromAConversation()
{
    QVERIFY(scenario->start());
    QVERIFY(clickConversation());
    QVERIFY(typeLine(u"hello there"_s));
    QVERIFY(scenario->bob.waitFor(u"PRIVMSG #room :hello there"_s));
}

void TestEndToEndKeyboard::copiesRowsAsOneLineOfInput_data()
{
    QTest::addColumn<bool>("isPrimary");
    QTest::newRow("clipboard") << false;
    QTest::newRow("primary selection") << true;
}

void TestEndToEndKeyboard::copiesRowsAsOneLineOfInput()
{
    QFETCH(const bool, isPrimary);
    QVERIFY(scenario->start());
    scenario->bob.send(u"PRIVMSG #room :one  two"_s);
    scenario->bob.send(u"PRIVMSG #room :QUIT :three"_s);
    QVERIFY(scenario->program.waitForLines(3));
    QVERIFY(clickConversation());
    QVERIFY(screen.press(u"ctrl+a"_s));
    if (isPrimary) {
        QVERIFY(screen.click(scenario->program.inputLine(), MiddleButton));
    } else {
        QVERIFY(screen.press(u"ctrl+c"_s));
        QVERIFY(screen.press(u"ctrl+v"_s));
    }
    QVERIFY(screen.press(u"Return"_s));
    QVERIFY(scenario->bob.waitFor(u"PRIVMSG #room :["_s));
    static const QRegularExpression expected(
            uR"(^>> PRIVMSG #room :\[[\d:]+\] wanda joined #room \[[\d:]+\] bob one  two )"
            uR"(\[[\d:]+\] bob QUIT :three$)"_s);
    const QStringList sent = scenario->sentByProgram().filter(u"PRIVMSG"_s);
    QCOMPARE(sent.size(), 1);
    QVERIFY2(expected.match(sent.first()).hasMatch(), qPrintable(sent.first()));
}

void TestEndToEndKeyboard::switchesTabs()
{
    QVERIFY(scenario->start({u"#room"_s, u"#hall"_s}));
    QVERIFY(clickConversation());
    QVERIFY(screen.press(u"ctrl+Tab"_s));
    QVERIFY(typeLine(u"one"_s));
    QVERIFY(scenario->proxy->waitForProgram(u"PRIVMSG #hall :one"_s));
    // Now from the input line.
    QVERIFY(screen.press(u"ctrl+shift+Tab"_s));
    QVERIFY(typeLine(u"two"_s));
    QVERIFY(scenario->proxy->waitForProgram(u"PRIVMSG #room :two"_s));
    QVERIFY(screen.press(u"ctrl+Next"_s));
    QVERIFY(typeLine(u"three"_s));
    QVERIFY(scenario->proxy->waitForProgram(u"PRIVMSG #hall :three"_s));
    QVERIFY(screen.press(u"ctrl+Prior"_s));
    QVERIFY(typeLine(u"four"_s));
    QVERIFY(scenario->proxy->waitForProgram(u"PRIVMSG #room :four"_s));
    // Also from the search line of the channel list.
    QVERIFY(typeLine(u"/list"_s));
    QVERIFY(scenario->proxy->waitForServer(u" 323 wanda "_s));
    QVERIFY(screen.press(u"ctrl+Prior"_s));
    QVERIFY(typeLine(u"five"_s));
    QVERIFY(scenario->proxy->waitForProgram(u"PRIVMSG #hall :five"_s));
}

void TestEndToEndKeyboard::choosesAnEmoji_data()
{
    QTest::addColumn<QStringList>("keys");
    QTest::addColumn<QString>("sent");
    QTest::newRow("by Return") << QStringList{u"Right"_s, u"Down"_s, u"Return"_s} << u"oh 🙂"_s;
    QTest::newRow("closes by Escape") << QStringList{u"Right"_s, u"Escape"_s} << u"oh"_s;
}

void TestEndToEndKeyboard::choosesAnEmoji()
{
    QFETCH(const QStringList, keys);
    QFETCH(const QString, sent);
    QVERIFY(scenario->start());
    QVERIFY(screen.type(u"oh "_s));
    QVERIFY(screen.press(u"Tab"_s));
    QVERIFY(screen.press(u"space"_s));
    for (const QString &key : keys)
        QVERIFY(screen.press(key));
    // Repeated, since the picker receives keys until it has closed.
    QVERIFY(screen.waitFor([&] {
        return screen.click(scenario->program.inputLine()) && screen.press(u"Return"_s)
               && QTest::qWaitFor(
                       [&] {
                           return scenario->proxy->countFromProgram(u"PRIVMSG #room :"_s + sent)
                                  > 0;
                       },
                       AttemptTimeout);
    }));
}

void TestEndToEndKeyboard::reachesBothMenusWithOneMnemonic()
{
    QVERIFY(scenario->start());
    // The first press opens Server, the second one Settings.
    for (int i = 0; i < 2; ++i) {
        const QImage before = screen.screenshot();
        QVERIFY(screen.press(u"alt+s"_s));
        QVERIFY(screen.waitFor([&] { return screen.countChangedPixels(before) > MenuPixels; }));
    }
    QVERIFY(screen.press(u"p"_s));
    QVERIFY(screen.waitFor([this] { return screen.activeTitle() == u"Preferences"_s; }));
    QVERIFY(scenario->program.closeDialog());
}

QTEST_GUILESS_MAIN(TestEndToEndKeyboard)

#include "tst_EndToEndKeyboard.moc"
