#include "server/requests.h"

#include <gmock/gmock.h>

#include <QBuffer>
#include <QJsonArray>
#include <functional>

#include "server/server_option.h"
#include "support/notation.h"
#include "support/temporary_config.h"

namespace quorvelle::testing {

TEST(Requests, SendExactlyWhatTheCallSays) {
    struct Row {
        std::function<Reply(const Server& server)> call;
        /// Method and target, Authorization, Content-Type, body.
        const char* seen;
    };
    const QJsonObject body = json("{'b':[1,true],'a':'ü +'}");
    QBuffer file;
    file.setData("bytes\r\n");
    file.open(QIODevice::ReadOnly);
    file.seek(3);
    ApiServer api;
    for (const Row& row : {
             Row{[](const Server& s) { return getJson(s, "/api/me", "x"); },
                 "GET /api/me|Bearer secret|(none)|"},
             Row{[&](const Server& s) { return postJson(s, "/api/c", "x", body); },
                 "POST /api/c|Bearer secret|application/json|{\"a\":\"ü +\",\"b\":[1,true]}"},
             Row{[](const Server& s) {
                     return postEmpty(s, "/api/p", "x", {{"b", "1"}, {"a", "2"}});
                 },
                 "POST /api/p?b=1&a=2|Bearer secret|application/octet-stream|"},
             Row{[&](const Server& s) { return putJson(s, "/api/s", "x", body); },
                 "PUT /api/s|Bearer secret|application/json|{\"a\":\"ü +\",\"b\":[1,true]}"},
             Row{[&](const Server& s) {
                     return putFile(s, "/api/f", "x", {{"path", "a/b"}}, file);
                 },
                 "PUT /api/f?path=a%2Fb|Bearer secret|application/octet-stream|bytes\r\n"},
             Row{[](const Server& s) {
                     return deleteResource(s, "/api/d", "x", {{"all", "1"}});
                 },
                 "DELETE /api/d?all=1|Bearer secret|(none)|"},
         }) {
        SCOPED_TRACE(row.seen);
        const QStringList line = QString(row.seen).section(u'|', 0, 0).split(u' ');
        api.server.onJson(line[0].toStdString(), line[1].toStdString(), json("{'reply':1}"));
        api.server.forget();
        const Reply reply = row.call({api.server.url(), "secret"});
        EXPECT_TRUE(reply.ok);
        EXPECT_EQ(text(reply.object), "{'reply':1}");
        ASSERT_EQ(api.server.requests().size(), 1U);
        const SeenRequest seen = api.server.requests().front();
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
        const auto server = resolveServer(typed);
        ASSERT_TRUE(server);
        EXPECT_EQ(server->url, api.server.url());
        EXPECT_EQ(typed, args("7"));
        EXPECT_TRUE(getJson(*server, "/api/me", "x").ok);
        EXPECT_EQ(api.server.requests().at(0).header("Authorization"), row[3].toStdString());
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
        EXPECT_EQ(resolveServer(typed).value_or(Server{}).url, row[2]);
        EXPECT_EQ(::testing::internal::GetCapturedStderr(),
                  row[2].isEmpty()
                      ? "'server' is not configured (quorvelle config set server <value>)\n"
                      : "");
        EXPECT_EQ(typed, args(row[3]));
    }
}

}  // namespace quorvelle::testing
