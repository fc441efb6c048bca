#pragma once

class QString;
class QWidget;

/// The page that a conversation's tab shows.
namespace ConversationPage {

/// Makes a page with its conversation view, a `QTextBrowser`, and over it, for a channel, the
/// topic's bar with its children "topicBar", "topicLabel" and "editTopicBtn".
///
/// The page has no parent: the caller owns it until it is put into a tab widget.
QWidget *create(bool isChannel);

/// Sets the name that screen readers say for the conversation of `page`; a page without one, as of
/// the channel list, is left alone.
void setName(const QWidget &page, const QString &name);

} // namespace ConversationPage
