#include <gmock/gmock.h>

#include "support/fake_server.h"
#include "support/notation.h"
#include "support/outcomes.h"
#include "support/qt_printers.h"

namespace quorvelle::testing {
namespace {

TEST(RunOnWindows, HandsWholeArgumentsToABatchFile) {
    FakeServer server;
    const Sandbox box;
    box.write("my app/my tool.bat", "@echo off\r\necho %1 %2 %3\r\nexit /b 3\r\n");
    server.onJson("GET", "/api/channels/c",
                  json("{'launch_targets':[{'label':'T','exe':'my tool.bat'}]}"));
    box.writeConfig({{"schema_version", 2},
                     {"subscriptions", QJsonArray{QJsonObject{{"name", "app"},
                                                              {"server", server.url()},
                                                              {"channel", "c"},
                                                              {"dir", box.path("my app")}}}}});
    const Outcome got = box.run({"run", "--wait", "app", "--", "a b", "c&d", "e"});
    EXPECT_EQ(got.code, 3) << got.err.toStdString();
    EXPECT_EQ(got.out, "\"a b\" \"c&d\" e\r\n");
}

}  // namespace
}  // namespace quorvelle::testing
