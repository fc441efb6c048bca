#include "PreferencesForm.h"

#include "WindowSession.h"

#include <QApplication>
#include <QColorDialog>
#include <QFile>
#include <QFontDialog>
#include <QFormLayout>
#include <QImage>
#include <QRegularExpression>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

QString PreferencesForm::imagePath()
{
    static const QTemporaryDir folder;
    const QString path = folder.filePath(u"an image.png"_s);
    if (!QFile::exists(path)) {
        QImage image(8, 8, QImage::Format_RGB32);
        image.fill(Qt::red);
        image.save(path);
    }
    return path;
}

PreferencesForm::PreferencesForm(WindowSession &session)
{
    QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    session.choose(u"&Preferences..."_s);
    // Several may be open.
    const auto dialogs = session.window.findChildren<PreferencesDialog *>();
    dialog = dialogs.isEmpty() ? nullptr : dialogs.constLast();
}

QList<PreferenceCase> PreferencesForm::preferencesWithField()
{
    return {{u"chatFont"_s, QFont(u"Monaco"_s, 12).toString(),
             QFont(u"DejaVu Serif"_s, 15).toString()},
            {u"timestampFormat"_s, u"[HH:mm:ss]"_s, u"hh:mm"_s},
            {u"emojiSize"_s, u"20"_s, u"48"_s},
            {u"logEnabled"_s, u"false"_s, u"true"_s},
            {u"logPath"_s, u""_s, u"/tmp/logs of mine"_s},
            {u"chatBgImage"_s, u""_s, imagePath()},
            {u"chatBgColor"_s, u""_s, u"#123456"_s},
            {u"autoReconnect"_s, u"true"_s, u"false"_s},
            {u"reconnectDelay"_s, u"10"_s, u"300"_s},
            {u"reconnectAttempts"_s, u"0"_s, u"100"_s},
            {u"pingInterval"_s, u"60"_s, u"600"_s},
            {u"pingTimeout"_s, u"45"_s, u"120"_s},
            {u"acceptInvalidSsl"_s, u"false"_s, u"true"_s}};
}

QList<PreferenceCase> PreferencesForm::allPreferences()
{
    return QList<PreferenceCase>{{u"theme"_s, u"light"_s, u"dark"_s}} + preferencesWithField();
}

void PreferencesForm::addTestRows()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("defaultValue");
    QTest::addColumn<QString>("other");
    const QList<PreferenceCase> preferences = preferencesWithField();
    for (const auto &[key, defaultValue, other] : preferences)
        QTest::newRow(qUtf8Printable(key)) << key << defaultValue << other;
}

QMap<QString, QString> PreferencesForm::stored()
{
    const QSettings settings;
    QMap<QString, QString> values;
    // The keys in groups belong to servers.
    const QStringList keys = settings.childKeys();
    for (const QString &key : keys)
        values.insert(key, settings.value(key).toString());
    return values;
}

QWidget *PreferencesForm::page(const QString &text) const
{
    for (int index = 0; index < pages()->count(); ++index) {
        if (pages()->tabText(index) == text)
            return pages()->widget(index);
    }
    return nullptr;
}

QCheckBox *PreferencesForm::check(const QString &text) const
{
    return FormFields::childWithText<QCheckBox>(dialog, text);
}

QPushButton *PreferencesForm::button(const QString &text) const
{
    return FormFields::childWithText<QPushButton>(dialog, text);
}

QLabel *PreferencesForm::preview() const
{
    const QFormLayout *form = FormFields::formOf(page(u"Interface"_s));
    QLayoutItem *item = form->itemAt(form->rowCount() - 1, QFormLayout::SpanningRole);
    return item != nullptr ? qobject_cast<QLabel *>(item->widget()) : nullptr;
}

void PreferencesForm::click(QDialogButtonBox::StandardButton which) const
{
    dialog->findChild<QDialogButtonBox *>()->button(which)->click();
}

void PreferencesForm::chooseFont(const QFont &font)
{
    answers.queueForDialog([font](QDialog *shown) {
        if (auto *fonts = qobject_cast<QFontDialog *>(shown))
            fonts->setCurrentFont(font);
        shown->accept();
    });
    fontButton()->click();
}

void PreferencesForm::chooseFile(const QString &buttonText, const QString &path)
{
    answers.queueForDialog([path](QDialog *shown) {
        if (auto *name = shown->findChild<QLineEdit *>(u"fileNameEdit"_s))
            name->setText(path);
        shown->accept();
    });
    button(buttonText)->click();
}

void PreferencesForm::chooseImage(const QString &path)
{
    chooseFile(u"Choose Image..."_s, path);
}

void PreferencesForm::chooseColor(const QColor &color)
{
    answers.queueForDialog([color](QDialog *shown) {
        if (auto *colors = qobject_cast<QColorDialog *>(shown))
            colors->setCurrentColor(color);
        shown->accept();
    });
    button(u"Solid Color..."_s)->click();
}

QWidget *PreferencesForm::plainField(const QString &key) const
{
    static const QMap<QString, QString> labels{{u"timestampFormat"_s, u"Timestamp:"_s},
                                               {u"emojiSize"_s, u"Emoji size:"_s},
                                               {u"logPath"_s, u"Log path:"_s},
                                               {u"reconnectDelay"_s, u"Reconnect delay:"_s},
                                               {u"reconnectAttempts"_s, u"Max attempts:"_s},
                                               {u"pingInterval"_s, u"PING interval:"_s},
                                               {u"pingTimeout"_s, u"PONG timeout:"_s}};
    static const QMap<QString, QString> checks{
            {u"logEnabled"_s, u"Enable logging"_s},
            {u"autoReconnect"_s, u"Auto-reconnect on disconnect"_s},
            {u"acceptInvalidSsl"_s, u"Accept invalid SSL certificates"_s}};
    if (checks.contains(key))
        return check(checks.value(key));
    return labels.contains(key) ? field<QWidget>(labels.value(key)) : nullptr;
}

void PreferencesForm::set(const QString &key, const QString &value)
{
    QWidget *widget = plainField(key);
    if (auto *combo = qobject_cast<QComboBox *>(widget))
        combo->setCurrentText(value);
    else if (auto *spin = qobject_cast<QSpinBox *>(widget))
        spin->setValue(value.toInt());
    else if (auto *check = qobject_cast<QCheckBox *>(widget))
        check->setChecked(value == "true"_L1);
    else if (auto *edit = qobject_cast<QLineEdit *>(widget))
        edit->setText(value);
    else if (key == "chatFont"_L1) {
        QFont font;
        font.fromString(value);
        chooseFont(font);
    } else if (value.isEmpty())
        button(u"Reset"_s)->click();
    else if (key == "chatBgImage"_L1)
        chooseImage(value);
    else
        chooseColor(QColor(value));
}

QString PreferencesForm::shown(const QString &key) const
{
    QWidget *widget = plainField(key);
    if (const auto *combo = qobject_cast<QComboBox *>(widget))
        return combo->currentText();
    if (const auto *spin = qobject_cast<QSpinBox *>(widget))
        return QString::number(spin->value());
    if (const auto *check = qobject_cast<QCheckBox *>(widget))
        return check->isChecked() ? u"true"_s : u"false"_s;
    if (const auto *edit = qobject_cast<QLineEdit *>(widget))
        return edit->text();
    if (key == "chatFont"_L1)
        return fontButton()->text();
    static const QRegularExpression image(uR"re(border-image: url\("(.*)"\))re"_s);
    static const QRegularExpression color(uR"(background-color: (.*?);)"_s);
    const QString fill =
            (key == "chatBgImage"_L1 ? image : color).match(preview()->styleSheet()).captured(1);
    // The preview is grey if no background is chosen.
    return fill == "#f5f5f5"_L1 ? QString() : fill;
}

QString PreferencesForm::display(const QString &key, const QString &value)
{
    if (key != "chatFont"_L1)
        return value;
    QFont font;
    font.fromString(value);
    return u"%1 %2"_s.arg(font.family(), QString::number(font.pointSize()));
}
