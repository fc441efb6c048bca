#include "ServerEditDialog.h"

#include "ChannelNames.h"
#include "DialogParts.h"
#include "LiteralText.h"
#include "ServerDialogStyle.h"
#include "ServerStore.h"
#include "ThemeManager.h"

#include <QComboBox>
#include <QDialogButtonBox>
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

/// Combo box that works around two faults of Qt's style sheets: a popup that is too low, and
/// missing images from data URIs.
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
    // Qt uses the combo box's padding as the popup's margins. With the focus, the sheet has less
    // padding, which would make the popup too low for its rows.
    void initStyleOption(QStyleOptionComboBox *option) const override
    {
        QComboBox::initStyleOption(option);
        if (isOpening)
            option->state &= ~QStyle::State_HasFocus;
    }

    // Paints the arrow, since Qt's style sheets do not load data URIs.
    void paintEvent(QPaintEvent *event) override
    {
        QComboBox::paintEvent(event);
        QStyleOptionComboBox option;
        initStyleOption(&option);
        QRect arrowRect(QPoint(), arrow.defaultSize());
        arrowRect.moveCenter(style()->subControlRect(QStyle::CC_ComboBox, &option,
                                                     QStyle::SC_ComboBoxArrow, this)
                                     .center());
        QPainter painter(this);
        arrow.render(&painter, arrowRect);
    }

private:
    QSvgRenderer arrow;
    bool isOpening = false;
};

// The displayed texts are also the stored values, so they are not translated. Selects
// `defaultText` if the stored `text` is none of `texts`.
QComboBox *makeCombo(const QString &name, const QStringList &texts, const QString &text,
                     const QString &defaultText, const QString &theme)
{
    auto *combo = new StyledComboBox(ServerDialogStyle::comboArrowFile(theme));
    DialogParts::setUpCombo(*combo, texts, name);
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

} // namespace

ServerEditDialog::ServerEditDialog(const QString &title, const QString &address,
                                   const ServerConfig &config, const QString &theme,
                                   QWidget *parent)
    : QDialog(parent)
    , currentTheme(theme)
{
    LiteralText::showTitle(*this);
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
    config.password = passwordEdit->text(); // Not trimmed: spaces may belong to it.
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
                          currentTheme);
    form->addRow(tr("Auth Method:"), authCombo);
    passwordEdit = makeEdit(config.password, tr("Password for auth on server"));
    passwordEdit->setEchoMode(QLineEdit::Password);
    form->addRow(tr("Password:"), passwordEdit);
    autojoinEdit = makeEdit(config.autojoin.join(u", "_s), tr("#help, #linux"));
    form->addRow(tr("Auto join channels:"), autojoinEdit);
    encodingCombo = makeCombo(u"encodingCombo"_s, encodings(), config.encoding, defaults.encoding,
                              currentTheme);
    form->addRow(tr("Encoding:"), encodingCombo);
}

void ServerEditDialog::applyTheme()
{
    ServerDialogStyle::setBackground(this, currentTheme);
    setStyleSheet(ThemeManager::dialogStyleSheet(currentTheme));
}

void ServerEditDialog::applyComboBoxStyles()
{
    const QString sheet = ServerDialogStyle::comboBoxSheet(currentTheme);
    authCombo->setStyleSheet(sheet);
    encodingCombo->setStyleSheet(sheet);
}
