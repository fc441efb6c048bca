#pragma once

class QBoxLayout;
class QCheckBox;
class QDialog;
class QFormLayout;
class QLineEdit;
class QListWidget;
class QPushButton;
class QWidget;

/// The widgets of the connect dialog: where they stand and what they say before anything is filled
/// in. It connects none of them.
class ConnectDialogForm final
{
public:
    /// Lays the widgets out in `dialog`, to which they belong from then on.
    explicit ConnectDialogForm(QDialog &dialog);

    QLineEdit *serverEdit = nullptr;
    QLineEdit *portEdit = nullptr;
    QLineEdit *nicknameEdit = nullptr;
    QLineEdit *realNameEdit = nullptr;
    QLineEdit *channelsEdit = nullptr;
    QCheckBox *sslCheck = nullptr;
    QListWidget *serverList = nullptr;
    QPushButton *addButton = nullptr;
    QPushButton *editButton = nullptr;
    QPushButton *deleteButton = nullptr;
    QPushButton *cancelButton = nullptr;
    QPushButton *connectButton = nullptr;

private:
    void addFields(QFormLayout &form);
    [[nodiscard]] QWidget *makeListButtons();
    [[nodiscard]] QBoxLayout *makeDialogButtons();
};
