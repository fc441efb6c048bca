#include "ConnectDialog.h"

#include "ChannelNames.h"
#include "DialogParts.h"
#include "FocusFrame.h"
#include "ServerCatalogue.h"
#include "ServerDialogStyle.h"
#include "ServerEditDialog.h"
#include "ServerListDelegate.h"
#include "ServerRows.h"
#include "ServerStore.h"

#include <QCheckBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QMessageBox>
#include <QPersistentModelIndex>
#include <QPointer>
#include <QPushButton>
#include <QSettings>
#include <QVBoxLayout>

#include <optional>

using namespace Qt::StringLiterals;

namespace {

// Each message box runs a nested event loop, which may destroy `parent`.

void showError(QWidget *parent, const QString &text)
{
    QMessageBox box(parent);
    box.setWindowTitle(ConnectDialog::tr("Error"));
    box.setText(text);
    box.setIcon(QMessageBox::Warning);
    QPushButton *button = box.addButton(QMessageBox::Ok);
    button->setObjectName(u"connectButton"_s);
    button->setStyleSheet(ServerDialogStyle::errorButtonSheet());
    box.exec();
}

void showInvalidFormat(QWidget *parent)
{
    QMessageBox::warning(parent, ConnectDialog::tr("Invalid format"),
                         ConnectDialog::tr("Please use the format host:port"), QMessageBox::Ok);
}

void showDuplicate(QWidget *parent)
{
    QMessageBox::information(parent, ConnectDialog::tr("Add Server"),
                             ConnectDialog::tr("This server already exists in the list."),
                             QMessageBox::Ok);
}

void showNoSelection(QWidget *parent, const QString &title)
{
    QMessageBox::information(parent, title, ConnectDialog::tr("No server selected."),
                             QMessageBox::Ok);
}

bool confirmDeletion(QWidget *parent, const QString &address, const QString &theme)
{
    QMessageBox box(parent);
    box.setWindowTitle(ConnectDialog::tr("Delete Server"));
    box.setTextFormat(Qt::PlainText); // The address may contain HTML.
    box.setText(ConnectDialog::tr("Are you sure you want to delete server: %1").arg(address));
    box.setIcon(QMessageBox::Critical);
    box.setStandardButtons(QMessageBox::Yes | QMessageBox::No);
    box.setDefaultButton(QMessageBox::No);
    box.button(QMessageBox::Yes)->setObjectName(u"yesButton"_s);
    box.button(QMessageBox::No)->setObjectName(u"noButton"_s);
    box.setStyleSheet(ServerDialogStyle::deletionBoxSheet(theme));
    return box.exec() == QMessageBox::Yes;
}

} // namespace

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

    connectSignals(); // Before loadSettings(), so that the row it selects fills the fields.
    loadSettings();
    applyTheme();

    adjustSize();
    setFixedSize(size());
    setWindowFlags(windowFlags()
                   & ~(Qt::WindowMaximizeButtonHint | Qt::WindowFullscreenButtonHint));
}

ConnectDialog::~ConnectDialog()
{
    // The message boxes, server edit dialogs and menus that the slots run.
    DialogParts::detachNestedWindows(*this);
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
        showError(this, tr("Server and nickname are required!"));
        return;
    }
    if (port() < 1 || port() > 65535) {
        showError(this, tr("Port must be between 1 and 65535"));
        return;
    }
    saveSettings();
    const QString id = serverId(server(), port());
    if (!selectedServerId.isEmpty() && selectedServerId == id)
        saveFieldsOfSelectedServer();
    // Intended: a listed server whose address the user typed also gets its stored record.
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
    fillServerList(ids, settings);
    reorderServerList();
    selectInitialServer(ServerStore::loadHistory());
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
    // Last, since setText() on either field clears it.
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
    ServerEditDialog dialog(tr("Add IRC Server"), noAddress, ServerConfig(), currentTheme, this);
    if (dialog.exec() != Accepted || self == nullptr)
        return;
    const ServerConfig config = dialog.getConfig();
    const QString address = dialog.fullAddress();
    const std::optional<QString> id = ServerStore::idOfAddress(address);
    if (!id) {
        showInvalidFormat(this);
        return;
    }
    if (ServerRows::findAddress(serverList, address) != nullptr) {
        showDuplicate(this);
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
        showNoSelection(this, tr("Edit"));
        return;
    }
    const QPointer<ConnectDialog> self = this;
    const QPersistentModelIndex index = serverList->currentIndex();
    const QString oldAddress = ServerRows::addressOf(serverList->currentItem());
    const std::optional<QString> oldId = ServerStore::idOfAddress(oldAddress);
    if (!oldId)
        return;
    ServerEditDialog dialog(tr("Edit %1").arg(oldAddress), oldAddress, serverConfigs.value(*oldId),
                            currentTheme, this);
    if (dialog.exec() != Accepted || self == nullptr || !index.isValid())
        return;
    const QString address = dialog.fullAddress();
    const std::optional<QString> id = ServerStore::idOfAddress(address);
    if (!id) {
        showInvalidFormat(this);
        return;
    }
    if (address != oldAddress) {
        // A new address is another server, so the old record and favourite mark are removed.
        // Intended: a renamed default server does not count as deleted and is listed again later.
        removeServerConfig(*oldId);
        serverList->itemFromIndex(index)->setText(address);
    }
    saveServerConfig(*id, dialog.getConfig());
    serverConfigs.insert(*id, dialog.getConfig());
    saveServerList();
    updateServerDisplayName(*id);
    updateChannelsFromCurrentServer();
    onServerListSelectionChanged();
}

void ConnectDialog::deleteServer()
{
    if (serverList->currentItem() == nullptr) {
        showNoSelection(this, tr("Delete"));
        return;
    }
    const QPointer<ConnectDialog> self = this;
    const QPersistentModelIndex index = serverList->currentIndex();
    const QString address = ServerRows::addressOf(serverList->currentItem());
    if (!confirmDeletion(this, address, currentTheme) || self == nullptr || !index.isValid())
        return;
    if (const std::optional<QString> id = ServerStore::idOfAddress(address)) {
        if (isDefaultServer(*id)) {
            // Intended: still a favourite when the user adds the server again.
            deletedDefaults.insert(*id);
            saveDeletedDefaults();
            ServerStore::removeGroup(*id);
        } else {
            removeServerConfig(*id);
        }
    }
    delete serverList->takeItem(index.row());
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
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(28, 28, 28, 20);
    layout->setSpacing(18);

    auto *title = new QLabel(tr("Connect to IRC"));
    title->setObjectName(u"titleLabel"_s);
    layout->addWidget(title);

    auto *form = new QFormLayout;
    form->setLabelAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    form->setFormAlignment(Qt::AlignLeft | Qt::AlignTop);
    form->setFieldGrowthPolicy(QFormLayout::ExpandingFieldsGrow);
    form->setSpacing(12);
    layout->addLayout(form);
    addFields(*form);

    sslCheck = new QCheckBox(tr("Use SSL"));
    layout->addWidget(sslCheck);
    layout->addLayout(makeDialogButtons());
}

void ConnectDialog::addFields(QFormLayout &form)
{
    const auto addEdit = [&form](const QString &label, const QString &placeholder) {
        auto *edit = new QLineEdit;
        edit->setPlaceholderText(placeholder);
        form.addRow(label, edit);
        return edit;
    };
    serverEdit = addEdit(tr("Server:"), u"irc.libera.chat"_s);
    portEdit = addEdit(tr("Port:"), QString::number(ServerStore::DefaultPort));
    portEdit->setFixedWidth(80);

    QWidget *listButtons = makeListButtons();
    serverList = new QListWidget;
    serverList->setAlternatingRowColors(true);
    serverList->setMinimumHeight(120);
    serverList->setMaximumHeight(150);
    serverList->setContextMenuPolicy(Qt::CustomContextMenu);
    serverList->setItemDelegate(new ServerListDelegate(this));
    serverList->setAccessibleName(tr("Servers")); // Its label is a column of buttons.
    FocusFrame::addTo(*serverList);
    form.addRow(listButtons, serverList);

    nicknameEdit = addEdit(tr("Nickname:"), tr("Type you nickname"));
    realNameEdit = addEdit(tr("Real name:"), tr("Type you Real name (optionally)"));
    channelsEdit = addEdit(tr("Join channels:"), tr("#linux, #help"));
}

QWidget *ConnectDialog::makeListButtons()
{
    addButton = DialogParts::makeButton(tr("Add"), u"addButton"_s);
    editButton = DialogParts::makeButton(tr("Edit"), u"editButton"_s);
    deleteButton = DialogParts::makeButton(tr("Delete"), u"deleteButton"_s);

    auto *column = new QWidget;
    auto *layout = new QVBoxLayout(column);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(4);
    layout->addWidget(addButton);
    layout->addWidget(editButton);
    layout->addWidget(deleteButton);
    layout->addStretch();
    return column;
}

QBoxLayout *ConnectDialog::makeDialogButtons()
{
    QPushButton *cancelButton = DialogParts::makeButton(tr("Cancel"), u"cancelButton"_s);
    connect(cancelButton, &QPushButton::clicked, this, &ConnectDialog::reject);
    QPushButton *connectButton = DialogParts::makeButton(tr("Connect"), u"connectButton"_s);
    connect(connectButton, &QPushButton::clicked, this, &ConnectDialog::onConnectClicked);
    connectButton->setDefault(true);
    FocusFrame::addTo(*connectButton);

    auto *layout = new QHBoxLayout;
    layout->addStretch();
    layout->addWidget(cancelButton);
    layout->addWidget(connectButton);
    return layout;
}

void ConnectDialog::connectSignals()
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
    ServerDialogStyle::setBackground(this, currentTheme);
    const QString sheet = ServerDialogStyle::connectDialogSheet(currentTheme);
    // Setting the same sheet again would polish every child and measure every row of the list.
    if (styleSheet() != sheet)
        setStyleSheet(sheet);
}

void ConnectDialog::saveFieldsOfSelectedServer()
{
    // Keeps the values that have no field in this dialog.
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
    // Intended: a stored record with TLS overrides the check box.
    if (!activeConfig.useSsl)
        activeConfig.useSsl = sslCheck->isChecked();
}

QString ConnectDialog::serverId(const QString &host, int port) const
{
    return ServerStore::serverId(host, port);
}

QString ConnectDialog::cleanAddress(const QString &text) const
{
    return ServerRows::cleanAddress(text);
}

ServerConfig ConnectDialog::loadServerConfig(const QString &id) const
{
    return ServerStore::loadConfig(id);
}

void ConnectDialog::saveServerConfig(const QString &id, const ServerConfig &config)
{
    ServerStore::saveConfig(id, config, ServerStore::AddressFallback::UseId);
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

void ConnectDialog::fillServerList(const QSet<QString> &ids, const QSettings &settings)
{
    serverList->clear();
    for (const QString &id : ids)
        serverList->addItem(rowText(ServerStore::storedAddress(settings, id)));
}

void ConnectDialog::selectInitialServer(const QStringList &history)
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
    // A server whose address the user typed is added to the list here. Intended: its fields stay
    // empty in this dialog, since the records were read before.
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
    return id && favoriteServers.contains(*id) ? ServerRows::FavoriteMark + address : address;
}

void ConnectDialog::toggleFavorite(const QString &id)
{
    if (!favoriteServers.remove(id))
        favoriteServers.insert(id);
    saveFavorites();
    updateServerDisplayName(id);
    reorderServerList();
}
