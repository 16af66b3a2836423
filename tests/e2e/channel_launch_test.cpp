#include <gmock/gmock.h>

#include "support/one_request.h"

namespace quorvelle::testing {
namespace {

using ::testing::ElementsAre;

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
    EXPECT_THAT(server.lines(), ::testing::Each(kGet));
    hold("[]");
    server.onJson("POST", kPost + 5, json("{'error':'no'}"), 409);
    expectError(box, command("add a/b --label l --exe e"), 2,
                "channel launch add failed (HTTP 409): no");
}

}  // namespace
}  // namespace quorvelle::testing
