#include "EditTopicDialog.h"
#include "EmojiFont.h"
#include "EmojiPicker.h"
#include "IrcText.h"
#include "ModalAnswers.h"
#include "StyleSheetReader.h"
#include "ThemeManager.h"
#include "Waiting.h"

#include <QAction>
#include <QClipboard>
#include <QColorDialog>
#include <QDialogButtonBox>
#include <QFont>
#include <QPainter>
#include <QPixmap>
#include <QPointer>
#include <QPushButton>
#include <QRegularExpression>
#include <QScrollBar>
#include <QShortcut>
#include <QSignalSpy>
#include <QTest>
#include <QTextEdit>
#include <QToolBar>
#include <QToolButton>
#include <QVBoxLayout>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

std::unique_ptr<EditTopicDialog> makeDialog(const QString &topic = {},
                                            const QString &theme = u"light"_s)
{
    return std::make_unique<EditTopicDialog>(u"#c"_s, topic, theme, nullptr);
}

QTextEdit *edit(const QDialog &dialog)
{
    return dialog.findChild<QTextEdit *>();
}

QToolBar *toolBar(const QDialog &dialog)
{
    return dialog.findChild<QToolBar *>();
}

QAction *action(const QDialog &dialog, const QString &text)
{
    const QList<QAction *> actions = toolBar(dialog)->actions();
    for (QAction *candidate : actions) {
        if (candidate->text() == text)
            return candidate;
    }
    return nullptr;
}

void click(const QDialog &dialog, const QString &text)
{
    QTest::mouseClick(toolBar(dialog)->widgetForAction(action(dialog, text)), Qt::LeftButton);
}

void select(const QDialog &dialog, int start, int length)
{
    QTextCursor cursor = edit(dialog)->textCursor();
    cursor.setPosition(start);
    cursor.setPosition(start + length, QTextCursor::KeepAnchor);
    edit(dialog)->setTextCursor(cursor);
}

// Replaces {b}, {i}, {u} and {c} with the codes of bold, italic, underline and colour.
QString withCodes(QString text)
{
    return text.replace("{b}"_L1, QChar(0x02))
            .replace("{i}"_L1, QChar(0x1D))
            .replace("{u}"_L1, QChar(0x1F))
            .replace("{c}"_L1, QChar(0x03));
}

QString withLetters(QString text)
{
    return text.replace(QChar(0x02), "{b}"_L1)
            .replace(QChar(0x1D), "{i}"_L1)
            .replace(QChar(0x1F), "{u}"_L1)
            .replace(QChar(0x03), "{c}"_L1);
}

QString contents(const QDialog &dialog)
{
    return withLetters(edit(dialog)->toPlainText());
}

std::function<void(QDialog *)> choosing(const QColor &color)
{
    return [color](QDialog *shown) {
        auto *colors = qobject_cast<QColorDialog *>(shown);
        QVERIFY(colors != nullptr);
        colors->setCurrentColor(color);
        colors->accept();
    };
}

QImage iconOf(const QDialog &dialog, const QString &text)
{
    return action(dialog, text)
            ->icon()
            .pixmap(24, 24)
            .toImage()
            .convertToFormat(QImage::Format_ARGB32);
}

int countPixels(const QImage &image, QRgb color)
{
    int count = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            count += image.pixel(x, y) == color ? 1 : 0;
    }
    return count;
}

} // namespace

class TestEditTopicDialog final : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void hasTitleAndCloseButton();
    void hasTheLayout();
    void hasActionsInOrder();
    void editsPlainText();
    void showsControlCodes();
    void hasSaveAndCancel();
    void appliesTheThemeOnWhite_data();
    void appliesTheThemeOnWhite();
    void showsBlackTextOnDarkDesktop();
    void drawsIconColors_data();
    void drawsIconColors();
    void drawsIconStyles();
    void drawsIconsExactly_data();
    void drawsIconsExactly();
    void clipsNoButton();

    void returnsTrimmedText_data();
    void returnsTrimmedText();

    void formatsTheSelection_data();
    void formatsTheSelection();
    void formatsTwice();
    void formatsAcrossLineBreak();
    void insertsCodeAtCursor_data();
    void insertsCodeAtCursor();
    void formatsByShortcut_data();
    void formatsByShortcut();

    void showsColorDialog_data();
    void showsColorDialog();
    void choosesNearestColor_data();
    void choosesNearestColor();
    void leavesTextColorOpen();
    void colorsTheSelection();
    void insertsSelectionVerbatim();
    void choosesLegibleForeground_data();
    void choosesLegibleForeground();
    void closesBackgroundWithoutSelection();
    void typingContinuesAfterInsertion();
    void changesNothingWithoutColor_data();
    void changesNothingWithoutColor();

    void opensPickerOverTheMiddle();
    void insertsEmoji();
    void scrollsToCursorAfterEmoji();
    void deletesPickerWithDialog();

    void savesAndCancelsByButton();
    void savesByControlReturn();
    void returnInsertsLineBreak();
    void pastesAsOneLine();
    void cancelsByEscape();

private:
    std::unique_ptr<ModalAnswers> answers;
};

void TestEditTopicDialog::init()
{
    answers = std::make_unique<ModalAnswers>();
    // The offscreen platform warns of what it does not support.
    QTest::failOnWarning(QRegularExpression(u"^(?!This plugin does not support)"_s));
}

void TestEditTopicDialog::cleanup()
{
    QCOMPARE(answers->problems(), QStringList());
}

void TestEditTopicDialog::hasTitleAndCloseButton()
{
    const auto dialog = makeDialog();
    QCOMPARE(dialog->windowTitle(), u"Edit Topic for #c"_s);
    QCOMPARE(dialog->minimumSize(), QSize(560, 380));
    // Qt adds the system menu to a window with a close button.
    QCOMPARE(dialog->windowFlags() & ~Qt::WindowSystemMenuHint,
             Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint
                     | Qt::WindowCloseButtonHint);
    QCOMPARE(EditTopicDialog(u"#%1"_s, {}, u"light"_s, nullptr).windowTitle(),
             u"Edit Topic for #%1"_s);
}

void TestEditTopicDialog::hasTheLayout()
{
    const auto dialog = makeDialog();
    const auto *layout = qobject_cast<QVBoxLayout *>(dialog->layout());
    QVERIFY(layout != nullptr);
    QCOMPARE(layout->contentsMargins(), QMargins(16, 16, 16, 12));
    QCOMPARE(layout->spacing(), 8);
    QCOMPARE(layout->count(), 3);
    QCOMPARE(layout->itemAt(0)->widget(), toolBar(*dialog));
    QCOMPARE(layout->itemAt(1)->widget(), edit(*dialog));
    QCOMPARE(layout->itemAt(2)->widget(), dialog->findChild<QDialogButtonBox *>());
}

void TestEditTopicDialog::hasActionsInOrder()
{
    const auto dialog = makeDialog();
    QStringList texts;
    QList<QKeySequence> shortcuts;
    const auto actions = toolBar(*dialog)->actions();
    for (const QAction *each : actions) {
        texts.append(each->text());
        shortcuts.append(each->shortcut());
    }
    QCOMPARE(texts, (QStringList{u"Bold"_s, u"Italic"_s, u"Underline"_s, u"Text Color"_s,
                                 u"Background Color"_s, u"Emoji"_s}));
    QCOMPARE(shortcuts, (QList<QKeySequence>{QKeySequence::Bold,
                                             QKeySequence::Italic,
                                             QKeySequence::Underline,
                                             {},
                                             {},
                                             {}}));
    QCOMPARE(toolBar(*dialog)->iconSize(), QSize(24, 24));
    QCOMPARE(toolBar(*dialog)->toolButtonStyle(), Qt::ToolButtonIconOnly);
    QCOMPARE(toolBar(*dialog)->styleSheet(),
             u"QToolBar { border: none; spacing: 2px; background: transparent; }"
             "QToolButton { min-width: 32px; min-height: 32px; margin: 0px; padding: 4px; "
             "border-radius: 4px; }"
             "QToolButton:hover { background: rgba(128,128,128,0.15); }"_s);
}

void TestEditTopicDialog::editsPlainText()
{
    const auto dialog = makeDialog();
    QVERIFY(!edit(*dialog)->acceptRichText());
    QCOMPARE(edit(*dialog)->minimumHeight(), 140);
    QCOMPARE(edit(*dialog)->styleSheet(),
             u"QTextEdit { background-color: #FFFFFF; border: 1px solid #ccc; border-radius: 6px; "
             "padding: 8px; font-size: 14px; }"
             "QTextEdit:focus { border: 2px solid #007AFF; padding: 7px; }"_s);
}

void TestEditTopicDialog::showsControlCodes()
{
    const QString topic = withCodes(u"{b}bold{b} {c}4,1red{c} <i>no tag</i> &amp; \u000F\u0016"_s);
    const auto dialog = makeDialog(topic);
    QCOMPARE(edit(*dialog)->toPlainText(), topic);
    QCOMPARE(dialog->newTopic(), topic);
}

void TestEditTopicDialog::hasSaveAndCancel()
{
    const auto dialog = makeDialog();
    const auto *box = dialog->findChild<QDialogButtonBox *>();
    QCOMPARE(box->standardButtons(), QDialogButtonBox::Save | QDialogButtonBox::Cancel);
    QCOMPARE(box->button(QDialogButtonBox::Save)->objectName(), u"connectButton"_s);
    QCOMPARE(box->button(QDialogButtonBox::Cancel)->objectName(), u"cancelButton"_s);
}

void TestEditTopicDialog::appliesTheThemeOnWhite_data()
{
    QTest::addColumn<QString>("theme");
    for (const auto &theme : {u"light"_s, u"dark"_s, u"glass"_s})
        QTest::newRow(qUtf8Printable(theme)) << theme;
}

void TestEditTopicDialog::appliesTheThemeOnWhite()
{
    QFETCH(const QString, theme);
    const auto dialog = makeDialog(QString(), theme);
    QCOMPARE(dialog->styleSheet(), QString(ThemeManager::dialogStyleSheet(theme)
                                           + u" QDialog { background-color: #FFFFFF; }"_s));
    QVERIFY(!dialog->testAttribute(Qt::WA_TranslucentBackground));
    dialog->show();
    const QImage image = dialog->grab().toImage();
    QCOMPARE(image.pixelColor(5, 5), QColor(Qt::white));
    QCOMPARE(image.pixelColor(dialog->width() - 5, dialog->height() - 5), QColor(Qt::white));
    QCOMPARE(image.pixelColor(edit(*dialog)->geometry().center()), QColor(Qt::white));

    // applyTheme() alone restores the theme's sheet.
    dialog->applyTheme();
    QCOMPARE(dialog->styleSheet(), ThemeManager::dialogStyleSheet(theme));
    // Qt disables the auto fill while a sheet sets a background.
    dialog->setStyleSheet(QString());
    QVERIFY(dialog->autoFillBackground());
}

void TestEditTopicDialog::showsBlackTextOnDarkDesktop()
{
    const QPalette before = QApplication::palette();
    QPalette dark = before;
    dark.setColor(QPalette::Text, Qt::white);
    dark.setColor(QPalette::Base, Qt::black);
    QApplication::setPalette(dark);
    const auto dialog = makeDialog(u"\u2588\u2588\u2588"_s);
    dialog->show();
    const QImage image = edit(*dialog)->grab().toImage();
    QApplication::setPalette(before);
    QVERIFY(countPixels(image.convertToFormat(QImage::Format_ARGB32), qRgb(0, 0, 0)) > 10);
}

void TestEditTopicDialog::drawsIconColors_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QRgb>("color");

    QTest::newRow("bold") << u"Bold"_s << qRgb(0x33, 0x33, 0x33);
    QTest::newRow("italic") << u"Italic"_s << qRgb(0x33, 0x33, 0x33);
    QTest::newRow("underline") << u"Underline"_s << qRgb(0x33, 0x33, 0x33);
    QTest::newRow("text colour") << u"Text Color"_s << qRgb(0x00, 0x7A, 0xFF);
    QTest::newRow("background glyph") << u"Background Color"_s << qRgb(0x33, 0x33, 0x33);
    QTest::newRow("background square") << u"Background Color"_s << qRgb(0xFF, 0xFF, 0x99);
}

void TestEditTopicDialog::drawsIconColors()
{
    QFETCH(const QString, text);
    QFETCH(const QRgb, color);
    const auto dialog = makeDialog();
    const QImage icon = iconOf(*dialog, text);
    QCOMPARE(icon.size(), QSize(24, 24));
    QCOMPARE(icon.pixelColor(0, 0).alpha(), 0);
    QCOMPARE(icon.pixelColor(1, 12).alpha(), 0);
    QVERIFY2(countPixels(icon, color) > 5, qPrintable(QString::number(countPixels(icon, color))));
    // Only one icon has a background square, whose corners are round.
    const bool hasSquare = text == u"Background Color"_s;
    QCOMPARE(icon.pixelColor(3, 12), hasSquare ? QColor(0xFF, 0xFF, 0x99) : QColor(0, 0, 0, 0));
    QVERIFY(icon.pixelColor(2, 2).alpha() < 255);
}

void TestEditTopicDialog::drawsIconStyles()
{
    const auto dialog = makeDialog();
    // The widest row of the lower half, which contains the underline.
    const auto widest = [&](const QString &text) {
        const QImage icon = iconOf(*dialog, text);
        int most = 0;
        for (int y = 12; y < 24; ++y) {
            int length = 0;
            for (int x = 0; x < 24; ++x)
                length += icon.pixelColor(x, y).alpha() > 100 ? 1 : 0;
            most = std::max(most, length);
        }
        return most;
    };
    QVERIFY(widest(u"Underline"_s) > 10);
    // A slanted "I" covers more columns than an upright one.
    const QImage slanted = iconOf(*dialog, u"Italic"_s);
    QSet<int> columns;
    for (int y = 0; y < 24; ++y) {
        for (int x = 0; x < 24; ++x) {
            if (slanted.pixelColor(x, y).alpha() > 100)
                columns.insert(x);
        }
    }
    QVERIFY(columns.size() > 3);
    QVERIFY(widest(u"Bold"_s) > widest(u"Italic"_s));
    // Whether it has colours depends on the installed fonts.
    const QImage emoji = iconOf(*dialog, u"Emoji"_s);
    QVERIFY(countPixels(emoji, qRgba(0, 0, 0, 0)) < 24 * 24 - 50);
}

void TestEditTopicDialog::drawsIconsExactly_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("glyph");
    QTest::addColumn<QColor>("color");
    QTest::addColumn<int>("pixelSize");
    QTest::addColumn<QFont>("font");
    QFont bold;
    bold.setBold(true);
    QFont italic;
    italic.setItalic(true);
    QFont underlined;
    underlined.setUnderline(true);

    QTest::newRow("bold") << u"Bold"_s << u"B"_s << QColor(0x33, 0x33, 0x33) << 18 << bold;
    QTest::newRow("italic") << u"Italic"_s << u"I"_s << QColor(0x33, 0x33, 0x33) << 18 << italic;
    QTest::newRow("underline") << u"Underline"_s << u"U"_s << QColor(0x33, 0x33, 0x33) << 18
                               << underlined;
    QTest::newRow("text color") << u"Text Color"_s << u"A"_s << QColor(0x00, 0x7A, 0xFF) << 18
                                << bold;
    QTest::newRow("background color")
            << u"Background Color"_s << u"A"_s << QColor(0x33, 0x33, 0x33) << 18 << bold;
    QTest::newRow("emoji") << u"Emoji"_s << u"😊"_s << QColor(Qt::black) << 20
                           << EmojiFont::colored(QFont());
}

void TestEditTopicDialog::drawsIconsExactly()
{
    QFETCH(const QString, text);
    QFETCH(const QString, glyph);
    QFETCH(const QColor, color);
    QFETCH(const int, pixelSize);
    QFETCH(QFont, font);
    const auto dialog = makeDialog();
    font.setPixelSize(pixelSize);
    QPixmap expected(24, 24);
    expected.fill(Qt::transparent);
    QPainter painter(&expected);
    painter.setRenderHint(QPainter::Antialiasing);
    if (text == u"Background Color"_s) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(QColor(0xFF, 0xFF, 0x99));
        painter.drawRoundedRect(2, 2, 20, 20, 4, 4);
    }
    painter.setFont(font);
    painter.setPen(color);
    painter.drawText(QRect(0, 0, 24, 24), Qt::AlignCenter, glyph);
    painter.end();
    QCOMPARE(iconOf(*dialog, text), expected.toImage().convertToFormat(QImage::Format_ARGB32));
}

void TestEditTopicDialog::clipsNoButton()
{
    const auto dialog = makeDialog();
    dialog->show();
    QVERIFY(QTest::qWaitForWindowExposed(dialog.get(), WaitTimeout));
    const auto actions = toolBar(*dialog)->actions();
    for (QAction *each : actions) {
        const QWidget *button = toolBar(*dialog)->widgetForAction(each);
        QVERIFY(button->isVisible());
        QVERIFY(toolBar(*dialog)->rect().contains(button->geometry()));
        QVERIFY(button->width() >= 32);
        QVERIFY(button->height() >= 32);
    }
    const auto buttons = dialog->findChildren<QPushButton *>();
    for (const QPushButton *button : buttons)
        QVERIFY(button->width() >= button->sizeHint().width());
}

void TestEditTopicDialog::returnsTrimmedText_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("topic");

    QTest::newRow("empty") << QString() << QString();
    QTest::newRow("spaces only") << u" \t\n "_s << QString();
    QTest::newRow("spaces at both ends") << u"  a  b \n"_s << u"a  b"_s;
    QTest::newRow("line break within") << u"\na\nb\n"_s << u"a\nb"_s;
    QTest::newRow("codes at both ends")
            << u"{b}{i}{u}{c}a{c}{u}{i}{b}"_s << u"{b}{i}{u}{c}a{c}{u}{i}{b}"_s;
    QTest::newRow("spaces within codes") << u" {b} a {b} "_s << u"{b} a {b}"_s;
}

void TestEditTopicDialog::returnsTrimmedText()
{
    QFETCH(const QString, text);
    const auto dialog = makeDialog(u"old"_s);
    edit(*dialog)->setPlainText(withCodes(text));
    QTEST(withLetters(dialog->newTopic()), "topic");
}

void TestEditTopicDialog::formatsTheSelection_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("topic");

    QTest::newRow("bold") << u"Bold"_s << u"one {b}two{b} three"_s;
    QTest::newRow("italic") << u"Italic"_s << u"one {i}two{i} three"_s;
    QTest::newRow("underline") << u"Underline"_s << u"one {u}two{u} three"_s;
}

void TestEditTopicDialog::formatsTheSelection()
{
    QFETCH(const QString, text);
    const auto dialog = makeDialog(u"one two three"_s);
    dialog->show();
    select(*dialog, 4, 3);
    click(*dialog, text);
    QTEST(contents(*dialog), "topic");
    QVERIFY(!edit(*dialog)->textCursor().hasSelection());
    QCOMPARE(edit(*dialog)->textCursor().position(), 9);
}

void TestEditTopicDialog::formatsTwice()
{
    const auto dialog = makeDialog(u"one two three"_s);
    dialog->show();
    select(*dialog, 4, 3);
    click(*dialog, u"Bold"_s);
    select(*dialog, 4, 5);
    click(*dialog, u"Bold"_s);
    QCOMPARE(contents(*dialog), u"one {b}{b}two{b}{b} three"_s);
    select(*dialog, 6, 3);
    click(*dialog, u"Bold"_s);
    QCOMPARE(contents(*dialog), u"one {b}{b}{b}two{b}{b}{b} three"_s);
}

void TestEditTopicDialog::formatsAcrossLineBreak()
{
    const auto dialog = makeDialog(u"one\ntwo"_s);
    edit(*dialog)->selectAll();
    dialog->insertIrcFormatting(QChar(0x02));
    QCOMPARE(withLetters(dialog->newTopic()), u"{b}one\ntwo{b}"_s);
}

void TestEditTopicDialog::insertsCodeAtCursor_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("topic");

    QTest::newRow("bold") << u"Bold"_s << u"one {b}two"_s;
    QTest::newRow("italic") << u"Italic"_s << u"one {i}two"_s;
    QTest::newRow("underline") << u"Underline"_s << u"one {u}two"_s;
}

void TestEditTopicDialog::insertsCodeAtCursor()
{
    QFETCH(const QString, text);
    const auto dialog = makeDialog(u"one two"_s);
    dialog->show();
    select(*dialog, 4, 0);
    click(*dialog, text);
    QTEST(contents(*dialog), "topic");
    QCOMPARE(edit(*dialog)->textCursor().position(), 5);
}

void TestEditTopicDialog::formatsByShortcut_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<QString>("topic");

    QTest::newRow("bold") << int(Qt::Key_B) << u"{b}one{b}"_s;
    QTest::newRow("italic") << int(Qt::Key_I) << u"{i}one{i}"_s;
    QTest::newRow("underline") << int(Qt::Key_U) << u"{u}one{u}"_s;
}

void TestEditTopicDialog::formatsByShortcut()
{
    QFETCH(const int, key);
    const auto dialog = makeDialog(u"one"_s);
    dialog->show();
    QVERIFY(QTest::qWaitForWindowActive(dialog.get(), WaitTimeout));
    edit(*dialog)->selectAll();
    QTest::keyClick(edit(*dialog), static_cast<Qt::Key>(key), Qt::ControlModifier);
    QTEST(contents(*dialog), "topic");
}

void TestEditTopicDialog::showsColorDialog_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("title");

    QTest::newRow("text") << u"Text Color"_s << u"Choose Text Color"_s;
    QTest::newRow("background") << u"Background Color"_s << u"Choose Background Color"_s;
}

void TestEditTopicDialog::showsColorDialog()
{
    QFETCH(const QString, text);
    const auto dialog = makeDialog();
    dialog->show();
    QString title;
    QColor initial;
    const QWidget *parent = nullptr;
    answers->queueForDialog([&](QDialog *shown) {
        auto *colors = qobject_cast<QColorDialog *>(shown);
        QVERIFY(colors != nullptr);
        title = colors->windowTitle();
        initial = colors->currentColor();
        parent = colors->parentWidget();
        colors->reject();
    });
    click(*dialog, text);
    QTEST(title, "title");
    QCOMPARE(initial, QColor(Qt::white));
    QCOMPARE(parent, dialog.get());
}

void TestEditTopicDialog::choosesNearestColor_data()
{
    QTest::addColumn<QColor>("color");
    QTest::addColumn<int>("index");

    const auto &table = IrcText::colors();
    for (size_t index = 0; index < table.size(); ++index)
        QTest::addRow("number %d itself", int(index)) << table.at(index) << int(index);
    QTest::newRow("white") << QColor(Qt::white) << 0;
    QTest::newRow("red") << QColor(255, 0, 0) << 4;
    QTest::newRow("nearly red") << QColor(250, 10, 20) << 4;
    QTest::newRow("nearly white") << QColor(240, 240, 240) << 0;
    QTest::newRow("light grey") << QColor(200, 190, 195) << 15;
    QTest::newRow("transparent blue") << QColor(0, 0, 255, 0) << 12;
    QTest::newRow("between black and navy") << QColor(0, 0, 64) << 1;
    QTest::newRow("nearer to navy") << QColor(0, 0, 65) << 2;
    QTest::newRow("between maroon and purple") << QColor(128, 0, 64) << 5;
    QTest::newRow("between green and teal") << QColor(0, 128, 64) << 3;
}

void TestEditTopicDialog::choosesNearestColor()
{
    QFETCH(const QColor, color);
    QFETCH(const int, index);
    const auto dialog = makeDialog();
    answers->queueForDialog(choosing(color));
    dialog->chooseIrcColor(false);
    QCOMPARE(contents(*dialog), u"{c}%1"_s.arg(index));
}

void TestEditTopicDialog::leavesTextColorOpen()
{
    const auto dialog = makeDialog(u"one two"_s);
    dialog->show();
    select(*dialog, 4, 0);
    answers->queueForDialog(choosing(Qt::red));
    click(*dialog, u"Text Color"_s);
    QCOMPARE(contents(*dialog), u"one {c}4two"_s);
    QCOMPARE(edit(*dialog)->textCursor().position(), 6);
}

void TestEditTopicDialog::colorsTheSelection()
{
    const auto dialog = makeDialog(u"one two three"_s);
    dialog->show();
    select(*dialog, 4, 3);
    answers->queueForDialog(choosing(Qt::red));
    click(*dialog, u"Text Color"_s);
    QCOMPARE(contents(*dialog), u"one {c}4two{c} three"_s);
    QVERIFY(!edit(*dialog)->textCursor().hasSelection());
}

void TestEditTopicDialog::insertsSelectionVerbatim()
{
    // Intended: a leading digit of the selection joins the colour's number.
    const auto dialog = makeDialog(u"%1 %2 2"_s);
    edit(*dialog)->selectAll();
    answers->queueForDialog(choosing(Qt::red));
    dialog->chooseIrcColor(false);
    QCOMPARE(contents(*dialog), u"{c}4%1 %2 2{c}"_s);

    edit(*dialog)->setPlainText(u"2 %3"_s);
    edit(*dialog)->selectAll();
    answers->queueForDialog(choosing(Qt::red));
    dialog->chooseIrcColor(true);
    QCOMPARE(contents(*dialog), u"{c}0,42 %3{c}"_s);
}

void TestEditTopicDialog::choosesLegibleForeground_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<int>("foreground");

    constexpr int White = 0;
    constexpr int Black = 1;
    // The luminance of grey, number 14, is just below 128.
    const QList<int> foregrounds{Black, White, White, White, White, White, White, Black,
                                 Black, Black, White, Black, White, White, White, Black};
    for (int index = 0; index < 16; ++index)
        QTest::addRow("on number %d", index) << index << foregrounds.at(index);
}

void TestEditTopicDialog::choosesLegibleForeground()
{
    QFETCH(const int, index);
    QFETCH(const int, foreground);
    const auto dialog = makeDialog(u"one two"_s);
    select(*dialog, 4, 3);
    answers->queueForDialog(choosing(IrcText::colors().at(static_cast<size_t>(index))));
    dialog->chooseIrcColor(true);
    QCOMPARE(contents(*dialog), u"one {c}%1,%2two{c}"_s.arg(foreground).arg(index));
}

void TestEditTopicDialog::closesBackgroundWithoutSelection()
{
    const auto dialog = makeDialog(u"one two"_s);
    dialog->show();
    select(*dialog, 4, 0);
    answers->queueForDialog(choosing(QColor(0xFF, 0xFF, 0x00)));
    click(*dialog, u"Background Color"_s);
    QCOMPARE(contents(*dialog), u"one {c}1,8{c}two"_s);
}

void TestEditTopicDialog::typingContinuesAfterInsertion()
{
    const auto dialog = makeDialog();
    dialog->show();
    QVERIFY(QTest::qWaitForWindowActive(dialog.get(), WaitTimeout));
    answers->queueForDialog(choosing(Qt::red));
    dialog->chooseIrcColor(false);
    QTest::keyClicks(edit(*dialog), u"go"_s);
    QCOMPARE(contents(*dialog), u"{c}4go"_s);
}

void TestEditTopicDialog::changesNothingWithoutColor_data()
{
    QTest::addColumn<bool>("background");

    QTest::newRow("text") << false;
    QTest::newRow("background") << true;
}

void TestEditTopicDialog::changesNothingWithoutColor()
{
    QFETCH(const bool, background);
    const auto dialog = makeDialog(u"one"_s);
    edit(*dialog)->selectAll();
    answers->queueForDialog([](QDialog *colors) { colors->reject(); });
    dialog->chooseIrcColor(background);
    QCOMPARE(contents(*dialog), u"one"_s);
    QCOMPARE(edit(*dialog)->textCursor().selectedText(), u"one"_s);
}

void TestEditTopicDialog::opensPickerOverTheMiddle()
{
    const auto dialog = makeDialog(QString(), u"dark"_s);
    dialog->move(300, 200);
    dialog->show();
    QVERIFY(QTest::qWaitForWindowExposed(dialog.get(), WaitTimeout));
    click(*dialog, u"Emoji"_s);
    const QPointer<EmojiPicker> picker = dialog->findChild<EmojiPicker *>();
    QVERIFY(picker != nullptr);
    QVERIFY(picker->isVisible());
    QCOMPARE(picker->pos(), dialog->mapToGlobal(dialog->rect().center()) - QPoint(160, 150));
    const auto *container = picker->findChild<QWidget *>(u"emojiContainer"_s);
    QVERIFY(container->styleSheet().contains(u"rgba(40,40,40,0.95)"_s));
    picker->close();
    QTRY_VERIFY_WITH_TIMEOUT(picker == nullptr, WaitTimeout);
}

void TestEditTopicDialog::insertsEmoji()
{
    const auto dialog = makeDialog(u"I hate IRC"_s);
    dialog->show();
    select(*dialog, 2, 4);
    dialog->openEmojiPicker();
    const QPointer<EmojiPicker> picker = dialog->findChild<EmojiPicker *>();
    const auto buttons = picker->findChildren<QPushButton *>();
    for (QPushButton *button : buttons) {
        if (button->text() == u"❤\uFE0F"_s)
            button->click();
    }
    QCOMPARE(dialog->newTopic(), u"I ❤\uFE0F IRC"_s);
    QCOMPARE(edit(*dialog)->textCursor().position(), 4);
    QTRY_VERIFY_WITH_TIMEOUT(picker == nullptr, WaitTimeout);
}

void TestEditTopicDialog::scrollsToCursorAfterEmoji()
{
    const auto dialog = makeDialog(u"line\n"_s.repeated(100) + u"end"_s);
    dialog->show();
    edit(*dialog)->moveCursor(QTextCursor::End);
    edit(*dialog)->verticalScrollBar()->setValue(0);
    QVERIFY(!edit(*dialog)->viewport()->rect().contains(edit(*dialog)->cursorRect()));
    dialog->openEmojiPicker();
    dialog->findChild<EmojiPicker *>()->findChildren<QPushButton *>().constFirst()->click();
    QVERIFY(edit(*dialog)->textCursor().atEnd());
    QVERIFY(edit(*dialog)->viewport()->rect().contains(edit(*dialog)->cursorRect()));
}

void TestEditTopicDialog::deletesPickerWithDialog()
{
    auto dialog = makeDialog();
    dialog->show();
    dialog->openEmojiPicker();
    const QPointer<EmojiPicker> picker = dialog->findChild<EmojiPicker *>();
    QVERIFY(picker != nullptr);
    dialog.reset();
    QVERIFY(picker == nullptr);
    QVERIFY(QApplication::activePopupWidget() == nullptr);
}

void TestEditTopicDialog::savesAndCancelsByButton()
{
    const auto dialog = makeDialog();
    const QSignalSpy ends(dialog.get(), &QDialog::finished);
    dialog->show();
    dialog->findChild<QPushButton *>(u"connectButton"_s)->click();
    dialog->show();
    dialog->findChild<QPushButton *>(u"cancelButton"_s)->click();
    QCOMPARE(ends, (QList<QVariantList>{{int(QDialog::Accepted)}, {int(QDialog::Rejected)}}));
}

void TestEditTopicDialog::savesByControlReturn()
{
    const auto dialog = makeDialog(u"topic"_s);
    const auto *shortcut = dialog->findChild<QShortcut *>(QString(), Qt::FindDirectChildrenOnly);
    QVERIFY(shortcut != nullptr);
    QCOMPARE(shortcut->key(), QKeySequence(Qt::CTRL | Qt::Key_Return));
    QCOMPARE(shortcut->context(), Qt::WindowShortcut);
    const QSignalSpy ends(dialog.get(), &QDialog::finished);
    dialog->show();
    QVERIFY(QTest::qWaitForWindowActive(dialog.get(), WaitTimeout));
    QTest::keyClick(edit(*dialog), Qt::Key_Return, Qt::ControlModifier);
    QCOMPARE(ends, (QList<QVariantList>{{int(QDialog::Accepted)}}));
    QCOMPARE(edit(*dialog)->toPlainText(), u"topic"_s);
}

void TestEditTopicDialog::returnInsertsLineBreak()
{
    const auto dialog = makeDialog(u"one two"_s);
    dialog->show();
    QVERIFY(QTest::qWaitForWindowActive(dialog.get(), WaitTimeout));
    QCOMPARE(QApplication::focusWidget(), edit(*dialog));
    select(*dialog, 3, 1);
    QTest::keyClick(edit(*dialog), Qt::Key_Return);
    QVERIFY(dialog->isVisible());
    QCOMPARE(edit(*dialog)->toPlainText(), u"one\ntwo"_s);
}

void TestEditTopicDialog::pastesAsOneLine()
{
    const auto dialog = makeDialog(u"before after"_s);
    select(*dialog, 7, 0);
    QGuiApplication::clipboard()->setText(u"one\r\nQUIT :x\u2028"_s);
    edit(*dialog)->paste();
    QCOMPARE(edit(*dialog)->toPlainText(), u"before one QUIT :x after"_s);
    edit(*dialog)->undo();
    QCOMPARE(edit(*dialog)->toPlainText(), u"before after"_s);
}

void TestEditTopicDialog::cancelsByEscape()
{
    const auto dialog = makeDialog(u"topic"_s);
    const QSignalSpy ends(dialog.get(), &QDialog::finished);
    dialog->show();
    QVERIFY(QTest::qWaitForWindowActive(dialog.get(), WaitTimeout));
    QTest::keyClick(edit(*dialog), Qt::Key_Escape);
    QCOMPARE(ends, (QList<QVariantList>{{int(QDialog::Rejected)}}));
}

QTEST_MAIN(TestEditTopicDialog)
#include "tst_EditTopicDialog.moc"
