#include "FormFields.h"
#include "ServerEditDialog.h"
#include "StyleSheetReader.h"
#include "ThemeManager.h"
#include "Waiting.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QIntValidator>
#include <QLineEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QSvgRenderer>
#include <QTest>
#include <QXmlStreamReader>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

std::unique_ptr<ServerEditDialog> makeForm(const ServerConfig &config = {},
                                           const QString &address = u"irc.example.org:6697"_s,
                                           const QString &theme = u"light"_s)
{
    return std::make_unique<ServerEditDialog>(u"Edit me"_s, address, config, theme, nullptr);
}

QLineEdit *edit(const QWidget *form, const QString &label)
{
    return FormFields::field<QLineEdit>(form, label);
}

QComboBox *combo(const QWidget *form, const QString &label)
{
    return FormFields::field<QComboBox>(form, label);
}

} // namespace

class TestServerEditDialog final : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void hasItsRowsInOrder();
    void hasPlaceholders_data();
    void hasPlaceholders();
    void hasOnlyACloseButton();
    void laysOutTheForm();
    void offersTheAuthMethods();
    void offersTheEncodings();
    void showsTheRecord();
    void splitsTheAddress_data();
    void splitsTheAddress();
    void showsTheAuthMethodOrTheDefault_data();
    void showsTheAuthMethodOrTheDefault();
    void showsTheEncodingOrTheDefault_data();
    void showsTheEncodingOrTheDefault();
    void returnsTheTypedValues();
    void turnsTlsOff();
    void replacesUnknownChoices();
    void trimsAllButThePassword();
    void parsesChannels_data();
    void parsesChannels();
    void joinsTheAddress_data();
    void joinsTheAddress();
    void acceptsOnlyPortNumbers();
    void savesAndCancelsByButton();
    void isUsableByKeyboard();
    void appliesTheDialogSheet_data();
    void appliesTheDialogSheet();
    void stylesTheComboBoxes_data();
    void stylesTheComboBoxes();
    void paintsTheArrow_data();
    void paintsTheArrow();
    void showsAllRowsInThePopups_data();
    void showsAllRowsInThePopups();
    void embedsTheArrowInTheSheet_data();
    void embedsTheArrowInTheSheet();
};

void TestServerEditDialog::init()
{
    // The offscreen platform logs this when a window is raised.
    QTest::failOnWarning(QRegularExpression(u"^(?!This plugin does not support)"_s));
}

void TestServerEditDialog::hasItsRowsInOrder()
{
    const auto form = makeForm();
    QCOMPARE(FormFields::labels(form.get()),
             (QStringList{u"IRC server:"_s, u"Port:"_s, u"Nickname:"_s, u"Second Name:"_s,
                          u"Real Name:"_s, u"Auth Method:"_s, u"Password:"_s,
                          u"Auto join channels:"_s, u"Encoding:"_s}));
    QCOMPARE(form->findChildren<QLineEdit *>().size(), 7);
    QCOMPARE(combo(form.get(), u"Auth Method:"_s)->objectName(), u"authCombo"_s);
    QCOMPARE(combo(form.get(), u"Encoding:"_s)->objectName(), u"encodingCombo"_s);
}

void TestServerEditDialog::hasPlaceholders_data()
{
    QTest::addColumn<QString>("label");
    QTest::addColumn<QString>("placeholder");

    QTest::newRow("port") << u"Port:"_s << u"6667"_s;
    QTest::newRow("nick") << u"Nickname:"_s << u"Type you nickname"_s;
    QTest::newRow("alternative") << u"Second Name:"_s << u"Alternative nickname if main is taken"_s;
    QTest::newRow("real name") << u"Real Name:"_s << u"Type you Real name (optionally)"_s;
    QTest::newRow("password") << u"Password:"_s << u"Password for auth on server"_s;
    QTest::newRow("channels") << u"Auto join channels:"_s << u"#help, #linux"_s;
}

void TestServerEditDialog::hasPlaceholders()
{
    QFETCH(const QString, label);
    const auto form = makeForm();
    QTEST(edit(form.get(), label)->placeholderText(), "placeholder");
    QVERIFY(edit(form.get(), u"IRC server:"_s)->placeholderText().contains(u'.'));
}

void TestServerEditDialog::hasOnlyACloseButton()
{
    const auto form = makeForm();
    QCOMPARE(form->windowTitle(), u"Edit me"_s);
    QCOMPARE(form->minimumWidth(), 480);
    // Qt adds the system menu to every window with a close button.
    QCOMPARE(form->windowFlags() & ~Qt::WindowSystemMenuHint, Qt::Dialog | Qt::CustomizeWindowHint
                                                                      | Qt::WindowTitleHint
                                                                      | Qt::WindowCloseButtonHint);
}

void TestServerEditDialog::laysOutTheForm()
{
    const auto form = makeForm();
    QCOMPARE(form->layout()->contentsMargins(), QMargins(20, 20, 20, 16));
    QCOMPARE(form->layout()->spacing(), 12);
    const QFormLayout *rows = FormFields::formOf(form.get());
    QCOMPARE(rows->labelAlignment(), Qt::Alignment(Qt::AlignLeft));
    QCOMPARE(rows->spacing(), 8);
    QCOMPARE(rows->fieldGrowthPolicy(), QFormLayout::ExpandingFieldsGrow);
    QCOMPARE(edit(form.get(), u"Port:"_s)->minimumWidth(), 80);
    QCOMPARE(edit(form.get(), u"Port:"_s)->maximumWidth(), 80);
    QCOMPARE(edit(form.get(), u"Password:"_s)->echoMode(), QLineEdit::Password);
    for (const QString &label : {u"Auth Method:"_s, u"Encoding:"_s}) {
        const QSizePolicy policy = combo(form.get(), label)->sizePolicy();
        QCOMPARE(policy.horizontalPolicy(), QSizePolicy::Expanding);
        QCOMPARE(policy.verticalPolicy(), QSizePolicy::Fixed);
    }
    QCOMPARE(form->layout()->count(), 2);
    QVERIFY(qobject_cast<QDialogButtonBox *>(form->layout()->itemAt(1)->widget()) != nullptr);
}

void TestServerEditDialog::offersTheAuthMethods()
{
    const auto form = makeForm();
    const QComboBox *box = combo(form.get(), u"Auth Method:"_s);
    QCOMPARE(FormFields::itemsOf(box), (QStringList{u"None"_s, u"Server Password (PASS)"_s,
                                                    u"NickServ (/nickserv IDENTIFY)"_s,
                                                    u"NickServ (/msg NickServ IDENTIFY)"_s,
                                                    u"SASL PLAIN"_s, u"SASL EXTERNAL"_s}));
    QVERIFY(!box->itemData(0).isValid());
    QVERIFY(!box->isEditable());
}

void TestServerEditDialog::offersTheEncodings()
{
    const auto form = makeForm();
    const QComboBox *box = combo(form.get(), u"Encoding:"_s);
    QCOMPARE(FormFields::itemsOf(box),
             (QStringList{u"UTF-8 (Unicode)"_s, u"ISO-8859-1 (Latin-1)"_s,
                          u"ISO-8859-2 (Central European)"_s, u"ISO-8859-5 (Cyrillic)"_s,
                          u"ISO-8859-7 (Greek)"_s, u"ISO-8859-15 (Latin-9)"_s,
                          u"Windows-1251 (Cyrillic)"_s, u"Windows-1252 (Western)"_s, u"KOI8-R"_s,
                          u"KOI8-U"_s, u"GBK (Chinese)"_s, u"Shift-JIS (Japanese)"_s,
                          u"EUC-KR (Korean)"_s}));
    QVERIFY(!box->itemData(0).isValid());
}

void TestServerEditDialog::showsTheRecord()
{
    ServerConfig config;
    config.nickname = u"nick"_s;
    config.altNickname = u"alt"_s;
    config.realName = u"Real"_s;
    config.authMethod = u"SASL PLAIN"_s;
    config.password = u"secret"_s;
    config.autojoin = {u"#a"_s, u"#b"_s};
    config.encoding = u"KOI8-R"_s;
    const auto form = makeForm(config);
    QCOMPARE(edit(form.get(), u"IRC server:"_s)->text(), u"irc.example.org"_s);
    QCOMPARE(edit(form.get(), u"Port:"_s)->text(), u"6697"_s);
    QCOMPARE(edit(form.get(), u"Nickname:"_s)->text(), u"nick"_s);
    QCOMPARE(edit(form.get(), u"Second Name:"_s)->text(), u"alt"_s);
    QCOMPARE(edit(form.get(), u"Real Name:"_s)->text(), u"Real"_s);
    QCOMPARE(combo(form.get(), u"Auth Method:"_s)->currentText(), u"SASL PLAIN"_s);
    QCOMPARE(edit(form.get(), u"Password:"_s)->text(), u"secret"_s);
    QCOMPARE(edit(form.get(), u"Auto join channels:"_s)->text(), u"#a, #b"_s);
    QCOMPARE(combo(form.get(), u"Encoding:"_s)->currentText(), u"KOI8-R"_s);
}

void TestServerEditDialog::splitsTheAddress_data()
{
    QTest::addColumn<QString>("address");
    QTest::addColumn<QString>("host");
    QTest::addColumn<QString>("port");

    QTest::newRow("host and port") << u"a.org:7000"_s << u"a.org"_s << u"7000"_s;
    QTest::newRow("port alone") << u":6667"_s << u""_s << u"6667"_s;
    QTest::newRow("host alone") << u"a.org"_s << u"a.org"_s << u"6667"_s;
    QTest::newRow("IPv6") << u"::1:7000"_s << u"::1:7000"_s << u"6667"_s;
    QTest::newRow("no number") << u"a.org:irc"_s << u"a.org"_s << u"0"_s;
    QTest::newRow("zeros") << u"a.org:0700"_s << u"a.org"_s << u"700"_s;
}

void TestServerEditDialog::splitsTheAddress()
{
    QFETCH(const QString, address);
    const auto form = makeForm({}, address);
    QTEST(edit(form.get(), u"IRC server:"_s)->text(), "host");
    QTEST(edit(form.get(), u"Port:"_s)->text(), "port");
}

void TestServerEditDialog::showsTheAuthMethodOrTheDefault_data()
{
    QTest::addColumn<QString>("stored");
    QTest::addColumn<int>("index");

    QTest::newRow("first") << u"None"_s << 0;
    QTest::newRow("last") << u"SASL EXTERNAL"_s << 5;
    QTest::newRow("empty") << QString() << 2;
    QTest::newRow("unknown") << u"Carrier pigeon"_s << 2;
    QTest::newRow("other case") << u"none"_s << 2;
    QTest::newRow("part of a text") << u"SASL"_s << 2;
}

void TestServerEditDialog::showsTheAuthMethodOrTheDefault()
{
    QFETCH(const QString, stored);
    ServerConfig config;
    config.authMethod = stored;
    QTEST(combo(makeForm(config).get(), u"Auth Method:"_s)->currentIndex(), "index");
}

void TestServerEditDialog::showsTheEncodingOrTheDefault_data()
{
    QTest::addColumn<QString>("stored");
    QTest::addColumn<int>("index");

    QTest::newRow("second") << u"ISO-8859-1 (Latin-1)"_s << 1;
    QTest::newRow("last") << u"EUC-KR (Korean)"_s << 12;
    QTest::newRow("empty") << QString() << 0;
    QTest::newRow("unknown") << u"EBCDIC"_s << 0;
    QTest::newRow("other case") << u"koi8-r"_s << 0;
}

void TestServerEditDialog::showsTheEncodingOrTheDefault()
{
    QFETCH(const QString, stored);
    ServerConfig config;
    config.encoding = stored;
    QTEST(combo(makeForm(config).get(), u"Encoding:"_s)->currentIndex(), "index");
}

void TestServerEditDialog::returnsTheTypedValues()
{
    const auto form = makeForm();
    edit(form.get(), u"IRC server:"_s)->setText(u"b.org"_s);
    edit(form.get(), u"Port:"_s)->setText(u"7000"_s);
    edit(form.get(), u"Nickname:"_s)->setText(u"nick"_s);
    edit(form.get(), u"Second Name:"_s)->setText(u"alt"_s);
    edit(form.get(), u"Real Name:"_s)->setText(u"Real"_s);
    combo(form.get(), u"Auth Method:"_s)->setCurrentIndex(1);
    edit(form.get(), u"Password:"_s)->setText(u"secret"_s);
    edit(form.get(), u"Auto join channels:"_s)->setText(u"a, #b"_s);
    combo(form.get(), u"Encoding:"_s)->setCurrentIndex(8);
    const ServerConfig config = form->getConfig();
    QCOMPARE(form->fullAddress(), u"b.org:7000"_s);
    QCOMPARE(config.nickname, u"nick"_s);
    QCOMPARE(config.altNickname, u"alt"_s);
    QCOMPARE(config.realName, u"Real"_s);
    QCOMPARE(config.authMethod, u"Server Password (PASS)"_s);
    QCOMPARE(config.password, u"secret"_s);
    QCOMPARE(config.autojoin, (QStringList{u"#a"_s, u"#b"_s}));
    QCOMPARE(config.encoding, u"KOI8-R"_s);
}

void TestServerEditDialog::turnsTlsOff()
{
    ServerConfig config;
    config.useSsl = true;
    config.spareFlag = true;
    QCOMPARE(makeForm(config)->getConfig().useSsl, false);
    QCOMPARE(makeForm(config)->getConfig().spareFlag, false);
}

void TestServerEditDialog::replacesUnknownChoices()
{
    ServerConfig config;
    config.authMethod = u"Carrier pigeon"_s;
    config.encoding = u"EBCDIC"_s;
    const ServerConfig saved = makeForm(config)->getConfig();
    QCOMPARE(saved.authMethod, u"NickServ (/nickserv IDENTIFY)"_s);
    QCOMPARE(saved.encoding, u"UTF-8 (Unicode)"_s);
}

void TestServerEditDialog::trimsAllButThePassword()
{
    const auto form = makeForm();
    for (const QString &label :
         {u"IRC server:"_s, u"Nickname:"_s, u"Second Name:"_s, u"Real Name:"_s, u"Password:"_s})
        edit(form.get(), label)->setText(u"  in between\t"_s);
    const ServerConfig config = form->getConfig();
    QCOMPARE(form->fullAddress(), u"in between:6697"_s);
    QCOMPARE(config.nickname, u"in between"_s);
    QCOMPARE(config.altNickname, u"in between"_s);
    QCOMPARE(config.realName, u"in between"_s);
    QCOMPARE(config.password, u"  in between\t"_s);
}

void TestServerEditDialog::parsesChannels_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QStringList>("channels");

    QTest::newRow("empty") << QString() << QStringList{};
    QTest::newRow("separators alone") << u" ,, "_s << QStringList{};
    QTest::newRow("any mix") << u",#a  b,,\t#c ,"_s << QStringList{u"#a"_s, u"#b"_s, u"#c"_s};
}

void TestServerEditDialog::parsesChannels()
{
    QFETCH(const QString, typed);
    const auto form = makeForm();
    edit(form.get(), u"Auto join channels:"_s)->setText(typed);
    QTEST(form->getConfig().autojoin, "channels");
}

void TestServerEditDialog::joinsTheAddress_data()
{
    QTest::addColumn<QString>("host");
    QTest::addColumn<QString>("port");
    QTest::addColumn<QString>("address");

    QTest::newRow("plain") << u"a.org"_s << u"6667"_s << u"a.org:6667"_s;
    QTest::newRow("no host") << u""_s << u"6667"_s << u":6667"_s;
    QTest::newRow("no port") << u"a.org"_s << u""_s << u"a.org:0"_s;
    QTest::newRow("zeros") << u"a.org"_s << u"0667"_s << u"a.org:667"_s;
    QTest::newRow("letters") << u"a.org"_s << u"irc"_s << u"a.org:0"_s;
    QTest::newRow("IPv6") << u"::1"_s << u"6667"_s << u"::1:6667"_s;
}

void TestServerEditDialog::joinsTheAddress()
{
    QFETCH(const QString, host);
    QFETCH(const QString, port);
    const auto form = makeForm();
    edit(form.get(), u"IRC server:"_s)->setText(host);
    edit(form.get(), u"Port:"_s)->setText(port);
    QTEST(form->fullAddress(), "address");
}

void TestServerEditDialog::acceptsOnlyPortNumbers()
{
    const auto form = makeForm();
    QLineEdit *port = edit(form.get(), u"Port:"_s);
    port->clear();
    QTest::keyClicks(port, u"a6b5-5 35x9"_s);
    QCOMPARE(port->text(), u"65535"_s);
    const auto *validator = qobject_cast<const QIntValidator *>(port->validator());
    QVERIFY(validator != nullptr);
    QCOMPARE(validator->bottom(), 1);
    QCOMPARE(validator->top(), 65535);
}

void TestServerEditDialog::savesAndCancelsByButton()
{
    const auto form = makeForm();
    auto *save = form->findChild<QPushButton *>(u"connectButton"_s);
    auto *cancel = form->findChild<QPushButton *>(u"cancelButton"_s);
    const auto *buttons = form->findChild<QDialogButtonBox *>();
    QCOMPARE(buttons->standardButtons(), QDialogButtonBox::Save | QDialogButtonBox::Cancel);
    QCOMPARE(buttons->button(QDialogButtonBox::Save), save);
    QCOMPARE(buttons->button(QDialogButtonBox::Cancel), cancel);
    edit(form.get(), u"Port:"_s)->clear(); // Does not prevent saving.
    save->click();
    QCOMPARE(form->result(), int(QDialog::Accepted));
    form->setResult(-1);
    cancel->click();
    QCOMPARE(form->result(), int(QDialog::Rejected));
}

void TestServerEditDialog::isUsableByKeyboard()
{
    const auto form = makeForm({}, u":6667"_s);
    form->show();
    QVERIFY(QTest::qWaitForWindowActive(form.get(), WaitTimeout));
    const auto typeInto = [&form](const QString &text) {
        QTest::keyClicks(form->focusWidget(), text);
        QTest::keyClick(form->focusWidget(), Qt::Key_Tab);
    };
    typeInto(u"a.org"_s);
    typeInto(u"7000"_s);
    typeInto(u"nick"_s);
    typeInto(u"alt"_s);
    typeInto(u"Real"_s);
    typeInto(u"SASL P"_s);
    typeInto(u"secret"_s);
    typeInto(u"#a"_s);
    typeInto(u"KOI8-U"_s);
    QCOMPARE(form->focusWidget()->objectName(), u"connectButton"_s);
    QTest::keyClick(form->focusWidget(), Qt::Key_Return);
    QCOMPARE(form->result(), int(QDialog::Accepted));
    const ServerConfig config = form->getConfig();
    QCOMPARE(form->fullAddress(), u"a.org:7000"_s);
    QCOMPARE(config.nickname, u"nick"_s);
    QCOMPARE(config.altNickname, u"alt"_s);
    QCOMPARE(config.realName, u"Real"_s);
    QCOMPARE(config.authMethod, u"SASL PLAIN"_s);
    QCOMPARE(config.password, u"secret"_s);
    QCOMPARE(config.autojoin, QStringList{u"#a"_s});
    QCOMPARE(config.encoding, u"KOI8-U"_s);
}

void TestServerEditDialog::appliesTheDialogSheet_data()
{
    QTest::addColumn<QString>("theme");
    QTest::addColumn<bool>("glass");

    QTest::newRow("light") << u"light"_s << false;
    QTest::newRow("dark") << u"dark"_s << false;
    QTest::newRow("glass") << u"glass"_s << true;
    QTest::newRow("unknown") << u"sepia"_s << false;
}

void TestServerEditDialog::appliesTheDialogSheet()
{
    QFETCH(const QString, theme);
    QFETCH(const bool, glass);
    const auto form = makeForm({}, u":6667"_s, theme);
    QCOMPARE(form->testAttribute(Qt::WA_TranslucentBackground), glass);
    QCOMPARE(form->testAttribute(Qt::WA_NoSystemBackground), glass);
    QCOMPARE(form->autoFillBackground(), !glass);
    QCOMPARE(form->styleSheet(), ThemeManager::dialogStyleSheet(theme));
}

void TestServerEditDialog::stylesTheComboBoxes_data()
{
    QTest::addColumn<QString>("theme");
    QTest::addColumn<QString>("border");
    QTest::addColumn<QString>("background");
    QTest::addColumn<QString>("text");

    QTest::newRow("light") << u"light"_s << u"#D1D1D6"_s << u"#FFFFFF"_s << u"#333333"_s;
    QTest::newRow("dark") << u"dark"_s << u"#555555"_s << u"#3E3E3E"_s << u"#DDDDDD"_s;
    QTest::newRow("glass") << u"glass"_s << u"#D1D1D6"_s << u"#FFFFFF"_s << u"#333333"_s;
}

void TestServerEditDialog::stylesTheComboBoxes()
{
    QFETCH(const QString, theme);
    QFETCH(const QString, border);
    QFETCH(const QString, background);
    QFETCH(const QString, text);
    const auto form = makeForm({}, u":6667"_s, theme);
    const StyleSheetReader sheet(combo(form.get(), u"Auth Method:"_s)->styleSheet());
    QCOMPARE(combo(form.get(), u"Encoding:"_s)->styleSheet(),
             combo(form.get(), u"Auth Method:"_s)->styleSheet());
    using Rule = StyleSheetReader::Declarations;
    const QString line = u"1px solid %1"_s.arg(border);
    QCOMPARE(sheet.rule(u"QComboBox"_s), (Rule{{u"border"_s, line},
                                               {u"border-radius"_s, u"6px"_s},
                                               {u"padding"_s, u"8px 12px"_s},
                                               {u"font-size"_s, u"14px"_s},
                                               {u"background"_s, background},
                                               {u"color"_s, text}}));
    QCOMPARE(sheet.rule(u"QComboBox:focus"_s),
             (Rule{{u"border"_s, u"2px solid #007AFF"_s}, {u"padding"_s, u"7px 11px"_s}}));
    QCOMPARE(sheet.rule(u"QComboBox::drop-down"_s),
             (Rule{{u"subcontrol-origin"_s, u"padding"_s},
                   {u"subcontrol-position"_s, u"top right"_s},
                   {u"width"_s, u"30px"_s},
                   {u"border-left"_s, line},
                   {u"border-top-right-radius"_s, u"6px"_s},
                   {u"border-bottom-right-radius"_s, u"6px"_s},
                   {u"background"_s, u"transparent"_s}}));
    QCOMPARE(sheet.value(u"QComboBox::down-arrow"_s, u"width"_s), u"12px"_s);
    QCOMPARE(sheet.value(u"QComboBox::down-arrow"_s, u"height"_s), u"12px"_s);
    QCOMPARE(sheet.value(u"QComboBox::down-arrow"_s, u"background"_s), u"transparent"_s);
    QCOMPARE(sheet.rule(u"QComboBox QAbstractItemView"_s),
             (Rule{{u"background"_s, background},
                   {u"color"_s, text},
                   {u"selection-background-color"_s, u"#007AFF"_s},
                   {u"selection-color"_s, u"white"_s},
                   {u"border"_s, line},
                   {u"outline"_s, u"none"_s}}));
    QCOMPARE(sheet.rule(u"QComboBox QAbstractItemView::item"_s),
             (Rule{{u"padding"_s, u"6px 12px"_s}}));
    const Rule accent{{u"background"_s, u"#007AFF"_s}, {u"color"_s, u"white"_s}};
    QCOMPARE(sheet.rule(u"QComboBox QAbstractItemView::item:hover"_s), accent);
    QCOMPARE(sheet.rule(u"QComboBox QAbstractItemView::item:selected"_s), accent);
}

void TestServerEditDialog::paintsTheArrow_data()
{
    embedsTheArrowInTheSheet_data();
}

void TestServerEditDialog::paintsTheArrow()
{
    QFETCH(const QString, theme);
    QFETCH(const QString, fill);
    const auto form = makeForm({}, u":6667"_s, theme);
    for (const QString &label : {u"Auth Method:"_s, u"Encoding:"_s}) {
        const QImage image = combo(form.get(), label)->grab().toImage();
        const QRect button(image.width() - 28, 4, 24, image.height() - 8);
        int pixels = 0;
        for (int x = button.left(); x <= button.right(); ++x) {
            for (int y = button.top(); y <= button.bottom(); ++y)
                pixels += image.pixelColor(x, y) == QColor(fill) ? 1 : 0;
        }
        QVERIFY2(pixels >= 4, qPrintable(u"%1 %2"_s.arg(label).arg(pixels)));
    }
}

void TestServerEditDialog::showsAllRowsInThePopups_data()
{
    QTest::addColumn<QString>("label");
    QTest::addColumn<int>("row");

    QTest::newRow("auth, first") << u"Auth Method:"_s << 0;
    QTest::newRow("auth, last") << u"Auth Method:"_s << 5;
    QTest::newRow("encoding, first") << u"Encoding:"_s << 0;
    QTest::newRow("encoding, last") << u"Encoding:"_s << 12;
}

void TestServerEditDialog::showsAllRowsInThePopups()
{
    QFETCH(const QString, label);
    QFETCH(const int, row);
    const auto form = makeForm();
    QComboBox *box = combo(form.get(), label);
    box->setCurrentIndex(row);
    form->move(100, 100);
    form->show();
    QApplication::setActiveWindow(form.get());
    box->setFocus();
    QVERIFY(box->hasFocus());
    box->showPopup();
    const QAbstractItemView *rows = box->view();
    QTRY_VERIFY_WITH_TIMEOUT(rows->isVisible(), WaitTimeout);
    QVERIFY(rows->visualRect(rows->model()->index(0, 0)).top() >= 0);
    QVERIFY(rows->visualRect(rows->model()->index(box->count() - 1, 0)).bottom()
            < rows->viewport()->height());
    const auto parts = rows->window()->findChildren<QWidget *>();
    for (const QWidget *part : parts)
        QVERIFY(!part->inherits("QComboBoxPrivateScroller") || part->isHidden());
}

void TestServerEditDialog::embedsTheArrowInTheSheet_data()
{
    QTest::addColumn<QString>("theme");
    QTest::addColumn<QString>("fill");

    QTest::newRow("light") << u"light"_s << u"#333333"_s;
    QTest::newRow("dark") << u"dark"_s << u"#DDDDDD"_s;
    QTest::newRow("glass") << u"glass"_s << u"#333333"_s;
}

void TestServerEditDialog::embedsTheArrowInTheSheet()
{
    QFETCH(const QString, theme);
    const auto form = makeForm({}, u":6667"_s, theme);
    const StyleSheetReader sheet(combo(form.get(), u"Encoding:"_s)->styleSheet());
    static const QRegularExpression uri(u"^url\\(data:image/svg\\+xml;base64,([^)]+)\\)$"_s);
    const auto match = uri.match(sheet.value(u"QComboBox::down-arrow"_s, u"image"_s));
    QVERIFY(match.hasMatch());
    const QByteArray image = QByteArray::fromBase64(match.captured(1).toLatin1());

    const QSvgRenderer renderer(image);
    QVERIFY(renderer.isValid());
    QCOMPARE(renderer.defaultSize(), QSize(12, 12));
    QCOMPARE(renderer.viewBoxF(), QRectF(0, 0, 12, 12));
    QXmlStreamReader reader(image);
    QStringList paths;
    while (!reader.atEnd()) {
        if (reader.readNext() == QXmlStreamReader::StartElement && reader.name() == "path"_L1) {
            paths.append(reader.attributes().value("d"_L1).toString());
            QTEST(reader.attributes().value("fill"_L1).toString(), "fill");
        }
    }
    QVERIFY(!reader.hasError());
    QCOMPARE(paths, QStringList{u"M3 5l3 3 3-3z"_s});
}

QTEST_MAIN(TestServerEditDialog)
#include "tst_ServerEditDialog.moc"
