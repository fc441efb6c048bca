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

/// A preference and two of its values in their stored form.
struct PreferenceCase
{
    QString key;
    QString defaultValue;
    QString other; ///< A valid value other than the default.
};

/// Page object of an open preferences dialog, which finds its fields by page and label.
///
/// It makes the program use Qt's font, file and colour dialogs instead of native ones.
class PreferencesForm final
{
    Q_DISABLE_COPY_MOVE(PreferencesForm)

public:
    /// Opens the dialog from the window's menu.
    explicit PreferencesForm(WindowSession &session);

    /// Returns all fourteen preferences. The other value of the theme cannot be chosen in the
    /// dialog.
    [[nodiscard]] static QList<PreferenceCase> allPreferences();
    /// Returns the preferences that have a field in the dialog.
    [[nodiscard]] static QList<PreferenceCase> preferencesWithField();
    /// Adds a test row for each of these, with the columns "key", "defaultValue" and "other".
    static void addTestRows();
    /// Returns the path of a red image; the path contains a space.
    [[nodiscard]] static QString imagePath();
    /// Returns the stored values of all keys outside groups.
    [[nodiscard]] static QMap<QString, QString> stored();

    [[nodiscard]] QTabWidget *pages() const { return dialog->findChild<QTabWidget *>(); }
    /// Returns the page whose tab has this text; null if there is none.
    [[nodiscard]] QWidget *page(const QString &text) const;

    // Fields by their label or their own text; null if there is no such field.
    [[nodiscard]] QComboBox *combo(const QString &label) const { return field<QComboBox>(label); }
    [[nodiscard]] QSpinBox *spin(const QString &label) const { return field<QSpinBox>(label); }
    [[nodiscard]] QLineEdit *edit(const QString &label) const { return field<QLineEdit>(label); }
    [[nodiscard]] QCheckBox *check(const QString &text) const;
    [[nodiscard]] QPushButton *button(const QString &text) const;
    [[nodiscard]] QPushButton *fontButton() const
    {
        return field<QPushButton>(QStringLiteral("Chat font:"));
    }
    [[nodiscard]] QLabel *preview() const;

    void clickOk() const { click(QDialogButtonBox::Ok); }
    void clickApply() const { click(QDialogButtonBox::Apply); }
    void clickCancel() const { click(QDialogButtonBox::Cancel); }

    // Choose in the dialogs that the buttons open.
    void chooseFont(const QFont &font);
    void chooseImage(const QString &path);
    void chooseColor(const QColor &color);

    /// Sets the preference as a user does. `value` is in its stored form.
    void set(const QString &key, const QString &value);
    /// Returns what the field of the preference shows, as `display` returns it.
    [[nodiscard]] QString shown(const QString &key) const;
    /// Returns the text that a field shows for the stored form of a value.
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
    /// Returns the field of the preference; null if buttons set it.
    [[nodiscard]] QWidget *plainField(const QString &key) const;
    void chooseFile(const QString &button, const QString &path);
};
