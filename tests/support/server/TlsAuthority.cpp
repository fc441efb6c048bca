#include "TlsAuthority.h"

#include "Files.h"
#include "Waiting.h"

#include <QProcess>
#include <QSslKey>

using namespace Qt::StringLiterals;

namespace {

// Creates a key and a certificate for it, self-signed unless `options` name a signer.
bool makeCertificate(const QString &keyFile, const QString &certificateFile, const QString &name,
                     const QStringList &options)
{
    QProcess openssl;
    openssl.start(u"openssl"_s,
                  QStringList{u"req"_s, u"-x509"_s, u"-newkey"_s, u"ec"_s, u"-pkeyopt"_s,
                              u"ec_paramgen_curve:P-256"_s, u"-nodes"_s, u"-days"_s, u"2"_s,
                              u"-keyout"_s, keyFile, u"-out"_s, certificateFile, u"-subj"_s,
                              u"/CN="_s + name}
                          + options);
    return openssl.waitForFinished(WaitTimeout) && openssl.exitStatus() == QProcess::NormalExit
           && openssl.exitCode() == 0;
}

} // namespace

TlsAuthority::TlsAuthority()
{
    makeCertificate(folder.filePath(u"authority.key"_s), certificateFile(),
                    u"Velmora Test Authority"_s, {});
}

TlsAuthority::~TlsAuthority()
{
    QSslConfiguration::setDefaultConfiguration(before);
}

void TlsAuthority::makeTrusted() const
{
    QSslConfiguration trusting = before;
    trusting.addCaCertificate(QSslCertificate(readFile(certificateFile())));
    QSslConfiguration::setDefaultConfiguration(trusting);
}

QSslConfiguration TlsAuthority::issue(const QString &host) const
{
    return make(host,
                {u"-CA"_s, certificateFile(), u"-CAkey"_s, folder.filePath(u"authority.key"_s)});
}

QSslConfiguration TlsAuthority::selfSigned(const QString &host) const
{
    return make(host, {});
}

QString TlsAuthority::certificateFile() const
{
    return folder.filePath(u"authority.pem"_s);
}

QSslConfiguration TlsAuthority::make(const QString &host, const QStringList &signer) const
{
    const QString keyFile = folder.filePath(u"server.key"_s);
    const QString serverFile = folder.filePath(u"server.pem"_s);
    QSslConfiguration made = before;
    if (makeCertificate(keyFile, serverFile, host,
                        signer + QStringList{u"-addext"_s, u"subjectAltName=DNS:"_s + host})) {
        made.setLocalCertificate(QSslCertificate(readFile(serverFile)));
        made.setPrivateKey(QSslKey(readFile(keyFile), QSsl::Ec));
    }
    made.setPeerVerifyMode(QSslSocket::VerifyNone); // Clients have no certificate.
    return made;
}
