#include "ServerProcess.h"

#include <QFile>
#include <QHostAddress>
#include <QStandardPaths>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

constexpr int Attempts = 5;
constexpr int Patience = 10000; // In ms.

quint16 freePort()
{
    QTcpServer probe;
    return probe.listen(QHostAddress::LocalHost) ? probe.serverPort() : quint16(0);
}

bool answers(quint16 port)
{
    QTcpSocket probe;
    probe.connectToHost(QHostAddress::LocalHost, port);
    return probe.waitForConnected(1000);
}

} // namespace

ServerProcess::ServerProcess(const Recipe &whatToRun)
    : recipe(whatToRun)
{
}

ServerProcess::~ServerProcess()
{
    kill();
}

bool ServerProcess::start()
{
    // Somebody else may take the port between our look and the server's start.
    for (int attempt = 0; attempt < Attempts; ++attempt) {
        if (startOn(freePort()))
            return true;
        kill();
    }
    return false;
}

void ServerProcess::kill()
{
    if (process.state() == QProcess::NotRunning)
        return;
    process.kill();
    process.waitForFinished(Patience);
}

quint16 ServerProcess::port() const
{
    return usedPort;
}

QString ServerProcess::findProgram() const
{
    QString program = QStandardPaths::findExecutable(recipe.program);
    if (program.isEmpty())
        program = QStandardPaths::findExecutable(recipe.program, {u"/usr/sbin"_s});
    if (program.isEmpty() || !recipe.isConfined)
        return program;
    // Programs are confined by where they lie.
    const QString copy = folder.filePath(recipe.program);
    return QFile::exists(copy) || QFile::copy(program, copy) ? copy : QString();
}

bool ServerProcess::startOn(quint16 candidate)
{
    usedPort = candidate;
    const QString fileName = folder.filePath(u"server.conf"_s);
    QFile file(fileName);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    file.write(recipe.configuration.arg(usedPort).toUtf8());
    file.close();

    const QString program = findProgram();
    if (program.isEmpty())
        return false;
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    process.start(program, recipe.arguments + QStringList{fileName});
    if (!process.waitForStarted(Patience))
        return false;
    return QTest::qWaitFor(
                   [this] { return process.state() != QProcess::Running || answers(usedPort); },
                   Patience)
           && process.state() == QProcess::Running && answers(usedPort);
}
