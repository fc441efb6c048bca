#include "PreferencesForm.h"
#include "TemporaryStore.h"
#include "WindowSession.h"

#include <QColorDialog>
#include <QFileDialog>
#include <QFontDialog>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

class TestPreferencesChoosing final : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void asksForTheFont();
    void appliesTheFontAtOnce();
    void keepsTheFontAfterCancel();
    void storesTheFontWithTheNextApply();
    void asksForTheImage();
    void asksForTheColor_data();
    void asksForTheColor();
    void asksForTheLogPath();
    void startsInTheLastDirectory_data();
    void startsInTheLastDirectory();
    void changesNothingIfAChoiceIsCancelled_data();
    void changesNothingIfAChoiceIsCancelled();
    void previewsTheWindowsBackground_data();
    void previewsTheWindowsBackground();
    void replacesTheImageByAColor();
    void replacesTheColorByAnImage();
    void resetsTheBackground_data();
    void resetsTheBackground();
    void appliesTheBackgroundOnlyWhenSaved();
    void showsTheChosenLogPath();
    void survivesDeletionDuringANestedDialog_data();
    void survivesDeletionDuringANestedDialog();

private:
    TemporaryStore store;
};

void TestPreferencesChoosing::init()
{
    store.clear();
}

void TestPreferencesChoosing::asksForTheFont()
{
    WindowSession session;
    session.probe.chatFont() = QFont(u"DejaVu Serif"_s, 15);
    PreferencesForm form(session);
    form.answers.queueForDialog([&](QDialog *shown) {
        const auto *fonts = qobject_cast<QFontDialog *>(shown);
        QVERIFY(fonts != nullptr);
        QCOMPARE(fonts->parentWidget(), form.dialog.data());
        QCOMPARE(fonts->currentFont().family(), u"DejaVu Serif"_s);
        QCOMPARE(fonts->currentFont().pointSize(), 15);
        shown->reject();
    });
    form.fontButton()->click();
    QCOMPARE(form.answers.problems(), QStringList());
}

void TestPreferencesChoosing::appliesTheFontAtOnce()
{
    WindowSession session;
    PreferencesForm form(session);
    const QFont inUse = session.probe.inputLine().font();
    form.chooseFont(QFont(u"DejaVu Serif"_s, 15));
    QCOMPARE(form.fontButton()->text(), u"DejaVu Serif 15"_s);
    QCOMPARE(session.probe.chatFont().family(), u"DejaVu Serif"_s);
    QCOMPARE(session.probe.chatFont().pointSize(), 15);
    QVERIFY(!QSettings().contains(u"chatFont"_s));
    QCOMPARE(session.probe.inputLine().font(), inUse);
    QCOMPARE(form.answers.problems(), QStringList());
}

void TestPreferencesChoosing::keepsTheFontAfterCancel()
{
    WindowSession session;
    PreferencesForm form(session);
    form.chooseFont(QFont(u"DejaVu Serif"_s, 15));
    form.clickCancel();
    QCOMPARE(session.probe.chatFont().family(), u"DejaVu Serif"_s);
    QVERIFY(!QSettings().contains(u"chatFont"_s));
    const PreferencesForm next(session);
    QCOMPARE(next.fontButton()->text(), u"DejaVu Serif 15"_s);
}

void TestPreferencesChoosing::storesTheFontWithTheNextApply()
{
    WindowSession session;
    {
        PreferencesForm form(session);
        form.chooseFont(QFont(u"DejaVu Serif"_s, 15));
        form.clickCancel();
    }
    const PreferencesForm form(session);
    form.clickApply();
    QCOMPARE(QSettings().value(u"chatFont"_s).toString(), session.probe.chatFont().toString());
    QVERIFY(QSettings().value(u"chatFont"_s).toString().startsWith("DejaVu Serif,15,"_L1));
}

void TestPreferencesChoosing::asksForTheImage()
{
    WindowSession session;
    PreferencesForm form(session);
    form.answers.queueForDialog([&](QDialog *shown) {
        const auto *files = qobject_cast<QFileDialog *>(shown);
        QVERIFY(files != nullptr);
        QCOMPARE(files->parentWidget(), form.dialog.data());
        QCOMPARE(files->windowTitle(), u"Select Background Image"_s);
        QCOMPARE(files->fileMode(), QFileDialog::ExistingFile);
        QCOMPARE(files->acceptMode(), QFileDialog::AcceptOpen);
        QCOMPARE(files->nameFilters(), QStringList{u"Images (*.png *.jpg *.jpeg *.bmp *.gif)"_s});
        shown->reject();
    });
    form.button(u"Choose Image..."_s)->click();
    QCOMPARE(form.answers.problems(), QStringList());
}

void TestPreferencesChoosing::asksForTheColor_data()
{
    QTest::addColumn<QColor>("color");
    QTest::addColumn<QColor>("offered");
    QTest::newRow("none") << QColor() << QColor(Qt::white);
    QTest::newRow("one") << QColor(1, 2, 3) << QColor(1, 2, 3);
}

void TestPreferencesChoosing::asksForTheColor()
{
    QFETCH(const QColor, color);
    WindowSession session;
    session.probe.chatBgColor() = color;
    PreferencesForm form(session);
    form.answers.queueForDialog([&](QDialog *shown) {
        const auto *colors = qobject_cast<QColorDialog *>(shown);
        QVERIFY(colors != nullptr);
        QCOMPARE(colors->parentWidget(), form.dialog.data());
        QCOMPARE(colors->windowTitle(), u"Select Background Color"_s);
        QTEST(colors->currentColor(), "offered");
        shown->reject();
    });
    form.button(u"Solid Color..."_s)->click();
    QCOMPARE(form.answers.problems(), QStringList());
}

void TestPreferencesChoosing::asksForTheLogPath()
{
    WindowSession session;
    PreferencesForm form(session);
    form.answers.queueForDialog([&](QDialog *shown) {
        const auto *files = qobject_cast<QFileDialog *>(shown);
        QVERIFY(files != nullptr);
        QCOMPARE(files->parentWidget(), form.dialog.data());
        QCOMPARE(files->windowTitle(), u"Select log directory"_s);
        QCOMPARE(files->fileMode(), QFileDialog::Directory);
        QVERIFY(files->testOption(QFileDialog::ShowDirsOnly));
        shown->reject();
    });
    form.button(u"..."_s)->click();
    QCOMPARE(form.answers.problems(), QStringList());
}

void TestPreferencesChoosing::startsInTheLastDirectory_data()
{
    QTest::addColumn<QString>("button");
    QTest::newRow("image") << u"Choose Image..."_s;
    QTest::newRow("log path") << u"..."_s;
}

void TestPreferencesChoosing::startsInTheLastDirectory()
{
    QFETCH(const QString, button);
    const QTemporaryDir last;
    WindowSession session;
    session.probe.chatBgImage() = PreferencesForm::imagePath();
    PreferencesForm form(session);
    form.set(u"logPath"_s, u"/tmp"_s);
    form.answers.queueForDialog([&](QDialog *shown) {
        qobject_cast<QFileDialog *>(shown)->setDirectory(last.path());
        shown->reject();
    });
    form.button(button)->click();
    // Neither the current image nor the current log path determines the directory.
    form.answers.queueForDialog([&](QDialog *shown) {
        QCOMPARE(qobject_cast<QFileDialog *>(shown)->directory().path(), last.path());
        shown->reject();
    });
    form.button(button)->click();
    QCOMPARE(form.answers.problems(), QStringList());
}

void TestPreferencesChoosing::changesNothingIfAChoiceIsCancelled_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<bool>("withImage");
    QTest::newRow("font") << u"Monaco 12"_s << false;
    QTest::newRow("image over a color") << u"Choose Image..."_s << false;
    QTest::newRow("image over an image") << u"Choose Image..."_s << true;
    QTest::newRow("color over a color") << u"Solid Color..."_s << false;
    QTest::newRow("color over an image") << u"Solid Color..."_s << true;
    QTest::newRow("log path") << u"..."_s << false;
}

void TestPreferencesChoosing::changesNothingIfAChoiceIsCancelled()
{
    QFETCH(const QString, button);
    QFETCH(const bool, withImage);
    WindowSession session;
    session.probe.chatBgImage() = withImage ? PreferencesForm::imagePath() : QString();
    session.probe.chatBgColor() = withImage ? QColor() : QColor(1, 2, 3);
    PreferencesForm form(session);
    form.set(u"logPath"_s, u"/tmp"_s);
    const QString preview = form.preview()->styleSheet();
    form.answers.queueForDialog([](QDialog *shown) { shown->reject(); });
    form.button(button)->click();
    QCOMPARE(form.answers.problems(), QStringList());
    QCOMPARE(form.preview()->styleSheet(), preview);
    QCOMPARE(form.shown(u"logPath"_s), u"/tmp"_s);
    QCOMPARE(form.fontButton()->text(), u"Monaco 12"_s);
    QCOMPARE(session.probe.chatFont(), QFont(u"Monaco"_s, 12));
}

void TestPreferencesChoosing::previewsTheWindowsBackground_data()
{
    QTest::addColumn<QString>("image");
    QTest::addColumn<QColor>("color");
    QTest::addColumn<QString>("fill");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QColor>("middle");

    const QString image = PreferencesForm::imagePath();
    const QString imageFill = u"border-image: url(\"%1\") 0 0 0 0 stretch stretch;"_s.arg(image);
    QTest::newRow("none") << QString() << QColor() << u"background-color: #f5f5f5;"_s
                          << u"None image..."_s << QColor();
    QTest::newRow("color") << QString() << QColor(1, 2, 3) << u"background-color: #010203;"_s
                           << QString() << QColor(1, 2, 3);
    QTest::newRow("image") << image << QColor() << imageFill << QString() << QColor(Qt::red);
    QTest::newRow("both") << image << QColor(1, 2, 3) << imageFill << QString() << QColor(Qt::red);
}

void TestPreferencesChoosing::previewsTheWindowsBackground()
{
    QFETCH(const QString, image);
    QFETCH(const QColor, color);
    QFETCH(const QString, fill);
    QFETCH(const QColor, middle);
    WindowSession session;
    session.probe.chatBgImage() = image;
    session.probe.chatBgColor() = color;
    const PreferencesForm form(session);
    QCOMPARE(form.preview()->styleSheet(),
             fill + u" border: 1px solid #999; border-radius: 4px;"_s);
    QTEST(form.preview()->text(), "text");
    const QImage screenshot = form.preview()->grab().toImage();
    if (middle.isValid())
        QCOMPARE(screenshot.pixelColor(screenshot.rect().center()), middle);
    else
        QCOMPARE(screenshot.pixelColor(20, 20), QColor(u"#f5f5f5"_s));
}

void TestPreferencesChoosing::replacesTheImageByAColor()
{
    WindowSession session;
    PreferencesForm form(session);
    form.chooseImage(PreferencesForm::imagePath());
    QCOMPARE(form.shown(u"chatBgImage"_s), PreferencesForm::imagePath());
    form.chooseColor(QColor(1, 2, 3));
    QCOMPARE(form.answers.problems(), QStringList());
    QCOMPARE(form.shown(u"chatBgImage"_s), QString());
    QCOMPARE(form.shown(u"chatBgColor"_s), u"#010203"_s);
    form.clickApply();
    QCOMPARE(session.probe.chatBgImage(), QString());
    QCOMPARE(session.probe.chatBgColor(), QColor(1, 2, 3));
    QCOMPARE(QSettings().value(u"chatBgImage"_s).toString(), QString());
    QCOMPARE(QSettings().value(u"chatBgColor"_s).toString(), u"#010203"_s);
}

void TestPreferencesChoosing::replacesTheColorByAnImage()
{
    WindowSession session;
    PreferencesForm form(session);
    form.chooseColor(QColor(1, 2, 3));
    form.chooseImage(PreferencesForm::imagePath());
    QCOMPARE(form.answers.problems(), QStringList());
    form.clickApply();
    QCOMPARE(session.probe.chatBgImage(), PreferencesForm::imagePath());
    QVERIFY(!session.probe.chatBgColor().isValid());
    QCOMPARE(QSettings().value(u"chatBgImage"_s).toString(), PreferencesForm::imagePath());
    QVERIFY(QSettings().contains(u"chatBgColor"_s));
    QCOMPARE(QSettings().value(u"chatBgColor"_s).toString(), QString());
}

void TestPreferencesChoosing::resetsTheBackground_data()
{
    QTest::addColumn<QString>("image");
    QTest::addColumn<QColor>("color");
    QTest::newRow("image") << PreferencesForm::imagePath() << QColor();
    QTest::newRow("color") << QString() << QColor(1, 2, 3);
    QTest::newRow("both") << PreferencesForm::imagePath() << QColor(1, 2, 3);
    QTest::newRow("none") << QString() << QColor();
}

void TestPreferencesChoosing::resetsTheBackground()
{
    QFETCH(const QString, image);
    QFETCH(const QColor, color);
    WindowSession session;
    session.probe.chatBgImage() = image;
    session.probe.chatBgColor() = color;
    const PreferencesForm form(session);
    form.button(u"Reset"_s)->click();
    QCOMPARE(form.preview()->text(), u"None image..."_s);
    QVERIFY(form.preview()->styleSheet().contains("#f5f5f5"_L1));
    form.clickApply();
    QCOMPARE(session.probe.chatBgImage(), QString());
    QVERIFY(!session.probe.chatBgColor().isValid());
}

void TestPreferencesChoosing::appliesTheBackgroundOnlyWhenSaved()
{
    WindowSession session;
    session.probe.chatBgColor() = QColor(1, 2, 3);
    PreferencesForm form(session);
    form.chooseImage(PreferencesForm::imagePath());
    QCOMPARE(session.probe.chatBgImage(), QString());
    QCOMPARE(session.probe.chatBgColor(), QColor(1, 2, 3));
    form.button(u"Reset"_s)->click();
    form.clickCancel();
    QCOMPARE(session.probe.chatBgColor(), QColor(1, 2, 3));
    QCOMPARE(PreferencesForm::stored().keys(), QStringList{u"theme"_s});
}

void TestPreferencesChoosing::showsTheChosenLogPath()
{
    const QTemporaryDir folder;
    WindowSession session;
    PreferencesForm form(session);
    form.answers.queueForDialog([&](QDialog *shown) {
        auto *name = shown->findChild<QLineEdit *>(u"fileNameEdit"_s);
        QVERIFY(name != nullptr);
        name->setText(folder.path());
        shown->accept();
    });
    form.button(u"..."_s)->click();
    QCOMPARE(form.answers.problems(), QStringList());
    QCOMPARE(form.shown(u"logPath"_s), folder.path());
    QCOMPARE(session.probe.preferences().value(u"logPath"_s).toString(), QString());
}

void TestPreferencesChoosing::survivesDeletionDuringANestedDialog_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<bool>("withWindow");
    for (const QString &button :
         {u"Monaco 12"_s, u"Choose Image..."_s, u"Solid Color..."_s, u"..."_s}) {
        QTest::newRow(qUtf8Printable(button)) << button << false;
        QTest::newRow(qUtf8Printable(QString(button + u", with the window"_s))) << button << true;
    }
}

void TestPreferencesChoosing::survivesDeletionDuringANestedDialog()
{
    QFETCH(const QString, button);
    QFETCH(const bool, withWindow);
    WindowSession session;
    PreferencesForm form(session);
    form.answers.queueForDialog([&](QDialog *) {
        if (withWindow)
            session.destroyWindow();
        else
            delete form.dialog.data();
    });
    form.button(button)->click();
    QVERIFY(form.dialog == nullptr);
    QCOMPARE(form.answers.problems(), QStringList());
}

QTEST_MAIN(TestPreferencesChoosing)
#include "tst_PreferencesChoosing.moc"
