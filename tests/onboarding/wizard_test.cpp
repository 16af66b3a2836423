#include <gmock/gmock.h>

#include "onboarding_fixture.h"
#include "support/raw_server.h"

namespace quorvelle::testing {

using ::testing::ElementsAre;

TEST_F(WizardTest, LeavesBehindWhatItSays) {
    for (const ReplyFault fault : {ReplyFault::kRefuse, ReplyFault::kGarbage,
                                   ReplyFault::kLoseRequest, ReplyFault::kLoseAnswer}) {
        checkEverywhere(fault, 1);
    }
    EXPECT_GT(endings["connected"], 20);
    EXPECT_GT(endings["undone"], 100);
    EXPECT_GT(endings["left behind"], 50);
}

/// What a user reads when one request goes wrong, and which exit code a script sees.
TEST_F(WizardTest, SaysWhatWentWrong) {
    const std::string server = cloudflare.server.url().toStdString();
    const std::string no = "Cloudflare: no, (token)\n";
    const std::string byHand = "could not undo everything - delete this by hand in Cloudflare: ";
    const std::string hint =
        no +
        "\nThat token may not create credentials. Either add 'API Tokens - Edit' (user scope) to "
        "it and run this again, or create the bucket and its two keys yourself and connect them:\n"
        " https://quorvelle.example/docs/build-storage\n"
        " quorvelle storage set --endpoint <url> --bucket <b> --access-key <k> --secret-key <s>\n";
    std::string hintAfterLeaving = hint;
    hintAfterLeaving.insert(no.size(), byHand + "bucket builds-1\n");
    const std::pair<std::vector<At>, std::string> table[] = {
        {{{3, ReplyFault::kRefuse}}, no},
        {{{3, ReplyFault::kGarbage}}, "Cloudflare: Cloudflare refused the request\n"},
        {{{5, ReplyFault::kRefuse}}, hint},
        {{{6, ReplyFault::kRefuse}}, no},
        {{{8, ReplyFault::kRefuse}}, hint},
        {{{9, ReplyFault::kRefuse}, {11, ReplyFault::kRefuse}}, hintAfterLeaving},
        {{{9, ReplyFault::kLoseAnswer}, {10, ReplyFault::kRefuse}},
         "Cloudflare: Connection closed\n" + byHand + "API token tok-1, API token builds-1-ci\n"},
        {{{10, ReplyFault::kRefuse}}, server + " refused the storage settings: no\n"},
        {{{10, ReplyFault::kLoseRequest}}, server + " did not answer: Connection closed\n"}};
    for (const auto& [faults, err] : table) {
        const Ran ran = runWith(false, faults, usual + " --yes");
        EXPECT_EQ(ran.err, err);
        EXPECT_EQ(ran.code, 2);
    }
}

TEST_F(WizardTest, WaitsHalfAMinuteForTheCredential) {
    EXPECT_THAT(runWith(false, {{10, ReplyFault::kRefuse}}, usual + " --yes").out,
                ::testing::EndsWith("Waiting for Cloudflare to activate the new credential\n"));
    EXPECT_THAT(cloudflare.server.lines(), ::testing::Contains("PUT /api/storage").Times(16));
}

TEST_F(WizardTest, GivesUpACallThatTakesTooLong) {
    const RawServer silent({}, RawServer::Ending::kSilence);
    api.set(silent.url().toUtf8());
    callLimit = 20;
    EXPECT_EQ(run(usual).err, "Cloudflare: Cloudflare did not answer within 0 seconds\n");
    EXPECT_EQ(onboarding::Surroundings{}.callLimit.count(), 30000);
}

/// The whole conversation: line, jurisdiction, body.
TEST_F(WizardTest, AsksForExactlyWhatItNeeds) {
    const auto policy = [](const char* name, const char* groups) {
        return std::string("POST /user/tokens|(none)|{'name':'builds-1-") + name +
               "','policies':[{'effect':'allow','permission_groups':[" + groups +
               "],'resources':{'com.cloudflare.edge.r2.bucket.acc_eu_builds-1':'*'}}]}";
    };
    EXPECT_EQ(run(usual + "/ --jurisdiction eu --yes").code, 0);
    std::vector<std::string> seen;
    for (const SeenRequest& request : cloudflare.server.requests()) {
        const bool isOurs = request.target.starts_with("/api/");
        EXPECT_EQ(request.header("Authorization"), isOurs ? "(none)" : "Bearer operator-secret");
        EXPECT_EQ(request.header("Content-Type"),
                  request.line() == "GET /api/backups" ? "(none)" : "application/json");
        seen.push_back(request.line() + '|' + request.header("cf-r2-jurisdiction") + '|' +
                       QByteArray::fromStdString(request.body).replace('"', '\'').toStdString());
    }
    EXPECT_THAT(
        seen,
        ElementsAre(
            "GET /accounts|(none)|", "GET /accounts/acc/r2/buckets|eu|", "GET /accounts|(none)|",
            "GET /accounts/acc/r2/buckets|eu|", "GET /user/tokens/permission_groups|(none)|",
            "POST /accounts/acc/r2/buckets|eu|{'name':'builds-1'}", "GET /api/backups|(none)|",
            policy("server", "{'id':'r'}"), policy("ci", "{'id':'r'},{'id':'w'}"),
            // SHA-256 of "value-tok-1", by sha256sum
            "PUT /api/storage|(none)|{'access_key':'tok-1','bucket':'builds-1',"
            "'endpoint':'https://acc.eu.r2.cloudflarestorage.com','region':'auto',"
            "'secret_key':'acd524554c37e60a3e8b854321e1006748567e151f2496cb5ae27cd358261ffd'}"));
    runWith(false, {{10, ReplyFault::kRefuse}}, usual + " --jurisdiction eu --yes");
    EXPECT_EQ(cloudflare.server.requests().back().line() + '|' +
                  cloudflare.server.requests().back().header("cf-r2-jurisdiction"),
              "DELETE /accounts/acc/r2/buckets/builds-1|eu");
}

}  // namespace quorvelle::testing
