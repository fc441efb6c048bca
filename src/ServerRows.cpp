#include "ServerRows.h"

#include "ServerStore.h"

#include <QListWidget>

#include <algorithm>

namespace {

bool isBefore(const QListWidgetItem *left, const QListWidgetItem *right)
{
    const QString leftAddress = ServerRows::addressOf(left);
    const QString rightAddress = ServerRows::addressOf(right);
    const bool leftIsFavorite = leftAddress != left->text();
    const bool rightIsFavorite = rightAddress != right->text();
    if (leftIsFavorite != rightIsFavorite)
        return leftIsFavorite;
    return QString::compare(leftAddress, rightAddress, Qt::CaseInsensitive) < 0;
}

template <typename Predicate>
QListWidgetItem *findRow(const QListWidget *list, Predicate matches)
{
    for (int i = 0; i < list->count(); ++i) {
        if (matches(list->item(i)))
            return list->item(i);
    }
    return nullptr;
}

} // namespace

namespace ServerRows {

QString cleanAddress(const QString &text)
{
    return text.startsWith(FavoriteMark) ? text.mid(FavoriteMark.size()) : text;
}

QString addressOf(const QListWidgetItem *row)
{
    return cleanAddress(row->text());
}

std::optional<QString> idOf(const QListWidgetItem *row)
{
    return ServerStore::idOfAddress(addressOf(row));
}

QStringList addresses(const QListWidget *list)
{
    QStringList all;
    for (int i = 0; i < list->count(); ++i)
        all.append(addressOf(list->item(i)));
    return all;
}

QListWidgetItem *findAddress(const QListWidget *list, const QString &address)
{
    return findRow(list, [&](const QListWidgetItem *row) { return addressOf(row) == address; });
}

QListWidgetItem *findId(const QListWidget *list, const QString &id)
{
    return findRow(list, [&](const QListWidgetItem *row) { return idOf(row) == id; });
}

void sort(QListWidget *list)
{
    std::optional<QString> currentId;
    if (const QListWidgetItem *row = list->currentItem())
        currentId = idOf(row);
    QList<QListWidgetItem *> rows;
    rows.reserve(list->count());
    while (list->count() > 0)
        rows.append(list->takeItem(0));
    std::sort(rows.begin(), rows.end(), isBefore);
    for (QListWidgetItem *row : std::as_const(rows))
        list->addItem(row);
    if (currentId) {
        if (QListWidgetItem *row = findId(list, *currentId))
            list->setCurrentItem(row);
    }
}

} // namespace ServerRows
