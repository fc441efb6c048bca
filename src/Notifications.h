#pragma once

#include <QHash>
#include <QObject>
#include <QPointer>
#include <QWidget>

class QSystemTrayIcon;

/// Shows notifications with the desktop's notification service or, without one, with the tray icon.
class Notifications final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(Notifications)

public:
    using QObject::QObject;

    /// Shows a notification for five seconds, unless `tray` is hidden. `page` is the argument of
    /// `clicked`.
    void show(QSystemTrayIcon &tray, const QString &title, const QString &message, QWidget *page);

signals:
    /// Emitted when a notification is clicked. `page` is null if it has been deleted.
    void clicked(QWidget *page);

private slots:
    void onActionInvoked(uint id, const QString &action);
    void onActivationToken(uint id, const QString &token);
    void onNotificationClosed(uint id);

private:
    void listen();
    void showByTray(QSystemTrayIcon &tray, const QString &title, const QString &message,
                    QWidget *page);

    bool isListening = false;
    QHash<uint, QPointer<QWidget>> pages; ///< By notification ID.
};
