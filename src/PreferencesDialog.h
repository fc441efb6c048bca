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

/// Dialog for the preferences.
///
/// Shows the preferences of `MainWindow` at construction. OK and Apply set them in the window and
/// store them. Only the ranges of the fields are checked. Intended: a chosen font is set in the
/// window at once, even if the dialog is then cancelled.
///
/// Seven fields belong to features that do not exist yet. They show fixed values and are not saved.
///
/// The dialog is not modal, deletes itself when closed, and has a fixed size.
class PreferencesDialog final : public QDialog
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(PreferencesDialog)

public:
    /// `parent` must not be null.
    explicit PreferencesDialog(MainWindow *parent);
    ~PreferencesDialog() override;

    /// Sets all preferences in the window and stores them. Also sets the light theme.
    void saveAndApply();
    /// Shows the chosen image or colour, or that there is none.
    void updateBgPreview();
    /// Applies the window's theme.
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

    // Choosing: each opens a dialog in a nested event loop, where this dialog can be deleted.
    void chooseFont();
    void chooseBgImage();
    void chooseBgColor();
    void chooseLogPath();
    void resetBackground();

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
    QString pendingBgImage; ///< Path of the chosen image; empty for none.
    QColor pendingBgColor;  ///< The chosen colour; invalid for none.
};
