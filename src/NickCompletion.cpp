#include "NickCompletion.h"

#include "ChannelNames.h"
#include "PopupArea.h"
#include "TabNames.h"

#include <QAbstractItemView>
#include <QCompleter>
#include <QEvent>
#include <QLineEdit>
#include <QSignalBlocker>
#include <QStringListModel>

namespace {

// Highlights the row of `nick`. Signals are blocked because the line already contains the nick, and
// setting it again would move the cursor.
void highlight(QCompleter &completer, const QString &nick)
{
    const QAbstractItemModel *rows = completer.completionModel();
    const QModelIndexList found = rows->match(rows->index(0, 0), Qt::DisplayRole, nick, 1,
                                              Qt::MatchExactly | Qt::MatchCaseSensitive);
    const QSignalBlocker blocker(completer);
    if (!found.isEmpty())
        completer.popup()->setCurrentIndex(found.constFirst());
}

/// Shows a completer's popup above its line edit instead of below.
class PopupAboveLine final : public QObject
{
    Q_DISABLE_COPY_MOVE(PopupAboveLine)

public:
    /// `completer` becomes the parent.
    explicit PopupAboveLine(QCompleter &completer)
        : QObject(&completer)
        , owner(completer)
    {
        completer.popup()->installEventFilter(this);
    }

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        auto *popup = static_cast<QWidget *>(watched);
        if (event->type() == QEvent::Show) {
            const QPoint top = owner.widget()->mapToGlobal(QPoint());
            // Leaves the placement to Qt if there is too little space above the line.
            if (top.y() >= popup->height())
                popup->move(top.x(), top.y() - popup->height());
        } else if (event->type() == QEvent::Resize && popup->isVisible()) {
            // A Wayland popup can change its size, but not its position.
            popup->hide();
            popup->show();
        }
        return QObject::eventFilter(watched, event);
    }

private:
    const QCompleter &owner;
};

} // namespace

namespace NickCompletion {

QCompleter *create(QObject *parent)
{
    auto *completer = new QCompleter(parent);
    completer->setCaseSensitivity(Qt::CaseInsensitive);
    completer->setCompletionMode(QCompleter::PopupCompletion);
    // Works around QCompleter without global positions (Wayland): it always places the popup below
    // the line, and a compositor without space there moves it over the line.
    if (!PopupArea::hasGlobalPositions())
        new PopupAboveLine(*completer);
    return completer;
}

QStringList candidates(const Source &source)
{
    QStringList candidates;
    if (ChannelNames::isChannel(source.tabName))
        candidates = source.entries;
    else if (source.tabName != TabNames::Server)
        candidates.append(source.tabName);
    candidates.append(source.ownNick);
    candidates.removeDuplicates();
    return candidates;
}

void setCandidates(QCompleter &completer, const QStringList &candidates)
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
    // Highlighting a nick changes the line's text but not the completion prefix; typing changes
    // both.
    const bool readsNick = !line.isModified() && line.text() != completer.completionPrefix();
    return popup->currentIndex().isValid() || readsNick;
}

QString wordBeforeCursor(const QString &text, int cursor)
{
    // Intended: at cursor 0, lastIndexOf() searches from the end of the text and mid() gets a
    // negative length, which gives the last word.
    const qsizetype start = text.lastIndexOf(u' ', cursor - 1) + 1;
    return text.mid(start, cursor - start);
}

std::optional<QString> completionSuffix(const QString &word, const QStringList &candidates)
{
    for (const QString &candidate : candidates) {
        if (candidate.startsWith(word, Qt::CaseInsensitive))
            return candidate.sliced(word.size());
    }
    return std::nullopt;
}

} // namespace NickCompletion
