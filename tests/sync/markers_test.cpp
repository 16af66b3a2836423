#include "sync/markers.h"

#include <gmock/gmock.h>

#include "support/notation.h"
#include "support/process_runner.h"
#include "support/qt_printers.h"

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
    struct Row {
        const char* name;
        const char* bytes;
    };
    for (const Row& row :
         {Row{"empty", ""}, Row{"cut", "{\"build\":\"b\""}, Row{"array", "[{\"build\":\"b\"}]"},
          Row{"other keys", "{\"b\":1}"},
          Row{"other types", "{\"build\":1,\"channel\":[],\"total_size\":\"5\"}"}}) {
        SCOPED_TRACE(row.name);
        const Sandbox sandbox;
        sandbox.write(kInstalled, row.bytes);
        sandbox.write(kStaged, row.bytes);
        EXPECT_EQ(readInstalledMarker(sandbox.path("app")).build, QString());
        EXPECT_EQ(readStagedMarker(sandbox.path("app")).build, QString());
        EXPECT_EQ(readStagedMarker(sandbox.path("app")).totalSize, 0);
    }
    const Sandbox empty;
    EXPECT_EQ(readInstalledMarker(empty.path("app")).build, QString());
}

TEST(Markers, AreNotWrittenOverAFolder) {
    const Sandbox sandbox;
    sandbox.write(QString(kInstalled) + "/x", "kept");
    sandbox.write(QString(kStaged) + "/x", "kept");
    EXPECT_FALSE(writeInstalledMarker(sandbox.path("app"), {"b", "c"}));
    EXPECT_FALSE(writeStagedMarker(sandbox.path("app"), {"b", "c", 1}));
    EXPECT_EQ(readInstalledMarker(sandbox.path("app")).build, QString());
    EXPECT_EQ(sandbox.tree("."),
              QStringList({QString(kInstalled) + "/x=kept", QString(kStaged) + "/x=kept"}));
}

}  // namespace quorvelle::testing
