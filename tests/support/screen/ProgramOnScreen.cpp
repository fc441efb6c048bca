#include "ProgramOnScreen.h"

#include <QMargins>

using namespace Qt::StringLiterals;

namespace {

const auto MainTitle = u"Velmora"_s;
const auto DialogTitle = u"Connect to IRC Server"_s;
const auto PreferencesTitle = u"Preferences"_s;

// A point in the input line, relative to the lower left corner.
constexpr QPoint InputFromBottomLeft{200, -50};
// The chat view lies between the topic and the input line, with the time stamps at its left.
constexpr QMargins ViewMargins{15, 90, 0, 90};
constexpr int StampWidth = 80;
constexpr QRgb StampColour = qRgb(136, 136, 136);
constexpr int StampDistance = 40;

// Relative to the upper left corner: two menus of the menu bar, the tab bar, and the channel list's
// first column below its header.
constexpr QPoint ServerMenu{25, 10};
constexpr QPoint SettingsMenu{190, 10};
constexpr QRect TabBar{10, 28, 1000, 32};
constexpr QRgb CurrentTabColour = qRgb(0x00, 0x7a, 0xff);
constexpr int CurrentTabDistance = 30;
// The frame of all other tabs.
constexpr QRgb TabFrameColour = qRgb(0xd1, 0xd1, 0xd6);
constexpr int TabFrameDistance = 2;

constexpr QRect ChannelNames{15, 120, 180, 500};
// The user list occupies the right fifth of the window.
constexpr int UserNamesFromRight = 245;
constexpr QRect UserNames{0, 35, 220, 300};

} // namespace

ProgramOnScreen::ProgramOnScreen(const VirtualScreen &virtualScreen,
                                 const PreparedStore &preparedStore)
    : screen(virtualScreen)
    , store(preparedStore)
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

QPoint ProgramOnScreen::inputLine() const
{
    return window.bottomLeft() + InputFromBottomLeft;
}

bool ProgramOnScreen::typeLine(const QString &text)
{
    return screen.click(inputLine()) && screen.type(text) && screen.press(u"Return"_s);
}

int ProgramOnScreen::visibleLines() const
{
    QRect stamps = window.marginsRemoved(ViewMargins);
    stamps.setWidth(StampWidth);
    return screen.countTextRows(stamps, StampColour, StampDistance);
}

bool ProgramOnScreen::waitForLines(int count) const
{
    return screen.waitFor([&] { return visibleLines() == count; });
}

QRect ProgramOnScreen::tabBar() const
{
    return TabBar.translated(window.topLeft());
}

QRect ProgramOnScreen::currentTab() const
{
    return screen.findPixels(tabBar(), CurrentTabColour, CurrentTabDistance);
}

QRect ProgramOnScreen::tabs() const
{
    return currentTab() | screen.findPixels(tabBar(), TabFrameColour, TabFrameDistance);
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
    return screen.press(u"alt+F4"_s) && screen.waitFor([this] { return !isRunning(); });
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
    return screen.waitFor([&] { return !isRunning() || screen.activeTitle() == title; })
           && isRunning();
}
