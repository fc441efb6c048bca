#include "Scenario.h"

#include <QRegularExpression>

using namespace Qt::StringLiterals;

namespace {

constexpr int BarPixels = 5000; // A status bar has more pixels than this.

} // namespace

Scenario::Scenario(const VirtualScreen &virtualScreen, std::unique_ptr<ServerProcess> realServer)
    : screen(virtualScreen)
    , server(std::move(realServer))
    , program(screen, store)
{
}

bool Scenario::prepare(LoggingProxy::Joins joins, const QString &nick, const QStringList &channels)
{
    if (!server->start() || !bob.registerAt(server->port(), u"bob"_s))
        return false;
    for (const QString &channel : channels) {
        bob.send(u"JOIN "_s + channel);
        if (!bob.waitFor(u" 366 bob %1 "_s.arg(channel)))
            return false;
    }
    proxy = std::make_unique<LoggingProxy>(server->port(), joins);
    store.addServer({.host = u"127.0.0.1"_s,
                     .port = proxy->port(),
                     .nickname = nick,
                     .realName = u"Wanda Walker"_s,
                     .channels = channels});
    return proxy->port() != 0;
}

bool Scenario::start(const QStringList &channels)
{
    if (!prepare(LoggingProxy::Joins::Rewritten, u"wanda"_s, channels) || !program.start()
        || !program.pressConnect())
        return false;
    for (const QString &channel : channels) {
        if (!proxy->waitForProgram(u"NAMES "_s + channel)
            || !proxy->waitForServer(u" 366 wanda %1 "_s.arg(channel)))
            return false;
    }
    // The only line is the program's own join.
    return waitForStatus(Green) && program.waitForLines(1);
}

bool Scenario::waitForStatus(QRgb colour) const
{
    return screen.waitFor([&] { return screen.countPixels(colour) > BarPixels; });
}

QStringList Scenario::sentByProgram() const
{
    return proxy->lines().filter(QRegularExpression(u"^>> "_s));
}

void Scenario::report(const QString &name) const
{
    screen.saveScreenshot(name);
    if (proxy)
        qInfo("Lines exchanged:\n%s", qPrintable(proxy->lines().join(u'\n')));
}

bool Scenario::end()
{
    return !program.isRunning() || (program.close() && program.exitStatus() == 0);
}
