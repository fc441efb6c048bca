#include "NickCompletion.h"

#include "TabNames.h"

#include <QAbstractItemView>
#include <QCompleter>
#include <QLineEdit>
#include <QSignalBlocker>
#include <QStringListModel>

namespace {

// The line reads the nick already; without the signals its cursor stays where it is.
void highlight(QCompleter &completer, const QString &nick)
{
    const QAbstractItemModel *rows = completer.completionModel();
    const QModelIndexList found = rows->match(rows->index(0, 0), Qt::DisplayRole, nick, 1,
                                              Qt::MatchExactly | Qt::MatchCaseSensitive);
    const QSignalBlocker blocker(completer);
    if (!found.isEmpty())
        completer.popup()->setCurrentIndex(found.constFirst());
}

} // namespace

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
    if (model->stringList() == candidates)
        return;
    const QModelIndex current = completer.popup()->currentIndex();
    const QString nick = current.data().toString();
    const bool wasHighlighted = current.isValid();
    model->setStringList(candidates);
    if (wasHighlighted)
        highlight(completer, nick);
}

bool hasChosenNick(QCompleter &completer, const QLineEdit &line)
{
    const QAbstractItemView *popup = completer.popup();
    if (!popup->isVisible())
        return false;
    // A highlighted nick replaces the line's text but not the prefix, and typing ends that.
    const bool readsNick = !line.isModified() && line.text() != completer.completionPrefix();
    return popup->currentIndex().isValid() || readsNick;
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
