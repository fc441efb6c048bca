#include "HighlightTabBar.h"
#include "MyTabWidget.h"
#include "TabStrip.h"
#include "Waiting.h"

#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QTextBrowser>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

/// A tab widget, and the indexes for which close buttons were clicked.
class Strip final
{
public:
    explicit Strip(int count)
    {
        for (int index = 0; index < count; ++index)
            tabs.addTab(new QWidget, QString::number(index));
    }

    void update()
    {
        TabStrip::updateCloseButtons(*bar, receiver ? *receiver : tabs,
                                     [this](int index) { closed.append(index); });
    }
    [[nodiscard]] QPushButton *button(int index) const
    {
        return qobject_cast<QPushButton *>(bar->tabButton(index, QTabBar::LeftSide));
    }

    MyTabWidget tabs;
    HighlightTabBar *bar = TabStrip::create(tabs);
    std::unique_ptr<QObject> receiver;
    QList<int> closed;
};

} // namespace

class TestTabStrip final : public QObject
{
    Q_OBJECT

private slots:
    void createsTheTabBar();
    void createsOneButtonPerTab();
    void coloursTheCurrentTabsButton();
    void closesTheIndexOfTheLastUpdate();
    void doesNotCallADeletedReceiver();
    void setsTheTabOrder();
    void switchesTabsWithKeys_data();
    void switchesTabsWithKeys();
};

void TestTabStrip::createsTheTabBar()
{
    const Strip strip(1);
    QCOMPARE(strip.tabs.tabBar(), strip.bar);
    QVERIFY(strip.tabs.isAncestorOf(strip.bar));
    QVERIFY(strip.bar->expanding());
    QVERIFY(!strip.tabs.tabsClosable());
    QCOMPARE(strip.bar->contextMenuPolicy(), Qt::CustomContextMenu);
}

void TestTabStrip::createsOneButtonPerTab()
{
    Strip strip(2);
    strip.update();
    const QPushButton *first = strip.button(0);
    QVERIFY(first != nullptr);
    QCOMPARE(first->text(), u"\u00D7"_s);
    QCOMPARE(first->size(), QSize(20, 20));
    QVERIFY(first->isFlat());
    QCOMPARE(first->focusPolicy(), Qt::NoFocus);
    QCOMPARE(first->cursor().shape(), Qt::ArrowCursor);
    QVERIFY(!first->accessibleName().isEmpty());
    QVERIFY(strip.button(1) != nullptr);
    strip.tabs.addTab(new QWidget, u"2"_s);
    strip.update();
    QCOMPARE(strip.button(0), first);
    QVERIFY(strip.button(2) != nullptr);
}

void TestTabStrip::coloursTheCurrentTabsButton()
{
    Strip strip(3);
    for (const int current : {0, 2, 1}) {
        strip.tabs.setCurrentIndex(current);
        strip.update();
        for (int index = 0; index < 3; ++index) {
            const QString sheet = strip.button(index)->styleSheet();
            QCOMPARE(sheet.contains(u"color: #FFFFFF;"_s), index == current);
            QCOMPARE(sheet.contains(u"color: #999999;"_s), index != current);
        }
    }
}

// Buttons after a removed tab keep their old index until the next update.
void TestTabStrip::closesTheIndexOfTheLastUpdate()
{
    Strip strip(4);
    strip.update();
    strip.button(3)->click();
    strip.tabs.removeTab(1);
    strip.button(1)->click();
    strip.button(2)->click();
    strip.update();
    strip.button(1)->click();
    strip.button(2)->click();
    QCOMPARE(strip.closed, (QList<int>{3, 2, 3, 1, 2}));
}

void TestTabStrip::doesNotCallADeletedReceiver()
{
    Strip strip(1);
    strip.receiver = std::make_unique<QObject>();
    strip.update();
    strip.button(0)->click();
    strip.receiver.reset();
    strip.button(0)->click();
    QCOMPARE(strip.closed, QList<int>{0});
}

void TestTabStrip::setsTheTabOrder()
{
    QWidget window;
    auto *layout = new QVBoxLayout(&window);
    auto *tabs = new MyTabWidget;
    HighlightTabBar *bar = TabStrip::create(*tabs);
    layout->addWidget(tabs);
    auto *buttonAfter = new QPushButton;
    layout->addWidget(buttonAfter);
    auto *page = new QWidget;
    auto *pageLayout = new QVBoxLayout(page);
    const QList<QPushButton *> buttons{new QPushButton, new QPushButton, new QPushButton};
    for (QPushButton *button : buttons)
        pageLayout->addWidget(button);
    buttons.at(1)->setFocusPolicy(Qt::ClickFocus);
    tabs->addTab(page, u"a"_s);
    TabStrip::setTabOrderAfter(*bar, *page);

    // Ignores Qt's internal widgets in the focus chain.
    QList<const QWidget *> tabOrder;
    for (const QWidget *widget = bar->nextInFocusChain(); widget != bar;
         widget = widget->nextInFocusChain()) {
        if (widget == buttonAfter || (widget->parent() == page && widget != buttons.at(1)))
            tabOrder.append(widget);
    }
    QCOMPARE(tabOrder, (QList<const QWidget *>{buttons.at(0), buttons.at(2), buttonAfter}));
}

void TestTabStrip::switchesTabsWithKeys_data()
{
    QTest::addColumn<Qt::Key>("key");
    QTest::addColumn<Qt::KeyboardModifiers>("modifiers");
    QTest::addColumn<QList<int>>("expected");

    const Qt::KeyboardModifiers ctrl = Qt::ControlModifier;
    const Qt::KeyboardModifiers ctrlShift = Qt::ControlModifier | Qt::ShiftModifier;
    const QList<int> forwards{1, 2, 0};
    const QList<int> backwards{2, 1, 0};
    QTest::newRow("Ctrl+Tab") << Qt::Key_Tab << ctrl << forwards;
    QTest::newRow("Ctrl+Page Down") << Qt::Key_PageDown << ctrl << forwards;
    QTest::newRow("Ctrl+Shift+Tab") << Qt::Key_Backtab << ctrlShift << backwards;
    QTest::newRow("Ctrl+Page Up") << Qt::Key_PageUp << ctrl << backwards;
}

void TestTabStrip::switchesTabsWithKeys()
{
    QFETCH(const Qt::Key, key);
    QFETCH(const Qt::KeyboardModifiers, modifiers);
    QFETCH(const QList<int>, expected);
    QWidget window;
    auto *layout = new QVBoxLayout(&window);
    auto *tabs = new MyTabWidget;
    layout->addWidget(tabs);
    auto *tree = new QTreeWidget;
    layout->addWidget(tree);
    auto *line = new QLineEdit;
    layout->addWidget(line);
    HighlightTabBar *bar = TabStrip::create(*tabs);
    auto *view = new QTextBrowser;
    tabs->addTab(view, u"0"_s);
    for (const QString &name : {u"1"_s, u"2"_s})
        tabs->addTab(new QLineEdit, name);
    TabStrip::addSwitchShortcuts(*tabs, window);
    window.show();
    window.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&window, WaitTimeout));
    const QList<QWidget *> starts{bar, view, tree, line};
    for (QWidget *start : starts) {
        start->setFocus();
        QList<int> visited;
        for (qsizetype i = 0; i < expected.size(); ++i) {
            QTest::keyClick(window.focusWidget(), key, modifiers);
            visited << tabs->currentIndex();
        }
        QCOMPARE(visited, expected);
    }
}

QTEST_MAIN(TestTabStrip)
#include "tst_TabStrip.moc"
