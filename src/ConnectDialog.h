#pragma once

#include "ServerConfig.h"

#include <QDialog>
#include <QMap>
#include <QSet>
#include <QString>
#include <QStringList>

class QBoxLayout;
class QCheckBox;
class QFormLayout;
class QLineEdit;
class QListWidget;
class QPoint;
class QPushButton;
class QSettings;

/// Dialog where the user chooses a server and an identity.
///
/// It lists the default servers, the custom ones that the user added and the last one connected to,
/// and shows the fields of the selected server. Connect stores these fields, unless host or port
/// were edited, completes the record to connect with from the stored record and the fields, and
/// accepts the dialog. The constructor reads the store, so create a dialog each time it is shown.
///
/// The message boxes, server edit dialogs and menus run nested event loops, which may destroy the
/// dialog.
class ConnectDialog final : public QDialog
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ConnectDialog)

public:
    explicit ConnectDialog(QWidget *parent);
    ~ConnectDialog() override;

    /// Returns the default servers as "host:port", in no particular order.
    [[nodiscard]] static QStringList defaultServers();

    /// Applies the theme `name`: "dark", "glass", or any other for light.
    void setCurrentTheme(const QString &name);

    /// Returns the host without surrounding white space.
    [[nodiscard]] QString server() const;

    /// Returns the port, or 0 if the field contains no number.
    [[nodiscard]] int port() const;

    /// These return the value of the record to connect with, or of the field if that is empty.
    [[nodiscard]] QString nickname() const;
    [[nodiscard]] QString realName() const;
    [[nodiscard]] QStringList favoriteChannels() const;

    /// These return values of the record to connect with, which is default-constructed until the
    /// user connects.
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
    // Form
    void buildForm();
    void addFields(QFormLayout &form);
    [[nodiscard]] QWidget *makeListButtons();
    [[nodiscard]] QBoxLayout *makeDialogButtons();
    void connectSignals();
    void applyTheme();

    // Connecting
    void saveFieldsOfSelectedServer();
    void completeActiveConfig();

    // Identity and records of servers
    [[nodiscard]] QString serverId(const QString &host, int port) const;
    [[nodiscard]] QString cleanAddress(const QString &text) const;
    [[nodiscard]] ServerConfig loadServerConfig(const QString &id) const;
    void saveServerConfig(const QString &id, const ServerConfig &config);
    void removeServerConfig(const QString &id);

    // Server list
    [[nodiscard]] bool isDefaultServer(const QString &id) const;
    void loadDeletedDefaults();
    void saveDeletedDefaults();
    void loadFavorites();
    void saveFavorites();
    void fillServerList(const QSet<QString> &ids, const QSettings &settings);
    void selectInitialServer(const QStringList &history);
    void saveServerList();
    void reorderServerList();
    void updateServerDisplayName(const QString &id);
    void updateChannelsFromCurrentServer();
    [[nodiscard]] QString rowText(const QString &address) const;
    void toggleFavorite(const QString &id);

    QSet<QString> favoriteServers; ///< Server ids.
    QSet<QString> deletedDefaults; ///< Ids of the default servers that the user deleted.
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
    ServerConfig activeConfig;                 ///< Record to connect with.
    QString selectedServerId; ///< Id of the row that filled the fields; empty after an edit of the
                              ///< host or port.
};
