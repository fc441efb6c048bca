#include "ChatBackground.h"
#include "MyTabWidget.h"
#include "PreferencesForm.h"
#include "StyleSheetReader.h"
#include "TemporaryStore.h"
#include "WindowSession.h"

#include <QDateTime>
#include <QFile>
#include <QScrollBar>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>
#include <QTextBrowser>

using namespace Qt::StringLiterals;

namespace {

QTextBrowser *viewOf(const WindowSession &session, const QString &tabName)
{
    return session.probe.tabs().value(tabName).chatView;
}

void setBackground(const WindowSession &session, const QString &image, const QColor &color)
{
    session.probe.chatBgImage() = image;
    session.probe.chatBgColor() = color;
    session.probe.applyChatBackground();
}

// Returns the colour in the lower half of the view, where there is no text.
QColor backgroundColor(QTextBrowser *view)
{
    const QImage image = view->grab().toImage();
    return image.pixelColor(image.width() / 2, image.height() * 3 / 4);
}

class StyleChangeCounter final : public QObject
{
public:
    bool eventFilter(QObject * /*watched*/, QEvent *event) override
    {
        count += event->type() == QEvent::StyleChange ? 1 : 0;
        return false;
    }

    int count = 0;
};

} // namespace

class TestPreferencesBackground final : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void stylesTheViews_data();
    void stylesTheViews();
    void stylesTheScrollBars_data();
    void stylesTheScrollBars();
    void setsAWhitePaletteForAnImage();
    void fillsTheBackground();
    void skipsTabsWithoutAView();
    void appliesTheStoredBackgroundAtStart();
    void prefersAStoredImageToAStoredColor();
    void doesNotRestyleUnchangedViews_data();
    void doesNotRestyleUnchangedViews();
    void restoresPaletteAndAutoFill_data();
    void restoresPaletteAndAutoFill();
    void showsAChangedFile();
    void loadsALargeImageOnce();
    void stylesEachNewTab_data();
    void stylesEachNewTab();
    void followsTheTheme();
    void showsTheImage_data();
    void showsTheImage();
    void doesNotEscapeOrdinaryPaths_data();
    void doesNotEscapeOrdinaryPaths();
    void showsPlainBackgroundForAMissingImage();
    void keepsTheImageInPlaceWhileTheTextScrolls();
    void keepsTextReadable_data();
    void keepsTextReadable();

private:
    TemporaryStore store;
};

void TestPreferencesBackground::init()
{
    store.clear();
}

void TestPreferencesBackground::stylesTheViews_data()
{
    QTest::addColumn<QString>("theme");
    QTest::addColumn<QString>("image");
    QTest::addColumn<QColor>("color");
    QTest::addColumn<QString>("border");
    QTest::addColumn<QString>("background");
    QTest::addColumn<QString>("borderImage");
    QTest::addColumn<QColor>("paletteColor");

    const QString light = u"1px solid #ccc"_s;
    const QString dark = u"1px solid #555"_s;
    const QString none = u"none"_s;
    const QString path = PreferencesForm::imagePath();
    const QString image = u"url(\"%1\") 0 0 0 0 stretch stretch"_s.arg(path);
    const QColor blue(u"#1234ab"_s);
    // The text after two slashes is a host name, here an invalid one.
    const QString invalidPath = u"//[/a.png"_s;

    QTest::newRow("light") << u"light"_s << u""_s << QColor() << light << u"#ffffff"_s << none
                           << QColor(Qt::white);
    QTest::newRow("dark") << u"dark"_s << u""_s << QColor() << dark << u"#1e1e1e"_s << none
                          << QColor(u"#1E1E1E"_s);
    QTest::newRow("glass") << u"glass"_s << u""_s << QColor() << light << u"#ffffff"_s << none
                           << QColor(Qt::white);
    QTest::newRow("color") << u"light"_s << u""_s << blue << light << u"#1234ab"_s << none << blue;
    QTest::newRow("color, dark") << u"dark"_s << u""_s << blue << dark << u"#1234ab"_s << none
                                 << blue;
    QTest::newRow("black") << u"light"_s << u""_s << QColor(Qt::black) << light << u"#000000"_s
                           << none << QColor(Qt::black);
    QTest::newRow("image") << u"light"_s << path << QColor() << light << u"white"_s << image
                           << QColor(Qt::white);
    QTest::newRow("image, dark") << u"dark"_s << path << QColor() << dark << u"white"_s << image
                                 << QColor(Qt::white);
    QTest::newRow("image and color")
            << u"light"_s << path << blue << light << u"white"_s << image << QColor(Qt::white);
    QTest::newRow("invalid path") << u"light"_s << invalidPath << blue << light << u"white"_s
                                  << none << QColor(Qt::white);
}

void TestPreferencesBackground::stylesTheViews()
{
    QFETCH(const QString, theme);
    QFETCH(const QString, image);
    QFETCH(const QColor, color);
    QFETCH(const QColor, paletteColor);
    const WindowSession session;
    session.probe.openTabs({u"#a"_s, u"bob"_s});
    session.probe.currentTheme() = theme;
    setBackground(session, image, color);
    for (const QString &name : {u"Server"_s, u"#a"_s, u"bob"_s}) {
        QTextBrowser *view = viewOf(session, name);
        const StyleSheetReader sheet(view->styleSheet());
        QTEST(sheet.value(u"QTextBrowser"_s, u"border"_s), "border");
        QTEST(sheet.value(u"QTextBrowser"_s, u"background-color"_s), "background");
        QTEST(sheet.value(u"QTextBrowser"_s, u"border-image"_s), "borderImage");
        // The sheet of an image removes the palette's colours.
        if (sheet.value(u"QTextBrowser"_s, u"border-image"_s) == "none"_L1) {
            QCOMPARE(view->palette().color(QPalette::Base), paletteColor);
            QCOMPARE(view->palette().color(QPalette::Window), paletteColor);
        }
    }
}

void TestPreferencesBackground::stylesTheScrollBars_data()
{
    QTest::addColumn<QString>("image");
    QTest::newRow("without an image") << QString();
    QTest::newRow("with an image") << PreferencesForm::imagePath();
}

void TestPreferencesBackground::stylesTheScrollBars()
{
    QFETCH(const QString, image);
    const WindowSession session;
    setBackground(session, image, QColor());
    const QTextBrowser *view = viewOf(session, u"Server"_s);
    const QString sheet = view->styleSheet();
    QVERIFY(sheet.indexOf("QScrollBar"_L1) > sheet.indexOf("QTextBrowser"_L1));
    QVERIFY(sheet.contains("rgba(128,128,128,0.5)"_L1));
    QVERIFY(sheet.contains("border-radius: 4px"_L1));
    const StyleSheetReader rules(sheet);
    for (const QString &bar : {u"QScrollBar:vertical"_s, u"QScrollBar:horizontal"_s})
        QCOMPARE(rules.value(bar, u"background"_s), u"transparent"_s);
    for (const QString &arrow : {u"QScrollBar::add-line"_s, u"QScrollBar::sub-line"_s}) {
        QCOMPARE(rules.value(arrow, u"border"_s), u"none"_s);
        QCOMPARE(rules.value(arrow, u"background"_s), u"none"_s);
    }
    QCOMPARE(view->verticalScrollBar()->sizeHint().width(), 8);
    QCOMPARE(view->horizontalScrollBar()->sizeHint().height(), 8);
}

void TestPreferencesBackground::setsAWhitePaletteForAnImage()
{
    QTextBrowser view;
    const ChatBackground background(u"dark"_s, PreferencesForm::imagePath(), Qt::blue);
    background.applyTo(view);
    // The sheet overrides the palette while it is set.
    view.setStyleSheet(QString());
    QCOMPARE(view.palette().color(QPalette::Base), QColor(Qt::white));
    QCOMPARE(view.palette().color(QPalette::Window), QColor(Qt::white));
}

void TestPreferencesBackground::fillsTheBackground()
{
    const WindowSession session;
    QTextBrowser *view = viewOf(session, u"Server"_s);
    view->setAutoFillBackground(false);
    setBackground(session, QString(), QColor(u"#cfe8cf"_s));
    QCOMPARE(backgroundColor(view), QColor(u"#cfe8cf"_s));
    setBackground(session, QString(), QColor());
    QCOMPARE(backgroundColor(view), QColor(Qt::white));
}

void TestPreferencesBackground::skipsTabsWithoutAView()
{
    const WindowSession session;
    session.probe.addListTab();
    setBackground(session, QString(), Qt::red);
    QCOMPARE(session.probe.tabs().value(u"List"_s).page->styleSheet(), QString());
}

void TestPreferencesBackground::appliesTheStoredBackgroundAtStart()
{
    QSettings().setValue(u"chatBgColor"_s, u"#cfe8cf"_s);
    const WindowSession session;
    QCOMPARE(backgroundColor(viewOf(session, u"Server"_s)), QColor(u"#cfe8cf"_s));
}

void TestPreferencesBackground::prefersAStoredImageToAStoredColor()
{
    QSettings().setValue(u"chatBgColor"_s, u"#cfe8cf"_s);
    QSettings().setValue(u"chatBgImage"_s, PreferencesForm::imagePath());
    const WindowSession session;
    QTextBrowser *view = viewOf(session, u"Server"_s);
    QCOMPARE(backgroundColor(view), QColor(Qt::red));
    QVERIFY(!view->styleSheet().contains("cfe8cf"_L1));
    // Both stay stored.
    QCOMPARE(session.probe.chatBgColor(), QColor(u"#cfe8cf"_s));
    QCOMPARE(QSettings().value(u"chatBgColor"_s).toString(), u"#cfe8cf"_s);
}

void TestPreferencesBackground::doesNotRestyleUnchangedViews_data()
{
    QTest::addColumn<QString>("image");
    QTest::addColumn<QColor>("color");
    QTest::newRow("color") << QString() << QColor(Qt::red);
    QTest::newRow("image") << PreferencesForm::imagePath() << QColor();
    QTest::newRow("missing image") << u"/nowhere/image.png"_s << QColor();
}

void TestPreferencesBackground::doesNotRestyleUnchangedViews()
{
    QFETCH(const QString, image);
    QFETCH(const QColor, color);
    const WindowSession session;
    setBackground(session, image, color);
    StyleChangeCounter changes;
    viewOf(session, u"Server"_s)->installEventFilter(&changes);
    session.probe.openTabs({u"bob"_s});
    session.probe.applyChatBackground();
    QCOMPARE(changes.count, 0);
}

void TestPreferencesBackground::restoresPaletteAndAutoFill_data()
{
    QTest::addColumn<QString>("image");
    QTest::newRow("without an image") << QString();
    QTest::newRow("with an image") << PreferencesForm::imagePath();
}

// Even if the style sheet is unchanged.
void TestPreferencesBackground::restoresPaletteAndAutoFill()
{
    QFETCH(const QString, image);
    const WindowSession session;
    setBackground(session, image, QColor());
    QTextBrowser *view = viewOf(session, u"Server"_s);
    const QPalette before = view->palette();

    view->setAutoFillBackground(false);
    session.probe.applyChatBackground();
    QVERIFY(view->autoFillBackground());

    for (const QPalette::ColorRole role : {QPalette::Base, QPalette::Window}) {
        QPalette palette = before;
        palette.setColor(role, Qt::blue);
        view->setPalette(palette);
        session.probe.applyChatBackground();
        QCOMPARE(view->palette().brush(role), before.brush(role));
    }
}

void TestPreferencesBackground::showsAChangedFile()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"image.png"_s);
    const auto write = [&path](const QColor &color, const QDateTime &time) {
        QImage image(20, 20, QImage::Format_RGB32);
        image.fill(color);
        QFile file(path);
        return image.save(path) && file.open(QIODevice::ReadWrite)
               && file.setFileTime(time, QFileDevice::FileModificationTime);
    };
    const QDateTime time = QDateTime::currentDateTime().addDays(-1);
    QVERIFY(write(Qt::red, time));
    const WindowSession session;
    session.probe.openTabs({u"bob"_s});
    setBackground(session, path, QColor());
    QCOMPARE(backgroundColor(viewOf(session, session.probe.currentTabName())), QColor(Qt::red));
    QVERIFY(write(Qt::yellow, time.addSecs(10)));
    session.probe.applyChatBackground();
    for (int index = 0; index < session.probe.tabWidget().count(); ++index) {
        session.probe.clickTab(index);
        QCOMPARE(backgroundColor(viewOf(session, session.probe.currentTabName())),
                 QColor(Qt::yellow));
    }
}

// The second file has other pixels, but the same size and time, so only loading it again shows
// them.
void TestPreferencesBackground::loadsALargeImageOnce()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"large.bmp"_s);
    const QDateTime time = QDateTime::currentDateTime().addDays(-1);
    const auto write = [&path, &time](const QColor &color) {
        QImage image(2000, 2000, QImage::Format_RGB32); // 16 MB
        image.fill(color);
        QFile file(path);
        return image.save(path) && file.open(QIODevice::ReadWrite)
               && file.setFileTime(time, QFileDevice::FileModificationTime);
    };
    QVERIFY(write(Qt::red));
    const ChatBackground background(u"light"_s, path, QColor());
    QTextBrowser first;
    background.applyTo(first);
    QCOMPARE(backgroundColor(&first), QColor(Qt::red));
    QVERIFY(write(Qt::yellow));
    QTextBrowser second;
    background.applyTo(second);
    QCOMPARE(backgroundColor(&second), QColor(Qt::red));
}

void TestPreferencesBackground::stylesEachNewTab_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("tab");
    QTest::newRow("own join") << u":me!m@h JOIN #a"_s << u"#a"_s;
    QTest::newRow("message to a channel") << u":bob!b@h PRIVMSG #b :hi"_s << u"#b"_s;
    QTest::newRow("private message") << u":bob!b@h PRIVMSG me :hi"_s << u"bob"_s;
}

void TestPreferencesBackground::stylesEachNewTab()
{
    QFETCH(const QString, line);
    QFETCH(const QString, tab);
    QSettings().setValue(u"chatBgColor"_s, u"#cfe8cf"_s);
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.receive(line));
    QVERIFY(viewOf(session, tab) != nullptr);
    QCOMPARE(viewOf(session, tab)->styleSheet(), viewOf(session, u"Server"_s)->styleSheet());
    QCOMPARE(viewOf(session, tab)->palette().color(QPalette::Base), QColor(u"#cfe8cf"_s));
}

void TestPreferencesBackground::followsTheTheme()
{
    const WindowSession session;
    session.probe.applyTheme(u"dark"_s);
    QCOMPARE(backgroundColor(viewOf(session, u"Server"_s)), QColor(u"#1E1E1E"_s));
    session.probe.applyTheme(u"light"_s);
    QCOMPARE(backgroundColor(viewOf(session, u"Server"_s)), QColor(Qt::white));
}

void TestPreferencesBackground::showsTheImage_data()
{
    QTest::addColumn<QString>("name");

    QTest::newRow("plain") << u"picture.png"_s;
    QTest::newRow("spaces") << u"my own picture .png"_s;
    QTest::newRow("single quote") << u"mum's picture.png"_s;
    QTest::newRow("double quotes") << u"the \"best\" picture.png"_s;
    QTest::newRow("brackets") << u"a (b) [c] {d} <e>.png"_s;
    QTest::newRow("closing brackets") << u"a)b}c].png"_s;
    QTest::newRow("style sheet's punctuation") << u"a;b:c,d.png"_s;
    QTest::newRow("Cyrillic") << u"картинка.png"_s;
    QTest::newRow("Japanese") << u"絵 日本.png"_s;
    QTest::newRow("umlauts") << u"äöüß.png"_s;
    QTest::newRow("emoji") << u"\U0001F600.png"_s;
    QTest::newRow("URL's special characters") << u"%20#a?b&c.png"_s;
    QTest::newRow("placeholder") << u"%1%2.png"_s;
    QTest::newRow("backslash") << u"a\\xyz.png"_s;
    QTest::newRow("backslash and digits") << u"a\\dead 12.png"_s;
    QTest::newRow("two backslashes") << u"a\\\\b.png"_s;
    QTest::newRow("backslash and quote") << u"a\\\"b.png"_s;
    QTest::newRow("escaped quote") << u"a\\22 b.png"_s;
    QTest::newRow("line break") << u"a\nb.png"_s;
}

void TestPreferencesBackground::showsTheImage()
{
    QFETCH(const QString, name);
    const QTemporaryDir folder;
    const QString path = folder.filePath(name);
    QVERIFY(QFile::copy(PreferencesForm::imagePath(), path));
    WindowSession session;
    setBackground(session, path, QColor());
    QTextBrowser *view = viewOf(session, u"Server"_s);
    QCOMPARE(backgroundColor(view), QColor(Qt::red));
    // The rules after the path still apply.
    QCOMPARE(view->verticalScrollBar()->sizeHint().width(), 8);

    const PreferencesForm form(session);
    const QImage preview = form.preview()->grab().toImage();
    QCOMPARE(preview.pixelColor(preview.rect().center()), QColor(Qt::red));
}

void TestPreferencesBackground::doesNotEscapeOrdinaryPaths_data()
{
    QTest::addColumn<QString>("path");

    QTest::newRow("plain") << u"/a/b.png"_s;
    QTest::newRow("spaces and brackets") << u"/a b/(c) [d].png"_s;
    QTest::newRow("single quote") << u"/mum's.png"_s;
    QTest::newRow("letters") << u"/картинка 絵.png"_s;
    QTest::newRow("placeholders") << u"/%1%2.png"_s;
    QTest::newRow("drive letter") << u"C:/a b.png"_s;
}

void TestPreferencesBackground::doesNotEscapeOrdinaryPaths()
{
    QFETCH(const QString, path);
    const WindowSession session;
    setBackground(session, path, QColor());
    QVERIFY(viewOf(session, u"Server"_s)
                    ->styleSheet()
                    .contains(u"border-image: url(\"%1\") 0 0 0 0 stretch stretch;"_s.arg(path)));
}

void TestPreferencesBackground::showsPlainBackgroundForAMissingImage()
{
    const WindowSession session;
    const QTemporaryDir folder;
    setBackground(session, folder.filePath(u"gone.png"_s), QColor());
    QTextBrowser *view = viewOf(session, u"Server"_s);
    QCOMPARE(backgroundColor(view), QColor(Qt::white));
    QCOMPARE(view->verticalScrollBar()->sizeHint().width(), 8);
}

void TestPreferencesBackground::keepsTheImageInPlaceWhileTheTextScrolls()
{
    const QTemporaryDir folder;
    QImage halves(2, 2, QImage::Format_RGB32);
    halves.fill(Qt::red);
    halves.setPixelColor(0, 1, Qt::yellow);
    halves.setPixelColor(1, 1, Qt::yellow);
    const QString path = folder.filePath(u"halves.png"_s);
    QVERIFY(halves.save(path));
    const WindowSession session;
    setBackground(session, path, QColor());
    for (int line = 0; line < 200; ++line)
        session.probe.appendMessageToTab(u"Server"_s, u"text"_s);
    QTextBrowser *view = viewOf(session, u"Server"_s);
    for (const int value : {0, 300, view->verticalScrollBar()->maximum()}) {
        view->verticalScrollBar()->setValue(value);
        const QImage screenshot = session.window.grab().toImage();
        // To the right of the text, near the view's upper and lower edge.
        const QPoint corner = view->mapTo(&session.window, QPoint(view->width() - 60, 0));
        QCOMPARE(screenshot.pixelColor(corner + QPoint(0, 40)), QColor(Qt::red));
        QCOMPARE(screenshot.pixelColor(corner + QPoint(0, view->height() - 40)),
                 QColor(Qt::yellow));
    }
}

void TestPreferencesBackground::keepsTextReadable_data()
{
    QTest::addColumn<QString>("image");
    QTest::addColumn<QColor>("color");
    QTest::newRow("none") << QString() << QColor();
    QTest::newRow("color") << QString() << QColor(u"#cfe8cf"_s);
    QTest::newRow("image") << PreferencesForm::imagePath() << QColor();
}

void TestPreferencesBackground::keepsTextReadable()
{
    QFETCH(const QString, image);
    QFETCH(const QColor, color);
    const WindowSession session;
    setBackground(session, image, color);
    session.probe.appendMessageToTab(u"Server"_s, u"\u2588\u2588\u2588\u2588"_s);
    QTextBrowser *view = viewOf(session, u"Server"_s);
    // These characters are filled with the text's colour.
    QTextCursor cursor = view->textCursor();
    cursor.movePosition(QTextCursor::Left, QTextCursor::MoveAnchor, 2);
    const QPoint middle = view->viewport()->mapTo(view, view->cursorRect(cursor).center());
    QCOMPARE(view->grab().toImage().pixelColor(middle), QColor(u"#333333"_s));
}

QTEST_MAIN(TestPreferencesBackground)
#include "tst_PreferencesBackground.moc"
