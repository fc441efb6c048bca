#pragma once

#include <QObject>

class QWidget;

/// Shows a window's title to the letter, for titles that name what others have chosen.
///
/// Qt takes "[*]" out of a title, as the place of a mark for unsaved changes. The title itself
/// stays as it is set, before the window is shown.
class PlainTitle final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(PlainTitle)

public:
    /// Belongs to `window`, whose title it shows from now on.
    explicit PlainTitle(QWidget &window);

    bool eventFilter(QObject *watched, QEvent *event) override;
};
