#pragma once

#include <QWidget>

class QAbstractScrollArea;
class QPushButton;
class QTabBar;
class QToolButton;

/// A frame on a widget whose style sheet does not show the keyboard focus.
///
/// Visible only while a key has given the widget the focus. QFocusFrame does not watch the focus or
/// its reason, and it draws around whole widgets only, not inside one tab.
class FocusFrame final : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(FocusFrame)

public:
    /// Adds a frame along the edge of `area`, which owns it.
    static void addTo(QAbstractScrollArea &area);
    /// Adds a frame along the edge of `button`, which owns it.
    static void addTo(QToolButton &button);
    /// Adds a white frame inside `button`, which has the accent colour and owns the frame.
    static void addTo(QPushButton &button);
    /// Adds a white frame inside the current tab of `bar`, which owns the frame.
    static void addTo(QTabBar &bar);

    bool eventFilter(QObject *watched, QEvent *event) override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    enum class Position { WidgetEdge, InsideWidget, InsideCurrentTab };

    FocusFrame(QWidget &target, Position framePosition);
    [[nodiscard]] QRect frameRect() const;

    Position position = Position::WidgetEdge;
    bool isReachedByKey = false;
};
