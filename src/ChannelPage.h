#pragma once

class QWidget;

/// The page that a conversation's tab shows.
namespace ChannelPage {

/// Makes a page with its conversation view, a `QTextBrowser`, and over it, for a channel, the
/// topic's bar with its children "topicBar", "topicLabel" and "editTopicBtn".
///
/// The page has no parent: the caller owns it until it is put into a tab widget.
QWidget *create(bool isChannel);

} // namespace ChannelPage
