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
#include <QContextMenuEvent>
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

void rightClick(QWidget &widget, QPoint place)
{
    QContextMenuEvent event(QContextMenuEvent::Mouse, place, widget.mapToGlobal(place));
    QCoreApplication::sendEvent(&widget, &event);
}

template <typename Wanted>
Wanted *childWithText(const QObject *parent, const QString &text)
{
    const QList<Wanted *> children = parent->findChildren<Wanted *>();
    const auto found = std::find_if(children.cbegin(), children.cend(),
                                    [&text](const Wanted *child) { return child->text() == text; });
    return found == children.cend() ? nullptr : *found;
}

// Entries of the window's menus that open a loop.
template <const QString &Entry>
void openByEntry(LoopScene &scene)
{
    scene.awaitDialog();
    scene.session.choose(Entry);
}
const auto About = u"About Velmora"_s;
const auto Away = u"Marked Away..."_s;
const auto Help = u"Help"_s;
const auto Join = u"&Join channel..."_s;
const auto Nick = u"Change Nick..."_s;

// ---------------------------------------------------------------------------------------------
// Menus over the main window

void openTabMenu(LoopScene &scene)
{
    scene.awaitMenu();
    HighlightTabBar &bar = scene.session.probe.tabBar();
    rightClick(bar, bar.tabRect(1).center());
}

void openMenuOfUser(LoopScene &scene, const QString &entry)
{
    const MainWindowProbe &probe = scene.session.probe;
    rightClick(*probe.userList().viewport(), probe.placeOfUser(entry));
}

void openUserMenu(LoopScene &scene)
{
    scene.awaitMenu();
    openMenuOfUser(scene, u"alice"_s);
}

template <const QString &Entry>
void openByOwnMenu(LoopScene &scene)
{
    scene.answers.queueForMenu(ModalAnswers::choosing(Entry));
    scene.awaitDialog();
    openMenuOfUser(scene, u"@me"_s);
}

void openListMenu(LoopScene &scene)
{
    scene.awaitMenu();
    scene.session.probe.showTab(u"List"_s);
    QTreeWidget *tree = scene.session.probe.listTree();
    rightClick(*tree->viewport(), tree->visualItemRect(tree->topLevelItem(0)).center());
}

// ---------------------------------------------------------------------------------------------
// The topic

void editTopic(LoopScene &scene)
{
    scene.session.probe.tabs().value(u"#a"_s).editTopicBtn->click();
}

void openEditor(LoopScene &scene)
{
    scene.awaitDialog();
    editTopic(scene);
}

template <const QString &Entry>
void openByEditor(LoopScene &scene)
{
    scene.answers.queueForDialog([&scene](QDialog *editor) {
        scene.awaitDialog();
        childWithText<QAction>(editor, Entry)->trigger();
        editor->accept();
    });
    editTopic(scene);
}
const auto TextColor = u"Text Color"_s;
const auto BackgroundColor = u"Background Color"_s;

void openRefusal(LoopScene &scene)
{
    scene.awaitDialog();
    scene.session.probe.channelUsers().insert(u"#a"_s, {u"alice"_s, u"me"_s});
    editTopic(scene);
}

void openRefusalToJoin(LoopScene &scene)
{
    scene.awaitDialog();
    scene.session.choose(u"&Disconnect"_s);
    scene.session.choose(Join);
}

// ---------------------------------------------------------------------------------------------
// The connect dialog

ConnectDialog *openConnectDialog(LoopScene &scene)
{
    scene.session.choose(u"&Connect..."_s);
    return scene.session.window.findChild<ConnectDialog *>();
}

QListWidget *serverList(const LoopScene &scene)
{
    return scene.session.window.findChild<ConnectDialog *>()->findChild<QListWidget *>();
}

bool hasServer(const LoopScene &scene, const QString &address)
{
    return !serverList(scene)->findItems(address, Qt::MatchExactly).isEmpty();
}

template <const QString &Button>
void openByButton(LoopScene &scene)
{
    const ConnectDialog *dialog = openConnectDialog(scene);
    scene.awaitDialog();
    dialog->findChild<QPushButton *>(Button)->click();
}
const auto Add = u"addButton"_s;
const auto Edit = u"editButton"_s;
const auto Delete = u"deleteButton"_s;

template <const QString &Button>
void openWithoutSelection(LoopScene &scene)
{
    const ConnectDialog *dialog = openConnectDialog(scene);
    serverList(scene)->setCurrentItem(nullptr);
    scene.awaitDialog();
    dialog->findChild<QPushButton *>(Button)->click();
}

void saveForm(QWidget *form, const QString &host)
{
    FormFields::field<QLineEdit>(form, u"IRC server:"_s)->setText(host);
    form->findChild<QPushButton *>(u"connectButton"_s)->click();
}

template <const QString &Button, const QString &Host>
void openAfterForm(LoopScene &scene)
{
    const ConnectDialog *dialog = openConnectDialog(scene);
    scene.answers.queueForDialog([](QDialog *form) { saveForm(form, Host); });
    scene.awaitDialog();
    dialog->findChild<QPushButton *>(Button)->click();
}
const auto OddHost = u"::1"_s;
const auto ListedHost = u"irc.oftc.net"_s;

void openConnectError(LoopScene &scene)
{
    const ConnectDialog *dialog = openConnectDialog(scene);
    dialog->findChild<QLineEdit *>()->clear();
    scene.awaitDialog();
    dialog->findChild<QPushButton *>(u"connectButton"_s)->click();
}

void openMenuOfServer(LoopScene &scene)
{
    openConnectDialog(scene);
    QListWidget *list = serverList(scene);
    list->scrollToItem(list->currentItem());
    rightClick(*list->viewport(), list->visualItemRect(list->currentItem()).center());
}

void openServerMenu(LoopScene &scene)
{
    scene.awaitMenu();
    openMenuOfServer(scene);
}

template <const QString &Entry>
void openByServerMenu(LoopScene &scene)
{
    scene.answers.queueForMenu(ModalAnswers::choosing(Entry));
    scene.awaitDialog();
    openMenuOfServer(scene);
}
const auto EditEntry = u"Edit"_s;
const auto DeleteEntry = u"Delete"_s;

// ---------------------------------------------------------------------------------------------
// The preferences

const PreferencesDialog *preferences(const LoopScene &scene)
{
    return scene.session.window.findChild<PreferencesDialog *>();
}

template <const QString &Button>
void openByPreferences(LoopScene &scene)
{
    QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    scene.session.choose(u"&Preferences..."_s);
    scene.awaitDialog();
    childWithText<QPushButton>(preferences(scene), Button)->click();
}
const auto Font = u"Monaco 12"_s;
const auto Image = u"Choose Image..."_s;
const auto Color = u"Solid Color..."_s;
const auto LogPath = u"..."_s;

// ---------------------------------------------------------------------------------------------
// Answers

void agree(QWidget *shown)
{
    const auto *box = qobject_cast<QMessageBox *>(shown);
    const auto buttons = box->buttons();
    // "Yes" and "OK" come first.
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

QString aFolder()
{
    return QDir::tempPath();
}

// ---------------------------------------------------------------------------------------------
// What comes of them

bool isNothing(const LoopScene &)
{
    return true;
}

template <const QString &Channel>
bool isAutojoined(const LoopScene &scene)
{
    return scene.session.probe.autojoinChannels() == QStringList{Channel};
}
const auto OwnChannel = u"#a"_s;
const auto ListedChannel = u"#b"_s;

bool isChatOpen(const LoopScene &scene)
{
    return scene.session.probe.currentTabName() == "alice"_L1;
}

bool isAway(const LoopScene &scene)
{
    return scene.session.probe.awayMessage() == "text"_L1;
}

bool isNickPending(const LoopScene &scene)
{
    return scene.session.probe.pendingNick() == "text"_L1;
}

bool isJoining(const LoopScene &scene)
{
    return scene.session.server.waitForLine(u"JOIN #text"_s);
}

template <const QString &Topic>
bool isTopic(const LoopScene &scene)
{
    return scene.session.probe.channelTopics().value(u"#a"_s) == Topic;
}
const auto Written = u"text"_s;
const auto RedLetters = u"\u0003"
                        "4topic"_s;
const auto RedGround = u"\u0003"
                       "0,4\u0003topic"_s;

bool isNoTopicSent(const LoopScene &scene)
{
    return scene.session.server.lines().filter(u"TOPIC"_s).isEmpty();
}

bool isServerAdded(const LoopScene &scene)
{
    return hasServer(scene, NewServer + u":6667"_s);
}

bool isServerEdited(const LoopScene &scene)
{
    return hasServer(scene, u"%1:%2"_s.arg(NewServer).arg(scene.session.server.port()));
}

bool isServerDeleted(const LoopScene &scene)
{
    return !hasServer(scene, u"127.0.0.1:%1"_s.arg(scene.session.server.port()));
}

bool isServerFavorite(const LoopScene &)
{
    return StoredServers::favoriteIds().size() == 1;
}

bool isListedServerSelected(const LoopScene &scene)
{
    return serverList(scene)->currentItem()->text() == ListedHost + u":6667"_s;
}

bool isFontTaken(const LoopScene &scene)
{
    return scene.session.probe.chatFont().family() == "DejaVu Serif"_L1;
}

bool previewShows(const LoopScene &scene, const QString &text)
{
    const QList<QLabel *> labels = preferences(scene)->findChildren<QLabel *>();
    return std::any_of(labels.cbegin(), labels.cend(),
                       [&text](const QLabel *label) { return label->styleSheet().contains(text); });
}

bool isImageShown(const LoopScene &scene)
{
    return previewShows(scene, PreferencesForm::anImage());
}

bool isColorShown(const LoopScene &scene)
{
    return previewShows(scene, u"#ff0000"_s);
}

bool isPathTaken(const LoopScene &scene)
{
    return childWithText<QLineEdit>(preferences(scene), aFolder()) != nullptr;
}

} // namespace

bool LoopScene::enter()
{
    const bool entered =
            session.registerAs(u"me"_s) && session.join(u"#a"_s, u"@me alice"_s)
            && session.sayAll({u":irc.test 332 me #a :topic"_s, u":irc.test 321 me :Channels"_s});
    session.choose(u"Channel &List"_s);
    const bool listed =
            session.sayAll({u":irc.test 322 me #b 9 :Topic"_s, u":irc.test 323 me :End"_s});
    session.probe.showTab(u"#a"_s);
    return entered && listed;
}

void LoopScene::awaitDialog()
{
    answers.queueForDialog([this](QDialog *shown) { inside(shown); });
}

void LoopScene::awaitMenu()
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
            {"topic's text color", openByEditor<TextColor>, chooseRed, isTopic<RedLetters>},
            {"topic's background", openByEditor<BackgroundColor>, chooseRed, isTopic<RedGround>},
            {"refusal of a topic", openRefusal, agree, isNoTopicSent},
            {"refusal to join", openRefusalToJoin, agree, isNothing},
            {"channel prompt", openByEntry<Join>, typeText, isJoining},
            {"away prompt", openByEntry<Away>, typeText, isAway},
            {"nick prompt", openByEntry<Nick>, typeText, isNickPending},
            {"away prompt by the own menu", openByOwnMenu<Away>, typeText, isAway},
            {"nick prompt by the own menu", openByOwnMenu<Nick>, typeText, isNickPending},
            {"about", openByEntry<About>, accept, isNothing},
            {"help", openByEntry<Help>, accept, isNothing},

            {"connect error", openConnectError, agree, isNothing},
            {"form to add", openByButton<Add>, fillForm, isServerAdded},
            {"form to edit", openByButton<Edit>, fillForm, isServerEdited},
            {"form to edit by the menu", openByServerMenu<EditEntry>, fillForm, isServerEdited},
            {"format box of adding", openAfterForm<Add, OddHost>, agree, isNothing},
            {"format box of editing", openAfterForm<Edit, OddHost>, agree, isNothing},
            {"box about a duplicate", openAfterForm<Add, ListedHost>, agree,
             isListedServerSelected},
            {"confirmation", openByButton<Delete>, agree, isServerDeleted},
            {"confirmation by the menu", openByServerMenu<DeleteEntry>, agree, isServerDeleted},
            {"no server to edit", openWithoutSelection<Edit>, agree, isNothing},
            {"no server to delete", openWithoutSelection<Delete>, agree, isNothing},
            {"menu of a server", openServerMenu, chooseEntry<AddToFavorites>, isServerFavorite},

            {"chat font", openByPreferences<Font>, chooseFont, isFontTaken},
            {"background image", openByPreferences<Image>, choosePath<PreferencesForm::anImage>,
             isImageShown},
            {"background color", openByPreferences<Color>, chooseRed, isColorShown},
            {"log path", openByPreferences<LogPath>, choosePath<aFolder>, isPathTaken},
    };
    return loops;
}
