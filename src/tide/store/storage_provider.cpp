#include "tide/store/storage_provider.h"

namespace tide {

std::string StorageProvider::chunkKey(const std::string& id) const {
    return "chunks/" + id.substr(0, 2) + '/' + id;
}

}  // namespace tide
