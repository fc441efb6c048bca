#include "IRCConnection.h"
#include "MyTabWidget.h"
#include "SessionOutput.h"
#include "TemporaryStore.h"
#include "Waiting.h"
#include "WindowSession.h"

#include <QAction>
#include <QListWidget>
#include <QStatusBar>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

using Lines = SessionOutput::Lines;

} // namespace

class TestAwayInput final : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void setsAway_data();
    void setsAway();
    void announcesInConversationsLater();
    void announcesInNameOrder();
    void announcesTheLatestMessage();
    void announcesWithTheCurrentNick();
    void skipsTheListTab();
    void marksMessagesSentWhileAway();

    void returnsFromAway_data();
    void returnsFromAway();
    void returnsWithoutBeingAway();
    void returnsOnANickChange();
    void staysAwayIfTheNickIsMissing();

private:
    TemporaryStore store;
};

void TestAwayInput::init()
{
    store.clear();
}

void TestAwayInput::setsAway_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("message");

    const auto add = [](const QString &typed, const QString &message) {
        QTest::newRow(qUtf8Printable(typed)) << typed << message;
    };
    add(u"/away lunch"_s, u"lunch"_s);
    add(u"/away"_s, u"Away"_s);
    add(u"/a"_s, u"Away"_s);
    add(u"/A back at  two"_s, u"back at  two"_s);
    add(u"/AWAY   lunch"_s, u"lunch"_s);
    add(u"/away %1 %2"_s, u"%1 %2"_s);
    add(u"/ away"_s, u"away"_s);
}

void TestAwayInput::setsAway()
{
    QFETCH(const QString, typed);
    QFETCH(const QString, message);

    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, u"me bob"_s));
    QVERIFY(session.receive(u":bob!u@h PRIVMSG me :hi"_s));
    const SessionOutput output(session);
    session.probe.typeLine(typed);
    QVERIFY(session.probe.isAway());
    QCOMPARE(session.probe.awayMessage(), message);
    QCOMPARE(session.probe.awayAction().text(), u"Unmark Away"_s);
    QCOMPARE(output.sent(), QStringList{u"AWAY :"_s + message});
    const QString announced = u"me|is away (%1)"_s.arg(message);
    QCOMPARE(output.lines(),
             (Lines{{u"Server"_s, {u"*** You are marked as away (%1)"_s.arg(message)}},
                    {u"#a"_s, {announced}},
                    {u"bob"_s, {announced}}}));
}

void TestAwayInput::announcesInConversationsLater()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, u"me"_s));
    const SessionOutput output(session);
    session.probe.typeLine(u"/away lunch"_s);
    QCOMPARE(output.lines(), (Lines{{u"Server"_s, {u"*** You are marked as away (lunch)"_s}}}));
    QTRY_COMPARE_WITH_TIMEOUT(output.lines().value(u"#a"_s), QStringList{u"me|is away (lunch)"_s},
                              WaitTimeout);

    session.probe.typeLine(u"/back"_s);
    QCOMPARE(session.probe.lastLine(u"Server"_s), u"*** You are back"_s);
    QCOMPARE(session.probe.lastLine(u"#a"_s), u"me|is away (lunch)"_s);
    QTRY_COMPARE_WITH_TIMEOUT(session.probe.lastLine(u"#a"_s), u"me|is back"_s, WaitTimeout);
}

void TestAwayInput::announcesInNameOrder()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    // "Server" sorts in the middle of the names.
    for (const QString &name : {u"bob"_s, u"#b"_s, u"#a"_s, u"Anna"_s})
        session.probe.appendMessageToTab(name, u"hi"_s, u"x"_s);
    // Each line reopens its closed tab after the others, so the tabs show the order of the lines.
    session.probe.typeLine(u"/away lunch"_s);
    session.probe.showTab(u"Server"_s);
    while (session.probe.tabWidget().count() > 1)
        session.probe.closeTab(1);
    QTRY_COMPARE_WITH_TIMEOUT(session.probe.tabTexts(),
                              (QStringList{u"Server"_s, u"#a"_s, u"#b"_s, u"Anna"_s, u"bob"_s}),
                              WaitTimeout);
    QCOMPARE(session.probe.lines(u"bob"_s), QStringList{u"me|is away (lunch)"_s});
}

void TestAwayInput::announcesTheLatestMessage()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, u"me"_s));
    const SessionOutput output(session);
    session.probe.typeLine(u"/away one"_s);
    session.probe.typeLine(u"/away two"_s);
    QCOMPARE(output.sent(), (QStringList{u"AWAY :one"_s, u"AWAY :two"_s}));
    QCOMPARE(
            output.lines(),
            (Lines{{u"Server"_s,
                    {u"*** You are marked as away (one)"_s, u"*** You are marked as away (two)"_s}},
                   {u"#a"_s, {u"me|is away (two)"_s, u"me|is away (two)"_s}}}));
    QCOMPARE(session.probe.awayAction().text(), u"Unmark Away"_s);
}

void TestAwayInput::announcesWithTheCurrentNick()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, u"me"_s));
    session.probe.typeLine(u"/away lunch"_s);
    emit session.probe.connection().nickChanged(u"me"_s, u"new"_s);
    QTRY_COMPARE_WITH_TIMEOUT(session.probe.lastLine(u"#a"_s), u"new|is away (lunch)"_s,
                              WaitTimeout);
}

void TestAwayInput::skipsTheListTab()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, u"me"_s));
    session.probe.appendMessageToTab(u"List"_s, u"rows"_s);
    const SessionOutput output(session);
    session.probe.typeLine(u"/away"_s);
    session.probe.typeLine(u"/back"_s);
    static_cast<void>(output.sent());
    QCOMPARE(output.lines().keys(), (QStringList{u"#a"_s, u"Server"_s}));
}

void TestAwayInput::marksMessagesSentWhileAway()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, u"me"_s));
    session.probe.typeLine(u"/away %2"_s);
    const SessionOutput output(session);
    session.probe.typeLine(u"still %1 here"_s);
    QCOMPARE(output.sent(), QStringList{u"PRIVMSG #a :still %1 here"_s});
    QCOMPARE(output.lines(), (Lines{{u"#a"_s, {u"me|[Away: %2] still %1 here"_s}}}));
}

void TestAwayInput::returnsFromAway_data()
{
    QTest::addColumn<QString>("typed");

    QTest::newRow("back") << u"/back"_s;
    QTest::newRow("alias") << u"/b"_s;
    QTest::newRow("upper case and arguments") << u"/BACK to work"_s;
}

void TestAwayInput::returnsFromAway()
{
    QFETCH(const QString, typed);

    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, u"me bob"_s));
    QVERIFY(session.receive(u":bob!u@h PRIVMSG me :hi"_s));
    session.probe.typeLine(u"/away lunch"_s);
    const SessionOutput output(session);
    session.probe.typeLine(typed);
    QVERIFY(!session.probe.isAway());
    QCOMPARE(session.probe.awayMessage(), QString());
    QCOMPARE(session.probe.awayAction().text(), u"Marked Away..."_s);
    QCOMPARE(output.sent(), QStringList{u"AWAY"_s});
    QCOMPARE(output.lines(), (Lines{{u"Server"_s, {u"*** You are back"_s}},
                                    {u"#a"_s, {u"me|is back"_s}},
                                    {u"bob"_s, {u"me|is back"_s}}}));
}

void TestAwayInput::returnsWithoutBeingAway()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, u"me"_s));
    const SessionOutput output(session);
    session.probe.typeLine(u"/back"_s);
    QCOMPARE(output.sent(), QStringList{u"AWAY"_s});
    QCOMPARE(output.lines(),
             (Lines{{u"Server"_s, {u"*** You are back"_s}}, {u"#a"_s, {u"me|is back"_s}}}));
}

void TestAwayInput::returnsOnANickChange()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, u"me bob"_s));
    session.probe.typeLine(u"/away lunch"_s);
    const SessionOutput output(session);
    session.probe.typeLine(u"/nick new"_s);
    QVERIFY(!session.probe.isAway());
    QCOMPARE(session.probe.awayMessage(), QString());
    QCOMPARE(session.probe.awayAction().text(), u"Marked Away..."_s);
    QCOMPARE(session.probe.pendingNick(), u"new"_s);
    QVERIFY(!session.probe.userList().item(1)->font().italic());
    QCOMPARE(output.sent(), (QStringList{u"AWAY"_s, u"NICK new"_s}));
    // Nothing is written to the conversations.
    QCOMPARE(output.lines(), (Lines{{u"Server"_s, {u"*** You are back"_s}}}));

    session.probe.typeLine(u"/nick third"_s);
    QCOMPARE(output.sent(), QStringList{u"NICK third"_s});
}

void TestAwayInput::staysAwayIfTheNickIsMissing()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    session.probe.typeLine(u"/away lunch"_s);
    const SessionOutput output(session);
    session.probe.typeLine(u"/nick"_s);
    QVERIFY(session.probe.isAway());
    QCOMPARE(output.sent(), QStringList());
    QCOMPARE(session.probe.pendingNick(), QString());
}

QTEST_MAIN(TestAwayInput)
#include "tst_AwayInput.moc"
