// Measures lines, frames and key presses in one conversation, with the program's own layout and
// with Qt's, in windows of this process.

#include "ChatTable.h"
#include "ChatView.h"
#include "Report.h"

#include <QAccessible>
#include <QApplication>
#include <QMouseEvent>
#include <QScrollBar>
#include <QStackedWidget>
#include <QTest>
#include <QTextBrowser>
#include <QTextStream>
#include <QTextTable>

#include <functional>
#include <memory>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

enum class Layout { Own, Stock };

// Lines like those of a busy channel: most are short, some wrap, and some have a link.
ChatRow lineNumber(int number)
{
    static const QStringList texts{
            u" yes"_s,
            u" has anybody tried the new kernel on one of these machines yet?"_s,
            u" I did, and it works well here, apart from the usual trouble with the graphics "
            u"driver, "
            "which has to be built again after every update and then fails at the first attempt"_s,
            u" see https://example.org/wiki/Troubleshooting?page=12 for details"_s,
            u" thanks a lot"_s,
            u" that was broken for years and nobody had noticed, since everybody had a workaround"_s,
            u" lol"_s,
            u" ok, then let us do that tomorrow"_s};
    static const QStringList nicks{u"alice"_s, u"bob"_s, u"carol"_s, u"dave_the_great"_s, u"eve"_s};
    return {.time = u"[12:34:56]"_s,
            .nick = nicks.at(number % nicks.size()),
            .text = texts.at(number % texts.size()) + u" "_s + QString::number(number)};
}

class Conversation final
{
public:
    explicit Conversation(Layout layout)
        : view(layout == Layout::Own ? new ChatView : new QTextBrowser)
    {
        QPalette palette = view->palette();
        palette.setColor(QPalette::Base, Qt::white);
        palette.setColor(QPalette::Window, Qt::white);
        view->setPalette(palette);
        view->setAutoFillBackground(true);
        view->resize(800, 600);
        table = ChatTable::create(*view, 3);
    }

    void append(int count)
    {
        QList<ChatRow> rows;
        for (int i = 0; i < count; ++i)
            rows << lineNumber(total++);
        ChatTable::appendRows(*table, rows);
        QTextCursor cursor = view->textCursor();
        cursor.movePosition(QTextCursor::End);
        view->setTextCursor(cursor);
        view->ensureCursorVisible();
    }

    std::unique_ptr<QTextBrowser> view;

private:
    QTextTable *table = nullptr;
    int total = 0;
};

// Fewer rounds for Qt's layout, which takes seconds instead of milliseconds.
int rounds(Layout layout, int rows)
{
    return layout == Layout::Own ? 31 : rows <= 1000 ? 5 : 1;
}

double lineIntoShown(Layout layout, int rows)
{
    Conversation conversation(layout);
    conversation.view->show();
    conversation.append(rows);
    Report::settle();
    return Report::median(rounds(layout, rows), [&conversation] {
        conversation.append(1);
        Report::settle();
    });
}

double lineIntoHidden(Layout layout, int rows)
{
    QStackedWidget stack;
    stack.resize(800, 600);
    stack.addWidget(new QWidget);
    Conversation conversation(layout);
    stack.addWidget(conversation.view.get());
    stack.show();
    conversation.append(rows);
    Report::settle();
    const double result = Report::median(rounds(layout, rows), [&conversation] {
        conversation.append(1);
        Report::settle();
    });
    stack.removeWidget(conversation.view.get());
    conversation.view->setParent(nullptr);
    return result;
}

void reportLines()
{
    const struct
    {
        int rows = 0;
        double shownLimit = 0;
        std::optional<double> hiddenLimit;
    } cases[] = {{1000, 1.5, 0.6}, {10000, 5, 3}, {50000, 20, {}}};
    for (const auto &test : cases) {
        Report::print({.work = u"one line into the current tab, %1 rows"_s.arg(test.rows),
                       .unit = u"ms"_s,
                       .value = lineIntoShown(Layout::Own, test.rows),
                       .limit = test.shownLimit,
                       .stock = lineIntoShown(Layout::Stock, test.rows)});
        Report::print({.work = u"one line into a hidden tab, %1 rows"_s.arg(test.rows),
                       .unit = u"ms"_s,
                       .value = lineIntoHidden(Layout::Own, test.rows),
                       .limit = test.hiddenLimit,
                       .stock = lineIntoHidden(Layout::Stock, test.rows)});
    }
}

double linesInOneRead(int rows)
{
    Conversation conversation(Layout::Own);
    conversation.view->show();
    conversation.append(1);
    Report::settle();
    const double start = Report::processorTime();
    conversation.append(rows);
    Report::settle();
    return Report::processorTime() - start;
}

// Time until the first frame of the new size is painted, and the longest stall after that.
struct ResizeCost
{
    double firstFrame = 0;
    double longestStall = 0;
};

ResizeCost resize(Conversation &conversation)
{
    ResizeCost cost;
    const double start = Report::processorTime();
    conversation.view->resize(conversation.view->width() - 150, 600);
    conversation.view->repaint();
    cost.firstFrame = Report::processorTime() - start;
    cost.longestStall = Report::settle();
    return cost;
}

double firstShow(Layout layout, int rows)
{
    QStackedWidget stack;
    stack.resize(900, 600);
    stack.addWidget(new QWidget);
    Conversation conversation(layout);
    stack.addWidget(conversation.view.get());
    stack.show();
    conversation.append(rows);
    Report::settle();
    const double start = Report::processorTime();
    stack.setCurrentIndex(1);
    stack.repaint();
    const double result = Report::processorTime() - start;
    Report::settle();
    stack.removeWidget(conversation.view.get());
    conversation.view->setParent(nullptr);
    return result;
}

// Opening a tab sets the background of every view again, hidden ones included.
double newBackground(Layout layout, int views, int rows)
{
    QStackedWidget stack;
    stack.resize(800, 600);
    std::vector<std::unique_ptr<Conversation>> conversations;
    for (int i = 0; i < views; ++i) {
        conversations.push_back(std::make_unique<Conversation>(layout));
        conversations.back()->append(rows);
        stack.addWidget(conversations.back()->view.get());
    }
    stack.show();
    Report::settle();
    const double result = Report::median(5, [&conversations] {
        for (const auto &conversation : conversations) {
            QTextBrowser &view = *conversation->view;
            QPalette palette = view.palette();
            palette.setColor(QPalette::Base, Qt::white);
            palette.setColor(QPalette::Window, Qt::white);
            view.setPalette(palette);
            view.setAutoFillBackground(true);
            view.setStyleSheet(u"QTextBrowser {   border: 1px solid #cccccc;   "
                               "background-color: #ffffff;   border-image: none; }"_s);
            view.viewport()->update();
        }
        QCoreApplication::processEvents();
    });
    for (const auto &conversation : conversations) {
        stack.removeWidget(conversation->view.get());
        conversation->view->setParent(nullptr);
    }
    return result;
}

using Action = std::function<void(QTextBrowser &)>;

void pressKey(QTextBrowser &view, Qt::Key key)
{
    QTest::keyClick(&view, key);
}

// Drags a selection to another of the visible rows.
void dragStep(QTextBrowser &view)
{
    static int step = 0;
    const QPoint target(400, 100 + ++step % 20 * 20);
    QMouseEvent move(QEvent::MouseMove, target, view.viewport()->mapToGlobal(target),
                     Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(view.viewport(), &move);
}

void hover(QTextBrowser &view)
{
    static int step = 0;
    const QPoint target(300, 100 + ++step % 20 * 20);
    QMouseEvent move(QEvent::MouseMove, target, view.viewport()->mapToGlobal(target), Qt::NoButton,
                     Qt::NoButton, Qt::NoModifier);
    QCoreApplication::sendEvent(view.viewport(), &move);
}

double actionCost(Conversation &conversation, const Action &action)
{
    return Report::median(15, [&] {
        action(*conversation.view);
        Report::settle();
    });
}

void reportUse()
{
    constexpr int Rows = 50000;
    Conversation own(Layout::Own);
    own.view->show();
    own.append(Rows);
    Report::settle();
    // A fifth of the rows, since each step takes seconds.
    Conversation stock(Layout::Stock);
    stock.view->show();
    stock.append(Rows / 5);
    Report::settle();

    const ResizeCost cost = resize(own);
    Report::print({.work = u"resized, 50000 rows: first frame (Qt: 10000 rows)"_s,
                   .unit = u"ms"_s,
                   .value = cost.firstFrame,
                   .limit = 50,
                   .stock = resize(stock).firstFrame});
    Report::print({.work = u"resized, 50000 rows: longest stall after that"_s,
                   .unit = u"ms"_s,
                   .value = cost.longestStall,
                   .limit = 20,
                   .stock = {}});
    Report::print({.work = u"first show of a hidden tab, 50000 rows (Qt: 10000)"_s,
                   .unit = u"ms"_s,
                   .value = firstShow(Layout::Own, Rows),
                   .limit = 50,
                   .stock = firstShow(Layout::Stock, Rows / 5)});

    const struct
    {
        QString name;
        Action action;
    } actions[] = {{u"PageUp"_s, [](QTextBrowser &view) { pressKey(view, Qt::Key_PageUp); }},
                   {u"PageDown"_s, [](QTextBrowser &view) { pressKey(view, Qt::Key_PageDown); }},
                   // Both keys, since repeating one of them would change nothing.
                   {u"Home, then End"_s,
                    [](QTextBrowser &view) {
                        pressKey(view, Qt::Key_Home);
                        Report::settle();
                        pressKey(view, Qt::Key_End);
                    }},
                   {u"hover"_s, hover}};
    for (const auto &[name, action] : actions) {
        Report::print({.work = name + u", 50000 rows (Qt: 10000)"_s,
                       .unit = u"ms"_s,
                       .value = actionCost(own, action),
                       .limit = 5,
                       .stock = actionCost(stock, action)});
    }
    for (Conversation *conversation : {&own, &stock})
        QTest::mousePress(conversation->view->viewport(), Qt::LeftButton, {}, QPoint(400, 300));
    Report::print({.work = u"drag selection step, 50000 rows (Qt: 10000)"_s,
                   .unit = u"ms"_s,
                   .value = actionCost(own, dragStep),
                   .limit = 5,
                   .stock = actionCost(stock, dragStep)});
}

void reportTabs()
{
    Report::print({.work = u"background set again for 51 tabs of 10000 rows (Qt: of 200)"_s,
                   .unit = u"ms"_s,
                   .value = newBackground(Layout::Own, 51, 10000),
                   .limit = 100,
                   .stock = newBackground(Layout::Stock, 51, 200)});
}

// Measures from the first painted rows on, so that the view's own memory is not counted.
void reportMemory(Layout layout, int rows)
{
    Conversation conversation(layout);
    conversation.view->show();
    conversation.append(100);
    Report::settle();
    const double before = Report::residentMemory();
    conversation.append(rows);
    Report::settle();
    const double each = (Report::residentMemory() - before) / rows;
    Report::print({.work = u"memory a row, %1 rows, %2 layout"_s.arg(
                           QString::number(rows), layout == Layout::Own ? u"own"_s : u"Qt's"_s),
                   .unit = u"kB"_s,
                   .value = each,
                   .limit = layout == Layout::Own ? std::optional(1.6) : std::nullopt,
                   .stock = {}});
}

} // namespace

int main(int argc, char *argv[])
{
    const QApplication application(argc, argv);
    // The accessibility bus replies asynchronously.
    if (qEnvironmentVariableIsSet("QT_LINUX_ACCESSIBILITY_ALWAYS_ON")
        && !QTest::qWaitFor(QAccessible::isActive, 30'000))
        return 1;
    const QString part = QString::fromLocal8Bit(argc > 1 ? argv[1] : "");
    if (part == "lines"_L1)
        reportLines();
    // bench_reader reads these figures.
    else if (part == "line"_L1)
        QTextStream(stdout) << lineIntoShown(Layout::Own, QByteArray(argv[2]).toInt());
    else if (part == "read"_L1)
        QTextStream(stdout) << linesInOneRead(10000);
    else if (part == "use"_L1)
        reportUse();
    else if (part == "tabs"_L1)
        reportTabs();
    else if (part == "memory"_L1)
        reportMemory(Layout::Own, 50000);
    else if (part == "memory-stock"_L1)
        reportMemory(Layout::Stock, 10000);
    else
        return 1;
    return 0;
}
