#pragma once

#include <QString>
#include <QStringList>
#include <Qt>

class QComboBox;
class QDialog;
class QDialogButtonBox;
class QPushButton;
class QWidget;

/// What several dialogs have in common.
namespace DialogParts {

/// The frame of a small dialog: a title and a close button, and nothing else to press.
inline constexpr Qt::WindowFlags Frame =
        Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint;

/// A button with the object name by which style sheets know it. The caller owns it.
[[nodiscard]] QPushButton *makeButton(const QString &text, const QString &name);

/// Returns a combo box with these texts, as wide as its row, with the object name by which style
/// sheets know it. The key that closes its list does not also reach the dialog. The caller owns it.
[[nodiscard]] QComboBox *makeCombo(const QStringList &texts, const QString &name);

/// Gives `combo` the same texts, width, name and handling of keys as `makeCombo`.
void setUpCombo(QComboBox &combo, const QStringList &texts, const QString &name);

/// Save and Cancel, which accept and reject `dialog`, under the names by which style sheets know
/// them: "connectButton" and "cancelButton". The caller owns the box.
[[nodiscard]] QDialogButtonBox *makeSaveAndCancel(QDialog &dialog);

/// Gives the lists that the combo boxes of `dialog` open the names of their boxes, for screen
/// readers. To be called when the boxes have their labels.
void namePopups(const QDialog &dialog);

/// Centres `dialog` over `window`, within the screen, each time `window` moves until the dialog is
/// visible.
///
/// For a dialog that opens before the window manager has placed `window`: Qt centres it over the
/// place that the window had before. Both are shown already.
void keepCentered(QDialog &dialog, const QWidget &window);

/// Ends every dialog, box and menu that stands over `parent` in an event loop of its own, as if the
/// user had turned it down, and lets it go.
///
/// For the destructor of `parent`: such a window lies on the stack of the function that waits for
/// it, and must not be deleted as a child.
void letGoOfWindows(QWidget &parent);

} // namespace DialogParts
