#include "tide/store/list_page.h"

#include "fuzz/promise.h"
#include "fuzz/targets.h"

namespace tide::fuzz {

int runListPage(const std::uint8_t* bytes, std::size_t size) {
    const std::string xml = textOf(bytes, size);
    const ListPage page = parseListPage(xml);
    std::size_t text = 0;
    for (const ObjectEntry& entry : page.entries) {
        text += entry.key.size() + std::string_view("<Key></Key>").size();
    }
    expect(text <= xml.size() && page.nextToken.size() <= xml.size(),
           "a page holds no more than its text did");
    expect(page.truncated || page.nextToken.empty(), "a last page has no next one");
    return page.entries.empty() && page.nextToken.empty() ? 0 : 1;
}

}  // namespace tide::fuzz
