// Stress tests of whole sessions: connections and reads that end at any byte, and random actions of
// the user and the server.
//
// Each failure names its random seed. Environment variables set the amount of testing, see
// CONTRIBUTING.md.

#include "IRCConnection.h"
#include "RandomSource.h"
#include "RandomUser.h"
#include "RecordedLines.h"
#include "SessionInvariants.h"
#include "SessionModel.h"
#include "TemporaryStore.h"
#include "Waiting.h"
#include "WindowSession.h"

#include <QSet>
#include <QTcpSocket>
#include <QTest>

#include <algorithm>
#include <memory>

using namespace Qt::StringLiterals;

namespace {

constexpr int LinesPerPiece = 8; // Each test row cuts the connection within one piece.

int setting(const char *name, int defaultValue)
{
    bool isSet = false;
    const int value = qEnvironmentVariableIntValue(name, &isSet);
    return isSet ? value : defaultValue;
}

int firstSeed()
{
    return setting("VELMORA_TORTURE_SEED", 1);
}

// The recorded server sends the channel of a JOIN as a trailing parameter, which the client
// ignores.
QStringList recording()
{
    QStringList lines = recordedLines(u"ngircd-session.txt"_s);
    lines.replaceInStrings(u" JOIN :#"_s, u" JOIN #"_s);
    return lines;
}

QByteArray toBytes(const QStringList &lines)
{
    return lines.join(u"\r\n"_s).toUtf8() + "\r\n";
}

// Returns an offset within the first multibyte character; 0 if there is none.
qsizetype offsetWithinCharacter(const QByteArray &bytes)
{
    const auto isContinued = [](char byte) { return (byte & 0xC0) == 0x80; };
    const auto found = std::find_if(bytes.cbegin(), bytes.cend(), isContinued);
    return found == bytes.cend() ? 0 : found - bytes.cbegin();
}

// All that a window shows of its conversations.
struct Snapshot
{
    QStringList tabs;
    QMap<QString, QStringList> lines;
    QMap<QString, QStringList> users;
    QMap<QString, QString> topics;
    QStringList shownUsers;
};

Snapshot takeSnapshot(const MainWindowProbe &probe)
{
    Snapshot snapshot{
            probe.tabTexts(), {}, probe.channelUsers(), probe.channelTopics(), probe.users()};
    const QStringList keys = probe.tabs().keys();
    for (const QString &key : keys)
        snapshot.lines.insert(key, probe.lines(key));
    return snapshot;
}

// Replays bytes to a window in pieces. Each piece is read separately.
class Replay final
{
public:
    [[nodiscard]] bool begin()
    {
        if (!session.acceptDialog(u"alice"_s))
            return false;
        const auto *socket = session.probe.connection().findChild<QTcpSocket *>();
        QObject::connect(socket, &QIODevice::readyRead, &session.window, [this] { ++reads; });
        return true;
    }
    [[nodiscard]] bool send(const QByteArray &piece)
    {
        const int before = reads;
        session.server.sendBytes(piece);
        return waitUntil([&] { return reads > before; });
    }

    WindowSession session;

private:
    int reads = 0;
};

// A window that loses its connection repeatedly.
class CutSession final
{
public:
    // Connects, receives `bytes` and loses the connection. Returns a description of the first
    // failure; empty if there is none.
    [[nodiscard]] QString receiveAndLose(const QByteArray &bytes, bool abruptly)
    {
        if (!session.acceptDialog(u"alice"_s))
            return u"cannot connect"_s;
        model.connectByDialog();
        // The incomplete line of the previous connection precedes this one.
        session.server.send(u":irc.velmora.test 001 alice :Welcome"_s);
        session.server.sendBytes(bytes);
        if (!abruptly && bytes.endsWith("\r\n")) {
            if (!session.settle())
                return u"lines are not received any more"_s;
            const QStringList sent = session.readSent();
            const QStringList expected = model.readExpected();
            if (sent != expected) {
                return u"sent (%1) instead of (%2)"_s.arg(sent.join(u'|'), expected.join(u'|'));
            }
        }
        const int before = model.disconnects;
        if (abruptly)
            session.server.abort();
        else
            session.server.close();
        if (!waitUntil([&] { return model.disconnects > before; }))
            return u"the end of the connection is not noticed"_s;
        const QString difference = SessionInvariants::findDifference(session.probe, model);
        return difference.isEmpty() ? SessionInvariants::findViolation(session.probe) : difference;
    }

private:
    WindowSession session;
    SessionModel model{session.probe.connection()};
};

} // namespace

class TestSessionTorture final : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();

    void survivesACutAfterEveryByte_data();
    void survivesACutAfterEveryByte();
    void showsTheSameForAnySplit_data();
    void showsTheSameForAnySplit();
    void survivesRandomActions_data();
    void survivesRandomActions();

private:
    std::unique_ptr<TemporaryStore> store;
    QStringList lines;
};

void TestSessionTorture::initTestCase()
{
    store = std::make_unique<TemporaryStore>();
    lines = recording();
    QVERIFY(lines.size() > 200);
}

void TestSessionTorture::init()
{
    store->clear();
}

void TestSessionTorture::survivesACutAfterEveryByte_data()
{
    QTest::addColumn<int>("first");

    for (int first = 0; first < lines.size(); first += LinesPerPiece)
        QTest::addRow("seed %d, from line %d", firstSeed(), first + 1) << first;
}

// Sends the lines before a piece once and then repeats only the piece: repeating the whole
// recording for each cut would take too long.
void TestSessionTorture::survivesACutAfterEveryByte()
{
    QFETCH(const int, first);

    const int stride = qMax(1, setting("VELMORA_TORTURE_STRIDE", 61));
    RandomSource random(static_cast<quint32>(firstSeed() + first));
    const QByteArray piece = toBytes(lines.mid(first, LinesPerPiece));
    // Always cut between CR and LF, within a character and at the end.
    QSet<qsizetype> cuts{piece.indexOf('\r') + 1, offsetWithinCharacter(piece), piece.size()};
    for (qsizetype size = 1 + (firstSeed() + first) % stride; size <= piece.size(); size += stride)
        cuts.insert(size);

    CutSession session;
    QString problem = session.receiveAndLose(toBytes(lines.mid(0, first)), false);
    for (qsizetype size = 1; size <= piece.size() && problem.isEmpty(); ++size) {
        if (!cuts.contains(size))
            continue;
        problem = session.receiveAndLose(piece.left(size), random.chance(25));
        if (!problem.isEmpty())
            problem += u", after byte %1"_s.arg(size);
    }
    QVERIFY2(problem.isEmpty(), qPrintable(problem));
}

void TestSessionTorture::showsTheSameForAnySplit_data()
{
    QTest::addColumn<quint32>("seed"); // 0 for pieces of one byte each.
    QTest::addColumn<int>("longest");  // Maximum size of a piece.

    QTest::newRow("byte by byte") << quint32(0) << 1;
    const auto seed = static_cast<quint32>(firstSeed());
    QTest::addRow("seed %u, few bytes", seed) << seed << 9;
    QTest::addRow("seed %u, some bytes", seed + 1) << seed + 1 << 300;
    QTest::addRow("seed %u, many bytes", seed + 2) << seed + 2 << 5000;
}

void TestSessionTorture::showsTheSameForAnySplit()
{
    QFETCH(const quint32, seed);
    QFETCH(const int, longest);

    RandomSource random(seed);
    // Characters are not split here, since the client loses a character that is split.
    QString text = QString::fromUtf8(toBytes(lines));
    if (longest == 1) {
        for (QChar &unit : text)
            unit = unit.unicode() < 0x80 ? unit : QChar(u'?');
    }
    Replay whole;
    QVERIFY(whole.begin());
    QVERIFY(whole.send(text.toUtf8()));
    QVERIFY(whole.session.settle());

    store->clear();
    Replay split;
    QVERIFY(split.begin());
    for (qsizetype at = 0; at < text.size();) {
        qsizetype end = qMin(at + 1 + random.below(longest), text.size());
        if (end < text.size() && text.at(end).isLowSurrogate())
            ++end;
        QVERIFY(split.send(text.mid(at, end - at).toUtf8()));
        at = end;
    }
    QVERIFY(split.session.settle());

    const Snapshot expected = takeSnapshot(whole.session.probe);
    const Snapshot actual = takeSnapshot(split.session.probe);
    QVERIFY(expected.lines.size() > 4);
    QCOMPARE(actual.tabs, expected.tabs);
    for (auto tab = expected.lines.cbegin(); tab != expected.lines.cend(); ++tab)
        QCOMPARE(actual.lines.value(tab.key()), *tab);
    QCOMPARE(actual.users, expected.users);
    QCOMPARE(actual.topics, expected.topics);
    QCOMPARE(actual.shownUsers, expected.shownUsers);
    QCOMPARE(split.session.readSent(), whole.session.readSent());
}

void TestSessionTorture::survivesRandomActions_data()
{
    QTest::addColumn<quint32>("seed");

    const auto first = static_cast<quint32>(firstSeed());
    const auto count = static_cast<quint32>(setting("VELMORA_TORTURE_SEEDS", 3));
    for (quint32 seed = first; seed < first + count; ++seed)
        QTest::addRow("seed %u", seed) << seed;
}

void TestSessionTorture::survivesRandomActions()
{
    QFETCH(const quint32, seed);

    const int steps = setting("VELMORA_TORTURE_STEPS", 1000);
    RandomSource random(seed);
    WindowSession session;
    RandomUser user(session, random, lines);
    for (int step = 1; step <= steps; ++step) {
        const QString problem = user.step();
        QVERIFY2(problem.isEmpty(), qPrintable(u"seed %1, step %2: %3, after: %4"_s.arg(
                                            QString::number(seed), QString::number(step), problem,
                                            user.recentSteps())));
    }
    const RandomUser::Counts counts = user.counts();
    qInfo("%d steps, %d lines sent, %d dialogs and menus answered, %d connections lost", steps,
          counts.linesSent, counts.answers, counts.linksLost);
    QVERIFY(counts.linesSent > 0 && counts.answers > 0 && counts.linksLost > 0);
}

QTEST_MAIN(TestSessionTorture)
#include "tst_SessionTorture.moc"
