#include "ChatLayout.h"
#include "ChatTable.h"
#include "ChatView.h"

#include <QPainter>
#include <QScrollBar>
#include <QTest>
#include <QTextBrowser>
#include <QTextTable>

using namespace Qt::StringLiterals;

namespace {

QList<ChatRow> corpus()
{
    const QStringList texts{
            u" hi"_s,
            u" a line that is just long enough to need a second one in most windows, or so I hope"_s,
            u" "_s + u"lorem ipsum dolor sit amet consectetur "_s.repeated(9),
            u" see https://example.org/a/path?with=arguments and mail me@example.org."_s,
            {},
            u" \u4f60\u597d\uff0c\u4e16\u754c\u3002\u3053\u3093\u306b\u3061\u306f\u4e16\u754c"_s.repeated(4),
            u" \U0001F600 \U0001F468\u200D\U0001F469\u200D\U0001F467 \U0001F1E9\U0001F1EA \u2764\uFE0F ok"_s,
            u" \u05e9\u05dc\u05d5\u05dd \u05e2\u05d5\u05dc\u05dd and \u0645\u0631\u062d\u0628\u0627"_s,
            u"\u05e9\u05dc\u05d5\u05dd \u05e2\u05d5\u05dc\u05dd "_s.repeated(12),
            u" "_s + u"x"_s.repeated(300),
            u" https://example.org/"_s + u"long/"_s.repeated(60),
            u" tabs\there\tand\t\tthere"_s,
            u" no\u00a0break\u00a0blanks "_s + u"no\u00a0break\u00a0"_s.repeated(12),
            u" one\u2028two\u2028"_s,
            u" trailing blanks"_s + u" "_s.repeated(200),
            u" soft\u00adhyphen "_s + u"co\u00adop\u00ader\u00ada\u00adtion "_s.repeated(15),
            u" \x02bold\x02 \x03" u"4,5red\x03 \x1f\x01"_s,
            u" e\u0301\u0302\u0303\u0304 combining \u0e01\u0e33 \ufdfd"_s,
            u" AVAVAV To Wa fi ffl"_s.repeated(12),
    };
    const QStringList nicks{u"alice"_s, u"bob"_s, {}, u"abcdefghijklmnop"_s, u"WWWWWWWWWWWWWWWW"_s,
                            u"a_nick_longer_than_it_may_be"_s, u"\u4f60\u597d"_s};
    QList<ChatRow> rows;
    for (int i = 0; i < 220; ++i) {
        rows << ChatRow{.time = i % 11 == 5 ? u"[12:34:56 PM and more]"_s : u"[12:34:56]"_s,
                        .nick = nicks.at(i % nicks.size()),
                        .text = texts.at(i % texts.size()),
                        .dimmed = i % 5 == 0,
                        .ownAway = i % 13 == 0};
    }
    return rows;
}

QImage picture(QWidget &widget, qreal ratio = 1)
{
    QImage image(widget.size() * ratio, QImage::Format_RGB32);
    image.setDevicePixelRatio(ratio);
    image.fill(Qt::red);
    widget.render(&image);
    return image;
}

void save(const QImage &one, const QImage &other)
{
    const QString folder = qEnvironmentVariable("SAVE_DIFFERENCES");
    if (folder.isEmpty() || one == other) return;
    one.save(folder + u"/stock.png"_s);
    other.save(folder + u"/ours.png"_s);
}
} // namespace

class TestChatLayout final : public QObject
{
    Q_OBJECT
private slots:
    void same_data();
    void same();
};

void TestChatLayout::same_data()
{
    QTest::addColumn<int>("width");
    for (int w : {150, 320, 500, 641, 1000}) QTest::addRow("%d", w) << w;
}
void TestChatLayout::same()
{
    QFETCH(int, width);
    QTextBrowser stock;
    ChatView ours;
    for (QTextBrowser *v : {&stock, static_cast<QTextBrowser*>(&ours)}) {
        v->resize(width, 400);
        auto *table = ChatTable::create(*v, 3);
        ChatTable::appendRows(*table, corpus());
        v->show();
    }
    QTRY_VERIFY(!static_cast<ChatLayout*>(ours.document()->documentLayout())->hasEstimates());
    QCOMPARE(ours.document()->size(), stock.document()->size());
    QCOMPARE(ours.verticalScrollBar()->maximum(), stock.verticalScrollBar()->maximum());
    QCOMPARE(ours.horizontalScrollBar()->maximum(), stock.horizontalScrollBar()->maximum());
    qInfo() << ours.horizontalScrollBar()->value() << stock.horizontalScrollBar()->value()<<ours.verticalScrollBar()->value() << stock.verticalScrollBar()->value();
    ours.horizontalScrollBar()->setValue(50); stock.horizontalScrollBar()->setValue(50);
    for (int v = 0;; v += 350) {
        ours.verticalScrollBar()->setValue(v);
        stock.verticalScrollBar()->setValue(v);
        for (qreal ratio : {1.0, 1.5, 2.0}) {
            auto a = picture(*stock.viewport(), ratio), b = picture(*ours.viewport(), ratio);
            save(a,b);
            QVERIFY2(a == b, qPrintable(QString::number(v) + u" "_s + QString::number(ratio)));
        }
        if (v >= stock.verticalScrollBar()->maximum()) break;
    }
}

QTEST_MAIN(TestChatLayout)
#include "tst_ChatLayout.moc"
