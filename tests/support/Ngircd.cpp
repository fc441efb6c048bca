#include "Ngircd.h"

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

constexpr QLatin1StringView Configuration = R"([Global]
Name = irc.velmora.test
Info = A server for tests
Listen = 127.0.0.1
Ports = %1
MotdPhrase = "Be kind."
[Limits]
MaxConnectionsIP = 0
MaxNickLength = 31
MaxPenaltyTime = 0
[Options]
DNS = no
Ident = no
PAM = no
)"_L1;

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

Ngircd::~Ngircd()
{
    kill();
}

bool Ngircd::start()
{
    // Somebody else may take the port between our look and the server's start.
    for (int attempt = 0; attempt < Attempts; ++attempt) {
        if (startOn(freePort()))
            return true;
        kill();
    }
    return false;
}

void Ngircd::kill()
{
    if (process.state() == QProcess::NotRunning)
        return;
    process.kill();
    process.waitForFinished(Patience);
}

quint16 Ngircd::port() const
{
    return usedPort;
}

bool Ngircd::startOn(quint16 candidate)
{
    usedPort = candidate;
    const QString fileName = folder.filePath(u"ngircd.conf"_s);
    QFile file(fileName);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    file.write(QString(Configuration).arg(usedPort).toUtf8());
    file.close();

    QString program = QStandardPaths::findExecutable(u"ngircd"_s);
    if (program.isEmpty())
        program = QStandardPaths::findExecutable(u"ngircd"_s, {u"/usr/sbin"_s});
    if (program.isEmpty())
        return false;
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    process.start(program, {u"-n"_s, u"-f"_s, fileName});
    if (!process.waitForStarted(Patience))
        return false;
    return QTest::qWaitFor(
                   [this] { return process.state() != QProcess::Running || answers(usedPort); },
                   Patience)
           && process.state() == QProcess::Running && answers(usedPort);
}
