#pragma once

#include <QDir>
#include <QJsonArray>
#include <QJsonObject>
#include <QString>
#include <optional>

#include "build_store.h"
#include "chunk_store.h"
#include "data_folder.h"
#include "reply.h"
#include "signing.h"

namespace quorvelle::devserver {

/// Turns builds into what the tide engine downloads: chunks, stored once whatever build
/// holds them, manifests "tide/manifests/<id>.json", named by their digest, each with its
/// signature "<id>.json.sig" beside it, and in "tide/channels/<channel>" the id of the
/// channel's manifest. Replacing that one file is the switch to another build: manifest and
/// signature always match, also for those who were told of the one before. What it is made
/// with must outlive it.
class TidePublisher {
public:
    TidePublisher(const DataFolder& folder, const BuildStore& source, const Signer& keys)
        : store(folder),
          builds(source),
          signer(keys),
          dir(folder.dir().filePath(QStringLiteral("tide"))) {}

    /// Makes a finalized build the channel's: cuts its files, stores the chunks that are
    /// new, writes and signs the manifest, then switches. One call at a time, and it takes
    /// as long as reading the whole build does.
    std::optional<Refusal> publish(const QString& channel, const QString& build);

    /// What a channel stands at.
    struct Published {
        QString manifestId;
        QJsonObject manifest;
    };

    /// As it lies on disk; nothing where the channel has no manifest that can be read. Any
    /// thread may call this and the functions below.
    std::optional<Published> current(const QString& channel) const;

    QString manifestPath(const QString& manifestId) const;
    QString signaturePath(const QString& manifestId) const;

    /// Empty when no chunk has this id.
    QString chunkPath(const QString& id) const { return store.find(id); }

private:
    /// A cut file's entries for the manifest, or why it could not be cut.
    struct Cut {
        QJsonArray chunks;
        std::optional<Refusal> refusal;
    };

    Cut cut(const QString& file);
    std::optional<Refusal> record(const QString& channel, const QJsonObject& manifest) const;
    QString switchPath(const QString& channel) const;

    ChunkStore store;
    const BuildStore& builds;
    const Signer& signer;
    const QDir dir;
};

}  // namespace quorvelle::devserver
