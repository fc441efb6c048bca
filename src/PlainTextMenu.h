#pragma once

#include <QMenu>

class QStyleOptionMenuItem;

/// A menu that shows its entries to the letter, for texts that others have chosen.
///
/// An ampersand is shown as one, where other menus underline what follows it, and a tab as a blank,
/// where other menus set what follows it apart. A text that is too long for a menu is elided. The
/// texts of the actions themselves stay as they are.
class PlainTextMenu final : public QMenu
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(PlainTextMenu)

public:
    PlainTextMenu();

protected:
    void initStyleOption(QStyleOptionMenuItem *option, const QAction *action) const override;
    void actionEvent(QActionEvent *event) override;
};
