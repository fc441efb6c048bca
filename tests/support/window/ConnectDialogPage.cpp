#include "ConnectDialogPage.h"

#include "FormFields.h"

using namespace Qt::StringLiterals;

ConnectDialogPage::ConnectDialogPage()
    : server(FormFields::field<QLineEdit>(&dialog, u"Server:"_s))
    , port(FormFields::field<QLineEdit>(&dialog, u"Port:"_s))
    , nickname(FormFields::field<QLineEdit>(&dialog, u"Nickname:"_s))
    , realName(FormFields::field<QLineEdit>(&dialog, u"Real name:"_s))
    , channels(FormFields::field<QLineEdit>(&dialog, u"Join channels:"_s))
    , ssl(dialog.findChild<QCheckBox *>())
    , list(dialog.findChild<QListWidget *>())
{
}

bool ConnectDialogPage::select(const QString &row) const
{
    const QList<QListWidgetItem *> found = list->findItems(row, Qt::MatchExactly);
    if (found.isEmpty())
        return false;
    list->setCurrentItem(found.constFirst());
    return true;
}

QStringList ConnectDialogPage::rows() const
{
    QStringList texts;
    for (int i = 0; i < list->count(); ++i)
        texts.append(list->item(i)->text());
    return texts;
}

QString ConnectDialogPage::currentRow() const
{
    return list->currentItem() != nullptr ? list->currentItem()->text() : QString();
}

void ConnectDialogPage::typeServer(const QString &host, const QString &newPort) const
{
    server->clear();
    server->setText(host);
    port->setText(newPort);
}

void ConnectDialogPage::openMenu(const QString &row)
{
    if (!select(row))
        return;
    dialog.show();
    list->scrollToItem(list->currentItem());
    const QPoint pos = list->visualItemRect(list->currentItem()).center();
    list->setCurrentItem(nullptr); // The click must make the row current.
    Q_EMIT list->customContextMenuRequested(pos);
}

QPushButton *ConnectDialogPage::button(const QString &name) const
{
    return dialog.findChild<QPushButton *>(name);
}
