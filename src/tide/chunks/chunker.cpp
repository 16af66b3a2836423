#include "tide/chunks/chunker.h"

#include <algorithm>
#include <bit>
#include <memory>
#include <optional>
#include <span>
#include <string_view>

#include "files/raw_file.h"
#include "files/utf8_path.h"
#include "tide/chunks/blake3_hash.h"
#include "tide/error.h"

namespace tide {

namespace {

constexpr std::size_t kReadSize = std::size_t{1} << 20;

constexpr std::uint64_t lowBits(unsigned count) {
    return count >= 64 ? ~std::uint64_t{0} : (std::uint64_t{1} << count) - 1;
}

/// Cuts a stream of bytes as it comes by. Where a chunk ends depends on its own bytes
/// and on the end of the file alone, so no chunk has to be in memory as a whole: each
/// block is searched and hashed while the processor's cache still holds it.
class Cutter {
public:
    Cutter(const ChunkerParameters& sizes, const std::function<void(const Chunk&)>& sink,
           CutScan search)
        : parameters(sizes), masks(cutMasks(sizes.normal)), callback(sink), scan(search) {}

    void add(std::string_view bytes) {
        while (!bytes.empty()) {
            const std::size_t taken = advance(bytes);
            hash.add(bytes.substr(0, taken));
            bytes.remove_prefix(taken);
            if (ended) {
                emitChunk();
            }
        }
    }

    /// What is left over at the end of the file is its last chunk.
    void finish() {
        if (length > 0) {
            emitChunk();
        }
    }

private:
    /// How many of the bytes belong to this chunk; sets `ended` when it ends with them.
    std::size_t advance(std::string_view bytes) {
        std::size_t taken = 0;
        while (taken < bytes.size() && !ended) {
            const bool searching = length >= parameters.minimum;
            const std::string_view stretch = bytes.substr(taken, untilBorder());
            const std::uint64_t mask = length < parameters.normal ? masks.strict : masks.loose;
            const std::size_t cut = searching ? scan(stretch, mask, rolling) : 0;
            const std::size_t used = cut > 0 ? cut : stretch.size();
            taken += used;
            length += used;
            ended = cut > 0 || length == parameters.maximum;
        }
        return taken;
    }

    /// Bytes up to the next length at which the rule of the search changes.
    std::size_t untilBorder() const {
        std::uint64_t border = parameters.maximum;
        if (length < parameters.minimum) {
            border = parameters.minimum;
        } else if (length < parameters.normal) {
            border = std::min(parameters.normal, parameters.maximum);
        }
        return static_cast<std::size_t>(
            std::min<std::uint64_t>(border - length, std::string_view::npos));
    }

    void emitChunk() {
        callback(Chunk{hash.hex(), offset, length});
        offset += length;
        length = 0;
        rolling = 0;
        ended = false;
        hash.reset();
    }

    const ChunkerParameters parameters;
    const CutMasks masks;
    const std::function<void(const Chunk&)>& callback;
    const CutScan scan;
    Blake3Hash hash;
    std::uint64_t rolling = 0;
    std::uint64_t offset = 0;
    std::uint64_t length = 0;
    bool ended = false;
};

}  // namespace

CutMasks cutMasks(std::uint64_t normalLength) {
    const auto bits =
        normalLength <= 1 ? 0U : static_cast<unsigned>(std::bit_width(normalLength - 1));
    return CutMasks{lowBits(bits + 2), bits < 2 ? 0 : lowBits(bits - 2)};
}

bool chunkFile(const std::filesystem::path& file, const ChunkerParameters& parameters,
               const std::function<void(const Chunk&)>& callback, std::string* err, CutScan scan) {
    if (parameters.maximum == 0 || parameters.maximum < parameters.minimum) {
        return fail(err, "bad chunker parameters");
    }
    files::RawFile content(file, files::RawFile::For::kReading);
    if (!content.isOpen()) {
        return fail(err, "cannot open ", files::utf8Text(file));
    }
    Cutter cutter(parameters, callback, scan);
    // Clearing it would cost more than all else that is done about a small file.
    const auto block = std::make_unique_for_overwrite<char[]>(kReadSize);
    std::uint64_t offset = 0;
    for (std::optional<std::size_t> size = kReadSize; size == kReadSize; offset += *size) {
        size = content.read(offset, std::span(block.get(), kReadSize));
        if (!size) {
            return fail(err, "read error on ", files::utf8Text(file));
        }
        cutter.add(std::string_view(block.get(), *size));
    }
    cutter.finish();
    return true;
}

}  // namespace tide
