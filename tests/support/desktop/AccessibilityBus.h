#pragma once

#include "Child.h"
#include "PrivateBus.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QRect>
#include <QStringList>
#include <QTemporaryDir>
#include <QVariant>

#include <functional>
#include <optional>

/// An accessible object of a program on an `AccessibilityBus`.
struct AccessibleNode
{
    QString service;
    QString path;

    friend bool operator==(const AccessibleNode &, const AccessibleNode &) = default;
};

/// A private accessibility bus (AT-SPI) with its registry, and a client that does what a screen
/// reader does: it walks the tree of a program, reads texts and receives events.
///
/// Calls wait for the answer, so the program must be another process.
class AccessibilityBus final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(AccessibilityBus)

public:
    struct Event
    {
        /// As D-Bus has it, with the detail: "TextChanged:insert".
        QString type;
        int first = 0;
        int second = 0;
        QVariant value;
        AccessibleNode source;
    };

    AccessibilityBus() = default;
    ~AccessibilityBus() override;

    /// What is not installed, as a reason to skip a test; empty if nothing is missing.
    [[nodiscard]] static QString missing();

    /// False if the bus or the registry does not come up.
    [[nodiscard]] bool start();

    /// What a command line must start with for its program to use this bus.
    [[nodiscard]] QStringList wrapper() const;

    /// Registers for all events of objects. Programs send none without a listener.
    [[nodiscard]] bool listen();

    [[nodiscard]] const QList<Event> &events() const { return received; }
    void clearEvents() { received.clear(); }

    /// Waits until the program with this name has registered itself.
    [[nodiscard]] std::optional<AccessibleNode> waitForProgram(const QString &name) const;

    [[nodiscard]] QList<AccessibleNode> children(const AccessibleNode &node) const;
    [[nodiscard]] AccessibleNode parent(const AccessibleNode &node) const;
    [[nodiscard]] QString name(const AccessibleNode &node) const;
    [[nodiscard]] QString role(const AccessibleNode &node) const;
    /// True if the bit of an `AtspiStateType` is set.
    [[nodiscard]] bool hasState(const AccessibleNode &node, int state) const;

    /// The first node, parents before their children, with this role and this name.
    [[nodiscard]] std::optional<AccessibleNode>
    find(const AccessibleNode &root, const QString &role, const QString &name) const;
    /// Calls `visit` for `root` and everything under it, parents first.
    void walk(const AccessibleNode &root,
              const std::function<void(const AccessibleNode &)> &visit) const;

    [[nodiscard]] int textLength(const AccessibleNode &node) const;
    [[nodiscard]] int caret(const AccessibleNode &node) const;
    [[nodiscard]] QString text(const AccessibleNode &node, int start, int end) const;
    /// The line at an offset.
    [[nodiscard]] QString lineAt(const AccessibleNode &node, int offset) const;
    /// On the screen.
    [[nodiscard]] QRect characterExtents(const AccessibleNode &node, int offset) const;
    [[nodiscard]] QRect extents(const AccessibleNode &node) const;

private slots:
    void receive(const QDBusMessage &message);

private:
    [[nodiscard]] QVariantList call(const AccessibleNode &node, const QString &interface,
                                    const QString &method,
                                    const QVariantList &arguments = {}) const;
    [[nodiscard]] QVariant property(const AccessibleNode &node, const QString &interface,
                                    const QString &name) const;

    [[nodiscard]] QString addressFromLauncher() const;

    PrivateBus sessionBus;
    QTemporaryDir runtimeFolder;
    Child launcher;
    Child registry;
    QString connectionName;
    QList<Event> received;
};
