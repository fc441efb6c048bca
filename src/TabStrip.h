#pragma once

#include <functional>

class HighlightTabBar;
class MyTabWidget;
class QObject;
class QTabBar;
class QTabWidget;
class QWidget;

/// The bar that the conversations' tabs stand in: what it looks like, the close buttons in it, and
/// the way of the keyboard from it to the pages.
namespace TabStrip {

/// Makes the bar of `tabs`, which owns it. To be called before the first tab is added.
HighlightTabBar *create(MyTabWidget &tabs);

/// Gives each tab of `bar` its close button, or puts it right: the current tab's is white.
///
/// A button calls `close` with the index at which its tab stood when this was last called, also
/// once tabs before it have gone, and for as long as `receiver` lives.
void updateCloseButtons(QTabBar &bar, const QObject &receiver,
                        const std::function<void(int)> &close);

/// Lets Ctrl+Tab, Ctrl+PageDown and, backwards, Ctrl+Shift+Tab and Ctrl+PageUp switch the tabs of
/// `tabs` from everywhere in `window`, around the ends.
void addSwitchShortcuts(QTabWidget &tabs, QWidget &window);

/// Lets the keyboard go from `bar` through what is in `page`, and on to what came after the bar.
void setTabOrderAfter(QTabBar &bar, const QWidget &page);

} // namespace TabStrip
