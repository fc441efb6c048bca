#include "ChatDocument.h"
#include "IRCConnection.h"
#include "PreferencesForm.h"
#include "TemporaryStore.h"
#include "Waiting.h"
#include "WindowSession.h"

#include <QListWidget>
#include <QSettings>
#include <QTest>
#include <QTextBrowser>
#include <QTextTable>
#include <QTimer>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

// Returns the time text of the tab's last row.
QString lastTime(const MainWindowProbe &probe, const QString &tabName)
{
    const QTextTable *table = probe.tabs().value(tabName).table;
    return ChatDocument::cellText(*table, table->rows() - 1, 0);
}

// What preferences could affect according to their names.
struct WindowState
{
    explicit WindowState(WindowSession &session)
    {
        const MainWindowProbe &probe = session.probe;
        const QTextBrowser *view = probe.tabs().value(u"#a"_s).chatView;
        image = session.window.grab().toImage();
        viewFont = view->font();
        inputFont = probe.inputLine().font();
        const auto found = session.window.findChildren<QTimer *>();
        for (const QTimer *timer : found)
            timers.append({timer->interval(), timer->isActive() ? 1 : 0});
        std::sort(timers.begin(), timers.end());
    }

    QImage image;
    QFont viewFont;
    QFont inputFont;
    QList<QList<int>> timers;
};

// Shows a channel with a row that contains an emoji and a constant time text.
[[nodiscard]] bool showConversation(WindowSession &session)
{
    session.probe.timestampFormat() = u"'now'"_s;
    if (!session.registerAs() || !session.join(u"#a"_s, u"me @bob"_s)
        || !session.receive(u":bob!b@h PRIVMSG #a :hello \U0001F600 me"_s))
        return false;
    session.probe.inputLine().clearFocus(); // No blinking cursor.
    return true;
}

} // namespace

class TestPreferences final : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void startsWithTheDefaults_data();
    void startsWithTheDefaults();
    void storesOnlyTheThemeAtTheFirstStart();
    void loadsStoredValues_data();
    void loadsStoredValues();
    void keepsTheFontIfNoneIsStored();
    void keepsTheFontIfTheStoredOneIsInvalid();
    void removesBlackAndInvalidColors_data();
    void removesBlackAndInvalidColors();
    void keepsOtherColors_data();
    void keepsOtherColors();
    void resetsTheColorIfNoneIsStored();
    void formatsTimesWithTheCurrentFormat();
    void acceptsAnyStoredFormat_data();
    void acceptsAnyStoredFormat();
    void setsTheUserListsFontInViews();
    void doesNotSetTheStoredFontInViews();
    void keepsExistingRowsWhenTheFormatChanges();
    void hasPreferencesWithoutEffect_data();
    void hasPreferencesWithoutEffect();
    void writesNoLog();
    void doesNotReconnectByItself();
    void savesNothingWhenClosed();

private:
    TemporaryStore store;
};

void TestPreferences::init()
{
    store.clear();
}

void TestPreferences::startsWithTheDefaults_data()
{
    PreferencesForm::addTestRows();
}

void TestPreferences::startsWithTheDefaults()
{
    QFETCH(const QString, key);
    MainWindow window;
    QTEST(MainWindowProbe(window).storedPreferences().value(key), "defaultValue");
}

void TestPreferences::storesOnlyTheThemeAtTheFirstStart()
{
    const MainWindow window;
    QCOMPARE(QSettings().allKeys(), QStringList{u"theme"_s});
    QCOMPARE(QSettings().value(u"theme"_s).toString(), u"light"_s);
}

void TestPreferences::loadsStoredValues_data()
{
    PreferencesForm::addTestRows();
}

void TestPreferences::loadsStoredValues()
{
    QFETCH(const QString, key);
    QFETCH(const QString, other);
    QSettings().setValue(key, other);
    MainWindow window;
    const QMap<QString, QString> members = MainWindowProbe(window).storedPreferences();
    const QList<PreferenceCase> preferences = PreferencesForm::preferencesWithField();
    for (const PreferenceCase &preference : preferences) {
        QCOMPARE(members.value(preference.key),
                 preference.key == key ? preference.other : preference.defaultValue);
    }
    QCOMPARE(PreferencesForm::stored(),
             (QMap<QString, QString>{{key, other}, {u"theme"_s, u"light"_s}}));
}

void TestPreferences::keepsTheFontIfNoneIsStored()
{
    QSettings().setValue(u"chatFont"_s, u""_s);
    MainWindow window;
    QCOMPARE(MainWindowProbe(window).chatFont(), QFont(u"Monaco"_s, 12));
}

void TestPreferences::keepsTheFontIfTheStoredOneIsInvalid()
{
    QSettings().setValue(u"chatFont"_s, u"a,b,c"_s);
    QTest::ignoreMessage(QtWarningMsg, "QFont::fromString: Invalid description 'a,b,c'");
    MainWindow window;
    QCOMPARE(MainWindowProbe(window).chatFont(), QFont(u"Monaco"_s, 12));
    QCOMPARE(QSettings().value(u"chatFont"_s).toString(), u"a,b,c"_s);
}

void TestPreferences::removesBlackAndInvalidColors_data()
{
    QTest::addColumn<QString>("stored");

    QTest::newRow("black") << u"#000000"_s;
    QTest::newRow("black in three digits") << u"#000"_s;
    QTest::newRow("black by name") << u"black"_s;
    QTest::newRow("no color") << u"nonsense"_s;
    QTest::newRow("too few digits") << u"#12"_s;
}

void TestPreferences::removesBlackAndInvalidColors()
{
    QFETCH(const QString, stored);
    QSettings().setValue(u"chatBgColor"_s, stored);
    MainWindow window;
    QVERIFY(!MainWindowProbe(window).chatBgColor().isValid());
    QVERIFY(QSettings().contains(u"chatBgColor"_s));
    QCOMPARE(QSettings().value(u"chatBgColor"_s).toString(), u""_s);
    QCOMPARE(QSettings().allKeys(), (QStringList{u"chatBgColor"_s, u"theme"_s}));
}

void TestPreferences::keepsOtherColors_data()
{
    QTest::addColumn<QString>("stored");
    QTest::addColumn<QColor>("color");

    QTest::newRow("nearly black") << u"#000001"_s << QColor(0, 0, 1);
    QTest::newRow("white") << u"#ffffff"_s << QColor(Qt::white);
    QTest::newRow("by name") << u"red"_s << QColor(Qt::red);
}

void TestPreferences::keepsOtherColors()
{
    QFETCH(const QString, stored);
    QSettings().setValue(u"chatBgColor"_s, stored);
    MainWindow window;
    QTEST(MainWindowProbe(window).chatBgColor(), "color");
    QCOMPARE(QSettings().value(u"chatBgColor"_s).toString(), stored);
}

void TestPreferences::resetsTheColorIfNoneIsStored()
{
    MainWindow window;
    const MainWindowProbe probe(window);
    probe.chatBgColor() = Qt::red;
    probe.loadPreferences();
    QVERIFY(!probe.chatBgColor().isValid());
    QVERIFY(!QSettings().contains(u"chatBgColor"_s));
}

void TestPreferences::formatsTimesWithTheCurrentFormat()
{
    const WindowSession session;
    session.probe.timestampFormat() = u"'first'"_s;
    session.probe.appendMessageToTab(u"#a"_s, u"one"_s);
    QCOMPARE(lastTime(session.probe, u"#a"_s), u"first"_s);
    session.probe.timestampFormat() = u"'second'"_s;
    QCOMPARE(lastTime(session.probe, u"#a"_s), u"first"_s);
    session.probe.appendMessageToTab(u"#a"_s, u"two"_s);
    QCOMPARE(lastTime(session.probe, u"#a"_s), u"second"_s);
    const QTextTable *table = session.probe.tabs().value(u"#a"_s).table;
    QVERIFY(table->cellAt(1, 0).firstCursorPosition().block().text() == u"first"_s);
}

void TestPreferences::acceptsAnyStoredFormat_data()
{
    QTest::addColumn<QString>("format");
    QTest::addColumn<QString>("pattern");

    QTest::newRow("not in the dialog") << u"'at' yyyy"_s << u"^at \\d{4}$"_s;
    QTest::newRow("in the dialog") << u"[hh:mm:ss AP]"_s << u"^\\[\\d\\d:\\d\\d:\\d\\d [AP]M\\]$"_s;
    QTest::newRow("empty") << u""_s << u"^$"_s;
}

void TestPreferences::acceptsAnyStoredFormat()
{
    QFETCH(const QString, format);
    QFETCH(const QString, pattern);
    QSettings().setValue(u"timestampFormat"_s, format);
    const WindowSession session;
    session.probe.appendMessageToTab(u"#a"_s, u"one"_s);
    const QString time = lastTime(session.probe, u"#a"_s);
    QVERIFY2(QRegularExpression(pattern).match(time).hasMatch(), qUtf8Printable(time));
}

void TestPreferences::setsTheUserListsFontInViews()
{
    const WindowSession session;
    session.probe.openTabs({u"#a"_s, u"bob"_s});
    session.probe.addListTab(); // It has no view.
    const QFont font(u"DejaVu Serif"_s, 17);
    session.probe.userList().setFont(font);
    session.probe.chatFont() = QFont(u"DejaVu Sans Mono"_s, 9);
    session.probe.applyChatFont();
    QCOMPARE(session.probe.inputLine().font().family(), font.family());
    for (const QString &name : {u"Server"_s, u"#a"_s, u"bob"_s}) {
        QCOMPARE(session.probe.tabs().value(name).chatView->font().family(), font.family());
        QCOMPARE(session.probe.tabs().value(name).chatView->font().pointSize(), 17);
    }
}

void TestPreferences::doesNotSetTheStoredFontInViews()
{
    const QFont font(u"DejaVu Serif"_s, 15);
    QSettings().setValue(u"chatFont"_s, font.toString());
    WindowSession session;
    session.probe.openTabs({u"#a"_s});
    QCOMPARE(session.probe.chatFont(), font);
    for (const QString &name : {u"Server"_s, u"#a"_s}) {
        QCOMPARE(session.probe.tabs().value(name).chatView->font().family(),
                 session.probe.userList().font().family());
    }
    QVERIFY(session.probe.userList().font().family() != font.family());
    const PreferencesForm form(session);
    QCOMPARE(form.fontButton()->text(), u"DejaVu Serif 15"_s);
}

void TestPreferences::keepsExistingRowsWhenTheFormatChanges()
{
    WindowSession session;
    QVERIFY(showConversation(session));
    const QImage before = session.window.grab().toImage();
    session.probe.timestampFormat() = u"'later'"_s;
    session.probe.applyTimestampFormat();
    QCOMPARE(session.window.grab().toImage(), before);
}

void TestPreferences::hasPreferencesWithoutEffect_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("other");

    const QStringList withEffect{u"timestampFormat"_s, u"chatBgImage"_s, u"chatBgColor"_s};
    const QList<PreferenceCase> preferences = PreferencesForm::allPreferences();
    for (const PreferenceCase &preference : preferences) {
        if (!withEffect.contains(preference.key))
            QTest::newRow(qUtf8Printable(preference.key)) << preference.key << preference.other;
    }
}

void TestPreferences::hasPreferencesWithoutEffect()
{
    QFETCH(const QString, key);
    QFETCH(const QString, other);
    WindowSession usual;
    QVERIFY(showConversation(usual));
    const WindowState expected(usual);
    store.clear();
    QSettings().setValue(key, other);
    WindowSession session;
    QVERIFY(showConversation(session));
    const WindowState found(session);
    QCOMPARE(found.viewFont, expected.viewFont);
    QCOMPARE(found.inputFont, expected.inputFont);
    QCOMPARE(found.timers, expected.timers);
    QCOMPARE(found.image, expected.image);
}

void TestPreferences::writesNoLog()
{
    const QTemporaryDir folder;
    QSettings().setValue(u"logEnabled"_s, true);
    QSettings().setValue(u"logPath"_s, folder.path());
    WindowSession session;
    QVERIFY(showConversation(session));
    QVERIFY(QDir(folder.path()).isEmpty());
}

void TestPreferences::doesNotReconnectByItself()
{
    QSettings().setValue(u"autoReconnect"_s, true);
    QSettings().setValue(u"reconnectDelay"_s, 1);
    WindowSession session;
    QVERIFY(session.registerAs());
    session.server.close();
    QTRY_VERIFY_WITH_TIMEOUT(!session.probe.connection().isConnected(), WaitTimeout);
    const auto timers = session.window.findChildren<QTimer *>();
    QVERIFY(std::none_of(timers.cbegin(), timers.cend(),
                         [](const QTimer *timer) { return timer->isActive(); }));
}

void TestPreferences::savesNothingWhenClosed()
{
    {
        MainWindow window;
        const MainWindowProbe probe(window);
        probe.timestampFormat() = u"hh:mm"_s;
        probe.chatBgColor() = Qt::red;
        window.close();
    }
    QCOMPARE(QSettings().allKeys(), QStringList{u"theme"_s});
}

QTEST_MAIN(TestPreferences)
#include "tst_Preferences.moc"
