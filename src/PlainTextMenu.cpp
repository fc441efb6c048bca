#include "PlainTextMenu.h"

#include <QStyleOptionMenuItem>

#include <algorithm>

namespace {

// In pixels.
constexpr int LongestText = 480;
constexpr int WidestMenu = 600;

} // namespace

PlainTextMenu::PlainTextMenu()
{
    setMaximumWidth(WidestMenu);
}

void PlainTextMenu::initStyleOption(QStyleOptionMenuItem *option, const QAction *action) const
{
    QMenu::initStyleOption(option, action);
    QString text = action->text().replace(u'\t', u' ');
    text = option->fontMetrics.elidedText(text, Qt::ElideRight, LongestText);
    option->text = text.replace(u'&', QLatin1StringView("&&"));
}

void PlainTextMenu::actionEvent(QActionEvent *event)
{
    QMenu::actionEvent(event);
    // A menu measures its texts without their ampersands.
    qsizetype ampersands = 0;
    const QList<QAction *> entries = actions();
    for (const QAction *entry : entries)
        ampersands = std::max(ampersands, entry->text().count(u'&'));
    setMinimumWidth(0);
    const qsizetype width = sizeHint().width() + ampersands * fontMetrics().horizontalAdvance(u'&');
    setMinimumWidth(static_cast<int>(std::min<qsizetype>(width, WidestMenu)));
}
