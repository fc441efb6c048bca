#include "WaylandInput.h"

#include "Waiting.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QStringList>
#include <QTemporaryFile>

#include <algorithm>
#include <array>
#include <cstring>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

constexpr quint32 WlDisplay = 1;

// X key codes; Wayland's are smaller by the offset. Each printable ASCII character has its own key,
// so that none needs Shift.
constexpr quint32 CodeOffset = 8;
constexpr quint32 FirstCode = 9;
constexpr char FirstCharacter = ' ';
constexpr quint32 CharacterCount = 95;

constexpr quint32 Control = 1U << 2U;
constexpr quint32 Alt = 1U << 3U;

constexpr std::array<quint32, 4> Buttons{0, 0x110, 0x112, 0x111}; // Left, middle, right.

const QStringList &namedKeys()
{
    static const QStringList keys{u"Return"_s, u"Escape"_s, u"Tab"_s, u"Up"_s, u"Down"_s};
    return keys;
}

QByteArray keymap()
{
    QByteArray codes;
    QByteArray symbols;
    auto add = [&, code = FirstCode](const QByteArray &symbol) mutable {
        const QByteArray number = QByteArray::number(code++);
        codes += "<K" + number + "> = " + number + ";\n";
        symbols += "key <K" + number + "> { [ " + symbol + " ] };\n";
    };
    for (quint32 index = 0; index < CharacterCount; ++index)
        add("0x" + QByteArray::number(quint32(FirstCharacter) + index, 16));
    for (const QString &key : namedKeys())
        add(key.toLatin1());
    return "xkb_keymap {\n"
           "xkb_keycodes \"test\" { minimum = 8; maximum = 255;\n"
           + codes
           + "};\nxkb_types \"test\" { include \"complete\" };\n"
             "xkb_compatibility \"test\" { include \"complete\" };\n"
             "xkb_symbols \"test\" {\n"
           + symbols + "};\n};\n";
}

QByteArray number(quint32 value)
{
    return QByteArray(reinterpret_cast<const char *>(&value), sizeof value);
}

quint32 readNumber(const QByteArray &bytes, qsizetype offset)
{
    quint32 value = 0;
    if (offset + qsizetype(sizeof value) <= bytes.size())
        std::memcpy(&value, bytes.constData() + offset, sizeof value);
    return value;
}

QByteArray padded(QByteArray text)
{
    const auto size = static_cast<quint32>(text.size()) + 1;
    text.append(4 - text.size() % 4, '\0');
    return number(size) + text;
}

quint32 now()
{
    return static_cast<quint32>(QDeadlineTimer::current(Qt::PreciseTimer).deadline());
}

} // namespace

WaylandInput::~WaylandInput()
{
    if (connection >= 0)
        ::close(connection);
}

bool WaylandInput::open(const QString &socketPath, QSize size)
{
    screen = size;
    connection = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const QByteArray path = QFile::encodeName(socketPath);
    if (connection < 0 || path.size() >= qsizetype(sizeof address.sun_path))
        return false;
    std::copy(path.cbegin(), path.cend(), address.sun_path);
    if (::connect(connection, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0)
        return false;

    registry = ++lastId;
    if (!send(WlDisplay, 1, number(registry)) || !sync())
        return false;
    const Id seat = bind("wl_seat"_ba, 1);
    const Id pointers = bind("zwlr_virtual_pointer_manager_v1"_ba, 1);
    const Id keyboards = bind("zwp_virtual_keyboard_manager_v1"_ba, 1);
    pointer = ++lastId;
    keyboard = pointer + 1;
    lastId = keyboard;
    return send(pointers, 0, number(seat) + number(pointer))
           && send(keyboards, 0, number(seat) + number(keyboard)) && sendKeymap();
}

bool WaylandInput::type(const QString &text)
{
    return std::all_of(text.cbegin(), text.cend(),
                       [this](QChar character) { return press(character); });
}

bool WaylandInput::press(const QString &key)
{
    quint32 modifiers = 0;
    if (key.startsWith("ctrl+"_L1))
        modifiers = Control;
    else if (key.startsWith("alt+"_L1))
        modifiers = Alt;
    const QString plain = modifiers == 0 ? key : key.section(u'+', 1);
    if (plain.size() == 1)
        return pressKey(FirstCode + plain.front().unicode() - FirstCharacter, modifiers);
    const auto index = static_cast<quint32>(namedKeys().indexOf(plain));
    return pressKey(FirstCode + CharacterCount + index, modifiers);
}

bool WaylandInput::moveTo(QPoint point)
{
    return send(pointer, 1,
                number(now()) + number(quint32(point.x())) + number(quint32(point.y()))
                        + number(quint32(screen.width())) + number(quint32(screen.height())))
           && send(pointer, 4) && sync();
}

bool WaylandInput::click(QPoint point, int button)
{
    if (!moveTo(point))
        return false;
    for (const quint32 isPressed : {1U, 0U}) {
        if (!send(pointer, 2,
                  number(now()) + number(Buttons.at(size_t(button))) + number(isPressed))
            || !send(pointer, 4) || !sync()) {
            return false;
        }
    }
    return true;
}

WaylandInput::Id WaylandInput::bind(const QByteArray &interface, quint32 version)
{
    const Id id = ++lastId;
    if (!send(registry, 0,
              number(globals.value(interface)) + padded(interface) + number(version) + number(id)))
        failed = true;
    return id;
}

bool WaylandInput::sendKeymap()
{
    constexpr quint32 XkbVersion1 = 1;
    const QByteArray text = keymap() + '\0';
    QTemporaryFile file;
    return file.open() && file.write(text) == text.size() && file.flush()
           && send(keyboard, 0, number(XkbVersion1) + number(quint32(text.size())), file.handle())
           && sync();
}

bool WaylandInput::pressKey(quint32 code, quint32 modifiers)
{
    const auto sendModifiers = [this](quint32 mask) {
        return send(keyboard, 2, number(mask) + number(0) + number(0) + number(0));
    };
    const auto sendKey = [this, code](quint32 isPressed) {
        return send(keyboard, 1, number(now()) + number(code - CodeOffset) + number(isPressed));
    };
    return sendModifiers(modifiers) && sendKey(1) && sendKey(0) && sendModifiers(0) && sync();
}

bool WaylandInput::send(Id object, quint32 request, const QByteArray &arguments, int descriptor)
{
    constexpr qsizetype HeaderSize = 8;
    QByteArray message = number(object)
                         + number(quint32(HeaderSize + arguments.size()) << 16U | request)
                         + arguments;
    iovec part{message.data(), size_t(message.size())};
    msghdr header{};
    header.msg_iov = &part;
    header.msg_iovlen = 1;
    alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof descriptor)> control{};
    if (descriptor >= 0) {
        header.msg_control = control.data();
        header.msg_controllen = control.size();
        cmsghdr *attached = CMSG_FIRSTHDR(&header);
        attached->cmsg_level = SOL_SOCKET;
        attached->cmsg_type = SCM_RIGHTS;
        attached->cmsg_len = CMSG_LEN(sizeof descriptor);
        std::memcpy(CMSG_DATA(attached), &descriptor, sizeof descriptor);
    }
    return ::sendmsg(connection, &header, MSG_NOSIGNAL) == message.size();
}

bool WaylandInput::sync()
{
    const Id callback = ++lastId;
    if (failed || !send(WlDisplay, 0, number(callback)))
        return false;
    while (answered != callback) {
        if (!readEvents())
            return false;
    }
    return true;
}

bool WaylandInput::readEvents()
{
    pollfd wait{connection, POLLIN, 0};
    std::array<char, 65536> buffer{};
    if (::poll(&wait, 1, WaitTimeout) != 1)
        return false;
    const ssize_t size = ::recv(connection, buffer.data(), buffer.size(), 0);
    if (size <= 0)
        return false;
    received.append(buffer.data(), size);
    while (received.size() >= 8) {
        const quint32 word = readNumber(received, 4);
        const qsizetype length = word >> 16U;
        if (length < 8 || received.size() < length)
            break;
        handleEvent(readNumber(received, 0), word & 0xFFFFU, received.mid(8, length - 8));
        received.remove(0, length);
    }
    return !failed;
}

void WaylandInput::handleEvent(Id object, quint32 event, const QByteArray &arguments)
{
    if (object == WlDisplay)
        failed = failed || event == 0;
    else if (object == registry && event == 0)
        globals.insert(arguments.mid(8, readNumber(arguments, 4) - 1), readNumber(arguments, 0));
    else
        answered = object;
}
