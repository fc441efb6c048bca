// Texts from the server, other users and the settings store are shown verbatim. The tests compare
// what widgets draw, not the texts that they were given.

#include "ConnectDialogPage.h"
#include "DrawnText.h"
#include "HighlightTabBar.h"
#include "IRCConnection.h"
#include "ModalAnswers.h"
#include "MyTabWidget.h"
#include "PreferencesForm.h"
#include "StoredServers.h"
#include "TemporaryStore.h"
#include "Waiting.h"
#include "WindowSession.h"

#include <QAbstractItemView>
#include <QAccessible>
#include <QApplication>
#include <QClipboard>
#include <QCompleter>
#include <QFontMetrics>
#include <QHelpEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QMessageBox>
#include <QMimeData>
#include <QPushButton>
#include <QStatusBar>
#include <QTest>
#include <QTextBrowser>
#include <QTextDocument>
#include <QTimer>
#include <QToolTip>
#include <QTreeWidget>
#include <QWindow>

using namespace Qt::StringLiterals;

namespace {

/// Adds texts that some widget would interpret. None contains a space, so that each can be a name.
void addRows()
{
    QTest::addColumn<QString>("hostile");

    QTest::newRow("tag") << u"<b>x</b>"_s;
    QTest::newRow("image") << u"<img/src=x>"_s;
    QTest::newRow("entity") << u"&amp;&lt;"_s;
    QTest::newRow("ampersand") << u"a&b"_s;
    QTest::newRow("two ampersands") << u"a&&b"_s;
    QTest::newRow("mnemonic") << u"&x"_s;
    QTest::newRow("placeholder") << u"%1%2"_s;
    QTest::newRow("title placeholder") << u"x[*]y"_s;
    QTest::newRow("right to left") << u"a\u202Ebc\u202Cd"_s;
    QTest::newRow("control character") << u"a\u0007b"_s;
    QTest::newRow("line feed") << u"a\nb"_s;
}

// Removes spaces, line ends and invisible characters, which widgets draw differently.
QString withoutInvisible(QString text)
{
    return text.removeIf([](QChar character) {
        return character.isSpace() || character.category() == QChar::Other_Control
               || character.category() == QChar::Other_Format;
    });
}

bool shows(QWidget &widget, const QString &text)
{
    const QString drawn = withoutInvisible(DrawnText::joined(widget));
    if (drawn.contains(withoutInvisible(text)))
        return true;
    qInfo() << "Drawn:" << drawn;
    return false;
}

// Starts a session of "me" in #a, the current tab, with alice and the user `nick`.
bool begin(WindowSession &session, const QString &nick)
{
    return session.registerAs() && session.join(u"#a"_s, u"@me alice"_s)
           && session.receive(u":%1!u@h JOIN #a"_s.arg(nick));
}

QLabel *showToolTip(QTabBar &bar, int index)
{
    const QPoint position = bar.tabRect(index).center();
    QHelpEvent event(QEvent::ToolTip, position, bar.mapToGlobal(position));
    QCoreApplication::sendEvent(&bar, &event);
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget *window : windows) {
        auto *label = qobject_cast<QLabel *>(window);
        if (label != nullptr && label->isVisible() && label->inherits("QTipLabel"))
            return label;
    }
    return nullptr;
}

QString accessibleName(QTabBar &bar, int index)
{
    QAccessibleInterface *accessible = QAccessible::queryAccessibleInterface(&bar);
    return accessible->child(index)->text(QAccessible::Name);
}

} // namespace

class TestUntrustedText final : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void nicksInTabs_data() { addRows(); }
    void nicksInTabs();
    void ampersandsFitIntoTabs_data();
    void ampersandsFitIntoTabs();
    void tabsHaveNoMnemonics();
    void nicksInLists_data() { addRows(); }
    void nicksInLists();
    void ownNick_data() { addRows(); }
    void ownNick();
    void notifications_data() { addRows(); }
    void notifications();

    void messagesAndTopics_data() { addRows(); }
    void messagesAndTopics();
    void channelLists_data() { addRows(); }
    void channelLists();
    void channelsInTitles_data() { addRows(); }
    void channelsInTitles();

    void storedServers_data() { addRows(); }
    void storedServers();
    void storedFont();

private:
    TemporaryStore store;
};

void TestUntrustedText::init()
{
    store.clear();
}

void TestUntrustedText::nicksInTabs()
{
    QFETCH(const QString, hostile);
    WindowSession session;
    QVERIFY(begin(session, u"bob"_s));
    QVERIFY(session.receive(u":%1!u@h PRIVMSG me :hi"_s.arg(hostile)));
    HighlightTabBar &bar = session.probe.tabBar();
    QVERIFY(bar.isHighlighted(2));
    QVERIFY(shows(bar, hostile));
    session.probe.clickTab(2);
    QVERIFY(!bar.isHighlighted(2));
    QVERIFY(shows(bar, hostile));
    QCOMPARE(accessibleName(bar, 2), hostile);
    QLabel *tip = showToolTip(bar, 2);
    QVERIFY(tip != nullptr);
    QVERIFY(shows(*tip, hostile));

    const QString renamed = u"new"_s + hostile;
    QVERIFY(session.receive(u":%1!u@h NICK %2"_s.arg(hostile, renamed)));
    QVERIFY(shows(bar, renamed));
    QCOMPARE(accessibleName(bar, 2), renamed);
}

// Qt measures a tab's name without its ampersands.
void TestUntrustedText::ampersandsFitIntoTabs_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("one") << u"rock&roll-and-rhythm"_s;
    QTest::newRow("at the end") << u"rock-and-roll-and-&"_s;
    QTest::newRow("pair") << u"rock&&roll-and-rhythm"_s;
    QTest::newRow("many") << u"&a&b&c&d&e&f&g&h&i&j"_s;
}

void TestUntrustedText::ampersandsFitIntoTabs()
{
    QFETCH(const QString, name);
    WindowSession session;
    QVERIFY(begin(session, u"bob"_s));
    // A name that Qt measures completely.
    const QString plain = QString(name).replace(u'&', u'+');
    QVERIFY(session.receive(u":%1!u@h PRIVMSG me :hi"_s.arg(name)));
    QVERIFY(session.receive(u":bob!u@h PRIVMSG me :hi"_s));
    HighlightTabBar &bar = session.probe.tabBar();
    QFont font = bar.font();
    font.setBold(true);
    const QFontMetrics metrics(font);
    const auto textWidth = [&metrics](const QString &text) {
        return metrics.size(Qt::TextSingleLine, text).width();
    };
    const auto surplus = [&](int index, const QString &text) {
        return bar.tabRect(index).width() - textWidth(text);
    };
    const int surplusBefore = surplus(2, name);
    QVERIFY(session.receive(u":%1!u@h NICK %2"_s.arg(name, plain)));
    const int plainSurplus = surplus(2, plain);
    QVERIFY(surplusBefore >= plainSurplus - 1);
    QVERIFY(session.receive(u":bob!u@h NICK %1"_s.arg(name)));
    QVERIFY(surplus(3, name) >= plainSurplus - 1);
}

// Otherwise Alt and the letter after an ampersand would switch to that tab.
void TestUntrustedText::tabsHaveNoMnemonics()
{
    WindowSession session;
    QVERIFY(begin(session, u"bob"_s));
    QVERIFY(session.receiveAll(
            {u":x&y!u@h PRIVMSG me :hi"_s, u":bob!u@h PRIVMSG me :hi"_s, u":bob!u@h NICK x&z"_s}));
    session.window.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&session.window, WaitTimeout));
    for (const Qt::Key key : {Qt::Key_Y, Qt::Key_Z}) {
        QTest::keyClick(&session.window, key, Qt::AltModifier);
        QCOMPARE(session.probe.currentTabName(), u"#a"_s);
    }
    // Other widgets keep their mnemonics.
    const QPushButton button(u"&x"_s);
    QCOMPARE(button.shortcut(), QKeySequence(Qt::ALT | Qt::Key_X));
}

void TestUntrustedText::nicksInLists()
{
    QFETCH(const QString, hostile);
    WindowSession session;
    const QString nick = u'n' + hostile; // Some would start with a mode prefix.
    QVERIFY(begin(session, nick));
    QVERIFY(shows(session.probe.userList(), nick));
    QCompleter &completer = session.probe.nickCompleter();
    completer.setCompletionPrefix(u"n"_s);
    completer.complete();
    QVERIFY(shows(*completer.popup(), nick));
    completer.popup()->hide();
}

void TestUntrustedText::ownNick()
{
    QFETCH(const QString, hostile);
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.receive(u":me!u@h NICK "_s + hostile));
    QVERIFY(shows(*session.window.statusBar(), u"Connected to 127.0.0.1 as "_s + hostile));
    ModalAnswers answers;
    bool shown = false;
    answers.queueForDialog([&](QDialog *dialog) {
        shown = shows(*dialog->findChild<QLineEdit *>(), hostile);
        dialog->reject();
    });
    session.choose(u"Change Nick..."_s);
    QCOMPARE(answers.problems(), QStringList());
    QVERIFY(shown);
}

// In the status bar; tst_Tray covers the notifications of the desktop and of Qt.
void TestUntrustedText::notifications()
{
    QFETCH(const QString, hostile);
    WindowSession session;
    QVERIFY(session.registerAs());
    QWidget other;
    other.show();
    other.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&other, WaitTimeout));
    QVERIFY(session.join(u"#a"_s, u"me"_s));
    // Otherwise the bar could clear the message surplusBefore the check.
    const QStatusBar *bar = session.window.statusBar();
    QObject::connect(bar, &QStatusBar::messageChanged, bar, [bar] {
        if (auto *timer = bar->findChild<QTimer *>())
            timer->stop();
    });
    QVERIFY(session.receive(u":%1!u@h PRIVMSG me :hi %1"_s.arg(hostile)));
    QVERIFY(shows(*session.window.statusBar(), u"%1: hi %1"_s.arg(hostile)));
}

void TestUntrustedText::messagesAndTopics()
{
    QFETCH(const QString, hostile);
    WindowSession session;
    const QString nick = u'n' + hostile;
    QVERIFY(begin(session, nick));
    const QString text = u"one %1 two"_s.arg(hostile);
    QVERIFY(session.receiveAll({u":%1!u@h PRIVMSG #a :%2"_s.arg(nick, text),
                                u":irc.test 332 me #a :topic %1"_s.arg(text),
                                u":irc.test 372 me :four %1"_s.arg(hostile)}));
    const MainWindow::TabInfo channel = session.probe.tabs().value(u"#a"_s);
    QVERIFY(shows(*channel.chatView, text));
    QVERIFY(shows(*channel.chatView, nick));
    QVERIFY(shows(*channel.topicLabel, u"topic "_s + text));

    channel.chatView->selectAll();
    channel.chatView->copy();
    const QMimeData *copied = QGuiApplication::clipboard()->mimeData();
    QVERIFY(withoutInvisible(copied->text()).contains(withoutInvisible(text)));
    QTextDocument document;
    document.setHtml(copied->html());
    QVERIFY(withoutInvisible(document.toPlainText()).contains(withoutInvisible(text)));

    session.probe.clickTab(0);
    QVERIFY(shows(*session.probe.tabs().value(u"Server"_s).chatView, u"four "_s + hostile));
}

void TestUntrustedText::channelLists()
{
    QFETCH(const QString, hostile);
    WindowSession session;
    QVERIFY(session.registerAs());
    session.choose(u"Channel &List"_s);
    QVERIFY(session.receiveAll({u":%1 321 me :Channels"_s.arg(hostile),
                                u":irc.test 322 me #%1 5 :one %1"_s.arg(hostile),
                                u":irc.test 323 me :End"_s}));
    QTreeWidget &tree = *session.probe.listTree();
    QVERIFY(shows(tree, u'#' + hostile));
    QVERIFY(shows(tree, u"one "_s + hostile));
    QVERIFY(shows(*session.probe.listInfoLabel(), hostile + u": 1 channels, 5 users"_s));

    ModalAnswers answers;
    bool shown = false;
    answers.queueForMenu([&](QMenu *menu) {
        shown = shows(*menu, u"Join #"_s + hostile);
        menu->close();
    });
    emit tree.customContextMenuRequested(tree.visualItemRect(tree.topLevelItem(0)).center());
    QCOMPARE(answers.problems(), QStringList());
    QVERIFY(shown);
}

void TestUntrustedText::channelsInTitles()
{
    QFETCH(const QString, hostile);
    WindowSession session;
    QVERIFY(session.registerAs());
    const QString channel = u'#' + hostile;
    QVERIFY(session.join(channel, u"@me"_s));
    QVERIFY(session.receive(u":irc.test 332 me %1 :one %2"_s.arg(channel, hostile)));
    ModalAnswers answers;
    QStringList titles;
    bool shown = false;
    answers.queueForDialog([&](QDialog *dialog) {
        titles = {dialog->windowTitle(), dialog->windowHandle()->title()};
        shown = shows(*dialog, u"one "_s + hostile);
        dialog->reject();
    });
    session.probe.tabs().value(channel).editTopicBtn->click();
    QCOMPARE(answers.problems(), QStringList());
    QCOMPARE(titles, QStringList(2, u"Edit Topic for "_s + channel));
    QVERIFY(shown);
}

void TestUntrustedText::storedServers()
{
    QFETCH(const QString, hostile);
    StoredServers::addCustom(hostile, 6667);
    const QString address = hostile + u":6667"_s;
    ConnectDialogPage page;
    page.dialog.show();
    QVERIFY(page.select(address));
    page.list->scrollToItem(page.list->currentItem());
    QVERIFY(shows(*page.list, address));
    QVERIFY(shows(page.dialog, hostile));

    ModalAnswers answers;
    QStringList titles;
    answers.queueForDialog([&](QDialog *form) {
        titles = {form->windowTitle(), form->windowHandle()->title()};
        form->reject();
    });
    page.clickEdit();
    QCOMPARE(titles, QStringList(2, u"Edit "_s + address));

    bool shown = false;
    answers.queueForBox([&](QMessageBox *box) {
        shown = shows(*box, address);
        box->reject();
    });
    page.clickDelete();
    QCOMPARE(answers.problems(), QStringList());
    QVERIFY(shown);
}

void TestUntrustedText::storedFont()
{
    WindowSession session;
    session.probe.chatFont() = QFont(u"Ink & Quill <b>"_s, 12);
    const PreferencesForm form(session);
    QVERIFY(shows(*form.fontButton(), u"Ink & Quill <b> 12"_s));
}

QTEST_MAIN(TestUntrustedText)
#include "tst_UntrustedText.moc"
