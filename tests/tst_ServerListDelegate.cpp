#include "ServerListDelegate.h"

#include <QFontMetrics>
#include <QImage>
#include <QPainter>
#include <QStandardItemModel>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

const QColor Gold(u"#FFD700"_s);
const QColor Text(10, 20, 30);
const QColor Base(240, 250, 230);
const QColor AlternateBase(200, 210, 220);
const QColor Highlight(0, 0, 120);
const QColor HighlightedText(120, 255, 120);
const QColor DisabledText(130, 131, 132);
const QColor DisabledBase(90, 91, 92);
const QColor DisabledAlternateBase(70, 71, 72);
const QColor DisabledHighlight(50, 51, 52);
const QColor DisabledHighlightedText(180, 181, 182);

constexpr QRect RowRect(10, 5, 300, 40);

QPalette testPalette()
{
    QPalette palette;
    palette.setColor(QPalette::Active, QPalette::Text, Text);
    palette.setColor(QPalette::Active, QPalette::Base, Base);
    palette.setColor(QPalette::Active, QPalette::AlternateBase, AlternateBase);
    palette.setColor(QPalette::Active, QPalette::Highlight, Highlight);
    palette.setColor(QPalette::Active, QPalette::HighlightedText, HighlightedText);
    palette.setColor(QPalette::Disabled, QPalette::Text, DisabledText);
    palette.setColor(QPalette::Disabled, QPalette::Base, DisabledBase);
    palette.setColor(QPalette::Disabled, QPalette::AlternateBase, DisabledAlternateBase);
    palette.setColor(QPalette::Disabled, QPalette::Highlight, DisabledHighlight);
    palette.setColor(QPalette::Disabled, QPalette::HighlightedText, DisabledHighlightedText);
    // Rows of inactive windows have the active colours too, so these must not appear.
    for (const auto role : {QPalette::Text, QPalette::Base, QPalette::AlternateBase,
                            QPalette::Highlight, QPalette::HighlightedText})
        palette.setColor(QPalette::Inactive, role, Qt::magenta);
    return palette;
}

QFont testFont()
{
    QFont font;
    font.setPixelSize(28);
    font.setStyleStrategy(QFont::NoAntialias);
    return font;
}

QImage paintRow(const QString &text, QStyle::State state, const QRect &rect = RowRect,
                Qt::LayoutDirection direction = Qt::LeftToRight)
{
    QStandardItemModel model;
    model.appendRow(new QStandardItem(text));
    QStyleOptionViewItem option;
    option.rect = rect;
    option.palette = testPalette();
    option.font = testFont();
    option.state = state;
    option.features = QStyleOptionViewItem::Alternate;
    option.direction = direction;

    QImage image(320, 50, QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::TextAntialiasing, false);
    const ServerListDelegate delegate(nullptr);
    delegate.paint(&painter, option, model.index(0, 0));
    return image;
}

// Returns the bounding rectangle of all pixels of `color`; empty if there are none.
QRect areaOf(const QImage &image, const QColor &color)
{
    QRect area;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (image.pixelColor(x, y) == color)
                area |= QRect(x, y, 1, 1);
        }
    }
    return area;
}

} // namespace

class TestServerListDelegate final : public QObject
{
    Q_OBJECT

private slots:
    void paintsRowsInTheirColors_data();
    void paintsRowsInTheirColors();
    void paintsTheStarInGold_data();
    void paintsTheStarInGold();
    void paintsTheAddressAfterTheStar();
    void mirrorsRightToLeftRows();
    void keepsAMarginAndClipsLongTexts();
    void centersTheTextVertically();
    void restoresThePainter();
    void keepsTheDefaultSizeHint();
};

void TestServerListDelegate::paintsRowsInTheirColors_data()
{
    QTest::addColumn<int>("state");
    QTest::addColumn<QColor>("text");
    QTest::addColumn<QColor>("background");

    constexpr int Enabled = QStyle::State_Enabled;
    constexpr int Selected = QStyle::State_Selected;
    constexpr int Hovered = QStyle::State_MouseOver;
    QTest::newRow("plain") << Enabled << Text << Base;
    QTest::newRow("hovered") << (Enabled | Hovered) << Text << AlternateBase;
    QTest::newRow("selected") << (Enabled | Selected) << HighlightedText << Highlight;
    QTest::newRow("selected and hovered")
            << (Enabled | Selected | Hovered) << HighlightedText << Highlight;
    QTest::newRow("disabled") << 0 << DisabledText << DisabledBase;
    QTest::newRow("disabled, hovered") << Hovered << DisabledText << DisabledAlternateBase;
    QTest::newRow("disabled, selected") << Selected << DisabledHighlightedText << DisabledHighlight;
}

void TestServerListDelegate::paintsRowsInTheirColors()
{
    QFETCH(const int, state);
    QFETCH(const QColor, text);
    QFETCH(const QColor, background);
    const QImage image = paintRow(u"irc.example.org:6667"_s, QStyle::State(state));
    QCOMPARE(areaOf(image, background), RowRect);
    QVERIFY(!areaOf(image, text).isEmpty());
    QVERIFY(areaOf(image, Gold).isEmpty());
    QCOMPARE(image.pixelColor(RowRect.left() - 1, RowRect.center().y()), QColor(Qt::white));
}

void TestServerListDelegate::paintsTheStarInGold_data()
{
    QTest::addColumn<int>("state");
    QTest::addColumn<QColor>("text");

    QTest::newRow("plain") << int(QStyle::State_Enabled) << Text;
    QTest::newRow("selected") << int(QStyle::State_Enabled | QStyle::State_Selected)
                              << HighlightedText;
    QTest::newRow("disabled") << 0 << DisabledText;
}

void TestServerListDelegate::paintsTheStarInGold()
{
    QFETCH(const int, state);
    QFETCH(const QColor, text);
    const QImage image = paintRow(u"\u2605 irc.example.org:6667"_s, QStyle::State(state));
    const QRect star = areaOf(image, Gold);
    const QRect address = areaOf(image, text);
    QVERIFY(!star.isEmpty());
    QVERIFY(!address.isEmpty());
    QVERIFY(star.right() < address.left());
    // Only a star at the start is a mark.
    QVERIFY(areaOf(paintRow(u"irc \u2605 "_s, QStyle::State(state)), Gold).isEmpty());
}

void TestServerListDelegate::paintsTheAddressAfterTheStar()
{
    const QImage plain = paintRow(u"irc.org"_s, QStyle::State_Enabled);
    const QImage favorite = paintRow(u"\u2605 irc.org"_s, QStyle::State_Enabled);
    const int width = QFontMetrics(testFont()).horizontalAdvance(u"\u2605 "_s);
    QCOMPARE(areaOf(favorite, Text), areaOf(plain, Text).translated(width, 0));
}

void TestServerListDelegate::mirrorsRightToLeftRows()
{
    const auto paint = [](const QString &text) {
        return paintRow(text, QStyle::State_Enabled, RowRect, Qt::RightToLeft);
    };
    const QImage favorite = paint(u"\u2605 irc.org"_s);
    const QRect star = areaOf(favorite, Gold);
    const QRect plain = areaOf(paint(u"irc.org"_s), Text);
    const int width = QFontMetrics(testFont()).horizontalAdvance(u"\u2605 "_s);
    QVERIFY(star.right() >= RowRect.right() - 4 - width);
    QVERIFY(star.right() <= RowRect.right() - 4);
    QVERIFY(plain.right() >= RowRect.right() - 12);
    QCOMPARE(areaOf(favorite, Text), plain.translated(-width, 0));
}

void TestServerListDelegate::keepsAMarginAndClipsLongTexts()
{
    const QImage image = paintRow(QString(100, u'M'), QStyle::State_Enabled);
    const QRect text = areaOf(image, Text);
    QVERIFY(text.left() >= RowRect.left() + 4);
    QVERIFY(text.left() <= RowRect.left() + 8);
    QVERIFY(text.right() <= RowRect.right() - 4);
    QVERIFY(text.right() >= RowRect.right() - 12); // No space is left for an ellipsis.
}

void TestServerListDelegate::centersTheTextVertically()
{
    const QRect high(10, 0, 300, 50);
    const QRect text = areaOf(paintRow(u"H"_s, QStyle::State_Enabled, high), Text);
    const int middleOfLine =
            text.bottom() + 1
            - (QFontMetrics(testFont()).ascent() - QFontMetrics(testFont()).descent()) / 2;
    QVERIFY(qAbs(middleOfLine - high.center().y()) <= 2);
}

void TestServerListDelegate::restoresThePainter()
{
    QStandardItemModel model;
    model.appendRow(new QStandardItem(u"\u2605 irc.org"_s));
    QStyleOptionViewItem option;
    option.rect = RowRect;
    option.font = testFont();
    QImage image(320, 50, QImage::Format_RGB32);
    QPainter painter(&image);
    painter.setPen(Qt::cyan);
    const QFont font = painter.font();
    ServerListDelegate(nullptr).paint(&painter, option, model.index(0, 0));
    QCOMPARE(painter.pen().color(), QColor(Qt::cyan));
    QCOMPARE(painter.font(), font);
}

void TestServerListDelegate::keepsTheDefaultSizeHint()
{
    QStandardItemModel model;
    model.appendRow(new QStandardItem(u"\u2605 irc.org"_s));
    QStyleOptionViewItem option;
    option.font = testFont();
    QObject parent;
    auto *delegate = new ServerListDelegate(&parent);
    QCOMPARE(delegate->parent(), &parent);
    QCOMPARE(delegate->sizeHint(option, model.index(0, 0)),
             QStyledItemDelegate().sizeHint(option, model.index(0, 0)));
}

QTEST_MAIN(TestServerListDelegate)
#include "tst_ServerListDelegate.moc"
