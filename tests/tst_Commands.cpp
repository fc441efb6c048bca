#include "Commands.h"

#include <QTest>

using namespace Qt::StringLiterals;

using Commands::Action;

class TestCommands final : public QObject
{
    Q_OBJECT

private slots:
    void namesTheCommand_data();
    void namesTheCommand();
    void needsWords_data();
    void needsWords();
    void splitsWordsAtRunsOfSpaces_data();
    void splitsWordsAtRunsOfSpaces();
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
    QTest::newRow("spaces after the slash") << u"/  join #x"_s << u"join"_s;
    QTest::newRow("only spaces separate words") << u"/join\t#x"_s << u"join\t#x"_s;
}

void TestCommands::namesTheCommand()
{
    QFETCH(const QString, line);
    QTEST(Commands::parse(line).name, "name");
}

void TestCommands::needsWords_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<Action>("action");

    QTest::newRow("join") << u"/join"_s << Action::Unknown;
    QTest::newRow("join with a channel") << u"/J #x"_s << Action::Join;
    QTest::newRow("part") << u"/part"_s << Action::Part;
    QTest::newRow("nick") << u"/nick"_s << Action::Unknown;
    QTest::newRow("nick with a nick") << u"/nick bob"_s << Action::Nick;
    QTest::newRow("msg without a text") << u"/msg bob"_s << Action::Unknown;
    QTest::newRow("msg with a text") << u"/msg bob hi"_s << Action::Msg;
    QTest::newRow("raw") << u"/raw"_s << Action::Unknown;
    QTest::newRow("raw with a line") << u"/raw VERSION"_s << Action::Raw;
    QTest::newRow("list") << u"/list"_s << Action::List;
    QTest::newRow("away") << u"/away"_s << Action::Away;
    QTest::newRow("back") << u"/back"_s << Action::Back;
    QTest::newRow("whois") << u"/wc"_s << Action::Unknown;
    QTest::newRow("whois with a nick") << u"/wc bob"_s << Action::Whois;
    QTest::newRow("autojoin") << u"/autojoin"_s << Action::Unknown;
    QTest::newRow("autojoin with a channel") << u"/autojoin #x"_s << Action::Autojoin;
    QTest::newRow("unknown") << u"/me waves"_s << Action::Unknown;
    QTest::newRow("slash alone") << u"/"_s << Action::Unknown;
}

void TestCommands::needsWords()
{
    QFETCH(const QString, line);
    QTEST(Commands::parse(line).action, "action");
}

void TestCommands::splitsWordsAtRunsOfSpaces_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QStringList>("words");

    QTest::newRow("slash alone") << u"/"_s << QStringList{};
    QTest::newRow("command alone") << u"/raw"_s << QStringList{u"raw"_s};
    QTest::newRow("as typed") << u"/J #Velmora Key"_s
                              << QStringList{u"J"_s, u"#Velmora"_s, u"Key"_s};
    QTest::newRow("runs of spaces")
            << u"/msg  bob   hi  there"_s << QStringList{u"msg"_s, u"bob"_s, u"hi"_s, u"there"_s};
    QTest::newRow("tab stays in its word")
            << u"/msg bob a\tb"_s << QStringList{u"msg"_s, u"bob"_s, u"a\tb"_s};
}

void TestCommands::splitsWordsAtRunsOfSpaces()
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
    QTest::newRow("spaces in a message stay") << u"/msg bob  hi  there"_s << 2 << u" hi  there"_s;
    QTest::newRow("two spaces after msg") << u"/msg  bob hi there"_s << 2 << u"bob hi there"_s;
    QTest::newRow("raw line") << u"/raw MODE #x +b"_s << 1 << u"MODE #x +b"_s;
    QTest::newRow("two spaces after raw") << u"/raw  VERSION"_s << 1 << u" VERSION"_s;
    QTest::newRow("nothing after the command") << u"/away"_s << 1 << u""_s;
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
