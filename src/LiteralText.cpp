#include "LiteralText.h"

#include <QAccessible>
#include <QFontMetrics>
#include <QHelpEvent>
#include <QKeySequence>
#include <QStyleOptionMenuItem>
#include <QTabBar>
#include <QTabWidget>
#include <QToolTip>
#include <QWindow>

#include <algorithm>

using namespace Qt::StringLiterals;

// Exported by Qt, but declared in no public header.
void Q_GUI_EXPORT qt_set_sequence_auto_mnemonic(bool enable);

namespace {

constexpr qsizetype LongestToolTip = 500;
constexpr int LongestMenuText = 480; // pixels
constexpr int WidestMenu = 600;      // pixels

/// Disables mnemonics during its lifetime.
class MnemonicsOff final
{
    Q_DISABLE_COPY_MOVE(MnemonicsOff)

public:
    MnemonicsOff() { qt_set_sequence_auto_mnemonic(false); }
    ~MnemonicsOff() { qt_set_sequence_auto_mnemonic(wereEnabled); }

private:
    // False on macOS.
    bool wereEnabled = !QKeySequence::mnemonic(u"&x"_s).isEmpty();
};

/// Shows the tool tips of a tab bar as plain text. Qt would guess whether they are rich text.
class ToolTipFilter final : public QObject
{
public:
    using QObject::QObject;

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() != QEvent::ToolTip)
            return QObject::eventFilter(watched, event);
        const auto *help = static_cast<QHelpEvent *>(event);
        auto *bar = static_cast<QTabBar *>(watched);
        QString tip = bar->tabToolTip(bar->tabAt(help->pos()));
        if (tip.size() > LongestToolTip)
            tip = tip.first(LongestToolTip) + u'…';
        // An empty tip hides the visible one.
        if (!tip.isEmpty())
            tip = u"<span>%1</span>"_s.arg(tip.toHtmlEscaped());
        // Qt moves the tip of another tab here, which has no effect on Wayland: hide it first.
        if (auto *shown = bar->findChild<QWidget *>(u"qtooltip_label"_s);
            shown && QToolTip::text() != tip)
            shown->hide();
        QToolTip::showText(help->globalPos(), tip, bar);
        return true;
    }
};

/// Gives the native window the title as it was set.
class TitleFilter final : public QObject
{
public:
    using QObject::QObject;

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::Show) {
            const auto *window = static_cast<QWidget *>(watched);
            window->windowHandle()->setTitle(window->windowTitle());
        }
        return QObject::eventFilter(watched, event);
    }
};

/// Widens the tab at `index` by its ampersands, which Qt leaves out of its measurement.
///
/// A tab's size cannot be set, but it includes the widget on its right. A hidden widget of the
/// missing width reserves the space, and the bar paints the name over it.
void reserveAmpersandSpace(QTabBar &bar, int index)
{
    QFont font = bar.font();
    font.setBold(true); // Like the text of the current tab and of a blinking one.
    const QFontMetrics metrics(font);
    const auto width = [&metrics](const QString &text) {
        return metrics.size(Qt::TextShowMnemonic, text).width();
    };
    const QString name = bar.tabText(index);
    const int missing = width(QString(name).replace(u'&', "&&"_L1)) - width(name);
    QWidget *old = bar.tabButton(index, QTabBar::RightSide);
    if (missing == 0 && old == nullptr)
        return;
    QWidget *spacer = nullptr;
    if (missing > 0) {
        spacer = new QWidget;
        spacer->setFixedSize(missing, 1);
    }
    bar.setTabButton(index, QTabBar::RightSide, spacer);
    if (spacer)
        spacer->hide(); // setTabButton() shows it.
    delete old;
}

} // namespace

namespace LiteralText {

int addTab(QTabWidget &tabs, QWidget *page, const QString &name)
{
    const MnemonicsOff mnemonicsOff;
    const int index = tabs.addTab(page, name);
    tabs.tabBar()->setAccessibleTabName(index, name);
    reserveAmpersandSpace(*tabs.tabBar(), index);
    return index;
}

void renameTab(QTabWidget &tabs, int index, const QString &name)
{
    const MnemonicsOff mnemonicsOff;
    const bool wasMarked = tabs.tabBar()->accessibleTabName(index) != tabs.tabText(index);
    tabs.setTabText(index, name);
    setTabMarked(tabs, index, wasMarked);
    reserveAmpersandSpace(*tabs.tabBar(), index);
}

void setTabMarked(QTabWidget &tabs, int index, bool isMarked)
{
    const QString name = tabs.tabText(index);
    QTabBar *bar = tabs.tabBar();
    bar->setAccessibleTabName(index, isMarked ? QTabBar::tr("%1, new message").arg(name) : name);
    QAccessibleEvent event(bar, QAccessible::NameChanged);
    event.setChild(index);
    QAccessible::updateAccessibility(&event);
}

void showTabToolTips(QTabBar &bar)
{
    bar.installEventFilter(new ToolTipFilter(&bar));
}

void showTitle(QWidget &window)
{
    window.installEventFilter(new TitleFilter(&window));
}

Menu::Menu()
{
    setMaximumWidth(WidestMenu);
}

void Menu::initStyleOption(QStyleOptionMenuItem *option, const QAction *action) const
{
    QMenu::initStyleOption(option, action);
    QString text = action->text().replace(u'\t', u' ');
    text = option->fontMetrics.elidedText(text, Qt::ElideRight, LongestMenuText);
    option->text = text.replace(u'&', "&&"_L1);
}

void Menu::actionEvent(QActionEvent *event)
{
    QMenu::actionEvent(event);
    // QMenu measures the texts without their ampersands.
    qsizetype ampersands = 0;
    const QList<QAction *> entries = actions();
    for (const QAction *entry : entries)
        ampersands = std::max(ampersands, entry->text().count(u'&'));
    setMinimumWidth(0);
    const qsizetype width = sizeHint().width() + ampersands * fontMetrics().horizontalAdvance(u'&');
    setMinimumWidth(static_cast<int>(std::min<qsizetype>(width, WidestMenu)));
}

} // namespace LiteralText
