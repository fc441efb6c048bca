#include "InfoDialogs.h"
#include "MainWindow.h"
#include "ModalAnswers.h"
#include "TemporaryStore.h"
#include "ThemeManager.h"

#include <QAction>
#include <QDialog>
#include <QLabel>
#include <QLayout>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QRegularExpression>
#include <QScrollArea>
#include <QScrollBar>
#include <QTest>
#include <QTextDocument>
#include <QTextTable>

using namespace Qt::StringLiterals;

namespace {

void showAbout()
{
    InfoDialogs::showAbout(nullptr);
}

void showHelp()
{
    InfoDialogs::showHelp(nullptr, u"light"_s);
}

using Show = void (*)();

// Shows a dialog, passes it to `check` and closes it. Returns the problems that occurred.
QStringList checkDialog(Show show, const std::function<void(QDialog &)> &check)
{
    ModalAnswers answers;
    answers.queueForDialog([&check](QDialog *dialog) {
        check(*dialog);
        dialog->reject();
    });
    show();
    return answers.problems();
}

QLabel *label(const QDialog &dialog, const QString &text)
{
    const QList<QLabel *> labels = dialog.findChildren<QLabel *>();
    for (QLabel *candidate : labels) {
        if (candidate->text().contains(text))
            return candidate;
    }
    return nullptr;
}

// Returns the texts of a rich-text table, row by row.
QList<QStringList> shownRows(const QString &html)
{
    QTextDocument document;
    document.setHtml(html);
    QList<QStringList> rows;
    const QList<QTextFrame *> frames = document.rootFrame()->childFrames();
    for (QTextFrame *frame : frames) {
        const auto *table = qobject_cast<QTextTable *>(frame);
        for (int row = 0; table && row < table->rows(); ++row) {
            QStringList texts;
            for (int column = 0; column < table->columns(); ++column)
                // Qt implements "nowrap" with no-break spaces.
                texts.append(table->cellAt(row, column)
                                     .firstCursorPosition()
                                     .block()
                                     .text()
                                     .replace(QChar::Nbsp, u' '));
            rows.append(texts);
        }
    }
    return rows;
}

// Returns the items of a box layout in order: a label's text, "icon", a class name and so on.
QStringList itemsOf(const QLayout &box)
{
    QStringList parts;
    for (int index = 0; index < box.count(); ++index) {
        QLayoutItem *item = box.itemAt(index);
        if (item->layout() != nullptr)
            parts.append(u"("_s + itemsOf(*item->layout()).join(u' ') + u")"_s);
        else if (item->spacerItem() != nullptr)
            parts.append(item->expandingDirections() != Qt::Orientations()
                                 ? u"stretch"_s
                                 : QString::number(item->sizeHint().height()));
        else if (const auto *shown = qobject_cast<QLabel *>(item->widget()))
            parts.append(shown->pixmap().isNull() ? shown->text().left(7) : u"icon"_s);
        else
            parts.append(QString::fromLatin1(item->widget()->metaObject()->className()));
    }
    return parts;
}

// Returns the styles of all elements named `tag`, in order.
QStringList stylesOf(const QString &html, const QString &tag)
{
    const QRegularExpression expression(u"<%1 [^>]*?style=\"([^\"]*)\""_s.arg(tag));
    QStringList styles;
    for (const QRegularExpressionMatch &match : expression.globalMatch(html))
        styles.append(match.captured(1));
    return styles;
}

} // namespace

class TestInfoDialogs final : public QObject
{
    Q_OBJECT

private slots:
    void hasTheFrame_data();
    void hasTheFrame();
    void keysAccept_data();
    void keysAccept();
    void describesTheProgram();
    void stylesDescription();
    void hasItemsInOrder();
    void listsCommands();
    void stylesTable();
    void scrollsToTheWholeTable();
    void scrollsByKeyboard();
    void onlyHelpFollowsTheTheme();
    void showsTextWithoutIcon();
    void opensFromMenu_data();
    void opensFromMenu();

private:
    TemporaryStore store;
};

void TestInfoDialogs::hasTheFrame_data()
{
    QTest::addColumn<Show>("show");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QSize>("size");
    QTest::addColumn<QMargins>("margins");
    QTest::addColumn<int>("spacing");
    QTest::addColumn<int>("iconExtent");

    QTest::newRow("about") << Show(showAbout) << u"About Velmora"_s << QSize(420, 460)
                           << QMargins(30, 30, 30, 20) << 16 << 96;
    QTest::newRow("help") << Show(showHelp) << u"Help"_s << QSize(520, 460)
                          << QMargins(25, 25, 25, 20) << 12 << 48;
}

void TestInfoDialogs::hasTheFrame()
{
    QFETCH(const Show, show);
    QFETCH(const QString, title);
    QFETCH(const QSize, size);
    QFETCH(const QMargins, margins);
    QFETCH(const int, spacing);
    QFETCH(const int, iconExtent);
    const QStringList problems = checkDialog(show, [&](QDialog &dialog) {
        QCOMPARE(dialog.windowTitle(), title);
        QCOMPARE(dialog.minimumSize(), size);
        QCOMPARE(dialog.maximumSize(), size);
        // Qt adds the system menu to a window with a close button.
        QCOMPARE(dialog.windowFlags() & ~Qt::WindowSystemMenuHint,
                 Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint
                         | Qt::WindowCloseButtonHint);
        QVERIFY(dialog.isModal());
        QCOMPARE(dialog.layout()->contentsMargins(), margins);
        QCOMPARE(dialog.layout()->spacing(), spacing);
        const QLabel *icon = dialog.findChildren<QLabel *>().constFirst();
        QCOMPARE(icon->pixmap().size(), QSize(iconExtent, iconExtent));
        QCOMPARE(icon->alignment(), Qt::AlignCenter);

        const auto *button = dialog.findChild<QPushButton *>(u"connectButton"_s);
        QVERIFY(button);
        QCOMPARE(button->text(), u"OK"_s);
        QCOMPARE(button->width(), 88);
        QVERIFY(button->isDefault());
        QCOMPARE(button->styleSheet(),
                 u"QPushButton#connectButton {  background-color: #007AFF; color: white; border: "
                 "none; border-radius: 6px;  padding: 8px 0px; font-size: 14px; font-weight: "
                 "500;}QPushButton#connectButton:hover { background-color: #0062CC; }"
                 "QPushButton#connectButton:pressed { background-color: #0051AA; }"_s);
        // Centred, within the pixel that rounding leaves.
        QVERIFY(qAbs(button->geometry().center().x() - dialog.rect().center().x()) <= 1);
    });
    QCOMPARE(problems, QStringList());
}

void TestInfoDialogs::keysAccept_data()
{
    QTest::addColumn<Show>("show");
    QTest::addColumn<int>("key");

    QTest::newRow("about, Escape") << Show(showAbout) << int(Qt::Key_Escape);
    QTest::newRow("help, Escape") << Show(showHelp) << int(Qt::Key_Escape);
    QTest::newRow("about, Return") << Show(showAbout) << int(Qt::Key_Return);
    QTest::newRow("help, Return") << Show(showHelp) << int(Qt::Key_Return);
    QTest::newRow("about, Space") << Show(showAbout) << int(Qt::Key_Space);
    QTest::newRow("help, Space") << Show(showHelp) << int(Qt::Key_Space);
}

void TestInfoDialogs::keysAccept()
{
    QFETCH(const Show, show);
    QFETCH(const int, key);
    ModalAnswers answers;
    int result = -1;
    answers.queueForDialog([&](QDialog *dialog) {
        connect(dialog, &QDialog::finished, this, [&result](int code) { result = code; });
        // A shortcut works in the active window only.
        QApplication::setActiveWindow(dialog);
        QTest::keyClick(dialog->focusWidget(), Qt::Key(key));
        if (dialog->isVisible())
            dialog->reject();
    });
    show();
    QCOMPARE(answers.problems(), QStringList());
    QCOMPARE(result, int(QDialog::Accepted));
}

void TestInfoDialogs::describesTheProgram()
{
    const QStringList problems = checkDialog(showAbout, [](QDialog &dialog) {
        const QList<QLabel *> labels = dialog.findChildren<QLabel *>();
        QCOMPARE(labels.size(), 5);
        QCOMPARE(labels.at(1)->text(), u"Velmora"_s);
        QCOMPARE(labels.at(1)->font().family(), u"Comic Sans MS"_s);
        QCOMPARE(labels.at(1)->font().pointSize(), 26);
        QCOMPARE(labels.at(1)->font().weight(), 700);
        QCOMPARE(labels.at(1)->styleSheet(), u"color: #1d1d1f;"_s);
        QCOMPARE(labels.at(2)->text(), u"Version 2.0 Sable-Ridge"_s);
        QCOMPARE(labels.at(2)->font().family(), u"Comic Sans MS"_s);
        QCOMPARE(labels.at(2)->font().pointSize(), 16);
        QCOMPARE(labels.at(2)->styleSheet(), u"color: #888888;"_s);
        const QLabel *description = labels.at(3);
        QCOMPARE(description->textFormat(), Qt::RichText);
        QVERIFY(description->wordWrap());
        QVERIFY(description->openExternalLinks());
        QTextDocument document;
        document.setHtml(description->text());
        QVERIFY(document.toPlainText().startsWith(
                u"Velmora is a free, modern, cross\u2011platform IRC client\nfor macOS, Linux and "
                "Windows.\n\n"_s));
        QVERIFY(description->text().contains(u"<a href="_s));
        QVERIFY(labels.at(4)->text().contains(u"2026"_s));
        QCOMPARE(labels.at(4)->styleSheet(), u"color: #888888; font-size: 13px;"_s);
        for (const QLabel *shown : labels)
            QCOMPARE(shown->alignment(), Qt::AlignCenter);
    });
    QCOMPARE(problems, QStringList());
}

void TestInfoDialogs::stylesDescription()
{
    const QStringList problems = checkDialog(showAbout, [](QDialog &dialog) {
        const QString html = label(dialog, u"<p"_s)->text();
        QCOMPARE(stylesOf(html, u"p"_s),
                 QStringList{u"color:#555555; font-size:15px; text-align:center;"_s});
        QCOMPARE(stylesOf(html, u"a"_s), QStringList{u"color:#007AFF;"_s});
    });
    QCOMPARE(problems, QStringList());
}

void TestInfoDialogs::hasItemsInOrder()
{
    QStringList problems = checkDialog(showAbout, [](QDialog &dialog) {
        QCOMPARE(itemsOf(*dialog.layout()),
                 (QStringList{u"icon"_s, u"Velmora"_s, u"Version"_s, u"<p styl"_s, u"stretch"_s,
                              u"\u00A9 2026 "_s, u"6"_s, u"(stretch QPushButton stretch)"_s}));
    });
    problems += checkDialog(showHelp, [](QDialog &dialog) {
        QCOMPARE(itemsOf(*dialog.layout()),
                 (QStringList{u"icon"_s, u"QWidget"_s, u"QScrollArea"_s, u"stretch"_s,
                              u"(stretch QPushButton stretch)"_s}));
    });
    QCOMPARE(problems, QStringList());
}

void TestInfoDialogs::listsCommands()
{
    const QStringList problems = checkDialog(showHelp, [](QDialog &dialog) {
        const QLabel *title = label(dialog, u"Basic IRC commands"_s);
        QVERIFY(title);
        QCOMPARE(title->font().family(), u"Comic Sans MS"_s);
        QCOMPARE(title->font().pointSize(), 18);
        QCOMPARE(title->font().weight(), 700);
        QCOMPARE(title->alignment(), Qt::AlignCenter);
        QCOMPARE(title->styleSheet(), u"color: #1d1d1f; margin-bottom: 8px;"_s);
        const QLabel *table = label(dialog, u"<table"_s);
        QVERIFY(table);
        QVERIFY(table->wordWrap());
        const QList<QStringList> expected{
                {u"Command"_s, u"Description"_s},
                {u"/join #channel"_s, u"Join a channel"_s},
                {u"/part [#channel]"_s, u"Leave a channel (or current tab)"_s},
                {u"/msg nick message"_s, u"Send a private message"_s},
                {u"/whois nick"_s, u"Show information about a user"_s},
                {u"/nick newnick"_s, u"Change your nickname"_s},
                {u"/away message"_s, u"Set away status (use /back to return)"_s},
                {u"/list"_s, u"List channels on the server"_s},
                {u"/topic [#channel]"_s, u"Show or change the channel topic"_s},
                {u"/kick nick [reason]"_s, u"Kick a user from the channel"_s},
                {u"/me action"_s, u"Send an action message"_s},
                {u"/quit [message]"_s, u"Disconnect from the server"_s},
                {u"/notice nick message"_s, u"Send a notice (like /msg but silent)"_s},
                {u"/ctcp nick command"_s, u"Send a CTCP request (e.g., /ctcp nick VERSION)"_s},
                {u"/mode #channel +o nick"_s, u"Change channel or user modes"_s},
                {u"/invite nick #channel"_s, u"Invite a user to a channel"_s},
                {u"/who #channel"_s, u"Show users in a channel"_s},
                {u"/help [command]"_s, u"Show help (server\u2011specific)"_s},
        };
        QCOMPARE(shownRows(table->text()), expected);
        QCOMPARE(table->text().count(u"white-space:nowrap"_s), 1);
    });
    QCOMPARE(problems, QStringList());
}

void TestInfoDialogs::stylesTable()
{
    const QStringList problems = checkDialog(showHelp, [](QDialog &dialog) {
        const QString html = label(dialog, u"<table"_s)->text();
        QCOMPARE(stylesOf(html, u"table"_s),
                 QStringList{
                         u"border-collapse:collapse; width:100%; font-size:13px; color:#333;"_s});
        QCOMPARE(stylesOf(html, u"tr"_s), QStringList{u"border-bottom:1px solid #ccc;"_s});
        const QString header =
                u"font-weight:bold; text-align:left; padding:4px 8px; border-bottom:1px solid #ccc;"_s;
        QStringList cells{header, header, u"padding:2px 8px; white-space:nowrap;"_s};
        while (cells.size() < 36)
            cells.append(u"padding:2px 8px;"_s);
        QCOMPARE(stylesOf(html, u"td"_s), cells);
    });
    QCOMPARE(problems, QStringList());
}

void TestInfoDialogs::scrollsToTheWholeTable()
{
    const QStringList problems = checkDialog(showHelp, [](QDialog &dialog) {
        const auto *area = dialog.findChild<QScrollArea *>();
        QVERIFY(area);
        const QWidget *table = area->widget();
        // Nothing is clipped at the sides, and the rest is reached by scrolling.
        QVERIFY(table->width() <= area->viewport()->width());
        QVERIFY(table->height() >= table->heightForWidth(table->width()));
        area->verticalScrollBar()->setValue(area->verticalScrollBar()->maximum());
        QCOMPARE(table->mapTo(area->viewport(), QPoint(0, table->height())).y(),
                 area->viewport()->height());
    });
    QCOMPARE(problems, QStringList());
}

void TestInfoDialogs::scrollsByKeyboard()
{
    const QStringList problems = checkDialog(showHelp, [](QDialog &dialog) {
        auto *area = dialog.findChild<QScrollArea *>();
        QVERIFY(area);
        area->setFixedHeight(100); // Too low for the table in any font.
        dialog.layout()->activate();
        QApplication::setActiveWindow(&dialog);
        QTest::keyClick(dialog.focusWidget(), Qt::Key_Tab);
        QCOMPARE(dialog.focusWidget(), area);
        QTest::keyClick(area, Qt::Key_PageDown);
        QVERIFY(area->verticalScrollBar()->value() > 0);
    });
    QCOMPARE(problems, QStringList());
}

void TestInfoDialogs::onlyHelpFollowsTheTheme()
{
    QStringList problems = checkDialog(showAbout, [](QDialog &dialog) {
        QCOMPARE(dialog.styleSheet(), u"QDialog { background-color: #FFFFFF; }"_s);
        QCOMPARE(dialog.grab().toImage().pixelColor(3, 3), QColor(Qt::white));
    });
    QCOMPARE(problems, QStringList());
    for (const QString &theme : {u"light"_s, u"dark"_s}) {
        ModalAnswers answers;
        answers.queueForDialog([&theme](QDialog *dialog) {
            QCOMPARE(dialog->styleSheet(), ThemeManager::dialogStyleSheet(theme));
            QCOMPARE(dialog->grab().toImage().pixelColor(3, 3),
                     QColor(ThemeManager::palette(theme).windowBackground));
            dialog->reject();
        });
        InfoDialogs::showHelp(nullptr, theme);
        QCOMPARE(answers.problems(), QStringList());
    }
}

void TestInfoDialogs::showsTextWithoutIcon()
{
    Q_CLEANUP_RESOURCE(velmora);
    QStringList problems = checkDialog(showAbout, [](QDialog &dialog) {
        const QLabel *substitute = dialog.findChildren<QLabel *>().constFirst();
        QCOMPARE(substitute->text(), u"Velmora"_s);
        QCOMPARE(substitute->styleSheet(),
                 u"font-size: 42px; font-weight: bold; color: #007AFF;"_s);
    });
    problems += checkDialog(showHelp, [](QDialog &dialog) {
        const QLabel *substitute = dialog.findChildren<QLabel *>().constFirst();
        QCOMPARE(substitute->text(), u"?"_s);
        QCOMPARE(substitute->styleSheet(), u"font-size: 36px; color: #007AFF;"_s);
    });
    Q_INIT_RESOURCE(velmora);
    QCOMPARE(problems, QStringList());
}

void TestInfoDialogs::opensFromMenu_data()
{
    QTest::addColumn<QString>("entry");
    QTest::addColumn<QString>("title");

    QTest::newRow("about") << u"About Velmora"_s << u"About Velmora"_s;
    QTest::newRow("help") << u"Help"_s << u"Help"_s;
}

void TestInfoDialogs::opensFromMenu()
{
    QFETCH(const QString, entry);
    QFETCH(const QString, title);
    MainWindow window;
    ModalAnswers answers;
    answers.queueForDialog([&](QDialog *dialog) {
        QCOMPARE(dialog->windowTitle(), title);
        QCOMPARE(dialog->parentWidget(), &window);
        dialog->reject();
    });
    const QList<QAction *> menus = window.menuBar()->actions();
    const QList<QAction *> entries = menus.constLast()->menu()->actions();
    for (QAction *action : entries) {
        if (action->text() == entry)
            action->trigger();
    }
    QCOMPARE(answers.problems(), QStringList());
}

QTEST_MAIN(TestInfoDialogs)

#include "tst_InfoDialogs.moc"
