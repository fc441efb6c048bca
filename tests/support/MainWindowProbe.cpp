#include "MainWindowProbe.h"

#include "MyTabWidget.h"

#include <QLineEdit>
#include <QListWidget>
#include <QTest>
#include <QTextBrowser>
#include <QTextTable>

namespace {

QString cellText(const QTextTable &table, int row, int column)
{
    const QTextTableCell cell = table.cellAt(row, column);
    QTextCursor cursor = cell.firstCursorPosition();
    cursor.setPosition(cell.lastPosition(), QTextCursor::KeepAnchor);
    return cursor.selectedText();
}

} // namespace

QStringList MainWindowProbe::tabTexts() const
{
    QStringList texts;
    for (int index = 0; index < window.tabWidget->count(); ++index)
        texts.append(window.tabWidget->tabText(index));
    return texts;
}

QStringList MainWindowProbe::lines(const QString &tabName) const
{
    QStringList lines;
    const QTextTable *table = window.tabs.value(tabName).table;
    if (table == nullptr)
        return lines;
    for (int row = 1; row < table->rows(); ++row) {
        if (table->columns() == 2) {
            lines.append(cellText(*table, row, 1));
            continue;
        }
        QString text = cellText(*table, row, 2);
        if (text.startsWith(u' '))
            text.remove(0, 1);
        QString nick = cellText(*table, row, 1);
        nick.chop(2);
        lines.append(nick + u'|' + text);
    }
    return lines;
}

QStringList MainWindowProbe::users() const
{
    QStringList texts;
    for (int row = 0; row < window.userList->count(); ++row)
        texts.append(window.userList->item(row)->text());
    return texts;
}

void MainWindowProbe::showTab(const QString &tabName) const
{
    window.tabWidget->setCurrentWidget(window.tabs.value(tabName).page);
}

void MainWindowProbe::typeLine(const QString &text) const
{
    window.inputLine->setText(text);
    QTest::keyClick(window.inputLine, Qt::Key_Return);
}
