#pragma once

#include "FormFields.h"
#include "ModalAnswers.h"
#include "PreferencesDialog.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QSpinBox>
#include <QTabWidget>

class WindowSession;

/// One preference, by its key, in the form in which it is stored.
struct PreferenceCase
{
    QString key;
    QString defaultValue;
    QString other; ///< A value that the dialog can hold and that is not the default.
};

/// An open preferences dialog and its fields, found as a user finds them: by page and label.
///
/// The dialogs that it opens in turn are Qt's own; make one before they are shown.
class PreferencesForm final
{
    Q_DISABLE_COPY_MOVE(PreferencesForm)

public:
    /// Opens the dialog from the window's menu.
    explicit PreferencesForm(WindowSession &session);

    /// All fourteen; the other value of the theme is one that no dialog can choose.
    [[nodiscard]] static QList<PreferenceCase> allPreferences();
    /// Those that the dialog has a field for.
    [[nodiscard]] static QList<PreferenceCase> preferencesWithField();
    /// Gives a test each of these as a row: "key", "defaultValue" and "other".
    static void addTestRows();
    /// Path of a red picture, with a blank in it.
    [[nodiscard]] static QString imagePath();
    /// What the store holds under each of its keys that are in no group.
    [[nodiscard]] static QMap<QString, QString> stored();

    [[nodiscard]] QTabWidget *pages() const { return dialog->findChild<QTabWidget *>(); }
    /// The page whose tab has this text; null if there is none.
    [[nodiscard]] QWidget *page(const QString &text) const;

    // The fields, by their label or their own text; null if there is no such field.
    [[nodiscard]] QComboBox *combo(const QString &label) const { return field<QComboBox>(label); }
    [[nodiscard]] QSpinBox *spin(const QString &label) const { return field<QSpinBox>(label); }
    [[nodiscard]] QLineEdit *edit(const QString &label) const { return field<QLineEdit>(label); }
    [[nodiscard]] QCheckBox *check(const QString &text) const;
    [[nodiscard]] QPushButton *button(const QString &text) const;
    [[nodiscard]] QPushButton *fontButton() const
    {
        return field<QPushButton>(QStringLiteral("Chat font:"));
    }
    /// The picture of the background.
    [[nodiscard]] QLabel *preview() const;

    void clickOk() const { click(QDialogButtonBox::Ok); }
    void clickApply() const { click(QDialogButtonBox::Apply); }
    void clickCancel() const { click(QDialogButtonBox::Cancel); }

    // Choosing through the dialogs that the buttons open.
    void chooseFont(const QFont &font);
    void chooseImage(const QString &path);
    void chooseColor(const QColor &color);

    /// Gives the preference this value, in the form in which it is stored, as a user does.
    void set(const QString &key, const QString &value);
    /// What the field of the preference shows, in that form as far as it goes.
    [[nodiscard]] QString shown(const QString &key) const;
    /// How a field shows the value.
    [[nodiscard]] static QString display(const QString &key, const QString &value);

    ModalAnswers answers;
    QPointer<PreferencesDialog> dialog;

private:
    template <typename Wanted>
    [[nodiscard]] Wanted *field(const QString &label) const
    {
        Wanted *found = nullptr;
        for (int index = 0; found == nullptr && index < pages()->count(); ++index)
            found = FormFields::field<Wanted>(pages()->widget(index), label);
        return found;
    }
    void click(QDialogButtonBox::StandardButton which) const;
    /// The field that holds the preference, unless it is behind buttons.
    [[nodiscard]] QWidget *plainField(const QString &key) const;
    void chooseFile(const QString &button, const QString &path);
};
