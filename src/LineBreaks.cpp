#include "LineBreaks.h"

#include <QRegularExpression>

using namespace Qt::StringLiterals;

QString LineBreaks::toSpaces(QString text)
{
    static const QRegularExpression lineBreak(u"\r\n|[\n\v\f\r\u0085\u2028\u2029\uFDD0\uFDD1]"_s);
    return text.replace(lineBreak, u" "_s);
}
