#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tide {

/// One object of a listing.
struct ObjectEntry {
    std::string key;
    /// In bytes.
    std::uint64_t size = 0;

    bool operator==(const ObjectEntry&) const = default;
};

/// A bucket of objects, each a byte string under a key (UTF-8, parts separated by "/",
/// without a leading one).
///
/// Every operation is synchronous on the caller's thread and returns whether it
/// succeeded. `err` may be null; on failure it is assigned the reason, and the other
/// out-parameters keep what they held. One thread at a time may use a provider.
class StorageProvider {
public:
    virtual ~StorageProvider() = default;

    /// Stores `body` under `key`, replacing what was there.
    virtual bool put(const std::string& key, const std::string& body, std::string* err) = 0;

    /// Reads the whole object into `body`. A key below "chunks/" may be 64 MiB long, any
    /// other 256 MiB.
    virtual bool get(const std::string& key, std::string& body, std::string* err) = 0;

    /// Whether the object exists; a missing one is a failure. `size` may be null; on
    /// success it receives the length in bytes that the reply declares, 0 when it
    /// declares none.
    virtual bool head(const std::string& key, std::uint64_t* size, std::string* err) = 0;

    /// Every object whose key begins with `prefix` (empty: all of the bucket), in the
    /// order of the store, over as many pages as it takes.
    virtual bool list(const std::string& prefix, std::vector<ObjectEntry>& entries,
                      std::string* err) = 0;

    /// Deletes the object. Whether deleting a missing one succeeds is up to the store.
    virtual bool remove(const std::string& key, std::string* err) = 0;

    /// The key of a chunk's object: "chunks/3f/3f9a..." for the id "3f9a...".
    virtual std::string chunkKey(const std::string& id) const;
};

}  // namespace tide
