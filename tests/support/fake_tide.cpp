#include "support/fake_tide.h"

#include <gtest/gtest.h>
#include <sodium.h>
#include <zstd.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <array>

#include "tide/chunks/blake3_hash.h"

namespace quorvelle::testing {

namespace {

struct KeyPair {
    std::array<unsigned char, crypto_sign_PUBLICKEYBYTES> open{};
    std::array<unsigned char, crypto_sign_SECRETKEYBYTES> secret{};
};

KeyPair keyPair() {
    EXPECT_GE(sodium_init(), 0);
    std::array<unsigned char, crypto_sign_SEEDBYTES> seed{};
    seed.fill(7);
    KeyPair pair;
    crypto_sign_seed_keypair(pair.open.data(), pair.secret.data(), seed.data());
    return pair;
}

template <std::size_t kSize>
QByteArray hex(const std::array<unsigned char, kSize>& bytes) {
    return QByteArray(reinterpret_cast<const char*>(bytes.data()), kSize).toHex();
}

std::string compressed(const std::string& bytes) {
    std::string frame(ZSTD_compressBound(bytes.size()), '\0');
    frame.resize(ZSTD_compress(frame.data(), frame.size(), bytes.data(), bytes.size(), 3));
    return frame;
}

QString storeUrl(const FakeServer& server, const std::string& target) {
    return server.url() + QString::fromStdString(target);
}

}  // namespace

QString chunkId(const std::string& bytes) {
    return QString::fromStdString(tide::blake3Hex(bytes));
}

std::string chunkTarget(const std::string& bytes) {
    return "/store/chunks/" + tide::blake3Hex(bytes);
}

QString signingKey() {
    return QString::fromLatin1(hex(keyPair().open));
}

std::string signatureOf(const std::string& manifest) {
    std::array<unsigned char, crypto_sign_BYTES> signature{};
    crypto_sign_detached(signature.data(), nullptr,
                         reinterpret_cast<const unsigned char*>(manifest.data()), manifest.size(),
                         keyPair().secret.data());
    return hex(signature).toStdString();
}

QJsonObject tideManifest(const QString& channel, const TideFiles& files) {
    QJsonArray entries;
    for (const TideFile& file : files) {
        QJsonArray chunks;
        qint64 size = 0;
        for (const std::string& bytes : file.chunks) {
            const auto length = static_cast<qint64>(bytes.size());
            chunks.append(QJsonObject{{"h", chunkId(bytes)}, {"n", length}});
            size += length;
        }
        entries.append(QJsonObject{{"path", file.path}, {"size", size}, {"chunks", chunks}});
    }
    return {{"schema", 1}, {"channel", channel}, {"files", entries}};
}

QJsonObject tideDescriptor(const FakeServer& server, const QString& build, const TideFiles& files) {
    QJsonObject chunks;
    for (const TideFile& file : files) {
        for (const std::string& bytes : file.chunks) {
            chunks.insert(chunkId(bytes), storeUrl(server, chunkTarget(bytes)));
        }
    }
    return {{"build", build},
            {"manifest_url", storeUrl(server, kManifestTarget)},
            {"manifest_sig_url", storeUrl(server, kSignatureTarget)},
            {"chunks", chunks}};
}

void serveManifest(FakeServer& server, const std::string& manifest) {
    server.onBytes("GET", kManifestTarget, manifest);
    server.onBytes("GET", kSignatureTarget, signatureOf(manifest));
}

void publishTide(FakeServer& server, const QString& channel, const QString& build,
                 const TideFiles& files, ChunkForm form) {
    for (const TideFile& file : files) {
        for (const std::string& bytes : file.chunks) {
            server.onBytes("GET", chunkTarget(bytes),
                           form == ChunkForm::kZstd ? compressed(bytes) : bytes);
        }
    }
    serveManifest(server, QJsonDocument(tideManifest(channel, files)).toJson().toStdString());
    const std::string name = channel.toStdString();
    server.onJson("GET", "/api/tide/sync/" + name, tideDescriptor(server, build, files));
    server.onJson("GET", "/api/channels/" + name, {{"build", build}, {"engine", "tide"}});
}

}  // namespace quorvelle::testing
