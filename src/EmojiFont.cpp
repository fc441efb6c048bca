#include "EmojiFont.h"

#include <QFontDatabase>
#include <QStringList>

#include <array>

namespace {

// Empty if none is installed.
QString installedFamily()
{
    static constexpr std::array Families{"Noto Color Emoji", "Apple Color Emoji", "Segoe UI Emoji",
                                         "Twemoji", "JoyPixels"};
    const QStringList installed = QFontDatabase::families();
    for (const char *family : Families) {
        if (installed.contains(QLatin1StringView(family)))
            return QLatin1StringView(family);
    }
    return {};
}

} // namespace

namespace EmojiFont {

QFont colored(QFont font)
{
    static const QString Family = installedFamily();
    if (!Family.isEmpty())
        font.setFamilies({Family});
    return font;
}

} // namespace EmojiFont
