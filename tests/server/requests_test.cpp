#include "server/requests.h"

#include "server/server_option.h"
#include "server/url.h"
#include "support/temporary_config.h"

namespace quorvelle::testing {

TEST(Requests, CarryTheFirstTokenThereIs) {
    ApiServer api;
    for (const QStringList& row : rows(R"(
        e | v | t | Bearer e
          | v | t | Bearer v
          |   | t | Bearer t
        e |   |   | Bearer e
          |   |   | (none))")) {
        SCOPED_TRACE(row[3].toStdString());
        const QJsonObject entry{{"server", api.server.url()}, {"token", row[0]}};
        api.config.sandbox.writeConfig(
            {{"schema_version", 2}, {"servers", QJsonArray{entry}}, {"token", row[2]}});
        api.config.token.set(row[1].toUtf8());
        api.server.forget();
        api.server.onJson("GET", "/api/me", {});
        QStringList typed{"7", "--server", api.server.url() + "//"};
        const auto server = resolveServer(typed);
        ASSERT_TRUE(server);
        EXPECT_EQ(server->url, api.server.url());
        EXPECT_EQ(typed, args("7"));
        EXPECT_TRUE(getJson(*server, "/api/me", "x").ok);
        EXPECT_EQ(api.server.requests().at(0).header("Authorization"), row[3].toStdString());
    }
}

TEST(ApiUrl, SendsEveryNameAsOnePathSegment) {
    ApiServer api;
    FakeServer& server = api.server;
    for (const QStringList& row : rows(R"(
        app-1.0_b~c  | app-1.0_b~c
        a/b          | a%2Fb
        ...          | ...
        what?x=1     | what%3Fx%3D1
        bob#2        | bob%232
        100%1        | 100%251
        %2F          | %252F
        a+b          | a%2Bb
        a b          | a%20b
        a\b"c        | a%5Cb%22c
        größe        | gr%C3%B6%C3%9Fe
        日😀         | %E6%97%A5%F0%9F%98%80)")) {
        const std::string segment = row[1].toStdString();
        server.forget();
        getJson({server.url() + "/base//"}, apiPath("/api/builds/%1", row[0]), "x");
        getJson({server.url()}, apiPath("/x/%1/launch", row[0]), "x");
        EXPECT_THAT(server.lines(), ::testing::ElementsAre("GET /base/api/builds/" + segment,
                                                           "GET /x/" + segment + "/launch"));
    }
}

/// The network layer takes "." and ".." out of a path, however they are encoded: the
/// deletion of a build named ".." would become that of something else.
TEST(ApiUrl, SendsNothingForANameThatWouldChangeThePath) {
    ApiServer api;
    for (const char* name : {".", ".."}) {
        SCOPED_TRACE(name);
        EXPECT_FALSE(deleteResource({api.server.url()}, apiPath("/api/builds/%1", name), "x").ok);
        EXPECT_FALSE(getJson({api.server.url() + "/base"}, apiPath("/api/%1/x", name), "x").ok);
    }
    EXPECT_THAT(api.server.lines(), ::testing::IsEmpty());
}

}  // namespace quorvelle::testing
