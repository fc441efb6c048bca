#pragma once

#include <QMenu>
#include <QString>

class QTabBar;
class QTabWidget;
class QWidget;

/// Shows names that the server or other users have chosen verbatim, in widgets that would otherwise
/// interpret them: as mnemonics, rich text or placeholders.
///
/// The texts that the widgets return stay as they were set.
namespace LiteralText {

/// Adds `page` to `tabs` under `name`, without a mnemonic, and returns its index. `tabs` takes
/// ownership of `page`.
int addTab(QTabWidget &tabs, QWidget *page, const QString &name);

/// Changes the name of the tab at `index`, which must exist.
void renameTab(QTabWidget &tabs, int index, const QString &name);

/// Sets whether screen readers announce a new message with the name of the tab at `index`.
void setTabMarked(QTabWidget &tabs, int index, bool isMarked);

/// Shows the tool tips of the tabs of `bar` as plain text, truncated to 500 characters.
void showTabToolTips(QTabBar &bar);

/// Shows "[*]" in the title of `window`, where Qt would put a mark for unsaved changes.
///
/// Takes effect when the window is shown; a title set later is not covered.
void showTitle(QWidget &window);

/// A menu whose entries have no mnemonics and no shortcut column.
///
/// Shows ampersands and shows tab characters as spaces. Elides texts that are too long for a menu.
class Menu final : public QMenu
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(Menu)

public:
    Menu();

protected:
    void initStyleOption(QStyleOptionMenuItem *option, const QAction *action) const override;
    void actionEvent(QActionEvent *event) override;
};

} // namespace LiteralText
