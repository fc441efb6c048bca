#include "PlainTabs.h"

#include <QAccessible>
#include <QFontMetrics>
#include <QKeySequence>
#include <QTabBar>
#include <QTabWidget>

using namespace Qt::StringLiterals;

// Part of Qt, for programs to declare.
void Q_GUI_EXPORT qt_set_sequence_auto_mnemonic(bool enable);

namespace {

/// While it lives, no text makes a key.
class NoKeys final
{
    Q_DISABLE_COPY_MOVE(NoKeys)

public:
    NoKeys() { qt_set_sequence_auto_mnemonic(false); }
    ~NoKeys() { qt_set_sequence_auto_mnemonic(wereMade); }

private:
    // On macOS they never are.
    bool wereMade = !QKeySequence::mnemonic(u"&x"_s).isEmpty();
};

/// Makes a tab as wide as its name is with the ampersands, which Qt leaves out when it measures it.
///
/// A tab's size cannot be set, but it includes that of a widget on the right, so that is a hidden
/// widget of the missing width. The bar paints the name over its space.
void reserveAmpersandSpace(QTabBar &bar, int index)
{
    QFont font = bar.font();
    font.setBold(true); // As the current tab's and a blinking tab's text is.
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

namespace PlainTabs {

int add(QTabWidget &tabs, QWidget *page, const QString &name)
{
    const NoKeys noKeys;
    const int index = tabs.addTab(page, name);
    tabs.tabBar()->setAccessibleTabName(index, name);
    reserveAmpersandSpace(*tabs.tabBar(), index);
    return index;
}

void rename(QTabWidget &tabs, int index, const QString &name)
{
    const NoKeys noKeys;
    const bool wasMarked = tabs.tabBar()->accessibleTabName(index) != tabs.tabText(index);
    tabs.setTabText(index, name);
    setMarked(tabs, index, wasMarked);
    reserveAmpersandSpace(*tabs.tabBar(), index);
}

void setMarked(QTabWidget &tabs, int index, bool isMarked)
{
    const QString name = tabs.tabText(index);
    QTabBar *bar = tabs.tabBar();
    bar->setAccessibleTabName(index, isMarked ? QTabBar::tr("%1, new message").arg(name) : name);
    QAccessibleEvent event(bar, QAccessible::NameChanged);
    event.setChild(index);
    QAccessible::updateAccessibility(&event);
}

} // namespace PlainTabs
