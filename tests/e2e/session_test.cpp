#include "e2e/session.h"

#include <QSysInfo>

namespace quorvelle::testing {
namespace {

const QString kSync = "Run 'quorvelle sync' or let the client pick them up.\n";
const QString kNone =
    "No channels assigned yet - subscriptions will appear automatically once your groups get "
    "assignments.\n";

TEST_F(Session, JoinPrintsStoresAndSubscribes) {
    joined({});
    EXPECT_EQ(whole(box.run(join() + QStringList{"--install-root", "root"})),
              at("Joined " + kGroups + kSubscribed) + kSync + "||0");
    EXPECT_EQ(
        text(entry()),
        at("{'install_root':'" + box.path("root") + "','server':'$','token':'new'}").toStdString());
    EXPECT_EQ(box.config()["subscriptions"][0]["dir"].toString(), box.path("root/app"));
    EXPECT_THAT(server.lines(), ElementsAre(std::string("POST ") + kRedeem, "GET /api/me"));
    EXPECT_EQ(server.requests()[0].header("Authorization"), "(none)");
    EXPECT_EQ(server.requests()[0].header("Content-Type"), "application/octet-stream");
    EXPECT_EQ(server.requests()[1].header("Authorization"), "Bearer new");

    EXPECT_EQ(whole(box.run(join())), at("Joined " + kGroups) + kMatch + kSync + "||0");
    QJsonObject bare{{"token", "new"}, {"user", "ann"}, {"role", "member"}};
    server.onJson("POST", kRedeem, bare);
    EXPECT_EQ(whole(box.run(join())),
              at("Joined $ as 'ann' (member)\nGroups: (none)\n") + kNone + kSync + "||0");
    const QJsonObject before = box.config();
    assign(server, "");
    EXPECT_EQ(box.run(join()).out,
              at("Joined $ as 'ann' (member)\nGroups: (none)\n") + kNone + kSync);
    EXPECT_EQ(box.config()["subscriptions"].toArray(), QJsonArray());
    box.writeConfig(before);
    bare["changes"] = QJsonArray{"retired 'app' (no longer assigned; files kept)"};
    EXPECT_EQ(box.run(join() + QStringList("--json")).json(), bare);
}

TEST_F(Session, JoinRenewsTheTokensOfManagedSubscriptions) {
    QJsonArray before;
    QJsonArray after;
    for (const QStringList& row : rows(R"(
        a | old  | managed | new
        b | dead | managed | new
        c | old  |         | old
        d | own  |         | own)")) {
        QJsonObject entry{{"name", row[0]}, {"server", server.url() + '/'}, {"channel", "app"}};
        entry["managed"] = !row[2].isEmpty();
        entry["token"] = row[1];
        before.append(entry);
        entry["token"] = row[3];
        after.append(entry);
    }
    const QString slashed = server.url() + "//";
    QJsonObject stored{{"server", slashed}, {"token", "old"}, {"tide_public_key", "k"}};
    stored["install_root"] = box.path("stored");
    joined({stored}, before);
    EXPECT_EQ(box.run(join()).err, QString());
    EXPECT_EQ(box.config()["subscriptions"].toArray(), after);
    stored["server"] = server.url();
    stored["token"] = "new";
    EXPECT_EQ(box.config()["servers"].toArray(), QJsonArray{stored});
}

TEST_F(Session, JoinStandsWhenReconcilingFails) {
    const QStringList words = join();
    joined({});
    assign(server, "'ok','..'");
    Outcome got = box.run(words);
    EXPECT_EQ(got.err, at("$: channel '..' cannot be a folder name - subscribe to it by hand\n"));
    EXPECT_TRUE(got.out.contains("subscribed 'ok' (ok @ ")) << got.out.toStdString();
    server.onJson("GET", "/api/me", {{"error", "busy"}}, 503);
    got = box.run(words);
    EXPECT_EQ(got.err, at("$: reconcile failed: busy\n"));
    EXPECT_FALSE(got.out.contains(kMatch));
    EXPECT_EQ(got.code, 2);
    EXPECT_EQ(entry()["token"].toString(), QString("new"));
    const QStringList lines = box.run(words + QStringList("--json")).out.split('\n');
    ASSERT_EQ(lines.size(), 3);
    EXPECT_EQ(object(lines[0]), QJsonObject({{"error", at("$: reconcile failed: busy")}}));
    EXPECT_EQ(object(lines[1])["changes"], QJsonArray());
}

TEST_F(Session, JoinNamesThisMachineAndReportsRefusals) {
    const std::string host = QSysInfo::machineHostName().toStdString();
    const std::string target = "/api/invites/redeem?code=x&machine=" + host;
    server.onJson("POST", target, {{"error", "used up"}}, 410);
    const QStringList words{"join", server.url(), "x"};
    expectError(box, words, 2, "join failed (HTTP 410): used up");
    server.onBytes("POST", target, "<h1>Welcome</h1>");
    expectError(box, words, 2, "join failed: the reply holds no token");
    EXPECT_EQ(box.read("config/config.json"), "(missing)");
    refuseSaves();
    expectError(box, join(), 2, kSaveIt);
    expectError(box, args("login ftp://x"), 1, "'ftp://x' is no http or https address");
    expectError(box, args("login servers.example/"), 1,
                "'servers.example' is no http or https address");
}

TEST_F(Session, ReconcileAsksEveryServer) {
    expectOutcome(box.run({"reconcile"}), 0, kMatch);
    EXPECT_EQ(box.run({"reconcile", "--json"}).json(), json("{'changes':[]}"));
    FakeServer bad;
    const QJsonObject good{{"server", server.url()}, {"token", "t"}, {"install_root", "/r"}};
    joined(
        {QJsonObject{{"server", bad.url()}, {"token", ""}}, good},
        {QJsonObject{{"name", "old"}, {"channel", "x"}, {"server", bad.url()}, {"managed", true}}});
    const QString error = bad.url() + ": reconcile failed: ";
    EXPECT_EQ(whole(box.run({"reconcile", "surplus"})),
              at(kSubscribed) + "|" + error + "nothing at /api/me\n|2");
    EXPECT_EQ(bad.requests()[0].header("Authorization"), "(none)");
    EXPECT_EQ(server.requests()[0].header("Authorization"), "Bearer t");
    bad.onBytes("GET", "/api/me", "<h1>Welcome</h1>");
    EXPECT_EQ(whole(box.run({"reconcile"})), "|" + error + "the reply holds no channel list\n|2");
    EXPECT_EQ(box.config()["subscriptions"].toArray().size(), 2);

    assign(bad, "");
    EXPECT_EQ(box.run({"reconcile"}).out, "retired 'old' (no longer assigned; files kept)\n");
    assign(server, "");
    refuseSaves();
    EXPECT_EQ(whole(box.run({"reconcile"})), at("|$: could not write config\n|2"));
    EXPECT_EQ(box.config()["subscriptions"].toArray().size(), 1);
}

}  // namespace
}  // namespace quorvelle::testing
