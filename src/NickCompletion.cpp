#include "NickCompletion.h"

#include "TabNames.h"

#include <QCompleter>
#include <QStringListModel>

namespace NickCompletion {

QCompleter *create(QObject *parent)
{
    auto *completer = new QCompleter(parent);
    completer->setCaseSensitivity(Qt::CaseInsensitive);
    completer->setCompletionMode(QCompleter::PopupCompletion);
    return completer;
}

QStringList candidates(const Source &source)
{
    QStringList candidates;
    if (TabNames::isChannel(source.tabName))
        candidates = source.entries;
    else if (source.tabName != TabNames::Server)
        candidates.append(source.tabName);
    candidates.append(source.ownNick);
    candidates.removeDuplicates();
    return candidates;
}

void offer(QCompleter &completer, const QStringList &candidates)
{
    auto *model = qobject_cast<QStringListModel *>(completer.model());
    if (!model) {
        model = new QStringListModel(&completer);
        completer.setModel(model);
    }
    model->setStringList(candidates);
}

QString wordAt(const QString &text, int cursor)
{
    // With the cursor at the start this looks from the end of the text, and the length that
    // follows is negative: the word is then the last one.
    const qsizetype start = text.lastIndexOf(u' ', cursor - 1) + 1;
    return text.mid(start, cursor - start);
}

std::optional<QString> restOf(const QString &word, const QStringList &candidates)
{
    for (const QString &candidate : candidates) {
        if (candidate.startsWith(word, Qt::CaseInsensitive))
            return candidate.sliced(word.size());
    }
    return std::nullopt;
}

} // namespace NickCompletion
