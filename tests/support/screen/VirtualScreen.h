#pragma once

#include "Child.h"

#include <QImage>
#include <QPoint>
#include <QProcessEnvironment>
#include <QRect>
#include <QString>
#include <QTemporaryDir>

#include <functional>

/// A screen in memory (Xvfb) with a window manager (openbox) on a free display, and the keyboard
/// and the mouse that belong to it (xdotool).
class VirtualScreen final
{
    Q_DISABLE_COPY_MOVE(VirtualScreen)

public:
    VirtualScreen() = default;

    /// Starts the display and the window manager. False if one of them does not come up; `failure`
    /// tells why.
    [[nodiscard]] bool start();
    [[nodiscard]] QString failure() const;

    /// What a program needs to show itself here, on top of our own environment.
    [[nodiscard]] QProcessEnvironment environment() const;

    /// What the screen shows now.
    [[nodiscard]] QImage screenshot() const;
    /// How many points of the screen are no farther than `distance` from the colour, in each of
    /// red, green and blue.
    [[nodiscard]] int countPixels(QRgb colour, int distance = 0) const;

    /// The smallest rectangle with all those points of the area; empty if there are none.
    [[nodiscard]] QRect findPixels(const QRect &area, QRgb colour, int distance) const;

    /// How many rows of text an area shows that has nothing but text of this colour on a plain
    /// ground: what lies at least three lines of the screen apart is a row of its own.
    [[nodiscard]] int countTextRows(const QRect &area, QRgb colour, int distance) const;
    /// How many points differ between the picture and what the screen shows now.
    [[nodiscard]] int countChangedPixels(const QImage &before) const;

    /// Waits until `condition` holds, which is for whatever changes outside of this process: each
    /// look starts a program or reads the whole picture, so there are few of them. False if it did
    /// not come to hold.
    [[nodiscard]] bool waitFor(const std::function<bool()> &condition) const;

    /// What `look` finds when it has found the same twice in a row, and so nothing is being painted
    /// there any more; waits also until it finds anything at all. Empty if that does not come
    /// about.
    [[nodiscard]] QRect waitUntilStable(const std::function<QRect()> &look) const;

    /// Keeps a picture of the screen under this name in the current folder, and says where.
    void saveScreenshot(const QString &name) const;

    /// The title of the window that has the keyboard.
    [[nodiscard]] QString activeTitle() const;
    /// Where the inside of that window lies. Takes the mouse there.
    [[nodiscard]] QRect activeWindow() const;

    /// Types the text, of ASCII characters, into the window that has the keyboard.
    bool type(const QString &text) const;
    /// Presses one key, written as X names it: "Return", "alt+F4".
    bool press(const QString &key) const;
    /// Clicks with the left button of the mouse (1), the middle (2) or the right one (3).
    bool click(QPoint point, int button = 1) const;
    bool doubleClick(QPoint point) const;
    /// Moves the mouse without a click.
    bool moveMouse(QPoint place) const;
    /// Asks for the window with this title to lie before the others and to have the keyboard. False
    /// if there is none yet.
    [[nodiscard]] bool activate(const QString &title) const;
    /// Minimises the window that has the keyboard.
    bool minimise() const;

private:
    bool startDisplay();
    bool startWindowManager();
    bool run(const QStringList &arguments, QString *output = nullptr) const;

    QTemporaryDir folder; // Holds the picture and stands in for the home of what runs here.
    QString display;
    QString reason;
    Child server;
    Child manager; // Goes before the server does.
};
