#include "NickCompletion.h"

#include <QCompleter>
#include <QSignalSpy>
#include <QStandardItemModel>
#include <QStringListModel>
#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;

class TestNickCompletion final : public QObject
{
    Q_OBJECT

private slots:
    void findsCandidates_data();
    void findsCandidates();
    void keepsItsModel();
    void findsTheWordBeforeTheCursor_data();
    void findsTheWordBeforeTheCursor();
    void findsTheCompletion_data();
    void findsTheCompletion();
};

void TestNickCompletion::findsCandidates_data()
{
    QTest::addColumn<QString>("tab");
    QTest::addColumn<QStringList>("entries");
    QTest::addColumn<QStringList>("candidates");

    const auto add = [](const char *name, const QString &tab, const QStringList &entries,
                        const QStringList &candidates) {
        QTest::newRow(name) << tab << entries << candidates;
    };
    const auto me = u"me"_s;
    add("channel", u"#c"_s, {u"z"_s, u"@a"_s}, {u"z"_s, u"@a"_s, me});
    add("unknown channel", u"#c"_s, {}, {me});
    add("own nick in the entries", u"#c"_s, {me, u"a"_s}, {me, u"a"_s});
    add("duplicates", u"#c"_s, {u"a"_s, u"b"_s, u"a"_s, u"A"_s}, {u"a"_s, u"b"_s, u"A"_s, me});
    add("own nick with a prefix", u"#c"_s, {u"@me"_s}, {u"@me"_s, me});
    add("server", u"Server"_s, {}, {me});
    add("list", u"List"_s, {}, {u"List"_s, me});
    add("conversation", u"bob"_s, {}, {u"bob"_s, me});
    add("entries outside a channel", u"bob"_s, {u"a"_s}, {u"bob"_s, me});
    add("conversation with the user", me, {}, {me});
}

void TestNickCompletion::findsCandidates()
{
    QFETCH(const QString, tab);
    QFETCH(const QStringList, entries);
    QTEST(NickCompletion::candidates({tab, entries, u"me"_s}), "candidates");
}

void TestNickCompletion::keepsItsModel()
{
    QObject parent;
    QCompleter *completer = NickCompletion::create(&parent);
    QCOMPARE(completer->parent(), &parent);
    QCOMPARE(completer->caseSensitivity(), Qt::CaseInsensitive);
    QCOMPARE(completer->completionMode(), QCompleter::PopupCompletion);
    // A model of another type is replaced.
    completer->setModel(new QStandardItemModel(completer));
    NickCompletion::setCandidates(*completer, {u"a"_s});
    const auto *model = qobject_cast<QStringListModel *>(completer->model());
    QVERIFY(model != nullptr);
    QCOMPARE(model->parent(), completer);
    QCOMPARE(model->stringList(), QStringList{u"a"_s});
    const QSignalSpy changed(model, &QAbstractItemModel::modelReset);
    NickCompletion::setCandidates(*completer, {u"a"_s});
    QCOMPARE(changed.size(), 0);
    NickCompletion::setCandidates(*completer, {u"b"_s, u"c"_s});
    QCOMPARE(changed.size(), 1);
    QCOMPARE(completer->model(), model);
    QCOMPARE(model->stringList(), (QStringList{u"b"_s, u"c"_s}));
}

// "|" marks the cursor.
void TestNickCompletion::findsTheWordBeforeTheCursor_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("word");

    QTest::newRow("one word") << u"car|"_s << u"car"_s;
    QTest::newRow("second word") << u"hello car|"_s << u"car"_s;
    QTest::newRow("several spaces") << u"hello   car|"_s << u"car"_s;
    QTest::newRow("inside a word") << u"hello ca|rol x"_s << u"ca"_s;
    QTest::newRow("after a space") << u"car |x"_s << QString();
    QTest::newRow("at the start") << u"|car"_s << QString();
    QTest::newRow("at the start of two words") << u"|hello car"_s << u"car"_s;
    QTest::newRow("at the start, before a space") << u"| car"_s << u"car"_s;
    QTest::newRow("at the start, trailing space") << u"|car "_s << QString();
    QTest::newRow("a tab is no space") << u"a\tcar|"_s << u"a\tcar"_s;
    QTest::newRow("empty") << u"|"_s << QString();
}

void TestNickCompletion::findsTheWordBeforeTheCursor()
{
    QFETCH(QString, text);
    const qsizetype cursor = text.indexOf(u'|');
    text.remove(cursor, 1);
    QTEST(NickCompletion::wordBeforeCursor(text, static_cast<int>(cursor)), "word");
}

void TestNickCompletion::findsTheCompletion_data()
{
    QTest::addColumn<QString>("word");
    QTest::addColumn<std::optional<QString>>("rest");

    const auto add = [](const char *name, const QString &word, const std::optional<QString> &rest) {
        QTest::newRow(name) << word << rest;
    };
    add("start of a nick", u"car"_s, u"ol"_s);
    add("another case", u"CAR"_s, u"ol"_s);
    add("first match", u"da"_s, u"n"_s);
    add("complete nick", u"carol"_s, QString());
    add("start of the second match", u"dani"_s, u"el"_s);
    add("prefix", u"@"_s, u"alice"_s);
    add("operator not by the nick", u"ali"_s, std::nullopt);
    add("no match", u"x"_s, std::nullopt);
}

void TestNickCompletion::findsTheCompletion()
{
    QFETCH(const QString, word);
    QTEST(NickCompletion::completionSuffix(word, {u"@alice"_s, u"carol"_s, u"dan"_s, u"daniel"_s}),
          "rest");
}

QTEST_MAIN(TestNickCompletion)
#include "tst_NickCompletion.moc"
