#include "ProgramOnScreen.h"

#include <QMargins>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

constexpr int Patience = 20000; // In ms. Builds with sanitizers on a busy machine are slow.

const auto MainTitle = u"Velmora"_s;
const auto DialogTitle = u"Connect to IRC Server"_s;
const auto PreferencesTitle = u"Preferences"_s;

// The input line lies above the status bar at the lower left.
constexpr QPoint InputFromBottomLeft{200, -50};
// The time stamps stand at the left of the view, which lies between the tabs with the topic and the
// input line.
constexpr QMargins ViewMargins{15, 90, 0, 90};
constexpr int StampWidth = 80;
constexpr QRgb StampColour = qRgb(136, 136, 136);
constexpr int StampDistance = 40;

// From the upper left of the window: two menus of the menu bar, the tabs, and the channel list's
// first column under its header.
constexpr QPoint ServerMenu{25, 10};
constexpr QPoint SettingsMenu{190, 10};
constexpr QRect TabBar{10, 28, 1000, 32};
constexpr QRect ChannelNames{15, 120, 180, 500};
// The user list takes the window's right fifth.
constexpr int UserNamesFromRight = 245;
constexpr QRect UserNames{0, 35, 220, 300};

} // namespace

ProgramOnScreen::ProgramOnScreen(const VirtualScreen &shownOn, const PreparedStore &readsFrom)
    : screen(shownOn)
    , store(readsFrom)
{
}

QString ProgramOnScreen::path()
{
    return QStringLiteral(VELMORA_PROGRAM);
}

bool ProgramOnScreen::start(const QStringList &wrapper)
{
    QProcessEnvironment environment = screen.environment();
    environment.insert(u"XDG_CONFIG_HOME"_s, store.configHome());
    program.setProcessEnvironment(environment);
    const QStringList command = wrapper + QStringList{path()};
    return program.launch(command.first(), command.mid(1)) && waitForActive(DialogTitle);
}

bool ProgramOnScreen::pressConnect()
{
    if (!screen.press(u"Return"_s) || !waitForActive(MainTitle))
        return false;
    window = screen.activeWindow();
    return !window.isEmpty();
}

bool ProgramOnScreen::openConnectDialog()
{
    return screen.click(window.topLeft() + ServerMenu) && screen.press(u"c"_s)
           && waitForActive(DialogTitle);
}

bool ProgramOnScreen::openPreferences()
{
    return screen.click(window.topLeft() + SettingsMenu) && screen.press(u"p"_s)
           && waitForActive(PreferencesTitle);
}

bool ProgramOnScreen::closeDialog()
{
    return screen.press(u"Escape"_s) && waitForActive(MainTitle);
}

bool ProgramOnScreen::say(const QString &text)
{
    const QPoint input = window.bottomLeft() + InputFromBottomLeft;
    return screen.click(input) && screen.type(text) && screen.press(u"Return"_s);
}

int ProgramOnScreen::shownLines() const
{
    QRect stamps = window.marginsRemoved(ViewMargins);
    stamps.setWidth(StampWidth);
    return screen.countTextRows(stamps, StampColour, StampDistance);
}

QRect ProgramOnScreen::tabBar() const
{
    return TabBar.translated(window.topLeft());
}

QRect ProgramOnScreen::channelNames() const
{
    return ChannelNames.translated(window.topLeft());
}

QRect ProgramOnScreen::userNames() const
{
    return UserNames.translated(window.topRight() - QPoint(UserNamesFromRight, 0));
}

bool ProgramOnScreen::close()
{
    return screen.press(u"alt+F4"_s) && QTest::qWaitFor([this] { return !isRunning(); }, Patience);
}

bool ProgramOnScreen::isRunning() const
{
    return program.state() != QProcess::NotRunning;
}

qint64 ProgramOnScreen::processId() const
{
    return program.processId();
}

int ProgramOnScreen::exitStatus() const
{
    const bool ended = !isRunning() && program.exitStatus() == QProcess::NormalExit;
    return ended ? program.exitCode() : -1;
}

QString ProgramOnScreen::errorOutput()
{
    if (program.isOpen())
        errors += QString::fromLocal8Bit(program.readAllStandardError());
    return errors;
}

bool ProgramOnScreen::waitForActive(const QString &title) const
{
    return QTest::qWaitFor([&] { return !isRunning() || screen.activeTitle() == title; }, Patience)
           && isRunning();
}
