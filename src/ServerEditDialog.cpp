#include "ServerEditDialog.h"

#include "ChannelNames.h"
#include "ComboBoxKeys.h"
#include "ConnectDialogStyle.h"
#include "DialogParts.h"
#include "PlainTitle.h"
#include "ServerStore.h"
#include "ThemeManager.h"

#include <QByteArray>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFile>
#include <QFormLayout>
#include <QIntValidator>
#include <QLineEdit>
#include <QPainter>
#include <QStyleOptionComboBox>
#include <QSvgRenderer>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {

QStringList authMethods()
{
    return {u"None"_s,
            u"Server Password (PASS)"_s,
            u"NickServ (/nickserv IDENTIFY)"_s,
            u"NickServ (/msg NickServ IDENTIFY)"_s,
            u"SASL PLAIN"_s,
            u"SASL EXTERNAL"_s};
}

QStringList encodings()
{
    return {u"UTF-8 (Unicode)"_s,
            u"ISO-8859-1 (Latin-1)"_s,
            u"ISO-8859-2 (Central European)"_s,
            u"ISO-8859-5 (Cyrillic)"_s,
            u"ISO-8859-7 (Greek)"_s,
            u"ISO-8859-15 (Latin-9)"_s,
            u"Windows-1251 (Cyrillic)"_s,
            u"Windows-1252 (Western)"_s,
            u"KOI8-R"_s,
            u"KOI8-U"_s,
            u"GBK (Chinese)"_s,
            u"Shift-JIS (Japanese)"_s,
            u"EUC-KR (Korean)"_s};
}

/// A combo box with the arrow and the height of the popup that its style sheet asks for.
class StyledComboBox final : public QComboBox
{
public:
    explicit StyledComboBox(const QString &arrowFile)
        : arrow(arrowFile)
    {
    }

    void showPopup() override
    {
        isOpening = true;
        QComboBox::showPopup();
        isOpening = false;
    }

protected:
    // Qt uses the padding as the popup's margins. The sheet has less padding with the focus, which
    // the popup then takes: with it, the popup would be too low for its rows.
    void initStyleOption(QStyleOptionComboBox *option) const override
    {
        QComboBox::initStyleOption(option);
        if (isOpening)
            option->state &= ~QStyle::State_HasFocus;
    }

    // Qt's style sheets do not load data URIs.
    void paintEvent(QPaintEvent *event) override
    {
        QComboBox::paintEvent(event);
        QStyleOptionComboBox option;
        initStyleOption(&option);
        QRect place(QPoint(), arrow.defaultSize());
        place.moveCenter(style()->subControlRect(QStyle::CC_ComboBox, &option,
                                                 QStyle::SC_ComboBoxArrow, this)
                                 .center());
        QPainter painter(this);
        arrow.render(&painter, place);
    }

private:
    QSvgRenderer arrow;
    bool isOpening = false;
};

// The stored value is the text that is shown, so the texts are no matter of translation. A text
// that a newer or an older version wrote, or a hand, may be none of them.
QComboBox *makeCombo(const QString &name, const QStringList &texts, const QString &text,
                     const QString &defaultText, const QString &arrowFile)
{
    auto *combo = new StyledComboBox(arrowFile);
    combo->setObjectName(name);
    combo->addItems(texts);
    combo->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    new ComboBoxKeys(*combo);
    const int index = combo->findText(text.isEmpty() ? defaultText : text,
                                      Qt::MatchExactly | Qt::MatchCaseSensitive);
    combo->setCurrentIndex(index >= 0 ? index : static_cast<int>(texts.indexOf(defaultText)));
    return combo;
}

QLineEdit *makeEdit(const QString &text, const QString &placeholder)
{
    auto *edit = new QLineEdit(text);
    edit->setPlaceholderText(placeholder);
    return edit;
}

QString arrowFile(const QString &theme)
{
    return ThemeManager::isDark(theme) ? u":/icons/combo_arrow_dark.svg"_s
                                       : u":/icons/combo_arrow_light.svg"_s;
}

QString arrowUri(const QString &theme)
{
    QFile file(arrowFile(theme));
    const QByteArray image = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    return u"data:image/svg+xml;base64,"_s + QString::fromLatin1(image.toBase64());
}

} // namespace

ServerEditDialog::ServerEditDialog(const QString &title, const QString &address,
                                   const ServerConfig &config, const QString &theme,
                                   QWidget *parent)
    : QDialog(parent)
    , currentTheme(theme)
{
    new PlainTitle(*this);
    setWindowTitle(title);
    setMinimumWidth(480);
    setWindowFlags(DialogParts::Frame);

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(20, 20, 20, 16);
    layout->setSpacing(12);
    auto *form = new QFormLayout;
    form->setLabelAlignment(Qt::AlignLeft);
    form->setSpacing(8);
    form->setFieldGrowthPolicy(QFormLayout::ExpandingFieldsGrow);
    layout->addLayout(form);
    buildAddressRows(form, address);
    buildRecordRows(form, config);
    layout->addWidget(DialogParts::makeSaveAndCancel(*this));
    DialogParts::namePopups(*this);

    applyTheme();
    applyComboBoxStyles();
}

ServerConfig ServerEditDialog::getConfig() const
{
    ServerConfig config;
    config.nickname = nicknameEdit->text().trimmed();
    config.altNickname = altNickEdit->text().trimmed();
    config.realName = realNameEdit->text().trimmed();
    config.authMethod = authCombo->currentText();
    config.encoding = encodingCombo->currentText();
    config.password = passwordEdit->text(); // Blanks at its ends may be part of it.
    config.autojoin = ChannelNames::parseChannels(autojoinEdit->text());
    return config;
}

QString ServerEditDialog::fullAddress() const
{
    return serverEdit->text().trimmed() + u':' + QString::number(portEdit->text().toInt());
}

void ServerEditDialog::buildAddressRows(QFormLayout *form, const QString &address)
{
    const ServerStore::HostPort parts = ServerStore::splitAddress(address).value_or(
            ServerStore::HostPort{address, ServerStore::DefaultPort});
    serverEdit = makeEdit(parts.host, u"irc.libera.chat"_s);
    form->addRow(tr("IRC server:"), serverEdit);

    portEdit = makeEdit(QString::number(parts.port), QString::number(ServerStore::DefaultPort));
    portEdit->setFixedWidth(80);
    portEdit->setValidator(new QIntValidator(1, 65535, portEdit));
    form->addRow(tr("Port:"), portEdit);
}

void ServerEditDialog::buildRecordRows(QFormLayout *form, const ServerConfig &config)
{
    const ServerConfig defaults;
    nicknameEdit = makeEdit(config.nickname, tr("Type you nickname"));
    form->addRow(tr("Nickname:"), nicknameEdit);
    altNickEdit = makeEdit(config.altNickname, tr("Alternative nickname if main is taken"));
    form->addRow(tr("Second Name:"), altNickEdit);
    realNameEdit = makeEdit(config.realName, tr("Type you Real name (optionally)"));
    form->addRow(tr("Real Name:"), realNameEdit);
    authCombo = makeCombo(u"authCombo"_s, authMethods(), config.authMethod, defaults.authMethod,
                          arrowFile(currentTheme));
    form->addRow(tr("Auth Method:"), authCombo);
    passwordEdit = makeEdit(config.password, tr("Password for auth on server"));
    passwordEdit->setEchoMode(QLineEdit::Password);
    form->addRow(tr("Password:"), passwordEdit);
    autojoinEdit = makeEdit(config.autojoin.join(u", "_s), tr("#help, #linux"));
    form->addRow(tr("Auto join channels:"), autojoinEdit);
    encodingCombo = makeCombo(u"encodingCombo"_s, encodings(), config.encoding, defaults.encoding,
                              arrowFile(currentTheme));
    form->addRow(tr("Encoding:"), encodingCombo);
}

void ServerEditDialog::applyTheme()
{
    ConnectDialogStyle::setBackground(this, currentTheme);
    setStyleSheet(ThemeManager::dialogStyleSheet(currentTheme));
}

void ServerEditDialog::applyComboBoxStyles()
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
    const ThemePalette palette = ThemeManager::palette(currentTheme);
    const QString filled =
            sheet.arg(palette.borderColor, palette.inputBackground, palette.textColor,
                      palette.accentColor, arrowUri(currentTheme));
    authCombo->setStyleSheet(filled);
    encodingCombo->setStyleSheet(filled);
}
