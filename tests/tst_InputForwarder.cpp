#include "InputForwarder.h"
#include "Waiting.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QLineEdit>
#include <QTest>
#include <QTextBrowser>
#include <QVBoxLayout>

#include <utility>

using namespace Qt::StringLiterals;

namespace {

using Key = std::pair<Qt::Key, Qt::KeyboardModifiers>;

struct Window
{
    Window()
    {
        auto *layout = new QVBoxLayout(&widget);
        layout->addWidget(view);
        layout->addWidget(line);
        new InputForwarder(*view, *line);
        line->setText(u"before after"_s);
        line->setCursorPosition(7);
        QGuiApplication::clipboard()->setText(u"pasted "_s);
    }

    [[nodiscard]] bool show()
    {
        widget.show();
        widget.activateWindow();
        view->setFocus();
        return QTest::qWaitForWindowActive(&widget, WaitTimeout);
    }

    QWidget widget;
    QTextBrowser *view = new QTextBrowser;
    QLineEdit *line = new QLineEdit;
};

} // namespace

class TestInputForwarder final : public QObject
{
    Q_OBJECT

private slots:
    void forwardsInput_data();
    void forwardsInput();
    void ignoresOtherKeys_data();
    void ignoresOtherKeys();
    void ignoresKeysWhileTheLineIsHidden();
};

void TestInputForwarder::forwardsInput_data()
{
    QTest::addColumn<Key>("key");
    QTest::addColumn<QString>("expected");

    QTest::newRow("letter") << Key(Qt::Key_A, Qt::NoModifier) << u"before aafter"_s;
    QTest::newRow("slash") << Key(Qt::Key_Slash, Qt::NoModifier) << u"before /after"_s;
    QTest::newRow("space") << Key(Qt::Key_Space, Qt::NoModifier) << u"before  after"_s;
    QTest::newRow("keypad") << Key(Qt::Key_1, Qt::KeypadModifier) << u"before 1after"_s;
    QTest::newRow("Ctrl+V") << Key(Qt::Key_V, Qt::ControlModifier) << u"before pasted after"_s;
    QTest::newRow("Shift+Insert") << Key(Qt::Key_Insert, Qt::ShiftModifier)
                                  << u"before pasted after"_s;
}

void TestInputForwarder::forwardsInput()
{
    QFETCH(const Key, key);
    Window window;
    QVERIFY(window.show());
    QTest::keyClick(window.view, key.first, key.second);
    QTEST(window.line->text(), "expected");
    QVERIFY(window.line->hasFocus());
    QVERIFY(!window.line->hasSelectedText());
}

void TestInputForwarder::ignoresOtherKeys_data()
{
    QTest::addColumn<Key>("key");

    QTest::newRow("Return") << Key(Qt::Key_Return, Qt::NoModifier);
    QTest::newRow("Backspace") << Key(Qt::Key_Backspace, Qt::NoModifier);
    QTest::newRow("Escape") << Key(Qt::Key_Escape, Qt::NoModifier);
    QTest::newRow("Page Up") << Key(Qt::Key_PageUp, Qt::NoModifier);
    QTest::newRow("Shift alone") << Key(Qt::Key_Shift, Qt::ShiftModifier);
    QTest::newRow("Ctrl+C") << Key(Qt::Key_C, Qt::ControlModifier);
    QTest::newRow("Alt+X") << Key(Qt::Key_X, Qt::AltModifier);
    QTest::newRow("Meta+X") << Key(Qt::Key_X, Qt::MetaModifier);
}

void TestInputForwarder::ignoresOtherKeys()
{
    QFETCH(const Key, key);
    Window window;
    QVERIFY(window.show());
    QTest::keyClick(window.view, key.first, key.second);
    QCOMPARE(window.line->text(), u"before after"_s);
    QVERIFY(window.view->hasFocus());
}

void TestInputForwarder::ignoresKeysWhileTheLineIsHidden()
{
    Window window;
    window.line->hide();
    QVERIFY(window.show());
    QTest::keyClick(window.view, Qt::Key_A);
    QCOMPARE(window.line->text(), u"before after"_s);
    QVERIFY(window.view->hasFocus());
}

QTEST_MAIN(TestInputForwarder)

#include "tst_InputForwarder.moc"
