#pragma once

#include "LoggingProxy.h"
#include "PlainClient.h"
#include "PreparedStore.h"
#include "ProgramOnScreen.h"
#include "ServerProcess.h"
#include "VirtualScreen.h"

#include <QString>
#include <QStringList>

#include <memory>

/// Everything that one walk through the built program needs: a real server with somebody else on
/// it, "bob", the program's settings and the program in a real window. To be made anew for each.
///
/// The program goes by "wanda", unless told otherwise.
struct Scenario final
{
    Q_DISABLE_COPY_MOVE(Scenario)

    // The status bar, connected and not.
    static constexpr QRgb Green = qRgb(0xd4, 0xed, 0xda);
    static constexpr QRgb Red = qRgb(0xf8, 0xd7, 0xda);

    /// The screen must outlive the scenario.
    Scenario(const VirtualScreen &shownOn, std::unique_ptr<ServerProcess> realServer);

    /// Starts the server, lets bob join the channels, in which he is the operator, and puts the
    /// proxy before the program's dialog.
    [[nodiscard]] bool prepare(LoggingProxy::Joins joins, const QString &nick,
                               const QStringList &channels);
    /// The same, and starts the program and lets it connect and join the channels. It shows the
    /// first of them then.
    [[nodiscard]] bool start(const QStringList &channels = {QStringLiteral("#room")});

    /// Waits until the status bar has this colour.
    [[nodiscard]] bool waitForStatus(QRgb colour) const;
    [[nodiscard]] QStringList sentByProgram() const;

    /// Tells what can be seen on the wire, and on the screen in a picture of this name.
    void report(const QString &name) const;
    /// Closes the program unless it has ended. False if it doesn't end, or not as it should.
    [[nodiscard]] bool end();

    const VirtualScreen &screen;
    std::unique_ptr<ServerProcess> server;
    std::unique_ptr<LoggingProxy> proxy; ///< Null before `prepare`.
    PlainClient bob;
    PreparedStore store;
    ProgramOnScreen program;
};
