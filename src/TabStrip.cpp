#include "TabStrip.h"

#include "FocusFrame.h"
#include "HighlightTabBar.h"
#include "LiteralText.h"
#include "MyTabWidget.h"

#include <QContextMenuEvent>
#include <QPushButton>
#include <QShortcut>

using namespace Qt::StringLiterals;

namespace {

// Property of a close button: its tab's index at the last update.
constexpr char CloseIndex[] = "closeIndex";

QString closeButtonSheet(bool isCurrent)
{
    return u"QPushButton {  background: transparent;  border: none;  font-size: 16px;  "
           "font-weight: bold;  color: %1;  padding: 0px;}"
           "QPushButton:hover {  background: rgba(0,0,0,0.1);  border-radius: 4px;}"_s.arg(
                   isCurrent ? "#FFFFFF"_L1 : "#999999"_L1);
}

QPushButton *createCloseButton(const QObject &receiver, const std::function<void(int)> &close)
{
    auto *button = new QPushButton(u"\u00D7"_s);
    button->setFixedSize(20, 20);
    button->setFlat(true);
    button->setAccessibleName(QPushButton::tr("Close tab"));
    // Not in the tab order, like Qt's own close buttons; Ctrl+W closes the tab.
    button->setFocusPolicy(Qt::NoFocus);
    button->setCursor(Qt::ArrowCursor);
    QObject::connect(button, &QPushButton::clicked, &receiver,
                     [button, close] { close(button->property(CloseIndex).toInt()); });
    return button;
}

/// Lets the menu key open the context menu of the current tab.
///
/// Qt requests the menu at the input method's cursor rectangle, or else at the widget's centre,
/// where another tab or none may be.
class TabMenuKeyFilter final : public QObject
{
    Q_DISABLE_COPY_MOVE(TabMenuKeyFilter)

public:
    /// `bar` becomes the parent. It must have the custom context menu policy.
    explicit TabMenuKeyFilter(QTabBar &bar)
        : QObject(&bar)
    {
        bar.installEventFilter(this);
    }

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() != QEvent::ContextMenu
            || static_cast<QContextMenuEvent *>(event)->reason() != QContextMenuEvent::Keyboard)
            return QObject::eventFilter(watched, event);
        auto *bar = static_cast<QTabBar *>(watched);
        emit bar->customContextMenuRequested(bar->tabRect(bar->currentIndex()).center());
        return true;
    }
};

} // namespace

namespace TabStrip {

HighlightTabBar *create(MyTabWidget &tabs)
{
    auto *bar = new HighlightTabBar(&tabs);
    tabs.setPublicTabBar(bar);
    bar->setExpanding(true);
    LiteralText::showTabToolTips(*bar);
    new TabMenuKeyFilter(*bar);
    FocusFrame::addTo(*bar);
    tabs.setTabsClosable(false); // updateCloseButtons() adds buttons on the left.
    bar->setContextMenuPolicy(Qt::CustomContextMenu);
    // Works around Qt, which reads the theme's "max-width: none" as 0 and truncates long names. The
    // font size makes the bold text of a highlighted tab fit.
    bar->setStyleSheet(u"QTabBar { font-size: 12px; } QTabBar::tab { max-width: 16777215px; }"_s);
    return bar;
}

void updateCloseButtons(QTabBar &bar, const QObject &receiver,
                        const std::function<void(int)> &close)
{
    const int current = bar.currentIndex();
    const QString currentSheet = closeButtonSheet(true);
    const QString otherSheet = closeButtonSheet(false);
    for (int index = 0; index < bar.count(); ++index) {
        QWidget *button = bar.tabButton(index, QTabBar::LeftSide);
        // setTabButton() lays out the whole bar, so existing buttons are kept.
        if (!button) {
            button = createCloseButton(receiver, close);
            bar.setTabButton(index, QTabBar::LeftSide, button);
        }
        button->setProperty(CloseIndex, index);
        const QString &sheet = index == current ? currentSheet : otherSheet;
        if (button->styleSheet() != sheet)
            button->setStyleSheet(sheet);
    }
}

void addSwitchShortcuts(QTabWidget &tabs, QWidget &window)
{
    const auto add = [&](const QList<QKeySequence> &keys, int step) {
        auto *shortcut = new QShortcut(&window);
        shortcut->setKeys(keys);
        QObject::connect(shortcut, &QShortcut::activated, &tabs, [&tabs, step] {
            const int count = tabs.count();
            if (count > 0)
                tabs.setCurrentIndex((tabs.currentIndex() + count + step) % count);
        });
    };
    add({Qt::CTRL | Qt::Key_Tab, Qt::CTRL | Qt::Key_PageDown}, 1);
    add({Qt::CTRL | Qt::SHIFT | Qt::Key_Tab, Qt::CTRL | Qt::Key_PageUp}, -1);
}

void setTabOrderAfter(QTabBar &bar, const QWidget &page)
{
    QWidget *last = &bar;
    const QList<QWidget *> widgets = page.findChildren<QWidget *>();
    for (QWidget *widget : widgets) {
        if ((widget->focusPolicy() & Qt::TabFocus) == 0)
            continue;
        QWidget::setTabOrder(last, widget);
        last = widget;
    }
}

} // namespace TabStrip
