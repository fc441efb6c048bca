#pragma once

#include "MainWindow.h"
#include "MainWindowProbe.h"
#include "ScriptedServer.h"

#include <memory>

/// A window on the screen and a scripted server for it to talk to.
///
/// Make a `TemporaryStore` first. The connect dialog that opens at the start is closed, so that it
/// is not in the way. Any warning fails the test from then on.
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

    /// The same up to the click that accepts: no event loop runs after it.
    [[nodiscard]] bool clickConnect(const QString &nick, const QString &channels = QString());

    /// The same as `registerAs` with another server that listens on this port of the loopback.
    [[nodiscard]] bool registerAt(quint16 port, const QString &nick,
                                  const QString &channels = QString());

    /// Triggers the menu entry with this text.
    void choose(const QString &entry);

    /// Sends `line` from the server and waits until the window has taken it in, and all that was
    /// sent before it.
    [[nodiscard]] bool receive(const QString &line);
    /// Says each of `lines`, in one go.
    [[nodiscard]] bool receiveAll(const QStringList &lines);
    /// Waits until the window has taken in all that the server has sent, line ends provided.
    [[nodiscard]] bool settle();

    /// Has the server tell that the user joins `channel`, and who is there: `names` as a name list
    /// has them.
    [[nodiscard]] bool join(const QString &channel, const QString &names);

    /// Waits until the ratio of the splitter has been set anew behind a tab's change, which must
    /// have been the last that was done: nothing sets it any more then.
    [[nodiscard]] bool settleRatio();

    /// What the client has sent since the last call or the last connect, line by line: all of it
    /// while it is connected, and what has arrived by now if it isn't.
    [[nodiscard]] QStringList readSent();
    /// Forgets what the client has sent until now.
    void discardSent() { static_cast<void>(readSent()); }

    /// Lets the window go as the end of the program does; the server stays. Neither the window nor
    /// its probe is to be touched afterwards.
    void destroyWindow();

    ScriptedServer server;
    MainWindow &window = *new MainWindow;
    MainWindowProbe probe{window};

private:
    [[nodiscard]] bool clickConnect(quint16 serverPort, const QString &nick,
                                    const QString &channels, const QString &realName);

    std::unique_ptr<MainWindow> ownedWindow{&window};
    int lastMark = 0;
    qsizetype linesTaken = 0;
    int marks = 0;
};
