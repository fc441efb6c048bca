// Measures the channel list of a large network: filling it through a real socket, and typing in its
// search field.

#include "Report.h"
#include "TemporaryStore.h"
#include "WindowSession.h"

#include <QApplication>
#include <QLineEdit>
#include <QStyleFactory>
#include <QTreeWidget>

#include <algorithm>
#include <functional>
#include <optional>

using namespace Qt::StringLiterals;

namespace {

constexpr int RowCount = 50000;

QByteArray listing()
{
    static const QByteArrayList names{"linux",  "music",   "weather-", "help",   "chess",
                                      "retro.", "cooking", "python-",  "Games_", "offtopic"};
    static const QByteArrayList topics{
            "Welcome! Please read the rules before you ask: https://example.org/rules", "",
            "All about the new release | no flooding | logs are public",
            "The quick brown fox jumps over the lazy dog, and then sleeps until the next morning"};
    QByteArray result = ":irc.test 321 me Channel :Users Name\r\n";
    for (int i = 0; i < RowCount; ++i) {
        result += ":irc.test 322 me #" + names.at(i % names.size()) + QByteArray::number(i) + ' '
                  + QByteArray::number(i * 7919L % 3001) + " :" + topics.at(i % topics.size())
                  + "\r\n";
    }
    return result + ":irc.test 323 me :End of /LIST\r\n";
}

void print(const QString &work, const QString &unit, double value, std::optional<double> limit = {})
{
    Report::print({.work = work, .unit = unit, .value = value, .limit = limit, .stock = {}});
}

struct Fill
{
    double total = 0; // All in ms of processor time.
    double longestIteration = 0;
    double lastIteration = 0; // Receives the end of the list and sorts it.
};

// Measures each event-loop iteration, during which the window does not react to the user.
Fill fill(WindowSession &session)
{
    session.choose(u"Channel &List"_s);
    Report::settle();
    session.server.sendBytes(listing());
    Fill result;
    bool &receiving = session.probe.listReceiving();
    for (bool hasBegun = false; !hasBegun || receiving;) {
        const double before = Report::processorTime();
        QCoreApplication::processEvents();
        const double iteration = Report::processorTime() - before;
        hasBegun = hasBegun || receiving || session.probe.listTree()->topLevelItemCount() > 0;
        result.total += iteration;
        if (hasBegun && !receiving)
            result.lastIteration = iteration;
        else
            result.longestIteration = std::max(result.longestIteration, iteration);
    }
    Report::settle();
    return result;
}

void reportFill(WindowSession &session, const QString &work)
{
    constexpr double IterationLimitMs = 100;
    const Fill cost = fill(session);
    print(work, u"ms"_s, cost.total);
    print(work + u": longest iteration while filling"_s, u"ms"_s, cost.longestIteration,
          IterationLimitMs);
    print(work + u": last iteration, with the sort"_s, u"ms"_s, cost.lastIteration,
          IterationLimitMs);
}

// The simplest search: sets every row at each key press.
void setEachRow(QTreeWidget &tree, const QString &text)
{
    for (int row = 0; row < tree.topLevelItemCount(); ++row) {
        QTreeWidgetItem *item = tree.topLevelItem(row);
        item->setHidden(!item->text(0).contains(text, Qt::CaseInsensitive)
                        && !item->text(2).contains(text, Qt::CaseInsensitive));
    }
}

void reportSearch(WindowSession &session)
{
    QTreeWidget &tree = *session.probe.listTree();
    QLineEdit &search = session.probe.listSearchEdit();
    // After a sort, an item looks up its row at the first call. This excludes these look-ups.
    setEachRow(tree, QString());
    Report::settle();
    const QStringList texts{u"w"_s,  u"we"_s,  u"wea"_s,   u"weat"_s,   u"wea"_s, u"r"_s,
                            u"ru"_s, u"rul"_s, u"rules"_s, u"rules#"_s, QString()};
    const auto type = [&texts](const std::function<void(const QString &)> &apply) {
        double cost = 0;
        for (const QString &text : texts) {
            cost += Report::median(1, [&] { apply(text); });
            Report::settle();
        }
        return cost;
    };
    const double keys = type([&search](const QString &text) { search.setText(text); });
    const double rows = type([&tree](const QString &text) { setEachRow(tree, text); });
    print(u"a key press in the search, 50,000 channels"_s, u"ms"_s, keys / double(texts.size()));
    print(u"the same, as a ratio to setting every row"_s, QString(), keys / rows, 0.25);
}

} // namespace

int main(int argc, char *argv[])
{
    const QApplication application(argc, argv);
    QApplication::setStyle(QStyleFactory::create(u"Fusion"_s));
    const TemporaryStore store;
    WindowSession session;
    if (!session.registerAs())
        return EXIT_FAILURE;
    reportFill(session, u"50,000 channels"_s);
    reportSearch(session);
    reportFill(session, u"50,000 again, in order"_s);
    return EXIT_SUCCESS;
}
