#pragma once

#include <sodium.h>

#include <QByteArray>
#include <QString>
#include <array>
#include <optional>

namespace quorvelle::devserver {

/// The server's two secrets and what is made with them: the Ed25519 key that signs
/// manifests, and the key behind its expiring URLs. They last as long as the data folder.
/// Once loaded nothing changes any more, so any thread may call any function.
class Signer {
public:
    /// Reads the secrets from a file, which is first made, readable by its owner alone,
    /// where there is none. A file that cannot be read or made comes back as a sentence.
    std::optional<QString> load(const QString& path);

    /// The Ed25519 public key: 64 lower-case hexadecimal digits.
    QByteArray publicKey() const;

    /// The Ed25519 detached signature over exactly these bytes: 128 lower-case
    /// hexadecimal digits.
    QByteArray signatureOf(const QByteArray& message) const;

    /// The path with a query that opens it for an hour. It begins with "/" and is
    /// percent-encoded.
    QString openPath(const QString& path) const;

    /// Whether the query items "expires" and "sig" open the path now.
    bool isOpen(const QString& path, const QString& expires, const QString& sig) const;

private:
    QByteArray tag(const QString& path, qint64 expires) const;

    std::array<unsigned char, crypto_sign_PUBLICKEYBYTES> publicBytes{};
    std::array<unsigned char, crypto_sign_SECRETKEYBYTES> secretBytes{};
    std::array<unsigned char, crypto_generichash_KEYBYTES> urlBytes{};
};

}  // namespace quorvelle::devserver
