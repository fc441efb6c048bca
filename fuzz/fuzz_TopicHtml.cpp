// Checks the HTML of a topic: it has only the converter's tags, shows the topic without formatting
// codes and loads no resource.
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
        Fuzzing::require(false, "a topic loads no resource");
        return {};
    }
};

// A URL ends at a space, and so inside the tag of a colour that directly follows the URL. The rest
// of that tag is then text, ">" included.
void checkTags(const QString &html)
{
    static const QRegularExpression known(
            uR"(</?[biu]>|</(?:a|span)>|<a href="[^"]*">)"
            uR"(|<span style="color:#[0-9a-f]{6};(?:background-color:#[0-9a-f]{6};)?">)"_s);
    Fuzzing::require(!QString(html).remove(known).contains(u'<'),
                     "only the converter's tags occur");
}

void checkFormats(const QTextDocument &document)
{
    Fuzzing::require(document.rootFrame()->childFrames().isEmpty(), "a topic has no frames");
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        Fuzzing::require(block.textList() == nullptr, "a topic has no lists");
        for (auto run = block.begin(); !run.atEnd(); ++run) {
            const QTextCharFormat format = run.fragment().charFormat();
            Fuzzing::require(format.objectType() == QTextFormat::NoObject,
                             "a topic has no objects");
            Fuzzing::require(format.background().style() != Qt::TexturePattern,
                             "a topic has no images");
        }
    }
}

// Returns `text` without white space and control characters, which HTML treats in its own way.
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
    // Excludes cases in which the shown text differs: a mail address may repeat the rest, and a URL
    // includes tags, escaped characters and text after a code without a tag.
    const bool hasLink = text.contains(u"://"_s);
    if (topic.contains(u'@') || (hasLink && (topic.contains(codes) || topic.contains(escaped))))
        return;
    Fuzzing::require(visible(document.toPlainText()) == visible(text),
                     "the topic is shown without its codes");
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
