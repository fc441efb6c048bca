#include "ServerProcess.h"

#include "Waiting.h"

#include <QFile>
#include <QHostAddress>
#include <QRandomGenerator>
#include <QStandardPaths>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

constexpr int Attempts = 5;
constexpr int ReplyTimeout = 5000; // In ms, for one attempt.

quint16 freePort()
{
    QTcpServer probe;
    return probe.listen(QHostAddress::LocalHost) ? probe.serverPort() : quint16(0);
}

// Returns the name of the server that listens on the port; empty if none answers.
QByteArray nameOfServerOn(quint16 port)
{
    QTcpSocket probe;
    probe.connectToHost(QHostAddress::LocalHost, port);
    if (!probe.waitForConnected(WaitTimeout))
        return {};
    // Before registration, the server refuses LIST with a reply that has its name as the prefix.
    probe.write("LIST\r\n");
    while (!probe.canReadLine()) {
        if (!probe.waitForReadyRead(ReplyTimeout))
            return {};
    }
    const QByteArray line = probe.readLine();
    return line.startsWith(':') ? line.mid(1, line.indexOf(' ') - 1) : QByteArray();
}

} // namespace

ServerProcess::ServerProcess(const Recipe &serverRecipe)
    : recipe(serverRecipe)
    , ownName(u"irc-%1.velmora.test"_s.arg(
              QString::number(QRandomGenerator::system()->generate(), 16)))
{
}

ServerProcess::~ServerProcess()
{
    kill();
}

bool ServerProcess::start()
{
    // Between freePort() and the start, another process may bind the port, perhaps another server.
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
    process.waitForFinished(WaitTimeout);
}

QString ServerProcess::name() const
{
    return ownName;
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
    // AppArmor confines programs by their path.
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
    file.write(recipe.configuration.arg(usedPort).arg(ownName).toUtf8());
    file.close();

    const QString program = findProgram();
    if (program.isEmpty())
        return false;
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    process.start(program, recipe.arguments + QStringList{fileName});
    if (!process.waitForStarted(WaitTimeout))
        return false;
    QByteArray name;
    const auto hasResult = [&] {
        name = nameOfServerOn(usedPort);
        return !name.isEmpty() || process.state() != QProcess::Running;
    };
    return QTest::qWaitFor(hasResult, WaitTimeout) && process.state() == QProcess::Running
           && name == ownName.toUtf8();
}
