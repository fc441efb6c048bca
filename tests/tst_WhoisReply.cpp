#include "WhoisReply.h"

#include <QTest>

using namespace Qt::StringLiterals;

class TestWhoisReply final : public QObject
{
    Q_OBJECT

private slots:
    void showsWhatWasTold_data();
    void showsWhatWasTold();
    void showsAllOfItInOrder();
};

void TestWhoisReply::showsWhatWasTold_data()
{
    QTest::addColumn<WhoisReply>("reply");
    QTest::addColumn<QStringList>("more");

    const auto add = [](const char *name, const QStringList &more, const auto &tell) {
        WhoisReply reply;
        tell(reply);
        QTest::newRow(name) << reply << more;
    };
    add("nothing", {}, [](WhoisReply &) {});
    add("operator", {u"*** bob is an IRC operator"_s, u"*** bob is using  ()"_s},
        [](WhoisReply &reply) { reply.isOperator = true; });
    add("idle for no time", {u"*** bob is using  ()"_s, u"*** bob idle 0s, signed on x"_s},
        [](WhoisReply &reply) {
            reply.idleSeconds = 0;
            reply.signonTime = u"x"_s;
        });
    add("time without idle time", {}, [](WhoisReply &reply) { reply.signonTime = u"x"_s; });
    add("channels", {u"*** bob is using  ()"_s, u"*** bob on channels: @#a #b"_s},
        [](WhoisReply &reply) { reply.channels = u"@#a #b"_s; });
    add("away", {u"*** bob is using  ()"_s, u"*** bob is away: out"_s},
        [](WhoisReply &reply) { reply.awayMessage = u"out"_s; });
}

void TestWhoisReply::showsWhatWasTold()
{
    QFETCH(const WhoisReply, reply);
    QFETCH(QStringList, more);
    if (more.isEmpty())
        more = {u"*** bob is using  ()"_s};
    QCOMPARE(reply.lines(u"bob"_s), QStringList{u"*** WHOIS bob: @ ()"_s} + more);
}

// Marks of the kind that Qt fills in stay what they are.
void TestWhoisReply::showsAllOfItInOrder()
{
    const WhoisReply reply{u"%2"_s, u"host"_s, u"Bob %1"_s, u"irc.test"_s, u"a %3"_s, u"#a %1"_s,
                           u"%2"_s, true,      12,          u"then %1"_s};
    QCOMPARE(reply.lines(u"bob"_s),
             (QStringList{u"*** WHOIS bob: %2@host (Bob %1)"_s, u"*** bob is an IRC operator"_s,
                          u"*** bob is using irc.test (a %3)"_s,
                          u"*** bob idle 12s, signed on then %1"_s, u"*** bob on channels: #a %1"_s,
                          u"*** bob is away: %2"_s}));
}

QTEST_GUILESS_MAIN(TestWhoisReply)
#include "tst_WhoisReply.moc"
