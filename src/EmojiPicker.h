#pragma once

#include <QDialog>
#include <QString>

class QGridLayout;
class QPoint;
class QRect;
class QSize;

/// A small popup with a fixed table of emojis in six categories.
///
/// A click on an emoji, or outside, closes it. It is made anew for each opening: the caller says
/// where it stands, shows it, sees to its end (`Qt::WA_DeleteOnClose`) and decides what happens
/// with the emoji.
class EmojiPicker final : public QDialog
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(EmojiPicker)

public:
    /// `theme` names the looks: "glass", "dark", or anything else for light.
    EmojiPicker(QWidget *parent, const QString &theme);

    /// Where the top left corner of a picker of `size` belongs that opens from `button`, all in the
    /// coordinates of the screen of which `available` may be used: to the right of the button, or
    /// else to its left, or else over it, or else under it, and within `available` as far as it
    /// fits.
    [[nodiscard]] static QPoint placeAt(const QRect &button, const QSize &size,
                                        const QRect &available);

    /// Shows the picker beside `button`, as `placeAt` does.
    void showBeside(const QWidget &button);

signals:
    /// A click has chosen `emoji`, with its variation selector if it has one. The picker is still
    /// up; it closes when this returns.
    void emojiSelected(const QString &emoji);

protected:
    /// Moves the focus from one emoji to the next as an arrow key says, within the grid.
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void setupUI();
    [[nodiscard]] QGridLayout *createGrid();
    void addEmoji(QGridLayout *grid, const QString &emoji, int row, int column);

    QString currentTheme;
};
