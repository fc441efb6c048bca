#pragma once

#include <QProcess>
#include <QStringList>
#include <QTemporaryDir>

/// A server program of the system's, run as an ordinary process on a free port of the loopback.
///
/// Its configuration lies in a temporary folder, and it ends with the object. It needs no root.
class ServerProcess
{
    Q_DISABLE_COPY_MOVE(ServerProcess)

public:
    virtual ~ServerProcess();

    /// Starts the server and waits until it answers; false if it does not, or is not installed.
    [[nodiscard]] bool start();

    /// Kills the server, as a crash would.
    void kill();

    /// What the server calls itself, which no other does.
    [[nodiscard]] QString name() const;
    [[nodiscard]] quint16 port() const;

protected:
    struct Recipe
    {
        QString program;
        QStringList arguments;   ///< The name of the file with the configuration comes behind them.
        QString configuration;   ///< With %1 for the port and %2 for the name.
        bool isConfined = false; ///< The system may forbid it our folder, wherefore a copy is run.
    };

    explicit ServerProcess(const Recipe &whatToRun);

private:
    [[nodiscard]] QString findProgram() const;
    [[nodiscard]] bool startOn(quint16 candidate);

    Recipe recipe;
    const QString ownName;
    QTemporaryDir folder;
    QProcess process;
    quint16 usedPort = 0;
};
