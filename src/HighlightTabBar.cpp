#include "HighlightTabBar.h"

#include "ThemeManager.h"

#include <QPaintEvent>
#include <QStyleOptionTab>
#include <QStylePainter>
#include <QTimer>

using namespace Qt::StringLiterals;

namespace {

constexpr int BlinkInterval = 500; // milliseconds

} // namespace

HighlightTabBar::HighlightTabBar(QWidget *parent)
    : QTabBar(parent)
{
}

void HighlightTabBar::setTheme(const QString &theme)
{
    currentTheme = theme;
    update();
}

void HighlightTabBar::highlightTab(int index)
{
    if (index < 0 || index >= count())
        return;
    HighlightInfo &info = highlights[index];
    if (info.highlighted)
        return;
    info.highlighted = true;
    info.blinkOn = true;
    startBlinking(index);
    update();
}

void HighlightTabBar::unhighlightTab(int index)
{
    if (index < 0 || index >= count() || !isHighlighted(index))
        return;
    highlights[index].highlighted = false;
    stopBlinking(index);
    update();
}

bool HighlightTabBar::isHighlighted(int index) const
{
    return highlights.value(index).highlighted;
}

void HighlightTabBar::startBlinking(int index)
{
    stopBlinking(index);
    auto *timer = new QTimer(this);
    highlights[index].timer = timer;
    timer->setInterval(BlinkInterval);
    connect(timer, &QTimer::timeout, this, [this, index] { blink(index); });
    timer->start();
}

void HighlightTabBar::stopBlinking(int index)
{
    const auto info = highlights.find(index);
    if (info == highlights.end() || info->timer == nullptr)
        return;
    info->timer->stop();
    // This may be called from a slot of the timer.
    info->timer->deleteLater();
    info->timer = nullptr;
}

void HighlightTabBar::blink(int index)
{
    if (!isHighlighted(index))
        return;
    HighlightInfo &info = highlights[index];
    info.blinkOn = !info.blinkOn;
    update(tabRect(index));
}

void HighlightTabBar::paintEvent(QPaintEvent *event)
{
    QStylePainter painter(this);
    for (int index = 0; index < count(); ++index) {
        if (!event->region().intersects(tabRect(index)))
            continue;
        QStyleOptionTab option;
        initStyleOption(&option, index);
        // The width of a right button is reserved for escaped ampersands; do not indent the text.
        option.rightButtonSize = QSize();
        const HighlightInfo info = highlights.value(index);
        if (info.highlighted) {
            drawHighlightedTab(painter, option, info.blinkOn);
        } else {
            // Escapes "&", which styles draw as a mnemonic.
            option.text.replace(u'&', "&&"_L1);
            drawTab(painter, option);
        }
    }
}

void HighlightTabBar::drawTab(QStylePainter &painter, const QStyleOptionTab &option)
{
    style()->drawControl(QStyle::CE_TabBarTab, &option, &painter, this);
}

void HighlightTabBar::drawHighlightedTab(QStylePainter &painter, QStyleOptionTab option,
                                         bool blinkOn)
{
    const QColor blinkColor = ThemeManager::isDark(currentTheme) ? QColor(0xFF, 0xD7, 0x00)
                                                                 : QColor(0xFF, 0xB8, 0x00);
    // Intended: the default-constructed colour is black in every theme.
    option.palette.setColor(QPalette::WindowText, blinkOn ? blinkColor : QColor());

    // A style sheet overrides the text's colour and weight, so the style draws the tab without its
    // text.
    const QString text = option.text;
    option.text.clear();
    drawTab(painter, option);

    painter.save();
    QFont font = painter.font();
    font.setBold(true);
    painter.setFont(font);
    painter.setPen(blinkOn ? blinkColor : option.palette.color(QPalette::WindowText));
    const QRect textRect = style()->subElementRect(QStyle::SE_TabBarTabText, &option, this);
    painter.drawText(textRect, Qt::AlignCenter | Qt::TextSingleLine, text);
    painter.restore();
}
