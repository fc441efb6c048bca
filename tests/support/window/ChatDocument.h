#pragma once

#include <QString>

class ChatLayout;
class QTextBrowser;
class QTextTable;

/// Helpers for the document of a conversation.
namespace ChatDocument {

[[nodiscard]] QString cellText(const QTextTable &table, int row, int column);

/// Returns the layout of the view's document, which must be a `ChatLayout`.
[[nodiscard]] ChatLayout &layoutOf(const QTextBrowser &view);

/// Moves the cursor to the end of the document and scrolls to it.
void scrollToEnd(QTextBrowser &view);

} // namespace ChatDocument
