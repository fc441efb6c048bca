#pragma once

#include <QBasicTimer>
#include <QObject>

class QTextDocument;

/// An edit block of a document that ends by itself after two seconds.
///
/// Everything that is added meanwhile becomes part of the edit block, so the document emits its own
/// signals only once, at the end. The document must outlive this object; an edit block that is
/// still open when this object is destroyed is never ended.
class DeferredEditBlock final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(DeferredEditBlock)

public:
    explicit DeferredEditBlock(QTextDocument &editedDocument);

    [[nodiscard]] bool isOpen() const { return timer.isActive(); }

    /// Returns true if a change at the position `from` belongs to the open edit block. This is also
    /// true while the document emits the signals at the end of the block.
    [[nodiscard]] bool covers(int from) const { return start > 0 && from >= start; }

    /// Opens the edit block, which must not be open. `position` must be above 0, and while the
    /// block is open, text must only be added at or after `position`.
    void begin(int position);

protected:
    void timerEvent(QTimerEvent *event) override;

private:
    QTextDocument &document;
    QBasicTimer timer;
    // Position given to begin(); 0 while no edit block is open.
    int start = 0;
};
