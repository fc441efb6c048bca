#pragma once

#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <QVariant>

/// A settings store for a child process, in a temporary folder that is deleted with the object. The
/// program uses it when its XDG_CONFIG_HOME is `configHome`.
class PreparedStore final
{
    Q_DISABLE_COPY_MOVE(PreparedStore)

public:
    struct Server
    {
        QString host;
        quint16 port = 0;
        QString nickname;
        QString realName;
        QStringList channels;
        bool tls = false;
    };

    PreparedStore() = default;

    /// Stores the server as the last one used, so that the connect dialog opens with its values.
    void addServer(const Server &server);

    void setValue(const QString &key, const QVariant &value);

    [[nodiscard]] QString configHome() const;
    /// Returns the stored value of this key; the program may be running.
    [[nodiscard]] QVariant value(const QString &key) const;

private:
    [[nodiscard]] QString fileName() const;

    QTemporaryDir folder;
};
