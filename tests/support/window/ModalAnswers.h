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

/// Answers modal dialogs and menus, which block their caller in an event loop of their own.
///
/// Queue one answer for each dialog or menu before the call that shows it; they are used in order.
/// An answer runs inside the nested event loop, looks at what is shown and ends it. One that is
/// still up afterwards is closed, and so is one that no answer was queued for, so that a test
/// fails and does not hang; both are noted in `problems`. Works while the object lives.
class ModalAnswers final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ModalAnswers)

public:
    ModalAnswers();

    void queueForBox(const std::function<void(QMessageBox *)> &answer);
    void queueForDialog(const std::function<void(QDialog *)> &answer);
    void queueForMenu(const std::function<void(QMenu *)> &answer);

    /// Has `answer` deal with whatever comes up that no answer was queued for, any number of times.
    void answerAllOthers(const std::function<void(QWidget *)> &answer);

    /// An answer for a menu: chooses the entry with this text. A menu without it stays up, which is
    /// a problem.
    [[nodiscard]] static std::function<void(QMenu *)> choosing(const QString &text);

    /// The texts of the menu's entries; "-" for a separator.
    [[nodiscard]] static QStringList entriesOf(const QMenu &menu);

    /// Right-clicks the widget at `position`, which may open a menu.
    static void rightClick(QWidget &widget, QPoint position);

    /// What was not as it should be up to now: a dialog without an answer, an answer that found
    /// something else or did not end it, an answer that nothing came for. Empty if all went well.
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
