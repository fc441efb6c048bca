#pragma once

#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QPoint>
#include <QStringList>
#include <QVariant>

/// A fake desktop on a private bus, for tray icons and notifications.
///
/// It provides its services from construction to destruction. Its calls to an icon block, so the
/// icon must belong to another process.
class FakeDesktop final : public QDBusVirtualObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(FakeDesktop)

public:
    struct Notification
    {
        QString program;
        QString icon;
        QString title;
        QString text;
        QStringList actions;
        QVariantMap hints;
        int duration = 0; ///< In ms.
    };

    struct MenuEntry
    {
        int id = 0;
        QString label;
        bool isSeparator = false;
    };

    explicit FakeDesktop(const QString &busAddress);
    ~FakeDesktop() override;

    [[nodiscard]] QList<Notification> notifications() const;
    /// Clicks the notification with this number, counted from 1.
    void clickNotification(uint number) const;

    /// Waits until a tray icon has registered.
    [[nodiscard]] bool waitForIcon() const;
    /// Returns a property of the icon; invalid if the icon does not have it.
    [[nodiscard]] QVariant iconProperty(const QString &name) const;
    /// Calls a method of the icon whose arguments are screen coordinates, such as "Activate" for a
    /// click.
    bool callIcon(const QString &method) const;

    /// Returns the entries of the icon's menu. Their labels have no mnemonic markers.
    [[nodiscard]] QList<MenuEntry> menu() const;
    /// Triggers the menu entry with this label.
    bool choose(const QString &label) const;

    [[nodiscard]] QString introspect(const QString &path) const override;
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override;

private:
    [[nodiscard]] QDBusMessage call(const QString &path, const QString &interface,
                                    const QString &method, const QVariantList &arguments) const;

    QString connectionName;
    QString iconOwner; // Bus name of the program that registered the icon.
    QList<Notification> notified;
};
