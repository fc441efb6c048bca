#include "InfoDialogs.h"

#include "DialogParts.h"
#include "FocusFrame.h"
#include "ThemeManager.h"

#include <QDialog>
#include <QGuiApplication>
#include <QLabel>
#include <QPixmap>
#include <QPushButton>
#include <QScrollArea>
#include <QShortcut>
#include <QVBoxLayout>

#include <array>

using namespace Qt::StringLiterals;

namespace {

const QString TitleFont = u"Comic Sans MS"_s;

struct CommandHelp
{
    QStringView command;
    const char *description = nullptr;
};

constexpr std::array Commands{
        CommandHelp{u"/join #channel", QT_TRANSLATE_NOOP("QDialog", "Join a channel")},
        CommandHelp{u"/part [#channel]",
                    QT_TRANSLATE_NOOP("QDialog", "Leave a channel (or current tab)")},
        CommandHelp{u"/msg nick message", QT_TRANSLATE_NOOP("QDialog", "Send a private message")},
        CommandHelp{u"/whois nick", QT_TRANSLATE_NOOP("QDialog", "Show information about a user")},
        CommandHelp{u"/nick newnick", QT_TRANSLATE_NOOP("QDialog", "Change your nickname")},
        CommandHelp{u"/away message",
                    QT_TRANSLATE_NOOP("QDialog", "Set away status (use /back to return)")},
        CommandHelp{u"/list", QT_TRANSLATE_NOOP("QDialog", "List channels on the server")},
        CommandHelp{u"/topic [#channel]",
                    QT_TRANSLATE_NOOP("QDialog", "Show or change the channel topic")},
        CommandHelp{u"/kick nick [reason]",
                    QT_TRANSLATE_NOOP("QDialog", "Kick a user from the channel")},
        CommandHelp{u"/me action", QT_TRANSLATE_NOOP("QDialog", "Send an action message")},
        CommandHelp{u"/quit [message]", QT_TRANSLATE_NOOP("QDialog", "Disconnect from the server")},
        CommandHelp{u"/notice nick message",
                    QT_TRANSLATE_NOOP("QDialog", "Send a notice (like /msg but silent)")},
        CommandHelp{u"/ctcp nick command",
                    QT_TRANSLATE_NOOP("QDialog", "Send a CTCP request (e.g., /ctcp nick VERSION)")},
        CommandHelp{u"/mode #channel +o nick",
                    QT_TRANSLATE_NOOP("QDialog", "Change channel or user modes")},
        CommandHelp{u"/invite nick #channel",
                    QT_TRANSLATE_NOOP("QDialog", "Invite a user to a channel")},
        CommandHelp{u"/who #channel", QT_TRANSLATE_NOOP("QDialog", "Show users in a channel")},
        CommandHelp{u"/help [command]",
                    QT_TRANSLATE_NOOP("QDialog", "Show help (server\u2011specific)")},
};

QVBoxLayout *setUpFrame(QDialog &dialog, const QString &title, const QSize &size)
{
    dialog.setWindowFlags(DialogParts::Frame);
    dialog.setWindowTitle(title);
    dialog.setFixedSize(size);
    auto *escape = new QShortcut(QKeySequence(Qt::Key_Escape), &dialog);
    QObject::connect(escape, &QShortcut::activated, &dialog, &QDialog::accept);
    return new QVBoxLayout(&dialog);
}

QLabel *addLabel(QVBoxLayout &layout, const QString &text, const QString &sheet)
{
    auto *label = new QLabel(text);
    label->setAlignment(Qt::AlignCenter);
    label->setStyleSheet(sheet);
    layout.addWidget(label);
    return label;
}

void addIcon(QVBoxLayout &layout, int extent, const QString &substitute,
             const QString &substituteSheet)
{
    const QPixmap icon(u":/icons/app_icon"_s);
    if (icon.isNull()) {
        addLabel(layout, substitute, substituteSheet);
        return;
    }
    const qreal ratio = qGuiApp->devicePixelRatio();
    QPixmap scaled = icon.scaled(QSize(extent, extent) * ratio, Qt::KeepAspectRatio,
                                 Qt::SmoothTransformation);
    scaled.setDevicePixelRatio(ratio);
    QLabel *label = addLabel(layout, QString(), QString());
    label->setPixmap(scaled);
    label->setAccessibleName(QDialog::tr("Velmora icon"));
}

void addButton(QDialog &dialog, QVBoxLayout &layout)
{
    QPushButton *button = DialogParts::makeButton(QDialog::tr("OK"), u"connectButton"_s);
    button->setFixedWidth(88);
    button->setDefault(true);
    FocusFrame::addTo(*button);
    button->setStyleSheet(
            u"QPushButton#connectButton {  background-color: %1; color: white; border: none; "
            "border-radius: 6px;  padding: 8px 0px; font-size: 14px; font-weight: 500;}"
            "QPushButton#connectButton:hover { background-color: %2; }"
            "QPushButton#connectButton:pressed { background-color: %3; }"_s.arg(
                    ThemeColors::Accent, ThemeColors::AccentHover, ThemeColors::AccentPressed));
    QObject::connect(button, &QPushButton::clicked, &dialog, &QDialog::accept);

    auto *row = new QHBoxLayout;
    row->addStretch();
    row->addWidget(button);
    row->addStretch();
    layout.addLayout(row);
    button->setFocus(); // The scroll area of Help comes first in the tab order.
}

QString commandTable()
{
    QString html = u"<table style=\"border-collapse:collapse; width:100%; font-size:13px; "
                   "color:#333;\"><tr style=\"border-bottom:1px solid #ccc;\">"_s;
    const QString headerStyle =
            u"font-weight:bold; text-align:left; padding:4px 8px; border-bottom:1px solid #ccc;"_s;
    for (const QString &text : {QDialog::tr("Command"), QDialog::tr("Description")})
        html += u"<td style=\"%1\">%2</td>"_s.arg(headerStyle, text);
    html += u"</tr>"_s;

    const QString cell = u"<td style=\"padding:2px 8px;%1\">%2</td>"_s;
    QString extra = u" white-space:nowrap;"_s;
    for (const CommandHelp &row : Commands) {
        html += u"<tr>"_s + cell.arg(extra, row.command.toString().toHtmlEscaped())
                + cell.arg(QString(), QDialog::tr(row.description).toHtmlEscaped()) + u"</tr>"_s;
        extra.clear(); // "nowrap" in the first cell applies to the whole column.
    }
    return html + u"</table>"_s;
}

void addHelpTitle(QVBoxLayout &layout)
{
    // The theme's sheet sets the font size of all labels. The sheet of a nearer ancestor overrides
    // it for the title.
    auto *heading = new QWidget;
    heading->setStyleSheet(u"QLabel { font-size: 18pt; }"_s);
    auto *headingLayout = new QVBoxLayout(heading);
    headingLayout->setContentsMargins(0, 0, 0, 0);
    addLabel(*headingLayout, QDialog::tr("Basic IRC commands"),
             u"color: %1; margin-bottom: 8px;"_s.arg(ThemeColors::Title))
            ->setFont(QFont(TitleFont, 18, QFont::Bold));
    layout.addWidget(heading);
}

// Adds the table in a scroll area, since most fonts make it taller than the fixed window.
void addTable(QVBoxLayout &layout)
{
    auto *table = new QLabel(commandTable());
    table->setTextFormat(Qt::RichText);
    table->setWordWrap(true);
    auto *area = new QScrollArea;
    area->setFrameShape(QFrame::NoFrame);
    area->setWidgetResizable(true);
    area->setWidget(table);
    area->setAccessibleName(QDialog::tr("Basic IRC commands"));
    // Otherwise both would paint a background over the window's.
    table->setAutoFillBackground(false);
    area->viewport()->setAutoFillBackground(false);
    layout.addWidget(area);
}

} // namespace

namespace InfoDialogs {

void showAbout(QWidget *parent)
{
    QDialog dialog(parent);
    dialog.setStyleSheet(u"QDialog { background-color: #FFFFFF; }"_s);
    QVBoxLayout *layout = setUpFrame(dialog, QDialog::tr("About Velmora"), QSize(420, 460));
    layout->setContentsMargins(30, 30, 30, 20);
    layout->setSpacing(16);

    addIcon(*layout, 96, u"Velmora"_s,
            u"font-size: 42px; font-weight: bold; color: %1;"_s.arg(ThemeColors::Accent));
    addLabel(*layout, u"Velmora"_s, u"color: %1;"_s.arg(ThemeColors::Title))
            ->setFont(QFont(TitleFont, 26, QFont::Bold));
    addLabel(*layout, QDialog::tr("Version 2.0 Sable-Ridge"), u"color: #888888;"_s)
            ->setFont(QFont(TitleFont, 16));
    QLabel *description = addLabel(
            *layout,
            u"<p style=\"color:#555555; font-size:15px; text-align:center;\">%1<br>%2<br><br>"
            "<a href=\"https://velmora.example/\" style=\"color:%3;\">velmora.example</a></p>"_s
                    .arg(QDialog::tr("Velmora is a free, modern, cross\u2011platform IRC client"),
                         QDialog::tr("for macOS, Linux and Windows."), ThemeColors::Accent),
            QString());
    description->setTextFormat(Qt::RichText);
    description->setWordWrap(true);
    description->setOpenExternalLinks(true);
    layout->addStretch();
    addLabel(*layout, QDialog::tr("\u00A9 2026 The Velmora developers"),
             u"color: #888888; font-size: 13px;"_s);
    layout->addSpacing(6);
    addButton(dialog, *layout);
    dialog.exec();
}

void showHelp(QWidget *parent, const QString &theme)
{
    QDialog dialog(parent);
    QVBoxLayout *layout = setUpFrame(dialog, QDialog::tr("Help"), QSize(520, 460));
    layout->setContentsMargins(25, 25, 25, 20);
    layout->setSpacing(12);

    addIcon(*layout, 48, u"?"_s, u"font-size: 36px; color: %1;"_s.arg(ThemeColors::Accent));
    addHelpTitle(*layout);
    addTable(*layout);
    layout->addStretch();
    addButton(dialog, *layout);
    dialog.setStyleSheet(ThemeManager::dialogStyleSheet(theme));
    dialog.exec();
}

} // namespace InfoDialogs
