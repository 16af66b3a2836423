#include "e2e/save_failures.h"

namespace quorvelle::testing {
namespace {

TEST(SaveFailure, OfAFullDiskLeavesTheOldFile) {
    const Sandbox box;
    box.write("config/config.json", kJoined);
    expectSavesFail(box, runOnFullDisk, true);
}

TEST(SaveFailure, OfAFullDiskLeavesACorruptFile) {
    const Sandbox box;
    box.write("config/config.json", "oops");
    expectSavesFail(box, runOnFullDisk, false);
}

}  // namespace
}  // namespace quorvelle::testing
