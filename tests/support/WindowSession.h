#pragma once

#include "MainWindow.h"
#include "MainWindowProbe.h"
#include "ScriptedServer.h"

#include <memory>

/// A window on the screen and a scripted server for it to talk to.
///
/// Make a `TemporaryStore` first. The connect dialog that opens at the start is closed, so that it
/// is not in the way.
class WindowSession final
{
    Q_DISABLE_COPY_MOVE(WindowSession)

public:
    WindowSession();

    /// Connects to the server and is welcomed by it as `nick`, through a connect dialog as a user
    /// would do it. False if that fails.
    [[nodiscard]] bool registerAs(const QString &nick = QStringLiteral("me"),
                                  const QString &channels = QString());

    /// Opens the connect dialog and accepts it filled in for the server. False if that fails.
    [[nodiscard]] bool acceptDialog(const QString &nick, const QString &channels = QString());

    /// Sends `line` from the server and waits until the window has taken it in, and all that was
    /// sent before it.
    [[nodiscard]] bool say(const QString &line);

    /// What the client has sent since the last call or the last connect, line by line, as far as
    /// it has arrived: wait for its last line first.
    [[nodiscard]] QStringList takeSent();

    /// Lets the window go as the end of the program does; the server stays. Neither the window nor
    /// its probe is to be touched afterwards.
    void destroyWindow();

    ScriptedServer server;
    MainWindow &window = *new MainWindow;
    MainWindowProbe probe{window};

private:
    std::unique_ptr<MainWindow> ownedWindow{&window};
    QStringList heard;
    qsizetype linesTaken = 0;
};
