// The built program's icon in a real tray, and on a bus with a fake desktop that shows icons and
// notifications.

#include "Child.h"
#include "DrawnText.h"
#include "FakeDesktop.h"
#include "MainWindow.h"
#include "MainWindowProbe.h"
#include "PreparedStore.h"
#include "PrivateBus.h"
#include "ProgramOnScreen.h"
#include "RequiredTools.h"
#include "ScriptedServer.h"
#include "TemporaryStore.h"
#include "TrayPanel.h"
#include "VirtualScreen.h"
#include "Waiting.h"

#include <QApplication>
#include <QDBusArgument>
#include <QMenu>
#include <QPalette>
#include <QRegularExpression>
#include <QSystemTrayIcon>
#include <QTest>
#include <QTextStream>
#include <QWidget>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

constexpr int AttemptMs = 5000;
constexpr int NotificationMs = 5000;

const auto MainTitle = u"Velmora"_s;
const auto DesktopEntry = u"example.velmora.Velmora"_s;
const auto OtherTitle = u"Other program"_s;

constexpr QRgb OtherColour = qRgb(192, 0, 192);
constexpr int OtherPoints = 50'000; // Minimum for the other window.

constexpr int MenuPoints = 1000; // Minimum that a tab's menu changes.

// The icon's menu is the only white area where it opens; the tool tip is not white.
constexpr QRect MenuArea(1200, 32, 200, 60);
constexpr QRgb MenuColour = qRgb(255, 255, 255);
constexpr int MenuWidth = 100;
constexpr int MenuHeight = 30;

// A notification in a window of its own.
constexpr QRgb BalloonColour = qRgb(255, 255, 225);
constexpr int BalloonPoints = 2000; // Minimum; the icon's tool tip has none.

// Arguments that make this executable a helper program. It shows a window of another program,
// returns by its exit status whether there is a tray, prints what Qt's notification window shows
// for `MarkupText`, or restores a maximised window in two ways.
constexpr QLatin1StringView ShowWindow = "--show-window"_L1;
constexpr QLatin1StringView CheckForTray = "--check-for-tray"_L1;
constexpr QLatin1StringView Notify = "--notify"_L1;
constexpr QLatin1StringView ShowMaximised = "--show-maximised"_L1;

const auto MarkupText = u"<b>bold</b> &amp; <a href=\"x:y\">here</a>"_s;

int showWindow(int argc, char **argv)
{
    const QApplication application(argc, argv);
    QWidget window;
    window.setWindowTitle(OtherTitle);
    window.setGeometry(300, 300, 400, 300);
    window.setPalette(QColor(OtherColour));
    window.show();
    return QApplication::exec();
}

int checkForTray(int argc, char **argv)
{
    const QApplication application(argc, argv);
    return QSystemTrayIcon::isSystemTrayAvailable() ? 0 : 1;
}

QWidget *findBalloon()
{
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget *window : windows) {
        if (window->isVisible() && window->inherits("QBalloonTip"))
            return window;
    }
    return nullptr;
}

int notify(int argc, char **argv)
{
    const QApplication application(argc, argv);
    const TemporaryStore store;
    MainWindow window;
    const MainWindowProbe probe(window);
    const QSystemTrayIcon *icon = probe.trayIcon();
    if (!icon || !QTest::qWaitFor([&] { return !icon->geometry().isEmpty(); }, WaitTimeout))
        return 1;
    probe.showNotification(MarkupText, MarkupText);
    if (!QTest::qWaitFor([] { return findBalloon() != nullptr; }, WaitTimeout))
        return 1;
    QTextStream(stdout) << DrawnText::joined(*findBalloon());
    return 0;
}

int showMaximised(int argc, char **argv)
{
    const QApplication application(argc, argv);
    const TemporaryStore store;
    MainWindow window;
    QSystemTrayIcon *icon = MainWindowProbe(window).trayIcon();
    window.showMaximized();
    if (!icon || !QTest::qWaitForWindowExposed(&window, WaitTimeout) || !window.isMaximized())
        return 1;
    for (const auto reason : {QSystemTrayIcon::Trigger, QSystemTrayIcon::DoubleClick}) {
        emit icon->activated(reason);
        if (!window.isMaximized())
            return 2;
    }
    icon->contextMenu()->actions().constFirst()->trigger();
    return window.isMaximized() ? 3 : 0;
}

// Returns the sizes of the images in a D-Bus argument.
QList<QSize> readImageSizes(const QDBusArgument &argument)
{
    QList<QSize> sizes;
    argument.beginArray();
    while (!argument.atEnd()) {
        int width = 0;
        int height = 0;
        QByteArray points;
        argument.beginStructure();
        argument >> width >> height >> points;
        argument.endStructure();
        sizes.append(QSize(width, height));
    }
    argument.endArray();
    return sizes;
}

QString toolTip(const QDBusArgument &argument)
{
    QString icon;
    QString title;
    QString text;
    argument.beginStructure();
    argument >> icon;
    readImageSizes(argument);
    argument >> title >> text;
    argument.endStructure();
    return title;
}

QStringList labels(const QList<FakeDesktop::MenuEntry> &entries)
{
    QStringList texts;
    for (const FakeDesktop::MenuEntry &entry : entries)
        texts.append(entry.isSeparator ? u"-"_s : entry.label);
    return texts;
}

QStringList texts(const QList<FakeDesktop::Notification> &notifications)
{
    QStringList result;
    for (const FakeDesktop::Notification &notification : notifications)
        result.append(notification.title + u" | "_s + notification.text);
    return result;
}

/// A screen with the program and the tray or desktop that the test adds first.
class Scene final
{
public:
    [[nodiscard]] bool start() { return screen.start(); }

    [[nodiscard]] bool addPanel()
    {
        panel = std::make_unique<TrayPanel>(screen);
        return panel->start() && screen.waitFor([this] { return hasTray(); });
    }
    [[nodiscard]] bool addDesktop()
    {
        bus = std::make_unique<PrivateBus>();
        if (!bus->start())
            return false;
        desktop = std::make_unique<FakeDesktop>(bus->address());
        return true;
    }

    /// Starts the program and closes its connect dialog.
    [[nodiscard]] bool startProgram()
    {
        return program.start(wrapper()) && screen.press(u"Escape"_s) && waitForActive(MainTitle);
    }
    /// Starts the program, connects and joins #room, whose tab becomes the current one.
    [[nodiscard]] bool startSession()
    {
        store.addServer({.host = u"127.0.0.1"_s,
                         .port = server.port(),
                         .nickname = u"wanda"_s,
                         .realName = u"Wanda"_s,
                         .channels = {u"#room"_s}});
        if (!program.start(wrapper()) || !program.pressConnect() || !server.waitForClient()
            || !server.waitForLine(u"NICK wanda"_s)) {
            return false;
        }
        server.send(u":irc.test 001 wanda :Welcome"_s);
        server.send(u":wanda!u@h JOIN #room"_s);
        return server.waitForLine(u"NAMES #room"_s);
    }

    /// Shows a window of another program over ours and activates it, since a window manager may
    /// refuse to activate new windows.
    [[nodiscard]] bool cover()
    {
        other.setProcessEnvironment(screen.environment());
        return other.launch(QCoreApplication::applicationFilePath(), {ShowWindow})
               && screen.waitFor([this] { return screen.activate(OtherTitle); })
               && screen.waitFor([this] { return isCovered(); });
    }
    [[nodiscard]] bool isCovered() const
    {
        return screen.countPixels(OtherColour) > OtherPoints && screen.activeTitle() == OtherTitle;
    }
    /// Waits until our window is active and in front of the other.
    [[nodiscard]] bool waitForUncovered() const
    {
        return waitForActive(MainTitle)
               && screen.waitFor([this] { return screen.countPixels(OtherColour) == 0; });
    }
    /// Opens the icon's menu and waits until it is painted and receives keys. Tries again, since Qt
    /// closes the menu when the program's window loses the focus at that moment.
    [[nodiscard]] bool openMenu() const
    {
        const auto isOpened = [this] {
            return screen.click(panel->icon(), 3)
                   && QTest::qWaitFor([this] { return isMenuOpen(); }, AttemptMs);
        };
        return screen.waitFor(isOpened);
    }
    [[nodiscard]] bool isMenuOpen() const
    {
        const QRect found = screen.findPixels(MenuArea, MenuColour, 0);
        return found.width() > MenuWidth && found.height() > MenuHeight;
    }
    [[nodiscard]] bool minimise()
    {
        return screen.minimise() && screen.waitFor([this] { return isMinimised(); });
    }
    [[nodiscard]] bool waitForActive(const QString &title, int timeout = WaitTimeout) const
    {
        return QTest::qWaitFor([&] { return screen.activeTitle() == title; }, timeout);
    }
    [[nodiscard]] bool isMinimised() const { return screen.activeTitle() != MainTitle; }

    VirtualScreen screen;
    std::unique_ptr<TrayPanel> panel;
    std::unique_ptr<PrivateBus> bus;
    std::unique_ptr<FakeDesktop> desktop;
    ScriptedServer server;
    PreparedStore store;
    Child other;
    ProgramOnScreen program{screen, store};

private:
    [[nodiscard]] QStringList wrapper() const
    {
        if (!bus)
            return {};
        return {u"env"_s, QString(u"DBUS_SESSION_BUS_ADDRESS="_s + bus->address())};
    }
    [[nodiscard]] bool hasTray() const
    {
        Child look;
        look.setProcessEnvironment(screen.environment());
        return look.launch(QCoreApplication::applicationFilePath(), {CheckForTray})
               && look.waitForFinished(WaitTimeout) && look.exitCode() == 0;
    }
};

// Opens something with a nested event loop, for quitting meanwhile.
using Opener = bool (*)(const Scene &scene);

bool openNothing(const Scene &)
{
    return true;
}

bool openPrompt(const Scene &scene)
{
    return scene.screen.press(u"alt+c"_s) && scene.screen.press(u"j"_s)
           && scene.waitForActive(u"Join Channel"_s);
}

bool openTabMenu(const Scene &scene)
{
    const QRect tab = scene.screen.waitUntilStable([&] { return scene.program.currentTab(); });
    if (tab.isEmpty() || !scene.program.waitForLines(1))
        return false;
    const QImage before = scene.screen.screenshot();
    return scene.screen.click(tab.center(), 3) && scene.screen.waitFor([&] {
        return scene.screen.countChangedPixels(before) > MenuPoints;
    });
}

} // namespace

Q_DECLARE_METATYPE(Opener)

class TestTray final : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void clickRestoresMinimisedWindow();
    void clickRaisesWindow();
    void middleClickDoesNothing();
    void rightClickOpensMenu();
    void menuRestoresWindow();
    void onlyMenuRestoresMaximisedWindow();
    void menuQuits();
    void notifiesWithOwnWindow();
    void notifiesVerbatimWithOwnWindow();
    void survivesLongNickInTray();

    void registersIconWithDesktop();
    void exportsMenuToDesktop();
    void desktopActivationRestoresWindow();
    void desktopMenuRestoresWindow();
    void desktopMenuQuits_data();
    void desktopMenuQuits();
    void notifiesThroughDesktop();
    void clickedNotificationShowsTab();
    void notifiesVerbatim();
    void survivesEndOfDesktop();

    void worksWithoutTray();

private:
    std::unique_ptr<Scene> scene;
};

void TestTray::initTestCase()
{
    SKIP_IF_MISSING(VirtualScreen::missingParts());
    REQUIRE_TOOLS(u"dbus-daemon"_s, u"trayer"_s);
}

void TestTray::init()
{
    scene = std::make_unique<Scene>();
    QVERIFY2(scene->start(), qPrintable(scene->screen.failure()));
}

void TestTray::cleanup()
{
    if (QTest::currentTestFailed())
        scene->screen.saveScreenshot(QString::fromLatin1(QTest::currentTestFunction()));
    QCOMPARE(scene->program.errorOutput(), QString());
    scene.reset();
}

void TestTray::clickRestoresMinimisedWindow()
{
    QVERIFY(scene->addPanel());
    QVERIFY(scene->panel->icon().isNull());
    QVERIFY(scene->startProgram());
    QVERIFY(scene->panel->waitForIcon());
    QVERIFY(scene->minimise());
    QVERIFY(scene->screen.click(scene->panel->icon()));
    QVERIFY(scene->waitForActive(MainTitle));
}

void TestTray::clickRaisesWindow()
{
    QVERIFY(scene->addPanel());
    QVERIFY(scene->startProgram());
    QVERIFY(scene->panel->waitForIcon());
    QVERIFY(scene->cover());
    QVERIFY(scene->screen.click(scene->panel->icon()));
    QVERIFY(scene->waitForUncovered());
}

void TestTray::middleClickDoesNothing()
{
    QVERIFY(scene->addPanel());
    QVERIFY(scene->startProgram());
    QVERIFY(scene->panel->waitForIcon());
    QVERIFY(scene->cover());
    QVERIFY(scene->screen.click(scene->panel->icon(), 2));
    // When the menu is open, the effect of the click would be visible.
    QVERIFY(scene->openMenu());
    QVERIFY(scene->isCovered());
}

void TestTray::rightClickOpensMenu()
{
    QVERIFY(scene->addPanel());
    QVERIFY(scene->startProgram());
    QVERIFY(scene->panel->waitForIcon());
    QVERIFY(scene->cover());
    QVERIFY(scene->openMenu());
    QVERIFY(scene->isCovered());
    QVERIFY(scene->screen.press(u"Escape"_s));
    QTRY_VERIFY_WITH_TIMEOUT(!scene->isMenuOpen(), WaitTimeout);
    QVERIFY(scene->isCovered());
    QVERIFY(scene->program.isRunning());
}

void TestTray::menuRestoresWindow()
{
    QVERIFY(scene->addPanel());
    QVERIFY(scene->startProgram());
    QVERIFY(scene->panel->waitForIcon());
    QVERIFY(scene->minimise());
    const auto isBack = [this] {
        return scene->openMenu() && scene->screen.press(u"Down"_s)
               && scene->screen.press(u"Return"_s) && scene->waitForActive(MainTitle, AttemptMs);
    };
    QVERIFY(scene->screen.waitFor(isBack));
}

// A click raises a maximised window, the menu's entry restores its normal size.
void TestTray::onlyMenuRestoresMaximisedWindow()
{
    QVERIFY(scene->addPanel());
    Child shower;
    shower.setProcessEnvironment(scene->screen.environment());
    QVERIFY(shower.launch(QCoreApplication::applicationFilePath(), {ShowMaximised}));
    QVERIFY(shower.waitForFinished(2 * WaitTimeout));
    QCOMPARE(shower.exitCode(), 0);
}

void TestTray::menuQuits()
{
    QVERIFY(scene->addPanel());
    QVERIFY(scene->startSession());
    QVERIFY(scene->panel->waitForIcon());
    QVERIFY(scene->openMenu());
    QVERIFY(scene->screen.press(u"Up"_s));
    QVERIFY(scene->screen.press(u"Return"_s));
    QTRY_VERIFY_WITH_TIMEOUT(!scene->program.isRunning(), WaitTimeout);
    QCOMPARE(scene->program.exitStatus(), 0);
    QVERIFY(scene->server.waitForLine(u"QUIT :Velmora leaving"_s));
}

// With a tray but no notification service, Qt shows a window beside the icon.
void TestTray::notifiesWithOwnWindow()
{
    QVERIFY(scene->addPanel());
    QVERIFY(scene->startSession());
    QVERIFY(scene->panel->waitForIcon());
    const auto isNotified = [this] {
        return scene->screen.countPixels(BalloonColour) > BalloonPoints;
    };
    QVERIFY(!isNotified());
    scene->server.send(u":bob!u@h PRIVMSG wanda :<b>psst</b>"_s);
    QTRY_VERIFY_WITH_TIMEOUT(isNotified(), WaitTimeout);
    // It closes after a while.
    QTRY_VERIFY_WITH_TIMEOUT(!isNotified(), WaitTimeout);
}

void TestTray::notifiesVerbatimWithOwnWindow()
{
    QVERIFY(scene->addPanel());
    Child notifier;
    notifier.setProcessEnvironment(scene->screen.environment());
    QVERIFY(notifier.launch(QCoreApplication::applicationFilePath(), {Notify}));
    QVERIFY(notifier.waitForFinished(2 * WaitTimeout));
    const QString drawn = QString::fromUtf8(notifier.readAllStandardOutput());
    QCOMPARE(drawn.simplified(), QString(MarkupText + MarkupText));
}

void TestTray::survivesLongNickInTray()
{
    QVERIFY(scene->addPanel());
    QVERIFY(scene->startSession());
    QVERIFY(scene->panel->waitForIcon());
    const QString nick(10'000, u'n');
    scene->server.send(u':' + nick + u"!u@h PRIVMSG wanda :"_s + QString(10'000, u'x'));
    QVERIFY(scene->server.waitForLine(u"WATCH +"_s + nick));
    QVERIFY(scene->program.typeLine(u"still here"_s));
    QVERIFY(scene->server.waitForLine(u"PRIVMSG #room :still here"_s));
}

void TestTray::registersIconWithDesktop()
{
    QVERIFY(scene->addDesktop());
    QVERIFY(scene->startProgram());
    QVERIFY(scene->desktop->waitForIcon());
    const FakeDesktop &desktop = *scene->desktop;
    QCOMPARE(desktop.iconProperty(u"Status"_s).toString(), u"Active"_s);
    QCOMPARE(desktop.iconProperty(u"Title"_s).toString(), MainTitle);
    QCOMPARE(toolTip(desktop.iconProperty(u"ToolTip"_s).value<QDBusArgument>()), MainTitle);
    const auto images = desktop.iconProperty(u"IconPixmap"_s).value<QDBusArgument>();
    QVERIFY(!readImageSizes(images).isEmpty());
}

void TestTray::exportsMenuToDesktop()
{
    QVERIFY(scene->addDesktop());
    QVERIFY(scene->startProgram());
    QVERIFY(scene->desktop->waitForIcon());
    QCOMPARE(labels(scene->desktop->menu()), (QStringList{u"Show Velmora"_s, u"-"_s, u"Quit"_s}));
}

void TestTray::desktopActivationRestoresWindow()
{
    QVERIFY(scene->addDesktop());
    QVERIFY(scene->startProgram());
    QVERIFY(scene->desktop->waitForIcon());
    QVERIFY(scene->minimise());
    QVERIFY(scene->desktop->callIcon(u"SecondaryActivate"_s));
    QVERIFY(scene->desktop->callIcon(u"Activate"_s));
    QVERIFY(scene->waitForActive(MainTitle));
    QVERIFY(scene->cover());
    QVERIFY(scene->desktop->callIcon(u"SecondaryActivate"_s));
    QVERIFY(scene->desktop->callIcon(u"ContextMenu"_s));
    QVERIFY(scene->isCovered());
    QVERIFY(scene->desktop->callIcon(u"Activate"_s));
    QVERIFY(scene->waitForUncovered());
}

void TestTray::desktopMenuRestoresWindow()
{
    QVERIFY(scene->addDesktop());
    QVERIFY(scene->startProgram());
    QVERIFY(scene->desktop->waitForIcon());
    QVERIFY(scene->minimise());
    QVERIFY(scene->desktop->choose(u"Show Velmora"_s));
    QVERIFY(scene->waitForActive(MainTitle));
    QVERIFY(scene->cover());
    QVERIFY(scene->desktop->choose(u"Show Velmora"_s));
    QVERIFY(scene->waitForUncovered());
}

void TestTray::desktopMenuQuits_data()
{
    QTest::addColumn<Opener>("open");
    QTest::newRow("nothing open") << Opener(openNothing);
    QTest::newRow("prompt") << Opener(openPrompt);
    QTest::newRow("menu") << Opener(openTabMenu);
}

void TestTray::desktopMenuQuits()
{
    QFETCH(const Opener, open);
    QVERIFY(scene->addDesktop());
    QVERIFY(scene->startSession());
    QVERIFY(scene->desktop->waitForIcon());
    QVERIFY(open(*scene));
    QVERIFY(scene->desktop->choose(u"Quit"_s));
    QTRY_VERIFY_WITH_TIMEOUT(!scene->program.isRunning(), WaitTimeout);
    QCOMPARE(scene->program.exitStatus(), 0);
    QVERIFY(scene->server.waitForLine(u"QUIT :Velmora leaving"_s));
}

void TestTray::notifiesThroughDesktop()
{
    QVERIFY(scene->addDesktop());
    QVERIFY(scene->startSession());
    QVERIFY(scene->desktop->waitForIcon());
    const QString whole(255, u'x');
    // No notification for #room, the current tab of the active window.
    scene->server.send(u":bob!u@h PRIVMSG #room :hi wanda"_s);
    scene->server.send(u":bob!u@h PRIVMSG #other :hello"_s);
    scene->server.send(u":bob!u@h PRIVMSG #other :hi Wanda!"_s);
    scene->server.send(u":bob!u@h PRIVMSG wanda :"_s + whole);
    scene->server.send(u":bob!u@h PRIVMSG wanda :"_s + whole + u'x');
    QTRY_COMPARE_WITH_TIMEOUT(scene->desktop->notifications().size(), 3, WaitTimeout);
    const auto notified = scene->desktop->notifications();
    QCOMPARE(texts(notified),
             (QStringList{u"#other | bob: hi Wanda!"_s, QString(u"bob | "_s + whole),
                          QString(u"bob | "_s + whole.first(252) + u"..."_s)}));
    for (const FakeDesktop::Notification &notification : notified) {
        QCOMPARE(notification.program, u"Velmora"_s);
        QCOMPARE(notification.icon, DesktopEntry);
        QCOMPARE(notification.hints.value(u"desktop-entry"_s).toString(), DesktopEntry);
        QCOMPARE(notification.duration, NotificationMs);
        QCOMPARE(notification.actions, (QStringList{u"default"_s, u"Show"_s}));
    }
}

void TestTray::clickedNotificationShowsTab()
{
    QVERIFY(scene->addDesktop());
    QVERIFY(scene->startSession());
    QVERIFY(scene->desktop->waitForIcon());
    scene->server.send(u":bob!u@h PRIVMSG wanda :psst"_s);
    QTRY_COMPARE_WITH_TIMEOUT(scene->desktop->notifications().size(), 1, WaitTimeout);
    const auto currentTab = [this] { return scene->program.currentTab(); };
    const QRect before = scene->screen.waitUntilStable(currentTab);
    QVERIFY(scene->minimise());
    scene->desktop->clickNotification(1);
    QVERIFY(scene->waitForActive(MainTitle));
    QVERIFY(scene->screen.waitFor([&] { return currentTab().left() > before.right(); }));
}

// The text is sent verbatim; whether to interpret markup is the desktop's choice.
void TestTray::notifiesVerbatim()
{
    QVERIFY(scene->addDesktop());
    QVERIFY(scene->startSession());
    QVERIFY(scene->desktop->waitForIcon());
    const QStringList messages{u"<b>bold</b> &amp; <a href=\"x:y\">here</a> <img src=\"x\">"_s,
                               u"%1 %2 %n"_s, u"\u0002bold\u0002 \u001b[31m"_s,
                               u"\u05D0 \u202Egnp.exe"_s, u"\U0001F642"_s};
    for (const QString &text : messages)
        scene->server.send(u":<i>bob</i>!u@h PRIVMSG wanda :"_s + text);
    QTRY_COMPARE_WITH_TIMEOUT(scene->desktop->notifications().size(), messages.size(), WaitTimeout);
    QStringList expected = messages;
    expected.replaceInStrings(QRegularExpression(u"^"_s), u"<i>bob</i> | "_s);
    QCOMPARE(texts(scene->desktop->notifications()), expected);
}

void TestTray::survivesEndOfDesktop()
{
    QVERIFY(scene->addDesktop());
    QVERIFY(scene->startSession());
    QVERIFY(scene->desktop->waitForIcon());
    scene->desktop.reset();
    scene->server.send(u":bob!u@h PRIVMSG wanda :psst"_s);
    QVERIFY(scene->server.waitForLine(u"WATCH +bob"_s));
    scene->bus->kill();
    scene->server.send(u":bob!u@h PRIVMSG wanda :and again"_s);
    QVERIFY(scene->program.typeLine(u"still here"_s));
    QVERIFY(scene->server.waitForLine(u"PRIVMSG #room :still here"_s));
}

void TestTray::worksWithoutTray()
{
    QVERIFY(scene->startSession());
    scene->server.send(u":bob!u@h PRIVMSG wanda :psst"_s);
    QVERIFY(scene->server.waitForLine(u"WATCH +bob"_s));
    QVERIFY(scene->program.typeLine(u"here"_s));
    QVERIFY(scene->server.waitForLine(u"PRIVMSG #room :here"_s));
    QVERIFY(scene->program.close());
    QCOMPARE(scene->program.exitStatus(), 0);
}

int main(int argc, char **argv)
{
    if (argc > 1 && QLatin1StringView(argv[1]) == ShowWindow)
        return showWindow(argc, argv);
    if (argc > 1 && QLatin1StringView(argv[1]) == CheckForTray)
        return checkForTray(argc, argv);
    if (argc > 1 && QLatin1StringView(argv[1]) == Notify)
        return notify(argc, argv);
    if (argc > 1 && QLatin1StringView(argv[1]) == ShowMaximised)
        return showMaximised(argc, argv);
    QCoreApplication application(argc, argv);
    TestTray test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_Tray.moc"
