#pragma once

#include <QColor>
#include <QDialog>
#include <QString>

class MainWindow;
class QBoxLayout;
class QCheckBox;
class QComboBox;
class QDialogButtonBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QSpinBox;

/// The window in which the user changes the preferences.
///
/// It shows the preferences that `MainWindow` holds as they are when it is constructed, and gives
/// them back to it and to the settings store on each OK and Apply. The ranges of the fields are all
/// the checks there are. One preference is quicker than the rest: a font goes to the window as soon
/// as it is chosen, and only its way into the store waits for OK or Apply.
///
/// Seven fields belong to features that have no such choice yet: they show fixed values, and what
/// the user does with them is forgotten.
///
/// The dialog is not modal, deletes itself when it is closed, and has one size.
class PreferencesDialog final : public QDialog
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(PreferencesDialog)

public:
    /// `parent` is the window whose preferences these are; it must not be null.
    explicit PreferencesDialog(MainWindow *parent);
    ~PreferencesDialog() override;

    /// Hands everything to the window and to the store, and sets the light theme.
    void saveAndApply();
    /// Shows the image or the colour that is chosen here, or that there is none.
    void updateBgPreview();
    /// Puts on the window's theme.
    void applyTheme();

protected:
    void showEvent(QShowEvent *event) override;

private:
    // Construction
    [[nodiscard]] QWidget *buildInterfacePage();
    [[nodiscard]] QBoxLayout *buildBackgroundButtons();
    [[nodiscard]] QWidget *buildChatPage();
    [[nodiscard]] QBoxLayout *buildLogPathRow();
    [[nodiscard]] QWidget *buildNetworkPage();
    void buildButtons();

    // Choosing: each shows a dialog of its own in a nested event loop, which this dialog may not
    // outlive.
    void chooseFont();
    void chooseBgImage();
    void chooseBgColor();
    void chooseLogPath();
    void resetBackground();

    void store() const;

    MainWindow *mainWindow;
    QDialogButtonBox *buttonBox = nullptr;
    QPushButton *fontButton = nullptr;
    QComboBox *timestampCombo = nullptr;
    QSpinBox *emojiSizeSpin = nullptr;
    QCheckBox *switchTabsCheck = nullptr;
    QLineEdit *completionSuffixEdit = nullptr;
    QSpinBox *minPrefixSpin = nullptr;
    QCheckBox *logEnabledCheck = nullptr;
    QLineEdit *logPathEdit = nullptr;
    QCheckBox *highlightCheck = nullptr;
    QCheckBox *soundCheck = nullptr;
    QComboBox *userSortCombo = nullptr;
    QCheckBox *autoReconnectCheck = nullptr;
    QSpinBox *reconnectDelaySpin = nullptr;
    QSpinBox *reconnectAttemptsSpin = nullptr;
    QSpinBox *pingIntervalSpin = nullptr;
    QSpinBox *pingTimeoutSpin = nullptr;
    QCheckBox *acceptInvalidSslCheck = nullptr;
    QComboBox *authMethodCombo = nullptr;
    QPushButton *bgImageButton = nullptr;
    QPushButton *bgColorButton = nullptr;
    QPushButton *bgResetButton = nullptr;
    QLabel *bgPreviewLabel = nullptr;
    QString pendingBgImage; ///< Path of the image on show here; empty if there is none.
    QColor pendingBgColor;  ///< Invalid if there is none. Never beside an image chosen here.
};
