#include "tide_publisher.h"

#include <QDateTime>
#include <QFile>
#include <QJsonDocument>
#include <fstream>
#include <string>
#include <utility>

#include "tide/chunks/blake3_hash.h"
#include "tide/chunks/chunker.h"

namespace quorvelle::devserver {

namespace {

constexpr int kSchema = 1;

/// The bytes of a chunk; fewer when the file has become shorter.
std::string read(std::ifstream& file, const tide::Chunk& chunk) {
    std::string bytes(chunk.length, '\0');
    file.seekg(static_cast<std::streamoff>(chunk.offset));
    file.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    bytes.resize(static_cast<std::size_t>(file.gcount()));
    return bytes;
}

}  // namespace

std::optional<Refusal> TidePublisher::publish(const QString& channel, const QString& build) {
    const Reply reply = builds.manifest(build);
    if (const auto* refusal = std::get_if<Refusal>(&reply)) {
        return *refusal;
    }
    QJsonArray files;
    for (const QJsonValue& entry : std::get<QJsonObject>(reply)[u"files"].toArray()) {
        const QString path = entry[u"path"].toString();
        const Reply content = builds.file(build, path);
        if (const auto* refusal = std::get_if<Refusal>(&content)) {
            return *refusal;
        }
        const Cut pieces = cut(std::get<FileBytes>(content).path);
        if (pieces.refusal) {
            return pieces.refusal;
        }
        files.append(QJsonObject{{QStringLiteral("path"), path},
                                 {QStringLiteral("size"), entry[u"size"]},
                                 {QStringLiteral("chunks"), pieces.chunks}});
    }
    return record(channel, {{QStringLiteral("schema"), kSchema},
                            {QStringLiteral("channel"), channel},
                            {QStringLiteral("created"), QDateTime::currentSecsSinceEpoch()},
                            {QStringLiteral("build"), build},
                            {QStringLiteral("files"), files}});
}

TidePublisher::Cut TidePublisher::cut(const QString& file) {
    Cut result;
    std::ifstream content(nativePath(file), std::ios::binary);
    const auto take = [&](const tide::Chunk& chunk) {
        const QString id = QString::fromStdString(chunk.id);
        result.chunks.append(QJsonObject{{QStringLiteral("h"), id},
                                         {QStringLiteral("n"), static_cast<qint64>(chunk.length)}});
        if (result.refusal || store.contains(id)) {
            return;
        }
        const std::string bytes = read(content, chunk);
        // The store keeps what it has for good, so nothing wrong may enter it.
        if (tide::blake3Hex(bytes) != chunk.id) {
            result.refusal =
                Refusal{500, QStringLiteral("'%1' changed while it was cut").arg(file)};
            return;
        }
        result.refusal = store.add(id, bytes);
    };
    std::string error;
    if (!tide::chunkFile(nativePath(file), {}, take, &error)) {
        result.refusal = Refusal{500, QString::fromStdString(error)};
    }
    return result;
}

std::optional<Refusal> TidePublisher::record(const QString& channel,
                                             const QJsonObject& manifest) const {
    const QByteArray bytes = QJsonDocument(manifest).toJson(QJsonDocument::Compact);
    const QString id = QString::fromStdString(tide::blake3Hex(bytes.toStdString()));
    if (!dir.mkpath(QStringLiteral("manifests")) || !dir.mkpath(QStringLiteral("channels")) ||
        !writeWhole(manifestPath(id), bytes) ||
        !writeWhole(signaturePath(id), signer.signatureOf(bytes)) ||
        !writeWhole(switchPath(channel), id.toLatin1())) {
        return Refusal{500,
                       QStringLiteral("cannot record the manifest of channel '%1'").arg(channel)};
    }
    return std::nullopt;
}

std::optional<TidePublisher::Published> TidePublisher::current(const QString& channel) const {
    QFile file(switchPath(channel));
    if (!file.open(QIODevice::ReadOnly)) {
        return std::nullopt;
    }
    const QString id = QString::fromLatin1(file.readAll());
    auto manifest = readJson(manifestPath(id));
    return manifest ? std::optional(Published{id, std::move(*manifest)}) : std::nullopt;
}

QString TidePublisher::manifestPath(const QString& manifestId) const {
    return dir.filePath(QStringLiteral("manifests/") + manifestId + QStringLiteral(".json"));
}

QString TidePublisher::signaturePath(const QString& manifestId) const {
    return manifestPath(manifestId) + QStringLiteral(".sig");
}

QString TidePublisher::switchPath(const QString& channel) const {
    return dir.filePath(QStringLiteral("channels/") + fileNameFor(channel).value_or(QString()));
}

}  // namespace quorvelle::devserver
