#include <gmock/gmock.h>

#include "onboarding/bucket_rules.h"
#include "onboarding/credentials.h"
#include "onboarding_fixture.h"
#include "support/outcomes.h"
#include "support/server_api_page.h"

namespace quorvelle::testing {

using ::testing::Each;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

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
    token.set("t");
    for (const char* surplus : {" more", " --yess", " --bucket"}) {
        const Ran ran = run("--server s" + QString(surplus));
        EXPECT_THAT(ran.out, StartsWith("Quorvelle CLI"));
        EXPECT_EQ(ran.code, 1);
    }
    EXPECT_THAT(cloudflare.server.lines(), IsEmpty());
}

TEST_F(StorageInitTest, FindsTheAccountAndTheBucketOnEveryPage) {
    const auto pages = [](const QString& results) {
        std::vector<std::string> made;
        for (const QString& result : results.split(';', Qt::SkipEmptyParts)) {
            made.push_back(QString("{'success':true,'result':%1,'result_info':{%2}}")
                               .arg(result.section('#', 0, 0), result.section('#', 1))
                               .replace('\'', '"')
                               .toStdString());
        }
        return made;
    };
    const QString exists =
        "a bucket named 'builds-1' already exists in this account. Quorvelle will not write into "
        "a bucket it did not create - choose another name.";
    const QString choose =
        "This token sees 2 accounts:\n  a  A\n  acc  Acme\npass --account-id <id> to choose one";
    // What follows "#" leads to the next page, which follows ";".
    const QString one = "[{'id':'acc','name':'Acme'}]";
    const QString two = "[{'id':'a','name':'A'},{'id':'acc','name':'Acme'}]";
    const QString paged = "[{'id':'a','name':'A'}]#'cursor':'c/1';" + one;
    const QString free = "{'buckets':[{'name':'builds'}]}#'cursor':'c/1'";
    const QString taken = "{'buckets':[{'name':'builds-1'}]}#'cursor':''";
    const QStringList table[] = {
        {"[]", "", "",
         "that token sees no Cloudflare account - check it was created for the right "
         "account"},
        {paged, "", "", choose},
        {two, "", " --account-id x", "that token does not see the account 'x'"},
        {paged, free, " --account-id acc", "Cloudflare: nothing at page 2"},
        {paged, free + ';' + taken, " --account-id acc --jurisdiction us", exists},
        {one, taken, " --yes", exists}};
    for (const QStringList& row : table) {
        SCOPED_TRACE(row[3].toStdString());
        cloudflare.server.onJson("GET", "/accounts/acc/r2/buckets?cursor=c%2F1",
                                 json("{'errors':[{'message':'nothing at page 2'}]}"));
        cloudflare.setPages("/accounts", pages(row[0]));
        cloudflare.setPages("/accounts/acc/r2/buckets", pages(row[1]));
        const Ran ran = run(usual + row[2]);
        EXPECT_EQ(ran.err, row[3].toStdString() + '\n');
        EXPECT_EQ(ran.code, row[3].startsWith("Cloudflare") ? 2 : 1);
    }
    EXPECT_THAT(cloudflare.server.lines(), Each(StartsWith("GET ")));
}

TEST_F(StorageInitTest, SeesABucketThatAppearsMeanwhile) {
    const std::string appeared =
        "the bucket 'builds-1' appeared in this account a moment ago - run again with a different "
        "name\n";
    const std::string free = R"({"success":true,"result":{"buckets":[]}})";
    const std::string taken = R"({"success":true,"result":{"buckets":[{"name":"builds-1"}]}})";
    const std::tuple<std::string, int, const char*, std::string> table[] = {
        {free, 400, "{'success':false,'errors':[{'code':10004,'message':'x'}]}", appeared},
        {free, 409, "{'success':false,'errors':[]}", appeared},
        {taken, 403, "{'success':false,'errors':[]}", appeared},
        {free, 403, "{'success':false,'errors':[]}",
         "Cloudflare: Cloudflare refused the request\n"}};
    for (const auto& row : table) {
        const auto& [thirdListing, status, reply, err] = row;
        int listings = 0;
        cloudflare.server.on("GET", "/accounts/acc/r2/buckets",
                             [&](const httplib::Request&, httplib::Response& response) {
                                 response.set_content(++listings == 3 ? std::get<0>(row) : free,
                                                      "application/json");
                             });
        cloudflare.server.onJson("POST", "/accounts/acc/r2/buckets", json(reply), status);
        const Ran ran = run(usual + " --yes");
        EXPECT_EQ(ran.err, err);
        EXPECT_EQ(ran.code, err == appeared ? 1 : 2);
        EXPECT_NE(cloudflare.server.requests().back().method, "DELETE");
    }
}

TEST_F(StorageInitTest, StopsAtRepliesThatLackWhatIsNeeded) {
    const std::string incomplete =
        "Cloudflare: Cloudflare created a token without an id or value\n";
    const std::string byHand = "could not undo everything - delete this by hand in Cloudflare: ";
    const std::tuple<const char*, const char*, const char*, std::string> table[] = {
        {"POST", "/user/tokens", "{'success':true,'result':{'id':'tok-1'}}", incomplete},
        {"POST", "/user/tokens", "{'success':true,'result':{'value':'v'}}",
         incomplete + byHand + "API token builds-1-server\n"},
        {"GET", "/user/tokens/permission_groups",
         "{'success':true,'result':[{'id':'r','name':'Workers R2 Storage Bucket Item Read'}]}",
         "Cloudflare lists no permission group named 'Workers R2 Storage Bucket Item Write'\n"}};
    for (const auto& [method, path, reply, err] : table) {
        cloudflare.server.onJson(method, path, json(reply));
        const Ran ran = run(usual + " --yes");
        EXPECT_EQ(ran.err, err);
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
    const QString shown = QString::fromStdString(run(usual + " --yes --json").out)
                              .replace(cloudflare.server.url(), "https://builds.example.org");
    EXPECT_TRUE(DescribedRequest::page("docs/json.md").contains("--yes --json\n" + shown))
        << shown.toStdString();
    EXPECT_EQ(object(shown).value("ci")["TIDE_S3_SECRET"].toString(), kCiSecret);
    cloudflare.reset(false);
    cloudflare.failAt(8, ReplyFault::kRefuse);
    EXPECT_EQ(run(usual + " --yes --json").out, "{\"error\":\"Cloudflare: no, (token)\"}\n");
}

}  // namespace quorvelle::testing
