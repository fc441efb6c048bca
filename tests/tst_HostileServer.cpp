#include "HighlightTabBar.h"
#include "IRCConnection.h"
#include "MyTabWidget.h"
#include "TemporaryStore.h"
#include "Waiting.h"
#include "WindowSession.h"

#include <QListWidget>
#include <QRandomGenerator>
#include <QStatusBar>
#include <QTest>
#include <QTextTable>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

constexpr int Huge = 100'000;

// Returns random bytes, including CR and LF.
QByteArray noise(quint32 seed, int size)
{
    QRandomGenerator generator(seed);
    QByteArray bytes;
    for (int i = 0; i < size; ++i)
        bytes.append(static_cast<char>(generator.bounded(256)));
    return bytes;
}

// Registers as "me" and joins #a with alice and bob.
bool begin(WindowSession &session)
{
    return session.registerAs() && session.join(u"#a"_s, u"me @alice bob"_s);
}

// Whether that session still works: users join, speak and leave, and the user's line is sent.
bool isAlive(WindowSession &session)
{
    session.discardSent();
    if (!session.join(u"#check"_s, u"me +carol"_s)
        || !session.receive(u":carol!u@h PRIVMSG #check :hello"_s)
        || !session.receive(u":carol!u@h PART #check :bye"_s)) {
        return false;
    }
    session.probe.showTab(u"#check"_s);
    session.probe.typeLine(u"answer"_s);
    return session.probe.lines(u"#check"_s)
                   == QStringList{u"me|joined #check"_s, u"carol|hello"_s,
                                  u"carol|left #check (bye)"_s, u"me|answer"_s}
           && session.probe.users() == QStringList{u"me"_s}
           && session.readSent() == QStringList{u"NAMES #check"_s, u"PRIVMSG #check :answer"_s};
}

} // namespace

class TestHostileServer final : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();

    void survivesBadLines_data();
    void survivesBadLines();
    void survivesNoise_data();
    void survivesNoise();
    void survivesSplitLines();
    void survivesVeryLongLines();
    void handlesManyLinesAtOnce();

    void showsOddText_data();
    void showsOddText();
    void showsAVeryLongWord();
    void keepsItsWidthUnderALongTopic();
    void handlesOddNames_data();
    void handlesOddNames();
    void handlesHugeNames();
    void handlesHugeNameLists();
    void keepsEachLineInOneRow_data();
    void keepsEachLineInOneRow();

    void handlesItsOwnNamesUsedByOthers_data();
    void handlesItsOwnNamesUsedByOthers();
    void handlesEmptyNames();
    void handlesAServerThatNeverWelcomes();
    void handlesARepeatedWelcome();
    void handlesALinkCutAnywhere_data();
    void handlesALinkCutAnywhere();

private:
    std::unique_ptr<TemporaryStore> store;
};

void TestHostileServer::initTestCase()
{
    store = std::make_unique<TemporaryStore>();
}

void TestHostileServer::init()
{
    store->clear();
}

void TestHostileServer::survivesBadLines_data()
{
    QTest::addColumn<QByteArray>("bytes");

    const auto add = [](const char *name, const QByteArray &bytes) {
        QTest::newRow(name) << bytes;
    };
    add("only line ends", "\r\n\r\n\r\n"_ba);
    add("spaces", "   \r\n \r\n\t\r\n"_ba);
    add("colons", ":\r\n::\r\n: :\r\n: : :\r\n"_ba);
    add("a prefix alone", ":alice!u@h\r\n:alice!u@h \r\n:!@ \r\n"_ba);
    add("commands alone", "PRIVMSG\r\nJOIN\r\nPART\r\nQUIT\r\nNICK\r\nKICK\r\nPING\r\nPONG\r\n"_ba);
    add("numerics alone", "001\r\n353\r\n366\r\n332\r\n321\r\n322\r\n323\r\n311\r\n312\r\n313\r\n"
                          "317\r\n318\r\n319\r\n301\r\n600\r\n601\r\n604\r\n605\r\n"_ba);
    add("numerics of a server alone",
        ":s 353\r\n:s 366\r\n:s 332\r\n:s 322\r\n:s 311\r\n:s 318\r\n:s 301\r\n:s 600\r\n"_ba);
    add("commands of a user alone",
        ":x!u@h PRIVMSG\r\n:x!u@h PRIVMSG #a\r\n:x!u@h PRIVMSG #a :\r\n:x!u@h QUIT\r\n"
        ":x!u@h NICK\r\n:x!u@h NICK :\r\n"_ba);
    add("numbers out of range",
        ":s 322 me #x 99999999999999999999 :t\r\n:s 322 me #x -2147483648 :t\r\n"
        ":s 317 me x 99999999999999 1 :t\r\n:s 99999 me :x\r\n:s -01 me :x\r\n"_ba);
    add("invalid UTF-8", ":\xff\xfe!u@h PRIVMSG #a :\xc3\x28\xf0\x9f\xed\xa0\x80\r\n"_ba);
    add("zeros", "\0\0\0\r\n:\0!u@h PRIVMSG #a :\0\0\r\nPRIVMSG \0 :x\r\n"_ba);
    add("line ends of other systems", "one\ntwo\rthree\n\rfour\r\r\n\n\r\n"_ba);
    add("invalid names", ":s 353 me = #a\r\n:s 353 me = #a :\r\n:s 353 me = #a :@ + % @@@ ~&@%+\r\n"
                         ":s 366 me #a :x\r\n"_ba);
}

void TestHostileServer::survivesBadLines()
{
    QFETCH(const QByteArray, bytes);

    WindowSession session;
    QVERIFY(begin(session));
    session.server.sendBytes(bytes);
    QVERIFY(session.settle());
    QVERIFY(isAlive(session));
}

void TestHostileServer::survivesNoise_data()
{
    QTest::addColumn<QByteArray>("bytes");

    for (quint32 seed = 1; seed <= 5; ++seed)
        QTest::addRow("noise %u", seed) << QByteArray(noise(seed, 20'000) + "\r\n");
    // Lines that begin like real ones.
    for (const char *start : {":x!u@h PRIVMSG #a :", ":x!u@h JOIN #a", ":s 353 me = #a :",
                              ":s 332 me #a :", ":x!u@h NICK ", ":s NOTICE me :", ":s 372 me :"}) {
        QByteArray bytes;
        for (quint32 seed = 1; seed <= 20; ++seed) {
            QByteArray text = noise(seed, 200);
            text.replace("\r\n", "");
            bytes += start + text + "\r\n";
        }
        QTest::newRow(start) << bytes;
    }
}

void TestHostileServer::survivesNoise()
{
    QFETCH(const QByteArray, bytes);

    WindowSession session;
    QVERIFY(begin(session));
    session.server.sendBytes(bytes);
    QVERIFY(session.settle());
    QVERIFY(isAlive(session));
}

// The lines do not depend on how the stream is split.
void TestHostileServer::survivesSplitLines()
{
    WindowSession session;
    QVERIFY(begin(session));
    const QByteArray bytes = ":alice!u@h PRIVMSG #a :one\r\n:bob!u@h PRIVMSG #a :two\r\n"_ba;
    for (const char byte : bytes) {
        session.server.sendBytes(QByteArray(1, byte));
        QCoreApplication::processEvents();
    }
    QVERIFY(session.settle());
    QCOMPARE(session.probe.lines(u"#a"_s),
             (QStringList{u"me|joined #a"_s, u"alice|one"_s, u"bob|two"_s}));
    QVERIFY(isAlive(session));
}

void TestHostileServer::survivesVeryLongLines()
{
    WindowSession session;
    QVERIFY(begin(session));
    const QStringList tabs = session.probe.tabTexts();
    const QByteArray piece(1 << 20, 'x');
    session.server.sendBytes(":s NOTICE me :");
    for (int i = 0; i < 8; ++i)
        session.server.sendBytes(piece);
    session.server.sendBytes("!\r\n");
    QVERIFY(session.settle());
    QCOMPARE(session.probe.tabTexts(), tabs);
    QVERIFY(isAlive(session));
}

void TestHostileServer::handlesManyLinesAtOnce()
{
    WindowSession session;
    QVERIFY(begin(session));
    QByteArray bytes;
    for (int i = 0; i < 500; ++i) {
        bytes += ":n" + QByteArray::number(i) + "!u@h JOIN #a\r\n";
        bytes += ":n" + QByteArray::number(i) + "!u@h PRIVMSG #a :hi\r\n";
        bytes += ":n" + QByteArray::number(i) + "!u@h QUIT :bye\r\n";
    }
    session.server.sendBytes(bytes);
    QVERIFY(session.settle());
    QCOMPARE(session.probe.lines(u"#a"_s).size(), 1501);
    QCOMPARE(session.probe.lastLine(u"#a"_s), u"n499|quit (bye)"_s);
    QCOMPARE(session.probe.users(), (QStringList{u"@alice"_s, u"bob"_s, u"me"_s}));
    QVERIFY(isAlive(session));
}

void TestHostileServer::showsOddText_data()
{
    QTest::addColumn<QString>("text");

    const auto add = [](const char *name, const QString &text) { QTest::newRow(name) << text; };
    add("markup", u"<b>x</b><script>alert(1)</script><img src=\"file:///etc/passwd\">&lt;"_s);
    add("a table's end", u"</td></tr></table><h1>x"_s);
    add("right to left", u"\u202eevil\u202c \u05e9\u05dc\u05d5\u05dd"_s);
    add("controls", u"a\u0001b\u0002c\u0003"
                    "04,05d\u0007e\u000ff\u0016g\u001fh\u007fi"_s);
    add("an action", u"\u0001ACTION waves\u0001"_s);
    add("tabs and feeds", u"a\tb\vc\fd"_s);
    add("zero-width characters", u"a\u200bb\u200dc\ufeffd\u2060e"_s);
    add("combining characters", u"e"_s + QString(1000, QChar(0x0301)));
    add("surrogate pairs", u"😊𝔘𝔫𝔦 👨‍👩‍👧"_s);
    add("object replacement character", u"a\ufffcb"_s);
    add("noncharacters", u"a\ufffeb\uffffc"_s);
    add("huge", QString(Huge, u'x'));
    add("huge, in words", u"word "_s.repeated(Huge / 5) + u"end"_s);
    add("placeholders", u"%1%2%99%n%L1"_s);
}

void TestHostileServer::showsOddText()
{
    QFETCH(const QString, text);

    WindowSession session;
    QVERIFY(begin(session));
    QVERIFY(session.receive(u":alice!u@h PRIVMSG #a :"_s + text));
    QCOMPARE(session.probe.lastLine(u"#a"_s), QString(u"alice|"_s + text));
    QVERIFY(session.receive(u":s NOTICE me :"_s + text));
    QCOMPARE(session.probe.lastLine(u"Server"_s), text.contains(u'!')
                                                          ? u"Connected and registered."_s
                                                          : QString(u"<< :s NOTICE me :"_s + text));
    QVERIFY(session.receive(u":s 332 me #a :"_s + text));
    QCOMPARE(session.probe.channelTopics().value(u"#a"_s), text);
    QVERIFY(session.receive(u":bob!u@h PART #a :"_s + text));
    QCOMPARE(session.probe.lastLine(u"#a"_s), QString(u"bob|left #a ("_s + text + u')'));
    QVERIFY(isAlive(session));
}

// This fails at the timeout if the layout searches the rest of the word for each of its lines.
void TestHostileServer::showsAVeryLongWord()
{
    WindowSession session;
    QVERIFY(begin(session));
    session.probe.showTab(u"#a"_s);
    const QString word(3 * Huge, u'x');
    QVERIFY(session.receive(u":alice!u@h PRIVMSG #a :"_s + word));
    QCOMPARE(session.probe.lastLine(u"#a"_s), QString(u"alice|"_s + word));
    QVERIFY(isAlive(session));
}

void TestHostileServer::keepsItsWidthUnderALongTopic()
{
    WindowSession session;
    QVERIFY(begin(session));
    const QWidget *bar = session.probe.tabs().value(u"#a"_s).topicBar;
    const int narrowest = bar->minimumSizeHint().width();
    QVERIFY(session.receive(u":s 332 me #a :"_s + QString(400, u'x')));
    // minimumSizeHint() recomputes the bar's layout, as the layouts around it will do.
    QCOMPARE(bar->minimumSizeHint().width(), narrowest);
    QCOMPARE(session.window.width(), 1280);
}

void TestHostileServer::handlesOddNames_data()
{
    QTest::addColumn<QString>("name");

    QTest::newRow("long") << QString(2000, u'x');
    QTest::newRow("markup") << u"<h1>&amp;</h1><img/src=x>"_s;
    QTest::newRow("right to left") << u"\u202e\u05e9\u05dc\u05d5\u05dd"_s;
    QTest::newRow("controls") << u"a\u0001\u0002\u0007\u001f\u007fb"_s;
    QTest::newRow("a zero") << u"a"_s + QChar(0) + u"b"_s;
    QTest::newRow("mnemonics") << u"&a&&b&"_s;
    QTest::newRow("placeholders") << u"%1%2%3"_s;
    QTest::newRow("separators") << u"a/b\\c;d=e[f]"_s;
}

void TestHostileServer::handlesOddNames()
{
    QFETCH(const QString, name);

    WindowSession session;
    QVERIFY(begin(session));
    QVERIFY(session.receive(u":%1!u@h PRIVMSG me :hi"_s.arg(name)));
    QVERIFY(session.probe.tabs().contains(name));
    QVERIFY(session.receive(u":%1!u@h JOIN #a"_s.arg(name)));
    QVERIFY(session.probe.users().contains(name));
    QVERIFY(session.receive(u":%1!u@h PRIVMSG #%1 :hi"_s.arg(name)));
    QVERIFY(session.probe.tabs().contains(u'#' + name));
    QVERIFY(session.join(u"#2"_s + name, u"@%1 me"_s.arg(name)));
    session.probe.showTab(u"#2"_s + name);
    QCOMPARE(session.probe.users(), (QStringList{u'@' + name, u"me"_s}));
    QVERIFY(session.receive(u":%1!u@h NICK short"_s.arg(name)));
    QVERIFY(session.probe.tabs().contains(u"short"_s));
    QVERIFY(session.receive(u":bob!u@h NICK %1"_s.arg(name)));
    QVERIFY(session.receive(u":me!u@h NICK me%1"_s.arg(name)));
    // The line about the change mentions the user in another tab, which shows a notification.
    session.probe.updateStatusBar();
    QCOMPARE(session.window.statusBar()->currentMessage(),
             QString(u"Connected to 127.0.0.1 as me"_s + name));
    QVERIFY(session.receive(u":me%1!u@h NICK me"_s.arg(name)));
    QVERIFY(!session.window.grab().isNull());
    QVERIFY(isAlive(session));
}

void TestHostileServer::handlesHugeNames()
{
    WindowSession session;
    QVERIFY(begin(session));
    const QString name(Huge, u'x');
    QVERIFY(session.receiveAll(
            {u":%1!u@h JOIN #a"_s.arg(name), u":%1!u@h PRIVMSG #a :hi"_s.arg(name)}));
    QCOMPARE(session.probe.users(), (QStringList{u"@alice"_s, u"bob"_s, u"me"_s, name}));
    QCOMPARE(session.probe.lastLine(u"#a"_s), u"xxxxxxxxxxxxxxx…|hi"_s);
    QVERIFY(session.receive(u":%1!u@h QUIT :x"_s.arg(name)));
    for (const QString &tab : {name, QString(u'#' + name)}) {
        emit session.probe.connection().privmsgReceived(u"bob"_s, tab, u"hi"_s);
        QCOMPARE(session.probe.tabTexts().last(), tab);
        QCOMPARE(session.probe.lines(tab), QStringList{u"bob|hi"_s});
        session.probe.closeTab(2);
    }
    QVERIFY(isAlive(session));
}

void TestHostileServer::handlesHugeNameLists()
{
    WindowSession session;
    QVERIFY(begin(session));
    QStringList names;
    for (int i = 0; i < 20'000; ++i)
        names.append(u"user%1"_s.arg(i));
    QVERIFY(session.join(u"#b"_s, names.join(u' ')));
    session.probe.showTab(u"#b"_s);
    QCOMPARE(session.probe.users().size(), 20'000);
    QVERIFY(isAlive(session));
}

void TestHostileServer::keepsEachLineInOneRow_data()
{
    QTest::addColumn<QString>("mark");
    QTest::addColumn<QChar>("shown");

    QTest::newRow("return") << u"\r"_s << QChar(QChar::LineSeparator);
    QTest::newRow("feed") << u"\n"_s << QChar(QChar::LineSeparator);
    QTest::newRow("line separator") << u"\u2028"_s << QChar(QChar::LineSeparator);
    QTest::newRow("paragraph separator") << u"\u2029"_s << QChar(QChar::LineSeparator);
    QTest::newRow("frame begin") << QString(QChar(0xfdd0)) << QChar(QChar::ReplacementCharacter);
    QTest::newRow("frame end") << QString(QChar(0xfdd1)) << QChar(QChar::ReplacementCharacter);
}

void TestHostileServer::keepsEachLineInOneRow()
{
    QFETCH(const QString, mark);
    QFETCH(const QChar, shown);

    WindowSession session;
    QVERIFY(begin(session));
    const QString odd = u"x"_s + mark + u"y"_s;
    const QString row = u"x"_s + shown + u"y"_s;
    QVERIFY(session.receive(u":alice!u@h PRIVMSG #a :"_s + odd));
    QVERIFY(session.receive(u":%1!u@h PRIVMSG #a :hi"_s.arg(odd)));
    QVERIFY(session.receive(u":s NOTICE me :"_s + odd));
    QCOMPARE(session.probe.lines(u"#a"_s).mid(1),
             (QStringList{QString(u"alice|"_s + row), QString(row + u"|hi"_s)}));
    QCOMPARE(session.probe.lastLine(u"Server"_s), QString(u"<< :s NOTICE me :"_s + row));
    QVERIFY(session.receive(u":alice!u@h PRIVMSG #b%1 :hi"_s.arg(odd)));
    QVERIFY(session.probe.tabs().contains(u"#b"_s + odd));
    QVERIFY(isAlive(session));
}

void TestHostileServer::handlesItsOwnNamesUsedByOthers_data()
{
    QTest::addColumn<QStringList>("lines");

    QTest::newRow("a user called Server")
            << QStringList{u":Server!u@h PRIVMSG me :hi"_s, u":Server!u@h QUIT :x"_s};
    QTest::newRow("a user called List")
            << QStringList{u":List!u@h PRIVMSG me :hi"_s, u":List!u@h QUIT :x"_s};
    QTest::newRow("a partner becomes Server")
            << QStringList{u":bob!u@h PRIVMSG me :hi"_s, u":bob!u@h NICK Server"_s,
                           u":s NOTICE me :hi"_s, u":Server!u@h NICK bob"_s};
    QTest::newRow("a partner becomes List")
            << QStringList{u":bob!u@h PRIVMSG me :hi"_s, u":bob!u@h NICK List"_s,
                           u":List!u@h PRIVMSG me :hi"_s, u":List!u@h NICK bob"_s};
    QTest::newRow("a partner becomes a channel") << QStringList{
            u":bob!u@h PRIVMSG me :hi"_s, u":bob!u@h NICK #a"_s, u":alice!u@h PRIVMSG #a :hi"_s,
            u":s 332 me #a :t"_s, u":alice!u@h PART #a"_s};
    QTest::newRow("the user becomes Server") << QStringList{
            u":me!u@h NICK Server"_s, u":bob!u@h PRIVMSG Server :hi"_s, u":Server!u@h NICK me"_s};
    QTest::newRow("another user's own nick is the user's") << QStringList{
            u":bob!u@h NICK me"_s, u":me!u@h PRIVMSG me :hi"_s, u":me!u@h QUIT :x"_s};
    QTest::newRow("a kick from an unknown channel")
            << QStringList{u":x!u@h KICK #zz me :x"_s, u":x!u@h KICK"_s, u":x!u@h KICK #a"_s};
}

void TestHostileServer::handlesItsOwnNamesUsedByOthers()
{
    QFETCH(const QStringList, lines);

    WindowSession session;
    QVERIFY(begin(session));
    QVERIFY(session.receiveAll(lines));
    for (int index = 0; index < session.probe.tabWidget().count(); ++index)
        session.probe.tabWidget().setCurrentIndex(index);
    QVERIFY(isAlive(session));
    for (int index = session.probe.tabWidget().count() - 1; index >= 0; --index)
        session.probe.closeTab(index);
    QVERIFY(session.settle());
}

void TestHostileServer::handlesEmptyNames()
{
    WindowSession session;
    QVERIFY(begin(session));
    QVERIFY(session.receiveAll({u":me!u@h JOIN :#x"_s, u":bob!u@h JOIN :#x"_s,
                                u":!u@h PRIVMSG me :hi"_s, u"PRIVMSG me :hi"_s, u":!u@h JOIN #a"_s,
                                u":!u@h NICK nobody"_s, u":bob!u@h NICK"_s, u":s 366 me"_s,
                                u":s 332 me"_s, u":bob!u@h PART"_s}));
    QVERIFY(session.probe.tabs().contains(QString()));
    session.probe.showTab(QString());
    session.probe.typeLine(u"into the void"_s);
    QCOMPARE(session.probe.lastLine(QString()), u"me|into the void"_s);
    QVERIFY(isAlive(session));
}

void TestHostileServer::handlesAServerThatNeverWelcomes()
{
    WindowSession session;
    QVERIFY(session.acceptDialog(u"me"_s));
    QVERIFY(session.receive(u":alice!u@h PRIVMSG me :early"_s));
    QCOMPARE(session.probe.lines(u"alice"_s), QStringList{u"alice|early"_s});
    // Every nick is refused until there are no more.
    for (int i = 0; i < 150; ++i)
        session.server.send(u":s 433 * x :Nickname is already in use"_s);
    QVERIFY(session.settle());
    QCOMPARE(session.probe.lastLine(u"Server"_s),
             u"*** Error: All nicknames are in use. Please choose a different nick."_s);
    QVERIFY(session.probe.connection().isConnected());
}

void TestHostileServer::handlesARepeatedWelcome()
{
    WindowSession session;
    QVERIFY(session.registerAs(u"me"_s, u"#a"_s));
    session.discardSent();
    QVERIFY(session.receiveAll({u":s 001 me :Welcome"_s, u":s 001 me :Welcome"_s}));
    QCOMPARE(session.readSent(), (QStringList{u"JOIN #a"_s, u"JOIN #a"_s}));
    QVERIFY(isAlive(session));
}

void TestHostileServer::handlesALinkCutAnywhere_data()
{
    QTest::addColumn<QByteArray>("bytes");

    QTest::newRow("in a prefix") << ":ali"_ba;
    QTest::newRow("in a text") << ":alice!u@h PRIVMSG #a :hel"_ba;
    QTest::newRow("in a character") << ":alice!u@h PRIVMSG #a :\xf0\x9f"_ba;
    QTest::newRow("in a line end") << ":alice!u@h PRIVMSG #a :hello\r"_ba;
    QTest::newRow("in a name list") << ":s 353 me = #a :eve\r\n:s 353 me = #a :mal"_ba;
}

void TestHostileServer::handlesALinkCutAnywhere()
{
    QFETCH(const QByteArray, bytes);

    WindowSession session;
    QVERIFY(begin(session));
    session.server.sendBytes(bytes);
    session.server.close();
    QTRY_COMPARE_WITH_TIMEOUT(session.probe.lastLine(u"Server"_s), u"*** Disconnected."_s,
                              WaitTimeout);
    // The incomplete line precedes the first line of the next connection.
    QVERIFY(session.acceptDialog(u"me"_s));
    session.server.sendBytes("\r\n");
    QVERIFY(session.receive(u":s 001 me :Welcome"_s));
    QVERIFY(isAlive(session));
}

QTEST_MAIN(TestHostileServer)
#include "tst_HostileServer.moc"
