#include "EmojiPicker.h"

#include "EmojiFont.h"
#include "PopupArea.h"
#include "ThemeManager.h"

#include <QGridLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QList>
#include <QPoint>
#include <QPushButton>
#include <QRect>
#include <QVBoxLayout>

#include <array>
#include <span>

using namespace Qt::StringLiterals;

namespace {

constexpr int Columns = 8;
constexpr int ButtonSize = 36;

// Pixels between the picker and its button or the edge of the screen. Beside the button, this gap
// must also fit on the far side of the picker.
constexpr int Gap = 5;

// Returns the columns and rows that an arrow key moves by; null for other keys.
QPoint stepOf(int key)
{
    switch (key) {
    case Qt::Key_Left:
        return {-1, 0};
    case Qt::Key_Right:
        return {1, 0};
    case Qt::Key_Up:
        return {0, -1};
    case Qt::Key_Down:
        return {0, 1};
    default:
        return {};
    }
}

// Moves the focus from `button` to the next button in the direction of `step`, if there is one.
// Skips headings.
void moveFocus(QWidget &button, QPoint step)
{
    const auto *grid = static_cast<QGridLayout *>(button.parentWidget()->layout());
    int row = 0;
    int column = 0;
    int rows = 0;
    int columns = 0;
    grid->getItemPosition(grid->indexOf(&button), &row, &column, &rows, &columns);
    const QLayoutItem *item = nullptr;
    do {
        row += step.y();
        column += step.x();
        item = grid->itemAtPosition(row, column);
    } while (item && item->widget()->focusPolicy() == Qt::NoFocus);
    if (item)
        item->widget()->setFocus(Qt::TabFocusReason);
}

struct Emoji
{
    QStringView text;
    const char *name = nullptr; ///< For screen readers; translated by the picker.
};

// U+FE0F makes an emoji of a character that is a text symbol otherwise.
constexpr std::array Smileys{
        Emoji{u"😀", QT_TRANSLATE_NOOP("EmojiPicker", "grinning face")},
        Emoji{u"😃", QT_TRANSLATE_NOOP("EmojiPicker", "grinning face with big eyes")},
        Emoji{u"😄", QT_TRANSLATE_NOOP("EmojiPicker", "grinning face with smiling eyes")},
        Emoji{u"😁", QT_TRANSLATE_NOOP("EmojiPicker", "beaming face with smiling eyes")},
        Emoji{u"😅", QT_TRANSLATE_NOOP("EmojiPicker", "grinning face with sweat")},
        Emoji{u"😂", QT_TRANSLATE_NOOP("EmojiPicker", "face with tears of joy")},
        Emoji{u"🤣", QT_TRANSLATE_NOOP("EmojiPicker", "rolling on the floor laughing")},
        Emoji{u"😊", QT_TRANSLATE_NOOP("EmojiPicker", "smiling face with smiling eyes")},
        Emoji{u"😇", QT_TRANSLATE_NOOP("EmojiPicker", "smiling face with halo")},
        Emoji{u"🙂", QT_TRANSLATE_NOOP("EmojiPicker", "slightly smiling face")},
        Emoji{u"😉", QT_TRANSLATE_NOOP("EmojiPicker", "winking face")},
        Emoji{u"😌", QT_TRANSLATE_NOOP("EmojiPicker", "relieved face")},
        Emoji{u"😍", QT_TRANSLATE_NOOP("EmojiPicker", "smiling face with heart-eyes")},
        Emoji{u"🥰", QT_TRANSLATE_NOOP("EmojiPicker", "smiling face with hearts")},
        Emoji{u"😘", QT_TRANSLATE_NOOP("EmojiPicker", "face blowing a kiss")},
        Emoji{u"😗", QT_TRANSLATE_NOOP("EmojiPicker", "kissing face")},
};

constexpr std::array Gestures{
        Emoji{u"👍", QT_TRANSLATE_NOOP("EmojiPicker", "thumbs up")},
        Emoji{u"👎", QT_TRANSLATE_NOOP("EmojiPicker", "thumbs down")},
        Emoji{u"👌", QT_TRANSLATE_NOOP("EmojiPicker", "OK hand")},
        Emoji{u"✌\uFE0F", QT_TRANSLATE_NOOP("EmojiPicker", "victory hand")},
        Emoji{u"🤞", QT_TRANSLATE_NOOP("EmojiPicker", "crossed fingers")},
        Emoji{u"🤟", QT_TRANSLATE_NOOP("EmojiPicker", "love-you gesture")},
        Emoji{u"🤘", QT_TRANSLATE_NOOP("EmojiPicker", "sign of the horns")},
        Emoji{u"🤙", QT_TRANSLATE_NOOP("EmojiPicker", "call me hand")},
        Emoji{u"👋", QT_TRANSLATE_NOOP("EmojiPicker", "waving hand")},
        Emoji{u"🤚", QT_TRANSLATE_NOOP("EmojiPicker", "raised back of hand")},
        Emoji{u"🖐\uFE0F", QT_TRANSLATE_NOOP("EmojiPicker", "hand with fingers splayed")},
        Emoji{u"✋", QT_TRANSLATE_NOOP("EmojiPicker", "raised hand")},
        Emoji{u"🖖", QT_TRANSLATE_NOOP("EmojiPicker", "vulcan salute")},
        Emoji{u"👏", QT_TRANSLATE_NOOP("EmojiPicker", "clapping hands")},
        Emoji{u"🙌", QT_TRANSLATE_NOOP("EmojiPicker", "raising hands")},
        Emoji{u"🤝", QT_TRANSLATE_NOOP("EmojiPicker", "handshake")},
};

constexpr std::array Hearts{
        Emoji{u"❤\uFE0F", QT_TRANSLATE_NOOP("EmojiPicker", "red heart")},
        Emoji{u"🧡", QT_TRANSLATE_NOOP("EmojiPicker", "orange heart")},
        Emoji{u"💛", QT_TRANSLATE_NOOP("EmojiPicker", "yellow heart")},
        Emoji{u"💚", QT_TRANSLATE_NOOP("EmojiPicker", "green heart")},
        Emoji{u"💙", QT_TRANSLATE_NOOP("EmojiPicker", "blue heart")},
        Emoji{u"💜", QT_TRANSLATE_NOOP("EmojiPicker", "purple heart")},
        Emoji{u"🖤", QT_TRANSLATE_NOOP("EmojiPicker", "black heart")},
        Emoji{u"🤍", QT_TRANSLATE_NOOP("EmojiPicker", "white heart")},
        Emoji{u"🤎", QT_TRANSLATE_NOOP("EmojiPicker", "brown heart")},
        Emoji{u"💔", QT_TRANSLATE_NOOP("EmojiPicker", "broken heart")},
        Emoji{u"❣\uFE0F", QT_TRANSLATE_NOOP("EmojiPicker", "heart exclamation")},
        Emoji{u"💕", QT_TRANSLATE_NOOP("EmojiPicker", "two hearts")},
        Emoji{u"💞", QT_TRANSLATE_NOOP("EmojiPicker", "revolving hearts")},
        Emoji{u"💓", QT_TRANSLATE_NOOP("EmojiPicker", "beating heart")},
        Emoji{u"💗", QT_TRANSLATE_NOOP("EmojiPicker", "growing heart")},
        Emoji{u"💖", QT_TRANSLATE_NOOP("EmojiPicker", "sparkling heart")},
};

constexpr std::array Emotions{
        Emoji{u"🔥", QT_TRANSLATE_NOOP("EmojiPicker", "fire")},
        Emoji{u"⭐", QT_TRANSLATE_NOOP("EmojiPicker", "star")},
        Emoji{u"🌟", QT_TRANSLATE_NOOP("EmojiPicker", "glowing star")},
        Emoji{u"✨", QT_TRANSLATE_NOOP("EmojiPicker", "sparkles")},
        Emoji{u"💫", QT_TRANSLATE_NOOP("EmojiPicker", "dizzy")},
        Emoji{u"🎉", QT_TRANSLATE_NOOP("EmojiPicker", "party popper")},
        Emoji{u"🎊", QT_TRANSLATE_NOOP("EmojiPicker", "confetti ball")},
        Emoji{u"🎈", QT_TRANSLATE_NOOP("EmojiPicker", "balloon")},
        Emoji{u"💯", QT_TRANSLATE_NOOP("EmojiPicker", "hundred points")},
        Emoji{u"✅", QT_TRANSLATE_NOOP("EmojiPicker", "check mark")},
        Emoji{u"❌", QT_TRANSLATE_NOOP("EmojiPicker", "cross mark")},
        Emoji{u"💡", QT_TRANSLATE_NOOP("EmojiPicker", "light bulb")},
        Emoji{u"💤", QT_TRANSLATE_NOOP("EmojiPicker", "zzz")},
        Emoji{u"💢", QT_TRANSLATE_NOOP("EmojiPicker", "anger symbol")},
        Emoji{u"💣", QT_TRANSLATE_NOOP("EmojiPicker", "bomb")},
        Emoji{u"💥", QT_TRANSLATE_NOOP("EmojiPicker", "collision")},
};

constexpr std::array Animals{
        Emoji{u"🐶", QT_TRANSLATE_NOOP("EmojiPicker", "dog face")},
        Emoji{u"🐱", QT_TRANSLATE_NOOP("EmojiPicker", "cat face")},
        Emoji{u"🐭", QT_TRANSLATE_NOOP("EmojiPicker", "mouse face")},
        Emoji{u"🐹", QT_TRANSLATE_NOOP("EmojiPicker", "hamster")},
        Emoji{u"🐰", QT_TRANSLATE_NOOP("EmojiPicker", "rabbit face")},
        Emoji{u"🦊", QT_TRANSLATE_NOOP("EmojiPicker", "fox")},
        Emoji{u"🐻", QT_TRANSLATE_NOOP("EmojiPicker", "bear")},
        Emoji{u"🐼", QT_TRANSLATE_NOOP("EmojiPicker", "panda")},
        Emoji{u"🐨", QT_TRANSLATE_NOOP("EmojiPicker", "koala")},
        Emoji{u"🐯", QT_TRANSLATE_NOOP("EmojiPicker", "tiger face")},
        Emoji{u"🦁", QT_TRANSLATE_NOOP("EmojiPicker", "lion")},
        Emoji{u"🐮", QT_TRANSLATE_NOOP("EmojiPicker", "cow face")},
        Emoji{u"🐷", QT_TRANSLATE_NOOP("EmojiPicker", "pig face")},
        Emoji{u"🐸", QT_TRANSLATE_NOOP("EmojiPicker", "frog")},
        Emoji{u"🐵", QT_TRANSLATE_NOOP("EmojiPicker", "monkey face")},
        Emoji{u"🐔", QT_TRANSLATE_NOOP("EmojiPicker", "chicken")},
};

constexpr std::array Food{
        Emoji{u"🍎", QT_TRANSLATE_NOOP("EmojiPicker", "red apple")},
        Emoji{u"🍕", QT_TRANSLATE_NOOP("EmojiPicker", "pizza")},
        Emoji{u"🍔", QT_TRANSLATE_NOOP("EmojiPicker", "hamburger")},
        Emoji{u"🍟", QT_TRANSLATE_NOOP("EmojiPicker", "french fries")},
        Emoji{u"🍩", QT_TRANSLATE_NOOP("EmojiPicker", "doughnut")},
        Emoji{u"🍪", QT_TRANSLATE_NOOP("EmojiPicker", "cookie")},
        Emoji{u"🎂", QT_TRANSLATE_NOOP("EmojiPicker", "birthday cake")},
        Emoji{u"🍰", QT_TRANSLATE_NOOP("EmojiPicker", "shortcake")},
        Emoji{u"☕", QT_TRANSLATE_NOOP("EmojiPicker", "hot beverage")},
        Emoji{u"🍵", QT_TRANSLATE_NOOP("EmojiPicker", "teacup without handle")},
        Emoji{u"🍺", QT_TRANSLATE_NOOP("EmojiPicker", "beer mug")},
        Emoji{u"🍷", QT_TRANSLATE_NOOP("EmojiPicker", "wine glass")},
        Emoji{u"🍸", QT_TRANSLATE_NOOP("EmojiPicker", "cocktail glass")},
        Emoji{u"🍹", QT_TRANSLATE_NOOP("EmojiPicker", "tropical drink")},
        Emoji{u"🧃", QT_TRANSLATE_NOOP("EmojiPicker", "beverage box")},
        Emoji{u"🥤", QT_TRANSLATE_NOOP("EmojiPicker", "cup with straw")},
};

struct EmojiCategory
{
    QString name; ///< Shown as heading; there is none if it is empty.
    std::span<const Emoji> emojis;
};

// The picker has colours of its own, since it opens over different windows.
QString containerSheet(const QString &theme)
{
    if (theme == "glass"_L1) {
        return u"#emojiContainer { background-color: rgba(255,255,255,0.7); border: 1px solid "
               "rgba(255,255,255,0.5); border-radius: 12px; padding: 8px; }"_s;
    }
    if (ThemeManager::isDark(theme)) {
        return u"#emojiContainer { background-color: rgba(40,40,40,0.95); border: 1px solid "
               "rgba(255,255,255,0.1); border-radius: 12px; padding: 8px; }"_s;
    }
    return u"#emojiContainer { background-color: rgba(255,255,255,0.98); border: 1px solid "
           "rgba(0,0,0,0.1); border-radius: 12px; padding: 8px; }"_s;
}

QString headingSheet(const QString &theme)
{
    return u"color: %1; font-size: 10px; font-weight: bold; padding: 4px 2px 2px 2px; "
           "text-transform: uppercase; letter-spacing: 1px;"_s.arg(
                   ThemeManager::isDark(theme) ? "rgba(255,255,255,0.5)"_L1 : "rgba(0,0,0,0.5)"_L1);
}

QString buttonSheet(const QString &theme)
{
    const bool dark = ThemeManager::isDark(theme);
    return u"QPushButton { background: transparent; border: none; border-radius: 8px; "
           "font-size: 20px; padding: 0px; color: %1; }"
           "QPushButton:hover { background: %2; }"
           "QPushButton:pressed { background: %3; }"_s.arg(
                   dark ? "white"_L1 : "black"_L1,
                   dark ? "rgba(255,255,255,0.15)"_L1 : "rgba(0,0,0,0.08)"_L1,
                   dark ? "rgba(255,255,255,0.25)"_L1 : "rgba(0,0,0,0.15)"_L1);
}

} // namespace

EmojiPicker::EmojiPicker(QWidget *parent, const QString &theme)
    : QDialog(parent, Qt::Popup | Qt::FramelessWindowHint)
    , currentTheme(theme)
{
    setAttribute(Qt::WA_TranslucentBackground);
    setAttribute(Qt::WA_ShowWithoutActivating);
    setAccessibleName(tr("Emoji"));
    setupUI();
    findChild<QPushButton *>()->setFocus();
}

bool EmojiPicker::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::KeyPress) {
        const QPoint step = stepOf(static_cast<QKeyEvent *>(event)->key());
        if (!step.isNull()) {
            moveFocus(static_cast<QWidget &>(*watched), step);
            return true;
        }
    }
    return QDialog::eventFilter(watched, event);
}

void EmojiPicker::showBeside(const QWidget &button)
{
    adjustSize();
    move(placeAt(QRect(button.mapToGlobal(QPoint()), button.size()), sizeHint(),
                 PopupArea::of(*button.window())));
    show();
}

QPoint EmojiPicker::placeAt(const QRect &button, const QSize &size, const QRect &available)
{
    int x = 0;
    int y = button.y() - size.height() / 2;
    if (button.x() + button.width() + size.width() + 2 * Gap <= available.right()) {
        x = button.x() + button.width() + Gap;
    } else if (button.x() - size.width() - 2 * Gap >= available.left()) {
        x = button.x() - size.width() - Gap;
    } else {
        x = button.x() - (size.width() - button.width()) / 2;
        y = button.y() - size.height() - Gap;
        if (y < available.top())
            y = button.y() + button.height() + Gap;
    }

    if (x < available.left())
        x = available.left() + Gap;
    if (x + size.width() > available.right())
        x = available.right() - size.width() - Gap;
    if (y < available.top())
        y = available.top() + Gap;
    if (y + size.height() > available.bottom())
        y = available.bottom() - size.height() - Gap;
    return {x, y};
}

void EmojiPicker::setupUI()
{
    const QList<EmojiCategory> categories{
            {u"Смайлы"_s, Smileys},  {u"Жесты"_s, Gestures},   {u"Сердца"_s, Hearts},
            {u"Эмоции"_s, Emotions}, {u"Животные"_s, Animals}, {u"Еда"_s, Food},
    };

    QGridLayout *grid = createGrid();
    int row = 0;
    for (const EmojiCategory &category : categories) {
        if (!category.name.isEmpty()) {
            auto *heading = new QLabel(category.name);
            heading->setStyleSheet(headingSheet(currentTheme));
            grid->addWidget(heading, row++, 0, 1, Columns);
        }
        int column = 0;
        for (const Emoji &emoji : category.emojis) {
            addEmoji(grid, emoji.text.toString(), tr(emoji.name), row, column);
            if (++column == Columns) {
                column = 0;
                ++row;
            }
        }
        if (column != 0)
            ++row;
    }
}

QGridLayout *EmojiPicker::createGrid()
{
    auto *container = new QWidget(this);
    container->setObjectName(u"emojiContainer"_s);
    container->setStyleSheet(containerSheet(currentTheme));
    container->setMinimumWidth(320);
    container->setMaximumWidth(340);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(container);

    auto *grid = new QGridLayout(container);
    grid->setSpacing(4);
    grid->setContentsMargins(8, 8, 8, 8);
    return grid;
}

void EmojiPicker::addEmoji(QGridLayout *grid, const QString &emoji, const QString &name, int row,
                           int column)
{
    auto *button = new QPushButton(emoji);
    button->setToolTip(emoji);
    button->setAccessibleName(name);
    button->setFixedSize(ButtonSize, ButtonSize);
    button->setCursor(Qt::PointingHandCursor);
    button->setStyleSheet(buttonSheet(currentTheme));
    button->installEventFilter(this);
    button->setFont(EmojiFont::colored(button->font()));
    grid->addWidget(button, row, column);
    connect(button, &QPushButton::clicked, this, [this, emoji] {
        emit emojiSelected(emoji);
        close();
        // Keys pressed before the popup has closed still arrive here.
        if (QWidget *focused = focusWidget())
            focused->clearFocus();
    });
}
