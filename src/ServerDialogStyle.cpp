#include "ServerDialogStyle.h"

#include "ThemeManager.h"

#include <QByteArray>
#include <QDialog>
#include <QFile>
#include <QStringView>

#include <initializer_list>

using namespace Qt::StringLiterals;

namespace {

struct Color
{
    QStringView name;
    QStringView value;
};

// Named placeholders instead of %1 to %13: one call of QString::arg() replaces nine at most, and
// chained calls would misread %10 as %1.
QString fill(QString sheet, std::initializer_list<Color> colors)
{
    for (const Color &color : colors)
        sheet.replace(color.name.toString(), color.value.toString());
    return sheet;
}

QString comboArrowUri(const QString &theme)
{
    QFile file(ServerDialogStyle::comboArrowFile(theme));
    const QByteArray image = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    return u"data:image/svg+xml;base64,"_s + QString::fromLatin1(image.toBase64());
}

} // namespace

namespace ServerDialogStyle {

QString connectDialogSheet(const QString &theme)
{
    // With the focus the border grows by one pixel and the padding shrinks by one, so that the text
    // does not move.
    static const QString sheet = uR"(
        QDialog { background: <window>; }
        QLabel { color: <text>; font-size: 13px; }
        QLabel#titleLabel { color: <title>; font-size: 22px; font-weight: bold; }
        QLineEdit { color: <text>; background: <input>; border: 1px solid <border>;
            border-radius: 6px; padding: 8px 12px; font-size: 14px;
            selection-background-color: <accent>; }
        QLineEdit:focus { border: 2px solid <accent>; padding: 7px 11px; }
        QListWidget { color: <text>; background: <list>; alternate-background-color: <alternate>;
            border: 1px solid <border>; border-radius: 6px; font-size: 14px;
            selection-background-color: <selected>; selection-color: <selectedText>; }
        QListWidget::item:hover { background: <hover>; }
        QListWidget::item:selected { background: <selected>; color: <selectedText>; }
        QCheckBox { color: <text>; }
        QPushButton { color: <text>; border-radius: 6px; padding: 10px 24px; font-size: 14px;
            font-weight: 500; }
        QPushButton#connectButton { background: <accent>; color: white; border: none; }
        QPushButton#connectButton:hover { background: <accentHover>; }
        QPushButton#connectButton:pressed { background: <accentPressed>; }
        QPushButton#cancelButton { background: transparent; color: <destructive>;
            border: 1px solid <destructive>; }
        QPushButton#cancelButton:hover { background: <destructiveTint>; }
        QPushButton#addButton, QPushButton#editButton { background: transparent; color: <accent>;
            border: 1px solid <accent>; border-radius: 6px; padding: 8px 16px; font-size: 13px;
            font-weight: 500; }
        QPushButton#addButton:hover, QPushButton#editButton:hover { background: <accentTint>; }
        QPushButton#deleteButton { background: transparent; color: <destructive>;
            border: 1px solid <destructive>; border-radius: 6px; padding: 8px 16px; font-size: 13px;
            font-weight: 500; }
        QPushButton#deleteButton:hover { background: <destructiveTint>; }
    )"_s;
    const bool dark = ThemeManager::isDark(theme);
    return fill(sheet,
                {{u"<window>", dark ? u"#2E2E2E" : u"#FFFFFF"},
                 {u"<text>", dark ? u"#DDDDDD" : u"#333333"},
                 {u"<title>", dark ? QStringView(u"#FFFFFF") : ThemeColors::Title},
                 {u"<border>", dark ? u"#555555" : u"#D1D1D6"},
                 {u"<input>", dark ? u"#3E3E3E" : u"#FFFFFF"},
                 {u"<list>", dark ? u"#1E1E1E" : u"#FFFFFF"},
                 {u"<alternate>", dark ? ThemeColors::DarkAlternateRow : QStringView(u"#F9F9F9")},
                 {u"<hover>", dark ? ThemeColors::DarkHoveredRow : QStringView(u"#E8F0FE")},
                 {u"<selected>", dark ? ThemeColors::DarkSelectedRow : ThemeColors::Accent},
                 {u"<selectedText>", dark ? QStringView(u"#FFFFFF") : QStringView(u"white")},
                 {u"<accent>", ThemeColors::Accent},
                 {u"<accentHover>", ThemeColors::AccentHover},
                 {u"<accentPressed>", ThemeColors::AccentPressed},
                 {u"<accentTint>", ThemeColors::accentTint(theme)},
                 {u"<destructive>", ThemeColors::Destructive},
                 {u"<destructiveTint>", ThemeColors::destructiveTint(theme)}});
}

QString errorButtonSheet()
{
    return uR"(
        QPushButton { background: %1; color: white; border: none; border-radius: 6px;
            padding: 8px 16px; font-size: 14px; font-weight: 500; }
        QPushButton:hover { background: %2; }
        QPushButton:pressed { background: %3; }
    )"_s.arg(ThemeColors::Accent, ThemeColors::AccentHover, ThemeColors::AccentPressed);
}

QString deletionBoxSheet(const QString &theme)
{
    static const QString sheet = uR"(
        QMessageBox { background: %1; }
        QLabel { color: %2; font-size: 13px; }
        QPushButton { border-radius: 6px; padding: 10px 24px; font-size: 14px; font-weight: 500; }
        QPushButton#yesButton { background: %4; color: white; border: none; }
        QPushButton#yesButton:hover { background: %5; }
        QPushButton#yesButton:pressed { background: %6; }
        QPushButton#noButton { background: transparent; color: %7; border: 1px solid %7; }
        QPushButton#noButton:hover { background: %3; }
    )"_s;
    const bool dark = ThemeManager::isDark(theme);
    return sheet.arg(dark ? u"#2E2E2E"_s : u"#FFFFFF"_s, ThemeManager::palette(theme).textColor,
                     ThemeColors::destructiveTint(theme), ThemeColors::Accent,
                     ThemeColors::AccentHover, ThemeColors::AccentPressed,
                     ThemeColors::Destructive);
}

QString comboBoxSheet(const QString &theme)
{
    static const QString sheet = uR"(
        QComboBox { border: 1px solid %1; border-radius: 6px; padding: 8px 12px; font-size: 14px;
            background: %2; color: %3; }
        QComboBox:focus { border: 2px solid %4; padding: 7px 11px; }
        QComboBox::drop-down { subcontrol-origin: padding; subcontrol-position: top right;
            width: 30px; border-left: 1px solid %1; border-top-right-radius: 6px;
            border-bottom-right-radius: 6px; background: transparent; }
        QComboBox::down-arrow { image: url(%5); width: 12px; height: 12px;
            background: transparent; }
        QComboBox QAbstractItemView { background: %2; color: %3; selection-background-color: %4;
            selection-color: white; border: 1px solid %1; outline: none; }
        QComboBox QAbstractItemView::item { padding: 6px 12px; }
        QComboBox QAbstractItemView::item:hover, QComboBox QAbstractItemView::item:selected {
            background: %4; color: white; }
    )"_s;
    const ThemePalette palette = ThemeManager::palette(theme);
    return sheet.arg(palette.borderColor, palette.inputBackground, palette.textColor,
                     palette.accentColor, comboArrowUri(theme));
}

QString comboArrowFile(const QString &theme)
{
    return ThemeManager::isDark(theme) ? u":/icons/combo_arrow_dark.svg"_s
                                       : u":/icons/combo_arrow_light.svg"_s;
}

void setBackground(QDialog *dialog, const QString &theme)
{
    const bool glass = theme == "glass"_L1;
    dialog->setAttribute(Qt::WA_TranslucentBackground, glass);
    dialog->setAutoFillBackground(!glass);
}

} // namespace ServerDialogStyle
