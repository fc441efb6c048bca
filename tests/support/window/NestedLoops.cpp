#include "NestedLoops.h"

#include "ConnectDialog.h"
#include "FormFields.h"
#include "HighlightTabBar.h"
#include "IRCConnection.h"
#include "PreferencesDialog.h"
#include "PreferencesForm.h"
#include "StoredServers.h"

#include <QAction>
#include <QApplication>
#include <QColorDialog>
#include <QDir>
#include <QFontDialog>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
#include <QTextEdit>
#include <QTreeWidget>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

const auto Autojoin = u"Autojoin on connect"_s;
const auto NewServer = u"irc.example.org"_s;

// Entries of the window's menus that open a dialog.
template <const QString &Entry>
void openByEntry(NestedLoopFixture &fixture)
{
    fixture.awaitDialog();
    fixture.session.choose(Entry);
}
const auto About = u"About Velmora"_s;
const auto Away = u"Marked Away..."_s;
const auto Help = u"Help"_s;
const auto Join = u"&Join channel..."_s;
const auto Nick = u"Change Nick..."_s;

// ---------------------------------------------------------------------------------------------
// Menus over the main window

void openTabMenu(NestedLoopFixture &fixture)
{
    fixture.awaitMenu();
    HighlightTabBar &bar = fixture.session.probe.tabBar();
    ModalAnswers::rightClick(bar, bar.tabRect(1).center());
}

void openMenuOfUser(NestedLoopFixture &fixture, const QString &entry)
{
    const MainWindowProbe &probe = fixture.session.probe;
    ModalAnswers::rightClick(*probe.userList().viewport(), probe.positionOfUser(entry));
}

void openUserMenu(NestedLoopFixture &fixture)
{
    fixture.awaitMenu();
    openMenuOfUser(fixture, u"alice"_s);
}

template <const QString &Entry>
void openByOwnMenu(NestedLoopFixture &fixture)
{
    fixture.answers.queueForMenu(ModalAnswers::choosing(Entry));
    fixture.awaitDialog();
    openMenuOfUser(fixture, u"@me"_s);
}

void openListMenu(NestedLoopFixture &fixture)
{
    fixture.awaitMenu();
    fixture.session.probe.showTab(u"List"_s);
    QTreeWidget *tree = fixture.session.probe.listTree();
    ModalAnswers::rightClick(*tree->viewport(),
                             tree->visualItemRect(tree->topLevelItem(0)).center());
}

// ---------------------------------------------------------------------------------------------
// The topic

void editTopic(NestedLoopFixture &fixture)
{
    fixture.session.probe.tabs().value(u"#a"_s).editTopicBtn->click();
}

void openEditor(NestedLoopFixture &fixture)
{
    fixture.awaitDialog();
    editTopic(fixture);
}

template <const QString &Entry>
void openByEditor(NestedLoopFixture &fixture)
{
    fixture.answers.queueForDialog([&fixture](QDialog *editor) {
        fixture.awaitDialog();
        FormFields::childWithText<QAction>(editor, Entry)->trigger();
        editor->accept();
    });
    editTopic(fixture);
}
const auto TextColor = u"Text Color"_s;
const auto BackgroundColor = u"Background Color"_s;

void openRefusal(NestedLoopFixture &fixture)
{
    fixture.awaitDialog();
    fixture.session.probe.channelUsers().insert(u"#a"_s, {u"alice"_s, u"me"_s});
    editTopic(fixture);
}

void openRefusalToJoin(NestedLoopFixture &fixture)
{
    fixture.awaitDialog();
    fixture.session.choose(u"&Disconnect"_s);
    fixture.session.choose(Join);
}

// ---------------------------------------------------------------------------------------------
// The connect dialog

ConnectDialog *openConnectDialog(NestedLoopFixture &fixture)
{
    fixture.session.choose(u"&Connect..."_s);
    return fixture.session.window.findChild<ConnectDialog *>();
}

QListWidget *serverList(const NestedLoopFixture &fixture)
{
    return fixture.session.window.findChild<ConnectDialog *>()->findChild<QListWidget *>();
}

bool hasServer(const NestedLoopFixture &fixture, const QString &address)
{
    return !serverList(fixture)->findItems(address, Qt::MatchExactly).isEmpty();
}

template <const QString &Button>
void openByButton(NestedLoopFixture &fixture)
{
    const ConnectDialog *dialog = openConnectDialog(fixture);
    fixture.awaitDialog();
    dialog->findChild<QPushButton *>(Button)->click();
}
const auto Add = u"addButton"_s;
const auto Edit = u"editButton"_s;
const auto Delete = u"deleteButton"_s;

template <const QString &Button>
void openWithoutSelection(NestedLoopFixture &fixture)
{
    const ConnectDialog *dialog = openConnectDialog(fixture);
    serverList(fixture)->setCurrentItem(nullptr);
    fixture.awaitDialog();
    dialog->findChild<QPushButton *>(Button)->click();
}

void saveForm(QWidget *form, const QString &host)
{
    FormFields::field<QLineEdit>(form, u"IRC server:"_s)->setText(host);
    form->findChild<QPushButton *>(u"connectButton"_s)->click();
}

template <const QString &Button, const QString &Host>
void openAfterForm(NestedLoopFixture &fixture)
{
    const ConnectDialog *dialog = openConnectDialog(fixture);
    fixture.answers.queueForDialog([](QDialog *form) { saveForm(form, Host); });
    fixture.awaitDialog();
    dialog->findChild<QPushButton *>(Button)->click();
}
const auto OddHost = u"::1"_s;
const auto ListedHost = u"irc.oftc.net"_s;

void openConnectError(NestedLoopFixture &fixture)
{
    const ConnectDialog *dialog = openConnectDialog(fixture);
    dialog->findChild<QLineEdit *>()->clear();
    fixture.awaitDialog();
    dialog->findChild<QPushButton *>(u"connectButton"_s)->click();
}

void openMenuOfServer(NestedLoopFixture &fixture)
{
    openConnectDialog(fixture);
    QListWidget *list = serverList(fixture);
    list->scrollToItem(list->currentItem());
    ModalAnswers::rightClick(*list->viewport(), list->visualItemRect(list->currentItem()).center());
}

void openServerMenu(NestedLoopFixture &fixture)
{
    fixture.awaitMenu();
    openMenuOfServer(fixture);
}

template <const QString &Entry>
void openByServerMenu(NestedLoopFixture &fixture)
{
    fixture.answers.queueForMenu(ModalAnswers::choosing(Entry));
    fixture.awaitDialog();
    openMenuOfServer(fixture);
}
const auto EditEntry = u"Edit"_s;
const auto DeleteEntry = u"Delete"_s;

// ---------------------------------------------------------------------------------------------
// The preferences

const PreferencesDialog *preferences(const NestedLoopFixture &fixture)
{
    return fixture.session.window.findChild<PreferencesDialog *>();
}

template <const QString &Button>
void openByPreferences(NestedLoopFixture &fixture)
{
    QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    fixture.session.choose(u"&Preferences..."_s);
    fixture.awaitDialog();
    FormFields::childWithText<QPushButton>(preferences(fixture), Button)->click();
}
const auto Font = u"Monaco 12"_s;
const auto Image = u"Choose Image..."_s;
const auto Color = u"Solid Color..."_s;
const auto LogPath = u"..."_s;

// ---------------------------------------------------------------------------------------------
// Answers

void confirm(QWidget *shown)
{
    const auto *box = qobject_cast<QMessageBox *>(shown);
    const auto buttons = box->buttons();
    // "Yes" or "OK" is the first button.
    buttons.constFirst()->click();
}

void accept(QWidget *shown)
{
    qobject_cast<QDialog *>(shown)->accept();
}

template <const QString &Entry>
void chooseEntry(QWidget *shown)
{
    ModalAnswers::choosing(Entry)(qobject_cast<QMenu *>(shown));
}
const auto AddToFavorites = u"Add to Favorites"_s;
const auto OpenChat = u"Open Private Chat"_s;

void typeText(QWidget *shown)
{
    shown->findChild<QLineEdit *>()->setText(u"text"_s);
    accept(shown);
}

void writeTopic(QWidget *shown)
{
    shown->findChild<QTextEdit *>()->setPlainText(u"text"_s);
    accept(shown);
}

void fillForm(QWidget *shown)
{
    saveForm(shown, NewServer);
}

void chooseRed(QWidget *shown)
{
    qobject_cast<QColorDialog *>(shown)->setCurrentColor(Qt::red);
    accept(shown);
}

void chooseFont(QWidget *shown)
{
    qobject_cast<QFontDialog *>(shown)->setCurrentFont(QFont(u"DejaVu Serif"_s, 15));
    accept(shown);
}

template <QString (*Path)()>
void choosePath(QWidget *shown)
{
    shown->findChild<QLineEdit *>(u"fileNameEdit"_s)->setText(Path());
    accept(shown);
}

QString folderPath()
{
    return QDir::tempPath();
}

// ---------------------------------------------------------------------------------------------
// Effects

bool hasNoEffect(const NestedLoopFixture &)
{
    return true;
}

template <const QString &Channel>
bool isAutojoined(const NestedLoopFixture &fixture)
{
    return fixture.session.probe.autojoinChannels() == QStringList{Channel};
}
const auto OwnChannel = u"#a"_s;
const auto ListedChannel = u"#b"_s;

bool isChatOpen(const NestedLoopFixture &fixture)
{
    return fixture.session.probe.currentTabName() == "alice"_L1;
}

bool isAway(const NestedLoopFixture &fixture)
{
    return fixture.session.probe.awayMessage() == "text"_L1;
}

bool isNickPending(const NestedLoopFixture &fixture)
{
    return fixture.session.probe.pendingNick() == "text"_L1;
}

bool isJoining(const NestedLoopFixture &fixture)
{
    return fixture.session.server.waitForLine(u"JOIN #text"_s);
}

template <const QString &Topic>
bool isTopic(const NestedLoopFixture &fixture)
{
    return fixture.session.probe.channelTopics().value(u"#a"_s) == Topic;
}
const auto Written = u"text"_s;
const auto RedText = u"\u0003"
                     "4topic"_s;
const auto RedBackground = u"\u0003"
                           "0,4\u0003topic"_s;

bool isNoTopicSent(const NestedLoopFixture &fixture)
{
    return fixture.session.server.lines().filter(u"TOPIC"_s).isEmpty();
}

bool isServerAdded(const NestedLoopFixture &fixture)
{
    return hasServer(fixture, NewServer + u":6667"_s);
}

bool isServerEdited(const NestedLoopFixture &fixture)
{
    return hasServer(fixture, u"%1:%2"_s.arg(NewServer).arg(fixture.session.server.port()));
}

bool isServerDeleted(const NestedLoopFixture &fixture)
{
    return !hasServer(fixture, u"127.0.0.1:%1"_s.arg(fixture.session.server.port()));
}

bool isServerFavorite(const NestedLoopFixture &)
{
    return StoredServers::favoriteIds().size() == 1;
}

bool isListedServerSelected(const NestedLoopFixture &fixture)
{
    return serverList(fixture)->currentItem()->text() == ListedHost + u":6667"_s;
}

bool isFontChosen(const NestedLoopFixture &fixture)
{
    return fixture.session.probe.chatFont().family() == "DejaVu Serif"_L1;
}

bool previewShows(const NestedLoopFixture &fixture, const QString &text)
{
    const QList<QLabel *> labels = preferences(fixture)->findChildren<QLabel *>();
    return std::any_of(labels.cbegin(), labels.cend(),
                       [&text](const QLabel *label) { return label->styleSheet().contains(text); });
}

bool isImageShown(const NestedLoopFixture &fixture)
{
    return previewShows(fixture, PreferencesForm::imagePath());
}

bool isColorShown(const NestedLoopFixture &fixture)
{
    return previewShows(fixture, u"#ff0000"_s);
}

bool isPathChosen(const NestedLoopFixture &fixture)
{
    return FormFields::childWithText<QLineEdit>(preferences(fixture), folderPath()) != nullptr;
}

} // namespace

bool NestedLoopFixture::joinChannels()
{
    const bool hasJoined = session.registerAs(u"me"_s) && session.join(u"#a"_s, u"@me alice"_s)
                           && session.receiveAll({u":irc.test 332 me #a :topic"_s,
                                                  u":irc.test 321 me :Channels"_s});
    session.choose(u"Channel &List"_s);
    const bool isListed =
            session.receiveAll({u":irc.test 322 me #b 9 :Topic"_s, u":irc.test 323 me :End"_s});
    session.probe.showTab(u"#a"_s);
    return hasJoined && isListed;
}

void NestedLoopFixture::awaitDialog()
{
    answers.queueForDialog([this](QDialog *shown) { inside(shown); });
}

void NestedLoopFixture::awaitMenu()
{
    answers.queueForMenu([this](QMenu *shown) { inside(shown); });
}

const QList<NestedLoop> &NestedLoop::all()
{
    static const QList<NestedLoop> loops{
            {"menu of a tab", openTabMenu, chooseEntry<Autojoin>, isAutojoined<OwnChannel>},
            {"menu of a user", openUserMenu, chooseEntry<OpenChat>, isChatOpen},
            {"menu of a listed channel", openListMenu, chooseEntry<Autojoin>,
             isAutojoined<ListedChannel>},

            {"topic editor", openEditor, writeTopic, isTopic<Written>},
            {"topic's text color", openByEditor<TextColor>, chooseRed, isTopic<RedText>},
            {"topic's background", openByEditor<BackgroundColor>, chooseRed,
             isTopic<RedBackground>},
            {"refusal of a topic", openRefusal, confirm, isNoTopicSent},
            {"refusal to join", openRefusalToJoin, confirm, hasNoEffect},
            {"channel prompt", openByEntry<Join>, typeText, isJoining},
            {"away prompt", openByEntry<Away>, typeText, isAway},
            {"nick prompt", openByEntry<Nick>, typeText, isNickPending},
            {"away prompt by the own menu", openByOwnMenu<Away>, typeText, isAway},
            {"nick prompt by the own menu", openByOwnMenu<Nick>, typeText, isNickPending},
            {"about", openByEntry<About>, accept, hasNoEffect},
            {"help", openByEntry<Help>, accept, hasNoEffect},

            {"connect error", openConnectError, confirm, hasNoEffect},
            {"form to add", openByButton<Add>, fillForm, isServerAdded},
            {"form to edit", openByButton<Edit>, fillForm, isServerEdited},
            {"form to edit by the menu", openByServerMenu<EditEntry>, fillForm, isServerEdited},
            {"format box of adding", openAfterForm<Add, OddHost>, confirm, hasNoEffect},
            {"format box of editing", openAfterForm<Edit, OddHost>, confirm, hasNoEffect},
            {"box about a duplicate", openAfterForm<Add, ListedHost>, confirm,
             isListedServerSelected},
            {"confirmation", openByButton<Delete>, confirm, isServerDeleted},
            {"confirmation by the menu", openByServerMenu<DeleteEntry>, confirm, isServerDeleted},
            {"no server to edit", openWithoutSelection<Edit>, confirm, hasNoEffect},
            {"no server to delete", openWithoutSelection<Delete>, confirm, hasNoEffect},
            {"menu of a server", openServerMenu, chooseEntry<AddToFavorites>, isServerFavorite},

            {"chat font", openByPreferences<Font>, chooseFont, isFontChosen},
            {"background image", openByPreferences<Image>, choosePath<PreferencesForm::imagePath>,
             isImageShown},
            {"background color", openByPreferences<Color>, chooseRed, isColorShown},
            {"log path", openByPreferences<LogPath>, choosePath<folderPath>, isPathChosen},
    };
    return loops;
}
