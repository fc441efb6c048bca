#include "Child.h"
#include "ConnectDialog.h"
#include "EmojiPicker.h"
#include "LightPalette.h"
#include "NestedLoops.h"
#include "PreferencesDialog.h"
#include "PreparedStore.h"
#include "ProgramOnScreen.h"
#include "RequiredTools.h"
#include "TemporaryStore.h"
#include "VirtualScreen.h"
#include "Waiting.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QCompleter>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QLineEdit>
#include <QMenuBar>
#include <QMetaEnum>
#include <QPushButton>
#include <QSettings>
#include <QStyleFactory>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QToolTip>

#include <array>
#include <functional>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

// Argument that makes this executable save images of all windows into the folder that follows.
constexpr QLatin1StringView SaveWindows = "--save-windows"_L1;

const auto DarkScheme = u"custom_palette=true\n"
                        "color_scheme_path=/usr/share/qt6ct/colors/darker.conf\n"_s;
const auto LightScheme = u"custom_palette=false\n"_s;

// Writes the settings of qt6ct, which applies its colours to every Qt program.
bool configureDesktop(const QString &configHome, const QString &scheme)
{
    QFile file(configHome + u"/qt6ct/qt6ct.conf"_s);
    return QDir().mkpath(configHome + u"/qt6ct"_s) && file.open(QIODevice::WriteOnly)
           && file.write("[Appearance]\nstyle=Fusion\n" + scheme.toUtf8()) > 0;
}

// ---------------------------------------------------------------------------------------------
// Windows

using Save = std::function<void(QWidget &window)>;

struct Window
{
    const char *name = nullptr;
    void (*open)(NestedLoopFixture &fixture, const Save &save) = nullptr;
};

void showMainWindow(NestedLoopFixture &fixture, const Save &save)
{
    save(fixture.session.window);
}

void showChannelList(NestedLoopFixture &fixture, const Save &save)
{
    fixture.session.probe.showTab(u"List"_s);
    save(fixture.session.window);
}

template <int Index>
void showMenu(NestedLoopFixture &fixture, const Save &save)
{
    QMenu *menu = fixture.session.window.menuBar()->actions().at(Index)->menu();
    menu->popup(QPoint());
    menu->setActiveAction(menu->actions().constFirst());
    save(*menu);
    menu->close();
}

void showToolTip(NestedLoopFixture &fixture, const Save &save)
{
    QToolTip::showText(QPoint(100, 100), u"Insert emoji"_s, &fixture.session.window);
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget *window : windows) {
        if (window->windowType() == Qt::ToolTip && window->isVisible())
            save(*window);
    }
    QToolTip::hideText();
}

void showEmojis(NestedLoopFixture &fixture, const Save &save)
{
    fixture.session.probe.emojiButton().click();
    auto *picker = fixture.session.window.findChild<EmojiPicker *>();
    save(*picker);
    picker->close();
}

void showNicks(NestedLoopFixture &fixture, const Save &save)
{
    QLineEdit &line = fixture.session.probe.inputLine();
    line.activateWindow();
    line.setFocus();
    QTest::keyClicks(&line, u"a"_s);
    save(*line.completer()->popup());
}

void showConnectDialog(NestedLoopFixture &fixture, const Save &save)
{
    fixture.session.choose(u"&Connect..."_s);
    save(*fixture.session.window.findChild<ConnectDialog *>());
}

template <int Index>
void showPreferences(NestedLoopFixture &fixture, const Save &save)
{
    fixture.session.choose(u"&Preferences..."_s);
    auto *dialog = fixture.session.window.findChild<PreferencesDialog *>();
    dialog->findChild<QTabWidget *>()->setCurrentIndex(Index);
    save(*dialog);
}

// Windows without a nested event loop.
constexpr std::array Windows{
        Window{"main window", showMainWindow},
        Window{"channel list", showChannelList},
        Window{"menu Server", showMenu<0>},
        Window{"menu User", showMenu<1>},
        Window{"menu Channel", showMenu<2>},
        Window{"menu Settings", showMenu<3>},
        Window{"menu About", showMenu<4>},
        Window{"tool tip", showToolTip},
        Window{"emojis", showEmojis},
        Window{"completion", showNicks},
        Window{"connect dialog", showConnectDialog},
        Window{"preferences 1", showPreferences<0>},
        Window{"preferences 2", showPreferences<1>},
        Window{"preferences 3", showPreferences<2>},
};

// ---------------------------------------------------------------------------------------------
// The process that saves the images

QString imageFile(const QString &folder, const QString &name)
{
    return u"%1/%2.png"_s.arg(folder, name);
}

// Enters a session that looks the same in each run, without times and the server's port.
bool enter(NestedLoopFixture &fixture, TemporaryStore &store)
{
    fixture.session.probe.timestampFormat() = u"'[12:00:00]'"_s;
    if (!fixture.joinChannels())
        return false;
    fixture.session.probe.currentServerId().clear();
    store.clear();
    return true;
}

int saveWindows(int argc, char **argv)
{
    QApplication application(argc, argv);
    const QString folder = QString::fromLocal8Bit(argv[2]);
    QImage desktop(1, 1, QImage::Format_RGB32);
    desktop.fill(QApplication::palette().color(QPalette::Window));
    bool isSaved = desktop.save(imageFile(folder, u"desktop"_s));
    QApplication::setCursorFlashTime(0);
    QApplication::setStyle(QStyleFactory::create(u"Fusion"_s));
    const LightPalette palette;

    TemporaryStore store;
    const auto saveAs = [&](const char *name) {
        return [&isSaved, file = imageFile(folder, QString::fromLatin1(name))](QWidget &window) {
            isSaved = window.grab().save(file) && isSaved;
        };
    };
    for (const Window &window : Windows) {
        NestedLoopFixture fixture;
        isSaved = enter(fixture, store) && isSaved;
        window.open(fixture, saveAs(window.name));
    }
    for (const NestedLoop &loop : NestedLoop::all()) {
        NestedLoopFixture fixture;
        isSaved = enter(fixture, store) && isSaved;
        fixture.inside = [&](QWidget *shown) {
            saveAs(loop.name)(*shown);
            shown->close();
        };
        loop.open(fixture);
    }
    return isSaved ? EXIT_SUCCESS : EXIT_FAILURE;
}

} // namespace

class TestLightPalette final : public QObject
{
    Q_OBJECT

private slots:
    void windowsLookAlikeOnEachDesktop_data();
    void windowsLookAlikeOnEachDesktop();
    void programLooksAlikeOnEachDesktop();
    void matchesTheStylesPalette_data();
    void matchesTheStylesPalette();
    void staysWhenDesktopChanges_data();
    void staysWhenDesktopChanges();

private:
    struct Desktop
    {
        QTemporaryDir images;
        PreparedStore config;
        Child windows;
    };

    void saveWindowsOnBothDesktops();

    Desktop light;
    Desktop dark;
};

void TestLightPalette::saveWindowsOnBothDesktops()
{
    // File dialogs show the current folder.
    const QTemporaryDir current;
    for (auto *desktop : {&light, &dark}) {
        QVERIFY(configureDesktop(desktop->config.configHome(),
                                 desktop == &dark ? DarkScheme : LightScheme));
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"QT_QPA_PLATFORMTHEME"_s, u"qt6ct"_s);
        environment.insert(u"XDG_CONFIG_HOME"_s, desktop->config.configHome());
        desktop->windows.setProcessEnvironment(environment);
        desktop->windows.setWorkingDirectory(current.path());
        QVERIFY(desktop->windows.launch(QCoreApplication::applicationFilePath(),
                                        {SaveWindows, desktop->images.path()}));
        QTRY_VERIFY_WITH_TIMEOUT(desktop->windows.state() == QProcess::NotRunning, 5 * WaitTimeout);
        QVERIFY2(desktop->windows.exitStatus() == QProcess::NormalExit
                         && desktop->windows.exitCode() == EXIT_SUCCESS,
                 desktop->windows.readAllStandardError().constData());
    }
}

void TestLightPalette::windowsLookAlikeOnEachDesktop_data()
{
    REQUIRE_TOOLS(u"qt6ct"_s);
    QTest::addColumn<QString>("window");
    for (const Window &window : Windows)
        QTest::newRow(window.name) << QString::fromLatin1(window.name);
    for (const NestedLoop &loop : NestedLoop::all())
        QTest::newRow(loop.name) << QString::fromLatin1(loop.name);

    saveWindowsOnBothDesktops();
    const QImage desktop(imageFile(dark.images.path(), u"desktop"_s));
    QVERIFY2(qGray(desktop.pixel(0, 0)) < 100, "qt6ct does not make the desktop dark");
}

void TestLightPalette::windowsLookAlikeOnEachDesktop()
{
    QFETCH(const QString, window);
    const QImage expected(imageFile(light.images.path(), window));
    QVERIFY(!expected.isNull());
    QCOMPARE(QImage(imageFile(dark.images.path(), window)), expected);
}

void TestLightPalette::programLooksAlikeOnEachDesktop()
{
    SKIP_IF_MISSING(VirtualScreen::missingParts());
    REQUIRE_TOOLS(u"qt6ct"_s);
    VirtualScreen screen;
    QVERIFY2(screen.start(), qUtf8Printable(screen.failure()));
    QImage expected;
    for (const QString &scheme : {LightScheme, DarkScheme}) {
        const PreparedStore store;
        QVERIFY(configureDesktop(store.configHome(), scheme));
        ProgramOnScreen program(screen, store);
        QVERIFY(program.start({u"env"_s, u"QT_QPA_PLATFORMTHEME=qt6ct"_s}));
        if (scheme == LightScheme) {
            // Until the whole window is painted and the cursor is visible.
            QVERIFY(screen.waitFor([&] {
                const QImage before = std::exchange(expected, screen.screenshot());
                return !before.isNull() && screen.countChangedPixels(before) == 0;
            }));
        }
        QVERIFY(screen.waitFor([&] { return screen.countChangedPixels(expected) == 0; }));
    }
}

void TestLightPalette::matchesTheStylesPalette_data()
{
    QTest::addColumn<QPalette::ColorRole>("role");
    const auto roles = QMetaEnum::fromType<QPalette::ColorRole>();
    for (int index = 0; index < roles.keyCount(); ++index) {
        const auto role = QPalette::ColorRole(roles.value(index));
        if (role < QPalette::NColorRoles && role != QPalette::NoRole)
            QTest::newRow(roles.key(index)) << role;
    }
}

void TestLightPalette::matchesTheStylesPalette()
{
    QFETCH(const QPalette::ColorRole, role);
    // Light, since the offscreen platform has no theme.
    const QPalette standard = QApplication::palette();
    const LightPalette palette;
    const QPalette applied = QApplication::palette();
    for (const auto group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
        QCOMPARE(applied.color(group, role), standard.color(group, role));
        // Unset roles would come from the desktop.
        QVERIFY(applied.isBrushSet(group, role));
    }
}

using Change = void (*)();

const QPalette &darkPalette()
{
    static const QPalette Dark(Qt::black);
    return Dark;
}

void TestLightPalette::staysWhenDesktopChanges_data()
{
    QTest::addColumn<Change>("change");

    QTest::newRow("palette") << Change([] { QApplication::setPalette(darkPalette()); });
    // Like Qt when a theme changes: first the palettes, then the event.
    QTest::newRow("classes") << Change([] {
        QApplication::setPalette(darkPalette(), "QMenu");
        QToolTip::setPalette(darkPalette());
        QWidget window;
        QEvent event(QEvent::ThemeChange);
        QCoreApplication::sendEvent(&window, &event);
    });
}

void TestLightPalette::staysWhenDesktopChanges()
{
    QFETCH(const Change, change);
    const LightPalette palette;
    const QPalette before = QApplication::palette();
    QLineEdit line;
    change();
    QCOMPARE(QApplication::palette(), before);
    QCOMPARE(QApplication::palette("QMenu"), before);
    QCOMPARE(QToolTip::palette(), before);
    QCOMPARE(line.palette(), before);
}

int main(int argc, char **argv)
{
    if (argc > 2 && QLatin1StringView(argv[1]) == SaveWindows)
        return saveWindows(argc, argv);
    QApplication application(argc, argv);
    QApplication::setStyle(QStyleFactory::create(u"Fusion"_s));
    TestLightPalette test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_LightPalette.moc"
