#pragma once

#include <QScrollBar>

/// A scroll bar that paints itself only when its handle has moved or changed by a pixel.
///
/// Each new line of a conversation changes the range and the value, but in a long conversation the
/// handle stays where it was, and painting it would cost more than painting the line.
class ChatScrollBar final : public QScrollBar
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ChatScrollBar)

public:
    using QScrollBar::QScrollBar;

protected:
    void paintEvent(QPaintEvent *event) override;
    void sliderChange(SliderChange change) override;

private:
    [[nodiscard]] QRect handle() const;

    QRect paintedHandle;
};
