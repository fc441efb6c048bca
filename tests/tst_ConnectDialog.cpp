#include "ConnectDialogPage.h"
#include "FormFields.h"
#include "ModalAnswers.h"
#include "ServerListDelegate.h"
#include "StyleSheetReader.h"
#include "TemporaryStore.h"

#include <QCheckBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>
#include <QMetaMethod>
#include <QPushButton>
#include <QRegularExpression>
#include <QSettings>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

// A server that is in the list from the start, and one that is not.
const auto Listed = u"irc.oftc.net"_s;
const auto ListedId = u"irc.oftc.net_6667"_s;
const auto Unlisted = u"irc.example.org"_s;

void storeServer(const QString &id, const QString &key, const QVariant &value)
{
    QSettings().setValue(u"servers/%1/%2"_s.arg(id, key), value);
}

QVariant stored(const QString &id, const QString &key)
{
    return QSettings().value(u"servers/%1/%2"_s.arg(id, key));
}

QStringList history()
{
    return QSettings().value(u"connection/history"_s).toStringList();
}

void clickConnect(const ConnectDialogPage &page)
{
    page.button(u"connectButton"_s)->click();
}

} // namespace

class TestConnectDialog final : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void hasItsRowsInOrder();
    void saysWhatToType_data();
    void saysWhatToType();
    void laysOutTheForm();
    void laysOutTheList();
    void laysOutTheButtons();
    void isAWindowOfFixedSize();
    void declaresItsSlotsInOrder();
    void dressesByTheme_data();
    void dressesByTheme();
    void keepsFixedValuesInEveryTheme_data();
    void keepsFixedValuesInEveryTheme();
    void isTranslucentForGlassAlone_data();
    void isTranslucentForGlassAlone();
    void paintsSelectedRowsInTheThemesColor();
    void fillsTheFieldsFromTheSelectedRow();
    void emptiesTheFieldsForARowWithoutRecord();
    void leavesTheFieldsForARowThatIsNoAddress();
    void readsHostAndPortFromTheFields_data();
    void readsHostAndPortFromTheFields();
    void answersFromTheFieldsBeforeConnecting();
    void answersFromTheRecordAfterConnecting();
    void wantsServerAndNickname_data();
    void wantsServerAndNickname();
    void wantsAPort_data();
    void wantsAPort();
    void showsErrorsInABoxOfItsOwn();
    void storesTheFieldsOfTheSelectedServer();
    void keepsWhatItHasNoFieldFor();
    void leavesTheRecordOfATypedServer();
    void forgetsTheRowOnceHostOrPortChange_data();
    void forgetsTheRowOnceHostOrPortChange();
    void givesATypedServerItsStoredRecord();
    void completesAnEmptyRecordFromTheFields();
    void decidesAboutTls_data();
    void decidesAboutTls();
    void parsesChannels_data();
    void parsesChannels();
    void keepsOneHistoryEntryPerAddress();
    void keepsTenHistoryEntries();
    void storesNothingOnCancel();
    void walksByKeyboard();
    void connectsOnReturn_data();
    void connectsOnReturn();
    void leavesOnEscape();

private:
    TemporaryStore store;
};

void TestConnectDialog::init()
{
    store.clear();
    // The offscreen platform says so when a window is raised.
    QTest::failOnWarning(QRegularExpression(u"^(?!This plugin does not support)"_s));
}

void TestConnectDialog::hasItsRowsInOrder()
{
    const ConnectDialogPage page;
    QCOMPARE(page.dialog.windowTitle(), u"Connect to IRC Server"_s);
    QCOMPARE(FormFields::labels(&page.dialog),
             (QStringList{u"Server:"_s, u"Port:"_s, u""_s, u"Nickname:"_s, u"Real name:"_s,
                          u"Join channels:"_s}));
    QCOMPARE(page.dialog.findChild<QLabel *>(u"titleLabel"_s)->text(), u"Connect to IRC"_s);
    QCOMPARE(page.ssl->text(), u"Use SSL"_s);
    QCOMPARE(page.dialog.findChildren<QLineEdit *>().size(), 5);
}

void TestConnectDialog::saysWhatToType_data()
{
    QTest::addColumn<QString>("label");
    QTest::addColumn<QString>("placeholder");

    QTest::newRow("port") << u"Port:"_s << u"6667"_s;
    QTest::newRow("nick") << u"Nickname:"_s << u"Type you nickname"_s;
    QTest::newRow("real name") << u"Real name:"_s << u"Type you Real name (optionally)"_s;
    QTest::newRow("channels") << u"Join channels:"_s << u"#linux, #help"_s;
}

void TestConnectDialog::saysWhatToType()
{
    QFETCH(const QString, label);
    const ConnectDialogPage page;
    QTEST(FormFields::field<QLineEdit>(&page.dialog, label)->placeholderText(), "placeholder");
    QVERIFY(page.server->placeholderText().contains(u'.'));
}

void TestConnectDialog::laysOutTheForm()
{
    const ConnectDialogPage page;
    const auto *layout = qobject_cast<QVBoxLayout *>(page.dialog.layout());
    QVERIFY(layout != nullptr);
    QCOMPARE(layout->contentsMargins(), QMargins(28, 28, 28, 20));
    QCOMPARE(layout->spacing(), 18);
    QCOMPARE(layout->count(), 4);
    QCOMPARE(layout->itemAt(0)->widget()->objectName(), u"titleLabel"_s);
    QCOMPARE(layout->itemAt(2)->widget(), page.ssl);

    const QFormLayout *form = FormFields::formOf(&page.dialog);
    QCOMPARE(layout->itemAt(1)->layout(), form);
    QCOMPARE(form->labelAlignment(), Qt::AlignLeft | Qt::AlignVCenter);
    QCOMPARE(form->formAlignment(), Qt::AlignLeft | Qt::AlignTop);
    QCOMPARE(form->fieldGrowthPolicy(), QFormLayout::ExpandingFieldsGrow);
    QCOMPARE(form->spacing(), 12);
    QCOMPARE(page.port->minimumWidth(), 80);
    QCOMPARE(page.port->maximumWidth(), 80);
}

void TestConnectDialog::laysOutTheList()
{
    const ConnectDialogPage page;
    const QFormLayout *form = FormFields::formOf(&page.dialog);
    QCOMPARE(form->itemAt(2, QFormLayout::FieldRole)->widget(), page.list);
    QVERIFY(page.list->alternatingRowColors());
    QCOMPARE(page.list->minimumHeight(), 120);
    QCOMPARE(page.list->maximumHeight(), 150);
    QCOMPARE(page.list->contextMenuPolicy(), Qt::CustomContextMenu);
    QVERIFY(qobject_cast<ServerListDelegate *>(page.list->itemDelegate()) != nullptr);
    QCOMPARE(page.list->itemDelegate()->parent(), &page.dialog);

    const QWidget *column = form->itemAt(2, QFormLayout::LabelRole)->widget();
    QCOMPARE(column->metaObject(), &QWidget::staticMetaObject);
    const auto *layout = qobject_cast<QVBoxLayout *>(column->layout());
    QVERIFY(layout != nullptr);
    QCOMPARE(layout->contentsMargins(), QMargins());
    QCOMPARE(layout->spacing(), 4);
    QCOMPARE(layout->count(), 4);
    QCOMPARE(layout->itemAt(0)->widget(), page.button(u"addButton"_s));
    QCOMPARE(layout->itemAt(1)->widget(), page.button(u"editButton"_s));
    QCOMPARE(layout->itemAt(2)->widget(), page.button(u"deleteButton"_s));
    QVERIFY(layout->itemAt(3)->spacerItem() != nullptr);
    QCOMPARE(page.button(u"addButton"_s)->text(), u"Add"_s);
    QCOMPARE(page.button(u"editButton"_s)->text(), u"Edit"_s);
    QCOMPARE(page.button(u"deleteButton"_s)->text(), u"Delete"_s);
}

void TestConnectDialog::laysOutTheButtons()
{
    const ConnectDialogPage page;
    const auto *row = qobject_cast<QHBoxLayout *>(page.dialog.layout()->itemAt(3)->layout());
    QVERIFY(row != nullptr);
    QCOMPARE(row->count(), 3);
    QVERIFY(row->itemAt(0)->spacerItem() != nullptr);
    QCOMPARE(row->itemAt(1)->widget(), page.button(u"cancelButton"_s));
    QCOMPARE(row->itemAt(2)->widget(), page.button(u"connectButton"_s));
    QCOMPARE(page.button(u"cancelButton"_s)->text(), u"Cancel"_s);
    QCOMPARE(page.button(u"connectButton"_s)->text(), u"Connect"_s);
    QVERIFY(page.button(u"connectButton"_s)->isDefault());
}

void TestConnectDialog::isAWindowOfFixedSize()
{
    const ConnectDialogPage page;
    QCOMPARE(page.dialog.minimumSize(), page.dialog.size());
    QCOMPARE(page.dialog.maximumSize(), page.dialog.size());
    QVERIFY(page.dialog.width() >= 460);
    QVERIFY(page.dialog.width() <= 560);
    QVERIFY(page.dialog.height() >= page.dialog.minimumSizeHint().height());
    const Qt::WindowFlags flags = page.dialog.windowFlags();
    QCOMPARE(flags & Qt::WindowType_Mask, Qt::Dialog);
    QVERIFY(flags.testFlag(Qt::MSWindowsFixedSizeDialogHint));
    QVERIFY(!flags.testFlag(Qt::WindowMaximizeButtonHint));
    QVERIFY(!flags.testFlag(Qt::WindowFullscreenButtonHint));
    QVERIFY(!page.dialog.isModal());
}

void TestConnectDialog::declaresItsSlotsInOrder()
{
    QStringList declared;
    const QMetaObject &type = ConnectDialog::staticMetaObject;
    for (int i = type.methodOffset(); i < type.methodCount(); ++i)
        declared.append(QString::fromLatin1(type.method(i).methodSignature()));
    QCOMPARE(declared,
             (QStringList{u"onConnectClicked()"_s, u"loadSettings()"_s, u"saveSettings()"_s,
                          u"onServerListSelectionChanged()"_s, u"addServer()"_s, u"editServer()"_s,
                          u"deleteServer()"_s, u"showServerContextMenu(QPoint)"_s}));
}

void TestConnectDialog::dressesByTheme_data()
{
    QTest::addColumn<QString>("selector");
    QTest::addColumn<QString>("property");
    QTest::addColumn<QString>("dark");
    QTest::addColumn<QString>("other");

    const auto row = [](const char *selector, const char *property, const char *dark,
                        const char *other) {
        QTest::addRow("%s %s", selector, property)
                << QString::fromLatin1(selector) << QString::fromLatin1(property)
                << QString::fromLatin1(dark) << QString::fromLatin1(other);
    };
    row("QDialog", "background", "#2E2E2E", "#FFFFFF");
    row("QLabel", "color", "#DDDDDD", "#333333");
    row("QLineEdit", "color", "#DDDDDD", "#333333");
    row("QListWidget", "color", "#DDDDDD", "#333333");
    row("QCheckBox", "color", "#DDDDDD", "#333333");
    row("QPushButton", "color", "#DDDDDD", "#333333");
    row("QLabel#titleLabel", "color", "#FFFFFF", "#1d1d1f");
    row("QLineEdit", "border", "1px solid #555555", "1px solid #D1D1D6");
    row("QListWidget", "border", "1px solid #555555", "1px solid #D1D1D6");
    row("QLineEdit", "background", "#3E3E3E", "#FFFFFF");
    row("QListWidget", "background", "#1E1E1E", "#FFFFFF");
    row("QListWidget", "alternate-background-color", "#252525", "#F9F9F9");
    row("QListWidget::item:hover", "background", "#3A3A3A", "#E8F0FE");
    row("QListWidget::item:selected", "background", "#505050", "#007AFF");
    row("QListWidget::item:selected", "color", "#FFFFFF", "white");
    row("QPushButton#cancelButton:hover", "background", "#5F1E1E", "#FFE5E5");
    row("QPushButton#addButton:hover", "background", "#1E3A5F", "#E5F0FF");
    row("QPushButton#editButton:hover", "background", "#1E3A5F", "#E5F0FF");
    row("QPushButton#deleteButton:hover", "background", "#5F1E1E", "#FFE5E5");
}

void TestConnectDialog::dressesByTheme()
{
    QFETCH(const QString, selector);
    QFETCH(const QString, property);
    ConnectDialogPage page;
    // Until it is told another name, the dialog is light.
    QTEST(StyleSheetReader(page.dialog.styleSheet()).value(selector, property), "other");
    page.dialog.setCurrentTheme(u"dark"_s);
    QTEST(StyleSheetReader(page.dialog.styleSheet()).value(selector, property), "dark");
    for (const QString &name : {u"light"_s, u"glass"_s, u"sepia"_s, u"Dark"_s}) {
        page.dialog.setCurrentTheme(name);
        QTEST(StyleSheetReader(page.dialog.styleSheet()).value(selector, property), "other");
    }
}

void TestConnectDialog::keepsFixedValuesInEveryTheme_data()
{
    QTest::addColumn<QString>("selector");
    QTest::addColumn<StyleSheetReader::Declarations>("values");

    using Values = StyleSheetReader::Declarations;
    const Values buttonInList{{u"background"_s, u"transparent"_s},   {u"color"_s, u"#007AFF"_s},
                              {u"border"_s, u"1px solid #007AFF"_s}, {u"border-radius"_s, u"6px"_s},
                              {u"padding"_s, u"8px 16px"_s},         {u"font-size"_s, u"13px"_s},
                              {u"font-weight"_s, u"500"_s}};
    Values deleteButton = buttonInList;
    deleteButton.insert(u"color"_s, u"#FF3B30"_s);
    deleteButton.insert(u"border"_s, u"1px solid #FF3B30"_s);

    QTest::newRow("label") << u"QLabel"_s << Values{{u"font-size"_s, u"13px"_s}};
    QTest::newRow("title") << u"QLabel#titleLabel"_s
                           << Values{{u"font-size"_s, u"22px"_s}, {u"font-weight"_s, u"bold"_s}};
    QTest::newRow("edit") << u"QLineEdit"_s
                          << Values{{u"border-radius"_s, u"6px"_s},
                                    {u"padding"_s, u"8px 12px"_s},
                                    {u"font-size"_s, u"14px"_s},
                                    {u"selection-background-color"_s, u"#007AFF"_s}};
    QTest::newRow("edit with focus")
            << u"QLineEdit:focus"_s
            << Values{{u"border"_s, u"2px solid #007AFF"_s}, {u"padding"_s, u"7px 11px"_s}};
    QTest::newRow("list") << u"QListWidget"_s
                          << Values{{u"border-radius"_s, u"6px"_s}, {u"font-size"_s, u"14px"_s}};
    QTest::newRow("button") << u"QPushButton"_s
                            << Values{{u"border-radius"_s, u"6px"_s},
                                      {u"padding"_s, u"10px 24px"_s},
                                      {u"font-size"_s, u"14px"_s},
                                      {u"font-weight"_s, u"500"_s}};
    QTest::newRow("connect") << u"QPushButton#connectButton"_s
                             << Values{{u"background"_s, u"#007AFF"_s},
                                       {u"color"_s, u"white"_s},
                                       {u"border"_s, u"none"_s}};
    QTest::newRow("connect, hovered")
            << u"QPushButton#connectButton:hover"_s << Values{{u"background"_s, u"#0062CC"_s}};
    QTest::newRow("connect, pressed")
            << u"QPushButton#connectButton:pressed"_s << Values{{u"background"_s, u"#0051AA"_s}};
    QTest::newRow("cancel") << u"QPushButton#cancelButton"_s
                            << Values{{u"background"_s, u"transparent"_s},
                                      {u"color"_s, u"#FF3B30"_s},
                                      {u"border"_s, u"1px solid #FF3B30"_s}};
    QTest::newRow("add") << u"QPushButton#addButton"_s << buttonInList;
    QTest::newRow("edit button") << u"QPushButton#editButton"_s << buttonInList;
    QTest::newRow("delete") << u"QPushButton#deleteButton"_s << deleteButton;
}

void TestConnectDialog::keepsFixedValuesInEveryTheme()
{
    QFETCH(const QString, selector);
    QFETCH(const StyleSheetReader::Declarations, values);
    ConnectDialogPage page;
    for (const QString &theme : {u"light"_s, u"dark"_s, u"glass"_s}) {
        page.dialog.setCurrentTheme(theme);
        const StyleSheetReader sheet(page.dialog.styleSheet());
        for (auto value = values.cbegin(); value != values.cend(); ++value)
            QCOMPARE(sheet.value(selector, value.key()), value.value());
        QVERIFY(!page.dialog.styleSheet().contains(u'<'));
        QVERIFY(!page.dialog.styleSheet().contains(u'%'));
    }
}

void TestConnectDialog::isTranslucentForGlassAlone_data()
{
    QTest::addColumn<QString>("theme");
    QTest::addColumn<bool>("glass");

    QTest::newRow("light") << u"light"_s << false;
    QTest::newRow("dark") << u"dark"_s << false;
    QTest::newRow("glass") << u"glass"_s << true;
    QTest::newRow("unknown") << u"sepia"_s << false;
}

void TestConnectDialog::isTranslucentForGlassAlone()
{
    QFETCH(const QString, theme);
    QFETCH(const bool, glass);
    ConnectDialogPage page;
    QVERIFY(!page.dialog.testAttribute(Qt::WA_TranslucentBackground));
    page.dialog.setCurrentTheme(theme);
    QCOMPARE(page.dialog.testAttribute(Qt::WA_TranslucentBackground), glass);
    if (glass)
        QVERIFY(!page.dialog.autoFillBackground());
    // The sheet's background is there in any case, or texts could not be read.
    const QColor corner = page.dialog.grab().toImage().pixelColor(2, 2);
    QCOMPARE(corner, QColor(theme == "dark"_L1 ? u"#2E2E2E"_s : u"#FFFFFF"_s));
    page.dialog.setCurrentTheme(u"light"_s);
    QVERIFY(!page.dialog.testAttribute(Qt::WA_TranslucentBackground));
}

void TestConnectDialog::paintsSelectedRowsInTheThemesColor()
{
    ConnectDialogPage page;
    QVERIFY(page.select(u"irc.oftc.net:6667"_s));
    const auto colorOfCurrentRow = [&page]() {
        const QRect row = page.list->visualItemRect(page.list->currentItem());
        const QImage image = page.list->viewport()->grab().toImage();
        return image.pixelColor(row.left() + 1, row.center().y());
    };
    page.dialog.show();
    QCOMPARE(colorOfCurrentRow(), QColor(u"#007AFF"_s));
    page.dialog.setCurrentTheme(u"dark"_s);
    QCOMPARE(colorOfCurrentRow(), QColor(u"#505050"_s));
}

void TestConnectDialog::fillsTheFieldsFromTheSelectedRow()
{
    storeServer(ListedId, u"nickname"_s, u"nick"_s);
    storeServer(ListedId, u"realname"_s, u"Real"_s);
    storeServer(ListedId, u"autojoin"_s, QStringList{u"#a"_s, u"#b"_s});
    storeServer(ListedId, u"ssl"_s, true);
    ConnectDialogPage page;
    QVERIFY(page.select(u"irc.oftc.net:6667"_s));
    QCOMPARE(page.server->text(), Listed);
    QCOMPARE(page.port->text(), u"6667"_s);
    QCOMPARE(page.nickname->text(), u"nick"_s);
    QCOMPARE(page.realName->text(), u"Real"_s);
    QCOMPARE(page.channels->text(), u"#a, #b"_s);
    QVERIFY(page.ssl->isChecked());
    QVERIFY(page.select(u"irc.efnet.org:6667"_s));
    QCOMPARE(page.server->text(), u"irc.efnet.org"_s);
    QCOMPARE(page.nickname->text(), QString());
    QCOMPARE(page.realName->text(), QString());
    QCOMPARE(page.channels->text(), QString());
    QVERIFY(!page.ssl->isChecked());
}

void TestConnectDialog::emptiesTheFieldsForARowWithoutRecord()
{
    ConnectDialogPage page;
    page.list->addItem(u"late.example.org:0700"_s);
    page.nickname->setText(u"nick"_s);
    page.realName->setText(u"Real"_s);
    page.channels->setText(u"#a"_s);
    page.ssl->setChecked(true);
    QVERIFY(page.select(u"late.example.org:0700"_s));
    QCOMPARE(page.server->text(), u"late.example.org"_s);
    QCOMPARE(page.port->text(), u"700"_s);
    QCOMPARE(page.nickname->text(), QString());
    QCOMPARE(page.realName->text(), QString());
    QCOMPARE(page.channels->text(), QString());
    QVERIFY(!page.ssl->isChecked());
}

void TestConnectDialog::leavesTheFieldsForARowThatIsNoAddress()
{
    storeServer(u"my_host_6667"_s, u"address"_s, u"my_host_6667"_s);
    QSettings().setValue(u"servers/customList"_s, QStringList{u"my_host_6667"_s});
    ConnectDialogPage page;
    page.port->setText(u"1"_s);
    page.nickname->setText(u"nick"_s);
    page.realName->setText(u"Real"_s);
    page.channels->setText(u"#a"_s);
    page.ssl->setChecked(true);
    QVERIFY(page.select(u"my_host_6667"_s));
    QCOMPARE(page.server->text(), u"my_host_6667"_s);
    QCOMPARE(page.port->text(), u"6667"_s);
    QCOMPARE(page.nickname->text(), u"nick"_s);
    QCOMPARE(page.realName->text(), u"Real"_s);
    QCOMPARE(page.channels->text(), u"#a"_s);
    QVERIFY(page.ssl->isChecked());
    // It is bound to no row: connecting stores no record.
    clickConnect(page);
    QCOMPARE(page.dialog.result(), int(QDialog::Accepted));
    QVERIFY(!stored(u"my_host_6667"_s, u"nickname"_s).isValid());
    QVERIFY(!stored(u"my_host_6667_6667"_s, u"nickname"_s).isValid());
}

void TestConnectDialog::readsHostAndPortFromTheFields_data()
{
    QTest::addColumn<QString>("port");
    QTest::addColumn<int>("number");

    QTest::newRow("plain") << u"6697"_s << 6697;
    QTest::newRow("empty") << QString() << 0;
    QTest::newRow("letters") << u"irc"_s << 0;
    QTest::newRow("hexadecimal") << u"0x10"_s << 0;
    QTest::newRow("negative") << u"-1"_s << -1;
    QTest::newRow("too big for an int") << u"99999999999"_s << 0;
}

void TestConnectDialog::readsHostAndPortFromTheFields()
{
    QFETCH(const QString, port);
    ConnectDialogPage page;
    page.typeServer(u"  irc.example.org\t"_s, port);
    QCOMPARE(page.dialog.server(), u"irc.example.org"_s);
    QTEST(page.dialog.port(), "number");
}

void TestConnectDialog::answersFromTheFieldsBeforeConnecting()
{
    storeServer(ListedId, u"nickname"_s, u"stored"_s);
    storeServer(ListedId, u"password"_s, u"secret"_s);
    ConnectDialogPage page;
    QVERIFY(page.select(u"irc.oftc.net:6667"_s));
    page.nickname->setText(u" nick "_s);
    page.realName->setText(u" Real "_s);
    page.channels->setText(u" a,#b "_s);
    page.ssl->setChecked(true);
    QCOMPARE(page.dialog.nickname(), u"nick"_s);
    QCOMPARE(page.dialog.realName(), u"Real"_s);
    QCOMPARE(page.dialog.favoriteChannels(), (QStringList{u"#a"_s, u"#b"_s}));
    page.channels->setText(u"  "_s);
    QCOMPARE(page.dialog.favoriteChannels(), QStringList());
    QCOMPARE(page.dialog.altNickname(), QString());
    QCOMPARE(page.dialog.authMethod(), u"NickServ (/nickserv IDENTIFY)"_s);
    QCOMPARE(page.dialog.password(), QString());
    QCOMPARE(page.dialog.encoding(), u"UTF-8 (Unicode)"_s);
    QCOMPARE(page.dialog.useSsl(), false);
    QCOMPARE(page.dialog.activeServerConfig().nickname, QString());
}

void TestConnectDialog::answersFromTheRecordAfterConnecting()
{
    storeServer(ListedId, u"nickname"_s, u"nick"_s);
    storeServer(ListedId, u"altnick"_s, u"alt"_s);
    storeServer(ListedId, u"realname"_s, u"Real"_s);
    storeServer(ListedId, u"authmethod"_s, u"SASL PLAIN"_s);
    storeServer(ListedId, u"password"_s, u"secret"_s);
    storeServer(ListedId, u"autojoin"_s, QStringList{u"#a"_s});
    storeServer(ListedId, u"encoding"_s, u"KOI8-R"_s);
    storeServer(ListedId, u"ssl"_s, true);
    ConnectDialogPage page;
    QVERIFY(page.select(u"irc.oftc.net:6667"_s));
    QSignalSpy accepted(&page.dialog, &QDialog::accepted);
    clickConnect(page);
    QCOMPARE(accepted.size(), 1);
    page.nickname->setText(u"other"_s);
    page.realName->setText(u"Other"_s);
    page.channels->setText(u"#other"_s);
    QCOMPARE(page.dialog.nickname(), u"nick"_s);
    QCOMPARE(page.dialog.altNickname(), u"alt"_s);
    QCOMPARE(page.dialog.realName(), u"Real"_s);
    QCOMPARE(page.dialog.authMethod(), u"SASL PLAIN"_s);
    QCOMPARE(page.dialog.password(), u"secret"_s);
    QCOMPARE(page.dialog.favoriteChannels(), QStringList{u"#a"_s});
    QCOMPARE(page.dialog.encoding(), u"KOI8-R"_s);
    QCOMPARE(page.dialog.useSsl(), true);
    QCOMPARE(page.dialog.activeServerConfig().password, u"secret"_s);
    QCOMPARE(page.dialog.server(), Listed);
    QCOMPARE(page.dialog.port(), 6667);
}

void TestConnectDialog::wantsServerAndNickname_data()
{
    QTest::addColumn<QString>("server");
    QTest::addColumn<QString>("port");
    QTest::addColumn<QString>("nickname");

    QTest::newRow("no server") << u""_s << u"6667"_s << u"nick"_s;
    QTest::newRow("blank server") << u" \t "_s << u"6667"_s << u"nick"_s;
    QTest::newRow("no nick") << u"a.org"_s << u"6667"_s << u""_s;
    QTest::newRow("blank nick") << u"a.org"_s << u"6667"_s << u"  "_s;
    QTest::newRow("nothing at all") << u""_s << u""_s << u""_s;
}

void TestConnectDialog::wantsServerAndNickname()
{
    QFETCH(const QString, server);
    QFETCH(const QString, port);
    QFETCH(const QString, nickname);
    ConnectDialogPage page;
    page.dialog.show();
    page.typeServer(server, port);
    page.nickname->setText(nickname);
    const auto before = storeContents();
    ModalAnswers answers;
    answers.queueForBox([](QMessageBox *box) {
        QCOMPARE(box->text(), u"Server and nickname are required!"_s);
        box->accept();
    });
    clickConnect(page);
    QCOMPARE(answers.problems(), QStringList());
    QVERIFY(page.dialog.isVisible());
    QCOMPARE(page.server->text(), server);
    QCOMPARE(page.nickname->text(), nickname);
    QCOMPARE(storeContents(), before);
    QCOMPARE(page.dialog.activeServerConfig().nickname, QString());
}

void TestConnectDialog::wantsAPort_data()
{
    QTest::addColumn<QString>("port");
    QTest::addColumn<bool>("valid");

    QTest::newRow("empty") << u""_s << false;
    QTest::newRow("zero") << u"0"_s << false;
    QTest::newRow("negative") << u"-6667"_s << false;
    QTest::newRow("one too many") << u"65536"_s << false;
    QTest::newRow("far too many") << u"99999999999"_s << false;
    QTest::newRow("letters") << u"6667a"_s << false;
    QTest::newRow("lowest") << u"1"_s << true;
    QTest::newRow("highest") << u"65535"_s << true;
}

void TestConnectDialog::wantsAPort()
{
    QFETCH(const QString, port);
    QFETCH(const bool, valid);
    ConnectDialogPage page;
    page.dialog.show();
    page.typeServer(Unlisted, port);
    page.nickname->setText(u"nick"_s);
    const auto before = storeContents();
    ModalAnswers answers;
    if (!valid) {
        answers.queueForBox([](QMessageBox *box) {
            QCOMPARE(box->text(), u"Port must be between 1 and 65535"_s);
            box->accept();
        });
    }
    clickConnect(page);
    QCOMPARE(answers.problems(), QStringList());
    QCOMPARE(page.dialog.isVisible(), !valid);
    if (!valid)
        QCOMPARE(storeContents(), before);
    else
        QCOMPARE(history(), QStringList{u"irc.example.org:%1"_s.arg(port)});
}

void TestConnectDialog::showsErrorsInABoxOfItsOwn()
{
    const ConnectDialogPage page;
    ModalAnswers answers;
    answers.queueForBox([&page](QMessageBox *box) {
        QCOMPARE(box->parent(), &page.dialog);
        QCOMPARE(box->windowTitle(), u"Error"_s);
        QCOMPARE(box->icon(), QMessageBox::Warning);
        QCOMPARE(box->buttons().size(), 1);
        QCOMPARE(box->standardButtons(), QMessageBox::Ok);
        const QAbstractButton *button = box->button(QMessageBox::Ok);
        QCOMPARE(button->objectName(), u"connectButton"_s);
        const StyleSheetReader sheet(button->styleSheet());
        using Rule = StyleSheetReader::Declarations;
        QCOMPARE(sheet.rule(u"QPushButton"_s), (Rule{{u"background"_s, u"#007AFF"_s},
                                                     {u"color"_s, u"white"_s},
                                                     {u"border"_s, u"none"_s},
                                                     {u"border-radius"_s, u"6px"_s},
                                                     {u"padding"_s, u"8px 16px"_s},
                                                     {u"font-size"_s, u"14px"_s},
                                                     {u"font-weight"_s, u"500"_s}}));
        QCOMPARE(sheet.rule(u"QPushButton:hover"_s), (Rule{{u"background"_s, u"#0062CC"_s}}));
        QCOMPARE(sheet.rule(u"QPushButton:pressed"_s), (Rule{{u"background"_s, u"#0051AA"_s}}));
        QTest::keyClick(box, Qt::Key_Return);
    });
    clickConnect(page);
    QCOMPARE(answers.problems(), QStringList());
}

void TestConnectDialog::storesTheFieldsOfTheSelectedServer()
{
    ConnectDialogPage page;
    QVERIFY(page.select(u"irc.oftc.net:6667"_s));
    page.nickname->setText(u" nick "_s);
    page.realName->setText(u" Real "_s);
    page.channels->setText(u"a b"_s);
    page.ssl->setChecked(true);
    clickConnect(page);
    QCOMPARE(page.dialog.result(), int(QDialog::Accepted));
    QCOMPARE(stored(ListedId, u"nickname"_s), QVariant(u"nick"_s));
    QCOMPARE(stored(ListedId, u"realname"_s), QVariant(u"Real"_s));
    QCOMPARE(stored(ListedId, u"autojoin"_s), QVariant(QStringList{u"#a"_s, u"#b"_s}));
    QCOMPARE(stored(ListedId, u"ssl"_s).toBool(), true);
    QCOMPARE(stored(ListedId, u"address"_s), QVariant(u"irc.oftc.net:6667"_s));
    const ServerConfig config = page.dialog.activeServerConfig();
    QCOMPARE(config.nickname, u"nick"_s);
    QCOMPARE(config.realName, u"Real"_s);
    QCOMPARE(config.autojoin, (QStringList{u"#a"_s, u"#b"_s}));
    QCOMPARE(config.useSsl, true);

    // An emptied field is stored as well.
    ConnectDialogPage again;
    QCOMPARE(again.realName->text(), u"Real"_s);
    again.realName->clear();
    again.channels->clear();
    again.ssl->setChecked(false);
    clickConnect(again);
    QCOMPARE(stored(ListedId, u"realname"_s), QVariant(QString()));
    QCOMPARE(stored(ListedId, u"autojoin"_s).toStringList(), QStringList());
    QCOMPARE(stored(ListedId, u"ssl"_s).toBool(), false);
}

void TestConnectDialog::keepsWhatItHasNoFieldFor()
{
    storeServer(ListedId, u"altnick"_s, u"alt"_s);
    storeServer(ListedId, u"authmethod"_s, u"SASL EXTERNAL"_s);
    storeServer(ListedId, u"password"_s, u" secret "_s);
    storeServer(ListedId, u"encoding"_s, u"GBK (Chinese)"_s);
    ConnectDialogPage page;
    QVERIFY(page.select(u"irc.oftc.net:6667"_s));
    page.nickname->setText(u"nick"_s);
    clickConnect(page);
    const ServerConfig config = page.dialog.activeServerConfig();
    QCOMPARE(config.altNickname, u"alt"_s);
    QCOMPARE(config.authMethod, u"SASL EXTERNAL"_s);
    QCOMPARE(config.password, u" secret "_s);
    QCOMPARE(config.encoding, u"GBK (Chinese)"_s);
    QCOMPARE(stored(ListedId, u"altnick"_s), QVariant(u"alt"_s));
    QCOMPARE(stored(ListedId, u"authmethod"_s), QVariant(u"SASL EXTERNAL"_s));
    QCOMPARE(stored(ListedId, u"password"_s), QVariant(u" secret "_s));
    QCOMPARE(stored(ListedId, u"encoding"_s), QVariant(u"GBK (Chinese)"_s));
}

void TestConnectDialog::leavesTheRecordOfATypedServer()
{
    ConnectDialogPage page;
    page.typeServer(Unlisted, u"6697"_s);
    page.nickname->setText(u"nick"_s);
    page.realName->setText(u"Real"_s);
    page.channels->setText(u"a"_s);
    page.ssl->setChecked(true);
    clickConnect(page);
    const ServerConfig config = page.dialog.activeServerConfig();
    QCOMPARE(config.nickname, u"nick"_s);
    QCOMPARE(config.altNickname, QString());
    QCOMPARE(config.realName, u"Real"_s);
    QCOMPARE(config.autojoin, QStringList{u"#a"_s});
    QCOMPARE(config.useSsl, true);
    QVERIFY(!QSettings().childGroups().contains(u"irc.example.org_6697"_s));
    QVERIFY(!stored(u"irc.example.org_6697"_s, u"nickname"_s).isValid());
    QCOMPARE(history(), QStringList{u"irc.example.org:6697"_s});
}

void TestConnectDialog::forgetsTheRowOnceHostOrPortChange_data()
{
    QTest::addColumn<bool>("host");
    QTest::newRow("host") << true;
    QTest::newRow("port") << false;
}

void TestConnectDialog::forgetsTheRowOnceHostOrPortChange()
{
    QFETCH(const bool, host);
    storeServer(ListedId, u"nickname"_s, u"stored"_s);
    ConnectDialogPage page;
    QVERIFY(page.select(u"irc.oftc.net:6667"_s));
    // Typed over and typed back: the id matches again, and still the row is not meant.
    QTest::keyClick(host ? page.server : page.port, Qt::Key_Backspace);
    QTest::keyClicks(host ? page.server : page.port, host ? u"t"_s : u"7"_s);
    QCOMPARE(page.server->text(), Listed);
    QCOMPARE(page.port->text(), u"6667"_s);
    page.realName->setText(u"Typed"_s);
    clickConnect(page);
    QCOMPARE(page.dialog.activeServerConfig().realName, u"Typed"_s);
    QVERIFY(!stored(ListedId, u"realname"_s).isValid());

    ConnectDialogPage again;
    QVERIFY(again.select(u"irc.efnet.org:6667"_s));
    QVERIFY(again.select(u"irc.oftc.net:6667"_s));
    again.realName->setText(u"Picked"_s);
    clickConnect(again);
    QCOMPARE(stored(ListedId, u"realname"_s), QVariant(u"Picked"_s));
}

void TestConnectDialog::givesATypedServerItsStoredRecord()
{
    storeServer(ListedId, u"nickname"_s, u"stored"_s);
    storeServer(ListedId, u"realname"_s, u"Stored"_s);
    storeServer(ListedId, u"autojoin"_s, QStringList{u"#stored"_s});
    storeServer(ListedId, u"password"_s, u"secret"_s);
    ConnectDialogPage page;
    page.typeServer(Listed, u"6667"_s);
    page.nickname->setText(u"typed"_s);
    page.realName->setText(u"Typed"_s);
    page.channels->setText(u"#typed"_s);
    clickConnect(page);
    const ServerConfig config = page.dialog.activeServerConfig();
    QCOMPARE(config.nickname, u"stored"_s);
    QCOMPARE(config.realName, u"Stored"_s);
    QCOMPARE(config.autojoin, QStringList{u"#stored"_s});
    QCOMPARE(config.password, u"secret"_s);
    QCOMPARE(stored(ListedId, u"nickname"_s), QVariant(u"stored"_s));
}

void TestConnectDialog::completesAnEmptyRecordFromTheFields()
{
    storeServer(ListedId, u"encoding"_s, u""_s);
    storeServer(ListedId, u"authmethod"_s, u""_s);
    ConnectDialogPage page;
    page.typeServer(Listed, u"6667"_s);
    page.nickname->setText(u" typed "_s);
    page.realName->setText(u" Typed "_s);
    page.channels->setText(u"typed"_s);
    clickConnect(page);
    const ServerConfig config = page.dialog.activeServerConfig();
    QCOMPARE(config.nickname, u"typed"_s);
    QCOMPARE(config.altNickname, QString());
    QCOMPARE(config.realName, u"Typed"_s);
    QCOMPARE(config.autojoin, QStringList{u"#typed"_s});
    QCOMPARE(config.encoding, u"UTF-8 (Unicode)"_s);
    QCOMPARE(config.authMethod, u"NickServ (/nickserv IDENTIFY)"_s);
}

void TestConnectDialog::decidesAboutTls_data()
{
    QTest::addColumn<bool>("stored");
    QTest::addColumn<bool>("typed");
    QTest::addColumn<bool>("checked");
    QTest::addColumn<bool>("used");
    QTest::addColumn<bool>("storedAfterwards");

    QTest::newRow("row, off, unchecked") << false << false << false << false << false;
    QTest::newRow("row, off, checked") << false << false << true << true << true;
    QTest::newRow("row, on, unchecked") << true << false << false << false << false;
    QTest::newRow("row, on, checked") << true << false << true << true << true;
    QTest::newRow("typed, off, unchecked") << false << true << false << false << false;
    QTest::newRow("typed, off, checked") << false << true << true << true << false;
    QTest::newRow("typed, on, unchecked") << true << true << false << true << true;
    QTest::newRow("typed, on, checked") << true << true << true << true << true;
}

void TestConnectDialog::decidesAboutTls()
{
    QFETCH(const bool, typed);
    QFETCH(const bool, checked);
    QFETCH(const bool, stored);
    storeServer(ListedId, u"ssl"_s, stored);
    ConnectDialogPage page;
    QVERIFY(page.select(u"irc.oftc.net:6667"_s));
    QCOMPARE(page.ssl->isChecked(), stored);
    if (typed)
        page.typeServer(Listed, u"6667"_s);
    page.nickname->setText(u"nick"_s);
    page.ssl->setChecked(checked);
    clickConnect(page);
    QTEST(page.dialog.useSsl(), "used");
    QTEST(QSettings().value(u"servers/irc.oftc.net_6667/ssl"_s).toBool(), "storedAfterwards");
}

void TestConnectDialog::parsesChannels_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QStringList>("channels");

    QTest::newRow("empty") << QString() << QStringList{};
    QTest::newRow("separators alone") << u" ,, "_s << QStringList{};
    QTest::newRow("any mix") << u", #a b,,c\t #a,"_s
                             << QStringList{u"#a"_s, u"#b"_s, u"#c"_s, u"#a"_s};
    QTest::newRow("other sign") << u"&local"_s << QStringList{u"#&local"_s};
}

void TestConnectDialog::parsesChannels()
{
    QFETCH(const QString, typed);
    for (const bool picked : {true, false}) {
        ConnectDialogPage page;
        if (picked)
            QVERIFY(page.select(u"irc.oftc.net:6667"_s));
        else
            page.typeServer(Unlisted, u"6667"_s);
        page.nickname->setText(u"nick"_s);
        page.channels->setText(typed);
        QTEST(page.dialog.favoriteChannels(), "channels");
        clickConnect(page);
        QTEST(page.dialog.activeServerConfig().autojoin, "channels");
    }
}

void TestConnectDialog::keepsOneHistoryEntryPerAddress()
{
    QSettings().setValue(u"connection/history"_s, QStringList{u"b.org:6667"_s, u"a.org:6667"_s,
                                                              u"b.org:6667"_s, u"c.org:6667"_s});
    ConnectDialogPage page;
    page.nickname->setText(u"nick"_s);
    page.typeServer(u" b.org "_s, u"06667"_s);
    clickConnect(page);
    QCOMPARE(history(), (QStringList{u"a.org:6667"_s, u"c.org:6667"_s, u"b.org:6667"_s}));
    clickConnect(page);
    QCOMPARE(history(), (QStringList{u"a.org:6667"_s, u"c.org:6667"_s, u"b.org:6667"_s}));
    page.typeServer(u"b.org"_s, u"6668"_s);
    clickConnect(page);
    QCOMPARE(history().constLast(), u"b.org:6668"_s);
    QCOMPARE(history().size(), 4);
}

void TestConnectDialog::keepsTenHistoryEntries()
{
    ConnectDialogPage page;
    page.nickname->setText(u"nick"_s);
    QStringList expected;
    for (int i = 1; i <= 10; ++i) {
        page.typeServer(u"host%1.org"_s.arg(i), u"6667"_s);
        clickConnect(page);
        expected.append(u"host%1.org:6667"_s.arg(i));
    }
    QCOMPARE(history(), expected);
    page.typeServer(u"host11.org"_s, u"6667"_s);
    clickConnect(page);
    expected.removeFirst();
    expected.append(u"host11.org:6667"_s);
    QCOMPARE(history(), expected);

    // Somebody else's longer list comes down to ten as well.
    expected.prepend(u"old.org:6667"_s);
    expected.prepend(u"older.org:6667"_s);
    QSettings().setValue(u"connection/history"_s, expected);
    clickConnect(page);
    QCOMPARE(history(), expected.mid(2));
}

void TestConnectDialog::storesNothingOnCancel()
{
    ConnectDialogPage page;
    page.dialog.show();
    QVERIFY(page.select(u"irc.oftc.net:6667"_s));
    page.nickname->setText(u"nick"_s);
    page.ssl->setChecked(true);
    const auto before = storeContents();
    QSignalSpy rejected(&page.dialog, &QDialog::rejected);
    page.button(u"cancelButton"_s)->click();
    QCOMPARE(rejected.size(), 1);
    QVERIFY(!page.dialog.isVisible());
    QCOMPARE(storeContents(), before);
}

void TestConnectDialog::walksByKeyboard()
{
    ConnectDialogPage page;
    page.dialog.show();
    QVERIFY(QTest::qWaitForWindowActive(&page.dialog));
    const QList<QWidget *> stops{page.server,
                                 page.port,
                                 page.button(u"addButton"_s),
                                 page.button(u"editButton"_s),
                                 page.button(u"deleteButton"_s),
                                 page.list,
                                 page.nickname,
                                 page.realName,
                                 page.channels,
                                 page.ssl,
                                 page.button(u"cancelButton"_s),
                                 page.button(u"connectButton"_s)};
    for (QWidget *stop : stops) {
        QCOMPARE(page.dialog.focusWidget(), stop);
        QTest::keyClick(stop, Qt::Key_Tab);
    }
    QCOMPARE(page.dialog.focusWidget(), page.server);
    QTest::keyClick(page.server, Qt::Key_Backtab, Qt::ShiftModifier);
    QCOMPARE(page.dialog.focusWidget(), page.button(u"connectButton"_s));

    // The list by arrow keys and by the first letters; the fields follow.
    page.list->setFocus();
    QTest::keyClick(page.list, Qt::Key_Home);
    QCOMPARE(page.server->text(), u"chat.freenode.net"_s);
    QTest::keyClick(page.list, Qt::Key_Down);
    QCOMPARE(page.server->text(), u"eu.undernet.org"_s);
    QCOMPARE(page.port->text(), u"6660"_s);
    QTest::keyClicks(page.list, u"us.u"_s);
    QCOMPARE(page.server->text(), u"us.undernet.org"_s);
    QCOMPARE(page.port->text(), u"7000"_s);
    page.ssl->setFocus();
    QTest::keyClick(page.ssl, Qt::Key_Space);
    QVERIFY(page.ssl->isChecked());
    page.nickname->setFocus();
    QTest::keyClicks(page.nickname, u"nick"_s);
    QTest::keyClick(page.nickname, Qt::Key_Enter);
    QCOMPARE(page.dialog.result(), int(QDialog::Accepted));
    QCOMPARE(history(), QStringList{u"us.undernet.org:7000"_s});
    QCOMPARE(page.dialog.useSsl(), true);
}

void TestConnectDialog::connectsOnReturn_data()
{
    QTest::addColumn<QString>("where");

    QTest::newRow("server") << u"Server:"_s;
    QTest::newRow("port") << u"Port:"_s;
    QTest::newRow("list") << u""_s;
    QTest::newRow("nick") << u"Nickname:"_s;
    QTest::newRow("real name") << u"Real name:"_s;
    QTest::newRow("channels") << u"Join channels:"_s;
}

void TestConnectDialog::connectsOnReturn()
{
    QFETCH(const QString, where);
    ConnectDialogPage page;
    page.nickname->setText(u"nick"_s);
    page.dialog.show();
    QVERIFY(QTest::qWaitForWindowActive(&page.dialog));
    QWidget *field = FormFields::fieldOf(&page.dialog, where);
    QVERIFY(field != nullptr);
    field->setFocus();
    QTest::keyClick(field, Qt::Key_Return);
    QCOMPARE(page.dialog.result(), int(QDialog::Accepted));
    QVERIFY(!page.dialog.isVisible());
}

void TestConnectDialog::leavesOnEscape()
{
    ConnectDialogPage page;
    page.dialog.show();
    QVERIFY(QTest::qWaitForWindowActive(&page.dialog));
    QSignalSpy rejected(&page.dialog, &QDialog::rejected);
    QTest::keyClick(page.server, Qt::Key_Escape);
    QCOMPARE(rejected.size(), 1);
    QVERIFY(!page.dialog.isVisible());
}

QTEST_MAIN(TestConnectDialog)
#include "tst_ConnectDialog.moc"
