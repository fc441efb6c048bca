#include "PlainToolTips.h"
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

// What a tip shows, which Qt hands to a label: as rich text if it looks like it.
QString shown(const QString &tip)
{
    if (!Qt::mightBeRichText(tip))
        return tip;
    QTextDocument document;
    document.setHtml(tip);
    return document.toPlainText();
}

void askForTip(QTabBar &bar, const QPoint &place)
{
    QHelpEvent event(QEvent::ToolTip, place, bar.mapToGlobal(place));
    QCoreApplication::sendEvent(&bar, &event);
}

} // namespace

class TestPlainToolTips final : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();

    void showsATipToTheLetter_data();
    void showsATipToTheLetter();
    void cutsAHugeTip();
    void showsNothingBesideTheTabs();
    void showsATipPerTab();
};

void TestPlainToolTips::cleanup()
{
    QToolTip::hideText();
    QTRY_VERIFY_WITH_TIMEOUT(!QToolTip::isVisible(), WaitTimeout);
}

void TestPlainToolTips::showsATipToTheLetter_data()
{
    QTest::addColumn<QString>("tip");

    QTest::newRow("plain") << u"#velmora"_s;
    QTest::newRow("bold") << u"<b>alice</b>"_s;
    QTest::newRow("an image") << u"#<img/src='file:///etc/hostname'>"_s;
    QTest::newRow("an entity") << u"a&lt;b&amp;c"_s;
    QTest::newRow("half a tag") << u"<a<b"_s;
    QTest::newRow("right to left") << u"\u05e9\u05dc\u05d5\u05dd<hr>"_s;
}

void TestPlainToolTips::showsATipToTheLetter()
{
    QFETCH(const QString, tip);
    QTabBar bar;
    new PlainToolTips(bar);
    bar.addTab(u"one"_s);
    bar.addTab(u"two"_s);
    bar.setTabToolTip(1, tip);
    bar.show();
    askForTip(bar, bar.tabRect(1).center());
    QVERIFY(QToolTip::isVisible());
    QCOMPARE(shown(QToolTip::text()), tip);
    QCOMPARE(bar.tabToolTip(1), tip);
}

void TestPlainToolTips::cutsAHugeTip()
{
    QTabBar bar;
    new PlainToolTips(bar);
    bar.addTab(u"one"_s);
    bar.setTabToolTip(0, QString(10'000, u'x'));
    bar.show();
    askForTip(bar, bar.tabRect(0).center());
    QCOMPARE(shown(QToolTip::text()), QString(QString(500, u'x') + u'…'));
}

void TestPlainToolTips::showsNothingBesideTheTabs()
{
    QTabBar bar;
    new PlainToolTips(bar);
    bar.addTab(u"one"_s);
    bar.setTabToolTip(0, u"tip"_s);
    bar.setExpanding(false);
    bar.setMinimumWidth(400);
    bar.show();
    askForTip(bar, QPoint(390, 5));
    QVERIFY(!QToolTip::isVisible());
}

void TestPlainToolTips::showsATipPerTab()
{
    QTabBar bar;
    new PlainToolTips(bar);
    for (const QString &name : {u"one"_s, u"two"_s}) {
        bar.addTab(name);
        bar.setTabToolTip(bar.count() - 1, name);
    }
    bar.show();
    askForTip(bar, bar.tabRect(0).center());
    const auto shownTip = [&bar] { return bar.findChild<QWidget *>(u"qtooltip_label"_s); };
    const QPointer<QWidget> first = shownTip();
    QVERIFY(first != nullptr);
    // On the same tab it stays as it is.
    askForTip(bar, bar.tabRect(0).topLeft());
    QCOMPARE(shownTip(), first.data());
    QVERIFY(first->isVisible());
    askForTip(bar, bar.tabRect(1).center());
    QVERIFY(first == nullptr);
    QVERIFY(shownTip()->isVisible());
}

QTEST_MAIN(TestPlainToolTips)
#include "tst_PlainToolTips.moc"
