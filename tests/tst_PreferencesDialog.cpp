#include "FormFields.h"
#include "PreferencesForm.h"
#include "StyleSheetReader.h"
#include "TemporaryStore.h"
#include "ThemeManager.h"
#include "Waiting.h"
#include "WindowSession.h"

#include <QApplication>
#include <QFormLayout>
#include <QScopeGuard>
#include <QScreen>
#include <QSettings>
#include <QTest>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {

// Describes a row of a page: its label, and the classes and texts of its widgets.
QString describe(const QFormLayout *form, int row)
{
    const auto textOf = [](const QWidget *widget) -> QString {
        const auto *label = qobject_cast<const QLabel *>(widget);
        const auto *button = qobject_cast<const QAbstractButton *>(widget);
        const QString text = label ? label->text() : button ? button->text() : QString();
        return QString::fromLatin1(widget->metaObject()->className()) + u' ' + text;
    };
    QLayoutItem *label = form->itemAt(row, QFormLayout::LabelRole);
    QLayoutItem *spanning = form->itemAt(row, QFormLayout::SpanningRole);
    QLayoutItem *content = spanning ? spanning : form->itemAt(row, QFormLayout::FieldRole);
    QStringList parts;
    for (int index = 0; content->layout() && index < content->layout()->count(); ++index) {
        QLayoutItem *part = content->layout()->itemAt(index);
        parts.append(part->widget() ? textOf(part->widget()) : u"stretch"_s);
    }
    if (content->widget())
        parts.append(textOf(content->widget()));
    const QString front = label && !spanning ? textOf(label->widget()) + u" | "_s : QString();
    return front + parts.join(u", "_s).trimmed();
}

QStringList describe(const QWidget *page)
{
    const QFormLayout *form = FormFields::formOf(page);
    QStringList rows;
    for (int row = 0; row < form->rowCount(); ++row)
        rows.append(describe(form, row));
    return rows;
}

} // namespace

class TestPreferencesDialog final : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void opensFromTheMenu();
    void opensASecondDialog();
    void deletesItselfWhenClosed_data();
    void deletesItselfWhenClosed();
    void hasAFixedSize();
    void fitsItsContents();
    void laysOutTheWindow();
    void laysOutEachPage_data();
    void laysOutEachPage();
    void listsTheInterfacePage();
    void listsTheChatPage();
    void listsTheNetworkPage();
    void setsObjectNamesOfFields_data();
    void setsObjectNamesOfFields();
    void setsObjectNamesOfButtons();
    void offersTheChoices_data();
    void offersTheChoices();
    void limitsItsNumbers_data();
    void limitsItsNumbers();
    void stretchesItsFields_data();
    void stretchesItsFields();
    void showsThePreview();
    void limitsTheSuffix();
    void showsTheLogPathsPlaceholder();
    void appliesTheTheme_data();
    void appliesTheTheme();
    void appliesTheThemeAtEachShow();
    void stylesTheButtonBox();
    void fitsItsTexts_data();
    void fitsItsTexts();
    void hasATabOrder();

private:
    TemporaryStore store;
};

void TestPreferencesDialog::init()
{
    store.clear();
}

void TestPreferencesDialog::opensFromTheMenu()
{
    WindowSession session;
    const PreferencesForm form(session);
    QVERIFY(form.dialog != nullptr);
    QVERIFY(form.dialog->isVisible());
    QVERIFY(!form.dialog->isModal());
    QCOMPARE(form.dialog->parentWidget(), &session.window);
    QVERIFY(QApplication::activeModalWidget() == nullptr);
}

void TestPreferencesDialog::opensASecondDialog()
{
    WindowSession session;
    const PreferencesForm first(session);
    const PreferencesForm second(session);
    QVERIFY(first.dialog != second.dialog);
    QVERIFY(first.dialog->isVisible());
    QVERIFY(second.dialog->isVisible());
}

void TestPreferencesDialog::deletesItselfWhenClosed_data()
{
    QTest::addColumn<QString>("action");
    for (const QString &action : {u"OK"_s, u"Cancel"_s, u"close"_s, u"Escape"_s})
        QTest::newRow(qUtf8Printable(action)) << action;
}

void TestPreferencesDialog::deletesItselfWhenClosed()
{
    QFETCH(const QString, action);
    WindowSession session;
    const PreferencesForm form(session);
    if (action == "OK"_L1)
        form.clickOk();
    else if (action == "Cancel"_L1)
        form.clickCancel();
    else if (action == "close"_L1)
        form.dialog->close();
    else
        QTest::keyClick(form.dialog, Qt::Key_Escape);
    QVERIFY(!form.dialog->isVisible());
    QTRY_VERIFY_WITH_TIMEOUT(form.dialog == nullptr, WaitTimeout);
    QVERIFY(session.window.isVisible());
}

void TestPreferencesDialog::hasAFixedSize()
{
    WindowSession session;
    const PreferencesForm form(session);
    const QDialog *dialog = form.dialog;
    QVERIFY(dialog);
    QCOMPARE(dialog->windowTitle(), u"Preferences"_s);
    QVERIFY(dialog->testAttribute(Qt::WA_DeleteOnClose));
    QVERIFY(!dialog->windowFlags().testFlag(Qt::WindowMaximizeButtonHint));
    QVERIFY(!dialog->windowFlags().testFlag(Qt::WindowFullscreenButtonHint));
    QCOMPARE(dialog->minimumSize(), dialog->maximumSize());
    QCOMPARE(dialog->size(), dialog->minimumSize());
    QVERIFY(dialog->width() >= 560);
    QVERIFY(dialog->height() >= 520);
}

void TestPreferencesDialog::fitsItsContents()
{
    WindowSession session;
    const PreferencesForm form(session);
    QDialog *dialog = form.dialog;
    QVERIFY(dialog);
    const QSize fixed = dialog->size();
    dialog->setMinimumSize(560, 520);
    dialog->setMaximumSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX);
    dialog->resize(2000, 2000);
    dialog->adjustSize();
    QCOMPARE(fixed, dialog->size());
}

void TestPreferencesDialog::laysOutTheWindow()
{
    WindowSession session;
    const PreferencesForm form(session);
    const auto *layout = qobject_cast<QVBoxLayout *>(form.dialog->layout());
    QVERIFY(layout != nullptr);
    QCOMPARE(layout->contentsMargins(), QMargins(28, 28, 28, 20));
    QCOMPARE(layout->spacing(), 18);
    QCOMPARE(layout->count(), 2);
    QCOMPARE(layout->itemAt(0)->widget(), form.pages());
    const auto *box = qobject_cast<QDialogButtonBox *>(layout->itemAt(1)->widget());
    QVERIFY(box != nullptr);
    QCOMPARE(box->standardButtons(),
             QDialogButtonBox::Ok | QDialogButtonBox::Apply | QDialogButtonBox::Cancel);
    QCOMPARE(form.pages()->count(), 3);
    QCOMPARE(form.pages()->tabText(0), u"Interface"_s);
    QCOMPARE(form.pages()->tabText(1), u"Chat"_s);
    QCOMPARE(form.pages()->tabText(2), u"Network"_s);
    QCOMPARE(form.pages()->currentIndex(), 0);
}

void TestPreferencesDialog::laysOutEachPage_data()
{
    QTest::addColumn<QString>("page");
    for (const QString &page : {u"Interface"_s, u"Chat"_s, u"Network"_s})
        QTest::newRow(qUtf8Printable(page)) << page;
}

void TestPreferencesDialog::laysOutEachPage()
{
    QFETCH(const QString, page);
    WindowSession session;
    const PreferencesForm form(session);
    const QWidget *widget = form.page(page);
    QCOMPARE(QByteArray(widget->metaObject()->className()), "QWidget"_ba);
    const auto *layout = qobject_cast<QFormLayout *>(widget->layout());
    QVERIFY(layout != nullptr);
    QCOMPARE(layout->labelAlignment(), Qt::AlignLeft | Qt::AlignVCenter);
    QCOMPARE(layout->fieldGrowthPolicy(), QFormLayout::ExpandingFieldsGrow);
    QCOMPARE(layout->horizontalSpacing(), 12);
    QCOMPARE(layout->verticalSpacing(), 12);
}

void TestPreferencesDialog::listsTheInterfacePage()
{
    WindowSession session;
    const PreferencesForm form(session);
    QCOMPARE(describe(form.page(u"Interface"_s)),
             (QStringList{u"QLabel Chat font: | QPushButton Monaco 12"_s,
                          u"QLabel Timestamp: | QComboBox"_s, u"QLabel Emoji size: | QSpinBox"_s,
                          u"QCheckBox Switch to new tabs automatically"_s,
                          u"QLabel Chat background:"_s,
                          u"QPushButton Choose Image..., QPushButton Solid Color..., "
                          "QPushButton Reset, stretch"_s,
                          u"QLabel None image..."_s}));
}

void TestPreferencesDialog::listsTheChatPage()
{
    WindowSession session;
    const PreferencesForm form(session);
    QCOMPARE(describe(form.page(u"Chat"_s)),
             (QStringList{u"QLabel Nick completion suffix: | QLineEdit"_s,
                          u"QLabel Min prefix length: | QSpinBox"_s, u"QCheckBox Enable logging"_s,
                          u"QLabel Log path: | QLineEdit , QPushButton ..."_s,
                          u"QCheckBox Highlight when your nick is mentioned"_s,
                          u"QCheckBox Play sound on highlight"_s,
                          u"QLabel User list sorting: | QComboBox"_s}));
}

void TestPreferencesDialog::listsTheNetworkPage()
{
    WindowSession session;
    const PreferencesForm form(session);
    QCOMPARE(describe(form.page(u"Network"_s)),
             (QStringList{
                     u"QCheckBox Auto-reconnect on disconnect"_s,
                     u"QLabel Reconnect delay: | QSpinBox"_s, u"QLabel Max attempts: | QSpinBox"_s,
                     u"QLabel PING interval: | QSpinBox"_s, u"QLabel PONG timeout: | QSpinBox"_s,
                     u"QCheckBox Accept invalid SSL certificates"_s,
                     u"QLabel Auth method: | QComboBox"_s}));
}

void TestPreferencesDialog::setsObjectNamesOfFields_data()
{
    QTest::addColumn<QString>("page");
    QTest::addColumn<QString>("label");
    QTest::addColumn<QString>("name");

    QTest::newRow("font") << u"Interface"_s << u"Chat font:"_s << u"prefsFontButton"_s;
    QTest::newRow("times") << u"Interface"_s << u"Timestamp:"_s << u"prefsWideCombo"_s;
    QTest::newRow("emoji") << u"Interface"_s << u"Emoji size:"_s << u"prefsSpinBox"_s;
    QTest::newRow("suffix") << u"Chat"_s << u"Nick completion suffix:"_s << u""_s;
    QTest::newRow("prefix") << u"Chat"_s << u"Min prefix length:"_s << u"prefsSpinBox"_s;
    QTest::newRow("log path") << u"Chat"_s << u"Log path:"_s << u""_s;
    QTest::newRow("sorting") << u"Chat"_s << u"User list sorting:"_s << u"prefsWideCombo"_s;
    QTest::newRow("delay") << u"Network"_s << u"Reconnect delay:"_s << u"prefsWideSpin"_s;
    QTest::newRow("attempts") << u"Network"_s << u"Max attempts:"_s << u"prefsWideSpin"_s;
    QTest::newRow("ping") << u"Network"_s << u"PING interval:"_s << u"prefsWideSpin"_s;
    QTest::newRow("pong") << u"Network"_s << u"PONG timeout:"_s << u"prefsWideSpin"_s;
    QTest::newRow("auth") << u"Network"_s << u"Auth method:"_s << u"prefsWideCombo"_s;
}

void TestPreferencesDialog::setsObjectNamesOfFields()
{
    QFETCH(const QString, page);
    QFETCH(const QString, label);
    WindowSession session;
    const PreferencesForm form(session);
    QTEST(FormFields::fieldOf(form.page(page), label)->objectName(), "name");
}

void TestPreferencesDialog::setsObjectNamesOfButtons()
{
    WindowSession session;
    const PreferencesForm form(session);
    QCOMPARE(form.button(u"Choose Image..."_s)->objectName(), u"prefsBgButton"_s);
    QCOMPARE(form.button(u"Solid Color..."_s)->objectName(), u"prefsBgButton"_s);
    QCOMPARE(form.button(u"Reset"_s)->objectName(), u"prefsDeleteButton"_s);
    QCOMPARE(form.button(u"..."_s)->objectName(), u"prefsBgButton"_s);
    const auto checks = form.dialog->findChildren<QCheckBox *>();
    QCOMPARE(checks.size(), 6);
    for (const QCheckBox *check : checks)
        QCOMPARE(check->objectName(), QString());
}

void TestPreferencesDialog::offersTheChoices_data()
{
    QTest::addColumn<QString>("label");
    QTest::addColumn<QStringList>("items");

    QTest::newRow("times") << u"Timestamp:"_s
                           << QStringList{u"[HH:mm:ss]"_s, u"[hh:mm:ss AP]"_s, u"[HH:mm]"_s,
                                          u"hh:mm"_s};
    QTest::newRow("sorting") << u"User list sorting:"_s
                             << QStringList{u"Alphabetical"_s, u"By status then alpha"_s};
    QTest::newRow("auth") << u"Auth method:"_s
                          << QStringList{u"Server password"_s, u"SASL PLAIN"_s, u"SASL EXTERNAL"_s};
}

void TestPreferencesDialog::offersTheChoices()
{
    QFETCH(const QString, label);
    WindowSession session;
    const PreferencesForm form(session);
    QTEST(FormFields::itemsOf(form.combo(label)), "items");
    QCOMPARE(form.combo(label)->currentIndex(), 0);
    QVERIFY(!form.combo(label)->isEditable());
}

void TestPreferencesDialog::limitsItsNumbers_data()
{
    QTest::addColumn<QString>("label");
    QTest::addColumn<int>("lowest");
    QTest::addColumn<int>("highest");
    QTest::addColumn<QString>("text");

    QTest::newRow("emoji") << u"Emoji size:"_s << 12 << 48 << u"20"_s;
    QTest::newRow("prefix") << u"Min prefix length:"_s << 1 << 10 << u"1"_s;
    QTest::newRow("delay") << u"Reconnect delay:"_s << 1 << 300 << u"10 sec"_s;
    QTest::newRow("attempts") << u"Max attempts:"_s << 0 << 100 << u"Unlimited"_s;
    QTest::newRow("ping") << u"PING interval:"_s << 10 << 600 << u"60 sec"_s;
    QTest::newRow("pong") << u"PONG timeout:"_s << 5 << 120 << u"45 sec"_s;
}

void TestPreferencesDialog::limitsItsNumbers()
{
    QFETCH(const QString, label);
    WindowSession session;
    const PreferencesForm form(session);
    QTEST(form.spin(label)->minimum(), "lowest");
    QTEST(form.spin(label)->maximum(), "highest");
    QTEST(form.spin(label)->text(), "text");
}

void TestPreferencesDialog::stretchesItsFields_data()
{
    QTest::addColumn<QString>("page");
    QTest::addColumn<QStringList>("labels");

    QTest::newRow("Interface") << u"Interface"_s << QStringList{u"Chat font:"_s, u"Timestamp:"_s};
    QTest::newRow("Chat") << u"Chat"_s
                          << QStringList{u"Nick completion suffix:"_s, u"User list sorting:"_s};
    QTest::newRow("Network") << u"Network"_s
                             << QStringList{u"Reconnect delay:"_s, u"Max attempts:"_s,
                                            u"PING interval:"_s, u"PONG timeout:"_s,
                                            u"Auth method:"_s};
}

void TestPreferencesDialog::stretchesItsFields()
{
    QFETCH(const QString, page);
    QFETCH(const QStringList, labels);
    WindowSession session;
    const PreferencesForm form(session);
    for (const QString &label : labels) {
        const QSizePolicy policy = FormFields::fieldOf(form.page(page), label)->sizePolicy();
        QCOMPARE(policy.horizontalPolicy(), QSizePolicy::Expanding);
        QCOMPARE(policy.verticalPolicy(), QSizePolicy::Fixed);
    }
}

void TestPreferencesDialog::showsThePreview()
{
    WindowSession session;
    const PreferencesForm form(session);
    const QLabel *preview = form.preview();
    QCOMPARE(preview->minimumHeight(), 60);
    QCOMPARE(preview->sizePolicy().horizontalPolicy(), QSizePolicy::Expanding);
    QCOMPARE(preview->sizePolicy().verticalPolicy(), QSizePolicy::Expanding);
    QCOMPARE(preview->alignment(), Qt::AlignCenter);
    QCOMPARE(preview->frameShape(), QFrame::StyledPanel);
    QCOMPARE(preview->frameShadow(), QFrame::Sunken);
    QCOMPARE(preview->text(), u"None image..."_s);
}

void TestPreferencesDialog::limitsTheSuffix()
{
    WindowSession session;
    const PreferencesForm form(session);
    QCOMPARE(form.edit(u"Nick completion suffix:"_s)->text(), u":"_s);
    QCOMPARE(form.edit(u"Nick completion suffix:"_s)->maxLength(), 3);
}

void TestPreferencesDialog::showsTheLogPathsPlaceholder()
{
    WindowSession session;
    const PreferencesForm form(session);
    QCOMPARE(form.edit(u"Log path:"_s)->text(), QString());
    QCOMPARE(form.edit(u"Log path:"_s)->placeholderText(), u"Log directory path..."_s);
}

void TestPreferencesDialog::appliesTheTheme_data()
{
    QTest::addColumn<QString>("theme");
    for (const QString &theme : {u"light"_s, u"dark"_s, u"glass"_s})
        QTest::newRow(qUtf8Printable(theme)) << theme;
}

void TestPreferencesDialog::appliesTheTheme()
{
    QFETCH(const QString, theme);
    WindowSession session;
    session.probe.applyTheme(theme);
    const PreferencesForm form(session);
    QCOMPARE(form.dialog->styleSheet(), ThemeManager::preferencesDialogStyleSheet(theme));
    QVERIFY(!form.dialog->testAttribute(Qt::WA_TranslucentBackground));
}

void TestPreferencesDialog::appliesTheThemeAtEachShow()
{
    WindowSession session;
    const PreferencesForm form(session);
    form.dialog->hide();
    form.dialog->setAttribute(Qt::WA_TranslucentBackground);
    form.dialog->setStyleSheet(QString());
    form.dialog->setAutoFillBackground(false);
    session.probe.currentTheme() = u"dark"_s;
    form.dialog->show();
    QCOMPARE(form.dialog->styleSheet(), ThemeManager::preferencesDialogStyleSheet(u"dark"_s));
    QVERIFY(!form.dialog->testAttribute(Qt::WA_TranslucentBackground));
}

void TestPreferencesDialog::stylesTheButtonBox()
{
    WindowSession session;
    const PreferencesForm form(session);
    const auto *box = form.dialog->findChild<QDialogButtonBox *>();
    QCOMPARE(box->button(QDialogButtonBox::Ok)->objectName(), u"connectButton"_s);
    QCOMPARE(box->button(QDialogButtonBox::Apply)->objectName(), u"connectButton"_s);
    QCOMPARE(box->button(QDialogButtonBox::Cancel)->objectName(), u"cancelButton"_s);
    const QImage image = box->button(QDialogButtonBox::Ok)->grab().toImage();
    QCOMPARE(image.pixelColor(image.width() / 2, 4), QColor(u"#007AFF"_s));
}

void TestPreferencesDialog::fitsItsTexts_data()
{
    QTest::addColumn<int>("points");
    for (const int points : {9, 12, 18})
        QTest::addRow("%d points", points) << points;
}

void TestPreferencesDialog::fitsItsTexts()
{
    QFETCH(const int, points);
    const QFont usual = QApplication::font();
    const auto restoreFont = qScopeGuard([&] { QApplication::setFont(usual); });
    QFont font = usual;
    font.setPointSize(points);
    QApplication::setFont(font);
    QFont tabFont = font;
    tabFont.setPixelSize(12);
    tabFont.setBold(true);
    WindowSession session;
    const PreferencesForm form(session);
    for (int index = 0; index < form.pages()->count(); ++index) {
        form.pages()->setCurrentIndex(index);
        const QWidget *page = form.pages()->currentWidget();
        QVERIFY2(page->width() >= page->minimumSizeHint().width(),
                 qUtf8Printable(form.pages()->tabText(index)));
        QVERIFY(page->height() >= page->minimumSizeHint().height());
        QVERIFY(form.pages()->tabBar()->tabRect(index).width()
                > QFontMetrics(tabFont).horizontalAdvance(form.pages()->tabText(index)));
        const auto texts = page->findChildren<QAbstractButton *>();
        for (const QAbstractButton *button : texts) {
            QVERIFY2(button->width() >= button->sizeHint().width(), qUtf8Printable(button->text()));
        }
    }
}

void TestPreferencesDialog::hasATabOrder()
{
    WindowSession session;
    const PreferencesForm form(session);
    QVERIFY(QTest::qWaitForWindowActive(form.dialog, WaitTimeout));
    form.pages()->setCurrentIndex(2);
    form.check(u"Auto-reconnect on disconnect"_s)->setFocus();
    QWidgetList visited;
    for (int step = 0; step < 6; ++step) {
        QTest::keyClick(form.dialog, Qt::Key_Tab);
        visited.append(form.dialog->focusWidget());
    }
    QCOMPARE(visited, (QWidgetList{form.spin(u"Reconnect delay:"_s), form.spin(u"Max attempts:"_s),
                                   form.spin(u"PING interval:"_s), form.spin(u"PONG timeout:"_s),
                                   form.check(u"Accept invalid SSL certificates"_s),
                                   form.combo(u"Auth method:"_s)}));
}

QTEST_MAIN(TestPreferencesDialog)
#include "tst_PreferencesDialog.moc"
