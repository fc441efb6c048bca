#pragma once

#include "ServerConfig.h"

#include <QDialog>
#include <QMap>
#include <QSet>
#include <QString>
#include <QStringList>

class QCheckBox;
class QLineEdit;
class QListWidget;
class QPoint;
class QPushButton;
class QSettings;

/// The window in which the user says where to connect and as whom.
///
/// It shows the list of known servers (the built-in ones, the user's own and the last one connected
/// to) over the fields of the one that is selected. When the user connects, it completes one
/// ServerConfig out of the stored record and the fields, stores it if the server is a listed one,
/// and accepts; the caller then takes the choice through the accessors. The dialog is made for one
/// showing: it reads the store when it is constructed.
///
/// The operations on the list show message boxes, forms and menus, each in a nested event loop. The
/// dialog may be destroyed meanwhile.
class ConnectDialog final : public QDialog
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ConnectDialog)

public:
    explicit ConnectDialog(QWidget *parent);
    ~ConnectDialog() override;

    /// The servers that come with the program, as "host:port", in no particular order.
    [[nodiscard]] static QStringList defaultServers();

    /// Dresses the dialog in the theme `name`: "dark", "glass", or anything else for light.
    void setCurrentTheme(const QString &name);

    /// Host, without blanks at its ends.
    [[nodiscard]] QString server() const;

    /// Port; 0 if the field holds no number.
    [[nodiscard]] int port() const;

    /// Once the user has connected, `nickname`, `realName` and `favoriteChannels` tell the choice,
    /// with the field standing in for what the chosen record leaves empty; so do the functions
    /// below them, from the record alone. Before that the record is a default one.
    [[nodiscard]] QString nickname() const;
    [[nodiscard]] QString realName() const;
    [[nodiscard]] QStringList favoriteChannels() const;
    [[nodiscard]] QString altNickname() const { return activeConfig.altNickname; }
    [[nodiscard]] QString authMethod() const { return activeConfig.authMethod; }
    [[nodiscard]] QString password() const { return activeConfig.password; }
    [[nodiscard]] QString encoding() const { return activeConfig.encoding; }
    [[nodiscard]] bool useSsl() const { return activeConfig.useSsl; }
    [[nodiscard]] ServerConfig activeServerConfig() const { return activeConfig; }

private slots:
    void onConnectClicked();
    void loadSettings();
    void saveSettings() const;
    void onServerListSelectionChanged();
    void addServer();
    void editServer();
    void deleteServer();
    void showServerContextMenu(const QPoint &pos);

private:
    // Window
    void buildForm();
    void makeConnections();
    void applyTheme();

    // Connecting
    void storeFieldsOfSelectedServer();
    void completeActiveConfig();

    // Identity and records of servers
    [[nodiscard]] QString serverId(const QString &host, int port) const;
    [[nodiscard]] QString cleanAddress(const QString &text) const;
    [[nodiscard]] ServerConfig loadServerConfig(const QString &id) const;
    void saveServerConfig(const QString &id, const ServerConfig &config);
    void removeServerConfig(const QString &id);

    // The list
    [[nodiscard]] bool isDefaultServer(const QString &id) const;
    void loadDeletedDefaults();
    void saveDeletedDefaults();
    void loadFavorites();
    void saveFavorites();
    void showServers(const QSet<QString> &ids, const QSettings &settings);
    void selectFirstServer(const QStringList &history);
    void saveServerList();
    void reorderServerList();
    void updateServerDisplayName(const QString &id);
    void updateChannelsFromCurrentServer();
    [[nodiscard]] QString rowText(const QString &address) const;
    void toggleFavorite(const QString &id);

    QSet<QString> favoriteServers; ///< Server ids.
    QSet<QString> deletedDefaults; ///< Ids of built-in servers that the user deleted.
    QLineEdit *serverEdit = nullptr;
    QLineEdit *portEdit = nullptr;
    QLineEdit *nicknameEdit = nullptr;
    QLineEdit *realNameEdit = nullptr;
    QLineEdit *channelsEdit = nullptr;
    QCheckBox *sslCheck = nullptr;
    QListWidget *serverList = nullptr;
    QPushButton *addButton = nullptr;
    QPushButton *editButton = nullptr;
    QPushButton *deleteButton = nullptr;
    QString currentTheme = QStringLiteral("light");
    QMap<QString, ServerConfig> serverConfigs; ///< By server id.
    ServerConfig activeConfig;                 ///< What the dialog hands on.
    QString selectedServerId; ///< Of the row that filled the fields; empty once they are typed
                              ///< over.
};
