#include "Files.h"
#include "PreferencesForm.h"
#include "TemporaryStore.h"
#include "WindowSession.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

#include <array>
#include <csignal>
#include <functional>
#include <linux/capability.h>
#include <memory>
#include <optional>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

// Prevents writes to the store during its lifetime.
class Fault
{
    Q_DISABLE_COPY_MOVE(Fault)

public:
    Fault() = default;
    virtual ~Fault() = default;
};

// Drops the capabilities by which root ignores file permissions. No effect for other users.
class DroppedCapabilities
{
    Q_DISABLE_COPY_MOVE(DroppedCapabilities)

public:
    DroppedCapabilities()
    {
        isRoot = syscall(SYS_capget, &header, before.data()) == 0;
        std::array<__user_cap_data_struct, 2> weaker = before;
        weaker.front().effective &= ~(1U << CAP_DAC_OVERRIDE | 1U << CAP_DAC_READ_SEARCH);
        isRoot = isRoot && syscall(SYS_capset, &header, weaker.data()) == 0;
    }
    ~DroppedCapabilities()
    {
        if (isRoot)
            syscall(SYS_capset, &header, before.data());
    }

private:
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    std::array<__user_cap_data_struct, 2> before{};
    bool isRoot = false;
};

// Reduces the permissions of a file or folder.
class Restricted final : public Fault
{
public:
    Restricted(const QString &path, QFile::Permissions permissions)
        : restricted(path)
        , before(QFile::permissions(path))
    {
        QFile::setPermissions(path, permissions);
    }
    ~Restricted() override { QFile::setPermissions(restricted, before); }

private:
    QString restricted;
    QFile::Permissions before;
    DroppedCapabilities dropped;
};

// Replaces a file with a folder, or a folder with a file.
class Displaced final : public Fault
{
public:
    explicit Displaced(const QString &path)
        : originalPath(path)
        , isFolder(QFileInfo(path).isDir())
    {
        QDir().rename(originalPath, movedPath());
        if (isFolder)
            static_cast<void>(QFile(originalPath).open(QIODevice::WriteOnly));
        else
            QDir().mkdir(originalPath);
    }
    ~Displaced() override
    {
        if (isFolder)
            QFile::remove(originalPath);
        else
            QDir(originalPath).removeRecursively();
        QDir().rename(movedPath(), originalPath);
    }

private:
    [[nodiscard]] QString movedPath() const { return originalPath + u".moved"_s; }

    QString originalPath;
    bool isFolder;
};

// Limits the size of files, like a full disk: a write ends at `maxBytes`.
class FullDisk final : public Fault
{
public:
    explicit FullDisk(rlim_t maxBytes)
        : handlerBefore(std::signal(SIGXFSZ, SIG_IGN))
    {
        getrlimit(RLIMIT_FSIZE, &before);
        rlimit limit = before;
        limit.rlim_cur = maxBytes;
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FullDisk() override
    {
        setrlimit(RLIMIT_FSIZE, &before);
        std::signal(SIGXFSZ, handlerBefore);
    }

private:
    using Handler = void (*)(int);

    Handler handlerBefore;
    rlimit before{};
};

using MakeFault = std::function<std::unique_ptr<Fault>(const QString &)>;
using Change = std::function<void(const QString &)>;

void write(const QString &fileName, const QByteArray &content)
{
    QFile file(fileName);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("Cannot write %s", qUtf8Printable(fileName));
}

QString folderOf(const QString &fileName)
{
    return QFileInfo(fileName).path();
}

QStringList entriesOf(const QString &folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System
                                  | QDir::NoDotAndDotDot);
}

// Returns the values in the file itself. Reads a copy, since all QSettings objects of a file share
// the values that they could not write yet.
QVariantMap valuesInFile(const QString &fileName)
{
    const QTemporaryDir folder;
    const QString copy = folder.filePath(u"copy.conf"_s);
    QFile::copy(fileName, copy);
    const QSettings settings(copy, QSettings::IniFormat);
    QVariantMap values;
    const QStringList keys = settings.allKeys();
    for (const QString &key : keys) {
        if (!key.isEmpty())
            values.insert(key, settings.value(key));
    }
    return values;
}

QByteArray garbage()
{
    QByteArray bytes;
    for (int index = 0; index < 4096; ++index)
        bytes.append(static_cast<char>(index * index * 31 + index / 7));
    return bytes;
}

void addFaults()
{
    QTest::addColumn<MakeFault>("make");

    const auto restricted = [](QFile::Permissions permissions) {
        return [permissions](const QString &path) {
            return std::make_unique<Restricted>(path, permissions);
        };
    };
    QTest::newRow("read-only folder") << MakeFault([](const QString &fileName) {
        return std::make_unique<Restricted>(folderOf(fileName), QFile::ReadOwner | QFile::ExeOwner);
    });
    QTest::newRow("locked folder") << MakeFault([](const QString &fileName) {
        return std::make_unique<Restricted>(folderOf(fileName), QFile::Permissions());
    });
    QTest::newRow("read-only file") << MakeFault(restricted(QFile::ReadOwner));
    QTest::newRow("unreadable file") << MakeFault(restricted(QFile::Permissions()));
    QTest::newRow("file instead of folder") << MakeFault([](const QString &fileName) {
        return std::make_unique<Displaced>(folderOf(fileName));
    });
    QTest::newRow("folder instead of file") << MakeFault(
            [](const QString &fileName) { return std::make_unique<Displaced>(fileName); });
    QTest::newRow("full disk") << MakeFault(
            [](const QString &) { return std::make_unique<FullDisk>(0); });
}

void addChanges()
{
    QTest::addColumn<Change>("change");

    const auto writing = [](const QByteArray &content) {
        return Change([content](const QString &fileName) { write(fileName, content); });
    };
    QTest::newRow("file deleted") << Change(
            [](const QString &fileName) { QFile::remove(fileName); });
    QTest::newRow("folder deleted") << Change(
            [](const QString &fileName) { QDir(folderOf(fileName)).removeRecursively(); });
    QTest::newRow("emptied") << writing({});
    QTest::newRow("hand-written") << writing("[General]\ntheme=dark\nemojiSize=31\nmine=kept\n\n"
                                             "[servers]\nhome_1\\nickname=hand\n"_ba);
    QTest::newRow("hand-written nonsense")
            << writing("[General\nemojiSize=@Rect(1)\nreconnectDelay=@Variant(\\0\\0\\0\\x1f\n"
                       "autoReconnect=@Invalid()\n]]\n=\n[servers]\n=x\nfavorites=@QSize(\n"_ba);
    QTest::newRow("garbage") << writing(garbage());
    QTest::newRow("zeros") << writing(QByteArray(4096, '\0'));
    QTest::newRow("first half") << Change([](const QString &fileName) {
        const QByteArray content = readFile(fileName);
        write(fileName, content.first(content.size() / 2));
    });
    QTest::newRow("second half") << Change([](const QString &fileName) {
        const QByteArray content = readFile(fileName);
        write(fileName, content.last(content.size() / 2));
    });
}

} // namespace

class TestStoreFaults final : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void runsWithoutWriting_data() { addFaults(); }
    void runsWithoutWriting();
    void startsWithoutWriting_data() { addFaults(); }
    void startsWithoutWriting();
    void completesATruncatedFile_data();
    void completesATruncatedFile();
    void runsWithAChangedFile_data() { addChanges(); }
    void runsWithAChangedFile();
    void startsWithAChangedFile_data() { addChanges(); }
    void startsWithAChangedFile();
    void keepsReadableValues_data();
    void keepsReadableValues();

private:
    [[nodiscard]] QString use(WindowSession &session, int round) const;
    [[nodiscard]] QString missing(const WindowSession &session, int round) const;

    std::unique_ptr<TemporaryStore> store;
    QString fileName;
};

void TestStoreFaults::init()
{
    // A new folder for each test, since Qt caches settings by file path.
    store = std::make_unique<TemporaryStore>();
    fileName = store->fileName();
}

// Uses the features that read and write the store. Returns an error message, or nothing.
QString TestStoreFaults::use(WindowSession &session, int round) const
{
    const MainWindowProbe &probe = session.probe;
    if (!session.registerAs(u"me"_s, u"#start"_s) || !session.join(u"#a"_s, u"me @bob"_s))
        return u"not connected"_s;
    const QString text = u"round %1"_s.arg(round);
    if (!session.receive(u":bob!b@h PRIVMSG #a :%1"_s.arg(text))
        || probe.lastLine(u"#a"_s) != u"bob|" + text)
        return u"not shown, but: "_s + probe.lastLine(u"#a"_s);

    PreferencesForm form(session);
    form.set(u"emojiSize"_s, QString::number(20 + round));
    form.clickOk();
    if (probe.preferences().value(u"emojiSize"_s).toInt() != 20 + round)
        return u"preference not in force"_s;

    probe.setChannelAutojoin(text, true);
    if (probe.autojoinChannels() != QStringList{u"#start"_s, u'#' + text})
        return u"autojoin: "_s + probe.autojoinChannels().join(u' ');
    return form.answers.problems().join(u'\n');
}

// Returns which values written by `use` are missing in the file, or nothing.
QString TestStoreFaults::missing(const WindowSession &session, int round) const
{
    const QVariantMap values = valuesInFile(fileName);
    const QString id = session.probe.currentServerId();
    QStringList missing;
    if (values.value(u"emojiSize"_s).toInt() != 20 + round)
        missing << u"preference"_s;
    if (values.value(u"servers/"_s + id + u"/autojoin"_s).toStringList()
        != QStringList{u"#start"_s, u"#round %1"_s.arg(round)})
        missing << u"autojoin"_s;
    if (values.value(u"servers/"_s + id + u"/nickname"_s).toString() != "me"_L1)
        missing << u"nick"_s;
    if (!values.value(u"connection/history"_s)
                 .toStringList()
                 .contains(QString(id).replace(u'_', u':')))
        missing << u"history"_s;
    return missing.join(u", "_s);
}

void TestStoreFaults::runsWithoutWriting()
{
    QFETCH(const MakeFault, make);

    WindowSession session;
    QCOMPARE(use(session, 1), QString());
    QCOMPARE(missing(session, 1), QString());
    const QByteArray before = readFile(fileName);
    {
        const std::unique_ptr<Fault> fault = make(fileName);
        QCOMPARE(use(session, 2), QString());
        QCOMPARE(use(session, 3), QString());
    }
    QCOMPARE(readFile(fileName), before);
    QCOMPARE(entriesOf(folderOf(fileName)), QStringList{u"Velmora.conf"_s});

    QCOMPARE(use(session, 4), QString());
    QCOMPARE(missing(session, 4), QString());
}

void TestStoreFaults::startsWithoutWriting()
{
    QFETCH(const MakeFault, make);

    {
        WindowSession earlier;
        QCOMPARE(use(earlier, 1), QString());
    }
    const QByteArray before = readFile(fileName);
    std::optional<WindowSession> session;
    {
        const std::unique_ptr<Fault> fault = make(fileName);
        session.emplace();
        QCOMPARE(use(*session, 2), QString());
    }
    QCOMPARE(readFile(fileName), before);
    QCOMPARE(entriesOf(folderOf(fileName)), QStringList{u"Velmora.conf"_s});

    QCOMPARE(use(*session, 3), QString());
    QCOMPARE(missing(*session, 3), QString());
}

void TestStoreFaults::completesATruncatedFile_data()
{
    QTest::addColumn<int>("maxBytes");

    QTest::newRow("in the preferences") << 200;
    QTest::newRow("in the servers") << 2000;
    QTest::newRow("near its end") << 4000;
}

// QSaveFile of Qt 6.4 ignores a failed write of its last buffer and replaces the old file with a
// truncated one. Qt still has all values in memory, as long as one QSettings object exists; main()
// keeps one for the whole run.
void TestStoreFaults::completesATruncatedFile()
{
    QFETCH(const int, maxBytes);

    const QSettings settingsOfMain;
    // The last value of the file, which the session does not write.
    const QString other = u"servers/zz.test_1/password"_s;
    QSettings().setValue(other, u"secret"_s);
    WindowSession session;
    QCOMPARE(use(session, 1), QString());
    // The next connect dialog adds the server to the list, so a second round adds a key.
    QCOMPARE(use(session, 2), QString());
    const QStringList keys = valuesInFile(fileName).keys();
    QVERIFY(QFileInfo(fileName).size() > maxBytes);
    {
        const FullDisk fault(static_cast<rlim_t>(maxBytes));
        QCOMPARE(use(session, 3), QString());
    }
    QCOMPARE(entriesOf(folderOf(fileName)), QStringList{u"Velmora.conf"_s});
    QCOMPARE(use(session, 4), QString());
    QCOMPARE(missing(session, 4), QString());
    QCOMPARE(valuesInFile(fileName).keys(), keys);
    QCOMPARE(valuesInFile(fileName).value(other).toString(), u"secret"_s);
}

void TestStoreFaults::runsWithAChangedFile()
{
    QFETCH(const Change, change);

    WindowSession session;
    QCOMPARE(use(session, 1), QString());
    change(fileName);
    QCOMPARE(use(session, 2), QString());
    QCOMPARE(missing(session, 2), QString());
    QCOMPARE(use(session, 3), QString());
    QCOMPARE(missing(session, 3), QString());
}

void TestStoreFaults::startsWithAChangedFile()
{
    QFETCH(const Change, change);

    {
        WindowSession earlier;
        QCOMPARE(use(earlier, 1), QString());
    }
    change(fileName);
    WindowSession session;
    QCOMPARE(use(session, 2), QString());
    QCOMPARE(missing(session, 2), QString());
}

void TestStoreFaults::keepsReadableValues_data()
{
    QTest::addColumn<QByteArray>("content");

    const QByteArray mine = "[General]\nmine=kept\n\n[servers]\nhome_1\\nickname=hand\n"_ba;
    QTest::newRow("hand-written") << mine;
    QTest::newRow("followed by garbage") << QByteArray(mine + '\n' + garbage());
    QTest::newRow("followed by a truncated value") << QByteArray(mine + "home_1\\password=\"se");
}

void TestStoreFaults::keepsReadableValues()
{
    QFETCH(const QByteArray, content);

    WindowSession session;
    QCOMPARE(use(session, 1), QString());
    write(fileName, content);
    QCOMPARE(use(session, 2), QString());
    const QVariantMap values = valuesInFile(fileName);
    QCOMPARE(values.value(u"mine"_s).toString(), u"kept"_s);
    QCOMPARE(values.value(u"servers/home_1/nickname"_s).toString(), u"hand"_s);
    QCOMPARE(missing(session, 2), QString());
}

QTEST_MAIN(TestStoreFaults)
#include "tst_StoreFaults.moc"
