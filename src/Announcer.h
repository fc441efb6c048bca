#pragma once

#include <QAccessible>
#include <QList>

class QString;
class QWidget;

/// Lets screen readers announce texts that appear while another widget has the focus.
///
/// Since Qt 6.8 there is an event for that. For older versions, each text becomes an accessible
/// object with the role `Notification`, which is kept until a screen reader has read its name.
class Announcer final
{
    Q_DISABLE_COPY_MOVE(Announcer)

public:
    /// `textWidget` shows the texts and must outlive this object.
    explicit Announcer(QWidget &textWidget);
    ~Announcer();

    void announce(const QString &text);

private:
    QWidget &widget;
    // The oldest first. Empty since Qt 6.8.
    QList<QAccessible::Id> notifications;
};
