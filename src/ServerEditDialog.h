#pragma once

#include "ServerConfig.h"

#include <QDialog>
#include <QString>

class QComboBox;
class QFormLayout;
class QLineEdit;

/// Dialog where the user adds or edits a server.
///
/// It neither checks the address nor stores anything.
class ServerEditDialog final : public QDialog
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ServerEditDialog)

public:
    /// Fills the fields from `address`, "host:port", and `config`. Without exactly one ":", all of
    /// `address` is the host, and the port is 6667. `theme` is a theme name of ThemeManager.
    ServerEditDialog(const QString &title, const QString &address, const ServerConfig &config,
                     const QString &theme, QWidget *parent);

    /// Returns the record that the fields contain.
    ///
    /// Intended: `useSsl` is false, since it has no field here. The connect dialog's check box sets
    /// it at the next connect.
    [[nodiscard]] ServerConfig getConfig() const;

    /// Returns the fields' host and port, joined by ":". The port is 0 if its field is no number.
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
