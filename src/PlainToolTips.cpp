#include "PlainToolTips.h"

#include <QHelpEvent>
#include <QTabBar>
#include <QToolTip>

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype LongestTip = 500;

} // namespace

PlainToolTips::PlainToolTips(QTabBar &bar)
    : QObject(&bar)
{
    bar.installEventFilter(this);
}

bool PlainToolTips::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() != QEvent::ToolTip)
        return QObject::eventFilter(watched, event);
    const auto *help = static_cast<QHelpEvent *>(event);
    auto *bar = static_cast<QTabBar *>(watched);
    QString tip = bar->tabToolTip(bar->tabAt(help->pos()));
    if (tip.size() > LongestTip)
        tip = tip.first(LongestTip) + u'…';
    // A tip without any text hides the one on show.
    if (!tip.isEmpty())
        tip = u"<span>%1</span>"_s.arg(tip.toHtmlEscaped());
    // Qt would move the tip of another tab here, which has no effect on Wayland.
    if (auto *shown = bar->findChild<QWidget *>(u"qtooltip_label"_s);
        shown && QToolTip::text() != tip)
        shown->hide();
    QToolTip::showText(help->globalPos(), tip, bar);
    return true;
}
