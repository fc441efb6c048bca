#include "ConversationPage.h"
#include "ModalAnswers.h"
#include "TemporaryStore.h"
#include "WindowSession.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QTextBrowser>

#include <memory>

using namespace Qt::StringLiterals;

class TestConversationPage final : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void createsAPageWithoutATopicBar();
    void createsAPageWithATopicBar();
    void createsTheTopicLabel();
    void createsTheEditButton();
    void drawsAPencil();
    void createsTheConversationView();
    void showsNoContextMenu();

private:
    TemporaryStore store;
};

void TestConversationPage::init()
{
    store.clear();
}

void TestConversationPage::createsAPageWithoutATopicBar()
{
    const std::unique_ptr<QWidget> page(ConversationPage::create(false));
    QCOMPARE(page->parentWidget(), nullptr);
    const auto *layout = qobject_cast<QVBoxLayout *>(page->layout());
    QVERIFY(layout != nullptr);
    QCOMPARE(layout->contentsMargins(), QMargins());
    QCOMPARE(layout->spacing(), 0);
    QCOMPARE(layout->count(), 1);
    QCOMPARE(layout->itemAt(0)->widget(), page->findChild<QTextBrowser *>());
    QCOMPARE(layout->stretch(0), 1);
    QCOMPARE(page->findChild<QWidget *>(u"topicBar"_s), nullptr);
}

void TestConversationPage::createsAPageWithATopicBar()
{
    const std::unique_ptr<QWidget> page(ConversationPage::create(true));
    QCOMPARE(page->parentWidget(), nullptr);
    const auto *layout = qobject_cast<QVBoxLayout *>(page->layout());
    QVERIFY(layout != nullptr);
    QCOMPARE(layout->count(), 2);
    QWidget *bar = layout->itemAt(0)->widget();
    QCOMPARE(bar->objectName(), u"topicBar"_s);
    QCOMPARE(layout->stretch(0), 0);
    QCOMPARE(layout->itemAt(1)->widget(), page->findChild<QTextBrowser *>());
    QCOMPARE(layout->stretch(1), 1);

    QVERIFY(!bar->isHidden());
    QCOMPARE(bar->sizePolicy().horizontalPolicy(), QSizePolicy::Expanding);
    QCOMPARE(bar->sizePolicy().verticalPolicy(), QSizePolicy::Preferred);
    const auto *barLayout = qobject_cast<QHBoxLayout *>(bar->layout());
    QVERIFY(barLayout != nullptr);
    QCOMPARE(barLayout->contentsMargins(), QMargins(4, 2, 4, 2));
    QCOMPARE(barLayout->spacing(), 4);
    QCOMPARE(barLayout->count(), 2);
    QCOMPARE(barLayout->itemAt(0)->widget()->objectName(), u"topicLabel"_s);
    QCOMPARE(barLayout->stretch(0), 1);
    QCOMPARE(barLayout->itemAt(1)->widget()->objectName(), u"editTopicBtn"_s);
    QCOMPARE(barLayout->stretch(1), 0);
}

void TestConversationPage::createsTheTopicLabel()
{
    const std::unique_ptr<QWidget> page(ConversationPage::create(true));
    const auto *label = page->findChild<QLabel *>(u"topicLabel"_s);
    QVERIFY(label != nullptr);
    QCOMPARE(label->text(), QString());
    QCOMPARE(label->textFormat(), Qt::RichText);
    QCOMPARE(label->textInteractionFlags(), Qt::TextSelectableByMouse | Qt::LinksAccessibleByMouse);
    QVERIFY(label->wordWrap());
    QVERIFY(label->openExternalLinks());
    QCOMPARE(label->sizePolicy().horizontalPolicy(), QSizePolicy::Expanding);
    QCOMPARE(label->sizePolicy().verticalPolicy(), QSizePolicy::Preferred);
}

void TestConversationPage::createsTheEditButton()
{
    const std::unique_ptr<QWidget> page(ConversationPage::create(true));
    const auto *button = page->findChild<QPushButton *>(u"editTopicBtn"_s);
    QVERIFY(button != nullptr);
    QCOMPARE(button->minimumSize(), QSize(24, 24));
    QCOMPARE(button->maximumSize(), QSize(24, 24));
    QCOMPARE(button->toolTip(), u"Edit topic"_s);
    QVERIFY(button->isHidden());
    QCOMPARE(button->styleSheet(), u"QPushButton { border: none; }QPushButton:hover { background: "
                                   "rgba(128,128,128,0.2); border-radius: 4px; }"_s);
    QCOMPARE(button->iconSize(), QSize(24, 24));
}

void TestConversationPage::drawsAPencil()
{
    const std::unique_ptr<QWidget> page(ConversationPage::create(true));
    const auto *button = page->findChild<QPushButton *>(u"editTopicBtn"_s);
    QCOMPARE(button->icon().availableSizes(), QList<QSize>{QSize(24, 24)});
    const QImage image = button->icon().pixmap(24, 24).toImage();
    QCOMPARE(image.size(), QSize(24, 24));
    int drawn = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            drawn += qAlpha(image.pixel(x, y)) > 128 ? 1 : 0;
    }
    // Some pixels are the pencil's, and most are transparent.
    QVERIFY(drawn > 24);
    QVERIFY(drawn < 24 * 24 / 2);
    QCOMPARE(qAlpha(image.pixel(0, 0)), 0);
}

void TestConversationPage::createsTheConversationView()
{
    const std::unique_ptr<QWidget> page(ConversationPage::create(false));
    const auto *view = page->findChild<QTextBrowser *>();
    QVERIFY(view != nullptr);
    QCOMPARE(view->palette().color(QPalette::Base), QColor(Qt::white));
    QCOMPARE(view->palette().color(QPalette::Window), QColor(Qt::white));
    QVERIFY(view->autoFillBackground());
    QVERIFY(view->isReadOnly());
    QVERIFY(view->openExternalLinks());
    QCOMPARE(view->contextMenuPolicy(), Qt::CustomContextMenu);
}

void TestConversationPage::showsNoContextMenu()
{
    WindowSession session;
    session.probe.openTabs({u"#c"_s});
    const ModalAnswers answers;
    QTextBrowser *view = session.probe.tabs().value(u"#c"_s).chatView;
    QSignalSpy menuRequested(view, &QWidget::customContextMenuRequested);
    for (QWidget *target : {static_cast<QWidget *>(view), view->viewport()}) {
        const QPoint middle = target->rect().center();
        QContextMenuEvent event(QContextMenuEvent::Mouse, middle, target->mapToGlobal(middle));
        QApplication::sendEvent(target, &event);
    }
    QCoreApplication::processEvents();
    QVERIFY(!menuRequested.isEmpty());
    QCOMPARE(QApplication::activePopupWidget(), nullptr);
    QCOMPARE(answers.problems(), QStringList());
}

QTEST_MAIN(TestConversationPage)
#include "tst_ConversationPage.moc"
