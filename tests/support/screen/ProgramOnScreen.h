#pragma once

#include "Child.h"
#include "PreparedStore.h"
#include "VirtualScreen.h"

#include <QRect>
#include <QStringList>

/// The built program on a virtual screen, used with keyboard and mouse.
///
/// Every operation waits until the screen shows its effect. It returns false at the timeout.
class ProgramOnScreen final
{
    Q_DISABLE_COPY_MOVE(ProgramOnScreen)

public:
    /// Screen and store must outlive the object.
    ProgramOnScreen(const VirtualScreen &virtualScreen, const PreparedStore &preparedStore);

    /// Returns the path of the built program.
    [[nodiscard]] static QString path();

    /// Starts the program and waits for its connect dialog. `wrapper` is a command prefix, for
    /// another environment.
    [[nodiscard]] bool start(const QStringList &wrapper = {});

    /// Accepts the connect dialog, which must have the focus, with Return.
    [[nodiscard]] bool pressConnect();
    [[nodiscard]] bool openConnectDialog();

    [[nodiscard]] bool openPreferences();
    /// Closes the dialog with the focus by Escape.
    [[nodiscard]] bool closeDialog();

    /// Returns a point in the input line.
    [[nodiscard]] QPoint inputLine() const;
    /// Clicks into the input line, types the text and presses Return.
    [[nodiscard]] bool typeLine(const QString &text);

    /// Returns how many lines the current tab shows, counted by their time stamps.
    [[nodiscard]] int visibleLines() const;
    /// Waits until the current tab shows this number of lines.
    [[nodiscard]] bool waitForLines(int count) const;

    // Areas of the screen
    [[nodiscard]] QRect tabBar() const;
    [[nodiscard]] QRect currentTab() const;
    /// Returns the bounding rectangle of all tabs.
    [[nodiscard]] QRect tabs() const;
    /// Returns the column of channel names in the channel list, without its header.
    [[nodiscard]] QRect channelNames() const;
    [[nodiscard]] QRect userNames() const;

    /// Closes the window with Alt+F4 and waits for the program to exit.
    [[nodiscard]] bool close();

    [[nodiscard]] bool isRunning() const;
    /// Returns the process id; the program's own if the wrapper has replaced itself with it.
    [[nodiscard]] qint64 processId() const;
    /// Returns the exit code; -1 if the program is running or has crashed.
    [[nodiscard]] int exitStatus() const;
    [[nodiscard]] QString errorOutput();

private:
    [[nodiscard]] bool waitForActive(const QString &title) const;

    const VirtualScreen &screen;
    const PreparedStore &store;
    QRect window; // Client area of the main window, set when the connect dialog has been accepted.
    Child program;
    QString errors;
};
