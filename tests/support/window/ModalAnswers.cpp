#include "ModalAnswers.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QDialog>
#include <QEvent>
#include <QMenu>
#include <QMessageBox>
#include <QTest>

using namespace Qt::StringLiterals;

ModalAnswers::ModalAnswers()
{
    qApp->installEventFilter(this);
}

void ModalAnswers::queueForBox(const std::function<void(QMessageBox *)> &answer)
{
    queueFor(answer);
}

void ModalAnswers::queueForDialog(const std::function<void(QDialog *)> &answer)
{
    queueFor(answer);
}

void ModalAnswers::queueForMenu(const std::function<void(QMenu *)> &answer)
{
    queueFor(answer);
}

void ModalAnswers::answerAllOthers(const std::function<void(QWidget *)> &answer)
{
    answerForOthers = answer;
}

std::function<void(QMenu *)> ModalAnswers::choosing(const QString &text)
{
    return [text](QMenu *menu) {
        const QList<QAction *> actions = menu->actions();
        for (QAction *action : actions) {
            if (action->text() == text) {
                menu->setActiveAction(action);
                QTest::keyClick(menu, Qt::Key_Return);
                return;
            }
        }
    };
}

QStringList ModalAnswers::entriesOf(const QMenu &menu)
{
    QStringList texts;
    const QList<QAction *> actions = menu.actions();
    for (const QAction *action : actions)
        texts.append(action->isSeparator() ? u"-"_s : action->text());
    return texts;
}

void ModalAnswers::rightClick(QWidget &widget, QPoint position)
{
    QContextMenuEvent event(QContextMenuEvent::Mouse, position, widget.mapToGlobal(position));
    QCoreApplication::sendEvent(&widget, &event);
}

QStringList ModalAnswers::problems() const
{
    QStringList all = noted;
    if (!answers.isEmpty())
        all.append(u"%1 answers were not used"_s.arg(answers.size()));
    return all;
}

bool ModalAnswers::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Show && watched->isWidgetType()) {
        auto *widget = qobject_cast<QWidget *>(watched);
        if (widget->isWindow() && (widget->isModal() || qobject_cast<QMenu *>(widget) != nullptr)) {
            // Queued, since the nested event loop starts after the window is shown.
            const QPointer<QWidget> shown = widget;
            QMetaObject::invokeMethod(
                    this, [this, shown]() { answer(shown); }, Qt::QueuedConnection);
        }
    }
    return QObject::eventFilter(watched, event);
}

template <typename Wanted>
void ModalAnswers::queueFor(const std::function<void(Wanted *)> &answer)
{
    answers.enqueue([this, answer](QWidget *shown) {
        if (auto *wanted = qobject_cast<Wanted *>(shown))
            answer(wanted);
        else
            note(u"not of the expected type"_s, shown);
    });
}

void ModalAnswers::answer(QWidget *shown)
{
    if (shown == nullptr || !shown->isVisible())
        return;
    const QPointer<QWidget> guard = shown;
    if (!answers.isEmpty())
        answers.dequeue()(shown);
    else if (answerForOthers)
        answerForOthers(shown);
    else
        note(u"no answer was queued"_s, shown);
    if (QWidget *left = guard.data(); left != nullptr && left->isVisible()) {
        note(u"still open after its answer"_s, left);
        left->close();
    }
}

void ModalAnswers::note(const QString &what, const QWidget *shown)
{
    const auto *box = qobject_cast<const QMessageBox *>(shown);
    const QString text = box != nullptr ? box->text() : shown->windowTitle();
    noted.append(u"%1: %2 \"%3\""_s.arg(what, QString::fromLatin1(shown->metaObject()->className()),
                                        text));
}
