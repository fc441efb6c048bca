#include "ChatBackground.h"

#include "ThemeManager.h"

#include <QFileInfo>
#include <QPixmapCache>
#include <QRegularExpression>
#include <QTextBrowser>
#include <QUrl>

using namespace Qt::StringLiterals;

namespace {

// Property of a view with an image: modification time of the image's file when it was applied.
constexpr char ImageTime[] = "backgroundImageTime";

// In kilobytes: the size of the largest image that Qt reads. With Qt's default of 10 MB, each new
// view would decode a large image again and keep its own copy.
constexpr int PixmapCacheLimit = 256 * 1024;

QColor paletteColorFor(const QString &theme, const QString &image, const QColor &color)
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

// Returns `path` as the content of a quoted string in a style sheet.
QString escaped(const QString &path)
{
    static const QRegularExpression endsString(uR"((["\n\r\f]))"_s);
    QString text = path;
    // Two escape sequences, since Qt decodes those first and then drops single backslashes. Of two
    // plain backslashes the second would start an escape sequence before a hexadecimal digit.
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
    : paletteColor(paletteColorFor(theme, image, color))
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
    // The style sheet removes the base colour if the image could be loaded.
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

QString ChatBackground::imageDeclaration(const QString &path)
{
    return u"border-image: url(\"%1\") 0 0 0 0 stretch stretch;"_s.arg(escaped(path));
}
