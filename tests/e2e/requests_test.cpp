#include <gmock/gmock.h>

#include <QJsonArray>

#include "support/fake_server.h"
#include "support/outcomes.h"
#include "support/qt_printers.h"
#include "support/raw_server.h"

namespace quorvelle::testing {
namespace {

using ::testing::ElementsAre;

const std::string kTarget = "/api/channels/app/promote?build=7";
const QString kDone = "Channel 'app' now at build 7\n";

QStringList promoteOn(const QString& url) {
    return args("promote app 7 --server") + QStringList(url);
}

TEST(ServerChoice, IsReportedWhenThereIsNone) {
    const Sandbox box;
    box.write("config/config.json", R"({"schema_version":2,"server":""})");
    for (const char* line : {"promote app 7", "promote", "push nowhere --channel app"}) {
        SCOPED_TRACE(line);
        expectError(box, args(line), 1,
                    "'server' is not configured (quorvelle config set server <value>)");
    }
}

TEST(ServerChoice, DropsTrailingSlashesAndPrefersTheOption) {
    FakeServer server;
    server.onJson("POST", kTarget, {});
    const Sandbox box;
    for (const char* slashes : {"", "/", "///"}) {
        server.forget();
        box.writeConfig({{"schema_version", 2}, {"server", server.url() + slashes}});
        expectOutcome(box.run(args("promote app 7")), 0, kDone);
        box.writeConfig({{"schema_version", 2}, {"server", "http://127.0.0.1:1"}});
        expectOutcome(box.run(promoteOn(server.url() + slashes)), 0, kDone);
        EXPECT_THAT(server.lines(), ElementsAre("POST " + kTarget, "POST " + kTarget));
    }
}

TEST(Token, ComesFromTheFirstPlaceThatHasOne) {
    FakeServer server;
    server.onJson("POST", kTarget, {});
    Sandbox box;
    struct Row {
        const char* name;
        const char* entry;
        const char* environment;
        const char* top;
        const char* sent;
    };
    for (const Row& row :
         {Row{"entry", "entry", "env", "top", "Bearer entry"},
          Row{"environment", "", "env", "top", "Bearer env"},
          Row{"top level", "", "", "top", "Bearer top"}, Row{"none", "", "", "", "(none)"}}) {
        SCOPED_TRACE(row.name);
        server.forget();
        const QJsonObject entry{{"server", server.url()}, {"token", row.entry}};
        const QJsonObject other{{"server", "http://127.0.0.1:1"}, {"token", "other"}};
        box.writeConfig(
            {{"schema_version", 2}, {"token", row.top}, {"servers", QJsonArray{other, entry}}});
        box.environment.insert("QUORVELLE_TOKEN", row.environment);
        expectOutcome(box.run(promoteOn(server.url() + "//")), 0, kDone);
        ASSERT_EQ(server.requests().size(), 1U);
        EXPECT_EQ(server.requests()[0].header("Authorization"), row.sent);
        EXPECT_EQ(server.requests()[0].header("Content-Type"), "application/octet-stream");
        EXPECT_EQ(server.requests()[0].body, "");
    }
}

TEST(Token, StaysWithinTheOrigin) {
    FakeServer home;
    FakeServer away;
    Sandbox box;
    box.environment.insert("QUORVELLE_TOKEN", "secret");
    const auto redirectTo = [&home](const QString& url) {
        home.on("POST", kTarget, [url](const httplib::Request&, httplib::Response& response) {
            response.set_redirect(url.toStdString(), 307);
        });
    };
    home.onJson("POST", "/moved", {});
    away.onJson("POST", "/moved", {});
    redirectTo(home.url() + "/moved");
    expectOutcome(box.run(promoteOn(home.url())), 0, kDone);
    redirectTo(away.url() + "/moved");
    expectOutcome(box.run(promoteOn(home.url())), 0, kDone);
    EXPECT_THAT(home.lines(), ElementsAre("POST " + kTarget, "POST /moved", "POST " + kTarget));
    EXPECT_EQ(home.requests()[1].header("Authorization"), "Bearer secret");
    ASSERT_THAT(away.lines(), ElementsAre("POST /moved"));
    EXPECT_EQ(away.requests()[0].header("Authorization"), "(none)");
}

TEST(RequestFailure, IsToldInOneLine) {
    struct Row {
        const char* name;
        int status;
        const char* type;
        const char* body;
        QString message;
    };
    FakeServer server;
    const Sandbox box;
    const QString transport = "Error transferring " + server.url() +
                              QString::fromStdString(kTarget) + " - server replied: ";
    for (const Row& row :
         {Row{"own words", 404, "application/json", R"({"error":"no build 100%1 – 日本"})",
              "promote failed (HTTP 404): no build 100%1 – 日本"},
          Row{"words as text", 409, "text/plain", R"({"error":"disabled"})",
              "promote failed (HTTP 409): disabled"},
          Row{"a page", 500, "text/html", "<h1>oops</h1>",
              "promote failed (HTTP 500): " + transport + "Internal Server Error"},
          Row{"other JSON", 403, "application/json", R"(["error"])",
              "promote failed (HTTP 403): " + transport + "Forbidden"},
          Row{"nothing", 502, "text/plain", "",
              "promote failed (HTTP 502): " + transport + "Bad Gateway"}}) {
        SCOPED_TRACE(row.name);
        server.on("POST", kTarget, [&row](const httplib::Request&, httplib::Response& response) {
            response.status = row.status;
            response.set_content(row.body, row.type);
        });
        expectError(box, promoteOn(server.url()), 2, row.message);
    }
}

TEST(RequestFailure, WithoutAReplyHasNoStatus) {
    const QString url = [] { return RawServer({}).url(); }();
    expectError(Sandbox(), promoteOn(url), 2, "promote failed: Connection refused");
    expectError(Sandbox(), promoteOn("ftp://127.0.0.1"), 2,
                "promote failed: Protocol \"ftp\" is unknown");
    RawServer silent({"", "", "", "", "", ""});
    const Outcome got = Sandbox().run(promoteOn(silent.url()));
    EXPECT_EQ(got.code, 2);
    EXPECT_TRUE(got.err.startsWith("promote failed: ")) << got.err.toStdString();
}

TEST(RequestPath, CarriesNamesAsOneSegmentAndValuesWhole) {
    FakeServer server;
    const Sandbox box;
    struct Row {
        const char* channel;
        const char* build;
        const char* target;
    };
    for (const Row& row :
         {Row{"plain-1.0_~x", "2026-1.a", "/api/channels/plain-1.0_~x/promote?build=2026-1.a"},
          Row{"a/b?c#d", "1&x=2", "/api/channels/a%2Fb%3Fc%23d/promote?build=1%26x%3D2"},
          Row{"100%1", "%20+1", "/api/channels/100%251/promote?build=%2520%2B1"},
          Row{"%2F %", "a b", "/api/channels/%252F%20%25/promote?build=a%20b"},
          Row{"Ü日", "é", "/api/channels/%C3%9C%E6%97%A5/promote?build=%C3%A9"}}) {
        SCOPED_TRACE(row.channel);
        server.forget();
        server.onJson("POST", row.target, {});
        expectOutcome(box.run({"promote", row.channel, row.build, "--server", server.url()}), 0,
                      QString("Channel '") + row.channel + "' now at build " + row.build + "\n");
        EXPECT_THAT(server.lines(), ElementsAre(std::string("POST ") + row.target));
    }
}

}  // namespace
}  // namespace quorvelle::testing
