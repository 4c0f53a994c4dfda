#pragma once

// Enciphered reply bodies of the catalogue services: a 16-byte initialisation vector in clear,
// then AES-256-CBC with PKCS#5 padding. The key is the SHA-256 digest of the UTF-8 bytes of
// keyB followed by keyA. Cipher, digest and random source are OpenSSL's.

#include <QByteArray>
#include <QString>

#include <stdexcept>

class QIODevice;

// Raised for every failure of enciphering or deciphering.
class EPayloadCipherError : public std::runtime_error
{
public:
    explicit EPayloadCipherError(const QString& message);
};

constexpr int PayloadBlockSize = 16;
constexpr int PayloadKeySize = 32;

struct TPayloadKeyMaterial
{
    QByteArray Key; // 32 bytes
    QByteArray IV;  // 16 bytes
};

// The key from keyA and keyB, and the given IV or, when iv is empty, 16 random bytes.
// An IV that is neither empty nor 16 bytes long raises EPayloadCipherError.
TPayloadKeyMaterial MakeKeyMaterial(const QString& keyA, const QString& keyB, const QByteArray& iv = {});

// Reads the IV and deciphers from the source's position to its end into the target.
void DecryptStream(QIODevice& source, QIODevice& target, const QString& keyA, const QString& keyB);

// Writes a fresh random IV, then the whole source enciphered, into the target.
void EncryptStream(QIODevice& source, QIODevice& target, const QString& keyA, const QString& keyB);

// UTF-8 of the text, enciphered, in base64; with wrap, a line break after every 64 characters.
// An empty text stays empty.
QString EncryptText(const QString& text, const QString& keyA, const QString& keyB, bool wrap);

// In-memory forms of the two stream routines.
QByteArray EncryptBytes(const QByteArray& clear, const QString& keyA, const QString& keyB);
QByteArray DecryptBytes(const QByteArray& body, const QString& keyA, const QString& keyB);
