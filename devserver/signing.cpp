#include "signing.h"

#include <QDateTime>
#include <QFile>
#include <QJsonObject>
#include <algorithm>

#include "data_folder.h"

namespace quorvelle::devserver {

namespace {

constexpr qint64 kUrlSeconds = 3600;
constexpr char kSeedKey[] = "signing_seed";
constexpr char kUrlKeyKey[] = "url_key";

using Seed = std::array<unsigned char, crypto_sign_SEEDBYTES>;

const unsigned char* bytesOf(const QByteArray& bytes) {
    return reinterpret_cast<const unsigned char*>(bytes.constData());
}

template <std::size_t kSize>
QByteArray hexOf(const std::array<unsigned char, kSize>& bytes) {
    return QByteArray(reinterpret_cast<const char*>(bytes.data()), kSize).toHex();
}

template <std::size_t kSize>
bool readHex(const QString& hex, std::array<unsigned char, kSize>& bytes) {
    const QByteArray decoded = QByteArray::fromHex(hex.toLatin1());
    if (decoded.size() != static_cast<qsizetype>(kSize)) {
        return false;
    }
    std::copy_n(bytesOf(decoded), kSize, bytes.begin());
    return true;
}

bool makeSecrets(const QString& path) {
    Seed seed{};
    std::array<unsigned char, crypto_generichash_KEYBYTES> urlKey{};
    randombytes_buf(seed.data(), seed.size());
    randombytes_buf(urlKey.data(), urlKey.size());
    const QJsonObject secrets{{kSeedKey, QString::fromLatin1(hexOf(seed))},
                              {kUrlKeyKey, QString::fromLatin1(hexOf(urlKey))}};
    return writeJson(path, secrets, Readers::kOwner);
}

}  // namespace

std::optional<QString> Signer::load(const QString& path) {
    if (!QFile::exists(path) && !makeSecrets(path)) {
        return QStringLiteral("cannot record the server's keys in '%1'").arg(path);
    }
    const auto secrets = readJson(path);
    Seed seed{};
    if (!secrets || !readHex((*secrets)[kSeedKey].toString(), seed) ||
        !readHex((*secrets)[kUrlKeyKey].toString(), urlBytes)) {
        return QStringLiteral("cannot read the server's keys in '%1'").arg(path);
    }
    crypto_sign_seed_keypair(publicBytes.data(), secretBytes.data(), seed.data());
    return std::nullopt;
}

QByteArray Signer::publicKey() const {
    return hexOf(publicBytes);
}

QByteArray Signer::signatureOf(const QByteArray& message) const {
    std::array<unsigned char, crypto_sign_BYTES> signature{};
    crypto_sign_detached(signature.data(), nullptr, bytesOf(message),
                         static_cast<unsigned long long>(message.size()), secretBytes.data());
    return hexOf(signature);
}

QString Signer::openPath(const QString& path) const {
    const qint64 expires = QDateTime::currentSecsSinceEpoch() + kUrlSeconds;
    return QStringLiteral("%1?expires=%2&sig=%3")
        .arg(path, QString::number(expires), QString::fromLatin1(tag(path, expires)));
}

bool Signer::isOpen(const QString& path, const QString& expires, const QString& sig) const {
    const qint64 until = expires.toLongLong();
    if (until <= QDateTime::currentSecsSinceEpoch()) {
        return false;
    }
    const QByteArray expected = tag(path, until);
    const QByteArray given = sig.toUtf8();
    return given.size() == expected.size() &&
           sodium_memcmp(given.constData(), expected.constData(),
                         static_cast<std::size_t>(expected.size())) == 0;
}

QByteArray Signer::tag(const QString& path, qint64 expires) const {
    const QByteArray message = path.toUtf8() + '\n' + QByteArray::number(expires);
    std::array<unsigned char, crypto_generichash_BYTES> hash{};
    crypto_generichash(hash.data(), hash.size(), bytesOf(message),
                       static_cast<unsigned long long>(message.size()), urlBytes.data(),
                       urlBytes.size());
    return hexOf(hash);
}

}  // namespace quorvelle::devserver
