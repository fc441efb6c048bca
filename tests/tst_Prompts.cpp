#include "IRCConnection.h"
#include "Interruptions.h"
#include "ModalAnswers.h"
#include "SessionOutput.h"
#include "TemporaryStore.h"
#include "ThemeManager.h"
#include "Waiting.h"
#include "WindowSession.h"

#include <QAction>
#include <QCloseEvent>
#include <QDialog>
#include <QDialogButtonBox>
#include <QInputDialog>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>
#include <QPushButton>
#include <QRegularExpression>
#include <QStatusBar>
#include <QTest>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {

const auto Server = u"Server"_s;
const auto MarkAway = u"Marked Away..."_s;
const auto UnmarkAway = u"Unmark Away"_s;
const auto ChangeNick = u"Change Nick..."_s;
const auto Join = u"&Join channel..."_s;

// Lines that the window does not send by itself.
const QRegularExpression UserLines(u"^(?!WATCH |QUIT )"_s);

using Lines = SessionOutput::Lines;
using Answer = std::function<void(QDialog *)>;

Answer accepting(const QString &text)
{
    return [text](QDialog *dialog) {
        dialog->findChild<QLineEdit *>()->setText(text);
        dialog->accept();
    };
}

using Dismissal = void (*)(QDialog *dialog);

void dismissByCancel(QDialog *dialog)
{
    dialog->findChild<QPushButton *>(u"cancelButton"_s)->click();
}

void dismissByEscape(QDialog *dialog)
{
    QTest::keyClick(dialog->findChild<QLineEdit *>(), Qt::Key_Escape);
}

void dismissByTitleBar(QDialog *dialog)
{
    QCloseEvent event;
    QCoreApplication::sendEvent(dialog, &event);
}

// What can happen while a prompt is open.
using SessionEvent = bool (*)(WindowSession &session);

bool disconnectByMenu(WindowSession &session)
{
    session.choose(u"&Disconnect"_s);
    return QTest::qWaitFor([&] { return !session.probe.connection().isConnected(); }, WaitTimeout);
}

bool changeOwnNick(WindowSession &session)
{
    return session.receive(u":me!u@h NICK you"_s);
}

} // namespace

Q_DECLARE_METATYPE(Dismissal)
Q_DECLARE_METATYPE(SessionEvent)

class TestPrompts final : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void showsTheForm_data();
    void showsTheForm();
    void appliesTheTheme_data();
    void appliesTheTheme();
    void startsWithCurrentNick();
    void acceptsByReturnOrClick_data();
    void acceptsByReturnOrClick();
    void rejectionChangesNothing_data();
    void rejectionChangesNothing();
    void keepsNoStateBetweenPrompts();

    void setsAway_data();
    void setsAway();
    void addsAwayLinesLater();
    void updatesUserListAndStatusBar();
    void leavesAwayWithoutPrompt();
    void addsNoLineToListTab();
    void disconnectResetsAway();

    void changesNick_data();
    void changesNick();
    void keepsNick_data();
    void keepsNick();
    void newNickLeavesAway();
    void sameNickStaysAway();

    void doesNotAskWhileDisconnected_data();
    void doesNotAskWhileDisconnected();
    void refusesToJoinWhileDisconnected();

    void showsJoinDialog();
    void joinsChannel_data();
    void joinsChannel();
    void rejectionJoinsNothing();

    void setsAwayAfterSessionEvent_data();
    void setsAwayAfterSessionEvent();
    void changesNickAfterSessionEvent_data();
    void changesNickAfterSessionEvent();
    void joinsAfterSessionEvent_data();
    void joinsAfterSessionEvent();
    void comparesWithCurrentNick();
    void acceptsHostileNicks_data();
    void acceptsHostileNicks();

private:
    TemporaryStore store;
};

void TestPrompts::init()
{
    store.clear();
}

void TestPrompts::showsTheForm_data()
{
    QTest::addColumn<QString>("entry");
    QTest::addColumn<QString>("title");
    QTest::addColumn<int>("minimumWidth");
    QTest::addColumn<QString>("label");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("placeholder");
    QTest::addColumn<QString>("saveText");

    QTest::newRow("away") << MarkAway << u"Set Away Status"_s << 460 << u"Away message:"_s
                          << u"Away"_s << u"Reason for being away..."_s << u"Set Away"_s;
    QTest::newRow("nick") << ChangeNick << u"Change Nickname"_s << 400 << u"New nickname:"_s
                          << u"me"_s << u"Enter new nickname"_s << u"Change"_s;
}

void TestPrompts::showsTheForm()
{
    QFETCH(const QString, entry);
    WindowSession session;
    QVERIFY(session.registerAs());
    ModalAnswers answers;
    answers.queueForDialog([&session](QDialog *dialog) {
        QCOMPARE(dialog->parent(), &session.window);
        QTEST(dialog->windowTitle(), "title");
        // Qt adds the system menu to a window with a close button.
        QCOMPARE(dialog->windowFlags() & ~Qt::WindowSystemMenuHint,
                 Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint
                         | Qt::WindowCloseButtonHint);
        QTEST(dialog->minimumWidth(), "minimumWidth");
        QVERIFY(dialog->isModal());

        const auto *layout = qobject_cast<QVBoxLayout *>(dialog->layout());
        QVERIFY(layout != nullptr);
        QCOMPARE(layout->contentsMargins(), QMargins(20, 20, 20, 16));
        QCOMPARE(layout->spacing(), 12);
        QCOMPARE(layout->count(), 3);
        const auto *label = qobject_cast<QLabel *>(layout->itemAt(0)->widget());
        auto *edit = qobject_cast<QLineEdit *>(layout->itemAt(1)->widget());
        const auto *box = qobject_cast<QDialogButtonBox *>(layout->itemAt(2)->widget());
        QVERIFY(label != nullptr && edit != nullptr && box != nullptr);
        QTEST(label->text(), "label");
        QTEST(edit->text(), "text");
        QTEST(edit->placeholderText(), "placeholder");
        QTEST(edit->accessibleName(), "label");
        QVERIFY(QTest::qWaitFor([edit] { return edit->hasFocus(); }, WaitTimeout));

        QCOMPARE(box->standardButtons(), QDialogButtonBox::Save | QDialogButtonBox::Cancel);
        const QPushButton *save = box->button(QDialogButtonBox::Save);
        QTEST(save->text(), "saveText");
        QCOMPARE(save->objectName(), u"connectButton"_s);
        QVERIFY(save->isDefault());
        const QPushButton *cancel = box->button(QDialogButtonBox::Cancel);
        QCOMPARE(cancel->text(), u"Cancel"_s);
        QCOMPARE(cancel->objectName(), u"cancelButton"_s);
        QVERIFY(!cancel->isDefault());
        dialog->reject();
    });
    session.choose(entry);
    QCOMPARE(answers.problems(), QStringList());
}

void TestPrompts::appliesTheTheme_data()
{
    QTest::addColumn<QString>("theme");
    QTest::addColumn<QString>("entry");

    for (const QString &theme : {u"light"_s, u"dark"_s, u"glass"_s}) {
        QTest::addRow("away, %s", qPrintable(theme)) << theme << MarkAway;
        QTest::addRow("nick, %s", qPrintable(theme)) << theme << ChangeNick;
    }
}

void TestPrompts::appliesTheTheme()
{
    QFETCH(const QString, theme);
    QFETCH(const QString, entry);
    WindowSession session;
    QVERIFY(session.registerAs());
    session.probe.applyTheme(theme);
    ModalAnswers answers;
    answers.queueForDialog([&theme](QDialog *dialog) {
        QCOMPARE(dialog->findChild<QLabel *>()->styleSheet(),
                 u"color: %1; font-size: 13px;"_s.arg(ThemeManager::palette(theme).textColor));
        QCOMPARE(dialog->findChild<QLineEdit *>()->styleSheet(),
                 ThemeManager::lineEditStyleSheet(theme));
        QCOMPARE(dialog->findChild<QDialogButtonBox *>()->styleSheet(),
                 ThemeManager::buttonStyleSheet(theme));
        QCOMPARE(dialog->styleSheet(), ThemeManager::dialogStyleSheet(theme));
        dialog->reject();
    });
    session.choose(entry);
    QCOMPARE(answers.problems(), QStringList());
}

void TestPrompts::startsWithCurrentNick()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    session.probe.typeLine(u"/nick wanted"_s);
    QVERIFY(session.receive(u":me!u@h NICK [you]"_s));
    session.probe.pendingNick() = u"wanted"_s;
    ModalAnswers answers;
    QString text;
    answers.queueForDialog([&text](QDialog *dialog) {
        text = dialog->findChild<QLineEdit *>()->text();
        dialog->reject();
    });
    session.choose(ChangeNick);
    QCOMPARE(answers.problems(), QStringList());
    QCOMPARE(text, u"[you]"_s);
}

void TestPrompts::acceptsByReturnOrClick_data()
{
    QTest::addColumn<QString>("entry");
    QTest::addColumn<QString>("sent");

    QTest::newRow("away") << MarkAway << u"AWAY :typed"_s;
    QTest::newRow("nick") << ChangeNick << u"NICK typed"_s;
}

void TestPrompts::acceptsByReturnOrClick()
{
    QFETCH(const QString, entry);
    QFETCH(const QString, sent);
    const QList<std::function<void(QDialog *)>> acceptances{
            [](QDialog *dialog) {
                // Disabled, so that the line edit itself must accept.
                dialog->findChild<QPushButton *>(u"connectButton"_s)->setEnabled(false);
                QTest::keyClick(dialog->findChild<QLineEdit *>(), Qt::Key_Return);
            },
            [](QDialog *dialog) {
                QTest::mouseClick(dialog->findChild<QPushButton *>(u"connectButton"_s),
                                  Qt::LeftButton);
            },
    };
    for (const auto &accept : acceptances) {
        WindowSession session;
        QVERIFY(session.registerAs());
        const SessionOutput output(session);
        ModalAnswers answers;
        answers.queueForDialog([&accept](QDialog *dialog) {
            dialog->findChild<QLineEdit *>()->setText(u"typed"_s);
            accept(dialog);
        });
        session.choose(entry);
        QCOMPARE(answers.problems(), QStringList());
        QCOMPARE(output.sent(), QStringList{sent});
    }
}

void TestPrompts::rejectionChangesNothing_data()
{
    QTest::addColumn<QString>("entry");
    QTest::addColumn<Dismissal>("dismiss");

    for (const QString &entry : {MarkAway, ChangeNick}) {
        QTest::addRow("cancel, %s", qPrintable(entry)) << entry << Dismissal(dismissByCancel);
        QTest::addRow("escape, %s", qPrintable(entry)) << entry << Dismissal(dismissByEscape);
        QTest::addRow("title bar, %s", qPrintable(entry)) << entry << Dismissal(dismissByTitleBar);
    }
}

void TestPrompts::rejectionChangesNothing()
{
    QFETCH(const QString, entry);
    QFETCH(const Dismissal, dismiss);
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, u"me bob"_s));
    const SessionOutput output(session);
    ModalAnswers answers;
    int result = -1;
    answers.queueForDialog([&](QDialog *dialog) {
        QObject::connect(dialog, &QDialog::finished, dialog,
                         [&result](int code) { result = code; });
        dialog->findChild<QLineEdit *>()->setText(u"typed"_s);
        dismiss(dialog);
    });
    session.choose(entry);
    QCOMPARE(answers.problems(), QStringList());
    QCOMPARE(result, int(QDialog::Rejected));
    QVERIFY(!session.probe.isAway());
    QCOMPARE(session.probe.awayMessage(), QString());
    QCOMPARE(session.probe.pendingNick(), QString());
    QCOMPARE(session.probe.awayAction().text(), MarkAway);
    QCOMPARE(output.sent(), QStringList());
    QCOMPARE(output.lines(), Lines());
}

void TestPrompts::keepsNoStateBetweenPrompts()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    ModalAnswers answers;
    QStringList texts;
    for (int time = 0; time < 2; ++time) {
        answers.queueForDialog([&texts](QDialog *dialog) {
            texts.append(dialog->findChild<QLineEdit *>()->text());
            dialog->findChild<QLineEdit *>()->setText(u"lunch"_s);
            dialog->reject();
        });
        session.choose(MarkAway);
    }
    QCOMPARE(answers.problems(), QStringList());
    QCOMPARE(texts, (QStringList{u"Away"_s, u"Away"_s}));
    QVERIFY(session.window.findChild<QDialogButtonBox *>() == nullptr);
}

void TestPrompts::setsAway_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("message");

    const auto add = [](const char *name, const QString &typed, const QString &message) {
        QTest::newRow(name) << typed << message;
    };
    add("default", u"Away"_s, u"Away"_s);
    add("a reason", u"lunch"_s, u"lunch"_s);
    add("empty", QString(), u"Away"_s);
    add("spaces", u"   "_s, u"Away"_s);
    add("surrounding spaces", u"  back at  two "_s, u"back at  two"_s);
    add("placeholders", u"%1 %2"_s, u"%1 %2"_s);
    add("markup", u"<b>x</b> &amp;"_s, u"<b>x</b> &amp;"_s);
}

void TestPrompts::setsAway()
{
    QFETCH(const QString, typed);
    QFETCH(const QString, message);
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, u"me bob"_s));
    QVERIFY(session.receive(u":bob!u@h PRIVMSG me :hi"_s));
    const SessionOutput output(session);
    ModalAnswers answers;
    answers.queueForDialog(accepting(typed));
    session.choose(MarkAway);
    QCOMPARE(answers.problems(), QStringList());
    QVERIFY(session.probe.isAway());
    QCOMPARE(session.probe.awayMessage(), message);
    QCOMPARE(session.probe.awayAction().text(), UnmarkAway);
    QCOMPARE(output.sent(), QStringList{u"AWAY :"_s + message});
    const QString said = u"me|is away ("_s + message + u')';
    QCOMPARE(output.lines(),
             (Lines{{Server, {QString(u"*** You are marked as away ("_s + message + u')')}},
                    {u"#a"_s, {said}},
                    {u"bob"_s, {said}}}));
}

void TestPrompts::addsAwayLinesLater()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, u"me"_s));
    const SessionOutput output(session);
    ModalAnswers answers;
    answers.queueForDialog(accepting(u"lunch"_s));
    session.choose(MarkAway);
    QCOMPARE(output.lines(), (Lines{{Server, {u"*** You are marked as away (lunch)"_s}}}));
    QTRY_COMPARE_WITH_TIMEOUT(output.lines().value(u"#a"_s), QStringList{u"me|is away (lunch)"_s},
                              WaitTimeout);
    session.choose(UnmarkAway);
    QCOMPARE(session.probe.lastLine(Server), u"*** You are back"_s);
    QCOMPARE(session.probe.lastLine(u"#a"_s), u"me|is away (lunch)"_s);
    QTRY_COMPARE_WITH_TIMEOUT(session.probe.lastLine(u"#a"_s), u"me|is back"_s, WaitTimeout);
    QCOMPARE(answers.problems(), QStringList());
}

void TestPrompts::updatesUserListAndStatusBar()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, u"me"_s));
    const QListWidgetItem *own = session.probe.userList().item(0);
    ModalAnswers answers;
    answers.queueForDialog(accepting(u"lunch"_s));
    session.window.statusBar()->clearMessage();
    session.choose(MarkAway);
    QVERIFY(own->font().italic());
    QCOMPARE(own->foreground().color(), QColor(0xAA, 0xAA, 0xAA));
    QCOMPARE(session.window.statusBar()->currentMessage(), u"Connected to 127.0.0.1 as me"_s);
    session.window.statusBar()->clearMessage();
    session.choose(UnmarkAway);
    QVERIFY(!own->font().italic());
    QCOMPARE(session.window.statusBar()->currentMessage(), u"Connected to 127.0.0.1 as me"_s);
    QCOMPARE(answers.problems(), QStringList());
}

void TestPrompts::leavesAwayWithoutPrompt()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, u"me bob"_s));
    QVERIFY(session.receive(u":bob!u@h PRIVMSG me :hi"_s));
    session.probe.typeLine(u"/away lunch"_s);
    const SessionOutput output(session);
    const ModalAnswers answers;
    session.choose(UnmarkAway);
    QCOMPARE(answers.problems(), QStringList());
    QVERIFY(!session.probe.isAway());
    QCOMPARE(session.probe.awayMessage(), QString());
    QCOMPARE(session.probe.awayAction().text(), MarkAway);
    QCOMPARE(output.sent(), QStringList{u"AWAY"_s});
    QCOMPARE(output.lines(), (Lines{{Server, {u"*** You are back"_s}},
                                    {u"#a"_s, {u"me|is back"_s}},
                                    {u"bob"_s, {u"me|is back"_s}}}));
}

void TestPrompts::addsNoLineToListTab()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, u"me"_s));
    session.probe.addListTab();
    const SessionOutput output(session);
    ModalAnswers answers;
    answers.queueForDialog(accepting(u"lunch"_s));
    session.choose(MarkAway);
    session.choose(UnmarkAway);
    // A line for the list would log a warning, which fails the test.
    QCOMPARE(output.sent(), (QStringList{u"AWAY :lunch"_s, u"AWAY"_s}));
    QCOMPARE(output.lines().keys(), (QStringList{u"#a"_s, Server}));
}

void TestPrompts::disconnectResetsAway()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    ModalAnswers answers;
    answers.queueForDialog(accepting(u"lunch"_s));
    session.choose(MarkAway);
    QCOMPARE(session.probe.awayAction().text(), UnmarkAway);
    QVERIFY(Interruptions::dropLink(session));
    QVERIFY(!session.probe.isAway());
    QCOMPARE(session.probe.awayAction().text(), MarkAway);
    // Numeric 306 has no effect.
    QVERIFY(session.registerAs());
    QVERIFY(session.receive(u":irc.test 306 me :You have been marked as being away"_s));
    QVERIFY(!session.probe.isAway());
    QCOMPARE(session.probe.awayAction().text(), MarkAway);
    QCOMPARE(answers.problems(), QStringList());
}

void TestPrompts::changesNick_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("nick");

    QTest::newRow("different") << u"newer"_s << u"newer"_s;
    QTest::newRow("surrounding spaces") << u"  newer "_s << u"newer"_s;
    QTest::newRow("different case") << u"ME"_s << u"ME"_s;
    QTest::newRow("two words") << u"new er"_s << u"new er"_s;
    QTest::newRow("placeholder") << u"%1"_s << u"%1"_s;
}

void TestPrompts::changesNick()
{
    QFETCH(const QString, typed);
    QFETCH(const QString, nick);
    WindowSession session;
    QVERIFY(session.registerAs());
    const SessionOutput output(session);
    ModalAnswers answers;
    answers.queueForDialog(accepting(typed));
    session.choose(ChangeNick);
    QCOMPARE(answers.problems(), QStringList());
    QCOMPARE(session.probe.pendingNick(), nick);
    QCOMPARE(session.probe.connection().currentNick(), u"me"_s);
    QCOMPARE(output.sent(), QStringList{u"NICK "_s + nick});
    QCOMPARE(output.lines(), Lines());
}

void TestPrompts::keepsNick_data()
{
    QTest::addColumn<QString>("typed");

    QTest::newRow("unchanged") << u"me"_s;
    QTest::newRow("surrounding spaces") << u" me "_s;
    QTest::newRow("empty") << QString();
    QTest::newRow("spaces") << u"  "_s;
}

void TestPrompts::keepsNick()
{
    QFETCH(const QString, typed);
    WindowSession session;
    QVERIFY(session.registerAs());
    const SessionOutput output(session);
    ModalAnswers answers;
    answers.queueForDialog(accepting(typed));
    session.choose(ChangeNick);
    QCOMPARE(answers.problems(), QStringList());
    QCOMPARE(session.probe.pendingNick(), QString());
    QCOMPARE(output.sent(), QStringList());
    QCOMPARE(output.lines(), Lines());
}

void TestPrompts::newNickLeavesAway()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, u"me"_s));
    session.probe.typeLine(u"/away lunch"_s);
    const SessionOutput output(session);
    ModalAnswers answers;
    answers.queueForDialog(accepting(u"newer"_s));
    session.window.statusBar()->clearMessage();
    session.choose(ChangeNick);
    QCOMPARE(answers.problems(), QStringList());
    QVERIFY(!session.probe.isAway());
    QCOMPARE(session.probe.awayMessage(), QString());
    QCOMPARE(session.probe.awayAction().text(), MarkAway);
    QVERIFY(!session.probe.userList().item(0)->font().italic());
    QCOMPARE(session.window.statusBar()->currentMessage(), u"Connected to 127.0.0.1 as me"_s);
    QCOMPARE(session.probe.pendingNick(), u"newer"_s);
    QCOMPARE(output.sent(), (QStringList{u"AWAY"_s, u"NICK newer"_s}));
    // The conversations get no line.
    QCOMPARE(output.lines(), (Lines{{Server, {u"*** You are back"_s}}}));
    QVERIFY(session.receive(u":me!u@h NICK newer"_s));
    QCOMPARE(session.probe.pendingNick(), QString());
    QCOMPARE(session.probe.lastLine(u"#a"_s), u"me|is now known as newer"_s);
}

void TestPrompts::sameNickStaysAway()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    session.probe.typeLine(u"/away lunch"_s);
    const SessionOutput output(session);
    ModalAnswers answers;
    for (const QString &typed : {u"me"_s, QString()}) {
        answers.queueForDialog(accepting(typed));
        session.choose(ChangeNick);
    }
    QCOMPARE(answers.problems(), QStringList());
    QVERIFY(session.probe.isAway());
    QCOMPARE(session.probe.awayMessage(), u"lunch"_s);
    QCOMPARE(session.probe.awayAction().text(), UnmarkAway);
    QCOMPARE(output.sent(), QStringList());
    QCOMPARE(output.lines(), Lines());
}

void TestPrompts::doesNotAskWhileDisconnected_data()
{
    QTest::addColumn<QString>("entry");
    QTest::addColumn<bool>("isAway");

    QTest::newRow("away") << MarkAway << false;
    QTest::newRow("back") << MarkAway << true;
    QTest::newRow("nick") << ChangeNick << false;
}

void TestPrompts::doesNotAskWhileDisconnected()
{
    QFETCH(const QString, entry);
    QFETCH(const bool, isAway);
    WindowSession session;
    session.probe.isAway() = isAway;
    const ModalAnswers answers;
    session.choose(entry);
    QCoreApplication::processEvents();
    QCOMPARE(answers.problems(), QStringList());
    QCOMPARE(session.probe.isAway(), isAway);
    QCOMPARE(session.probe.lines(Server), QStringList());
}

void TestPrompts::refusesToJoinWhileDisconnected()
{
    WindowSession session;
    ModalAnswers answers;
    answers.queueForBox([](QMessageBox *box) {
        QCOMPARE(box->windowTitle(), u"Error"_s);
        QCOMPARE(box->text(), u"Not connected."_s);
        QCOMPARE(box->icon(), QMessageBox::Warning);
        QCOMPARE(box->standardButtons(), QMessageBox::Ok);
        QTest::keyClick(box, Qt::Key_Return);
    });
    session.choose(Join);
    QCOMPARE(answers.problems(), QStringList());
    QCOMPARE(session.probe.lines(Server), QStringList());
}

void TestPrompts::showsJoinDialog()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    ModalAnswers answers;
    answers.queueForDialog([](QDialog *shown) {
        auto *dialog = qobject_cast<QInputDialog *>(shown);
        QVERIFY(dialog != nullptr);
        QCOMPARE(dialog->windowTitle(), u"Join Channel"_s);
        QCOMPARE(dialog->labelText(), u"Channel name (e.g. #linux):"_s);
        QCOMPARE(dialog->inputMode(), QInputDialog::TextInput);
        QCOMPARE(dialog->textEchoMode(), QLineEdit::Normal);
        QCOMPARE(dialog->textValue(), QString());
        dialog->reject();
    });
    session.choose(Join);
    QCOMPARE(answers.problems(), QStringList());
}

void TestPrompts::joinsChannel_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QStringList>("sent");

    const auto add = [](const char *name, const QString &typed, const QStringList &sent) {
        QTest::newRow(name) << typed << sent;
    };
    add("a channel", u"#linux"_s, {u"JOIN #linux"_s});
    add("name without prefix", u"linux"_s, {u"JOIN #linux"_s});
    add("a local channel", u"&linux"_s, {u"JOIN #&linux"_s});
    add("two prefixes", u"##linux"_s, {u"JOIN ##linux"_s});
    add("prefix only", u"#"_s, {u"JOIN #"_s});
    add("spaces", u"  "_s, {u"JOIN #  "_s});
    add("surrounding spaces", u" linux "_s, {u"JOIN # linux "_s});
    add("a key", u"linux key"_s, {u"JOIN #linux key"_s});
    add("empty", QString(), {});
}

void TestPrompts::joinsChannel()
{
    QFETCH(const QString, typed);
    WindowSession session;
    QVERIFY(session.registerAs());
    const SessionOutput output(session);
    ModalAnswers answers;
    answers.queueForDialog([&typed](QDialog *dialog) {
        auto *edit = dialog->findChild<QLineEdit *>();
        edit->setText(typed);
        QTest::keyClick(edit, Qt::Key_Return);
    });
    session.choose(Join);
    QCOMPARE(answers.problems(), QStringList());
    QTEST(output.sent(), "sent");
    QCOMPARE(output.lines(), Lines());
    // The tab opens with the server's reply.
    QCOMPARE(session.probe.tabTexts(), QStringList{Server});
}

void TestPrompts::rejectionJoinsNothing()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    const SessionOutput output(session);
    ModalAnswers answers;
    answers.queueForDialog([](QDialog *dialog) {
        dialog->findChild<QLineEdit *>()->setText(u"#linux"_s);
        QTest::keyClick(dialog, Qt::Key_Escape);
    });
    session.choose(Join);
    QCOMPARE(answers.problems(), QStringList());
    QCOMPARE(output.sent(), QStringList());
}

void TestPrompts::setsAwayAfterSessionEvent_data()
{
    QTest::addColumn<SessionEvent>("sessionEvent");
    QTest::addColumn<QStringList>("sent");

    QTest::newRow("connection lost") << SessionEvent(Interruptions::dropLink) << QStringList();
    QTest::newRow("disconnect") << SessionEvent(disconnectByMenu) << QStringList();
    QTest::newRow("flood") << SessionEvent(Interruptions::flood) << QStringList{u"AWAY :lunch"_s};
    QTest::newRow("nick") << SessionEvent(changeOwnNick) << QStringList{u"AWAY :lunch"_s};
    QTest::newRow("closed tabs") << SessionEvent(Interruptions::closeTabs)
                                 << QStringList{u"PART #a :Leaving"_s, u"AWAY :lunch"_s};
}

void TestPrompts::setsAwayAfterSessionEvent()
{
    QFETCH(const SessionEvent, sessionEvent);
    QFETCH(const QStringList, sent);
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, u"me bob"_s));
    const SessionOutput output(session);
    ModalAnswers answers;
    bool eventOccurred = false;
    answers.queueForDialog([&](QDialog *dialog) {
        eventOccurred = sessionEvent(session);
        accepting(u"lunch"_s)(dialog);
    });
    session.choose(MarkAway);
    QCOMPARE(answers.problems(), QStringList());
    QVERIFY(eventOccurred);
    QVERIFY(session.probe.isAway());
    QCOMPARE(session.probe.awayAction().text(), UnmarkAway);
    QVERIFY(session.probe.lines(Server).contains(u"*** You are marked as away (lunch)"_s));
    QCOMPARE(output.sent().filter(UserLines), sent);
    if (session.probe.tabs().contains(u"#a"_s)) {
        QTRY_COMPARE_WITH_TIMEOUT(
                session.probe.lastLine(u"#a"_s),
                QString(session.probe.connection().currentNick() + u"|is away (lunch)"_s),
                WaitTimeout);
    }
}

void TestPrompts::changesNickAfterSessionEvent_data()
{
    QTest::addColumn<SessionEvent>("sessionEvent");
    QTest::addColumn<QStringList>("sent");

    QTest::newRow("connection lost") << SessionEvent(Interruptions::dropLink) << QStringList();
    QTest::newRow("disconnect") << SessionEvent(disconnectByMenu) << QStringList();
    QTest::newRow("flood") << SessionEvent(Interruptions::flood) << QStringList{u"NICK newer"_s};
    QTest::newRow("nick") << SessionEvent(changeOwnNick) << QStringList{u"NICK newer"_s};
}

void TestPrompts::changesNickAfterSessionEvent()
{
    QFETCH(const SessionEvent, sessionEvent);
    QFETCH(const QStringList, sent);
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, u"me bob"_s));
    const SessionOutput output(session);
    ModalAnswers answers;
    bool eventOccurred = false;
    answers.queueForDialog([&](QDialog *dialog) {
        eventOccurred = sessionEvent(session);
        accepting(u"newer"_s)(dialog);
    });
    session.choose(ChangeNick);
    QCOMPARE(answers.problems(), QStringList());
    QVERIFY(eventOccurred);
    QCOMPARE(session.probe.pendingNick(), u"newer"_s);
    QCOMPARE(output.sent().filter(UserLines), sent);
}

void TestPrompts::joinsAfterSessionEvent_data()
{
    QTest::addColumn<SessionEvent>("sessionEvent");
    QTest::addColumn<QStringList>("sent");

    QTest::newRow("connection lost") << SessionEvent(Interruptions::dropLink) << QStringList();
    QTest::newRow("disconnect") << SessionEvent(disconnectByMenu) << QStringList();
    QTest::newRow("flood") << SessionEvent(Interruptions::flood) << QStringList{u"JOIN #b"_s};
    QTest::newRow("nick") << SessionEvent(changeOwnNick) << QStringList{u"JOIN #b"_s};
}

void TestPrompts::joinsAfterSessionEvent()
{
    QFETCH(const SessionEvent, sessionEvent);
    QFETCH(const QStringList, sent);
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, u"me bob"_s));
    const SessionOutput output(session);
    ModalAnswers answers;
    bool eventOccurred = false;
    answers.queueForDialog([&](QDialog *dialog) {
        eventOccurred = sessionEvent(session);
        accepting(u"b"_s)(dialog);
    });
    session.choose(Join);
    QCOMPARE(answers.problems(), QStringList());
    QVERIFY(eventOccurred);
    QCOMPARE(output.sent().filter(UserLines), sent);
}

void TestPrompts::comparesWithCurrentNick()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    const SessionOutput output(session);
    for (const QString &typed : {u"you"_s, u"me"_s}) {
        ModalAnswers answers;
        answers.queueForDialog([&](QDialog *dialog) {
            static_cast<void>(changeOwnNick(session));
            accepting(typed)(dialog);
        });
        session.choose(ChangeNick);
        QCOMPARE(answers.problems(), QStringList());
    }
    QCOMPARE(output.sent(), QStringList{u"NICK me"_s});
}

void TestPrompts::acceptsHostileNicks_data()
{
    QTest::addColumn<QString>("text");

    QTest::newRow("very long") << QString(10000, u'x');
    QTest::newRow("right to left") << u"\u202Eevil\u05D0\u05D1\u0627\u0628"_s;
    QTest::newRow("combining") << QString(u'a' + QString(200, u'\u0301'));
    QTest::newRow("markup") << u"<b>a</b>&amp;"_s;
    QTest::newRow("mnemonic") << u"a&b"_s;
}

// A server can send any nick, and the prompt shows it.
void TestPrompts::acceptsHostileNicks()
{
    QFETCH(const QString, text);
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.receive(u":me!u@h NICK "_s + text));
    const SessionOutput output(session);
    ModalAnswers answers;
    QString offered;
    QSize size;
    answers.queueForDialog([&](QDialog *dialog) {
        offered = dialog->findChild<QLineEdit *>()->text();
        dialog->grab();
        size = dialog->size();
        dialog->accept();
    });
    session.choose(ChangeNick);
    QCOMPARE(answers.problems(), QStringList());
    QCOMPARE(offered, text);
    QCOMPARE(size.width(), 400);
    QCOMPARE(output.sent(), QStringList());
}

QTEST_MAIN(TestPrompts)
#include "tst_Prompts.moc"
