// What a screen reader gets from the built program over an accessibility bus.

#include "AccessibilityBus.h"
#include "PreparedStore.h"
#include "ProgramOnScreen.h"
#include "ScriptedServer.h"
#include "VirtualScreen.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace {

// Of `AtspiStateType`.
constexpr int Focusable = 11;
constexpr int Focused = 12;

constexpr QRgb StampColour = qRgb(136, 136, 136);
constexpr int StampDistance = 40;

const auto Document = u"document"_s;

/// The program on a screen, its server, and the bus that a screen reader uses.
class Scene final
{
public:
    /// Starts the program, which shows its connect dialog.
    [[nodiscard]] bool start()
    {
        // The quotes keep the text as it is.
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

    /// Starts the program and lets it join #room, which is the current tab then.
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

    /// The texts that the conversation has reported as inserted.
    [[nodiscard]] QStringList insertedTexts() const
    {
        QStringList texts;
        for (const AccessibilityBus::Event &event : bus.events()) {
            if (event.type == "TextChanged:insert"_L1 && event.source == room)
                texts.append(event.value.toString());
        }
        return texts;
    }

    /// The names of the notifications that were shown.
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

using Opening = bool (*)(Scene &scene);

bool openConnectDialog(Scene &scene)
{
    return scene.start();
}

bool openChannel(Scene &scene)
{
    return scene.startSession();
}

bool openPreferences(Scene &scene)
{
    return scene.startSession() && scene.program.openPreferences();
}

} // namespace

Q_DECLARE_METATYPE(Opening)

class TestScreenReader final : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void findsANameAndARole_data();
    void findsANameAndARole();
    void readsAndReportsLines();
    void movesTheCaretRowByRow();
    void focusesLinks();
    void findsCharactersOnTheScreen();
};

void TestScreenReader::initTestCase()
{
    const QString missing = AccessibilityBus::missing();
    if (missing.isEmpty())
        return;
    QVERIFY2(!qEnvironmentVariableIsSet("CI"), qPrintable(missing));
    QSKIP(qPrintable(missing));
}

void TestScreenReader::findsANameAndARole_data()
{
    QTest::addColumn<Opening>("open");
    QTest::addColumn<int>("least");

    QTest::newRow("connect dialog") << Opening(openConnectDialog) << 12;
    QTest::newRow("channel") << Opening(openChannel) << 5;
    QTest::newRow("preferences") << Opening(openPreferences) << 15;
}

void TestScreenReader::findsANameAndARole()
{
    QFETCH(const Opening, open);
    QFETCH(const int, least);
    Scene scene;
    QVERIFY(open(scene));
    int count = 0;
    QStringList faults;
    scene.bus.walk(scene.root, [&](const AccessibleNode &node) {
        const QString role = scene.bus.role(node);
        // Qt gives that role to a tab widget, which passes its focus on to the tab bar.
        if (!scene.bus.hasState(node, Focusable) || role == "filler"_L1)
            return;
        ++count;
        const QString name = scene.bus.name(node);
        if (name.isEmpty() || role == "unknown"_L1)
            faults.append(u"%1 \"%2\" %3"_s.arg(role, name, node.path));
    });
    QVERIFY2(faults.isEmpty(), qPrintable(faults.join(u'\n')));
    QVERIFY2(count >= least, qPrintable(QString::number(count)));
}

void TestScreenReader::readsAndReportsLines()
{
    Scene scene;
    QVERIFY(scene.startSession());
    QCOMPARE(scene.allText(), u"[now] wanda: joined #room\n"_s);
    scene.bus.clearEvents();
    QVERIFY(scene.say(u"alice"_s, u"first message"_s));
    QVERIFY(scene.say(u"bob"_s, u"second"_s));
    QCOMPARE(scene.allText(),
             u"[now] wanda: joined #room\n[now] alice: first message\n[now] bob: second\n"_s);
    QTRY_COMPARE(scene.insertedTexts(),
                 (QStringList{u"[now] alice: first message\n"_s, u"[now] bob: second\n"_s}));
    QTRY_COMPARE(scene.announcedTexts(),
                 (QStringList{u"[now] alice: first message"_s, u"[now] bob: second"_s}));
}

void TestScreenReader::movesTheCaretRowByRow()
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

void TestScreenReader::findsCharactersOnTheScreen()
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
    const QRect drawn = scene.screen.whenStill(
            [&] { return scene.screen.findPoints(column, StampColour, StampDistance); });
    QVERIFY(!drawn.isEmpty());
    QVERIFY(stamp.contains(drawn));
    QVERIFY(stamp.height() < 3 * drawn.height());
}

QTEST_MAIN(TestScreenReader)
#include "tst_ScreenReader.moc"
