#pragma once

#include <QString>

class QTabWidget;
class QWidget;

/// Gives tabs names that others have chosen, to the letter.
///
/// Qt takes what follows an ampersand in a tab's text for the tab's key: such a tab would come to
/// the front by a key that may be a menu's, and a screen reader would leave the ampersand out.
namespace PlainTabs {

/// Adds `page` to `tabs` and returns its index. The widget takes ownership.
int add(QTabWidget &tabs, QWidget *page, const QString &name);

/// Gives the tab at `index`, which there must be, another name.
void rename(QTabWidget &tabs, int index, const QString &name);

/// Adds to what screen readers say for the tab at `index` that there is a new message, or removes
/// that. The tab's text stays as it is.
void setMarked(QTabWidget &tabs, int index, bool isMarked);

} // namespace PlainTabs
