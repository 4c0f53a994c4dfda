#pragma once

// A self-signed TLS certificate for the catalogue server, made with OpenSSL when none is given.

#include <QByteArray>
#include <QString>

#include <stdexcept>

class ECertificateError : public std::runtime_error
{
public:
    explicit ECertificateError(const QString& message);
};

struct TCertificatePem
{
    QByteArray Certificate;
    QByteArray PrivateKey; // PKCS#8, not enciphered
};

// A P-256 key and a certificate for "localhost" and 127.0.0.1, valid for ten years.
TCertificatePem MakeSelfSignedCertificate(const QString& commonName);

// Reads the pair from the two files. Raises ECertificateError.
TCertificatePem LoadCertificate(const QString& certificatePath, const QString& keyPath);

// Reads the pair from the two files, or makes one and saves it there when the certificate file
// does not exist yet. Raises ECertificateError.
TCertificatePem LoadOrMakeCertificate(const QString& certificatePath, const QString& keyPath);
