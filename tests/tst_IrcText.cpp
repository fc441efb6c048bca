#include "IrcText.h"

#include <QTest>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>

using namespace Qt::StringLiterals;

class TestIrcText final : public QObject
{
    Q_OBJECT

private slots:
    void hasSixteenColours_data();
    void hasSixteenColours();

    void linksARow_data();
    void linksARow();
    void linkKeepsTheRowsFormat();
    void rowWithoutLinkKeepsItsFormat();
    void writesAtTheCursor();
    void emptyRowWritesNothing();
    void hostileRowKeepsItsText_data();
    void hostileRowKeepsItsText();

    void convertsCodesToTags_data();
    void convertsCodesToTags();
    void coloursByNumber_data();
    void coloursByNumber();
    void colourNumbersMayHaveManyDigits();
    void linksATopic_data();
    void linksATopic();
    void hostileTopicKeepsItsText_data();
    void hostileTopicKeepsItsText();
    void limitsRepeatedText_data();
    void limitsRepeatedText();
};

namespace {

/// Replaces "{b}" (bold), "{i}" (italic), "{u}" (underline), "{c}" (colour) by control characters.
QString coded(const QString &notation)
{
    QString text = notation;
    return text.replace("{b}"_L1, QChar(0x02))
            .replace("{i}"_L1, QChar(0x1D))
            .replace("{u}"_L1, QChar(0x1F))
            .replace("{c}"_L1, QChar(0x03));
}

QList<QTextFragment> fragmentsOf(const QTextDocument &document)
{
    QList<QTextFragment> fragments;
    const QTextBlock block = document.firstBlock();
    for (auto fragment = block.begin(); !fragment.atEnd(); ++fragment)
        fragments.append(fragment.fragment());
    return fragments;
}

/// Returns the document's text with each link as "[text](target)".
QString written(const QTextDocument &document)
{
    QString text;
    for (const QTextFragment &fragment : fragmentsOf(document)) {
        const QTextCharFormat format = fragment.charFormat();
        if (format.isAnchor())
            text += u"[%1](%2)"_s.arg(fragment.text(), format.anchorHref());
        else
            text += fragment.text();
    }
    return text;
}

QString inserted(const QString &text)
{
    QTextDocument document;
    QTextCursor cursor(&document);
    IrcText::insertWithLinks(cursor, text, QTextCharFormat());
    return written(document);
}

} // namespace

void TestIrcText::hasSixteenColours_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<QColor>("colour");

    QTest::newRow("white") << 0 << QColor(Qt::white);
    QTest::newRow("black") << 1 << QColor(Qt::black);
    QTest::newRow("navy") << 2 << QColor(u"#000080"_s);
    QTest::newRow("green") << 3 << QColor(u"#008000"_s);
    QTest::newRow("red") << 4 << QColor(u"#FF0000"_s);
    QTest::newRow("maroon") << 5 << QColor(u"#800000"_s);
    QTest::newRow("purple") << 6 << QColor(u"#800080"_s);
    QTest::newRow("orange") << 7 << QColor(u"#FFA500"_s);
    QTest::newRow("yellow") << 8 << QColor(u"#FFFF00"_s);
    QTest::newRow("lime") << 9 << QColor(u"#00FF00"_s);
    QTest::newRow("teal") << 10 << QColor(u"#008080"_s);
    QTest::newRow("cyan") << 11 << QColor(u"#00FFFF"_s);
    QTest::newRow("blue") << 12 << QColor(u"#0000FF"_s);
    QTest::newRow("magenta") << 13 << QColor(u"#FF00FF"_s);
    QTest::newRow("grey") << 14 << QColor(u"#808080"_s);
    QTest::newRow("silver") << 15 << QColor(u"#C0C0C0"_s);
}

void TestIrcText::hasSixteenColours()
{
    QFETCH(const int, index);
    QTEST(IrcText::color(index), "colour");
    QTEST(IrcText::colors().at(static_cast<std::size_t>(index)), "colour");
}

void TestIrcText::linksARow_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");

    QTest::newRow("no link") << u"nothing: to see/here"_s << u"nothing: to see/here"_s;
    QTest::newRow("URL alone") << u"https://a.org/b?c=d&e#f"_s
                               << u"[https://a.org/b?c=d&e#f](https://a.org/b?c=d&e#f)"_s;
    QTest::newRow("URL within a text")
            << u"see http://a.org now"_s << u"see [http://a.org](http://a.org) now"_s;
    QTest::newRow("full stop belongs to the URL")
            << u"see http://a.org/b."_s << u"see [http://a.org/b.](http://a.org/b.)"_s;
    QTest::newRow("bracket belongs to the URL")
            << u"(http://a.org) yes"_s << u"([http://a.org)](http://a.org)) yes"_s;
    QTest::newRow("URL within a word") << u"xhttp://a.org"_s << u"x[http://a.org](http://a.org)"_s;
    QTest::newRow("URL ends at a tab")
            << u"http://a.org\tb"_s << u"[http://a.org](http://a.org)\tb"_s;
    QTest::newRow("two URLs") << u"http://a.org https://b.org"_s
                              << u"[http://a.org](http://a.org) [https://b.org](https://b.org)"_s;
    QTest::newRow("scheme in capitals")
            << u"HTTP://a.org Https://a.org"_s << u"HTTP://a.org Https://a.org"_s;
    QTest::newRow("other scheme") << u"ftp://a.org"_s << u"ftp://a.org"_s;
    QTest::newRow("scheme without host") << u"http:// a"_s << u"http:// a"_s;

    QTest::newRow("address") << u"mail joe@a.org, please"_s
                             << u"mail [joe@a.org](mailto:joe@a.org), please"_s;
    QTest::newRow("full stop does not belong to the address")
            << u"mail joe@a.org."_s << u"mail [joe@a.org](mailto:joe@a.org)."_s;
    QTest::newRow("address with all signs")
            << u"J.o_e%1+x-y@a-b.c1.Org"_s
            << u"[J.o_e%1+x-y@a-b.c1.Org](mailto:J.o_e%1+x-y@a-b.c1.Org)"_s;
    QTest::newRow("address needs a dot") << u"joe@host"_s << u"joe@host"_s;
    QTest::newRow("address needs two letters at its end") << u"joe@a.b"_s << u"joe@a.b"_s;
    QTest::newRow("address starts at a word")
            << u"+joe@a.org"_s << u"+[joe@a.org](mailto:joe@a.org)"_s;
    QTest::newRow("address ends at a word's end") << u"joe@a.org_"_s << u"joe@a.org_"_s;
    QTest::newRow("at sign alone") << u"joe @ a.org"_s << u"joe @ a.org"_s;

    QTest::newRow("address inside a URL is no link")
            << u"http://joe@a.org/b ok"_s << u"[http://joe@a.org/b](http://joe@a.org/b) ok"_s;
    QTest::newRow("address that runs into a URL is no link")
            << u"joe@a.https://b.org"_s << u"joe@a.[https://b.org](https://b.org)"_s;
    QTest::newRow("both kinds in their order")
            << u"joe@a.org http://b.org ann@c.org"_s
            << u"[joe@a.org](mailto:joe@a.org) [http://b.org](http://b.org) "
               "[ann@c.org](mailto:ann@c.org)"_s;
    QTest::newRow("touching links")
            << u"joe@a.org|http://b.org"_s
            << u"[joe@a.org](mailto:joe@a.org)|[http://b.org](http://b.org)"_s;

    QTest::newRow("bold is a character") << coded(u"a {b}b{b}"_s) << coded(u"a {b}b{b}"_s);
    QTest::newRow("colour is a character") << coded(u"{c}4,1red"_s) << coded(u"{c}4,1red"_s);
    QTest::newRow("code stays in the URL")
            << coded(u"http://a.org{b} x"_s) << coded(u"[http://a.org{b}](http://a.org{b}) x"_s);
    QTest::newRow("code before a URL")
            << coded(u"{b}http://a.org"_s) << coded(u"{b}[http://a.org](http://a.org)"_s);
    QTest::newRow("HTML characters") << u"<b>&amp;</b> \"x\""_s << u"<b>&amp;</b> \"x\""_s;
    QTest::newRow("non-ASCII") << u"grüße http://ä.org/日本 😊"_s
                               << u"grüße [http://ä.org/日本](http://ä.org/日本) 😊"_s;
}

void TestIrcText::linksARow()
{
    QFETCH(const QString, text);
    QTEST(inserted(text), "expected");
}

void TestIrcText::linkKeepsTheRowsFormat()
{
    QTextCharFormat base;
    base.setForeground(QColor(136, 136, 136));
    base.setFontItalic(true);

    QTextDocument document;
    QTextCursor cursor(&document);
    IrcText::insertWithLinks(cursor, u"see http://a.org now"_s, base);

    const QList<QTextFragment> fragments = fragmentsOf(document);
    QCOMPARE(fragments.size(), 3);
    QCOMPARE(fragments.at(0).charFormat(), base);
    QCOMPARE(fragments.at(2).charFormat(), base);
    const QTextCharFormat link = fragments.at(1).charFormat();
    QVERIFY(link.fontItalic());
    QVERIFY(link.isAnchor());
    QCOMPARE(link.foreground().color(), QColor(u"#007AFF"_s));
    QCOMPARE(link.underlineStyle(), QTextCharFormat::SingleUnderline);
}

void TestIrcText::rowWithoutLinkKeepsItsFormat()
{
    QTextCharFormat base;
    base.setForeground(QColor(136, 136, 136));

    QTextDocument document;
    QTextCursor cursor(&document);
    IrcText::insertWithLinks(cursor, coded(u"plain {b}text"_s), base);

    const QList<QTextFragment> fragments = fragmentsOf(document);
    QCOMPARE(fragments.size(), 1);
    QCOMPARE(fragments.at(0).charFormat(), base);
}

void TestIrcText::writesAtTheCursor()
{
    QTextDocument document(u"ab"_s);
    QTextCursor cursor(&document);
    cursor.setPosition(1);
    IrcText::insertWithLinks(cursor, u" http://a.org "_s, QTextCharFormat());
    QCOMPARE(written(document), u"a [http://a.org](http://a.org) b"_s);
    QCOMPARE(cursor.position(), 15);
}

void TestIrcText::emptyRowWritesNothing()
{
    QCOMPARE(inserted(QString()), QString());
}

void TestIrcText::hostileRowKeepsItsText_data()
{
    QTest::addColumn<QString>("text");

    QTest::newRow("long URL") << QString(u"http://a.org/"_s + u"b"_s.repeated(100000));
    QTest::newRow("long word") << u"a"_s.repeated(100000);
    QTest::newRow("many dots before an at sign") << QString(u"a."_s.repeated(50000) + u'@');
    QTest::newRow("many dots around an at sign")
            << QString(u"a."_s.repeated(25000) + u'@' + u"b."_s.repeated(25000) + u'_');
    QTest::newRow("long last part") << QString(u"a@b."_s + u"c"_s.repeated(100000) + u'_');
    QTest::newRow("at signs only") << u"@"_s.repeated(100000);
    QTest::newRow("broken addresses") << u"a@"_s.repeated(50000);
    QTest::newRow("many addresses") << u"a@b.co "_s.repeated(14000);
    QTest::newRow("many URLs with addresses") << u"http://a@b.co "_s.repeated(7000);
    QTest::newRow("half a surrogate pair") << QString(u"http://a.org x@y.org "_s + QChar(0xD83D));
    QTest::newRow("null character") << QString(u"a "_s + QChar(0) + u" http://a.org"_s);
}

void TestIrcText::hostileRowKeepsItsText()
{
    QFETCH(const QString, text);
    QTextDocument document;
    QTextCursor cursor(&document);
    IrcText::insertWithLinks(cursor, text, QTextCharFormat());
    QVERIFY(document.firstBlock().text() == text);
}

void TestIrcText::convertsCodesToTags_data()
{
    QTest::addColumn<QString>("topic");
    QTest::addColumn<QString>("html");

    QTest::newRow("plain") << u"welcome to #velmora"_s << u"welcome to #velmora"_s;
    QTest::newRow("empty") << u""_s << u""_s;
    QTest::newRow("bold") << u"a {b}b{b} c"_s << u"a <b>b</b> c"_s;
    QTest::newRow("italic") << u"a {i}b{i} c"_s << u"a <i>b</i> c"_s;
    QTest::newRow("underline") << u"a {u}b{u} c"_s << u"a <u>b</u> c"_s;
    QTest::newRow("nothing between") << u"{b}{b}"_s << u"<b></b>"_s;
    QTest::newRow("bold again") << u"{b}a{b}b{b}c{b}"_s << u"<b>a</b>b<b>c</b>"_s;
    QTest::newRow("tags are where the codes are")
            << u"{b}{i}one{b}two{i}three"_s << u"<b><i>one</b>two</i>three"_s;
    QTest::newRow("bold left open") << u"{b}a b"_s << u"<b>a b</b>"_s;
    QTest::newRow("italic left open") << u"{i}a b"_s << u"<i>a b</i>"_s;
    QTest::newRow("underline left open") << u"{u}a b"_s << u"<u>a b</u>"_s;
    QTest::newRow("all left open, bold first")
            << u"{b}{i}{u}{c}4x"_s
            << u"<b><i><u><span style=\"color:#ff0000;\">x</span></u></i></b>"_s;
    QTest::newRow("all left open, bold last")
            << u"{c}4{u}{i}{b}x"_s
            << u"<span style=\"color:#ff0000;\"><u><i><b>x</span></u></i></b>"_s;

    QTest::newRow("less and greater") << u"a<b>c"_s << u"a&lt;b&gt;c"_s;
    QTest::newRow("ampersand") << u"a&b &amp;"_s << u"a&amp;b &amp;amp;"_s;
    QTest::newRow("double quote") << u"say \"x\""_s << u"say &quot;x&quot;"_s;
    QTest::newRow("single quote stays") << u"it's"_s << u"it's"_s;

    const QString others = u"a\x0F"
                           u"b\x16"
                           u"c\x01"
                           u"d\x1E"
                           u"e\x11"
                           u"f\tg"_s;
    QTest::newRow("other control characters stay") << others << others;
    QTest::newRow("reset closes nothing") << u"{b}a\x0F z"_s << u"<b>a\x0F z</b>"_s;
    QTest::newRow("non-ASCII") << u"grüße 日本 😊"_s << u"grüße 日本 😊"_s;
}

void TestIrcText::convertsCodesToTags()
{
    QFETCH(const QString, topic);
    QTEST(IrcText::toHtml(coded(topic)), "html");
}

void TestIrcText::coloursByNumber_data()
{
    QTest::addColumn<QString>("topic");
    QTest::addColumn<QString>("html");

    const auto span = [](const QString &style, const QString &text) {
        return u"<span style=\"%1\">%2</span>"_s.arg(style, text);
    };
    const QString red = u"color:#ff0000;"_s;

    QTest::newRow("foreground") << u"a {c}4b"_s << QString(u"a "_s + span(red, u"b"_s));
    QTest::newRow("foreground and background")
            << u"{c}4,2b"_s << span(u"color:#ff0000;background-color:#000080;"_s, u"b"_s);
    QTest::newRow("two digits") << u"{c}04,12b"_s
                                << span(u"color:#ff0000;background-color:#0000ff;"_s, u"b"_s);
    QTest::newRow("lower-case name") << u"{c}7b"_s << span(u"color:#ffa500;"_s, u"b"_s);
    QTest::newRow("number 0") << u"{c}0b"_s << span(u"color:#ffffff;"_s, u"b"_s);
    QTest::newRow("number 15") << u"{c}15b"_s << span(u"color:#c0c0c0;"_s, u"b"_s);
    QTest::newRow("number 16 is 15") << u"{c}16b"_s << span(u"color:#c0c0c0;"_s, u"b"_s);
    QTest::newRow("number 99 is 15") << u"{c}99b"_s << span(u"color:#c0c0c0;"_s, u"b"_s);
    QTest::newRow("background 99 is 15")
            << u"{c}4,99b"_s << span(u"color:#ff0000;background-color:#c0c0c0;"_s, u"b"_s);
    QTest::newRow("three digits below 16") << u"{c}012b"_s << span(u"color:#0000ff;"_s, u"b"_s);
    QTest::newRow("three digits are one number")
            << u"{c}100b"_s << span(u"color:#c0c0c0;"_s, u"b"_s);
    QTest::newRow("background of three digits")
            << u"{c}4,002b"_s << span(u"color:#ff0000;background-color:#000080;"_s, u"b"_s);
    QTest::newRow("digits of other scripts") << u"{c}٤b"_s << span(red, u"b"_s);
    QTest::newRow("superscript is no digit") << u"{c}²b"_s << u"²b"_s;

    QTest::newRow("code closes the colour")
            << u"{c}4b{c} c"_s << QString(span(red, u"b"_s) + u" c"_s);
    QTest::newRow("code alone") << u"a{c}b"_s << u"ab"_s;
    QTest::newRow("code at the end") << u"a{c}"_s << u"a"_s;
    QTest::newRow("code at the end closes the colour") << u"{c}4b{c}"_s << span(red, u"b"_s);
    QTest::newRow("second colour closes the first")
            << u"{c}4b{c}2c"_s << QString(span(red, u"b"_s) + span(u"color:#000080;"_s, u"c"_s));
    QTest::newRow("second colour drops the background")
            << u"{c}4,1b{c}2c"_s
            << QString(span(u"color:#ff0000;background-color:#000000;"_s, u"b"_s)
                       + span(u"color:#000080;"_s, u"c"_s));
    QTest::newRow("colour closes once") << u"{c}4b{c}{c}c"_s << QString(span(red, u"b"_s) + u"c"_s);

    QTest::newRow("comma directly after the code stays") << u"a{c},5b"_s << u"a,5b"_s;
    QTest::newRow("comma directly after the code, colour open")
            << u"{c}4a{c},b"_s << QString(span(red, u"a"_s) + u",b"_s);
    QTest::newRow("comma after a number is removed") << u"{c}4,b"_s << span(red, u"b"_s);
    QTest::newRow("comma after a number at the end") << u"{c}4,"_s << span(red, u""_s);
    QTest::newRow("second comma stays")
            << u"{c}4,2,3"_s << span(u"color:#ff0000;background-color:#000080;"_s, u",3"_s);

    QTest::newRow("red on red is white")
            << u"{c}4,4b"_s << span(u"color:#ffffff;background-color:#ff0000;"_s, u"b"_s);
    QTest::newRow("yellow on yellow is black")
            << u"{c}8,8b"_s << span(u"color:#000000;background-color:#ffff00;"_s, u"b"_s);
    QTest::newRow("black on black is white")
            << u"{c}1,1b"_s << span(u"color:#ffffff;background-color:#000000;"_s, u"b"_s);
    QTest::newRow("white on white is black")
            << u"{c}0,0b"_s << span(u"color:#000000;background-color:#ffffff;"_s, u"b"_s);
    // Its luminance is slightly below 128, and the fraction is truncated.
    QTest::newRow("grey on grey is white")
            << u"{c}14,14b"_s << span(u"color:#ffffff;background-color:#808080;"_s, u"b"_s);
    QTest::newRow("lime on lime is black")
            << u"{c}9,9b"_s << span(u"color:#000000;background-color:#00ff00;"_s, u"b"_s);
    QTest::newRow("equal after clamping")
            << u"{c}15,99b"_s << span(u"color:#000000;background-color:#c0c0c0;"_s, u"b"_s);
}

void TestIrcText::coloursByNumber()
{
    QFETCH(const QString, topic);
    QTEST(IrcText::toHtml(coded(topic)), "html");
}

void TestIrcText::colourNumbersMayHaveManyDigits()
{
    const QString silver = u"<span style=\"color:#c0c0c0;\">x</span>"_s;
    const QString red = u"<span style=\"color:#ff0000;\">x</span>"_s;
    QCOMPARE(IrcText::toHtml(coded(u"{c}4294967300x"_s)), silver);
    QCOMPARE(IrcText::toHtml(coded(u"{c}"_s + u"9"_s.repeated(100000) + u'x')), silver);
    QCOMPARE(IrcText::toHtml(coded(u"{c}"_s + u"0"_s.repeated(100000) + u"4x"_s)), red);
    QCOMPARE(IrcText::toHtml(coded(u"{c}4,"_s + u"9"_s.repeated(100000) + u'x')),
             u"<span style=\"color:#ff0000;background-color:#c0c0c0;\">x</span>"_s);
}

void TestIrcText::linksATopic_data()
{
    QTest::addColumn<QString>("topic");
    QTest::addColumn<QString>("html");

    QTest::newRow("URL") << u"see https://a.org/b now"_s
                         << u"see <a href=\"https://a.org/b\">https://a.org/b</a> now"_s;
    QTest::newRow("full stop belongs to the URL")
            << u"see http://a.org."_s << u"see <a href=\"http://a.org.\">http://a.org.</a>"_s;
    QTest::newRow("two URLs") << u"http://a.org http://b.org"_s
                              << u"<a href=\"http://a.org\">http://a.org</a> "
                                 "<a href=\"http://b.org\">http://b.org</a>"_s;
    QTest::newRow("scheme in capitals")
            << u"HTTP://a.org Https://b.org"_s << u"HTTP://a.org Https://b.org"_s;
    QTest::newRow("address has no mailto")
            << u"ask joe@a.org."_s << u"ask <a href=\"joe@a.org\">joe@a.org</a>."_s;
    QTest::newRow("both kinds in their order")
            << u"joe@a.org http://b.org"_s
            << u"<a href=\"joe@a.org\">joe@a.org</a> <a href=\"http://b.org\">http://b.org</a>"_s;
    QTest::newRow("ampersand shows escaped twice")
            << u"http://a.org/?b&c"_s
            << u"<a href=\"http://a.org/?b&amp;c\">http://a.org/?b&amp;amp;c</a>"_s;
    QTest::newRow("typed brackets belong to the URL")
            << u"<http://a.org>"_s
            << u"&lt;<a href=\"http://a.org&gt;\">http://a.org&amp;gt;</a>"_s;
    QTest::newRow("typed bracket before a URL is no tag")
            << u">http://a.org"_s << u"&gt;<a href=\"http://a.org\">http://a.org</a>"_s;

    QTest::newRow("URL directly after bold stays text")
            << u"{b}http://a.org b"_s << u"<b>http://a.org b</b>"_s;
    QTest::newRow("URL directly after the end of bold stays text")
            << u"{b}a{b}http://a.org b"_s << u"<b>a</b>http://a.org b"_s;
    QTest::newRow("URL directly after a colour stays text")
            << u"{c}4http://a.org b"_s << u"<span style=\"color:#ff0000;\">http://a.org b</span>"_s;
    QTest::newRow("address directly after bold stays text")
            << u"{b}joe@a.org{b}"_s << u"<b>joe@a.org</b>"_s;
    QTest::newRow("URL after bold and a space is a link")
            << u"{b} http://a.org b"_s << u"<b> <a href=\"http://a.org\">http://a.org</a> b</b>"_s;
    QTest::newRow("link after one that stayed text")
            << u"{b}http://a.org http://b.org c"_s
            << u"<b>http://a.org <a href=\"http://b.org\">http://b.org</a> c</b>"_s;
    QTest::newRow("address within a URL that stayed text")
            << u"{b}http://joe@a.org/b c"_s
            << u"<b>http://<a href=\"joe@a.org\">joe@a.org</a>/b c</b>"_s;

    QTest::newRow("tag after a URL belongs to it")
            << u"http://a.org{b} b"_s
            << u"<a href=\"http://a.org<b>\">http://a.org&lt;b&gt;</a> b</b>"_s;
    QTest::newRow("closing tag at the end belongs to the URL")
            << u"{b}see http://a.org"_s
            << u"<b>see <a href=\"http://a.org</b>\">http://a.org&lt;/b&gt;</a>"_s;
    QTest::newRow("all closing tags belong to the URL")
            << u"{b}{i}see http://a.org"_s
            << u"<b><i>see <a href=\"http://a.org</i></b>\">"
               "http://a.org&lt;/i&gt;&lt;/b&gt;</a>"_s;
    QTest::newRow("URL includes a colour's tag up to its space")
            << u"http://a.org{c}4 b"_s
            << u"<a href=\"http://a.org<span\">http://a.org&lt;span</a> "
               "style=\"color:#ff0000;\"> b</span>"_s;
    QTest::newRow("tag ends an address")
            << u"joe@a.org{b} b"_s << u"<a href=\"joe@a.org\">joe@a.org</a><b> b</b>"_s;

    QTest::newRow("address within a URL repeats the rest")
            << u"see http://joe@a.org/b now"_s
            << u"see <a href=\"http://joe@a.org/b\">http://joe@a.org/b</a> now"
               "<a href=\"joe@a.org\">joe@a.org</a>/b now"_s;
    QTest::newRow("address within a URL at the end")
            << u"http://joe@a.org"_s
            << u"<a href=\"http://joe@a.org\">http://joe@a.org</a>"
               "<a href=\"joe@a.org\">joe@a.org</a>"_s;
    QTest::newRow("link in the repeated rest")
            << u"http://joe@a.org http://b.org"_s
            << u"<a href=\"http://joe@a.org\">http://joe@a.org</a> http://b.org"
               "<a href=\"joe@a.org\">joe@a.org</a> "
               "<a href=\"http://b.org\">http://b.org</a>"_s;
    QTest::newRow("address that runs into a URL")
            << u"joe@a.https://b.org"_s
            << u"<a href=\"joe@a.https\">joe@a.https</a>://b.org"
               "<a href=\"https://b.org\">https://b.org</a>"_s;
}

void TestIrcText::linksATopic()
{
    QFETCH(const QString, topic);
    QTEST(IrcText::toHtml(coded(topic)), "html");
}

void TestIrcText::hostileTopicKeepsItsText_data()
{
    QTest::addColumn<QString>("topic");

    QTest::newRow("long word") << u"a"_s.repeated(100000);
    QTest::newRow("many dots before an at sign") << QString(u"a."_s.repeated(50000) + u'@');
    QTest::newRow("many dots around an at sign")
            << QString(u"a."_s.repeated(25000) + u'@' + u"b."_s.repeated(25000) + u'_');
    QTest::newRow("long last part") << QString(u"a@b."_s + u"c"_s.repeated(100000) + u'_');
    QTest::newRow("at signs only") << u"@"_s.repeated(100000);
    QTest::newRow("half a surrogate pair") << QString(u"http://a.org x@y.org "_s + QChar(0xD83D));
}

void TestIrcText::hostileTopicKeepsItsText()
{
    QFETCH(const QString, topic);
    QVERIFY(IrcText::toHtml(topic) == topic);

    // A URL directly after a tag stays text.
    const QString html = IrcText::toHtml(coded(u"{b}http://a.org "_s.repeated(8000)));
    QVERIFY(html == u"<b>http://a.org </b>http://a.org "_s.repeated(4000));
}

void TestIrcText::limitsRepeatedText_data()
{
    QTest::addColumn<QString>("topic");

    QTest::newRow("URLs with an address each") << u"http://a@b.co "_s.repeated(7000);
    QTest::newRow("one URL full of addresses")
            << QString(u"http://"_s + u"a@b.co,"_s.repeated(14000));
}

void TestIrcText::limitsRepeatedText()
{
    QFETCH(const QString, topic);
    QVERIFY(IrcText::toHtml(topic).size() < 2'000'000);

    // For a line of the usual length, the rest after the URL is repeated for each address.
    const QString line = u"http://a@b.co "_s.repeated(36);
    qsizetype repeated = 0;
    for (int left = 35; left >= 0; --left)
        repeated += 1 + 14 * left;
    const QString anchors =
            u"<a href=\"http://a@b.co\">http://a@b.co</a><a href=\"a@b.co\">a@b.co</a>"_s;
    QCOMPARE(IrcText::toHtml(line).size(), repeated + 36 * (anchors.size() + 1));
}

QTEST_MAIN(TestIrcText)
#include "tst_IrcText.moc"
