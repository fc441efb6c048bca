#include "IRCConnection.h"
#include "TemporaryStore.h"
#include "Waiting.h"
#include "WindowSession.h"

#include <QDateTime>
#include <QRegularExpression>
#include <QTest>
#include <QTextBlock>
#include <QTextBrowser>
#include <QTextTable>

using namespace Qt::StringLiterals;

namespace {

const auto Server = u"Server"_s;
const QColor Grey(136, 136, 136, 255);

const QTextTable &tableOf(const MainWindowProbe &probe, const QString &tabName)
{
    return *probe.tabs().value(tabName).table;
}

// A cell of a conversation's last row.
struct Cell
{
    QString text;
    QTextCharFormat format; // Of its first character.
    Qt::Alignment alignment;
    QTextTableCellFormat cellFormat;
};

Cell lastCell(const MainWindowProbe &probe, const QString &tabName, int column)
{
    const QTextTable &table = tableOf(probe, tabName);
    const QTextTableCell cell = table.cellAt(table.rows() - 1, column);
    const QTextBlock block = cell.firstCursorPosition().block();
    return {.text = block.text(),
            .format = block.begin().atEnd() ? QTextCharFormat()
                                            : block.begin().fragment().charFormat(),
            .alignment = block.blockFormat().alignment(),
            .cellFormat = cell.format().toTableCellFormat()};
}

} // namespace

class TestMessageRows final : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void createsTheTableWithTheFirstLine();
    void formatsTheTable_data();
    void formatsTheTable();
    void keepsTheFirstRowEmpty();
    void leavesTheViewReadOnly();
    void keepsEveryRow();
    void writesTheTime();
    void formatsTheTimeAsPreferred();
    void keepsTheTimeOfWrittenRows();
    void usesTheTimeWhenALineArrives();
    void writesTheNick_data();
    void writesTheNick();
    void writesNoNickInSystemLines();
    void writesTheText();
    void dimsStatusLines();
    void showsNoSenderOnServer();
    void followsTheTabsName();
    void keepsControlCodes_data();
    void keepsControlCodes();
    void linksAddresses_data();
    void linksAddresses();
    void marksOwnLinesWhileAway_data();
    void marksOwnLinesWhileAway();
    void marksOwnStatusLinesWithoutAPrefix();
    void marksOwnLinesOnServerWhileAway();
    void treatsAnEmptySenderAsOwnWithoutANick();
    void treatsAnEmptySenderAsSystemWithANick();
    void keepsPlaceholdersInAwayTexts();
    void usesTheAwayStateWhenALineArrives();

private:
    TemporaryStore store;
};

void TestMessageRows::init()
{
    store.clear();
}

void TestMessageRows::createsTheTableWithTheFirstLine()
{
    WindowSession session;
    QCOMPARE(session.probe.tabs().value(Server).table, nullptr);
    session.probe.appendMessageToTab(Server, u"x"_s);
    const QTextTable *table = session.probe.tabs().value(Server).table;
    QVERIFY(table != nullptr);
    QCOMPARE(table->document(), session.probe.tabs().value(Server).chatView->document());
    session.probe.appendMessageToTab(Server, u"y"_s);
    QCOMPARE(session.probe.tabs().value(Server).table, table);
    QCOMPARE(table->rows(), 3);
}

void TestMessageRows::formatsTheTable_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QList<QTextLength>>("widths");

    const QTextLength time(QTextLength::FixedLength, 85);
    const QTextLength nick(QTextLength::FixedLength, 120);
    const QTextLength text(QTextLength::VariableLength, 0);
    QTest::newRow("server") << Server << QList<QTextLength>{time, text};
    QTest::newRow("channel") << u"#c"_s << QList<QTextLength>{time, nick, text};
    QTest::newRow("private") << u"bob"_s << QList<QTextLength>{time, nick, text};
    QTest::newRow("server in lower case") << u"server"_s << QList<QTextLength>{time, nick, text};
}

void TestMessageRows::formatsTheTable()
{
    QFETCH(const QString, name);
    WindowSession session;
    session.probe.appendMessageToTab(name, u"x"_s);
    const QTextTableFormat format = tableOf(session.probe, name).format();
    QTEST(format.columnWidthConstraints(), "widths");
    QCOMPARE(tableOf(session.probe, name).columns(), format.columnWidthConstraints().size());
    QCOMPARE(format.border(), 0.0);
    QCOMPARE(format.cellPadding(), 2.0);
    QCOMPARE(format.cellSpacing(), 0.0);
    QCOMPARE(format.width(), QTextLength(QTextLength::PercentageLength, 100));
}

void TestMessageRows::keepsTheFirstRowEmpty()
{
    WindowSession session;
    for (const QString &name : {Server, u"#c"_s}) {
        session.probe.appendMessageToTab(name, u"first line"_s, u"alice"_s);
        const QTextTable &table = tableOf(session.probe, name);
        QCOMPARE(table.rows(), 2);
        for (int column = 0; column < table.columns(); ++column)
            QCOMPARE(table.cellAt(0, column).firstCursorPosition().block().text(), QString());
        QVERIFY(lastCell(session.probe, name, table.columns() - 1).text.contains(u"first line"_s));
    }
}

void TestMessageRows::leavesTheViewReadOnly()
{
    WindowSession session;
    for (const QString &line : {u"one"_s, u"two"_s}) {
        session.probe.appendMessageToTab(u"#c"_s, line);
        QVERIFY(session.probe.tabs().value(u"#c"_s).chatView->isReadOnly());
    }
}

void TestMessageRows::keepsEveryRow()
{
    WindowSession session;
    QStringList expected;
    for (int number = 0; number < 300; ++number) {
        const QString text = QString::number(number);
        session.probe.appendMessageToTab(u"#c"_s, text, u"alice"_s);
        expected.append(u"alice|"_s + text);
    }
    QCOMPARE(session.probe.lines(u"#c"_s), expected);
    QCOMPARE(tableOf(session.probe, u"#c"_s).document()->maximumBlockCount(), 0);
}

void TestMessageRows::writesTheTime()
{
    WindowSession session;
    for (const QString &name : {Server, u"#c"_s}) {
        const QDateTime before = QDateTime::currentDateTime();
        session.probe.appendMessageToTab(name, u"x"_s, u"alice"_s);
        const QDateTime after = QDateTime::currentDateTime();
        const Cell cell = lastCell(session.probe, name, 0);
        QVERIFY(cell.text == before.toString(u"[HH:mm:ss]"_s)
                || cell.text == after.toString(u"[HH:mm:ss]"_s));
        QCOMPARE(cell.alignment, Qt::AlignLeft);
        QCOMPARE(cell.format.foreground().color(), Grey);
        QVERIFY(!cell.cellFormat.hasProperty(QTextFormat::TableCellRightBorder));
    }
}

void TestMessageRows::formatsTheTimeAsPreferred()
{
    WindowSession session;
    session.probe.timestampFormat() = u"'at' yyyy"_s;
    session.probe.appendMessageToTab(u"#c"_s, u"x"_s);
    const QRegularExpression expected(uR"(^at \d{4}$)"_s);
    QVERIFY(expected.match(lastCell(session.probe, u"#c"_s, 0).text).hasMatch());
    session.probe.timestampFormat().clear();
    session.probe.appendMessageToTab(u"#c"_s, u"x"_s);
    QCOMPARE(session.probe.lines(u"#c"_s).size(), 2);
}

void TestMessageRows::keepsTheTimeOfWrittenRows()
{
    WindowSession session;
    session.probe.timestampFormat() = u"'old'"_s;
    session.probe.appendMessageToTab(u"#c"_s, u"x"_s);
    session.probe.timestampFormat() = u"'new'"_s;
    session.probe.appendMessageToTab(u"#c"_s, u"y"_s);
    const QTextTable &table = tableOf(session.probe, u"#c"_s);
    QCOMPARE(table.cellAt(1, 0).firstCursorPosition().block().text(), u"old"_s);
    QCOMPARE(table.cellAt(2, 0).firstCursorPosition().block().text(), u"new"_s);
}

// The rows of one read are written together when it ends.
void TestMessageRows::usesTheTimeWhenALineArrives()
{
    const auto format = u"yyyy-MM-dd HH:mm:ss.zzz"_s;
    WindowSession session;
    QVERIFY(session.registerAs());
    session.probe.timestampFormat() = format;
    const IRCConnection &connection = session.probe.connection();
    bool wasReading = false;
    QList<QDateTime> arrivals;
    // Blocks the read until the clock advances.
    connect(&connection, &IRCConnection::privmsgReceived, this,
            [&connection, &wasReading, &arrivals] {
                wasReading = connection.isReading();
                arrivals.append(QDateTime::currentDateTime());
                while (QDateTime::currentDateTime() == arrivals.constLast()) {
                }
            });
    // One write, so that both lines arrive in one read.
    session.server.sendBytes(":bob!u@h PRIVMSG #c :first\r\n:bob!u@h PRIVMSG #c :second\r\n"_ba);
    QVERIFY(session.settle());
    QVERIFY(wasReading);
    const QTextTable &table = tableOf(session.probe, u"#c"_s);
    const auto timeOf = [&table, &format](int row) {
        return QDateTime::fromString(table.cellAt(row, 0).firstCursorPosition().block().text(),
                                     format);
    };
    QCOMPARE(arrivals.size(), 2);
    QVERIFY(timeOf(1).isValid());
    QVERIFY(timeOf(1) <= arrivals.constFirst());
    QVERIFY(timeOf(2) > arrivals.constFirst());
    QVERIFY(timeOf(2) <= arrivals.constLast());
}

void TestMessageRows::writesTheNick_data()
{
    QTest::addColumn<QString>("nick");
    QTest::addColumn<QString>("shown");
    QTest::addColumn<QColor>("color");

    QTest::newRow("alice") << u"alice"_s << u"alice  "_s << QColor(u"#9e9e9e"_s);
    QTest::newRow("bob") << u"bob"_s << u"bob  "_s << QColor(u"#ad1457"_s);
    QTest::newRow("carol") << u"carol"_s << u"carol  "_s << QColor(u"#424242"_s);
    // The user's own nick has no colour of its own.
    QTest::newRow("own") << u"me"_s << u"me  "_s << QColor(u"#f9a825"_s);
    QTest::newRow("16 units") << u"abcdefghijklmnop"_s << u"abcdefghijklmnop  "_s
                              << QColor(u"#f9a825"_s);
    QTest::newRow("17 units") << u"abcdefghijklmnopq"_s << u"abcdefghijklmno\u2026  "_s
                              << QColor(u"#78909c"_s);
}

void TestMessageRows::writesTheNick()
{
    QFETCH(const QString, nick);
    WindowSession session;
    QVERIFY(session.registerAs(u"me"_s));
    session.probe.appendMessageToTab(u"#c"_s, u"x"_s, nick);
    const Cell cell = lastCell(session.probe, u"#c"_s, 1);
    QTEST(cell.text, "shown");
    QCOMPARE(cell.alignment, Qt::AlignRight);
    QCOMPARE(cell.format.fontWeight(), 700);
    QVERIFY(!cell.format.fontItalic());
    QTEST(cell.format.foreground().color(), "color");
    QCOMPARE(cell.cellFormat.rightBorder(), 1.0);
    QCOMPARE(cell.cellFormat.rightBorderStyle(), QTextFrameFormat::BorderStyle_Solid);
    QCOMPARE(cell.cellFormat.rightBorderBrush(), QBrush(Grey));
}

void TestMessageRows::writesNoNickInSystemLines()
{
    WindowSession session;
    session.probe.appendMessageToTab(u"#c"_s, u"x"_s);
    const Cell cell = lastCell(session.probe, u"#c"_s, 1);
    QCOMPARE(cell.text, u"  "_s);
    QCOMPARE(cell.format.fontWeight(), 700);
    QVERIFY(!cell.format.hasProperty(QTextFormat::ForegroundBrush));
    QCOMPARE(cell.cellFormat.rightBorder(), 1.0);
    QCOMPARE(cell.cellFormat.rightBorderBrush(), QBrush(Grey));
}

void TestMessageRows::writesTheText()
{
    WindowSession session;
    session.probe.appendMessageToTab(u"#c"_s, u"hello there"_s, u"alice"_s);
    const Cell cell = lastCell(session.probe, u"#c"_s, 2);
    QCOMPARE(cell.text, u" hello there"_s);
    QCOMPARE(cell.alignment, Qt::AlignLeft);
    QVERIFY(!cell.format.hasProperty(QTextFormat::ForegroundBrush));
    QVERIFY(!cell.cellFormat.hasProperty(QTextFormat::TableCellRightBorder));
}

void TestMessageRows::dimsStatusLines()
{
    WindowSession session;
    session.probe.appendMessageToTab(u"#c"_s, u"joined #c"_s, u"alice"_s, true);
    QCOMPARE(lastCell(session.probe, u"#c"_s, 2).text, u" joined #c"_s);
    QCOMPARE(lastCell(session.probe, u"#c"_s, 2).format.foreground().color(), Grey);
    QCOMPARE(lastCell(session.probe, u"#c"_s, 1).format.foreground().color(), QColor(u"#9e9e9e"_s));
}

void TestMessageRows::showsNoSenderOnServer()
{
    WindowSession session;
    session.probe.appendMessageToTab(Server, u"a line"_s, u"alice"_s);
    QCOMPARE(tableOf(session.probe, Server).columns(), 2);
    QCOMPARE(lastCell(session.probe, Server, 1).text, u"a line"_s);
    QCOMPARE(lastCell(session.probe, Server, 1).alignment, Qt::AlignLeft);
    QVERIFY(!session.probe.tabs().value(Server).chatView->toPlainText().contains(u"alice"_s));
}

// When the other user changes the nick, the tab is renamed and keeps its table.
void TestMessageRows::followsTheTabsName()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.receiveAll({u":bob!u@h PRIVMSG me :hi"_s, u":bob!u@h NICK Server"_s}));
    session.probe.appendMessageToTab(Server, u"a line"_s, u"alice"_s);
    QCOMPARE(tableOf(session.probe, Server).columns(), 3);
    const Cell text = lastCell(session.probe, Server, 1);
    QCOMPARE(text.text, u"a line"_s);
    QCOMPARE(text.alignment, Qt::AlignLeft);
    QVERIFY(!text.cellFormat.hasProperty(QTextFormat::TableCellRightBorder));
    QCOMPARE(lastCell(session.probe, Server, 2).text, QString());

    QVERIFY(session.receiveAll({u":Server!u@h NICK bob"_s, u":bob!u@h PRIVMSG me :back"_s}));
    QCOMPARE(lastCell(session.probe, u"bob"_s, 1).text, u"bob  "_s);
    QCOMPARE(lastCell(session.probe, u"bob"_s, 2).text, u" back"_s);
}

void TestMessageRows::keepsControlCodes_data()
{
    QTest::addColumn<QString>("text");

    QTest::newRow("bold") << u"a \x02"
                             "bold\x02 word"_s;
    QTest::newRow("colour") << u"\x03"
                               "04,01red\x03"_s;
    QTest::newRow("action") << u"\x01"
                               "ACTION waves\x01"_s;
    QTest::newRow("markup") << u"<b>not bold</b> &amp;"_s;
    QTest::newRow("emoji") << u"smile \U0001F60A"_s;
    QTest::newRow("placeholder") << u"%1 %2 %3"_s;
}

void TestMessageRows::keepsControlCodes()
{
    QFETCH(const QString, text);
    WindowSession session;
    QVERIFY(session.registerAs(u"me"_s));
    QVERIFY(session.receive(u":alice!u@h PRIVMSG #c :"_s + text));
    QCOMPARE(lastCell(session.probe, u"#c"_s, 2).text, QString(u' ' + text));
    QVERIFY(lastCell(session.probe, u"#c"_s, 2).format.properties().isEmpty());
}

void TestMessageRows::linksAddresses_data()
{
    QTest::addColumn<QString>("tab");
    QTest::addColumn<bool>("isStatus");
    QTest::addColumn<int>("column");
    QTest::addColumn<QString>("shown");

    QTest::newRow("channel") << u"#c"_s << false << 2 << u" see https://example.org/a now"_s;
    QTest::newRow("status line") << u"#c"_s << true << 2 << u" see https://example.org/a now"_s;
    QTest::newRow("server") << Server << false << 1 << u"see https://example.org/a now"_s;
}

void TestMessageRows::linksAddresses()
{
    QFETCH(const QString, tab);
    QFETCH(const bool, isStatus);
    QFETCH(const int, column);
    WindowSession session;
    session.probe.appendMessageToTab(tab, u"see https://example.org/a now"_s, u"alice"_s, isStatus);
    QTEST(lastCell(session.probe, tab, column).text, "shown");
    const QTextTable &table = tableOf(session.probe, tab);
    const QTextBlock block = table.cellAt(1, column).firstCursorPosition().block();
    QMap<QString, QString> targets; // By link text.
    for (auto run = block.begin(); !run.atEnd(); ++run) {
        const QTextFragment fragment = run.fragment();
        if (fragment.charFormat().isAnchor())
            targets.insert(fragment.text(), fragment.charFormat().anchorHref());
        else
            QCOMPARE(fragment.charFormat().foreground().color() == Grey, isStatus);
    }
    QCOMPARE(targets,
             (QMap<QString, QString>{{u"https://example.org/a"_s, u"https://example.org/a"_s}}));
}

void TestMessageRows::marksOwnLinesWhileAway_data()
{
    QTest::addColumn<bool>("isAway");
    QTest::addColumn<QString>("pendingNick");
    QTest::addColumn<QString>("sender");
    QTest::addColumn<bool>("isMarked");

    QTest::newRow("own") << true << QString() << u"me"_s << true;
    QTest::newRow("own in another case") << true << QString() << u"ME"_s << true;
    QTest::newRow("other") << true << QString() << u"bob"_s << false;
    QTest::newRow("requested nick") << true << u"bob"_s << u"bob"_s << true;
    QTest::newRow("requested nick in another case") << true << u"bob"_s << u"Bob"_s << true;
    QTest::newRow("own with another requested nick") << true << u"bob"_s << u"me"_s << true;
    QTest::newRow("system") << true << QString() << QString() << false;
    QTest::newRow("own while not away") << false << QString() << u"me"_s << false;
    QTest::newRow("requested nick while not away") << false << u"bob"_s << u"bob"_s << false;
}

void TestMessageRows::marksOwnLinesWhileAway()
{
    QFETCH(const bool, isAway);
    QFETCH(const QString, pendingNick);
    QFETCH(const QString, sender);
    QFETCH(const bool, isMarked);
    WindowSession session;
    QVERIFY(session.registerAs(u"me"_s));
    session.probe.isAway() = isAway;
    session.probe.awayMessage() = u"at lunch"_s;
    session.probe.pendingNick() = pendingNick;
    session.probe.appendMessageToTab(u"#c"_s, u"hello"_s, sender);

    const Cell nick = lastCell(session.probe, u"#c"_s, 1);
    const Cell text = lastCell(session.probe, u"#c"_s, 2);
    QCOMPARE(nick.format.fontItalic(), isMarked);
    QCOMPARE(nick.format.foreground().color() == QColor(u"#AAAAAA"_s), isMarked);
    QCOMPARE(nick.format.fontWeight(), 700);
    QCOMPARE(text.text, isMarked ? u"[Away: at lunch] hello"_s : u" hello"_s);
    QCOMPARE(text.format.foreground().color() == Grey, isMarked);
}

void TestMessageRows::marksOwnStatusLinesWithoutAPrefix()
{
    WindowSession session;
    QVERIFY(session.registerAs(u"me"_s));
    session.probe.isAway() = true;
    session.probe.awayMessage() = u"at lunch"_s;
    session.probe.appendMessageToTab(u"#c"_s, u"is away (at lunch)"_s, u"me"_s, true);
    const Cell nick = lastCell(session.probe, u"#c"_s, 1);
    QVERIFY(nick.format.fontItalic());
    QCOMPARE(nick.format.foreground().color(), QColor(u"#AAAAAA"_s));
    QCOMPARE(lastCell(session.probe, u"#c"_s, 2).text, u" is away (at lunch)"_s);
    QCOMPARE(lastCell(session.probe, u"#c"_s, 2).format.foreground().color(), Grey);
}

void TestMessageRows::marksOwnLinesOnServerWhileAway()
{
    WindowSession session;
    QVERIFY(session.registerAs(u"me"_s));
    session.probe.isAway() = true;
    session.probe.awayMessage() = u"at lunch"_s;
    session.probe.appendMessageToTab(Server, u"hello"_s, u"me"_s);
    QCOMPARE(lastCell(session.probe, Server, 1).text, u"[Away: at lunch] hello"_s);
    QCOMPARE(lastCell(session.probe, Server, 1).format.foreground().color(), Grey);
}

void TestMessageRows::treatsAnEmptySenderAsOwnWithoutANick()
{
    WindowSession session;
    QCOMPARE(session.probe.connection().currentNick(), QString());
    session.probe.isAway() = true;
    session.probe.awayMessage() = u"gone"_s;
    session.probe.appendMessageToTab(u"#c"_s, u"hello"_s);
    QCOMPARE(lastCell(session.probe, u"#c"_s, 2).text, u"[Away: gone] hello"_s);
    QCOMPARE(lastCell(session.probe, u"#c"_s, 2).format.foreground().color(), Grey);
    // Without a nick there is nothing to colour.
    const Cell nick = lastCell(session.probe, u"#c"_s, 1);
    QCOMPARE(nick.text, u"  "_s);
    QVERIFY(!nick.format.fontItalic());
    QVERIFY(!nick.format.hasProperty(QTextFormat::ForegroundBrush));
}

void TestMessageRows::treatsAnEmptySenderAsSystemWithANick()
{
    WindowSession session;
    QVERIFY(session.registerAs(u"me"_s));
    session.probe.isAway() = true;
    session.probe.appendMessageToTab(Server, u"hello"_s);
    QCOMPARE(lastCell(session.probe, Server, 1).text, u"hello"_s);
    QVERIFY(!lastCell(session.probe, Server, 1).format.hasProperty(QTextFormat::ForegroundBrush));
}

void TestMessageRows::keepsPlaceholdersInAwayTexts()
{
    WindowSession session;
    QVERIFY(session.registerAs(u"me"_s));
    session.probe.isAway() = true;
    session.probe.awayMessage() = u"%2 %1"_s;
    session.probe.appendMessageToTab(u"#c"_s, u"%1"_s, u"me"_s);
    QCOMPARE(lastCell(session.probe, u"#c"_s, 2).text, u"[Away: %2 %1] %1"_s);
}

void TestMessageRows::usesTheAwayStateWhenALineArrives()
{
    // The state changes between two lines of one read.
    WindowSession session;
    QVERIFY(session.registerAs(u"me"_s));
    session.probe.isAway() = true;
    session.probe.awayMessage() = u"gone"_s;
    connect(&session.probe.connection(), &IRCConnection::rawMessageReceived, &session.window,
            [&session](const QString &line) {
                if (line.endsWith(u"two"_s))
                    session.probe.isAway() = false;
            });
    session.server.sendBytes(":me!u@h PRIVMSG #c :one\r\n:me!u@h PRIVMSG #c :two\r\n"_ba);
    QTRY_COMPARE_WITH_TIMEOUT(session.probe.lines(u"#c"_s),
                              (QStringList{u"me|[Away: gone] one"_s, u"me|two"_s}), WaitTimeout);
}

QTEST_MAIN(TestMessageRows)
#include "tst_MessageRows.moc"
