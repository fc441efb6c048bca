#pragma once

#include "ChatTable.h"
#include "ChatView.h"

#include <QTextBrowser>
#include <QWidget>

#include <functional>

class ChatLayout;

/// A conversation shown twice side by side: in a view with Qt's own document layout, which is what
/// it should look like, and in ours. Neither view has the focus.
class ViewPair final
{
    Q_DISABLE_COPY_MOVE(ViewPair)

public:
    /// Both views are on show, without a line.
    explicit ViewPair(QSize size, int columns = 3);

    void append(const QList<ChatRow> &rows);

    /// Does the same to both.
    void applyToBoth(const std::function<void(QTextBrowser &)> &work);

    void resize(QSize size);

    /// Waits until our layout has measured every row. False if that takes too long.
    [[nodiscard]] bool measure() const;

    /// Moves both scroll bars.
    void scrollTo(int value);

    /// Empty if both look the same when painted at `ratio` device pixels per pixel, frames
    /// included; otherwise where they differ. With SAVE_DIFFERENCES set to a folder,
    /// the pictures are left there.
    [[nodiscard]] QString difference(qreal ratio = 1);

    /// The same at all heights of the conversation.
    [[nodiscard]] QString differenceAnywhere(qreal ratio = 1);

    [[nodiscard]] ChatLayout &layout() const;

    QWidget window;
    QTextBrowser stock;
    ChatView own;

private:
    QTextTable *stockTable = nullptr;
    QTextTable *ownTable = nullptr;
};
