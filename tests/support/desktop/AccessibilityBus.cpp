#include "AccessibilityBus.h"

#include "RequiredTools.h"
#include "Waiting.h"

#include <QDBusArgument>
#include <QDBusConnectionInterface>
#include <QDBusVariant>
#include <QFile>
#include <QStandardPaths>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

const auto RegistryService = u"org.a11y.atspi.Registry"_s;
const auto RegistryPath = u"/org/a11y/atspi/registry"_s;
const auto RootPath = u"/org/a11y/atspi/accessible/root"_s;
const auto Accessible = u"org.a11y.atspi.Accessible"_s;
const auto Component = u"org.a11y.atspi.Component"_s;
const auto Text = u"org.a11y.atspi.Text"_s;
const auto ObjectEvents = u"org.a11y.atspi.Event.Object"_s;

constexpr uint ScreenCoordinates = 0;
constexpr uint LineStart = 5;
constexpr int BitsPerWord = 32;

const auto LauncherService = u"org.a11y.Bus"_s;

// Looks in the folders where distributions install the programs of at-spi2-core.
QString findProgram(const QString &program)
{
    return QStandardPaths::findExecutable(
            program, {u"/usr/libexec"_s, u"/usr/lib/at-spi2-core"_s, u"/usr/lib/at-spi2"_s});
}

QString launcherProgram()
{
    return findProgram(u"at-spi-bus-launcher"_s);
}

QString registryProgram()
{
    return findProgram(u"at-spi2-registryd"_s);
}

bool waitForService(const QDBusConnection &connection, const QString &service)
{
    const auto isRegistered = [&] {
        return connection.interface()->isServiceRegistered(service).value();
    };
    return connection.isConnected() && QTest::qWaitFor(isRegistered, WaitTimeout);
}

AccessibleNode readNode(const QDBusArgument &argument)
{
    AccessibleNode node;
    QDBusObjectPath path;
    argument.beginStructure();
    argument >> node.service >> path;
    argument.endStructure();
    node.path = path.path();
    return node;
}

QRect rectOf(const QVariantList &numbers)
{
    if (numbers.size() != 4)
        return {};
    return {numbers.at(0).toInt(), numbers.at(1).toInt(), numbers.at(2).toInt(),
            numbers.at(3).toInt()};
}

} // namespace

AccessibilityBus::~AccessibilityBus()
{
    QDBusConnection::disconnectFromBus(connectionName);
}

QStringList AccessibilityBus::missingParts()
{
    QStringList missing = missingTools({u"dbus-daemon"_s});
    if (launcherProgram().isEmpty() || registryProgram().isEmpty())
        missing.append(u"at-spi2-core"_s);
    return missing;
}

bool AccessibilityBus::start()
{
    if (!sessionBus.start())
        return false;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"XDG_RUNTIME_DIR"_s, runtimeFolder.path());
    environment.remove(u"DISPLAY"_s);
    launcher.setProcessEnvironment(environment);
    if (!launcher.launch(launcherProgram(), {u"--launch-immediately"_s}))
        return false;
    const QString address = addressFromLauncher();

    // The bus starts the registry by itself, but not for root.
    environment.insert(u"AT_SPI_BUS_ADDRESS"_s, address);
    registry.setProcessEnvironment(environment);
    connectionName = u"accessibility "_s + address;
    const QDBusConnection connection = QDBusConnection::connectToBus(address, connectionName);
    return registry.launch(registryProgram()) && waitForService(connection, RegistryService);
}

QString AccessibilityBus::addressFromLauncher() const
{
    const QString name = u"session of "_s + runtimeFolder.path();
    QString address;
    {
        const QDBusConnection session = QDBusConnection::connectToBus(sessionBus.address(), name);
        if (waitForService(session, LauncherService)) {
            const QDBusMessage request = QDBusMessage::createMethodCall(
                    LauncherService, u"/org/a11y/bus"_s, LauncherService, u"GetAddress"_s);
            address = session.call(request, QDBus::Block, WaitTimeout)
                              .arguments()
                              .value(0)
                              .toString();
        }
    }
    QDBusConnection::disconnectFromBus(name);
    return address;
}

QStringList AccessibilityBus::wrapper() const
{
    return {u"env"_s, u"--unset=AT_SPI_BUS_ADDRESS"_s,
            u"DBUS_SESSION_BUS_ADDRESS="_s + sessionBus.address(),
            u"QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1"_s};
}

bool AccessibilityBus::listen()
{
    QDBusConnection connection(connectionName);
    if (!connection.connect({}, {}, ObjectEvents, {}, this, SLOT(receive(QDBusMessage))))
        return false;
    QDBusMessage request = QDBusMessage::createMethodCall(RegistryService, RegistryPath,
                                                          RegistryService, u"RegisterEvent"_s);
    request.setArguments({u"object:"_s});
    return connection.call(request).type() == QDBusMessage::ReplyMessage;
}

void AccessibilityBus::receive(const QDBusMessage &message)
{
    const QVariantList arguments = message.arguments();
    if (arguments.size() < 4)
        return;
    QString type = message.member();
    if (!arguments.at(0).toString().isEmpty())
        type += u':' + arguments.at(0).toString();
    received.append({.type = type,
                     .first = arguments.at(1).toInt(),
                     .second = arguments.at(2).toInt(),
                     .value = qvariant_cast<QDBusVariant>(arguments.at(3)).variant(),
                     .source = {.service = message.service(), .path = message.path()}});
}

QVariantList AccessibilityBus::call(const AccessibleNode &node, const QString &interface,
                                    const QString &method, const QVariantList &arguments) const
{
    QDBusMessage message =
            QDBusMessage::createMethodCall(node.service, node.path, interface, method);
    message.setArguments(arguments);
    const QDBusMessage reply =
            QDBusConnection(connectionName).call(message, QDBus::Block, WaitTimeout);
    return reply.type() == QDBusMessage::ReplyMessage ? reply.arguments() : QVariantList();
}

QVariant AccessibilityBus::property(const AccessibleNode &node, const QString &interface,
                                    const QString &name) const
{
    const QVariantList answer =
            call(node, u"org.freedesktop.DBus.Properties"_s, u"Get"_s, {interface, name});
    return answer.isEmpty() ? QVariant()
                            : qvariant_cast<QDBusVariant>(answer.constFirst()).variant();
}

std::optional<AccessibleNode> AccessibilityBus::waitForProgram(const QString &name) const
{
    std::optional<AccessibleNode> found;
    const auto isRegistered = [&] {
        const QList<AccessibleNode> programs =
                children({.service = RegistryService, .path = RootPath});
        for (const AccessibleNode &program : programs) {
            if (this->name(program) == name)
                found = program;
        }
        return found.has_value();
    };
    static_cast<void>(QTest::qWaitFor(isRegistered, WaitTimeout));
    return found;
}

QList<AccessibleNode> AccessibilityBus::children(const AccessibleNode &node) const
{
    const QVariantList answer = call(node, Accessible, u"GetChildren"_s);
    QList<AccessibleNode> nodes;
    if (answer.isEmpty())
        return nodes;
    const auto argument = qvariant_cast<QDBusArgument>(answer.constFirst());
    argument.beginArray();
    while (!argument.atEnd())
        nodes.append(readNode(argument));
    argument.endArray();
    return nodes;
}

AccessibleNode AccessibilityBus::parent(const AccessibleNode &node) const
{
    const QVariant answer = property(node, Accessible, u"Parent"_s);
    return answer.isValid() ? readNode(qvariant_cast<QDBusArgument>(answer)) : AccessibleNode();
}

QString AccessibilityBus::name(const AccessibleNode &node) const
{
    return property(node, Accessible, u"Name"_s).toString();
}

QString AccessibilityBus::role(const AccessibleNode &node) const
{
    return call(node, Accessible, u"GetRoleName"_s).value(0).toString();
}

bool AccessibilityBus::hasState(const AccessibleNode &node, int state) const
{
    const QVariantList answer = call(node, Accessible, u"GetState"_s);
    const auto words = qdbus_cast<QList<uint>>(answer.value(0));
    return (words.value(state / BitsPerWord) & (1U << (state % BitsPerWord))) != 0;
}

std::optional<AccessibleNode> AccessibilityBus::find(const AccessibleNode &root,
                                                     const QString &role, const QString &name) const
{
    std::optional<AccessibleNode> found;
    visitAll(root, [&](const AccessibleNode &node) {
        if (!found && this->role(node) == role && this->name(node) == name)
            found = node;
    });
    return found;
}

void AccessibilityBus::visitAll(const AccessibleNode &root,
                                const std::function<void(const AccessibleNode &)> &visit) const
{
    visit(root);
    const QList<AccessibleNode> nodes = children(root);
    for (const AccessibleNode &node : nodes)
        visitAll(node, visit);
}

int AccessibilityBus::textLength(const AccessibleNode &node) const
{
    return property(node, Text, u"CharacterCount"_s).toInt();
}

int AccessibilityBus::caret(const AccessibleNode &node) const
{
    return property(node, Text, u"CaretOffset"_s).toInt();
}

QString AccessibilityBus::text(const AccessibleNode &node, int start, int end) const
{
    return call(node, Text, u"GetText"_s, {start, end}).value(0).toString();
}

QString AccessibilityBus::lineAt(const AccessibleNode &node, int offset) const
{
    return call(node, Text, u"GetTextAtOffset"_s, {offset, LineStart}).value(0).toString();
}

QRect AccessibilityBus::characterExtents(const AccessibleNode &node, int offset) const
{
    return rectOf(call(node, Text, u"GetCharacterExtents"_s, {offset, ScreenCoordinates}));
}

QRect AccessibilityBus::extents(const AccessibleNode &node) const
{
    const QVariantList answer = call(node, Component, u"GetExtents"_s, {ScreenCoordinates});
    if (answer.isEmpty())
        return {};
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
    const auto argument = qvariant_cast<QDBusArgument>(answer.constFirst());
    argument.beginStructure();
    argument >> x >> y >> width >> height;
    argument.endStructure();
    return {x, y, width, height};
}
