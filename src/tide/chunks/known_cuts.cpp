#include "tide/chunks/known_cuts.h"

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>

#include "files/utf8_path.h"
#include "tide/chunks/blake3_hash.h"

namespace tide {

namespace {

/// The last two characters are the version.
constexpr std::string_view kMark = "QVCUTS01";
constexpr std::size_t kDigestBytes = 32;
constexpr std::string_view kHexDigits = "0123456789abcdef";

void putNumber(std::string& out, std::uint64_t number) {
    for (unsigned shift = 0; shift < 64; shift += 8) {
        out += static_cast<char>(number >> shift & 255U);
    }
}

void putText(std::string& out, const std::string& text) {
    putNumber(out, text.size());
    out += text;
}

/// Both ways, an id is taken as it comes: one that is no digest only fails to be found.
void putDigest(std::string& out, const std::string& hex) {
    for (std::size_t at = 0; at < 2 * kDigestBytes; at += 2) {
        const auto high = at < hex.size() ? kHexDigits.find(hex[at]) : 0;
        const auto low = at + 1 < hex.size() ? kHexDigits.find(hex[at + 1]) : 0;
        out += static_cast<char>((high << 4U | low) & 255U);
    }
}

/// Takes a list apart from its front. After the first thing that is not there, everything
/// else is missing as well.
class CutReader {
public:
    explicit CutReader(std::string_view bytes) : rest(bytes) {}

    std::string_view take(std::uint64_t size) {
        if (size > rest.size()) {
            good = false;
            rest = {};
            return {};
        }
        const std::string_view taken = rest.substr(0, static_cast<std::size_t>(size));
        rest.remove_prefix(taken.size());
        return taken;
    }

    std::uint64_t number() {
        std::uint64_t value = 0;
        unsigned shift = 0;
        for (const char byte : take(8)) {
            value |= std::uint64_t{static_cast<unsigned char>(byte)} << shift;
            shift += 8;
        }
        return value;
    }

    std::string text() { return std::string(take(number())); }

    std::string digest() {
        std::string hex;
        hex.reserve(2 * kDigestBytes);
        for (const char byte : take(kDigestBytes)) {
            hex += kHexDigits[static_cast<unsigned char>(byte) >> 4U];
            hex += kHexDigits[static_cast<unsigned char>(byte) & 15U];
        }
        return hex;
    }

    bool isGood() const { return good; }
    bool isAtEnd() const { return rest.empty(); }
    std::string_view left() const { return rest; }

private:
    std::string_view rest;
    bool good = true;
};

CutFile readFile(CutReader& reader) {
    CutFile file;
    file.stamp.size = reader.number();
    file.stamp.changed = static_cast<std::int64_t>(reader.number());
    file.stamp.number = reader.number();
    std::uint64_t offset = 0;
    for (std::uint64_t left = reader.number(); left > 0 && reader.isGood(); --left) {
        std::string id = reader.digest();
        const std::uint64_t length = reader.number();
        file.chunks.push_back({std::move(id), offset, length});
        offset += length;
    }
    return file;
}

}  // namespace

std::string encodeCuts(const std::string& installDirectory, const std::filesystem::path& root,
                       const std::vector<ManifestFile>& files) {
    std::string content;
    putText(content, installDirectory);
    for (const ManifestFile& file : files) {
        const auto stamp = files::stampOf(root / files::utf8Path(file.path));
        if (!stamp) {
            continue;
        }
        putText(content, file.path);
        putNumber(content, stamp->size);
        putNumber(content, static_cast<std::uint64_t>(stamp->changed));
        putNumber(content, stamp->number);
        putNumber(content, file.chunks.size());
        for (const ManifestChunk& chunk : file.chunks) {
            putDigest(content, chunk.id);
            putNumber(content, chunk.length);
        }
    }
    std::string head(kMark);
    putDigest(head, blake3Hex(content));
    return head + content;
}

bool decodeCuts(const std::string& bytes, const std::string& installDirectory, KnownCuts& cuts) {
    CutReader reader(bytes);
    const bool isList = reader.take(kMark.size()) == kMark;
    const std::string checksum = reader.digest();
    if (!isList || checksum != blake3Hex(reader.left()) || reader.text() != installDirectory) {
        return false;
    }
    KnownCuts read;
    while (reader.isGood() && !reader.isAtEnd()) {
        std::string path = reader.text();
        read.insert_or_assign(std::move(path), readFile(reader));
    }
    if (reader.isGood()) {
        cuts = std::move(read);
    }
    return reader.isGood();
}

std::string directoryOfCuts(const std::string& bytes) {
    CutReader reader(bytes);
    const bool isList = reader.take(kMark.size()) == kMark;
    reader.take(kDigestBytes);
    std::string directory = reader.text();
    return isList && reader.isGood() ? directory : std::string();
}

}  // namespace tide
