#include "IRCConnection.h"
#include "Interruptions.h"
#include "ModalAnswers.h"
#include "MyTabWidget.h"
#include "SessionOutput.h"
#include "TemporaryStore.h"
#include "WindowSession.h"

#include <QClipboard>
#include <QContextMenuEvent>
#include <QDialog>
#include <QGuiApplication>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

const auto Separator = u"-"_s;

void rightClick(const MainWindowProbe &probe, QPoint place)
{
    QWidget *viewport = probe.userList().viewport();
    QContextMenuEvent event(QContextMenuEvent::Mouse, place, viewport->mapToGlobal(place));
    QCoreApplication::sendEvent(viewport, &event);
}

void rightClick(const MainWindowProbe &probe, const QString &entry)
{
    rightClick(probe, probe.positionOfUser(entry));
}

QStringList entriesOf(const QMenu &menu)
{
    QStringList texts;
    const QList<QAction *> actions = menu.actions();
    for (const QAction *action : actions)
        texts.append(action->isSeparator() ? Separator : action->text());
    return texts;
}

// The menu's entries for whoever is clicked on; empty if no menu comes.
QStringList menuFor(const MainWindowProbe &probe, const QString &entry)
{
    QStringList entries;
    ModalAnswers answers;
    answers.queueForMenu([&entries](QMenu *menu) {
        entries = entriesOf(*menu);
        menu->close();
    });
    rightClick(probe, entry);
    return entries;
}

const auto OwnMenu = QStringList{u"Marked Away..."_s, u"Change Nick..."_s};
const auto OwnMenuWhileAway = QStringList{u"Unmark Away"_s, u"Change Nick..."_s};
const auto ChannelMenu =
        QStringList{u"Open Private Chat"_s, u"Whois"_s, Separator, u"Kick"_s, u"Ban"_s,
                    u"Kick/Ban"_s,          Separator};
const auto OtherMenu =
        QStringList{u"Open Private Chat"_s, u"Whois"_s, Separator, u"Copy Nickname"_s};

// What can come to pass under an open menu.
using Happening = bool (*)(WindowSession &session);
using Interruptions::dropLink;

bool closeTheTab(WindowSession &session)
{
    session.probe.closeTab(1);
    return session.probe.tabTexts() == QStringList{u"Server"_s};
}

template <int Number>
bool sayIt(WindowSession &session)
{
    static const QList<QStringList> Said{
            {u":bob!u@h QUIT :gone"_s},
            {u":bob!u@h PART #c :gone"_s},
            {u":op!u@h KICK #c bob :gone"_s},
            {u":op!u@h KICK #c me :gone"_s},
            {u":bob!u@h NICK rob"_s},
            {u":irc.test 353 me = #c :me zoe"_s, u":irc.test 366 me #c :End"_s},
            {u":irc.test 366 me #c :End"_s},
    };
    return session.receiveAll(Said.at(Number));
}

const QList<std::pair<const char *, Happening>> AllHappenings{
        {"quit", sayIt<0>},       {"part", sayIt<1>},   {"kick", sayIt<2>},
        {"own kick", sayIt<3>},   {"rename", sayIt<4>}, {"name list", sayIt<5>},
        {"empty list", sayIt<6>}, {"link", dropLink},   {"closed tab", closeTheTab},
};

} // namespace

Q_DECLARE_METATYPE(Happening)

class TestUserListMenu final : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void showsNoMenu_data();
    void showsNoMenu();
    void showsTheMenuInAChannel_data();
    void showsTheMenuInAChannel();
    void showsTheMenuOnOtherTabs_data();
    void showsTheMenuOnOtherTabs();
    void knowsTheUserByTheNickAskedFor();
    void showsTheMenuWithoutALink();
    void placesTheMenuAtThePointer();

    void speaksToTheServer_data();
    void speaksToTheServer();
    void doesNothingIfDismissed();
    void sendsTheWhoisOutputToTheTabOnShow();
    void copiesTheNick_data();
    void copiesTheNick();
    void opensAPrivateChat();
    void marksTheUserAway();
    void unmarksTheUser();
    void changesTheUsersNick();

    void usesTheNickTakenBefore_data();
    void usesTheNickTakenBefore();
    void usesTheNickTakenBeforeForAChat_data();
    void usesTheNickTakenBeforeForAChat();
    void opensNoChatWithWhoHasBecomeTheUser();
    void staysOnOneselfUnderTheMenu_data();
    void staysOnOneselfUnderTheMenu();
    void survivesAFloodUnderTheMenu();

private:
    TemporaryStore store;
};

void TestUserListMenu::init()
{
    store.clear();
}

void TestUserListMenu::showsNoMenu_data()
{
    QTest::addColumn<QString>("entry");

    QTest::newRow("beside the entries") << u"nobody"_s;
    QTest::newRow("a rank without a nick") << u"@"_s;
    QTest::newRow("a presence mark alone") << u"\u25CF "_s;
    QTest::newRow("a presence mark and a rank") << u"\u25CF +"_s;
}

void TestUserListMenu::showsNoMenu()
{
    QFETCH(const QString, entry);
    WindowSession session;
    session.probe.openTabs({u"#c"_s});
    QListWidget &list = session.probe.userList();
    list.addItems({u"@"_s, u"\u25CF "_s, u"\u25CF +"_s});
    const ModalAnswers answers;
    if (session.probe.users().contains(entry))
        rightClick(session.probe, entry);
    else
        rightClick(session.probe, list.viewport()->rect().bottomLeft() + QPoint(20, -10));
    QCoreApplication::processEvents();
    QCOMPARE(answers.problems(), QStringList());
}

void TestUserListMenu::showsTheMenuInAChannel_data()
{
    QTest::addColumn<QString>("entry");
    QTest::addColumn<bool>("isAway");
    QTest::addColumn<QStringList>("menu");

    const auto add = [](const char *name, const QString &entry, bool isAway,
                        const QStringList &menu) {
        QTest::newRow(name) << entry << isAway << menu;
    };
    add("oneself", u"me"_s, false, OwnMenu);
    add("oneself, away", u"me"_s, true, OwnMenuWhileAway);
    add("oneself in another case", u"ME"_s, false, OwnMenu);
    add("oneself with a rank", u"~Me"_s, true, OwnMenuWhileAway);
    add("oneself with a mark", u"\u25CF me"_s, false, OwnMenu);
    add("oneself with a mark and a rank", u"\u25CF @me"_s, false, OwnMenu);
    add("someone else", u"bob"_s, false, ChannelMenu);
    add("someone else while away", u"bob"_s, true, ChannelMenu);
    add("an operator", u"@bob"_s, false, ChannelMenu);
    add("two ranks of oneself's nick", u"@+me"_s, false, ChannelMenu);
    add("a nick that starts alike", u"men"_s, false, ChannelMenu);
    add("a mark without a blank", u"\u25CFme"_s, false, ChannelMenu);
    add("a mark behind a rank", u"@\u25CF me"_s, false, ChannelMenu);
}

void TestUserListMenu::showsTheMenuInAChannel()
{
    QFETCH(const QString, entry);
    QFETCH(const bool, isAway);
    WindowSession session;
    QVERIFY(session.registerAs());
    session.probe.openTabs({u"#c"_s});
    session.probe.userList().addItems({u"op"_s, entry});
    session.probe.isAway() = isAway;
    QTEST(menuFor(session.probe, entry), "menu");
}

void TestUserListMenu::showsTheMenuOnOtherTabs_data()
{
    QTest::addColumn<QString>("tab");
    QTest::addColumn<QString>("entry");
    QTest::addColumn<QStringList>("menu");

    for (const QString &tab : {u"Server"_s, u"List"_s, u"zoe"_s, u"&local"_s}) {
        QTest::addRow("someone else on %s", qPrintable(tab)) << tab << u"@bob"_s << OtherMenu;
        QTest::addRow("oneself on %s", qPrintable(tab)) << tab << u"@me"_s << OwnMenu;
    }
}

void TestUserListMenu::showsTheMenuOnOtherTabs()
{
    QFETCH(const QString, tab);
    QFETCH(const QString, entry);
    WindowSession session;
    QVERIFY(session.registerAs());
    if (tab == "List"_L1)
        session.probe.addListTab();
    else
        session.probe.openTabs({tab});
    session.probe.showTab(tab);
    QCOMPARE(session.probe.currentTabName(), tab);
    QVERIFY(!session.probe.userList().isVisible());
    session.probe.userList().show();
    session.probe.userList().addItem(entry);
    QTEST(menuFor(session.probe, entry), "menu");
}

void TestUserListMenu::knowsTheUserByTheNickAskedFor()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#c"_s, u"@Newer me bob"_s));
    QCOMPARE(menuFor(session.probe, u"@Newer"_s), ChannelMenu);
    session.probe.typeLine(u"/nick newer"_s);
    QCOMPARE(menuFor(session.probe, u"@Newer"_s), OwnMenu);
    QCOMPARE(menuFor(session.probe, u"me"_s), OwnMenu);
    QCOMPARE(menuFor(session.probe, u"bob"_s), ChannelMenu);
    // Confirmed by the server, it is the nick itself that counts.
    QVERIFY(session.receive(u":me!u@h NICK newer"_s));
    QCOMPARE(menuFor(session.probe, u"@Newer"_s), OwnMenu);
    QCOMPARE(menuFor(session.probe, u"bob"_s), ChannelMenu);
}

void TestUserListMenu::showsTheMenuWithoutALink()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#c"_s, u"me bob"_s));
    QVERIFY(dropLink(session));
    session.probe.userList().addItem(u"bob"_s);
    const SessionOutput output(session);
    for (const QString &entry : ChannelMenu) {
        if (entry == Separator)
            continue;
        ModalAnswers answers;
        answers.queueForMenu(ModalAnswers::choosing(entry));
        rightClick(session.probe, u"bob"_s);
        QCOMPARE(answers.problems(), QStringList());
    }
    QCOMPARE(output.sent(), QStringList());
    // One for each line that could not go out: two for the last entry, none for the chat.
    const QStringList errors(5, u"*** Error: Socket is not connected"_s);
    QCOMPARE(output.lines(), (SessionOutput::Lines{{u"Server"_s, errors}}));
    QCOMPARE(session.probe.tabTexts(), (QStringList{u"Server"_s, u"#c"_s}));
}

void TestUserListMenu::placesTheMenuAtThePointer()
{
    WindowSession session;
    // At the screen's edge a menu makes way.
    session.window.setGeometry(0, 0, 500, 300);
    session.probe.openTabs({u"#c"_s});
    session.probe.userList().addItem(u"bob"_s);
    ModalAnswers answers;
    QPoint place;
    bool hasParent = true;
    answers.queueForMenu([&](QMenu *menu) {
        place = menu->pos();
        hasParent = menu->parent() != nullptr;
        menu->close();
    });
    rightClick(session.probe, u"bob"_s);
    QCOMPARE(answers.problems(), QStringList());
    QCOMPARE(place, session.probe.userList().mapToGlobal(session.probe.positionOfUser(u"bob"_s)));
    QVERIFY(!hasParent);
}

void TestUserListMenu::speaksToTheServer_data()
{
    QTest::addColumn<QString>("entry");
    QTest::addColumn<QString>("choice");
    QTest::addColumn<QStringList>("sent");

    const auto add = [](const QString &entry, const QString &choice, const QStringList &sent) {
        QTest::newRow(qUtf8Printable(entry + u' ' + choice)) << entry << choice << sent;
    };
    add(u"@alice"_s, u"Kick"_s, {u"KICK #c alice :Requested"_s});
    add(u"@alice"_s, u"Ban"_s, {u"MODE #c +b alice!*@*"_s});
    add(u"@alice"_s, u"Kick/Ban"_s, {u"MODE #c +b alice!*@*"_s, u"KICK #c alice :Banned"_s});
    add(u"@alice"_s, u"Whois"_s, {u"WHOIS alice"_s});
    add(u"bob"_s, u"Kick"_s, {u"KICK #c bob :Requested"_s});
    add(u"+@odd"_s, u"Kick"_s, {u"KICK #c @odd :Requested"_s});
    add(u"%1"_s, u"Kick/Ban"_s, {u"MODE #c +b 1!*@*"_s, u"KICK #c 1 :Banned"_s});
    add(u"%%2"_s, u"Kick/Ban"_s, {u"MODE #c +b %2!*@*"_s, u"KICK #c %2 :Banned"_s});
}

void TestUserListMenu::speaksToTheServer()
{
    QFETCH(const QString, entry);
    QFETCH(const QString, choice);
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#c"_s, u"me "_s + entry));
    const SessionOutput output(session);
    ModalAnswers answers;
    answers.queueForMenu(ModalAnswers::choosing(choice));
    rightClick(session.probe, entry);
    QCOMPARE(answers.problems(), QStringList());
    QTEST(output.sent(), "sent");
    // What the server makes of it is all that there is to see.
    QCOMPARE(output.lines(), SessionOutput::Lines());
}

void TestUserListMenu::doesNothingIfDismissed()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#c"_s, u"me bob"_s));
    const SessionOutput output(session);
    for (const QString &entry : {u"me"_s, u"bob"_s}) {
        ModalAnswers answers;
        answers.queueForMenu([](QMenu *menu) { QTest::keyClick(menu, Qt::Key_Escape); });
        rightClick(session.probe, entry);
        QCOMPARE(answers.problems(), QStringList());
    }
    QCOMPARE(output.sent(), QStringList());
    QCOMPARE(output.lines(), SessionOutput::Lines());
    QCOMPARE(session.probe.tabTexts(), (QStringList{u"Server"_s, u"#c"_s}));
}

void TestUserListMenu::sendsTheWhoisOutputToTheTabOnShow()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#c"_s, u"me bob"_s));
    ModalAnswers answers;
    answers.queueForMenu(ModalAnswers::choosing(u"Whois"_s));
    rightClick(session.probe, u"bob"_s);
    QCOMPARE(session.probe.whoisTab(), u"#c"_s);
    QVERIFY(session.receiveAll({u":irc.test 311 me bob user host * :Bob"_s,
                                u":irc.test 318 me bob :End of /WHOIS list."_s}));
    QVERIFY(session.probe.lines(u"#c"_s).contains(u"|*** WHOIS bob: user@host (Bob)"_s));
}

void TestUserListMenu::copiesTheNick_data()
{
    QTest::addColumn<QString>("entry");
    QTest::addColumn<QString>("nick");

    QTest::newRow("plain") << u"bob"_s << u"bob"_s;
    QTest::newRow("with a rank") << u"@bob"_s << u"bob"_s;
    QTest::newRow("with a mark") << u"\u25CF %bob"_s << u"bob"_s;
    QTest::newRow("markup") << u"<b>bob</b>"_s << u"<b>bob</b>"_s;
}

void TestUserListMenu::copiesTheNick()
{
    QFETCH(const QString, entry);
    WindowSession session;
    session.probe.userList().show();
    session.probe.userList().addItem(entry);
    QGuiApplication::clipboard()->clear();
    ModalAnswers answers;
    answers.queueForMenu(ModalAnswers::choosing(u"Copy Nickname"_s));
    rightClick(session.probe, entry);
    QCOMPARE(answers.problems(), QStringList());
    QTEST(QGuiApplication::clipboard()->text(), "nick");
}

void TestUserListMenu::opensAPrivateChat()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#c"_s, u"me @bob"_s));
    const SessionOutput output(session);
    ModalAnswers answers;
    answers.queueForMenu(ModalAnswers::choosing(u"Open Private Chat"_s));
    rightClick(session.probe, u"@bob"_s);
    QCOMPARE(answers.problems(), QStringList());
    QCOMPARE(session.probe.tabTexts(), (QStringList{u"Server"_s, u"#c"_s, u"bob"_s}));
    QCOMPARE(session.probe.currentTabName(), u"bob"_s);
    QCOMPARE(output.sent(), QStringList{u"WATCH +bob"_s});
}

void TestUserListMenu::marksTheUserAway()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#c"_s, u"@me bob"_s));
    const SessionOutput output(session);
    ModalAnswers answers;
    answers.queueForMenu(ModalAnswers::choosing(u"Marked Away..."_s));
    answers.queueForDialog([](QDialog *dialog) { dialog->accept(); });
    rightClick(session.probe, u"@me"_s);
    QCOMPARE(answers.problems(), QStringList());
    QVERIFY(session.probe.isAway());
    QCOMPARE(output.sent(), QStringList{u"AWAY :Away"_s});
}

void TestUserListMenu::unmarksTheUser()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#c"_s, u"@me bob"_s));
    session.probe.typeLine(u"/away"_s);
    const SessionOutput output(session);
    ModalAnswers answers;
    answers.queueForMenu(ModalAnswers::choosing(u"Unmark Away"_s));
    rightClick(session.probe, u"@me"_s);
    QCOMPARE(answers.problems(), QStringList());
    QVERIFY(!session.probe.isAway());
    QCOMPARE(output.sent(), QStringList{u"AWAY"_s});
}

void TestUserListMenu::changesTheUsersNick()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#c"_s, u"@me bob"_s));
    const SessionOutput output(session);
    ModalAnswers answers;
    answers.queueForMenu(ModalAnswers::choosing(u"Change Nick..."_s));
    answers.queueForDialog([](QDialog *dialog) {
        dialog->findChild<QLineEdit *>()->setText(u"newer"_s);
        dialog->accept();
    });
    rightClick(session.probe, u"@me"_s);
    QCOMPARE(answers.problems(), QStringList());
    QCOMPARE(output.sent(), QStringList{u"NICK newer"_s});
}

void TestUserListMenu::usesTheNickTakenBefore_data()
{
    QTest::addColumn<Happening>("happening");
    QTest::addColumn<QString>("choice");
    QTest::addColumn<QStringList>("sent");

    const QList<std::pair<QString, QStringList>> choices{
            {u"Whois"_s, {u"WHOIS bob"_s}},
            {u"Kick"_s, {u"KICK #c bob :Requested"_s}},
            {u"Ban"_s, {u"MODE #c +b bob!*@*"_s}},
            {u"Kick/Ban"_s, {u"MODE #c +b bob!*@*"_s, u"KICK #c bob :Banned"_s}},
    };
    for (const auto &[name, happening] : AllHappenings) {
        for (const auto &[choice, sent] : choices) {
            QStringList expected = happening == dropLink ? QStringList() : sent;
            if (happening == closeTheTab)
                expected.prepend(u"PART #c :Leaving"_s);
            QTest::addRow("%s, %s", name, qPrintable(choice)) << happening << choice << expected;
        }
    }
}

void TestUserListMenu::usesTheNickTakenBefore()
{
    QFETCH(const Happening, happening);
    QFETCH(const QString, choice);
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#c"_s, u"@bob me"_s));
    const SessionOutput output(session);
    ModalAnswers answers;
    bool happened = false;
    answers.queueForMenu([&](QMenu *menu) {
        happened = happening(session);
        ModalAnswers::choosing(choice)(menu);
    });
    rightClick(session.probe, u"@bob"_s);
    QCOMPARE(answers.problems(), QStringList());
    QVERIFY(happened);
    QTEST(output.sent(), "sent");
}

void TestUserListMenu::usesTheNickTakenBeforeForAChat_data()
{
    QTest::addColumn<Happening>("happening");
    for (const auto &[name, happening] : AllHappenings)
        QTest::newRow(name) << happening;
}

void TestUserListMenu::usesTheNickTakenBeforeForAChat()
{
    QFETCH(const Happening, happening);
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#c"_s, u"@bob me"_s));
    ModalAnswers answers;
    bool happened = false;
    answers.queueForMenu([&](QMenu *menu) {
        happened = happening(session);
        ModalAnswers::choosing(u"Open Private Chat"_s)(menu);
    });
    rightClick(session.probe, u"@bob"_s);
    QCOMPARE(answers.problems(), QStringList());
    QVERIFY(happened);
    QCOMPARE(session.probe.currentTabName() == "bob"_L1, happening != dropLink);
    QCOMPARE(session.probe.tabs().contains(u"bob"_s), happening != dropLink);
}

void TestUserListMenu::opensNoChatWithWhoHasBecomeTheUser()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#c"_s, u"@bob me"_s));
    ModalAnswers answers;
    bool happened = false;
    answers.queueForMenu([&](QMenu *menu) {
        happened = session.receiveAll({u":bob!u@h NICK rob"_s, u":me!u@h NICK bob"_s});
        ModalAnswers::choosing(u"Open Private Chat"_s)(menu);
    });
    rightClick(session.probe, u"@bob"_s);
    QCOMPARE(answers.problems(), QStringList());
    QVERIFY(happened);
    QCOMPARE(session.probe.tabTexts(), (QStringList{u"Server"_s, u"#c"_s}));
}

void TestUserListMenu::staysOnOneselfUnderTheMenu_data()
{
    usesTheNickTakenBeforeForAChat_data();
}

void TestUserListMenu::staysOnOneselfUnderTheMenu()
{
    QFETCH(const Happening, happening);
    for (const QString &choice : OwnMenu) {
        WindowSession session;
        QVERIFY(session.registerAs());
        QVERIFY(session.join(u"#c"_s, u"@bob me"_s));
        ModalAnswers answers;
        bool happened = false;
        bool asked = false;
        answers.queueForMenu([&](QMenu *menu) {
            happened = happening(session);
            ModalAnswers::choosing(choice)(menu);
        });
        // Without a link there is nobody to tell, and nothing is asked.
        if (happening != dropLink) {
            answers.queueForDialog([&asked](QDialog *dialog) {
                asked = true;
                dialog->reject();
            });
        }
        rightClick(session.probe, u"me"_s);
        QCOMPARE(answers.problems(), QStringList());
        QVERIFY(happened);
        QCOMPARE(asked, happening != dropLink);
        QVERIFY(!session.probe.isAway());
    }
}

void TestUserListMenu::survivesAFloodUnderTheMenu()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#c"_s, u"@bob me"_s));
    const SessionOutput output(session);
    ModalAnswers answers;
    bool happened = false;
    answers.queueForMenu([&](QMenu *menu) {
        QStringList flood;
        for (int number = 0; number < 500; ++number) {
            const QString nick = u"n%1"_s.arg(number);
            flood << u":%1!u@h JOIN #c"_s.arg(nick) << u":%1!u@h PRIVMSG #c :hello me"_s.arg(nick)
                  << u":%1!u@h QUIT :split"_s.arg(nick);
        }
        happened = session.receiveAll(flood);
        ModalAnswers::choosing(u"Kick"_s)(menu);
    });
    rightClick(session.probe, u"@bob"_s);
    QCOMPARE(answers.problems(), QStringList());
    QVERIFY(happened);
    QCOMPARE(output.sent(), QStringList{u"KICK #c bob :Requested"_s});
    QCOMPARE(output.lines().value(u"#c"_s).size(), 1500);
    QCOMPARE(session.probe.users(), (QStringList{u"@bob"_s, u"me"_s}));
}

QTEST_MAIN(TestUserListMenu)
#include "tst_UserListMenu.moc"
