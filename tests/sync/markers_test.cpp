#include "sync/markers.h"

#include <gmock/gmock.h>

#include "support/notation.h"
#include "support/process_runner.h"

namespace quorvelle::testing {

namespace {

constexpr auto kInstalled = ".quorvelle/app.installed.json";
constexpr auto kStaged = ".quorvelle/app.staged.json";

}  // namespace

TEST(Markers, AreWrittenAsIndentedJson) {
    const Sandbox sandbox;
    const QString dir = sandbox.path("app");
    EXPECT_TRUE(writeInstalledMarker(dir, {"b\"1", "größe"}));
    EXPECT_EQ(sandbox.read(kInstalled),
              "{\n    \"build\": \"b\\\"1\",\n    \"channel\": \"größe\",\n"
              "    \"schema_version\": 1\n}\n");
    EXPECT_TRUE(writeStagedMarker(dir, {"b2", "c", 6000000000}));
    EXPECT_EQ(sandbox.read(kStaged),
              "{\n    \"build\": \"b2\",\n    \"channel\": \"c\",\n"
              "    \"schema_version\": 1,\n    \"total_size\": 6000000000\n}\n");

    EXPECT_EQ(readInstalledMarker(dir).build, QString("b\"1"));
    EXPECT_EQ(readInstalledMarker(dir).channel, QString("größe"));
    EXPECT_EQ(readStagedMarker(dir).build, QString("b2"));
    EXPECT_EQ(readStagedMarker(dir).channel, QString("c"));
    EXPECT_EQ(readStagedMarker(dir).totalSize, 6000000000);
    removeStagedMarker(dir);
    EXPECT_EQ(sandbox.read(kStaged), "(missing)");
}

TEST(Markers, ReadAsEmptyWhenTheyHoldNoObject) {
    for (const char* bytes : {"", "{\"build\":\"b\"", "[{\"build\":\"b\"}]",
                              "{\"build\":1,\"channel\":[],\"total_size\":\"5\"}"}) {
        SCOPED_TRACE(bytes);
        const Sandbox sandbox;
        sandbox.write(kInstalled, bytes);
        sandbox.write(kStaged, bytes);
        EXPECT_EQ(readInstalledMarker(sandbox.path("app")).build, QString());
        EXPECT_EQ(readStagedMarker(sandbox.path("app")).build, QString());
        EXPECT_EQ(readStagedMarker(sandbox.path("app")).totalSize, 0);
    }
    const Sandbox empty;
    EXPECT_EQ(readInstalledMarker(empty.path("app")).build, QString());
}

}  // namespace quorvelle::testing
