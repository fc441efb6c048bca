#pragma once

#include <QTabWidget>

/// A tab widget that takes a tab bar from outside.
class MyTabWidget final : public QTabWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(MyTabWidget)

public:
    explicit MyTabWidget(QWidget *parent = nullptr)
        : QTabWidget(parent)
    {
    }

    /// Puts `bar` in the place of the widget's own bar, for which QTabWidget has no public door.
    /// The widget takes ownership. To be called before the first tab is added.
    void setPublicTabBar(QTabBar *bar) { setTabBar(bar); }
};
