#include "support/server_fixture.h"

namespace quorvelle::testing {
namespace {

TEST(ChannelCommands, MakeOneRequestEach) {
    checkOneRequestCommands(R"(
channels | GET /api/channels | | {'channels':[]} | channels | No channels on SERVER\n
channels surplus | GET /api/channels | | {'channels':'none'} | channels | No channels on SERVER\n
channels | GET /api/channels | | {'channels':[{'channel':'größe'},{'channel':'b','build':''},{'channel':'c','build':'7','promoted_at':'2026-01-02'},{'channel':'d','build':'8','file_count':0,'total_size':9007199254740993,'promoted_at':'2026-01-03'},{'build':7}]} | channels | Channels on SERVER:\n  größe (no build yet)\n  b (no build yet)\n  c -> build 7  promoted 2026-01-02\n  d -> build 8  (0 files, 9007199254740993 bytes)  promoted 2026-01-03\n   (no build yet)\n
channel create a/b | POST /api/channels/a%2Fb | | {'x':1} | channel create | Created channel 'a/b' on SERVER\n
channel delete a#b | DELETE /api/channels/a%23b | | {'unassigned_from_groups':3} | channel delete | Channel 'a#b' deleted (unassigned from 3 group(s); builds retained)\n
channel delete a | DELETE /api/channels/a | | {'unassigned_from_groups':'3'} | channel delete | Channel 'a' deleted (unassigned from 3 group(s); builds retained)\n
channel public a true | POST /api/channels/a/public?value=true | | {} | channel public | Channel 'a' is now public (anonymous read)\n
channel public a false | POST /api/channels/a/public?value=false | | {} | channel public | Channel 'a' is now private\n
channel launch list a/b | GET /api/channels/a%2Fb | | {} | channel launch list | 'a/b' has no launch targets\n
channel launch clear a/b | POST /api/channels/a%2Fb/launch | {'launch_targets':[]} | {'x':1} | channel launch clear | Removed all launch targets from 'a/b'\n
promote live b#7 | POST /api/channels/live/promote?build=b%237 | | {'name':'live','size':5000000000} | promote | Channel 'live' now at build b#7\n
)");
}

TEST(BuildCommands, MakeOneRequestEach) {
    checkOneRequestCommands(R"(
builds | GET /api/builds | | {'builds':[]} | builds | No builds on SERVER\n
builds surplus | GET /api/builds | | {} | builds | No builds on SERVER\n
builds | GET /api/builds | | {'builds':[{'build':'b1','created_at':'2026-01-02','file_count':'3','total_size':'5000000001','disabled':true,'channels':['a','b']},{'build':'b2','created_at':'2026-01-03','file_count':1,'total_size':7,'channels':[]}]} | builds | Builds on SERVER:\n  b1  2026-01-02  3 files  5000000001 bytes  [DISABLED]  <- a, b\n  b2  2026-01-03  1 files  7 bytes\n
build 42 | GET /api/builds/42 | | {'created_at':'2026-01-02','file_count':1,'total_size':9007199254740993,'disabled':true,'channels':['a'],'files':[{'path':'bin/ü','size':9007199254740993}]} | build | Build 42  [DISABLED]  created 2026-01-02  1 files, 9007199254740993 bytes\non channels: a\nfiles:\n  bin/ü  (9007199254740993 bytes)\n
build a/b | GET /api/builds/a%2Fb | | {} | build | Build a/b  created   0 files, 0 bytes\non channels: (none)\nfiles:\n
build delete 7#1 | DELETE /api/builds/7%231 | | {'x':1} | build delete | Build '7#1' deleted\n
build disable 7 | POST /api/builds/7/disabled?value=true | | {} | build disable | Build '7' disabled (cannot be promoted)\n
build enable 7 | POST /api/builds/7/disabled?value=false | | {} | build enable | Build '7' enabled\n
)");
}

using Promote = ServerTest;

TEST_F(Promote, TakesTheBuildOfAnotherChannel) {
    checkChangeCommands("GET /api/channels/100%251", "POST /api/channels/live/promote?build=b%207",
                        R"(
promote --from 100%1 live | {'build':'b 7','engine':'tide'} | | Channel 'live' now at build b 7 (from '100%1')
)");
    for (const char* reply : {"{}", R"({"build":""})", R"({"build":7})", "no JSON"}) {
        server.onBytes("GET", "/api/channels/%251", reply);
        expectError(box, args("promote live --from %1"), 2, "'%1' has no build to promote");
    }
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

const char kGet[] = "GET /api/channels/a%2Fb";
const char kPost[] = "POST /api/channels/a%2Fb/launch";

using ChannelLaunch = ServerTest;

TEST_F(ChannelLaunch, ListsTheTargets) {
    server.onBytes("GET", kGet + 4, R"({"launch_targets":[
        {"label":"A b","exe":"bin/ü","args":"-x \"y z\"","primary":true},
        {"label":"%1","exe":"t","args":"","primary":false},{"label":"l","exe":"e"}]})");
    expectOutcome(box.run(args("channel launch list a/b")), 0,
                  "  A b  bin/ü -x \"y z\"  [primary]\n  %1  t\n  l  e\n");
}

TEST_F(ChannelLaunch, WritesTheWholeListBack) {
    checkChangeCommands(kGet, kPost, R"(
channel launch add a/b --label L~1 --exe bin/ü --args -x~"y~z" | {'launch_targets':[]} | {'launch_targets':[{'label':'L 1','exe':'bin/ü','args':'-x \"y z\"','primary':false}]} | Added launch target 'L 1' on 'a/b'
channel launch add --exe e a/b --primary --label %1 | {'launch_targets':[{'label':'o','primary':true,'n':9007199254740993},7,{'label':'p'}]} | {'launch_targets':[{'label':'o','primary':false,'n':9007199254740993},7,{'label':'p','primary':false},{'label':'%1','exe':'e','args':'','primary':true}]} | Added launch target '%1' on 'a/b'
channel launch add a/b --label l --exe e | {'launch_targets':[{'label':'l','exe':'f','args':'a','primary':true,'working_dir':'w','new':{'x':[1]}},{'label':'L'}]} | {'launch_targets':[{'label':'l','exe':'e','args':'','primary':true,'working_dir':'w','new':{'x':[1]}},{'label':'L'}]} | Updated launch target 'l' on 'a/b'
channel launch add a/b --label l --exe e --primary | {'launch_targets':[{'label':'o','primary':true},{'label':'l','k':1}]} | {'launch_targets':[{'label':'o','primary':false},{'label':'l','k':1,'exe':'e','args':'','primary':true}]} | Updated launch target 'l' on 'a/b'
channel launch remove a/b l~l | {'launch_targets':[{'label':'o','x':1},{'label':'l l'},{'label':'L l'},{'label':'l l','exe':'2'}]} | {'launch_targets':[{'label':'o','x':1},{'label':'L l'}]} | Removed launch target 'l l' from 'a/b'
channel launch primary a/b l | {'launch_targets':[{'label':'o','primary':true,'x':1},{'label':'l'},{'label':'l','primary':true},'s']} | {'launch_targets':[{'label':'o','primary':false,'x':1},{'label':'l','primary':true},{'label':'l','primary':false},'s']} | Marked 'l' primary on 'a/b'
channel launch primary --clear a/b | {'launch_targets':[{'label':'o','primary':true,'x':1},{'label':'l','primary':true}]} | {'launch_targets':[{'label':'o','primary':false,'x':1},{'label':'l','primary':false}]} | Cleared the primary launch target on 'a/b'
)");
}

TEST_F(ChannelLaunch, StopsBeforeItWritesAWrongList) {
    server.onJson("GET", kGet + 4, json("{'launch_targets':[{'label':'l'},{'label':7}]}"));
    for (const char* words : {"remove a/b L%2", "primary a/b L%2"}) {
        expectError(box, args("channel launch ") + args(words), 1,
                    "no launch target labelled 'L%2' on 'a/b'");
    }
    const auto expectFailures = [this](const QString& how) {
        for (const QString words : {"add a/b --label l --exe e", "remove a/b l", "primary a/b l",
                                    "primary a/b --clear"}) {
            expectError(box, args("channel launch " + words), 2,
                        "channel launch " + words.section(' ', 0, 0) + how);
        }
    };
    server.onJson("GET", kGet + 4, json("{'error':'hidden'}"), 403);
    expectFailures(" failed (HTTP 403): hidden");
    for (const char* reply : {"<html>", "", R"([{"label":"l"}])", R"({"launch_targets":)",
                              R"({"launch_targets":{"a":1}})", R"({"launch_targets":"l"})"}) {
        SCOPED_TRACE(reply);
        server.onBytes("GET", kGet + 4, reply);
        expectFailures(" failed: the reply holds no launch targets");
    }
    EXPECT_THAT(server.lines(), Each(kGet));
    server.onJson("POST", kPost + 5, {});
    for (const char* none : {"{}", R"({"channel":"app"})", R"({"launch_targets":null})"}) {
        server.onBytes("GET", kGet + 4, none);
        EXPECT_EQ(box.run(args("channel launch primary a/b --clear")).code, 0);
        EXPECT_EQ(server.requests().back().body, R"({"launch_targets":[]})");
    }
    server.onJson("POST", kPost + 5, json("{'error':'no'}"), 409);
    expectError(box, args("channel launch add a/b --label l --exe e"), 2,
                "channel launch add failed (HTTP 409): no");
}

}  // namespace
}  // namespace quorvelle::testing
