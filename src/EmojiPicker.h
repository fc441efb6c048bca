#pragma once

#include <QDialog>
#include <QString>

class QGridLayout;
class QPoint;
class QRect;
class QSize;

/// A popup with a fixed table of emojis in six categories.
///
/// A click on an emoji or outside closes it. The caller creates one for each opening, moves and
/// shows it, sets `Qt::WA_DeleteOnClose` and handles the emoji.
class EmojiPicker final : public QDialog
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(EmojiPicker)

public:
    /// `theme` is "glass", "dark", or anything else for light.
    EmojiPicker(QWidget *parent, const QString &theme);

    /// Returns the top left corner for a picker of `size` that opens from `button`, both in the
    /// coordinates of `available`, the area to use: to the right of the button, or to its left,
    /// above or below it, moved into `available` as far as it fits.
    [[nodiscard]] static QPoint placeAt(const QRect &button, const QSize &size,
                                        const QRect &available);

    /// Shows the picker beside `button`, as `placeAt` does.
    void showBeside(const QWidget &button);

signals:
    /// Emitted when the user has chosen `emoji`, which includes its variation selector if it has
    /// one. The picker closes afterwards.
    void emojiSelected(const QString &emoji);

protected:
    /// Moves the focus within the grid by the arrow keys.
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void setupUI();
    [[nodiscard]] QGridLayout *createGrid();
    void addEmoji(QGridLayout *grid, const QString &emoji, const QString &name, int row,
                  int column);

    QString currentTheme;
};
