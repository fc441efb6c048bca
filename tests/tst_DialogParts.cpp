#include "DialogParts.h"
#include "FocusFrame.h"
#include "Waiting.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QMenu>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <QVBoxLayout>
#include <QWindow>

#include <memory>

using namespace Qt::StringLiterals;

class TestDialogParts final : public QObject
{
    Q_OBJECT

private slots:
    void frameHasTitleAndCloseButton();
    void namesButtons();
    void namesSaveAndCancel();
    void consumesTheKeyThatClosesAList_data();
    void consumesTheKeyThatClosesAList();
    void buttonsEndTheDialog_data();
    void buttonsEndTheDialog();
    void detachesNestedWindow_data();
    void detachesNestedWindow();
    void keepsChildWidgets();
};

void TestDialogParts::frameHasTitleAndCloseButton()
{
    const Qt::WindowFlags frame = DialogParts::Frame;
    QCOMPARE(frame & Qt::WindowType_Mask, Qt::WindowFlags(Qt::Dialog));
    QCOMPARE(frame & ~Qt::WindowType_Mask,
             Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint);
}

void TestDialogParts::namesButtons()
{
    const std::unique_ptr<QPushButton> button(DialogParts::makeButton(u"Add"_s, u"addButton"_s));
    QCOMPARE(button->text(), u"Add"_s);
    QCOMPARE(button->objectName(), u"addButton"_s);
    QVERIFY(!button->isDefault());
}

void TestDialogParts::namesSaveAndCancel()
{
    QDialog dialog;
    const std::unique_ptr<QDialogButtonBox> box(DialogParts::makeSaveAndCancel(dialog));
    QCOMPARE(box->standardButtons(), QDialogButtonBox::Save | QDialogButtonBox::Cancel);
    const QPushButton *save = box->button(QDialogButtonBox::Save);
    const QPushButton *cancel = box->button(QDialogButtonBox::Cancel);
    QCOMPARE(save->objectName(), u"connectButton"_s);
    QCOMPARE(cancel->objectName(), u"cancelButton"_s);
    // The white frame is visible only on a button with the accent colour.
    QVERIFY(save->findChild<FocusFrame *>() != nullptr);
    QVERIFY(cancel->findChild<FocusFrame *>() == nullptr);
}

void TestDialogParts::consumesTheKeyThatClosesAList_data()
{
    QTest::addColumn<Qt::Key>("key");

    QTest::newRow("Escape") << Qt::Key_Escape;
    QTest::newRow("Return") << Qt::Key_Return;
    QTest::newRow("Enter") << Qt::Key_Enter;
}

void TestDialogParts::consumesTheKeyThatClosesAList()
{
    QFETCH(const Qt::Key, key);
    QDialog dialog;
    auto *layout = new QVBoxLayout(&dialog);
    QComboBox *combo = DialogParts::makeCombo({u"one"_s, u"two"_s}, u"combo"_s);
    layout->addWidget(combo);
    layout->addWidget(DialogParts::makeSaveAndCancel(dialog));
    dialog.show();
    QVERIFY(QTest::qWaitForWindowActive(&dialog, WaitTimeout));
    combo->setFocus();
    combo->showPopup();
    QVERIFY(combo->view()->isVisible());
    // Wayland sends keys to the dialog's window even while a list is open.
    QTest::keyClick(dialog.windowHandle(), key);
    QVERIFY(!combo->view()->isVisible());
    QVERIFY(dialog.isVisible());
    QTest::keyClick(dialog.windowHandle(), key);
    QVERIFY(!dialog.isVisible());
}

void TestDialogParts::buttonsEndTheDialog_data()
{
    QTest::addColumn<QDialogButtonBox::StandardButton>("button");
    QTest::addColumn<int>("result");

    QTest::newRow("save") << QDialogButtonBox::Save << int(QDialog::Accepted);
    QTest::newRow("cancel") << QDialogButtonBox::Cancel << int(QDialog::Rejected);
}

void TestDialogParts::buttonsEndTheDialog()
{
    QFETCH(const QDialogButtonBox::StandardButton, button);
    QDialog dialog;
    auto *layout = new QVBoxLayout(&dialog);
    QDialogButtonBox *box = DialogParts::makeSaveAndCancel(dialog);
    layout->addWidget(box);
    int result = -1;
    connect(&dialog, &QDialog::finished, this, [&result](int code) { result = code; });
    dialog.show();
    box->button(button)->click();
    QVERIFY(dialog.isHidden());
    QTEST(result, "result");
}

void TestDialogParts::detachesNestedWindow_data()
{
    QTest::addColumn<bool>("isMenu");

    QTest::newRow("dialog") << false;
    QTest::newRow("menu") << true;
}

void TestDialogParts::detachesNestedWindow()
{
    QFETCH(const bool, isMenu);
    auto parent = std::make_unique<QWidget>();
    // On the stack, like the callers' windows: deleting them with the parent would crash.
    QDialog dialog(parent.get());
    QMenu menu(parent.get());
    menu.addAction(u"Edit"_s);
    QTimer::singleShot(0, this, [&parent] {
        DialogParts::detachNestedWindows(*parent);
        parent.reset();
    });
    if (isMenu)
        QVERIFY(menu.exec(QPoint(0, 0)) == nullptr);
    else
        QCOMPARE(dialog.exec(), int(QDialog::Rejected));
    QVERIFY(parent == nullptr);
    QVERIFY(dialog.parent() == nullptr);
    QVERIFY(menu.parent() == nullptr);
}

void TestDialogParts::keepsChildWidgets()
{
    QWidget parent;
    auto *child = new QPushButton(&parent);
    DialogParts::detachNestedWindows(parent);
    QCOMPARE(child->parentWidget(), &parent);
    QVERIFY(!child->isHidden());
}

QTEST_MAIN(TestDialogParts)

#include "tst_DialogParts.moc"
