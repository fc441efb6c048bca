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

/// Everything that an end-to-end test needs: a real server with another user, "bob", the program's
/// settings, and the program in a real window. Create one for each test function.
struct Scenario final
{
    Q_DISABLE_COPY_MOVE(Scenario)

    // Colours of the status bar, connected and not.
    static constexpr QRgb Green = qRgb(0xd4, 0xed, 0xda);
    static constexpr QRgb Red = qRgb(0xf8, 0xd7, 0xda);

    /// The screen must outlive the object.
    Scenario(const VirtualScreen &virtualScreen, std::unique_ptr<ServerProcess> realServer);

    /// Starts the server and the proxy, lets bob join the channels as their operator, and stores
    /// the proxy's address for the connect dialog.
    [[nodiscard]] bool prepare(LoggingProxy::Joins joins, const QString &nick,
                               const QStringList &channels);
    /// Calls `prepare`, starts the program and lets it connect as "wanda" and join the channels.
    /// The first channel is the current tab then.
    [[nodiscard]] bool start(const QStringList &channels = {QStringLiteral("#room")});

    [[nodiscard]] bool waitForStatus(QRgb colour) const;
    [[nodiscard]] QStringList sentByProgram() const;

    /// Prints the lines that were exchanged and saves a screenshot with this name.
    void report(const QString &name) const;
    /// Closes the program if it is running. Returns false if it does not exit with status 0.
    [[nodiscard]] bool end();

    const VirtualScreen &screen;
    std::unique_ptr<ServerProcess> server;
    std::unique_ptr<LoggingProxy> proxy; ///< Null before `prepare`.
    PlainClient bob;
    PreparedStore store;
    ProgramOnScreen program;
};
