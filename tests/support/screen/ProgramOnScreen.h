#pragma once

#include "Child.h"
#include "PreparedStore.h"
#include "VirtualScreen.h"

#include <QRect>
#include <QStringList>

/// The built program on a screen in memory, driven as a person drives it: by keys and clicks.
///
/// Every operation waits, for a bounded time, until the screen shows that it has worked, and is
/// false if that does not come about.
class ProgramOnScreen final
{
    Q_DISABLE_COPY_MOVE(ProgramOnScreen)

public:
    /// Both must outlive the object.
    ProgramOnScreen(const VirtualScreen &shownOn, const PreparedStore &readsFrom);

    /// Where the built program lies.
    [[nodiscard]] static QString path();

    /// Starts the program and waits for its connect dialog. `wrapper` is a command that the
    /// program is an argument of, for a run in surroundings of its own.
    [[nodiscard]] bool start(const QStringList &wrapper = {});

    /// Accepts the connect dialog, which has the keyboard, by Return.
    [[nodiscard]] bool pressConnect();
    /// Opens the connect dialog anew from the menu.
    [[nodiscard]] bool openConnectDialog();

    /// Opens the preferences from the menu.
    [[nodiscard]] bool openPreferences();
    /// Closes the dialog that has the keyboard by Escape.
    [[nodiscard]] bool closeDialog();

    /// A point of the input line.
    [[nodiscard]] QPoint inputLine() const;
    /// Clicks into the input line, types the text and presses Return.
    [[nodiscard]] bool typeLine(const QString &text);

    /// How many lines the open tab shows, by their time stamps.
    [[nodiscard]] int visibleLines() const;
    /// Waits until the open tab shows so many lines.
    [[nodiscard]] bool waitForLines(int count) const;

    /// Where there is room for the tabs of the main window.
    [[nodiscard]] QRect tabBar() const;
    /// Where the tab in front lies.
    [[nodiscard]] QRect currentTab() const;
    /// Where all the tabs lie, in one rectangle.
    [[nodiscard]] QRect tabs() const;
    /// Where the names of the channel list stand, without the header.
    [[nodiscard]] QRect channelNames() const;
    /// Where the names of the user list stand.
    [[nodiscard]] QRect userNames() const;

    /// Closes the window as its title bar does, and waits for the program to end.
    [[nodiscard]] bool close();

    [[nodiscard]] bool isRunning() const;
    /// The program's own if the wrapper, where there is one, has handed its process over.
    [[nodiscard]] qint64 processId() const;
    /// The exit status of a program that has ended by itself, else -1.
    [[nodiscard]] int exitStatus() const;
    /// What the program has written to its error output.
    [[nodiscard]] QString errorOutput();

private:
    [[nodiscard]] bool waitForActive(const QString &title) const;

    const VirtualScreen &screen;
    const PreparedStore &store;
    QRect window; // The main window's inside, once its connect dialog is out of the way.
    Child program;
    QString errors;
};
