#pragma once

#include <QObject>

class QLineEdit;
class QWidget;

/// Forwards text that is typed or pasted into a conversation to the input line, which gets the
/// focus.
class InputForwarder final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(InputForwarder)

public:
    /// Becomes a child of `source`. `inputLine` must outlive it. While `inputLine` is hidden,
    /// nothing is forwarded.
    InputForwarder(QWidget &source, QLineEdit &inputLine);

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QLineEdit &line;
};
