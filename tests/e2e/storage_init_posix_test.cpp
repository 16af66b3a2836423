#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>

#include "support/fake_cloudflare.h"
#include "support/outcomes.h"
#include "support/qt_printers.h"

namespace quorvelle::testing {

/// The shell leaves its process id, which is the program's as well, for the signal.
TEST(StorageInit, UndoesItsWorkWhenItIsInterrupted) {
    const std::pair<std::size_t, int> table[] = {{6, SIGINT}, {9, SIGINT}, {9, SIGTERM}};
    for (const auto& [request, signal] : table) {
        SCOPED_TRACE(request);
        Sandbox sandbox;
        FakeCloudflare cloudflare;
        cloudflare.failAt(request, ReplyFault::kInterrupt);
        cloudflare.interrupt = [&sandbox, number = signal] {
            ::kill(sandbox.read("pid").trimmed().toInt(), number);
        };
        sandbox.environment.insert("QUORVELLE_CLOUDFLARE_API_URL", cloudflare.server.url());
        sandbox.environment.insert("CLOUDFLARE_API_TOKEN", "operator-secret");
        const Outcome outcome = sandbox.runProgram(
            "/bin/sh",
            {"-c", "echo $$ > pid; exec \"$@\"", "sh", quorvelleProgram(), "storage", "init",
             "--yes", "--bucket", "builds-1", "--server", cloudflare.server.url()});
        EXPECT_EQ(outcome.code, 2);
        EXPECT_EQ(outcome.err, "interrupted\n");
        EXPECT_EQ(cloudflare.left(), std::set<std::string>{});
        EXPECT_EQ(cloudflare.server.lines().back(), "DELETE /accounts/acc/r2/buckets/builds-1");
    }
}

TEST(StorageInit, KeepsAnEarlierCredentialThatItCannotReplace) {
    for (const char* earlier : {"(missing)", "earlier"}) {
        Sandbox sandbox;
        FakeCloudflare cloudflare;
        sandbox.environment.insert("QUORVELLE_CLOUDFLARE_API_URL", cloudflare.server.url());
        sandbox.environment.insert("CLOUDFLARE_API_TOKEN", "operator-secret");
        if (*earlier != '(') {
            sandbox.write("ci.env", earlier);
        }
        const Outcome outcome = sandbox.runProgram(
            "prlimit",
            QStringList{"--fsize=0", "--", quorvelleProgram()} +
                args("storage init --yes --bucket builds-1 --ci-secret-file ci.env --server " +
                     cloudflare.server.url()));
        EXPECT_EQ(outcome.code, 2);
        EXPECT_TRUE(outcome.err.contains("could not be written to ci.env"))
            << outcome.err.toStdString();
        EXPECT_EQ(sandbox.read("ci.env"), earlier);
    }
}

}  // namespace quorvelle::testing
