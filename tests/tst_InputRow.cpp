#include "InputRow.h"

#include <QClipboard>
#include <QDropEvent>
#include <QGuiApplication>
#include <QInputMethodEvent>
#include <QLineEdit>
#include <QMimeData>
#include <QPushButton>
#include <QStackedWidget>
#include <QTest>

#include <functional>
#include <memory>

using namespace Qt::StringLiterals;

namespace {

using Insertion = std::function<void(QLineEdit &, const QString &)>;

void paste(QLineEdit &line, const QString &text)
{
    QGuiApplication::clipboard()->setText(text);
    QTest::keySequence(&line, QKeySequence::Paste);
}

void drop(QLineEdit &line, const QString &text)
{
    QMimeData data;
    data.setText(text);
    const QRect cursor = line.inputMethodQuery(Qt::ImCursorRectangle).toRect();
    QDragEnterEvent enter(cursor.center(), Qt::CopyAction, &data, Qt::LeftButton, {});
    QCoreApplication::sendEvent(&line, &enter);
    QDropEvent event(cursor.center(), Qt::CopyAction, &data, Qt::LeftButton, {});
    QCoreApplication::sendEvent(&line, &event);
}

void commit(QLineEdit &line, const QString &text)
{
    QInputMethodEvent event;
    event.setCommitString(text);
    QCoreApplication::sendEvent(&line, &event);
}

} // namespace

class TestInputRow final : public QObject
{
    Q_OBJECT

private slots:
    void createsTheWidgets();
    void showsThePageOfATab_data();
    void showsThePageOfATab();
    void replacesLineBreaks_data();
    void replacesLineBreaks();
};

void TestInputRow::createsTheWidgets()
{
    const InputRow row = InputRow::create();
    const std::unique_ptr<QStackedWidget> stack(row.stack);
    QCOMPARE(stack->parentWidget(), nullptr);
    QCOMPARE(stack->maximumHeight(), 40);
    QCOMPARE(stack->count(), 2);
    QVERIFY(stack->widget(0)->isAncestorOf(row.line));
    QVERIFY(stack->widget(0)->isAncestorOf(row.emojiButton));
    QVERIFY(row.emojiButton->isHidden());
    QCOMPARE(stack->widget(1), row.listSearch);
    QCOMPARE(stack->currentIndex(), 0);
    QCOMPARE(row.line->placeholderText(), u"Type a message..."_s);
    QCOMPARE(row.listSearch->placeholderText(), u"Search channels..."_s);
}

void TestInputRow::showsThePageOfATab_data()
{
    QTest::addColumn<QString>("tab");
    QTest::addColumn<int>("page");
    QTest::addColumn<QString>("placeholder");

    const auto message = u"Type a message..."_s;
    QTest::newRow("server") << u"Server"_s << 0 << u"Type a command..."_s;
    QTest::newRow("list") << u"List"_s << 1 << message;
    QTest::newRow("channel") << u"#a"_s << 0 << message;
    QTest::newRow("conversation") << u"bob"_s << 0 << message;
    QTest::newRow("server in another case") << u"SERVER"_s << 0 << message;
}

void TestInputRow::showsThePageOfATab()
{
    QFETCH(const QString, tab);
    const std::unique_ptr<QStackedWidget> stack(InputRow::create().stack);
    for (const int before : {0, 1}) {
        stack->setCurrentIndex(before);
        InputRow::showPageFor(tab, *stack);
        QTEST(stack->currentIndex(), "page");
    }
    QTEST(InputRow::placeholderFor(tab), "placeholder");
}

void TestInputRow::replacesLineBreaks_data()
{
    QTest::addColumn<Insertion>("insert");

    QTest::newRow("pasted") << Insertion(paste);
    QTest::newRow("dropped") << Insertion(drop);
    QTest::newRow("from an input method") << Insertion(commit);
}

void TestInputRow::replacesLineBreaks()
{
    QFETCH(const Insertion, insert);
    const InputRow row = InputRow::create();
    const std::unique_ptr<QStackedWidget> stack(row.stack);
    stack->show();
    row.line->setText(u"before after"_s);
    row.line->setCursorPosition(7);
    insert(*row.line, u"one\r\nQUIT :x\u2028"_s);
    QCOMPARE(row.line->text(), u"before one QUIT :x after"_s);
    QCOMPARE(row.line->cursorPosition(), 19);
}

QTEST_MAIN(TestInputRow)
#include "tst_InputRow.moc"
