#include "ConnectDialogStyle.h"

#include "ThemeManager.h"

#include <QDialog>
#include <QStringView>

#include <initializer_list>

using namespace Qt::StringLiterals;

namespace {

struct Color
{
    QStringView name;
    QStringView value;
};

// A name in angle brackets stands for each colour, since there are more than the nine that one call
// of QString::arg takes, and calls in a row would mistake %1 for the start of %10.
QString fill(QString sheet, std::initializer_list<Color> colors)
{
    for (const Color &color : colors)
        sheet.replace(color.name.toString(), color.value.toString());
    return sheet;
}

} // namespace

namespace ConnectDialogStyle {

QString dialogSheet(const QString &theme)
{
    // A border that gets one pixel thicker with the focus takes that pixel from the padding, so
    // that the text stays where it is.
    static const QString sheet = uR"(
        QDialog { background: <window>; }
        QLabel { color: <text>; font-size: 13px; }
        QLabel#titleLabel { color: <title>; font-size: 22px; font-weight: bold; }
        QLineEdit { color: <text>; background: <input>; border: 1px solid <border>;
            border-radius: 6px; padding: 8px 12px; font-size: 14px;
            selection-background-color: #007AFF; }
        QLineEdit:focus { border: 2px solid #007AFF; padding: 7px 11px; }
        QListWidget { color: <text>; background: <list>; alternate-background-color: <alternate>;
            border: 1px solid <border>; border-radius: 6px; font-size: 14px;
            selection-background-color: <selected>; selection-color: <selectedText>; }
        QListWidget::item:hover { background: <hover>; }
        QListWidget::item:selected { background: <selected>; color: <selectedText>; }
        QCheckBox { color: <text>; }
        QPushButton { color: <text>; border-radius: 6px; padding: 10px 24px; font-size: 14px;
            font-weight: 500; }
        QPushButton#connectButton { background: #007AFF; color: white; border: none; }
        QPushButton#connectButton:hover { background: #0062CC; }
        QPushButton#connectButton:pressed { background: #0051AA; }
        QPushButton#cancelButton { background: transparent; color: #FF3B30;
            border: 1px solid #FF3B30; }
        QPushButton#cancelButton:hover { background: <cancelHover>; }
        QPushButton#addButton, QPushButton#editButton { background: transparent; color: #007AFF;
            border: 1px solid #007AFF; border-radius: 6px; padding: 8px 16px; font-size: 13px;
            font-weight: 500; }
        QPushButton#addButton:hover, QPushButton#editButton:hover { background: <addHover>; }
        QPushButton#deleteButton { background: transparent; color: #FF3B30;
            border: 1px solid #FF3B30; border-radius: 6px; padding: 8px 16px; font-size: 13px;
            font-weight: 500; }
        QPushButton#deleteButton:hover { background: <deleteHover>; }
    )"_s;
    const bool dark = ThemeManager::isDark(theme);
    return fill(sheet, {{u"<window>", dark ? u"#2E2E2E" : u"#FFFFFF"},
                        {u"<text>", dark ? u"#DDDDDD" : u"#333333"},
                        {u"<title>", dark ? u"#FFFFFF" : u"#1d1d1f"},
                        {u"<border>", dark ? u"#555555" : u"#D1D1D6"},
                        {u"<input>", dark ? u"#3E3E3E" : u"#FFFFFF"},
                        {u"<list>", dark ? u"#1E1E1E" : u"#FFFFFF"},
                        {u"<alternate>", dark ? u"#252525" : u"#F9F9F9"},
                        {u"<hover>", dark ? u"#3A3A3A" : u"#E8F0FE"},
                        {u"<selected>", dark ? u"#505050" : u"#007AFF"},
                        {u"<selectedText>", dark ? QStringView(u"#FFFFFF") : QStringView(u"white")},
                        {u"<cancelHover>", dark ? u"#5F1E1E" : u"#FFE5E5"},
                        {u"<addHover>", dark ? u"#1E3A5F" : u"#E5F0FF"},
                        {u"<deleteHover>", dark ? u"#5F1E1E" : u"#FFE5E5"}});
}

void setBackground(QDialog *dialog, const QString &theme)
{
    const bool glass = theme == "glass"_L1;
    dialog->setAttribute(Qt::WA_TranslucentBackground, glass);
    dialog->setAutoFillBackground(!glass);
}

} // namespace ConnectDialogStyle
