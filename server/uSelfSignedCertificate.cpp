#include "uSelfSignedCertificate.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <openssl/bio.h>
#include <openssl/bn.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rand.h>
#include <openssl/x509.h>
#include <openssl/x509v3.h>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

template <typename T, void (*Free)(T*)> struct TDeleter
{
    void operator()(T* p) const { Free(p); }
};
using TPkey = std::unique_ptr<EVP_PKEY, TDeleter<EVP_PKEY, EVP_PKEY_free>>;
using TX509 = std::unique_ptr<X509, TDeleter<X509, X509_free>>;
using TBio = std::unique_ptr<BIO, TDeleter<BIO, BIO_free_all>>;
using TExtension = std::unique_ptr<X509_EXTENSION, TDeleter<X509_EXTENSION, X509_EXTENSION_free>>;
using TBignum = std::unique_ptr<BIGNUM, TDeleter<BIGNUM, BN_free>>;

[[noreturn]] void Fail(const QString& message)
{
    const unsigned long code = ERR_get_error();
    ERR_clear_error();
    QString text = message;
    if (code != 0) {
        char reason[256] = {};
        ERR_error_string_n(code, reason, sizeof reason);
        text += u" ("_s + QString::fromLatin1(reason) + u")"_s;
    }
    throw ECertificateError(text);
}

void Check(int result, const QString& what)
{
    if (result != 1)
        Fail(what);
}

QByteArray BioBytes(BIO* bio)
{
    char* data = nullptr;
    const long size = BIO_get_mem_data(bio, &data);
    return QByteArray(data, static_cast<qsizetype>(size));
}

void AddExtension(X509* cert, int nid, const char* value)
{
    X509V3_CTX ctx;
    X509V3_set_ctx_nodb(&ctx);
    X509V3_set_ctx(&ctx, cert, cert, nullptr, nullptr, 0);
    const TExtension ext(X509V3_EXT_conf_nid(nullptr, &ctx, nid, value));
    if (!ext)
        Fail(u"Cannot make the certificate extension %1"_s.arg(QString::fromLatin1(value)));
    Check(X509_add_ext(cert, ext.get(), -1), u"Cannot add a certificate extension"_s);
}

void Save(const QString& path, const QByteArray& data, bool secret)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        throw ECertificateError(u"Cannot write %1: %2"_s.arg(path, file.errorString()));
    if (secret)
        file.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    file.write(data);
    if (!file.commit())
        throw ECertificateError(u"Cannot write %1: %2"_s.arg(path, file.errorString()));
}

} // namespace

ECertificateError::ECertificateError(const QString& message) : std::runtime_error(message.toStdString()) {}

TCertificatePem MakeSelfSignedCertificate(const QString& commonName)
{
    const TPkey key(EVP_EC_gen("P-256"));
    if (!key)
        Fail(u"Cannot make a key"_s);

    const TX509 cert(X509_new());
    if (!cert)
        Fail(u"Cannot make a certificate"_s);
    Check(X509_set_version(cert.get(), 2), u"Cannot set the certificate version"_s);

    unsigned char serial[16];
    Check(RAND_bytes(serial, sizeof serial), u"Cannot make a serial number"_s);
    serial[0] &= 0x7f; // positive
    const TBignum serialNumber(BN_bin2bn(serial, sizeof serial, nullptr));
    if (!serialNumber || !BN_to_ASN1_INTEGER(serialNumber.get(), X509_get_serialNumber(cert.get())))
        Fail(u"Cannot set the serial number"_s);

    constexpr long TenYears = 10L * 365 * 24 * 3600;
    if (!X509_gmtime_adj(X509_getm_notBefore(cert.get()), -3600) ||
        !X509_gmtime_adj(X509_getm_notAfter(cert.get()), TenYears))
        Fail(u"Cannot set the validity"_s);
    Check(X509_set_pubkey(cert.get(), key.get()), u"Cannot set the public key"_s);

    X509_NAME* name = X509_get_subject_name(cert.get());
    const QByteArray cn = commonName.toUtf8();
    Check(X509_NAME_add_entry_by_txt(name, "O", MBSTRING_UTF8,
                                     reinterpret_cast<const unsigned char*>("Orvane catalogue server"), -1,
                                     -1, 0),
          u"Cannot set the organisation"_s);
    Check(X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_UTF8,
                                     reinterpret_cast<const unsigned char*>(cn.constData()), -1, -1, 0),
          u"Cannot set the common name"_s);
    Check(X509_set_issuer_name(cert.get(), name), u"Cannot set the issuer"_s);

    AddExtension(cert.get(), NID_basic_constraints, "critical,CA:FALSE");
    AddExtension(cert.get(), NID_key_usage, "critical,digitalSignature,keyEncipherment");
    AddExtension(cert.get(), NID_ext_key_usage, "serverAuth");
    AddExtension(cert.get(), NID_subject_alt_name, "DNS:localhost,IP:127.0.0.1,IP:::1");

    if (X509_sign(cert.get(), key.get(), EVP_sha256()) <= 0)
        Fail(u"Cannot sign the certificate"_s);

    TCertificatePem pem;
    const TBio certBio(BIO_new(BIO_s_mem()));
    const TBio keyBio(BIO_new(BIO_s_mem()));
    if (!certBio || !keyBio)
        Fail(u"Cannot make a memory buffer"_s);
    Check(PEM_write_bio_X509(certBio.get(), cert.get()), u"Cannot write the certificate"_s);
    Check(PEM_write_bio_PrivateKey(keyBio.get(), key.get(), nullptr, nullptr, 0, nullptr, nullptr),
          u"Cannot write the key"_s);
    pem.Certificate = BioBytes(certBio.get());
    pem.PrivateKey = BioBytes(keyBio.get());
    return pem;
}

TCertificatePem LoadCertificate(const QString& certificatePath, const QString& keyPath)
{
    TCertificatePem pem;
    QFile cert(certificatePath);
    QFile key(keyPath);
    if (!cert.open(QIODevice::ReadOnly))
        throw ECertificateError(u"Cannot read %1: %2"_s.arg(certificatePath, cert.errorString()));
    if (!key.open(QIODevice::ReadOnly))
        throw ECertificateError(u"Cannot read %1: %2"_s.arg(keyPath, key.errorString()));
    pem.Certificate = cert.readAll();
    pem.PrivateKey = key.readAll();
    return pem;
}

TCertificatePem LoadOrMakeCertificate(const QString& certificatePath, const QString& keyPath)
{
    if (QFileInfo::exists(certificatePath))
        return LoadCertificate(certificatePath, keyPath);
    const TCertificatePem pem = MakeSelfSignedCertificate(u"localhost"_s);
    QDir().mkpath(QFileInfo(certificatePath).absolutePath());
    QDir().mkpath(QFileInfo(keyPath).absolutePath());
    Save(keyPath, pem.PrivateKey, true);
    Save(certificatePath, pem.Certificate, false);
    return pem;
}
