#include "tide/manifest/descriptor.h"

#include "fuzz/promise.h"
#include "fuzz/targets.h"

namespace tide::fuzz {

int runDescriptor(const std::uint8_t* bytes, std::size_t size) {
    const std::string json = textOf(bytes, size);
    SyncDescriptor descriptor{.build = "untouched"};
    std::string err = "untouched";
    const bool accepted = parseSyncDescriptor(json, descriptor, &err);
    expectReason(accepted, err, "manifest parse error: ");
    expect(accepted || descriptor.build == "untouched", "a refused descriptor changes nothing");
    expect(!descriptor.build.empty(), "every build has an id");
    return accepted ? 1 : 0;
}

}  // namespace tide::fuzz
