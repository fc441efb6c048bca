#include "ConnectDialog.h"

#include "ChannelNames.h"
#include "ConnectDialogBoxes.h"
#include "ConnectDialogForm.h"
#include "ConnectDialogStyle.h"
#include "DialogParts.h"
#include "ServerCatalogue.h"
#include "ServerEditDialog.h"
#include "ServerRows.h"
#include "ServerStore.h"

#include <QCheckBox>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QPersistentModelIndex>
#include <QPointer>
#include <QPushButton>
#include <QSettings>

#include <optional>

using namespace Qt::StringLiterals;

ConnectDialog::ConnectDialog(QWidget *parent)
    : QDialog(parent)
{
    setWindowTitle(tr("Connect to IRC Server"));
    buildForm();
    setMinimumWidth(460);
    setMaximumWidth(560);
    setWindowFlags((windowFlags() & ~Qt::WindowMaximizeButtonHint)
                   | Qt::MSWindowsFixedSizeDialogHint);
    setAttribute(Qt::WA_TranslucentBackground, false);

    makeConnections(); // Before the rows come, so that the one that gets selected fills the fields.
    loadSettings();
    applyTheme();

    adjustSize();
    setFixedSize(size());
    setWindowFlags(windowFlags()
                   & ~(Qt::WindowMaximizeButtonHint | Qt::WindowFullscreenButtonHint));
}

ConnectDialog::~ConnectDialog()
{
    // The boxes, forms and menus of our slots.
    DialogParts::letGoOfWindows(*this);
}

QStringList ConnectDialog::defaultServers()
{
    return ServerCatalogue::addresses();
}

void ConnectDialog::setCurrentTheme(const QString &name)
{
    currentTheme = name;
    applyTheme();
}

QString ConnectDialog::server() const
{
    return serverEdit->text().trimmed();
}

int ConnectDialog::port() const
{
    return portEdit->text().toInt();
}

QString ConnectDialog::nickname() const
{
    return activeConfig.nickname.isEmpty() ? nicknameEdit->text().trimmed() : activeConfig.nickname;
}

QString ConnectDialog::realName() const
{
    return activeConfig.realName.isEmpty() ? realNameEdit->text().trimmed() : activeConfig.realName;
}

QStringList ConnectDialog::favoriteChannels() const
{
    return activeConfig.autojoin.isEmpty() ? ChannelNames::parseChannels(channelsEdit->text())
                                           : activeConfig.autojoin;
}

void ConnectDialog::onConnectClicked()
{
    if (server().isEmpty() || nickname().isEmpty()) {
        ConnectDialogBoxes::showError(this, tr("Server and nickname are required!"));
        return;
    }
    if (port() < 1 || port() > 65535) {
        ConnectDialogBoxes::showError(this, tr("Port must be between 1 and 65535"));
        return;
    }
    saveSettings();
    const QString id = serverId(server(), port());
    if (!selectedServerId.isEmpty() && selectedServerId == id)
        storeFieldsOfSelectedServer();
    // A server that was typed by hand and happens to be listed gets the stored record as well.
    activeConfig = serverConfigs.value(id);
    completeActiveConfig();
    accept();
}

void ConnectDialog::loadSettings()
{
    QSettings settings;
    loadFavorites();
    loadDeletedDefaults();
    const QSet<QString> ids = ServerStore::seedAndListServers(defaultServers(), deletedDefaults);
    serverConfigs.clear();
    for (const QString &id : ids)
        serverConfigs.insert(id, ServerStore::loadConfig(settings, id));
    showServers(ids, settings);
    reorderServerList();
    selectFirstServer(ServerStore::loadHistory());
}

void ConnectDialog::saveSettings() const
{
    ServerStore::addToHistory(server() + u':' + QString::number(port()));
}

void ConnectDialog::onServerListSelectionChanged()
{
    const QListWidgetItem *row = serverList->currentItem();
    if (row == nullptr)
        return;
    const QString address = cleanAddress(row->text());
    const std::optional<ServerStore::HostPort> parts = ServerStore::splitAddress(address);
    if (!parts) {
        serverEdit->setText(address);
        portEdit->setText(QString::number(ServerStore::DefaultPort));
        selectedServerId.clear();
        return;
    }
    serverEdit->setText(parts->host);
    portEdit->setText(QString::number(parts->port));
    // Only now: a change of these two fields unbinds them from the row.
    selectedServerId = serverId(parts->host, parts->port);

    const ServerConfig config = serverConfigs.value(selectedServerId);
    nicknameEdit->setText(config.nickname);
    realNameEdit->setText(config.realName);
    channelsEdit->setText(config.autojoin.join(u", "_s));
    sslCheck->setChecked(config.useSsl);
}

void ConnectDialog::addServer()
{
    const QPointer<ConnectDialog> self = this;
    const QString noAddress = u':' + QString::number(ServerStore::DefaultPort);
    ServerEditDialog form(tr("Add IRC Server"), noAddress, ServerConfig(), currentTheme, this);
    if (form.exec() != Accepted || self == nullptr)
        return;
    const ServerConfig config = form.getConfig();
    const QString address = form.fullAddress();
    const std::optional<QString> id = ServerStore::idOfAddress(address);
    if (!id) {
        ConnectDialogBoxes::warnOfFormat(this);
        return;
    }
    if (ServerRows::findAddress(serverList, address) != nullptr) {
        ConnectDialogBoxes::tellOfDuplicate(this);
        if (self != nullptr)
            serverList->setCurrentItem(ServerRows::findAddress(serverList, address));
        return;
    }
    if (isDefaultServer(*id) && deletedDefaults.remove(*id))
        saveDeletedDefaults();
    serverList->addItem(address);
    serverList->setCurrentRow(serverList->count() - 1);
    saveServerConfig(*id, config);
    serverConfigs.insert(*id, config);
    saveServerList();
    reorderServerList();
    onServerListSelectionChanged();
}

void ConnectDialog::editServer()
{
    if (serverList->currentItem() == nullptr) {
        ConnectDialogBoxes::tellOfNoSelection(this, tr("Edit"));
        return;
    }
    const QPointer<ConnectDialog> self = this;
    const QPersistentModelIndex place = serverList->currentIndex();
    const QString oldAddress = ServerRows::addressOf(serverList->currentItem());
    const std::optional<QString> oldId = ServerStore::idOfAddress(oldAddress);
    if (!oldId)
        return;
    ServerEditDialog form(tr("Edit %1").arg(oldAddress), oldAddress, serverConfigs.value(*oldId),
                          currentTheme, this);
    if (form.exec() != Accepted || self == nullptr || !place.isValid())
        return;
    const QString address = form.fullAddress();
    const std::optional<QString> id = ServerStore::idOfAddress(address);
    if (!id) {
        ConnectDialogBoxes::warnOfFormat(this);
        return;
    }
    if (address != oldAddress) {
        // Another address is another server: the old one's record and favourite mark go. An old
        // one that came with the program is not marked as deleted, and so comes back next time.
        removeServerConfig(*oldId);
        serverList->itemFromIndex(place)->setText(address);
    }
    saveServerConfig(*id, form.getConfig());
    serverConfigs.insert(*id, form.getConfig());
    saveServerList();
    updateServerDisplayName(*id);
    updateChannelsFromCurrentServer();
    onServerListSelectionChanged();
}

void ConnectDialog::deleteServer()
{
    if (serverList->currentItem() == nullptr) {
        ConnectDialogBoxes::tellOfNoSelection(this, tr("Delete"));
        return;
    }
    const QPointer<ConnectDialog> self = this;
    const QPersistentModelIndex place = serverList->currentIndex();
    const QString address = ServerRows::addressOf(serverList->currentItem());
    if (!ConnectDialogBoxes::confirmDeletion(this, address, currentTheme) || self == nullptr
        || !place.isValid())
        return;
    if (const std::optional<QString> id = ServerStore::idOfAddress(address)) {
        if (isDefaultServer(*id)) {
            // The favourite mark is kept for the day when the server is added again.
            deletedDefaults.insert(*id);
            saveDeletedDefaults();
            ServerStore::removeGroup(*id);
        } else {
            removeServerConfig(*id);
        }
    }
    delete serverList->takeItem(place.row());
    saveServerList();
    saveFavorites();
}

void ConnectDialog::showServerContextMenu(const QPoint &pos)
{
    QListWidgetItem *row = serverList->itemAt(pos);
    if (row == nullptr)
        return;
    serverList->setCurrentItem(row);
    const std::optional<QString> id = ServerRows::idOf(row);

    QMenu menu(this);
    const QAction *edit = menu.addAction(tr("Edit"));
    const QAction *remove = menu.addAction(tr("Delete"));
    menu.addSeparator();
    const QAction *favorite = nullptr;
    if (id) {
        favorite = menu.addAction(favoriteServers.contains(*id) ? tr("Remove from Favorites")
                                                                : tr("Add to Favorites"));
    }
    const QPointer<ConnectDialog> self = this;
    const QAction *chosen = menu.exec(serverList->mapToGlobal(pos));
    if (chosen == nullptr || self == nullptr)
        return;
    if (chosen == edit)
        editServer();
    else if (chosen == remove)
        deleteServer();
    else if (chosen == favorite)
        toggleFavorite(*id);
}

void ConnectDialog::buildForm()
{
    const ConnectDialogForm form(*this);
    serverEdit = form.serverEdit;
    portEdit = form.portEdit;
    nicknameEdit = form.nicknameEdit;
    realNameEdit = form.realNameEdit;
    channelsEdit = form.channelsEdit;
    sslCheck = form.sslCheck;
    serverList = form.serverList;
    addButton = form.addButton;
    editButton = form.editButton;
    deleteButton = form.deleteButton;
    connect(form.connectButton, &QPushButton::clicked, this, &ConnectDialog::onConnectClicked);
    connect(form.cancelButton, &QPushButton::clicked, this, &ConnectDialog::reject);
}

void ConnectDialog::makeConnections()
{
    connect(serverList, &QListWidget::customContextMenuRequested, this,
            &ConnectDialog::showServerContextMenu);
    connect(serverList, &QListWidget::currentItemChanged, this,
            &ConnectDialog::onServerListSelectionChanged);
    connect(addButton, &QPushButton::clicked, this, &ConnectDialog::addServer);
    connect(editButton, &QPushButton::clicked, this, &ConnectDialog::editServer);
    connect(deleteButton, &QPushButton::clicked, this, &ConnectDialog::deleteServer);
    connect(serverEdit, &QLineEdit::textChanged, this, [this]() { selectedServerId.clear(); });
    connect(portEdit, &QLineEdit::textChanged, this, [this]() { selectedServerId.clear(); });
}

void ConnectDialog::applyTheme()
{
    ConnectDialogStyle::setBackground(this, currentTheme);
    const QString sheet = ConnectDialogStyle::dialogSheet(currentTheme);
    // To set it anew would style each child anew and measure each row of the list.
    if (styleSheet() != sheet)
        setStyleSheet(sheet);
}

void ConnectDialog::storeFieldsOfSelectedServer()
{
    // What this dialog has no field for is kept as it was.
    ServerConfig config = serverConfigs.value(selectedServerId);
    config.nickname = nicknameEdit->text().trimmed();
    config.realName = realNameEdit->text().trimmed();
    config.autojoin = ChannelNames::parseChannels(channelsEdit->text());
    config.useSsl = sslCheck->isChecked();
    saveServerConfig(selectedServerId, config);
    serverConfigs.insert(selectedServerId, config);
}

void ConnectDialog::completeActiveConfig()
{
    const ServerConfig defaults;
    if (activeConfig.nickname.isEmpty())
        activeConfig.nickname = nicknameEdit->text().trimmed();
    if (activeConfig.realName.isEmpty())
        activeConfig.realName = realNameEdit->text().trimmed();
    if (activeConfig.autojoin.isEmpty())
        activeConfig.autojoin = ChannelNames::parseChannels(channelsEdit->text());
    if (activeConfig.encoding.isEmpty())
        activeConfig.encoding = defaults.encoding;
    if (activeConfig.authMethod.isEmpty())
        activeConfig.authMethod = defaults.authMethod;
    // A stored record that wants TLS gets it, whatever the box says.
    if (!activeConfig.useSsl)
        activeConfig.useSsl = sslCheck->isChecked();
}

QString ConnectDialog::serverId(const QString &host, int port) const
{
    return ServerStore::serverId(host, port);
}

QString ConnectDialog::cleanAddress(const QString &text) const
{
    return ServerStore::cleanAddress(text);
}

ServerConfig ConnectDialog::loadServerConfig(const QString &id) const
{
    return ServerStore::loadConfig(id);
}

void ConnectDialog::saveServerConfig(const QString &id, const ServerConfig &config)
{
    ServerStore::saveConfig(id, config, ServerStore::OddIdAddress::SameAsId);
}

void ConnectDialog::removeServerConfig(const QString &id)
{
    ServerStore::removeGroup(id);
    serverConfigs.remove(id);
    favoriteServers.remove(id);
    saveFavorites();
}

bool ConnectDialog::isDefaultServer(const QString &id) const
{
    return ServerStore::isDefaultServer(id);
}

void ConnectDialog::loadDeletedDefaults()
{
    deletedDefaults = ServerStore::loadIds(ServerStore::DeletedDefaultsKey);
}

void ConnectDialog::saveDeletedDefaults()
{
    ServerStore::saveIds(ServerStore::DeletedDefaultsKey, deletedDefaults);
}

void ConnectDialog::loadFavorites()
{
    favoriteServers = ServerStore::loadIds(ServerStore::FavoritesKey);
}

void ConnectDialog::saveFavorites()
{
    ServerStore::saveIds(ServerStore::FavoritesKey, favoriteServers);
}

void ConnectDialog::showServers(const QSet<QString> &ids, const QSettings &settings)
{
    serverList->clear();
    for (const QString &id : ids)
        serverList->addItem(rowText(ServerStore::storedAddress(settings, id)));
}

void ConnectDialog::selectFirstServer(const QStringList &history)
{
    const QString last = history.isEmpty() ? QString() : history.constLast();
    const QStringList parts = last.split(u':');
    if (parts.size() != 2) {
        const QList<QListWidgetItem *> preferred =
                serverList->findItems(ServerCatalogue::preferredAddress(), Qt::MatchExactly);
        if (!preferred.isEmpty())
            serverList->setCurrentItem(preferred.constFirst());
        else
            serverList->setCurrentRow(0);
        return;
    }
    serverEdit->setText(parts.at(0));
    portEdit->setText(parts.at(1));
    if (QListWidgetItem *row = ServerRows::findAddress(serverList, last)) {
        serverList->setCurrentItem(row);
        return;
    }
    // This is how a server that was typed by hand enters the list; its record, read before this,
    // shows from the next time on.
    serverList->addItem(last);
    serverList->setCurrentRow(serverList->count() - 1);
    saveServerList();
}

void ConnectDialog::saveServerList()
{
    ServerStore::saveListedServers(ServerRows::addresses(serverList));
}

void ConnectDialog::reorderServerList()
{
    ServerRows::sort(serverList);
}

void ConnectDialog::updateServerDisplayName(const QString &id)
{
    if (QListWidgetItem *row = ServerRows::findId(serverList, id))
        row->setText(rowText(ServerRows::addressOf(row)));
}

void ConnectDialog::updateChannelsFromCurrentServer()
{
    const QListWidgetItem *row = serverList->currentItem();
    const std::optional<QString> id = row != nullptr ? ServerRows::idOf(row) : std::nullopt;
    if (!id)
        return;
    const ServerConfig config = loadServerConfig(*id);
    if (!config.autojoin.isEmpty())
        channelsEdit->setText(config.autojoin.join(u", "_s));
}

QString ConnectDialog::rowText(const QString &address) const
{
    const std::optional<QString> id = ServerStore::idOfAddress(address);
    return id && favoriteServers.contains(*id) ? ServerStore::FavoriteMark + address : address;
}

void ConnectDialog::toggleFavorite(const QString &id)
{
    if (!favoriteServers.remove(id))
        favoriteServers.insert(id);
    saveFavorites();
    updateServerDisplayName(id);
    reorderServerList();
}
