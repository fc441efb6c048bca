#include "EditTopicDialog.h"

#include "DialogParts.h"
#include "EmojiFont.h"
#include "EmojiPicker.h"
#include "FocusFrame.h"
#include "IconPixmap.h"
#include "IrcText.h"
#include "LineBreaks.h"
#include "LiteralText.h"
#include "ThemeManager.h"

#include <QAction>
#include <QColorDialog>
#include <QDialogButtonBox>
#include <QIcon>
#include <QMimeData>
#include <QPainter>
#include <QPalette>
#include <QShortcut>
#include <QTextCursor>
#include <QTextEdit>
#include <QToolBar>
#include <QToolButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {

constexpr int IconSize = 24;

constexpr QColor LetterColor(0x33, 0x33, 0x33);
constexpr QColor BackgroundSquare(0xFF, 0xFF, 0x99);

constexpr QChar BoldCode(0x02);
constexpr QChar ItalicCode(0x1D);
constexpr QChar UnderlineCode(0x1F);
constexpr QChar ColorCode(0x03);

/// A text edit where pasted and dropped line breaks become spaces. Typed ones stay.
class TopicEdit final : public QTextEdit
{
protected:
    void insertFromMimeData(const QMimeData *source) override
    {
        QMimeData oneLine;
        oneLine.setText(LineBreaks::toSpaces(source->text()));
        QTextEdit::insertFromMimeData(&oneLine);
    }
};

/// An icon of the tool bar.
struct IconSpec
{
    QString text;
    QColor color = Qt::black;
    int pixelSize = 18;
    bool bold = false;
    bool italic = false;
    bool underline = false;
    QColor background = QColor(); ///< Of a rounded square under the text; none if invalid.
    QFont font = QFont();         ///< Size and style are those above.
};

QIcon draw(const IconSpec &icon)
{
    QPixmap pixmap = IconPixmap::make(IconSize);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    if (icon.background.isValid()) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(icon.background);
        painter.drawRoundedRect(2, 2, 20, 20, 4, 4);
    }
    QFont font = icon.font;
    font.setPixelSize(icon.pixelSize);
    font.setBold(icon.bold);
    font.setItalic(icon.italic);
    font.setUnderline(icon.underline);
    painter.setFont(font);
    painter.setPen(icon.color);
    painter.drawText(QRect(0, 0, IconSize, IconSize), Qt::AlignCenter, icon.text);
    return QIcon(pixmap);
}

/// Returns the index of the IRC colour nearest to `color`; the lower of two equally near.
int nearestIrcColor(const QColor &color)
{
    const int count = static_cast<int>(IrcText::colors().size());
    int nearest = 0;
    int bestDistance = 1'000'000; // More than the distance of any two colours.
    for (int index = 0; index < count; ++index) {
        const QColor &candidate = IrcText::color(index);
        const int red = color.red() - candidate.red();
        const int green = color.green() - candidate.green();
        const int blue = color.blue() - candidate.blue();
        const int distance = red * red + green * green + blue * blue;
        if (distance < bestDistance) {
            nearest = index;
            bestDistance = distance;
        }
    }
    return nearest;
}

} // namespace

EditTopicDialog::EditTopicDialog(const QString &channel, const QString &topic, const QString &theme,
                                 QWidget *parent)
    : QDialog(parent)
    , currentTheme(theme)
{
    LiteralText::showTitle(*this);
    setWindowTitle(tr("Edit Topic for %1").arg(channel));
    setMinimumSize(560, 380);
    setWindowFlags(DialogParts::Frame);
    buildForm(topic);

    // Return alone is a line break.
    auto *save = new QShortcut(QKeySequence(Qt::CTRL | Qt::Key_Return), this);
    connect(save, &QShortcut::activated, this, &QDialog::accept);

    applyTheme();
    // The tool bar's icons are dark in every theme and drawn on the dialog's background.
    setStyleSheet(styleSheet() + u" QDialog { background-color: #FFFFFF; }"_s);
}

QString EditTopicDialog::newTopic() const
{
    return topicEdit->toPlainText().trimmed();
}

void EditTopicDialog::insertIrcFormatting(const QString &code)
{
    QTextCursor cursor = topicEdit->textCursor();
    if (cursor.hasSelection())
        cursor.insertText(QString(code + cursor.selectedText() + code));
    else
        cursor.insertText(code);
    topicEdit->setTextCursor(cursor);
}

void EditTopicDialog::chooseIrcColor(bool background)
{
    const QColor color = QColorDialog::getColor(
            Qt::white, this, background ? tr("Choose Background Color") : tr("Choose Text Color"));
    if (!color.isValid())
        return;
    const int index = nearestIrcColor(color);
    QTextCursor cursor = topicEdit->textCursor();
    const QString selected = cursor.selectedText();
    QString text(ColorCode);
    if (background)
        text += QString::number(IrcText::legibleOn(IrcText::color(index))) + u',';
    text += QString::number(index);
    // A background colour is closed even if nothing is selected.
    if (background || !selected.isEmpty())
        text += selected + ColorCode;
    cursor.insertText(text);
    topicEdit->setTextCursor(cursor);
}

void EditTopicDialog::openEmojiPicker()
{
    auto *picker = new EmojiPicker(this, currentTheme);
    picker->move(mapToGlobal(rect().center()) - QPoint(160, 150));
    connect(picker, &EmojiPicker::emojiSelected, topicEdit, [this](const QString &emoji) {
        QTextCursor cursor = topicEdit->textCursor();
        cursor.insertText(emoji);
        topicEdit->setTextCursor(cursor);
    });
    picker->setAttribute(Qt::WA_DeleteOnClose);
    picker->show();
}

void EditTopicDialog::applyTheme()
{
    setAttribute(Qt::WA_TranslucentBackground, false);
    setAutoFillBackground(true);
    setStyleSheet(ThemeManager::dialogStyleSheet(currentTheme));
}

void EditTopicDialog::buildForm(const QString &topic)
{
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(16, 16, 16, 12);
    layout->setSpacing(8);
    layout->addWidget(buildToolBar());

    topicEdit = new TopicEdit;
    topicEdit->setAcceptRichText(false);
    topicEdit->setMinimumHeight(140);
    topicEdit->setStyleSheet(
            u"QTextEdit { background-color: #FFFFFF; border: 1px solid #ccc; border-radius: 6px; "
            "padding: 8px; font-size: 14px; }"
            "QTextEdit:focus { border: 2px solid %1; padding: 7px; }"_s.arg(ThemeColors::Accent));
    // The background is white; on a dark desktop the text would be white as well.
    QPalette palette = topicEdit->palette();
    palette.setColor(QPalette::Text, Qt::black);
    topicEdit->setPalette(palette);
    topicEdit->setPlainText(topic);
    topicEdit->setAccessibleName(tr("Topic"));
    // Topics contain no tab characters, and the Tab key must reach the buttons.
    topicEdit->setTabChangesFocus(true);
    layout->addWidget(topicEdit);
    topicEdit->setFocus();

    layout->addWidget(DialogParts::makeSaveAndCancel(*this));
}

QToolBar *EditTopicDialog::buildToolBar()
{
    auto *bar = new QToolBar;
    bar->setIconSize(QSize(IconSize, IconSize));
    bar->setToolButtonStyle(Qt::ToolButtonIconOnly);
    bar->setStyleSheet(
            u"QToolBar { border: none; spacing: 2px; background: transparent; }"
            "QToolButton { min-width: 32px; min-height: 32px; margin: 0px; padding: 4px; "
            "border-radius: 4px; }"
            "QToolButton:hover { background: rgba(128,128,128,0.15); }"_s);
    const auto add = [&](const QString &text, const IconSpec &icon, const auto &slot) {
        QAction *action = bar->addAction(draw(icon), text);
        connect(action, &QAction::triggered, this, slot);
        return action;
    };
    const auto addFormat = [&](const QString &text, const IconSpec &icon, const QString &code,
                               QKeySequence::StandardKey shortcut) {
        add(text, icon, [this, code] { insertIrcFormatting(code); })->setShortcut(shortcut);
    };
    addFormat(tr("Bold"), {.text = u"B"_s, .color = LetterColor, .bold = true}, BoldCode,
              QKeySequence::Bold);
    addFormat(tr("Italic"), {.text = u"I"_s, .color = LetterColor, .italic = true}, ItalicCode,
              QKeySequence::Italic);
    addFormat(tr("Underline"), {.text = u"U"_s, .color = LetterColor, .underline = true},
              UnderlineCode, QKeySequence::Underline);
    add(tr("Text Color"), {.text = u"A"_s, .color = QColor(ThemeColors::Accent), .bold = true},
        [this] { chooseIrcColor(false); });
    add(tr("Background Color"),
        {.text = u"A"_s, .color = LetterColor, .bold = true, .background = BackgroundSquare},
        [this] { chooseIrcColor(true); });
    add(tr("Emoji"), {.text = u"😊"_s, .pixelSize = 20, .font = EmojiFont::colored(QFont())},
        [this] { openEmojiPicker(); });
    // Qt leaves tool buttons out of the tab order, and half of these have no shortcut.
    const QList<QToolButton *> buttons = bar->findChildren<QToolButton *>();
    for (QToolButton *button : buttons) {
        if (button->defaultAction() == nullptr)
            continue;
        button->setFocusPolicy(Qt::TabFocus);
        FocusFrame::addTo(*button);
    }
    return bar;
}
