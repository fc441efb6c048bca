// Links that no program opens: the offscreen platform has none.

#include "ModalAnswers.h"
#include "TemporaryStore.h"
#include "WindowSession.h"

#include <QDialog>
#include <QLabel>
#include <QRegularExpression>
#include <QStatusBar>
#include <QTest>
#include <QTextBrowser>
#include <QTimer>

using namespace Qt::StringLiterals;

namespace {

constexpr int MessageMs = 5000;

QString message(const WindowSession &session)
{
    return session.window.statusBar()->currentMessage();
}

// Clicks points of `widget` until a link could not be opened.
void clickLink(const WindowSession &session, QWidget &widget)
{
    // Qt asks the platform exactly once.
    static const QRegularExpression warning(u"QPlatformServices::openUrl"_s);
    QTest::ignoreMessage(QtWarningMsg, warning);
    const QString before = message(session);
    for (int y = 0; y < widget.height() && message(session) == before; y += 4) {
        for (int x = 0; x < widget.width() && message(session) == before; x += 4)
            QTest::mouseClick(&widget, Qt::LeftButton, {}, QPoint(x, y));
    }
}

void clickInConversation(WindowSession &session, const QString &link)
{
    QVERIFY(session.receive(u":bob!u@h PRIVMSG #a :%1"_s.arg(link)));
    clickLink(session, *session.probe.tabs().value(u"#a"_s).chatView->viewport());
}

void clickInTopic(WindowSession &session, const QString &link)
{
    QVERIFY(session.receive(u":irc.test 332 me #a :%1"_s.arg(link)));
    clickLink(session, *session.probe.tabs().value(u"#a"_s).topicLabel);
}

void clickInAbout(WindowSession &session, const QString &)
{
    ModalAnswers answers;
    answers.queueForDialog([&session](QDialog *about) {
        const QList<QLabel *> labels = about->findChildren<QLabel *>();
        for (QLabel *label : labels) {
            if (label->openExternalLinks())
                clickLink(session, *label);
        }
        about->accept();
    });
    session.choose(u"About Velmora"_s);
    QCOMPARE(answers.problems(), QStringList());
}

} // namespace

using Click = void (*)(WindowSession &session, const QString &link);

class TestLinkOpener final : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void reportsLinksThatNoProgramOpens_data();
    void reportsLinksThatNoProgramOpens();

private:
    TemporaryStore store;
};

void TestLinkOpener::init()
{
    store.clear();
}

void TestLinkOpener::reportsLinksThatNoProgramOpens_data()
{
    QTest::addColumn<Click>("click");
    QTest::addColumn<QString>("link");
    QTest::addColumn<QString>("address");

    const auto page = u"https://example.org/x?a=%1&b"_s;
    const auto encodedPage = u"https://example.org/x?a=%251&b"_s;
    const auto oddPage = u"http://example.org/\u202Ex"_s;
    const QString longPage = u"http://example.org/"_s + QString(300, u'x');
    QTest::newRow("conversation") << Click(clickInConversation) << page << encodedPage;
    QTest::newRow("mail") << Click(clickInConversation) << u"me@example.org"_s
                          << u"mailto:me@example.org"_s;
    QTest::newRow("right to left")
            << Click(clickInConversation) << oddPage << u"http://example.org/%E2%80%AEx"_s;
    QTest::newRow("long") << Click(clickInConversation) << longPage
                          << longPage.first(252) + u"..."_s;
    QTest::newRow("topic") << Click(clickInTopic) << page << encodedPage;
    QTest::newRow("about") << Click(clickInAbout) << QString() << u"https://velmora.example/"_s;
}

void TestLinkOpener::reportsLinksThatNoProgramOpens()
{
    QFETCH(const Click, click);
    QFETCH(const QString, link);
    QFETCH(const QString, address);
    WindowSession session;
    QVERIFY(session.registerAs(u"me"_s));
    QVERIFY(session.join(u"#a"_s, u"me bob"_s));
    session.probe.showTab(u"#a"_s);
    click(session, link);
    QCOMPARE(message(session), u"No program opens "_s + address);
    QCOMPARE(session.window.statusBar()->findChild<QTimer *>()->interval(), MessageMs);
}

QTEST_MAIN(TestLinkOpener)
#include "tst_LinkOpener.moc"
