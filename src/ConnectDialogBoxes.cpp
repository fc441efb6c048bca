#include "ConnectDialogBoxes.h"

#include "ThemeManager.h"

#include <QCoreApplication>
#include <QMessageBox>
#include <QPushButton>

using namespace Qt::StringLiterals;

namespace {

struct Boxes
{
    Q_DECLARE_TR_FUNCTIONS(ConnectDialogBoxes)
};

QString errorButtonSheet()
{
    return uR"(
        QPushButton { background: #007AFF; color: white; border: none; border-radius: 6px;
            padding: 8px 16px; font-size: 14px; font-weight: 500; }
        QPushButton:hover { background: #0062CC; }
        QPushButton:pressed { background: #0051AA; }
    )"_s;
}

// The confirming button is the blue one, and the red one declines.
QString deletionSheet(const QString &theme)
{
    static const QString sheet = uR"(
        QMessageBox { background: %1; }
        QLabel { color: %2; font-size: 13px; }
        QPushButton { border-radius: 6px; padding: 10px 24px; font-size: 14px; font-weight: 500; }
        QPushButton#yesButton { background: #007AFF; color: white; border: none; }
        QPushButton#yesButton:hover { background: #0062CC; }
        QPushButton#yesButton:pressed { background: #0051AA; }
        QPushButton#noButton { background: transparent; color: #FF3B30; border: 1px solid #FF3B30; }
        QPushButton#noButton:hover { background: %3; }
    )"_s;
    return ThemeManager::isDark(theme) ? sheet.arg(u"#2E2E2E"_s, u"#DDDDDD"_s, u"#5F1E1E"_s)
                                       : sheet.arg(u"#FFFFFF"_s, u"#333333"_s, u"#FFE5E5"_s);
}

} // namespace

namespace ConnectDialogBoxes {

void showError(QWidget *parent, const QString &text)
{
    QMessageBox box(parent);
    box.setWindowTitle(Boxes::tr("Error"));
    box.setText(text);
    box.setIcon(QMessageBox::Warning);
    QPushButton *button = box.addButton(QMessageBox::Ok);
    button->setObjectName(u"connectButton"_s);
    button->setStyleSheet(errorButtonSheet());
    box.exec();
}

void warnOfFormat(QWidget *parent)
{
    QMessageBox::warning(parent, Boxes::tr("Invalid format"),
                         Boxes::tr("Please use the format host:port"), QMessageBox::Ok);
}

void tellOfDuplicate(QWidget *parent)
{
    QMessageBox::information(parent, Boxes::tr("Add Server"),
                             Boxes::tr("This server already exists in the list."), QMessageBox::Ok);
}

void tellOfNoSelection(QWidget *parent, const QString &title)
{
    QMessageBox::information(parent, title, Boxes::tr("No server selected."), QMessageBox::Ok);
}

bool confirmDeletion(QWidget *parent, const QString &address, const QString &theme)
{
    QMessageBox box(parent);
    box.setWindowTitle(Boxes::tr("Delete Server"));
    // The address is whatever somebody has typed or put into the store.
    box.setTextFormat(Qt::PlainText);
    box.setText(Boxes::tr("Are you sure you want to delete server: %1").arg(address));
    box.setIcon(QMessageBox::Critical);
    box.setStandardButtons(QMessageBox::Yes | QMessageBox::No);
    box.setDefaultButton(QMessageBox::No);
    box.button(QMessageBox::Yes)->setObjectName(u"yesButton"_s);
    box.button(QMessageBox::No)->setObjectName(u"noButton"_s);
    box.setStyleSheet(deletionSheet(theme));
    return box.exec() == QMessageBox::Yes;
}

} // namespace ConnectDialogBoxes
