#pragma once

#include <json/value.h>

#include <string>
#include <unordered_set>
#include <vector>

#include "tide/manifest/manifest.h"

namespace tide {

/// The files of a manifest while its entries come in, one by one. The first entry that is
/// refused decides; what comes after it is not looked at. No exception leaves it.
class ManifestFileList {
public:
    void reserve(std::size_t entries) { files.reserve(entries); }

    void add(const Json::Value& entry);

    /// Gives all away. False, with `err` assigned unless null and `out` as it was, when an
    /// entry was refused.
    bool take(std::vector<ManifestFile>& out, std::string* err);

private:
    void read(const Json::Value& entry);
    std::string nameTakenTwice(const std::string& path);
    bool isTaken(const std::string& name) const;

    std::vector<ManifestFile> files;
    /// Their paths, as the file system compares them.
    std::unordered_set<std::string> names;
    std::string problem;
};

}  // namespace tide
