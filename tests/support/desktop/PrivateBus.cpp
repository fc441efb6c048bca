#include "PrivateBus.h"

#include "Waiting.h"

#include <QFile>

using namespace Qt::StringLiterals;

namespace {

// Allows the user who runs the tests to send to and own everything.
constexpr QLatin1StringView Configuration = R"(<busconfig>
  <type>session</type>
  <listen>%1</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow send_destination="*"/>
    <allow receive_sender="*"/>
    <allow own="*"/>
  </policy>
</busconfig>
)"_L1;

} // namespace

PrivateBus::~PrivateBus()
{
    kill();
    // Not the machine's buses, which a later test could disturb.
    useAddress(u"unix:path=/nonexistent"_s);
}

bool PrivateBus::start()
{
    const QString fileName = folder.filePath(u"bus.conf"_s);
    QFile file(fileName);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    file.write(QString(Configuration).arg(address()).toUtf8());
    file.close();

    daemon.start(u"dbus-daemon"_s, {u"--nofork"_s, u"--nopidfile"_s, u"--print-address"_s,
                                    QString(u"--config-file="_s + fileName)});
    // The daemon prints its address when it listens.
    if (!daemon.waitForReadyRead(WaitTimeout))
        return false;
    useAddress(address());
    return true;
}

void PrivateBus::kill()
{
    if (daemon.state() == QProcess::NotRunning)
        return;
    daemon.kill();
    daemon.waitForFinished(WaitTimeout);
}

QString PrivateBus::address() const
{
    return u"unix:path="_s + folder.filePath(u"bus"_s);
}

void PrivateBus::useAddress(const QString &address)
{
    qputenv("DBUS_SESSION_BUS_ADDRESS", address.toUtf8());
    qputenv("DBUS_SYSTEM_BUS_ADDRESS", address.toUtf8());
}
