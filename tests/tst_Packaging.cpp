#include "Files.h"
#include "RequiredTools.h"
#include "Waiting.h"

#include <QDirIterator>
#include <QImageReader>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>
#include <QXmlStreamReader>
#include <QtEndian>

using namespace Qt::StringLiterals;

namespace {

const QString Id = QStringLiteral(VELMORA_ID);
const QString Version = QStringLiteral(VELMORA_VERSION);
const QString Source = QStringLiteral(VELMORA_SOURCE);

// Runs a command and returns its output, after "failed: " if it fails.
QString outputOf(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(program, arguments);
    if (!process.waitForFinished(WaitTimeout))
        return u"failed: "_s + process.errorString();
    const QString output = QString::fromLocal8Bit(process.readAll());
    return process.exitCode() == 0 ? output : QString(u"failed: "_s + output);
}

QStringList filesBelow(const QString &folder)
{
    QStringList files;
    QDirIterator iterator(folder, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (iterator.hasNext())
        files += QDir(folder).relativeFilePath(iterator.next());
    files.sort();
    return files;
}

// The texts of all elements named `name`.
QStringList elements(const QByteArray &xml, const QString &name)
{
    QStringList texts;
    QXmlStreamReader reader(xml);
    while (!reader.atEnd()) {
        if (reader.readNext() == QXmlStreamReader::StartElement && reader.name() == name)
            texts += reader.readElementText(QXmlStreamReader::IncludeChildElements);
    }
    return reader.hasError() ? QStringList(reader.errorString()) : texts;
}

// The value of `key` in a desktop entry.
QString value(const QByteArray &entry, const QString &key)
{
    const QRegularExpression line(u"^%1=(.*)$"_s.arg(key), QRegularExpression::MultilineOption);
    return line.match(QString::fromUtf8(entry)).captured(1);
}

quint32 bigEndian(const QByteArray &bytes, qsizetype at)
{
    return qFromBigEndian<quint32>(bytes.constData() + at);
}

} // namespace

class TestPackaging final : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void installsListedFilesOnly();
    void usesOneId();
    void desktopEntryStartsInstalledProgram();
    void iconsHaveTheirSizes_data();
    void iconsHaveTheirSizes();
    void containsIconForWindows();
    void containsIconForMacOS();
    void bundleDescriptionIsReadable();
    void statesOneVersion_data();
    void statesOneVersion();
    void statesOneRelease();
    void desktopEntryIsValid();
    void metainfoIsValid();

private:
    QString installed(const QString &path) const { return root.filePath(u"usr/"_s + path); }
    QString entryPath() const { return installed(u"share/applications/%1.desktop"_s.arg(Id)); }
    QString metainfoPath() const { return installed(u"share/metainfo/%1.metainfo.xml"_s.arg(Id)); }

    QTemporaryDir root;
};

void TestPackaging::initTestCase()
{
    QVERIFY(root.isValid());
    qputenv("DESTDIR", root.path().toLocal8Bit());
    const QString output =
            outputOf(QStringLiteral(VELMORA_CMAKE),
                     {u"--install"_s, QStringLiteral(VELMORA_BUILD), u"--prefix"_s, u"/usr"_s});
    qunsetenv("DESTDIR");
    QVERIFY2(!output.startsWith("failed"_L1), qPrintable(output));
}

void TestPackaging::installsListedFilesOnly()
{
    QStringList expected{
            u"usr/bin/velmora"_s,
            u"usr/share/applications/%1.desktop"_s.arg(Id),
            u"usr/share/doc/velmora/CHANGELOG.md"_s,
            u"usr/share/doc/velmora/LICENSE"_s,
            u"usr/share/doc/velmora/guide.md"_s,
            u"usr/share/icons/hicolor/scalable/apps/%1.svg"_s.arg(Id),
            u"usr/share/man/man1/velmora.1"_s,
            u"usr/share/metainfo/%1.metainfo.xml"_s.arg(Id),
    };
    for (const int size : {16, 22, 24, 32, 48, 64, 128, 256, 512})
        expected += u"usr/share/icons/hicolor/%1x%1/apps/%2.png"_s.arg(size).arg(Id);
    // The screenshots of the guide.
    static const QRegularExpression screenshot(u"\\]\\((images/[^)]+)\\)"_s);
    const QString guide =
            QString::fromUtf8(readFile(QStringLiteral(VELMORA_SOURCE) + u"/docs/guide.md"_s));
    QVERIFY(screenshot.match(guide).hasMatch());
    for (const QRegularExpressionMatch &match : screenshot.globalMatch(guide))
        expected += u"usr/share/doc/velmora/"_s + match.captured(1);
    expected.sort();
    QCOMPARE(filesBelow(root.path()), expected);
    QVERIFY(QFileInfo(installed(u"bin/velmora"_s)).isExecutable());
}

void TestPackaging::usesOneId()
{
    QCOMPARE(value(readFile(entryPath()), u"Icon"_s), Id);
    const QByteArray metainfo = readFile(metainfoPath());
    QCOMPARE(elements(metainfo, u"id"_s), QStringList(Id));
    QCOMPARE(elements(metainfo, u"icon"_s), QStringList(Id));
    QCOMPARE(elements(metainfo, u"launchable"_s), QStringList(Id + u".desktop"_s));
    // A UTF-16 string literal of the program.
    const QByteArray literal(reinterpret_cast<const char *>(Id.utf16()), Id.size() * 2);
    QVERIFY(readFile(installed(u"bin/velmora"_s)).contains(literal));
}

void TestPackaging::desktopEntryStartsInstalledProgram()
{
    const QByteArray entry = readFile(entryPath());
    QVERIFY(QFile::exists(installed(u"bin/"_s + value(entry, u"Exec"_s))));
    QCOMPARE(value(entry, u"Categories"_s), u"Network;Chat;IRCClient;Qt;"_s);
    // Under X11, Qt sets the window class to the name of the executable.
    QCOMPARE(value(entry, u"StartupWMClass"_s), value(entry, u"Exec"_s));
}

void TestPackaging::iconsHaveTheirSizes_data()
{
    QTest::addColumn<int>("size");
    for (const int size : {16, 22, 24, 32, 48, 64, 128, 256, 512})
        QTest::addRow("%d", size) << size;
}

void TestPackaging::iconsHaveTheirSizes()
{
    QFETCH(const int, size);
    const QImage icon(installed(u"share/icons/hicolor/%1x%1/apps/%2.png"_s.arg(size).arg(Id)));
    QCOMPARE(icon.size(), QSize(size, size));
    QVERIFY(icon.hasAlphaChannel());
    // The icon is a speech bubble; its corners are transparent.
    QCOMPARE(qAlpha(icon.pixel(0, 0)), 0);
    QCOMPARE(qAlpha(icon.pixel(size / 2, size / 4)), 255);
}

void TestPackaging::containsIconForWindows()
{
    QImageReader reader(Source + u"/packaging/icons/velmora.ico"_s);
    QList<int> sizes;
    for (int index = 0; index < reader.imageCount(); ++index) {
        QVERIFY(reader.jumpToImage(index));
        const QImage icon = reader.read();
        QCOMPARE(icon.width(), icon.height());
        sizes += icon.width();
    }
    QCOMPARE(sizes, QList<int>({16, 24, 32, 48, 64, 256}));
}

void TestPackaging::containsIconForMacOS()
{
    const QByteArray icns = readFile(Source + u"/packaging/icons/velmora.icns"_s);
    QVERIFY(icns.startsWith("icns"));
    QCOMPARE(bigEndian(icns, 4), quint32(icns.size()));

    // Each image is preceded by its type, four letters, and the length of the whole entry.
    QMap<QByteArray, int> sizes;
    for (qsizetype at = 8; at < icns.size();) {
        const qsizetype length = bigEndian(icns, at + 4);
        QVERIFY(length > 8);
        QVERIFY(at + length <= icns.size());
        sizes.insert(icns.mid(at, 4), QImage::fromData(icns.mid(at + 8, length - 8)).width());
        at += length;
    }
    const QMap<QByteArray, int> expected{{"icp4", 16},  {"icp5", 32},  {"ic07", 128}, {"ic08", 256},
                                         {"ic09", 512}, {"ic11", 32},  {"ic12", 64},  {"ic13", 256},
                                         {"ic14", 512}, {"ic10", 1024}};
    QCOMPARE(sizes, expected);
}

void TestPackaging::bundleDescriptionIsReadable()
{
    const QByteArray list = readFile(Source + u"/packaging/macos/Info.plist.in"_s);
    const QStringList keys = elements(list, u"key"_s);
    const QStringList needed{u"CFBundleExecutable"_s, u"CFBundleIconFile"_s,
                             u"CFBundleIdentifier"_s, u"CFBundleShortVersionString"_s,
                             u"NSHighResolutionCapable"_s};
    for (const QString &key : needed)
        QVERIFY2(keys.contains(key), qPrintable(key));
    QVERIFY(elements(list, u"string"_s).contains(u"${VELMORA_ID}"_s));
    QVERIFY(elements(list, u"string"_s).contains(u"${PROJECT_VERSION}"_s));
}

void TestPackaging::statesOneVersion_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("before");
    QTest::newRow("man page") << u"packaging/velmora.1"_s << u"\"Velmora "_s;
    QTest::newRow("Debian changelog") << u"packaging/debian/changelog"_s << u"velmora ("_s;
    QTest::newRow("changelog") << u"CHANGELOG.md"_s << u"\n## "_s;
    QTest::newRow("About window") << u"src/InfoDialogs.cpp"_s << u"tr(\"Version "_s;
}

// Changelogs list the latest version first.
void TestPackaging::statesOneVersion()
{
    QFETCH(const QString, file);
    QFETCH(const QString, before);
    const QString text = QString::fromUtf8(readFile(Source + u'/' + file));
    const QRegularExpression version(QRegularExpression::escape(before) + u"([0-9.]+)"_s);
    QCOMPARE(version.match(text).captured(1), Version);
}

// An unreleased version has no release in the metainfo; a release has one date everywhere.
void TestPackaging::statesOneRelease()
{
    const auto captured = [](const QString &file, const QString &pattern) {
        const QRegularExpression expression(pattern, QRegularExpression::MultilineOption);
        return expression.match(QString::fromUtf8(readFile(Source + u'/' + file))).captured(1);
    };
    const QString state = captured(u"CHANGELOG.md"_s, u"^## [0-9.]+ \\(([^)]+)\\)$"_s);
    const bool isReleased = state != u"unreleased"_s;
    QCOMPARE(QDate::fromString(state, Qt::ISODate).isValid(), isReleased);
    const QString release = captured(u"packaging/%1.metainfo.xml"_s.arg(Id),
                                     u"<release version=\"([0-9.]+\" date=\"[^\"]+)"_s);
    QCOMPARE(release, isReleased ? QString(Version + u"\" date=\""_s + state) : QString());
    QCOMPARE(captured(u"packaging/debian/changelog"_s, u"^velmora \\([^)]+\\) ([^;]+);"_s),
             isReleased ? u"unstable"_s : u"UNRELEASED"_s);
}

void TestPackaging::desktopEntryIsValid()
{
    REQUIRE_TOOLS(u"desktop-file-validate"_s);
    QCOMPARE(outputOf(u"desktop-file-validate"_s, {entryPath()}), QString());
}

void TestPackaging::metainfoIsValid()
{
    REQUIRE_TOOLS(u"appstreamcli"_s);
    const QString output =
            outputOf(u"appstreamcli"_s, {u"validate"_s, u"--no-net"_s, metainfoPath()});
    QVERIFY2(!output.startsWith("failed"_L1), qPrintable(output));
    // The validator does not know the top-level domain ".example".
    const QRegularExpression problem(u"^[EWI]: (?!.*cid-maybe-not-rdns)"_s,
                                     QRegularExpression::MultilineOption);
    QVERIFY2(!output.contains(problem), qPrintable(output));
}

QTEST_GUILESS_MAIN(TestPackaging)

#include "tst_Packaging.moc"
