#include "IRCConnection.h"
#include "MyTabWidget.h"
#include "TemporaryStore.h"
#include "Waiting.h"
#include "WindowSession.h"

#include <QAbstractItemView>
#include <QCompleter>
#include <QLineEdit>
#include <QSettings>
#include <QSignalSpy>
#include <QStandardItemModel>
#include <QStringListModel>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

const auto Server = u"Server"_s;

QStringListModel *modelOf(const MainWindowProbe &probe)
{
    return qobject_cast<QStringListModel *>(probe.nickCompleter().model());
}

// Returns the rows of the popup; none while it is hidden.
QStringList popupRows(const MainWindowProbe &probe)
{
    const QAbstractItemView *popup = probe.nickCompleter().popup();
    QStringList nicks;
    for (int row = 0; popup->isVisible() && row < popup->model()->rowCount(); ++row)
        nicks.append(popup->model()->index(row, 0).data().toString());
    return nicks;
}

// Types into the line once it has the focus; without it, the popup changes nothing in the line.
void type(const MainWindowProbe &probe, const QString &text)
{
    QLineEdit &line = probe.inputLine();
    line.activateWindow();
    line.setFocus();
    static_cast<void>(QTest::qWaitFor([&line] { return line.hasFocus(); }, WaitTimeout));
    line.clear();
    QTest::keyClicks(&line, text);
}

} // namespace

class TestNickCompletionUse final : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void dependsOnTheTab_data();
    void dependsOnTheTab();
    void stripsOnePrefix();
    void listsTheUserOnce_data();
    void listsTheUserOnce();
    void keepsItsModel();
    void startsWithTheServerTabsCandidates();

    void updatesOnEvents_data();
    void updatesOnEvents();
    void ignoresEventsOfOtherTabs_data();
    void ignoresEventsOfOtherTabs();
    void keepsCandidatesAfterBeingKicked();
    void updatesWhenATabIsClosed();
    void updatesOncePerRead();
    void keepsTheLastUpdateAfterRenames_data();
    void keepsTheLastUpdateAfterRenames();

    void showsMatchingNicks_data();
    void showsMatchingNicks();
    void clickAcceptsANick();
    void arrowKeysSelectANick();
    void returnAcceptsTheHighlightedNick();
    void returnSendsTheLineWithoutAHighlightedRow();
    void keepsTheHighlightedRow_data();
    void keepsTheHighlightedRow();
    void acceptsAHighlightedNickThatLeft_data();
    void acceptsAHighlightedNickThatLeft();
    void keepsTheCursorPosition();
    void sendsTextTypedAfterTheNickLeft();
    void sendsTheTypedTextAfterTheLastRow();
    void sessionContinuesWhileThePopupIsOpen();

    void completes_data();
    void completes();
    void completesByTab_data();
    void completesByTab();
    void completesACompleteNickOnlyToALongerOne();
    void setsThePopupsCandidates();
    void keepsTheCandidatesWithoutAWord_data();
    void keepsTheCandidatesWithoutAWord();
    void ignoresThePreferences();

    void acceptsHostileNicks_data();
    void acceptsHostileNicks();

private:
    TemporaryStore store;
};

void TestNickCompletionUse::init()
{
    store.clear();
}

void TestNickCompletionUse::dependsOnTheTab_data()
{
    QTest::addColumn<QString>("tab");
    QTest::addColumn<QStringList>("nicks");

    QTest::newRow("channel") << u"#c"_s << QStringList{u"op"_s, u"me"_s, u"Zoe"_s};
    QTest::newRow("unknown channel") << u"#empty"_s << QStringList{u"me"_s};
    QTest::newRow("server") << Server << QStringList{u"me"_s};
    QTest::newRow("private") << u"bob"_s << QStringList{u"bob"_s, u"me"_s};
    QTest::newRow("list") << u"List"_s << QStringList{u"List"_s, u"me"_s};
    QTest::newRow("local channel") << u"&c"_s << QStringList{u"&c"_s, u"me"_s};
    QTest::newRow("the user's own tab") << u"me"_s << QStringList{u"me"_s};
    QTest::newRow("the user's own nick in another case")
            << u"ME"_s << QStringList{u"ME"_s, u"me"_s};
}

void TestNickCompletionUse::dependsOnTheTab()
{
    QFETCH(const QString, tab);
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#c"_s, u"Zoe @op me"_s));
    QVERIFY(session.join(u"&c"_s, u"me carol"_s));
    session.probe.openTabs({u"#empty"_s, u"bob"_s, u"me"_s, u"ME"_s, u"#other"_s});
    session.probe.addListTab();
    session.probe.showTab(u"#other"_s);
    session.probe.showTab(tab);
    QCOMPARE(session.probe.currentTabName(), tab);
    QTEST(session.probe.completions(), "nicks");
}

void TestNickCompletionUse::stripsOnePrefix()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    session.probe.channelUsers().insert(u"#c"_s, {u"@a"_s, u"+b"_s, u"%c"_s, u"~d"_s, u"&e"_s,
                                                  u"@+f"_s, u"!g"_s, u"h@"_s, u"@"_s, u"@b"_s});
    session.probe.openTabs({u"#c"_s});
    QCOMPARE(session.probe.completions(),
             (QStringList{u"a"_s, u"b"_s, u"c"_s, u"d"_s, u"e"_s, u"+f"_s, u"!g"_s, u"h@"_s,
                          QString(), u"me"_s}));
}

void TestNickCompletionUse::listsTheUserOnce_data()
{
    QTest::addColumn<QStringList>("entries");
    QTest::addColumn<QStringList>("nicks");

    QTest::newRow("absent") << QStringList{u"z"_s, u"a"_s} << QStringList{u"z"_s, u"a"_s, u"me"_s};
    QTest::newRow("first") << QStringList{u"@me"_s, u"a"_s} << QStringList{u"me"_s, u"a"_s};
    QTest::newRow("another case") << QStringList{u"ME"_s} << QStringList{u"ME"_s, u"me"_s};
    QTest::newRow("duplicates") << QStringList{u"@a"_s, u"b"_s, u"a"_s, u"A"_s}
                                << QStringList{u"a"_s, u"b"_s, u"A"_s, u"me"_s};
}

void TestNickCompletionUse::listsTheUserOnce()
{
    QFETCH(const QStringList, entries);
    WindowSession session;
    QVERIFY(session.registerAs());
    session.probe.channelUsers().insert(u"#c"_s, entries);
    session.probe.openTabs({u"#c"_s});
    QTEST(session.probe.completions(), "nicks");
}

void TestNickCompletionUse::keepsItsModel()
{
    WindowSession session;
    QStringListModel *model = modelOf(session.probe);
    QVERIFY(model != nullptr);
    QCOMPARE(model->parent(), &session.probe.nickCompleter());
    session.probe.openTabs({u"#c"_s, u"bob"_s});
    session.probe.showTab(u"bob"_s);
    QCOMPARE(modelOf(session.probe), model);
    // A model of another type is replaced.
    session.probe.nickCompleter().setModel(new QStandardItemModel(&session.window));
    session.probe.showTab(u"#c"_s);
    QVERIFY(modelOf(session.probe) != nullptr);
    QCOMPARE(session.probe.completions().size(), 1);
    QCOMPARE(session.probe.nickCompleter().caseSensitivity(), Qt::CaseInsensitive);
    QCOMPARE(session.probe.nickCompleter().completionMode(), QCompleter::PopupCompletion);
}

// The user has no nick before the first connection.
void TestNickCompletionUse::startsWithTheServerTabsCandidates()
{
    WindowSession session;
    QCOMPARE(session.probe.completions(), QStringList{session.probe.connection().currentNick()});
}

void TestNickCompletionUse::updatesOnEvents_data()
{
    QTest::addColumn<QStringList>("received");
    QTest::addColumn<QStringList>("nicks");

    const auto add = [](const char *name, const QStringList &received, const QStringList &nicks) {
        QTest::newRow(name) << received << nicks;
    };
    const auto a = u"a"_s;
    const auto b = u"b"_s;
    const auto me = u"me"_s;
    add("join", {u":c!u@h JOIN #c"_s}, {a, b, u"c"_s, me});
    add("join of a listed user", {u":b!u@h JOIN #c"_s}, {a, b, me});
    add("part", {u":a!u@h PART #c"_s}, {b, me});
    add("own part", {u":me!u@h PART #c"_s}, {a, b, me});
    add("quit", {u":b!u@h QUIT :x"_s}, {a, me});
    add("kick", {u":b!u@h KICK #c a :x"_s}, {b, me});
    add("nick", {u":a!u@h NICK z"_s}, {u"z"_s, b, me});
    add("own nick", {u":me!u@h NICK you"_s}, {a, b, u"you"_s});
    add("name list", {u":irc.test 353 me = #c :+z me @y"_s, u":irc.test 366 me #c :End"_s},
        {u"y"_s, u"z"_s, me});
    add("incomplete name list", {u":irc.test 353 me = #c :+z me @y"_s}, {a, b, me});
    add("empty name list", {u":irc.test 366 me #c :End"_s}, {me});
    add("several in one read",
        {u":c!u@h JOIN #c"_s, u":a!u@h QUIT :x"_s, u":b!u@h NICK bb"_s, u":d!u@h JOIN #d"_s},
        {u"bb"_s, u"c"_s, me});
}

void TestNickCompletionUse::updatesOnEvents()
{
    QFETCH(const QStringList, received);
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#c"_s, u"@a b me"_s));
    QCOMPARE(session.probe.completions(), (QStringList{u"a"_s, u"b"_s, u"me"_s}));
    QVERIFY(session.receiveAll(received));
    QTEST(session.probe.completions(), "nicks");
}

// Events of other channels, and of conversations, do not update the candidates until the tab
// changes.
void TestNickCompletionUse::ignoresEventsOfOtherTabs_data()
{
    QTest::addColumn<QString>("tab");
    QTest::addColumn<QString>("received");

    const auto add = [](const char *name, const QString &tab, const QString &received) {
        QTest::newRow(name) << tab << received;
    };
    add("join of another channel", u"#c"_s, u":x!u@h JOIN #d"_s);
    add("quit of another channel's user", u"#c"_s, u":d!u@h QUIT :x"_s);
    add("own nick on the server's tab", Server, u":me!u@h NICK you"_s);
    add("nick of a conversation", u"bob"_s, u":bob!u@h NICK rob"_s);
}

void TestNickCompletionUse::ignoresEventsOfOtherTabs()
{
    QFETCH(const QString, tab);
    QFETCH(const QString, received);
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#d"_s, u"d me"_s));
    QVERIFY(session.join(u"#c"_s, u"c me"_s));
    session.probe.openTabs({u"bob"_s});
    session.probe.showTab(tab);
    QCOMPARE(session.probe.currentTabName(), tab);
    const QStringList before = session.probe.completions();
    const QSignalSpy changed(modelOf(session.probe), &QAbstractItemModel::modelReset);
    QVERIFY(session.receive(received));
    QCOMPARE(session.probe.completions(), before);
    QCOMPARE(changed.size(), 0);
}

// Intended: the channel's users stay candidates until the tab changes.
void TestNickCompletionUse::keepsCandidatesAfterBeingKicked()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#c"_s, u"@a b me"_s));
    QVERIFY(session.receiveAll({u":c!u@h JOIN #c"_s, u":a!u@h KICK #c me :x"_s}));
    QCOMPARE(session.probe.completions(), (QStringList{u"a"_s, u"b"_s, u"c"_s, u"me"_s}));
    session.probe.showTab(Server);
    session.probe.showTab(u"#c"_s);
    QCOMPARE(session.probe.completions(), QStringList{u"me"_s});
}

void TestNickCompletionUse::updatesWhenATabIsClosed()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#c"_s, u"@a me"_s));
    session.probe.closeTab(1);
    QCOMPARE(session.probe.currentTabName(), Server);
    QCOMPARE(session.probe.completions(), QStringList{u"me"_s});
}

void TestNickCompletionUse::updatesOncePerRead()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#c"_s, u"@a me"_s));
    const QSignalSpy changed(modelOf(session.probe), &QAbstractItemModel::modelReset);
    QByteArray read;
    for (int number = 0; number < 50; ++number)
        read += ":n" + QByteArray::number(number) + "!u@h JOIN #c\r\n";
    session.server.sendBytes(read);
    QVERIFY(session.settle());
    QCOMPARE(session.probe.completions().size(), 52);
    // All of it arrives in a few reads.
    QVERIFY(changed.size() < 10);
    QVERIFY(changed.size() > 0);
}

void TestNickCompletionUse::keepsTheLastUpdateAfterRenames_data()
{
    QTest::addColumn<QStringList>("lines");
    QTest::addColumn<QStringList>("nicks");

    QTest::newRow("conversation renamed")
            << QStringList{u":bob!u@h PRIVMSG me :hi"_s, u":bob!u@h NICK rob"_s}
            << QStringList{u"bob"_s, u"me"_s};
    QTest::newRow("user renamed") << QStringList{u":bob!u@h PRIVMSG me :hi"_s,
                                                 u":me!u@h NICK you"_s}
                                  << QStringList{u"bob"_s, u"me"_s};
    QTest::newRow("mode after a join")
            << QStringList{u":me!u@h JOIN #c"_s, u":irc.test 353 me = #c :b me"_s,
                           u":irc.test 366 me #c :End"_s, u":a!u@h JOIN #c"_s,
                           u":b!u@h MODE #c +v me"_s}
            << QStringList{u"a"_s, u"b"_s, u"me"_s};
}

// Intended: a rename of the tab or of the user, and a MODE, do not update the candidates, whether
// they arrive in the same read as the last update or later.
void TestNickCompletionUse::keepsTheLastUpdateAfterRenames()
{
    QFETCH(const QStringList, lines);
    QFETCH(const QStringList, nicks);
    for (const bool inOneRead : {false, true}) {
        WindowSession session;
        QVERIFY(session.registerAs());
        if (inOneRead) {
            QVERIFY(session.receiveAll(lines));
        } else {
            for (const QString &line : lines)
                QVERIFY(session.receive(line));
        }
        QCOMPARE(session.probe.completions(), nicks);
    }
}

void TestNickCompletionUse::showsMatchingNicks_data()
{
    QTest::addColumn<QString>("tab");
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QStringList>("nicks");

    const auto add = [](const char *name, const QString &tab, const QString &typed,
                        const QStringList &nicks) { QTest::newRow(name) << tab << typed << nicks; };
    add("operator without the prefix", u"#c"_s, u"ali"_s, {u"alice"_s});
    add("a prefix matches nothing", u"#c"_s, u"@a"_s, {});
    add("in any case", u"#c"_s, u"AL"_s, {u"alice"_s, u"Albert"_s});
    add("the user", u"#c"_s, u"m"_s, {u"me"_s});
    add("no match", u"#c"_s, u"x"_s, {});
    add("not the second word", u"#c"_s, u"hi al"_s, {});
    add("not inside a nick", u"#c"_s, u"lice"_s, {});
    add("the partner", u"bob"_s, u"b"_s, {u"bob"_s});
    add("the user on the server's tab", Server, u"M"_s, {u"me"_s});
    add("no match on the server's tab", Server, u"a"_s, {});
    add("a nick with a slash", u"#c"_s, u"/o"_s, {u"/odd"_s});
}

void TestNickCompletionUse::showsMatchingNicks()
{
    QFETCH(const QString, tab);
    QFETCH(const QString, typed);
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#c"_s, u"@alice +Albert carol me /odd"_s));
    session.probe.openTabs({u"bob"_s});
    session.probe.showTab(tab);
    type(session.probe, typed);
    QCOMPARE(session.probe.inputLine().text(), typed);
    QTEST(popupRows(session.probe), "nicks");
}

void TestNickCompletionUse::clickAcceptsANick()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#c"_s, u"@alice +Albert me"_s));
    session.discardSent();
    type(session.probe, u"aL"_s);
    QAbstractItemView *popup = session.probe.nickCompleter().popup();
    const QRect second = popup->visualRect(popup->model()->index(1, 0));
    QTest::mouseClick(popup->viewport(), Qt::LeftButton, {}, second.center());
    QVERIFY(!popup->isVisible());
    QCOMPARE(session.probe.inputLine().text(), u"Albert"_s);
    QCOMPARE(session.readSent(), QStringList());
}

void TestNickCompletionUse::arrowKeysSelectANick()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#c"_s, u"@alice +Albert me"_s));
    type(session.probe, u"al"_s);
    QAbstractItemView *popup = session.probe.nickCompleter().popup();
    QTest::keyClick(popup, Qt::Key_Down);
    QCOMPARE(session.probe.inputLine().text(), u"alice"_s);
    QTest::keyClick(popup, Qt::Key_Down);
    QTest::keyClicks(popup, u": hi"_s);
    QVERIFY(!popup->isVisible());
    QCOMPARE(session.probe.inputLine().text(), u"Albert: hi"_s);
}

void TestNickCompletionUse::returnAcceptsTheHighlightedNick()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#c"_s, u"@alice +Albert me"_s));
    session.discardSent();
    type(session.probe, u"al"_s);
    QAbstractItemView *popup = session.probe.nickCompleter().popup();
    QTest::keyClick(popup, Qt::Key_Down);
    QTest::keyClick(popup, Qt::Key_Return);
    QVERIFY(!popup->isVisible());
    QCOMPARE(session.probe.inputLine().text(), u"alice"_s);
    QCOMPARE(session.readSent(), QStringList());
    QTest::keyClicks(&session.probe.inputLine(), u": hi"_s);
    QTest::keyClick(&session.probe.inputLine(), Qt::Key_Return);
    QCOMPARE(session.readSent(), QStringList{u"PRIVMSG #c :alice: hi"_s});
}

// Return sends the line if no row is highlighted, although the popup has the focus.
void TestNickCompletionUse::returnSendsTheLineWithoutAHighlightedRow()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#c"_s, u"@alice +Albert me"_s));
    session.discardSent();
    type(session.probe, u"al"_s);
    QAbstractItemView *popup = session.probe.nickCompleter().popup();
    QVERIFY(popup->isVisible());
    QTest::keyClick(popup, Qt::Key_Return);
    QVERIFY(!popup->isVisible());
    QCOMPARE(session.probe.inputLine().text(), QString());
    QCOMPARE(session.readSent(), QStringList{u"PRIVMSG #c :al"_s});
}

void TestNickCompletionUse::keepsTheHighlightedRow_data()
{
    QTest::addColumn<QStringList>("received");
    QTest::addColumn<QStringList>("nicks");

    const auto add = [](const char *name, const QStringList &received, const QStringList &nicks) {
        QTest::newRow(name) << received << nicks;
    };
    const auto albert = u"Albert"_s;
    const auto alice = u"alice"_s;
    add("join before it", {u":alba!u@h JOIN #c"_s}, {u"alba"_s, albert, alice});
    add("join after it", {u":alva!u@h JOIN #c"_s}, {albert, alice, u"alva"_s});
    add("join of another name", {u":zoe!u@h JOIN #c"_s}, {albert, alice});
    add("part", {u":Albert!u@h PART #c"_s}, {alice});
    add("quit", {u":Albert!u@h QUIT :x"_s}, {alice});
    add("rename", {u":Albert!u@h NICK alf"_s}, {u"alf"_s, alice});
    add("kick", {u":op!u@h KICK #c Albert :x"_s}, {alice});
    add("name list", {u":irc.test 353 me = #c :@alice alto me"_s, u":irc.test 366 me #c :End"_s},
        {alice, u"alto"_s});
    add("several in one read",
        {u":alf!u@h JOIN #c"_s, u":Albert!u@h QUIT :x"_s, u":alf!u@h NICK alba"_s},
        {u"alba"_s, alice});
    add("part and join in one read", {u":alice!u@h PART #c"_s, u":alice!u@h JOIN #c"_s},
        {albert, alice});
}

void TestNickCompletionUse::keepsTheHighlightedRow()
{
    QFETCH(const QStringList, received);
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#c"_s, u"Albert alice me"_s));
    type(session.probe, u"al"_s);
    QAbstractItemView *popup = session.probe.nickCompleter().popup();
    QTest::keyClick(popup, Qt::Key_Down);
    QTest::keyClick(popup, Qt::Key_Down);
    QCOMPARE(session.probe.inputLine().text(), u"alice"_s);
    session.discardSent();
    session.server.sendBytes(received.join(u"\r\n"_s).toUtf8() + "\r\n"_ba); // Arrives in one read.
    QVERIFY(session.settle());
    QTEST(popupRows(session.probe), "nicks");
    QCOMPARE(popup->currentIndex().data().toString(), u"alice"_s);
    QVERIFY(popup->selectionModel()->isSelected(popup->currentIndex()));
    QTest::keyClick(popup, Qt::Key_Return);
    QVERIFY(!popup->isVisible());
    QCOMPARE(session.probe.inputLine().text(), u"alice"_s);
    QCOMPARE(session.readSent(), QStringList());
}

void TestNickCompletionUse::acceptsAHighlightedNickThatLeft_data()
{
    QTest::addColumn<QStringList>("received");
    QTest::addColumn<QStringList>("nicks");

    const auto add = [](const char *name, const QStringList &received, const QStringList &nicks) {
        QTest::newRow(name) << received << nicks;
    };
    const auto albert = u"Albert"_s;
    add("part", {u":alice!u@h PART #c"_s}, {albert});
    add("quit", {u":alice!u@h QUIT :x"_s}, {albert});
    add("kick", {u":op!u@h KICK #c alice :x"_s}, {albert});
    add("rename within the list", {u":alice!u@h NICK ali"_s}, {albert, u"ali"_s});
    add("rename out of the list", {u":alice!u@h NICK bea"_s}, {albert});
    add("name list", {u":irc.test 353 me = #c :Albert me"_s, u":irc.test 366 me #c :End"_s},
        {albert});
    add("everyone listed leaves", {u":alice!u@h QUIT :x"_s, u":Albert!u@h QUIT :x"_s}, {});
}

// The first Return accepts the nick in the line and closes the popup; the second one sends the
// line.
void TestNickCompletionUse::acceptsAHighlightedNickThatLeft()
{
    QFETCH(const QStringList, received);
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#c"_s, u"Albert alice me"_s));
    type(session.probe, u"al"_s);
    QAbstractItemView *popup = session.probe.nickCompleter().popup();
    QTest::keyClick(popup, Qt::Key_Down);
    QTest::keyClick(popup, Qt::Key_Down);
    session.discardSent();
    QVERIFY(session.receiveAll(received));
    QTEST(popupRows(session.probe), "nicks");
    QVERIFY(popup->isVisible());
    QVERIFY(!popup->currentIndex().isValid());
    QTest::keyClick(popup, Qt::Key_Return);
    QVERIFY(!popup->isVisible());
    QCOMPARE(session.probe.inputLine().text(), u"alice"_s);
    QCOMPARE(session.readSent(), QStringList());
    QTest::keyClick(&session.probe.inputLine(), Qt::Key_Return);
    QCOMPARE(session.readSent(), QStringList{u"PRIVMSG #c :alice"_s});
}

void TestNickCompletionUse::keepsTheCursorPosition()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#c"_s, u"alice me"_s));
    type(session.probe, u"al"_s);
    QAbstractItemView *popup = session.probe.nickCompleter().popup();
    QTest::keyClick(popup, Qt::Key_Down);
    QTest::keyClick(popup, Qt::Key_Left);
    QVERIFY(session.receive(u":alf!u@h JOIN #c"_s));
    QCOMPARE(session.probe.inputLine().cursorPosition(), 4);
}

void TestNickCompletionUse::sendsTextTypedAfterTheNickLeft()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#c"_s, u"alice me"_s));
    type(session.probe, u"al"_s);
    QAbstractItemView *popup = session.probe.nickCompleter().popup();
    QTest::keyClick(popup, Qt::Key_Down);
    session.discardSent();
    QVERIFY(session.receiveAll({u":alice!u@h QUIT :x"_s, u":alices!u@h JOIN #c"_s}));
    QTest::keyClick(popup, Qt::Key_S);
    QCOMPARE(popupRows(session.probe), QStringList{u"alices"_s});
    QTest::keyClick(popup, Qt::Key_Return);
    QCOMPARE(session.readSent(), QStringList{u"PRIVMSG #c :alices"_s});
}

// After the last row, no row is highlighted and the line contains the typed text again.
void TestNickCompletionUse::sendsTheTypedTextAfterTheLastRow()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#c"_s, u"alice me"_s));
    session.discardSent();
    type(session.probe, u"al"_s);
    QAbstractItemView *popup = session.probe.nickCompleter().popup();
    QTest::keyClick(popup, Qt::Key_Down);
    QTest::keyClick(popup, Qt::Key_Down);
    QCOMPARE(session.probe.inputLine().text(), u"al"_s);
    QTest::keyClick(popup, Qt::Key_Return);
    QCOMPARE(session.readSent(), QStringList{u"PRIVMSG #c :al"_s});
}

void TestNickCompletionUse::sessionContinuesWhileThePopupIsOpen()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#c"_s, u"@alice +Albert me"_s));
    type(session.probe, u"al"_s);
    QAbstractItemView *popup = session.probe.nickCompleter().popup();
    QTest::keyClick(popup, Qt::Key_Down);
    QVERIFY(session.receiveAll(
            {u":alice!u@h QUIT :x"_s, u":alf!u@h JOIN #c"_s, u":Albert!u@h NICK bert"_s}));
    session.window.grab();
    QTest::keyClick(popup, Qt::Key_Return);
    type(session.probe, u"al"_s);
    QCOMPARE(popupRows(session.probe), QStringList{u"alf"_s});
    session.server.close();
    QTRY_VERIFY_WITH_TIMEOUT(!session.probe.connection().isConnected(), WaitTimeout);
    QTest::keyClick(popup, Qt::Key_Escape);
    QVERIFY(!popup->isVisible());
    QCOMPARE(session.probe.inputLine().text(), u"al"_s);
}

// "|" marks the cursor.
void TestNickCompletionUse::completes_data()
{
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("after");

    const auto add = [](const char *name, const QString &before, const QString &after) {
        QTest::newRow(name) << before << after;
    };
    add("a word", u"car|"_s, u"carol|"_s);
    add("one letter", u"c|"_s, u"carol|"_s);
    add("keeps the typed case", u"CAR|"_s, u"CARol|"_s);
    add("a later word", u"hello car|"_s, u"hello carol|"_s);
    add("after several spaces", u"hello   car|"_s, u"hello   carol|"_s);
    add("a word in the middle", u"hello car| there"_s, u"hello carol| there"_s);
    add("inside a word", u"ca|x there"_s, u"carol|x there"_s);
    add("first match", u"da|"_s, u"dan|"_s);
    add("a whole nick", u"carol|"_s, u"carol|"_s);
    add("the user", u"m|"_s, u"me|"_s);
    add("operator not by the nick", u"ali|"_s, u"ali|"_s);
    add("operator by the prefix", u"@ali|"_s, u"@alice|"_s);
    add("first operator", u"@|"_s, u"@alice|"_s);
    add("voice by the prefix", u"hi +b|"_s, u"hi +bob|"_s);
    add("no match", u"xyz|"_s, u"xyz|"_s);
    add("empty", u"|"_s, u"|"_s);
    add("after a space", u"car |"_s, u"car |"_s);
    add("only a space", u" |"_s, u" |"_s);
    add("a command", u"/msg car|"_s, u"/msg car|"_s);
    add("only a slash", u"/|"_s, u"/|"_s);
    add("slash in the second word", u"a /car|"_s, u"a /car|"_s);
    add("space before a command", u" /msg car|"_s, u" /msg carol|"_s);
    add("at the start", u"|car"_s, u"|car"_s);
    add("at the start of two words", u"|hello car"_s, u"ol|hello car"_s);
    add("at the start of three words", u"|a b car"_s, u"ol|a b car"_s);
    add("at the start, no match", u"|hello x"_s, u"|hello x"_s);
    add("at the start, trailing space", u"|hello "_s, u"|hello "_s);
    add("at the start, before a space", u"| car"_s, u"ol| car"_s);
    add("after the first space", u" |car"_s, u" |car"_s);
    add("a tab is no space", u"a\tcar|"_s, u"a\tcar|"_s);
}

void TestNickCompletionUse::completes()
{
    QFETCH(QString, before);
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#c"_s, u"@alice +bob carol dan daniel me"_s));
    const qsizetype cursor = before.indexOf(u'|');
    session.probe.inputLine().setText(before.remove(cursor, 1));
    session.probe.inputLine().setCursorPosition(static_cast<int>(cursor));
    session.probe.completeNick();
    QString after = session.probe.inputLine().text();
    after.insert(session.probe.inputLine().cursorPosition(), u'|');
    QTEST(after, "after");
}

void TestNickCompletionUse::completesByTab_data()
{
    QTest::addColumn<QString>("tab");
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("completed");

    const auto add = [](const char *name, const QString &tab, const QString &typed,
                        const QString &completed) {
        QTest::newRow(name) << tab << typed << completed;
    };
    add("the partner", u"bob"_s, u"B"_s, u"Bob"_s);
    add("the user with a partner", u"bob"_s, u"m"_s, u"me"_s);
    add("no nick of the channel", u"bob"_s, u"car"_s, u"car"_s);
    add("the user on the server's tab", Server, u"m"_s, u"me"_s);
    add("not the server's name", Server, u"Ser"_s, u"Ser"_s);
    add("the list", u"List"_s, u"li"_s, u"list"_s);
}

void TestNickCompletionUse::completesByTab()
{
    QFETCH(const QString, tab);
    QFETCH(const QString, typed);
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#c"_s, u"carol me"_s));
    session.probe.openTabs({u"bob"_s});
    session.probe.addListTab();
    session.probe.showTab(tab);
    session.probe.inputLine().setText(typed);
    session.probe.completeNick();
    QTEST(session.probe.inputLine().text(), "completed");
}

void TestNickCompletionUse::completesACompleteNickOnlyToALongerOne()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#c"_s, u"dan daniel me"_s));
    session.probe.inputLine().setText(u"da"_s);
    session.probe.completeNick();
    session.probe.completeNick();
    QCOMPARE(session.probe.inputLine().text(), u"dan"_s);
    // An earlier, longer nick continues the complete one.
    session.probe.channelUsers().insert(u"#c"_s, {u"danny"_s, u"dan"_s});
    session.probe.completeNick();
    QCOMPARE(session.probe.inputLine().text(), u"danny"_s);
    QCOMPARE(session.probe.inputLine().cursorPosition(), 5);
}

void TestNickCompletionUse::setsThePopupsCandidates()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#c"_s, u"@alice carol me"_s));
    session.probe.inputLine().setText(u"nobody"_s);
    session.probe.completeNick();
    QCOMPARE(session.probe.completions(), (QStringList{u"@alice"_s, u"carol"_s, u"me"_s}));
    QVERIFY(session.receive(u":carol!u@h QUIT :x"_s));
    QCOMPARE(session.probe.completions(), (QStringList{u"alice"_s, u"me"_s}));
}

void TestNickCompletionUse::keepsTheCandidatesWithoutAWord_data()
{
    QTest::addColumn<QString>("text");

    QTest::newRow("empty") << QString();
    QTest::newRow("a command") << u"/msg ca"_s;
    QTest::newRow("trailing space") << u"car "_s;
}

void TestNickCompletionUse::keepsTheCandidatesWithoutAWord()
{
    QFETCH(const QString, text);
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#c"_s, u"@alice carol me"_s));
    session.probe.inputLine().setText(text);
    session.probe.completeNick();
    QCOMPARE(session.probe.completions(), (QStringList{u"alice"_s, u"carol"_s, u"me"_s}));
}

void TestNickCompletionUse::ignoresThePreferences()
{
    QSettings().setValue(u"nickCompletionSuffix"_s, u":"_s);
    QSettings().setValue(u"minPrefixLength"_s, 10);
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#c"_s, u"carol me"_s));
    session.probe.inputLine().setText(u"c"_s);
    session.probe.completeNick();
    QCOMPARE(session.probe.inputLine().text(), u"carol"_s);
}

void TestNickCompletionUse::acceptsHostileNicks_data()
{
    QTest::addColumn<QString>("nick");

    QTest::newRow("very long") << QString(10000, u'x');
    QTest::newRow("right to left") << u"x\u202Eevil\u05D0\u05D1\u0627\u0628"_s;
    QTest::newRow("combining") << QString(u'x' + QString(200, u'\u0301'));
    QTest::newRow("control characters") << u"x\u0001\u0002\u001B[31m\u0007b"_s;
    QTest::newRow("markup") << u"x<b>a</b><img/src='x'>&amp;"_s;
    QTest::newRow("outside the Basic Multilingual Plane") << u"x\uFFFD\U0001F60A"_s;
}

void TestNickCompletionUse::acceptsHostileNicks()
{
    QFETCH(const QString, nick);
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#c"_s, u"me @%1 %1"_s.arg(nick)));
    const QSize size = session.window.size();
    type(session.probe, u"x"_s);
    QCOMPARE(popupRows(session.probe), QStringList{nick});
    QAbstractItemView *popup = session.probe.nickCompleter().popup();
    popup->grab();
    QVERIFY(popup->width() <= session.probe.inputLine().width());
    QTest::keyClick(popup, Qt::Key_Down);
    QCOMPARE(session.probe.inputLine().text(), nick);
    QTest::keyClick(popup, Qt::Key_Escape);
    session.probe.inputLine().setText(u"x"_s);
    session.probe.completeNick();
    QCOMPARE(session.probe.inputLine().text(), nick);
    session.window.grab();
    QCOMPARE(session.window.size(), size);
}

QTEST_MAIN(TestNickCompletionUse)
#include "tst_NickCompletionUse.moc"
