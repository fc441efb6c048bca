#include "Announcer.h"

#include <QString>
#include <QWidget>

namespace {

#if QT_VERSION < QT_VERSION_CHECK(6, 8, 0)
constexpr qsizetype KeptNotifications = 100;

class Notification final : public QAccessibleInterface
{
    Q_DISABLE_COPY_MOVE(Notification)

public:
    Notification(QWidget &textWidget, const QString &announcedText)
        : widget(textWidget)
        , name(announcedText)
    {
    }

    [[nodiscard]] bool isValid() const override { return true; }
    [[nodiscard]] QObject *object() const override { return nullptr; }
    [[nodiscard]] QWindow *window() const override { return parent()->window(); }
    [[nodiscard]] QAccessibleInterface *parent() const override
    {
        return QAccessible::queryAccessibleInterface(&widget);
    }
    [[nodiscard]] QAccessibleInterface *child(int) const override { return nullptr; }
    [[nodiscard]] QAccessibleInterface *childAt(int, int) const override { return nullptr; }
    [[nodiscard]] int childCount() const override { return 0; }
    [[nodiscard]] int indexOfChild(const QAccessibleInterface *) const override { return -1; }
    [[nodiscard]] QString text(QAccessible::Text type) const override
    {
        return type == QAccessible::Name ? name : QString();
    }
    void setText(QAccessible::Text, const QString &) override {}
    [[nodiscard]] QRect rect() const override { return {}; }
    [[nodiscard]] QAccessible::Role role() const override { return QAccessible::Notification; }
    [[nodiscard]] QAccessible::State state() const override { return {}; }

private:
    QWidget &widget;
    const QString name;
};
#endif

} // namespace

Announcer::Announcer(QWidget &textWidget)
    : widget(textWidget)
{
}

Announcer::~Announcer()
{
    for (const QAccessible::Id id : std::as_const(notifications))
        QAccessible::deleteAccessibleInterface(id);
}

void Announcer::announce(const QString &text)
{
#if QT_VERSION >= QT_VERSION_CHECK(6, 8, 0)
    QAccessibleAnnouncementEvent event(&widget, text);
#else
    auto *notification = new Notification(widget, text);
    notifications.append(QAccessible::registerAccessibleInterface(notification));
    if (notifications.size() > KeptNotifications)
        QAccessible::deleteAccessibleInterface(notifications.takeFirst());
    QAccessibleEvent event(notification, QAccessible::ObjectShow);
#endif
    QAccessible::updateAccessibility(&event);
}
