// The built program as a screen reader sees it over an accessibility bus.

#include "AccessibilityBus.h"
#include "PreparedStore.h"
#include "ProgramOnScreen.h"
#include "RequiredTools.h"
#include "ScriptedServer.h"
#include "VirtualScreen.h"
#include "Waiting.h"

#include <QTest>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

// Values of `AtspiStateType`.
constexpr int Focusable = 11;
constexpr int Focused = 12;

constexpr QRgb StampColour = qRgb(136, 136, 136);
constexpr int StampColourTolerance = 40;

const auto Document = u"document"_s;

struct Step
{
    QString key;
    QString focusedName; ///< Once the key has been handled.
};

using Steps = QList<Step>;

/// The program on a screen, its server, and the bus that a screen reader uses.
class Scene final
{
public:
    /// Starts the program, which shows its connect dialog.
    [[nodiscard]] bool start()
    {
        // The quotes make it a literal text.
        store.setValue(u"timestampFormat"_s, u"'[now]'"_s);
        store.addServer({.host = u"127.0.0.1"_s,
                         .port = server.port(),
                         .nickname = u"wanda"_s,
                         .realName = u"Wanda"_s,
                         .channels = {u"#room"_s}});
        if (!screen.start() || !bus.start() || !bus.listen() || !program.start(bus.wrapper()))
            return false;
        root = bus.waitForProgram(u"Velmora"_s).value_or(AccessibleNode());
        return !root.path.isEmpty();
    }

    /// Starts the program and joins #room, whose tab becomes the current one.
    [[nodiscard]] bool startSession()
    {
        if (!start() || !program.pressConnect() || !server.waitForClient()
            || !server.waitForLine(u"NICK wanda"_s))
            return false;
        server.send(u":irc.test 001 wanda :Welcome"_s);
        server.send(u":wanda!u@h JOIN #room"_s);
        const auto isJoined = [this] {
            room = bus.find(root, Document, u"Conversation #room"_s).value_or(AccessibleNode());
            return !room.path.isEmpty() && bus.textLength(room) > 0;
        };
        return server.waitForLine(u"NAMES #room"_s) && screen.waitFor(isJoined);
    }

    /// Starts a session as operator of #room with alice, who also sends a private message. The
    /// server answers requests for the channel list.
    [[nodiscard]] bool startBusySession()
    {
        QObject::connect(&server, &ScriptedServer::lineReceived, &server,
                         [this](int, const QString &line) {
                             if (line != "LIST"_L1)
                                 return;
                             server.send(u":irc.test 322 wanda #hall 2 :topic"_s);
                             server.send(u":irc.test 323 wanda :End of /LIST"_s);
                         });
        if (!startSession())
            return false;
        server.send(u":irc.test 353 wanda = #room :@wanda alice"_s);
        server.send(u":irc.test 366 wanda #room :End of /NAMES list."_s);
        server.send(u":alice!u@h PRIVMSG wanda :hello"_s);
        return screen.waitFor([this] {
            return bus.find(root, u"page tab"_s, u"alice, new message"_s).has_value();
        });
    }

    /// Sends a line to #room and waits until the conversation has it.
    [[nodiscard]] bool say(const QString &nick, const QString &text)
    {
        server.send(u":%1!u@h PRIVMSG #room :%2"_s.arg(nick, text));
        return screen.waitFor([&] { return allText().endsWith(text + u'\n'); });
    }

    [[nodiscard]] QString allText() const { return bus.text(room, 0, -1); }

    /// Moves the focus from the input line to the conversation.
    [[nodiscard]] bool focusConversation() const
    {
        return screen.press(u"shift+Tab"_s) && screen.press(u"shift+Tab"_s)
               && screen.waitFor([this] { return bus.hasState(room, Focused); });
    }

    /// Returns the control that last reported the focus.
    [[nodiscard]] AccessibleNode focused() const
    {
        const auto &events = bus.events();
        const auto last = std::find_if(events.crbegin(), events.crend(), [](const auto &event) {
            return event.type == "StateChanged:focused"_L1 && event.first == 1;
        });
        return last == events.crend() ? AccessibleNode() : last->source;
    }

    [[nodiscard]] QString focusedName() const { return bus.name(focused()); }

    /// Presses the key and waits for the focus, and for the channel list if it was requested.
    [[nodiscard]] bool press(const Step &step) const
    {
        const auto isDone = [&] {
            return focusedName() == step.focusedName
                   && (!server.lines().contains(u"LIST"_s)
                       || bus.find(root, u"tree item"_s, u"#hall"_s).has_value());
        };
        return screen.press(step.key) && screen.waitFor(isDone);
    }

    /// Returns the window, menu or popup that contains the focused control.
    [[nodiscard]] AccessibleNode windowInFocus() const
    {
        AccessibleNode node = focused();
        AccessibleNode parent = bus.parent(node);
        // Qt lists no popup among its parent's children.
        while (parent != root && bus.children(parent).contains(node)) {
            node = parent;
            parent = bus.parent(node);
        }
        return node;
    }

    /// Returns the texts that the conversation reported as inserted.
    [[nodiscard]] QStringList insertedTexts() const
    {
        QStringList texts;
        for (const AccessibilityBus::Event &event : bus.events()) {
            if (event.type == "TextChanged:insert"_L1 && event.source == room)
                texts.append(event.value.toString());
        }
        return texts;
    }

    /// Returns the names of the notifications shown.
    [[nodiscard]] QStringList announcedTexts() const
    {
        QStringList texts;
        for (const AccessibilityBus::Event &event : bus.events()) {
            if (event.type == "StateChanged:showing"_L1
                && bus.role(event.source) == "notification"_L1)
                texts.append(bus.name(event.source));
        }
        return texts;
    }

    VirtualScreen screen;
    AccessibilityBus bus;
    ScriptedServer server;
    PreparedStore store;
    ProgramOnScreen program{screen, store};
    AccessibleNode root;
    AccessibleNode room;
};

constexpr bool ConnectDialog = false;
constexpr bool MainWindow = true;

} // namespace

class TestScreenReader final : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void controlsHaveNamesAndRoles_data();
    void controlsHaveNamesAndRoles();
    void reportsLines();
    void movesCaretByRow();
    void focusesLinks();
    void reportsCharacterExtents();
};

void TestScreenReader::initTestCase()
{
    SKIP_IF_MISSING(AccessibilityBus::missingParts());
    SKIP_IF_MISSING(VirtualScreen::missingParts());
}

void TestScreenReader::controlsHaveNamesAndRoles_data()
{
    QTest::addColumn<bool>("isMainWindow");
    QTest::addColumn<Steps>("steps");
    QTest::addColumn<int>("minimum");

    const Step toEmojis{u"Tab"_s, u"Insert emoji"_s};
    const Step toTabs{u"Tab"_s, u"#room"_s};
    const Step toList{u"l"_s, u"Search channels"_s};
    const Step openUser{u"alt+u"_s, u"Marked Away..."_s};
    const Step openChannel{u"alt+c"_s, u"Join channel..."_s};
    const Step openSettings{u"Right"_s, u"Preferences..."_s};
    const Step openAbout{u"Right"_s, u"About Velmora"_s};
    const Steps toServers{{u"Tab"_s, u"Port:"_s},   {u"Tab"_s, u"Add"_s},
                          {u"Tab"_s, u"Edit"_s},    {u"Tab"_s, u"Delete"_s},
                          {u"Tab"_s, u"Servers"_s}, {u"Menu"_s, u"Servers"_s},
                          {u"Down"_s, u"Edit"_s}};

    QTest::newRow("connect dialog") << ConnectDialog << Steps{} << 12;
    QTest::newRow("server form") << ConnectDialog
                                 << Steps{{u"Tab"_s, u"Port:"_s},
                                          {u"Tab"_s, u"Add"_s},
                                          {u"space"_s, u"IRC server:"_s}}
                                 << 11;
    QTest::newRow("server's menu") << ConnectDialog << toServers << 3;
    QTest::newRow("delete question")
            << ConnectDialog << toServers + Steps{{u"Down"_s, u"Delete"_s}, {u"Return"_s, u"No"_s}}
            << 2;
    QTest::newRow("channel") << MainWindow << Steps{} << 33;
    QTest::newRow("private conversation")
            << MainWindow << Steps{toEmojis, toTabs, {u"Right"_s, u"alice"_s}} << 31;
    QTest::newRow("completion") << MainWindow
                                << Steps{{u"a"_s, u"Message"_s},
                                         {u"l"_s, u"Message"_s},
                                         {u"Down"_s, u"alice"_s}}
                                << 1;
    QTest::newRow("emoji picker") << MainWindow << Steps{toEmojis, {u"space"_s, u"grinning face"_s}}
                                  << 96;
    QTest::newRow("topic editor")
            << MainWindow
            << Steps{toEmojis, toTabs, {u"Tab"_s, u"Edit topic"_s}, {u"space"_s, u"Topic"_s}} << 9;
    QTest::newRow("user's menu") << MainWindow
                                 << Steps{{u"shift+Tab"_s, u"Users"_s},
                                          {u"Down"_s, u"alice"_s},
                                          {u"Menu"_s, u"alice"_s},
                                          {u"Down"_s, u"Open Private Chat"_s}}
                                 << 5;
    QTest::newRow("tab's menu")
            << MainWindow
            << Steps{toEmojis, toTabs, {u"Menu"_s, u"#room"_s}, {u"Down"_s, u"Close"_s}} << 2;
    QTest::newRow("channel list") << MainWindow << Steps{openChannel, toList} << 33;
    QTest::newRow("channel list's menu") << MainWindow
                                         << Steps{openChannel,
                                                  toList,
                                                  {u"Tab"_s, u"List"_s},
                                                  {u"Tab"_s, u"Channels"_s},
                                                  {u"Menu"_s, u"Channels"_s},
                                                  {u"Down"_s, u"Join #hall"_s}}
                                         << 2;
    QTest::newRow("away prompt") << MainWindow << Steps{openUser, {u"Return"_s, u"Away message:"_s}}
                                 << 3;
    QTest::newRow("nick prompt") << MainWindow
                                 << Steps{openUser,
                                          {u"Down"_s, u"Change Nick..."_s},
                                          {u"Return"_s, u"New nickname:"_s}}
                                 << 3;
    QTest::newRow("join prompt") << MainWindow
                                 << Steps{openChannel, {u"j"_s, u"Channel name (e.g. #linux):"_s}}
                                 << 3;
    QTest::newRow("preferences") << MainWindow
                                 << Steps{openChannel, openSettings, {u"Return"_s, u"Interface"_s}}
                                 << 15;
    QTest::newRow("about") << MainWindow
                           << Steps{openChannel, openSettings, openAbout, {u"Return"_s, u"OK"_s}}
                           << 1;
    QTest::newRow("help") << MainWindow
                          << Steps{openChannel,
                                   openSettings,
                                   openAbout,
                                   {u"Down"_s, u"Help"_s},
                                   {u"Return"_s, u"OK"_s},
                                   {u"Tab"_s, u"Basic IRC commands"_s}}
                          << 1;
}

void TestScreenReader::controlsHaveNamesAndRoles()
{
    QFETCH(const bool, isMainWindow);
    QFETCH(const Steps, steps);
    QFETCH(const int, minimum);
    Scene scene;
    QVERIFY(isMainWindow ? scene.startBusySession() : scene.start());
    const QString first = isMainWindow ? u"Message"_s : u"Server:"_s;
    QVERIFY(scene.screen.waitFor([&] { return scene.focusedName() == first; }));
    for (const Step &step : steps) {
        QVERIFY2(scene.press(step),
                 qPrintable(u"%1: %2"_s.arg(step.focusedName, scene.focusedName())));
    }
    int count = 0;
    QStringList faults;
    scene.bus.visitAll(scene.windowInFocus(), [&](const AccessibleNode &node) {
        const QString role = scene.bus.role(node);
        // Qt reports "filler" for a tab widget, which passes its focus on to the tab bar.
        const bool isControl = scene.bus.hasState(node, Focusable) && role != "filler"_L1;
        if (!isControl && !role.endsWith("menu item"_L1))
            return;
        ++count;
        const QString name = scene.bus.name(node);
        if (name.isEmpty() || role == "unknown"_L1)
            faults.append(u"%1 \"%2\" %3"_s.arg(role, name, node.path));
    });
    QVERIFY2(faults.isEmpty(), qPrintable(faults.join(u'\n')));
    QVERIFY2(count >= minimum, qPrintable(QString::number(count)));
}

void TestScreenReader::reportsLines()
{
    Scene scene;
    QVERIFY(scene.startSession());
    QCOMPARE(scene.allText(), u"[now] wanda: joined #room\n"_s);
    scene.bus.clearEvents();
    QVERIFY(scene.say(u"alice"_s, u"first message"_s));
    QVERIFY(scene.say(u"bob"_s, u"second"_s));
    QCOMPARE(scene.allText(),
             u"[now] wanda: joined #room\n[now] alice: first message\n[now] bob: second\n"_s);
    QTRY_COMPARE_WITH_TIMEOUT(
            scene.insertedTexts(),
            (QStringList{u"[now] alice: first message\n"_s, u"[now] bob: second\n"_s}),
            WaitTimeout);
    QTRY_COMPARE_WITH_TIMEOUT(
            scene.announcedTexts(),
            (QStringList{u"[now] alice: first message"_s, u"[now] bob: second"_s}), WaitTimeout);
}

void TestScreenReader::movesCaretByRow()
{
    Scene scene;
    QVERIFY(scene.startSession());
    for (const QString &text : {u"one"_s, u"two"_s, u"three"_s})
        QVERIFY(scene.say(u"alice"_s, text));
    QVERIFY(scene.focusConversation());
    for (const QString &text : {u"three"_s, u"two"_s, u"one"_s}) {
        QVERIFY(scene.screen.press(u"Up"_s));
        const QString line = u"[now] alice: %1\n"_s.arg(text);
        QVERIFY(scene.screen.waitFor(
                [&] { return scene.bus.lineAt(scene.room, scene.bus.caret(scene.room)) == line; }));
    }
}

void TestScreenReader::focusesLinks()
{
    Scene scene;
    QVERIFY(scene.startSession());
    QVERIFY(scene.say(u"alice"_s, u"see http://a.org/b"_s));
    const QList<AccessibleNode> links = scene.bus.children(scene.room);
    QCOMPARE(links.size(), 1);
    QCOMPARE(scene.bus.role(links.first()), u"link"_s);
    QCOMPARE(scene.bus.name(links.first()), u"http://a.org/b"_s);

    QVERIFY(scene.focusConversation());
    QVERIFY(scene.screen.press(u"ctrl+Home"_s));
    scene.bus.clearEvents();
    QVERIFY(scene.screen.press(u"Tab"_s));
    const auto isReported = [&] {
        const auto &events = scene.bus.events();
        return std::any_of(events.cbegin(), events.cend(), [&](const auto &event) {
            return event.type == "StateChanged:focused"_L1 && event.first == 1
                   && event.source == links.first();
        });
    };
    QVERIFY(scene.screen.waitFor(isReported));
    QVERIFY(scene.bus.hasState(links.first(), Focused));
}

void TestScreenReader::reportsCharacterExtents()
{
    Scene scene;
    QVERIFY(scene.startSession());
    QRect stamp;
    for (int offset = 0; offset < 5; ++offset)
        stamp |= scene.bus.characterExtents(scene.room, offset);
    const QRect view = scene.bus.extents(scene.room);
    QVERIFY(view.contains(stamp));
    const QRect column(view.left() + 2, view.top() + 2, stamp.right() - view.left(),
                       view.height() - 4);
    const QRect drawn = scene.screen.waitUntilStable(
            [&] { return scene.screen.findPixels(column, StampColour, StampColourTolerance); });
    QVERIFY(!drawn.isEmpty());
    QVERIFY(stamp.contains(drawn));
    QVERIFY(stamp.height() < 3 * drawn.height());
}

QTEST_MAIN(TestScreenReader)
#include "tst_ScreenReader.moc"
