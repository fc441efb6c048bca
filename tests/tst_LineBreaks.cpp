#include "LineBreaks.h"

#include <QTest>

using namespace Qt::StringLiterals;

class TestLineBreaks final : public QObject
{
    Q_OBJECT

private slots:
    void toSpaces_data();
    void toSpaces();
};

void TestLineBreaks::toSpaces_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");

    QTest::newRow("none") << u"a \t\u0002b\u00A0c"_s << u"a \t\u0002b\u00A0c"_s;
    QTest::newRow("empty") << QString() << QString();
    QTest::newRow("LF") << u"a\nb"_s << u"a b"_s;
    QTest::newRow("CR") << u"a\rb"_s << u"a b"_s;
    QTest::newRow("CR LF") << u"a\r\nb"_s << u"a b"_s;
    QTest::newRow("LF CR") << u"a\n\rb"_s << u"a  b"_s;
    QTest::newRow("empty lines") << u"\na\n\n\nb\r\n\r\n"_s << u" a   b  "_s;
    QTest::newRow("VT") << u"a\vb"_s << u"a b"_s;
    QTest::newRow("FF") << u"a\fb"_s << u"a b"_s;
    QTest::newRow("NEL") << u"a\u0085b"_s << u"a b"_s;
    QTest::newRow("line separator") << u"a\u2028b"_s << u"a b"_s;
    QTest::newRow("paragraph separator") << u"a\u2029b"_s << u"a b"_s;
    QTest::newRow("noncharacters") << u"a\uFDD0b\uFDD1c"_s << u"a b c"_s;
}

void TestLineBreaks::toSpaces()
{
    QFETCH(const QString, text);
    QTEST(LineBreaks::toSpaces(text), "expected");
}

QTEST_APPLESS_MAIN(TestLineBreaks)

#include "tst_LineBreaks.moc"
