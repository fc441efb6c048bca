#pragma once

#include "ChatTable.h"
#include "ChatView.h"

#include <QTextBrowser>
#include <QWidget>

#include <functional>

class ChatLayout;

/// A conversation in two views side by side: one with Qt's document layout, which is the reference,
/// and one with `ChatLayout`. Neither view has the focus.
class ViewPair final
{
    Q_DISABLE_COPY_MOVE(ViewPair)

public:
    /// Shows both views, empty.
    explicit ViewPair(QSize size, int columns = 3);

    void append(const QList<ChatRow> &rows);

    void applyToBoth(const std::function<void(QTextBrowser &)> &work);

    void resize(QSize size);

    /// Waits until `ChatLayout` has measured all rows. Returns false at the timeout.
    [[nodiscard]] bool measure() const;

    void scrollTo(int value);

    /// Compares the views, with their frames, painted with this device pixel ratio. Returns where
    /// they differ; empty if they are equal. The environment variable SAVE_DIFFERENCES names a
    /// folder for the images of different views.
    [[nodiscard]] QString difference(qreal ratio = 1);

    /// Compares the views at all scroll positions.
    [[nodiscard]] QString differenceAnywhere(qreal ratio = 1);

    [[nodiscard]] ChatLayout &layout() const;

    QWidget window;
    QTextBrowser stock;
    ChatView own;

private:
    QTextTable *stockTable = nullptr;
    QTextTable *ownTable = nullptr;
};
