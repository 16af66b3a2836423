#include <gmock/gmock.h>

#include <QDir>
#include <QFile>
#include <QJsonDocument>

#include "support/fake_bucket.h"
#include "support/tide_fixture.h"

namespace quorvelle::testing {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::Not;
using ::testing::StartsWith;

class TideSync : public TideTest {};

INSTANTIATE_TEST_SUITE_P(Modes, TideSync, ::testing::Bool(),
                         [](const auto& mode) { return mode.param ? "json" : "text"; });

TEST_P(TideSync, InstallsUpdatesAndFetchesOnlyWhatChanged) {
    box.environment.insert("QUORVELLE_TOKEN", "secret");
    publishTide(server, "stable", "b1", kOne);
    expectSync("synced", whole("b1", kThreeChunks), retried("b1"));
    for (const SeenRequest& request : server.requests()) {
        EXPECT_EQ(request.header("Authorization"),
                  request.target.starts_with("/api/") ? "Bearer secret" : "(none)")
            << request.line();
    }
    expectFetched({"one", "left ", "right"});
    EXPECT_EQ(installed(), kOneInstalled);
    EXPECT_EQ(state(), (QStringList{"app.installed.json", "app.staging.build"}));
    EXPECT_EQ(object(stateBytes(".installed.json")),
              object(R"({"schema_version":1,"build":"b1","channel":"stable"})"));
    EXPECT_EQ(stateBytes(".staging.build"), "b1");

    box.write("apps/app/mine", "lost");
    publishTide(server, "stable", "b2", kTwo, ChunkForm::kZstd);
    expectSync("synced", whole("b2", kThreeChunks), retried("b2"));
    expectFetched({"two", "RIGHT"});
    EXPECT_EQ(installed(), kTwoInstalled);
}

TEST_P(TideSync, ReportsEachPercentOnceWithTheMegabytes) {
    struct Row {
        const char* name;
        TideFiles files;
        QString steps;
    };
    const std::string mebibyte(1048576, 'm');
    QStringList hundredAndOne;
    for (int percent = 0; percent <= 100; ++percent) {
        hundredAndOne += QString::number(percent) + "% (0.0 MB)";
    }
    for (const Row& row :
         {Row{"three sizes",
              {{"a", {mebibyte, mebibyte.substr(0, 524288)}}, {"b", {std::string(104858, 'x')}}},
              "33% (1.0 MB),66% (1.5 MB),100% (1.6 MB)"},
          Row{"more chunks than percents",
              {{"a", std::vector<std::string>(250, "x")}},
              hundredAndOne.join(u',')},
          Row{"empty files", {{"a", {}}, {"d/b", {}}}, "0% (0.0 MB)"}}) {
        SCOPED_TRACE(row.name);
        publishTide(server, "stable", row.name, row.files, ChunkForm::kZstd);
        expectSync("synced", whole(row.name, row.steps), retried(row.name));
    }
    EXPECT_EQ(installed(), (QStringList{"a=", "d/b="}));
}

TEST_P(TideSync, ChecksACurrentBuildAsToldAndRepairsIt) {
    struct Row {
        QJsonValue selfHeal;
        const char* word;  ///< of the check, none without
        QString a;         ///< what stands in the two files; "-" for no file
        QString b;
        QString result;  ///< suffix of the message, or what is wrong
        std::vector<std::string> fetched = {};
    };
    const QString good = "left right";
    for (const Row& row :
         {Row{0, "", "one", good, ""}, Row{0, "", "-", "cut", ""},
          Row{1, "checking", "one", good, " (checked)"},
          Row{1, "checking", "ONE", "LEFT RIGHT", " (checked)"},
          Row{1, "checking", "-", good, "1 file(s) missing, 0 corrupt", {"one"}},
          Row{1, "checking", "-", "-", "2 file(s) missing, 0 corrupt", {"one", "left ", "right"}},
          Row{1, "checking", "one", "left ", "0 file(s) missing, 1 corrupt", {"right"}},
          Row{2, "verifying", "one", good, " (verified)"},
          Row{2, "verifying", "one", "left wrong", "0 file(s) missing, 1 corrupt", {"right"}},
          Row{2,
              "verifying",
              "-",
              "left",
              "1 file(s) missing, 1 corrupt",
              {"one", "left ", "right"}},
          Row{QJsonValue::Undefined, "checking", "one", good, " (checked)"},
          Row{3, "checking", "ONE", good, " (checked)"},
          Row{-1, "checking", "ONE", good, " (checked)"}}) {
        SCOPED_TRACE(QString("%1 a=%2 b=%3").arg(row.word, row.a, row.b).toStdString());
        QDir(box.path("apps")).removeRecursively();
        subscribeWith("self_heal", row.selfHeal);
        installOne();
        box.write("apps/app/a", row.a.toUtf8());
        box.write("apps/app/d/b", row.b.toUtf8());
        for (const auto& [name, content] : {std::pair{"a", row.a}, {"d/b", row.b}}) {
            EXPECT_TRUE(content != "-" || QFile::remove(box.path("apps/app/") + name));
        }
        const QStringList before = installed();
        QStringList check;
        if (*row.word != '\0') {
            check += QString("'app': %1 install ...").arg(row.word);
        }
        if (row.fetched.empty()) {
            expectSync("current", QStringList{kChecking, kCheckingTide} + check,
                       "'app' is up to date" + row.result);
            EXPECT_EQ(server.lines().size(), check.isEmpty() ? 2U : 3U);
            EXPECT_EQ(installed(), before);
        } else {
            check += "'app': " + row.result + " - repairing ...";
            expectSync("synced", whole("b1", kThreeChunks, check), retried("b1"));
            std::vector<std::string> lines = server.lines();
            lines.erase(lines.begin() + 2);  // the check's own look at the manifest
            server.forget();
            EXPECT_EQ(lines.size(), 3 + row.fetched.size());
            for (std::size_t i = 0; i < row.fetched.size() && i + 3 < lines.size(); ++i) {
                EXPECT_EQ(lines[i + 3], "GET " + chunkTarget(row.fetched[i]));
            }
            expectOneStillInstalled();
        }
    }
}

TEST_P(TideSync, SkipsACheckThatCannotBeMade) {
    installOne();
    const QStringList lines{kChecking, kCheckingTide, "'app': checking install ..."};
    const auto skipped = [&](const QString& why) {
        expectSync("current", lines, "'app' is up to date (check skipped: " + why + ")");
    };
    ASSERT_TRUE(QFile::remove(box.path("apps/app/a")));
    server.onJson("GET", kManifestTarget, {}, 503);
    skipped("manifest URL -> HTTP 503");
    publishTide(server, "stable", "b1", {{"../x", {"x"}}});
    skipped("manifest contains an unsafe path: ../x");
    box.environment.insert("QUORVELLE_TIDE_PUBLIC_KEY", signingKey());
    server.onBytes("GET", kSignatureTarget, signatureOf("other"));
    skipped("signature does not verify");
    EXPECT_EQ(installed(), QStringList("d/b=left right"));
}

TEST_P(TideSync, DownloadsACurrentBuildWhenForcedOrGone) {
    subscribeWith("self_heal", 0);
    installOne();
    box.write("apps/app/a", "changed");
    expectSync("synced", whole("b1", kThreeChunks), retried("b1"), args("sync --force"));
    expectFetched({"one"});
    EXPECT_EQ(installed(), kOneInstalled);
    ASSERT_TRUE(QDir(box.path("apps/app")).removeRecursively());
    expectSync("synced", whole("b1", kThreeChunks), retried("b1"));
    expectFetched({"one", "left ", "right"});
    EXPECT_EQ(installed(), kOneInstalled);
}

TEST_P(TideSync, NamesABuildByItsTimeWhenItHasNoOtherName) {
    subscribeWith("self_heal", 0);
    publishTide(server, "stable", "", kOne);
    QJsonObject empty = tideDescriptor(server, "", kOne);
    empty.insert("created", 1700000000);
    QJsonObject absent = empty;
    absent.remove("build");
    for (const QJsonObject& descriptor : {empty, absent}) {
        server.onJson("GET", "/api/tide/sync/stable", descriptor);
        expectSync("synced", whole("1700000000", kThreeChunks), retried("1700000000"),
                   args("sync --force"));
        expectSync("current", {kChecking, kCheckingTide}, "'app' is up to date");
    }
    describe({{"build", ""}, {"created", qint64{5000000000}}}, kOne);
    expectSync("synced", whole("5000000000", kThreeChunks), retried("5000000000"));
}

TEST_P(TideSync, ReadsFromTheBucketWhatHasNoUrl) {
    FakeBucket bucket;
    const auto target = [](const std::string& key) { return "/tide%20test/" + key + " 200"; };
    const auto chunkKey = [](const std::string& bytes) {
        const std::string id = chunkId(bytes).toStdString();
        return "chunks/" + id.substr(0, 2) + '/' + id;
    };
    const auto publishInBucket = [&](const TideFiles& files) {
        for (const TideFile& file : files) {
            for (const std::string& bytes : file.chunks) {
                bucket.store(chunkKey(bytes), bytes);
            }
        }
        const QByteArray manifest = QJsonDocument(tideManifest("stable", files)).toJson();
        bucket.store("channels/stable/manifest.json", manifest.toStdString());
    };
    box.environment.insert("TIDE_S3_ENDPOINT", QString::fromStdString(bucket.endpoint()));
    box.environment.insert("TIDE_S3_REGION", FakeBucket::kRegion);
    box.environment.insert("TIDE_S3_BUCKET", FakeBucket::kName);
    box.environment.insert("TIDE_S3_KEY", FakeBucket::kKeyId);
    box.environment.insert("TIDE_S3_SECRET", FakeBucket::kSecret);

    publishTide(server, "stable", "b1", kOne);
    publishInBucket(kOne);
    describe({{"build", "b1"}, {"chunks", QJsonObject()}}, kOne);
    expectSync("synced", whole("b1", kThreeChunks), retried("b1"));
    expectFetched({});
    EXPECT_EQ(installed(), kOneInstalled);
    EXPECT_THAT(bucket.log(),
                ElementsAre("GET " + target(chunkKey("one")), "GET " + target(chunkKey("left ")),
                            "GET " + target(chunkKey("right"))));

    publishInBucket(kTwo);
    describe({{"chunks", QJsonObject()}, {"manifest_url", ""}}, kTwo);
    box.environment.insert("TIDE_S3_SECRET", "guess");
    expectSync("failed", downloading(""),
               "'app': Tide sync: GET channels/stable/manifest.json -> HTTP 403");
    box.environment.insert("TIDE_S3_SECRET", FakeBucket::kSecret);
    expectSync("synced", whole("b2", kThreeChunks), retried("b2"));
    EXPECT_EQ(installed(), kTwoInstalled);
    EXPECT_EQ(bucket.log().size(), 7U);
    EXPECT_THAT(server.lines(), Not(Contains(StartsWith("GET /store/"))));
}

TEST_P(TideSync, ResumesADownloadThatBroke) {
    const TideFiles files{{"a", {"first", "second", "third"}}};
    publishTide(server, "stable", "b1", files);
    server.onJson("GET", chunkTarget("second"), {}, 503);
    expectSync("failed", downloading("33% (0.0 MB)"),
               "'app': Tide sync: chunk URL " + chunkId("second") + " -> HTTP 503");
    expectFetched({"first", "second"});
    EXPECT_EQ(installed(), QStringList("(missing)"));
    publishTide(server, "stable", "b1", files);
    expectSync("synced", whole("b1", kThreeChunks), retried("b1"));
    expectFetched({"second", "third"});
    EXPECT_EQ(installed(), QStringList("a=firstsecondthird"));
}

TEST_P(TideSync, ResumesOnlyInTheStagingOfTheSameBuild) {
    publishTide(server, "stable", "b1", kOne);
    for (const char* marker : {"b1", " b1\n", "b10", "b0", ""}) {
        SCOPED_TRACE(marker);
        QDir(box.path("apps")).removeRecursively();
        writeState(".staging/a", "one");
        writeState(".staging/d/stray", "x");
        writeState(".staging.build", marker);
        expectSync("synced", whole("b1", kThreeChunks), retried("b1"));
        const bool kept = QByteArray(marker).trimmed() == "b1";
        expectFetched(kept ? std::vector<std::string>{"left ", "right"}
                           : std::vector<std::string>{"one", "left ", "right"});
        EXPECT_EQ(installed(), kOneInstalled);
        EXPECT_EQ(stateBytes(".staging.build"), "b1");
    }
}

TEST_P(TideSync, ResumesAfterABlockedActivation) {
    publishTide(server, "stable", "b1", kOne);
    box.write("apps/app", "a file");
    expectSync("blocked", whole("b1", kThreeChunks), notActivated("b1"));
    EXPECT_EQ(box.read("apps/app"), "a file");
    EXPECT_EQ(object(stateBytes(".staged.json")),
              object(R"({"schema_version":1,"build":"b1","channel":"stable","total_size":0})"));
    server.forget();
    ASSERT_TRUE(QFile::remove(box.path("apps/app")));
    expectSync("synced", whole("b1", kThreeChunks), retried("b1"));
    expectFetched({});
    EXPECT_EQ(installed(), kOneInstalled);
    EXPECT_EQ(state(), (QStringList{"app.installed.json", "app.staging.build"}));
}

TEST_P(TideSync, ForgetsABlockedBuildWhenItsStagingGoes) {
    publishTide(server, "stable", "b1", kOne);
    box.write("apps/app", "a file");
    expectSync("blocked", whole("b1", kThreeChunks), notActivated("b1"));
    ASSERT_TRUE(QFile::remove(box.path("apps/app")));
    publishTide(server, "stable", "b2", kTwo);
    server.onJson("GET", chunkTarget("RIGHT"), {}, 500);
    expectSync("failed", downloading("33% (0.0 MB),66% (0.0 MB)"),
               "'app': Tide sync: chunk URL " + chunkId("RIGHT") + " -> HTTP 500");
    EXPECT_EQ(state(), (QStringList{"app.staging", "app.staging.build"}));
    publish(server, "stable", "b1", {{"c", "cargo"}});
    expectSync("synced", SyncTest::whole("b1", {"c"}), synced("b1", 1, 5));
    EXPECT_EQ(installed(), QStringList("c=cargo"));
    EXPECT_EQ(state(), QStringList("app.installed.json"));
}

}  // namespace
}  // namespace quorvelle::testing
