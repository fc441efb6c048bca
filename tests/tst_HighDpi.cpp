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

// The icon as a screen of two points for each one shows it; empty rows and columns count.
QSize pointsOf(const QIcon &icon)
{
    return icon.pixmap(QSize(IconSize, IconSize), 2.0).size();
}

// Where something is drawn, in the points of the picture.
QRect drawnArea(const QIcon &icon)
{
    const QImage picture = icon.pixmap(QSize(IconSize, IconSize), 2.0).toImage();
    QRect area;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            if (qAlpha(picture.pixel(x, y)) > 0)
                area |= QRect(x, y, 1, 1);
        }
    }
    return area;
}

} // namespace

/// What is drawn at run time, on a screen that has two points for each one of a window.
class TestHighDpi final : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void drawsThePencilSharply();
    void drawsTheTopicEditorsIconsSharply();
    void showsTheProgramsIconSharply_data();
    void showsTheProgramsIconSharply();
};

void TestHighDpi::initTestCase()
{
    QCOMPARE(qApp->devicePixelRatio(), 2.0);
}

void TestHighDpi::drawsThePencilSharply()
{
    const std::unique_ptr<QWidget> page(ConversationPage::create(true));
    const auto *button = page->findChild<QPushButton *>(u"editTopicBtn"_s);
    QVERIFY(button);
    QCOMPARE(pointsOf(button->icon()), QSize(2 * IconSize, 2 * IconSize));
    // The whole of it: it reaches over the middle in both directions.
    QVERIFY(drawnArea(button->icon()).contains(QRect(IconSize - 6, IconSize - 6, 12, 12)));
    QVERIFY(drawnArea(button->icon()).width() > IconSize);
}

void TestHighDpi::drawsTheTopicEditorsIconsSharply()
{
    const EditTopicDialog dialog(u"#c"_s, {}, u"light"_s, nullptr);
    const QList<QAction *> actions = dialog.findChild<QToolBar *>()->actions();
    QCOMPARE(actions.size(), 6);
    for (const QAction *action : actions) {
        QCOMPARE(pointsOf(action->icon()), QSize(2 * IconSize, 2 * IconSize));
        // A letter stands in the middle.
        const QPoint centre = drawnArea(action->icon()).center();
        QVERIFY2(qAbs(centre.x() - IconSize) <= 6, qPrintable(action->text()));
        QVERIFY2(qAbs(centre.y() - IconSize) <= 8, qPrintable(action->text()));
    }
}

using Show = void (*)();

void TestHighDpi::showsTheProgramsIconSharply_data()
{
    QTest::addColumn<Show>("show");
    QTest::addColumn<QSizeF>("size");

    QTest::newRow("about") << Show([] { InfoDialogs::showAbout(nullptr); }) << QSizeF(96, 96);
    QTest::newRow("help") << Show([] { InfoDialogs::showHelp(nullptr, u"light"_s); })
                          << QSizeF(48, 48);
}

void TestHighDpi::showsTheProgramsIconSharply()
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
    // Read once, when the application is made.
    qputenv("QT_SCALE_FACTOR", "2");
    QApplication application(argc, argv);
    TestHighDpi test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_HighDpi.moc"
