#include "Prompts.h"

#include "DialogParts.h"
#include "ThemeManager.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {

struct Question
{
    QString title;
    int minimumWidth = 0;
    QString label;
    QString text;
    QString placeholder;
    QString saveText;
};

QDialogButtonBox *createButtons(QDialog &dialog, const QString &saveText, const QString &theme)
{
    QDialogButtonBox *buttons = DialogParts::makeSaveAndCancel(dialog);
    QPushButton *save = buttons->button(QDialogButtonBox::Save);
    save->setText(saveText);
    save->setDefault(true);
    buttons->button(QDialogButtonBox::Cancel)->setText(QDialog::tr("Cancel"));
    buttons->setStyleSheet(ThemeManager::buttonStyleSheet(theme));
    return buttons;
}

std::optional<QString> ask(QWidget *parent, const QString &theme, const Question &question)
{
    QDialog dialog(parent, DialogParts::Frame);
    dialog.setWindowTitle(question.title);
    dialog.setMinimumWidth(question.minimumWidth);
    auto *layout = new QVBoxLayout(&dialog);
    layout->setContentsMargins(20, 20, 20, 16);
    layout->setSpacing(12);

    auto *label = new QLabel(question.label);
    label->setStyleSheet(
            u"color: %1; font-size: 13px;"_s.arg(ThemeManager::palette(theme).textColor));
    layout->addWidget(label);

    auto *edit = new QLineEdit(question.text);
    edit->setPlaceholderText(question.placeholder);
    edit->setAccessibleName(question.label);
    edit->setStyleSheet(ThemeManager::lineEditStyleSheet(theme));
    QObject::connect(edit, &QLineEdit::returnPressed, &dialog, &QDialog::accept);
    layout->addWidget(edit);

    layout->addWidget(createButtons(dialog, question.saveText, theme));
    dialog.setStyleSheet(ThemeManager::dialogStyleSheet(theme));
    if (dialog.exec() != QDialog::Accepted)
        return std::nullopt;
    return edit->text().trimmed();
}

} // namespace

namespace Prompts {

std::optional<QString> askAwayMessage(QWidget *parent, const QString &theme)
{
    return ask(parent, theme,
               {QDialog::tr("Set Away Status"), 460, QDialog::tr("Away message:"), u"Away"_s,
                QDialog::tr("Reason for being away..."), QDialog::tr("Set Away")});
}

std::optional<QString> askNickname(QWidget *parent, const QString &theme, const QString &current)
{
    return ask(parent, theme,
               {QDialog::tr("Change Nickname"), 400, QDialog::tr("New nickname:"), current,
                QDialog::tr("Enter new nickname"), QDialog::tr("Change")});
}

} // namespace Prompts
