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

/// A private accessibility bus (AT-SPI) with its registry, and a client that acts as a screen
/// reader: it traverses the object tree of a program, reads texts and receives events.
///
/// Calls block until the reply, so the program must run in another process.
class AccessibilityBus final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(AccessibilityBus)

public:
    struct Event
    {
        /// Member and detail of the D-Bus signal: "TextChanged:insert".
        QString type;
        int first = 0;
        int second = 0;
        QVariant value;
        AccessibleNode source;
    };

    AccessibilityBus() = default;
    ~AccessibilityBus() override;

    /// Returns what is needed and not installed.
    [[nodiscard]] static QStringList missingParts();

    /// Starts the bus and the registry. Returns false if that fails.
    [[nodiscard]] bool start();

    /// Returns a command prefix that makes the program that follows it use this bus.
    [[nodiscard]] QStringList wrapper() const;

    /// Registers for all object events. Programs send none without a listener.
    [[nodiscard]] bool listen();

    [[nodiscard]] const QList<Event> &events() const { return received; }
    void clearEvents() { received.clear(); }

    /// Waits until a program with this name has registered, and returns its root object.
    [[nodiscard]] std::optional<AccessibleNode> waitForProgram(const QString &name) const;

    [[nodiscard]] QList<AccessibleNode> children(const AccessibleNode &node) const;
    [[nodiscard]] AccessibleNode parent(const AccessibleNode &node) const;
    [[nodiscard]] QString name(const AccessibleNode &node) const;
    [[nodiscard]] QString role(const AccessibleNode &node) const;
    /// Returns whether the bit of an `AtspiStateType` is set.
    [[nodiscard]] bool hasState(const AccessibleNode &node, int state) const;

    /// Returns the first node in preorder with this role and this name.
    [[nodiscard]] std::optional<AccessibleNode>
    find(const AccessibleNode &root, const QString &role, const QString &name) const;
    /// Calls `visit` for `root` and all its descendants in preorder.
    void visitAll(const AccessibleNode &root,
                  const std::function<void(const AccessibleNode &)> &visit) const;

    [[nodiscard]] int textLength(const AccessibleNode &node) const;
    [[nodiscard]] int caret(const AccessibleNode &node) const;
    [[nodiscard]] QString text(const AccessibleNode &node, int start, int end) const;
    /// Returns the line that contains the character at `offset`.
    [[nodiscard]] QString lineAt(const AccessibleNode &node, int offset) const;
    // In screen coordinates.
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
