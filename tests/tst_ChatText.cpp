#include "ChatCorpus.h"
#include "ChatLayout.h"
#include "ChatTable.h"
#include "ChatText.h"
#include "ChatView.h"

#include <QTest>
#include <QTextBlock>
#include <QTextTable>

using namespace Qt::StringLiterals;

namespace {

/// A conversation and its text.
struct Conversation
{
    explicit Conversation(int columns = 3)
        : table(ChatTable::create(view, columns))
    {
    }

    [[nodiscard]] QString allText() const { return text.text({.start = 0, .end = text.length()}); }

    ChatView view;
    QTextTable *table;
    const ChatText text{*qobject_cast<ChatLayout *>(view.document()->documentLayout())};
};

QStringList linkTexts(const ChatText &text)
{
    QStringList texts;
    for (const ChatText::Range &link : text.links())
        texts.append(text.text(link));
    return texts;
}

} // namespace

class TestChatText final : public QObject
{
    Q_OBJECT

private slots:
    void readsARowAsOneLine_data();
    void readsARowAsOneLine();
    void readsRowsAddedLater();
    void readsPartsAcrossLines();
    void hasNoLineBeforeTheFirstRow();
    void mapsEachOffsetToAPosition();
    void mapsPositionsOutsideTheText();
    void findsLinks();
};

void TestChatText::readsARowAsOneLine_data()
{
    QTest::addColumn<int>("columns");
    QTest::addColumn<ChatRow>("row");
    QTest::addColumn<QString>("line");

    QTest::newRow("message") << 3 << ChatRow{u"[12:34]"_s, u"alice"_s, u" first message"_s}
                             << u"[12:34] alice: first message\n"_s;
    QTest::newRow("without a nick")
            << 3 << ChatRow{u"[12:34]"_s, {}, u" news"_s} << u"[12:34] news\n"_s;
    QTest::newRow("without a time")
            << 3 << ChatRow{{}, u"alice"_s, u" hello"_s} << u"alice: hello\n"_s;
    QTest::newRow("own line while away") << 3 << ChatRow{u"1"_s, u"me"_s, u"[Away: lunch] hm"_s}
                                         << u"1 me: [Away: lunch] hm\n"_s;
    const ChatRow serverRow{
            .time = u"[12:34]"_s, .nick = u"srv"_s, .text = u" indented"_s, .hasNickCell = false};
    QTest::newRow("server") << 2 << serverRow << u"[12:34]  indented\n"_s;
    QTest::newRow("server in three columns") << 3 << serverRow << u"[12:34]  indented\n"_s;
    QTest::newRow("empty text") << 3 << ChatRow{u"1"_s, u"al"_s, {}} << u"1 al: \n"_s;
    QTest::newRow("empty row") << 3 << ChatRow{} << u"\n"_s;
    QTest::newRow("two lines") << 3 << ChatRow{u"1"_s, u"al"_s, u" one\ntwo"_s}
                               << u"1 al: one two\n"_s;
    QTest::newRow("object replacement character")
            << 3 << ChatRow{u"1"_s, u"al"_s, u" a\uFFFCb"_s} << u"1 al: a\uFFFDb\n"_s;
    QTest::newRow("long nick") << 3 << ChatRow{u"1"_s, u"averyveryverylongnick"_s, u" x"_s}
                               << u"1 averyveryverylo…: x\n"_s;
}

void TestChatText::readsARowAsOneLine()
{
    QFETCH(const int, columns);
    QFETCH(const ChatRow, row);
    QFETCH(const QString, line);
    const Conversation conversation(columns);
    ChatTable::appendRows(*conversation.table, {row});
    QCOMPARE(conversation.allText(), line);
    QCOMPARE(conversation.text.length(), line.size());
    QCOMPARE(conversation.text.lineCount(), 1);
}

void TestChatText::readsRowsAddedLater()
{
    const Conversation conversation;
    QString expected;
    for (const QString &nick : {u"al"_s, u"bob"_s, u"carol"_s}) {
        ChatTable::appendRows(*conversation.table, {{u"1"_s, nick, u" hi"_s}});
        expected += u"1 %1: hi\n"_s.arg(nick);
        QCOMPARE(conversation.allText(), expected);
    }
    QCOMPARE(conversation.text.lineCount(), 3);
    QCOMPARE(conversation.text.lineAt(8), 0);
    QCOMPARE(conversation.text.lineAt(9), 1);
    QCOMPARE(conversation.text.lineRange(1).start, 9);
    QCOMPARE(conversation.text.lineRange(1).end, 19);
    QCOMPARE(conversation.text.lineAt(conversation.text.length()), 3);
    QCOMPARE(conversation.text.lineRange(3).start, conversation.text.length());
    QCOMPARE(conversation.text.lineRange(3).end, conversation.text.length());
}

void TestChatText::readsPartsAcrossLines()
{
    const Conversation conversation;
    ChatTable::appendRows(*conversation.table, ChatCorpus::rows());
    const QString all = conversation.allText();
    QCOMPARE(all.count(u'\n'), ChatCorpus::rows().size());
    for (int start = 0; start < all.size(); start += 97) {
        const ChatText::Range range{.start = start, .end = start + 250};
        QCOMPARE(conversation.text.text(range), all.mid(start, 250));
    }
    QCOMPARE(conversation.text.text({.start = -5, .end = 3}), all.left(3));
    QCOMPARE(conversation.text.text({.start = 3, .end = 3}), QString());
    QCOMPARE(conversation.text.text({.start = 3, .end = 2}), QString());
}

void TestChatText::hasNoLineBeforeTheFirstRow()
{
    const Conversation conversation;
    QCOMPARE(conversation.text.length(), 0);
    QCOMPARE(conversation.text.lineCount(), 0);
    QCOMPARE(conversation.text.offsetAt(0), 0);
    QCOMPARE(conversation.text.positionAt(0), conversation.view.document()->characterCount() - 1);

    const ChatView empty;
    const ChatText text(*qobject_cast<ChatLayout *>(empty.document()->documentLayout()));
    QCOMPARE(text.length(), 0);
    QCOMPARE(text.offsetAt(0), 0);
    QCOMPARE(text.positionAt(0), 0);
}

void TestChatText::mapsEachOffsetToAPosition()
{
    const Conversation conversation;
    ChatTable::appendRows(*conversation.table, ChatCorpus::rows());
    int previous = -1;
    for (int offset = 0; offset <= conversation.text.length(); ++offset) {
        const int position = conversation.text.positionAt(offset);
        QVERIFY(position > previous);
        QCOMPARE(conversation.text.offsetAt(position), offset);
        previous = position;
    }
    const QString all = conversation.allText();
    const int letter = static_cast<int>(all.indexOf(u'y'));
    QCOMPARE(conversation.view.document()->characterAt(conversation.text.positionAt(letter)), u'y');
}

void TestChatText::mapsPositionsOutsideTheText()
{
    const Conversation conversation;
    ChatTable::appendRows(*conversation.table, {{{}, {}, u" a"_s}, {u"1"_s, u"al"_s, u" b"_s}});
    const QTextDocument &document = *conversation.view.document();
    const auto offsetAtCell = [&](int cell, int inBlock) {
        return conversation.text.offsetAt(document.findBlockByNumber(1 + cell).position()
                                          + inBlock);
    };
    QCOMPARE(conversation.allText(), u"a\n1 al: b\n"_s);
    // The empty first row, and the missing time and nick of the second row.
    QCOMPARE(offsetAtCell(0, 0), 0);
    QCOMPARE(offsetAtCell(2, 0), 0);
    QCOMPARE(offsetAtCell(3, 0), 0);
    QCOMPARE(offsetAtCell(4, 1), 0);
    // The space before the text, and the end of the nick's cell.
    QCOMPARE(offsetAtCell(5, 0), 0);
    QCOMPARE(offsetAtCell(7, 4), 8);
    QCOMPARE(offsetAtCell(8, 0), 8);
    QCOMPARE(conversation.text.offsetAt(document.characterCount() - 1), 10);
}

void TestChatText::findsLinks()
{
    const Conversation conversation;
    ChatTable::appendRows(*conversation.table,
                          {{u"1"_s, u"al"_s, u" see http://a.org/b and x@y.org"_s},
                           {u"1"_s, u"al"_s, u" no link"_s},
                           {u"1"_s, u"al"_s, u" http://c.org http://d.org"_s}});
    QCOMPARE(linkTexts(conversation.text), (QStringList{u"http://a.org/b"_s, u"x@y.org"_s,
                                                        u"http://c.org"_s, u"http://d.org"_s}));
    ChatTable::appendRows(*conversation.table, {{u"1"_s, u"al"_s, u" https://e.org"_s}});
    QCOMPARE(linkTexts(conversation.text).last(), u"https://e.org"_s);
}

QTEST_MAIN(TestChatText)
#include "tst_ChatText.moc"
