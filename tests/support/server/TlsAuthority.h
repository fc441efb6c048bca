#pragma once

#include <QSslCertificate>
#include <QSslConfiguration>
#include <QTemporaryDir>

/// A certificate authority for tests, which is not trusted until `makeTrusted`.
///
/// It runs the openssl command in a temporary folder.
class TlsAuthority final
{
    Q_DISABLE_COPY_MOVE(TlsAuthority)

public:
    TlsAuthority();

    /// Restores this process's default TLS configuration.
    ~TlsAuthority();

    /// Makes the sockets of this process trust the authority.
    void makeTrusted() const;

    /// Returns the TLS configuration of a server named `host`, signed by this authority. Its
    /// certificate is null if openssl failed.
    [[nodiscard]] QSslConfiguration issue(const QString &host) const;

    /// Returns the TLS configuration of a server named `host` with a self-signed certificate.
    [[nodiscard]] QSslConfiguration selfSigned(const QString &host) const;

    /// Returns the path of the authority's certificate in PEM format.
    [[nodiscard]] QString certificateFile() const;

private:
    [[nodiscard]] QSslConfiguration make(const QString &host, const QStringList &signer) const;

    QTemporaryDir folder;
    QSslConfiguration before = QSslConfiguration::defaultConfiguration();
};
