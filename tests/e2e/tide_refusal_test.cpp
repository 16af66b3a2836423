#include <gmock/gmock.h>

#include <functional>

#include "support/tide_fixture.h"

namespace quorvelle::testing {
namespace {

using ::testing::Contains;
using ::testing::Not;

class TideRefusal : public TideTest {};

INSTANTIATE_TEST_SUITE_P(Modes, TideRefusal, ::testing::Bool(),
                         [](const auto& mode) { return mode.param ? "json" : "text"; });

TEST_P(TideRefusal, LeavesTheInstallAloneWhenTheDownloadFails) {
    const QString two = chunkId("two");
    const auto publish = [this](const QString& channel, const TideFiles& files) {
        serveManifest(server, tideManifest(channel, files));
    };
    struct Row {
        const char* name;
        std::function<void()> harm;
        QString message;
    };
    const Row rows[] = {
        {"chunk gone", [&] { server.onJson("GET", chunkTarget("two"), {}, 404); },
         "chunk URL " + two + " -> HTTP 404"},
        {"chunk with other bytes", [&] { server.onBytes("GET", chunkTarget("two"), "owt"); },
         "chunk " + two + " failed to decode/verify (corrupt or tampered)"},
        {"chunk without a URL", [&] { describe({}, kOne); }, "no presigned URL for chunk " + two},
        {"no access to chunks",
         [&] {
             describe({{"chunks", QJsonObject()}}, {});
         },
         "no chunk URLs and no bucket credentials (TIDE_S3_ENDPOINT, TIDE_S3_BUCKET, TIDE_S3_KEY, "
         "TIDE_S3_SECRET)"},
        {"channel",
         [&] {
             publish("beta", {{"new", {"two"}}});
         },
         "manifest is for channel 'beta', not 'stable'"},
        {"unsafe path",
         [&] {
             publish("stable", {{"new", {"two"}}, {"../x", {"x"}}});
         },
         "manifest contains an unsafe path: ../x"}};
    installOne();
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        publishTide(server, "stable", "b2", kTwo);
        row.harm();
        expectSync("failed", downloading(""), "'app': Tide sync: " + row.message);
        expectOneStillInstalled();
        EXPECT_EQ(box.tree("apps").filter("x"), QStringList());
    }
    publishTide(server, "stable", "b2", kTwo);
    expectSync("synced", whole("b2", kThreeChunks), retried("b2"));
    EXPECT_EQ(installed(), kTwoInstalled);
}

TEST_P(TideRefusal, EndsBeforeTheDownload) {
    installOne();
    const QStringList lines{kChecking, kCheckingTide};
    const QString bad = "'app': bad Tide descriptor: manifest parse error: ";
    server.onJson("GET", "/api/tide/sync/stable", {{"error", "no %1"}}, 403);
    expectSync("failed", lines, "'app': Tide sync failed (HTTP 403): no %1");
    server.onBytes("GET", "/api/tide/sync/stable", "fine");
    expectSync("failed", lines,
               bad + "* Line 1, Column 1\n  Syntax error: value, object or array expected.\n");
    describe({{"chunks", QJsonObject{{"x", QJsonArray()}}}}, kTwo);
    expectSync("failed", lines, bad + "malformed manifest");
    expectOneStillInstalled();
}

TEST_P(TideRefusal, NeedsItsStagingDirectory) {
    publishTide(server, "stable", "b1", kOne);
    box.write("apps/.quorvelle", "in the way");
    expectSync("failed", {kChecking, kCheckingTide},
               "'app': cannot create staging dir " + box.path("apps/.quorvelle/app.staging"));
    EXPECT_EQ(box.tree("apps"), QStringList(".quorvelle=in the way"));
}

TEST_P(TideRefusal, TakesTheKeyOfTheSubscriptionThenTheServerThenTheEnvironment) {
    const auto key = [](const QString& word) {
        return QString(word).replace("good", signingKey());
    };
    publishTide(server, "stable", "b", kOne);
    for (const QStringList& row : rows(R"(
        good | bad  | bad  | fits
        bad  | good | good |
             | good | bad  | fits
             | bad  | good |
             |      | good | fits
             |      | bad  |)")) {
        SCOPED_TRACE(row.join(',').toStdString());
        QJsonObject entry = subscription("app", "stable");
        entry.insert("tide_public_key", key(row[0]));
        box.writeConfig({{"schema_version", 2},
                         {"subscriptions", QJsonArray{entry}},
                         {"servers", QJsonArray{QJsonObject{{"server", server.url()},
                                                            {"tide_public_key", key(row[1])}}}}});
        box.environment.insert("QUORVELLE_TIDE_PUBLIC_KEY", key(row[2]));
        if (row[3] == "fits") {
            expectSync("synced", whole("b", kThreeChunks), retried("b"), args("sync --force"));
        } else {
            expectSync("failed", downloading(""), "'app': Tide sync: bad public key",
                       args("sync --force"));
        }
        EXPECT_THAT(server.lines(), Contains(std::string("GET ") + kSignatureTarget));
    }
}

TEST_P(TideRefusal, RefusesWhatTheKeyDidNotSign) {
    installOne();
    box.environment.insert("QUORVELLE_TIDE_PUBLIC_KEY", signingKey());
    publishTide(server, "stable", "b2", kTwo);
    server.onBytes("GET", kSignatureTarget, signatureOf("x"));
    expectSync("failed", downloading(""), "'app': Tide sync: signature does not verify");
    server.onJson("GET", kSignatureTarget, {}, 404);
    expectSync("failed", downloading(""),
               "'app': Tide sync: channel 'stable' has no signature but verification is required");
    EXPECT_THAT(server.lines(), Not(Contains("GET " + chunkTarget("two"))));
    expectOneStillInstalled();
}

}  // namespace
}  // namespace quorvelle::testing
