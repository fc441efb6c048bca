#pragma once

#include <QProcess>
#include <QStringList>
#include <QTemporaryDir>

/// An installed IRC server, run as a child process on a free port of the loopback.
///
/// Its configuration is in a temporary folder. The destructor kills it. It needs no root.
class ServerProcess
{
    Q_DISABLE_COPY_MOVE(ServerProcess)

public:
    virtual ~ServerProcess();

    /// Starts the server and waits until it answers. Returns false if that fails or it is not
    /// installed.
    [[nodiscard]] bool start();

    /// Kills the server to simulate a crash.
    void kill();

    /// Returns the server's name, which is unique.
    [[nodiscard]] QString name() const;
    [[nodiscard]] quint16 port() const;

protected:
    struct Recipe
    {
        QString program;
        QStringList arguments;   ///< The path of the configuration file is appended.
        QString configuration;   ///< With %1 for the port and %2 for the name.
        bool isConfined = false; ///< AppArmor may deny it the temporary folder; a copy is run.
    };

    explicit ServerProcess(const Recipe &serverRecipe);

private:
    [[nodiscard]] QString findProgram() const;
    [[nodiscard]] bool startOn(quint16 candidate);

    Recipe recipe;
    const QString ownName;
    QTemporaryDir folder;
    QProcess process;
    quint16 usedPort = 0;
};
