#include "WaylandScreen.h"

#include "RequiredTools.h"
#include "Waiting.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLibraryInfo>
#include <QStandardPaths>
#include <QTest>

#include <unistd.h>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr QSize Size(1400, 900);

constexpr QLatin1StringView Configuration = R"(output HEADLESS-1 resolution %1x%2 position 0 0
default_border normal
focus_follows_mouse no
xwayland disable
for_window [app_id=".*"] floating enable
)"_L1;

QRect readRect(const QJsonValue &value)
{
    return {value[u"x"_s].toInt(), value[u"y"_s].toInt(), value[u"width"_s].toInt(),
            value[u"height"_s].toInt()};
}

void addWindows(const QJsonValue &node, QList<WaylandScreen::Window> *windows)
{
    if (node[u"pid"_s].isDouble()) {
        const QPoint origin = readRect(node[u"rect"_s]).topLeft();
        windows->append({node[u"name"_s].toString(), node[u"focused"_s].toBool(),
                         readRect(node[u"window_rect"_s]).translated(origin)});
    }
    for (const QString &children : {u"nodes"_s, u"floating_nodes"_s}) {
        const QJsonArray nodes = node[children].toArray();
        for (const QJsonValue &child : nodes)
            addWindows(child, windows);
    }
}

QRect focusedArea(const QList<WaylandScreen::Window> &windows, const QString &title)
{
    for (const WaylandScreen::Window &window : windows) {
        if (window.isFocused && window.title == title)
            return window.content;
    }
    return {};
}

// Returns the first socket in the folder whose name matches.
QString findSocket(const QString &folder, const QString &pattern)
{
    const QStringList found = QDir(folder).entryList({pattern}, QDir::System);
    return found.isEmpty() ? QString() : folder + u'/' + found.first();
}

} // namespace

QStringList WaylandScreen::missingParts()
{
    QStringList missing =
            missingTools({u"sway"_s, u"swaymsg"_s, u"grim"_s, u"wl-copy"_s, u"wl-paste"_s});
    const QDir plugins(QLibraryInfo::path(QLibraryInfo::PluginsPath) + u"/platforms"_s);
    if (plugins.entryList({u"libqwayland*"_s}).isEmpty())
        missing.append(u"qt6-wayland"_s);
    return missing;
}

bool WaylandScreen::start()
{
    if (!startSway())
        return false;
    if (!input.open(display, Size)) {
        reason = u"sway does not accept virtual input"_s;
        return false;
    }
    return true;
}

bool WaylandScreen::startSway()
{
    constexpr uid_t Nobody = 65534;
    QFile file(session.filePath(u"sway.conf"_s));
    if (!file.open(QIODevice::WriteOnly))
        return false;
    file.write(QString(Configuration).arg(Size.width()).arg(Size.height()).toLatin1());
    file.close();
    QStringList command{u"sway"_s, u"-c"_s, file.fileName()};
    if (geteuid() == 0) {
        const QByteArray folder = QFile::encodeName(session.path());
        if (::chown(folder.constData(), Nobody, Nobody) != 0)
            return false;
        file.setPermissions(QFile::ReadOwner | QFile::ReadOther);
        const QString id = QString::number(Nobody);
        command = QStringList{u"setpriv"_s, u"--reuid="_s + id, u"--regid="_s + id,
                              u"--clear-groups"_s, u"--pdeathsig=TERM"_s}
                  + command;
    }
    QProcessEnvironment environment = Child::privateEnvironment(session.path());
    environment.insert(u"WLR_BACKENDS"_s, u"headless"_s);
    environment.insert(u"WLR_RENDERER"_s, u"pixman"_s);
    environment.insert(u"WLR_LIBINPUT_NO_DEVICES"_s, u"1"_s);
    sway.setProcessEnvironment(environment);
    const auto isReady = [this] {
        display = findSocket(session.path(), u"wayland-*"_s);
        control = findSocket(session.path(), u"sway-ipc*"_s);
        return !display.isEmpty() && !control.isEmpty();
    };
    if (sway.launch(command.first(), command.mid(1)) && QTest::qWaitFor(isReady, WaitTimeout))
        return true;
    reason = u"sway does not start: %1"_s.arg(QString::fromLocal8Bit(sway.readAllStandardError()));
    return false;
}

QString WaylandScreen::failure() const
{
    return reason;
}

QProcessEnvironment WaylandScreen::environment() const
{
    QProcessEnvironment result = Child::privateEnvironment(home.path());
    result.insert(u"WAYLAND_DISPLAY"_s, display);
    result.insert(u"SWAYSOCK"_s, control);
    result.insert(u"QT_QPA_PLATFORM"_s, u"wayland"_s);
    return result;
}

QList<WaylandScreen::Window> WaylandScreen::windows() const
{
    const QString tree = run(u"swaymsg"_s, {u"-r"_s, u"-t"_s, u"get_tree"_s});
    QList<Window> found;
    addWindows(QJsonDocument::fromJson(tree.toUtf8()).object(), &found);
    return found;
}

QRect WaylandScreen::waitForFocus(const QString &title) const
{
    // sway positions a window in several steps, so the area must be the same twice.
    QRect content;
    const auto isFinal = [&] {
        const QRect before = std::exchange(content, focusedArea(windows(), title));
        return !content.isEmpty() && content == before;
    };
    return pollUntil(isFinal) ? content : QRect();
}

bool WaylandScreen::copy(const QString &text, bool primary) const
{
    QStringList arguments{u"--"_s, text};
    if (primary)
        arguments.prepend(u"--primary"_s);
    run(u"wl-copy"_s, arguments);
    return pasted(primary) == text;
}

QString WaylandScreen::pasted(bool primary) const
{
    QStringList arguments{u"--no-newline"_s};
    if (primary)
        arguments.append(u"--primary"_s);
    return run(u"wl-paste"_s, arguments);
}

void WaylandScreen::saveScreenshot(const QString &name) const
{
    const QString file = QDir::current().absoluteFilePath(name + u".png");
    run(u"grim"_s, {file});
    qInfo("Screenshot: %s", qPrintable(file));
}

QString WaylandScreen::run(const QString &program, const QStringList &arguments) const
{
    Child tool;
    tool.setProcessEnvironment(environment());
    if (!tool.launch(program, arguments) || !tool.waitForFinished(WaitTimeout))
        return {};
    return QString::fromUtf8(tool.readAllStandardOutput());
}
