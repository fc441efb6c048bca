#include "WindowSession.h"

#include "ConnectDialog.h"
#include "IRCConnection.h"
#include "Waiting.h"

#include <QAction>
#include <QLineEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QSplitter>
#include <QTest>
#include <QTimer>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

// The window ignores this line. A number follows it.
const auto Mark = u":mark!mark@mark MARK "_s;

QLineEdit *fieldWithPlaceholder(const ConnectDialog &dialog, const QString &placeholder)
{
    const QList<QLineEdit *> fields = dialog.findChildren<QLineEdit *>();
    for (QLineEdit *field : fields) {
        if (field->placeholderText() == placeholder)
            return field;
    }
    return nullptr;
}

} // namespace

WindowSession::WindowSession()
{
    // Except Qt's warnings about the offscreen platform and fonts that are not installed.
    QTest::failOnWarning(QRegularExpression(
            u"^(?! *This plugin does not support | *OpenType support missing for )"_s));
    QObject::connect(&probe.connection(), &IRCConnection::rawMessageReceived, &window,
                     [this](const QString &line) {
                         if (line.startsWith(Mark))
                             lastMark = line.mid(Mark.size()).toInt();
                     });
    window.show();
    const auto dialog = [this] { return window.findChild<ConnectDialog *>(); };
    if (!waitUntil([&] { return dialog() != nullptr; }))
        return;
    dialog()->reject();
    static_cast<void>(waitUntil([&] { return dialog() == nullptr; }));
}

void WindowSession::choose(const QString &entry)
{
    const QList<QAction *> actions = window.findChildren<QAction *>();
    const auto found = std::find_if(actions.cbegin(), actions.cend(),
                                    [&](const QAction *action) { return action->text() == entry; });
    if (found != actions.cend())
        (*found)->trigger();
}

bool WindowSession::clickConnect(const QString &nick, const QString &channels)
{
    return clickConnect(server.port(), nick, channels, QString());
}

bool WindowSession::clickConnect(quint16 serverPort, const QString &nick, const QString &channels,
                                 const QString &realName)
{
    choose(u"&Connect..."_s);
    auto *dialog = window.findChild<ConnectDialog *>();
    if (dialog == nullptr)
        return false;
    QLineEdit *port = fieldWithPlaceholder(*dialog, u"6667"_s);
    QLineEdit *nickname = fieldWithPlaceholder(*dialog, u"Type you nickname"_s);
    QLineEdit *channelField = fieldWithPlaceholder(*dialog, u"#linux, #help"_s);
    QLineEdit *nameField = fieldWithPlaceholder(*dialog, u"Type you Real name (optionally)"_s);
    // The first field is the host; its placeholder is an example.
    QLineEdit *host = dialog->findChildren<QLineEdit *>().value(0);
    auto *button = dialog->findChild<QPushButton *>(u"connectButton"_s);
    if (!port || !nickname || !channelField || !nameField || !host || !button)
        return false;
    host->setText(u"127.0.0.1"_s);
    port->setText(QString::number(serverPort));
    nickname->setText(nick);
    channelField->setText(channels);
    nameField->setText(realName);
    button->click();
    linesRead = 0;
    return true;
}

bool WindowSession::acceptDialog(const QString &nick, const QString &channels)
{
    const int clients = server.clientCount();
    bool clicked = false;
    // In the event loop, like a mouse click, so that deferred deletions happen at the same time.
    QTimer::singleShot(0, &window, [&] { clicked = clickConnect(nick, channels); });
    return waitUntil([&] { return clicked; }) && server.waitForClient(clients + 1)
           && server.waitForLine("NICK "_L1 + nick);
}

bool WindowSession::registerAs(const QString &nick, const QString &channels)
{
    if (!acceptDialog(nick, channels) || !receive(u":irc.test 001 %1 :Welcome"_s.arg(nick)))
        return false;
    discardSent();
    return probe.connection().isRegistered();
}

bool WindowSession::registerAt(quint16 port, const QString &nick, const QString &channels)
{
    bool clicked = false;
    // InspIRCd requires a real name.
    QTimer::singleShot(0, &window,
                       [&] { clicked = clickConnect(port, nick, channels, u"A window"_s); });
    return waitUntil([&] { return clicked && probe.connection().isRegistered(); });
}

bool WindowSession::receive(const QString &line)
{
    return receiveAll({line});
}

bool WindowSession::receiveAll(const QStringList &lines)
{
    for (const QString &line : lines)
        server.send(line);
    return settle();
}

bool WindowSession::settle()
{
    // The window ignores a user's line with an unknown command. Its signal is emitted before the
    // line is handled, but in the same call, so that the loop below runs after both.
    const int mark = ++marks;
    server.send(Mark + QString::number(mark));
    return waitUntil([&] { return lastMark >= mark; });
}

bool WindowSession::join(const QString &channel, const QString &names)
{
    const QString nick = probe.connection().currentNick();
    return receiveAll({u":%1!user@host JOIN %2"_s.arg(nick, channel),
                       u":irc.test 353 %1 = %2 :%3"_s.arg(nick, channel, names),
                       u":irc.test 366 %1 %2 :End of /NAMES list."_s.arg(nick, channel)});
}

bool WindowSession::settleRatio()
{
    constexpr int Share = 20;
    probe.splitter().setSizes({500, 500});
    return waitUntil([this] { return probe.shareOfUserList() == Share; });
}

QStringList WindowSession::readSent()
{
    if (probe.connection().isConnected()) {
        const QString mark = u"MARK %1"_s.arg(++marks);
        probe.connection().sendRaw(mark);
        if (!server.waitForLine(mark))
            return {u"<lost>"_s};
    }
    static const QRegularExpression noMark(u"^(?!MARK )"_s);
    const QStringList all = server.lines();
    QStringList sent = all.sliced(std::min(linesRead, all.size())).filter(noMark);
    linesRead = all.size();
    return sent;
}

void WindowSession::destroyWindow()
{
    ownedWindow.reset();
}
