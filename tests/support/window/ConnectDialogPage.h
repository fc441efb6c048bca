#pragma once

#include "ConnectDialog.h"

#include <QCheckBox>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QStringList>

/// A connect dialog and the parts of it that a user sees, found by their labels and names.
///
/// The dialog reads the store when the page is made. It is not shown until somebody shows it.
class ConnectDialogPage final
{
    Q_DISABLE_COPY_MOVE(ConnectDialogPage)

public:
    ConnectDialogPage();

    /// Makes the row with exactly this text current; false if there is none.
    bool select(const QString &row) const;

    /// The texts of all rows from the top.
    [[nodiscard]] QStringList rows() const;

    /// The text of the current row; empty if there is none.
    [[nodiscard]] QString currentRow() const;

    /// Types over host and port, as for a server that is not picked from the list.
    void typeServer(const QString &host, const QString &newPort) const;

    /// Right-clicks the row with this text in the middle, after showing it.
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
