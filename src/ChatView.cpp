#include "ChatView.h"

ChatView::ChatView(QWidget *parent)
    : QTextBrowser(parent)
{
}
