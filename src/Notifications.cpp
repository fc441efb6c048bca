#include "Notifications.h"

#include <QGuiApplication>
#include <QSystemTrayIcon>

#ifdef QT_DBUS_LIB
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

#include <utility>
#endif

using namespace Qt::StringLiterals;

namespace {

constexpr int DurationMs = 5000;

constexpr char ActivationToken[] = "XDG_ACTIVATION_TOKEN"; // Read by QWindow::requestActivate().

const auto DefaultAction = u"default"_s; // A click on the notification itself.

#ifdef QT_DBUS_LIB
const auto Service = u"org.freedesktop.Notifications"_s;
const auto Path = u"/org/freedesktop/Notifications"_s;

// Unlike QSystemTrayIcon's message, this has the program's icon and desktop entry, and is
// clickable.
QDBusMessage notifyCall(const QString &title, const QString &message)
{
    const QString entry = QGuiApplication::desktopFileName();
    QDBusMessage call = QDBusMessage::createMethodCall(Service, Path, Service, u"Notify"_s);
    call.setArguments({QGuiApplication::applicationName(), 0U, entry, title, message,
                       QStringList{DefaultAction, Notifications::tr("Show")},
                       QVariantMap{{u"desktop-entry"_s, entry}}, DurationMs});
    return call;
}
#endif

} // namespace

void Notifications::show(QSystemTrayIcon &tray, const QString &title, const QString &message,
                         QWidget *page)
{
    if (!tray.isVisible())
        return;
#ifdef QT_DBUS_LIB
    if (!std::exchange(isListening, true))
        listen();
    const QDBusPendingCall call =
            QDBusConnection::sessionBus().asyncCall(notifyCall(title, message));
    // Without a connection to the bus, QDBusPendingCallWatcher never emits finished().
    if (call.isError()) {
        showByTray(tray, title, message, page);
        return;
    }
    auto *watcher = new QDBusPendingCallWatcher(call, &tray);
    connect(watcher, &QDBusPendingCallWatcher::finished, this,
            [this, watcher, &tray, title, message, page = QPointer<QWidget>(page)] {
                const QDBusPendingReply<uint> id = *watcher;
                if (id.isError())
                    showByTray(tray, title, message, page);
                else
                    pages.insert(id.value(), page);
                watcher->deleteLater();
            });
#else
    showByTray(tray, title, message, page);
#endif
}

#ifdef QT_DBUS_LIB
void Notifications::listen()
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    bus.connect(Service, Path, Service, u"ActionInvoked"_s, this,
                SLOT(onActionInvoked(uint, QString)));
    bus.connect(Service, Path, Service, u"ActivationToken"_s, this,
                SLOT(onActivationToken(uint, QString)));
    bus.connect(Service, Path, Service, u"NotificationClosed"_s, this,
                SLOT(onNotificationClosed(uint)));
}
#endif

void Notifications::showByTray(QSystemTrayIcon &tray, const QString &title, const QString &message,
                               QWidget *page)
{
    disconnect(&tray, &QSystemTrayIcon::messageClicked, this, nullptr);
    connect(&tray, &QSystemTrayIcon::messageClicked, this,
            [this, page = QPointer<QWidget>(page)] { emit clicked(page); });
    tray.showMessage(title, message, QSystemTrayIcon::Information, DurationMs);
}

void Notifications::onActionInvoked(uint id, const QString &action)
{
    if (pages.contains(id) && action == DefaultAction)
        emit clicked(pages.value(id));
    qunsetenv(ActivationToken); // Child processes must not use it.
}

// Received before the action. Wayland only activates a window with a token of the user's click.
void Notifications::onActivationToken(uint id, const QString &token)
{
    if (pages.contains(id))
        qputenv(ActivationToken, token.toUtf8());
}

void Notifications::onNotificationClosed(uint id)
{
    pages.remove(id);
}
