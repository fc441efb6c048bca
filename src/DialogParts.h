#pragma once

#include <QString>
#include <QStringList>
#include <Qt>

class QComboBox;
class QDialog;
class QDialogButtonBox;
class QPushButton;
class QWidget;

/// Parts that several dialogs share.
namespace DialogParts {

/// Window flags of a small dialog: a title and a close button only.
inline constexpr Qt::WindowFlags Frame =
        Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint;

/// Returns a button with the object name `name`. The caller owns it.
[[nodiscard]] QPushButton *makeButton(const QString &text, const QString &name);

/// Returns a combo box with the object name `name` that expands horizontally. The key that closes
/// its list does not also reach the dialog. The caller owns it.
[[nodiscard]] QComboBox *makeCombo(const QStringList &texts, const QString &name);

/// Sets up `combo` as `makeCombo` does.
void setUpCombo(QComboBox &combo, const QStringList &texts, const QString &name);

/// Returns Save and Cancel buttons that accept and reject `dialog`, with the object names
/// "connectButton" and "cancelButton". The caller owns the box.
[[nodiscard]] QDialogButtonBox *makeSaveAndCancel(QDialog &dialog);

/// Gives the popup list of each combo box in `dialog` the accessible name of its box. Call it once
/// the boxes have their labels.
void namePopups(const QDialog &dialog);

/// Keeps `dialog` centred over `window`, within the screen, while `window` moves and until `dialog`
/// is visible. Both must have been shown.
///
/// For a dialog that opens before the window manager has placed `window`: Qt centres the dialog
/// over the old position.
void keepCentered(QDialog &dialog, const QWidget &window);

/// Rejects every nested dialog, message box and menu of `parent` and removes its parent.
///
/// For the destructor of `parent`: such a window is on the stack of the function that runs its
/// event loop, and must not be deleted as a child.
void detachNestedWindows(QWidget &parent);

} // namespace DialogParts
