#include "Attention.h"
#include "HighlightTabBar.h"
#include "IRCConnection.h"
#include "TemporaryStore.h"
#include "Waiting.h"
#include "WindowSession.h"

#include <QApplication>
#include <QDir>
#include <QRegularExpression>
#include <QSettings>
#include <QSignalSpy>
#include <QStatusBar>
#include <QSystemTrayIcon>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

using namespace Qt::StringLiterals;

namespace {

constexpr int NotificationMs = 5000;

/// A session of "me" with the tabs #a and bob, in an inactive window whose current tab is "Server".
/// Without a tray, the status bar shows each notification.
class InactiveSession final
{
public:
    [[nodiscard]] bool start(const QString &nick = u"me"_s)
    {
        if (!session.registerAs(nick) || !session.join(u"#a"_s, nick + u" bob carol"_s))
            return false;
        session.probe.openTabs({u"bob"_s});
        // Removes the mark that the opening line has set.
        session.probe.showTab(u"bob"_s);
        session.probe.showTab(u"Server"_s);
        if (!deactivate())
            return false;
        clearNotifications();
        return true;
    }

    /// Activates another window, or this one.
    [[nodiscard]] bool deactivate()
    {
        other.show();
        other.activateWindow();
        return QTest::qWaitFor([this] { return !session.window.isActiveWindow(); });
    }
    [[nodiscard]] bool activate()
    {
        session.window.activateWindow();
        return QTest::qWaitFor([this] { return session.window.isActiveWindow(); });
    }

    void clearNotifications() { shown.clear(); }

    /// What the status bar has shown since clearNotifications().
    [[nodiscard]] QStringList notifications() const
    {
        QStringList texts;
        for (const QVariantList &message : shown)
            texts.append(message.at(0).toString());
        return texts;
    }

    [[nodiscard]] bool isHighlighted(const QString &tab) const
    {
        return session.probe.tabs().value(tab).highlighted;
    }
    [[nodiscard]] bool isMarked(const QString &tab) const
    {
        const auto index = session.probe.tabTexts().indexOf(tab);
        return session.probe.tabBar().isHighlighted(static_cast<int>(index));
    }

    WindowSession session;
    QWidget other;
    QSignalSpy shown{session.window.statusBar(), &QStatusBar::messageChanged};
};

} // namespace

class TestAttention final : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void findsMentions_data();
    void findsMentions();
    void shortensALongText_data();
    void shortensALongText();
    void decidesWhetherAttentionIsNeeded_data();
    void decidesWhetherAttentionIsNeeded();
    void formatsNotifications_data();
    void formatsNotifications();

    void highlightsAndNotifies_data();
    void highlightsAndNotifies();
    void usesTheCurrentNick();
    void ignoresReservedTabs();
    void treatsAPendingNickAsOwn();
    void findsNoMentionWithoutANick();
    void ignoresTheAwayPrefix();
    void shortensNotifications();
    void notifiesOfALineWithoutSender();
    void marksATabThatTheLineOpened();

    void marksATabOnce();
    void doesNotNotifyForTheCurrentTab();
    void removesTheMarkWhenTheTabBecomesCurrent();
    void doesNotMarkAfterAMentionInTheCurrentTab();
    void notifiesForAMarkedTab();
    void ignoresUnknownTabs();
    void highlightsATabWithoutAPage();

    void notifiesInTheStatusBar();
    void doesNotNotifyInTheActiveWindow();
    void doesNotUseTheStatusBarWithATray();
    void showsNotificationsAsText_data();
    void showsNotificationsAsText();
    void handlesAFlood();

    void writesNoLog_data();
    void writesNoLog();
    void setsTheProgramsIconWithoutATray();

private:
    TemporaryStore store;
};

void TestAttention::init()
{
    store.clear();
}

void TestAttention::findsMentions_data()
{
    QTest::addColumn<QString>("nick");
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("mentioned");

    const auto row = [](const char *name, const QString &nick, const QString &text,
                        bool mentioned) { QTest::newRow(name) << nick << text << mentioned; };
    row("alone", u"me"_s, u"me"_s, true);
    row("at the start", u"me"_s, u"me: hi"_s, true);
    row("in the middle", u"me"_s, u"ask me now"_s, true);
    row("at the end", u"me"_s, u"ask me"_s, true);
    row("in capitals", u"me"_s, u"ask ME"_s, true);
    row("in the nick's capitals", u"Me"_s, u"ask me"_s, true);
    row("between signs", u"me"_s, u"(me)!"_s, true);
    row("before a hyphen", u"me"_s, u"me-too"_s, true);
    row("with a possessive", u"me"_s, u"me's"_s, true);
    row("within a word", u"me"_s, u"some"_s, false);
    row("at a word's start", u"me"_s, u"mention"_s, false);
    row("at a word's end", u"me"_s, u"time"_s, false);
    row("before an underscore", u"me"_s, u"me_"_s, false);
    row("before a digit", u"me"_s, u"me2"_s, false);
    row("first in a word, then alone", u"me"_s, u"some of me"_s, true);
    row("in parts", u"me"_s, u"m e"_s, false);
    row("not at all", u"me"_s, u"hello"_s, false);
    row("in an empty text", u"me"_s, QString(), false);
    row("an empty nick", QString(), u"me"_s, false);
    row("an empty nick and text", QString(), QString(), false);
    // Special characters in the nick are literal.
    row("a dot", u"a.c"_s, u"hi a.c!"_s, true);
    row("what a dot would match", u"a.c"_s, u"hi abc!"_s, false);
    row("a star", u"a*b"_s, u"a*b"_s, true);
    row("what a star would match", u"a*b"_s, u"aab"_s, false);
    row("a bar", u"a|b"_s, u"a|b"_s, true);
    row("what a bar would match", u"a|b"_s, u"a"_s, false);
    row("an end of quoting", u"a\\Eb"_s, u"a\\Eb"_s, true);
    row("a line end's sign", u"a$b"_s, u"a$b"_s, true);
    // At either end of the nick, a character outside words needs a word character beside it.
    row("a bracket at the end", u"me["_s, u"me[ hi"_s, false);
    row("a bracket at the line's end", u"me["_s, u"hi me["_s, false);
    row("a bracket before a word", u"me["_s, u"me[x"_s, true);
    row("a bracket at the start", u"[me"_s, u"hi [me"_s, false);
    row("a bracket after a word", u"[me"_s, u"x[me"_s, true);
    row("brackets around", u"[me]"_s, u"x[me]x"_s, true);
    row("an underscore is a letter", u"_me_"_s, u"hi _me_!"_s, true);
    // Letters outside ASCII are not word characters either.
    row("an accent at the end", u"zo\u00eb"_s, u"hi zo\u00eb"_s, false);
    row("an accent before a word", u"zo\u00eb"_s, u"hi ZO\u00cbx"_s, true);
    row("an accent after", u"me"_s, u"me\u00eb"_s, true);
    row("between format codes", u"me"_s, u"\u0002me\u0002"_s, true);
    row("a long text", u"me"_s, QString(QString(100'000, u'x') + u" me"_s), true);
    row("a long nick", QString(10'000, u'n'), QString(10'000, u'N'), true);
}

void TestAttention::findsMentions()
{
    QFETCH(const QString, nick);
    QFETCH(const QString, text);
    QTEST(Attention::mentions(text, nick), "mentioned");
}

void TestAttention::shortensALongText_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("result");

    const auto x = [](int count) { return QString(count, u'x'); };
    QTest::newRow("empty") << QString() << QString();
    QTest::newRow("short") << u"hello"_s << u"hello"_s;
    QTest::newRow("254") << x(254) << x(254);
    QTest::newRow("255") << x(255) << x(255);
    QTest::newRow("256") << x(256) << QString(x(252) + u"..."_s);
    QTest::newRow("many") << x(100'000) << QString(x(252) + u"..."_s);
    // Counts code units, not characters.
    QTest::newRow("pairs") << u"\U0001F642"_s.repeated(128)
                           << QString(u"\U0001F642"_s.repeated(126) + u"..."_s);
}

void TestAttention::shortensALongText()
{
    QFETCH(const QString, text);
    QTEST(Attention::shortened(text), "result");
}

void TestAttention::decidesWhetherAttentionIsNeeded_data()
{
    QTest::addColumn<QString>("tab");
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("needed");

    QTest::newRow("mention in a channel") << u"#a"_s << u"hi me"_s << true;
    QTest::newRow("no mention in a channel") << u"#a"_s << u"hi"_s << false;
    QTest::newRow("mention in a conversation") << u"bob"_s << u"hi me"_s << true;
    QTest::newRow("no mention in a conversation") << u"bob"_s << u"hi"_s << true;
    QTest::newRow("local channel") << u"&a"_s << u"hi"_s << true;
    QTest::newRow("server") << u"Server"_s << u"hi me"_s << false;
    QTest::newRow("list") << u"List"_s << u"hi me"_s << false;
}

void TestAttention::decidesWhetherAttentionIsNeeded()
{
    QFETCH(const QString, tab);
    QFETCH(const QString, text);
    QTEST(Attention::isNeeded(tab, text, u"me"_s), "needed");
}

void TestAttention::formatsNotifications_data()
{
    QTest::addColumn<QString>("tab");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("message");

    const QString whole(255, u'x');
    const QString truncated = QString(252, u'x') + u"..."_s;
    QTest::newRow("channel") << u"#a"_s << u"hi %2"_s << u"#a"_s << u"bob%1: hi %2"_s;
    QTest::newRow("conversation") << u"carol"_s << u"hi"_s << u"bob%1"_s << u"hi"_s;
    QTest::newRow("longest that fits") << u"carol"_s << whole << u"bob%1"_s << whole;
    QTest::newRow("too long") << u"carol"_s << QString(256, u'x') << u"bob%1"_s << truncated;
    QTest::newRow("too long in a channel")
            << u"#a"_s << QString(256, u'x') << u"#a"_s << QString(u"bob%1: "_s + truncated);
}

void TestAttention::formatsNotifications()
{
    QFETCH(const QString, tab);
    QFETCH(const QString, text);
    const Attention::Notification notification = Attention::notificationFor(tab, text, u"bob%1"_s);
    QTEST(notification.title, "title");
    QTEST(notification.message, "message");
}

void TestAttention::highlightsAndNotifies_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("tab");
    QTest::addColumn<bool>("highlighted");
    QTest::addColumn<QString>("notification"); // None if null.

    const auto row = [](const char *name, const QString &line, const QString &tab, bool highlighted,
                        const QString &notification) {
        QTest::newRow(name) << line << tab << highlighted << notification;
    };
    const QString no;
    row("a mention", u":bob!u@h PRIVMSG #a :hi ME!"_s, u"#a"_s, true, u"#a: bob: hi ME!"_s);
    row("no mention", u":bob!u@h PRIVMSG #a :some time"_s, u"#a"_s, false, no);
    row("a mention by the user", u":me!u@h PRIVMSG #a :me"_s, u"#a"_s, false, no);
    row("a mention by the user in capitals", u":ME!u@h PRIVMSG #a :me"_s, u"#a"_s, false, no);
    row("a private line", u":bob!u@h PRIVMSG me :hi"_s, u"bob"_s, true, u"bob: hi"_s);
    row("a private CTCP line", u":bob!u@h PRIVMSG me :\u0001PING 1\u0001"_s, u"bob"_s, true,
        u"bob: \u0001PING 1\u0001"_s);
    row("a server line", u":irc.test 372 me :- me"_s, u"Server"_s, false, no);
    row("another's join", u":dave!u@h JOIN #a"_s, u"#a"_s, false, no);
    row("a part", u":carol!u@h PART #a :bye me"_s, u"#a"_s, true, u"#a: carol: left #a (bye me)"_s);
    row("a kick by the user", u":me!u@h KICK #a carol :out"_s, u"#a"_s, true,
        u"#a: carol: was kicked by me (out)"_s);
    row("a kick with the user as its reason", u":bob!u@h KICK #a carol :for me"_s, u"#a"_s, true,
        u"#a: carol: was kicked by bob (for me)"_s);
    row("a kick of the user", u":bob!u@h KICK #a me :me"_s, u"#a"_s, false, no);
    row("a new nick like the user's", u":carol!u@h NICK me|2"_s, u"#a"_s, true,
        u"#a: carol: is now known as me|2"_s);
    row("a quit in a private tab", u":bob!u@h QUIT :bye"_s, u"bob"_s, true, u"bob: quit (bye)"_s);
    row("a status in a private tab", u":irc.test 604 me bob i h 1 :is online"_s, u"bob"_s, true,
        u"bob: is back online"_s);
    row("a join of the partner", u":bob!u@h JOIN #a"_s, u"bob"_s, true, u"bob: is back online"_s);
    row("a channel with another prefix", u":bob!u@h PRIVMSG &a :hi"_s, u"bob"_s, true,
        u"bob: hi"_s);
}

void TestAttention::highlightsAndNotifies()
{
    QFETCH(const QString, line);
    QFETCH(const QString, tab);
    QFETCH(const bool, highlighted);
    QFETCH(const QString, notification);

    InactiveSession inactive;
    QVERIFY(inactive.start());
    QVERIFY(inactive.session.receive(line));
    QCOMPARE(inactive.isHighlighted(tab), highlighted);
    QCOMPARE(inactive.isMarked(tab), highlighted);
    QCOMPARE(inactive.notifications(),
             notification.isNull() ? QStringList() : QStringList{notification});
}

void TestAttention::usesTheCurrentNick()
{
    InactiveSession inactive;
    QVERIFY(inactive.start());
    QVERIFY(inactive.session.receive(u":me!u@h NICK new[x"_s));
    inactive.clearNotifications();
    QVERIFY(inactive.session.receiveAll(
            {u":bob!u@h PRIVMSG #a :me"_s, u":bob!u@h PRIVMSG #a :hi new[x"_s}));
    QCOMPARE(inactive.notifications(), QStringList{u"#a: bob: hi new[x"_s});
}

void TestAttention::ignoresReservedTabs()
{
    InactiveSession inactive;
    QVERIFY(inactive.start());
    const MainWindowProbe &probe = inactive.session.probe;
    probe.addListTab();
    probe.showTab(u"#a"_s);
    inactive.clearNotifications();
    probe.appendMessageToTab(u"Server"_s, u"hi me"_s, u"bob"_s);
    QTest::ignoreMessage(QtWarningMsg,
                         QRegularExpression(u"^appendMessageToTab: chatView is null for tab"_s));
    probe.appendMessageToTab(u"List"_s, u"hi me"_s, u"bob"_s);
    QVERIFY(!inactive.isHighlighted(u"Server"_s));
    QVERIFY(!inactive.isHighlighted(u"List"_s));
    QCOMPARE(inactive.notifications(), QStringList());
}

void TestAttention::treatsAPendingNickAsOwn()
{
    InactiveSession inactive;
    QVERIFY(inactive.start());
    inactive.session.probe.pendingNick() = u"Carol"_s;
    QVERIFY(inactive.session.receiveAll(
            {u":carol!u@h PRIVMSG #a :me"_s, u":carol!u@h PRIVMSG me :hi"_s}));
    QVERIFY(!inactive.isHighlighted(u"#a"_s));
    QVERIFY(!inactive.isHighlighted(u"carol"_s));
    QCOMPARE(inactive.notifications(), QStringList());
}

void TestAttention::findsNoMentionWithoutANick()
{
    InactiveSession inactive;
    const MainWindowProbe &probe = inactive.session.probe;
    probe.openTabs({u"#a"_s, u"bob"_s});
    probe.showTab(u"Server"_s);
    QVERIFY(inactive.deactivate());
    inactive.clearNotifications();
    QCOMPARE(probe.connection().currentNick(), QString());
    probe.appendMessageToTab(u"#a"_s, u" me "_s, u"carol"_s);
    QVERIFY(!inactive.isHighlighted(u"#a"_s));
    // Without a nick, a line without a sender counts as the user's own.
    probe.appendMessageToTab(u"bob"_s, u"a line"_s);
    QVERIFY(!inactive.isHighlighted(u"bob"_s));
    probe.appendMessageToTab(u"bob"_s, u"a line"_s, u"bob"_s);
    QVERIFY(inactive.isHighlighted(u"bob"_s));
    QCOMPARE(inactive.notifications(), QStringList{u"bob: a line"_s});
}

// The away prefix contains text of the user, which can contain any nick.
void TestAttention::ignoresTheAwayPrefix()
{
    InactiveSession inactive;
    QVERIFY(inactive.start());
    inactive.session.probe.isAway() = true;
    inactive.session.probe.awayMessage() = u"me"_s;
    QVERIFY(inactive.session.receiveAll(
            {u":bob!u@h PRIVMSG #a :hello"_s, u":me!u@h PRIVMSG #a :hello"_s}));
    QVERIFY(!inactive.isHighlighted(u"#a"_s));
    QVERIFY(inactive.session.receive(u":bob!u@h PRIVMSG #a :me"_s));
    QCOMPARE(inactive.notifications(), QStringList{u"#a: bob: me"_s});
}

void TestAttention::shortensNotifications()
{
    InactiveSession inactive;
    QVERIFY(inactive.start());
    const QString whole = u"me "_s + QString(252, u'x');
    QVERIFY(inactive.session.receiveAll({QString(u":bob!u@h PRIVMSG #a :"_s + whole),
                                         QString(u":bob!u@h PRIVMSG me :"_s + whole),
                                         QString(u":bob!u@h PRIVMSG #a :"_s + whole + u'y'),
                                         QString(u":bob!u@h PRIVMSG me :"_s + whole + u'y')}));
    const QString shortened = whole.first(252) + u"..."_s;
    QCOMPARE(inactive.notifications(),
             (QStringList{QString(u"#a: bob: "_s + whole), QString(u"bob: "_s + whole),
                          QString(u"#a: bob: "_s + shortened), QString(u"bob: "_s + shortened)}));
    // A mention in the truncated part counts.
    inactive.clearNotifications();
    QVERIFY(inactive.session.receive(u":bob!u@h PRIVMSG #a :%1 me"_s.arg(QString(300, u'x'))));
    QCOMPARE(inactive.notifications(), QStringList{u"#a: bob: %1..."_s.arg(QString(252, u'x'))});
}

// For example, the lines of a WHOIS reply in a private tab.
void TestAttention::notifiesOfALineWithoutSender()
{
    InactiveSession inactive;
    QVERIFY(inactive.start());
    inactive.session.probe.showTab(u"bob"_s);
    inactive.session.probe.typeLine(u"/whois bob"_s);
    inactive.session.probe.showTab(u"Server"_s);
    inactive.clearNotifications();
    QVERIFY(inactive.session.receive(u":irc.test 318 me bob :End"_s));
    QVERIFY(inactive.isMarked(u"bob"_s));
    QCOMPARE(inactive.notifications(),
             (QStringList{u": *** WHOIS bob: @ ()"_s, u": *** bob is using  ()"_s}));
}

// The line opens its tab in the background before it is checked.
void TestAttention::marksATabThatTheLineOpened()
{
    InactiveSession inactive;
    QVERIFY(inactive.start());
    inactive.session.probe.showTab(u"#a"_s);
    inactive.clearNotifications();
    QVERIFY(inactive.session.receive(u":dave!u@h PRIVMSG me :hi"_s));
    QVERIFY(inactive.isMarked(u"dave"_s));
    QCOMPARE(inactive.notifications(), QStringList{u"dave: hi"_s});

    // From "Server", the new tab becomes current.
    inactive.session.probe.showTab(u"Server"_s);
    inactive.clearNotifications();
    QVERIFY(inactive.session.receive(u":erin!u@h PRIVMSG me :hi"_s));
    QCOMPARE(inactive.session.probe.currentTabName(), u"erin"_s);
    QVERIFY(!inactive.isMarked(u"erin"_s));
    QCOMPARE(inactive.notifications(), QStringList());
}

void TestAttention::marksATabOnce()
{
    InactiveSession inactive;
    QVERIFY(inactive.start());
    HighlightTabBar &bar = inactive.session.probe.tabBar();
    inactive.session.probe.highlightTab(u"#a"_s);
    QVERIFY(inactive.isHighlighted(u"#a"_s));
    QVERIFY(inactive.isMarked(u"#a"_s));
    // A highlighted tab is not marked again, even if the bar has removed its mark.
    bar.unhighlightTab(1);
    inactive.session.probe.highlightTab(u"#a"_s);
    QVERIFY(inactive.isHighlighted(u"#a"_s));
    QVERIFY(!inactive.isMarked(u"#a"_s));
}

void TestAttention::doesNotNotifyForTheCurrentTab()
{
    InactiveSession inactive;
    QVERIFY(inactive.start());
    for (const QString &tab : {u"#a"_s, u"bob"_s}) {
        inactive.session.probe.showTab(tab);
        inactive.clearNotifications();
        QVERIFY(inactive.session.receive(
                u":bob!u@h PRIVMSG %1 :hi me"_s.arg(tab == u"bob"_s ? u"me"_s : tab)));
        QVERIFY(inactive.isHighlighted(tab));
        QVERIFY(!inactive.isMarked(tab));
        QCOMPARE(inactive.notifications(), QStringList());
    }
}

void TestAttention::removesTheMarkWhenTheTabBecomesCurrent()
{
    InactiveSession inactive;
    QVERIFY(inactive.start());
    for (int round = 0; round < 2; ++round) {
        QVERIFY(inactive.session.receive(u":bob!u@h PRIVMSG #a :hi me"_s));
        QVERIFY(inactive.isHighlighted(u"#a"_s));
        QVERIFY(inactive.isMarked(u"#a"_s));
        inactive.session.probe.showTab(u"#a"_s);
        QVERIFY(!inactive.isHighlighted(u"#a"_s));
        QVERIFY(!inactive.isMarked(u"#a"_s));
        inactive.session.probe.showTab(u"Server"_s);
    }
}

void TestAttention::doesNotMarkAfterAMentionInTheCurrentTab()
{
    InactiveSession inactive;
    QVERIFY(inactive.start());
    inactive.session.probe.showTab(u"#a"_s);
    QVERIFY(inactive.session.receive(u":bob!u@h PRIVMSG #a :hi me"_s));
    inactive.session.probe.showTab(u"Server"_s);
    QVERIFY(inactive.isHighlighted(u"#a"_s));

    inactive.clearNotifications();
    QVERIFY(inactive.session.receive(u":bob!u@h PRIVMSG #a :me again"_s));
    QVERIFY(!inactive.isMarked(u"#a"_s));
    QCOMPARE(inactive.notifications(), QStringList{u"#a: bob: me again"_s});

    inactive.session.probe.showTab(u"#a"_s);
    inactive.session.probe.showTab(u"Server"_s);
    QVERIFY(inactive.session.receive(u":bob!u@h PRIVMSG #a :and me"_s));
    QVERIFY(inactive.isMarked(u"#a"_s));
}

void TestAttention::notifiesForAMarkedTab()
{
    InactiveSession inactive;
    QVERIFY(inactive.start());
    QVERIFY(inactive.session.receiveAll(
            {u":bob!u@h PRIVMSG #a :me 1"_s, u":bob!u@h PRIVMSG #a :me 2"_s}));
    QCOMPARE(inactive.notifications(), (QStringList{u"#a: bob: me 1"_s, u"#a: bob: me 2"_s}));
}

void TestAttention::ignoresUnknownTabs()
{
    InactiveSession inactive;
    QVERIFY(inactive.start());
    const QStringList names = inactive.session.probe.tabs().keys();
    inactive.session.probe.highlightTab(u"nobody"_s);
    QCOMPARE(inactive.session.probe.tabs().keys(), names);
}

void TestAttention::highlightsATabWithoutAPage()
{
    InactiveSession inactive;
    QVERIFY(inactive.start());
    inactive.session.probe.tabs().insert(u"lost"_s, MainWindow::TabInfo());
    inactive.session.probe.highlightTab(u"lost"_s);
    QVERIFY(inactive.isHighlighted(u"lost"_s));
    for (int index = 0; index < inactive.session.probe.tabBar().count(); ++index)
        QVERIFY(!inactive.session.probe.tabBar().isHighlighted(index));
}

void TestAttention::notifiesInTheStatusBar()
{
    InactiveSession inactive;
    QVERIFY(inactive.start());
    const QStatusBar *bar = inactive.session.window.statusBar();
    QCOMPARE(inactive.session.probe.trayIcon(), nullptr);
    inactive.session.probe.showNotification(u"title"_s, u"a text: with %1"_s);
    QCOMPARE(bar->currentMessage(), u"title: a text: with %1"_s);
    // The bar's only timer ends the message; then the bar shows the connection again.
    auto *timer = bar->findChild<QTimer *>();
    QVERIFY(timer != nullptr);
    QVERIFY(timer->isActive());
    QCOMPARE(timer->interval(), NotificationMs);
    timer->start(0);
    QTRY_COMPARE_WITH_TIMEOUT(bar->currentMessage(), u"Connected to 127.0.0.1 as me"_s,
                              WaitTimeout);

    inactive.session.probe.showNotification(QString(), u"a text"_s);
    QCOMPARE(bar->currentMessage(), u": a text"_s);
}

void TestAttention::doesNotNotifyInTheActiveWindow()
{
    InactiveSession inactive;
    QVERIFY(inactive.start());
    QVERIFY(inactive.activate());
    QVERIFY(inactive.session.receive(u":bob!u@h PRIVMSG #a :hi me"_s));
    QCOMPARE(inactive.notifications(), QStringList());
    QVERIFY(inactive.isMarked(u"#a"_s));
    QCOMPARE(inactive.session.probe.lastLine(u"#a"_s), u"bob|hi me"_s);

    QVERIFY(inactive.deactivate());
    QVERIFY(inactive.session.receive(u":bob!u@h PRIVMSG #a :me still"_s));
    QCOMPARE(inactive.notifications(), QStringList{u"#a: bob: me still"_s});
}

void TestAttention::doesNotUseTheStatusBarWithATray()
{
    QVERIFY(QSystemTrayIcon::supportsMessages());
    InactiveSession inactive;
    QVERIFY(inactive.start());
    QSystemTrayIcon tray;
    inactive.session.probe.trayIcon() = &tray;
    QVERIFY(inactive.session.receive(u":bob!u@h PRIVMSG #a :hi me"_s));
    QCOMPARE(inactive.notifications(), QStringList());
    QVERIFY(inactive.isMarked(u"#a"_s));
    inactive.session.probe.trayIcon() = nullptr;
}

void TestAttention::showsNotificationsAsText_data()
{
    QTest::addColumn<QString>("nick");
    QTest::addColumn<QString>("text");

    QTest::newRow("markup") << u"<b>x</b>"_s << u"me <a href='x:y'>here</a> &amp; <img src=x>"_s;
    QTest::newRow("placeholders") << u"%2"_s << u"me %1 %2 %3"_s;
    QTest::newRow("control characters") << u"b\u0002b"_s
                                        << u"me \u0003"
                                           u"04red\u001b[0m \u0007"_s;
    QTest::newRow("right to left") << u"b\u202Eb"_s << u"me \u05D0 \u202Egnp.exe"_s;
    QTest::newRow("a long nick") << QString(10'000, u'n') << u"me"_s;
}

void TestAttention::showsNotificationsAsText()
{
    QFETCH(const QString, nick);
    QFETCH(const QString, text);
    InactiveSession inactive;
    QVERIFY(inactive.start());
    QVERIFY(inactive.session.receive(u':' + nick + u"!u@h PRIVMSG #a :"_s + text));
    QCOMPARE(inactive.notifications(), QStringList{QString(u"#a: "_s + nick + u": "_s + text)});
}

void TestAttention::handlesAFlood()
{
    InactiveSession inactive;
    QVERIFY(inactive.start());
    QStringList lines;
    for (int i = 0; i < 1000; ++i) {
        lines.append(u":bob!u@h PRIVMSG #a :me %1"_s.arg(i));
        lines.append(u":p%1!u@h PRIVMSG me :hi"_s.arg(i % 20));
    }
    QVERIFY(inactive.session.receiveAll(lines));
    QVERIFY(inactive.isHighlighted(u"#a"_s));
    QVERIFY(inactive.isMarked(u"#a"_s));
    QVERIFY(inactive.notifications().contains(u"#a: bob: me 999"_s));
}

void TestAttention::writesNoLog_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("folder") << QString();
    QTest::newRow("missing folder") << u"/missing/logs"_s;
}

void TestAttention::writesNoLog()
{
    QFETCH(const QString, path);
    const QTemporaryDir folder;
    QSettings settings;
    settings.setValue(u"logEnabled"_s, true);
    settings.setValue(u"logPath"_s, QString(folder.path() + path));
    settings.sync();
    InactiveSession inactive;
    QVERIFY(inactive.start());
    QVERIFY(inactive.session.receive(u":bob!u@h PRIVMSG #a :hi me"_s));
    QVERIFY(QDir(folder.path()).isEmpty());
    QCOMPARE(inactive.session.probe.preferences().value(u"logPath"_s).toString(),
             QString(folder.path() + path));
}

void TestAttention::setsTheProgramsIconWithoutATray()
{
    QApplication::setWindowIcon(QIcon());
    const WindowSession session;
    QVERIFY(!QSystemTrayIcon::isSystemTrayAvailable());
    QCOMPARE(session.probe.trayIcon(), nullptr);
    QCOMPARE(session.window.findChild<QSystemTrayIcon *>(), nullptr);
    const QIcon icon = QApplication::windowIcon();
    QCOMPARE(icon.actualSize(QSize(128, 128)), QSize(128, 128));
    QCOMPARE(icon.pixmap(QSize(128, 128)).toImage(), QPixmap(u":/icons/app_icon"_s).toImage());
}

QTEST_MAIN(TestAttention)
#include "tst_Attention.moc"
