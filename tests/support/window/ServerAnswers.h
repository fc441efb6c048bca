#pragma once

#include "ModalAnswers.h"

#include <QMap>
#include <QMessageBox>
#include <QString>

/// Queues answers to the forms, message boxes and menus of the connect dialog.
namespace ServerAnswers {

/// Enters texts into the fields with these labels of the server form and saves it.
void save(ModalAnswers &answers, const QMap<QString, QString> &texts);

void cancel(ModalAnswers &answers);

/// Checks that a message box has this icon, title and text and only an OK button, and presses it.
void confirm(ModalAnswers &answers, QMessageBox::Icon icon, const QString &title,
             const QString &text);

void pressButton(ModalAnswers &answers, QMessageBox::StandardButton button);

/// Chooses the menu entry with this text by keyboard.
void choose(ModalAnswers &answers, const QString &entry);

} // namespace ServerAnswers
