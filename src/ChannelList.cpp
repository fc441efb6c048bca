#include "ChannelList.h"

#include "ChannelSearch.h"
#include "NumericTreeWidgetItem.h"
#include "ThemeManager.h"

#include <QHeaderView>
#include <QLabel>
#include <QScrollBar>
#include <QSignalBlocker>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <algorithm>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

using Row = NumericTreeWidgetItem;

const auto DarkTreeSheet = u"QTreeWidget { background-color: #1E1E1E; color: #DDDDDD; "
                           "alternate-background-color: %1; }"
                           "QTreeWidget::item:hover { background-color: %2; }"
                           "QTreeWidget::item:selected { background-color: %3; }"_s.arg(
                                   ThemeColors::DarkAlternateRow, ThemeColors::DarkHoveredRow,
                                   ThemeColors::DarkSelectedRow);

QLabel *createInfoLabel()
{
    auto *label = new QLabel(QLabel::tr("Server: loading..."));
    label->setTextFormat(Qt::PlainText);
    // A long text from the server must not widen the window.
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

struct SortedRow
{
    int users = 0;
    QTreeWidgetItem *item = nullptr;
    bool isHidden = false;
};

std::vector<SortedRow> readRows(QTreeWidget &tree)
{
    std::vector<SortedRow> rows;
    rows.reserve(static_cast<std::size_t>(tree.topLevelItemCount()));
    for (int i = 0; i < tree.topLevelItemCount(); ++i) {
        QTreeWidgetItem *item = tree.topLevelItem(i);
        rows.push_back({.users = item->data(Row::UsersColumn, Qt::UserRole).toInt(),
                        .item = item,
                        .isHidden = tree.isRowHidden(i, QModelIndex())});
    }
    return rows;
}

// Puts the items into the order of `rows`. Restores the current row, the selection, the hidden rows
// and the scroll position, which the view loses with the removed rows.
void reorderRows(QTreeWidget &tree, const std::vector<SortedRow> &rows)
{
    QTreeWidgetItem *current = tree.currentItem();
    const QList<QTreeWidgetItem *> selected = tree.selectedItems();
    const int scrolled = tree.verticalScrollBar()->value();

    QList<QTreeWidgetItem *> items = tree.invisibleRootItem()->takeChildren();
    std::ranges::transform(rows, items.begin(), &SortedRow::item);
    tree.insertTopLevelItems(0, items);

    for (int i = 0; const SortedRow &row : rows)
        tree.setRowHidden(i++, QModelIndex(), row.isHidden);
    if (current)
        tree.setCurrentItem(current, Row::ChannelColumn, QItemSelectionModel::NoUpdate);
    for (QTreeWidgetItem *item : selected)
        item->setSelected(true);
    tree.verticalScrollBar()->setValue(scrolled);
}

// Sorts like QTreeWidget::sortItems(), which is slow in a long list because each comparison reads
// two items from different places in memory.
void sortByNumber(QTreeWidget &tree, Qt::SortOrder order)
{
    std::vector<SortedRow> rows = readRows(tree);
    const auto isBefore = [order](const SortedRow &a, const SortedRow &b) {
        return order == Qt::AscendingOrder ? a.users < b.users : b.users < a.users;
    };
    if (std::ranges::is_sorted(rows, isBefore))
        return;
    std::ranges::stable_sort(rows, isBefore);
    ChannelSearch::forTree(tree).keepIndexDuring([&tree, &rows] { reorderRows(tree, rows); });
}

// Sorts by users and enables sorting. Sort column -1 meanwhile prevents that QTreeWidget sorts too,
// when rows are added and when sorting is enabled.
void sortByUsersIn(QTreeWidget &tree, Qt::SortOrder order)
{
    QHeaderView *header = tree.header();
    const QSignalBlocker blocker(header);
    header->setSortIndicator(-1, order);
    tree.setSortingEnabled(false);
    sortByNumber(tree, order);
    tree.setSortingEnabled(true);
    header->setSortIndicator(Row::UsersColumn, order);
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
    // One arg() call, so that "%1" in the server's name is not replaced.
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
    ChannelSearch::forTree(tree).add(*item);
}

QString ChannelList::channelOf(const QTreeWidgetItem &row)
{
    return row.text(Row::ChannelColumn);
}

void ChannelList::sortByUsers(QTreeWidget &tree)
{
    sortByUsersIn(tree, Qt::DescendingOrder);
}

void ChannelList::sortNewRows(QTreeWidget &tree)
{
    if (tree.isSortingEnabled() && tree.sortColumn() == Row::UsersColumn)
        sortByUsersIn(tree, tree.header()->sortIndicatorOrder());
}
