#include "client/requests.h"

#include <gmock/gmock.h>

#include <QBuffer>
#include <QJsonArray>
#include <functional>

#include "cli/console/output.h"
#include "client/server_option.h"
#include "support/api_server.h"
#include "support/notation.h"
#include "support/qt_printers.h"

namespace quorvelle::testing {

TEST(Requests, SendExactlyWhatTheCallSays) {
    struct Row {
        const char* name;
        std::function<Reply(const QString& server)> call;
        /// Method and target, Authorization, Content-Type, body.
        const char* seen;
    };
    const QJsonObject body = json("{'b':[1,true],'a':'ü +'}");
    QBuffer file;
    file.setData("bytes\r\n");
    file.open(QIODevice::ReadOnly);
    file.seek(3);
    ApiServer api;
    api.config.sandbox.writeConfig(json("{'token':'secret','schema_version':2}"));
    for (const Row& row : {
             Row{"getJson", [](const QString& s) { return getJson(s, "/api/me", "x"); },
                 "GET /api/me|Bearer secret|(none)|"},
             Row{"postJson", [&](const QString& s) { return postJson(s, "/api/c", "x", body); },
                 "POST /api/c|Bearer secret|application/json|{\"a\":\"ü +\",\"b\":[1,true]}"},
             Row{"postJson, empty", [](const QString& s) { return postJson(s, "/api/c", "x", {}); },
                 "POST /api/c|Bearer secret|application/json|{}"},
             Row{"postEmpty", [](const QString& s) { return postEmpty(s, "/api/p", "x"); },
                 "POST /api/p|Bearer secret|application/octet-stream|"},
             Row{"postEmpty, query",
                 [](const QString& s) {
                     return postEmpty(s, "/api/p", "x", {{"b", "1"}, {"a", "2"}});
                 },
                 "POST /api/p?b=1&a=2|Bearer secret|application/octet-stream|"},
             Row{"putJson", [&](const QString& s) { return putJson(s, "/api/s", "x", body); },
                 "PUT /api/s|Bearer secret|application/json|{\"a\":\"ü +\",\"b\":[1,true]}"},
             Row{"putFile",
                 [&](const QString& s) {
                     return putFile(s, "/api/f", "x", {{"path", "a/b"}}, file);
                 },
                 "PUT /api/f?path=a%2Fb|Bearer secret|application/octet-stream|bytes\r\n"},
             Row{"deleteResource",
                 [](const QString& s) {
                     return deleteResource(s, "/api/d", "x", {{"all", "1"}});
                 },
                 "DELETE /api/d?all=1|Bearer secret|(none)|"},
         }) {
        SCOPED_TRACE(row.name);
        const QStringList line = QString(row.seen).section(u'|', 0, 0).split(u' ');
        api.server.onJson(line[0].toStdString(), line[1].toStdString(), json("{'reply':1}"));
        api.server.forget();
        const Reply reply = row.call(api.server.url() + "//");
        EXPECT_TRUE(reply.ok);
        EXPECT_EQ(text(reply.object), "{'reply':1}");
        const std::vector<SeenRequest> requests = api.server.requests();
        ASSERT_EQ(requests.size(), 1U);
        const SeenRequest& seen = requests.front();
        EXPECT_EQ(seen.line() + '|' + seen.header("Authorization") + '|' +
                      seen.header("Content-Type") + '|' + seen.body,
                  row.seen);
    }
}

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
        const QString server = resolveServer(typed);
        EXPECT_EQ(server, api.server.url());
        EXPECT_EQ(typed, args("7"));
        EXPECT_TRUE(getJson(server, "/api/me", "x").ok);
        EXPECT_EQ(api.server.requests().at(0).header("Authorization"), row[3].toStdString());
    }
    // Another server's token is forgotten with its server.
    selectServer(api.server.url() + "/elsewhere");
    EXPECT_EQ(requestToken(), QString());
}

TEST(Requests, PrintTheFailureOnceInEitherMode) {
    ApiServer api;
    api.server.onJson("GET", "/api/x", json("{'error':'no','kept':1}"), 404);
    for (const bool jsonOn : {false, true}) {
        setJsonMode(jsonOn);
        ::testing::internal::CaptureStdout();
        ::testing::internal::CaptureStderr();
        const Reply reply = getJson(api.server.url(), "/api/x", "build show");
        const std::string out = ::testing::internal::GetCapturedStdout();
        const std::string err = ::testing::internal::GetCapturedStderr();
        setJsonMode(false);
        EXPECT_FALSE(reply.ok);
        EXPECT_TRUE(reply.object.isEmpty());
        EXPECT_EQ(err, jsonOn ? "" : "build show failed (HTTP 404): no\n");
        EXPECT_EQ(out, jsonOn ? "{\"error\":\"build show failed (HTTP 404): no\"}\n" : "");
    }
}

TEST(ResolveServer, FallsBackOnTheConfiguration) {
    const TemporaryConfig config;
    for (const QStringList& row : rows(R"(
        a --server http://o// b | http://c  | http://o | a b
        a                       | http://c/ | http://c | a
        a --server              | http://c  | http://c | a --server
        a                       |           |          | a)")) {
        SCOPED_TRACE(row[0].toStdString());
        config.sandbox.writeConfig({{"schema_version", 2}, {"server", row[1]}});
        QStringList typed = args(row[0]);
        ::testing::internal::CaptureStderr();
        EXPECT_EQ(resolveServer(typed), row[2]);
        EXPECT_EQ(::testing::internal::GetCapturedStderr(),
                  row[2].isEmpty()
                      ? "'server' is not configured (quorvelle config set server <value>)\n"
                      : "");
        EXPECT_EQ(typed, args(row[3]));
    }
}

}  // namespace quorvelle::testing
