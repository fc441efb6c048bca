#pragma once

#include <QWidget>

class QAbstractScrollArea;
class QPushButton;
class QTabBar;
class QToolButton;

/// A frame that shows where the keyboard is, on a widget whose style sheet doesn't tell.
///
/// It is seen only while the widget has been reached by a key: who uses the mouse knows anyhow.
class FocusMark final : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(FocusMark)

public:
    /// Around all of `area`, to which the mark belongs.
    explicit FocusMark(QAbstractScrollArea &area);
    /// Around `button`, to which the mark belongs.
    explicit FocusMark(QToolButton &button);
    /// Within `button`, which has the accent's colour and to which the mark belongs.
    explicit FocusMark(QPushButton &button);
    /// Within the current tab of `bar`, to which the mark belongs.
    explicit FocusMark(QTabBar &bar);

    bool eventFilter(QObject *watched, QEvent *event) override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    enum class Place { AroundAll, WithinAll, WithinTab };

    FocusMark(QWidget &target, Place where);
    [[nodiscard]] QRect framed() const;

    Place place = Place::AroundAll;
    bool isReachedByKey = false;
};
