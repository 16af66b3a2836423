#include "support/sync_fixture.h"

namespace quorvelle::testing {
namespace {

using TideSync = TideTest;

TEST_F(TideSync, InstallsUpdatesAndFetchesOnlyWhatChanged) {
    box.environment.insert("QUORVELLE_TOKEN", "secret");
    publishTide(server, "stable", "b1", kOne);
    expectSync("synced", whole("b1", kThreeChunks), retried("b1"));
    for (const SeenRequest& request : server.requests()) {
        EXPECT_EQ(request.header("Authorization"),
                  request.target.starts_with("/api/") ? "Bearer secret" : "(none)")
            << request.line();
    }
    EXPECT_EQ(server.connections("/store/"), 1U);
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

TEST_F(TideSync, ReportsEachPercentOnceWithTheMegabytes) {
    const std::string mebibyte(1048576, 'm');
    QStringList hundredAndOne;
    for (int percent = 0; percent <= 100; ++percent) {
        hundredAndOne += QString::number(percent) + "% (0.0 MB)";
    }
    const std::pair<TideFiles, QString> table[] = {
        {{{"a", {mebibyte, mebibyte.substr(0, 524288)}}, {"b", {std::string(104858, 'x')}}},
         "33% (1.0 MB),66% (1.5 MB),100% (1.6 MB)"},
        {{{"a", std::vector<std::string>(250, "x")}}, hundredAndOne.join(u',')},
        {{{"a", {}}, {"d/b", {}}}, "0% (0.0 MB)"}};
    for (const auto& [files, steps] : table) {
        const QString build = "b" + QString::number(steps.size());
        publishTide(server, "stable", build, files, ChunkForm::kZstd);
        expectSync("synced", whole(build, steps), retried(build));
    }
    EXPECT_EQ(installed(), (QStringList{"a=", "d/b="}));
}

TEST_F(TideSync, ChecksACurrentBuildAsToldAndRepairsIt) {
    // Each row: the setting, the check's word, the two files ("-" for none), what the message
    // ends in or what is wrong, the chunks that are fetched.
    for (const QStringList& row : rows(R"(
         0 |           | -   | cut        |                                |
         1 | checking  | ONE | LEFT RIGHT | (checked)                      |
         1 | checking  | -   | -          | 2 file(s) missing, 0 corrupt   | one,left ,right
         1 | checking  | one | left       | 0 file(s) missing, 1 corrupt   | left ,right
         2 | verifying | one | left right | (verified)                     |
         2 | verifying | -   | left wrong | 1 file(s) missing, 1 corrupt   | one,right
        -1 | checking  | one | left right | (checked)                      |
         3 | checking  | ONE | left right | (checked)                      |)")) {
        SCOPED_TRACE(row.join('|').toStdString());
        const QStringList fetched = row[5].split(',', Qt::SkipEmptyParts);
        QDir(box.path("apps")).removeRecursively();
        subscribeWith("self_heal", row[0].toInt());
        installOne();
        box.write("apps/app/a", row[2].toUtf8());
        box.write("apps/app/d/b", row[3].toUtf8());
        for (const auto& [name, content] : {std::pair{"a", row[2]}, {"d/b", row[3]}}) {
            EXPECT_TRUE(content != "-" || QFile::remove(box.path("apps/app/") + name));
        }
        const QStringList before = installed();
        QStringList check;
        if (!row[1].isEmpty()) {
            check += "'app': " + row[1] + " install ...";
        }
        if (fetched.isEmpty()) {
            expectSync("current", QStringList{kChecking, kCheckingTide} + check,
                       QString("'app' is up to date " + row[4]).trimmed());
            EXPECT_EQ(server.lines().size(), check.isEmpty() ? 2U : 3U);
            EXPECT_EQ(installed(), before);
        } else {
            check += "'app': " + row[4] + " - repairing ...";
            expectSync("synced", whole("b1", kThreeChunks, check), retried("b1"));
            std::vector<std::string> lines = server.lines();
            lines.erase(lines.begin() + 2);  // the check's own look at the manifest
            server.forget();
            ASSERT_EQ(qsizetype(lines.size()), 3 + fetched.size());
            for (qsizetype i = 0; i < fetched.size(); ++i) {
                EXPECT_EQ(lines[std::size_t(i) + 3],
                          "GET " + chunkTarget(fetched[i].toStdString()));
            }
            expectOneStillInstalled();
        }
    }
}

TEST_F(TideSync, SkipsACheckThatCannotBeMade) {
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

TEST_F(TideSync, DownloadsACurrentBuildWhenForcedOrGone) {
    subscribeWith("self_heal", 0);
    installOne();
    box.write("apps/app/a", "changed");
    expectSync("synced", whole("b1", kThreeChunks), retried("b1"), args("sync --force"));
    expectFetched({"one"});
    EXPECT_EQ(installed(), kOneInstalled);
    ASSERT_TRUE(QDir(box.path("apps/app")).removeRecursively());
    expectSync("synced", whole("b1", kThreeChunks), retried("b1"));
    expectFetched({"one", "left ", "right"});
}

TEST_F(TideSync, FetchesNothingThatTheDiskHasNoRoomFor) {
    installOne();
    publishTide(server, "stable", "b2", kTwo);
    // A pebibyte and a half megabyte; the free space is whatever it is.
    QString manifest = QString::fromStdString(tideManifest("stable", kTwo));
    for (const char* key : {"\"n\" : ", "\"size\" : "}) {
        manifest.replace(key + QString("3"), key + QString("1125899907366912"));
    }
    serveManifest(server, manifest.toStdString());
    const Outcome got = box.run({"sync"});
    EXPECT_EQ(got.code, 2);
    EXPECT_TRUE(got.err.startsWith("'app': not enough disk space (1073741825 MB needed, ") &&
                got.err.endsWith(" MB free)\n"))
        << got.err.toStdString();
    expectFetched({});
    expectOneStillInstalled();
}

// Only for its speed: whatever stands in the list, the build is what the manifest says.
TEST_F(TideSync, IsNotMisledByARememberedListOfChunks) {
    const auto list = [&] {
        const QDir folder(cacheFolder(box.path("cache")) + "/quorvelle");
        QStringList own;
        for (const QString& name : folder.entryList(QDir::Files)) {
            const QString path = QDir(box.path("")).relativeFilePath(folder.filePath(name));
            if (box.read(path).contains(box.path("apps").toUtf8())) {
                own.append(path);
            }
        }
        EXPECT_EQ(own.size(), 1);
        return own.value(0);
    };
    const auto update = [this](const std::vector<std::string>& fetched) {
        publishTide(server, "stable", "b2", kTwo);
        expectSync("synced", whole("b2", kThreeChunks), retried("b2"));
        expectFetched(fetched);
        EXPECT_EQ(installed(), kTwoInstalled);
    };
    box.write("elsewhere/gone", "");
    subscribe({subscription("gone", "stable")});
    publishTide(server, "stable", "b1", kOne);
    EXPECT_EQ(box.run({"sync"}).code, 0);
    ASSERT_TRUE(QDir(box.path("apps/gone")).removeRecursively());
    subscribe({subscription("app", "stable")});
    server.forget();
    installOne();
    const QString path = list();
    const QByteArray good = box.read(path);

    update({"two", "RIGHT"});
    // Half of what it says is true: "a" has been replaced by bytes of the same length and time.
    installOne();
    const QDateTime time = QFileInfo(box.path("apps/app/d/b")).lastModified();
    box.write("apps/app/d/b", "LEFT right");
    QFile changed(box.path("apps/app/d/b"));
    ASSERT_TRUE(changed.open(QIODevice::ReadWrite) &&
                changed.setFileTime(time, QFileDevice::FileModificationTime));
    changed.close();
    update({"two", "left ", "RIGHT"});
    for (const QByteArray& bytes : {QByteArray(), good.left(good.size() - 1), good + 'x',
                                    QByteArray(good).replace("01", "02"), QByteArray("{}")}) {
        installOne();
        box.write(path, bytes);
        update({"two", "RIGHT"});
        EXPECT_NE(box.read(path), bytes);
    }
}

TEST_F(TideSync, NamesABuildByItsTimeWhenItHasNoOtherName) {
    subscribeWith("self_heal", 0);
    publishTide(server, "stable", "", kOne);
    QJsonObject descriptor = tideDescriptor(server, "", kOne);
    descriptor.insert("created", 1700000000);
    descriptor.remove("build");
    server.onJson("GET", "/api/tide/sync/stable", descriptor);
    expectSync("synced", whole("1700000000", kThreeChunks), retried("1700000000"));
    expectSync("current", {kChecking, kCheckingTide}, "'app' is up to date");
}

/// A server that says nothing must not keep the lock for ever.
TEST_F(TideSync, EndsWithAServerThatSaysNothing) {
    publishTide(server, "stable", "b1", kOne);
    box.environment.insert("QUORVELLE_IDLE_TIMEOUT", "1");
    server.on("GET", kManifestTarget,
              [](const auto&, auto&) { std::this_thread::sleep_for(std::chrono::seconds(2)); });
    expectSync("failed", downloading(""), "'app': Tide sync: curl: no data for 1 s");
}

TEST_F(TideSync, ReadsFromTheBucketWhatHasNoUrl) {
    FakeServer bucket;
    const auto chunkTargetInBucket = [](const std::string& bytes) {
        const std::string id = chunkId(bytes).toStdString();
        return "/tide%20test/chunks/" + id.substr(0, 2) + '/' + id;
    };
    const std::string manifestTarget = "/tide%20test/channels/stable/manifest.json";
    for (const std::string bytes : {"one", "left ", "right"}) {
        bucket.onBytes("GET", chunkTargetInBucket(bytes), bytes);
    }
    bucket.onBytes("GET", manifestTarget, tideManifest("stable", kOne));
    box.environment.insert("TIDE_S3_ENDPOINT", bucket.url());
    box.environment.insert("TIDE_S3_REGION", "eu-test-1");
    box.environment.insert("TIDE_S3_BUCKET", "tide test");
    box.environment.insert("TIDE_S3_KEY", "AKFAKE");
    box.environment.insert("TIDE_S3_SECRET", "secret/+=");

    publishTide(server, "stable", "b1", kOne);
    describe({{"build", "b1"}, {"chunks", QJsonObject()}, {"manifest_url", ""}}, kOne);
    expectSync("synced", whole("b1", kThreeChunks), retried("b1"));
    EXPECT_THAT(server.lines(), Not(Contains(StartsWith("GET /store/"))));
    EXPECT_EQ(installed(), kOneInstalled);
    EXPECT_THAT(
        bucket.lines(),
        ElementsAre("GET " + manifestTarget, "GET " + chunkTargetInBucket("one"),
                    "GET " + chunkTargetInBucket("left "), "GET " + chunkTargetInBucket("right")));
    EXPECT_EQ(bucket.connections("/tide%20test/"), 1U);
    EXPECT_THAT(bucket.requests().back().header("Authorization"),
                StartsWith("AWS4-HMAC-SHA256 Credential=AKFAKE/"));
}

TEST_F(TideSync, ResumesOnlyInTheStagingOfTheSameBuild) {
    publishTide(server, "stable", "b1", kOne);
    for (const char* marker : {" b1\n", "b10", ""}) {
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

TEST_F(TideSync, ResumesAfterABlockedActivation) {
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

TEST_F(TideSync, LeavesTheInstallAloneWhenItFails) {
    installOne();
    const auto fails = [this](const QStringList& progress, const QString& why) {
        expectSync("failed", progress, "'app': " + why);
        expectOneStillInstalled();
    };
    server.onJson("GET", "/api/tide/sync/stable", {{"error", "no %1"}}, 403);
    fails({kChecking, kCheckingTide}, "Tide sync failed (HTTP 403): no %1");
    describe({{"chunks", QJsonObject{{"x", QJsonArray()}}}}, kTwo);
    fails({kChecking, kCheckingTide},
          "bad Tide descriptor: manifest parse error: malformed manifest");
    publishTide(server, "stable", "b2", kTwo);
    server.onJson("GET", chunkTarget("two"), {}, 404);
    fails(downloading(""), "Tide sync: chunk URL " + chunkId("two") + " -> HTTP 404");
    describe({{"chunks", QJsonObject()}}, {});
    fails(downloading(""),
          "Tide sync: no chunk URLs and no bucket credentials (TIDE_S3_ENDPOINT, TIDE_S3_BUCKET, "
          "TIDE_S3_KEY, TIDE_S3_SECRET)");
    publishTide(server, "stable", "b2", kTwo);
    expectSync("synced", whole("b2", kThreeChunks), retried("b2"));
    EXPECT_EQ(installed(), kTwoInstalled);
}

/// As one of cargo does.
TEST_F(TideSync, NeedsItsStagingDirectory) {
    const QString why =
        "'app': cannot create staging dir " + box.path("apps/.quorvelle/app.staging");
    box.write("apps/.quorvelle", "in the way");
    publishTide(server, "stable", "b1", kOne);
    expectSync("failed", {kChecking, kCheckingTide}, why);
    publish(server, "stable", "b", {{"a", "a"}});
    expectSync("failed", fetching("b", {}), why);
    EXPECT_EQ(box.tree("apps"), QStringList(".quorvelle=in the way"));
}

TEST_F(TideSync, TakesTheKeyOfTheSubscriptionThenTheServerThenTheEnvironment) {
    const auto text = [](const QString& word) {
        return QString(word).replace("good", signingKey()).replace("other", QString(64, '0'));
    };
    const auto withKey = [&text](QJsonObject entry, const QString& cell) {
        if (!cell.isEmpty()) {
            entry["tide_public_key"] = json(text("{'key':" + cell + '}').toUtf8())["key"];
        }
        return entry;
    };
    publishTide(server, "stable", "b", kOne);
    for (const QStringList& row : rows(R"(
        'good'           | 'bad'    | bad  | fits
        'bad'            | 'good'   | good |
                         | 'good'   | bad  | fits
                         | 'bad'    | good |
                         |          | good | fits
                         |          | bad  |
        ['other','good'] | 'bad'    | bad  | fits
                         | ['good'] |      | fits
        ['good','bad']   | 'good'   |      |
        []               | 'good'   |      |
        ''               | 'good'   |      |
        7                | 'good'   |      |
                         | ['good',7] | good |)")) {
        SCOPED_TRACE(row.join(',').toStdString());
        // Found also where the addresses differ by slashes.
        box.writeConfig(
            {{"subscriptions", QJsonArray{withKey(subscription("app", "stable"), row[0])}},
             {"servers", QJsonArray{withKey({{"server", server.url() + "//"}}, row[1])}}});
        box.environment.insert("QUORVELLE_TIDE_PUBLIC_KEY", text(row[2]));
        if (row[3] == "fits") {
            expectSync("synced", whole("b", kThreeChunks), retried("b"), args("sync --force"));
        } else {
            expectSync("failed", downloading(""), "'app': Tide sync: bad public key",
                       args("sync --force"));
        }
        EXPECT_THAT(server.lines(), Contains(std::string("GET ") + kSignatureTarget));
    }
}

TEST_F(TideSync, RefusesAnotherEngineWhereTheKeyIsConfigured) {
    server.onJson("GET", "/api/channels/stable", {{"build", "b9"}});
    box.environment.insert("QUORVELLE_TIDE_PUBLIC_KEY", signingKey());
    box.run(args("sync"));
    EXPECT_THAT(server.lines(), Contains("GET /api/builds/b9"));
    for (const char* at : {"servers", "subscriptions"}) {
        QJsonObject document = box.config();
        QJsonObject entry = subscription("app", "stable");
        document["servers"] = QJsonArray{QJsonObject{{"server", server.url()}}};
        document["subscriptions"] = QJsonArray{entry};
        entry = document[at][0].toObject();
        entry["tide_public_key"] = signingKey();
        document[at] = QJsonArray{entry};
        box.writeConfig(document);
        expectSync("failed", {kChecking},
                   "'app': channel 'stable' is not signed but verification is required");
    }
}

}  // namespace
}  // namespace quorvelle::testing
