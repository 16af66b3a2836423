#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tide/store/storage_provider.h"

namespace tide {

/// One page of a ListObjectsV2 reply.
struct ListPage {
    std::vector<ObjectEntry> entries;
    /// Whether a page follows, and what to ask for it with.
    bool truncated = false;
    std::string nextToken;
};

/// Reads a page out of the reply's XML (UTF-8). What is missing or broken is left out: a
/// body that is no listing gives an empty page.
ListPage parseListPage(std::string_view xml);

/// The query that asks for a page, encoded, its items in the sorted order that signing
/// needs. An empty token asks for the first page.
std::string listQuery(const std::string& prefix, const std::string& token);

}  // namespace tide
