#include "LiteralText.h"
#include "Waiting.h"

#include <QHelpEvent>
#include <QLabel>
#include <QPointer>
#include <QTabBar>
#include <QTest>
#include <QTextDocument>
#include <QToolTip>

using namespace Qt::StringLiterals;

namespace {

// The text that a tool tip shows. Its label detects rich text.
QString shownText(const QString &tip)
{
    if (!Qt::mightBeRichText(tip))
        return tip;
    QTextDocument document;
    document.setHtml(tip);
    return document.toPlainText();
}

void requestToolTip(QTabBar &bar, const QPoint &position)
{
    QHelpEvent event(QEvent::ToolTip, position, bar.mapToGlobal(position));
    QCoreApplication::sendEvent(&bar, &event);
}

// An image of a menu with this one entry.
template <typename Menu>
QImage renderMenu(const QString &text)
{
    Menu menu;
    menu.addAction(text);
    menu.popup(QPoint(0, 0));
    return menu.grab().toImage();
}

} // namespace

class TestLiteralText final : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();

    void showsToolTipVerbatim_data();
    void showsToolTipVerbatim();
    void truncatesLongToolTip();
    void showsNoToolTipBesideTabs();
    void showsToolTipPerTab();

    void menuKeepsActionTexts();
    void menuShowsAmpersands_data();
    void menuShowsAmpersands();
    void menuShowsTabCharactersAsSpaces();
    void menuFitsOnScreen();
};

void TestLiteralText::cleanup()
{
    QToolTip::hideText();
    QTRY_VERIFY_WITH_TIMEOUT(!QToolTip::isVisible(), WaitTimeout);
}

void TestLiteralText::showsToolTipVerbatim_data()
{
    QTest::addColumn<QString>("tip");

    QTest::newRow("plain") << u"#velmora"_s;
    QTest::newRow("bold") << u"<b>alice</b>"_s;
    QTest::newRow("image") << u"#<img/src='file:///etc/hostname'>"_s;
    QTest::newRow("entity") << u"a&lt;b&amp;c"_s;
    QTest::newRow("half a tag") << u"<a<b"_s;
    QTest::newRow("right to left") << u"\u05e9\u05dc\u05d5\u05dd<hr>"_s;
}

void TestLiteralText::showsToolTipVerbatim()
{
    QFETCH(const QString, tip);
    QTabBar bar;
    LiteralText::showTabToolTips(bar);
    bar.addTab(u"one"_s);
    bar.addTab(u"two"_s);
    bar.setTabToolTip(1, tip);
    bar.show();
    requestToolTip(bar, bar.tabRect(1).center());
    QVERIFY(QToolTip::isVisible());
    QCOMPARE(shownText(QToolTip::text()), tip);
    QCOMPARE(bar.tabToolTip(1), tip);
}

void TestLiteralText::truncatesLongToolTip()
{
    QTabBar bar;
    LiteralText::showTabToolTips(bar);
    bar.addTab(u"one"_s);
    bar.setTabToolTip(0, QString(10'000, u'x'));
    bar.show();
    requestToolTip(bar, bar.tabRect(0).center());
    QCOMPARE(shownText(QToolTip::text()), QString(QString(500, u'x') + u'…'));
}

void TestLiteralText::showsNoToolTipBesideTabs()
{
    QTabBar bar;
    LiteralText::showTabToolTips(bar);
    bar.addTab(u"one"_s);
    bar.setTabToolTip(0, u"tip"_s);
    bar.setExpanding(false);
    bar.setMinimumWidth(400);
    bar.show();
    requestToolTip(bar, QPoint(390, 5));
    QVERIFY(!QToolTip::isVisible());
}

void TestLiteralText::showsToolTipPerTab()
{
    QTabBar bar;
    LiteralText::showTabToolTips(bar);
    for (const QString &name : {u"one"_s, u"two"_s}) {
        bar.addTab(name);
        bar.setTabToolTip(bar.count() - 1, name);
    }
    bar.show();
    requestToolTip(bar, bar.tabRect(0).center());
    const auto findTip = [&bar] { return bar.findChild<QWidget *>(u"qtooltip_label"_s); };
    const QPointer<QWidget> first = findTip();
    QVERIFY(first != nullptr);
    // On the same tab the tip stays.
    requestToolTip(bar, bar.tabRect(0).topLeft());
    QCOMPARE(findTip(), first.data());
    QVERIFY(first->isVisible());
    requestToolTip(bar, bar.tabRect(1).center());
    QVERIFY(first == nullptr);
    QVERIFY(findTip()->isVisible());
}

void TestLiteralText::menuKeepsActionTexts()
{
    LiteralText::Menu menu;
    for (const QString &text : {u"Join #a&b"_s, u"a\tb"_s, QString(10000, u'x')})
        QCOMPARE(menu.addAction(text)->text(), text);
}

void TestLiteralText::menuShowsAmpersands_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("escaped");

    QTest::newRow("none") << u"Join #ab"_s << u"Join #ab"_s;
    QTest::newRow("one") << u"Join #a&b"_s << u"Join #a&&b"_s;
    QTest::newRow("two in a row") << u"Join #a&&b"_s << u"Join #a&&&&b"_s;
    QTest::newRow("at the end") << u"Join #ab&"_s << u"Join #ab&&"_s;
    QTest::newRow("markup") << u"<b>&lt;</b>"_s << u"<b>&&lt;</b>"_s;
}

void TestLiteralText::menuShowsAmpersands()
{
    QFETCH(const QString, text);
    QFETCH(const QString, escaped);
    const QImage shown = renderMenu<LiteralText::Menu>(text);
    const QImage expected = renderMenu<QMenu>(escaped);
    // The menu may be wider, but shows the whole text.
    QVERIFY(shown.width() >= expected.width());
    const QRect textArea(5, 0, expected.width() - 10, expected.height());
    QCOMPARE(shown.copy(textArea), expected.copy(textArea));
}

void TestLiteralText::menuShowsTabCharactersAsSpaces()
{
    const QImage expected = renderMenu<QMenu>(u"Join #a b"_s);
    const QRect textArea(5, 0, expected.width() - 10, expected.height());
    QCOMPARE(renderMenu<LiteralText::Menu>(u"Join #a\tb"_s).copy(textArea),
             expected.copy(textArea));
}

void TestLiteralText::menuFitsOnScreen()
{
    for (const QChar letter : {u'x', u'&'}) {
        LiteralText::Menu menu;
        menu.addAction(QString(10000, letter));
        menu.addAction(u"Another"_s);
        menu.popup(QPoint(0, 0));
        QVERIFY2(menu.width() <= 600, qPrintable(QString::number(menu.width())));
    }
}

QTEST_MAIN(TestLiteralText)
#include "tst_LiteralText.moc"
