#pragma once

#include "ModalAnswers.h"

#include <QMap>
#include <QMessageBox>
#include <QString>

/// Answers to the forms, boxes and menus that the connect dialog shows, to be queued beforehand.
namespace ServerAnswers {

/// Types texts into the form for a server, by the labels of its fields, and saves.
void save(ModalAnswers &answers, const QMap<QString, QString> &texts);

/// Leaves the form for a server by its Cancel button.
void cancel(ModalAnswers &answers);

/// Expects a box with these looks and an OK button, and presses that.
void confirm(ModalAnswers &answers, QMessageBox::Icon icon, const QString &title,
             const QString &text);

/// Presses a button of a box.
void pressButton(ModalAnswers &answers, QMessageBox::StandardButton button);

/// Chooses the entry with this text of a menu by keyboard.
void choose(ModalAnswers &answers, const QString &entry);

} // namespace ServerAnswers
