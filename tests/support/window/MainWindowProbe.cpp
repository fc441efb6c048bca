#include "MainWindowProbe.h"

#include "ChatDocument.h"
#include "HighlightTabBar.h"
#include "MyTabWidget.h"

#include <QCompleter>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QSplitter>
#include <QStringListModel>
#include <QTest>
#include <QTextBrowser>
#include <QTextTable>
#include <QTreeWidget>

using namespace Qt::StringLiterals;

QVariantMap MainWindowProbe::preferences() const
{
    return {{u"chatBgImage"_s, window.chatBgImage},
            {u"chatBgColor"_s, window.chatBgColor},
            {u"timestampFormat"_s, window.timestampFormat},
            {u"chatFont"_s, window.chatFont},
            {u"emojiSize"_s, window.emojiSize},
            {u"autoReconnect"_s, window.autoReconnect},
            {u"reconnectDelay"_s, window.reconnectDelay},
            {u"reconnectAttempts"_s, window.reconnectAttempts},
            {u"pingInterval"_s, window.pingInterval},
            {u"pingTimeout"_s, window.pingTimeout},
            {u"acceptInvalidSsl"_s, window.acceptInvalidSsl},
            {u"logPath"_s, window.logPath},
            {u"logEnabled"_s, window.logEnabled}};
}

QMap<QString, QString> MainWindowProbe::storedPreferences() const
{
    QMap<QString, QString> texts{{u"theme"_s, window.currentTheme}};
    const QVariantMap members = preferences();
    for (auto member = members.cbegin(); member != members.cend(); ++member)
        texts.insert(member.key(), member->toString());
    texts.insert(u"chatFont"_s, window.chatFont.toString());
    const QColor &color = window.chatBgColor;
    texts.insert(u"chatBgColor"_s, color.isValid() ? color.name() : QString());
    return texts;
}

void MainWindowProbe::openTabs(const QStringList &names) const
{
    for (const QString &name : names)
        window.appendMessageToTab(name, u"a line"_s, QString(), false);
}

QStringList MainWindowProbe::listColumn(int column) const
{
    QStringList texts;
    for (int row = 0; row < window.listTree->topLevelItemCount(); ++row) {
        const QTreeWidgetItem *item = window.listTree->topLevelItem(row);
        if (!item->isHidden())
            texts.append(item->text(column));
    }
    return texts;
}

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
            lines.append(ChatDocument::cellText(*table, row, 1));
            continue;
        }
        QString text = ChatDocument::cellText(*table, row, 2);
        if (text.startsWith(u' '))
            text.remove(0, 1);
        QString nick = ChatDocument::cellText(*table, row, 1);
        nick.chop(2);
        lines.append(nick + u'|' + text);
    }
    return lines;
}

QString MainWindowProbe::lastLine(const QString &tabName) const
{
    const QStringList all = lines(tabName);
    return all.isEmpty() ? QString() : all.last();
}

QColor MainWindowProbe::lastTextColor(const QString &tabName) const
{
    const QTextTable *table = window.tabs.value(tabName).table;
    if (table == nullptr)
        return {};
    const int textColumn = table->columns() - 1;
    QTextCursor cursor = table->cellAt(table->rows() - 1, textColumn).firstCursorPosition();
    cursor.movePosition(QTextCursor::NextCharacter);
    const QBrush brush = cursor.charFormat().foreground();
    return brush.style() == Qt::NoBrush ? QColor() : brush.color();
}

QStringList MainWindowProbe::users() const
{
    QStringList texts;
    for (int row = 0; row < window.userList->count(); ++row)
        texts.append(window.userList->item(row)->text());
    return texts;
}

QPoint MainWindowProbe::positionOfUser(const QString &entry) const
{
    const auto *item = window.userList->findItems(entry, Qt::MatchExactly).value(0);
    return window.userList->visualItemRect(item).center();
}

QStringList MainWindowProbe::completions() const
{
    const auto *model = qobject_cast<QStringListModel *>(window.nickCompleter->model());
    return model == nullptr ? QStringList() : model->stringList();
}

int MainWindowProbe::shareOfUserList() const
{
    const QList<int> sizes = window.splitter->sizes();
    return qRound(100.0 * sizes.at(1) / (sizes.at(0) + sizes.at(1)));
}

void MainWindowProbe::clickTab(int index) const
{
    QTest::mouseClick(window.tabBar, Qt::LeftButton, {}, window.tabBar->tabRect(index).center());
}

void MainWindowProbe::showTab(const QString &tabName) const
{
    window.tabWidget->setCurrentWidget(window.tabs.value(tabName).page);
}

QPushButton *MainWindowProbe::closeButton(int index) const
{
    return qobject_cast<QPushButton *>(window.tabBar->tabButton(index, QTabBar::LeftSide));
}

void MainWindowProbe::typeLine(const QString &text) const
{
    window.inputLine->setText(text);
    QTest::keyClick(window.inputLine, Qt::Key_Return);
}
