#include "PlainTabs.h"

#include <QAccessible>
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

} // namespace

namespace PlainTabs {

int add(QTabWidget &tabs, QWidget *page, const QString &name)
{
    const NoKeys noKeys;
    const int index = tabs.addTab(page, name);
    tabs.tabBar()->setAccessibleTabName(index, name);
    return index;
}

void rename(QTabWidget &tabs, int index, const QString &name)
{
    const NoKeys noKeys;
    const bool wasMarked = tabs.tabBar()->accessibleTabName(index) != tabs.tabText(index);
    tabs.setTabText(index, name);
    setMarked(tabs, index, wasMarked);
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
