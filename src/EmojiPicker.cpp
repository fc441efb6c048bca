#include "EmojiPicker.h"

#include "EmojiFont.h"
#include "EmojiNames.h"
#include "PopupArea.h"
#include "ThemeManager.h"

#include <QGridLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QList>
#include <QPoint>
#include <QPushButton>
#include <QRect>
#include <QStringList>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {

constexpr int Columns = 8;
constexpr int ButtonSize = 36;

// Between the picker and the button that it opens from, or the edge of the screen; the room that is
// looked for beside the button has as much to spare on the far side.
constexpr int Gap = 5;

// The columns and rows that an arrow key moves by; null for other keys.
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

// Moves the focus from `button` to the next one in this direction, past headings, if there is one.
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

struct EmojiCategory
{
    QString name; ///< Shown as heading; without one there is no heading.
    QStringList emojis;
};

// The picker's few colours are its own: it floats over windows of every kind.
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
    // Some of these are text symbols by themselves; the selector at their end makes them emojis.
    const QList<EmojiCategory> categories{
            {u"Смайлы"_s,
             u"😀 😃 😄 😁 😅 😂 🤣 😊 😇 🙂 😉 😌 😍 🥰 😘 😗"_s
                     .split(u' ')},
            {u"Жесты"_s,
             u"👍 👎 👌 ✌\uFE0F 🤞 🤟 🤘 🤙 👋 🤚 🖐\uFE0F ✋ 🖖 👏 🙌 🤝"_s
                     .split(u' ')},
            {u"Сердца"_s,
             u"❤\uFE0F 🧡 💛 💚 💙 💜 🖤 🤍 🤎 💔 ❣\uFE0F 💕 💞 💓 💗 💖"_s
                     .split(u' ')},
            {u"Эмоции"_s, u"🔥 ⭐ 🌟 ✨ 💫 🎉 🎊 🎈 💯 ✅ ❌ 💡 💤 💢 💣 💥"_s.split(u' ')},
            {u"Животные"_s,
             u"🐶 🐱 🐭 🐹 🐰 🦊 🐻 🐼 🐨 🐯 🦁 🐮 🐷 🐸 🐵 🐔"_s
                     .split(u' ')},
            {u"Еда"_s,
             u"🍎 🍕 🍔 🍟 🍩 🍪 🎂 🍰 ☕ 🍵 🍺 🍷 🍸 🍹 🧃 🥤"_s
                     .split(u' ')},
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
        for (const QString &emoji : category.emojis) {
            addEmoji(grid, emoji, row, column);
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

void EmojiPicker::addEmoji(QGridLayout *grid, const QString &emoji, int row, int column)
{
    auto *button = new QPushButton(emoji);
    button->setToolTip(emoji);
    button->setAccessibleName(EmojiNames::nameOf(emoji));
    button->setFixedSize(ButtonSize, ButtonSize);
    button->setCursor(Qt::PointingHandCursor);
    button->setStyleSheet(buttonSheet(currentTheme));
    button->installEventFilter(this);
    button->setFont(EmojiFont::colored(button->font()));
    grid->addWidget(button, row, column);
    connect(button, &QPushButton::clicked, this, [this, emoji] {
        emit emojiSelected(emoji);
        close();
        // Keys that were typed before the popup had closed still get here.
        if (QWidget *focused = focusWidget())
            focused->clearFocus();
    });
}
