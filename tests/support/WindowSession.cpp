#include "WindowSession.h"

#include "ConnectDialog.h"
#include "IRCConnection.h"

#include <QAction>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

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
    QObject::connect(&probe.connection(), &IRCConnection::rawMessageReceived, &window,
                     [this](const QString &line) { heard.append(line); });
    window.show();
    const auto dialog = [this] { return window.findChild<ConnectDialog *>(); };
    if (!QTest::qWaitFor([&] { return dialog() != nullptr; }))
        return;
    dialog()->reject();
    static_cast<void>(QTest::qWaitFor([&] { return dialog() == nullptr; }));
}

bool WindowSession::acceptDialog(const QString &nick, const QString &channels)
{
    const QList<QAction *> entries = window.findChildren<QAction *>();
    for (QAction *entry : entries) {
        if (entry->text() == "&Connect..."_L1)
            entry->trigger();
    }
    auto *dialog = window.findChild<ConnectDialog *>();
    if (dialog == nullptr)
        return false;
    QLineEdit *port = fieldWithPlaceholder(*dialog, u"6667"_s);
    QLineEdit *nickname = fieldWithPlaceholder(*dialog, u"Type you nickname"_s);
    QLineEdit *channelField = fieldWithPlaceholder(*dialog, u"#linux, #help"_s);
    // The host's field is the first one; its placeholder is but a sample.
    QLineEdit *host = dialog->findChildren<QLineEdit *>().value(0);
    auto *button = dialog->findChild<QPushButton *>(u"connectButton"_s);
    if (!port || !nickname || !channelField || !host || !button)
        return false;
    host->setText(u"127.0.0.1"_s);
    port->setText(QString::number(server.port()));
    nickname->setText(nick);
    channelField->setText(channels);
    const int clients = server.clientCount();
    button->click();
    linesTaken = 0;
    return server.waitForClient(clients + 1) && server.waitForLine("NICK "_L1 + nick);
}

bool WindowSession::registerAs(const QString &nick, const QString &channels)
{
    if (!acceptDialog(nick, channels) || !say(u":irc.test 001 %1 :Welcome"_s.arg(nick)))
        return false;
    static_cast<void>(takeSent());
    return probe.connection().isRegistered();
}

bool WindowSession::say(const QString &line)
{
    // The line's signal comes before it is handled, but in the same call: once the event loop is
    // back, all that the line does is done.
    const qsizetype before = heard.count(line);
    server.send(line);
    return QTest::qWaitFor([&] { return heard.count(line) > before; });
}

QStringList WindowSession::takeSent()
{
    const QStringList all = server.lines();
    const QStringList sent = all.sliced(std::min(linesTaken, all.size()));
    linesTaken = all.size();
    return sent;
}

void WindowSession::destroyWindow()
{
    ownedWindow.reset();
}
