#pragma once

#include "ServerConfig.h"

#include <QDialog>
#include <QString>

class QComboBox;
class QFormLayout;
class QLineEdit;

/// The form in which the user adds a server or changes one.
///
/// It shows an address and a record and gives back what the user made of them; it neither checks
/// the address nor stores anything. It has no field for `useSsl`: a record that comes out of it has
/// TLS off, until the connect dialog's box sets it at the next connect.
class ServerEditDialog final : public QDialog
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ServerEditDialog)

public:
    /// `address` is "host:port"; with no ":" or several, the whole of it is taken as the host, and
    /// the port is 6667. `theme` names the looks.
    ServerEditDialog(const QString &title, const QString &address, const ServerConfig &config,
                     const QString &theme, QWidget *parent);

    /// The record as the form stands.
    [[nodiscard]] ServerConfig getConfig() const;

    /// Host and port as the form stands, joined by ":"; the port is 0 if its field holds no number.
    [[nodiscard]] QString fullAddress() const;

private:
    void buildAddressRows(QFormLayout *form, const QString &address);
    void buildRecordRows(QFormLayout *form, const ServerConfig &config);
    void applyTheme();
    void applyComboBoxStyles();

    QLineEdit *serverEdit = nullptr;
    QLineEdit *portEdit = nullptr;
    QLineEdit *nicknameEdit = nullptr;
    QLineEdit *altNickEdit = nullptr;
    QLineEdit *realNameEdit = nullptr;
    QLineEdit *passwordEdit = nullptr;
    QLineEdit *autojoinEdit = nullptr;
    QComboBox *authCombo = nullptr;
    QComboBox *encodingCombo = nullptr;
    QString currentTheme;
};
