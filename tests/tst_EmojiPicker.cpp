#include "EmojiPicker.h"
#include "TemporaryStore.h"
#include "Waiting.h"
#include "WindowSession.h"

#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QScreen>
#include <QSignalSpy>
#include <QTest>
#include <QWindow>

using namespace Qt::StringLiterals;

namespace {

constexpr QRect FullHd(0, 0, 1920, 1080);
constexpr QSize PickerSize(330, 620);

QWidget *container(const QWidget &picker)
{
    return picker.findChild<QWidget *>(u"emojiContainer"_s, Qt::FindDirectChildrenOnly);
}

QGridLayout *grid(const QWidget &picker)
{
    return qobject_cast<QGridLayout *>(container(picker)->layout());
}

template <typename Wanted>
Wanted *at(const QWidget &picker, int row, int column)
{
    const QLayoutItem *item = grid(picker)->itemAtPosition(row, column);
    return item ? qobject_cast<Wanted *>(item->widget()) : nullptr;
}

QPushButton *button(const QWidget &picker, const QString &emoji)
{
    const auto buttons = picker.findChildren<QPushButton *>();
    for (QPushButton *candidate : buttons) {
        if (candidate->text() == emoji)
            return candidate;
    }
    return nullptr;
}

bool hasColor(QWidget &widget)
{
    const QImage image = widget.grab().toImage();
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (image.pixelColor(x, y).hsvSaturation() > 60)
                return true;
        }
    }
    return false;
}

void addThemes()
{
    QTest::addColumn<QString>("theme");
    for (const auto &theme : {u"light"_s, u"dark"_s, u"glass"_s, u"Dark"_s, QString()})
        QTest::newRow(qUtf8Printable(theme)) << theme;
}

/// A window whose current tab is a channel, so that the emoji button is visible.
struct Conversation
{
    Conversation() { session.probe.openTabs({u"#c"_s}); }

    [[nodiscard]] QList<EmojiPicker *> pickers() const
    {
        return session.window.findChildren<EmojiPicker *>();
    }
    [[nodiscard]] EmojiPicker *open() const
    {
        session.probe.emojiButton().click();
        return pickers().isEmpty() ? nullptr : pickers().last();
    }

    WindowSession session;
};

} // namespace

class TestEmojiPicker final : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void isFramelessPopup();
    void hasEveryEmoji_data();
    void hasEveryEmoji();
    void hasNothingElse();
    void showsEmojisInColor();
    void hasPointingHandCursors();
    void hasTheGrid();
    void stylesContainer_data();
    void stylesContainer();
    void stylesHeadings_data();
    void stylesHeadings();
    void stylesButtons_data();
    void stylesButtons();
    void showsTheWholeTable();

    void emitsOnceAndCloses();
    void emitsBeforeItCloses();
    void emitsTheVariationSelector_data();
    void emitsTheVariationSelector();
    void closesOnClickOutside();
    void closesOnEscape();
    void movesByArrows_data();
    void movesByArrows();
    void choosesOnReturn();

    void placesItself_data();
    void placesItself();

    void opensBesideTheInputLine();
    void usesTheWindowsTheme();
    void opensNewPickerEachTime();
    void insertsAtCursor();
    void replacesSelection();
    void insertsNothingAfterClickOutside();
    void isDeletedWithTheWindow();

private:
    TemporaryStore store;
};

void TestEmojiPicker::init()
{
    store.clear();
    // The offscreen platform warns of what it does not support.
    QTest::failOnWarning(QRegularExpression(u"^(?!This plugin does not support)"_s));
}

void TestEmojiPicker::isFramelessPopup()
{
    const EmojiPicker picker(nullptr, u"light"_s);
    QCOMPARE(picker.windowType(), Qt::Popup);
    QVERIFY(picker.windowFlags().testFlag(Qt::FramelessWindowHint));
    QVERIFY(picker.testAttribute(Qt::WA_TranslucentBackground));
    QVERIFY(picker.testAttribute(Qt::WA_ShowWithoutActivating));
}

void TestEmojiPicker::hasEveryEmoji_data()
{
    QTest::addColumn<int>("row");
    QTest::addColumn<QString>("heading");
    QTest::addColumn<QString>("first");
    QTest::addColumn<QString>("second");

    QTest::newRow("smileys") << 0 << u"Смайлы"_s << u"😀 😃 😄 😁 😅 😂 🤣 😊"_s
                             << u"😇 🙂 😉 😌 😍 🥰 😘 😗"_s;
    QTest::newRow("gestures") << 3 << u"Жесты"_s
                              << u"👍 👎 👌 ✌\uFE0F 🤞 🤟 🤘 🤙"_s
                              << u"👋 🤚 🖐\uFE0F ✋ 🖖 👏 🙌 🤝"_s;
    QTest::newRow("hearts") << 6 << u"Сердца"_s << u"❤\uFE0F 🧡 💛 💚 💙 💜 🖤 🤍"_s
                            << u"🤎 💔 ❣\uFE0F 💕 💞 💓 💗 💖"_s;
    QTest::newRow("emotions") << 9 << u"Эмоции"_s << u"🔥 ⭐ 🌟 ✨ 💫 🎉 🎊 🎈"_s << u"💯 ✅ ❌ 💡 💤 💢 💣 💥"_s;
    QTest::newRow("animals") << 12 << u"Животные"_s << u"🐶 🐱 🐭 🐹 🐰 🦊 🐻 🐼"_s
                             << u"🐨 🐯 🦁 🐮 🐷 🐸 🐵 🐔"_s;
    QTest::newRow("food") << 15 << u"Еда"_s << u"🍎 🍕 🍔 🍟 🍩 🍪 🎂 🍰"_s
                          << u"☕ 🍵 🍺 🍷 🍸 🍹 🧃 🥤"_s;
}

void TestEmojiPicker::hasEveryEmoji()
{
    QFETCH(const int, row);
    QFETCH(const QString, first);
    QFETCH(const QString, second);

    const EmojiPicker picker(nullptr, u"light"_s);
    const auto *label = at<QLabel>(picker, row, 0);
    QVERIFY(label != nullptr);
    QTEST(label->text(), "heading");
    QCOMPARE(at<QLabel>(picker, row, 7), label);
    QCOMPARE(at<QWidget>(picker, row, 8), nullptr);

    const QStringList expected[] = {first.split(u' '), second.split(u' ')};
    for (int line = 0; line < 2; ++line) {
        QCOMPARE(expected[line].size(), 8);
        for (int column = 0; column < 8; ++column) {
            const auto *found = at<QPushButton>(picker, row + 1 + line, column);
            QVERIFY(found != nullptr);
            QCOMPARE(found->text(), expected[line].at(column));
            QCOMPARE(found->toolTip(), expected[line].at(column));
        }
    }
}

void TestEmojiPicker::hasNothingElse()
{
    const EmojiPicker picker(nullptr, u"light"_s);
    QCOMPARE(picker.findChildren<QPushButton *>().size(), 96);
    QCOMPARE(picker.findChildren<QLabel *>().size(), 6);
    QCOMPARE(grid(picker)->count(), 102);
    QCOMPARE(grid(picker)->rowCount(), 18);
}

void TestEmojiPicker::showsEmojisInColor()
{
    Conversation conversation;
    QVERIFY(hasColor(conversation.session.probe.emojiButton()));
    EmojiPicker picker(nullptr, u"light"_s);
    const auto buttons = picker.findChildren<QPushButton *>();
    for (QPushButton *candidate : buttons) {
        // The black and the white heart have no colour in any font.
        if (candidate->text() != u"🖤" && candidate->text() != u"🤍")
            QVERIFY2(hasColor(*candidate), qUtf8Printable(candidate->text()));
    }
}

void TestEmojiPicker::hasPointingHandCursors()
{
    const EmojiPicker picker(nullptr, u"light"_s);
    const auto buttons = picker.findChildren<QPushButton *>();
    for (const QPushButton *each : buttons) {
        QCOMPARE(each->minimumSize(), QSize(36, 36));
        QCOMPARE(each->maximumSize(), QSize(36, 36));
        QCOMPARE(each->cursor().shape(), Qt::PointingHandCursor);
    }
}

void TestEmojiPicker::hasTheGrid()
{
    const EmojiPicker picker(nullptr, u"light"_s);
    QVERIFY(qobject_cast<QVBoxLayout *>(picker.layout()) != nullptr);
    QCOMPARE(picker.layout()->contentsMargins(), QMargins());
    QCOMPARE(picker.layout()->itemAt(0)->widget(), container(picker));
    QCOMPARE(grid(picker)->horizontalSpacing(), 4);
    QCOMPARE(grid(picker)->verticalSpacing(), 4);
    QCOMPARE(grid(picker)->contentsMargins(), QMargins(8, 8, 8, 8));
    QCOMPARE(container(picker)->minimumWidth(), 320);
    QCOMPARE(container(picker)->maximumWidth(), 340);
}

void TestEmojiPicker::stylesContainer_data()
{
    QTest::addColumn<QString>("theme");
    QTest::addColumn<QString>("background");
    QTest::addColumn<QString>("border");

    const auto light = u"rgba(255,255,255,0.98)"_s;
    const auto lightBorder = u"1px solid rgba(0,0,0,0.1)"_s;
    QTest::newRow("light") << u"light"_s << light << lightBorder;
    QTest::newRow("dark") << u"dark"_s << u"rgba(40,40,40,0.95)"_s
                          << u"1px solid rgba(255,255,255,0.1)"_s;
    QTest::newRow("glass") << u"glass"_s << u"rgba(255,255,255,0.7)"_s
                           << u"1px solid rgba(255,255,255,0.5)"_s;
    QTest::newRow("in another case") << u"Dark"_s << light << lightBorder;
    QTest::newRow("none") << QString() << light << lightBorder;
}

void TestEmojiPicker::stylesContainer()
{
    QFETCH(const QString, theme);
    QFETCH(const QString, background);
    QFETCH(const QString, border);
    const EmojiPicker picker(nullptr, theme);
    QCOMPARE(container(picker)->styleSheet(),
             u"#emojiContainer { background-color: %1; border: %2; border-radius: 12px; "
             "padding: 8px; }"_s.arg(background, border));
}

void TestEmojiPicker::stylesHeadings_data()
{
    addThemes();
}

void TestEmojiPicker::stylesHeadings()
{
    QFETCH(const QString, theme);
    const EmojiPicker picker(nullptr, theme);
    const QString color = theme == u"dark"_s ? u"rgba(255,255,255,0.5)"_s : u"rgba(0,0,0,0.5)"_s;
    const auto labels = picker.findChildren<QLabel *>();
    for (const QLabel *label : labels) {
        QCOMPARE(label->styleSheet(),
                 u"color: %1; font-size: 10px; font-weight: bold; padding: 4px 2px 2px 2px; "
                 "text-transform: uppercase; letter-spacing: 1px;"_s.arg(color));
    }
}

void TestEmojiPicker::stylesButtons_data()
{
    addThemes();
}

void TestEmojiPicker::stylesButtons()
{
    QFETCH(const QString, theme);
    const QString sheet =
            u"QPushButton { background: transparent; border: none; border-radius: 8px; "
            "font-size: 20px; padding: 0px; color: %1; }QPushButton:hover { background: %2; }"
            "QPushButton:pressed { background: %3; }"_s;
    const QString expected = theme == u"dark"_s ? sheet.arg(u"white"_s, u"rgba(255,255,255,0.15)"_s,
                                                            u"rgba(255,255,255,0.25)"_s)
                                                : sheet.arg(u"black"_s, u"rgba(0,0,0,0.08)"_s,
                                                            u"rgba(0,0,0,0.15)"_s);
    const EmojiPicker picker(nullptr, theme);
    const auto buttons = picker.findChildren<QPushButton *>();
    for (const QPushButton *each : buttons)
        QCOMPARE(each->styleSheet(), expected);
}

void TestEmojiPicker::showsTheWholeTable()
{
    EmojiPicker picker(nullptr, u"light"_s);
    picker.show();
    QVERIFY(QTest::qWaitForWindowExposed(&picker, WaitTimeout));
    QRect covered;
    const auto buttons = picker.findChildren<QPushButton *>();
    for (const QPushButton *each : buttons) {
        const QRect area(each->mapTo(&picker, QPoint()), each->size());
        QCOMPARE(area.size(), QSize(36, 36));
        QVERIFY(picker.rect().contains(area));
        covered |= area;
    }
    QCOMPARE(covered.width(), 8 * 36 + 7 * 4);
    const auto labels = picker.findChildren<QLabel *>();
    for (const QLabel *label : labels)
        QVERIFY(label->width() >= label->sizeHint().width());
}

void TestEmojiPicker::emitsOnceAndCloses()
{
    EmojiPicker picker(nullptr, u"light"_s);
    const QSignalSpy selections(&picker, &EmojiPicker::emojiSelected);
    picker.show();
    QTest::mouseClick(button(picker, u"🦊"_s), Qt::LeftButton);
    QCOMPARE(selections, (QList<QVariantList>{{u"🦊"_s}}));
    QVERIFY(!picker.isVisible());
}

void TestEmojiPicker::emitsBeforeItCloses()
{
    EmojiPicker picker(nullptr, u"light"_s);
    bool wasUp = false;
    connect(&picker, &EmojiPicker::emojiSelected, &picker, [&] { wasUp = picker.isVisible(); });
    picker.show();
    button(picker, u"😀"_s)->click();
    QVERIFY(wasUp);
    QVERIFY(!picker.isVisible());
}

void TestEmojiPicker::emitsTheVariationSelector_data()
{
    QTest::addColumn<QString>("emoji");

    QTest::newRow("victory hand") << u"\u270C\uFE0F"_s;
    QTest::newRow("hand") << u"\U0001F590\uFE0F"_s;
    QTest::newRow("heart") << u"\u2764\uFE0F"_s;
    QTest::newRow("heart exclamation") << u"\u2763\uFE0F"_s;
}

void TestEmojiPicker::emitsTheVariationSelector()
{
    QFETCH(const QString, emoji);
    EmojiPicker picker(nullptr, u"light"_s);
    const QSignalSpy selections(&picker, &EmojiPicker::emojiSelected);
    QVERIFY(button(picker, emoji) != nullptr);
    button(picker, emoji)->click();
    QCOMPARE(selections, (QList<QVariantList>{{emoji}}));
}

void TestEmojiPicker::closesOnClickOutside()
{
    QWidget below;
    below.resize(600, 400);
    below.show();
    EmojiPicker picker(&below, u"light"_s);
    const QSignalSpy selections(&picker, &EmojiPicker::emojiSelected);
    picker.move(below.mapToGlobal(QPoint(200, 0)));
    picker.show();
    QVERIFY(QTest::qWaitForWindowExposed(&picker, WaitTimeout));
    QTest::mouseClick(below.windowHandle(), Qt::LeftButton, {}, QPoint(50, 50));
    QTRY_VERIFY_WITH_TIMEOUT(!picker.isVisible(), WaitTimeout);
    QCOMPARE(selections.size(), 0);
}

void TestEmojiPicker::closesOnEscape()
{
    EmojiPicker picker(nullptr, u"light"_s);
    const QSignalSpy selections(&picker, &EmojiPicker::emojiSelected);
    picker.show();
    QTest::keyClick(&picker, Qt::Key_Escape);
    QVERIFY(!picker.isVisible());
    QCOMPARE(selections.size(), 0);
}

void TestEmojiPicker::movesByArrows_data()
{
    QTest::addColumn<QList<Qt::Key>>("keys");
    QTest::addColumn<QString>("focused");

    QTest::newRow("none") << QList<Qt::Key>() << u"😀"_s;
    QTest::newRow("right") << QList{Qt::Key_Right} << u"😃"_s;
    QTest::newRow("down") << QList{Qt::Key_Down} << u"😇"_s;
    QTest::newRow("past a heading") << QList{Qt::Key_Down, Qt::Key_Down, Qt::Key_Right} << u"👎"_s;
    QTest::newRow("back past a heading")
            << QList{Qt::Key_Down, Qt::Key_Down, Qt::Key_Right, Qt::Key_Up, Qt::Key_Left} << u"😇"_s;
    QTest::newRow("left edge") << QList{Qt::Key_Left} << u"😀"_s;
    QTest::newRow("left edge of the second row") << QList{Qt::Key_Down, Qt::Key_Left} << u"😇"_s;
    QTest::newRow("top") << QList{Qt::Key_Right, Qt::Key_Up} << u"😃"_s;
    QTest::newRow("right edge") << QList<Qt::Key>(9, Qt::Key_Right) << u"😊"_s;
    QTest::newRow("bottom") << QList<Qt::Key>(13, Qt::Key_Down) << u"☕"_s;
}

void TestEmojiPicker::movesByArrows()
{
    QFETCH(const QList<Qt::Key>, keys);
    EmojiPicker picker(nullptr, u"light"_s);
    picker.show();
    for (const Qt::Key key : keys)
        QTest::keyClick(picker.focusWidget(), key);
    const auto *focused = qobject_cast<QPushButton *>(picker.focusWidget());
    QVERIFY(focused != nullptr);
    QTEST(focused->text(), "focused");
    QVERIFY(picker.isVisible());
}

void TestEmojiPicker::choosesOnReturn()
{
    EmojiPicker picker(nullptr, u"light"_s);
    const QSignalSpy selections(&picker, &EmojiPicker::emojiSelected);
    picker.show();
    QTest::keyClick(picker.focusWidget(), Qt::Key_Right);
    QTest::keyClick(picker.focusWidget(), Qt::Key_Return);
    QVERIFY(!picker.isVisible());
    // Like a Return pressed before the picker has closed.
    QWidget *focused = picker.focusWidget();
    QTest::keyClick(focused ? focused : &picker, Qt::Key_Return);
    QCOMPARE(selections, (QList<QVariantList>{{u"😃"_s}}));
}

void TestEmojiPicker::placesItself_data()
{
    QTest::addColumn<QRect>("available");
    QTest::addColumn<QPoint>("button");
    QTest::addColumn<QPoint>("position");

    const auto add = [](const char *name, const QRect &available, QPoint button, QPoint position) {
        QTest::newRow(name) << available << button << position;
    };
    // The button is 36 by 30, the picker 330 by 620. The right edge of the first screen is 1919.
    add("right", FullHd, {800, 500}, {841, 190});
    add("last position right", FullHd, {1543, 500}, {1584, 190});
    add("left", FullHd, {1544, 500}, {1209, 190});
    add("at the right edge", FullHd, {1884, 500}, {1549, 190});
    add("near the top", FullHd, {800, 309}, {841, 5});
    add("just clear of the top", FullHd, {800, 310}, {841, 0});
    add("just clear of the bottom", FullHd, {800, 769}, {841, 459});
    add("near the bottom", FullHd, {800, 770}, {841, 454});

    // A screen with no space on either side.
    const QRect narrow(0, 0, 700, 1080);
    add("last position left", narrow, {340, 500}, {5, 190});
    add("above", narrow, {339, 700}, {192, 75});
    add("last position above", narrow, {339, 625}, {192, 0});
    add("below", narrow, {339, 624}, {192, 454});
    add("below without a clamp", narrow, {339, 400}, {192, 435});
    add("below, no space above", narrow, {339, 100}, {192, 135});

    // Clamps of the centred position.
    const QRect slim(0, 0, 400, 1080);
    add("above, too far left", slim, {30, 700}, {5, 75});
    add("above, at the left edge", slim, {147, 700}, {0, 75});
    add("above, too far right", slim, {300, 700}, {64, 75});

    // Available areas start where panels end, and on a second screen far from zero.
    const QRect second(1920, 40, 1280, 1000);
    add("right, second screen", second, {2000, 600}, {2041, 290});
    add("left, second screen", second, {3100, 600}, {2765, 290});
    add("below a panel", second, {2000, 60}, {2041, 45});
    const QRect negative(-700, -1080, 700, 1080);
    add("left, negative coordinates", negative, {-100, -500}, {-435, -810});
    add("above, negative coordinates", negative, {-361, -300}, {-508, -925});

    // On a screen that is too small, the last clamp decides.
    const QRect tiny(0, 0, 300, 300);
    add("too big for the screen", tiny, {100, 200}, {-36, -326});
}

void TestEmojiPicker::placesItself()
{
    QFETCH(const QRect, available);
    QFETCH(const QPoint, button);
    QTEST(EmojiPicker::placeAt(QRect(button, QSize(36, 30)), PickerSize, available), "position");
}

void TestEmojiPicker::opensBesideTheInputLine()
{
    const Conversation conversation;
    conversation.session.window.move(100, 50);
    const EmojiPicker *picker = conversation.open();
    QVERIFY(picker != nullptr);
    QVERIFY(picker->isVisible());
    QCOMPARE(picker->parentWidget(), &conversation.session.window);
    const QPushButton &button = conversation.session.probe.emojiButton();
    QCOMPARE(picker->pos(),
             EmojiPicker::placeAt(QRect(button.mapToGlobal(QPoint()), button.size()),
                                  picker->sizeHint(),
                                  QGuiApplication::primaryScreen()->availableGeometry()));
    QCOMPARE(picker->size(), picker->sizeHint());
}

void TestEmojiPicker::usesTheWindowsTheme()
{
    const Conversation conversation;
    conversation.session.probe.currentTheme() = u"dark"_s;
    const EmojiPicker *picker = conversation.open();
    QVERIFY(picker != nullptr);
    QVERIFY(container(*picker)->styleSheet().contains(u"rgba(40,40,40,0.95)"_s));
}

void TestEmojiPicker::opensNewPickerEachTime()
{
    const Conversation conversation;
    const QPointer<EmojiPicker> first = conversation.open();
    QVERIFY(first != nullptr);
    first->close();
    const QPointer<EmojiPicker> second = conversation.open();
    QVERIFY(second != nullptr);
    QVERIFY(second != first);
    QTRY_VERIFY_WITH_TIMEOUT(first == nullptr, WaitTimeout);
    QVERIFY(second->isVisible());
    second->close();
    QTRY_VERIFY_WITH_TIMEOUT(second == nullptr, WaitTimeout);
    QCOMPARE(conversation.pickers().size(), 0);
}

void TestEmojiPicker::insertsAtCursor()
{
    const Conversation conversation;
    QLineEdit &line = conversation.session.probe.inputLine();
    line.setText(u"good  morning"_s);
    line.setCursorPosition(5);
    const QPointer<EmojiPicker> picker = conversation.open();
    QVERIFY(picker != nullptr);
    conversation.session.probe.emojiButton().setFocus();
    QTest::mouseClick(button(*picker, u"❤\uFE0F"_s), Qt::LeftButton);
    QCOMPARE(line.text(), u"good ❤\uFE0F morning"_s);
    QCOMPARE(line.cursorPosition(), 7);
    QCOMPARE(conversation.session.window.focusWidget(), &line);
    QTRY_VERIFY_WITH_TIMEOUT(picker == nullptr, WaitTimeout);
}

void TestEmojiPicker::replacesSelection()
{
    const Conversation conversation;
    QLineEdit &line = conversation.session.probe.inputLine();
    line.setText(u"good grief"_s);
    line.setSelection(5, 5);
    const EmojiPicker *picker = conversation.open();
    QVERIFY(picker != nullptr);
    button(*picker, u"🎉"_s)->click();
    QCOMPARE(line.text(), u"good 🎉"_s);
    QVERIFY(!line.hasSelectedText());
}

void TestEmojiPicker::insertsNothingAfterClickOutside()
{
    const Conversation conversation;
    const QPointer<EmojiPicker> picker = conversation.open();
    QVERIFY(picker != nullptr);
    QVERIFY(QTest::qWaitForWindowExposed(picker, WaitTimeout));
    QTest::mouseClick(conversation.session.window.windowHandle(), Qt::LeftButton, {},
                      QPoint(50, 200));
    QTRY_VERIFY_WITH_TIMEOUT(picker == nullptr, WaitTimeout);
    QCOMPARE(conversation.session.probe.inputLine().text(), QString());
}

void TestEmojiPicker::isDeletedWithTheWindow()
{
    Conversation conversation;
    const QPointer<EmojiPicker> picker = conversation.open();
    QVERIFY(picker != nullptr);
    conversation.session.destroyWindow();
    QVERIFY(picker == nullptr);
    QVERIFY(QApplication::activePopupWidget() == nullptr);
}

QTEST_MAIN(TestEmojiPicker)
#include "tst_EmojiPicker.moc"
