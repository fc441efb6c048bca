#pragma once

#include <QTabWidget>

/// A tab widget with a replaceable tab bar.
class MyTabWidget final : public QTabWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(MyTabWidget)

public:
    explicit MyTabWidget(QWidget *parent = nullptr)
        : QTabWidget(parent)
    {
    }

    /// Replaces the tab bar by `bar` and takes ownership of it; QTabWidget::setTabBar() is
    /// protected. Call it before the first tab is added.
    void setPublicTabBar(QTabBar *bar) { setTabBar(bar); }
};
