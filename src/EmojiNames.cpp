#include "EmojiNames.h"

#include <QCoreApplication>

#include <algorithm>
#include <array>

namespace {

struct Name
{
    QStringView emoji;
    const char *text = nullptr;
};

constexpr std::array Names{
        Name{u"😀", QT_TRANSLATE_NOOP("EmojiPicker", "grinning face")},
        Name{u"😃", QT_TRANSLATE_NOOP("EmojiPicker", "grinning face with big eyes")},
        Name{u"😄", QT_TRANSLATE_NOOP("EmojiPicker", "grinning face with smiling eyes")},
        Name{u"😁", QT_TRANSLATE_NOOP("EmojiPicker", "beaming face with smiling eyes")},
        Name{u"😅", QT_TRANSLATE_NOOP("EmojiPicker", "grinning face with sweat")},
        Name{u"😂", QT_TRANSLATE_NOOP("EmojiPicker", "face with tears of joy")},
        Name{u"🤣", QT_TRANSLATE_NOOP("EmojiPicker", "rolling on the floor laughing")},
        Name{u"😊", QT_TRANSLATE_NOOP("EmojiPicker", "smiling face with smiling eyes")},
        Name{u"😇", QT_TRANSLATE_NOOP("EmojiPicker", "smiling face with halo")},
        Name{u"🙂", QT_TRANSLATE_NOOP("EmojiPicker", "slightly smiling face")},
        Name{u"😉", QT_TRANSLATE_NOOP("EmojiPicker", "winking face")},
        Name{u"😌", QT_TRANSLATE_NOOP("EmojiPicker", "relieved face")},
        Name{u"😍", QT_TRANSLATE_NOOP("EmojiPicker", "smiling face with heart-eyes")},
        Name{u"🥰", QT_TRANSLATE_NOOP("EmojiPicker", "smiling face with hearts")},
        Name{u"😘", QT_TRANSLATE_NOOP("EmojiPicker", "face blowing a kiss")},
        Name{u"😗", QT_TRANSLATE_NOOP("EmojiPicker", "kissing face")},
        Name{u"👍", QT_TRANSLATE_NOOP("EmojiPicker", "thumbs up")},
        Name{u"👎", QT_TRANSLATE_NOOP("EmojiPicker", "thumbs down")},
        Name{u"👌", QT_TRANSLATE_NOOP("EmojiPicker", "OK hand")},
        Name{u"✌\uFE0F", QT_TRANSLATE_NOOP("EmojiPicker", "victory hand")},
        Name{u"🤞", QT_TRANSLATE_NOOP("EmojiPicker", "crossed fingers")},
        Name{u"🤟", QT_TRANSLATE_NOOP("EmojiPicker", "love-you gesture")},
        Name{u"🤘", QT_TRANSLATE_NOOP("EmojiPicker", "sign of the horns")},
        Name{u"🤙", QT_TRANSLATE_NOOP("EmojiPicker", "call me hand")},
        Name{u"👋", QT_TRANSLATE_NOOP("EmojiPicker", "waving hand")},
        Name{u"🤚", QT_TRANSLATE_NOOP("EmojiPicker", "raised back of hand")},
        Name{u"🖐\uFE0F", QT_TRANSLATE_NOOP("EmojiPicker", "hand with fingers splayed")},
        Name{u"✋", QT_TRANSLATE_NOOP("EmojiPicker", "raised hand")},
        Name{u"🖖", QT_TRANSLATE_NOOP("EmojiPicker", "vulcan salute")},
        Name{u"👏", QT_TRANSLATE_NOOP("EmojiPicker", "clapping hands")},
        Name{u"🙌", QT_TRANSLATE_NOOP("EmojiPicker", "raising hands")},
        Name{u"🤝", QT_TRANSLATE_NOOP("EmojiPicker", "handshake")},
        Name{u"❤\uFE0F", QT_TRANSLATE_NOOP("EmojiPicker", "red heart")},
        Name{u"🧡", QT_TRANSLATE_NOOP("EmojiPicker", "orange heart")},
        Name{u"💛", QT_TRANSLATE_NOOP("EmojiPicker", "yellow heart")},
        Name{u"💚", QT_TRANSLATE_NOOP("EmojiPicker", "green heart")},
        Name{u"💙", QT_TRANSLATE_NOOP("EmojiPicker", "blue heart")},
        Name{u"💜", QT_TRANSLATE_NOOP("EmojiPicker", "purple heart")},
        Name{u"🖤", QT_TRANSLATE_NOOP("EmojiPicker", "black heart")},
        Name{u"🤍", QT_TRANSLATE_NOOP("EmojiPicker", "white heart")},
        Name{u"🤎", QT_TRANSLATE_NOOP("EmojiPicker", "brown heart")},
        Name{u"💔", QT_TRANSLATE_NOOP("EmojiPicker", "broken heart")},
        Name{u"❣\uFE0F", QT_TRANSLATE_NOOP("EmojiPicker", "heart exclamation")},
        Name{u"💕", QT_TRANSLATE_NOOP("EmojiPicker", "two hearts")},
        Name{u"💞", QT_TRANSLATE_NOOP("EmojiPicker", "revolving hearts")},
        Name{u"💓", QT_TRANSLATE_NOOP("EmojiPicker", "beating heart")},
        Name{u"💗", QT_TRANSLATE_NOOP("EmojiPicker", "growing heart")},
        Name{u"💖", QT_TRANSLATE_NOOP("EmojiPicker", "sparkling heart")},
        Name{u"🔥", QT_TRANSLATE_NOOP("EmojiPicker", "fire")},
        Name{u"⭐", QT_TRANSLATE_NOOP("EmojiPicker", "star")},
        Name{u"🌟", QT_TRANSLATE_NOOP("EmojiPicker", "glowing star")},
        Name{u"✨", QT_TRANSLATE_NOOP("EmojiPicker", "sparkles")},
        Name{u"💫", QT_TRANSLATE_NOOP("EmojiPicker", "dizzy")},
        Name{u"🎉", QT_TRANSLATE_NOOP("EmojiPicker", "party popper")},
        Name{u"🎊", QT_TRANSLATE_NOOP("EmojiPicker", "confetti ball")},
        Name{u"🎈", QT_TRANSLATE_NOOP("EmojiPicker", "balloon")},
        Name{u"💯", QT_TRANSLATE_NOOP("EmojiPicker", "hundred points")},
        Name{u"✅", QT_TRANSLATE_NOOP("EmojiPicker", "check mark")},
        Name{u"❌", QT_TRANSLATE_NOOP("EmojiPicker", "cross mark")},
        Name{u"💡", QT_TRANSLATE_NOOP("EmojiPicker", "light bulb")},
        Name{u"💤", QT_TRANSLATE_NOOP("EmojiPicker", "zzz")},
        Name{u"💢", QT_TRANSLATE_NOOP("EmojiPicker", "anger symbol")},
        Name{u"💣", QT_TRANSLATE_NOOP("EmojiPicker", "bomb")},
        Name{u"💥", QT_TRANSLATE_NOOP("EmojiPicker", "collision")},
        Name{u"🐶", QT_TRANSLATE_NOOP("EmojiPicker", "dog face")},
        Name{u"🐱", QT_TRANSLATE_NOOP("EmojiPicker", "cat face")},
        Name{u"🐭", QT_TRANSLATE_NOOP("EmojiPicker", "mouse face")},
        Name{u"🐹", QT_TRANSLATE_NOOP("EmojiPicker", "hamster")},
        Name{u"🐰", QT_TRANSLATE_NOOP("EmojiPicker", "rabbit face")},
        Name{u"🦊", QT_TRANSLATE_NOOP("EmojiPicker", "fox")},
        Name{u"🐻", QT_TRANSLATE_NOOP("EmojiPicker", "bear")},
        Name{u"🐼", QT_TRANSLATE_NOOP("EmojiPicker", "panda")},
        Name{u"🐨", QT_TRANSLATE_NOOP("EmojiPicker", "koala")},
        Name{u"🐯", QT_TRANSLATE_NOOP("EmojiPicker", "tiger face")},
        Name{u"🦁", QT_TRANSLATE_NOOP("EmojiPicker", "lion")},
        Name{u"🐮", QT_TRANSLATE_NOOP("EmojiPicker", "cow face")},
        Name{u"🐷", QT_TRANSLATE_NOOP("EmojiPicker", "pig face")},
        Name{u"🐸", QT_TRANSLATE_NOOP("EmojiPicker", "frog")},
        Name{u"🐵", QT_TRANSLATE_NOOP("EmojiPicker", "monkey face")},
        Name{u"🐔", QT_TRANSLATE_NOOP("EmojiPicker", "chicken")},
        Name{u"🍎", QT_TRANSLATE_NOOP("EmojiPicker", "red apple")},
        Name{u"🍕", QT_TRANSLATE_NOOP("EmojiPicker", "pizza")},
        Name{u"🍔", QT_TRANSLATE_NOOP("EmojiPicker", "hamburger")},
        Name{u"🍟", QT_TRANSLATE_NOOP("EmojiPicker", "french fries")},
        Name{u"🍩", QT_TRANSLATE_NOOP("EmojiPicker", "doughnut")},
        Name{u"🍪", QT_TRANSLATE_NOOP("EmojiPicker", "cookie")},
        Name{u"🎂", QT_TRANSLATE_NOOP("EmojiPicker", "birthday cake")},
        Name{u"🍰", QT_TRANSLATE_NOOP("EmojiPicker", "shortcake")},
        Name{u"☕", QT_TRANSLATE_NOOP("EmojiPicker", "hot beverage")},
        Name{u"🍵", QT_TRANSLATE_NOOP("EmojiPicker", "teacup without handle")},
        Name{u"🍺", QT_TRANSLATE_NOOP("EmojiPicker", "beer mug")},
        Name{u"🍷", QT_TRANSLATE_NOOP("EmojiPicker", "wine glass")},
        Name{u"🍸", QT_TRANSLATE_NOOP("EmojiPicker", "cocktail glass")},
        Name{u"🍹", QT_TRANSLATE_NOOP("EmojiPicker", "tropical drink")},
        Name{u"🧃", QT_TRANSLATE_NOOP("EmojiPicker", "beverage box")},
        Name{u"🥤", QT_TRANSLATE_NOOP("EmojiPicker", "cup with straw")},
};

} // namespace

QString EmojiNames::nameOf(const QString &emoji)
{
    const auto *const found = std::find_if(Names.begin(), Names.end(),
                                           [&](const Name &name) { return name.emoji == emoji; });
    return found != Names.end() ? QCoreApplication::translate("EmojiPicker", found->text)
                                : QString();
}
