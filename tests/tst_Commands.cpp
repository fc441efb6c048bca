#include "Commands.h"

#include <QTest>

using namespace Qt::StringLiterals;

class TestCommands final : public QObject
{
    Q_OBJECT

private slots:
    void namesTheCommand_data();
    void namesTheCommand();
    void splitsWordsAtRunsOfBlanks_data();
    void splitsWordsAtRunsOfBlanks();
    void countsEmptyFieldsInSections_data();
    void countsEmptyFieldsInSections();
    void keepsTheWholeLine();
};

void TestCommands::namesTheCommand_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("name");

    QTest::newRow("alias j") << u"/j #x"_s << u"join"_s;
    QTest::newRow("alias l") << u"/l"_s << u"list"_s;
    QTest::newRow("alias w") << u"/w bob"_s << u"whois"_s;
    QTest::newRow("alias n") << u"/n bob"_s << u"nick"_s;
    QTest::newRow("alias p") << u"/p"_s << u"part"_s;
    QTest::newRow("alias m") << u"/m bob hi"_s << u"msg"_s;
    QTest::newRow("alias a") << u"/a lunch"_s << u"away"_s;
    QTest::newRow("alias b") << u"/b"_s << u"back"_s;
    QTest::newRow("alias wc") << u"/wc bob"_s << u"whois"_s;
    QTest::newRow("alias raw") << u"/raw VERSION"_s << u"raw"_s;

    QTest::newRow("join") << u"/join #x"_s << u"join"_s;
    QTest::newRow("part") << u"/part"_s << u"part"_s;
    QTest::newRow("nick") << u"/nick bob"_s << u"nick"_s;
    QTest::newRow("msg") << u"/msg bob hi"_s << u"msg"_s;
    QTest::newRow("list") << u"/list"_s << u"list"_s;
    QTest::newRow("away") << u"/away"_s << u"away"_s;
    QTest::newRow("back") << u"/back"_s << u"back"_s;
    QTest::newRow("whois") << u"/whois bob"_s << u"whois"_s;
    QTest::newRow("autojoin has no alias") << u"/autojoin #x"_s << u"autojoin"_s;

    QTest::newRow("upper case") << u"/WHOIS bob"_s << u"whois"_s;
    QTest::newRow("upper-case alias") << u"/WC bob"_s << u"whois"_s;
    QTest::newRow("mixed-case alias") << u"/J #x"_s << u"join"_s;
    QTest::newRow("unknown") << u"/Me waves"_s << u"me"_s;
    QTest::newRow("alias is the whole word") << u"/jo #x"_s << u"jo"_s;
    QTest::newRow("slash alone") << u"/"_s << u""_s;
    QTest::newRow("two slashes") << u"//"_s << u"/"_s;
    QTest::newRow("slash is not escaped") << u"//me waves"_s << u"/me"_s;
    QTest::newRow("blanks behind the slash") << u"/  join #x"_s << u"join"_s;
    QTest::newRow("only blanks part words") << u"/join\t#x"_s << u"join\t#x"_s;
}

void TestCommands::namesTheCommand()
{
    QFETCH(const QString, line);
    QTEST(Commands::parse(line).name, "name");
}

void TestCommands::splitsWordsAtRunsOfBlanks_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QStringList>("words");

    QTest::newRow("slash alone") << u"/"_s << QStringList{};
    QTest::newRow("command alone") << u"/raw"_s << QStringList{u"raw"_s};
    QTest::newRow("as typed") << u"/J #Velmora Key"_s
                              << QStringList{u"J"_s, u"#Velmora"_s, u"Key"_s};
    QTest::newRow("runs of blanks")
            << u"/msg  bob   hi  there"_s << QStringList{u"msg"_s, u"bob"_s, u"hi"_s, u"there"_s};
    QTest::newRow("tab stays in its word")
            << u"/msg bob a\tb"_s << QStringList{u"msg"_s, u"bob"_s, u"a\tb"_s};
}

void TestCommands::splitsWordsAtRunsOfBlanks()
{
    QFETCH(const QString, line);
    QTEST(Commands::parse(line).words, "words");
}

void TestCommands::countsEmptyFieldsInSections_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<int>("first");
    QTest::addColumn<QString>("section");

    QTest::newRow("message") << u"/msg bob hi there"_s << 2 << u"hi there"_s;
    QTest::newRow("blanks in a message stay") << u"/msg bob  hi  there"_s << 2 << u" hi  there"_s;
    QTest::newRow("two blanks behind msg") << u"/msg  bob hi there"_s << 2 << u"bob hi there"_s;
    QTest::newRow("raw line") << u"/raw MODE #x +b"_s << 1 << u"MODE #x +b"_s;
    QTest::newRow("two blanks behind raw") << u"/raw  VERSION"_s << 1 << u" VERSION"_s;
    QTest::newRow("nothing behind the command") << u"/away"_s << 1 << u""_s;
    QTest::newRow("too few fields") << u"/msg bob"_s << 2 << u""_s;
    QTest::newRow("whole line") << u"/away at lunch"_s << 0 << u"/away at lunch"_s;
}

void TestCommands::countsEmptyFieldsInSections()
{
    QFETCH(const QString, line);
    QFETCH(const int, first);
    QTEST(Commands::parse(line).section(first), "section");
}

void TestCommands::keepsTheWholeLine()
{
    QCOMPARE(Commands::parse(u"/MSG  bob hi"_s).line, u"/MSG  bob hi"_s);
}

QTEST_GUILESS_MAIN(TestCommands)
#include "tst_Commands.moc"
