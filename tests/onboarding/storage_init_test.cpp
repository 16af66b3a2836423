#include <gmock/gmock.h>

#include "onboarding/bucket_rules.h"
#include "onboarding/credentials.h"
#include "onboarding_fixture.h"

namespace quorvelle::testing {

using ::testing::Each;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

TEST(BucketRules, AreReportedInTheirOrder) {
    const QString hyphen = "A bucket name cannot start or end with a hyphen.";
    const QString length = "A bucket name is between 3 and 63 characters long.";
    const auto character = [](const QString& bad) {
        return QString(
                   "A bucket name uses only lowercase letters, numbers and hyphens - '%1' is "
                   "not allowed.")
            .arg(bad);
    };
    const std::pair<QString, QString> table[] = {
        {"abc", ""},
        {"0-9", ""},
        {QString(63, u'z'), ""},
        {"My-Bucket", character("M")},
        {"-a_", character("_")},
        {"aä", character("ä")},
        {"a😀b", character("😀")},
        {"a b", character(" ")},
        {"-abc", hyphen},
        {"abc-", hyphen},
        {"-", hyphen},
        {"ab", length},
        {"", length},
        {QString(64, u'z'), length},
    };
    for (const auto& [name, problem] : table) {
        EXPECT_EQ(onboarding::bucketNameProblem(name), problem) << name.toStdString();
    }
    EXPECT_EQ(onboarding::defaultBucketName(0xABCDEF00012FULL), "quorvelle-builds-00012f");
}

/// The secret of the value "abc" is its published SHA-256.
TEST(Credentials, AreMadeOfTheToken) {
    const onboarding::S3Credential made = onboarding::credentialOf("id", "abc");
    EXPECT_EQ(made.accessKey, "id");
    EXPECT_EQ(made.secretKey, "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
}

namespace {

using StorageInitTest = OnboardingTest;

constexpr char kCiSecret[] = "ee511b42dcae4d3b3809c416c75b4b762bb2371fa3169711172ab4bed62bd6de";

}  // namespace

TEST_F(StorageInitTest, RefusesWhatTheUserCanMendBeforeAnyCall) {
    const QString file = config.sandbox.path("token");
    const QString noToken =
        "no Cloudflare API token: set CLOUDFLARE_API_TOKEN or pass --token-file <path>. The token "
        "needs 'API Tokens - Edit' (user) and 'Workers R2 Storage - Edit' (account).";
    const QString onCommandLine =
        "refusing --token: a Cloudflare token on the command line lands in shell history and CI "
        "logs. Set CLOUDFLARE_API_TOKEN, or use --token-file <path>.";
    struct Row {
        QByteArray variable;
        QString line;
        QString err;
    };
    for (const Row& row : {
             Row{"t", "--token", onCommandLine},
             Row{"", "surplus --token t --jurisdiction x", onCommandLine},
             Row{" \n", "--server s --jurisdiction x", noToken},
             Row{"", "--token-file " + file, "cannot read " + file},
             Row{"", "--token-file /dev/null", noToken},
             Row{"t", "--token-file " + file + " --jurisdiction EU --bucket X",
                 "--jurisdiction takes eu, us or none"},
             Row{"t", "--bucket -b",
                 "bucket name '-b': A bucket name cannot start or end with a hyphen."},
             Row{"t", "--bucket abc",
                 "'server' is not configured (quorvelle config set server <value>)"},
         }) {
        token.set(row.variable);
        const Ran ran = run(row.line + " --yes");
        EXPECT_EQ(ran.code, 1);
        EXPECT_EQ(ran.out, "");
        EXPECT_EQ(ran.err, (row.err + "\n").toStdString());
    }
    token.set("t");
    for (const char* surplus : {" more", " --yess", " --bucket"}) {
        const Ran ran = run("--server s" + QString(surplus));
        EXPECT_THAT(ran.out, StartsWith("Quorvelle CLI"));
        EXPECT_EQ(ran.code, 1);
    }
    EXPECT_THAT(cloudflare.server.lines(), IsEmpty());
}

TEST_F(StorageInitTest, FindsTheAccountAndTheBucketOnEveryPage) {
    const auto page = [](const char* result, const char* info) {
        return QByteArray("{'success':true,'result':" + QByteArray(result) + ",'result_info':{" +
                          info + "}}")
            .replace('\'', '"')
            .toStdString();
    };
    const std::string none = page("[]", "");
    const std::string one = page("[{'id':'acc','name':'Acme'}]", "");
    const std::string two = page("[{'id':'a','name':'A'},{'id':'acc','name':'Acme'}]", "");
    const std::string more = page("[{'id':'a','name':'A'}]", "'cursor':'c/1'");
    const std::string free = page("{'buckets':[{'name':'builds'}]}", "'cursor':'c/1'");
    const std::string taken = page("{'buckets':[{'name':'builds-1'}]}", "'cursor':''");
    const std::string choose =
        "This token sees 2 accounts:\n  a  A\n  acc  Acme\npass --account-id <id> to choose one\n";
    struct Row {
        std::vector<std::string> accounts;
        std::vector<std::string> buckets;
        QString line;
        std::string err;
    };
    for (const Row& row : {
             Row{{none},
                 {},
                 "",
                 "that token sees no Cloudflare account - check it was created for the right "
                 "account\n"},
             Row{{two}, {}, "", choose},
             Row{{more, one}, {}, "", choose},
             Row{{two}, {}, " --account-id x", "that token does not see the account 'x'\n"},
             Row{{more, one}, {free}, " --account-id acc", "Cloudflare: nothing at page 2\n"},
             Row{{more, one},
                 {free, taken},
                 " --account-id acc --jurisdiction us",
                 "a bucket named 'builds-1' already exists in this account. Quorvelle will not "
                 "write into a bucket it did not create - choose another name.\n"},
             Row{{one},
                 {taken},
                 " --yes",
                 "a bucket named 'builds-1' already exists in this account. Quorvelle will not "
                 "write into a bucket it did not create - choose another name.\n"},
         }) {
        SCOPED_TRACE(row.err);
        cloudflare.server.onJson("GET", "/accounts/acc/r2/buckets?cursor=c%2F1",
                                 json("{'errors':[{'message':'nothing at page 2'}]}"));
        cloudflare.setPages("/accounts", row.accounts);
        cloudflare.setPages("/accounts/acc/r2/buckets", row.buckets);
        const Ran ran = run(usual + row.line);
        EXPECT_EQ(ran.err, row.err);
        EXPECT_EQ(ran.code, row.err.starts_with("Cloudflare") ? 2 : 1);
    }
    EXPECT_THAT(cloudflare.server.lines(), Each(StartsWith("GET ")));
}

TEST_F(StorageInitTest, SeesABucketThatAppearsMeanwhile) {
    const std::string appeared =
        "the bucket 'builds-1' appeared in this account a moment ago - run again with a different "
        "name\n";
    const std::string free = R"({"success":true,"result":{"buckets":[]}})";
    const std::string taken = R"({"success":true,"result":{"buckets":[{"name":"builds-1"}]}})";
    struct Row {
        std::string thirdListing;
        int status;
        const char* reply;
        std::string err;
    };
    for (const Row& row : {
             Row{free, 400, "{'success':false,'errors':[{'code':10004,'message':'x'}]}", appeared},
             Row{free, 409, "{'success':false,'errors':[]}", appeared},
             Row{taken, 403, "{'success':false,'errors':[]}", appeared},
             Row{free, 403, "{'success':false,'errors':[]}",
                 "Cloudflare: Cloudflare refused the request\n"},
         }) {
        int listings = 0;
        cloudflare.server.on("GET", "/accounts/acc/r2/buckets",
                             [&](const httplib::Request&, httplib::Response& response) {
                                 response.set_content(++listings == 3 ? row.thirdListing : free,
                                                      "application/json");
                             });
        cloudflare.server.onJson("POST", "/accounts/acc/r2/buckets", json(row.reply), row.status);
        const Ran ran = run(usual + " --yes");
        EXPECT_EQ(ran.err, row.err);
        EXPECT_EQ(ran.code, row.err == appeared ? 1 : 2);
        EXPECT_NE(cloudflare.server.requests().back().method, "DELETE");
    }
}

TEST_F(StorageInitTest, StopsAtRepliesThatLackWhatIsNeeded) {
    struct Row {
        const char* method;
        const char* path;
        const char* reply;
        std::string err;
    };
    const std::string incomplete =
        "Cloudflare: Cloudflare created a token without an id or value\n";
    const std::string byHand = "could not undo everything - delete this by hand in Cloudflare: ";
    for (const Row& row : {
             Row{"POST", "/user/tokens", "{'success':true,'result':{'id':'tok-1'}}", incomplete},
             Row{"POST", "/user/tokens", "{'success':true,'result':{'value':'v'}}",
                 incomplete + byHand + "API token builds-1-server\n"},
             Row{"GET", "/user/tokens/permission_groups",
                 "{'success':true,'result':[{'id':'r','name':'Workers R2 Storage Bucket Item "
                 "Read'}]}",
                 "Cloudflare lists no permission group named 'Workers R2 Storage Bucket Item "
                 "Write'\n"},
         }) {
        cloudflare.server.onJson(row.method, row.path, json(row.reply));
        const Ran ran = run(usual + " --yes");
        EXPECT_EQ(ran.err, row.err);
        EXPECT_EQ(ran.code, 2);
        EXPECT_THAT(cloudflare.left(), IsEmpty());
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
    const std::string ci =
        "TIDE_S3_ENDPOINT=https://acc.r2.cloudflarestorage.com\nTIDE_S3_REGION=auto\n"
        "TIDE_S3_BUCKET=builds-1\nTIDE_S3_KEY=tok-2\nTIDE_S3_SECRET=" +
        std::string(kCiSecret) + "\n";
    const auto connected = [&](const std::string& tokens) {
        return "Done\n\nBuild storage is connected on " + server +
               ":\n  bucket:   builds-1\n  endpoint: https://acc.r2.cloudflarestorage.com\n"
               "  tokens:   " +
               tokens + "\n";
    };
    EXPECT_THAT(run(usual + " --yes").out,
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
                          "\nCI credential - the ONLY time it is shown. Put these into your CI "
                          "secrets:\n\n" +
                          ci));
    cloudflare.reset(true);
    const std::string out = run(usual + " --yes").out;
    EXPECT_THAT(out, HasSubstr("Backups on this server share the build bucket, so its key needs "
                               "write access\nCreating the server's read+write access token\n"));
    EXPECT_THAT(out, HasSubstr(connected("server builds-1-server (read+write - backups share this "
                                         "bucket), CI builds-1-ci (read+write)")));
    cloudflare.reset(false);
    EXPECT_THAT(run(usual + " --yes --single-token").out,
                HasSubstr(connected("one shared credential (builds-1-shared)")));
    cloudflare.reset(false);
    const QJsonObject object =
        QJsonDocument::fromJson(QByteArray::fromStdString(run(usual + " --yes --json").out))
            .object();
    EXPECT_EQ(object["created"].toBool(), true);
    EXPECT_EQ(object["ci"]["TIDE_S3_SECRET"].toString(), kCiSecret);
    EXPECT_EQ(text(object["tokens"][0].toObject()),
              "{'access':'read-only','name':'builds-1-server','use':'server'}");
    cloudflare.reset(false);
    cloudflare.failAt(8, Fault::kRefuse);
    EXPECT_EQ(run(usual + " --yes --json").out, "{\"error\":\"Cloudflare: no, (token)\"}\n");
}

}  // namespace quorvelle::testing
