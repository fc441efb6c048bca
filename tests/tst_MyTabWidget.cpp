#include "MyTabWidget.h"

#include <QTabBar>
#include <QTest>

using namespace Qt::StringLiterals;

class TestMyTabWidget final : public QObject
{
    Q_OBJECT

private slots:
    void replacesTheTabBar();
};

void TestMyTabWidget::replacesTheTabBar()
{
    MyTabWidget tabs;
    auto *bar = new QTabBar;
    tabs.setPublicTabBar(bar);
    QCOMPARE(tabs.tabBar(), bar);
    QCOMPARE(bar->parent(), &tabs);

    tabs.addTab(new QWidget, u"Server"_s);
    tabs.addTab(new QWidget, u"#velmora"_s);
    QCOMPARE(bar->count(), 2);
    QCOMPARE(bar->tabText(1), u"#velmora"_s);
    bar->setCurrentIndex(1);
    QCOMPARE(tabs.currentIndex(), 1);
}

QTEST_MAIN(TestMyTabWidget)
#include "tst_MyTabWidget.moc"
