// What a topic becomes in its label: HTML with the converter's own tags and no others, which shows
// the topic without its codes and fetches nothing.
//
// The input is the topic.

#include "Fuzzing.h"
#include "IrcText.h"

#include <QLabel>
#include <QRegularExpression>
#include <QTextBlock>
#include <QTextDocument>
#include <QTextFrame>
#include <QTextObject>

using namespace Qt::StringLiterals;

namespace {

class Document final : public QTextDocument
{
protected:
    QVariant loadResource(int /*type*/, const QUrl & /*name*/) override
    {
        Fuzzing::demand(false, "a topic fetches nothing");
        return {};
    }
};

// A blank ends a URL, and so tears a colour's tag apart that stands right behind one: its end is
// text then, sign and all.
void checkTags(const QString &html)
{
    static const QRegularExpression known(
            uR"(</?[biu]>|</(?:a|span)>|<a href="[^"]*">)"
            uR"(|<span style="color:#[0-9a-f]{6};(?:background-color:#[0-9a-f]{6};)?">)"_s);
    Fuzzing::demand(!QString(html).remove(known).contains(u'<'), "all tags are the converter's");
}

void checkFormats(const QTextDocument &document)
{
    Fuzzing::demand(document.rootFrame()->childFrames().isEmpty(), "a topic has no frames");
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        Fuzzing::demand(block.textList() == nullptr, "a topic has no lists");
        for (auto run = block.begin(); !run.atEnd(); ++run) {
            const QTextCharFormat format = run.fragment().charFormat();
            Fuzzing::demand(format.objectType() == QTextFormat::NoObject, "a topic has no objects");
            Fuzzing::demand(format.background().style() != Qt::TexturePattern,
                            "a topic has no pictures");
        }
    }
}

// Apart from blanks and controls, which HTML has its own ways with.
QString visible(const QString &text)
{
    QString kept;
    for (const QChar unit : text) {
        const bool isFrameMark = unit.unicode() == 0xfdd0 || unit.unicode() == 0xfdd1;
        if (!unit.isSpace() && unit.category() != QChar::Other_Control && !isFrameMark)
            kept += unit;
    }
    return kept;
}

void checkText(const QString &topic, const QTextDocument &document)
{
    static const QRegularExpression codes(uR"(\x{03}(?:\d+(?:,\d*)?)?|[\x{02}\x{1D}\x{1F}])"_s,
                                          QRegularExpression::UseUnicodePropertiesOption);
    static const QRegularExpression escaped(uR"([<>&"])"_s);
    const QString text = QString(topic).remove(codes);
    // An address may repeat the rest, and a URL shows tags and escaped signs that belong to it. A
    // code that leaves no tag behind may have stood amidst the URL.
    const bool hasLink = text.contains(u"://"_s);
    if (topic.contains(u'@') || (hasLink && (topic.contains(codes) || topic.contains(escaped))))
        return;
    Fuzzing::demand(visible(document.toPlainText()) == visible(text),
                    "the topic is shown, less its codes");
}

} // namespace

int LLVMFuzzerInitialize(int * /*argc*/, char *** /*argv*/)
{
    Fuzzing::start();
    return 0;
}

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QString topic = QString::fromUtf8(Fuzzing::bytesOf(data, size));
    const QString html = IrcText::toHtml(topic);
    checkTags(html);

    Document document;
    document.setHtml(html);
    checkFormats(document);
    checkText(topic, document);

    QLabel label;
    label.setTextFormat(Qt::RichText);
    label.setWordWrap(true);
    label.setText(html);
    label.resize(400, label.heightForWidth(400));
    if (size % 16 == 0)
        label.grab();
    return 0;
}
