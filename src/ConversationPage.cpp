#include "ConversationPage.h"

#include "ChatView.h"
#include "FocusFrame.h"
#include "IconPixmap.h"
#include "IrcText.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QSvgRenderer>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {

constexpr int EditButtonSize = 24;

QIcon pencilIcon()
{
    QSvgRenderer renderer(
            R"(<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 24 24">)"
            R"(<path fill="#888888" d="M4 16.500V20h3.500L17.900 9.600l-3.500-3.500L4 16.500z)"
            R"(M20.700 6.800a1 1 0 0 0 0-1.400l-2.100-2.100a1 1 0 0 0-1.400 0l-1.700 1.700 3.500 3.500 1.700-1.700z"/>)"
            R"(</svg>)"_ba);
    QPixmap pixmap = IconPixmap::make(EditButtonSize);
    QPainter painter(&pixmap);
    renderer.render(&painter, QRectF(0, 0, EditButtonSize, EditButtonSize));
    return QIcon(pixmap);
}

QLabel *createTopicLabel()
{
    auto *label = new QLabel;
    label->setObjectName(u"topicLabel"_s);
    label->setTextFormat(Qt::RichText);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::LinksAccessibleByMouse);
    label->setWordWrap(true);
    label->setOpenExternalLinks(true);
    label->setAccessibleDescription(QLabel::tr("Topic"));
    label->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    // Otherwise the window could not become narrower than the topic's longest word.
    label->setMinimumWidth(1);
    return label;
}

QPushButton *createEditButton()
{
    auto *button = new QPushButton;
    button->setObjectName(u"editTopicBtn"_s);
    button->setFixedSize(EditButtonSize, EditButtonSize);
    button->setToolTip(QPushButton::tr("Edit topic"));
    button->setAccessibleName(button->toolTip());
    button->setStyleSheet(u"QPushButton { border: none; }"
                          "QPushButton:hover { background: rgba(128,128,128,0.2); "
                          "border-radius: 4px; }"_s);
    button->setIcon(pencilIcon());
    button->setIconSize(QSize(EditButtonSize, EditButtonSize));
    button->hide();
    return button;
}

QWidget *createTopicBar()
{
    auto *bar = new QWidget;
    bar->setObjectName(u"topicBar"_s);
    bar->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    auto *layout = new QHBoxLayout(bar);
    layout->setContentsMargins(4, 2, 4, 2);
    layout->setSpacing(4);
    layout->addWidget(createTopicLabel(), 1);
    layout->addWidget(createEditButton(), 0);
    return bar;
}

QTextBrowser *createChatView()
{
    auto *view = new ChatView;
    QPalette palette = view->palette();
    palette.setColor(QPalette::Base, Qt::white);
    palette.setColor(QPalette::Window, Qt::white);
    view->setPalette(palette);
    view->setAutoFillBackground(true);
    view->setReadOnly(true);
    FocusFrame::addTo(*view);
    view->setOpenExternalLinks(true);
    // Intended: a right click shows no menu, not even the standard one.
    view->setContextMenuPolicy(Qt::CustomContextMenu);
    QObject::connect(view, &QWidget::customContextMenuRequested, view, [] {});
    return view;
}

} // namespace

namespace ConversationPage {

QWidget *create(bool isChannel)
{
    auto *page = new QWidget;
    auto *layout = new QVBoxLayout(page);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    if (isChannel)
        layout->addWidget(createTopicBar(), 0);
    layout->addWidget(createChatView(), 1);
    return page;
}

void setName(const QWidget &page, const QString &name)
{
    if (auto *view = page.findChild<ChatView *>())
        view->setAccessibleName(QTextBrowser::tr("Conversation %1").arg(name));
}

void setTopic(QLabel &label, const QString &topic)
{
    // Without a name, screen readers read the text.
    label.setAccessibleName(topic.isEmpty() ? QLabel::tr("No topic") : QString());
    if (topic.isEmpty())
        label.clear();
    else
        label.setText(IrcText::toHtml(topic));
}

} // namespace ConversationPage
