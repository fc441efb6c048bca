#include "MyTabWidget.h"
#include "TemporaryStore.h"
#include "WindowSession.h"

#include <QLineEdit>
#include <QListWidget>
#include <QTest>

using namespace Qt::StringLiterals;

class TestNickChanges final : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void renamesEntries_data();
    void renamesEntries();
    void renamesEntriesOfBackgroundChannels();
    void reopensAClosedTab();

    void renamesThePrivateTab();
    void renamesTheCurrentPrivateTab();
    void changesTheCurrentNameInAnyCase();
    void findsThePrivateTabInAnyCase();
    void renamesOnePrivateTabOnly();
    void keepsTheWatchAndTheDraft();
    void replacesTheRecordOfTheNewNick();
    void leavesChannelsAlone();
    void renamesThePrivateTabOfTheOldNickOnly();

    void followsTheOwnNick();
    void triesAnotherNickAtRegistration();

private:
    TemporaryStore store;
};

void TestNickChanges::init()
{
    store.clear();
}

void TestNickChanges::renamesEntries_data()
{
    QTest::addColumn<QString>("names");
    QTest::addColumn<QString>("oldNick");
    QTest::addColumn<QStringList>("model");
    QTest::addColumn<QStringList>("visible");

    const auto add = [](const char *name, const QString &names, const QString &oldNick,
                        const QStringList &model, const QStringList &visible) {
        QTest::newRow(name) << names << oldNick << model << visible;
    };
    add("without a rank", u"alice bob zoe"_s, u"bob"_s, {u"alice"_s, u"new"_s, u"zoe"_s},
        {u"alice"_s, u"zoe"_s, u"new"_s});
    add("with a rank", u"@alice @zoe bob"_s, u"alice"_s, {u"@new"_s, u"@zoe"_s, u"bob"_s},
        {u"@zoe"_s, u"bob"_s, u"@new"_s});
    add("with two ranks", u"+@nick bob"_s, u"@nick"_s, {u"+new"_s, u"bob"_s},
        {u"bob"_s, u"+new"_s});
    add("the bare entry before a ranked one", u"@bob bob"_s, u"bob"_s, {u"@bob"_s, u"new"_s},
        {u"@bob"_s, u"new"_s});
    add("a nick that starts with a rank", u"@bob zoe"_s, u"@bob"_s, {u"new"_s, u"zoe"_s},
        {u"zoe"_s, u"new"_s});
}

void TestNickChanges::renamesEntries()
{
    QFETCH(const QString, names);
    QFETCH(const QString, oldNick);
    QFETCH(const QStringList, model);
    QFETCH(const QStringList, visible);

    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, names));
    // No entry has that nick in upper case.
    QVERIFY(session.receive(u":%1!u@h NICK new"_s.arg(oldNick.toUpper())));
    QCOMPARE(session.probe.lines(u"#a"_s), QStringList{u"me|joined #a"_s});

    QVERIFY(session.receive(u":%1!u@h NICK new"_s.arg(oldNick)));
    QCOMPARE(session.probe.channelUsers().value(u"#a"_s), model);
    QCOMPARE(session.probe.users(), visible);
    QCOMPARE(session.probe.lines(u"#a"_s),
             (QStringList{u"me|joined #a"_s, QString(oldNick + u"|is now known as new"_s)}));
}

void TestNickChanges::renamesEntriesOfBackgroundChannels()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, u"alice"_s));
    QVERIFY(session.join(u"#b"_s, u"+bob zoe"_s));
    QVERIFY(session.join(u"#c"_s, u"bob"_s));
    QVERIFY(session.receive(u":bob!u@h NICK rob"_s));
    QCOMPARE(session.probe.channelUsers(),
             (QMap<QString, QStringList>{{u"#a"_s, {u"alice"_s}},
                                         {u"#b"_s, {u"+rob"_s, u"zoe"_s}},
                                         {u"#c"_s, {u"rob"_s}}}));
    QCOMPARE(session.probe.users(), QStringList{u"alice"_s});
    QCOMPARE(session.probe.lastLine(u"#a"_s), u"me|joined #a"_s);
    QCOMPARE(session.probe.lastLine(u"#b"_s), u"bob|is now known as rob"_s);
    QCOMPARE(session.probe.lastLine(u"#c"_s), u"bob|is now known as rob"_s);
}

void TestNickChanges::reopensAClosedTab()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, u"me bob"_s));
    session.probe.closeTab(1);
    QVERIFY(session.receive(u":bob!u@h NICK rob"_s));
    QCOMPARE(session.probe.tabTexts(), (QStringList{u"Server"_s, u"#a"_s}));
    QCOMPARE(session.probe.lines(u"#a"_s), QStringList{u"bob|is now known as rob"_s});
    // The reopened tab lists the new nick already, and the nick change adds it again. The next tab
    // change corrects it.
    QCOMPARE(session.probe.users(), (QStringList{u"rob"_s, u"me"_s, u"rob"_s}));
    session.probe.showTab(u"Server"_s);
    session.probe.showTab(u"#a"_s);
    QCOMPARE(session.probe.users(), (QStringList{u"rob"_s, u"me"_s}));
}

void TestNickChanges::renamesThePrivateTab()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, u"me"_s));
    QVERIFY(session.receive(u":bob!u@h PRIVMSG me :hi"_s));
    const MainWindow::TabInfo before = session.probe.tabs().value(u"bob"_s);
    QVERIFY(session.receive(u":bob!u@h NICK rob"_s));

    QCOMPARE(session.probe.tabTexts(), (QStringList{u"Server"_s, u"#a"_s, u"rob"_s}));
    QCOMPARE(session.probe.tabs().keys(), (QStringList{u"#a"_s, u"Server"_s, u"rob"_s}));
    const MainWindow::TabInfo after = session.probe.tabs().value(u"rob"_s);
    QCOMPARE(after.page, before.page);
    QCOMPARE(after.chatView, before.chatView);
    QCOMPARE(after.table, before.table);
    QCOMPARE(after.peerNick, u"rob"_s);
    QCOMPARE(session.probe.tabWidget().tabToolTip(2), u"bob"_s);
    QCOMPARE(session.probe.lines(u"rob"_s),
             (QStringList{u"bob|hi"_s, u"bob|is now known as rob"_s}));
    QCOMPARE(session.probe.currentTabName(), u"#a"_s);

    QVERIFY(session.receive(u":rob!u@h PRIVMSG me :still me"_s));
    QCOMPARE(session.probe.lastLine(u"rob"_s), u"rob|still me"_s);
    QCOMPARE(session.probe.tabTexts().size(), 3);
}

void TestNickChanges::renamesTheCurrentPrivateTab()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.receive(u":Bob!u@h PRIVMSG me :hi"_s));
    QCOMPARE(session.probe.currentTabName(), u"Bob"_s);
    session.discardSent();
    QVERIFY(session.receive(u":bob!u@h NICK rob"_s));
    QCOMPARE(session.probe.currentTabName(), u"rob"_s);
    session.probe.typeLine(u"hello"_s);
    QCOMPARE(session.readSent(), QStringList{u"PRIVMSG rob :hello"_s});
    QCOMPARE(session.probe.lastLine(u"rob"_s), u"me|hello"_s);
}

// With two tabs that differ only in case, currentTabName becomes the other tab's new name.
void TestNickChanges::changesTheCurrentNameInAnyCase()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.receiveAll({u":bob!u@h PRIVMSG me :small"_s, u":Bob!u@h PRIVMSG me :big"_s}));
    QCOMPARE(session.probe.currentTabName(), u"bob"_s);
    QVERIFY(session.receive(u":Bob!u@h NICK rob"_s));
    QCOMPARE(session.probe.currentTabName(), u"rob"_s);
    QCOMPARE(session.probe.tabTexts(), (QStringList{u"Server"_s, u"bob"_s, u"rob"_s}));
}

void TestNickChanges::findsThePrivateTabInAnyCase()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, u"me Bob"_s));
    QVERIFY(session.receive(u":Bob!u@h PRIVMSG me :hi"_s));
    QVERIFY(session.receive(u":bob!u@h NICK rob"_s));
    QCOMPARE(session.probe.tabTexts(), (QStringList{u"Server"_s, u"#a"_s, u"rob"_s}));
    QCOMPARE(session.probe.channelUsers().value(u"#a"_s), (QStringList{u"Bob"_s, u"me"_s}));
    QCOMPARE(session.probe.lastLine(u"#a"_s), u"me|joined #a"_s);
    // A change of case alone counts as well.
    QVERIFY(session.receive(u":rob!u@h NICK ROB"_s));
    QCOMPARE(session.probe.tabTexts(), (QStringList{u"Server"_s, u"#a"_s, u"ROB"_s}));
    QCOMPARE(session.probe.lastLine(u"ROB"_s), u"rob|is now known as ROB"_s);
}

void TestNickChanges::renamesOnePrivateTabOnly()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, u"me"_s));
    QVERIFY(session.receiveAll({u":bob!u@h PRIVMSG me :small"_s, u":Bob!u@h PRIVMSG me :big"_s}));
    QVERIFY(session.receive(u":bob!u@h NICK rob"_s));
    // Upper case sorts first, so "Bob" is renamed.
    QCOMPARE(session.probe.tabTexts(), (QStringList{u"Server"_s, u"#a"_s, u"bob"_s, u"rob"_s}));
    QCOMPARE(session.probe.lines(u"rob"_s),
             (QStringList{u"Bob|big"_s, u"bob|is now known as rob"_s}));
    QCOMPARE(session.probe.lines(u"bob"_s), QStringList{u"bob|small"_s});
}

void TestNickChanges::keepsTheWatchAndTheDraft()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.receive(u":bob!u@h PRIVMSG me :hi"_s));
    session.probe.inputLine().setText(u"half"_s);
    session.probe.showTab(u"Server"_s);
    QCOMPARE(session.readSent(), QStringList{u"WATCH +bob"_s});
    QVERIFY(session.receive(u":bob!u@h NICK rob"_s));
    QCOMPARE(session.probe.watchedNicks(), QSet<QString>{u"bob"_s});
    QCOMPARE(session.probe.inputDrafts().value(u"bob"_s), u"half"_s);
    QCOMPARE(session.readSent(), QStringList());
    session.probe.showTab(u"rob"_s);
    QCOMPARE(session.probe.inputLine().text(), QString());
}

void TestNickChanges::replacesTheRecordOfTheNewNick()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, u"me"_s));
    QVERIFY(session.receiveAll(
            {u":rob!u@h PRIVMSG me :first"_s, u":bob!u@h PRIVMSG me :second"_s}));
    const QWidget *orphan = session.probe.tabs().value(u"rob"_s).page;
    QVERIFY(session.receive(u":bob!u@h NICK rob"_s));
    QCOMPARE(session.probe.tabTexts(), (QStringList{u"Server"_s, u"#a"_s, u"rob"_s, u"rob"_s}));
    QCOMPARE(session.probe.tabs().size(), 3);
    QCOMPARE(session.probe.tabWidget().widget(2), orphan);
    QVERIFY(session.probe.tabs().value(u"rob"_s).page != orphan);
    QCOMPARE(session.probe.lines(u"rob"_s),
             (QStringList{u"bob|second"_s, u"bob|is now known as rob"_s}));

    // Both can still be shown and closed. Then the nick opens a new tab.
    session.probe.tabWidget().setCurrentIndex(2);
    QCOMPARE(session.probe.currentTabName(), u"rob"_s);
    session.probe.closeTab(3);
    session.probe.closeTab(2);
    QCOMPARE(session.probe.tabTexts(), (QStringList{u"Server"_s, u"#a"_s}));
    QVERIFY(session.receive(u":rob!u@h PRIVMSG me :again"_s));
    QCOMPARE(session.probe.lines(u"rob"_s), QStringList{u"rob|again"_s});
}

void TestNickChanges::leavesChannelsAlone()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.receive(u":bob!u@h PRIVMSG me :hi"_s));
    QVERIFY(session.receive(u":bob!u@h NICK #odd"_s));
    QCOMPARE(session.probe.tabTexts(), (QStringList{u"Server"_s, u"#odd"_s}));
    // With such a name, the tab counts as a channel's.
    QVERIFY(session.receive(u":#odd!u@h NICK bob"_s));
    QCOMPARE(session.probe.tabTexts(), (QStringList{u"Server"_s, u"#odd"_s}));
    QCOMPARE(session.probe.lastLine(u"#odd"_s), u"bob|is now known as #odd"_s);
}

void TestNickChanges::renamesThePrivateTabOfTheOldNickOnly()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.receive(u":bob!u@h PRIVMSG me :hi"_s));
    QVERIFY(session.receiveAll(
            {u":bobby!u@h NICK x"_s, u":Server!u@h NICK y"_s, u":!u@h NICK z"_s}));
    QCOMPARE(session.probe.tabTexts(), (QStringList{u"Server"_s, u"bob"_s}));
    QCOMPARE(session.probe.lines(u"bob"_s), QStringList{u"bob|hi"_s});
}

void TestNickChanges::followsTheOwnNick()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, u"@me alice"_s));
    session.probe.typeLine(u"/nick new"_s);
    QCOMPARE(session.probe.pendingNick(), u"new"_s);
    QVERIFY(session.receive(u":me!u@h NICK :new"_s));
    QCOMPARE(session.probe.pendingNick(), QString());
    QCOMPARE(session.probe.users(), (QStringList{u"alice"_s, u"@new"_s}));
    QCOMPARE(session.probe.channelUsers().value(u"#a"_s), (QStringList{u"@new"_s, u"alice"_s}));
    QCOMPARE(session.probe.lastLine(u"#a"_s), u"me|is now known as new"_s);

    // Another user's nick change keeps the requested nick.
    session.probe.pendingNick() = u"wanted"_s;
    QVERIFY(session.receive(u":alice!u@h NICK ally"_s));
    QCOMPARE(session.probe.pendingNick(), u"wanted"_s);

    session.probe.typeLine(u"hi"_s);
    QCOMPARE(session.probe.lastLine(u"#a"_s), u"new|hi"_s);
}

void TestNickChanges::triesAnotherNickAtRegistration()
{
    WindowSession session;
    QVERIFY(session.acceptDialog(u"me"_s));
    QVERIFY(session.receiveAll({u":irc.test 433 * me :Nickname is already in use"_s,
                                u":irc.test 001 me_ :Welcome"_s}));
    QCOMPARE(session.readSent().last(), u"NICK me_"_s);
    QVERIFY(session.join(u"#a"_s, u"me_ me"_s));
    session.probe.typeLine(u"hi"_s);
    QCOMPARE(session.probe.lastLine(u"#a"_s), u"me_|hi"_s);
}

QTEST_MAIN(TestNickChanges)
#include "tst_NickChanges.moc"
