#include "VirtualScreen.h"

#include "Files.h"
#include "RequiredTools.h"
#include "Waiting.h"

#include <QDir>
#include <QHash>
#include <QRegularExpression>
#include <QtEndian>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <functional>
#include <numeric>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr int RowGap = 3; // Within a row of text, gaps have fewer pixel lines than this.

// Xvfb's frame buffer file is an X window dump: a header of big-endian 32-bit numbers, a name, the
// colour map and the pixel rows.
enum DumpField { HeaderSize = 0, Width = 4, Height = 5, BytesPerLine = 12, Colours = 19 };
constexpr qsizetype DumpFields = 25;
constexpr qsizetype BytesPerColour = 12;

QImage readDump(const QByteArray &dump)
{
    std::array<quint32, DumpFields> fields{};
    if (dump.size() < DumpFields * qsizetype(sizeof(quint32)))
        return {};
    qFromBigEndian<quint32>(dump.constData(), DumpFields, fields.data());
    const qsizetype start = fields[HeaderSize] + fields[Colours] * BytesPerColour;
    if (dump.size() < start + qsizetype(fields[BytesPerLine]) * fields[Height])
        return {};
    const auto *pixels = reinterpret_cast<const uchar *>(dump.constData() + start);
    return QImage(pixels, int(fields[Width]), int(fields[Height]), qsizetype(fields[BytesPerLine]),
                  QImage::Format_RGB32)
            .copy();
}

const QRgb *rowOf(const QImage &image, int y)
{
    return reinterpret_cast<const QRgb *>(image.constScanLine(y));
}

bool isNear(QRgb pixel, QRgb colour, int distance)
{
    return std::abs(qRed(pixel) - qRed(colour)) <= distance
           && std::abs(qGreen(pixel) - qGreen(colour)) <= distance
           && std::abs(qBlue(pixel) - qBlue(colour)) <= distance;
}

int countInRow(const QImage &image, int y, int from, int to, QRgb colour, int distance)
{
    return int(std::count_if(rowOf(image, y) + from, rowOf(image, y) + to,
                             [&](QRgb pixel) { return isNear(pixel, colour, distance); }));
}

} // namespace

QStringList VirtualScreen::missingParts()
{
    return missingTools({u"Xvfb"_s, u"openbox"_s, u"xdotool"_s});
}

bool VirtualScreen::start()
{
    return startDisplay() && startWindowManager();
}

QString VirtualScreen::failure() const
{
    return reason;
}

bool VirtualScreen::startDisplay()
{
    // The server chooses the display number and writes it when it is ready. "-r" turns off key
    // auto-repeat: on a busy machine, keys may stay pressed for long.
    const bool launched =
            server.launch(u"Xvfb"_s, {u"-displayfd"_s, u"1"_s, u"-screen"_s, u"0"_s,
                                      u"1400x900x24"_s, u"-fbdir"_s, folder.path(), u"-nolisten"_s,
                                      u"tcp"_s, u"-noreset"_s, u"-r"_s});
    if (!launched) {
        reason = u"Xvfb cannot be started: %1"_s.arg(server.errorString());
        return false;
    }
    QByteArray number;
    const bool ready = waitFor([&] {
        number += server.readAllStandardOutput();
        return number.endsWith('\n') || server.state() == QProcess::NotRunning;
    });
    if (!ready || !number.endsWith('\n')) {
        reason = u"Xvfb does not start: %1"_s.arg(
                QString::fromLocal8Bit(server.readAllStandardError()));
        return false;
    }
    display = u':' + QString::fromLatin1(number.trimmed());
    return true;
}

bool VirtualScreen::startWindowManager()
{
    manager.setProcessEnvironment(environment());
    if (!manager.launch(u"openbox"_s)) {
        reason = u"openbox cannot be started: %1"_s.arg(manager.errorString());
        return false;
    }
    // openbox sets the number of desktops when it is ready to manage windows.
    if (!waitFor([this] { return run({u"get_num_desktops"_s}); })) {
        reason = u"openbox does not start: %1"_s.arg(
                QString::fromLocal8Bit(manager.readAllStandardError()));
        return false;
    }
    return true;
}

QProcessEnvironment VirtualScreen::environment() const
{
    QProcessEnvironment result = Child::privateEnvironment(folder.path());
    result.insert(u"DISPLAY"_s, display);
    result.insert(u"QT_QPA_PLATFORM"_s, u"xcb"_s);
    return result;
}

QImage VirtualScreen::screenshot() const
{
    return readDump(readFile(folder.filePath(u"Xvfb_screen0"_s)));
}

int VirtualScreen::countPixels(QRgb colour, int distance) const
{
    const QImage now = screenshot();
    int count = 0;
    for (int y = 0; y < now.height(); ++y)
        count += countInRow(now, y, 0, now.width(), colour, distance);
    return count;
}

QRect VirtualScreen::findPixels(const QRect &area, QRgb colour, int distance) const
{
    const QImage now = screenshot();
    const QRect visible = area & now.rect();
    QRect found;
    for (int y = visible.top(); y <= visible.bottom(); ++y) {
        for (int x = visible.left(); x <= visible.right(); ++x) {
            if (isNear(rowOf(now, y)[x], colour, distance))
                found |= QRect(x, y, 1, 1);
        }
    }
    return found;
}

int VirtualScreen::countTextRows(const QRect &area, QRgb colour, int distance) const
{
    const QImage now = screenshot();
    const QRect visible = area & now.rect();
    int rows = 0;
    int gap = RowGap;
    for (int y = visible.top(); y <= visible.bottom(); ++y) {
        const bool isText =
                countInRow(now, y, visible.left(), visible.right(), colour, distance) > 0;
        if (isText && gap >= RowGap)
            ++rows;
        gap = isText ? 0 : gap + 1;
    }
    return rows;
}

int VirtualScreen::countChangedPixels(const QImage &before) const
{
    const QImage now = screenshot();
    if (now.size() != before.size())
        return now.width() * now.height();
    int count = 0;
    for (int y = 0; y < now.height(); ++y) {
        const QRgb *row = rowOf(now, y);
        count += std::inner_product(row, row + now.width(), rowOf(before, y), 0, std::plus<>(),
                                    std::not_equal_to<>());
    }
    return count;
}

bool VirtualScreen::waitFor(const std::function<bool()> &condition) const
{
    return pollUntil(condition);
}

QRect VirtualScreen::waitUntilStable(const std::function<QRect()> &find) const
{
    QRect found;
    const auto isStable = [&] {
        const QRect before = std::exchange(found, find());
        return !found.isEmpty() && found == before;
    };
    return waitFor(isStable) ? found : QRect();
}

void VirtualScreen::saveScreenshot(const QString &name) const
{
    const QString file = QDir::current().absoluteFilePath(name + u".png");
    if (screenshot().save(file))
        qInfo("Screenshot: %s", qPrintable(file));
}

QRect VirtualScreen::activeWindow() const
{
    // xdotool adds the frame twice to the position of a window. The position of the mouse is right.
    QString text;
    run({u"getactivewindow"_s, u"getwindowgeometry"_s, u"--shell"_s, u"mousemove"_s, u"--window"_s,
         u"%1"_s, u"0"_s, u"0"_s, u"getmouselocation"_s, u"--shell"_s},
        &text);
    QHash<QString, int> values;
    for (const QString &line : text.split(u'\n'))
        values.insert(line.section(u'=', 0, 0), line.section(u'=', 1).toInt());
    return QRect(values.value(u"X"_s), values.value(u"Y"_s), values.value(u"WIDTH"_s),
                 values.value(u"HEIGHT"_s));
}

QString VirtualScreen::activeTitle() const
{
    QString title;
    run({u"getactivewindow"_s, u"getwindowname"_s}, &title);
    return title.trimmed();
}

bool VirtualScreen::type(const QString &text) const
{
    return run({u"type"_s, u"--delay"_s, u"4"_s, u"--"_s, text});
}

bool VirtualScreen::press(const QString &key) const
{
    return run({u"key"_s, u"--"_s, key});
}

bool VirtualScreen::click(QPoint point, int button) const
{
    return moveMouse(point) && run({u"click"_s, QString::number(button)});
}

bool VirtualScreen::doubleClick(QPoint point) const
{
    // Without a delay, since on a busy machine it can exceed the double-click interval.
    return moveMouse(point)
           && run({u"click"_s, u"--repeat"_s, u"2"_s, u"--delay"_s, u"0"_s, u"1"_s});
}

bool VirtualScreen::moveMouse(QPoint point) const
{
    return run({u"mousemove"_s, QString::number(point.x()), QString::number(point.y())});
}

bool VirtualScreen::activate(const QString &title) const
{
    const QString pattern = u'^' + QRegularExpression::escape(title) + u'$';
    return run({u"search"_s, u"--onlyvisible"_s, u"--name"_s, pattern, u"windowactivate"_s});
}

bool VirtualScreen::minimise() const
{
    return run({u"getactivewindow"_s, u"windowminimize"_s});
}

bool VirtualScreen::run(const QStringList &arguments, QString *output) const
{
    Child tool;
    tool.setProcessEnvironment(environment());
    if (!tool.launch(u"xdotool"_s, arguments) || !tool.waitForFinished(WaitTimeout))
        return false;
    if (output != nullptr)
        *output = QString::fromLocal8Bit(tool.readAllStandardOutput());
    return tool.exitStatus() == QProcess::NormalExit && tool.exitCode() == 0;
}
