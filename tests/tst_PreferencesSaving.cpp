#include "PreferencesForm.h"
#include "TemporaryStore.h"
#include "ThemeManager.h"
#include "WindowSession.h"

#include <QListWidget>
#include <QRegularExpression>
#include <QSettings>
#include <QTest>
#include <QTextBrowser>

using namespace Qt::StringLiterals;

namespace {

QMap<QString, QString> allDefaults()
{
    QMap<QString, QString> values;
    const QList<PreferenceCase> preferences = PreferencesForm::allPreferences();
    for (const PreferenceCase &preference : preferences)
        values.insert(preference.key, preference.defaultValue);
    return values;
}

// Returns the values of the fields without a preference.
QStringList unboundFields(const PreferencesForm &form)
{
    const auto state = [&](const QString &text) {
        return QString::number(form.check(text)->isChecked());
    };
    return {state(u"Switch to new tabs automatically"_s),
            form.edit(u"Nick completion suffix:"_s)->text(),
            form.spin(u"Min prefix length:"_s)->text(),
            state(u"Highlight when your nick is mentioned"_s),
            state(u"Play sound on highlight"_s),
            form.combo(u"User list sorting:"_s)->currentText(),
            form.combo(u"Auth method:"_s)->currentText()};
}

const QStringList UnboundDefaults{
        u"1"_s, u":"_s, u"1"_s, u"1"_s, u"0"_s, u"Alphabetical"_s, u"Server password"_s};

void changeUnboundFields(const PreferencesForm &form)
{
    for (const QString &text :
         {u"Switch to new tabs automatically"_s, u"Highlight when your nick is mentioned"_s,
          u"Play sound on highlight"_s})
        form.check(text)->toggle();
    form.edit(u"Nick completion suffix:"_s)->setText(u","_s);
    form.spin(u"Min prefix length:"_s)->setValue(7);
    form.combo(u"User list sorting:"_s)->setCurrentIndex(1);
    form.combo(u"Auth method:"_s)->setCurrentIndex(2);
}

} // namespace

class TestPreferencesSaving final : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void savesAndLoadsEachValue_data();
    void savesAndLoadsEachValue();
    void savesAllFourteenKeys();
    void staysOpenOnApply();
    void savesNothingOnCancel();
    void overwritesNewerValues();
    void showsTheFirstFormatForAnUnknownOne();
    void matchesFormatsExactly_data();
    void matchesFormatsExactly();
    void clampsValuesToTheFieldsRanges();
    void trimsTheLogPath_data();
    void trimsTheLogPath();
    void savesUnlimitedAsZero();
    void keepsBlackUntilTheNextStart();
    void appliesTheBackgroundToTheViews();
    void setsTheUserListsFontInViews();
    void restoresTheLightTheme();
    void changesTimesOfNewRowsOnly();
    void doesNotSaveUnboundFields();
    void doesNotChangeServers();
    void doesNotChangeCompletionAndHighlights();

private:
    TemporaryStore store;
};

void TestPreferencesSaving::init()
{
    store.clear();
}

void TestPreferencesSaving::savesAndLoadsEachValue_data()
{
    PreferencesForm::addTestRows();
}

void TestPreferencesSaving::savesAndLoadsEachValue()
{
    QFETCH(const QString, key);
    QFETCH(const QString, defaultValue);
    QFETCH(const QString, other);
    // Of a font only family and size: the font dialog chooses the rest.
    const auto read = [&](const QString &value) { return PreferencesForm::display(key, value); };
    {
        WindowSession session;
        PreferencesForm form(session);
        QCOMPARE(form.shown(key), read(defaultValue));
        form.set(key, other);
        QCOMPARE(form.answers.problems(), QStringList());
        QCOMPARE(form.shown(key), read(other));
        form.clickOk();
        QCOMPARE(read(session.probe.storedPreferences().value(key)), read(other));
        QCOMPARE(read(PreferencesForm::stored().value(key)), read(other));
    }
    WindowSession session;
    QCOMPARE(read(session.probe.storedPreferences().value(key)), read(other));
    const PreferencesForm form(session);
    QCOMPARE(form.shown(key), read(other));
    const QMap<QString, QString> before = PreferencesForm::stored();
    form.clickOk();
    QCOMPARE(PreferencesForm::stored(), before);
    QMap<QString, QString> expected = allDefaults();
    expected.insert(key, before.value(key));
    QCOMPARE(before, expected);
}

void TestPreferencesSaving::savesAllFourteenKeys()
{
    WindowSession session;
    const PreferencesForm form(session);
    form.clickOk();
    QCOMPARE(PreferencesForm::stored(), allDefaults());
    QCOMPARE(PreferencesForm::stored().size(), 14);
}

void TestPreferencesSaving::staysOpenOnApply()
{
    WindowSession session;
    PreferencesForm form(session);
    form.set(u"emojiSize"_s, u"30"_s);
    form.clickApply();
    QVERIFY(form.dialog->isVisible());
    QCOMPARE(QSettings().value(u"emojiSize"_s).toInt(), 30);
    form.set(u"emojiSize"_s, u"31"_s);
    form.clickApply();
    QCOMPARE(QSettings().value(u"emojiSize"_s).toInt(), 31);
}

void TestPreferencesSaving::savesNothingOnCancel()
{
    WindowSession session;
    const QMap<QString, QString> before = session.probe.storedPreferences();
    PreferencesForm form(session);
    const QList<PreferenceCase> preferences = PreferencesForm::preferencesWithField();
    for (const PreferenceCase &preference : preferences) {
        if (preference.key != "chatFont"_L1)
            form.set(preference.key, preference.other);
    }
    form.clickCancel();
    QCOMPARE(session.probe.storedPreferences(), before);
    QCOMPARE(PreferencesForm::stored().keys(), QStringList{u"theme"_s});
}

void TestPreferencesSaving::overwritesNewerValues()
{
    WindowSession session;
    PreferencesForm first(session);
    PreferencesForm second(session);
    first.set(u"emojiSize"_s, u"30"_s);
    first.clickOk();
    QCOMPARE(second.shown(u"emojiSize"_s), u"20"_s);
    second.clickOk();
    QCOMPARE(QSettings().value(u"emojiSize"_s).toInt(), 20);
}

void TestPreferencesSaving::showsTheFirstFormatForAnUnknownOne()
{
    QSettings().setValue(u"timestampFormat"_s, u"yyyy"_s);
    WindowSession session;
    const PreferencesForm form(session);
    QCOMPARE(form.combo(u"Timestamp:"_s)->currentIndex(), 0);
    QCOMPARE(session.probe.timestampFormat(), u"yyyy"_s);
    form.clickOk();
    QCOMPARE(session.probe.timestampFormat(), u"[HH:mm:ss]"_s);
    QCOMPARE(QSettings().value(u"timestampFormat"_s).toString(), u"[HH:mm:ss]"_s);
}

void TestPreferencesSaving::matchesFormatsExactly_data()
{
    QTest::addColumn<QString>("stored");
    QTest::addColumn<int>("index");
    QTest::newRow("first") << u"[HH:mm:ss]"_s << 0;
    QTest::newRow("second") << u"[hh:mm:ss AP]"_s << 1;
    QTest::newRow("third") << u"[HH:mm]"_s << 2;
    QTest::newRow("fourth") << u"hh:mm"_s << 3;
    QTest::newRow("part of one") << u"hh"_s << 0;
    QTest::newRow("other case") << u"HH:MM"_s << 0;
}

void TestPreferencesSaving::matchesFormatsExactly()
{
    QFETCH(const QString, stored);
    QSettings().setValue(u"timestampFormat"_s, stored);
    WindowSession session;
    const PreferencesForm form(session);
    QTEST(form.combo(u"Timestamp:"_s)->currentIndex(), "index");
}

void TestPreferencesSaving::clampsValuesToTheFieldsRanges()
{
    QSettings().setValue(u"emojiSize"_s, 1000);
    QSettings().setValue(u"pingTimeout"_s, -1);
    WindowSession session;
    QCOMPARE(session.probe.preferences().value(u"emojiSize"_s).toInt(), 1000);
    const PreferencesForm form(session);
    form.clickApply();
    QCOMPARE(QSettings().value(u"emojiSize"_s).toInt(), 48);
    QCOMPARE(QSettings().value(u"pingTimeout"_s).toInt(), 5);
}

void TestPreferencesSaving::trimsTheLogPath_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("saved");
    QTest::newRow("trailing space") << u"/tmp/logs "_s << u"/tmp/logs"_s;
    QTest::newRow("spaces inside") << u" /tmp/my logs\t"_s << u"/tmp/my logs"_s;
    QTest::newRow("spaces only") << u"  "_s << u""_s;
}

void TestPreferencesSaving::trimsTheLogPath()
{
    QFETCH(const QString, typed);
    QFETCH(const QString, saved);
    WindowSession session;
    PreferencesForm form(session);
    form.set(u"logPath"_s, typed);
    form.clickApply();
    QCOMPARE(QSettings().value(u"logPath"_s).toString(), saved);
    QCOMPARE(session.probe.preferences().value(u"logPath"_s).toString(), saved);
    QCOMPARE(form.shown(u"logPath"_s), typed);
}

void TestPreferencesSaving::savesUnlimitedAsZero()
{
    QSettings().setValue(u"reconnectAttempts"_s, 3);
    WindowSession session;
    PreferencesForm form(session);
    QCOMPARE(form.spin(u"Max attempts:"_s)->text(), u"3"_s);
    form.set(u"reconnectAttempts"_s, u"0"_s);
    QCOMPARE(form.spin(u"Max attempts:"_s)->text(), u"Unlimited"_s);
    form.clickApply();
    QCOMPARE(QSettings().value(u"reconnectAttempts"_s).toString(), u"0"_s);
    WindowSession next;
    const PreferencesForm shown(next);
    QCOMPARE(shown.spin(u"Max attempts:"_s)->text(), u"Unlimited"_s);
}

void TestPreferencesSaving::keepsBlackUntilTheNextStart()
{
    {
        WindowSession session;
        PreferencesForm form(session);
        form.chooseColor(Qt::black);
        form.clickOk();
        QCOMPARE(session.probe.chatBgColor(), QColor(Qt::black));
        const QTextBrowser *view = session.probe.tabs().value(u"Server"_s).chatView;
        QCOMPARE(view->palette().color(QPalette::Base), QColor(Qt::black));
        QCOMPARE(QSettings().value(u"chatBgColor"_s).toString(), u"#000000"_s);
    }
    const WindowSession session;
    QVERIFY(!session.probe.chatBgColor().isValid());
    QCOMPARE(QSettings().value(u"chatBgColor"_s).toString(), QString());
}

void TestPreferencesSaving::appliesTheBackgroundToTheViews()
{
    WindowSession session;
    session.probe.openTabs({u"#a"_s});
    PreferencesForm form(session);
    form.chooseColor(QColor(u"#cfe8cf"_s));
    form.clickApply();
    for (const QString &name : {u"Server"_s, u"#a"_s}) {
        const QTextBrowser *view = session.probe.tabs().value(name).chatView;
        QVERIFY(view->styleSheet().contains("background-color: #cfe8cf;"_L1));
    }
}

void TestPreferencesSaving::setsTheUserListsFontInViews()
{
    WindowSession session;
    session.probe.userList().setFont(QFont(u"DejaVu Serif"_s, 17));
    PreferencesForm form(session);
    form.chooseFont(QFont(u"DejaVu Sans Mono"_s, 9));
    form.clickApply();
    const QTextBrowser *view = session.probe.tabs().value(u"Server"_s).chatView;
    QCOMPARE(view->font().family(), u"DejaVu Serif"_s);
    QCOMPARE(session.probe.inputLine().font().family(), u"DejaVu Serif"_s);
}

void TestPreferencesSaving::restoresTheLightTheme()
{
    WindowSession session;
    session.probe.applyTheme(u"dark"_s);
    const PreferencesForm form(session);
    QCOMPARE(QSettings().value(u"theme"_s).toString(), u"dark"_s);
    form.clickApply();
    QCOMPARE(session.probe.currentTheme(), u"light"_s);
    QCOMPARE(session.window.styleSheet(), ThemeManager::globalStyleSheet(u"light"_s));
    QCOMPARE(QSettings().value(u"theme"_s).toString(), u"light"_s);
    QCOMPARE(form.dialog->styleSheet(), ThemeManager::preferencesDialogStyleSheet(u"light"_s));
}

void TestPreferencesSaving::changesTimesOfNewRowsOnly()
{
    WindowSession session;
    session.probe.appendMessageToTab(u"Server"_s, u"one"_s);
    PreferencesForm form(session);
    form.set(u"timestampFormat"_s, u"[HH:mm]"_s);
    form.clickApply();
    session.probe.appendMessageToTab(u"Server"_s, u"two"_s);
    const QString text = session.probe.tabs().value(u"Server"_s).chatView->toPlainText();
    static const QRegularExpression times(
            u"\\[\\d\\d:\\d\\d:\\d\\d\\]\\s+one\\s+\\[\\d\\d:\\d\\d\\]\\s+two"_s);
    QVERIFY2(times.match(text).hasMatch(), qUtf8Printable(text));
}

void TestPreferencesSaving::doesNotSaveUnboundFields()
{
    WindowSession session;
    {
        const PreferencesForm form(session);
        QCOMPARE(unboundFields(form), UnboundDefaults);
        changeUnboundFields(form);
        form.clickApply();
        // They keep the user's values while the dialog is open.
        QVERIFY(unboundFields(form) != UnboundDefaults);
        form.clickOk();
    }
    QCOMPARE(PreferencesForm::stored(), allDefaults());
    const PreferencesForm form(session);
    QCOMPARE(unboundFields(form), UnboundDefaults);
}

void TestPreferencesSaving::doesNotChangeServers()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    const auto readServers = [] {
        const QSettings settings;
        QVariantMap values;
        const QStringList keys = settings.allKeys().filter(u"/"_s);
        for (const QString &key : keys)
            values.insert(key, settings.value(key));
        return values;
    };
    const QVariantMap before = readServers();
    QVERIFY(!before.isEmpty());
    const PreferencesForm form(session);
    changeUnboundFields(form);
    form.clickOk();
    QCOMPARE(readServers(), before);
}

void TestPreferencesSaving::doesNotChangeCompletionAndHighlights()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, u"me @bob +Ann carl"_s));
    const QStringList users = session.probe.users();
    // New tabs do not become current, although the check box for that is checked.
    QVERIFY(session.receive(u":eve!e@h PRIVMSG me :hi"_s));
    QCOMPARE(session.probe.currentTabName(), u"#a"_s);
    session.probe.showTab(u"Server"_s);
    {
        const PreferencesForm form(session);
        changeUnboundFields(form);
        form.clickOk();
    }
    // Private messages and mentions work as before.
    session.probe.showTab(u"#a"_s);
    QCOMPARE(session.probe.users(), users);
    session.probe.inputLine().setText(u"c"_s);
    session.probe.completeNick();
    QCOMPARE(session.probe.inputLine().text(), u"carl"_s);
    session.probe.inputLine().clear();
    QVERIFY(session.receive(u":bob!b@h PRIVMSG me :hi"_s));
    QCOMPARE(session.probe.currentTabName(), u"#a"_s);
    session.probe.showTab(u"Server"_s);
    QVERIFY(session.receive(u":bob!b@h PRIVMSG #a :hi me"_s));
    QVERIFY(session.probe.tabs().value(u"#a"_s).highlighted);
}

QTEST_MAIN(TestPreferencesSaving)
#include "tst_PreferencesSaving.moc"
