#include "support/sync_fixture.h"

namespace quorvelle::testing {
namespace {

class Sync : public SyncTest {
protected:
    void expectNothingInstalled() const {
        EXPECT_EQ(installed(), QStringList("(missing)"));
        EXPECT_THAT(state(), Each(QString("app.staging")));
    }
};

TEST_F(Sync, InstallsOnceAndAgainWhenForced) {
    const QStringList paths{"b.txt", "bin/deep/tool", "empty", "a+b &c%d", "日本/ü#"};
    publish(server, "stable", "b1",
            {{paths[0], QByteArray("\0\r\n\xff", 4)},
             {paths[1], QByteArray(300000, 'x')},
             {paths[2], ""},
             {paths[3], "plus"},
             {paths[4], "x"}});
    expectSync("synced", whole("b1", paths), synced("b1", 5, 300009));
    EXPECT_THAT(server.lines(),
                ElementsAre("GET /api/channels/stable", "GET /api/builds/b1",
                            "GET /api/builds/b1/files?path=b.txt",
                            "GET /api/builds/b1/files?path=bin%2Fdeep%2Ftool",
                            "GET /api/builds/b1/files?path=empty",
                            "GET /api/builds/b1/files?path=a%2Bb%20%26c%25d",
                            "GET /api/builds/b1/files?path=%E6%97%A5%E6%9C%AC%2F%C3%BC%23"));
    EXPECT_EQ(box.read("apps/app/b.txt"), QByteArray("\0\r\n\xff", 4));
    const QString binary = QString::fromUtf8(QByteArray("\0\r\n\xff", 4));
    EXPECT_EQ(installed(),
              (QStringList{"a+b &c%d=plus", "b.txt=" + binary,
                           "bin/deep/tool=" + QString(300000, 'x'), "empty=", "日本/ü#=x"}));
    EXPECT_EQ(state(), QStringList("app.installed.json"));
    EXPECT_EQ(object(stateBytes(".installed.json")),
              object(R"({"schema_version":1,"build":"b1","channel":"stable"})"));

    server.forget();
    box.write("apps/app/empty", "changed by hand");
    expectSync("current", {kChecking}, upToDate("b1"));
    EXPECT_THAT(server.lines(), ElementsAre("GET /api/channels/stable"));
    expectSync("synced", whole("b1", paths), synced("b1", 5, 300009), args("sync --force"));
    EXPECT_EQ(box.read("apps/app/empty"), "");
}

TEST_F(Sync, ReplacesTheWholeBuild) {
    publish(server, "stable", "b1", {{"same", "1"}, {"gone", "1"}, {"d/gone", "1"}, {"e", "1"}});
    expectSync("synced", whole("b1", {"same", "gone", "d/gone", "e"}), synced("b1", 4, 4));
    box.write("apps/app/mine", "lost");
    publish(server, "stable", "b2", {{"same", "2"}, {"d", "file"}, {"e/f", "folder"}});
    expectSync("synced", whole("b2", {"same", "d", "e/f"}), synced("b2", 3, 11));
    EXPECT_EQ(installed(), (QStringList{"d=file", "e/f=folder", "same=2"}));
    EXPECT_EQ(state(), QStringList("app.installed.json"));
}

TEST_F(Sync, TakesEveryEngineButTideForCargo) {
    publish(server, "stable", "b1", {{"a", "a"}});
    server.onBytes("GET", "/api/builds/b1", R"({"schema_version":1,"files":[{"path":"a"}]})");
    for (const char* more :
         {"", R"(,"engine":"Tide")", R"(,"engine":"x")", R"(,"engine":"","schema_version":1)"}) {
        SCOPED_TRACE(more);
        server.onBytes("GET", "/api/channels/stable", R"({"build":"b1")" + std::string(more) + '}');
        expectSync("synced", whole("b1", {"a"}), synced("b1", 1, 1), args("sync --force"));
    }
}

/// Each row: the replies for the channel and the build ("-" where none is asked for), and the
/// message.
TEST_F(Sync, EndsBeforeTheDownload) {
    for (const QStringList& row : rows(R"(
        {"engine":"cargo"}                  | - | 'app' has no build yet
        {"build":""}                        | - | 'app' has no build yet
                                            | - | 'app' has no build yet
        fine                                | - | 'app': sync failed (HTTP 200): the reply is not JSON
        [{"build":"b"}]                     | - | 'app': sync failed (HTTP 200): the reply is not JSON
        {"build":"b","schema_version":"2"}  | - | 'app': this channel was written by a newer Quorvelle - please update
        {"schema_version":"3000000000"}     | - | 'app': this channel was written by a newer Quorvelle - please update
        {"build":"b"} | {"schema_version":2.5,"files":[{"path":"a"}]} | 'app': this build was made by a newer Quorvelle - please update
        {"build":"b"} | {"files":[]}            | 'app': build b has an empty manifest
        {"build":"b"} | fine                    | 'app': build b has an empty manifest)")) {
        SCOPED_TRACE(row.join('|').toStdString());
        server.onBytes("GET", "/api/channels/stable", row[0].toStdString());
        server.onBytes("GET", "/api/builds/b", row[1].toStdString());
        expectSync(row[2].startsWith("'app':") ? "failed" : "current",
                   row[1] == "-" ? QStringList(kChecking) : fetching("b", {}), row[2]);
        expectNothingInstalled();
    }
}

TEST_F(Sync, ReportsRefusedRequests) {
    expectSync("failed", {kChecking},
               "'app': sync failed (HTTP 404): nothing at /api/channels/stable");
    publish(server, "stable", "b/1", {{"a", "a"}});
    server.onJson("GET", "/api/builds/b%2F1", {{"error", "gone %1"}}, 410);
    expectSync("failed", fetching("b/1", {}), "'app': manifest fetch failed (HTTP 410): gone %1");
    expectNothingInstalled();
}

TEST_F(Sync, RefusesUnsafePathsWhenItMeetsThem) {
    const QJsonValue paths[] = {"", "../x", 7, QJsonValue::Null, QJsonValue::Undefined};
    for (const QJsonValue& path : paths) {
        SCOPED_TRACE(path.toString().toStdString());
        publish(server, "stable", "b", {{"good", "x"}});
        const QJsonValue bad = path.isUndefined() ? QJsonValue("no object")
                               : path.isNull()    ? QJsonObject{{"size", 1}}
                                                  : QJsonObject{{"path", path}};
        server.onJson("GET", "/api/builds/b",
                      {{"files", QJsonArray{QJsonObject{{"path", "good"}}, bad}}});
        server.forget();
        expectSync("failed", fetching("b", {"good"}, 2),
                   "'app': manifest contains an unsafe path: " + path.toString());
        EXPECT_EQ(server.lines().size(), 3U);
        expectNothingInstalled();
    }
    EXPECT_THAT(QDir(box.path("apps")).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
                IsEmpty());
}

TEST_F(Sync, InstallsNothingWhenADownloadFails) {
    const std::vector<BuildFile> files{{"1", "new"}, {"d/2", "new"}, {"3", "new"}};
    publish(server, "stable", "b0", {{"old", "old"}});
    expectSync("synced", whole("b0", {"old"}), synced("b0", 1, 3));
    publish(server, "stable", "b1", files);
    server.onJson("GET", fileTarget("b1", "d/2"), {{"error", "lost %1"}}, 404);
    expectSync("failed", fetching("b1", {"1", "d/2"}, 3),
               "'app': download of d/2 failed (HTTP 404): lost %1");
    server.on("GET", fileTarget("b1", "d/2"), truncatedAnswer());
    expectSync("failed", fetching("b1", {"1", "d/2"}, 3),
               "'app': download of d/2 failed (HTTP 200): Connection closed");
    // Whole as far as the transfer tells; the manifest knows better.
    server.on("GET", fileTarget("b1", "d/2"), [](const auto&, httplib::Response& response) {
        response.set_chunked_content_provider("", [](std::size_t, httplib::DataSink& sink) {
            sink.write("ne", 2);
            sink.done();
            return true;
        });
    });
    for (const QJsonValue& size : {QJsonValue(3), QJsonValue("3")}) {
        server.onJson("GET", "/api/builds/b1",
                      {{"files", QJsonArray{QJsonObject{{"path", "d/2"}, {"size", size}}}}});
        expectSync("failed", fetching("b1", {"d/2"}),
                   "'app': download of d/2 failed (HTTP 200): the reply is cut short");
    }
    EXPECT_EQ(installed(), QStringList("old=old"));
    EXPECT_EQ(state(), (QStringList{"app.installed.json", "app.staging"}));
    publish(server, "stable", "b1", files);
    expectSync("synced", whole("b1", {"1", "d/2", "3"}), synced("b1", 3, 9));
    EXPECT_EQ(installed(), (QStringList{"1=new", "3=new", "d/2=new"}));
}

/// A folder in a file's place, and a file in a folder's.
TEST_F(Sync, ReportsWhatCannotBeStored) {
    const QString inStaging = "'app': cannot write " + box.path("apps/.quorvelle/app.staging/a");
    for (const auto& [paths, message] :
         {std::pair(args("a a/b"), QString("'app': cannot create directory for a/b")),
          {args("a/b a"), inStaging}}) {
        for (const char* bytes : {"bytes", ""}) {
            publish(server, "stable", "b", {{paths[0], "x"}, {paths[1], bytes}});
            expectSync("failed", fetching("b", paths), message);
            expectNothingInstalled();
        }
    }
}

TEST_F(Sync, SendsTheTokenOfTheSubscriptionFirst) {
    publish(server, "stable", "b", {{"a", "a"}});
    for (const QStringList& row : rows(R"(
        own | env | top | Bearer own
            | env | top | Bearer env
            |     | top | Bearer top
            |     |     | (none))")) {
        SCOPED_TRACE(row[3].toStdString());
        QJsonObject entry = subscription("app", "stable");
        entry.insert("token", row[0]);
        box.writeConfig(
            {{"token", row[2]},
             {"subscriptions", QJsonArray{entry}},
             {"servers", QJsonArray{QJsonObject{{"server", server.url()}, {"token", "joined"}}}}});
        box.environment.insert("QUORVELLE_TOKEN", row[1]);
        server.forget();
        expectSync("synced", whole("b", {"a"}), synced("b", 1, 1), args("sync --force"));
        EXPECT_EQ(server.requests().size(), 3U);
        for (const SeenRequest& request : server.requests()) {
            EXPECT_EQ(request.header("Authorization"), row[3].toStdString()) << request.line();
        }
    }
}

using SyncCommand = SyncTest;

TEST_F(SyncCommand, ReturnsTheLargestCodeOfTheChosenSubscriptions) {
    FakeServer second;
    QJsonArray all{subscription("kit", "gone"), subscription("app", "stable")};
    for (const auto& [name, channel] : {std::pair("%1", "c"), {"new", "d"}, {"bare", "d"}}) {
        QJsonObject other = subscription(name, channel);
        other.insert("server", second.url());
        other.insert("self_heal", *name == 'b' ? 0 : 1);
        all.append(other);
    }
    subscribe(all);
    publish(server, "stable", "b1", {{"a", "a"}});
    box.write("apps/app", "in the way");
    second.onJson("GET", "/api/channels/c", {});
    publishTide(second, "d", "b2", {{"a", {"a"}}});
    const QString lost = "'kit': sync failed (HTTP 404): nothing at /api/channels/gone";
    const auto record = [](const char* name, const char* result, const QString& message) {
        return QJsonObject{{"name", name}, {"result", result}, {"message", message}};
    };
    const auto placed = [this](const QString& name) {
        const QString dir = QDir::toNativeSeparators(box.path("apps/" + name));
        return "'" + name + "': synced build b2 -> " + dir;
    };
    QJsonObject waits = record("app", "blocked", notActivated("b1"));
    waits.insert("build", "b1");
    const Outcome first = box.run(args("sync --json"));
    EXPECT_EQ(
        first.json()["results"].toArray(),
        (QJsonArray{
            record("kit", "failed", lost), waits, record("%1", "current", "'%1' has no build yet"),
            record("new", "synced", placed("new")), record("bare", "synced", placed("bare"))}));
    EXPECT_EQ(first.err + QString::number(first.code), "3");

    const QString kit = "'kit': checking channel 'gone' ...\n";
    const QString app = retrying("b1").join('\n') + '\n' + notActivated("b1") + '\n';
    const QString none = "'%1': checking channel 'c' ...\n'%1' has no build yet\n";
    const QString current =
        "'new': checking channel 'd' ...\n'new': checking Tide channel 'd' ...\n"
        "'new': checking install ...\n'new' is up to date (checked)\n"
        "'bare': checking channel 'd' ...\n'bare': checking Tide channel 'd' ...\n"
        "'bare' is up to date\n";
    expectOutcome(box.run({"sync"}), 3, kit + app + none + current, lost + '\n');
    expectOutcome(box.run({"sync", "--server", server.url() + "//"}), 3, kit + app, lost + '\n');
    expectOutcome(box.run({"sync", "--server", second.url()}), 0, none + current);
    expectOutcome(box.run(args("sync --name %1 --force")), 0, none);

    const auto results = [this] {
        QStringList words;
        for (const QJsonValue& one : box.run(args("sync --json")).json()["results"].toArray()) {
            words.append(one["result"].toString());
        }
        return words;
    };
    ASSERT_TRUE(QFile::remove(box.path("apps/app")));
    EXPECT_EQ(results(), args("failed synced current current current"));
    publish(server, "stable", "b3", {{"a", "a"}});
    box.write("apps/new/a", "damaged");
    EXPECT_EQ(results(), args("failed synced current synced current"));
    EXPECT_EQ(results(), args("failed current current current current"));
}

TEST_F(SyncCommand, ReportsIncompleteSubscriptionsAndGoesOn) {
    QJsonObject nameless = subscription("x", "c");
    nameless.remove("name");
    nameless.remove("dir");
    subscribe({nameless, subscription("100%2", ""), subscription("app", "stable")});
    server.onJson("GET", "/api/channels/stable", {});
    const QString incomplete = "subscription '%1' is incomplete (needs server, channel, dir)\n";
    expectOutcome(box.run({"sync"}), 2, kChecking + "\n'app' has no build yet\n",
                  incomplete.arg("?") + incomplete.arg("100%2"));
    EXPECT_EQ(box.run(args("sync --json")).json()["results"][0]["name"], QJsonValue(""));
}

TEST(SyncWords, AreChecked) {
    const Sandbox box;
    expectError(box, args("sync --name app"), 1,
                "no subscriptions (quorvelle subscribe <server> <channel> --dir <path>)");
    EXPECT_EQ(box.run(args("subscribe http://h c --dir x")).code, 0);
    expectError(box, args("sync --name 100%1"), 1, "no subscription named '100%1'");
    expectError(box, args("sync --server http://o//"), 1, "no subscriptions on http://o//");
}

}  // namespace
}  // namespace quorvelle::testing
