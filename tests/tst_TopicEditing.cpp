#include "EditTopicDialog.h"
#include "EmojiPicker.h"
#include "IRCConnection.h"
#include "Interruptions.h"
#include "IrcText.h"
#include "LoggingProxy.h"
#include "ModalAnswers.h"
#include "Ngircd.h"
#include "PlainClient.h"
#include "RequiredTools.h"
#include "TemporaryStore.h"
#include "ThemeManager.h"
#include "Waiting.h"
#include "WindowSession.h"

#include <QColorDialog>
#include <QLabel>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QTest>
#include <QTextEdit>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

/// A window with #a as the current tab, where the user is an operator.
struct Operator
{
    [[nodiscard]] bool enter(const QString &names = u"@me alice bob"_s)
    {
        const bool entered = session.registerAs(u"me"_s) && session.join(u"#a"_s, names);
        session.discardSent();
        return entered;
    }

    [[nodiscard]] QPushButton *button(const QString &channel = u"#a"_s) const
    {
        return session.probe.tabs().value(channel).editTopicBtn;
    }
    [[nodiscard]] QLabel *label(const QString &channel = u"#a"_s) const
    {
        return session.probe.tabs().value(channel).topicLabel;
    }
    /// Whether the button is shown whenever the channel's tab is current.
    [[nodiscard]] bool offers(const QString &channel = u"#a"_s) const
    {
        return !button(channel)->isHidden();
    }
    void loseStatus()
    {
        session.probe.channelUsers().insert(u"#a"_s, {u"alice"_s, u"bob"_s, u"me"_s});
    }

    WindowSession session;
};

QTextEdit *edit(const QDialog *dialog)
{
    return dialog->findChild<QTextEdit *>();
}

// Replaces the topic by `text` and saves.
std::function<void(QDialog *)> save(const QString &text)
{
    return [text](QDialog *dialog) {
        edit(dialog)->setPlainText(text);
        dialog->findChild<QPushButton *>(u"connectButton"_s)->click();
    };
}

} // namespace

// The window's part in editing topics: the permission and the effects.
class TestTopicEditing final : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void offersTheButtonToOperators_data();
    void offersTheButtonToOperators();
    void updatesTheButtonOfABackgroundChannel();
    void updatesTheButtonOnAnEvent_data();
    void updatesTheButtonOnAnEvent();
    void keepsTheButtonOnOtherEvents_data();
    void keepsTheButtonOnOtherEvents();
    void updatesTheButtonWhenTheTabIsShown();
    void updatesTheButtonOnTheOwnJoin();
    void keepsTheButtonOnTheOwnNickChange();
    void hidesTheButtonOfATabOpenedInTheBackground();
    void hasNoButtonOnOtherTabs();

    void opensTheDialogOnTheTopic();
    void opensTheDialogWithoutATopic();
    void opensTheDialogInTheWindowsTheme();
    void doesNothingWhileDisconnected();
    void refusesAFormerOperator();
    void sendsAndShowsTheTopic_data();
    void sendsAndShowsTheTopic();
    void sendsAnUnchangedTopic();
    void sendsATopicWithLineBreaksAsOneLine();
    void clearsTheTopic();
    void savesByControlReturn();
    void cancelsByEscape();
    void followsTheServersTopic();
    void editsTheTopicOfAReopenedTab();
    void editsTheTopicOfTheButtonsChannel();

    void survivesADisconnect();
    void survivesATabThatCloses();
    void survivesALossOfStatus();
    void survivesATopicChange();

    void reachesTheOthersOnARealServer();

private:
    TemporaryStore store;
    std::unique_ptr<ModalAnswers> answers;
};

void TestTopicEditing::init()
{
    store.clear();
    answers = std::make_unique<ModalAnswers>();
}

void TestTopicEditing::cleanup()
{
    QCOMPARE(answers->problems(), QStringList());
}

void TestTopicEditing::offersTheButtonToOperators_data()
{
    QTest::addColumn<QString>("names");
    QTest::addColumn<bool>("offered");

    QTest::newRow("owner") << u"alice ~me"_s << true;
    QTest::newRow("admin") << u"alice &me"_s << true;
    QTest::newRow("operator") << u"alice @me"_s << true;
    QTest::newRow("half-operator") << u"alice %me"_s << true;
    QTest::newRow("voice") << u"@alice +me"_s << false;
    QTest::newRow("no rank") << u"@alice me"_s << false;
    QTest::newRow("another case") << u"@ME me"_s << false;
    QTest::newRow("not there") << u"@alice"_s << false;
    QTest::newRow("a longer nick") << u"@mean me"_s << false;
}

void TestTopicEditing::offersTheButtonToOperators()
{
    QFETCH(const QString, names);
    Operator op;
    QVERIFY(op.enter(names));
    QTEST(op.offers(), "offered");
    QTEST(op.button()->isVisible(), "offered");
}

void TestTopicEditing::updatesTheButtonOfABackgroundChannel()
{
    Operator op;
    QVERIFY(op.enter());
    QVERIFY(op.session.join(u"#b"_s, u"@me"_s));
    QVERIFY(op.session.join(u"#c"_s, u"me"_s));
    QCOMPARE(op.session.probe.currentTabName(), u"#a"_s);
    QVERIFY(op.offers(u"#b"_s));
    QVERIFY(!op.offers(u"#c"_s));
    // Only a name list updates the button of a background channel.
    QVERIFY(op.session.receiveAll({u":irc.test 353 me = #b :me"_s, u":irc.test 366 me #b :End"_s}));
    QVERIFY(!op.offers(u"#b"_s));
}

void TestTopicEditing::updatesTheButtonOnAnEvent_data()
{
    QTest::addColumn<QString>("line");

    QTest::newRow("part") << u":bob!u@h PART #a"_s;
    QTest::newRow("own part") << u":me!u@h PART #a"_s;
    QTest::newRow("kick") << u":alice!u@h KICK #a bob :x"_s;
    QTest::newRow("own kick") << u":alice!u@h KICK #a me :x"_s;
    QTest::newRow("quit") << u":bob!u@h QUIT :x"_s;
    QTest::newRow("own nick") << u":me!u@h NICK you"_s;
    QTest::newRow("names") << u":irc.test 366 me #a :End"_s;
    QTest::newRow("own join") << u":me!u@h JOIN #a"_s;
}

void TestTopicEditing::updatesTheButtonOnAnEvent()
{
    QFETCH(const QString, line);
    Operator op;
    QVERIFY(op.enter());
    QVERIFY(op.offers());
    op.loseStatus();
    QVERIFY(op.offers());
    QVERIFY(op.session.receive(line));
    QVERIFY(!op.offers());
}

void TestTopicEditing::keepsTheButtonOnOtherEvents_data()
{
    QTest::addColumn<QString>("line");

    QTest::newRow("message") << u":bob!u@h PRIVMSG #a :hello"_s;
    QTest::newRow("topic") << u":irc.test 332 me #a :topic"_s;
    QTest::newRow("mode") << u":alice!u@h MODE #a -o me"_s;
    QTest::newRow("another user's join") << u":zoe!u@h JOIN #a"_s;
    QTest::newRow("another user's nick change") << u":bob!u@h NICK rob"_s;
    QTest::newRow("unknown nick's part") << u":zoe!u@h PART #a"_s;
    QTest::newRow("unknown nick's quit") << u":zoe!u@h QUIT :x"_s;
    QTest::newRow("unknown nick's kick") << u":alice!u@h KICK #a zoe :x"_s;
}

void TestTopicEditing::keepsTheButtonOnOtherEvents()
{
    QFETCH(const QString, line);
    Operator op;
    QVERIFY(op.enter());
    op.loseStatus();
    QVERIFY(op.session.receive(line));
    QVERIFY(op.offers());
}

void TestTopicEditing::updatesTheButtonWhenTheTabIsShown()
{
    Operator op;
    QVERIFY(op.enter());
    op.loseStatus();
    op.session.probe.showTab(u"Server"_s);
    QVERIFY(op.offers());
    op.session.probe.showTab(u"#a"_s);
    QVERIFY(!op.offers());
}

void TestTopicEditing::updatesTheButtonOnTheOwnJoin()
{
    Operator op;
    QVERIFY(op.enter());
    QVERIFY(Interruptions::dropLink(op.session));
    QVERIFY(op.offers());
    // With another nick, the old entry is another user's.
    QVERIFY(op.session.registerAs(u"other"_s));
    QVERIFY(op.offers());
    QVERIFY(op.session.receive(u":other!u@h JOIN #a"_s));
    QVERIFY(!op.offers());
}

void TestTopicEditing::keepsTheButtonOnTheOwnNickChange()
{
    Operator op;
    QVERIFY(op.enter());
    QVERIFY(op.session.receive(u":me!u@h NICK you"_s));
    QVERIFY(op.offers());
    QCOMPARE(op.session.probe.connection().currentNick(), u"you"_s);
}

void TestTopicEditing::hidesTheButtonOfATabOpenedInTheBackground()
{
    Operator op;
    QVERIFY(op.enter());
    QVERIFY(op.session.receiveAll({u":irc.test 353 me = #b :@me"_s, u":irc.test 366 me #b :End"_s,
                                   u":irc.test 332 me #b :topic"_s,
                                   u":bob!u@h PRIVMSG #b :hello"_s}));
    // While the first line opens a tab, label and button have no record yet to be found by. Both
    // are updated when the tab is first shown.
    QVERIFY(!op.offers(u"#b"_s));
    QCOMPARE(op.label(u"#b"_s)->text(), QString());
    op.session.probe.showTab(u"#b"_s);
    QVERIFY(op.offers(u"#b"_s));
    QCOMPARE(op.label(u"#b"_s)->text(), u"topic"_s);
}

void TestTopicEditing::hasNoButtonOnOtherTabs()
{
    Operator op;
    QVERIFY(op.enter());
    QVERIFY(op.session.receive(u":bob!u@h PRIVMSG me :hello"_s));
    QCOMPARE(op.button(u"bob"_s), nullptr);
    QCOMPARE(op.button(u"Server"_s), nullptr);
}

void TestTopicEditing::opensTheDialogOnTheTopic()
{
    Operator op;
    QVERIFY(op.enter());
    QVERIFY(op.session.receive(u":irc.test 332 me #a :the \u0002bold\u0002 <b>one</b>"_s));
    QStringList seen;
    const QWidget *parent = nullptr;
    answers->queueForDialog([&](QDialog *dialog) {
        seen = {dialog->windowTitle(), edit(dialog)->toPlainText()};
        parent = dialog->parentWidget();
        dialog->reject();
    });
    QTest::mouseClick(op.button(), Qt::LeftButton);
    QCOMPARE(seen, (QStringList{u"Edit Topic for #a"_s, u"the \u0002bold\u0002 <b>one</b>"_s}));
    QCOMPARE(parent, &op.session.window);
    QCOMPARE(op.session.readSent(), QStringList());
}

void TestTopicEditing::opensTheDialogWithoutATopic()
{
    Operator op;
    QVERIFY(op.enter());
    QString text = u"unseen"_s;
    answers->queueForDialog([&](QDialog *dialog) {
        text = edit(dialog)->toPlainText();
        dialog->reject();
    });
    op.button()->click();
    QCOMPARE(text, QString());
    QVERIFY(!op.session.probe.channelTopics().contains(u"#a"_s));
}

void TestTopicEditing::opensTheDialogInTheWindowsTheme()
{
    Operator op;
    QVERIFY(op.enter());
    op.session.probe.currentTheme() = u"dark"_s;
    QString sheet;
    answers->queueForDialog([&](QDialog *dialog) {
        sheet = dialog->styleSheet();
        dialog->reject();
    });
    op.button()->click();
    QVERIFY(sheet.startsWith(ThemeManager::dialogStyleSheet(u"dark"_s)));
}

void TestTopicEditing::doesNothingWhileDisconnected()
{
    Operator op;
    QVERIFY(op.enter());
    QVERIFY(Interruptions::dropLink(op.session));
    const QStringList lines = op.session.probe.lines(u"Server"_s);
    QTest::mouseClick(op.button(), Qt::LeftButton);
    QCoreApplication::processEvents();
    QCOMPARE(answers->problems(), QStringList());
    QCOMPARE(QApplication::activeModalWidget(), nullptr);
    QCOMPARE(op.session.probe.lines(u"Server"_s), lines);
    QCOMPARE(op.session.readSent(), QStringList());
}

void TestTopicEditing::refusesAFormerOperator()
{
    Operator op;
    QVERIFY(op.enter());
    op.loseStatus();
    QStringList seen;
    QMessageBox::Icon icon = QMessageBox::NoIcon;
    QMessageBox::StandardButtons buttons;
    answers->queueForBox([&](QMessageBox *box) {
        seen = {box->windowTitle(), box->text()};
        icon = box->icon();
        buttons = box->standardButtons();
        box->accept();
    });
    op.button()->click();
    QCOMPARE(seen, (QStringList{u"Permission denied"_s,
                                u"You must be an operator to change the topic."_s}));
    QCOMPARE(icon, QMessageBox::Warning);
    QCOMPARE(buttons, QMessageBox::StandardButtons(QMessageBox::Ok));
    QCOMPARE(op.session.readSent(), QStringList());
}

void TestTopicEditing::sendsAndShowsTheTopic_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("topic");

    QTest::newRow("plain") << u"All about cats"_s << u"All about cats"_s;
    QTest::newRow("spaces at both ends") << u"  All about cats \n"_s << u"All about cats"_s;
    QTest::newRow("codes") << u"\u0002bold\u0002 \u001Di\u001D \u001Fu\u001F \u0003"
                              "4,1red\u0003"_s
                           << u"\u0002bold\u0002 \u001Di\u001D \u001Fu\u001F \u0003"
                              "4,1red\u0003"_s;
    QTest::newRow("placeholders") << u"%1 %2 %3"_s << u"%1 %2 %3"_s;
    QTest::newRow("colons") << u":one :two"_s << u":one :two"_s;
    QTest::newRow("markup") << u"<b>1 & 2</b>"_s << u"<b>1 & 2</b>"_s;
    QTest::newRow("emoji") << u"I ❤\uFE0F IRC"_s << u"I ❤\uFE0F IRC"_s;
    QTest::newRow("a link") << u"see https://example.org/?a=1&b=2"_s
                            << u"see https://example.org/?a=1&b=2"_s;
    // Sent verbatim; the server reads the rest as another line.
    QTest::newRow("line break") << u"one\ntwo"_s << u"one\ntwo"_s;
}

void TestTopicEditing::sendsAndShowsTheTopic()
{
    QFETCH(const QString, text);
    QFETCH(const QString, topic);
    Operator op;
    QVERIFY(op.enter());
    QVERIFY(op.session.receive(u":irc.test 332 me #a :old"_s));
    answers->queueForDialog(save(text));
    QTest::mouseClick(op.button(), Qt::LeftButton);
    // Before any reply from the server.
    QCOMPARE(op.label()->text(), IrcText::toHtml(topic));
    QCOMPARE(op.session.probe.channelTopics().value(u"#a"_s), topic);
    QCOMPARE(op.session.readSent(), QStringList{QString(u"TOPIC #a :"_s + topic)});
}

void TestTopicEditing::sendsAnUnchangedTopic()
{
    Operator op;
    QVERIFY(op.enter());
    QVERIFY(op.session.receive(u":irc.test 332 me #a :as it was"_s));
    answers->queueForDialog([](QDialog *dialog) { dialog->accept(); });
    op.button()->click();
    QCOMPARE(op.session.readSent(), QStringList{u"TOPIC #a :as it was"_s});
    QCOMPARE(op.label()->text(), u"as it was"_s);
}

void TestTopicEditing::sendsATopicWithLineBreaksAsOneLine()
{
    Operator op;
    QVERIFY(op.enter());
    QVERIFY(op.session.receive(u":irc.test 332 me #a :cats\u2028QUIT\u2029QUIT\nQUIT"_s));
    answers->queueForDialog([](QDialog *dialog) { dialog->accept(); });
    op.button()->click();
    QCOMPARE(op.session.readSent(), QStringList{u"TOPIC #a :cats QUIT QUIT QUIT"_s});
}

void TestTopicEditing::clearsTheTopic()
{
    Operator op;
    QVERIFY(op.enter());
    QVERIFY(op.session.receive(u":irc.test 332 me #a :old"_s));
    QCOMPARE(op.label()->text(), u"old"_s);
    answers->queueForDialog(save(u" \n "_s));
    op.button()->click();
    QCOMPARE(op.session.readSent(), QStringList{u"TOPIC #a :"_s});
    QCOMPARE(op.label()->text(), QString());
    QCOMPARE(op.session.probe.channelTopics().value(u"#a"_s, u"none"_s), QString());
}

void TestTopicEditing::savesByControlReturn()
{
    Operator op;
    QVERIFY(op.enter());
    answers->queueForDialog([](QDialog *dialog) {
        QVERIFY(QTest::qWaitForWindowActive(dialog, WaitTimeout));
        QTest::keyClicks(edit(dialog), u"fresh"_s);
        QTest::keyClick(edit(dialog), Qt::Key_Return, Qt::ControlModifier);
    });
    op.button()->click();
    QCOMPARE(op.session.readSent(), QStringList{u"TOPIC #a :fresh"_s});
}

void TestTopicEditing::cancelsByEscape()
{
    Operator op;
    QVERIFY(op.enter());
    QVERIFY(op.session.receive(u":irc.test 332 me #a :old"_s));
    answers->queueForDialog([](QDialog *dialog) {
        QVERIFY(QTest::qWaitForWindowActive(dialog, WaitTimeout));
        QTest::keyClicks(edit(dialog), u"fresh"_s);
        QTest::keyClick(edit(dialog), Qt::Key_Escape);
    });
    op.button()->click();
    QCOMPARE(op.session.readSent(), QStringList());
    QCOMPARE(op.label()->text(), u"old"_s);
    QCOMPARE(op.session.probe.channelTopics().value(u"#a"_s), u"old"_s);
}

void TestTopicEditing::followsTheServersTopic()
{
    Operator op;
    QVERIFY(op.enter());
    answers->queueForDialog(save(u"mine"_s));
    op.button()->click();
    QVERIFY(op.session.receive(u":irc.test 482 me #a :You're not channel operator"_s));
    QCOMPARE(op.label()->text(), u"mine"_s);
    QVERIFY(op.session.receive(u":irc.test 332 me #a :theirs"_s));
    QCOMPARE(op.label()->text(), u"theirs"_s);
}

void TestTopicEditing::editsTheTopicOfAReopenedTab()
{
    Operator op;
    QVERIFY(op.enter());
    op.session.probe.closeTab(1);
    QVERIFY(op.session.join(u"#a"_s, u"@me"_s));
    op.session.discardSent();
    answers->queueForDialog(save(u"again"_s));
    op.button()->click();
    QCOMPARE(op.session.readSent(), QStringList{u"TOPIC #a :again"_s});
    QCOMPARE(op.label()->text(), u"again"_s);
}

void TestTopicEditing::editsTheTopicOfTheButtonsChannel()
{
    Operator op;
    QVERIFY(op.enter());
    QVERIFY(op.session.join(u"#%2"_s, u"@me"_s));
    op.session.discardSent();
    answers->queueForDialog(save(u"new"_s));
    op.button(u"#%2"_s)->click();
    QCOMPARE(op.session.readSent(), QStringList{u"TOPIC #%2 :new"_s});
    QCOMPARE(op.label(u"#%2"_s)->text(), u"new"_s);
    QCOMPARE(op.label()->text(), QString());
}

void TestTopicEditing::survivesADisconnect()
{
    Operator op;
    QVERIFY(op.enter());
    bool dropped = false;
    answers->queueForDialog([&](QDialog *dialog) {
        dropped = Interruptions::dropLink(op.session);
        save(u"too late"_s)(dialog);
    });
    op.button()->click();
    QVERIFY(dropped);
    QCOMPARE(op.session.probe.lastLine(u"Server"_s), u"*** Error: Socket is not connected"_s);
    QCOMPARE(op.label()->text(), u"too late"_s);
    QCOMPARE(op.session.readSent(), QStringList());
}

void TestTopicEditing::survivesATabThatCloses()
{
    Operator op;
    QVERIFY(op.enter());
    const QPointer<QLabel> label = op.label();
    answers->queueForDialog([&](QDialog *dialog) {
        op.session.probe.closeTab(1);
        save(u"parting words"_s)(dialog);
    });
    op.button()->click();
    QCOMPARE(op.session.readSent(),
             (QStringList{u"PART #a :Leaving"_s, u"TOPIC #a :parting words"_s}));
    QCOMPARE(op.session.probe.tabTexts(), QStringList{u"Server"_s});
    QCOMPARE(label->text(), QString());
    QCOMPARE(op.session.probe.channelTopics().value(u"#a"_s), u"parting words"_s);
}

void TestTopicEditing::survivesALossOfStatus()
{
    Operator op;
    QVERIFY(op.enter());
    bool kicked = false;
    answers->queueForDialog([&](QDialog *dialog) {
        kicked = op.session.receive(u":alice!u@h KICK #a me :out"_s);
        save(u"all the same"_s)(dialog);
    });
    op.button()->click();
    QVERIFY(kicked);
    QVERIFY(!op.offers());
    QCOMPARE(op.session.readSent(), QStringList{u"TOPIC #a :all the same"_s});
    QCOMPARE(op.label()->text(), u"all the same"_s);
}

void TestTopicEditing::survivesATopicChange()
{
    Operator op;
    QVERIFY(op.enter());
    bool received = false;
    QString before;
    answers->queueForDialog([&](QDialog *dialog) {
        received = op.session.receive(u":irc.test 332 me #a :theirs"_s);
        before = op.label()->text();
        save(u"mine"_s)(dialog);
    });
    op.button()->click();
    QVERIFY(received);
    QCOMPARE(before, u"theirs"_s);
    QCOMPARE(op.label()->text(), u"mine"_s);
}

void TestTopicEditing::reachesTheOthersOnARealServer()
{
    REQUIRE_TOOLS(u"ngircd"_s);
    Ngircd ngircd;
    QVERIFY(ngircd.start());
    const LoggingProxy proxy(ngircd.port(), LoggingProxy::Joins::Rewritten);
    Operator op;
    IRCConnection &connection = op.session.probe.connection();
    connection.connectToServer(u"127.0.0.1"_s, proxy.port(), u"wanda"_s, u"Wanda"_s, false);
    QTRY_VERIFY_WITH_TIMEOUT(connection.isRegistered(), WaitTimeout);
    connection.joinChannel(u"#room"_s);
    // The first user to join is the operator.
    QTRY_VERIFY_WITH_TIMEOUT(op.button(u"#room"_s) != nullptr && op.offers(u"#room"_s),
                             WaitTimeout);
    PlainClient bob;
    QVERIFY(bob.registerAt(ngircd.port(), u"bob"_s));
    bob.send(u"JOIN #room"_s);
    QVERIFY(bob.waitFor(u" 366 bob #room "_s));

    answers->queueForDialog([](QDialog *dialog) {
        auto *editor = qobject_cast<EditTopicDialog *>(dialog);
        edit(dialog)->setPlainText(u"All about cats"_s);
        edit(dialog)->selectAll();
        editor->insertIrcFormatting(QChar(0x02));
        edit(dialog)->moveCursor(QTextCursor::End);
        edit(dialog)->insertPlainText(u" & \u0003"
                                      "4,1dogs\u0003 ❤\uFE0F"_s);
        dialog->accept();
    });
    op.button(u"#room"_s)->click();
    const QString topic = u"\u0002All about cats\u0002 & \u0003"
                          "4,1dogs\u0003 ❤\uFE0F"_s;
    QVERIFY(bob.waitFor(u" TOPIC #room :"_s + topic));
    QCOMPARE(op.label(u"#room"_s)->text(),
             u"<b>All about cats</b> &amp; "
             "<span style=\"color:#ff0000;background-color:#000000;\">dogs</span> ❤\uFE0F"_s);

    // A user who joins later receives the topic and is no operator.
    bob.send(u"PART #room"_s);
    bob.send(u"JOIN #room"_s);
    QVERIFY(bob.waitFor(u" 332 bob #room :"_s + topic));
    QVERIFY(!bob.lines().filter(u"@wanda"_s).isEmpty());
}

QTEST_MAIN(TestTopicEditing)
#include "tst_TopicEditing.moc"
