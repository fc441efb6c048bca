#include "ConnectDialogPage.h"
#include "FormFields.h"
#include "ModalAnswers.h"
#include "StyleSheetReader.h"
#include "TemporaryStore.h"

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QRegularExpression>
#include <QSettings>
#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

const auto Star = u"\u2605 "_s;

QStringList idList(const QString &key)
{
    QStringList ids = QSettings().value(u"servers/%1"_s.arg(key)).toStringList();
    ids.sort();
    return ids;
}

QStringList customList()
{
    return idList(u"customList"_s);
}

QStringList deletedDefaults()
{
    return idList(u"deletedDefaultServers"_s);
}

QStringList favorites()
{
    return idList(u"favorites"_s);
}

QVariant stored(const QString &id, const QString &key)
{
    return QSettings().value(u"servers/%1/%2"_s.arg(id, key));
}

QStringList storedGroups()
{
    QSettings settings;
    settings.beginGroup(u"servers"_s);
    return settings.childGroups();
}

void store(const QString &key, const QVariant &value)
{
    QSettings().setValue(key, value);
}

// A server of the user's own, as adding it leaves it in the store.
void storeCustom(const QString &host, int port)
{
    const QString id = u"%1_%2"_s.arg(host, QString::number(port));
    QStringList ids = customList();
    ids.append(id);
    store(u"servers/customList"_s, ids);
    store(u"servers/%1/address"_s.arg(id), u"%1:%2"_s.arg(host, QString::number(port)));
    store(u"servers/%1/nickname"_s.arg(id), u"nick-of-%1"_s.arg(host));
}

// What the user types into the form for a server, by label, before saving.
using Entries = QMap<QString, QString>;

void queueSave(ModalAnswers &answers, const Entries &entries)
{
    answers.queueForDialog([entries](QDialog *form) {
        for (auto entry = entries.cbegin(); entry != entries.cend(); ++entry)
            FormFields::field<QLineEdit>(form, entry.key())->setText(entry.value());
        form->findChild<QPushButton *>(u"connectButton"_s)->click();
    });
}

void queueCancel(ModalAnswers &answers)
{
    answers.queueForDialog(
            [](QDialog *form) { form->findChild<QPushButton *>(u"cancelButton"_s)->click(); });
}

void queueBox(ModalAnswers &answers, QMessageBox::Icon icon, const QString &title,
              const QString &text)
{
    answers.queueForBox([icon, title, text](QMessageBox *box) {
        QCOMPARE(box->icon(), icon);
        QCOMPARE(box->windowTitle(), title);
        QCOMPARE(box->text(), text);
        QCOMPARE(box->standardButtons(), QMessageBox::Ok);
        box->button(QMessageBox::Ok)->click();
    });
}

void queueConfirmation(ModalAnswers &answers, QMessageBox::StandardButton answer)
{
    answers.queueForBox([answer](QMessageBox *box) { box->button(answer)->click(); });
}

void choose(QMenu *menu, const QString &text)
{
    const QList<QAction *> actions = menu->actions();
    for (QAction *action : actions) {
        if (action->text() == text) {
            menu->setActiveAction(action);
            QTest::keyClick(menu, Qt::Key_Return);
            return;
        }
    }
    menu->close();
    QFAIL(qPrintable(u"no entry \"%1\""_s.arg(text)));
}

void queueChoice(ModalAnswers &answers, const QString &text)
{
    answers.queueForMenu([text](QMenu *menu) { choose(menu, text); });
}

QStringList entriesOf(const QMenu *menu)
{
    QStringList texts;
    const QList<QAction *> actions = menu->actions();
    for (const QAction *action : actions)
        texts.append(action->isSeparator() ? u"-"_s : action->text());
    return texts;
}

void clickAdd(const ConnectDialogPage &page)
{
    page.button(u"addButton"_s)->click();
}

void clickEdit(const ConnectDialogPage &page)
{
    page.button(u"editButton"_s)->click();
}

void clickDelete(const ConnectDialogPage &page)
{
    page.button(u"deleteButton"_s)->click();
}

// Right-clicks the row with this text.
void openMenu(ConnectDialogPage &page, const QString &row)
{
    page.dialog.show();
    const QList<QListWidgetItem *> found = page.list->findItems(row, Qt::MatchExactly);
    QCOMPARE(found.size(), 1);
    page.list->scrollToItem(found.constFirst());
    const QPoint pos = page.list->visualItemRect(found.constFirst()).center();
    Q_EMIT page.list->customContextMenuRequested(pos);
}

} // namespace

class TestConnectDialogServers final : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void listsTheCatalogueAtFirst();
    void seedsAddressesAndNothingElse();
    void keepsStoredAddresses();
    void listsTheUsersOwnServers();
    void leavesOutDeletedDefaults();
    void marksFavorites();
    void sortsFavoritesFirstAndWithoutCase();
    void selectsTheLastServer();
    void selectsTheLastServerThoughItIsAFavorite();
    void addsTheLastServerToTheList();
    void showsADeletedDefaultThatWasUsedLast();
    void selectsThePreferredServer_data();
    void selectsThePreferredServer();
    void selectsTheFirstRowWithoutThePreferredServer_data();
    void selectsTheFirstRowWithoutThePreferredServer();

    void addsAServer();
    void asksForANewServerInAnEmptyForm();
    void addsNothingOnCancel();
    void selectsTheRowOfAServerThatIsThere();
    void takesAnotherPortForAnotherServer();
    void bringsADeletedDefaultBack();
    void wantsAnAddressOfTwoPartsToAdd();
    void addsAServerWithoutHost();
    void addsAServerWithUnderscore();

    void editsARecord();
    void editsTheServerOfTheRow();
    void keepsTheStarWhenTheAddressStays();
    void dropsTheStarWithTheAddress();
    void leavesARenamedDefaultToComeBack();
    void editsNothingOnCancel();
    void wantsAnAddressOfTwoPartsToEdit();
    void refillsTheFieldsAfterEditing();
    void editsNothingWithoutRow();
    void editsNoRowThatIsNoAddress();
    void turnsTlsOffByEditing();

    void deletesADefaultForGood();
    void deletesACustomServer();
    void keepsTheMarkOfADeletedFavoriteDefault();
    void deletesARowThatIsNoAddress();
    void asksBeforeItDeletes_data();
    void asksBeforeItDeletes();
    void deletesNothingUnlessTold_data();
    void deletesNothingUnlessTold();
    void deletesNothingWithoutRow();

    void opensAMenuOnARow();
    void opensNoMenuBesideTheRows();
    void offersNoFavoriteForARowThatIsNoAddress();
    void editsAndDeletesFromTheMenu();
    void togglesFavoritesFromTheMenu();
    void keepsTheRowCurrentWhileSorting();
    void fillsTheFieldsFromTheRowThatSortingRestores();

    void livesWithADamagedStore();
    void livesWithHalfGroups();
    void livesWithAStoreThatCannotBeWritten();
    void livesWithTenThousandServers();

    void survivesItsEndInsideABoxOrForm_data();
    void survivesItsEndInsideABoxOrForm();
    void survivesItsEndInsideAMenu();
    void survivesRowsThatVanishMeanwhile();

private:
    TemporaryStore temporaryStore;
    std::unique_ptr<ModalAnswers> answers;
};

void TestConnectDialogServers::init()
{
    temporaryStore.clear();
    answers = std::make_unique<ModalAnswers>();
    // The offscreen platform says so when a window is raised.
    QTest::failOnWarning(QRegularExpression(u"^(?!This plugin does not support)"_s));
}

void TestConnectDialogServers::cleanup()
{
    QCOMPARE(answers->problems(), QStringList());
}

void TestConnectDialogServers::listsTheCatalogueAtFirst()
{
    const ConnectDialogPage page;
    QCOMPARE(page.list->count(), 72);
    QStringList sorted = ConnectDialog::defaultServers();
    QCOMPARE(sorted.size(), 72);
    sorted.sort(Qt::CaseInsensitive);
    QCOMPARE(page.rows(), sorted);
    QCOMPARE(page.currentRow(), u"irc.libera.chat:6667"_s);
    QCOMPARE(page.server->text(), u"irc.libera.chat"_s);
    QCOMPARE(page.port->text(), u"6667"_s);
    QCOMPARE(page.nickname->text(), QString());
}

void TestConnectDialogServers::seedsAddressesAndNothingElse()
{
    const ConnectDialogPage page;
    const auto contents = storeContents();
    QCOMPARE(contents.size(), 72);
    const QStringList rows = page.rows();
    for (const QString &row : rows) {
        const QString id = QString(row).replace(u':', u'_');
        QCOMPARE(contents.value(u"servers/%1/address"_s.arg(id)), QVariant(row));
    }
}

void TestConnectDialogServers::keepsStoredAddresses()
{
    store(u"servers/irc.oftc.net_6667/address"_s, u"other.example.org:1"_s);
    const ConnectDialogPage page;
    QCOMPARE(stored(u"irc.oftc.net_6667"_s, u"address"_s), QVariant(u"other.example.org:1"_s));
    QVERIFY(page.rows().contains(u"other.example.org:1"_s));
    QVERIFY(!page.rows().contains(u"irc.oftc.net:6667"_s));
}

void TestConnectDialogServers::listsTheUsersOwnServers()
{
    storeCustom(u"own.example.org"_s, 6697);
    store(u"servers/customList"_s, QStringList{u"own.example.org_6697"_s, u"irc.oftc.net_6667"_s,
                                               u"bare.example.org_1"_s, u"my_host_6667"_s});
    ConnectDialogPage page;
    QCOMPARE(page.list->count(), 75);
    QVERIFY(page.rows().contains(u"bare.example.org:1"_s));
    QVERIFY(page.rows().contains(u"my:host:6667"_s));
    QCOMPARE(stored(u"bare.example.org_1"_s, u"address"_s), QVariant(u"bare.example.org:1"_s));
    QCOMPARE(stored(u"my_host_6667"_s, u"address"_s), QVariant(u"my:host:6667"_s));
    QVERIFY(page.select(u"own.example.org:6697"_s));
    QCOMPARE(page.nickname->text(), u"nick-of-own.example.org"_s);
}

void TestConnectDialogServers::leavesOutDeletedDefaults()
{
    store(u"servers/deletedDefaultServers"_s,
          QStringList{u"irc.oftc.net_6667"_s, u"nowhere.org_1"_s});
    const ConnectDialogPage page;
    QCOMPARE(page.list->count(), 71);
    QVERIFY(!page.rows().contains(u"irc.oftc.net:6667"_s));
    QVERIFY(!storedGroups().contains(u"irc.oftc.net_6667"_s));
}

void TestConnectDialogServers::marksFavorites()
{
    store(u"servers/favorites"_s, QStringList{u"irc.oftc.net_6667"_s, u"nowhere.org_1"_s});
    const ConnectDialogPage page;
    QCOMPARE(page.list->count(), 72);
    QCOMPARE(page.rows().constFirst(), QString(Star + u"irc.oftc.net:6667"_s));
    QCOMPARE(page.rows().filter(Star).size(), 1);
}

void TestConnectDialogServers::sortsFavoritesFirstAndWithoutCase()
{
    for (const QString &host : {u"b.fav"_s, u"A.fav"_s, u"B.own"_s, u"a.own"_s})
        storeCustom(host, 1);
    QStringList defaultIds = ConnectDialog::defaultServers();
    defaultIds.replaceInStrings(u":"_s, u"_"_s);
    store(u"servers/deletedDefaultServers"_s, defaultIds);
    store(u"servers/favorites"_s, QStringList{u"b.fav_1"_s, u"A.fav_1"_s});
    ConnectDialogPage page;
    const QStringList sorted{QString(Star + u"A.fav:1"_s), QString(Star + u"b.fav:1"_s),
                             u"a.own:1"_s, u"B.own:1"_s};
    QCOMPARE(page.rows(), sorted);
    QCOMPARE(page.currentRow(), QString(Star + u"A.fav:1"_s)); // The preferred one is not there.

    // Out of order again; what is current when the rows are sorted stays so.
    page.list->insertItem(0, page.list->takeItem(3));
    page.list->addItem(u"Aa.own:1"_s);
    queueChoice(*answers, u"Add to Favorites"_s);
    openMenu(page, u"Aa.own:1"_s);
    QCOMPARE(page.rows(), (QStringList{QString(Star + u"A.fav:1"_s), QString(Star + u"Aa.own:1"_s),
                                       QString(Star + u"b.fav:1"_s), u"a.own:1"_s, u"B.own:1"_s}));
    QCOMPARE(page.currentRow(), QString(Star + u"Aa.own:1"_s));
}

void TestConnectDialogServers::selectsTheLastServer()
{
    store(u"connection/history"_s, QStringList{u"irc.efnet.org:6667"_s, u"irc.oftc.net:6667"_s});
    store(u"servers/irc.oftc.net_6667/nickname"_s, u"nick"_s);
    const ConnectDialogPage page;
    QCOMPARE(page.currentRow(), u"irc.oftc.net:6667"_s);
    QCOMPARE(page.server->text(), u"irc.oftc.net"_s);
    QCOMPARE(page.nickname->text(), u"nick"_s);
    QCOMPARE(page.list->count(), 72);
    QVERIFY(!QSettings().contains(u"servers/customList"_s));
}

void TestConnectDialogServers::selectsTheLastServerThoughItIsAFavorite()
{
    store(u"servers/favorites"_s, QStringList{u"irc.oftc.net_6667"_s});
    store(u"connection/history"_s, QStringList{u"irc.oftc.net:6667"_s});
    const ConnectDialogPage page;
    QCOMPARE(page.currentRow(), QString(Star + u"irc.oftc.net:6667"_s));
    QCOMPARE(page.list->count(), 72);
}

void TestConnectDialogServers::addsTheLastServerToTheList()
{
    store(u"connection/history"_s, QStringList{u"a.example.org:6697"_s});
    // The session stores the record of a server that was typed by hand.
    store(u"servers/a.example.org_6697/nickname"_s, u"nick"_s);
    {
        const ConnectDialogPage page;
        QCOMPARE(page.list->count(), 73);
        QCOMPARE(page.rows().constLast(), u"a.example.org:6697"_s); // Unsorted for now,
        QCOMPARE(page.currentRow(), u"a.example.org:6697"_s);
        QCOMPARE(page.server->text(), u"a.example.org"_s);
        QCOMPARE(page.port->text(), u"6697"_s);
        QCOMPARE(page.nickname->text(), QString()); // and without its record.
        QCOMPARE(customList(), QStringList{u"a.example.org_6697"_s});
        QCOMPARE(stored(u"a.example.org_6697"_s, u"address"_s), QVariant(u"a.example.org:6697"_s));
    }
    const ConnectDialogPage page;
    QCOMPARE(page.rows().constFirst(), u"a.example.org:6697"_s);
    QCOMPARE(page.currentRow(), u"a.example.org:6697"_s);
    QCOMPARE(page.nickname->text(), u"nick"_s);
}

void TestConnectDialogServers::showsADeletedDefaultThatWasUsedLast()
{
    store(u"servers/deletedDefaultServers"_s, QStringList{u"irc.oftc.net_6667"_s});
    store(u"connection/history"_s, QStringList{u"irc.oftc.net:6667"_s});
    for (int showing = 0; showing < 2; ++showing) {
        const ConnectDialogPage page;
        QCOMPARE(page.list->count(), 72);
        QCOMPARE(page.rows().constLast(), u"irc.oftc.net:6667"_s);
        QCOMPARE(page.currentRow(), u"irc.oftc.net:6667"_s);
        QCOMPARE(deletedDefaults(), QStringList{u"irc.oftc.net_6667"_s});
        QCOMPARE(customList(), QStringList());
    }
}

void TestConnectDialogServers::selectsThePreferredServer_data()
{
    QTest::addColumn<QStringList>("history");

    QTest::newRow("no history") << QStringList{};
    QTest::newRow("last entry without port") << QStringList{u"a.org:1"_s, u"a.org"_s};
    QTest::newRow("last entry with IPv6 host") << QStringList{u"::1:6667"_s};
    QTest::newRow("empty last entry") << QStringList{u"a.org:1"_s, QString()};
}

void TestConnectDialogServers::selectsThePreferredServer()
{
    QFETCH(const QStringList, history);
    store(u"connection/history"_s, history);
    const ConnectDialogPage page;
    QCOMPARE(page.currentRow(), u"irc.libera.chat:6667"_s);
    QCOMPARE(page.server->text(), u"irc.libera.chat"_s);
    QCOMPARE(page.list->count(), 72);
}

void TestConnectDialogServers::selectsTheFirstRowWithoutThePreferredServer_data()
{
    QTest::addColumn<QString>("key");
    QTest::newRow("deleted") << u"servers/deletedDefaultServers"_s;
    QTest::newRow("a favourite, with its mark") << u"servers/favorites"_s;
}

void TestConnectDialogServers::selectsTheFirstRowWithoutThePreferredServer()
{
    QFETCH(const QString, key);
    store(u"servers/favorites"_s, QStringList{u"irc.abjects.net_6667"_s});
    QStringList ids = QSettings().value(key).toStringList();
    ids.append(u"irc.libera.chat_6667"_s);
    store(key, ids);
    const ConnectDialogPage page;
    QCOMPARE(page.currentRow(), QString(Star + u"irc.abjects.net:6667"_s));
    QCOMPARE(page.list->currentRow(), 0);
}

void TestConnectDialogServers::addsAServer()
{
    ConnectDialogPage page;
    queueSave(*answers, {{u"IRC server:"_s, u"Irc.Example.org"_s},
                         {u"Port:"_s, u"6697"_s},
                         {u"Nickname:"_s, u"nick"_s},
                         {u"Second Name:"_s, u"alt"_s},
                         {u"Password:"_s, u" secret "_s},
                         {u"Auto join channels:"_s, u"a b"_s}});
    clickAdd(page);
    QCOMPARE(page.list->count(), 73);
    QStringList sorted = page.rows();
    sorted.sort(Qt::CaseInsensitive);
    QCOMPARE(page.rows(), sorted);
    QCOMPARE(page.currentRow(), u"Irc.Example.org:6697"_s);
    QCOMPARE(page.server->text(), u"Irc.Example.org"_s);
    QCOMPARE(page.nickname->text(), u"nick"_s);
    QCOMPARE(page.channels->text(), u"#a, #b"_s);
    const QString id = u"Irc.Example.org_6697"_s;
    QCOMPARE(customList(), QStringList{id});
    QCOMPARE(deletedDefaults(), QStringList());
    QCOMPARE(stored(id, u"address"_s), QVariant(u"Irc.Example.org:6697"_s));
    QCOMPARE(stored(id, u"nickname"_s), QVariant(u"nick"_s));
    QCOMPARE(stored(id, u"altnick"_s), QVariant(u"alt"_s));
    QCOMPARE(stored(id, u"password"_s), QVariant(u" secret "_s));
    QCOMPARE(stored(id, u"autojoin"_s), QVariant(QStringList{u"#a"_s, u"#b"_s}));
    QCOMPARE(stored(id, u"ssl"_s).toBool(), false);

    // The row is bound to its fields: a connect stores them.
    page.realName->setText(u"Real"_s);
    page.button(u"connectButton"_s)->click();
    QCOMPARE(stored(id, u"realname"_s), QVariant(u"Real"_s));
    QCOMPARE(stored(id, u"password"_s), QVariant(u" secret "_s));
}

void TestConnectDialogServers::asksForANewServerInAnEmptyForm()
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
    clickAdd(page);
}

void TestConnectDialogServers::addsNothingOnCancel()
{
    const ConnectDialogPage page;
    const auto before = storeContents();
    const QStringList rows = page.rows();
    queueCancel(*answers);
    clickAdd(page);
    QCOMPARE(storeContents(), before);
    QCOMPARE(page.rows(), rows);
    QCOMPARE(page.currentRow(), u"irc.libera.chat:6667"_s);
}

void TestConnectDialogServers::selectsTheRowOfAServerThatIsThere()
{
    store(u"servers/favorites"_s, QStringList{u"irc.oftc.net_6667"_s});
    const ConnectDialogPage page;
    const auto before = storeContents();
    queueSave(*answers, {{u"IRC server:"_s, u" irc.oftc.net "_s}, {u"Nickname:"_s, u"nick"_s}});
    queueBox(*answers, QMessageBox::Information, u"Add Server"_s,
             u"This server already exists in the list."_s);
    clickAdd(page);
    QCOMPARE(page.list->count(), 72);
    QCOMPARE(page.currentRow(), QString(Star + u"irc.oftc.net:6667"_s));
    QCOMPARE(page.nickname->text(), QString());
    QCOMPARE(storeContents(), before);
}

void TestConnectDialogServers::takesAnotherPortForAnotherServer()
{
    const ConnectDialogPage page;
    queueSave(*answers, {{u"IRC server:"_s, u"irc.oftc.net"_s}, {u"Port:"_s, u"6668"_s}});
    clickAdd(page);
    QCOMPARE(page.list->count(), 73);
    QCOMPARE(customList(), QStringList{u"irc.oftc.net_6668"_s});
    // The comparison minds letter case.
    queueSave(*answers, {{u"IRC server:"_s, u"IRC.oftc.net"_s}, {u"Port:"_s, u"6668"_s}});
    clickAdd(page);
    QCOMPARE(page.list->count(), 74);
}

void TestConnectDialogServers::bringsADeletedDefaultBack()
{
    store(u"servers/deletedDefaultServers"_s,
          QStringList{u"irc.oftc.net_6667"_s, u"irc.efnet.org_6667"_s});
    const ConnectDialogPage page;
    queueSave(*answers, {{u"IRC server:"_s, u"irc.oftc.net"_s}, {u"Nickname:"_s, u"nick"_s}});
    clickAdd(page);
    QCOMPARE(deletedDefaults(), QStringList{u"irc.efnet.org_6667"_s});
    QCOMPARE(customList(), QStringList());
    QCOMPARE(stored(u"irc.oftc.net_6667"_s, u"nickname"_s), QVariant(u"nick"_s));
    const ConnectDialogPage again;
    QVERIFY(again.rows().contains(u"irc.oftc.net:6667"_s));
}

void TestConnectDialogServers::wantsAnAddressOfTwoPartsToAdd()
{
    const ConnectDialogPage page;
    const auto before = storeContents();
    queueSave(*answers, {{u"IRC server:"_s, u"2001:db8::1"_s}});
    queueBox(*answers, QMessageBox::Warning, u"Invalid format"_s,
             u"Please use the format host:port"_s);
    clickAdd(page);
    QCOMPARE(page.list->count(), 72);
    QCOMPARE(storeContents(), before);
}

void TestConnectDialogServers::addsAServerWithoutHost()
{
    const ConnectDialogPage page;
    queueSave(*answers, {{u"IRC server:"_s, u"  "_s}, {u"Port:"_s, QString()}});
    clickAdd(page);
    QCOMPARE(page.currentRow(), u":0"_s);
    QCOMPARE(customList(), QStringList{u"_0"_s});
    QCOMPARE(stored(u"_0"_s, u"address"_s), QVariant(u":0"_s));
}

void TestConnectDialogServers::addsAServerWithUnderscore()
{
    {
        const ConnectDialogPage page;
        queueSave(*answers, {{u"IRC server:"_s, u"my_host.org"_s}, {u"Nickname:"_s, u"nick"_s}});
        clickAdd(page);
        QCOMPARE(page.currentRow(), u"my_host.org:6667"_s);
        QCOMPARE(customList(), QStringList{u"my_host.org_6667"_s});
        QCOMPARE(stored(u"my_host.org_6667"_s, u"address"_s), QVariant(u"my_host.org_6667"_s));
    }
    const ConnectDialogPage page;
    QVERIFY(page.rows().contains(u"my_host.org_6667"_s));
    QVERIFY(!page.rows().contains(u"my_host.org:6667"_s));
}

void TestConnectDialogServers::editsARecord()
{
    storeCustom(u"own.example.org"_s, 6697);
    ConnectDialogPage page;
    QVERIFY(page.select(u"own.example.org:6697"_s));
    queueSave(*answers, {{u"Nickname:"_s, u"other"_s}, {u"Auto join channels:"_s, u"#a"_s}});
    clickEdit(page);
    QCOMPARE(page.list->count(), 73);
    QCOMPARE(page.currentRow(), u"own.example.org:6697"_s);
    QCOMPARE(page.nickname->text(), u"other"_s);
    QCOMPARE(page.channels->text(), u"#a"_s);
    QCOMPARE(stored(u"own.example.org_6697"_s, u"nickname"_s), QVariant(u"other"_s));
    QCOMPARE(stored(u"own.example.org_6697"_s, u"autojoin"_s).toStringList(), QStringList{u"#a"_s});
    QCOMPARE(customList(), QStringList{u"own.example.org_6697"_s});
}

void TestConnectDialogServers::editsTheServerOfTheRow()
{
    store(u"servers/favorites"_s, QStringList{u"irc.oftc.net_6667"_s});
    store(u"servers/irc.oftc.net_6667/altnick"_s, u"alt"_s);
    ConnectDialogPage page;
    QVERIFY(page.select(QString(Star + u"irc.oftc.net:6667"_s)));
    answers->queueForDialog([&page](QDialog *form) {
        QCOMPARE(form->parent(), &page.dialog);
        QCOMPARE(form->windowTitle(), u"Edit irc.oftc.net:6667"_s);
        QCOMPARE(FormFields::field<QLineEdit>(form, u"IRC server:"_s)->text(), u"irc.oftc.net"_s);
        QCOMPARE(FormFields::field<QLineEdit>(form, u"Second Name:"_s)->text(), u"alt"_s);
        form->reject();
    });
    clickEdit(page);
}

void TestConnectDialogServers::keepsTheStarWhenTheAddressStays()
{
    store(u"servers/favorites"_s, QStringList{u"irc.oftc.net_6667"_s});
    ConnectDialogPage page;
    QVERIFY(page.select(QString(Star + u"irc.oftc.net:6667"_s)));
    queueSave(*answers, {{u"Nickname:"_s, u"other"_s}});
    clickEdit(page);
    QCOMPARE(page.currentRow(), QString(Star + u"irc.oftc.net:6667"_s));
    QCOMPARE(favorites(), QStringList{u"irc.oftc.net_6667"_s});
    QCOMPARE(stored(u"irc.oftc.net_6667"_s, u"nickname"_s), QVariant(u"other"_s));
}

void TestConnectDialogServers::dropsTheStarWithTheAddress()
{
    storeCustom(u"own.example.org"_s, 6697);
    store(u"servers/favorites"_s, QStringList{u"own.example.org_6697"_s, u"irc.oftc.net_6667"_s});
    ConnectDialogPage page;
    QVERIFY(page.select(QString(Star + u"own.example.org:6697"_s)));
    const int place = page.list->currentRow();
    queueSave(*answers, {{u"Port:"_s, u"6698"_s}});
    clickEdit(page);
    QCOMPARE(page.currentRow(), u"own.example.org:6698"_s);
    QCOMPARE(page.list->currentRow(), place); // Sorted no earlier than the next sort.
    QCOMPARE(page.port->text(), u"6698"_s);
    QCOMPARE(page.nickname->text(), u"nick-of-own.example.org"_s);
    QCOMPARE(favorites(), QStringList{u"irc.oftc.net_6667"_s});
    QCOMPARE(customList(), QStringList{u"own.example.org_6698"_s});
    QVERIFY(!storedGroups().contains(u"own.example.org_6697"_s));
    QCOMPARE(stored(u"own.example.org_6698"_s, u"address"_s), QVariant(u"own.example.org:6698"_s));
    QCOMPARE(stored(u"own.example.org_6698"_s, u"nickname"_s),
             QVariant(u"nick-of-own.example.org"_s));
}

void TestConnectDialogServers::leavesARenamedDefaultToComeBack()
{
    {
        ConnectDialogPage page;
        QVERIFY(page.select(u"irc.oftc.net:6667"_s));
        queueSave(*answers, {{u"Port:"_s, u"6697"_s}});
        clickEdit(page);
        QCOMPARE(page.list->count(), 72);
        QCOMPARE(deletedDefaults(), QStringList());
        QCOMPARE(customList(), QStringList{u"irc.oftc.net_6697"_s});
        QVERIFY(!storedGroups().contains(u"irc.oftc.net_6667"_s));
    }
    const ConnectDialogPage page;
    QCOMPARE(page.list->count(), 73);
    QVERIFY(page.rows().contains(u"irc.oftc.net:6667"_s));
    QVERIFY(page.rows().contains(u"irc.oftc.net:6697"_s));
}

void TestConnectDialogServers::editsNothingOnCancel()
{
    const ConnectDialogPage page;
    const auto before = storeContents();
    answers->queueForDialog([](QDialog *form) {
        FormFields::field<QLineEdit>(form, u"Port:"_s)->setText(u"1"_s);
        form->findChild<QPushButton *>(u"cancelButton"_s)->click();
    });
    clickEdit(page);
    QCOMPARE(page.currentRow(), u"irc.libera.chat:6667"_s);
    QCOMPARE(storeContents(), before);
}

void TestConnectDialogServers::wantsAnAddressOfTwoPartsToEdit()
{
    const ConnectDialogPage page;
    const auto before = storeContents();
    queueSave(*answers, {{u"IRC server:"_s, u"::1"_s}});
    queueBox(*answers, QMessageBox::Warning, u"Invalid format"_s,
             u"Please use the format host:port"_s);
    clickEdit(page);
    QCOMPARE(page.currentRow(), u"irc.libera.chat:6667"_s);
    QCOMPARE(storeContents(), before);
}

void TestConnectDialogServers::refillsTheFieldsAfterEditing()
{
    ConnectDialogPage page;
    QVERIFY(page.select(u"irc.oftc.net:6667"_s));
    page.channels->setText(u"#typed"_s);
    queueSave(*answers, {{u"Nickname:"_s, u"nick"_s}});
    clickEdit(page);
    QCOMPARE(page.channels->text(), QString());
    QCOMPARE(page.nickname->text(), u"nick"_s);
}

void TestConnectDialogServers::editsNothingWithoutRow()
{
    const ConnectDialogPage page;
    page.list->setCurrentItem(nullptr);
    queueBox(*answers, QMessageBox::Information, u"Edit"_s, u"No server selected."_s);
    clickEdit(page);
}

void TestConnectDialogServers::editsNoRowThatIsNoAddress()
{
    store(u"servers/customList"_s, QStringList{u"my_host_6667"_s});
    ConnectDialogPage page;
    const auto before = storeContents();
    QVERIFY(page.select(u"my:host:6667"_s));
    clickEdit(page); // Not a word.
    QCOMPARE(storeContents(), before);
}

void TestConnectDialogServers::turnsTlsOffByEditing()
{
    store(u"servers/irc.oftc.net_6667/ssl"_s, true);
    ConnectDialogPage page;
    QVERIFY(page.select(u"irc.oftc.net:6667"_s));
    queueSave(*answers, {});
    clickEdit(page);
    QCOMPARE(stored(u"irc.oftc.net_6667"_s, u"ssl"_s).toBool(), false);
}

void TestConnectDialogServers::deletesADefaultForGood()
{
    {
        ConnectDialogPage page;
        QVERIFY(page.select(u"irc.oftc.net:6667"_s));
        queueConfirmation(*answers, QMessageBox::Yes);
        clickDelete(page);
        QCOMPARE(page.list->count(), 71);
        QVERIFY(!page.rows().contains(u"irc.oftc.net:6667"_s));
        QVERIFY(!page.currentRow().isEmpty());
    }
    for (int showing = 0; showing < 2; ++showing) {
        QCOMPARE(deletedDefaults(), QStringList{u"irc.oftc.net_6667"_s});
        QCOMPARE(customList(), QStringList());
        QVERIFY(!storedGroups().contains(u"irc.oftc.net_6667"_s));
        QCOMPARE(storedGroups().size(), 71);
        const ConnectDialogPage page;
        QVERIFY(!page.rows().contains(u"irc.oftc.net:6667"_s));
    }
}

void TestConnectDialogServers::deletesACustomServer()
{
    storeCustom(u"own.example.org"_s, 6697);
    storeCustom(u"own.example.org"_s, 669);
    store(u"servers/favorites"_s, QStringList{u"own.example.org_6697"_s, u"irc.oftc.net_6667"_s});
    ConnectDialogPage page;
    QVERIFY(page.select(QString(Star + u"own.example.org:6697"_s)));
    queueConfirmation(*answers, QMessageBox::Yes);
    clickDelete(page);
    QCOMPARE(page.list->count(), 73);
    QCOMPARE(customList(), QStringList{u"own.example.org_669"_s});
    QCOMPARE(favorites(), QStringList{u"irc.oftc.net_6667"_s});
    QCOMPARE(deletedDefaults(), QStringList());
    QVERIFY(!storedGroups().contains(u"own.example.org_6697"_s));
    QCOMPARE(stored(u"own.example.org_669"_s, u"nickname"_s),
             QVariant(u"nick-of-own.example.org"_s));
}

void TestConnectDialogServers::keepsTheMarkOfADeletedFavoriteDefault()
{
    store(u"servers/favorites"_s, QStringList{u"irc.oftc.net_6667"_s});
    {
        ConnectDialogPage page;
        QVERIFY(page.select(QString(Star + u"irc.oftc.net:6667"_s)));
        queueConfirmation(*answers, QMessageBox::Yes);
        clickDelete(page);
        QCOMPARE(favorites(), QStringList{u"irc.oftc.net_6667"_s});
    }
    ConnectDialogPage page;
    QCOMPARE(page.list->count(), 71);
    queueSave(*answers, {{u"IRC server:"_s, u"irc.oftc.net"_s}});
    clickAdd(page);
    const ConnectDialogPage again;
    QCOMPARE(again.rows().constFirst(), QString(Star + u"irc.oftc.net:6667"_s));
}

void TestConnectDialogServers::deletesARowThatIsNoAddress()
{
    store(u"servers/customList"_s, QStringList{u"my_host_6667"_s});
    ConnectDialogPage page;
    QVERIFY(page.select(u"my:host:6667"_s));
    queueConfirmation(*answers, QMessageBox::Yes);
    clickDelete(page);
    QCOMPARE(page.list->count(), 72);
    QCOMPARE(customList(), QStringList());
    QCOMPARE(deletedDefaults(), QStringList());
    QVERIFY(storedGroups().contains(u"my_host_6667"_s)); // Nothing tells which group is meant.
}

void TestConnectDialogServers::asksBeforeItDeletes_data()
{
    QTest::addColumn<QString>("theme");
    QTest::addColumn<QString>("background");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("hover");

    QTest::newRow("light") << u"light"_s << u"#FFFFFF"_s << u"#333333"_s << u"#FFE5E5"_s;
    QTest::newRow("dark") << u"dark"_s << u"#2E2E2E"_s << u"#DDDDDD"_s << u"#5F1E1E"_s;
    QTest::newRow("glass") << u"glass"_s << u"#FFFFFF"_s << u"#333333"_s << u"#FFE5E5"_s;
}

void TestConnectDialogServers::asksBeforeItDeletes()
{
    QFETCH(const QString, theme);
    QFETCH(const QString, background);
    QFETCH(const QString, text);
    QFETCH(const QString, hover);
    store(u"servers/favorites"_s, QStringList{u"irc.oftc.net_6667"_s});
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
    clickDelete(page);
    QCOMPARE(page.list->count(), 72);
}

void TestConnectDialogServers::deletesNothingUnlessTold_data()
{
    QTest::addColumn<int>("key");

    QTest::newRow("the default button") << int(Qt::Key_Return);
    QTest::newRow("Escape") << int(Qt::Key_Escape);
}

void TestConnectDialogServers::deletesNothingUnlessTold()
{
    QFETCH(const int, key);
    ConnectDialogPage page;
    const auto before = storeContents();
    answers->queueForBox(
            [key](QMessageBox *box) { QTest::keyClick(box, static_cast<Qt::Key>(key)); });
    clickDelete(page);
    QCOMPARE(page.list->count(), 72);
    QCOMPARE(page.currentRow(), u"irc.libera.chat:6667"_s);
    QCOMPARE(storeContents(), before);
}

void TestConnectDialogServers::deletesNothingWithoutRow()
{
    const ConnectDialogPage page;
    page.list->setCurrentItem(nullptr);
    queueBox(*answers, QMessageBox::Information, u"Delete"_s, u"No server selected."_s);
    clickDelete(page);
    QCOMPARE(page.list->count(), 72);
}

void TestConnectDialogServers::opensAMenuOnARow()
{
    store(u"servers/favorites"_s, QStringList{u"irc.oftc.net_6667"_s});
    ConnectDialogPage page;
    answers->queueForMenu([&page](QMenu *menu) {
        QCOMPARE(menu->parent(), &page.dialog);
        QCOMPARE(entriesOf(menu),
                 (QStringList{u"Edit"_s, u"Delete"_s, u"-"_s, u"Add to Favorites"_s}));
        // The row is current before the menu is up, so that its entries mean that row.
        QCOMPARE(page.currentRow(), u"irc.abjects.net:6667"_s);
        const QRect row = page.list->visualItemRect(page.list->currentItem());
        QCOMPARE(menu->pos(), page.list->mapToGlobal(row.center()));
        menu->close();
    });
    const auto before = storeContents();
    openMenu(page, u"irc.abjects.net:6667"_s);
    QCOMPARE(storeContents(), before);

    answers->queueForMenu([](QMenu *menu) {
        QCOMPARE(entriesOf(menu),
                 (QStringList{u"Edit"_s, u"Delete"_s, u"-"_s, u"Remove from Favorites"_s}));
        menu->close();
    });
    openMenu(page, QString(Star + u"irc.oftc.net:6667"_s));
}

void TestConnectDialogServers::opensNoMenuBesideTheRows()
{
    ConnectDialogPage page;
    page.dialog.show();
    while (page.list->count() > 1)
        delete page.list->takeItem(1);
    const int below = page.list->visualItemRect(page.list->item(0)).bottom() + 10;
    Q_EMIT page.list->customContextMenuRequested(QPoint(20, below));
    QVERIFY(page.list->itemAt(20, below) == nullptr);
}

void TestConnectDialogServers::offersNoFavoriteForARowThatIsNoAddress()
{
    store(u"servers/customList"_s, QStringList{u"my_host_6667"_s});
    ConnectDialogPage page;
    answers->queueForMenu([](QMenu *menu) {
        QCOMPARE(entriesOf(menu), (QStringList{u"Edit"_s, u"Delete"_s, u"-"_s}));
        menu->close();
    });
    openMenu(page, u"my:host:6667"_s);
}

void TestConnectDialogServers::editsAndDeletesFromTheMenu()
{
    ConnectDialogPage page;
    queueChoice(*answers, u"Edit"_s);
    queueSave(*answers, {{u"Nickname:"_s, u"nick"_s}});
    openMenu(page, u"irc.oftc.net:6667"_s);
    QCOMPARE(stored(u"irc.oftc.net_6667"_s, u"nickname"_s), QVariant(u"nick"_s));
    queueChoice(*answers, u"Delete"_s);
    queueConfirmation(*answers, QMessageBox::Yes);
    openMenu(page, u"irc.oftc.net:6667"_s);
    QCOMPARE(deletedDefaults(), QStringList{u"irc.oftc.net_6667"_s});
    QVERIFY(!page.rows().contains(u"irc.oftc.net:6667"_s));
}

void TestConnectDialogServers::togglesFavoritesFromTheMenu()
{
    ConnectDialogPage page;
    queueChoice(*answers, u"Add to Favorites"_s);
    openMenu(page, u"irc.oftc.net:6667"_s);
    QCOMPARE(favorites(), QStringList{u"irc.oftc.net_6667"_s});
    QCOMPARE(page.rows().constFirst(), QString(Star + u"irc.oftc.net:6667"_s));
    QCOMPARE(page.list->currentRow(), 0);
    queueChoice(*answers, u"Remove from Favorites"_s);
    openMenu(page, QString(Star + u"irc.oftc.net:6667"_s));
    QCOMPARE(favorites(), QStringList());
    QCOMPARE(page.rows().filter(Star), QStringList());
    QCOMPARE(page.currentRow(), u"irc.oftc.net:6667"_s);
    QVERIFY(page.list->currentRow() > 0);
    QCOMPARE(page.list->count(), 72);
}

void TestConnectDialogServers::keepsTheRowCurrentWhileSorting()
{
    store(u"servers/favorites"_s, QStringList{u"irc.oftc.net_6667"_s});
    ConnectDialogPage page;
    QVERIFY(page.select(QString(Star + u"irc.oftc.net:6667"_s)));
    page.list->insertItem(0, u"zzz.example.org:1"_s);
    queueSave(*answers, {{u"IRC server:"_s, u"aaa.example.org"_s}});
    clickAdd(page);
    QCOMPARE(page.currentRow(), u"aaa.example.org:6667"_s);
    QCOMPARE(page.rows().constLast(), u"zzz.example.org:1"_s);
}

void TestConnectDialogServers::fillsTheFieldsFromTheRowThatSortingRestores()
{
    storeCustom(u"own.example.org"_s, 6697);
    ConnectDialogPage page;
    queueChoice(*answers, u"Add to Favorites"_s);
    openMenu(page, u"own.example.org:6697"_s);
    QCOMPARE(page.server->text(), u"own.example.org"_s);
    QCOMPARE(page.port->text(), u"6697"_s);
    QCOMPARE(page.nickname->text(), u"nick-of-own.example.org"_s);
    page.realName->setText(u"Real"_s);
    page.button(u"connectButton"_s)->click();
    QCOMPARE(stored(u"own.example.org_6697"_s, u"realname"_s), QVariant(u"Real"_s));
}

void TestConnectDialogServers::livesWithADamagedStore()
{
    QFile file(temporaryStore.fileName());
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("[servers]\n"
               "customList=17, , my_host_6667, ::1_6667, half.example.org_1, \"\", a/b_2\n"
               "favorites=@Invalid()\n"
               "deletedDefaultServers=@Variant(\\0\\0\\0)\n"
               "irc.oftc.net_6667\\nickname=a, list, of, nicks\n"
               "irc.oftc.net_6667\\ssl=no idea\n"
               "irc.oftc.net_6667\\address=not an address\n"
               "irc.efnet.org_6667\\address=a, b\n"
               "irc.efnet.org_6667\\autojoin=17\n"
               "a/b_2\\nickname=slash\n"
               "nonsense without a value\n"
               "[connection]\nhistory=one:two:three\n");
    file.close();
    ConnectDialogPage page;
    QCOMPARE(page.currentRow(), u"irc.libera.chat:6667"_s);
    const QStringList rows = page.rows();
    for (const QString &row : {u"17"_s, u"my:host:6667"_s, u"::1:6667"_s, u"half.example.org:1"_s,
                               u"a/b:2"_s, u"not an address"_s, u"irc.efnet.org:6667"_s})
        QVERIFY2(rows.contains(row), qPrintable(row));
    for (const QString &row : rows)
        QVERIFY(page.select(row));
    // Going through all of it, and deleting the odd rows, touches no other server's group.
    for (const QString &row : {u"17"_s, u"my:host:6667"_s, u"::1:6667"_s, u"not an address"_s}) {
        QVERIFY(page.select(row));
        clickEdit(page);
        queueConfirmation(*answers, QMessageBox::Yes);
        clickDelete(page);
    }
    QCOMPARE(stored(u"irc.efnet.org_6667"_s, u"autojoin"_s), QVariant(u"17"_s));
    QCOMPARE(stored(u"irc.oftc.net_6667"_s, u"address"_s), QVariant(u"not an address"_s));
    const ConnectDialogPage again;
    QVERIFY(!again.rows().contains(u"my:host:6667"_s));
}

void TestConnectDialogServers::livesWithHalfGroups()
{
    store(u"servers/irc.oftc.net_6667/password"_s, u"secret"_s);
    store(u"servers/orphan.example.org_6667/nickname"_s, u"kept"_s);
    ConnectDialogPage page;
    QVERIFY(!page.rows().contains(u"orphan.example.org:6667"_s));
    QVERIFY(page.select(u"irc.oftc.net:6667"_s));
    page.nickname->setText(u"nick"_s);
    page.button(u"connectButton"_s)->click();
    QCOMPARE(page.dialog.password(), u"secret"_s);
    QCOMPARE(page.dialog.authMethod(), u"NickServ (/nickserv IDENTIFY)"_s);
    QCOMPARE(stored(u"orphan.example.org_6667"_s, u"nickname"_s), QVariant(u"kept"_s));
}

void TestConnectDialogServers::livesWithAStoreThatCannotBeWritten()
{
    storeCustom(u"own.example.org"_s, 6697);
    // Nobody can write below this path, root included.
    const QString folder = QFileInfo(temporaryStore.fileName()).dir().path();
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, u"/dev/null"_s);
    {
        ConnectDialogPage page;
        QCOMPARE(page.list->count(), 72);
        queueSave(*answers, {{u"IRC server:"_s, u"new.example.org"_s}});
        clickAdd(page);
        QCOMPARE(page.currentRow(), u"new.example.org:6667"_s);
        queueConfirmation(*answers, QMessageBox::Yes);
        clickDelete(page);
        QVERIFY(page.select(u"irc.oftc.net:6667"_s));
        page.nickname->setText(u"nick"_s);
        page.button(u"connectButton"_s)->click();
        QCOMPARE(page.dialog.result(), int(QDialog::Accepted));
        QCOMPARE(page.dialog.nickname(), u"nick"_s);
    }
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, QFileInfo(folder).path());
    QCOMPARE(stored(u"own.example.org_6697"_s, u"nickname"_s),
             QVariant(u"nick-of-own.example.org"_s));
}

void TestConnectDialogServers::livesWithTenThousandServers()
{
    {
        QSettings settings;
        QStringList ids;
        for (int i = 0; i < 10000; ++i) {
            ids.append(u"host%1.example.org_6667"_s.arg(i));
            settings.setValue(u"servers/%1/nickname"_s.arg(ids.constLast()), u"nick"_s);
        }
        settings.setValue(u"servers/customList"_s, ids);
    }
    ConnectDialogPage page;
    QCOMPARE(page.list->count(), 10072);
    QVERIFY(page.select(u"host9999.example.org:6667"_s));
    QCOMPARE(page.nickname->text(), u"nick"_s);
    queueChoice(*answers, u"Add to Favorites"_s);
    openMenu(page, u"host5000.example.org:6667"_s);
    QCOMPARE(page.rows().constFirst(), QString(Star + u"host5000.example.org:6667"_s));
    queueConfirmation(*answers, QMessageBox::Yes);
    clickDelete(page);
    QCOMPARE(customList().size(), 9999);
    QCOMPARE(storedGroups().size(), 10071);
}

void TestConnectDialogServers::survivesItsEndInsideABoxOrForm_data()
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

void TestConnectDialogServers::survivesItsEndInsideABoxOrForm()
{
    QFETCH(const QString, button);
    QFETCH(const int, windowsBefore);
    QFETCH(const QString, host);
    auto *dialog = new ConnectDialog(nullptr);
    const QPointer<ConnectDialog> guard = dialog;
    dialog->show();
    if (windowsBefore > 0)
        queueSave(*answers, {{u"IRC server:"_s, host}});
    answers->queueForDialog([dialog](QDialog *) { delete dialog; });
    dialog->findChild<QPushButton *>(button)->click();
    QVERIFY(guard == nullptr);
    QVERIFY(QApplication::activeModalWidget() == nullptr);
}

void TestConnectDialogServers::survivesItsEndInsideAMenu()
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

void TestConnectDialogServers::survivesRowsThatVanishMeanwhile()
{
    const ConnectDialogPage page;
    const auto before = storeContents();
    answers->queueForDialog([&page](QDialog *form) {
        page.list->clear();
        form->accept();
    });
    clickEdit(page);
    QCOMPARE(page.list->count(), 0);
    page.list->addItem(u"irc.oftc.net:6667"_s);
    page.list->setCurrentRow(0);
    answers->queueForBox([&page](QMessageBox *box) {
        page.list->clear();
        box->button(QMessageBox::Yes)->click();
    });
    clickDelete(page);
    QCOMPARE(storeContents(), before);
}

QTEST_MAIN(TestConnectDialogServers)
#include "tst_ConnectDialogServers.moc"
