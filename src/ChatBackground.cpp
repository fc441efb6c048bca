#include "ChatBackground.h"

#include "ThemeManager.h"

#include <QFileInfo>
#include <QPixmapCache>
#include <QRegularExpression>
#include <QSettings>
#include <QTextBrowser>
#include <QUrl>

using namespace Qt::StringLiterals;

namespace {

// The property of a view with an image: when the image's file was modified as of the last apply.
constexpr char ImageTime[] = "backgroundImageTime";

// In kilobytes: as large as the largest image that Qt reads. With Qt's 10 MB every new view would
// decode a large image again and have a copy of its own.
constexpr int PixmapCacheLimit = 256 * 1024;

QColor colorBehind(const QString &theme, const QString &image, const QColor &color)
{
    if (!image.isEmpty())
        return Qt::white;
    if (color.isValid())
        return color;
    return ThemeManager::isDark(theme) ? QColor(0x1E, 0x1E, 0x1E) : QColor(0xFF, 0xFF, 0xFF);
}

QString frameSheet(const QString &theme, const QString &image, const QColor &color)
{
    const QString border = ThemeManager::isDark(theme) ? u"#555"_s : u"#ccc"_s;
    if (image.isEmpty())
        return u"QTextBrowser {   border: 1px solid %1;   background-color: %2;   "
               "border-image: none; }"_s.arg(border, color.name());
    if (QUrl::fromLocalFile(image).isValid())
        return u"QTextBrowser {   border: 1px solid %1;   background-color: white;   "
               "%2 }"_s.arg(border, ChatBackground::imageDeclaration(image));
    return u"QTextBrowser {   border: 1px solid %1;   background-color: white;   "
           "border-image: none; }"_s.arg(border);
}

/// The path as the inside of a quoted string, out of which Qt reads the path as it is.
QString escaped(const QString &path)
{
    static const QRegularExpression endsString(uR"((["\n\r\f]))"_s);
    QString text = path;
    // Twice, since Qt takes code numbers for characters first, and then drops single backslashes.
    // Two plain ones would not do: before a hexadecimal digit the second one starts a code number.
    text.replace(u'\\', uR"(\00005c\00005c)"_s);
    text.replace(endsString, uR"(\\1)"_s);
    return text;
}

QString scrollBarSheet()
{
    return u"QScrollBar:vertical { background: transparent; width: 8px; }"
           "QScrollBar:horizontal { background: transparent; height: 8px; }"
           "QScrollBar::handle { background: rgba(128,128,128,0.5); border-radius: 4px; }"
           "QScrollBar::add-line, QScrollBar::sub-line { border: none; background: none; }"_s;
}

} // namespace

ChatBackground::ChatBackground(const QString &theme, const QString &image, const QColor &color)
    : paletteColor(colorBehind(theme, image, color))
    , sheet(frameSheet(theme, image, paletteColor) + scrollBarSheet())
    , hasImage(!image.isEmpty())
{
    if (!hasImage)
        return;
    imageTime = QFileInfo(image).lastModified();
    QPixmapCache::setCacheLimit(PixmapCacheLimit);
}

bool ChatBackground::isAppliedTo(const QTextBrowser &view) const
{
    const QPalette &palette = view.palette();
    const QBrush &base = palette.brush(QPalette::Base);
    // The sheet of an image that could be loaded removes the base colour.
    const bool isBaseApplied =
            base.color() == paletteColor || (hasImage && base.style() == Qt::NoBrush);
    return isBaseApplied && palette.color(QPalette::Window) == paletteColor
           && view.styleSheet() == sheet
           && (!hasImage || view.property(ImageTime).toDateTime() == imageTime);
}

void ChatBackground::applyTo(QTextBrowser &view) const
{
    view.setAutoFillBackground(true);
    if (isAppliedTo(view))
        return;
    QPalette palette = view.palette();
    palette.setColor(QPalette::Base, paletteColor);
    palette.setColor(QPalette::Window, paletteColor);
    view.setPalette(palette);
    view.setStyleSheet(sheet);
    if (hasImage)
        view.setProperty(ImageTime, imageTime);
    view.viewport()->update();
}

QColor ChatBackground::loadColor(QSettings &settings)
{
    const QString name = settings.value(u"chatBgColor"_s, QString()).toString();
    if (name.isEmpty())
        return {};
    const QColor color = QColor::fromString(name);
    if (color.isValid() && color != Qt::black)
        return color;
    settings.setValue(u"chatBgColor"_s, QString());
    return {};
}

QString ChatBackground::imageDeclaration(const QString &path)
{
    return u"border-image: url(\"%1\") 0 0 0 0 stretch stretch;"_s.arg(escaped(path));
}
