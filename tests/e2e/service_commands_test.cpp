#include "support/server_fixture.h"

namespace quorvelle::testing {
namespace {

TEST(ServiceCommands, ShowVersionLicenseAndPortal) {
    checkOneRequestCommands(R"(
server-version surplus | GET /api/version | | {'name':'quorvelled','version':'1.2.3','schema_version':'9'} | server-version | quorvelled 1.2.3 (schema v9) at SERVER\n
license | GET /api/license | | {'status':'valid','tier':'team','licensee':'%1 Ltd','expires':'2027-01-31','days_left':71,'seats_used':2,'seats_cap':3} | license | License on SERVER: valid (team), licensee '%1 Ltd', through 2027-01-31, 71 days left\nSeats: 2 of 3 privileged seats used (admins + publishers)\n
license | GET /api/license | | {'status':'expired','days_left':'0','seats_used':'3','seats_cap':'3'} | license | License on SERVER: expired, 0 days left\nSeats: 3 of 3 privileged seats used (admins + publishers) - all seats taken: add seats or disable a user\n
license | GET /api/license | | {'status':'valid','seats_used':12,'seats_cap':0} | license | License on SERVER: valid\nPrivileged seats in use: 12 (admins + publishers; no seat limit on this license)\n
cloud portal surplus | GET /api/cloud/portal | | {'url':'https://b/?a=1&b=%31'} | cloud portal | Billing portal (open in a browser, link is short-lived):\nhttps://b/?a=1&b=%31\n
)");
}

TEST(ServiceCommands, LookAfterBackups) {
    checkOneRequestCommands(R"(
backup | POST /api/backup | | {'snapshot':'s-7'} | backup | Backup started: s-7 (runs on the server; 'quorvelle backups' shows the result)\n
backups surplus | GET /api/backups | | {'note':'n'} | backups | Backups are not configured on SERVER (on the server: quorvelled backup init ...)\n
backups | GET /api/backups | | {'configured':true,'bucket':'b','last':null} | backups | Backup bucket: b\nSchedule: off, no pruning\n0 snapshot(s)\n
backups | GET /api/backups | | {'configured':true,'bucket':'b','running':true,'schedule':{'daily_at':'03:00','keep':'7'},'last':{'snapshot':'s2','finished_at':'2026-01-02'},'snapshots':[{'name':'s1','files':2,'bytes':9007199254740993},{'name':'s2','files':1}],'note':'%1'} | backups | Backup bucket: b (backup running)\nSchedule: daily at 03:00 (server time), keep 7\nLast: s2  2026-01-02\n  s1  2 file(s), 9007199254740993 bytes\n  s2  1 file(s), 0 bytes\n2 snapshot(s)\nnote: %1\n
backups | GET /api/backups | | {'configured':true,'bucket':'b','schedule':{'daily_at':'','keep':1},'last':{'error':'disk full','snapshot':'s'},'snapshots':[]} | backups | Backup bucket: b\nSchedule: off, keep 1\nLast: FAILED: disk full\n0 snapshot(s)\n
backup init --shared | POST /api/backup/init | {'mode':'shared'} | {'bucket':'b','prefix':'p/','encryption_key':'k%1'} | backup init | Backups configured: bucket 'b' under p/\n\nEncryption key - shown ONCE. Without it every snapshot is unreadable; keep it in\nyour password manager now:\n\nk%1\n
backup init --endpoint e --bucket b --access-key a --secret-key s | POST /api/backup/init | {'mode':'separate','endpoint':'e','bucket':'b','access_key':'a','secret_key':'s','region':'auto'} | {'bucket':'b','prefix':'','encryption_key':'k'} | backup init | Backups configured: bucket 'b'\n\nEncryption key - shown ONCE. Without it every snapshot is unreadable; keep it in\nyour password manager now:\n\nk\n
backup schedule 03:00 --keep 0 | PUT /api/backup/config | {'daily_at':'03:00','keep':0} | {'daily_at':'03:01','keep':0} | backup schedule | Scheduled backups: daily at 03:01 (server time), no pruning\n
backup schedule --keep 5000000001 oFF | PUT /api/backup/config | {'daily_at':'','keep':5000000001} | {'daily_at':'','keep':5000000001} | backup schedule | Scheduled backups: off, keep 5000000001 snapshot(s)\n
backup schedule offset | PUT /api/backup/config | {'daily_at':'offset'} | {} | backup schedule | Scheduled backups: off, no pruning\n
backup forget | DELETE /api/backup/config | | {} | backup forget | Backup target forgotten on SERVER (key file and snapshots untouched)\n
)");
}

TEST(ServiceCommands, ConnectBuildStorage) {
    checkOneRequestCommands(R"(
storage show | GET /api/storage | | {'endpoint':'e'} | storage show | Build storage: not configured on SERVER\n
storage show | GET /api/storage | | {'configured':true,'endpoint':'%2','region':'eu','bucket':'b','access_key_hint':'AK…9'} | storage show | Build storage on SERVER:\n  endpoint: %2\n  region: eu\n  bucket: b\n  key: AK…9\n
storage test | POST /api/storage/test | | {'bucket':'b'} | storage test | Bucket reachable: 'b'\n
storage set --region eu --endpoint e --bucket b --access-key a --secret-key s | PUT /api/storage | {'endpoint':'e','region':'eu','bucket':'b','access_key':'a','secret_key':'s'} | {'bucket':'B'} | storage set | Build storage connected: bucket 'B'\n
storage set --endpoint e --bucket b --access-key a --secret-key s | PUT /api/storage | {'endpoint':'e','region':'auto','bucket':'b','access_key':'a','secret_key':'s'} | {} | storage set | Build storage connected: bucket ''\n
storage forget | DELETE /api/storage | | {'x':1} | storage forget | Build storage forgotten on SERVER\n
)");
}

TEST(ServiceCommands, ConnectSingleSignOn) {
    checkOneRequestCommands(R"(
sso show | GET /api/sso/config | | {} | sso show | SSO: not configured on SERVER\n
sso show | GET /api/sso/config | | {'configured':true,'issuer':'%2','client_id':'c','scopes':'openid email','secret_set':true} | sso show | SSO on SERVER:\n  issuer: %2\n  client id: c\n  scopes: openid email\n  secret: stored\n
sso show | GET /api/sso/config | | {'configured':true,'issuer':'i','client_id':'c','secret_set':false} | sso show | SSO on SERVER:\n  issuer: i\n  client id: c\n  scopes: \n  secret: missing\n
sso test | POST /api/sso/config/test | | {'authorization_endpoint':'https://i/a?b=%20'} | sso test | Provider reachable: sign-in at https://i/a?b=%20\n
sso set --issuer i --client-id c --client-secret s | PUT /api/sso/config | {'issuer':'i','client_id':'c','client_secret':'s','scopes':''} | {'issuer':'I'} | sso set | SSO configured: I\n
sso set --scopes x --issuer i --client-id c --client-secret s | PUT /api/sso/config | {'issuer':'i','client_id':'c','client_secret':'s','scopes':'x'} | {} | sso set | SSO configured: \n
sso clear | DELETE /api/sso/config | | {} | sso clear | SSO cleared on SERVER\n
sso map list | GET /api/sso/mapping | | {'mapping':{'roles_claim':'r','groups_claim':'g','default_role':'member'}} | sso map list | SSO mapping on SERVER: (provider not set - defaults)\nclaims:       roles=r groups=g\ndefault role: member\nroles:        (none)\ngroups:       (none)\n
sso map list | GET /api/sso/mapping | | {'configured':true,'mapping':{'roles':{'boss':'admin','dev':'publisher'},'groups':{'%1':'g'}}} | sso map list | SSO mapping on SERVER:\nclaims:       roles= groups=\ndefault role: \nrole:         boss -> admin\nrole:         dev -> publisher\ngroup:        %1 -> g\n
)");
}

using ServiceWords = ServerTest;

TEST_F(ServiceWords, AreCheckedBeforeAnyRequest) {
    box.environment.insert("QUORVELLE_TRIAL_URL", server.url());
    for (const QStringList& row : rows(R"(
backup init --bucket b --access-key a --secret-key s | backup init needs --shared or --endpoint --bucket --access-key --secret-key
backup init --endpoint e --bucket b --access-key a | backup init needs --shared or --endpoint --bucket --access-key --secret-key
backup init --endpoint e --access-key a --secret-key s | backup init needs --shared or --endpoint --bucket --access-key --secret-key
backup init --endpoint e --bucket b --secret-key s --region r | backup init needs --shared or --endpoint --bucket --access-key --secret-key
backup init --region r --shared | --shared takes no bucket options
backup schedule 03:00 --keep -1 | --keep must be a number >= 0
backup schedule off --keep 9223372036854775808 | --keep must be a number >= 0
storage set --endpoint e --bucket b --access-key a --region r | storage set needs --endpoint --bucket --access-key --secret-key
sso set --client-id c --client-secret s | sso set needs --issuer --client-id --client-secret
sso set --issuer i --client-secret s | sso set needs --issuer --client-id --client-secret
sso set --issuer i --client-id c --scopes x | sso set needs --issuer --client-id --client-secret
license request-trial | --name <licensee> is required)")) {
        SCOPED_TRACE(row[0].toStdString());
        expectError(box, args(row[0]), 1, row[1]);
    }
    expectError(box, {"backup", "schedule", "off", "--keep", ""}, 1,
                "--keep must be a number >= 0");
    EXPECT_THAT(server.lines(), ElementsAre());
}

using SsoMap = ServerTest;

const std::string kMapping = "/api/sso/mapping";

TEST_F(SsoMap, WritesTheWholeMappingBackWithOneChange) {
    checkChangeCommands("GET " + kMapping, "PUT " + kMapping, R"(
sso map role x publisher | {'mapping':{'roles':{'a':'admin','x':'member'},'groups':{'g':'h'},'limit':9007199254740993}} | {'roles':{'a':'admin','x':'publisher'},'groups':{'g':'h'},'limit':9007199254740993} | Mapping saved.
sso map role a/b admin | {} | {'roles':{'a/b':'admin'}} | Mapping saved.
sso map role a admin | {'configured':true,'mapping':null} | {'roles':{'a':'admin'}} | Mapping saved.
sso map group x staff | {'mapping':{'groups':null,'roles':{'x':'admin'},'deep':{'k':[null]}}} | {'roles':{'x':'admin'},'groups':{'x':'staff'},'deep':{'k':[null]}} | Mapping saved.
sso map remove x | {'mapping':{'roles':{'a':'admin','x':'member'},'groups':{'g':'h'}}} | {'roles':{'a':'admin'},'groups':{'g':'h'}} | Mapping saved.
sso map remove x | {'mapping':{'roles':{},'groups':{'x':'h'},'new':1}} | {'roles':{},'groups':{},'new':1} | Mapping saved.
sso map remove x | {'mapping':{'roles':{'x':'admin'},'groups':{'x':'h'}}} | {'roles':{},'groups':{}} | Mapping saved.
sso map default publisher | {'mapping':{'default_role':'member','new':1}} | {'default_role':'publisher','new':1} | Mapping saved.
sso map claims --roles r --groups g | {'mapping':{'roles_claim':'a','new':1}} | {'roles_claim':'r','groups_claim':'g','new':1} | Mapping saved.
sso map claims --groups g | {'mapping':{'roles_claim':'a','groups_claim':'b'}} | {'roles_claim':'a','groups_claim':'g'} | Mapping saved.
)");
}

TEST_F(SsoMap, WritesNothingItHasNotReadOrCannotChange) {
    const QStringList words = args("sso map remove x%1");
    expectError(box, words, 2,
                "sso map failed (HTTP 404): nothing at " + QString::fromStdString(kMapping));
    for (const char* reply :
         {"<html>", "", R"([{"mapping":{}}])", R"({"mapping":"x"})", R"({"mapping":[1]})",
          R"({"mapping":{"roles":[1,2]}})", R"({"mapping":{"groups":"g"}})"}) {
        server.onBytes("GET", kMapping, reply);
        expectError(box, words, 2, "sso map failed: the reply holds no mapping");
    }
    server.onJson("GET", kMapping,
                  json("{'mapping':{'roles':{'x':'admin'},'groups':{'y':'x%1'}}}"));
    expectError(box, words, 1, "'x%1' is not mapped");
    EXPECT_THAT(server.lines(), Each("GET " + kMapping));
    server.onJson("PUT", kMapping, {{"error", "no such role"}}, 422);
    expectError(box, args("sso map default nobody"), 2, "sso map failed (HTTP 422): no such role");
}

const QStringList kRequest{"license", "request-trial", "--name", "%1 & Söhne"};

struct TrialLicense : ServerTest {
    TrialLicense() { box.environment.insert("QUORVELLE_TRIAL_URL", service.url() + "/"); }

    FakeServer service;
};

TEST_F(TrialLicense, IsFetchedFromTheServiceAndInstalledOnTheServer) {
    const QJsonObject trial =
        json("{'tier':'T','licensee':'%1','days_left':'9','expires':'later','blob':[5000000001]}");
    service.onJson("POST", "/api/trial", trial);
    server.onJson("POST", "/api/license", {{"ok", 1}});
    const QString installedOn = "Trial installed on " + server.url() + ": ";
    expectOutcome(box.run(kRequest), 0, installedOn + "T for '%1', 9 days (through later)\n");
    const QJsonObject reply = json("{'tier':'t','licensee':'l','days_left':0,'expires':''}");
    server.onJson("POST", "/api/license", reply);
    expectOutcome(box.run(kRequest), 0, installedOn + "t for 'l', 0 days (through )\n");
    EXPECT_EQ(box.run(kRequest + QStringList("--json")).json(), reply);
    const SeenRequest asked = service.requests().at(0);
    EXPECT_EQ(asked.header("Authorization"), "Bearer quorvelle-cli");
    EXPECT_EQ(asked.header("Content-Type"), "application/json");
    EXPECT_EQ(asked.body, "{\"name\":\"%1 & Söhne\"}");
    const SeenRequest installed = server.requests().at(0);
    EXPECT_EQ(installed.header("Authorization"), "Bearer t");
    EXPECT_EQ(object(QString::fromStdString(installed.body)), trial);

    box.environment.insert("QUORVELLE_TRIAL_TOKEN", "mine");
    server.onJson("POST", "/api/license", {{"error", "too old"}}, 409);
    expectError(box, kRequest, 2, "install trial failed (HTTP 409): too old");
    EXPECT_EQ(service.requests().back().header("Authorization"), "Bearer mine");
}

TEST_F(TrialLicense, IsNotInstalledWhenTheServiceGaveNone) {
    for (const QStringList& cells : rows(R"(
401 | {"error":"x"} | the licensing service rejected this client (bad or missing token)
429 | {"error":"x"} | rate limited by the licensing service - try again shortly
403 | {"error":"name taken: %1"} | name taken: %1
500 | <html> | licensing service returned HTTP 500
403 | {"error":""} | licensing service returned HTTP 403
200 | [{"tier":"t"}] | the licensing service sent no license
200 | {"error":"name taken: %1"} | name taken: %1
200 | {"error":7} | the licensing service sent no license
)")) {
        SCOPED_TRACE(cells.join(u'|').toStdString());
        service.on("POST", "/api/trial", answering(cells[1].toStdString(), cells[0].toInt()));
        expectError(box, kRequest, 2, cells[2]);
    }
    const QString nowhere = "http://127.0.0.1:1";
    box.environment.insert("QUORVELLE_TRIAL_URL", nowhere);
    expectError(box, kRequest, 2, "could not reach the licensing service at " + nowhere);
    EXPECT_THAT(server.lines(), ElementsAre());
}

}  // namespace
}  // namespace quorvelle::testing
