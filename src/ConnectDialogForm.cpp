#include "ConnectDialogForm.h"

#include "DialogParts.h"
#include "FocusMark.h"
#include "ServerListDelegate.h"
#include "ServerStore.h"

#include <QCheckBox>
#include <QCoreApplication>
#include <QDialog>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {

struct Form
{
    Q_DECLARE_TR_FUNCTIONS(ConnectDialogForm)
};

} // namespace

ConnectDialogForm::ConnectDialogForm(QDialog &dialog)
{
    auto *layout = new QVBoxLayout(&dialog);
    layout->setContentsMargins(28, 28, 28, 20);
    layout->setSpacing(18);

    auto *title = new QLabel(Form::tr("Connect to IRC"));
    title->setObjectName(u"titleLabel"_s);
    layout->addWidget(title);

    auto *form = new QFormLayout;
    form->setLabelAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    form->setFormAlignment(Qt::AlignLeft | Qt::AlignTop);
    form->setFieldGrowthPolicy(QFormLayout::ExpandingFieldsGrow);
    form->setSpacing(12);
    layout->addLayout(form);
    addFields(*form);
    serverList->setItemDelegate(new ServerListDelegate(&dialog));

    sslCheck = new QCheckBox(Form::tr("Use SSL"));
    layout->addWidget(sslCheck);
    layout->addLayout(makeDialogButtons());
}

void ConnectDialogForm::addFields(QFormLayout &form)
{
    const auto addEdit = [&form](const QString &label, const QString &placeholder) {
        auto *edit = new QLineEdit;
        edit->setPlaceholderText(placeholder);
        form.addRow(label, edit);
        return edit;
    };
    serverEdit = addEdit(Form::tr("Server:"), u"irc.libera.chat"_s);
    portEdit = addEdit(Form::tr("Port:"), QString::number(ServerStore::DefaultPort));
    portEdit->setFixedWidth(80);

    QWidget *listButtons = makeListButtons();
    serverList = new QListWidget;
    serverList->setAlternatingRowColors(true);
    serverList->setMinimumHeight(120);
    serverList->setMaximumHeight(150);
    serverList->setContextMenuPolicy(Qt::CustomContextMenu);
    // The buttons stand where its label would.
    serverList->setAccessibleName(Form::tr("Servers"));
    new FocusMark(*serverList);
    form.addRow(listButtons, serverList);

    nicknameEdit = addEdit(Form::tr("Nickname:"), Form::tr("Type you nickname"));
    realNameEdit = addEdit(Form::tr("Real name:"), Form::tr("Type you Real name (optionally)"));
    channelsEdit = addEdit(Form::tr("Join channels:"), Form::tr("#linux, #help"));
}

QWidget *ConnectDialogForm::makeListButtons()
{
    addButton = DialogParts::makeButton(Form::tr("Add"), u"addButton"_s);
    editButton = DialogParts::makeButton(Form::tr("Edit"), u"editButton"_s);
    deleteButton = DialogParts::makeButton(Form::tr("Delete"), u"deleteButton"_s);

    auto *column = new QWidget;
    auto *layout = new QVBoxLayout(column);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(4);
    layout->addWidget(addButton);
    layout->addWidget(editButton);
    layout->addWidget(deleteButton);
    layout->addStretch();
    return column;
}

QBoxLayout *ConnectDialogForm::makeDialogButtons()
{
    cancelButton = DialogParts::makeButton(Form::tr("Cancel"), u"cancelButton"_s);
    connectButton = DialogParts::makeButton(Form::tr("Connect"), u"connectButton"_s);
    connectButton->setDefault(true);
    new FocusMark(*connectButton);

    auto *layout = new QHBoxLayout;
    layout->addStretch();
    layout->addWidget(cancelButton);
    layout->addWidget(connectButton);
    return layout;
}
