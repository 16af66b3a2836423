#include "chunk_store.h"

#include <zstd.h>

#include <QFileInfo>
#include <algorithm>

namespace quorvelle::devserver {

namespace {

constexpr int kCompressionLevel = 3;
constexpr qsizetype kIdDigits = 64;

/// An id may come from a manifest somebody edited; no other text may become a path.
bool isId(const QString& text) {
    return text.size() == kIdDigits && std::all_of(text.begin(), text.end(), [](QChar digit) {
               return (digit >= u'0' && digit <= u'9') || (digit >= u'a' && digit <= u'f');
           });
}

/// The shorter of the compressed and the plain form.
std::string storedForm(const std::string& bytes) {
    std::string frame(ZSTD_compressBound(bytes.size()), '\0');
    const std::size_t size =
        ZSTD_compress(frame.data(), frame.size(), bytes.data(), bytes.size(), kCompressionLevel);
    if (ZSTD_isError(size) != 0 || size >= bytes.size()) {
        return bytes;
    }
    frame.resize(size);
    return frame;
}

}  // namespace

bool ChunkStore::contains(const QString& id) const {
    return !find(id).isEmpty();
}

QString ChunkStore::find(const QString& id) const {
    if (!isId(id)) {
        return {};
    }
    const QString path = pathOf(id);
    return QFileInfo(path).isFile() ? path : QString();
}

std::optional<Refusal> ChunkStore::add(const QString& id, const std::string& bytes) {
    const Refusal failure{500, QStringLiteral("cannot store chunk %1").arg(id)};
    const auto file = folder.newTemporaryFile();
    if (!file || !dir.mkpath(id.first(2))) {
        return failure;
    }
    const std::string stored = storedForm(bytes);
    const auto size = static_cast<qint64>(stored.size());
    if (file->write(stored.data(), size) != size || !file->flush()) {
        return failure;
    }
    if (takeOver(*file, pathOf(id))) {
        return failure;
    }
    return std::nullopt;
}

QString ChunkStore::pathOf(const QString& id) const {
    return dir.filePath(id.first(2) + '/' + id);
}

}  // namespace quorvelle::devserver
