#pragma once

#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <QVariant>

/// A settings store for a program that is started by us, in a temporary folder that goes with the
/// object. The program finds it when `configHome` is its XDG_CONFIG_HOME.
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

    /// Stores the server as if the user had been there last, so that the connect dialog opens with
    /// its fields filled in.
    void addServer(const Server &server);

    void setValue(const QString &key, const QVariant &value);

    [[nodiscard]] QString configHome() const;
    /// What the store holds now under this key; the program may be running.
    [[nodiscard]] QVariant value(const QString &key) const;

private:
    [[nodiscard]] QString fileName() const;

    QTemporaryDir folder;
};
