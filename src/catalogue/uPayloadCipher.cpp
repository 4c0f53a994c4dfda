#include "uPayloadCipher.h"

#include <QBuffer>
#include <QIODevice>

#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/rand.h>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 ChunkSize = 64 * 1024;

struct TCipherCtxDeleter
{
    void operator()(EVP_CIPHER_CTX* ctx) const { EVP_CIPHER_CTX_free(ctx); }
};
using TCipherCtx = std::unique_ptr<EVP_CIPHER_CTX, TCipherCtxDeleter>;

QString OpenSslReason()
{
    const unsigned long code = ERR_get_error();
    ERR_clear_error();
    if (code == 0)
        return {};
    char text[256] = {};
    ERR_error_string_n(code, text, sizeof text);
    return u" ("_s + QString::fromLatin1(text) + u")"_s;
}

[[noreturn]] void Fail(const QString& message)
{
    throw EPayloadCipherError(message + OpenSslReason());
}

TCipherCtx NewContext(const TPayloadKeyMaterial& material, bool encrypt)
{
    TCipherCtx ctx(EVP_CIPHER_CTX_new());
    if (!ctx)
        Fail(u"Cannot create a cipher context"_s);
    const auto* key = reinterpret_cast<const unsigned char*>(material.Key.constData());
    const auto* iv = reinterpret_cast<const unsigned char*>(material.IV.constData());
    if (EVP_CipherInit_ex(ctx.get(), EVP_aes_256_cbc(), nullptr, key, iv, encrypt ? 1 : 0) != 1)
        Fail(u"Cannot initialise AES-256-CBC"_s);
    EVP_CIPHER_CTX_set_padding(ctx.get(), 1);
    return ctx;
}

void WriteAll(QIODevice& target, const unsigned char* data, int size)
{
    if (size <= 0)
        return;
    if (target.write(reinterpret_cast<const char*>(data), size) != size)
        Fail(u"Cannot write the payload: "_s + target.errorString());
}

// Runs the whole rest of the source through the context into the target.
// Returns the number of bytes read from the source.
qint64 Pump(EVP_CIPHER_CTX* ctx, QIODevice& source, QIODevice& target)
{
    QByteArray in(ChunkSize, Qt::Uninitialized);
    QByteArray out(ChunkSize + PayloadBlockSize, Qt::Uninitialized);
    auto* outData = reinterpret_cast<unsigned char*>(out.data());
    qint64 total = 0;
    for (;;) {
        const qint64 got = source.read(in.data(), ChunkSize);
        if (got < 0)
            Fail(u"Cannot read the payload: "_s + source.errorString());
        if (got == 0)
            break;
        total += got;
        int outLen = 0;
        if (EVP_CipherUpdate(ctx, outData, &outLen, reinterpret_cast<const unsigned char*>(in.constData()),
                             static_cast<int>(got)) != 1)
            Fail(u"Cipher failure"_s);
        WriteAll(target, outData, outLen);
    }
    return total;
}

} // namespace

EPayloadCipherError::EPayloadCipherError(const QString& message) : std::runtime_error(message.toStdString())
{}

TPayloadKeyMaterial MakeKeyMaterial(const QString& keyA, const QString& keyB, const QByteArray& iv)
{
    TPayloadKeyMaterial material;
    const QByteArray seed = (keyB + keyA).toUtf8();
    material.Key.resize(PayloadKeySize);
    unsigned int keyLen = 0;
    if (EVP_Digest(seed.constData(), static_cast<size_t>(seed.size()),
                   reinterpret_cast<unsigned char*>(material.Key.data()), &keyLen, EVP_sha256(),
                   nullptr) != 1 ||
        keyLen != PayloadKeySize)
        Fail(u"Cannot compute the payload key"_s);
    if (iv.isEmpty()) {
        material.IV.resize(PayloadBlockSize);
        if (RAND_bytes(reinterpret_cast<unsigned char*>(material.IV.data()), PayloadBlockSize) != 1)
            Fail(u"Cannot make a random initialisation vector"_s);
    } else if (iv.size() != PayloadBlockSize) {
        Fail(u"The initialisation vector has %1 bytes instead of 16"_s.arg(iv.size()));
    } else {
        material.IV = iv;
    }
    return material;
}

void DecryptStream(QIODevice& source, QIODevice& target, const QString& keyA, const QString& keyB)
{
    const QByteArray iv = source.read(PayloadBlockSize);
    if (iv.size() < PayloadBlockSize)
        Fail(u"The enciphered body has %1 bytes, fewer than its 16-byte initialisation vector"_s.arg(
            iv.size()));
    const TCipherCtx ctx = NewContext(MakeKeyMaterial(keyA, keyB, iv), false);
    const qint64 bodySize = Pump(ctx.get(), source, target);
    if (bodySize == 0)
        Fail(u"The enciphered body holds no cipher text after its initialisation vector"_s);
    if (bodySize % PayloadBlockSize != 0)
        Fail(u"The enciphered body (%1 bytes after the initialisation vector) is not a multiple of 16 bytes"_s
                 .arg(bodySize));
    unsigned char last[PayloadBlockSize];
    int lastLen = 0;
    if (EVP_CipherFinal_ex(ctx.get(), last, &lastLen) != 1)
        Fail(u"The enciphered body has a wrong padding: wrong key or damaged data"_s);
    WriteAll(target, last, lastLen);
}

void EncryptStream(QIODevice& source, QIODevice& target, const QString& keyA, const QString& keyB)
{
    const TPayloadKeyMaterial material = MakeKeyMaterial(keyA, keyB);
    WriteAll(target, reinterpret_cast<const unsigned char*>(material.IV.constData()), PayloadBlockSize);
    const TCipherCtx ctx = NewContext(material, true);
    Pump(ctx.get(), source, target);
    unsigned char last[PayloadBlockSize];
    int lastLen = 0;
    if (EVP_CipherFinal_ex(ctx.get(), last, &lastLen) != 1)
        Fail(u"Cannot finish the enciphering"_s);
    WriteAll(target, last, lastLen);
}

QByteArray EncryptBytes(const QByteArray& clear, const QString& keyA, const QString& keyB)
{
    QBuffer source;
    source.setData(clear);
    source.open(QIODevice::ReadOnly);
    QByteArray result;
    result.reserve(clear.size() + 2 * PayloadBlockSize);
    QBuffer target(&result);
    target.open(QIODevice::WriteOnly);
    EncryptStream(source, target, keyA, keyB);
    return result;
}

QByteArray DecryptBytes(const QByteArray& body, const QString& keyA, const QString& keyB)
{
    QBuffer source;
    source.setData(body);
    source.open(QIODevice::ReadOnly);
    QByteArray result;
    QBuffer target(&result);
    target.open(QIODevice::WriteOnly);
    DecryptStream(source, target, keyA, keyB);
    return result;
}

QString EncryptText(const QString& text, const QString& keyA, const QString& keyB, bool wrap)
{
    if (text.isEmpty())
        return {};
    const QByteArray encoded = EncryptBytes(text.toUtf8(), keyA, keyB).toBase64();
    if (!wrap)
        return QString::fromLatin1(encoded);
    constexpr qsizetype LineLength = 64;
    QByteArray wrapped;
    wrapped.reserve(encoded.size() + encoded.size() / LineLength + 1);
    for (qsizetype pos = 0; pos < encoded.size(); pos += LineLength) {
        if (pos > 0)
            wrapped += '\n';
        wrapped += encoded.mid(pos, LineLength);
    }
    return QString::fromLatin1(wrapped);
}
