#include "ChatCorpus.h"

using namespace Qt::StringLiterals;

namespace {

QStringList texts()
{
    return {
            u" hi"_s,
            u" a line that is just long enough to need a second one in most windows, or so I hope"_s,
            u" "_s + u"lorem ipsum dolor sit amet consectetur "_s.repeated(9),
            u" see https://example.org/a/path?with=arguments and mail me@example.org."_s,
            {},
            u" "_s + u"\u4f60\u597d\uff0c\u4e16\u754c\u3002\u3053\u3093\u306b\u3061"_s.repeated(5),
            u" \U0001F600 \U0001F468\u200D\U0001F469\u200D\U0001F467 \U0001F1E9\U0001F1EA \u2764\uFE0F"_s,
            u" \u05e9\u05dc\u05d5\u05dd \u05e2\u05d5\u05dc\u05dd and \u0645\u0631\u062d\u0628\u0627"_s,
            u"\u05e9\u05dc\u05d5\u05dd \u05e2\u05d5\u05dc\u05dd "_s.repeated(12),
            u" "_s + u"x"_s.repeated(300),
            u" https://example.org/"_s + u"long/"_s.repeated(60),
            u" tabs\there\tand\t\tthere"_s,
            u" no\u00a0break\u00a0blanks "_s + u"no\u00a0break\u00a0"_s.repeated(12),
            u" one\u2028two\rthree\u2028"_s,
            u" trailing blanks"_s + u" "_s.repeated(200),
            u" soft\u00adhyphen "_s + u"co\u00adop\u00ader\u00ada\u00adtion "_s.repeated(15),
            u" \x02bold\x02 \x03"
            "4,5red\x03 \x1f\x01"_s,
            u" e\u0301\u0302\u0303\u0304 combining \u0e01\u0e33 \ufdfd"_s,
            u" AVAVAV To Wa fi ffl"_s.repeated(12),
    };
}

} // namespace

QList<ChatRow> ChatCorpus::rows()
{
    const QStringList nicks{u"alice"_s,
                            u"bob"_s,
                            {},
                            u"abcdefghijklmnop"_s,
                            u"WWWWWWWWWWWWWWWW"_s,
                            u"a_nick_longer_than_it_may_be"_s,
                            u"\u4f60\u597d"_s};
    QList<ChatRow> result;
    for (int i = 0; i < 220; ++i) {
        result << ChatRow{.time = i % 11 == 5 ? u"[12:34:56 PM and more]"_s : u"[12:34:56]"_s,
                          .nick = nicks.at(i % nicks.size()),
                          .text = texts().at(i % texts().size()),
                          .dimmed = i % 5 == 0,
                          .ownAway = i % 13 == 0};
    }
    return result;
}

QList<ChatRow> ChatCorpus::rowsWithoutNicks()
{
    QList<ChatRow> result = rows();
    for (ChatRow &row : result)
        row.hasNickCell = false;
    return result;
}

QList<ChatRow> ChatCorpus::plainRows(int count, int first)
{
    QList<ChatRow> result;
    for (int i = first; i < first + count; ++i) {
        result << ChatRow{.time = u"[12:34:56]"_s,
                          .nick = u"user%1"_s.arg(i % 5),
                          .text = u" line %1 "_s.arg(i) + u"goes on and on "_s.repeated(i % 17)};
    }
    return result;
}
