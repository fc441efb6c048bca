// The dialogs that the user opens, and the answers to all dialogs and menus.

#include "ConnectDialog.h"
#include "EditTopicDialog.h"
#include "IRCConnection.h"
#include "PreferencesDialog.h"
#include "RandomUser.h"
#include "ServerEditDialog.h"

#include <QAction>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QInputDialog>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QTabWidget>
#include <QTest>
#include <QTextEdit>
#include <QToolBar>

using namespace Qt::StringLiterals;

namespace {

// Whether the dialog is one of the program's prompts and none of Qt's choosers.
bool isPrompt(const QDialog &dialog)
{
    return dialog.metaObject() == &QDialog::staticMetaObject
           || qobject_cast<const QInputDialog *>(&dialog) != nullptr;
}

} // namespace

// ---------------------------------------------------------------------------------------------
// Dialogs

void RandomUser::applyAwayToModel()
{
    if (latest.isAccepted)
        model.goAway(latest.text.isEmpty() ? u"Away"_s : latest.text);
    else if (!latest.hasDialog && isConnected() && model.isAway)
        model.returnFromAway();
}

void RandomUser::applyNickToModel()
{
    const bool isNew = latest.text != probe.connection().currentNick();
    if (latest.isAccepted && !latest.text.isEmpty() && isNew)
        model.changeNick(latest.text);
}

void RandomUser::setAway()
{
    probe.awayAction().trigger();
    applyAwayToModel();
}

void RandomUser::changeNick()
{
    probe.changeNickAction().trigger();
    applyNickToModel();
}

void RandomUser::joinChannel()
{
    const bool wasConnected = isConnected();
    session.choose(u"&Join channel..."_s);
    if (wasConnected && latest.isAccepted && !latest.text.isEmpty())
        model.joinChannel(latest.text.startsWith(u'#') ? latest.text : QString(u'#' + latest.text));
}

void RandomUser::editTopic()
{
    const QString channel = probe.currentTabName();
    QPushButton *button = probe.tabs().value(channel).editTopicBtn;
    if (button == nullptr || !button->isVisible())
        return;
    const bool mayEdit = isConnected() && probe.isUserOperator(channel);
    button->click();
    if (mayEdit && latest.isAccepted)
        model.setTopic(channel, latest.text);
}

void RandomUser::readInfo()
{
    session.choose(random.chance(50) ? u"About Velmora"_s : u"Help"_s);
}

void RandomUser::useConnectDialog()
{
    auto *dialog = session.window.findChild<ConnectDialog *>();
    if (dialog == nullptr) {
        session.choose(u"&Connect..."_s);
        return;
    }
    auto *rows = dialog->findChild<QListWidget *>();
    const int row = random.below(qMax(1, rows->count()));
    switch (random.below(6)) {
    case 0:
        rows->setCurrentRow(row);
        break;
    case 1:
        if (rows->count() > 0) {
            rows->scrollToItem(rows->item(row));
            emit rows->customContextMenuRequested(rows->visualItemRect(rows->item(row)).center());
        }
        break;
    case 2:
        dialog->reject();
        break;
    default:
        dialog->findChild<QPushButton *>(
                      random.pick(QStringList{u"addButton"_s, u"editButton"_s, u"deleteButton"_s}))
                ->click();
    }
}

void RandomUser::usePreferences()
{
    auto *dialog = session.window.findChild<PreferencesDialog *>();
    if (dialog == nullptr) {
        session.choose(u"&Preferences..."_s);
        return;
    }
    const auto *box = dialog->findChild<QDialogButtonBox *>();
    switch (random.below(4)) {
    case 0:
        box->button(QDialogButtonBox::Ok)->click();
        model.applyPreferences();
        break;
    case 1:
        box->button(QDialogButtonBox::Apply)->click();
        model.applyPreferences();
        break;
    case 2:
        box->button(QDialogButtonBox::Cancel)->click();
        break;
    default:
        random.pick(dialog->findChild<QTabWidget *>()->findChildren<QPushButton *>())->click();
    }
}

// ---------------------------------------------------------------------------------------------
// Answers

void RandomUser::interrupt()
{
    if (!isConnected())
        return;
    if (random.chance(10)) {
        loseLink();
        return;
    }
    receiveLines();
    if (!session.settle())
        failure = u"lines are not received while a dialog or menu is open"_s;
}

void RandomUser::answer(QWidget *shown)
{
    ++done.answers;
    const QPointer<QWidget> guard = shown;
    if (random.chance(30))
        interrupt();
    QWidget *left = guard.data();
    if (left == nullptr || !left->isVisible())
        return;
    if (auto *menu = qobject_cast<QMenu *>(left))
        answerMenu(menu);
    else if (auto *dialog = qobject_cast<QDialog *>(left))
        answerDialog(dialog);
}

void RandomUser::answerMenu(QMenu *menu)
{
    QList<QAction *> entries = menu->actions();
    entries.removeIf([](const QAction *entry) { return entry->isSeparator(); });
    if (entries.isEmpty() || random.chance(20)) {
        menu->close();
        return;
    }
    QAction *entry = random.pick(entries);
    steps.last() += u" > "_s + entry->text();
    latest.entry = entry->text();
    menu->setActiveAction(entry);
    QTest::keyClick(menu, Qt::Key_Return);
}

void RandomUser::answerDialog(QDialog *dialog)
{
    if (const auto *box = qobject_cast<QMessageBox *>(dialog)) {
        random.pick(box->buttons())->click();
        return;
    }
    const bool accepts = random.chance(70);
    QString text;
    if (const auto *editor = qobject_cast<EditTopicDialog *>(dialog)) {
        editor->findChild<QTextEdit *>()->setPlainText(lines.text());
        if (random.chance(30))
            editor->findChild<QToolBar *>()->actions().at(random.below(5))->trigger();
        text = editor->newTopic();
    } else if (qobject_cast<ServerEditDialog *>(dialog) != nullptr) {
        // Never the server in use, whose record the next connection needs.
        const QList<QLineEdit *> fields = dialog->findChildren<QLineEdit *>();
        fields.first()->setText(u"irc%1.example.org"_s.arg(random.below(5)));
    } else if (auto *edit = dialog->findChild<QLineEdit *>();
               edit != nullptr && isPrompt(*dialog)) {
        text = random.pick(QStringList{QString(), u"mine"_s, lines.channel(), u"some text"_s});
        edit->setText(text);
    }
    latest.hasDialog = true;
    latest.isAccepted = accepts && qobject_cast<QFileDialog *>(dialog) == nullptr;
    latest.text = text;
    steps.last() += u" > "_s + (accepts ? u"accepts "_s : u"rejects "_s) + text;
    // A file dialog does not accept without a chosen file.
    if (latest.isAccepted)
        dialog->accept();
    else
        dialog->reject();
}
