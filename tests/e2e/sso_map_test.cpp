#include <gmock/gmock.h>

#include "support/one_request.h"

namespace quorvelle::testing {
namespace {

using ::testing::ElementsAre;

using SsoMap = ServerTest;

const std::string kMapping = "/api/sso/mapping";

TEST_F(SsoMap, WritesTheWholeMappingBackWithOneChange) {
    server.onJson("PUT", kMapping, {{"saved", true}});
    for (const QStringList& cells : rows(R"(
role x publisher | {'mapping':{'roles':{'a':'admin','x':'member'},'groups':{'g':'h'},'limit':9007199254740993}} | {'roles':{'a':'admin','x':'publisher'},'groups':{'g':'h'},'limit':9007199254740993}
role a/b admin | {'configured':false} | {'roles':{'a/b':'admin'}}
group x staff | {'mapping':{'roles':{'x':'admin'},'deep':{'k':[null]}}} | {'roles':{'x':'admin'},'groups':{'x':'staff'},'deep':{'k':[null]}}
remove x | {'mapping':{'roles':{'a':'admin','x':'member'},'groups':{'g':'h'}}} | {'roles':{'a':'admin'},'groups':{'g':'h'}}
remove x | {'mapping':{'roles':{},'groups':{'x':'h'},'new':1}} | {'roles':{},'groups':{},'new':1}
remove x | {'mapping':{'roles':{'x':'admin'},'groups':{'x':'h'}}} | {'roles':{},'groups':{}}
default publisher | {'mapping':{'default_role':'member','new':1}} | {'default_role':'publisher','new':1}
claims --roles r --groups g | {'mapping':{'roles_claim':'a','new':1}} | {'roles_claim':'r','groups_claim':'g','new':1}
claims --groups g | {'mapping':{'roles_claim':'a','groups_claim':'b'}} | {'roles_claim':'a','groups_claim':'g'}
)")) {
        SCOPED_TRACE(cells.join(u'|').toStdString());
        server.onJson("GET", kMapping, json(cells[1].toUtf8()));
        server.forget();
        const QStringList words = args("sso map " + cells[0]);
        expectOutcome(box.run(words), 0, "Mapping saved.\n");
        EXPECT_EQ(box.run(words + QStringList("--json")).json(), (QJsonObject{{"saved", true}}));
        ASSERT_THAT(server.lines(), ElementsAre("GET " + kMapping, "PUT " + kMapping,
                                                "GET " + kMapping, "PUT " + kMapping));
        EXPECT_EQ(object(QString::fromStdString(server.requests()[1].body)),
                  json(cells[2].toUtf8()));
    }
}

TEST_F(SsoMap, WritesNothingItHasNotReadOrCannotChange) {
    const QStringList words = args("sso map remove x%1");
    expectError(box, words, 2,
                "sso map failed (HTTP 404): nothing at " + QString::fromStdString(kMapping));
    for (const char* reply : {"<html>", "{}", "[{'configured':true}]"}) {
        server.onBytes("GET", kMapping, reply);
        expectError(box, words, 2, "sso map failed: the reply holds no mapping");
    }
    server.onJson("GET", kMapping,
                  json("{'mapping':{'roles':{'x':'admin'},'groups':{'y':'x%1'}}}"));
    expectError(box, words, 1, "'x%1' is not mapped");
    for (const std::string& line : server.lines()) {
        EXPECT_EQ(line, "GET " + kMapping);
    }
    server.onJson("PUT", kMapping, {{"error", "no such role"}}, 422);
    expectError(box, args("sso map default nobody"), 2, "sso map failed (HTTP 422): no such role");
}

}  // namespace
}  // namespace quorvelle::testing
