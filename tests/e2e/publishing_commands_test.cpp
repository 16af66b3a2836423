#include "support/server_test.h"

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

const char kGet[] = "GET /api/channels/a%2Fb";
const char kPost[] = "POST /api/channels/a%2Fb/launch";

struct ChannelLaunch : ServerTest {
    ChannelLaunch() { server.onJson("POST", kPost + 5, json("{'saved':1}")); }

    void hold(const QString& targets) {
        server.onJson("GET", kGet + 4, json("{'launch_targets':" + targets.toUtf8() + '}'));
    }

    /// The command "channel launch <words>", in which "_" stands for a blank.
    static QStringList command(const QString& words) {
        QStringList list = args("channel launch " + words);
        return list.replaceInStrings("_", " ");
    }
};

TEST_F(ChannelLaunch, MakesOneRequestToListAndToClear) {
    checkOneRequestCommands(R"(
channel launch list a/b | GET /api/channels/a%2Fb | | {} | channel launch list | 'a/b' has no launch targets\n
channel launch clear a/b | POST /api/channels/a%2Fb/launch | {'launch_targets':[]} | {'x':1} | channel launch clear | Removed all launch targets from 'a/b'\n
)");
}

TEST_F(ChannelLaunch, ListsTheTargets) {
    hold(R"([{'label':'A b','exe':'bin/ü','args':'-x \"y z\"','primary':true},
             {'label':'%1','exe':'t','args':'','primary':false},{'label':'l','exe':'e'}])");
    expectOutcome(box.run(command("list a/b")), 0,
                  "  A b  bin/ü -x \"y z\"  [primary]\n  %1  t\n  l  e\n");
}

/// Each row: the words, the list before, the list that is written, the text.
TEST_F(ChannelLaunch, WritesTheWholeListBack) {
    for (const QStringList& row : rows(R"(
add a/b --label L_1 --exe bin/ü --args -x_"y_z" | [] | [{'label':'L 1','exe':'bin/ü','args':'-x \"y z\"','primary':false}] | Added launch target 'L 1' on 'a/b'
add --exe e a/b --primary --label %1 | [{'label':'o','primary':true,'n':9007199254740993},7,{'label':'p'}] | [{'label':'o','primary':false,'n':9007199254740993},7,{'label':'p','primary':false},{'label':'%1','exe':'e','args':'','primary':true}] | Added launch target '%1' on 'a/b'
add a/b --label l --exe e | [{'label':'l','exe':'f','args':'a','primary':true,'working_dir':'w','new':{'x':[1]}},{'label':'L'}] | [{'label':'l','exe':'e','args':'','primary':true,'working_dir':'w','new':{'x':[1]}},{'label':'L'}] | Updated launch target 'l' on 'a/b'
add a/b --label l --exe e --primary | [{'label':'o','primary':true},{'label':'l','k':1}] | [{'label':'o','primary':false},{'label':'l','k':1,'exe':'e','args':'','primary':true}] | Updated launch target 'l' on 'a/b'
remove a/b l_l | [{'label':'o','x':1},{'label':'l l'},{'label':'L l'},{'label':'l l','exe':'2'}] | [{'label':'o','x':1},{'label':'L l'}] | Removed launch target 'l l' from 'a/b'
primary a/b l | [{'label':'o','primary':true,'x':1},{'label':'l'},{'label':'l','primary':true},'s'] | [{'label':'o','primary':false,'x':1},{'label':'l','primary':true},{'label':'l','primary':false},'s'] | Marked 'l' primary on 'a/b'
primary --clear a/b | [{'label':'o','primary':true,'x':1},{'label':'l','primary':true}] | [{'label':'o','primary':false,'x':1},{'label':'l','primary':false}] | Cleared the primary launch target on 'a/b'
)")) {
        SCOPED_TRACE(row[0].toStdString());
        hold(row[1]);
        server.forget();
        expectOutcome(box.run(command(row[0])), 0, row[3] + '\n');
        EXPECT_EQ(box.run(command(row[0] + " --json")).json(), json("{'saved':1}"));
        EXPECT_THAT(server.lines(), ElementsAre(kGet, kPost, kGet, kPost));
        const SeenRequest post = server.requests().at(1);
        EXPECT_EQ(text(object(QString::fromStdString(post.body))),
                  text(json("{'launch_targets':" + row[2].toUtf8() + '}')));
        EXPECT_EQ(post.header("Authorization") + post.header("Content-Type"),
                  "Bearer tapplication/json");
    }
}

TEST_F(ChannelLaunch, StopsBeforeItWritesAWrongList) {
    hold("[{'label':'l'},{'label':7}]");
    for (const char* words : {"remove a/b L%2", "primary a/b L%2"}) {
        expectError(box, command(words), 1, "no launch target labelled 'L%2' on 'a/b'");
    }
    server.onJson("GET", kGet + 4, json("{'error':'hidden'}"), 403);
    for (const QString words :
         {"add a/b --label l --exe e", "remove a/b l", "primary a/b l", "primary a/b --clear"}) {
        expectError(box, command(words), 2,
                    "channel launch " + words.section(' ', 0, 0) + " failed (HTTP 403): hidden");
    }
    for (const char* reply : {"<html>", "", "[{\"label\":\"l\"}]", "{\"launch_targets\":",
                              R"({"launch_targets":{"a":1}})", R"({"launch_targets":"l"})"}) {
        SCOPED_TRACE(reply);
        server.onBytes("GET", kGet + 4, reply);
        for (const QString words : {"add a/b --label l --exe e", "remove a/b l", "primary a/b l",
                                    "primary a/b --clear"}) {
            expectError(box, command(words), 2,
                        "channel launch " + words.section(' ', 0, 0) +
                            " failed: the reply holds no launch targets");
        }
    }
    EXPECT_THAT(server.lines(), Each(kGet));
    for (const char* none : {"{}", R"({"channel":"app"})", R"({"launch_targets":null})"}) {
        server.onBytes("GET", kGet + 4, none);
        EXPECT_EQ(box.run(command("primary a/b --clear")).code, 0);
        EXPECT_EQ(server.requests().back().body, R"({"launch_targets":[]})");
    }
    hold("[]");
    server.onJson("POST", kPost + 5, json("{'error':'no'}"), 409);
    expectError(box, command("add a/b --label l --exe e"), 2,
                "channel launch add failed (HTTP 409): no");
}

}  // namespace
}  // namespace quorvelle::testing
