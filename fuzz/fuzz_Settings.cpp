// What the dialogs and the window make of a settings file that anything may have written.
//
// The input is the file.

#include "ConnectDialog.h"
#include "Fuzzing.h"
#include "MainWindow.h"
#include "ServerEditDialog.h"
#include "ServerStore.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QListWidget>
#include <QSettings>

using namespace Qt::StringLiterals;

namespace {

/// The application's store for one input. Qt keeps stores in memory by name, so each has its own.
class Store final
{
    Q_DISABLE_COPY_MOVE(Store)

public:
    explicit Store(const QByteArray &content)
    {
        static int count = 0;
        QCoreApplication::setApplicationName(u"Velmora-%1"_s.arg(++count));
        file.setFileName(QSettings().fileName());
        QDir().mkpath(QFileInfo(file).path());
        Fuzzing::demand(file.open(QIODevice::WriteOnly), "the store can be written");
        file.write(content);
        file.close();
    }

    ~Store() { file.remove(); }

private:
    QFile file;
};

bool isSame(const ServerConfig &left, const ServerConfig &right)
{
    return left.nickname == right.nickname && left.altNickname == right.altNickname
           && left.realName == right.realName && left.authMethod == right.authMethod
           && left.password == right.password && left.autojoin == right.autojoin
           && left.encoding == right.encoding && left.useSsl == right.useSsl;
}

void checkRecord(const QString &address)
{
    const std::optional<QString> id = ServerStore::idOfAddress(address);
    if (!id)
        return;
    const ServerConfig config = ServerStore::loadConfig(*id);
    ServerStore::saveConfig(*id, config, ServerStore::OddIdAddress::Keep);
    Fuzzing::demand(isSame(ServerStore::loadConfig(*id), config), "a stored record comes back");
    const ServerEditDialog form(u"Edit"_s, address, config, u"light"_s, nullptr);
    Fuzzing::demand(form.fullAddress().startsWith(address.section(u':', 0, 0).trimmed()),
                    "the form shows the address");
    static_cast<void>(form.getConfig());
}

void visitDialog()
{
    ConnectDialog dialog(nullptr);
    auto *list = dialog.findChild<QListWidget *>();
    for (int row = 0; row < list->count(); ++row) {
        list->setCurrentRow(row);
        checkRecord(ServerStore::cleanAddress(list->item(row)->text()));
    }
    static_cast<void>(dialog.favoriteChannels());
}

} // namespace

int LLVMFuzzerInitialize(int * /*argc*/, char *** /*argv*/)
{
    Fuzzing::start();
    return 0;
}

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const Store store(Fuzzing::bytesOf(data, size));
    visitDialog();
    const MainWindow window;
    return 0;
}
