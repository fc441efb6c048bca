#pragma once

#include <QObject>
#include <QPointer>
#include <QQueue>
#include <QStringList>
#include <QWidget>

#include <functional>

class QDialog;
class QMenu;
class QMessageBox;

/// Answers modal dialogs and menus, which block their caller in a nested event loop.
///
/// Queue one answer for each dialog or menu before the call that shows it; they are used in order.
/// An answer runs in the nested event loop, checks the window and closes it. If the window stays
/// open, or if no answer was queued for it, it is closed and `problems` reports it, so that the
/// test fails and does not hang.
class ModalAnswers final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ModalAnswers)

public:
    ModalAnswers();

    void queueForBox(const std::function<void(QMessageBox *)> &answer);
    void queueForDialog(const std::function<void(QDialog *)> &answer);
    void queueForMenu(const std::function<void(QMenu *)> &answer);

    /// Uses `answer` for all dialogs and menus without a queued answer.
    void answerAllOthers(const std::function<void(QWidget *)> &answer);

    /// Returns an answer for a menu that chooses the entry with this text by keyboard. A menu
    /// without such an entry stays open, which `problems` reports.
    [[nodiscard]] static std::function<void(QMenu *)> choosing(const QString &text);

    /// Returns the texts of the menu's entries; "-" for a separator.
    [[nodiscard]] static QStringList entriesOf(const QMenu &menu);

    /// Right-clicks the widget at `position`.
    static void rightClick(QWidget &widget, QPoint position);

    /// Returns the problems so far: a window without an answer, of another type than expected, or
    /// still open after its answer; an unused answer. Empty if there are none.
    [[nodiscard]] QStringList problems() const;

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    using Answer = std::function<void(QWidget *)>;

    template <typename Wanted>
    void queueFor(const std::function<void(Wanted *)> &answer);
    void answer(QWidget *shown);
    void note(const QString &what, const QWidget *shown);

    QQueue<Answer> answers;
    Answer answerForOthers;
    QStringList noted;
};
