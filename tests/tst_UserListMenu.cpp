#include "IRCConnection.h"
#include "Interruptions.h"
#include "ModalAnswers.h"
#include "MyTabWidget.h"
#include "SessionOutput.h"
#include "TemporaryStore.h"
#include "WindowSession.h"

#include <QClipboard>
#include <QDialog>
#include <QGuiApplication>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

const auto Separator = u"-"_s;

void rightClick(const MainWindowProbe &probe, const QString &entry)
{
    ModalAnswers::rightClick(*probe.userList().viewport(), probe.positionOfUser(entry));
}

// The entries of the menu that a right click on `entry` opens.
QStringList menuFor(const MainWindowProbe &probe, const QString &entry)
{
    QStringList entries;
    ModalAnswers answers;
    answers.queueForMenu([&entries](QMenu *menu) {
        entries = ModalAnswers::entriesOf(*menu);
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

using Interruptions::dropLink;

bool closeTab(WindowSession &session)
{
    session.probe.closeTab(1);
    return session.probe.tabTexts() == QStringList{u"Server"_s};
}

template <int Number>
bool receiveLines(WindowSession &session)
{
    static const QList<QStringList> Received{
            {u":bob!u@h QUIT :gone"_s},
            {u":bob!u@h PART #c :gone"_s},
            {u":op!u@h KICK #c bob :gone"_s},
            {u":op!u@h KICK #c me :gone"_s},
            {u":bob!u@h NICK rob"_s},
            {u":irc.test 353 me = #c :me zoe"_s, u":irc.test 366 me #c :End"_s},
            {u":irc.test 366 me #c :End"_s},
    };
    return session.receiveAll(Received.at(Number));
}

const QList<std::pair<const char *, Interruption>> AllInterruptions{
        {"quit", receiveLines<0>},       {"part", receiveLines<1>},
        {"kick", receiveLines<2>},       {"own kick", receiveLines<3>},
        {"rename", receiveLines<4>},     {"name list", receiveLines<5>},
        {"empty list", receiveLines<6>}, {"disconnect", dropLink},
        {"closed tab", closeTab},
};

} // namespace

Q_DECLARE_METATYPE(Interruption)

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
    void knowsTheUserByTheRequestedNick();
    void showsTheMenuWhileDisconnected();
    void opensTheMenuAtThePointer();

    void sendsToTheServer_data();
    void sendsToTheServer();
    void doesNothingIfDismissed();
    void printsAWhoisOnTheCurrentTab();
    void copiesTheNick_data();
    void copiesTheNick();
    void opensAPrivateChat();
    void marksTheUserAway();
    void unmarksTheUser();
    void changesTheUsersNick();

    void keepsTheClickedNick_data();
    void keepsTheClickedNick();
    void keepsTheClickedNickForAChat_data();
    void keepsTheClickedNickForAChat();
    void opensNoChatWithANickThatBecameOwn();
    void keepsTheOwnNicksMenu_data();
    void keepsTheOwnNicksMenu();
    void survivesAFloodDuringTheMenu();

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
        ModalAnswers::rightClick(*list.viewport(),
                                 list.viewport()->rect().bottomLeft() + QPoint(20, -10));
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
    add("own nick", u"me"_s, false, OwnMenu);
    add("own nick, away", u"me"_s, true, OwnMenuWhileAway);
    add("own nick in another case", u"ME"_s, false, OwnMenu);
    add("own nick with a rank", u"~Me"_s, true, OwnMenuWhileAway);
    add("own nick with a presence mark", u"\u25CF me"_s, false, OwnMenu);
    add("own nick with a presence mark and a rank", u"\u25CF @me"_s, false, OwnMenu);
    add("another user", u"bob"_s, false, ChannelMenu);
    add("another user while away", u"bob"_s, true, ChannelMenu);
    add("an operator", u"@bob"_s, false, ChannelMenu);
    add("own nick with two ranks", u"@+me"_s, false, ChannelMenu);
    add("a nick with the same start", u"men"_s, false, ChannelMenu);
    add("a presence mark without a space", u"\u25CFme"_s, false, ChannelMenu);
    add("a presence mark after a rank", u"@\u25CF me"_s, false, ChannelMenu);
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
        QTest::addRow("another user on %s", qPrintable(tab)) << tab << u"@bob"_s << OtherMenu;
        QTest::addRow("own nick on %s", qPrintable(tab)) << tab << u"@me"_s << OwnMenu;
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

void TestUserListMenu::knowsTheUserByTheRequestedNick()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#c"_s, u"@Newer me bob"_s));
    QCOMPARE(menuFor(session.probe, u"@Newer"_s), ChannelMenu);
    session.probe.typeLine(u"/nick newer"_s);
    QCOMPARE(menuFor(session.probe, u"@Newer"_s), OwnMenu);
    QCOMPARE(menuFor(session.probe, u"me"_s), OwnMenu);
    QCOMPARE(menuFor(session.probe, u"bob"_s), ChannelMenu);
    // Once confirmed, it is the current nick.
    QVERIFY(session.receive(u":me!u@h NICK newer"_s));
    QCOMPARE(menuFor(session.probe, u"@Newer"_s), OwnMenu);
    QCOMPARE(menuFor(session.probe, u"bob"_s), ChannelMenu);
}

void TestUserListMenu::showsTheMenuWhileDisconnected()
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
    // One for each line that was not sent: two for the last entry, none for the chat.
    const QStringList errors(5, u"*** Error: Socket is not connected"_s);
    QCOMPARE(output.lines(), (SessionOutput::Lines{{u"Server"_s, errors}}));
    QCOMPARE(session.probe.tabTexts(), (QStringList{u"Server"_s, u"#c"_s}));
}

void TestUserListMenu::opensTheMenuAtThePointer()
{
    WindowSession session;
    // Qt moves a menu away from the screen's edges.
    session.window.setGeometry(0, 0, 500, 300);
    session.probe.openTabs({u"#c"_s});
    session.probe.userList().addItem(u"bob"_s);
    ModalAnswers answers;
    QPoint pos;
    bool hasParent = true;
    answers.queueForMenu([&](QMenu *menu) {
        pos = menu->pos();
        hasParent = menu->parent() != nullptr;
        menu->close();
    });
    rightClick(session.probe, u"bob"_s);
    QCOMPARE(answers.problems(), QStringList());
    QCOMPARE(pos, session.probe.userList().mapToGlobal(session.probe.positionOfUser(u"bob"_s)));
    QVERIFY(!hasParent);
}

void TestUserListMenu::sendsToTheServer_data()
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

void TestUserListMenu::sendsToTheServer()
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
    // The window writes nothing until the server replies.
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

void TestUserListMenu::printsAWhoisOnTheCurrentTab()
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

void TestUserListMenu::keepsTheClickedNick_data()
{
    QTest::addColumn<Interruption>("interruption");
    QTest::addColumn<QString>("choice");
    QTest::addColumn<QStringList>("sent");

    const QList<std::pair<QString, QStringList>> choices{
            {u"Whois"_s, {u"WHOIS bob"_s}},
            {u"Kick"_s, {u"KICK #c bob :Requested"_s}},
            {u"Ban"_s, {u"MODE #c +b bob!*@*"_s}},
            {u"Kick/Ban"_s, {u"MODE #c +b bob!*@*"_s, u"KICK #c bob :Banned"_s}},
    };
    for (const auto &[name, interruption] : AllInterruptions) {
        for (const auto &[choice, sent] : choices) {
            QStringList expected = interruption == dropLink ? QStringList() : sent;
            if (interruption == closeTab)
                expected.prepend(u"PART #c :Leaving"_s);
            QTest::addRow("%s, %s", name, qPrintable(choice)) << interruption << choice << expected;
        }
    }
}

void TestUserListMenu::keepsTheClickedNick()
{
    QFETCH(const Interruption, interruption);
    QFETCH(const QString, choice);
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#c"_s, u"@bob me"_s));
    const SessionOutput output(session);
    ModalAnswers answers;
    bool happened = false;
    answers.queueForMenu([&](QMenu *menu) {
        happened = interruption(session);
        ModalAnswers::choosing(choice)(menu);
    });
    rightClick(session.probe, u"@bob"_s);
    QCOMPARE(answers.problems(), QStringList());
    QVERIFY(happened);
    QTEST(output.sent(), "sent");
}

void TestUserListMenu::keepsTheClickedNickForAChat_data()
{
    QTest::addColumn<Interruption>("interruption");
    for (const auto &[name, interruption] : AllInterruptions)
        QTest::newRow(name) << interruption;
}

void TestUserListMenu::keepsTheClickedNickForAChat()
{
    QFETCH(const Interruption, interruption);
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#c"_s, u"@bob me"_s));
    ModalAnswers answers;
    bool happened = false;
    answers.queueForMenu([&](QMenu *menu) {
        happened = interruption(session);
        ModalAnswers::choosing(u"Open Private Chat"_s)(menu);
    });
    rightClick(session.probe, u"@bob"_s);
    QCOMPARE(answers.problems(), QStringList());
    QVERIFY(happened);
    QCOMPARE(session.probe.currentTabName() == "bob"_L1, interruption != dropLink);
    QCOMPARE(session.probe.tabs().contains(u"bob"_s), interruption != dropLink);
}

void TestUserListMenu::opensNoChatWithANickThatBecameOwn()
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

void TestUserListMenu::keepsTheOwnNicksMenu_data()
{
    keepsTheClickedNickForAChat_data();
}

void TestUserListMenu::keepsTheOwnNicksMenu()
{
    QFETCH(const Interruption, interruption);
    for (const QString &choice : OwnMenu) {
        WindowSession session;
        QVERIFY(session.registerAs());
        QVERIFY(session.join(u"#c"_s, u"@bob me"_s));
        ModalAnswers answers;
        bool happened = false;
        bool prompted = false;
        answers.queueForMenu([&](QMenu *menu) {
            happened = interruption(session);
            ModalAnswers::choosing(choice)(menu);
        });
        // While disconnected, the entries do nothing.
        if (interruption != dropLink) {
            answers.queueForDialog([&prompted](QDialog *dialog) {
                prompted = true;
                dialog->reject();
            });
        }
        rightClick(session.probe, u"me"_s);
        QCOMPARE(answers.problems(), QStringList());
        QVERIFY(happened);
        QCOMPARE(prompted, interruption != dropLink);
        QVERIFY(!session.probe.isAway());
    }
}

void TestUserListMenu::survivesAFloodDuringTheMenu()
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
