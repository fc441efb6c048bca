// Whole sessions that go as badly as they can: links that end anywhere, reads that end anywhere,
// and users and servers that do anything at any time.
//
// What chance there is comes from seeds, which each failure names. The environment says how much
// is done, see CONTRIBUTING.md.

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

// Of the recording; each session that is to be cut goes on from the start of such a piece.
constexpr int LinesOfPiece = 8;

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

// The recording's server names the channel of a JOIN in a way that most don't, and that the client
// doesn't look at.
QStringList recording()
{
    QStringList lines = recordedLines(u"ngircd-session.txt"_s);
    lines.replaceInStrings(u" JOIN :#"_s, u" JOIN #"_s);
    return lines;
}

QByteArray asBytes(const QStringList &lines)
{
    return lines.join(u"\r\n"_s).toUtf8() + "\r\n";
}

// How many bytes lead up to the middle of the first character that has more than one; 0 if there
// is none.
qsizetype placeWithinCharacter(const QByteArray &bytes)
{
    const auto isContinued = [](char byte) { return (byte & 0xC0) == 0x80; };
    const auto found = std::find_if(bytes.cbegin(), bytes.cend(), isContinued);
    return found == bytes.cend() ? 0 : found - bytes.cbegin();
}

/// All that a window shows of its conversations.
struct Picture
{
    QStringList tabs;
    QMap<QString, QStringList> lines;
    QMap<QString, QStringList> users;
    QMap<QString, QString> topics;
    QStringList shownUsers;
};

Picture pictureOf(const MainWindowProbe &probe)
{
    Picture picture{
            probe.tabTexts(), {}, probe.channelUsers(), probe.channelTopics(), probe.users()};
    const QStringList keys = probe.tabs().keys();
    for (const QString &key : keys)
        picture.lines.insert(key, probe.lines(key));
    return picture;
}

/// Replays bytes to a window in pieces of which each is read by itself.
class Replay final
{
public:
    [[nodiscard]] bool begin()
    {
        if (!session.acceptDialog(u"alice"_s))
            return false;
        // The latest is the one in use; the window has had no other.
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

/// A window whose link ends again and again.
class CutSession final
{
public:
    /// Connects, hears `bytes` and loses the link. Returns what is wrong then, or an empty text.
    [[nodiscard]] QString hearAndLose(const QByteArray &bytes, bool abruptly)
    {
        if (!session.acceptDialog(u"alice"_s))
            return u"no link comes up"_s;
        model.connectByDialog();
        // What was left of the last session stands in front of this.
        session.server.send(u":irc.velmora.test 001 alice :Welcome"_s);
        session.server.sendBytes(bytes);
        if (!abruptly && bytes.endsWith("\r\n")) {
            if (!session.settle())
                return u"lines are not heard any more"_s;
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
            return u"the end of the link is not noticed"_s;
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
    void saysTheSameHoweverItIsSplit_data();
    void saysTheSameHoweverItIsSplit();
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

    for (int first = 0; first < lines.size(); first += LinesOfPiece)
        QTest::addRow("seed %d, from line %d", firstSeed(), first + 1) << first;
}

// A link that ended after each byte of the whole would have everything said half a thousand times,
// so it is pieces that are said again; what came before is said once.
void TestSessionTorture::survivesACutAfterEveryByte()
{
    QFETCH(const int, first);

    const int stride = qMax(1, setting("VELMORA_TORTURE_STRIDE", 61));
    RandomSource random(static_cast<quint32>(firstSeed() + first));
    const QByteArray piece = asBytes(lines.mid(first, LinesOfPiece));
    // Wherever the strides lead, a cut is made between CR and LF, within a character and at the
    // end.
    QSet<qsizetype> cuts{piece.indexOf('\r') + 1, placeWithinCharacter(piece), piece.size()};
    for (qsizetype size = 1 + (firstSeed() + first) % stride; size <= piece.size(); size += stride)
        cuts.insert(size);

    CutSession session;
    QString problem = session.hearAndLose(asBytes(lines.mid(0, first)), false);
    for (qsizetype size = 1; size <= piece.size() && problem.isEmpty(); ++size) {
        if (!cuts.contains(size))
            continue;
        problem = session.hearAndLose(piece.left(size), random.chance(25));
        if (!problem.isEmpty())
            problem += u", after byte %1"_s.arg(size);
    }
    QVERIFY2(problem.isEmpty(), qPrintable(problem));
}

void TestSessionTorture::saysTheSameHoweverItIsSplit_data()
{
    QTest::addColumn<quint32>("seed"); // 0 for pieces of one byte each.
    QTest::addColumn<int>("longest");  // Of the pieces.

    QTest::newRow("byte by byte") << quint32(0) << 1;
    const auto seed = static_cast<quint32>(firstSeed());
    QTest::addRow("seed %u, few bytes", seed) << seed << 9;
    QTest::addRow("seed %u, some bytes", seed + 1) << seed + 1 << 300;
    QTest::addRow("seed %u, many bytes", seed + 2) << seed + 2 << 5000;
}

void TestSessionTorture::saysTheSameHoweverItIsSplit()
{
    QFETCH(const quint32, seed);
    QFETCH(const int, longest);

    RandomSource random(seed);
    // What is cut within a character loses that character, and nothing else; so none is cut here.
    QString text = QString::fromUtf8(asBytes(lines));
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

    const Picture expected = pictureOf(whole.session.probe);
    const Picture actual = pictureOf(split.session.probe);
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
    const RandomUser::Counts tally = user.counts();
    qInfo("%d steps, %d lines sent, %d dialogs and menus answered, %d links lost", steps,
          tally.linesSent, tally.answers, tally.linksLost);
    QVERIFY(tally.linesSent > 0 && tally.answers > 0 && tally.linksLost > 0);
}

QTEST_MAIN(TestSessionTorture)
#include "tst_SessionTorture.moc"
