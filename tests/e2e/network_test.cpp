#include "support/fake_builds.h"
#include "support/server_fixture.h"

namespace quorvelle::testing {

/// Neither server is there: the proxy answers for them.
TEST(Network, IsReachedThroughTheSameProxyByEveryRequest) {
    const std::string app = "http://builds.test";
    const std::string store = "http://bucket.test/b/";
    FakeServer proxy;
    FakeServer direct;
    proxy.onJson("GET", app + "/api/channels/stable", {{"engine", "tide"}});
    proxy.onJson("GET", app + "/api/tide/sync/stable",
                 {{"build", "b1"}, {"manifest_url", QString::fromStdString(app) + "/m"}});
    proxy.onJson("DELETE", app + "/api/builds/b0", {});
    proxy.onJson("POST", app + "/api/channels/stable/promote?build=b1", {});
    proxy.on("GET", app + "/m", redirectTo(direct.url() + "/m"));
    direct.onBytes("GET", "/m", tideManifest("stable", {{"a", {"one"}}}));
    const std::string id = chunkId("one").toStdString();
    const std::string chunk = store + "chunks/" + id.substr(0, 2) + '/' + id;
    proxy.onBytes("GET", chunk, "one");
    Sandbox box;
    box.follow(QString::fromStdString(app));
    for (const auto& [name, value] :
         std::map<QString, QString>{{"http_proxy", proxy.url().replace("://", "://me%40x:p%3Aw@")},
                                    {"TIDE_S3_ENDPOINT", "http://bucket.test"},
                                    {"TIDE_S3_BUCKET", "b"},
                                    {"TIDE_S3_KEY", "k"},
                                    {"TIDE_S3_SECRET", "s"}}) {
        box.environment.insert(name, value);
    }
    EXPECT_EQ(box.run({"sync"}).err, "");
    EXPECT_EQ(box.tree("app"), QStringList("a=one"));
    EXPECT_EQ(box.run({"build", "delete", "b0", "--server", "http://builds.test"}).code, 0);
    EXPECT_EQ(box.run({"promote", "stable", "b1", "--server", "http://builds.test"}).err, "");
    EXPECT_THAT(
        proxy.lines(),
        ElementsAre("GET " + app + "/api/channels/stable", "GET " + app + "/api/tide/sync/stable",
                    "GET " + app + "/m", "GET " + chunk, "DELETE " + app + "/api/builds/b0",
                    StartsWith("POST " + app + "/api/")));
    for (const SeenRequest& request : proxy.requests()) {
        // "me@x:p:w"
        EXPECT_EQ(request.header("Proxy-Authorization"), "Basic bWVAeDpwOnc=") << request.line();
    }
    EXPECT_EQ(direct.requests().at(0).header("Proxy-Authorization"), "(none)");
}

TEST(Network, IsNotAskedWithoutTheProxyThatCannotBeUsed) {
    Sandbox box;
    box.follow("http://builds.test");
    box.environment.insert("all_proxy", "https://u:secret@p");
    const Outcome got = box.run({"sync"});
    EXPECT_EQ(got.code, 2);
    EXPECT_EQ(got.err, "'app': sync failed: all_proxy is no address of an http or socks5 proxy\n");
}

}  // namespace quorvelle::testing
