#include "InputRow.h"

#include "EmojiFont.h"
#include "LineBreaks.h"
#include "TabNames.h"

#include <QHBoxLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QStackedWidget>
#include <QValidator>

using namespace Qt::StringLiterals;

namespace {

constexpr int InputPage = 0;
constexpr int ListSearchPage = 1;

/// Replaces line breaks by spaces in any input of a line edit.
///
/// `QLineEdit` shows a pasted line break as a space, but keeps it in its text.
class LineBreakRemover final : public QValidator
{
public:
    using QValidator::QValidator;

    State validate(QString &input, int &cursor) const override
    {
        const QString before = LineBreaks::toSpaces(input.left(cursor));
        input = before + LineBreaks::toSpaces(input.mid(cursor));
        cursor = static_cast<int>(before.size());
        return Acceptable;
    }
};

QLineEdit *createLine()
{
    auto *line = new QLineEdit;
    line->setValidator(new LineBreakRemover(line));
    line->setPlaceholderText(QLineEdit::tr("Type a message..."));
    line->setAccessibleName(QLineEdit::tr("Message"));
    line->setMinimumHeight(30);
    line->setMaximumHeight(36);
    line->setStyleSheet(u"QLineEdit { padding: 4px 8px; }"_s);
    return line;
}

QPushButton *createEmojiButton()
{
    auto *button = new QPushButton(u"\U0001F60A"_s);
    button->setFixedSize(36, 30);
    button->setToolTip(QPushButton::tr("Insert emoji"));
    button->setAccessibleName(button->toolTip());
    button->hide();
    button->setCursor(Qt::PointingHandCursor);
    button->setFont(EmojiFont::colored(button->font()));
    button->setStyleSheet(
            u"QPushButton { background: transparent; border: none; font-size: 18px; "
            "padding: 0px; margin: 0px; }"
            "QPushButton:hover { background: rgba(128,128,128,0.2); border-radius: 4px; }"_s);
    return button;
}

QLineEdit *createListSearch()
{
    auto *search = new QLineEdit;
    search->setPlaceholderText(QLineEdit::tr("Search channels..."));
    search->setAccessibleName(QLineEdit::tr("Search channels"));
    search->setMaximumHeight(28);
    return search;
}

} // namespace

InputRow InputRow::create()
{
    InputRow row;
    row.stack = new QStackedWidget;
    row.stack->setMaximumHeight(40);

    auto *page = new QWidget;
    auto *layout = new QHBoxLayout(page);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(2);
    row.line = createLine();
    layout->addWidget(row.line);
    row.emojiButton = createEmojiButton();
    layout->addWidget(row.emojiButton);
    row.listSearch = createListSearch();

    row.stack->addWidget(page);
    row.stack->addWidget(row.listSearch);
    row.stack->setCurrentIndex(InputPage);
    return row;
}

void InputRow::showPageFor(const QString &tabName, QStackedWidget &stack)
{
    stack.setCurrentIndex(tabName == TabNames::List ? ListSearchPage : InputPage);
}

QString InputRow::placeholderFor(const QString &tabName)
{
    return tabName == TabNames::Server ? QLineEdit::tr("Type a command...")
                                       : QLineEdit::tr("Type a message...");
}
