#pragma once

#include <QBasicTimer>
#include <QPixmap>
#include <QTextBrowser>

#include <functional>

class ChatAccessibility;
class ChatLayout;

/// The view of one conversation, a document that holds a table made by `ChatTable`.
///
/// The document gets a `ChatLayout`, so that long conversations stay as quick as short ones. Rows
/// that nobody has seen yet have an estimated height; the view lays out what comes into sight
/// before it is painted, and the rest in its idle time. The text in sight stays where it is
/// meanwhile, and a view that shows the end of the conversation goes on showing it when its size or
/// font changes.
///
/// The document is the view's own from the start and must not be replaced.
class ChatView final : public QTextBrowser
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ChatView)

public:
    explicit ChatView(QWidget *parent = nullptr);

    /// True while a user of a screen reader has the caret at a row, so that the view should not
    /// move it to the end.
    [[nodiscard]] bool isBeingRead() const;

protected:
    /// Also of the primary selection and of drags.
    [[nodiscard]] QMimeData *createMimeDataFromSelection() const override;
    void changeEvent(QEvent *event) override;
    /// Moves the focus between links. The first one is the last that is visible, so that the view
    /// does not scroll away from the end of the conversation.
    bool focusNextPrevChild(bool next) override;
    /// Returns to the end of the conversation if only the links have scrolled the view from there.
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

    // Where an edge of the viewport lies within the conversation, whatever the heights of the rows.
    struct Place
    {
        Edge edge = Edge::Top;
        int row = 0;
        // From the row's top, or from its bottom up, in pixels.
        int offset = 0;
    };

    [[nodiscard]] Edge steadyEdge() const;
    [[nodiscard]] Place place(Edge edge) const;
    [[nodiscard]] int scrollValue(const Place &place) const;
    void keepPlace(Edge edge, const std::function<void()> &work);
    bool settle(Edge edge);
    void startMeasuring(Edge edge);
    void measureLater();
    bool focusLink(bool next);
    // Position of the last link that is visible; -1 if there is none.
    [[nodiscard]] int lastVisibleLink() const;
    [[nodiscard]] QBrush backgroundBrush() const;
    [[nodiscard]] bool hasPlainGround() const;
    [[nodiscard]] QPixmap foundOrPaintedGround() const;
    [[nodiscard]] QPixmap paintedGround() const;
    void coverGround();
    void paintGround(const QRegion &region);

    ChatLayout *layout = nullptr;
    ChatAccessibility *accessibility = nullptr;
    QBasicTimer idleTimer;
    QString anchorUnderMouse;
    // What lies behind the text, of the viewport's size, where it is more than one colour; else
    // null.
    QPixmap ground;
    // The scroll bar follows heights that have changed: the picture stays as it is.
    bool isAdjusting = false;
    // The view showed the end of the conversation when the focus went to the first link, and the
    // user has not scrolled since.
    bool returnsToEnd = false;
};
