#pragma once

#include "ConnectDialog.h"

#include <QCheckBox>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QStringList>

/// Page object of a connect dialog, which finds its widgets by labels and object names.
///
/// The constructor creates the dialog, which reads the store, but does not show it.
class ConnectDialogPage final
{
    Q_DISABLE_COPY_MOVE(ConnectDialogPage)

public:
    ConnectDialogPage();

    /// Makes the row with exactly this text current. Returns false if there is none.
    bool select(const QString &row) const;

    [[nodiscard]] QStringList rows() const;

    /// Returns the text of the current row; empty if there is none.
    [[nodiscard]] QString currentRow() const;

    /// Enters a host and a port that are not selected from the list.
    void typeServer(const QString &host, const QString &newPort) const;

    /// Shows the dialog and right-clicks the centre of the row with this text.
    void openMenu(const QString &row);

    [[nodiscard]] QPushButton *button(const QString &name) const;

    void clickConnect() const { button(QStringLiteral("connectButton"))->click(); }
    void clickAdd() const { button(QStringLiteral("addButton"))->click(); }
    void clickEdit() const { button(QStringLiteral("editButton"))->click(); }
    void clickDelete() const { button(QStringLiteral("deleteButton"))->click(); }

    ConnectDialog dialog{nullptr};
    QLineEdit *server;
    QLineEdit *port;
    QLineEdit *nickname;
    QLineEdit *realName;
    QLineEdit *channels;
    QCheckBox *ssl;
    QListWidget *list;
};
