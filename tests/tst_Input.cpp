#include "IRCConnection.h"
#include "MyTabWidget.h"
#include "SessionOutput.h"
#include "TemporaryStore.h"
#include "Waiting.h"
#include "WindowSession.h"

#include <QAction>
#include <QLineEdit>
#include <QSettings>
#include <QStackedWidget>
#include <QStatusBar>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

using Lines = SessionOutput::Lines;

} // namespace

class TestInput final : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void sendsText_data();
    void sendsText();
    void refusesTextOnTheServerTab();
    void sendsToPrivateConversations();
    void sendsToTheListTabAsToANick();
    void dropsBlankLines_data();
    void dropsBlankLines();
    void dropsLinesWhileDisconnected();
    void clearsLineAndDraft();
    void hasNoHistory();

    void sendsCommands_data();
    void sendsCommands();
    void refusesOtherCommands_data();
    void refusesOtherCommands();
    void runsCommandsOnTheServerTab();
    void partsTheCurrentTab();
    void addsTheChannelPrefix_data();
    void addsTheChannelPrefix();

    void sendsMessages_data();
    void sendsMessages();
    void continuesAnOpenConversation();
    void requestsANick();
    void remembersTheTabOfAWhois();
    void togglesAutojoin();
    void listsOnlyWhenRegistered();
    void showsTheSearchOnTheListTab();

private:
    TemporaryStore store;
};

void TestInput::init()
{
    store.clear();
}

void TestInput::sendsText_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("text");

    QTest::newRow("plain") << u"hello"_s << u"hello"_s;
    QTest::newRow("spaces around") << u" \t hello  you \u00a0"_s << u"hello  you"_s;
    QTest::newRow("placeholders") << u"100% %1 %2"_s << u"100% %1 %2"_s;
    QTest::newRow("markup") << u"<b>bold</b> &amp;"_s << u"<b>bold</b> &amp;"_s;
    QTest::newRow("not a command") << u"not /join"_s << u"not /join"_s;
    QTest::newRow("a leading colon") << u":)"_s << u":)"_s;
    QTest::newRow("not ASCII") << u"häß 😊"_s << u"häß 😊"_s;
    QTest::newRow("long") << QString(2000, u'x') << QString(2000, u'x');
}

void TestInput::sendsText()
{
    QFETCH(const QString, typed);
    QFETCH(const QString, text);

    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, u"me"_s));
    const SessionOutput output(session);
    session.probe.typeLine(typed);
    QCOMPARE(session.readSent(), QStringList{u"PRIVMSG #a :"_s + text});
    QCOMPARE(output.lines(), (Lines{{u"#a"_s, {u"me|"_s + text}}}));
}

void TestInput::refusesTextOnTheServerTab()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    const SessionOutput output(session);
    session.probe.typeLine(u"hello"_s);
    QCOMPARE(output.lines().value(u"Server"_s),
             QStringList{u"Cannot send messages to Server tab."_s});
    QCOMPARE(session.readSent(), QStringList());
    QCOMPARE(session.probe.inputLine().text(), QString());
}

void TestInput::sendsToPrivateConversations()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.receive(u":bob!u@h PRIVMSG me :hi"_s));
    session.discardSent();
    session.probe.typeLine(u"hello"_s);
    QCOMPARE(session.readSent(), QStringList{u"PRIVMSG bob :hello"_s});
    QCOMPARE(session.probe.lines(u"bob"_s), (QStringList{u"bob|hi"_s, u"me|hello"_s}));
}

// The List tab hides the input line from users; its name is not reserved.
void TestInput::sendsToTheListTabAsToANick()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    session.probe.addListTab();
    session.probe.showTab(u"List"_s);
    QTest::ignoreMessage(QtWarningMsg, "appendMessageToTab: chatView is null for tab List");
    session.probe.typeLine(u"hello"_s);
    QCOMPARE(session.readSent(), QStringList{u"PRIVMSG List :hello"_s});
}

void TestInput::dropsBlankLines_data()
{
    QTest::addColumn<QString>("typed");

    QTest::newRow("nothing") << u""_s;
    QTest::newRow("spaces") << u"   "_s;
    QTest::newRow("spaces and tabs") << u" \t\u00a0 "_s;
}

void TestInput::dropsBlankLines()
{
    QFETCH(const QString, typed);

    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, u"me"_s));
    const SessionOutput output(session);
    session.probe.typeLine(typed);
    QCOMPARE(session.readSent(), QStringList());
    QCOMPARE(output.lines(), Lines());
    QCOMPARE(session.probe.inputLine().text(), QString());
}

void TestInput::dropsLinesWhileDisconnected()
{
    WindowSession session;
    for (const QString &typed : {u"hello"_s, u"/join #a"_s, u"/away"_s, u"/nonsense"_s}) {
        session.probe.typeLine(typed);
        QCOMPARE(session.probe.inputLine().text(), QString());
    }
    QCOMPARE(session.probe.lines(u"Server"_s), QStringList());
    QVERIFY(!session.probe.isAway());
    QVERIFY(session.probe.inputDrafts().contains(u"Server"_s));
}

void TestInput::clearsLineAndDraft()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, u"me"_s));
    session.probe.inputLine().setText(u"half"_s);
    session.probe.showTab(u"Server"_s);
    session.probe.showTab(u"#a"_s);
    QCOMPARE(session.probe.inputDrafts().value(u"#a"_s), u"half"_s);
    QCOMPARE(session.probe.inputLine().text(), u"half"_s);
    QTest::keyClick(&session.probe.inputLine(), Qt::Key_Return);
    QCOMPARE(session.probe.inputLine().text(), QString());
    QVERIFY(session.probe.inputDrafts().contains(u"#a"_s));
    QCOMPARE(session.probe.inputDrafts().value(u"#a"_s), QString());
    QCOMPARE(session.probe.lastLine(u"#a"_s), u"me|half"_s);
}

void TestInput::hasNoHistory()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, u"me"_s));
    session.probe.typeLine(u"first"_s);
    QLineEdit &line = session.probe.inputLine();
    line.setText(u"half"_s);
    for (const Qt::Key key : {Qt::Key_Up, Qt::Key_Down, Qt::Key_Escape}) {
        QTest::keyClick(&line, key);
        QCOMPARE(line.text(), u"half"_s);
    }
}

void TestInput::sendsCommands_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("line");

    const auto add = [](const QString &typed, const QString &line) {
        QTest::newRow(qUtf8Printable(typed)) << typed << line;
    };
    add(u"/join #x"_s, u"JOIN #x"_s);
    add(u"/j #x"_s, u"JOIN #x"_s);
    add(u"/JOIN #X"_s, u"JOIN #X"_s);
    add(u"/J   #x"_s, u"JOIN #x"_s);
    add(u"/ join #x"_s, u"JOIN #x"_s);
    add(u"/join #x key #y"_s, u"JOIN #x"_s);
    add(u"/join #x,#y"_s, u"JOIN #x,#y"_s);
    add(u"/part"_s, u"PART #a :Leaving"_s);
    add(u"/p"_s, u"PART #a :Leaving"_s);
    add(u"/Part #other bye"_s, u"PART #a :Leaving"_s);
    add(u"/nick new"_s, u"NICK new"_s);
    add(u"/n new and more"_s, u"NICK new"_s);
    add(u"/N new"_s, u"NICK new"_s);
    add(u"/raw MODE me +i"_s, u"MODE me +i"_s);
    add(u"/RAW lower case :stays"_s, u"lower case :stays"_s);
    add(u"/raw  TWO  spaces"_s, u" TWO  spaces"_s);
    add(u"/raw %1 %2"_s, u"%1 %2"_s);
    // Field 0 is the slash alone, and field 1 begins at "raw".
    add(u"/ raw MODE me"_s, u"raw MODE me"_s);
    add(u"/list"_s, u"LIST"_s);
    add(u"/l"_s, u"LIST"_s);
    add(u"/LIST >5"_s, u"LIST"_s);
    add(u"/whois bob"_s, u"WHOIS bob"_s);
    add(u"/w bob"_s, u"WHOIS bob"_s);
    add(u"/wc bob"_s, u"WHOIS bob"_s);
    add(u"/WHOIS Bob"_s, u"WHOIS Bob"_s);
    add(u"/W bob carol"_s, u"WHOIS bob"_s);
    add(u"/WC bob"_s, u"WHOIS bob"_s);
}

void TestInput::sendsCommands()
{
    QFETCH(const QString, typed);
    QFETCH(const QString, line);

    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, u"me"_s));
    const SessionOutput output(session);
    session.probe.typeLine(typed);
    QCOMPARE(session.readSent(), QStringList{line});
    QCOMPARE(output.lines(), Lines());
}

void TestInput::refusesOtherCommands_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("name");

    const auto add = [](const QString &typed, const QString &name) {
        QTest::newRow(qUtf8Printable(typed)) << typed << name;
    };
    // Listed in the help window, or known from other clients.
    add(u"/topic new"_s, u"topic"_s);
    add(u"/kick bob"_s, u"kick"_s);
    add(u"/me waves"_s, u"me"_s);
    add(u"/quit bye"_s, u"quit"_s);
    add(u"/notice bob hi"_s, u"notice"_s);
    add(u"/ctcp bob VERSION"_s, u"ctcp"_s);
    add(u"/mode +i"_s, u"mode"_s);
    add(u"/invite bob"_s, u"invite"_s);
    add(u"/who #a"_s, u"who"_s);
    add(u"/help"_s, u"help"_s);
    // Too few arguments.
    add(u"/join"_s, u"join"_s);
    add(u"/j"_s, u"join"_s);
    add(u"/nick"_s, u"nick"_s);
    add(u"/n"_s, u"nick"_s);
    add(u"/msg"_s, u"msg"_s);
    add(u"/msg bob"_s, u"msg"_s);
    add(u"/m bob"_s, u"msg"_s);
    add(u"/msg bob   "_s, u"msg"_s);
    add(u"/raw"_s, u"raw"_s);
    add(u"/whois"_s, u"whois"_s);
    add(u"/w"_s, u"whois"_s);
    add(u"/wc"_s, u"whois"_s);
    add(u"/autojoin"_s, u"autojoin"_s);
    // Syntax.
    add(u"/"_s, u""_s);
    add(u"/  "_s, u""_s);
    add(u"//join #x"_s, u"/join"_s);
    add(u"/UPPER case"_s, u"upper"_s);
    add(u"/%1 %2"_s, u"%1"_s);
    add(u"/join\t#x"_s, u"join\t#x"_s);
}

void TestInput::refusesOtherCommands()
{
    QFETCH(const QString, typed);
    QFETCH(const QString, name);

    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, u"me"_s));
    const SessionOutput output(session);
    session.probe.typeLine(typed);
    QCOMPARE(output.lines(), (Lines{{u"#a"_s, {u"|Unknown command: "_s + name}}}));
    QCOMPARE(session.readSent(), QStringList());
    QCOMPARE(session.probe.tabTexts(), (QStringList{u"Server"_s, u"#a"_s}));
}

void TestInput::runsCommandsOnTheServerTab()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    const SessionOutput output(session);
    session.probe.typeLine(u"/me waves"_s);
    session.probe.typeLine(u"/join x"_s);
    QCOMPARE(output.lines().value(u"Server"_s), QStringList{u"Unknown command: me"_s});
    QCOMPARE(session.readSent(), QStringList{u"JOIN #x"_s});
}

void TestInput::partsTheCurrentTab()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    session.probe.typeLine(u"/part #a"_s);
    QCOMPARE(session.readSent(), QStringList{u"PART Server :Leaving"_s});
    QVERIFY(session.receive(u":bob!u@h PRIVMSG me :hi"_s));
    session.discardSent();
    session.probe.typeLine(u"/p"_s);
    QCOMPARE(session.readSent(), QStringList{u"PART bob :Leaving"_s});
    QCOMPARE(session.probe.tabTexts(), (QStringList{u"Server"_s, u"bob"_s}));
}

void TestInput::addsTheChannelPrefix_data()
{
    QTest::addColumn<QString>("argument");
    QTest::addColumn<QString>("channel");

    QTest::newRow("with prefix") << u"#x"_s << u"#x"_s;
    QTest::newRow("without prefix") << u"x"_s << u"#x"_s;
    QTest::newRow("with another prefix") << u"&x"_s << u"#&x"_s;
    QTest::newRow("with two prefixes") << u"##x"_s << u"##x"_s;
}

void TestInput::addsTheChannelPrefix()
{
    QFETCH(const QString, argument);
    QFETCH(const QString, channel);

    WindowSession session;
    QVERIFY(session.registerAs());
    session.probe.typeLine(u"/join "_s + argument);
    QCOMPARE(session.readSent(), QStringList{u"JOIN "_s + channel});
    // The tab opens when the server confirms the join.
    QCOMPARE(session.probe.tabTexts(), QStringList{u"Server"_s});
}

void TestInput::sendsMessages_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("target");
    QTest::addColumn<QString>("text");

    const auto add = [](const QString &typed, const QString &target, const QString &text) {
        QTest::newRow(qUtf8Printable(typed)) << typed << target << text;
    };
    add(u"/msg bob hello you"_s, u"bob"_s, u"hello you"_s);
    add(u"/m bob hello"_s, u"bob"_s, u"hello"_s);
    add(u"/MSG Bob Hello"_s, u"Bob"_s, u"Hello"_s);
    add(u"/msg #b hello"_s, u"#b"_s, u"hello"_s);
    add(u"/msg bob  two  spaces"_s, u"bob"_s, u" two  spaces"_s);
    add(u"/msg  bob hello"_s, u"bob"_s, u"bob hello"_s);
    add(u"/ msg bob hello"_s, u"bob"_s, u"bob hello"_s);
    add(u"/msg %2 %1 %2"_s, u"%2"_s, u"%1 %2"_s);
    add(u"/msg bob :/x"_s, u"bob"_s, u":/x"_s);
}

void TestInput::sendsMessages()
{
    QFETCH(const QString, typed);
    QFETCH(const QString, target);
    QFETCH(const QString, text);

    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, u"me"_s));
    const SessionOutput output(session);
    session.probe.typeLine(typed);
    QCOMPARE(session.readSent().first(), u"PRIVMSG %1 :%2"_s.arg(target, text));
    QCOMPARE(session.probe.tabTexts(), (QStringList{u"Server"_s, u"#a"_s, target}));
    QCOMPARE(session.probe.lines(target), QStringList{u"me|"_s + text});
    QCOMPARE(output.lines(), Lines());
    QCOMPARE(session.probe.currentTabName(), u"#a"_s);
}

void TestInput::continuesAnOpenConversation()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.receive(u":bob!u@h PRIVMSG me :hi"_s));
    session.discardSent();
    session.probe.typeLine(u"/msg bob hello"_s);
    QCOMPARE(session.readSent(), QStringList{u"PRIVMSG bob :hello"_s});
    QCOMPARE(session.probe.lines(u"bob"_s), (QStringList{u"bob|hi"_s, u"me|hello"_s}));
    session.probe.typeLine(u"/msg Server to nobody"_s);
    QCOMPARE(session.probe.lastLine(u"Server"_s), u"to nobody"_s);
}

void TestInput::requestsANick()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    session.probe.typeLine(u"/nick new"_s);
    QCOMPARE(session.probe.pendingNick(), u"new"_s);
    QCOMPARE(session.probe.connection().currentNick(), u"me"_s);
    QCOMPARE(session.window.statusBar()->currentMessage(), u"Connected to 127.0.0.1 as me"_s);
    QCOMPARE(session.readSent(), QStringList{u"NICK new"_s});
}

void TestInput::remembersTheTabOfAWhois()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QCOMPARE(session.probe.whoisTab(), u"Server"_s);
    QVERIFY(session.join(u"#a"_s, u"me"_s));
    session.probe.typeLine(u"/whois"_s);
    QCOMPARE(session.probe.whoisTab(), u"Server"_s);
    session.probe.typeLine(u"/wc bob"_s);
    QCOMPARE(session.probe.whoisTab(), u"#a"_s);
}

void TestInput::togglesAutojoin()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    const QString key = u"servers/%1/autojoin"_s.arg(session.probe.currentServerId());
    const SessionOutput output(session);
    session.probe.typeLine(u"/autojoin a more"_s);
    QCOMPARE(session.probe.autojoinChannels(), QStringList{u"#a"_s});
    QCOMPARE(QSettings().value(key).toStringList(), QStringList{u"#a"_s});
    session.probe.typeLine(u"/AUTOJOIN #A"_s);
    QCOMPARE(session.probe.autojoinChannels(), (QStringList{u"#a"_s, u"#A"_s}));
    session.probe.typeLine(u"/autojoin #a"_s);
    QCOMPARE(session.probe.autojoinChannels(), QStringList{u"#A"_s});
    QCOMPARE(QSettings().value(key).toStringList(), QStringList{u"#A"_s});
    QCOMPARE(output.lines().value(u"Server"_s),
             (QStringList{u"*** Added #a to autojoin list"_s, u"*** Added #A to autojoin list"_s,
                          u"*** Removed #a from autojoin list"_s}));
    QCOMPARE(session.readSent(), QStringList());
}

void TestInput::listsOnlyWhenRegistered()
{
    WindowSession session;
    QVERIFY(session.acceptDialog(u"me"_s));
    QTRY_VERIFY_WITH_TIMEOUT(session.probe.connection().isConnected(), WaitTimeout);
    const SessionOutput output(session);
    session.probe.typeLine(u"/list"_s);
    QCOMPARE(output.lines().value(u"Server"_s),
             QStringList{u"*** Please wait for registration to complete before using /list."_s});
    QCOMPARE(session.readSent(), QStringList());
    QCOMPARE(session.probe.tabTexts(), QStringList{u"Server"_s});
}

void TestInput::showsTheSearchOnTheListTab()
{
    WindowSession session;
    session.window.resize(800, 600);
    QVERIFY(session.registerAs());
    session.probe.appendMessageToTab(u"List"_s, u"rows"_s);
    session.probe.showTab(u"List"_s);
    QVERIFY(session.probe.listSearchEdit().isVisible());
    QVERIFY(!session.probe.inputLine().isVisible());
}

QTEST_MAIN(TestInput)
#include "tst_Input.moc"
