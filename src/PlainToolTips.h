#pragma once

#include <QObject>

class QTabBar;

/// Shows the tool tips of a tab bar to the letter, for texts that others have chosen.
///
/// Qt takes a tool tip for rich text if it looks like it. The tips themselves stay as they are set;
/// one that is longer than a screen could hold is cut.
class PlainToolTips final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(PlainToolTips)

public:
    /// Belongs to `bar`, whose tips it shows from now on.
    explicit PlainToolTips(QTabBar &bar);

    bool eventFilter(QObject *watched, QEvent *event) override;
};
