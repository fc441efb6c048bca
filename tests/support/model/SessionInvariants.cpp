#include "SessionInvariants.h"

#include "HighlightTabBar.h"
#include "IRCConnection.h"
#include "MainWindowProbe.h"
#include "MyTabWidget.h"
#include "SessionModel.h"

#include <QAction>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QSplitter>
#include <QStackedWidget>
#include <QStatusBar>
#include <QTextBrowser>
#include <QTextTable>
#include <QTreeWidget>

using namespace Qt::StringLiterals;

namespace {

QString toText(const QString &text)
{
    return u'"' + text + u'"';
}

QString toText(const QStringList &list)
{
    return u"(%1)"_s.arg(list.join(u'|'));
}

QString toText(bool value)
{
    return value ? u"yes"_s : u"no"_s;
}

QString toText(qsizetype value)
{
    return QString::number(value);
}

// Records the first pair that differs.
class Comparison final
{
public:
    template <typename Value>
    void compare(const QString &what, const Value &actual, const Value &expected)
    {
        if (found.isEmpty() && actual != expected)
            found = what + u": "_s + toText(actual) + u" instead of "_s + toText(expected);
    }

    QString found;
};

QStringList visibleListRows(const MainWindowProbe &probe)
{
    QStringList channels = probe.listTree() != nullptr ? probe.listColumn(0) : QStringList();
    channels.sort();
    return channels;
}

QStringList visibleListRows(const SessionModel &model)
{
    QStringList channels;
    for (const SessionModel::ListRow &row : model.listRows) {
        if (row.isShown)
            channels.append(row.channel);
    }
    channels.sort();
    return channels;
}

qsizetype rowsOf(const QTextTable *table)
{
    return table != nullptr ? table->rows() - 1 : 0;
}

void compareRecords(Comparison &result, const MainWindowProbe &probe, const SessionModel &model)
{
    result.compare(u"keys"_s, probe.tabs().keys(), model.records.keys());
    if (!result.found.isEmpty())
        return;
    for (auto record = model.records.cbegin(); record != model.records.cend(); ++record) {
        const MainWindow::TabInfo info = probe.tabs().value(record.key());
        const QString of = u" of "_s + record.key();
        result.compare(u"index"_s + of, qsizetype(probe.tabWidget().indexOf(info.page)),
                       model.pages.indexOf(record->page));
        result.compare(u"partner"_s + of, info.peerNick, record->peerNick);
        result.compare(u"rows"_s + of, rowsOf(info.table), record->page->rows);
    }
}

void compareCloseButtons(Comparison &result, const MainWindowProbe &probe,
                         const SessionModel &model)
{
    for (int index = 0; index < model.pages.size() && result.found.isEmpty(); ++index) {
        const QPushButton *button = probe.closeButton(index);
        const int closes = button != nullptr ? button->property("closeIndex").toInt() : -1;
        result.compare(u"close index of "_s + model.pages.at(index)->text, qsizetype(closes),
                       qsizetype(model.pages.at(index)->closeIndex));
    }
}

void comparePeople(Comparison &result, const MainWindowProbe &probe, const SessionModel &model)
{
    result.compare(u"user list"_s, probe.users(), model.shownUsers);
    result.compare(u"user list visible"_s, !probe.userList().isHidden(), model.userListIsShown);
    result.compare(u"known channels"_s, probe.channelUsers().keys(), model.channelUsers.keys());
    for (auto users = model.channelUsers.cbegin(); users != model.channelUsers.cend(); ++users) {
        result.compare(u"users of "_s + users.key(), probe.channelUsers().value(users.key()),
                       *users);
    }
    QStringList watched = probe.watchedNicks().values();
    QStringList expected = model.watched.values();
    watched.sort();
    expected.sort();
    result.compare(u"watched"_s, watched, expected);
    result.compare(u"pending nick"_s, probe.pendingNick(), model.pendingNick);
    result.compare(u"away"_s, probe.isAway(), model.isAway);
    result.compare(u"away entry"_s, probe.awayAction().text(),
                   model.isAway ? u"Unmark Away"_s : u"Marked Away..."_s);
}

} // namespace

QString SessionInvariants::findViolation(const MainWindowProbe &probe)
{
    Comparison result;
    const MyTabWidget &tabs = probe.tabWidget();
    for (auto tab = probe.tabs().cbegin(); tab != probe.tabs().cend(); ++tab) {
        const int index = tabs.indexOf(tab->page);
        result.compare(u"text of tab "_s + tab.key(), tabs.tabText(index), tab.key());
        const QTextBrowser *view = tab->page->findChild<QTextBrowser *>();
        result.compare(u"view of tab "_s + tab.key(), tab->chatView == view, true);
        if (view != nullptr && tab->table != nullptr) {
            result.compare(u"document of tab "_s + tab.key(),
                           tab->table->document() == view->document(), true);
        }
    }
    const QLineEdit &line = probe.inputLine();
    result.compare(u"either input or search line visible"_s,
                   line.isVisibleTo(&probe.mainStack())
                           != probe.listSearchEdit().isVisibleTo(&probe.mainStack()),
                   true);
    const QString color = probe.connection().isConnected() ? u"#d4edda"_s : u"#f8d7da"_s;
    result.compare(u"colour of the status bar"_s,
                   probe.probedWindow().statusBar()->styleSheet().contains(color), true);
    return result.found;
}

QString SessionInvariants::findDifference(const MainWindowProbe &probe, const SessionModel &model)
{
    Comparison result;
    QStringList texts;
    for (const auto &page : model.pages)
        texts.append(page->text);
    result.compare(u"tabs"_s, probe.tabTexts(), texts);
    result.compare(u"current index"_s, qsizetype(probe.tabWidget().currentIndex()),
                   qsizetype(model.currentIndex));
    result.compare(u"current tab"_s, probe.currentTabName(), model.current);
    compareRecords(result, probe, model);
    compareCloseButtons(result, probe, model);
    comparePeople(result, probe, model);
    result.compare(u"topics of"_s, probe.channelTopics().keys(), model.topics.keys());
    result.compare(u"topics"_s, probe.channelTopics().values(), model.topics.values());
    result.compare(u"autojoin list"_s, probe.autojoinChannels(), model.autojoin);
    result.compare(u"text in the input line"_s, probe.inputLine().text(), model.input);
    result.compare(u"search line visible"_s, probe.mainStack().currentIndex() == 1,
                   model.searchIsShown);
    result.compare(u"rows of the channel list"_s, visibleListRows(probe), visibleListRows(model));
    return result.found;
}
