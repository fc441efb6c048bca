#include "ConnectDialogPage.h"
#include "ModalAnswers.h"
#include "ServerAnswers.h"
#include "ServerRows.h"
#include "StoredServers.h"
#include "TemporaryStore.h"

#include <QFile>
#include <QFileInfo>
#include <QMenu>
#include <QMessageBox>
#include <QRegularExpression>
#include <QSettings>
#include <QSignalSpy>
#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

const auto Star = u"\u2605 "_s;

} // namespace

class TestConnectDialogServers final : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void listsTheCatalogueOnFirstUse();
    void seedsOnlyAddresses();
    void keepsStoredAddresses();
    void listsCustomServers();
    void omitsDeletedDefaults();
    void marksFavorites();
    void removesTheFavoriteMark_data();
    void removesTheFavoriteMark();
    void sortsFavoritesFirstIgnoringCase();
    void selectsTheLastServer();
    void selectsTheLastServerIfItIsAFavorite();
    void addsTheLastServerToTheList();
    void listsADeletedDefaultThatWasUsedLast();
    void selectsThePreferredServer_data();
    void selectsThePreferredServer();
    void selectsTheFirstRowWithoutThePreferredServer_data();
    void selectsTheFirstRowWithoutThePreferredServer();
    void opensAMenuOnARow();
    void opensNoMenuOutsideTheRows();
    void offersNoFavoriteForAnInvalidAddress();
    void editsAndDeletesFromTheMenu();
    void togglesFavoritesFromTheMenu();
    void scrollsToTheCurrentRowAfterSorting();
    void keepsTheCurrentRowWhenSorting();
    void fillsTheFieldsAfterSorting();
    void fillsTheFieldsFromEachCurrentRowWhileSorting();
    void reloadsItsLists();
    void toleratesADamagedStore();
    void toleratesIncompleteGroups();
    void toleratesAnUnwritableStore();
    void handlesTenThousandServers();

private:
    TemporaryStore temporaryStore;
    std::unique_ptr<ModalAnswers> answers;
};

void TestConnectDialogServers::init()
{
    temporaryStore.clear();
    answers = std::make_unique<ModalAnswers>();
    // The offscreen platform logs this when a window is raised.
    QTest::failOnWarning(QRegularExpression(u"^(?!This plugin does not support)"_s));
}

void TestConnectDialogServers::cleanup()
{
    QCOMPARE(answers->problems(), QStringList());
}

void TestConnectDialogServers::listsTheCatalogueOnFirstUse()
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

void TestConnectDialogServers::seedsOnlyAddresses()
{
    const ConnectDialogPage page;
    const auto contents = StoredServers::everything();
    QCOMPARE(contents.size(), 72);
    const QStringList rows = page.rows();
    for (const QString &row : rows) {
        const QString id = QString(row).replace(u':', u'_');
        QCOMPARE(contents.value(u"servers/%1/address"_s.arg(id)), QVariant(row));
    }
}

void TestConnectDialogServers::keepsStoredAddresses()
{
    QSettings().setValue(u"servers/irc.oftc.net_6667/address"_s, u"other.example.org:1"_s);
    const ConnectDialogPage page;
    QCOMPARE(StoredServers::value(u"irc.oftc.net_6667"_s, u"address"_s),
             QVariant(u"other.example.org:1"_s));
    QVERIFY(page.rows().contains(u"other.example.org:1"_s));
    QVERIFY(!page.rows().contains(u"irc.oftc.net:6667"_s));
}

void TestConnectDialogServers::listsCustomServers()
{
    StoredServers::addCustom(u"own.example.org"_s, 6697);
    QSettings().setValue(u"servers/customList"_s,
                         QStringList{u"own.example.org_6697"_s, u"irc.oftc.net_6667"_s,
                                     u"bare.example.org_1"_s, u"my_host_6667"_s});
    ConnectDialogPage page;
    QCOMPARE(page.list->count(), 75);
    QVERIFY(page.rows().contains(u"bare.example.org:1"_s));
    QVERIFY(page.rows().contains(u"my:host:6667"_s));
    QCOMPARE(StoredServers::value(u"bare.example.org_1"_s, u"address"_s),
             QVariant(u"bare.example.org:1"_s));
    QCOMPARE(StoredServers::value(u"my_host_6667"_s, u"address"_s), QVariant(u"my:host:6667"_s));
    QVERIFY(page.select(u"own.example.org:6697"_s));
    QCOMPARE(page.nickname->text(), u"nick-of-own.example.org"_s);
}

void TestConnectDialogServers::omitsDeletedDefaults()
{
    QSettings().setValue(u"servers/deletedDefaultServers"_s,
                         QStringList{u"irc.oftc.net_6667"_s, u"nowhere.org_1"_s});
    const ConnectDialogPage page;
    QCOMPARE(page.list->count(), 71);
    QVERIFY(!page.rows().contains(u"irc.oftc.net:6667"_s));
    QVERIFY(!StoredServers::groups().contains(u"irc.oftc.net_6667"_s));
}

void TestConnectDialogServers::marksFavorites()
{
    QSettings().setValue(u"servers/favorites"_s,
                         QStringList{u"irc.oftc.net_6667"_s, u"nowhere.org_1"_s});
    const ConnectDialogPage page;
    QCOMPARE(page.list->count(), 72);
    QCOMPARE(page.rows().constFirst(), QString(Star + u"irc.oftc.net:6667"_s));
    QCOMPARE(page.rows().filter(Star).size(), 1);
}

void TestConnectDialogServers::removesTheFavoriteMark_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("address");

    QTest::newRow("favourite") << u"\u2605 a.org:6667"_s << u"a.org:6667"_s;
    QTest::newRow("plain") << u"a.org:6667"_s << u"a.org:6667"_s;
    QTest::newRow("star without space") << u"\u2605a.org:6667"_s << u"\u2605a.org:6667"_s;
    QTest::newRow("mark at the end") << u"a.org:6667\u2605 "_s << u"a.org:6667\u2605 "_s;
    QTest::newRow("two marks") << u"\u2605 \u2605 a"_s << u"\u2605 a"_s;
    QTest::newRow("empty") << u""_s << u""_s;
}

void TestConnectDialogServers::removesTheFavoriteMark()
{
    QFETCH(const QString, text);
    QTEST(ServerRows::cleanAddress(text), "address");
}

void TestConnectDialogServers::sortsFavoritesFirstIgnoringCase()
{
    for (const QString &host : {u"b.fav"_s, u"A.fav"_s, u"B.own"_s, u"a.own"_s})
        StoredServers::addCustom(host, 1);
    QStringList defaultIds = ConnectDialog::defaultServers();
    defaultIds.replaceInStrings(u":"_s, u"_"_s);
    QSettings().setValue(u"servers/deletedDefaultServers"_s, defaultIds);
    QSettings().setValue(u"servers/favorites"_s, QStringList{u"b.fav_1"_s, u"A.fav_1"_s});
    ConnectDialogPage page;
    const QStringList sorted{QString(Star + u"A.fav:1"_s), QString(Star + u"b.fav:1"_s),
                             u"a.own:1"_s, u"B.own:1"_s};
    QCOMPARE(page.rows(), sorted);
    QCOMPARE(page.currentRow(), QString(Star + u"A.fav:1"_s)); // The preferred default is deleted.

    // Sorting again keeps the current row.
    page.list->insertItem(0, page.list->takeItem(3));
    page.list->addItem(u"Aa.own:1"_s);
    ServerAnswers::choose(*answers, u"Add to Favorites"_s);
    page.openMenu(u"Aa.own:1"_s);
    QCOMPARE(page.rows(), (QStringList{QString(Star + u"A.fav:1"_s), QString(Star + u"Aa.own:1"_s),
                                       QString(Star + u"b.fav:1"_s), u"a.own:1"_s, u"B.own:1"_s}));
    QCOMPARE(page.currentRow(), QString(Star + u"Aa.own:1"_s));
}

void TestConnectDialogServers::selectsTheLastServer()
{
    QSettings().setValue(u"connection/history"_s,
                         QStringList{u"irc.efnet.org:6667"_s, u"irc.oftc.net:6667"_s});
    QSettings().setValue(u"servers/irc.oftc.net_6667/nickname"_s, u"nick"_s);
    const ConnectDialogPage page;
    QCOMPARE(page.currentRow(), u"irc.oftc.net:6667"_s);
    QCOMPARE(page.server->text(), u"irc.oftc.net"_s);
    QCOMPARE(page.nickname->text(), u"nick"_s);
    QCOMPARE(page.list->count(), 72);
    QVERIFY(!QSettings().contains(u"servers/customList"_s));
}

void TestConnectDialogServers::selectsTheLastServerIfItIsAFavorite()
{
    QSettings().setValue(u"servers/favorites"_s, QStringList{u"irc.oftc.net_6667"_s});
    QSettings().setValue(u"connection/history"_s, QStringList{u"irc.oftc.net:6667"_s});
    const ConnectDialogPage page;
    QCOMPARE(page.currentRow(), QString(Star + u"irc.oftc.net:6667"_s));
    QCOMPARE(page.list->count(), 72);
}

void TestConnectDialogServers::addsTheLastServerToTheList()
{
    QSettings().setValue(u"connection/history"_s, QStringList{u"a.example.org:6697"_s});
    // The session stores the record of a server whose address the user typed.
    QSettings().setValue(u"servers/a.example.org_6697/nickname"_s, u"nick"_s);
    {
        const ConnectDialogPage page;
        QCOMPARE(page.list->count(), 73);
        QCOMPARE(page.rows().constLast(), u"a.example.org:6697"_s); // Not sorted yet.
        QCOMPARE(page.currentRow(), u"a.example.org:6697"_s);
        QCOMPARE(page.server->text(), u"a.example.org"_s);
        QCOMPARE(page.port->text(), u"6697"_s);
        QCOMPARE(page.nickname->text(), QString()); // Its record is not loaded yet.
        QCOMPARE(StoredServers::customIds(), QStringList{u"a.example.org_6697"_s});
        QCOMPARE(StoredServers::value(u"a.example.org_6697"_s, u"address"_s),
                 QVariant(u"a.example.org:6697"_s));
    }
    const ConnectDialogPage page;
    QCOMPARE(page.rows().constFirst(), u"a.example.org:6697"_s);
    QCOMPARE(page.currentRow(), u"a.example.org:6697"_s);
    QCOMPARE(page.nickname->text(), u"nick"_s);
}

void TestConnectDialogServers::listsADeletedDefaultThatWasUsedLast()
{
    QSettings().setValue(u"servers/deletedDefaultServers"_s, QStringList{u"irc.oftc.net_6667"_s});
    QSettings().setValue(u"connection/history"_s, QStringList{u"irc.oftc.net:6667"_s});
    for (int showing = 0; showing < 2; ++showing) {
        const ConnectDialogPage page;
        QCOMPARE(page.list->count(), 72);
        QCOMPARE(page.rows().constLast(), u"irc.oftc.net:6667"_s);
        QCOMPARE(page.currentRow(), u"irc.oftc.net:6667"_s);
        QCOMPARE(StoredServers::deletedDefaultIds(), QStringList{u"irc.oftc.net_6667"_s});
        QCOMPARE(StoredServers::customIds(), QStringList());
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
    QSettings().setValue(u"connection/history"_s, history);
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
    QSettings().setValue(u"servers/favorites"_s, QStringList{u"irc.abjects.net_6667"_s});
    QStringList ids = QSettings().value(key).toStringList();
    ids.append(u"irc.libera.chat_6667"_s);
    QSettings().setValue(key, ids);
    const ConnectDialogPage page;
    QCOMPARE(page.currentRow(), QString(Star + u"irc.abjects.net:6667"_s));
    QCOMPARE(page.list->currentRow(), 0);
}

void TestConnectDialogServers::opensAMenuOnARow()
{
    QSettings().setValue(u"servers/favorites"_s, QStringList{u"irc.oftc.net_6667"_s});
    ConnectDialogPage page;
    answers->queueForMenu([&page](QMenu *menu) {
        QCOMPARE(menu->parent(), &page.dialog);
        QCOMPARE(ModalAnswers::entriesOf(*menu),
                 (QStringList{u"Edit"_s, u"Delete"_s, u"-"_s, u"Add to Favorites"_s}));
        // Current before the menu opens, since the menu's actions apply to the current row.
        QCOMPARE(page.currentRow(), u"irc.abjects.net:6667"_s);
        const QRect row = page.list->visualItemRect(page.list->currentItem());
        QCOMPARE(menu->pos(), page.list->mapToGlobal(row.center()));
        menu->close();
    });
    const auto before = StoredServers::everything();
    page.openMenu(u"irc.abjects.net:6667"_s);
    QCOMPARE(StoredServers::everything(), before);

    answers->queueForMenu([](QMenu *menu) {
        QCOMPARE(ModalAnswers::entriesOf(*menu),
                 (QStringList{u"Edit"_s, u"Delete"_s, u"-"_s, u"Remove from Favorites"_s}));
        menu->close();
    });
    page.openMenu(QString(Star + u"irc.oftc.net:6667"_s));
}

void TestConnectDialogServers::opensNoMenuOutsideTheRows()
{
    ConnectDialogPage page;
    page.dialog.show();
    while (page.list->count() > 1)
        delete page.list->takeItem(1);
    const int below = page.list->visualItemRect(page.list->item(0)).bottom() + 10;
    Q_EMIT page.list->customContextMenuRequested(QPoint(20, below));
    QVERIFY(page.list->itemAt(20, below) == nullptr);
}

void TestConnectDialogServers::offersNoFavoriteForAnInvalidAddress()
{
    QSettings().setValue(u"servers/customList"_s, QStringList{u"my_host_6667"_s});
    ConnectDialogPage page;
    answers->queueForMenu([](QMenu *menu) {
        QCOMPARE(ModalAnswers::entriesOf(*menu), (QStringList{u"Edit"_s, u"Delete"_s, u"-"_s}));
        menu->close();
    });
    page.openMenu(u"my:host:6667"_s);
}

void TestConnectDialogServers::editsAndDeletesFromTheMenu()
{
    ConnectDialogPage page;
    ServerAnswers::choose(*answers, u"Edit"_s);
    ServerAnswers::save(*answers, {{u"Nickname:"_s, u"nick"_s}});
    page.openMenu(u"irc.oftc.net:6667"_s);
    QCOMPARE(StoredServers::value(u"irc.oftc.net_6667"_s, u"nickname"_s), QVariant(u"nick"_s));
    ServerAnswers::choose(*answers, u"Delete"_s);
    ServerAnswers::pressButton(*answers, QMessageBox::Yes);
    page.openMenu(u"irc.oftc.net:6667"_s);
    QCOMPARE(StoredServers::deletedDefaultIds(), QStringList{u"irc.oftc.net_6667"_s});
    QVERIFY(!page.rows().contains(u"irc.oftc.net:6667"_s));
}

void TestConnectDialogServers::togglesFavoritesFromTheMenu()
{
    ConnectDialogPage page;
    ServerAnswers::choose(*answers, u"Add to Favorites"_s);
    page.openMenu(u"irc.oftc.net:6667"_s);
    QCOMPARE(StoredServers::favoriteIds(), QStringList{u"irc.oftc.net_6667"_s});
    QCOMPARE(page.rows().constFirst(), QString(Star + u"irc.oftc.net:6667"_s));
    QCOMPARE(page.list->currentRow(), 0);
    ServerAnswers::choose(*answers, u"Remove from Favorites"_s);
    page.openMenu(QString(Star + u"irc.oftc.net:6667"_s));
    QCOMPARE(StoredServers::favoriteIds(), QStringList());
    QCOMPARE(page.rows().filter(Star), QStringList());
    QCOMPARE(page.currentRow(), u"irc.oftc.net:6667"_s);
    QVERIFY(page.list->currentRow() > 0);
    QCOMPARE(page.list->count(), 72);
}

// Sorting removes all rows, which scrolls the list to its top, and then scrolls to the current row.
void TestConnectDialogServers::scrollsToTheCurrentRowAfterSorting()
{
    QSettings().setValue(u"servers/favorites"_s, QStringList{u"irc.oftc.net_6667"_s});
    ConnectDialogPage page;
    ServerAnswers::choose(*answers, u"Remove from Favorites"_s);
    page.openMenu(QString(Star + u"irc.oftc.net:6667"_s));
    const QListWidgetItem *row = page.list->currentItem();
    QCOMPARE(row->text(), u"irc.oftc.net:6667"_s);
    const int height = page.list->visualItemRect(row).height();
    const QRect visible = page.list->viewport()->rect();
    QVERIFY(page.list->row(row) * height > visible.height());
    QVERIFY(visible.contains(page.list->visualItemRect(row)));
    QVERIFY(page.list->visualItemRect(row).bottom() + height > visible.bottom());
}

void TestConnectDialogServers::keepsTheCurrentRowWhenSorting()
{
    QSettings().setValue(u"servers/favorites"_s, QStringList{u"irc.oftc.net_6667"_s});
    ConnectDialogPage page;
    QVERIFY(page.select(QString(Star + u"irc.oftc.net:6667"_s)));
    page.list->insertItem(0, u"zzz.example.org:1"_s);
    ServerAnswers::save(*answers, {{u"IRC server:"_s, u"aaa.example.org"_s}});
    page.clickAdd();
    QCOMPARE(page.currentRow(), u"aaa.example.org:6667"_s);
    QCOMPARE(page.rows().constLast(), u"zzz.example.org:1"_s);
}

void TestConnectDialogServers::fillsTheFieldsAfterSorting()
{
    StoredServers::addCustom(u"own.example.org"_s, 6697);
    ConnectDialogPage page;
    ServerAnswers::choose(*answers, u"Add to Favorites"_s);
    page.openMenu(u"own.example.org:6697"_s);
    QCOMPARE(page.server->text(), u"own.example.org"_s);
    QCOMPARE(page.port->text(), u"6697"_s);
    QCOMPARE(page.nickname->text(), u"nick-of-own.example.org"_s);
    page.realName->setText(u"Real"_s);
    page.clickConnect();
    QCOMPARE(StoredServers::value(u"own.example.org_6697"_s, u"realname"_s), QVariant(u"Real"_s));
}

void TestConnectDialogServers::fillsTheFieldsFromEachCurrentRowWhileSorting()
{
    StoredServers::addCustom(u"own.example.org"_s, 6697);
    ConnectDialogPage page;
    QVERIFY(page.select(u"own.example.org:6697"_s));
    const QSignalSpy hosts(page.server, &QLineEdit::textChanged);
    const QSignalSpy nicks(page.nickname, &QLineEdit::textChanged);
    ServerAnswers::choose(*answers, u"Add to Favorites"_s);
    page.openMenu(u"own.example.org:6697"_s);
    // Each field changes to another row's value and back.
    QVERIFY(hosts.size() >= 2);
    QVERIFY(hosts.constFirst().constFirst().toString() != u"own.example.org"_s);
    QCOMPARE(hosts.constLast().constFirst().toString(), u"own.example.org"_s);
    QCOMPARE(nicks.constFirst().constFirst().toString(), QString());
    QCOMPARE(nicks.constLast().constFirst().toString(), u"nick-of-own.example.org"_s);
}

void TestConnectDialogServers::reloadsItsLists()
{
    QSettings().setValue(u"servers/favorites"_s, QStringList{u"irc.oftc.net_6667"_s});
    QSettings().setValue(u"servers/deletedDefaultServers"_s, QStringList{u"irc.efnet.org_6667"_s});
    ConnectDialogPage page;
    QSettings().setValue(u"servers/favorites"_s, QStringList{u"irc.rizon.net_6667"_s});
    QSettings().setValue(u"servers/deletedDefaultServers"_s, QStringList{u"irc.w3.org_6667"_s});
    QVERIFY(QMetaObject::invokeMethod(&page.dialog, "loadSettings"));
    QCOMPARE(page.rows().filter(Star), QStringList{Star + u"irc.rizon.net:6667"_s});
    QVERIFY(page.rows().contains(u"irc.efnet.org:6667"_s));
    QVERIFY(!page.rows().contains(u"irc.w3.org:6667"_s));
}

void TestConnectDialogServers::toleratesADamagedStore()
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
    // Selecting every row and deleting the invalid ones changes no other server's group.
    for (const QString &row : {u"17"_s, u"my:host:6667"_s, u"::1:6667"_s, u"not an address"_s}) {
        QVERIFY(page.select(row));
        page.clickEdit();
        ServerAnswers::pressButton(*answers, QMessageBox::Yes);
        page.clickDelete();
    }
    QCOMPARE(StoredServers::value(u"irc.efnet.org_6667"_s, u"autojoin"_s), QVariant(u"17"_s));
    QCOMPARE(StoredServers::value(u"irc.oftc.net_6667"_s, u"address"_s),
             QVariant(u"not an address"_s));
    const ConnectDialogPage again;
    QVERIFY(!again.rows().contains(u"my:host:6667"_s));
}

void TestConnectDialogServers::toleratesIncompleteGroups()
{
    QSettings().setValue(u"servers/irc.oftc.net_6667/password"_s, u"secret"_s);
    QSettings().setValue(u"servers/orphan.example.org_6667/nickname"_s, u"kept"_s);
    ConnectDialogPage page;
    QVERIFY(!page.rows().contains(u"orphan.example.org:6667"_s));
    QVERIFY(page.select(u"irc.oftc.net:6667"_s));
    page.nickname->setText(u"nick"_s);
    page.clickConnect();
    QCOMPARE(page.dialog.password(), u"secret"_s);
    QCOMPARE(page.dialog.authMethod(), u"NickServ (/nickserv IDENTIFY)"_s);
    QCOMPARE(StoredServers::value(u"orphan.example.org_6667"_s, u"nickname"_s),
             QVariant(u"kept"_s));
}

void TestConnectDialogServers::toleratesAnUnwritableStore()
{
    StoredServers::addCustom(u"own.example.org"_s, 6697);
    // Not even root can write below this path.
    const QString folder = QFileInfo(temporaryStore.fileName()).dir().path();
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, u"/dev/null"_s);
    {
        ConnectDialogPage page;
        QCOMPARE(page.list->count(), 72);
        ServerAnswers::save(*answers, {{u"IRC server:"_s, u"new.example.org"_s}});
        page.clickAdd();
        QCOMPARE(page.currentRow(), u"new.example.org:6667"_s);
        ServerAnswers::pressButton(*answers, QMessageBox::Yes);
        page.clickDelete();
        QVERIFY(page.select(u"irc.oftc.net:6667"_s));
        page.nickname->setText(u"nick"_s);
        page.clickConnect();
        QCOMPARE(page.dialog.result(), int(QDialog::Accepted));
        QCOMPARE(page.dialog.nickname(), u"nick"_s);
    }
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, QFileInfo(folder).path());
    QCOMPARE(StoredServers::value(u"own.example.org_6697"_s, u"nickname"_s),
             QVariant(u"nick-of-own.example.org"_s));
}

void TestConnectDialogServers::handlesTenThousandServers()
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
    ServerAnswers::choose(*answers, u"Add to Favorites"_s);
    page.openMenu(u"host5000.example.org:6667"_s);
    QCOMPARE(page.rows().constFirst(), QString(Star + u"host5000.example.org:6667"_s));
    ServerAnswers::pressButton(*answers, QMessageBox::Yes);
    page.clickDelete();
    QCOMPARE(StoredServers::customIds().size(), 9999);
    QCOMPARE(StoredServers::groups().size(), 10071);
}

QTEST_MAIN(TestConnectDialogServers)
#include "tst_ConnectDialogServers.moc"
