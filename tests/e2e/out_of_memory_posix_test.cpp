#include "support/server_fixture.h"

namespace quorvelle::testing {

using OutOfMemory = ProgramTest;

/// The main thread reads the descriptor, a worker the manifest; 700 MB are less than either
/// takes and more than the program.
TEST_F(OutOfMemory, EndsTheCommandAndSaysSo) {
    if (QUORVELLE_SANITIZED) {
        GTEST_SKIP() << "a sanitizer takes address space for itself";
    }
    std::string many = R"({"schema": 1, "x": [)";
    while (many.size() < 15'900'000) {
        many += "0,";
    }
    many += "0]}";
    box.follow(server.url(), "c");
    server.onJson("GET", "/api/channels/c", {{"engine", "tide"}});
    server.onBytes("GET", "/store/m", many);
    const QString limited = "ulimit -v 700000; exec '" + quorvelleProgram() + "' \"$@\"";
    for (const bool onWorker : {true, false}) {
        if (onWorker) {
            server.onJson("GET", "/api/tide/sync/c", {{"manifest_url", server.url() + "/store/m"}});
        } else {
            server.onBytes("GET", "/api/tide/sync/c", many);
        }
        Outcome got = box.runProgram("/bin/sh", {"-c", limited, "sh", "sync"});
        EXPECT_EQ(got.code, 2);
        EXPECT_EQ(got.err, "out of memory\n");
        got = box.runProgram("/bin/sh", {"-c", limited, "sh", "sync", "--json"});
        EXPECT_EQ(got.code, 2);
        EXPECT_EQ(got.json(), (QJsonObject{{"error", "out of memory"}}));
    }
}

}  // namespace quorvelle::testing
