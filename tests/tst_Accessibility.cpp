#include "ConnectDialog.h"
#include "EditTopicDialog.h"
#include "EmojiPicker.h"
#include "HighlightTabBar.h"
#include "InfoDialogs.h"
#include "MainWindow.h"
#include "ModalAnswers.h"
#include "PreferencesDialog.h"
#include "Prompts.h"
#include "ServerConfig.h"
#include "ServerEditDialog.h"
#include "TemporaryStore.h"
#include "Waiting.h"
#include "WindowSession.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QAccessible>
#include <QApplication>
#include <QComboBox>
#include <QCompleter>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QTest>
#include <QTextBrowser>
#include <QTextEdit>
#include <QToolBar>
#include <QToolButton>

#include <functional>

using namespace Qt::StringLiterals;

namespace {

const auto Theme = u"light"_s;

using Check = std::function<void(const QWidget &)>;
using Show = void (*)(const Check &check);

// Returns the name that a screen reader announces.
QString spokenName(QWidget *widget)
{
    const QAccessibleInterface *interface = QAccessible::queryAccessibleInterface(widget);
    return interface != nullptr ? interface->text(QAccessible::Name) : QString();
}

// Returns whether users operate the widget itself; some are parts of other Qt widgets.
bool isControl(const QWidget *widget)
{
    const bool isReached = (widget->focusPolicy() & Qt::TabFocus) != 0
                           || qobject_cast<const QAbstractButton *>(widget) != nullptr;
    return isReached && widget->focusProxy() == nullptr
           && !widget->objectName().startsWith("qt_"_L1);
}

QList<QWidget *> controls(const QWidget &window)
{
    QList<QWidget *> found = window.findChildren<QWidget *>();
    // The list of a combo box is a window of its own, tested in namesPopups().
    found.removeIf([&window](const QWidget *widget) {
        return !isControl(widget) || widget->window() != &window;
    });
    return found;
}

void checkDialog(const Check &check, const std::function<void()> &show)
{
    ModalAnswers answers;
    answers.queueForDialog([&check](QDialog *dialog) {
        check(*dialog);
        dialog->reject();
    });
    show();
    QCOMPARE(answers.problems(), QStringList());
}

void showMainWindow(const Check &check)
{
    WindowSession session;
    session.probe.openTabs({u"#c"_s, u"bob"_s});
    session.probe.addListTab();
    check(session.window);
}

void showConnectDialog(const Check &check)
{
    check(ConnectDialog(nullptr));
}

void showServerForm(const Check &check)
{
    check(ServerEditDialog(u"Edit"_s, u"irc.org:6667"_s, ServerConfig(), Theme, nullptr));
}

void showPreferences(const Check &check)
{
    WindowSession session;
    session.choose(u"&Preferences..."_s);
    const auto *dialog = session.window.findChild<PreferencesDialog *>();
    QVERIFY(dialog);
    check(*dialog);
}

void showTopicEditor(const Check &check)
{
    check(EditTopicDialog(u"#c"_s, {}, Theme, nullptr));
}

void showEmojis(const Check &check)
{
    check(EmojiPicker(nullptr, Theme));
}

void showAwayPrompt(const Check &check)
{
    checkDialog(check, [] { static_cast<void>(Prompts::askAwayMessage(nullptr, Theme)); });
}

void showNickPrompt(const Check &check)
{
    checkDialog(check, [] { static_cast<void>(Prompts::askNickname(nullptr, Theme, u"me"_s)); });
}

void showAbout(const Check &check)
{
    checkDialog(check, [] { InfoDialogs::showAbout(nullptr); });
}

void showHelp(const Check &check)
{
    checkDialog(check, [] { InfoDialogs::showHelp(nullptr, Theme); });
}

// Returns the names in the tab order, from `start` around to it again.
QStringList tabOrder(QWidget *start, Qt::Key key = Qt::Key_Tab)
{
    constexpr int MaximumLength = 200;
    QStringList order;
    start->setFocus();
    do {
        QWidget *current = QApplication::focusWidget();
        if (current == nullptr || order.size() == MaximumLength)
            return order + QStringList{u"lost"_s};
        order.append(spokenName(current));
        QTest::keyClick(current, key);
    } while (QApplication::focusWidget() != start);
    return order;
}

bool activate(QWidget &window)
{
    window.show();
    window.activateWindow();
    return QTest::qWaitForWindowActive(&window, WaitTimeout);
}

} // namespace

/// Use by keyboard and with a screen reader.
class TestAccessibility final : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void namesEveryControl_data();
    void namesEveryControl();
    void namesEachEmoji();
    void namesPopups();
    void namesEmojiPicker();
    void namesProgramIcon();
    void describesTopic();
    void describesMarkedTab();
    void namesRenamedConversation();
    void mainWindowTabOrder();
    void channelListTabOrder();
    void connectDialogTabOrder();
    void topicEditorTabOrder();
    void topicEditorStartsInTheText();
    void topicEditorToolsWorkByKey();
    void closingATabKeepsFocus();

private:
    TemporaryStore store;
};

void TestAccessibility::init()
{
    store.clear();
}

void TestAccessibility::namesEveryControl_data()
{
    QTest::addColumn<Show>("show");
    QTest::addColumn<int>("minimum");

    QTest::newRow("main window") << Show(showMainWindow) << 14;
    QTest::newRow("connect dialog") << Show(showConnectDialog) << 12;
    QTest::newRow("server form") << Show(showServerForm) << 11;
    QTest::newRow("preferences") << Show(showPreferences) << 24;
    QTest::newRow("topic editor") << Show(showTopicEditor) << 9;
    QTest::newRow("emojis") << Show(showEmojis) << 96;
    QTest::newRow("away prompt") << Show(showAwayPrompt) << 3;
    QTest::newRow("nick prompt") << Show(showNickPrompt) << 3;
    QTest::newRow("about") << Show(showAbout) << 1;
    QTest::newRow("help") << Show(showHelp) << 2;
}

void TestAccessibility::namesEveryControl()
{
    QFETCH(const Show, show);
    QFETCH(const int, minimum);
    static const QRegularExpression letter(u"\\p{L}"_s);
    int count = 0;
    QStringList nameless;
    show([&](const QWidget &window) {
        const QList<QWidget *> found = controls(window);
        for (QWidget *widget : found) {
            ++count;
            const QString name = spokenName(widget);
            // A symbol like "×" or an emoji is no name.
            if (!name.contains(letter))
                nameless.append(u"%1 \"%2\" \"%3\""_s.arg(
                        QString::fromLatin1(widget->metaObject()->className()),
                        widget->objectName(), name));
        }
    });
    QVERIFY2(nameless.isEmpty(), qPrintable(nameless.join(u'\n')));
    QVERIFY2(count >= minimum, qPrintable(QString::number(count)));
}

void TestAccessibility::namesEachEmoji()
{
    const EmojiPicker picker(nullptr, Theme);
    const QList<QPushButton *> buttons = picker.findChildren<QPushButton *>();
    QHash<QString, QString> names;
    QSet<QString> distinct;
    for (QPushButton *button : buttons) {
        names.insert(button->text(), spokenName(button));
        distinct.insert(spokenName(button));
    }
    QCOMPARE(distinct.size(), 96);
    QCOMPARE(names.value(u"😀"_s), u"grinning face"_s);
    QCOMPARE(names.value(u"👎"_s), u"thumbs down"_s);
    QCOMPARE(names.value(u"❤\uFE0F"_s), u"red heart"_s);
    QCOMPARE(names.value(u"🥤"_s), u"cup with straw"_s);
}

void TestAccessibility::namesPopups()
{
    int count = 0;
    const Check check = [&count](const QWidget &window) {
        const QList<QComboBox *> boxes = window.findChildren<QComboBox *>();
        for (QComboBox *box : boxes) {
            ++count;
            QVERIFY(!spokenName(box).isEmpty());
            QCOMPARE(spokenName(box->view()), spokenName(box));
        }
    };
    showPreferences(check);
    showServerForm(check);
    QCOMPARE(count, 5);
    const WindowSession session;
    QCOMPARE(spokenName(session.probe.inputLine().completer()->popup()), u"Completions"_s);
}

void TestAccessibility::namesEmojiPicker()
{
    EmojiPicker picker(nullptr, Theme);
    QCOMPARE(spokenName(&picker), u"Emoji"_s);
}

void TestAccessibility::namesProgramIcon()
{
    const Check check = [](const QWidget &window) {
        const QList<QLabel *> labels = window.findChildren<QLabel *>();
        const auto hasIcon = [](const QLabel *label) { return !label->pixmap().isNull(); };
        const auto icon = std::find_if(labels.cbegin(), labels.cend(), hasIcon);
        QVERIFY(icon != labels.cend());
        QCOMPARE(spokenName(*icon), u"Velmora icon"_s);
    };
    showAbout(check);
}

void TestAccessibility::describesTopic()
{
    WindowSession session;
    QVERIFY(session.registerAs(u"me"_s));
    QVERIFY(session.join(u"#c"_s, u"me"_s));
    session.probe.showTab(u"#c"_s);
    QLabel *label = session.probe.tabs().value(u"#c"_s).topicLabel;
    QCOMPARE(spokenName(label), u"No topic"_s);
    QVERIFY(session.receive(u":srv 332 me #c :a <b> topic"_s));
    QCOMPARE(spokenName(label), u"a <b> topic"_s);
    QCOMPARE(label->accessibleDescription(), u"Topic"_s);
}

void TestAccessibility::describesMarkedTab()
{
    WindowSession session;
    QVERIFY(session.registerAs(u"me"_s));
    QVERIFY(session.join(u"#c"_s, u"me al"_s));
    QVERIFY(session.receive(u":al!u@h PRIVMSG me :hello"_s));
    const auto names = [&session] {
        const QTabBar &bar = session.probe.tabBar();
        QStringList spoken;
        for (int index = 0; index < bar.count(); ++index)
            spoken.append(bar.accessibleTabName(index));
        return spoken;
    };
    QCOMPARE(names(), (QStringList{u"Server"_s, u"#c"_s, u"al, new message"_s}));
    // Renaming keeps the mark.
    QVERIFY(session.receive(u":al!u@h NICK alice"_s));
    QCOMPARE(names(), (QStringList{u"Server"_s, u"#c"_s, u"alice, new message"_s}));
    session.probe.showTab(u"alice"_s);
    QCOMPARE(names(), (QStringList{u"Server"_s, u"#c"_s, u"alice"_s}));
}

void TestAccessibility::namesRenamedConversation()
{
    WindowSession session;
    QVERIFY(session.registerAs(u"me"_s));
    QVERIFY(session.receive(u":al!u@h PRIVMSG me :hello"_s));
    QTextBrowser *view = session.probe.tabs().value(u"al"_s).chatView;
    QCOMPARE(spokenName(view), u"Conversation al"_s);
    QVERIFY(session.receive(u":al!u@h NICK alice"_s));
    QCOMPARE(spokenName(view), u"Conversation alice"_s);
}

void TestAccessibility::mainWindowTabOrder()
{
    WindowSession session;
    QVERIFY(session.registerAs(u"me"_s));
    QVERIFY(session.join(u"#c"_s, u"@me alice"_s));
    QVERIFY(session.join(u"#d"_s, u"@me bob"_s));
    QVERIFY(session.receive(u":al!u@h PRIVMSG me :hello"_s));
    session.probe.showTab(u"#c"_s);
    QVERIFY(activate(session.window));

    QStringList order{u"Message"_s,    u"Insert emoji"_s,    u"#c"_s,
                      u"Edit topic"_s, u"Conversation #c"_s, u"Users"_s};
    QCOMPARE(tabOrder(&session.probe.inputLine()), order);
    std::reverse(order.begin() + 1, order.end());
    QCOMPARE(tabOrder(&session.probe.inputLine(), Qt::Key_Backtab), order);
    session.probe.showTab(u"al"_s);
    QCOMPARE(tabOrder(&session.probe.inputLine()),
             (QStringList{u"Message"_s, u"Insert emoji"_s, u"al"_s, u"Conversation al"_s}));
}

void TestAccessibility::channelListTabOrder()
{
    WindowSession session;
    QVERIFY(session.registerAs(u"me"_s));
    session.choose(u"Channel &List"_s);
    QVERIFY(session.receiveAll({u":srv 321 me Channel :Users Name"_s, u":srv 322 me #a 1 :"_s,
                                u":srv 323 me :End"_s}));
    QVERIFY(activate(session.window));
    QCOMPARE(tabOrder(&session.probe.listSearchEdit()),
             (QStringList{u"Search channels"_s, u"List"_s, u"Channels"_s}));
}

void TestAccessibility::connectDialogTabOrder()
{
    ConnectDialog dialog(nullptr);
    QVERIFY(activate(dialog));
    QWidget *server = dialog.findChildren<QLineEdit *>().constFirst();
    QCOMPARE(tabOrder(server),
             (QStringList{u"Server:"_s, u"Port:"_s, u"Add"_s, u"Edit"_s, u"Delete"_s, u"Servers"_s,
                          u"Nickname:"_s, u"Real name:"_s, u"Join channels:"_s, u"Use SSL"_s,
                          u"Cancel"_s, u"Connect"_s}));
}

void TestAccessibility::topicEditorTabOrder()
{
    EditTopicDialog dialog(u"#c"_s, u"topic"_s, Theme, nullptr);
    QVERIFY(activate(dialog));
    auto *edit = dialog.findChild<QTextEdit *>();
    QCOMPARE(tabOrder(edit),
             (QStringList{u"Topic"_s, u"Save"_s, u"Cancel"_s, u"Bold"_s, u"Italic"_s,
                          u"Underline"_s, u"Text Color"_s, u"Background Color"_s, u"Emoji"_s}));
    QCOMPARE(dialog.newTopic(), u"topic"_s);
}

void TestAccessibility::topicEditorStartsInTheText()
{
    EditTopicDialog dialog(u"#c"_s, u"topic"_s, Theme, nullptr);
    QVERIFY(activate(dialog));
    QCOMPARE(QApplication::focusWidget(), dialog.findChild<QTextEdit *>());
}

void TestAccessibility::topicEditorToolsWorkByKey()
{
    EditTopicDialog dialog(u"#c"_s, u"topic"_s, Theme, nullptr);
    QVERIFY(activate(dialog));
    auto *edit = dialog.findChild<QTextEdit *>();
    // The tool next to the text is the emoji button.
    QTest::keyClick(edit, Qt::Key_Backtab);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Space);
    auto *picker = dialog.findChild<EmojiPicker *>();
    QVERIFY(picker);
    QTest::keyClick(picker->findChildren<QPushButton *>().constFirst(), Qt::Key_Space);
    QCOMPARE(dialog.newTopic(), u"😀topic"_s);
}

void TestAccessibility::closingATabKeepsFocus()
{
    WindowSession session;
    session.probe.openTabs({u"bob"_s, u"carol"_s});
    session.probe.showTab(u"bob"_s);
    QVERIFY(activate(session.window));
    session.probe.inputLine().setFocus();
    QTest::mouseClick(session.probe.closeButton(2), Qt::LeftButton);
    QCOMPARE(session.probe.tabTexts(), (QStringList{u"Server"_s, u"bob"_s}));
    QVERIFY(session.probe.inputLine().hasFocus());
}

QTEST_MAIN(TestAccessibility)
#include "tst_Accessibility.moc"
