#include "ConversationPage.h"
#include "EditTopicDialog.h"
#include "InfoDialogs.h"
#include "ModalAnswers.h"

#include <QAction>
#include <QApplication>
#include <QDialog>
#include <QIcon>
#include <QLabel>
#include <QPixmap>
#include <QPushButton>
#include <QTest>
#include <QToolBar>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

constexpr int IconSize = 24;

// Returns the size of the icon in device pixels at a ratio of 2, margins included.
QSize deviceSize(const QIcon &icon)
{
    return icon.pixmap(QSize(IconSize, IconSize), 2.0).size();
}

// Returns the bounding rectangle of what is drawn, in device pixels.
QRect drawnArea(const QIcon &icon)
{
    const QImage image = icon.pixmap(QSize(IconSize, IconSize), 2.0).toImage();
    QRect area;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (qAlpha(image.pixel(x, y)) > 0)
                area |= QRect(x, y, 1, 1);
        }
    }
    return area;
}

} // namespace

/// Icons drawn at run time, on a screen with a device pixel ratio of 2.
class TestHighDpi final : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void drawsPencilInFullResolution();
    void drawsToolBarIconsInFullResolution();
    void showsProgramIconInFullResolution_data();
    void showsProgramIconInFullResolution();
};

void TestHighDpi::initTestCase()
{
    QCOMPARE(qApp->devicePixelRatio(), 2.0);
}

void TestHighDpi::drawsPencilInFullResolution()
{
    const std::unique_ptr<QWidget> page(ConversationPage::create(true));
    const auto *button = page->findChild<QPushButton *>(u"editTopicBtn"_s);
    QVERIFY(button);
    QCOMPARE(deviceSize(button->icon()), QSize(2 * IconSize, 2 * IconSize));
    // The pencil extends across the middle in both directions, so it is drawn whole.
    QVERIFY(drawnArea(button->icon()).contains(QRect(IconSize - 6, IconSize - 6, 12, 12)));
    QVERIFY(drawnArea(button->icon()).width() > IconSize);
}

void TestHighDpi::drawsToolBarIconsInFullResolution()
{
    const EditTopicDialog dialog(u"#c"_s, {}, u"light"_s, nullptr);
    const QList<QAction *> actions = dialog.findChild<QToolBar *>()->actions();
    QCOMPARE(actions.size(), 6);
    for (const QAction *action : actions) {
        QCOMPARE(deviceSize(action->icon()), QSize(2 * IconSize, 2 * IconSize));
        // The letter is centred.
        const QPoint centre = drawnArea(action->icon()).center();
        QVERIFY2(qAbs(centre.x() - IconSize) <= 6, qPrintable(action->text()));
        QVERIFY2(qAbs(centre.y() - IconSize) <= 8, qPrintable(action->text()));
    }
}

using Show = void (*)();

void TestHighDpi::showsProgramIconInFullResolution_data()
{
    QTest::addColumn<Show>("show");
    QTest::addColumn<QSizeF>("size");

    QTest::newRow("about") << Show([] { InfoDialogs::showAbout(nullptr); }) << QSizeF(96, 96);
    QTest::newRow("help") << Show([] { InfoDialogs::showHelp(nullptr, u"light"_s); })
                          << QSizeF(48, 48);
}

void TestHighDpi::showsProgramIconInFullResolution()
{
    QFETCH(const Show, show);
    QFETCH(const QSizeF, size);
    QPixmap shown;
    ModalAnswers answers;
    answers.queueForDialog([&shown](QDialog *dialog) {
        const QList<QLabel *> labels = dialog->findChildren<QLabel *>();
        for (const QLabel *label : labels) {
            if (!label->pixmap().isNull())
                shown = label->pixmap();
        }
        dialog->reject();
    });
    show();
    QCOMPARE(answers.problems(), QStringList());
    QCOMPARE(shown.devicePixelRatio(), 2.0);
    QCOMPARE(shown.deviceIndependentSize(), size);
}

int main(int argc, char *argv[])
{
    // Qt reads it once, when the application is created.
    qputenv("QT_SCALE_FACTOR", "2");
    QApplication application(argc, argv);
    TestHighDpi test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_HighDpi.moc"
