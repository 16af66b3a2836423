#include <gmock/gmock.h>

#include <QJsonDocument>
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
    const auto manifest = [this](const QJsonObject& changes) {
        QJsonObject document = tideManifest("stable", kTwo);
        for (auto at = changes.begin(); at != changes.end(); ++at) {
            document.insert(at.key(), at.value());
        }
        serveManifest(server, QJsonDocument(document).toJson().toStdString());
    };
    const auto paths = [&](const QString& path) {
        manifest(tideManifest("stable", {{"new", {"two"}}, {path, {"x"}}}));
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
        {"manifest refused", [&] { server.onJson("GET", kManifestTarget, {}, 403); },
         "manifest URL -> HTTP 403"},
        {"schema",
         [&] {
             manifest({{"schema", 2}});
         },
         "unsupported manifest schema"},
        {"channel",
         [&] {
             manifest({{"channel", "beta"}});
         },
         "manifest is for channel 'beta', not 'stable'"},
        {"no files",
         [&] {
             manifest({{"files", QJsonArray()}});
         },
         "manifest lists no files"},
        {"unsafe path", [&] { paths("../x"); }, "manifest contains an unsafe path: ../x"},
        {"absolute path", [&] { paths("/x"); }, "manifest contains an unsafe path: /x"},
        {"path twice", [&] { paths("new"); }, "manifest lists the path twice: new"}};
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
    struct Row {
        const char* own;
        const char* servers;
        const char* environment;
        bool fits;
    };
    const auto key = [](const char* word) { return QString(word).replace("good", signingKey()); };
    publishTide(server, "stable", "b", kOne);
    for (const Row& row : {Row{"good", "bad", "bad", true}, Row{"bad", "good", "good", false},
                           Row{"", "good", "bad", true}, Row{"", "bad", "good", false},
                           Row{"", "", "good", true}, Row{"", "", "bad", false}}) {
        SCOPED_TRACE(std::string(row.own) + ',' + row.servers + ',' + row.environment);
        QJsonObject entry = subscription("app", "stable");
        entry.insert("tide_public_key", key(row.own));
        box.writeConfig(
            {{"schema_version", 2},
             {"subscriptions", QJsonArray{entry}},
             {"servers", QJsonArray{QJsonObject{{"server", server.url()},
                                                {"tide_public_key", key(row.servers)}}}}});
        box.environment.insert("QUORVELLE_TIDE_PUBLIC_KEY", key(row.environment));
        if (row.fits) {
            expectSync("synced", whole("b", kThreeChunks), retried("b"), args("sync --force"));
        } else {
            expectSync("failed", downloading(""), "'app': Tide sync: bad public key",
                       args("sync --force"));
        }
        EXPECT_THAT(server.lines(), Contains(std::string("GET ") + kSignatureTarget));
    }
}

TEST_P(TideRefusal, RefusesWhatTheKeyDidNotSign) {
    const std::string manifest = QJsonDocument(tideManifest("stable", kTwo)).toJson().toStdString();
    const std::string signature = signatureOf(manifest);
    const QString none = "channel 'stable' has no signature but verification is required";
    const auto sign = [this](const std::string& text) {
        server.onBytes("GET", kSignatureTarget, text);
    };
    struct Row {
        const char* name;
        std::function<void()> harm;
        QString message;
    };
    const Row rows[] = {
        {"a blank more", [&] { server.onBytes("GET", kManifestTarget, manifest + ' '); },
         "signature does not verify"},
        {"of another text", [&] { sign(signatureOf("x")); }, "signature does not verify"},
        {"a line end more", [&] { sign(signature + '\n'); }, "bad signature"},
        {"cut", [&] { sign(signature.substr(2)); }, "bad signature"},
        {"gone", [&] { server.onJson("GET", kSignatureTarget, {}, 404); }, none},
        {"not named",
         [&] {
             describe({{"manifest_sig_url", ""}}, kTwo);
         },
         none},
        {"for every channel",
         [&] {
             QJsonObject document = tideManifest("stable", kTwo);
             document.remove("channel");
             serveManifest(server, QJsonDocument(document).toJson().toStdString());
         },
         "manifest names no channel but verification is required"}};
    installOne();
    box.environment.insert("QUORVELLE_TIDE_PUBLIC_KEY", signingKey());
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        publishTide(server, "stable", "b2", kTwo);
        row.harm();
        server.forget();
        expectSync("failed", downloading(""), "'app': Tide sync: " + row.message);
        EXPECT_THAT(server.lines(), Not(Contains("GET " + chunkTarget("two"))));
        expectOneStillInstalled();
    }
}

}  // namespace
}  // namespace quorvelle::testing
