// End-to-end tests of the built program in a Wayland session. The log of its protocol messages
// shows the popups, a scripted server what it sends.

#include "Child.h"
#include "PreparedStore.h"
#include "ProgramOnScreen.h"
#include "RequiredTools.h"
#include "ScriptedServer.h"
#include "Waiting.h"
#include "WaylandScreen.h"

#include <QApplication>
#include <QFile>
#include <QMargins>
#include <QRegularExpression>
#include <QTest>
#include <QWidget>

#include <memory>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

const auto MainTitle = u"Velmora"_s;
const auto ConnectTitle = u"Connect to IRC Server"_s;
const auto PreferencesTitle = u"Preferences"_s;
const auto JoinTitle = u"Join Channel"_s;
const auto OtherTitle = u"Another program"_s;

constexpr int Left = 1;
constexpr int Middle = 2;
constexpr int Right = 3;

// Relative to the corners of the main window.
constexpr QPoint SettingsMenu(190, 10);
constexpr QPoint RoomTab(130, 45);
constexpr QPoint View(400, 300);
constexpr QPoint InputFromBottomLeft(200, -50);
constexpr int InputHeight = 36;
constexpr QPoint EmojiFromBottomRight(-28, -50);

// Relative to the upper left corner of the picker or the dialog.
constexpr QPoint FirstEmoji(28, 50);
constexpr QPoint TimestampCombo(350, 130);

// With this argument, the test program only shows a window.
constexpr QLatin1StringView ShowWindow = "--show-window"_L1;

int showWindow(int argc, char **argv)
{
    const QApplication application(argc, argv);
    QWidget window;
    window.setWindowTitle(OtherTitle);
    window.resize(300, 200);
    window.show();
    return QApplication::exec();
}

// The program with a session in #room with alice and bob.
class Scene final
{
public:
    explicit Scene(WaylandScreen &waylandScreen)
        : screen(waylandScreen)
    {
        log.setFileName(folder.filePath(u"log"_s));
    }

    [[nodiscard]] bool start()
    {
        store.addServer({.host = u"127.0.0.1"_s,
                         .port = server.port(),
                         .nickname = u"wanda"_s,
                         .realName = u"Wanda"_s,
                         .channels = {u"#room"_s}});
        QProcessEnvironment environment = screen.environment();
        environment.insert(u"XDG_CONFIG_HOME"_s, store.configHome());
        environment.insert(u"WAYLAND_DEBUG"_s, u"client"_s);
        // Qt's Wayland plugin leaks clipboard contents and events at exit.
        environment.insert(u"ASAN_OPTIONS"_s,
                           qEnvironmentVariable("ASAN_OPTIONS") + u":detect_leaks=0"_s);
        program.setProcessEnvironment(environment);
        program.setStandardErrorFile(log.fileName());
        return program.launch(ProgramOnScreen::path()) && log.open(QIODevice::ReadOnly)
               && !screen.waitForFocus(ConnectTitle).isEmpty();
    }

    // Connects by keyboard and joins the channel.
    [[nodiscard]] bool joinChannel()
    {
        if (!start() || !screen.input.press(u"Return"_s) || !server.waitForClient()
            || !server.waitForLine(u"USER wanda 0 * :Wanda"_s))
            return false;
        server.send(u":irc.test 001 wanda :Welcome"_s);
        if (!server.waitForLine(u"JOIN #room"_s))
            return false;
        server.send(u":wanda!u@h JOIN #room"_s);
        server.send(u":irc.test 353 wanda = #room :wanda @alice bob bobby bertha"_s);
        server.send(u":irc.test 366 wanda #room :End"_s);
        if (screen.waitForFocus(MainTitle).isEmpty() || !server.waitForLine(u"NAMES #room"_s)
            || !typeLine(u"hello"_s))
            return false;
        window = screen.waitForFocus(MainTitle);
        return !window.isEmpty();
    }

    // Types the text into the input line, presses Return and waits until the server has received
    // it.
    [[nodiscard]] bool typeLine(const QString &text)
    {
        return screen.input.type(text) && sends(text);
    }
    // Presses Return in the input line and waits until the server has received this text.
    [[nodiscard]] bool sends(const QString &text)
    {
        return screen.input.press(u"Return"_s) && server.waitForLine(u"PRIVMSG #room :"_s + text);
    }

    // Does something and waits for the popup that it opens. Returns the popup's area on the screen;
    // empty if none opens.
    template <typename Action>
    [[nodiscard]] QRect popupOf(const Action &action)
    {
        static const QRegularExpression placed(
                u"xdg_popup@\\d+\\.configure\\((-?\\d+), (-?\\d+), (\\d+), (\\d+)\\)"_s);
        log.seek(log.size());
        if (!action())
            return {};
        QRegularExpressionMatch match;
        QString text;
        const auto isPlaced = [&] {
            text += QString::fromUtf8(log.readAll());
            match = placed.match(text);
            return match.hasMatch();
        };
        if (!QTest::qWaitFor(isPlaced, WaitTimeout))
            return {};
        const auto value = [&match](int index) { return match.captured(index).toInt(); };
        return QRect(value(1), value(2), value(3), value(4)).translated(window.topLeft());
    }

    [[nodiscard]] QRect inputLine() const
    {
        QRect line(0, 0, window.width(), InputHeight);
        line.moveCenter(
                QPoint(window.center().x(), (window.bottomLeft() + InputFromBottomLeft).y()));
        return line;
    }
    [[nodiscard]] bool clickInput(int button)
    {
        return screen.input.click(window.bottomLeft() + InputFromBottomLeft, button);
    }

    [[nodiscard]] QStringList titles() const
    {
        QStringList found;
        const QList<WaylandScreen::Window> all = screen.windows();
        for (const WaylandScreen::Window &each : all)
            found.append(each.title);
        found.sort();
        return found;
    }
    [[nodiscard]] bool waitForTitles(const QStringList &expected) const
    {
        return QTest::qWaitFor([&] { return titles() == expected; }, WaitTimeout);
    }

    // Returns what the program has printed except the protocol log.
    [[nodiscard]] QStringList warnings()
    {
        log.seek(0);
        const QStringList lines = QString::fromUtf8(log.readAll()).split(u'\n', Qt::SkipEmptyParts);
        static const QRegularExpression message(u"^\\[ *\\d+\\.\\d+\\] "_s);
        QStringList others;
        for (const QString &line : lines) {
            if (!line.contains(message))
                others.append(line);
        }
        return others;
    }

    WaylandScreen &screen;
    QTemporaryDir folder;
    QFile log;
    ScriptedServer server;
    PreparedStore store;
    Child program;
    QRect window;
};

// CPU time of the process, in ms.
qint64 cpuTime(qint64 process)
{
    QFile file(u"/proc/%1/stat"_s.arg(process));
    if (!file.open(QIODevice::ReadOnly))
        return -1;
    // The second field is a name in parentheses; user and system time are fields 14 and 15.
    const QList<QByteArray> fields = file.readAll().split(')').last().simplified().split(' ');
    return (fields.value(11).toLongLong() + fields.value(12).toLongLong()) * 1000
           / ::sysconf(_SC_CLK_TCK);
}

} // namespace

class TestEndToEndWayland final : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void talksBothWays();
    void copiesAndPastes_data();
    void copiesAndPastes();
    void joinsFromTheMenuByKeyboard();
    void opensATabsMenuOverTheInactiveWindow();
    void insertsAnEmoji();
    void completesANickAboveTheLine();
    void keepsThePreferencesOpenWhenAListCloses_data();
    void keepsThePreferencesOpenWhenAListCloses();
    void usesLittleCpuWhileIdle();

private:
    WaylandScreen screen;
    std::unique_ptr<Scene> scene;
};

void TestEndToEndWayland::initTestCase()
{
    SKIP_IF_MISSING(WaylandScreen::missingParts());
    QVERIFY2(screen.start(), qPrintable(screen.failure()));
}

void TestEndToEndWayland::init()
{
    scene = std::make_unique<Scene>(screen);
    QVERIFY(scene->joinChannel());
}

void TestEndToEndWayland::cleanup()
{
    if (!scene)
        return;
    if (QTest::currentTestFailed())
        screen.saveScreenshot(QString::fromLatin1(QTest::currentTestFunction()));
    scene->program.stop();
    QCOMPARE(scene->warnings(), QStringList());
    scene.reset();
}

void TestEndToEndWayland::talksBothWays()
{
    QVERIFY(scene->typeLine(u"Good evening, alice!"_s));
    scene->server.send(u":alice!u@h PRIVMSG #room :Good evening, wanda"_s);
    // Copy the whole conversation to the clipboard.
    const auto isShown = [this] {
        return screen.input.click(scene->window.topLeft() + View, Left)
               && screen.input.press(u"ctrl+a"_s) && screen.input.press(u"ctrl+c"_s)
               && screen.pasted(false).contains(u"Good evening, wanda"_s);
    };
    QVERIFY(QTest::qWaitFor(isShown, WaitTimeout));
}

void TestEndToEndWayland::copiesAndPastes_data()
{
    QTest::addColumn<bool>("primary");

    QTest::newRow("clipboard") << false;
    QTest::newRow("primary selection") << true;
}

void TestEndToEndWayland::copiesAndPastes()
{
    QFETCH(const bool, primary);
    QVERIFY(screen.copy(u"from another program"_s, primary));
    QVERIFY(scene->clickInput(primary ? Middle : Left));
    QVERIFY(primary || screen.input.press(u"ctrl+v"_s));
    QVERIFY(scene->sends(u"from another program"_s));

    QVERIFY(screen.input.type(u"to another program"_s));
    QVERIFY(screen.input.press(u"ctrl+a"_s));
    QVERIFY(primary || screen.input.press(u"ctrl+c"_s));
    const auto isCopied = [&] { return screen.pasted(primary) == u"to another program"_s; };
    QVERIFY(QTest::qWaitFor(isCopied, WaitTimeout));
}

void TestEndToEndWayland::joinsFromTheMenuByKeyboard()
{
    QVERIFY(screen.input.press(u"alt+c"_s));
    QVERIFY(screen.input.press(u"j"_s));
    QVERIFY(!screen.waitForFocus(JoinTitle).isEmpty());
    QVERIFY(screen.input.type(u"#other"_s));
    QVERIFY(screen.input.press(u"Return"_s));
    QVERIFY(scene->server.waitForLine(u"JOIN #other"_s));
}

// Without a transient parent, the menu would be a toplevel window.
void TestEndToEndWayland::opensATabsMenuOverTheInactiveWindow()
{
    Child other;
    other.setProcessEnvironment(screen.environment());
    QVERIFY(other.launch(QCoreApplication::applicationFilePath(), {ShowWindow}));
    QVERIFY(!screen.waitForFocus(OtherTitle).isEmpty());
    const QPoint tab = scene->window.topLeft() + RoomTab;
    const QRect menu = scene->popupOf([&] { return screen.input.click(tab, Right); });
    QVERIFY(menu.adjusted(-1, -1, 1, 1).contains(tab));
    QCOMPARE(scene->titles(), (QStringList{OtherTitle, MainTitle}));
    QVERIFY(screen.input.press(u"Down"_s));
    QVERIFY(screen.input.press(u"Return"_s));
    QVERIFY(scene->server.waitForLine(u"PART #room :Leaving"_s));
}

void TestEndToEndWayland::insertsAnEmoji()
{
    const QPoint button = scene->window.bottomRight() + EmojiFromBottomRight;
    const QRect picker = scene->popupOf([&] { return screen.input.click(button, Left); });
    QVERIFY(scene->window.contains(picker));
    QVERIFY(!picker.contains(button));
    QVERIFY(screen.input.click(picker.topLeft() + FirstEmoji, Left));
    QVERIFY(scene->sends(u"😀"_s));
}

void TestEndToEndWayland::completesANickAboveTheLine()
{
    // Each letter makes the list shorter.
    for (const QString &letter : {u"b"_s, u"o"_s}) {
        const QRect popup = scene->popupOf([&] { return screen.input.type(letter); });
        const int distance = scene->inputLine().top() - popup.bottom();
        QVERIFY2(distance >= 0 && distance < InputHeight, qPrintable(QString::number(distance)));
    }
    QVERIFY(screen.input.press(u"Down"_s));
    QVERIFY(screen.input.press(u"Return"_s));
    QVERIFY(screen.input.type(u": hi"_s));
    QVERIFY(scene->sends(u"bob: hi"_s));
}

void TestEndToEndWayland::keepsThePreferencesOpenWhenAListCloses_data()
{
    QTest::addColumn<QString>("key");

    QTest::newRow("Escape") << u"Escape"_s;
    QTest::newRow("Return") << u"Return"_s;
}

void TestEndToEndWayland::keepsThePreferencesOpenWhenAListCloses()
{
    QFETCH(const QString, key);
    QVERIFY(screen.input.click(scene->window.topLeft() + SettingsMenu, Left));
    QVERIFY(screen.input.press(u"p"_s));
    const QRect dialog = screen.waitForFocus(PreferencesTitle);
    QVERIFY(!dialog.isEmpty());
    const QPoint combo = dialog.topLeft() + TimestampCombo;
    QVERIFY(!scene->popupOf([&] { return screen.input.click(combo, Left); }).isEmpty());
    QVERIFY(screen.input.press(key));
    // The list opens again, so the dialog is still open.
    QVERIFY(!scene->popupOf([&] { return screen.input.press(u" "_s); }).isEmpty());
    QCOMPARE(scene->titles(), (QStringList{PreferencesTitle, MainTitle}));
    QVERIFY(screen.input.press(u"Escape"_s));
    QVERIFY(screen.input.press(u"Escape"_s));
    QVERIFY(scene->waitForTitles({MainTitle}));
}

// The cursor blinks meanwhile.
void TestEndToEndWayland::usesLittleCpuWhileIdle()
{
    constexpr int Period = 20'000; // In ms.
#ifdef __SANITIZE_ADDRESS__
    constexpr double LargestShare = 0.02;
#else
    constexpr double LargestShare = 0.005;
#endif
    const qint64 before = cpuTime(scene->program.processId());
    QVERIFY(before >= 0);
    QTest::qWait(Period);
    const auto used = double(cpuTime(scene->program.processId()) - before);
    QVERIFY2(used <= Period * LargestShare, qPrintable(u"%1 ms"_s.arg(used)));
}

int main(int argc, char **argv)
{
    if (argc > 1 && QLatin1StringView(argv[1]) == ShowWindow)
        return showWindow(argc, argv);
    QCoreApplication application(argc, argv);
    TestEndToEndWayland test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_EndToEndWayland.moc"
