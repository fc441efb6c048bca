#include "LinkOpener.h"

#include <QDesktopServices>
#include <QStringList>

using namespace Qt::StringLiterals;

namespace {

QStringList schemes()
{
    return {u"http"_s, u"https"_s, u"mailto"_s};
}

} // namespace

LinkOpener::LinkOpener(QObject *parent)
    : QObject(parent)
{
    for (const QString &scheme : schemes())
        QDesktopServices::setUrlHandler(scheme, this, "open");
}

LinkOpener::~LinkOpener()
{
    for (const QString &scheme : schemes())
        QDesktopServices::unsetUrlHandler(scheme);
}

void LinkOpener::open(const QUrl &url)
{
    // Not recursive: within a handler, QDesktopServices asks the platform.
    if (!QDesktopServices::openUrl(url))
        emit failed(url);
}
