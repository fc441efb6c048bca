#pragma once

#include <QBasicTimer>
#include <QObject>

class QTextDocument;

/// A change of a document that stays open for two seconds, so that everything which is added
/// meanwhile becomes part of it.
///
/// The document's own signals wait for its end. The document must outlive this object; a change
/// that is still open when this object goes is never ended.
class OpenChange final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(OpenChange)

public:
    explicit OpenChange(QTextDocument &changed);

    [[nodiscard]] bool isOpen() const { return timer.isActive(); }

    /// True for a change from the position `from` on that is part of the open one, also while the
    /// document tells of its end.
    [[nodiscard]] bool covers(int from) const { return start > 0 && from >= start; }

    /// Opens the change; it must not be open. What is added in it stands at the position `position`
    /// or below, which is above 0, and nothing before that changes.
    void begin(int position);

protected:
    void timerEvent(QTimerEvent *event) override;

private:
    QTextDocument &document;
    QBasicTimer timer;
    // 0 while no change is open.
    int start = 0;
};
