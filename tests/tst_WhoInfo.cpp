#include "WhoInfo.h"

#include <QTest>

using namespace Qt::StringLiterals;

class TestWhoInfo final : public QObject
{
    Q_OBJECT

private slots:
    void showsReceivedFields_data();
    void showsReceivedFields();
    void showsAllFieldsInOrder();
};

void TestWhoInfo::showsReceivedFields_data()
{
    QTest::addColumn<WhoInfo>("reply");
    QTest::addColumn<QStringList>("more");

    const auto add = [](const char *name, const QStringList &more, const auto &set) {
        WhoInfo reply;
        set(reply);
        QTest::newRow(name) << reply << more;
    };
    add("nothing", {}, [](WhoInfo &) {});
    add("operator", {u"*** bob is an IRC operator"_s, u"*** bob is using  ()"_s},
        [](WhoInfo &reply) { reply.isOperator = true; });
    add("idle for no time", {u"*** bob is using  ()"_s, u"*** bob idle 0s, signed on x"_s},
        [](WhoInfo &reply) {
            reply.idleSeconds = 0;
            reply.signonTime = u"x"_s;
        });
    add("time without idle time", {}, [](WhoInfo &reply) { reply.signonTime = u"x"_s; });
    add("channels", {u"*** bob is using  ()"_s, u"*** bob on channels: @#a #b"_s},
        [](WhoInfo &reply) { reply.channels = u"@#a #b"_s; });
    add("away", {u"*** bob is using  ()"_s, u"*** bob is away: out"_s},
        [](WhoInfo &reply) { reply.awayMessage = u"out"_s; });
}

void TestWhoInfo::showsReceivedFields()
{
    QFETCH(const WhoInfo, reply);
    QFETCH(QStringList, more);
    if (more.isEmpty())
        more = {u"*** bob is using  ()"_s};
    QCOMPARE(reply.lines(u"bob"_s), QStringList{u"*** WHOIS bob: @ ()"_s} + more);
}

// Placeholders in the texts are not replaced.
void TestWhoInfo::showsAllFieldsInOrder()
{
    const WhoInfo reply{u"%2"_s, u"host"_s, u"Bob %1"_s, u"irc.test"_s, u"a %3"_s, u"#a %1"_s,
                        u"%2"_s, true,      12,          u"then %1"_s};
    QCOMPARE(reply.lines(u"bob"_s),
             (QStringList{u"*** WHOIS bob: %2@host (Bob %1)"_s, u"*** bob is an IRC operator"_s,
                          u"*** bob is using irc.test (a %3)"_s,
                          u"*** bob idle 12s, signed on then %1"_s, u"*** bob on channels: #a %1"_s,
                          u"*** bob is away: %2"_s}));
}

QTEST_GUILESS_MAIN(TestWhoInfo)
#include "tst_WhoInfo.moc"
