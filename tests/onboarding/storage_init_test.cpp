#include "onboarding/bucket_rules.h"
#include "onboarding_fixture.h"
#include "support/raw_server.h"
#include "support/server_api_page.h"

namespace quorvelle::testing {

TEST(BucketRules, AreReportedInTheirOrder) {
    const QString hyphen = "A bucket name cannot start or end with a hyphen.";
    const QString length = "A bucket name is between 3 and 63 characters long.";
    const QString character =
        "A bucket name uses only lowercase letters, numbers and hyphens - '%1' is not allowed.";
    const std::pair<QString, QString> table[] = {
        {"0-9", ""},
        {QString(63, u'z'), ""},
        {"My-Bucket", character.arg("M")},
        {"-a_", character.arg("_")},
        {"a😀b", character.arg("😀")},
        {"-abc", hyphen},
        {"abc-", hyphen},
        {"-", hyphen},
        {"ab", length},
        {QString(64, u'z'), length},
    };
    for (const auto& [name, problem] : table) {
        EXPECT_EQ(onboarding::bucketNameProblem(name), problem) << name.toStdString();
    }
    EXPECT_EQ(onboarding::defaultBucketName(0xABCDEF00012FULL), "quorvelle-builds-00012f");
}

TEST_F(StorageInitTest, RefusesWhatTheUserCanMendBeforeAnyCall) {
    for (const QStringList& row : rows(R"(
           | surplus --token t --jurisdiction x | refusing --token: a Cloudflare token on the command line lands in shell history and CI logs. Set CLOUDFLARE_API_TOKEN, or use --token-file <path>.
           | --server s --jurisdiction x | no Cloudflare API token: set CLOUDFLARE_API_TOKEN or pass --token-file <path>. The token needs 'API Tokens - Edit' (user) and 'Workers R2 Storage - Edit' (account).
           | --token-file /dev/null | no Cloudflare API token: set CLOUDFLARE_API_TOKEN or pass --token-file <path>. The token needs 'API Tokens - Edit' (user) and 'Workers R2 Storage - Edit' (account).
           | --token-file /none/t | cannot read /none/t
         t | --token-file /none/t --jurisdiction EU --bucket X | --jurisdiction takes eu, us or none
         t | --bucket -b | bucket name '-b': A bucket name cannot start or end with a hyphen.
         t | --bucket abc | 'server' is not configured (quorvelle config set server <value>))")) {
        token.set(row[0].toUtf8() + "\n");
        const Ran ran = run(row[1] + " --yes");
        EXPECT_EQ(ran.code, 1);
        EXPECT_EQ(ran.out, "");
        EXPECT_EQ(ran.err, row[2].toStdString() + "\n");
    }
    EXPECT_THAT(cloudflare.server.lines(), IsEmpty());
}

/// What a user reads when requests go wrong, and which exit code a script sees.
TEST_F(StorageInitTest, SaysWhatWentWrong) {
    using enum ReplyFault;
    const QString server = cloudflare.server.url();
    const QString no = "Cloudflare: no, (token)\n";
    const QString hint =
        "\nThat token may not create credentials. Either add 'API Tokens - Edit' (user scope) to "
        "it and run this again, or create the bucket and its two keys yourself and connect them:\n"
        " https://quorvelle.example/docs/build-storage\n"
        " quorvelle storage set --endpoint <url> --bucket <b> --access-key <k> --secret-key <s>\n";
    const QString incomplete = "Cloudflare: Cloudflare created a token without an id or value\n";
    const QString choose =
        "This token sees 2 accounts:\n  a  A\n  acc  Acme\npass --account-id <id> to choose one\n";
    const QString exists =
        "a bucket named 'builds-1' already exists in this account. Quorvelle will not write into "
        "a bucket it did not create - choose another name.\n";
    const QString appeared =
        "the bucket 'builds-1' appeared in this account a moment ago - run again with a different "
        "name\n";
    const std::string one = "{'success':true,'result':[{'id':'a','name':'A'}],'result_info':";
    const std::string more = "{'success':true,'result':{},'result_info':{'cursor':'c/1'}}";
    const std::string taken =
        "{'success':true,'result':{'buckets':[{'name':'builds-1'}]},"
        "'result_info':{'cursor':''}}";
    const std::string failed = "{'success':false,'errors':[]}";
    const At paged{1, kSay, one + "{'cursor':'c/1'}}"};
    struct Row {
        std::vector<At> faults;
        QString err;
        int code = 2;
        QString options = {};
    };
    const Row table[] = {
        {{{1, kSay, "{'success':true,'result':[]}"}},
         "that token sees no Cloudflare account - check it was created for the right account\n",
         1},
        {{paged}, choose, 1},
        {{{1, kSay, one + "{'total_pages':'2'}}"}}, choose, 1},
        {{paged}, "that token does not see the account 'x'\n", 1, "--account-id x"},
        {{paged, {3, kSay, more}, {4, kSay, "{'errors':[{'message':'at page 2'}]}"}},
         "Cloudflare: at page 2\n",
         2,
         "--account-id acc"},
        {{paged, {3, kSay, more}, {4, kSay, taken}},
         exists,
         1,
         "--account-id acc --jurisdiction us"},
        {{{2, kSay, taken}}, exists, 1},
        {{{3, kRefuse}}, no},
        {{{3, kGarbage}}, "Cloudflare: Cloudflare refused the request\n"},
        {{{5, kRefuse}}, no + hint},
        {{{5, kSay,
           "{'success':true,'result':[{'id':'r','name':'Workers R2 Storage Bucket Item Read'}]}"}},
         "Cloudflare lists no permission group named 'Workers R2 Storage Bucket Item Write'\n"},
        {{{6, kRefuse}}, no},
        {{{6, kSay, "{'success':false,'errors':[{'code':10004,'message':'x'}]}", 400}},
         appeared,
         1},
        {{{6, kSay, failed, 409}}, appeared, 1},
        {{{6, kSay, failed, 403}, {7, kSay, taken}}, appeared, 1},
        {{{8, kRefuse}}, no + hint},
        {{{8, kSay, "{'success':true,'result':{'id':'tok-1'}}"}}, incomplete},
        {{{8, kSay, "{'success':true,'result':{'value':'v'}}"}},
         incomplete + kByHand + "API token builds-1-server\n"},
        {{{9, kRefuse}, {11, kRefuse}}, no + kByHand + "bucket builds-1\n" + hint},
        {{{9, kLoseAnswer}, {10, kRefuse}},
         "Cloudflare: Connection closed\n" + kByHand + "API token tok-1, API token builds-1-ci\n"},
        {{{10, kRefuse}}, server + " refused the storage settings: no\n"},
        {{{10, kLoseRequest}}, server + " did not answer: Connection closed\n"}};
    for (const auto& [faults, err, code, options] : table) {
        SCOPED_TRACE(err.toStdString());
        const Ran ran = create(faults, options);
        EXPECT_EQ(ran.err, err.toStdString());
        EXPECT_EQ(ran.code, code);
        EXPECT_EQ(cloudflare.left().count("bucket builds-1"), err.contains("bucket builds-1"));
        if (code == 1) {
            EXPECT_THAT(cloudflare.server.lines(), Each(Not(StartsWith("DELETE")))) << "not ours";
        }
    }
}

TEST_F(StorageInitTest, TellsWhatItWouldDo) {
    const std::string server = cloudflare.server.url().toStdString();
    EXPECT_EQ(
        run("--server " + cloudflare.server.url() + "// --jurisdiction us --single-token").out,
        "Cloudflare account: acc (Acme)\n"
        "Bucket:             quorvelle-builds-00012f   available\n"
        "Jurisdiction:       us (cannot be changed later)\n"
        "S3 endpoint:        https://acc.us.r2.cloudflarestorage.com\n"
        "Credentials:        one token for the server and CI (fine for a demo)\n"
        "Server to configure: " +
            server +
            "\n\n"
            "Nothing was created. Re-run with --yes to create the bucket, mint the credentials "
            "and save them to the server.\n");
    const Ran taken = run("--bucket old --server " + cloudflare.server.url());
    EXPECT_THAT(taken.out, HasSubstr("Bucket:             old   ALREADY EXISTS\n"
                                     "Jurisdiction:       none\n"));
    EXPECT_THAT(taken.out, HasSubstr("two tokens - one for the server, read+write for CI\n"));
    EXPECT_EQ(run(usual + " --json").out,
              "{\"account_id\":\"acc\",\"bucket\":\"builds-1\",\"created\":false,\"endpoint\":"
              "\"https://acc.r2.cloudflarestorage.com\",\"jurisdiction\":\"none\",\"server\":\"" +
                  server + "\"}\n");
    EXPECT_THAT(cloudflare.server.lines(), Each(StartsWith("GET ")));
}

TEST_F(StorageInitTest, TellsWhatItDid) {
    const std::string server = cloudflare.server.url().toStdString();
    const auto connected = [&](const std::string& tokens) {
        return "Done\n\nBuild storage is connected on " + server +
               ":\n  bucket:   builds-1\n  endpoint: https://acc.r2.cloudflarestorage.com\n"
               "  tokens:   " +
               tokens + "\n";
    };
    EXPECT_THAT(create({}).out,
                HasSubstr("Server to configure: " + server +
                          "\nLooking up your Cloudflare account\n"
                          "Checking whether 'builds-1' is free\n"
                          "Creating the bucket 'builds-1'\n"
                          "Creating the server's read-only access token\n"
                          "Creating CI's read+write access token\n"
                          "Saving the credential to " +
                          server + " (it probes the bucket)\n" +
                          connected("server builds-1-server (read-only), "
                                    "CI builds-1-ci (read+write)") +
                          // SHA-256 of "value-tok-2", by sha256sum
                          "\nCI credential - the ONLY time it is shown. Put these into your CI "
                          "secrets:\n\n"
                          "TIDE_S3_ENDPOINT=https://acc.r2.cloudflarestorage.com\n"
                          "TIDE_S3_REGION=auto\nTIDE_S3_BUCKET=builds-1\nTIDE_S3_KEY=tok-2\n"
                          "TIDE_S3_SECRET=ee511b42dcae4d3b3809c416c75b4b762bb2371fa3169711172ab4"
                          "bed62bd6de\n"));
    const std::string out = create({}, {}, true).out;
    EXPECT_THAT(out, HasSubstr("Backups on this server share the build bucket, so its key needs "
                               "write access\nCreating the server's read+write access token\n"));
    EXPECT_THAT(out, HasSubstr(connected("server builds-1-server (read+write - backups share this "
                                         "bucket), CI builds-1-ci (read+write)")));
    EXPECT_THAT(create({}, "--single-token").out,
                HasSubstr(connected("one shared credential (builds-1-shared)")));
    const QString shown = QString::fromStdString(create({}, "--json").out)
                              .replace(cloudflare.server.url(), "https://builds.example.org");
    EXPECT_TRUE(DescribedRequest::page("docs/json.md").contains("--yes --json\n" + shown))
        << shown.toStdString();
    EXPECT_EQ(create({{8, ReplyFault::kRefuse}}, "--json").out,
              "{\"error\":\"Cloudflare: no, (token)\"}\n");
}

TEST_F(StorageInitTest, LeavesBehindWhatItSays) {
    for (const ReplyFault fault : {ReplyFault::kRefuse, ReplyFault::kGarbage,
                                   ReplyFault::kLoseRequest, ReplyFault::kLoseAnswer}) {
        checkEverywhere(fault, 1);
    }
    EXPECT_GT(endings["connected"], 20);
    EXPECT_GT(endings["undone"], 100);
    EXPECT_GT(endings["left behind"], 50);
}

TEST_F(StorageInitTest, WaitsHalfAMinuteForTheCredential) {
    EXPECT_THAT(create({{10, ReplyFault::kRefuse}}).out,
                ::testing::EndsWith("Waiting for Cloudflare to activate the new credential\n"));
    EXPECT_THAT(cloudflare.server.lines(), ::testing::Contains("PUT /api/storage").Times(16));
}

TEST_F(StorageInitTest, GivesUpACallThatTakesTooLong) {
    const RawServer silent({}, RawServer::Ending::kSilence);
    api.set(silent.url().toUtf8());
    callLimit = 20;
    EXPECT_EQ(run(usual).err, "Cloudflare: Cloudflare did not answer within 0 seconds\n");
    EXPECT_EQ(onboarding::Surroundings{}.callLimit.count(), 30000);
}

/// The whole conversation: line, jurisdiction, body.
TEST_F(StorageInitTest, AsksForExactlyWhatItNeeds) {
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
        ::testing::ElementsAre(
            "GET /accounts|(none)|", "GET /accounts/acc/r2/buckets|eu|", "GET /accounts|(none)|",
            "GET /accounts/acc/r2/buckets|eu|", "GET /user/tokens/permission_groups|(none)|",
            "POST /accounts/acc/r2/buckets|eu|{'name':'builds-1'}", "GET /api/backups|(none)|",
            policy("server", "{'id':'r'}"), policy("ci", "{'id':'r'},{'id':'w'}"),
            // SHA-256 of "value-tok-1", by sha256sum
            "PUT /api/storage|(none)|{'access_key':'tok-1','bucket':'builds-1',"
            "'endpoint':'https://acc.eu.r2.cloudflarestorage.com','region':'auto',"
            "'secret_key':'acd524554c37e60a3e8b854321e1006748567e151f2496cb5ae27cd358261ffd'}"));
    create({{10, ReplyFault::kRefuse}}, "--jurisdiction eu");
    EXPECT_EQ(cloudflare.server.requests().back().line() + '|' +
                  cloudflare.server.requests().back().header("cf-r2-jurisdiction"),
              "DELETE /accounts/acc/r2/buckets/builds-1|eu");
}

}  // namespace quorvelle::testing
