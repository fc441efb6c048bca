#pragma once

#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QPoint>
#include <QStringList>
#include <QVariant>

/// Stands for a desktop on a private bus: it takes tray icons in and shows notifications.
///
/// It is there from its making until it goes. It must not be in the process whose icon it takes in,
/// since what it asks of the icon it waits for.
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
    /// Clicks the notification with this number; the first one has the number 1.
    void clickNotification(uint number) const;

    /// Waits until a tray icon has announced itself.
    [[nodiscard]] bool waitForIcon() const;
    /// A property of the icon; invalid if it has none of that name.
    [[nodiscard]] QVariant iconProperty(const QString &name) const;
    /// Calls "Activate", as for a click, or another method of the icon that takes a place on the
    /// screen.
    bool callIcon(const QString &method) const;

    /// The entries of the icon's menu; the names of their keys are left out.
    [[nodiscard]] QList<MenuEntry> menu() const;
    /// Chooses the entry with this label.
    bool choose(const QString &label) const;

    [[nodiscard]] QString introspect(const QString &path) const override;
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override;

private:
    [[nodiscard]] QDBusMessage call(const QString &path, const QString &interface,
                                    const QString &method, const QVariantList &arguments) const;

    QString connectionName;
    QString iconOwner; // The bus's name for the program that has put its icon here.
    QList<Notification> notified;
};
