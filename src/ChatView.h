#pragma once

#include <QTextBrowser>

/// The view of one conversation, whose document holds a table made by `ChatTable`.
class ChatView final : public QTextBrowser
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ChatView)

public:
    explicit ChatView(QWidget *parent = nullptr);
};
