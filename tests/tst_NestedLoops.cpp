// Interruptions while a menu or a dialog runs a nested event loop.

#include "IRCConnection.h"
#include "Interruptions.h"
#include "NestedLoops.h"
#include "TemporaryStore.h"

#include <QApplication>
#include <QMessageBox>
#include <QTest>
#include <QWindow>

using namespace Qt::StringLiterals;

namespace {

const QList<std::pair<QString, Interruption>> AllInterruptions{
        {u"link"_s, Interruptions::dropLink},
        {u"flood"_s, Interruptions::flood},
        {u"lost channel"_s, Interruptions::loseChannel},
};

// The tests of these menus and dialogs cover these interruptions in more detail. A refusal to join
// appears only while disconnected.
bool isLeftOut(const QString &loop, const QString &interruption)
{
    static const QMap<QString, QStringList> Left{
            {u"menu of a tab"_s, {u"link"_s}},
            {u"menu of a user"_s, {u"link"_s, u"flood"_s, u"lost channel"_s}},
            {u"menu of a listed channel"_s, {u"link"_s, u"lost channel"_s}},
            {u"topic editor"_s, {u"link"_s, u"lost channel"_s}},
            {u"refusal to join"_s, {u"link"_s, u"flood"_s, u"lost channel"_s}},
            {u"channel prompt"_s, {u"link"_s, u"flood"_s}},
            {u"away prompt"_s, {u"link"_s, u"flood"_s}},
            {u"nick prompt"_s, {u"link"_s, u"flood"_s}},
    };
    return Left.value(loop).contains(interruption);
}

// Whether the window still shows a received line. Reconnects first if it is disconnected.
bool stillReceives(WindowSession &session)
{
    if (!session.probe.connection().isConnected() && !session.registerAs())
        return false;
    return session.receive(u":zoe!u@h PRIVMSG me :on it goes"_s)
           && session.probe.lastLine(u"zoe"_s) == "zoe|on it goes"_L1;
}

} // namespace

Q_DECLARE_METATYPE(Interruption)
Q_DECLARE_METATYPE(NestedLoop)

class TestNestedLoops final : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void continuesAfterAnInterruption_data();
    void continuesAfterAnInterruption();
    void continuesWhenTheConnectionOpens();
    void hasATransientParent_data();
    void hasATransientParent();

private:
    TemporaryStore store;
};

void TestNestedLoops::init()
{
    store.clear();
}

void TestNestedLoops::continuesAfterAnInterruption_data()
{
    QTest::addColumn<NestedLoop>("loop");
    QTest::addColumn<Interruption>("interruption");

    for (const NestedLoop &loop : NestedLoop::all()) {
        for (const auto &[name, interruption] : AllInterruptions) {
            if (!isLeftOut(QString::fromLatin1(loop.name), name))
                QTest::addRow("%s, %s", loop.name, qPrintable(name)) << loop << interruption;
        }
    }
}

void TestNestedLoops::continuesAfterAnInterruption()
{
    QFETCH(const NestedLoop, loop);
    QFETCH(const Interruption, interruption);
    NestedLoopFixture fixture;
    QVERIFY(fixture.joinChannels());
    bool happened = false;
    bool stayed = false;
    fixture.inside = [&](QWidget *shown) {
        happened = interruption(fixture.session);
        stayed = shown->isVisible();
        loop.answer(shown);
    };
    loop.open(fixture);
    QCOMPARE(fixture.answers.problems(), QStringList());
    QVERIFY(happened);
    QVERIFY(stayed);
    QVERIFY(loop.isDone(fixture));
    QCOMPARE(QApplication::activeModalWidget(), nullptr);
    QCOMPARE(QApplication::activePopupWidget(), nullptr);
    QVERIFY(stillReceives(fixture.session));
}

void TestNestedLoops::continuesWhenTheConnectionOpens()
{
    NestedLoopFixture fixture;
    WindowSession &session = fixture.session;
    QVERIFY(session.clickConnect(u"me"_s));
    bool isUp = false;
    fixture.answers.queueForBox([&](QMessageBox *box) {
        isUp = session.server.waitForClient() && session.server.waitForLine(u"NICK me"_s)
               && session.receive(u":irc.test 001 me :Welcome"_s);
        box->accept();
    });
    session.choose(u"&Join channel..."_s);
    QCOMPARE(fixture.answers.problems(), QStringList());
    QVERIFY(isUp);
    QVERIFY(stillReceives(session));
}

void TestNestedLoops::hasATransientParent_data()
{
    QTest::addColumn<NestedLoop>("loop");

    for (const NestedLoop &loop : NestedLoop::all())
        QTest::newRow(loop.name) << loop;
}

void TestNestedLoops::hasATransientParent()
{
    QFETCH(const NestedLoop, loop);
    NestedLoopFixture fixture;
    QVERIFY(fixture.joinChannels());
    bool hasParent = false;
    fixture.inside = [&](QWidget *shown) {
        hasParent = shown->windowHandle()->transientParent() != nullptr;
        loop.answer(shown);
    };
    loop.open(fixture);
    QCOMPARE(fixture.answers.problems(), QStringList());
    QVERIFY(hasParent);
}

QTEST_MAIN(TestNestedLoops)
#include "tst_NestedLoops.moc"
