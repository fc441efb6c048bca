// The cost of lines, frames and keys in one conversation, with the program's own layout and with
// Qt's, in windows of this process.

#include "ChatTable.h"
#include "ChatView.h"
#include "Report.h"

#include <QApplication>
#include <QScrollBar>
#include <QStackedWidget>
#include <QTextBrowser>
#include <QTextTable>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

enum class Layout { Own, Stock };

// Lines as in a busy channel: most of them short, some wrapped, some with a link.
ChatRow lineNumber(int number)
{
    static const QStringList texts{
            u" yes"_s,
            u" has anybody tried the new kernel on one of these machines yet?"_s,
            u" I did, and it works well here, apart from the usual trouble with the graphics driver, "
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

// Qt's layout takes seconds where ours takes milliseconds: fewer rounds, and none at all for the
// largest tables, do for it.
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
        int rows;
        double shownLimit;
        std::optional<double> hiddenLimit;
    } cases[] = {{1000, 1.5, 0.6}, {10000, 5, 3}, {50000, 20, {}}};
    for (const auto &test : cases) {
        Report::print({.work = u"one line into the tab on show, %1 rows"_s.arg(test.rows),
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

} // namespace

int main(int argc, char *argv[])
{
    const QApplication application(argc, argv);
    reportLines();
    return 0;
}
