#pragma once

#include <QObject>

class QComboBox;

/// Stops the key that closes a combo box's list from also reaching the dialog.
///
/// Qt closes the list at the key's ShortcutOverride. Where the compositor gives keys to the
/// dialog's window and not to the list's (Wayland), the key press then goes to the combo box, which
/// leaves Escape and Return to the dialog.
class ComboBoxKeys final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ComboBoxKeys)

public:
    /// `box` becomes the parent.
    explicit ComboBoxKeys(QComboBox &box);

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    int closingKey = 0; ///< Key whose ShortcutOverride went to the open list; 0 for none.
};
