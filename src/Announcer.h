#pragma once

#include <QAccessible>
#include <QList>

class QString;
class QWidget;

/// Makes screen readers say texts that appear while the focus is in another widget.
///
/// Qt has an event for that since 6.8. Before that, each text becomes an accessible object with the
/// role of a notification, which stays long enough for a screen reader to ask for its name.
class Announcer final
{
    Q_DISABLE_COPY_MOVE(Announcer)

public:
    /// `widget`, in which the texts appear, must outlive the announcer.
    explicit Announcer(QWidget &widget);
    ~Announcer();

    void announce(const QString &text);

private:
    QWidget &shownIn;
    // Of the notifications, the oldest first; empty where Qt has the event.
    QList<QAccessible::Id> notifications;
};
