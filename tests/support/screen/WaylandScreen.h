#pragma once

#include "Child.h"
#include "WaylandInput.h"

#include <QList>
#include <QProcessEnvironment>
#include <QRect>
#include <QString>
#include <QTemporaryDir>

/// A Wayland session (sway) on a virtual screen, with a keyboard and a pointer.
///
/// Windows float. sway refuses to run as root, so root runs it as "nobody".
class WaylandScreen final
{
    Q_DISABLE_COPY_MOVE(WaylandScreen)

public:
    struct Window
    {
        QString title;
        bool isFocused = false;
        QRect content; ///< Without sway's title bar.
    };

    WaylandScreen() = default;

    /// Returns the required programs and plugins that are not installed.
    [[nodiscard]] static QStringList missingParts();

    /// Returns false if sway does not start; `failure` returns the reason.
    [[nodiscard]] bool start();
    [[nodiscard]] QString failure() const;

    /// Returns the environment for a program that runs on this screen.
    [[nodiscard]] QProcessEnvironment environment() const;

    [[nodiscard]] QList<Window> windows() const;
    /// Waits until the window with this title has the focus and its final position, and returns its
    /// content area; empty if that fails.
    [[nodiscard]] QRect waitForFocus(const QString &title) const;

    /// Copies to the clipboard or, if `primary`, to the primary selection.
    [[nodiscard]] bool copy(const QString &text, bool primary) const;
    /// Returns the text of the clipboard or, if `primary`, of the primary selection.
    [[nodiscard]] QString pasted(bool primary) const;

    /// Saves a screenshot with this name in the current folder and prints its path.
    void saveScreenshot(const QString &name) const;

    WaylandInput input;

private:
    [[nodiscard]] bool startSway();
    QString run(const QString &program, const QStringList &arguments) const;

    QTemporaryDir session; // sway's, with its sockets.
    QTemporaryDir home;
    QString display;
    QString control;
    QString reason;
    Child sway;
};
