#include "ServerAnswers.h"

#include "FormFields.h"

#include <QLineEdit>
#include <QPushButton>
#include <QTest>

using namespace Qt::StringLiterals;

namespace ServerAnswers {

void save(ModalAnswers &answers, const QMap<QString, QString> &texts)
{
    answers.queueForDialog([texts](QDialog *form) {
        for (auto text = texts.cbegin(); text != texts.cend(); ++text)
            FormFields::field<QLineEdit>(form, text.key())->setText(text.value());
        form->findChild<QPushButton *>(u"connectButton"_s)->click();
    });
}

void cancel(ModalAnswers &answers)
{
    answers.queueForDialog(
            [](QDialog *form) { form->findChild<QPushButton *>(u"cancelButton"_s)->click(); });
}

void confirm(ModalAnswers &answers, QMessageBox::Icon icon, const QString &title,
             const QString &text)
{
    answers.queueForBox([icon, title, text](QMessageBox *box) {
        QCOMPARE(box->icon(), icon);
        QCOMPARE(box->windowTitle(), title);
        QCOMPARE(box->text(), text);
        QCOMPARE(box->standardButtons(), QMessageBox::Ok);
        box->button(QMessageBox::Ok)->click();
    });
}

void pressButton(ModalAnswers &answers, QMessageBox::StandardButton button)
{
    answers.queueForBox([button](QMessageBox *box) { box->button(button)->click(); });
}

void choose(ModalAnswers &answers, const QString &entry)
{
    answers.queueForMenu(ModalAnswers::choosing(entry));
}

} // namespace ServerAnswers
