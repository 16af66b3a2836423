#include <sys/wait.h>
#include <unistd.h>

#include "tide/assembly_fixture.h"

namespace tide {
namespace {

namespace fs = std::filesystem;
using ::testing::SizeIs;

class KillTest : public testing::ResumeTest {
protected:
    /// Runs in a process of its own that dies without a chance to clean up once
    /// `lastChunk` chunks are done.
    void assembleAndDie(std::uint64_t lastChunk) {
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            onChunk = [&](std::uint64_t done) {
                if (done == lastChunk) {
                    _exit(42);
                }
            };
            assemble();
            _exit(0);
        }
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        ASSERT_EQ(WEXITSTATUS(status), 42);
    }
};

// One chunk at most is fetched again, wherever the process died.
TEST_F(KillTest, GoesOnAfterAKillAtEveryChunk) {
    for (std::uint64_t kill = 1; kill <= kChunks + 2; ++kill) {
        SCOPED_TRACE(kill);
        fs::remove_all(staging());
        assembleAndDie(kill);
        EXPECT_TRUE(assemble()) << err;
        expectAssembled(build);
        EXPECT_LE(bucket.fetched.size(), kChunks + 2 - kill + 1);
        EXPECT_THAT(progress, SizeIs(kChunks + 2));
    }
}

}  // namespace
}  // namespace tide
