#include "ChannelSearch.h"

#include "NumericTreeWidgetItem.h"

#include <QScopedValueRollback>
#include <QTreeWidget>

#include <algorithm>

namespace {

// A byte that never occurs in UTF-8, so that no match spans two texts.
constexpr char EndOfText = '\xFF';

// Folds each code point separately, as QString's case-insensitive comparison does.
// QString::toCaseFolded() may map one letter to two.
std::string folded(const QString &text)
{
    QString result;
    result.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar unit = text.at(i);
        if (unit.isHighSurrogate() && i + 1 < text.size() && text.at(i + 1).isLowSurrogate()) {
            const char32_t letter = QChar::surrogateToUcs4(unit, text.at(++i));
            result.append(QChar::fromUcs4(QChar::toCaseFolded(letter)));
        } else {
            result.append(unit.toCaseFolded());
        }
    }
    return result.toStdString();
}

} // namespace

ChannelSearch &ChannelSearch::forTree(QTreeWidget &tree)
{
    auto *search = tree.findChild<ChannelSearch *>(QString(), Qt::FindDirectChildrenOnly);
    return search ? *search : *new ChannelSearch(tree);
}

ChannelSearch::ChannelSearch(QTreeWidget &searched)
    : QObject(&searched)
    , tree(searched)
{
    const QAbstractItemModel *model = tree.model();
    // rowsInserted is not connected: reading a row makes the tree do a pending sort first.
    connect(model, &QAbstractItemModel::rowsRemoved, this, &ChannelSearch::clear);
    connect(model, &QAbstractItemModel::dataChanged, this, &ChannelSearch::clear);
    connect(model, &QAbstractItemModel::modelReset, this, &ChannelSearch::clear);
}

void ChannelSearch::add(const QTreeWidgetItem &row)
{
    numbers.insert(&row, textEnds.size());
    texts += folded(row.text(NumericTreeWidgetItem::ChannelColumn)) + EndOfText;
    texts += folded(row.text(NumericTreeWidgetItem::TopicColumn)) + EndOfText;
    textEnds.push_back(texts.size());
}

void ChannelSearch::keepIndexDuring(const std::function<void()> &reorder)
{
    const QScopedValueRollback guard(isReordering, true);
    reorder();
}

void ChannelSearch::clear()
{
    if (isReordering)
        return;
    numbers.clear();
    rowCache = {};
    texts = {};
    textEnds = {};
}

std::vector<bool> ChannelSearch::find(const QString &text) const
{
    std::vector<bool> found(textEnds.size());
    const std::string wanted = folded(text);
    auto end = textEnds.cbegin();
    for (std::size_t position = texts.find(wanted); position != std::string::npos;
         position = texts.find(wanted, *end)) {
        end = std::upper_bound(end, textEnds.cend(), position);
        found[static_cast<std::size_t>(end - textEnds.cbegin())] = true;
    }
    return found;
}

std::size_t ChannelSearch::numberOf(int row)
{
    // Avoids the hash lookup for a row with the same item as at the last search.
    CachedRow &cached = rowCache[static_cast<std::size_t>(row)];
    const QTreeWidgetItem *item = tree.topLevelItem(row);
    if (cached.item != item)
        cached = {item, numbers.value(item)};
    return cached.number;
}

void ChannelSearch::showMatches(const QString &text)
{
    const int count = tree.topLevelItemCount();
    if (numbers.size() != count) {
        clear();
        for (int row = 0; row < count; ++row)
            add(*tree.topLevelItem(row));
    }
    std::vector<bool> hidden(static_cast<std::size_t>(count));
    if (!text.isEmpty()) {
        const std::vector<bool> found = find(text);
        rowCache.resize(hidden.size());
        for (int row = 0; row < count; ++row)
            hidden[static_cast<std::size_t>(row)] = !found[numberOf(row)];
    }
    // By row, because QTreeWidgetItem::setHidden() searches for the item's row.
    for (int row = 0; row < count; ++row) {
        const bool isHidden = hidden[static_cast<std::size_t>(row)];
        if (tree.isRowHidden(row, QModelIndex()) != isHidden)
            tree.setRowHidden(row, QModelIndex(), isHidden);
    }
}
