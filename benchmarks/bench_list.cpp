// The channel list of a large network: filling it through a real socket, and the keys of its
// search.

#include "IRCConnection.h"
#include "MyTabWidget.h"
#include "Report.h"
#include "TemporaryStore.h"
#include "WindowSession.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QStyleFactory>
#include <QTextStream>
#include <QTreeWidget>

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

// From the command to the sorted list.
void reportFill(WindowSession &session, const QString &work)
{
    session.choose(u"Channel &List"_s);
    Report::settle();
    const QByteArray bytes = listing();
    const double before = Report::processorTime();
    session.server.sendBytes(bytes);
    double longest = 0;
    while (session.probe.lastLine(u"Server"_s) != "*** Channel list complete."_L1)
        longest = std::max(longest, Report::settle());
    longest = std::max(longest, Report::settle());
    print(work, u"ms"_s, Report::processorTime() - before);
    print(work + u": longest turn of the event loop"_s, u"ms"_s, longest, 100);
}

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
    const auto key = [&](const QString &text) {
        return Report::median(1, [&] { search.setText(text); });
    };
    const auto everyRow = [&](const QString &text) {
        const QSignalBlocker blocker(search);
        return Report::median(1, [&] { setEachRow(tree, text); });
    };
    for (const QString &text :
         {u"w"_s, u"we"_s, u"wea"_s, u"weat"_s, u"weath"_s, u"wea"_s, u""_s}) {
        double mine = key(text);
        double settle = Report::median(1, [] { Report::settle(); });
        double again = everyRow(text);
        double settle2 = Report::median(1, [] { Report::settle(); });
        QTextStream(stdout) << text << ' ' << mine << ' ' << again << " settle " << settle << ' '
                            << settle2 << Qt::endl;
    }
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
    reportFill(session, u"a list of 50,000 channels"_s);
    reportSearch(session);
    reportFill(session, u"the same again, in order"_s);
    return EXIT_SUCCESS;
}
