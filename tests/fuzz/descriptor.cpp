#include "tide/manifest/descriptor.h"

#include "fuzz/promise.h"
#include "fuzz/targets.h"

namespace tide::fuzz {

int runDescriptor(const std::uint8_t* bytes, std::size_t size) {
    const std::string json = textOf(bytes, size);
    std::string manifestUrl = "untouched";
    std::string signatureUrl = "untouched";
    ChunkUrls urls{{"untouched", ""}};
    std::string err = "untouched";
    const bool accepted = parseSyncDescriptor(json, &manifestUrl, &signatureUrl, &urls, &err);
    expectReason(accepted, err, "manifest parse error: ");
    expect(accepted || (manifestUrl == "untouched" && signatureUrl == "untouched" &&
                        urls.contains("untouched")),
           "a refused descriptor changes nothing");
    expect(accepted == parseSyncDescriptor(json, nullptr, nullptr, nullptr, nullptr),
           "the verdict does not depend on what is asked for");
    return accepted ? 1 : 0;
}

}  // namespace tide::fuzz
