#include "ChatDocument.h"
#include "ChatTable.h"

#include <QTest>
#include <QTextBlock>
#include <QTextBrowser>
#include <QTextTable>

using namespace Qt::StringLiterals;

namespace {

const QColor Grey(136, 136, 136, 255);

QTextBlock cellBlock(const QTextTable &table, int row, int column)
{
    return table.cellAt(row, column).firstCursorPosition().block();
}

// Returns the format of a cell's first text run.
QTextCharFormat textFormat(const QTextTable &table, int row, int column)
{
    return cellBlock(table, row, column).begin().fragment().charFormat();
}

QMap<int, QVariant> propertiesOf(const QTextFormat &format)
{
    QMap<int, QVariant> properties = format.properties();
    properties.remove(QTextFormat::ObjectIndex);
    return properties;
}

// Describes all blocks and text runs of a document with their formats.
QString describe(const QTextDocument &document)
{
    QString description;
    QDebug out(&description);
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        out << block.position() << block.blockFormat().properties()
            << propertiesOf(block.charFormat());
        for (auto run = block.begin(); !run.atEnd(); ++run)
            out << run.fragment().text() << propertiesOf(run.fragment().charFormat());
        out << Qt::endl;
    }
    return description;
}

const QList<ChatRow> SampleRows{
        {.time = u"[10:00]"_s, .nick = u"alice"_s, .text = u" hello there"_s},
        {.time = u"[10:01]"_s, .nick = {}, .text = u" a line of the system"_s},
        {.time = u"[10:02]"_s, .nick = u"bob"_s, .text = u" joined #chan"_s, .dimmed = true},
        {.time = u"[10:03]"_s,
         .nick = u"me"_s,
         .text = u"[Away: x] y"_s,
         .dimmed = true,
         .ownAway = true},
        {.time = {}, .nick = u"carol"_s, .text = {}},
};

} // namespace

class TestChatTable final : public QObject
{
    Q_OBJECT

private slots:
    void createsATableWithThreeColumns();
    void createsATableWithTwoColumns();
    void leavesTheViewReadOnly();
    void keepsTheFirstRowEmpty();
    void fillsTheTimeCell();
    void fillsTheNickCell();
    void setsTheRightBorderOfEachNickCell();
    void setsNoNickColorInSystemLines();
    void formatsTheNickOfTheAwayUser();
    void fillsTheTextCell();
    void dimsTheText();
    void showsNoNickWithoutANickCell();
    void writesNickAndTextInOneCellOfTwoColumns();
    void elidesLongNicks_data();
    void elidesLongNicks();
    void computesNickColors_data();
    void computesNickColors();
    void colorsElidedNicksByTheirElidedForm();
    void keepsOneBlockPerCell_data();
    void keepsOneBlockPerCell();
    void findsLinksBeforeReplacingCharacters_data();
    void findsLinksBeforeReplacingCharacters();
    void leavesOtherCharactersAlone();
    void appendsManyRowsLikeOneByOne();
    void keepsTheOrderOfThousandsOfRows();
    void appendsNothing();
    void writesTheSameAsCellByCell();

    void selectsCells_data();
    void selectsCells();
    void selectsWithinACell_data();
    void selectsWithinACell();
    void selectsTextInTheNickColumn();
    void selectsAll_data();
    void selectsAll();
    void selectsNothing();

private:
    QTextBrowser view;
    QTextTable *table = nullptr;

private slots:
    void init();
    void cleanup();
};

void TestChatTable::init()
{
    table = ChatTable::create(view, 3);
    QVERIFY(table != nullptr);
}

void TestChatTable::cleanup()
{
    view.setDocument(new QTextDocument(&view));
}

void TestChatTable::createsATableWithThreeColumns()
{
    QCOMPARE(table->rows(), 1);
    QCOMPARE(table->columns(), 3);
    const QTextTableFormat format = table->format();
    QCOMPARE(format.border(), 0.0);
    QCOMPARE(format.cellPadding(), 2.0);
    QCOMPARE(format.cellSpacing(), 0.0);
    QCOMPARE(format.width(), QTextLength(QTextLength::PercentageLength, 100));
    QCOMPARE(format.headerRowCount(), 0);
    QVERIFY(!format.hasProperty(QTextFormat::BackgroundBrush));
    QCOMPARE(format.columnWidthConstraints(),
             (QList<QTextLength>{QTextLength(QTextLength::FixedLength, 85),
                                 QTextLength(QTextLength::FixedLength, 120),
                                 QTextLength(QTextLength::VariableLength, 0)}));
}

void TestChatTable::createsATableWithTwoColumns()
{
    QTextBrowser other;
    const QTextTable *narrow = ChatTable::create(other, 2);
    QCOMPARE(narrow->columns(), 2);
    QCOMPARE(narrow->format().columnWidthConstraints(),
             (QList<QTextLength>{QTextLength(QTextLength::FixedLength, 85),
                                 QTextLength(QTextLength::VariableLength, 0)}));
}

void TestChatTable::leavesTheViewReadOnly()
{
    QVERIFY(view.isReadOnly());
    ChatTable::appendRows(*table, SampleRows);
    QVERIFY(view.isReadOnly());
}

void TestChatTable::keepsTheFirstRowEmpty()
{
    ChatTable::appendRows(*table, {SampleRows.first()});
    QCOMPARE(table->rows(), 2);
    for (int column = 0; column < 3; ++column)
        QCOMPARE(ChatDocument::cellText(*table, 0, column), QString());
    QCOMPARE(ChatDocument::cellText(*table, 1, 0), u"[10:00]"_s);
    QVERIFY(!table->cellAt(0, 1).format().hasProperty(QTextFormat::TableCellRightBorder));
}

void TestChatTable::fillsTheTimeCell()
{
    ChatTable::appendRows(*table, {{.time = u"10:20:30 "_s, .nick = u"bob"_s, .text = u"x"_s}});
    QCOMPARE(ChatDocument::cellText(*table, 1, 0), u"10:20:30 "_s);
    QCOMPARE(cellBlock(*table, 1, 0).blockFormat().alignment(), Qt::AlignLeft);
    QCOMPARE(textFormat(*table, 1, 0).foreground().color(), Grey);
    QVERIFY(!table->cellAt(1, 0).format().hasProperty(QTextFormat::TableCellRightBorder));
}

void TestChatTable::fillsTheNickCell()
{
    ChatTable::appendRows(*table, {{.time = u"t"_s, .nick = u"bob"_s, .text = u"x"_s}});
    QCOMPARE(ChatDocument::cellText(*table, 1, 1), u"bob  "_s);
    QCOMPARE(cellBlock(*table, 1, 1).blockFormat().alignment(), Qt::AlignRight);
    const QTextCharFormat format = textFormat(*table, 1, 1);
    QCOMPARE(format.fontWeight(), 700);
    QCOMPARE(format.foreground().color(), QColor(0xad, 0x14, 0x57));
    QVERIFY(!format.fontItalic());
}

void TestChatTable::setsTheRightBorderOfEachNickCell()
{
    ChatTable::appendRows(*table, SampleRows);
    for (int row = 1; row < table->rows(); ++row) {
        const QTextTableCellFormat format = table->cellAt(row, 1).format().toTableCellFormat();
        QCOMPARE(format.rightBorder(), 1.0);
        QCOMPARE(format.rightBorderStyle(), QTextFrameFormat::BorderStyle_Solid);
        QCOMPARE(format.rightBorderBrush(), QBrush(Grey));
        for (const int column : {0, 2}) {
            QVERIFY(!table->cellAt(row, column)
                             .format()
                             .hasProperty(QTextFormat::TableCellRightBorder));
        }
    }
}

void TestChatTable::setsNoNickColorInSystemLines()
{
    ChatTable::appendRows(*table, {{.time = u"t"_s, .nick = {}, .text = u"x"_s, .ownAway = true}});
    QCOMPARE(ChatDocument::cellText(*table, 1, 1), u"  "_s);
    const QTextCharFormat format = textFormat(*table, 1, 1);
    QCOMPARE(format.fontWeight(), 700);
    QVERIFY(!format.hasProperty(QTextFormat::ForegroundBrush));
    QVERIFY(!format.fontItalic());
}

void TestChatTable::formatsTheNickOfTheAwayUser()
{
    ChatTable::appendRows(*table,
                          {{.time = u"t"_s, .nick = u"bob"_s, .text = u"x"_s, .ownAway = true}});
    const QTextCharFormat format = textFormat(*table, 1, 1);
    QCOMPARE(format.foreground().color(), QColor(u"#AAAAAA"_s));
    QVERIFY(format.fontItalic());
    QCOMPARE(format.fontWeight(), 700);
}

void TestChatTable::fillsTheTextCell()
{
    ChatTable::appendRows(*table,
                          {{.time = u"t"_s, .nick = u"bob"_s, .text = u" some \x02text"_s}});
    QCOMPARE(ChatDocument::cellText(*table, 1, 2), u" some \x02text"_s);
    QCOMPARE(cellBlock(*table, 1, 2).blockFormat().alignment(), Qt::AlignLeft);
    QVERIFY(propertiesOf(textFormat(*table, 1, 2)).isEmpty());
}

void TestChatTable::dimsTheText()
{
    ChatTable::appendRows(
            *table,
            {{.time = u"t"_s, .nick = u"bob"_s, .text = u" joined #chan"_s, .dimmed = true}});
    QCOMPARE(textFormat(*table, 1, 2).foreground().color(), Grey);
    QCOMPARE(textFormat(*table, 1, 1).foreground().color(), QColor(0xad, 0x14, 0x57));
}

void TestChatTable::showsNoNickWithoutANickCell()
{
    QTextBrowser other;
    QTextTable *narrow = ChatTable::create(other, 2);
    const ChatRow row{.time = u"t"_s, .nick = u"bob"_s, .text = u"x"_s, .hasNickCell = false};
    for (QTextTable *conversation : {narrow, table}) {
        ChatTable::appendRows(*conversation, {row, row});
        for (const int index : {1, 2}) {
            QCOMPARE(ChatDocument::cellText(*conversation, index, 0), u"t"_s);
            QCOMPARE(ChatDocument::cellText(*conversation, index, 1), u"x"_s);
            QCOMPARE(cellBlock(*conversation, index, 1).blockFormat().alignment(), Qt::AlignLeft);
            QVERIFY(!conversation->cellAt(index, 1).format().hasProperty(
                    QTextFormat::TableCellRightBorder));
        }
        QVERIFY(!conversation->document()->toPlainText().contains(u"bob"_s));
    }
    QCOMPARE(ChatDocument::cellText(*table, 1, 2), QString());
    QCOMPARE(ChatDocument::cellText(*table, 2, 2), QString());
}

void TestChatTable::writesNickAndTextInOneCellOfTwoColumns()
{
    QTextBrowser other;
    QTextTable *narrow = ChatTable::create(other, 2);
    ChatTable::appendRows(*narrow, {{.time = u"t"_s, .nick = u"bob"_s, .text = u" x"_s}});
    QCOMPARE(ChatDocument::cellText(*narrow, 1, 0), u"t"_s);
    QCOMPARE(ChatDocument::cellText(*narrow, 1, 1), u"bob   x"_s);
    QVERIFY(narrow->cellAt(1, 1).format().hasProperty(QTextFormat::TableCellRightBorder));
}

void TestChatTable::elidesLongNicks_data()
{
    QTest::addColumn<QString>("nick");
    QTest::addColumn<QString>("shown");

    QTest::newRow("empty") << u""_s << u""_s;
    QTest::newRow("16 units") << u"abcdefghijklmnop"_s << u"abcdefghijklmnop"_s;
    QTest::newRow("17 units") << u"abcdefghijklmnopq"_s << u"abcdefghijklmno\u2026"_s;
    QTest::newRow("30 units") << u"abcdefghijklmnopqrstuvwxyz1234"_s << u"abcdefghijklmno\u2026"_s;
}

void TestChatTable::elidesLongNicks()
{
    QFETCH(const QString, nick);
    QFETCH(const QString, shown);
    QCOMPARE(ChatTable::elidedNick(nick), shown);
    ChatTable::appendRows(*table, {{.time = u"t"_s, .nick = nick, .text = u"x"_s}});
    QCOMPARE(ChatDocument::cellText(*table, 1, 1), QString(shown + u"  "_s));
}

void TestChatTable::computesNickColors_data()
{
    QTest::addColumn<QString>("nick");
    QTest::addColumn<QColor>("color");

    // The hash of a one-character nick is that character, so these sixteen cover the palette.
    QTest::newRow("0") << u"0"_s << QColor(u"#9e9e9e"_s);
    QTest::newRow("1") << u"1"_s << QColor(u"#424242"_s);
    QTest::newRow("2") << u"2"_s << QColor(u"#1565c0"_s);
    QTest::newRow("3") << u"3"_s << QColor(u"#2e7d32"_s);
    QTest::newRow("4") << u"4"_s << QColor(u"#c62828"_s);
    QTest::newRow("5") << u"5"_s << QColor(u"#ad1457"_s);
    QTest::newRow("6") << u"6"_s << QColor(u"#6a1b9a"_s);
    QTest::newRow("7") << u"7"_s << QColor(u"#e65100"_s);
    QTest::newRow("8") << u"8"_s << QColor(u"#f9a825"_s);
    QTest::newRow("9") << u"9"_s << QColor(u"#558b2f"_s);
    QTest::newRow("z") << u"z"_s << QColor(u"#00897b"_s);
    QTest::newRow("opening brace") << u"{"_s << QColor(u"#00b0ff"_s);
    QTest::newRow("bar") << u"|"_s << QColor(u"#2979ff"_s);
    QTest::newRow("closing brace") << u"}"_s << QColor(u"#d500f9"_s);
    QTest::newRow("tilde") << u"~"_s << QColor(u"#78909c"_s);
    QTest::newRow("underscore") << u"_"_s << QColor(u"#bcaaa4"_s);
    QTest::newRow("alice") << u"alice"_s << QColor(u"#9e9e9e"_s);
    QTest::newRow("bob") << u"bob"_s << QColor(u"#ad1457"_s);
    QTest::newRow("Bob") << u"Bob"_s << QColor(u"#ad1457"_s);
    QTest::newRow("carol") << u"carol"_s << QColor(u"#424242"_s);
    QTest::newRow("empty") << u""_s << QColor(102, 102, 102, 255);
}

void TestChatTable::computesNickColors()
{
    QFETCH(const QString, nick);
    QTEST(ChatTable::nickColor(nick), "color");
}

void TestChatTable::colorsElidedNicksByTheirElidedForm()
{
    ChatTable::appendRows(*table,
                          {{.time = u"t"_s, .nick = u"abcdefghijklmnopqr"_s, .text = u"x"_s}});
    ChatTable::appendRows(*table,
                          {{.time = u"t"_s, .nick = u"abcdefghijklmno123"_s, .text = u"x"_s}});
    QCOMPARE(textFormat(*table, 1, 1).foreground().color(),
             ChatTable::nickColor(u"abcdefghijklmno\u2026"_s));
    QCOMPARE(textFormat(*table, 1, 1), textFormat(*table, 2, 1));
}

void TestChatTable::keepsOneBlockPerCell_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("shown");

    QTest::newRow("carriage return") << u"a\rb"_s << u"a\u2028b"_s;
    QTest::newRow("line feed") << u"a\nb"_s << u"a\u2028b"_s;
    QTest::newRow("CR LF") << u"a\r\nb\n\rc"_s << u"a\u2028b\u2028\u2028c"_s;
    QTest::newRow("paragraph separator") << u"a\u2029b"_s << u"a\u2028b"_s;
    QTest::newRow("beginning of frame") << u"a\xfdd0"
                                           u"b"_s
                                        << u"a\ufffdb"_s;
    QTest::newRow("end of frame") << u"a\xfdd1"
                                     u"b"_s
                                  << u"a\ufffdb"_s;
    QTest::newRow("several") << u"\r\ra\xfdd0\n"_s << u"\u2028\u2028a\ufffd\u2028"_s;
}

void TestChatTable::keepsOneBlockPerCell()
{
    QFETCH(const QString, text);
    QFETCH(const QString, shown);
    const int before = view.document()->blockCount();
    ChatTable::appendRows(*table, {{.time = text, .nick = text, .text = text}});
    QCOMPARE(view.document()->blockCount(), before + 3);
    QCOMPARE(table->rows(), 2);
    QCOMPARE(cellBlock(*table, 1, 0).text(), shown);
    QCOMPARE(cellBlock(*table, 1, 1).text(), QString(shown + u"  "_s));
    QCOMPARE(cellBlock(*table, 1, 2).text(), shown);
}

void TestChatTable::findsLinksBeforeReplacingCharacters_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("shown");
    QTest::addColumn<QStringList>("links"); // Text and target of each.

    QTest::newRow("nothing replaced") << u"see https://a.b/c"_s << u"see https://a.b/c"_s
                                      << QStringList{u"https://a.b/c"_s, u"https://a.b/c"_s};
    QTest::newRow("ended by a line feed")
            << u"https://a.b\nme@b.cc"_s << u"https://a.b\u2028me@b.cc"_s
            << QStringList{u"https://a.b"_s, u"https://a.b"_s, u"me@b.cc"_s, u"mailto:me@b.cc"_s};
    QTest::newRow("ended by a carriage return")
            << u"\rhttps://a.b\rx"_s << u"\u2028https://a.b\u2028x"_s
            << QStringList{u"https://a.b"_s, u"https://a.b"_s};
    QTest::newRow("frame mark after a link")
            << u"https://a.b \xfdd0 x"_s << u"https://a.b \ufffd x"_s
            << QStringList{u"https://a.b"_s, u"https://a.b"_s};
}

void TestChatTable::findsLinksBeforeReplacingCharacters()
{
    QFETCH(const QString, text);
    QFETCH(const QString, shown);
    ChatTable::appendRows(*table, {{.time = u"t"_s, .nick = u"bob"_s, .text = text}});
    const QTextBlock block = cellBlock(*table, 1, 2);
    QCOMPARE(block.text(), shown);
    QStringList links;
    for (auto run = block.begin(); !run.atEnd(); ++run) {
        const QTextCharFormat format = run.fragment().charFormat();
        if (format.isAnchor())
            links << run.fragment().text() << format.anchorHref();
    }
    QTEST(links, "links");
}

void TestChatTable::leavesOtherCharactersAlone()
{
    const QString text = u"a\tb\u00a0c\v\f\x1b\u0085\u2028\ufeff\xd83d\xde00"_s;
    ChatTable::appendRows(*table, {{.time = u"t"_s, .nick = u"bob"_s, .text = text}});
    QCOMPARE(cellBlock(*table, 1, 2).text(), text);
}

void TestChatTable::appendsManyRowsLikeOneByOne()
{
    QTextBrowser other;
    QTextTable *single = ChatTable::create(other, 3);
    for (const ChatRow &row : SampleRows)
        ChatTable::appendRows(*single, {row});
    ChatTable::appendRows(*table, SampleRows);
    QCOMPARE(table->rows(), SampleRows.size() + 1);
    QCOMPARE(describe(*view.document()), describe(*other.document()));
    QCOMPARE(view.toPlainText(), other.toPlainText());
    QCOMPARE(view.toHtml(), other.toHtml());
}

void TestChatTable::keepsTheOrderOfThousandsOfRows()
{
    constexpr int Count = 10001;
    QList<ChatRow> rows;
    for (int i = 1; i <= Count; ++i)
        rows.append({.time = u"[10:00]"_s, .nick = u"bob"_s, .text = QString::number(i)});
    ChatTable::appendRows(*table, rows);
    QCOMPARE(table->rows(), Count + 1);
    for (int i = 1; i <= Count; ++i)
        QCOMPARE(ChatDocument::cellText(*table, i, 2), QString::number(i));
}

void TestChatTable::appendsNothing()
{
    ChatTable::appendRows(*table, {});
    QCOMPARE(table->rows(), 1);
}

void TestChatTable::writesTheSameAsCellByCell()
{
    QTextBrowser other;
    QTextTable *plain = ChatTable::create(other, 3);
    plain->appendRows(1);
    QTextTableCellFormat rule;
    rule.setRightBorder(1.0);
    rule.setRightBorderStyle(QTextFrameFormat::BorderStyle_Solid);
    rule.setRightBorderBrush(Grey);
    plain->cellAt(1, 1).setFormat(rule);
    QTextBlockFormat left;
    left.setAlignment(Qt::AlignLeft);
    QTextBlockFormat right;
    right.setAlignment(Qt::AlignRight);
    QTextCharFormat grey;
    grey.setForeground(Grey);
    QTextCharFormat bold;
    bold.setFontWeight(700);
    bold.setForeground(QColor(0xad, 0x14, 0x57));
    const auto fill = [plain](int column, const QTextBlockFormat &block,
                              const QTextCharFormat &format, const QString &text) {
        QTextCursor cursor = plain->cellAt(1, column).firstCursorPosition();
        cursor.setBlockFormat(block);
        cursor.insertText(text, format);
    };
    fill(0, left, grey, u"[10:00]"_s);
    fill(1, right, bold, u"bob  "_s);
    fill(2, left, {}, u" hello"_s);

    ChatTable::appendRows(*table, {{.time = u"[10:00]"_s, .nick = u"bob"_s, .text = u" hello"_s}});
    QCOMPARE(describe(*view.document()), describe(*other.document()));
    QCOMPARE(view.toHtml(), other.toHtml());
}

void TestChatTable::selectsCells_data()
{
    QTest::addColumn<QPoint>("from");
    QTest::addColumn<QPoint>("to");
    QTest::addColumn<QString>("expected");

    // Column and row.
    QTest::newRow("rows") << QPoint(0, 1) << QPoint(2, 4)
                          << u"[10:00] alice hello there\n"
                             "[10:01] a line of the system\n"
                             "[10:02] bob joined #chan\n"
                             "[10:03] me [Away: x] y"_s;
    QTest::newRow("rows, upwards") << QPoint(2, 2) << QPoint(0, 1)
                                   << u"[10:00] alice hello there\n"
                                      "[10:01] a line of the system"_s;
    QTest::newRow("texts") << QPoint(2, 1) << QPoint(2, 2)
                           << u"hello there\na line of the system"_s;
    QTest::newRow("nicks and texts")
            << QPoint(1, 2) << QPoint(2, 3) << u"a line of the system\nbob joined #chan"_s;
    QTest::newRow("nicks") << QPoint(1, 1) << QPoint(1, 3) << u"alice\n\nbob"_s;
    QTest::newRow("empty cells at both ends")
            << QPoint(0, 3) << QPoint(0, 5) << u"[10:02]\n[10:03]"_s;
    QTest::newRow("from the empty first row") << QPoint(0, 0) << QPoint(1, 1) << u"[10:00] alice"_s;
    QTest::newRow("row without time and text") << QPoint(0, 5) << QPoint(2, 5) << u"carol"_s;
}

void TestChatTable::selectsCells()
{
    QFETCH(const QPoint, from);
    QFETCH(const QPoint, to);
    ChatTable::appendRows(*table, SampleRows);
    QTextCursor cursor = table->cellAt(from.y(), from.x()).firstCursorPosition();
    cursor.setPosition(table->cellAt(to.y(), to.x()).lastPosition(), QTextCursor::KeepAnchor);
    QTEST(ChatTable::selectedText(cursor), "expected");
}

void TestChatTable::selectsWithinACell_data()
{
    QTest::addColumn<int>("column");
    QTest::addColumn<int>("from");
    QTest::addColumn<int>("to");
    QTest::addColumn<QString>("expected");

    // The text is " a  b", a line separator and "c ".
    QTest::newRow("text") << 2 << 0 << 8 << u"a  b c "_s;
    QTest::newRow("part of the text") << 2 << 2 << 4 << u"  "_s;
    QTest::newRow("part of the text, backwards") << 2 << 7 << 4 << u"b c"_s;
    QTest::newRow("space before the text") << 2 << 0 << 1 << QString();
    QTest::newRow("nick") << 1 << 0 << 5 << u"bob"_s;
    QTest::newRow("part of the nick") << 1 << 1 << 3 << u"ob"_s;
    QTest::newRow("spaces after the nick") << 1 << 4 << 5 << QString();
    QTest::newRow("time") << 0 << 0 << 7 << u"[10:00]"_s;
}

void TestChatTable::selectsWithinACell()
{
    QFETCH(const int, column);
    QFETCH(const int, from);
    QFETCH(const int, to);
    ChatTable::appendRows(*table,
                          {{.time = u"[10:00]"_s, .nick = u"bob"_s, .text = u" a  b\nc "_s}});
    QTextCursor cursor = table->cellAt(1, column).firstCursorPosition();
    const int start = cursor.position();
    cursor.setPosition(start + from);
    cursor.setPosition(start + to, QTextCursor::KeepAnchor);
    QTEST(ChatTable::selectedText(cursor), "expected");
}

// Like a row of a tab that was renamed to "Server".
void TestChatTable::selectsTextInTheNickColumn()
{
    ChatTable::appendRows(*table, SampleRows);
    QTextCursor cursor = table->cellAt(1, 1).firstCursorPosition();
    cursor.movePosition(QTextCursor::EndOfBlock, QTextCursor::KeepAnchor);
    cursor.insertText(u"a text"_s);
    cursor.movePosition(QTextCursor::StartOfBlock, QTextCursor::KeepAnchor);
    QCOMPARE(ChatTable::selectedText(cursor), u"a text"_s);
}

void TestChatTable::selectsAll_data()
{
    QTest::addColumn<int>("columns");
    QTest::addColumn<QString>("expected");

    QTest::newRow("with nicks") << 3
                                << u"[10:00] alice hello there\n"
                                   "[10:01] a line of the system\n"
                                   "[10:02] bob joined #chan\n"
                                   "[10:03] me [Away: x] y\n"
                                   "carol"_s;
    // No space is added before these texts, so a leading space is the sender's.
    QTest::newRow("without nicks") << 2
                                   << u"[10:00]  hello there\n"
                                      "[10:01]  a line of the system\n"
                                      "[10:02]  joined #chan\n"
                                      "[10:03] [Away: x] y"_s;
}

void TestChatTable::selectsAll()
{
    QFETCH(const int, columns);
    QTextBrowser other;
    QList<ChatRow> rows = SampleRows;
    for (ChatRow &row : rows)
        row.hasNickCell = columns == 3;
    ChatTable::appendRows(*ChatTable::create(other, columns), rows);
    other.selectAll();
    QTEST(ChatTable::selectedText(other.textCursor()), "expected");
}

void TestChatTable::selectsNothing()
{
    QTextBrowser empty;
    empty.selectAll();
    QCOMPARE(ChatTable::selectedText(empty.textCursor()), QString());
    view.selectAll();
    QCOMPARE(ChatTable::selectedText(view.textCursor()), QString());
    ChatTable::appendRows(*table, SampleRows);
    view.moveCursor(QTextCursor::End);
    QCOMPARE(ChatTable::selectedText(view.textCursor()), QString());
    QCOMPARE(ChatTable::selectedText(table->cellAt(1, 2).firstCursorPosition()), QString());
}

QTEST_MAIN(TestChatTable)
#include "tst_ChatTable.moc"
