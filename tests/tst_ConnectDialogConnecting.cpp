#include "ConnectDialogPage.h"
#include "ModalAnswers.h"
#include "StoredServers.h"
#include "StyleSheetReader.h"
#include "TemporaryStore.h"

#include <QMessageBox>
#include <QRegularExpression>
#include <QSettings>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

// A server of the list, and one that is not listed.
const auto Listed = u"irc.oftc.net"_s;
const auto ListedId = u"irc.oftc.net_6667"_s;
const auto Unlisted = u"irc.example.org"_s;

} // namespace

class TestConnectDialogConnecting final : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void fillsTheFieldsFromTheSelectedRow();
    void clearsTheFieldsForARowWithoutRecord();
    void keepsTheFieldsForAnInvalidAddress();
    void readsHostAndPortFromTheFields_data();
    void readsHostAndPortFromTheFields();
    void returnsTheFieldsBeforeConnecting();
    void returnsTheRecordAfterConnecting();
    void requiresServerAndNickname_data();
    void requiresServerAndNickname();
    void requiresAValidPort_data();
    void requiresAValidPort();
    void showsErrorsInAStyledBox();
    void storesTheFieldsOfTheSelectedServer();
    void keepsValuesWithoutAField();
    void storesNoRecordForATypedServer();
    void unbindsTheRowWhenHostOrPortChange_data();
    void unbindsTheRowWhenHostOrPortChange();
    void usesTheStoredRecordOfATypedServer();
    void completesAnEmptyRecordFromTheFields();
    void choosesTls_data();
    void choosesTls();
    void parsesChannels_data();
    void parsesChannels();
    void keepsOneHistoryEntryPerAddress();
    void keepsTenHistoryEntries();
    void storesNothingOnCancel();

private:
    TemporaryStore store;
};

void TestConnectDialogConnecting::init()
{
    store.clear();
    // The offscreen platform logs this when a window is raised.
    QTest::failOnWarning(QRegularExpression(u"^(?!This plugin does not support)"_s));
}

void TestConnectDialogConnecting::fillsTheFieldsFromTheSelectedRow()
{
    StoredServers::setValue(ListedId, u"nickname"_s, u"nick"_s);
    StoredServers::setValue(ListedId, u"realname"_s, u"Real"_s);
    StoredServers::setValue(ListedId, u"autojoin"_s, QStringList{u"#a"_s, u"#b"_s});
    StoredServers::setValue(ListedId, u"ssl"_s, true);
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

void TestConnectDialogConnecting::clearsTheFieldsForARowWithoutRecord()
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

void TestConnectDialogConnecting::keepsTheFieldsForAnInvalidAddress()
{
    StoredServers::setValue(u"my_host_6667"_s, u"address"_s, u"my_host_6667"_s);
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
    // The fields are bound to no row, so connecting stores no record.
    page.clickConnect();
    QCOMPARE(page.dialog.result(), int(QDialog::Accepted));
    QVERIFY(!StoredServers::value(u"my_host_6667"_s, u"nickname"_s).isValid());
    QVERIFY(!StoredServers::value(u"my_host_6667_6667"_s, u"nickname"_s).isValid());
}

void TestConnectDialogConnecting::readsHostAndPortFromTheFields_data()
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

void TestConnectDialogConnecting::readsHostAndPortFromTheFields()
{
    QFETCH(const QString, port);
    ConnectDialogPage page;
    page.typeServer(u"  irc.example.org\t"_s, port);
    QCOMPARE(page.dialog.server(), u"irc.example.org"_s);
    QTEST(page.dialog.port(), "number");
}

void TestConnectDialogConnecting::returnsTheFieldsBeforeConnecting()
{
    StoredServers::setValue(ListedId, u"nickname"_s, u"stored"_s);
    StoredServers::setValue(ListedId, u"password"_s, u"secret"_s);
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

void TestConnectDialogConnecting::returnsTheRecordAfterConnecting()
{
    StoredServers::setValue(ListedId, u"nickname"_s, u"nick"_s);
    StoredServers::setValue(ListedId, u"altnick"_s, u"alt"_s);
    StoredServers::setValue(ListedId, u"realname"_s, u"Real"_s);
    StoredServers::setValue(ListedId, u"authmethod"_s, u"SASL PLAIN"_s);
    StoredServers::setValue(ListedId, u"password"_s, u"secret"_s);
    StoredServers::setValue(ListedId, u"autojoin"_s, QStringList{u"#a"_s});
    StoredServers::setValue(ListedId, u"encoding"_s, u"KOI8-R"_s);
    StoredServers::setValue(ListedId, u"ssl"_s, true);
    ConnectDialogPage page;
    QVERIFY(page.select(u"irc.oftc.net:6667"_s));
    QSignalSpy accepted(&page.dialog, &QDialog::accepted);
    page.clickConnect();
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

void TestConnectDialogConnecting::requiresServerAndNickname_data()
{
    QTest::addColumn<QString>("server");
    QTest::addColumn<QString>("port");
    QTest::addColumn<QString>("nickname");

    QTest::newRow("no server") << u""_s << u"6667"_s << u"nick"_s;
    QTest::newRow("server of spaces") << u" \t "_s << u"6667"_s << u"nick"_s;
    QTest::newRow("no nick") << u"a.org"_s << u"6667"_s << u""_s;
    QTest::newRow("nick of spaces") << u"a.org"_s << u"6667"_s << u"  "_s;
    QTest::newRow("all empty") << u""_s << u""_s << u""_s;
}

void TestConnectDialogConnecting::requiresServerAndNickname()
{
    QFETCH(const QString, server);
    QFETCH(const QString, port);
    QFETCH(const QString, nickname);
    ConnectDialogPage page;
    page.dialog.show();
    page.typeServer(server, port);
    page.nickname->setText(nickname);
    const auto before = StoredServers::everything();
    ModalAnswers answers;
    answers.queueForBox([](QMessageBox *box) {
        QCOMPARE(box->text(), u"Server and nickname are required!"_s);
        box->accept();
    });
    page.clickConnect();
    QCOMPARE(answers.problems(), QStringList());
    QVERIFY(page.dialog.isVisible());
    QCOMPARE(page.server->text(), server);
    QCOMPARE(page.nickname->text(), nickname);
    QCOMPARE(StoredServers::everything(), before);
    QCOMPARE(page.dialog.activeServerConfig().nickname, QString());
}

void TestConnectDialogConnecting::requiresAValidPort_data()
{
    QTest::addColumn<QString>("port");
    QTest::addColumn<bool>("valid");

    QTest::newRow("empty") << u""_s << false;
    QTest::newRow("zero") << u"0"_s << false;
    QTest::newRow("negative") << u"-6667"_s << false;
    QTest::newRow("above the highest") << u"65536"_s << false;
    QTest::newRow("overflow") << u"99999999999"_s << false;
    QTest::newRow("letters") << u"6667a"_s << false;
    QTest::newRow("lowest") << u"1"_s << true;
    QTest::newRow("highest") << u"65535"_s << true;
}

void TestConnectDialogConnecting::requiresAValidPort()
{
    QFETCH(const QString, port);
    QFETCH(const bool, valid);
    ConnectDialogPage page;
    page.dialog.show();
    page.typeServer(Unlisted, port);
    page.nickname->setText(u"nick"_s);
    const auto before = StoredServers::everything();
    ModalAnswers answers;
    if (!valid) {
        answers.queueForBox([](QMessageBox *box) {
            QCOMPARE(box->text(), u"Port must be between 1 and 65535"_s);
            box->accept();
        });
    }
    page.clickConnect();
    QCOMPARE(answers.problems(), QStringList());
    QCOMPARE(page.dialog.isVisible(), !valid);
    if (!valid)
        QCOMPARE(StoredServers::everything(), before);
    else
        QCOMPARE(StoredServers::history(), QStringList{u"irc.example.org:%1"_s.arg(port)});
}

void TestConnectDialogConnecting::showsErrorsInAStyledBox()
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
    page.clickConnect();
    QCOMPARE(answers.problems(), QStringList());
}

void TestConnectDialogConnecting::storesTheFieldsOfTheSelectedServer()
{
    ConnectDialogPage page;
    QVERIFY(page.select(u"irc.oftc.net:6667"_s));
    page.nickname->setText(u" nick "_s);
    page.realName->setText(u" Real "_s);
    page.channels->setText(u"a b"_s);
    page.ssl->setChecked(true);
    page.clickConnect();
    QCOMPARE(page.dialog.result(), int(QDialog::Accepted));
    QCOMPARE(StoredServers::value(ListedId, u"nickname"_s), QVariant(u"nick"_s));
    QCOMPARE(StoredServers::value(ListedId, u"realname"_s), QVariant(u"Real"_s));
    QCOMPARE(StoredServers::value(ListedId, u"autojoin"_s),
             QVariant(QStringList{u"#a"_s, u"#b"_s}));
    QCOMPARE(StoredServers::value(ListedId, u"ssl"_s).toBool(), true);
    QCOMPARE(StoredServers::value(ListedId, u"address"_s), QVariant(u"irc.oftc.net:6667"_s));
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
    again.clickConnect();
    QCOMPARE(StoredServers::value(ListedId, u"realname"_s), QVariant(QString()));
    QCOMPARE(StoredServers::value(ListedId, u"autojoin"_s).toStringList(), QStringList());
    QCOMPARE(StoredServers::value(ListedId, u"ssl"_s).toBool(), false);
}

void TestConnectDialogConnecting::keepsValuesWithoutAField()
{
    StoredServers::setValue(ListedId, u"altnick"_s, u"alt"_s);
    StoredServers::setValue(ListedId, u"authmethod"_s, u"SASL EXTERNAL"_s);
    StoredServers::setValue(ListedId, u"password"_s, u" secret "_s);
    StoredServers::setValue(ListedId, u"encoding"_s, u"GBK (Chinese)"_s);
    ConnectDialogPage page;
    QVERIFY(page.select(u"irc.oftc.net:6667"_s));
    page.nickname->setText(u"nick"_s);
    page.clickConnect();
    const ServerConfig config = page.dialog.activeServerConfig();
    QCOMPARE(config.altNickname, u"alt"_s);
    QCOMPARE(config.authMethod, u"SASL EXTERNAL"_s);
    QCOMPARE(config.password, u" secret "_s);
    QCOMPARE(config.encoding, u"GBK (Chinese)"_s);
    QCOMPARE(StoredServers::value(ListedId, u"altnick"_s), QVariant(u"alt"_s));
    QCOMPARE(StoredServers::value(ListedId, u"authmethod"_s), QVariant(u"SASL EXTERNAL"_s));
    QCOMPARE(StoredServers::value(ListedId, u"password"_s), QVariant(u" secret "_s));
    QCOMPARE(StoredServers::value(ListedId, u"encoding"_s), QVariant(u"GBK (Chinese)"_s));
}

void TestConnectDialogConnecting::storesNoRecordForATypedServer()
{
    ConnectDialogPage page;
    auto before = StoredServers::everything();
    page.typeServer(Unlisted, u"6697"_s);
    page.nickname->setText(u"nick"_s);
    page.realName->setText(u"Real"_s);
    page.channels->setText(u"a"_s);
    page.ssl->setChecked(true);
    page.clickConnect();
    const ServerConfig config = page.dialog.activeServerConfig();
    QCOMPARE(config.nickname, u"nick"_s);
    QCOMPARE(config.altNickname, QString());
    QCOMPARE(config.realName, u"Real"_s);
    QCOMPARE(config.autojoin, QStringList{u"#a"_s});
    QCOMPARE(config.useSsl, true);
    before.insert(u"connection/history"_s, QStringList{u"irc.example.org:6697"_s});
    QCOMPARE(StoredServers::everything(), before);
}

void TestConnectDialogConnecting::unbindsTheRowWhenHostOrPortChange_data()
{
    QTest::addColumn<bool>("host");
    QTest::newRow("host") << true;
    QTest::newRow("port") << false;
}

void TestConnectDialogConnecting::unbindsTheRowWhenHostOrPortChange()
{
    QFETCH(const bool, host);
    StoredServers::setValue(ListedId, u"nickname"_s, u"stored"_s);
    ConnectDialogPage page;
    QVERIFY(page.select(u"irc.oftc.net:6667"_s));
    // Typing the same text again restores the id, but does not bind the fields to the row.
    QTest::keyClick(host ? page.server : page.port, Qt::Key_Backspace);
    QTest::keyClicks(host ? page.server : page.port, host ? u"t"_s : u"7"_s);
    QCOMPARE(page.server->text(), Listed);
    QCOMPARE(page.port->text(), u"6667"_s);
    page.realName->setText(u"Typed"_s);
    page.clickConnect();
    QCOMPARE(page.dialog.activeServerConfig().realName, u"Typed"_s);
    QVERIFY(!StoredServers::value(ListedId, u"realname"_s).isValid());

    ConnectDialogPage again;
    QVERIFY(again.select(u"irc.efnet.org:6667"_s));
    QVERIFY(again.select(u"irc.oftc.net:6667"_s));
    again.realName->setText(u"Picked"_s);
    again.clickConnect();
    QCOMPARE(StoredServers::value(ListedId, u"realname"_s), QVariant(u"Picked"_s));
}

void TestConnectDialogConnecting::usesTheStoredRecordOfATypedServer()
{
    StoredServers::setValue(ListedId, u"nickname"_s, u"stored"_s);
    StoredServers::setValue(ListedId, u"realname"_s, u"Stored"_s);
    StoredServers::setValue(ListedId, u"autojoin"_s, QStringList{u"#stored"_s});
    StoredServers::setValue(ListedId, u"password"_s, u"secret"_s);
    ConnectDialogPage page;
    page.typeServer(Listed, u"6667"_s);
    page.nickname->setText(u"typed"_s);
    page.realName->setText(u"Typed"_s);
    page.channels->setText(u"#typed"_s);
    page.clickConnect();
    const ServerConfig config = page.dialog.activeServerConfig();
    QCOMPARE(config.nickname, u"stored"_s);
    QCOMPARE(config.realName, u"Stored"_s);
    QCOMPARE(config.autojoin, QStringList{u"#stored"_s});
    QCOMPARE(config.password, u"secret"_s);
    QCOMPARE(StoredServers::value(ListedId, u"nickname"_s), QVariant(u"stored"_s));
}

void TestConnectDialogConnecting::completesAnEmptyRecordFromTheFields()
{
    StoredServers::setValue(ListedId, u"encoding"_s, u""_s);
    StoredServers::setValue(ListedId, u"authmethod"_s, u""_s);
    ConnectDialogPage page;
    page.typeServer(Listed, u"6667"_s);
    page.nickname->setText(u" typed "_s);
    page.realName->setText(u" Typed "_s);
    page.channels->setText(u"typed"_s);
    page.clickConnect();
    const ServerConfig config = page.dialog.activeServerConfig();
    QCOMPARE(config.nickname, u"typed"_s);
    QCOMPARE(config.altNickname, QString());
    QCOMPARE(config.realName, u"Typed"_s);
    QCOMPARE(config.autojoin, QStringList{u"#typed"_s});
    QCOMPARE(config.encoding, u"UTF-8 (Unicode)"_s);
    QCOMPARE(config.authMethod, u"NickServ (/nickserv IDENTIFY)"_s);
}

void TestConnectDialogConnecting::choosesTls_data()
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

void TestConnectDialogConnecting::choosesTls()
{
    QFETCH(const bool, typed);
    QFETCH(const bool, checked);
    QFETCH(const bool, stored);
    StoredServers::setValue(ListedId, u"ssl"_s, stored);
    ConnectDialogPage page;
    QVERIFY(page.select(u"irc.oftc.net:6667"_s));
    QCOMPARE(page.ssl->isChecked(), stored);
    if (typed)
        page.typeServer(Listed, u"6667"_s);
    page.nickname->setText(u"nick"_s);
    page.ssl->setChecked(checked);
    page.clickConnect();
    QTEST(page.dialog.useSsl(), "used");
    QTEST(QSettings().value(u"servers/irc.oftc.net_6667/ssl"_s).toBool(), "storedAfterwards");
}

void TestConnectDialogConnecting::parsesChannels_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QStringList>("channels");

    QTest::newRow("empty") << QString() << QStringList{};
    QTest::newRow("separators alone") << u" ,, "_s << QStringList{};
    QTest::newRow("any mix") << u", #a b,,c\t #a,"_s
                             << QStringList{u"#a"_s, u"#b"_s, u"#c"_s, u"#a"_s};
    QTest::newRow("other prefix") << u"&local"_s << QStringList{u"#&local"_s};
}

void TestConnectDialogConnecting::parsesChannels()
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
        page.clickConnect();
        QTEST(page.dialog.activeServerConfig().autojoin, "channels");
    }
}

void TestConnectDialogConnecting::keepsOneHistoryEntryPerAddress()
{
    QSettings().setValue(u"connection/history"_s, QStringList{u"b.org:6667"_s, u"a.org:6667"_s,
                                                              u"b.org:6667"_s, u"c.org:6667"_s});
    ConnectDialogPage page;
    page.nickname->setText(u"nick"_s);
    page.typeServer(u" b.org "_s, u"06667"_s);
    page.clickConnect();
    QCOMPARE(StoredServers::history(),
             (QStringList{u"a.org:6667"_s, u"c.org:6667"_s, u"b.org:6667"_s}));
    page.clickConnect();
    QCOMPARE(StoredServers::history(),
             (QStringList{u"a.org:6667"_s, u"c.org:6667"_s, u"b.org:6667"_s}));
    page.typeServer(u"b.org"_s, u"6668"_s);
    page.clickConnect();
    QCOMPARE(StoredServers::history().constLast(), u"b.org:6668"_s);
    QCOMPARE(StoredServers::history().size(), 4);
}

void TestConnectDialogConnecting::keepsTenHistoryEntries()
{
    ConnectDialogPage page;
    page.nickname->setText(u"nick"_s);
    QStringList expected;
    for (int i = 1; i <= 10; ++i) {
        page.typeServer(u"host%1.org"_s.arg(i), u"6667"_s);
        page.clickConnect();
        expected.append(u"host%1.org:6667"_s.arg(i));
    }
    QCOMPARE(StoredServers::history(), expected);
    page.typeServer(u"host11.org"_s, u"6667"_s);
    page.clickConnect();
    expected.removeFirst();
    expected.append(u"host11.org:6667"_s);
    QCOMPARE(StoredServers::history(), expected);

    // A longer stored list is also reduced to ten.
    expected.prepend(u"old.org:6667"_s);
    expected.prepend(u"older.org:6667"_s);
    QSettings().setValue(u"connection/history"_s, expected);
    page.clickConnect();
    QCOMPARE(StoredServers::history(), expected.mid(2));
}

void TestConnectDialogConnecting::storesNothingOnCancel()
{
    ConnectDialogPage page;
    page.dialog.show();
    QVERIFY(page.select(u"irc.oftc.net:6667"_s));
    page.nickname->setText(u"nick"_s);
    page.ssl->setChecked(true);
    const auto before = StoredServers::everything();
    QSignalSpy rejected(&page.dialog, &QDialog::rejected);
    page.button(u"cancelButton"_s)->click();
    QCOMPARE(rejected.size(), 1);
    QVERIFY(!page.dialog.isVisible());
    QCOMPARE(StoredServers::everything(), before);
}

QTEST_MAIN(TestConnectDialogConnecting)
#include "tst_ConnectDialogConnecting.moc"
