#pragma once

#include <QDir>
#include <QJsonObject>
#include <QList>
#include <QMap>
#include <QTemporaryFile>
#include <mutex>
#include <optional>

#include "reply.h"

namespace quorvelle::devserver {

/// The builds on disk: "<id>/files/<path>" while files arrive, joined by
/// "<id>/build.json" once the build is finalized and can no longer change.
/// A build's summary is a JSON object with "build", "created_at", "disabled",
/// "file_count" and "total_size" (bytes). Any thread may call any function.
class BuildStore {
public:
    explicit BuildStore(const QDir& place) : folder(place) {}

    /// Takes up the builds an earlier run finalized. A build that cannot be
    /// read comes back as a sentence.
    std::optional<QString> load();

    /// Why no file may be added under this path; nothing when one may.
    std::optional<Refusal> refusalFor(const QString& build, const QString& path) const;

    /// Moves a completely received file into the build, in place of an earlier
    /// one of the same path. The file must be on the same disk as the store.
    std::optional<Refusal> add(const QString& build, const QString& path, QTemporaryFile& file);

    /// Closes the build, records its manifest and answers with its size.
    Reply finalize(const QString& build);

    /// Marks a finalized build as one that must not be promoted, or takes the mark away.
    Reply setDisabled(const QString& build, bool disabled);

    /// Deletes a build, finalized or not. The caller knows that no channel is at it.
    Reply remove(const QString& build);

    /// The summaries of the finalized builds, by id.
    QList<QJsonObject> list() const;
    std::optional<QJsonObject> find(const QString& build) const;

    /// A finalized build's summary and "files": "path" and "size" of each, by path.
    Reply manifest(const QString& build) const;
    Reply file(const QString& build, const QString& path) const;

private:
    // These expect the lock to be held.
    std::optional<Refusal> refusalLocked(const QString& build, const QString& path) const;
    Reply manifestLocked(const QString& build) const;

    const QDir folder;
    mutable std::mutex mutex;
    QMap<QString, QJsonObject> finalized;
};

}  // namespace quorvelle::devserver
