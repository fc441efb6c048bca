#pragma once

#include <QSslCertificate>
#include <QSslConfiguration>
#include <QTemporaryDir>

/// A certificate authority of the test's own. Nobody trusts it until `makeTrusted`.
///
/// It works with the openssl command, in a folder that goes with the object.
class TlsAuthority final
{
    Q_DISABLE_COPY_MOVE(TlsAuthority)

public:
    TlsAuthority();

    /// Takes this process's default configuration back to what it was.
    ~TlsAuthority();

    /// Makes sockets of this process trust the authority, like one of the system's.
    void makeTrusted() const;

    /// What a server needs that goes by `host`, signed by this authority. Its certificate is null
    /// if openssl failed.
    [[nodiscard]] QSslConfiguration issue(const QString &host) const;

    /// What a server needs that goes by `host` and vouches for itself.
    [[nodiscard]] QSslConfiguration selfSigned(const QString &host) const;

    /// The authority's own certificate, in PEM.
    [[nodiscard]] QString certificateFile() const;

private:
    [[nodiscard]] QSslConfiguration make(const QString &host, const QStringList &signer) const;

    QTemporaryDir folder;
    QSslConfiguration before = QSslConfiguration::defaultConfiguration();
};
