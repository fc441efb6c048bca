#pragma once

#include <QObject>

class QTabBar;

/// Lets the menu key open the context menu of the current tab.
///
/// Qt asks for a menu at the place of the text cursor, and for a widget without one at its middle:
/// in a tab bar that is some other tab, or none.
class TabMenuKey final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(TabMenuKey)

public:
    /// Belongs to `bar`, which has a custom context menu.
    explicit TabMenuKey(QTabBar &bar);

    bool eventFilter(QObject *watched, QEvent *event) override;
};
