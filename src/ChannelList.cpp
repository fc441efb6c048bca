#include "ChannelList.h"

#include "ChannelSearch.h"
#include "NumericTreeWidgetItem.h"
#include "ThemeManager.h"

#include <QHeaderView>
#include <QLabel>
#include <QSignalBlocker>
#include <QTreeWidget>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {

using Row = NumericTreeWidgetItem;

const auto DarkTreeSheet = u"QTreeWidget { background-color: #1E1E1E; color: #DDDDDD; "
                           "alternate-background-color: #252525; }"
                           "QTreeWidget::item:hover { background-color: #3A3A3A; }"
                           "QTreeWidget::item:selected { background-color: #505050; }"_s;

QLabel *createInfoLabel()
{
    auto *label = new QLabel(QLabel::tr("Server: loading..."));
    label->setTextFormat(Qt::PlainText);
    // The server gives the text, which is not to make the window as wide as itself.
    label->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    label->setStyleSheet(u"font-weight: bold; padding: 4px;"_s);
    return label;
}

QTreeWidget *createTree(const QString &theme)
{
    auto *tree = new QTreeWidget;
    tree->setAccessibleName(QTreeWidget::tr("Channels"));
    tree->setHeaderLabels(
            {QTreeWidget::tr("Channel"), QTreeWidget::tr("Users"), QTreeWidget::tr("Topic")});
    tree->setRootIsDecorated(false);
    tree->setAlternatingRowColors(true);
    tree->setSortingEnabled(false);
    QHeaderView *header = tree->header();
    header->setMinimumHeight(30);
    header->setStyleSheet(u"QHeaderView::section { padding: 4px; font-weight: bold; }"_s);
    tree->setStyleSheet(ThemeManager::isDark(theme) ? DarkTreeSheet : QString());
    header->setSectionResizeMode(Row::ChannelColumn, QHeaderView::Interactive);
    header->setMinimumSectionSize(120);
    header->resizeSection(Row::ChannelColumn, 200);
    tree->setContextMenuPolicy(Qt::CustomContextMenu);
    return tree;
}

} // namespace

ChannelList::Page ChannelList::createPage(const QString &theme)
{
    Page page;
    page.page = new QWidget;
    auto *layout = new QVBoxLayout(page.page);
    layout->setContentsMargins(0, 0, 0, 0);
    page.infoLabel = createInfoLabel();
    layout->addWidget(page.infoLabel);
    page.tree = createTree(theme);
    layout->addWidget(page.tree);
    return page;
}

QString ChannelList::summary(const QString &serverName, int totalChannels, int totalUsers)
{
    // All at once: the name, which may hold such a mark, is not looked through for the next.
    return QLabel::tr("%1: %2 channels, %3 users")
            .arg(serverName, QString::number(totalChannels), QString::number(totalUsers));
}

void ChannelList::addRow(QTreeWidget &tree, const QString &channel, const QString &userCount,
                         const QString &topic)
{
    auto *item = new Row;
    item->setText(Row::ChannelColumn, channel);
    item->setText(Row::UsersColumn, userCount);
    item->setText(Row::TopicColumn, topic);
    item->setData(Row::UsersColumn, Qt::UserRole, userCount.toInt());
    item->setHidden(false);
    tree.addTopLevelItem(item);
    ChannelSearch::of(tree).add(*item);
}

QString ChannelList::channelOf(const QTreeWidgetItem &row)
{
    return row.text(Row::ChannelColumn);
}

void ChannelList::sortByUsers(QTreeWidget &tree)
{
    QHeaderView *header = tree.header();
    // Each of the two steps below would sort a long list on the way: the first one by the header's
    // old column, and the second one also for the header's signal.
    const QSignalBlocker blocker(header);
    if (!tree.isSortingEnabled()) {
        header->setSortIndicator(-1, Qt::DescendingOrder);
        tree.setSortingEnabled(true);
    }
    tree.sortItems(Row::UsersColumn, Qt::DescendingOrder);
}
