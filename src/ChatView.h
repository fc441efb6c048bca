#pragma once

#include "ChatTable.h"

#include <QBasicTimer>
#include <QHash>
#include <QPixmap>
#include <QTextBrowser>

#include <functional>

class ChatAccessibility;
class ChatLayout;

/// The view of one conversation. Its document holds a table made by `ChatTable`.
///
/// The view installs a `ChatLayout`, so that long conversations are as fast as short ones. Rows
/// that were never visible have an estimated height. The view lays out rows when they become
/// visible, and the others while the program is idle. Visible text does not move meanwhile. A view
/// that shows the end of the conversation stays there when its size or font changes.
///
/// The document must not be replaced.
class ChatView final : public QTextBrowser
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ChatView)

public:
    explicit ChatView(QWidget *parent = nullptr);

    /// Returns true while a screen reader's user has the caret in a row. The view must not move the
    /// caret then.
    [[nodiscard]] bool isBeingRead() const;

protected:
    /// Also used for the primary selection and for drags.
    [[nodiscard]] QMimeData *createMimeDataFromSelection() const override;
    void changeEvent(QEvent *event) override;
    /// Moves the focus between links. Starts at the last visible link, so that the view does not
    /// scroll away from the end of the conversation.
    bool focusNextPrevChild(bool next) override;
    /// Scrolls back to the end of the conversation if the view left it only to show links.
    void focusOutEvent(QFocusEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void scrollContentsBy(int dx, int dy) override;
    void showEvent(QShowEvent *event) override;
    void timerEvent(QTimerEvent *event) override;

private:
    enum class Edge { Top, Bottom };

    // The row at an edge of the viewport. Unlike the scroll bar's value, it stays valid when
    // heights of rows change.
    struct ScrollPosition
    {
        Edge edge = Edge::Top;
        int row = 0;
        // Pixels from the row's top edge down or, for Edge::Bottom, from its bottom edge up.
        int offset = 0;
    };

    [[nodiscard]] Edge fixedEdge() const;
    [[nodiscard]] ScrollPosition scrollPosition(Edge edge) const;
    [[nodiscard]] int scrollValue(const ScrollPosition &position) const;
    void keepScrollPosition(Edge edge, const std::function<void()> &changeHeights);
    bool measureVisibleRows(Edge edge);
    void startMeasuring(Edge edge);
    void measureWhenIdle();
    bool focusLink(bool next);
    // Document position of the last visible link; -1 if there is none.
    [[nodiscard]] int lastVisibleLink() const;
    [[nodiscard]] QBrush backgroundBrush() const;
    [[nodiscard]] bool hasPlainBackground() const;
    [[nodiscard]] QPixmap cachedBackground() const;
    [[nodiscard]] QPixmap renderBackground() const;
    void updateBackground();
    void paintBackground(const QRegion &region);

    ChatLayout *layout = nullptr;
    ChatAccessibility *accessibility = nullptr;
    QBasicTimer idleTimer;
    QString anchorUnderMouse;
    // The viewport's background, in its size. Null for a plain colour and if it is not opaque.
    QPixmap background;
    // The scroll bar follows changed heights; nothing on the screen may move.
    bool isAdjusting = false;
    // The view showed the end of the conversation when the first link got the focus, and the user
    // has not scrolled since.
    bool returnsToEnd = false;
};

/// Rows to append to their conversations when a read of the socket ends.
///
/// The rows of one conversation are appended in their order and in one edit block, since each edit
/// block takes time. The queue owns nothing: views and tables must outlive their queued rows.
class RowQueue final
{
public:
    /// Queues `row` for `table`, which `view` shows.
    void add(QTextBrowser &view, QTextTable &table, const ChatRow &row);

    /// Appends all queued rows. Scrolls each view that gets rows to its end, even if the user has
    /// scrolled back, but not a view that is being read with a screen reader.
    void flush();

private:
    struct Rows
    {
        QTextTable *table = nullptr;
        QList<ChatRow> rows;
    };
    QHash<QTextBrowser *, Rows> queued;
};
