#include "ConnectDialogPage.h"
#include "FormFields.h"
#include "ModalAnswers.h"
#include "ServerAnswers.h"
#include "StoredServers.h"
#include "StyleSheetReader.h"
#include "TemporaryStore.h"

#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QMenu>
#include <QMessageBox>
#include <QPointer>
#include <QRegularExpression>
#include <QSettings>
#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

const auto Star = u"\u2605 "_s;

} // namespace

class TestConnectDialogEditing final : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void addsAServer();
    void opensAnEmptyFormToAdd();
    void addsNothingOnCancel();
    void selectsTheRowOfADuplicate();
    void treatsAnotherPortAsAnotherServer();
    void restoresADeletedDefault();
    void rejectsAnInvalidAddressToAdd();
    void addsAServerWithoutHost();
    void addsAServerWithUnderscore();
    void editsARecord();
    void opensAFormWithTheServerOfTheRow();
    void keepsTheStarWithTheSameAddress();
    void removesTheStarWithTheOldAddress();
    void showsTheStarOfTheNewAddress();
    void listsARenamedDefaultAgain();
    void editsNothingOnCancel();
    void rejectsAnInvalidAddressToEdit();
    void refillsTheFieldsAfterEditing();
    void editsNothingWithoutRow();
    void editsNoRowWithAnInvalidAddress();
    void turnsTlsOffWhenEditing();
    void keepsADefaultDeleted();
    void deletesACustomServer();
    void keepsTheMarkOfADeletedFavoriteDefault();
    void deletesARowWithAnInvalidAddress();
    void asksForConfirmationToDelete_data();
    void asksForConfirmationToDelete();
    void deletesNothingWithoutConfirmation_data();
    void deletesNothingWithoutConfirmation();
    void deletesNothingWithoutRow();
    void forgetsTheRecordOfARemovedServer_data();
    void forgetsTheRecordOfARemovedServer();
    void keepsTheRecordOfADeletedDefault();
    void addsAFavoriteWithoutItsStar();
    void showsTheStoredChannelsBeforeRefilling();
    void survivesDestructionInABoxOrForm_data();
    void survivesDestructionInABoxOrForm();
    void survivesDestructionInAMenu();
    void survivesRowsRemovedInANestedLoop();

private:
    TemporaryStore temporaryStore;
    std::unique_ptr<ModalAnswers> answers;
};

void TestConnectDialogEditing::init()
{
    temporaryStore.clear();
    answers = std::make_unique<ModalAnswers>();
    // The offscreen platform logs this when a window is raised.
    QTest::failOnWarning(QRegularExpression(u"^(?!This plugin does not support)"_s));
}

void TestConnectDialogEditing::cleanup()
{
    QCOMPARE(answers->problems(), QStringList());
}

void TestConnectDialogEditing::addsAServer()
{
    ConnectDialogPage page;
    ServerAnswers::save(*answers, {{u"IRC server:"_s, u"Irc.Example.org"_s},
                                   {u"Port:"_s, u"6697"_s},
                                   {u"Nickname:"_s, u"nick"_s},
                                   {u"Second Name:"_s, u"alt"_s},
                                   {u"Password:"_s, u" secret "_s},
                                   {u"Auto join channels:"_s, u"a b"_s}});
    page.clickAdd();
    QCOMPARE(page.list->count(), 73);
    QStringList sorted = page.rows();
    sorted.sort(Qt::CaseInsensitive);
    QCOMPARE(page.rows(), sorted);
    QCOMPARE(page.currentRow(), u"Irc.Example.org:6697"_s);
    QCOMPARE(page.server->text(), u"Irc.Example.org"_s);
    QCOMPARE(page.nickname->text(), u"nick"_s);
    QCOMPARE(page.channels->text(), u"#a, #b"_s);
    const QString id = u"Irc.Example.org_6697"_s;
    QCOMPARE(StoredServers::customIds(), QStringList{id});
    QCOMPARE(StoredServers::deletedDefaultIds(), QStringList());
    QCOMPARE(StoredServers::value(id, u"address"_s), QVariant(u"Irc.Example.org:6697"_s));
    QCOMPARE(StoredServers::value(id, u"nickname"_s), QVariant(u"nick"_s));
    QCOMPARE(StoredServers::value(id, u"altnick"_s), QVariant(u"alt"_s));
    QCOMPARE(StoredServers::value(id, u"password"_s), QVariant(u" secret "_s));
    QCOMPARE(StoredServers::value(id, u"autojoin"_s), QVariant(QStringList{u"#a"_s, u"#b"_s}));
    QCOMPARE(StoredServers::value(id, u"ssl"_s).toBool(), false);

    // The fields are bound to the row, so connecting stores them.
    page.realName->setText(u"Real"_s);
    page.clickConnect();
    QCOMPARE(StoredServers::value(id, u"realname"_s), QVariant(u"Real"_s));
    QCOMPARE(StoredServers::value(id, u"password"_s), QVariant(u" secret "_s));
}

void TestConnectDialogEditing::opensAnEmptyFormToAdd()
{
    ConnectDialogPage page;
    page.dialog.setCurrentTheme(u"dark"_s);
    answers->queueForDialog([&page](QDialog *form) {
        QCOMPARE(form->parent(), &page.dialog);
        QCOMPARE(form->windowTitle(), u"Add IRC Server"_s);
        QCOMPARE(FormFields::field<QLineEdit>(form, u"IRC server:"_s)->text(), QString());
        QCOMPARE(FormFields::field<QLineEdit>(form, u"Port:"_s)->text(), u"6667"_s);
        QCOMPARE(FormFields::field<QLineEdit>(form, u"Nickname:"_s)->text(), QString());
        QCOMPARE(FormFields::field<QComboBox>(form, u"Auth Method:"_s)->currentIndex(), 2);
        QCOMPARE(StyleSheetReader(form->styleSheet()).value(u"QDialog"_s, u"background"_s),
                 u"#2E2E2E"_s);
        form->reject();
    });
    page.clickAdd();
}

void TestConnectDialogEditing::addsNothingOnCancel()
{
    const ConnectDialogPage page;
    const auto before = StoredServers::everything();
    const QStringList rows = page.rows();
    ServerAnswers::cancel(*answers);
    page.clickAdd();
    QCOMPARE(StoredServers::everything(), before);
    QCOMPARE(page.rows(), rows);
    QCOMPARE(page.currentRow(), u"irc.libera.chat:6667"_s);
}

void TestConnectDialogEditing::selectsTheRowOfADuplicate()
{
    QSettings().setValue(u"servers/favorites"_s, QStringList{u"irc.oftc.net_6667"_s});
    const ConnectDialogPage page;
    const auto before = StoredServers::everything();
    ServerAnswers::save(*answers,
                        {{u"IRC server:"_s, u" irc.oftc.net "_s}, {u"Nickname:"_s, u"nick"_s}});
    ServerAnswers::confirm(*answers, QMessageBox::Information, u"Add Server"_s,
                           u"This server already exists in the list."_s);
    page.clickAdd();
    QCOMPARE(page.list->count(), 72);
    QCOMPARE(page.currentRow(), QString(Star + u"irc.oftc.net:6667"_s));
    QCOMPARE(page.nickname->text(), QString());
    QCOMPARE(StoredServers::everything(), before);
}

void TestConnectDialogEditing::treatsAnotherPortAsAnotherServer()
{
    const ConnectDialogPage page;
    ServerAnswers::save(*answers, {{u"IRC server:"_s, u"irc.oftc.net"_s}, {u"Port:"_s, u"6668"_s}});
    page.clickAdd();
    QCOMPARE(page.list->count(), 73);
    QCOMPARE(StoredServers::customIds(), QStringList{u"irc.oftc.net_6668"_s});
    // The comparison is case-sensitive.
    ServerAnswers::save(*answers, {{u"IRC server:"_s, u"IRC.oftc.net"_s}, {u"Port:"_s, u"6668"_s}});
    page.clickAdd();
    QCOMPARE(page.list->count(), 74);
}

void TestConnectDialogEditing::restoresADeletedDefault()
{
    QSettings().setValue(u"servers/deletedDefaultServers"_s,
                         QStringList{u"irc.oftc.net_6667"_s, u"irc.efnet.org_6667"_s});
    const ConnectDialogPage page;
    ServerAnswers::save(*answers,
                        {{u"IRC server:"_s, u"irc.oftc.net"_s}, {u"Nickname:"_s, u"nick"_s}});
    page.clickAdd();
    QCOMPARE(StoredServers::deletedDefaultIds(), QStringList{u"irc.efnet.org_6667"_s});
    QCOMPARE(StoredServers::customIds(), QStringList());
    QCOMPARE(StoredServers::value(u"irc.oftc.net_6667"_s, u"nickname"_s), QVariant(u"nick"_s));
    const ConnectDialogPage again;
    QVERIFY(again.rows().contains(u"irc.oftc.net:6667"_s));
}

void TestConnectDialogEditing::rejectsAnInvalidAddressToAdd()
{
    const ConnectDialogPage page;
    const auto before = StoredServers::everything();
    ServerAnswers::save(*answers, {{u"IRC server:"_s, u"2001:db8::1"_s}});
    ServerAnswers::confirm(*answers, QMessageBox::Warning, u"Invalid format"_s,
                           u"Please use the format host:port"_s);
    page.clickAdd();
    QCOMPARE(page.list->count(), 72);
    QCOMPARE(StoredServers::everything(), before);
}

void TestConnectDialogEditing::addsAServerWithoutHost()
{
    const ConnectDialogPage page;
    ServerAnswers::save(*answers, {{u"IRC server:"_s, u"  "_s}, {u"Port:"_s, QString()}});
    page.clickAdd();
    QCOMPARE(page.currentRow(), u":0"_s);
    QCOMPARE(StoredServers::customIds(), QStringList{u"_0"_s});
    QCOMPARE(StoredServers::value(u"_0"_s, u"address"_s), QVariant(u":0"_s));
}

void TestConnectDialogEditing::addsAServerWithUnderscore()
{
    {
        const ConnectDialogPage page;
        ServerAnswers::save(*answers,
                            {{u"IRC server:"_s, u"my_host.org"_s}, {u"Nickname:"_s, u"nick"_s}});
        page.clickAdd();
        QCOMPARE(page.currentRow(), u"my_host.org:6667"_s);
        QCOMPARE(StoredServers::customIds(), QStringList{u"my_host.org_6667"_s});
        QCOMPARE(StoredServers::value(u"my_host.org_6667"_s, u"address"_s),
                 QVariant(u"my_host.org_6667"_s));
    }
    const ConnectDialogPage page;
    QVERIFY(page.rows().contains(u"my_host.org_6667"_s));
    QVERIFY(!page.rows().contains(u"my_host.org:6667"_s));
}

void TestConnectDialogEditing::editsARecord()
{
    StoredServers::addCustom(u"own.example.org"_s, 6697);
    ConnectDialogPage page;
    QVERIFY(page.select(u"own.example.org:6697"_s));
    ServerAnswers::save(*answers,
                        {{u"Nickname:"_s, u"other"_s}, {u"Auto join channels:"_s, u"#a"_s}});
    page.clickEdit();
    QCOMPARE(page.list->count(), 73);
    QCOMPARE(page.currentRow(), u"own.example.org:6697"_s);
    QCOMPARE(page.nickname->text(), u"other"_s);
    QCOMPARE(page.channels->text(), u"#a"_s);
    QCOMPARE(StoredServers::value(u"own.example.org_6697"_s, u"nickname"_s), QVariant(u"other"_s));
    QCOMPARE(StoredServers::value(u"own.example.org_6697"_s, u"autojoin"_s).toStringList(),
             QStringList{u"#a"_s});
    QCOMPARE(StoredServers::customIds(), QStringList{u"own.example.org_6697"_s});
}

void TestConnectDialogEditing::opensAFormWithTheServerOfTheRow()
{
    QSettings().setValue(u"servers/favorites"_s, QStringList{u"irc.oftc.net_6667"_s});
    QSettings().setValue(u"servers/irc.oftc.net_6667/altnick"_s, u"alt"_s);
    ConnectDialogPage page;
    QVERIFY(page.select(QString(Star + u"irc.oftc.net:6667"_s)));
    answers->queueForDialog([&page](QDialog *form) {
        QCOMPARE(form->parent(), &page.dialog);
        QCOMPARE(form->windowTitle(), u"Edit irc.oftc.net:6667"_s);
        QCOMPARE(FormFields::field<QLineEdit>(form, u"IRC server:"_s)->text(), u"irc.oftc.net"_s);
        QCOMPARE(FormFields::field<QLineEdit>(form, u"Second Name:"_s)->text(), u"alt"_s);
        form->reject();
    });
    page.clickEdit();
}

void TestConnectDialogEditing::keepsTheStarWithTheSameAddress()
{
    QSettings().setValue(u"servers/favorites"_s, QStringList{u"irc.oftc.net_6667"_s});
    ConnectDialogPage page;
    QVERIFY(page.select(QString(Star + u"irc.oftc.net:6667"_s)));
    ServerAnswers::save(*answers, {{u"Nickname:"_s, u"other"_s}});
    page.clickEdit();
    QCOMPARE(page.currentRow(), QString(Star + u"irc.oftc.net:6667"_s));
    QCOMPARE(StoredServers::favoriteIds(), QStringList{u"irc.oftc.net_6667"_s});
    QCOMPARE(StoredServers::value(u"irc.oftc.net_6667"_s, u"nickname"_s), QVariant(u"other"_s));
}

void TestConnectDialogEditing::removesTheStarWithTheOldAddress()
{
    StoredServers::addCustom(u"own.example.org"_s, 6697);
    QSettings().setValue(u"servers/favorites"_s,
                         QStringList{u"own.example.org_6697"_s, u"irc.oftc.net_6667"_s});
    ConnectDialogPage page;
    QVERIFY(page.select(QString(Star + u"own.example.org:6697"_s)));
    const int row = page.list->currentRow();
    ServerAnswers::save(*answers, {{u"Port:"_s, u"6698"_s}});
    page.clickEdit();
    QCOMPARE(page.currentRow(), u"own.example.org:6698"_s);
    QCOMPARE(page.list->currentRow(), row); // Not sorted.
    QCOMPARE(page.port->text(), u"6698"_s);
    QCOMPARE(page.nickname->text(), u"nick-of-own.example.org"_s);
    QCOMPARE(StoredServers::favoriteIds(), QStringList{u"irc.oftc.net_6667"_s});
    QCOMPARE(StoredServers::customIds(), QStringList{u"own.example.org_6698"_s});
    QVERIFY(!StoredServers::groups().contains(u"own.example.org_6697"_s));
    QCOMPARE(StoredServers::value(u"own.example.org_6698"_s, u"address"_s),
             QVariant(u"own.example.org:6698"_s));
    QCOMPARE(StoredServers::value(u"own.example.org_6698"_s, u"nickname"_s),
             QVariant(u"nick-of-own.example.org"_s));
}

void TestConnectDialogEditing::showsTheStarOfTheNewAddress()
{
    // A deleted favourite stays in the store, so a server with its address gets its mark.
    QSettings().setValue(u"servers/deletedDefaultServers"_s, QStringList{u"irc.oftc.net_6667"_s});
    QSettings().setValue(u"servers/favorites"_s, QStringList{u"irc.oftc.net_6667"_s});
    StoredServers::addCustom(u"own.example.org"_s, 6667);
    ConnectDialogPage page;
    QVERIFY(page.select(u"own.example.org:6667"_s));
    ServerAnswers::save(*answers, {{u"IRC server:"_s, u"irc.oftc.net"_s}});
    page.clickEdit();
    QCOMPARE(page.currentRow(), QString(Star + u"irc.oftc.net:6667"_s));
}

void TestConnectDialogEditing::listsARenamedDefaultAgain()
{
    {
        ConnectDialogPage page;
        QVERIFY(page.select(u"irc.oftc.net:6667"_s));
        ServerAnswers::save(*answers, {{u"Port:"_s, u"6697"_s}});
        page.clickEdit();
        QCOMPARE(page.list->count(), 72);
        QCOMPARE(StoredServers::deletedDefaultIds(), QStringList());
        QCOMPARE(StoredServers::customIds(), QStringList{u"irc.oftc.net_6697"_s});
        QVERIFY(!StoredServers::groups().contains(u"irc.oftc.net_6667"_s));
    }
    const ConnectDialogPage page;
    QCOMPARE(page.list->count(), 73);
    QVERIFY(page.rows().contains(u"irc.oftc.net:6667"_s));
    QVERIFY(page.rows().contains(u"irc.oftc.net:6697"_s));
}

void TestConnectDialogEditing::editsNothingOnCancel()
{
    const ConnectDialogPage page;
    const auto before = StoredServers::everything();
    answers->queueForDialog([](QDialog *form) {
        FormFields::field<QLineEdit>(form, u"Port:"_s)->setText(u"1"_s);
        form->findChild<QPushButton *>(u"cancelButton"_s)->click();
    });
    page.clickEdit();
    QCOMPARE(page.currentRow(), u"irc.libera.chat:6667"_s);
    QCOMPARE(StoredServers::everything(), before);
}

void TestConnectDialogEditing::rejectsAnInvalidAddressToEdit()
{
    const ConnectDialogPage page;
    const auto before = StoredServers::everything();
    ServerAnswers::save(*answers, {{u"IRC server:"_s, u"::1"_s}});
    ServerAnswers::confirm(*answers, QMessageBox::Warning, u"Invalid format"_s,
                           u"Please use the format host:port"_s);
    page.clickEdit();
    QCOMPARE(page.currentRow(), u"irc.libera.chat:6667"_s);
    QCOMPARE(StoredServers::everything(), before);
}

void TestConnectDialogEditing::refillsTheFieldsAfterEditing()
{
    ConnectDialogPage page;
    QVERIFY(page.select(u"irc.oftc.net:6667"_s));
    page.channels->setText(u"#typed"_s);
    ServerAnswers::save(*answers, {{u"Nickname:"_s, u"nick"_s}});
    page.clickEdit();
    QCOMPARE(page.channels->text(), QString());
    QCOMPARE(page.nickname->text(), u"nick"_s);
}

void TestConnectDialogEditing::editsNothingWithoutRow()
{
    const ConnectDialogPage page;
    page.list->setCurrentItem(nullptr);
    ServerAnswers::confirm(*answers, QMessageBox::Information, u"Edit"_s, u"No server selected."_s);
    page.clickEdit();
}

void TestConnectDialogEditing::editsNoRowWithAnInvalidAddress()
{
    QSettings().setValue(u"servers/customList"_s, QStringList{u"my_host_6667"_s});
    ConnectDialogPage page;
    const auto before = StoredServers::everything();
    QVERIFY(page.select(u"my:host:6667"_s));
    page.clickEdit(); // Shows no message box.
    QCOMPARE(StoredServers::everything(), before);
}

void TestConnectDialogEditing::turnsTlsOffWhenEditing()
{
    QSettings().setValue(u"servers/irc.oftc.net_6667/ssl"_s, true);
    ConnectDialogPage page;
    QVERIFY(page.select(u"irc.oftc.net:6667"_s));
    ServerAnswers::save(*answers, {});
    page.clickEdit();
    QCOMPARE(StoredServers::value(u"irc.oftc.net_6667"_s, u"ssl"_s).toBool(), false);
}

void TestConnectDialogEditing::keepsADefaultDeleted()
{
    {
        ConnectDialogPage page;
        QVERIFY(page.select(u"irc.oftc.net:6667"_s));
        ServerAnswers::pressButton(*answers, QMessageBox::Yes);
        page.clickDelete();
        QCOMPARE(page.list->count(), 71);
        QVERIFY(!page.rows().contains(u"irc.oftc.net:6667"_s));
        QVERIFY(!page.currentRow().isEmpty());
    }
    for (int showing = 0; showing < 2; ++showing) {
        QCOMPARE(StoredServers::deletedDefaultIds(), QStringList{u"irc.oftc.net_6667"_s});
        QCOMPARE(StoredServers::customIds(), QStringList());
        QVERIFY(!StoredServers::groups().contains(u"irc.oftc.net_6667"_s));
        QCOMPARE(StoredServers::groups().size(), 71);
        const ConnectDialogPage page;
        QVERIFY(!page.rows().contains(u"irc.oftc.net:6667"_s));
    }
}

void TestConnectDialogEditing::deletesACustomServer()
{
    StoredServers::addCustom(u"own.example.org"_s, 6697);
    StoredServers::addCustom(u"own.example.org"_s, 669);
    QSettings().setValue(u"servers/favorites"_s,
                         QStringList{u"own.example.org_6697"_s, u"irc.oftc.net_6667"_s});
    ConnectDialogPage page;
    QVERIFY(page.select(QString(Star + u"own.example.org:6697"_s)));
    ServerAnswers::pressButton(*answers, QMessageBox::Yes);
    page.clickDelete();
    QCOMPARE(page.list->count(), 73);
    QCOMPARE(StoredServers::customIds(), QStringList{u"own.example.org_669"_s});
    QCOMPARE(StoredServers::favoriteIds(), QStringList{u"irc.oftc.net_6667"_s});
    QCOMPARE(StoredServers::deletedDefaultIds(), QStringList());
    QVERIFY(!StoredServers::groups().contains(u"own.example.org_6697"_s));
    QCOMPARE(StoredServers::value(u"own.example.org_669"_s, u"nickname"_s),
             QVariant(u"nick-of-own.example.org"_s));
}

void TestConnectDialogEditing::keepsTheMarkOfADeletedFavoriteDefault()
{
    QSettings().setValue(u"servers/favorites"_s, QStringList{u"irc.oftc.net_6667"_s});
    {
        ConnectDialogPage page;
        QVERIFY(page.select(QString(Star + u"irc.oftc.net:6667"_s)));
        ServerAnswers::pressButton(*answers, QMessageBox::Yes);
        page.clickDelete();
        QCOMPARE(StoredServers::favoriteIds(), QStringList{u"irc.oftc.net_6667"_s});
    }
    ConnectDialogPage page;
    QCOMPARE(page.list->count(), 71);
    ServerAnswers::save(*answers, {{u"IRC server:"_s, u"irc.oftc.net"_s}});
    page.clickAdd();
    const ConnectDialogPage again;
    QCOMPARE(again.rows().constFirst(), QString(Star + u"irc.oftc.net:6667"_s));
}

void TestConnectDialogEditing::deletesARowWithAnInvalidAddress()
{
    QSettings().setValue(u"servers/customList"_s, QStringList{u"my_host_6667"_s});
    ConnectDialogPage page;
    QVERIFY(page.select(u"my:host:6667"_s));
    ServerAnswers::pressButton(*answers, QMessageBox::Yes);
    page.clickDelete();
    QCOMPARE(page.list->count(), 72);
    QCOMPARE(StoredServers::customIds(), QStringList());
    QCOMPARE(StoredServers::deletedDefaultIds(), QStringList());
    QVERIFY(StoredServers::groups().contains(
            u"my_host_6667"_s)); // The address does not convert to its id.
}

void TestConnectDialogEditing::asksForConfirmationToDelete_data()
{
    QTest::addColumn<QString>("theme");
    QTest::addColumn<QString>("background");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("hover");

    QTest::newRow("light") << u"light"_s << u"#FFFFFF"_s << u"#333333"_s << u"#FFE5E5"_s;
    QTest::newRow("dark") << u"dark"_s << u"#2E2E2E"_s << u"#DDDDDD"_s << u"#5F1E1E"_s;
    QTest::newRow("glass") << u"glass"_s << u"#FFFFFF"_s << u"#333333"_s << u"#FFE5E5"_s;
}

void TestConnectDialogEditing::asksForConfirmationToDelete()
{
    QFETCH(const QString, theme);
    QFETCH(const QString, background);
    QFETCH(const QString, text);
    QFETCH(const QString, hover);
    QSettings().setValue(u"servers/favorites"_s, QStringList{u"irc.oftc.net_6667"_s});
    ConnectDialogPage page;
    page.dialog.setCurrentTheme(theme);
    QVERIFY(page.select(QString(Star + u"irc.oftc.net:6667"_s)));
    answers->queueForBox([&](QMessageBox *box) {
        QCOMPARE(box->parent(), &page.dialog);
        QCOMPARE(box->windowTitle(), u"Delete Server"_s);
        QCOMPARE(box->text(), u"Are you sure you want to delete server: irc.oftc.net:6667"_s);
        QCOMPARE(box->icon(), QMessageBox::Critical);
        QCOMPARE(box->standardButtons(), QMessageBox::Yes | QMessageBox::No);
        QCOMPARE(box->defaultButton(), box->button(QMessageBox::No));
        QCOMPARE(box->button(QMessageBox::Yes)->objectName(), u"yesButton"_s);
        QCOMPARE(box->button(QMessageBox::No)->objectName(), u"noButton"_s);
        const StyleSheetReader sheet(box->styleSheet());
        using Rule = StyleSheetReader::Declarations;
        QCOMPARE(sheet.rule(u"QMessageBox"_s), (Rule{{u"background"_s, background}}));
        QCOMPARE(sheet.rule(u"QLabel"_s), (Rule{{u"color"_s, text}, {u"font-size"_s, u"13px"_s}}));
        QCOMPARE(sheet.rule(u"QPushButton"_s), (Rule{{u"border-radius"_s, u"6px"_s},
                                                     {u"padding"_s, u"10px 24px"_s},
                                                     {u"font-size"_s, u"14px"_s},
                                                     {u"font-weight"_s, u"500"_s}}));
        QCOMPARE(sheet.rule(u"QPushButton#yesButton"_s), (Rule{{u"background"_s, u"#007AFF"_s},
                                                               {u"color"_s, u"white"_s},
                                                               {u"border"_s, u"none"_s}}));
        QCOMPARE(sheet.rule(u"QPushButton#yesButton:hover"_s),
                 (Rule{{u"background"_s, u"#0062CC"_s}}));
        QCOMPARE(sheet.rule(u"QPushButton#yesButton:pressed"_s),
                 (Rule{{u"background"_s, u"#0051AA"_s}}));
        QCOMPARE(sheet.rule(u"QPushButton#noButton"_s),
                 (Rule{{u"background"_s, u"transparent"_s},
                       {u"color"_s, u"#FF3B30"_s},
                       {u"border"_s, u"1px solid #FF3B30"_s}}));
        QCOMPARE(sheet.rule(u"QPushButton#noButton:hover"_s), (Rule{{u"background"_s, hover}}));
        box->button(QMessageBox::No)->click();
    });
    page.clickDelete();
    QCOMPARE(page.list->count(), 72);
}

void TestConnectDialogEditing::deletesNothingWithoutConfirmation_data()
{
    QTest::addColumn<int>("key");

    QTest::newRow("the default button") << int(Qt::Key_Return);
    QTest::newRow("Escape") << int(Qt::Key_Escape);
}

void TestConnectDialogEditing::deletesNothingWithoutConfirmation()
{
    QFETCH(const int, key);
    ConnectDialogPage page;
    const auto before = StoredServers::everything();
    answers->queueForBox(
            [key](QMessageBox *box) { QTest::keyClick(box, static_cast<Qt::Key>(key)); });
    page.clickDelete();
    QCOMPARE(page.list->count(), 72);
    QCOMPARE(page.currentRow(), u"irc.libera.chat:6667"_s);
    QCOMPARE(StoredServers::everything(), before);
}

void TestConnectDialogEditing::deletesNothingWithoutRow()
{
    const ConnectDialogPage page;
    page.list->setCurrentItem(nullptr);
    ServerAnswers::confirm(*answers, QMessageBox::Information, u"Delete"_s,
                           u"No server selected."_s);
    page.clickDelete();
    QCOMPARE(page.list->count(), 72);
}

void TestConnectDialogEditing::forgetsTheRecordOfARemovedServer_data()
{
    QTest::addColumn<bool>("isDeleted");

    QTest::newRow("renamed") << false;
    QTest::newRow("deleted") << true;
}

void TestConnectDialogEditing::forgetsTheRecordOfARemovedServer()
{
    QFETCH(const bool, isDeleted);
    StoredServers::addCustom(u"own.example.org"_s, 6697);
    StoredServers::setValue(u"own.example.org_6697"_s, u"password"_s, u"secret"_s);
    ConnectDialogPage page;
    QVERIFY(page.select(u"own.example.org:6697"_s));
    if (isDeleted) {
        ServerAnswers::pressButton(*answers, QMessageBox::Yes);
        page.clickDelete();
    } else {
        ServerAnswers::save(*answers, {{u"Port:"_s, u"6698"_s}});
        page.clickEdit();
    }
    // A typed address without a record.
    page.typeServer(u"own.example.org"_s, u"6697"_s);
    page.nickname->setText(u"typed"_s);
    page.clickConnect();
    QCOMPARE(page.dialog.nickname(), u"typed"_s);
    QCOMPARE(page.dialog.password(), QString());
}

void TestConnectDialogEditing::keepsTheRecordOfADeletedDefault()
{
    StoredServers::setValue(u"irc.oftc.net_6667"_s, u"password"_s, u"secret"_s);
    ConnectDialogPage page;
    QVERIFY(page.select(u"irc.oftc.net:6667"_s));
    ServerAnswers::pressButton(*answers, QMessageBox::Yes);
    page.clickDelete();
    page.typeServer(u"irc.oftc.net"_s, u"6667"_s);
    page.nickname->setText(u"typed"_s);
    page.clickConnect();
    QCOMPARE(page.dialog.password(), u"secret"_s);
}

void TestConnectDialogEditing::addsAFavoriteWithoutItsStar()
{
    QSettings().setValue(u"servers/deletedDefaultServers"_s, QStringList{u"irc.oftc.net_6667"_s});
    QSettings().setValue(u"servers/favorites"_s, QStringList{u"irc.oftc.net_6667"_s});
    const ConnectDialogPage page;
    ServerAnswers::save(*answers, {{u"IRC server:"_s, u"irc.oftc.net"_s}});
    page.clickAdd();
    QCOMPARE(page.currentRow(), u"irc.oftc.net:6667"_s);
    QCOMPARE(page.rows().filter(Star), QStringList());
    QCOMPARE(StoredServers::favoriteIds(), QStringList{u"irc.oftc.net_6667"_s});
    const ConnectDialogPage again; // The next dialog shows the star.
    QCOMPARE(again.rows().constFirst(), QString(Star + u"irc.oftc.net:6667"_s));
}

void TestConnectDialogEditing::showsTheStoredChannelsBeforeRefilling()
{
    // The stored channels differ from the loaded ones only if the store was written after the
    // dialog loaded it, and the edited server only if another row became current meanwhile.
    const auto edit = [this](const QStringList &stored) {
        temporaryStore.clear();
        StoredServers::addCustom(u"own.example.org"_s, 6697);
        StoredServers::setValue(u"own.example.org_6697"_s, u"autojoin"_s, QStringList{u"#shown"_s});
        ConnectDialogPage page;
        page.select(u"irc.oftc.net:6667"_s);
        StoredServers::setValue(u"own.example.org_6697"_s, u"autojoin"_s, stored);
        QStringList texts;
        answers->queueForDialog([&](QDialog *form) {
            page.select(u"own.example.org:6697"_s);
            connect(page.channels, &QLineEdit::textChanged, this,
                    [&texts](const QString &text) { texts.append(text); });
            form->findChild<QPushButton *>(u"connectButton"_s)->click();
        });
        page.clickEdit();
        return texts;
    };
    QCOMPARE(edit({u"#a"_s, u"#b"_s}), (QStringList{u"#a, #b"_s, u"#shown"_s}));
    QCOMPARE(edit({}), QStringList()); // The field did not change.
}

void TestConnectDialogEditing::survivesDestructionInABoxOrForm_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<int>("windowsBefore");
    QTest::addColumn<QString>("host");

    QTest::newRow("error box") << u"connectButton"_s << 0 << QString();
    QTest::newRow("form to add") << u"addButton"_s << 0 << QString();
    QTest::newRow("format box of adding") << u"addButton"_s << 1 << u"::1"_s;
    QTest::newRow("box about a duplicate") << u"addButton"_s << 1 << u"irc.oftc.net"_s;
    QTest::newRow("form to edit") << u"editButton"_s << 0 << QString();
    QTest::newRow("format box of editing") << u"editButton"_s << 1 << u"::1"_s;
    QTest::newRow("confirmation") << u"deleteButton"_s << 0 << QString();
}

void TestConnectDialogEditing::survivesDestructionInABoxOrForm()
{
    QFETCH(const QString, button);
    QFETCH(const int, windowsBefore);
    QFETCH(const QString, host);
    auto *dialog = new ConnectDialog(nullptr);
    const QPointer<ConnectDialog> guard = dialog;
    dialog->show();
    if (windowsBefore > 0)
        ServerAnswers::save(*answers, {{u"IRC server:"_s, host}});
    answers->queueForDialog([dialog](QDialog *) { delete dialog; });
    dialog->findChild<QPushButton *>(button)->click();
    QVERIFY(guard == nullptr);
    QVERIFY(QApplication::activeModalWidget() == nullptr);
}

void TestConnectDialogEditing::survivesDestructionInAMenu()
{
    auto *dialog = new ConnectDialog(nullptr);
    const QPointer<ConnectDialog> guard = dialog;
    dialog->show();
    auto *list = dialog->findChild<QListWidget *>();
    list->scrollToItem(list->item(0));
    answers->queueForMenu([dialog](QMenu *) { delete dialog; });
    Q_EMIT list->customContextMenuRequested(list->visualItemRect(list->item(0)).center());
    QVERIFY(guard == nullptr);
    QVERIFY(QApplication::activePopupWidget() == nullptr);
}

void TestConnectDialogEditing::survivesRowsRemovedInANestedLoop()
{
    const ConnectDialogPage page;
    const auto before = StoredServers::everything();
    answers->queueForDialog([&page](QDialog *form) {
        page.list->clear();
        form->accept();
    });
    page.clickEdit();
    QCOMPARE(page.list->count(), 0);
    page.list->addItem(u"irc.oftc.net:6667"_s);
    page.list->setCurrentRow(0);
    answers->queueForBox([&page](QMessageBox *box) {
        page.list->clear();
        box->button(QMessageBox::Yes)->click();
    });
    page.clickDelete();
    QCOMPARE(StoredServers::everything(), before);
}

QTEST_MAIN(TestConnectDialogEditing)
#include "tst_ConnectDialogEditing.moc"
