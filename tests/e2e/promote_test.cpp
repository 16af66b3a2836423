#include <gmock/gmock.h>

#include "support/one_request.h"

namespace quorvelle::testing {
namespace {

using Promote = ServerTest;

const QJsonObject kReply{{"name", "live"}, {"build", "b 7"}, {"size", qint64{5000000000}}};
const std::string kPromoted = "/api/channels/live/promote?build=b%207";

TEST_F(Promote, PointsAChannelAtABuild) {
    checkOneRequestCommands(R"(
promote live b#7 | POST /api/channels/live/promote?build=b%237 | | {'name':'live','size':5000000000} | promote | Channel 'live' now at build b#7\n
)");
}

TEST_F(Promote, TakesTheBuildOfAnotherChannel) {
    server.onJson("GET", "/api/channels/100%251", {{"build", "b 7"}, {"engine", "tide"}});
    server.onJson("POST", kPromoted, kReply);
    const QStringList words = args("promote --from 100%1 live");
    expectOutcome(box.run(words), 0, "Channel 'live' now at build b 7 (from '100%1')\n");
    EXPECT_EQ(box.run(words + QStringList("--json")).json(), kReply);
    EXPECT_EQ(server.lines()[0], "GET /api/channels/100%251");
    EXPECT_EQ(server.lines()[1], "POST " + kPromoted);
    EXPECT_EQ(server.requests()[0].header("Content-Type"), "(none)");
}

TEST_F(Promote, ReportsASourceWithoutABuild) {
    for (const QJsonObject& reply :
         {QJsonObject{}, QJsonObject{{"build", ""}}, QJsonObject{{"build", 7}}}) {
        server.onJson("GET", "/api/channels/%251", reply);
        expectError(box, args("promote live --from %1"), 2, "'%1' has no build to promote");
    }
    server.onBytes("GET", "/api/channels/%251", "no JSON");
    expectError(box, args("promote live --from %1"), 2, "'%1' has no build to promote");
}

TEST_F(Promote, ReportsRefusals) {
    expectError(box, args("promote live --from dev"), 2,
                "reading channel 'dev' failed (HTTP 404): nothing at /api/channels/dev");
    server.onJson("GET", "/api/channels/dev", {{"build", "b"}});
    server.onJson("POST", "/api/channels/live/promote?build=b", {{"error", "b is disabled"}}, 409);
    expectError(box, args("promote live --from dev"), 2,
                "promote failed (HTTP 409): b is disabled");
    server.onBytes("POST", "/api/channels/live/promote?build=b", "fine");
    expectOutcome(box.run(args("promote live b --json")), 0, "{}\n");
}

}  // namespace
}  // namespace quorvelle::testing
