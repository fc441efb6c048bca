#pragma once

class QLabel;
class QString;
class QWidget;

/// Tab pages of conversations.
namespace ConversationPage {

/// Creates a page with a conversation view, a `QTextBrowser`. A channel's page also has the widget
/// "topicBar" above it, with the children "topicLabel" and "editTopicBtn".
///
/// The page has no parent: the caller owns it until it is added to a tab widget.
QWidget *create(bool isChannel);

/// Sets the accessible name of the conversation view in `page`. Does nothing if `page` has none,
/// such as the page of the channel list.
void setName(const QWidget &page, const QString &name);

/// Shows `topic` with its format codes in `label`, a "topicLabel".
void setTopic(QLabel &label, const QString &topic);

} // namespace ConversationPage
