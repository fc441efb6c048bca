#pragma once

#include "MainWindow.h"
#include "MainWindowProbe.h"
#include "ScriptedServer.h"

#include <memory>

/// A visible window and a scripted server for it.
///
/// Create a `TemporaryStore` first. The constructor closes the connect dialog that the window opens
/// at the start, and makes any later warning fail the test.
class WindowSession final
{
    Q_DISABLE_COPY_MOVE(WindowSession)

public:
    WindowSession();

    /// Connects with the connect dialog and registers as `nick`. Returns false if that fails.
    [[nodiscard]] bool registerAs(const QString &nick = QStringLiteral("me"),
                                  const QString &channels = QString());

    /// Opens the connect dialog, fills it in for the server, accepts it and waits until the server
    /// has received NICK. Returns false if that fails.
    [[nodiscard]] bool acceptDialog(const QString &nick, const QString &channels = QString());

    /// Opens the connect dialog, fills it in and accepts it, without running an event loop.
    [[nodiscard]] bool clickConnect(const QString &nick, const QString &channels = QString());

    /// Connects and registers with another server on this port of the loopback.
    [[nodiscard]] bool registerAt(quint16 port, const QString &nick,
                                  const QString &channels = QString());

    /// Triggers the menu entry with this text.
    void choose(const QString &entry);

    /// Sends `line` from the server and waits until the window has handled it and all earlier
    /// lines.
    [[nodiscard]] bool receive(const QString &line);
    [[nodiscard]] bool receiveAll(const QStringList &lines);
    /// Waits until the window has handled all complete lines that the server has sent.
    [[nodiscard]] bool settle();

    /// Sends from the server that the user joins `channel`, and its name list, `names`.
    [[nodiscard]] bool join(const QString &channel, const QString &names);

    /// Waits until the window has adjusted the splitter after a change of the current tab, which
    /// must be the last operation; nothing adjusts it afterwards.
    [[nodiscard]] bool settleRatio();

    /// Returns the lines that the client has sent since the last call or the last connect. While it
    /// is connected, waits for all of them; otherwise returns those that have arrived.
    [[nodiscard]] QStringList readSent();
    /// Discards the lines that the client has sent so far.
    void discardSent() { static_cast<void>(readSent()); }

    /// Destroys the window as at the end of the program; the server stays. Do not use the window or
    /// its probe afterwards.
    void destroyWindow();

    ScriptedServer server;
    MainWindow &window = *new MainWindow;
    MainWindowProbe probe{window};

private:
    [[nodiscard]] bool clickConnect(quint16 serverPort, const QString &nick,
                                    const QString &channels, const QString &realName);

    std::unique_ptr<MainWindow> ownedWindow{&window};
    int lastMark = 0;
    qsizetype linesRead = 0;
    int marks = 0;
};
