#include "tide/engine.h"

#include <gtest/gtest.h>

namespace tide {
namespace {

TEST(EngineDeathTest, EndsTheProcessWhereLibsodiumCannotWork) {
    requireSodium(0);
    requireSodium(1);
    EXPECT_DEATH(requireSodium(-1), "^tide-core: libsodium failed to initialise\n");
}

}  // namespace
}  // namespace tide
