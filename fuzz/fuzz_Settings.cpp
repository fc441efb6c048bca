// Checks that the dialogs and the window accept any settings file.
//
// The input is the file.

#include "ConnectDialog.h"
#include "Fuzzing.h"
#include "MainWindow.h"
#include "PreferencesDialog.h"
#include "ServerEditDialog.h"
#include "ServerRows.h"
#include "ServerStore.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QListWidget>
#include <QSettings>

using namespace Qt::StringLiterals;

namespace {

/// The application's settings store for one input. Qt caches stores by name, so each has its own.
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
        Fuzzing::require(file.open(QIODevice::WriteOnly), "the store can be written");
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

void checkRecord(const QString &id)
{
    const ServerConfig config = ServerStore::loadConfig(id);
    ServerStore::saveConfig(id, config, ServerStore::AddressFallback::KeepStored);
    Fuzzing::require(isSame(ServerStore::loadConfig(id), config), "a stored record is read back");
}

void visitEditDialog(const QString &address)
{
    const std::optional<QString> id = ServerStore::idOfAddress(address);
    const ServerConfig config = id ? ServerStore::loadConfig(*id) : ServerConfig();
    const ServerEditDialog dialog(u"Edit"_s, address, config, u"light"_s, nullptr);
    Fuzzing::require(dialog.fullAddress().contains(u':'), "the dialog returns an address");
    static_cast<void>(dialog.getConfig());
}

// Changes the record of one row only, since each change writes the whole store.
void visitConnectDialog(int changedRow)
{
    ConnectDialog dialog(nullptr);
    auto *list = dialog.findChild<QListWidget *>();
    for (int row = 0; row < list->count(); ++row) {
        list->setCurrentRow(row);
        const QString address = ServerRows::cleanAddress(list->item(row)->text());
        if (row != changedRow % list->count())
            continue;
        if (const std::optional<QString> id = ServerStore::idOfAddress(address))
            checkRecord(*id);
        visitEditDialog(address);
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
    // Keeps Qt's cache of the store for the many QSettings objects below.
    const QSettings settings;
    visitConnectDialog(static_cast<int>(size));
    MainWindow window;
    const PreferencesDialog preferences(&window);
    return 0;
}
