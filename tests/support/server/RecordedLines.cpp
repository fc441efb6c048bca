#include "RecordedLines.h"

#include <QFile>
#include <QTest>

using namespace Qt::StringLiterals;

QStringList recordedLines(const QString &fileName)
{
    QFile file(QFINDTESTDATA(QString(u"data/"_s + fileName)));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return QString::fromUtf8(file.readAll()).split(u'\n', Qt::SkipEmptyParts);
}
