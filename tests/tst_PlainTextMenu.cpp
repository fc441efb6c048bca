#include "PlainTextMenu.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace {

// What a menu with this one entry looks like on the screen.
template <typename Menu>
QImage look(const QString &text)
{
    Menu menu;
    menu.addAction(text);
    menu.popup(QPoint(0, 0));
    return menu.grab().toImage();
}

} // namespace

class TestPlainTextMenu final : public QObject
{
    Q_OBJECT

private slots:
    void keepsTheTextsOfItsEntries();
    void showsAmpersands_data();
    void showsAmpersands();
    void showsTabsAsBlanks();
    void staysOnTheScreen();
};

void TestPlainTextMenu::keepsTheTextsOfItsEntries()
{
    PlainTextMenu menu;
    for (const QString &text : {u"Join #a&b"_s, u"a\tb"_s, QString(10000, u'x')})
        QCOMPARE(menu.addAction(text)->text(), text);
}

void TestPlainTextMenu::showsAmpersands_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("escaped");

    QTest::newRow("none") << u"Join #ab"_s << u"Join #ab"_s;
    QTest::newRow("one") << u"Join #a&b"_s << u"Join #a&&b"_s;
    QTest::newRow("two in a row") << u"Join #a&&b"_s << u"Join #a&&&&b"_s;
    QTest::newRow("at the end") << u"Join #ab&"_s << u"Join #ab&&"_s;
    QTest::newRow("markup") << u"<b>&lt;</b>"_s << u"<b>&&lt;</b>"_s;
}

void TestPlainTextMenu::showsAmpersands()
{
    QFETCH(const QString, text);
    QFETCH(const QString, escaped);
    const QImage shown = look<PlainTextMenu>(text);
    const QImage expected = look<QMenu>(escaped);
    // Whatever room there is beyond the text, the text is the same and all of it is there.
    QVERIFY(shown.width() >= expected.width());
    const QRect texts(5, 0, expected.width() - 10, expected.height());
    QCOMPARE(shown.copy(texts), expected.copy(texts));
}

void TestPlainTextMenu::showsTabsAsBlanks()
{
    const QImage expected = look<QMenu>(u"Join #a b"_s);
    const QRect texts(5, 0, expected.width() - 10, expected.height());
    QCOMPARE(look<PlainTextMenu>(u"Join #a\tb"_s).copy(texts), expected.copy(texts));
}

void TestPlainTextMenu::staysOnTheScreen()
{
    for (const QChar letter : {u'x', u'&'}) {
        PlainTextMenu menu;
        menu.addAction(QString(10000, letter));
        menu.addAction(u"Another"_s);
        menu.popup(QPoint(0, 0));
        QVERIFY2(menu.width() <= 600, qPrintable(QString::number(menu.width())));
    }
}

QTEST_MAIN(TestPlainTextMenu)
#include "tst_PlainTextMenu.moc"
