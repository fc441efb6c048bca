#pragma once

#include <functional>

class HighlightTabBar;
class MyTabWidget;
class QObject;
class QTabBar;
class QTabWidget;
class QWidget;

/// The tab bar of the main window: its appearance, close buttons, shortcuts and tab order.
namespace TabStrip {

/// Creates the tab bar of `tabs`, which owns it. Call it before the first tab is added.
HighlightTabBar *create(MyTabWidget &tabs);

/// Adds the missing close buttons of `bar` and updates the others: the current tab's is white.
///
/// A click calls `close` with the tab's index, as long as `receiver` exists. Intended: this is the
/// index at the last call of this function, even if tabs before it have been removed since.
void updateCloseButtons(QTabBar &bar, const QObject &receiver,
                        const std::function<void(int)> &close);

/// Lets Ctrl+Tab and Ctrl+PageDown switch to the next tab of `tabs`, and Ctrl+Shift+Tab and
/// Ctrl+PageUp to the previous one, anywhere in `window`. The first tab follows the last.
void addSwitchShortcuts(QTabWidget &tabs, QWidget &window);

/// Inserts the widgets of `page` into the tab order after `bar`.
void setTabOrderAfter(QTabBar &bar, const QWidget &page);

} // namespace TabStrip
