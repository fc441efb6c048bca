#include "IrcText.h"

#include <QList>
#include <QRegularExpression>
#include <QTextCharFormat>
#include <QTextCursor>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr std::array<QColor, 16> Colors{
        QColor(0xFF, 0xFF, 0xFF), QColor(0x00, 0x00, 0x00), QColor(0x00, 0x00, 0x80),
        QColor(0x00, 0x80, 0x00), QColor(0xFF, 0x00, 0x00), QColor(0x80, 0x00, 0x00),
        QColor(0x80, 0x00, 0x80), QColor(0xFF, 0xA5, 0x00), QColor(0xFF, 0xFF, 0x00),
        QColor(0x00, 0xFF, 0x00), QColor(0x00, 0x80, 0x80), QColor(0x00, 0xFF, 0xFF),
        QColor(0x00, 0x00, 0xFF), QColor(0xFF, 0x00, 0xFF), QColor(0x80, 0x80, 0x80),
        QColor(0xC0, 0xC0, 0xC0)};

struct Link
{
    int start = 0;
    int end = 0;
    QString target;
    QString display;
};

// A kind of link: its pattern, and a marker that every match contains. Most lines contain no link,
// and a search for the marker is much cheaper than one for the pattern.
struct LinkKind
{
    QString marker;
    QRegularExpression pattern;

    [[nodiscard]] QList<Link> linksIn(const QString &text) const;
};

// Compiled at the first use, once for rows and once for topics.
struct LinkKinds
{
    const LinkKind url{u"://"_s, QRegularExpression(uR"(https?://\S+)"_s)};
    const LinkKind address{
            u"@"_s, QRegularExpression(uR"(\b[A-Za-z0-9._%+-]+@[A-Za-z0-9.-]+\.[A-Za-z]{2,}\b)"_s)};
};

QList<Link> LinkKind::linksIn(const QString &text) const
{
    QList<Link> links;
    if (!text.contains(marker))
        return links;
    for (const QRegularExpressionMatch &match : pattern.globalMatch(text)) {
        const QString matched = match.captured();
        links.append({static_cast<int>(match.capturedStart()),
                      static_cast<int>(match.capturedEnd()), matched, matched});
    }
    return links;
}

void sortByStart(QList<Link> &links)
{
    std::sort(links.begin(), links.end(),
              [](const Link &left, const Link &right) { return left.start < right.start; });
}

// Returns true if `link` overlaps one of `urls`, which are sorted and do not overlap each other.
bool overlapsAny(const Link &link, const QList<Link> &urls)
{
    const auto next = std::partition_point(
            urls.cbegin(), urls.cend(), [&link](const Link &url) { return url.end <= link.start; });
    return next != urls.cend() && next->start < link.end;
}

// Returns the links of a row in their order, without mail addresses that overlap a URL.
QList<Link> rowLinks(const QString &text)
{
    static const LinkKinds kinds;
    const QList<Link> urls = kinds.url.linksIn(text);
    QList<Link> links = urls;
    for (Link &address : kinds.address.linksIn(text)) {
        if (overlapsAny(address, urls))
            continue;
        address.target.prepend("mailto:"_L1);
        links.append(address);
    }
    sortByStart(links);
    return links;
}

// The pass over a topic that converts formatting codes to tags.
//
// Intended: there is no stack of open tags. A code writes its tag where it is, even if the tags
// then overlap; QLabel's HTML reader accepts that.
class CodePass final
{
public:
    explicit CodePass(const QString &input)
        : topic(input)
    {
        html.reserve(2 * topic.size());
    }

    // Must be called only once.
    QString run();

private:
    void convert(QChar character);
    void toggle(bool &open, QLatin1StringView openTag, QLatin1StringView closeTag);
    void parseColorCode();
    [[nodiscard]] bool atDigit() const;
    int parseNumber();
    void closeColor();
    void applyColors(int newForeground, int newBackground);

    const QString topic;
    QString html;
    qsizetype position = 0;
    bool bold = false;
    bool italic = false;
    bool underline = false;
    int foreground = -1;
    int background = -1;
};

QString CodePass::run()
{
    while (position < topic.size())
        convert(topic.at(position++));
    closeColor();
    if (underline)
        html += "</u>"_L1;
    if (italic)
        html += "</i>"_L1;
    if (bold)
        html += "</b>"_L1;
    return html;
}

void CodePass::convert(QChar character)
{
    switch (character.unicode()) {
    case 0x02:
        toggle(bold, "<b>"_L1, "</b>"_L1);
        break;
    case 0x1D:
        toggle(italic, "<i>"_L1, "</i>"_L1);
        break;
    case 0x1F:
        toggle(underline, "<u>"_L1, "</u>"_L1);
        break;
    case 0x03:
        parseColorCode();
        break;
    case u'<':
        html += "&lt;"_L1;
        break;
    case u'>':
        html += "&gt;"_L1;
        break;
    case u'&':
        html += "&amp;"_L1;
        break;
    case u'"':
        html += "&quot;"_L1;
        break;
    default:
        html += character;
    }
}

void CodePass::toggle(bool &open, QLatin1StringView openTag, QLatin1StringView closeTag)
{
    html += open ? closeTag : openTag;
    open = !open;
}

void CodePass::parseColorCode()
{
    int newForeground = -1;
    int newBackground = -1;
    if (atDigit()) {
        newForeground = parseNumber();
        // Intended: a comma after a number belongs to the code even without a second number.
        if (position < topic.size() && topic.at(position) == u',') {
            ++position;
            if (atDigit())
                newBackground = parseNumber();
        }
    }
    applyColors(newForeground, newBackground);
}

bool CodePass::atDigit() const
{
    return position < topic.size() && topic.at(position).isDigit();
}

int CodePass::parseNumber()
{
    // Numbers may have any length. Clamping at each digit avoids `int` overflow, and the result is
    // the same as for clamping the whole number.
    int number = 0;
    while (atDigit())
        number = qBound(0, number * 10 + topic.at(position++).digitValue(), 15);
    return number;
}

void CodePass::closeColor()
{
    if (foreground < 0)
        return;
    html += "</span>"_L1;
    foreground = -1;
    background = -1;
}

void CodePass::applyColors(int newForeground, int newBackground)
{
    closeColor();
    // A code without numbers only closes the colour. There is no second number without a first.
    if (newForeground < 0)
        return;

    foreground = newForeground == newBackground ? IrcText::legibleOn(IrcText::color(newBackground))
                                                : newForeground;
    background = newBackground;
    html += "<span style=\"color:"_L1 % IrcText::color(foreground).name() % u';';
    if (background >= 0)
        html += "background-color:"_L1 % IrcText::color(background).name() % u';';
    html += "\">"_L1;
}

// Returns true if `position` is between "<" and ">", judged by the text from `from` on.
bool insideTag(QStringView html, qsizetype from, qsizetype position)
{
    while (--position >= from) {
        if (html.at(position) == u'<')
            return true;
        if (html.at(position) == u'>')
            return false;
    }
    return false;
}

// Above this size of HTML, the rest of a topic is not repeated any more. Otherwise a hostile server
// could fill the memory with a long line. Lines of the usual length stay far below.
constexpr qsizetype LargestHtmlWithRepeats = 1'000'000;

// The pass over a topic's HTML that adds anchors.
QString withAnchors(const QString &html)
{
    static const LinkKinds kinds;
    QList<Link> links = kinds.url.linksIn(html) + kinds.address.linksIn(html);
    sortByStart(links);

    QString linked;
    qsizetype copied = 0;
    for (const Link &link : links) {
        // Intended: a link directly after a tag stays plain text.
        if (insideTag(html, copied, link.start)
            || (link.start > 0 && html.at(link.start - 1) == u'>'))
            continue;
        if (link.start < copied && linked.size() >= LargestHtmlWithRepeats)
            continue;
        // Intended: for an address inside the last URL the length is negative, and mid() returns
        // the rest of the text. Since `copied` then moves back, the rest is written twice.
        linked += QStringView(html).mid(copied, link.start - copied);
        // Intended: the text is escaped a second time, so "&" in a URL is shown as "&amp;".
        linked +=
                "<a href=\""_L1 % link.target % "\">"_L1 % link.display.toHtmlEscaped() % "</a>"_L1;
        copied = link.end;
    }
    return linked + QStringView(html).mid(copied);
}

} // namespace

namespace IrcText {

const std::array<QColor, 16> &colors()
{
    return Colors;
}

const QColor &color(int number)
{
    return Colors.at(static_cast<std::size_t>(number));
}

int legibleOn(const QColor &color)
{
    const auto luminance =
            static_cast<int>(color.red() * 0.299 + color.green() * 0.587 + color.blue() * 0.114);
    return luminance >= 128 ? 1 : 0;
}

void insertWithLinks(QTextCursor &cursor, const QString &text, const QTextCharFormat &base)
{
    const QList<Link> links = rowLinks(text);
    if (links.isEmpty()) {
        cursor.insertText(text, base);
        return;
    }
    QTextCharFormat linkFormat = base;
    linkFormat.setAnchor(true);
    linkFormat.setForeground(QColor(0x00, 0x7A, 0xFF));
    linkFormat.setUnderlineStyle(QTextCharFormat::SingleUnderline);

    // Qt scans all fragments when an edit block ends. One edit block per link would take seconds.
    cursor.beginEditBlock();
    int position = 0;
    for (const Link &link : links) {
        if (link.start > position)
            cursor.insertText(text.mid(position, link.start - position), base);
        QTextCharFormat format = linkFormat;
        format.setAnchorHref(link.target);
        cursor.insertText(link.display, format);
        position = link.end;
    }
    if (position < text.size())
        cursor.insertText(text.mid(position), base);
    cursor.endEditBlock();
}

QString toHtml(const QString &topic)
{
    return withAnchors(CodePass(topic).run());
}

} // namespace IrcText
