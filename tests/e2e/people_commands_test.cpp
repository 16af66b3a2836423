#include "support/server_fixture.h"

namespace quorvelle::testing {
namespace {

using PeopleCommands = ProgramTest;

TEST_F(PeopleCommands, MakeOneRequestEach) {
    checkOneRequestCommands(R"(
whoami | GET /api/me | | {'name':'Zoë','role':'admin','groups':['a','b'],'channels':['c']} | whoami | SERVER: you are 'Zoë' (admin)\nGroups: a, b\nAssigned channels: c\n
whoami surplus | GET /api/me | | {'name':7,'groups':'a','channels':[]} | whoami | SERVER: you are '' ()\nGroups: (none)\nAssigned channels: (none)\n
users | GET /api/users | | {'users':[{'name':'zoë','role':'admin','service':false,'disabled':true,'groups':['a','b'],'follows':['c'],'channels':['d']},{'name':'ci','role':'publisher','service':true,'channels':['d','e']},{'name':'p','role':'publisher','disabled':'no'},7]} | users | Users on SERVER:\n  zoë  admin  [DISABLED]  groups: a, b  follows: c\n  ci  publisher  [service]  groups: (none)  follows: (none)  publishes to: d, e\n  p  publisher  groups: (none)  follows: (none)  publishes to: (none)\n      groups: (none)  follows: (none)\n
user create a/b#%2+c | POST /api/users/a%2Fb%23%252%2Bc?role=member | | {'x':1} | user create | User 'a/b#%2+c' created (role member) on SERVER\n
user create --role admin x | POST /api/users/x?role=admin | | {} | user create | User 'x' created (role admin) on SERVER\n
user create --service x | POST /api/users/x?role=publisher&service=true | | {} | user create | Service account 'x' created on SERVER (publisher, not a seat). Give your CI a token:\n  quorvelle token create <name> --user x\n
user create x --service --role member | POST /api/users/x?role=member&service=true | | {} | user create | Service account 'x' created on SERVER (publisher, not a seat). Give your CI a token:\n  quorvelle token create <name> --user x\n
user delete bob#2 | DELETE /api/users/bob%232 | | {'tokens_removed':5000000001} | user delete | User 'bob#2' deleted (5000000001 token(s) removed)\n
user delete x | DELETE /api/users/x | | {} | user delete | User 'x' deleted (0 token(s) removed)\n
user join-group x a+&b | POST /api/users/x/groups?group=a%2B%26b | | {} | join-group | User 'x' joined group 'a+&b'\n
user leave-group x g | DELETE /api/users/x/groups?group=g | | {} | leave-group | User 'x' left group 'g'\n
user follow x c | POST /api/users/x/channels?channel=c | | {} | follow | User 'x' now follows 'c'\n
user unfollow x ü | DELETE /api/users/x/channels?channel=%C3%BC | | {} | unfollow | User 'x' no longer follows 'ü'\n
user disable x | POST /api/users/x/disabled?value=true | | {} | disable | User 'x' disabled (all tokens invalidated)\n
user enable x | POST /api/users/x/disabled?value=false | | {} | enable | User 'x' enabled\n
user set-role x publisher | POST /api/users/x/role?value=publisher | | {} | user set-role | User 'x' is now publisher\n
user set-role x --channels a,b member | POST /api/users/x/role?value=member&channels=a%2Cb | | {} | user set-role | User 'x' is now member\n
token create t#1 --user ci/x | POST /api/users/ci%2Fx/tokens?name=t%231 | | {'token':'s3'} | token create | Token 't#1' created for service account 'ci/x'. Save it now - it is shown only once:\n\n  s3\n
groups | GET /api/groups | | {'groups':[]} | groups | No groups on SERVER\n
groups | GET /api/groups | | {'groups':[{'name':'ä','channels':['a','b'],'members':['x','y'],'sso_managed':true},{'name':'b'}]} | groups | Groups on SERVER:\n  ä  channels: [a, b]  members: [x, y]  (managed by SSO)\n  b  channels: []  members: []\n
group create g/1 | POST /api/groups/g%2F1 | | {} | group create | Group 'g/1' created on SERVER\n
group delete g | DELETE /api/groups/g | | {'removed_from_users':4} | group delete | Group 'g' deleted (removed from 4 user(s))\n
group assign-channel g c | POST /api/groups/g/channels?channel=c | | {} | assign-channel | Group 'g' now follows channel 'c'\n
group unassign-channel g c | DELETE /api/groups/g/channels?channel=c | | {} | unassign-channel | Group 'g' no longer follows channel 'c'\n
invite create x | POST /api/invites?user=x | | {'code':'K','expires_at':'2026-02-03'} | invite create | Invite for 'x' (expires 2026-02-03). The code is shown only once:\n\n  K\n\nThey join with:\n  quorvelle join SERVER K --install-root <path>\n
invite create --days 30 x --groups a,b | POST /api/invites?user=x&groups=a%2Cb&days=30 | | {'code':'K'} | invite create | Invite for 'x' (expires ). The code is shown only once:\n\n  K\n\nThey join with:\n  quorvelle join SERVER K --install-root <path>\n
invite revoke i/1 | DELETE /api/invites/i%2F1 | | {} | invite revoke | Invite 'i/1' revoked\n
invites | GET /api/invites | | {} | invites | No outstanding invites on SERVER\n
invites | GET /api/invites | | {'invites':[{'id':'1','code':'K','user':'x','groups':['a','b'],'expires_at':'2026-02-03','expired':true},{'code':'L','user':'y'},{'id':9007199254740993,'user':'z','expired':false}]} | invites | Outstanding invites on SERVER:\n  1  x  groups: [a, b]  expires 2026-02-03  (EXPIRED)\n  L  y  groups: []  expires \n  9007199254740993  z  groups: []  expires \n
requests | GET /api/access-requests | | {'requests':[]} | requests | No pending access requests on SERVER\n
requests | GET /api/access-requests | | {'requests':[{'id':'1','name':'x','email':'x@a','created_at':'2026-02-03','user_exists':true,'message':'hi\n  2  y'},{'id':2,'name':'y','email':'y@a','message':''}]} | requests | Pending access requests on SERVER:\n  1  x  x@a  2026-02-03  (user exists)\n      hi\n        2  y\n  2  y  y@a  \n
request approve 1/2 | POST /api/access-requests/1%2F2/approve | | {'email':'x@a','code':'K','expires_at':'2026-02-03'} | request approve | Approved. Send this to x@a (the code is shown only once):\n\nYou have access to the Quorvelle server SERVER\n\nInstall the client from https://quorvelle.example/download, start it, choose "Join with invite",\nand paste:\n\n  SERVER\n  K\n\nor in a terminal:  quorvelle join SERVER K --install-root <path>\n\nThe invite expires 2026-02-03\n
request decline 1 | DELETE /api/access-requests/1 | | {} | request decline | Declined 1\n
)");
}

/// A secret under a key that this version does not know would be lost with the reply. Each
/// row: a command, and a line of its text with nothing in the secret's place.
TEST_F(PeopleCommands, ShowTheWholeReplyThatLacksWhatIsToldOnce) {
    for (const QStringList& row : rows(R"(
token create t --user u | only once:\n\n  \n
invite create u         | only once:\n\n  \n
request approve 1       | --install-root <path>\n
backup init --shared    | manager now:\n\n\n)")) {
        const QStringList words = args(row[0]) + QStringList{"--server", server.url()};
        for (const char* reply : {R"({"key":"K"})", "<html>K",
                                  R"({"token":7,"code":"",)"
                                  R"("encryption_key":{"k":"K"}})",
                                  ""}) {
            SCOPED_TRACE(row[0].toStdString() + ' ' + reply);
            server.onAnythingElse(answering(reply));
            const Outcome got = box.run(words);
            EXPECT_EQ(got.code, 0);
            EXPECT_TRUE(got.out.contains(QString(row[1]).replace("\\n", "\n")))
                << got.out.toStdString();
            EXPECT_EQ(got.err, *reply == '\0' ? QString() : reply + QString('\n'));
            EXPECT_EQ(box.run(words + QStringList("--json")).err, QString());
        }
    }
}

TEST_F(PeopleCommands, TellAnEmptyOptionFromAMissingOne) {
    server.onJson("POST", "/api/users/x/role?value=publisher&channels=", {});
    server.onJson("POST", "/api/access-requests/1/approve?groups=&days=007", {});
    const QStringList on = {"--server", server.url(), "--channels", ""};
    EXPECT_EQ(box.run(args("user set-role x publisher") + on).code, 0);
    const QStringList days = {"--server", server.url(), "--groups", ""};
    EXPECT_EQ(box.run(args("request approve 1 --days 007") + days).code, 0);
    EXPECT_EQ(server.requests().size(), 2U);
}

TEST_F(PeopleCommands, RefuseDaysThatAreNoPositiveNumber) {
    for (const char* days : {"00", "-1", "+1", "1.5", "1x", "", " 1", "1\n", "٣"}) {
        SCOPED_TRACE(days);
        for (const char* command : {"invite create x", "request approve 1"}) {
            expectError(box, args(command) + QStringList{"--days", days, "--server", server.url()},
                        1, "--days must be a positive number");
        }
    }
    EXPECT_THAT(server.lines(), ElementsAre());
}

/// A request for access, with a token in the configuration that must not be shown to the
/// server, and without any configuration.
struct RequestAccess : ProgramTest {
    void answer(const QJsonObject& object, int status) {
        server.onJson("POST", "/api/access-requests", object, status);
    }

    const QStringList words = args("request-access --name zoë --email z@a " + server.url() + "//");
};

TEST_F(RequestAccess, GoesWithoutATokenOrConfiguration) {
    answer({{"id", 1}}, 200);
    const QString text =
        "Request sent to " + server.url() + ". An admin will send your invite to z@a\n";
    expectOutcome(box.run(words), 0, text);
    box.writeConfig(
        {{"token", "t"},
         {"servers", QJsonArray{QJsonObject{{"server", server.url()}, {"token", "own"}}}}});
    EXPECT_EQ(box.run(words + QStringList{"--message", "let me in", "--json"}).json(),
              (QJsonObject{{"id", 1}}));
    const auto requests = server.requests();
    ASSERT_EQ(requests.size(), 2U);
    for (const SeenRequest& request : requests) {
        EXPECT_EQ(request.header("Authorization"), "(none)");
        EXPECT_EQ(request.header("Content-Type"), "application/json");
    }
    EXPECT_EQ(requests.at(0).body, R"({"email":"z@a","message":"","name":"zoë"})");
    EXPECT_EQ(requests.at(1).body, R"({"email":"z@a","message":"let me in","name":"zoë"})");
}

TEST_F(RequestAccess, ReportsItsOwnErrors) {
    answer({{"error", "not open to strangers"}}, 403);
    expectError(box, words, 2, "not open to strangers");
    answer({{"error", 7}}, 503);
    expectError(box, words, 2, "request failed (HTTP 503)");
    const QString nowhere = "http://127.0.0.1:1";
    expectError(box, args("request-access --name x --email x@a " + nowhere), 2,
                "could not reach " + nowhere);
}

}  // namespace
}  // namespace quorvelle::testing
