#pragma once

#include <QDir>
#include <QString>
#include <optional>
#include <string>

#include "data_folder.h"
#include "reply.h"

namespace quorvelle::devserver {

/// The published chunks on disk, "<first two digits>/<id>" each: one zstd frame that
/// records its content size or, where that is no smaller, the bytes as they are. A chunk
/// is named by its content and never changes. Any thread may call any function.
class ChunkStore {
public:
    explicit ChunkStore(const DataFolder& data)
        : folder(data), dir(data.dir().filePath(QStringLiteral("chunks"))) {}

    bool contains(const QString& id) const;

    /// Stores the bytes that the id names. The caller knows that it does.
    std::optional<Refusal> add(const QString& id, const std::string& bytes);

    /// Where the chunk of this id lies; empty when there is none, or the text is no id.
    QString find(const QString& id) const;

private:
    QString pathOf(const QString& id) const;

    const DataFolder& folder;
    const QDir dir;
};

}  // namespace quorvelle::devserver
