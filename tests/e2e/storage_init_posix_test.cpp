#include <unistd.h>

#include <csignal>

#include "support/fake_cloudflare.h"
#include "support/process_runner.h"

namespace quorvelle::testing {

namespace {

struct StorageInit : ::testing::Test {
    StorageInit() {
        box.environment.insert("QUORVELLE_CLOUDFLARE_API_URL", cloudflare.server.url());
        box.environment.insert("CLOUDFLARE_API_TOKEN", "operator-secret");
    }

    Sandbox box;
    FakeCloudflare cloudflare;
    const QStringList words{quorvelleProgram(), "storage",  "init",     "--yes",
                            "--bucket",         "builds-1", "--server", cloudflare.server.url()};
};

}  // namespace

/// The shell leaves its process id, which is the program's as well, for the signal.
TEST_F(StorageInit, UndoesItsWorkWhenItIsInterrupted) {
    const std::pair<std::size_t, int> table[] = {{6, SIGINT}, {9, SIGINT}, {9, SIGTERM}};
    for (const auto& [request, signal] : table) {
        SCOPED_TRACE(request);
        cloudflare.reset(false);
        cloudflare.failAt(request, ReplyFault::kInterrupt);
        cloudflare.interrupt = [this, number = signal] {
            ::kill(box.read("pid").trimmed().toInt(), number);
        };
        const QStringList shell{"-c", "echo $$ > pid; exec \"$@\"", "sh"};
        const Outcome outcome = box.runProgram("/bin/sh", shell + words);
        EXPECT_EQ(outcome.code, 2);
        EXPECT_EQ(outcome.err, "interrupted\n");
        EXPECT_EQ(cloudflare.left(), std::set<std::string>{});
        EXPECT_EQ(cloudflare.server.lines().back(), "DELETE /accounts/acc/r2/buckets/builds-1");
    }
}

TEST_F(StorageInit, KeepsAnEarlierCredentialThatItCannotReplace) {
    for (const char* earlier : {"(missing)", "earlier"}) {
        cloudflare.reset(false);
        if (*earlier != '(') {
            box.write("ci.env", earlier);
        }
        const QStringList limited{"--fsize=0", "--"};
        const Outcome outcome =
            box.runProgram("prlimit", limited + words + args("--ci-secret-file ci.env"));
        EXPECT_EQ(outcome.code, 2);
        EXPECT_TRUE(outcome.err.contains("could not be written to ci.env"))
            << outcome.err.toStdString();
        EXPECT_EQ(box.read("ci.env"), earlier);
    }
}

}  // namespace quorvelle::testing
