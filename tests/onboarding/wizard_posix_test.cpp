#include <gmock/gmock.h>
#include <unistd.h>

#include <csignal>

#include "wizard_fixture.h"

namespace quorvelle::testing {

/// Before the third request nothing holds interrupts up: they end the process.
TEST_F(WizardTest, UndoesItsWorkWheneverItIsInterrupted) {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        cloudflare.interrupt = [signal] { ::kill(::getpid(), signal); };
        checkEverywhere(Fault::kInterrupt, 3);
    }
    EXPECT_GT(endings["undone"], 50);
    EXPECT_GT(endings["left behind"], 20);
    EXPECT_EQ(runWith(false, {{9, Fault::kInterrupt}}, usual + " --yes").err, "interrupted\n");
    EXPECT_EQ(runWith(false, {{10, Fault::kInterrupt}}, usual + " --yes").code, 0);
}

}  // namespace quorvelle::testing
