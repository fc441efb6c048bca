#pragma once

#include "Child.h"

#include <QImage>
#include <QPoint>
#include <QProcessEnvironment>
#include <QRect>
#include <QString>
#include <QTemporaryDir>

#include <functional>

/// A virtual X screen (Xvfb) with a window manager (openbox), a keyboard and a mouse (xdotool).
class VirtualScreen final
{
    Q_DISABLE_COPY_MOVE(VirtualScreen)

public:
    VirtualScreen() = default;

    /// Returns what is needed and not installed.
    [[nodiscard]] static QStringList missingParts();

    /// Starts the display and the window manager. Returns false if that fails; `failure` returns
    /// the reason.
    [[nodiscard]] bool start();
    [[nodiscard]] QString failure() const;

    /// Returns the environment for a program that runs on this screen.
    [[nodiscard]] QProcessEnvironment environment() const;

    [[nodiscard]] QImage screenshot() const;
    /// Returns how many pixels of the screen differ from the colour by at most `distance` in each
    /// of red, green and blue.
    [[nodiscard]] int countPixels(QRgb colour, int distance = 0) const;

    /// Returns the bounding rectangle of those pixels in the area; empty if there are none.
    [[nodiscard]] QRect findPixels(const QRect &area, QRgb colour, int distance) const;

    /// Returns the number of text rows in an area that contains only text of this colour on a plain
    /// background. At least three empty pixel lines separate two rows.
    [[nodiscard]] int countTextRows(const QRect &area, QRgb colour, int distance) const;
    /// Returns how many pixels differ between an earlier screenshot and the screen.
    [[nodiscard]] int countChangedPixels(const QImage &before) const;

    /// Waits until `condition` returns true. Returns false at the timeout.
    ///
    /// Uses `pollUntil`, since most conditions start a program or read the whole screen.
    [[nodiscard]] bool waitFor(const std::function<bool()> &condition) const;

    /// Waits until `find` returns the same non-empty rectangle twice in a row, and returns it. Then
    /// painting has finished. Empty at the timeout.
    [[nodiscard]] QRect waitUntilStable(const std::function<QRect()> &find) const;

    /// Saves a screenshot with this name in the current folder and prints its path.
    void saveScreenshot(const QString &name) const;

    [[nodiscard]] QString activeTitle() const;
    /// Returns the client area of the active window. Moves the mouse to its upper left corner.
    [[nodiscard]] QRect activeWindow() const;

    /// Types ASCII text into the active window.
    bool type(const QString &text) const;
    /// Presses a key, by its X name: "Return", "alt+F4".
    bool press(const QString &key) const;
    /// Clicks with the left (1), middle (2) or right (3) mouse button.
    bool click(QPoint point, int button = 1) const;
    bool doubleClick(QPoint point) const;
    bool moveMouse(QPoint point) const;
    /// Requests that the window with this title is raised and activated. Returns false if there is
    /// no such window.
    [[nodiscard]] bool activate(const QString &title) const;
    /// Minimises the active window.
    bool minimise() const;

private:
    bool startDisplay();
    bool startWindowManager();
    bool run(const QStringList &arguments, QString *output = nullptr) const;

    QTemporaryDir folder; // For Xvfb's frame buffer file, and as the programs' home.
    QString display;
    QString reason;
    Child server;
    Child manager; // After `server`, so that it ends first.
};
