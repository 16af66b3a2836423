#include "files/raw_file.h"

#include <utility>

namespace files {

RawFile::~RawFile() {
    close();
}

RawFile::RawFile(RawFile&& other) noexcept
    : handle(std::exchange(other.handle, kNone)), heldByOthers(other.heldByOthers) {}

}  // namespace files
